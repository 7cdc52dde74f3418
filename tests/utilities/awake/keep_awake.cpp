// Keeps this machine awake by the program's own manager and the adapters of its desktop, until its standard input ends:
// keep_awake MODE, one of displayAwake, systemAwake and lidClosed. With "schedule" behind it the schedule does so, by a
// window around now; with "charging-only" it is for mains power only. It prints what the manager prints. The
// preferences are those of the XDG folders, as the program's.
#include "adapters/desktops/MakeDesktop.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "ports/Calendar.h"
#include "ports/Desktop.h"
#include "ports/Folders.h"
#include "utilities/awake/KeepAwakeManager.h"

#include <QApplication>
#include <QSocketNotifier>

#include <unistd.h>

using namespace tavrine;

int main(int argc, char **argv) {
    const auto desktop = makeDesktop();
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const auto mode = choiceOf(keepAwakeModeTexts, arguments.value(1));
    if (!mode) {
        std::fputs("usage: keep_awake displayAwake|systemAwake|lidClosed [schedule] [charging-only]\n", stderr);
        return 2;
    }
    NotificationCenter center;
    Time &time = desktop->time();
    UserDefaults defaults(desktop->folders().preferences + QStringLiteral("/keep_awake.plist"), time, center);
    KeepAwakeManager manager({time, defaults, desktop->calendar(), desktop->powerAssertions(), desktop->powerSource(),
                              desktop->userNotifications()});
    manager.setMode(*mode);
    manager.setChargingOnly(arguments.contains(QStringLiteral("charging-only")));
    if (arguments.contains(QStringLiteral("schedule"))) {
        const DateComponents now = desktop->calendar().components(time.now());
        manager.setWeekdaysOnly(false);
        manager.setScheduleStart({(now.hour + 23) % 24, now.minute});
        manager.setScheduleEnd({(now.hour + 1) % 24, now.minute});
        manager.setScheduleEnabled(true);
    } else {
        manager.enable();
    }
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [&] {
        char byte = 0;
        if (::read(STDIN_FILENO, &byte, 1) <= 0)
            QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}
