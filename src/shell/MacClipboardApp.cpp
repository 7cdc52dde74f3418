#include "adapters/linux/DBusSingleInstance.h"
#include "adapters/linux/NoFeedUpdater.h"
#include "adapters/linux/NoMovieAsset.h"
#include "adapters/linux/QtApplication.h"
#include "adapters/linux/QtTime.h"
#include "adapters/linux/StatusNotifierItem.h"
#include "adapters/linux/TrayStatusItem.h"
#include "adapters/linux/TurboImageCoder.h"
#include "adapters/linux/XdgAutostart.h"
#include "adapters/linux/XdgFolders.h"
#include "adapters/x11/X11Pasteboard.h"
#include "adapters/x11/X11Workspace.h"
#include "adapters/x11/XEmbedTrayIcon.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardExperienceSettings.h"
#include "clipboard/ClipboardManager.h"
#include "shell/AppDelegate.h"
#include "shell/FeatureFlags.h"
#include "shell/ToolHooks.h"

#include <QApplication>
#include <QToolTip>

#include <csignal>
#include <cstdio>
#include <cstdlib>

using namespace tavrine;

namespace {

std::vector<std::unique_ptr<TrayIcon>> trayIcons() {
    std::vector<std::unique_ptr<TrayIcon>> icons;
    icons.push_back(std::make_unique<StatusNotifierItem>());
    icons.push_back(
        std::make_unique<XEmbedTrayIcon>([](QPoint place, const QString &text) { QToolTip::showText(place, text); }));
    return icons;
}

} // namespace

/// The program's entry, and the one place that knows which adapters keep the ports' promises.
int main(int argc, char **argv) {
    // A reader of our output that goes away must not take a resident program with it.
    std::signal(SIGPIPE, SIG_IGN);

    // The database reads on its own thread while Qt starts on this one. It is never closed: it ends with the process.
    const Folders folders = xdgFolders();
    auto &database = *new ClipboardDatabase(folders.applicationSupport + QStringLiteral("/Tavrine/clipboard.db"));
    database.warmUp();

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tavrine"));
    QApplication::setApplicationVersion(QStringLiteral(TAVRINE_VERSION));
    QApplication::setDesktopFileName(QLatin1String(AppDelegate::bundleIdentifier));
    QApplication::setQuitOnLastWindowClosed(false);

    AppDelegate *delegate = nullptr;
    DBusSingleInstance instance([&delegate] {
        if (delegate)
            delegate->applicationShouldHandleReopen(false);
    });
    const DBusSingleInstance::Start start = instance.start();
    if (start != DBusSingleInstance::Start::first) {
        std::fflush(nullptr);
        // At once: the database's thread may still read, and nothing here needs an orderly end.
        std::_Exit(start == DBusSingleInstance::Start::handedOver ? EXIT_SUCCESS : EXIT_FAILURE);
    }

    QtTime time;
    NotificationCenter &center = NotificationCenter::defaultCenter();
    UserDefaults defaults(preferencesPath(), time, center);
    X11Pasteboard pasteboard;
    X11Workspace workspace;
    TurboImageCoder imageCoder;
    NoMovieAsset movieAsset;
    XdgAutostart loginItem(XdgAutostart::userFolder(), QApplication::applicationFilePath());
    TrayStatusItem statusItem(trayIcons());
    QtApplication ourselves;
    NoFeedUpdater updater(NoFeedUpdater::byDesktopNotification());

    ClipboardManager clipboardManager(
        {time, defaults, pasteboard, workspace, imageCoder, movieAsset, loginItem, folders, database});
    FeatureFlags flags(defaults);
    ClipboardExperienceSettings experienceSettings(defaults);
    ToolHooks hooks;
    AppDelegate appDelegate({time, defaults, center, workspace, statusItem, ourselves, updater, clipboardManager, flags,
                             experienceSettings, hooks});
    delegate = &appDelegate;
    appDelegate.applicationDidFinishLaunching();
    return QApplication::exec();
}
