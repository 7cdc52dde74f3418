#include "adapters/desktops/MakeDesktop.h"
#include "base/NotificationCenter.h"
#include "base/Program.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardDatabase.h"
#include "look/Look.h"
#include "ports/Desktop.h"
#include "ports/Folders.h"
#include "shell/AppDelegate.h"

#include <QApplication>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace tavrine;

namespace {

/// The one word that a start can have: `--shelf`. All else is the toolkit's, or nobody's.
QString requestedAction(int argc, char **argv) {
    const bool asksForShelf = argc == 2 && std::strcmp(argv[1], "--shelf") == 0;
    return asksForShelf ? QString(startAction::shelf) : QString();
}

/// From the launch to the end of the main loop, with everything that the program owns.
int run(Desktop &desktop, ClipboardDatabase &database, const QString &action, AppDelegate *&delegate) {
    look::Look look(desktop.time(), &desktop.appearance());
    NotificationCenter &center = NotificationCenter::defaultCenter();
    UserDefaults defaults(QStringLiteral("%1/%2.plist").arg(desktop.folders().preferences, ownBundleIdentifier),
                          desktop.time(), center);
    AppDelegate appDelegate({desktop, defaults, center, database});
    delegate = &appDelegate;
    appDelegate.applicationDidFinishLaunching();
    if (!action.isEmpty())
        appDelegate.startedAgain(action);
    const int status = QApplication::exec();
    delegate = nullptr;
    return status;
}

} // namespace

int main(int argc, char **argv) {
    // A reader of our output that goes away must not take a resident program with it.
    std::signal(SIGPIPE, SIG_IGN);

    std::unique_ptr<Desktop> desktop = makeDesktop();
    const Folders &folders = desktop->folders();
    // The database reads on its own thread while Qt starts on this one. It is never closed: it ends with the process.
    auto &database = *new ClipboardDatabase(folders.applicationSupport + QStringLiteral("/Tavrine/clipboard.db"));
    database.warmUp();

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tavrine"));
    QApplication::setApplicationVersion(QStringLiteral(TAVRINE_VERSION));
    QApplication::setDesktopFileName(ownBundleIdentifier);
    QApplication::setQuitOnLastWindowClosed(false);

    AppDelegate *delegate = nullptr;
    const QString action = requestedAction(argc, argv);
    const Instance instance = desktop->becomeOnlyInstance(action, [&delegate](const QString &asked) {
        if (delegate)
            delegate->startedAgain(asked);
    });
    if (instance != Instance::first) {
        std::fflush(nullptr);
        // At once: the database's thread may still read, and nothing here needs an orderly end.
        std::_Exit(instance == Instance::handedOver ? EXIT_SUCCESS : EXIT_FAILURE);
    }

    const int status = run(*desktop, database, action, delegate);
    desktop.reset(); // hands what it holds of the clipboard over
    std::fflush(nullptr);
    // What there was to write is written. The toolkit's own end would wait for buses that may hang.
    std::_Exit(status);
}
