// Shows the card of Keep Awake to people in its states, as one picture for each appearance: awake_pictures FOLDER.
#include "adapters/fake/FakeAlerts.h"
#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/FakeCalendar.h"
#include "adapters/fake/FakePowerAssertions.h"
#include "adapters/fake/FakePowerSource.h"
#include "adapters/fake/FakeUserNotifications.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "look/Look.h"
#include "utilities/awake/KeepAwakeControlView.h"

#include <QApplication>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

using namespace tavrine;
using namespace std::chrono_literals;

namespace {

/// A card, brought into a state.
QPixmap cardIn(void (*state)(KeepAwakeManager &, FakePowerSource &, VirtualTime &), VirtualTime &time,
               bool hasFocus = false) {
    const QTemporaryDir home;
    NotificationCenter center;
    UserDefaults defaults(home.filePath(QStringLiteral("preferences.plist")), time, center);
    FakeCalendar calendar;
    FakePowerAssertions assertions(time);
    FakePowerSource source;
    FakeUserNotifications notifications(time);
    FakeAlerts alerts;
    KeepAwakeManager manager({time, defaults, calendar, assertions, source, notifications});
    state(manager, source, time);
    time.advance(1s);
    KeepAwakeControlView view(
        std::make_unique<KeepAwakeControlModel>(KeepAwakeControlModel::Parts{manager, alerts, time, {}}));
    view.setAttribute(Qt::WA_TranslucentBackground);
    view.show();
    view.activateWindow();
    view.adjustSize();
    QCoreApplication::processEvents();
    if (hasFocus)
        for (int step = 0; step < 3; ++step)
            QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : &view, Qt::Key_Tab);
    time.advance(1s);
    QCoreApplication::processEvents();
    return view.grab();
}

void savePicture(const QString &path, VirtualTime &time, const look::Theme &theme) {
    const QList<QPixmap> cards{cardIn([](KeepAwakeManager &, FakePowerSource &, VirtualTime &) {}, time),
                               cardIn(
                                   [](KeepAwakeManager &manager, FakePowerSource &, VirtualTime &) {
                                       manager.setDuration(KeepAwakeDuration::oneHour);
                                       manager.enable();
                                       manager.setShowAdvancedPanel(true);
                                   },
                                   time, true),
                               cardIn(
                                   [](KeepAwakeManager &manager, FakePowerSource &source, VirtualTime &clock) {
                                       source.setPluggedIn(false);
                                       manager.setMode(KeepAwakeMode::lidClosed);
                                       manager.enable();
                                       clock.advance(1s);
                                       manager.setChargingOnly(true);
                                       manager.setScheduleStart({12, 30});
                                       manager.setScheduleEnabled(true);
                                       manager.setShowAdvancedPanel(true);
                                   },
                                   time)};
    int width = 20;
    int height = 0;
    for (const QPixmap &card : cards) {
        width += card.width() + 20;
        height = std::max(height, card.height() + 40);
    }
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(theme.surface);
    QPainter painter(&image);
    int left = 20;
    for (const QPixmap &card : cards) {
        painter.drawPixmap(left, 20, card);
        left += card.width() + 20;
    }
    painter.end();
    image.save(path);
}

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    const QString folder = application.arguments().value(1);
    if (folder.isEmpty())
        return 2;
    for (const bool isDark : {false, true}) {
        VirtualTime time;
        FakeAppearance appearance;
        appearance.set({isDark ? ColorScheme::dark : ColorScheme::light});
        look::Look look(time, &appearance);
        savePicture(folder + (isDark ? QStringLiteral("/awake-dark.png") : QStringLiteral("/awake-light.png")), time,
                    look.theme());
    }
    return 0;
}
