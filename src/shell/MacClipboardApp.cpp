#include "adapters/linux/DBusSingleInstance.h"
#include "adapters/linux/DesktopUrlOpener.h"
#include "adapters/linux/NoFeedUpdater.h"
#include "adapters/linux/NoMovieAsset.h"
#include "adapters/linux/PluginKeychain.h"
#include "adapters/linux/PluginLoader.h"
#include "adapters/linux/PortalAppearance.h"
#include "adapters/linux/PosixTaskLauncher.h"
#include "adapters/linux/QtApplication.h"
#include "adapters/linux/QtFilePanels.h"
#include "adapters/linux/QtTime.h"
#include "adapters/linux/ReaderProcess.h"
#include "adapters/linux/SessionBus.h"
#include "adapters/linux/StatusNotifierItem.h"
#include "adapters/linux/TrayStatusItem.h"
#include "adapters/linux/TurboImageCoder.h"
#include "adapters/linux/XdgAutostart.h"
#include "adapters/linux/XdgFolders.h"
#include "adapters/x11/X11Access.h"
#include "adapters/x11/X11ApplicationActivator.h"
#include "adapters/x11/X11ColorSampler.h"
#include "adapters/x11/X11Compositor.h"
#include "adapters/x11/X11EventMonitors.h"
#include "adapters/x11/X11EventPoster.h"
#include "adapters/x11/X11HotKeys.h"
#include "adapters/x11/X11PanelWindow.h"
#include "adapters/x11/X11Pasteboard.h"
#include "adapters/x11/X11Screens.h"
#include "adapters/x11/X11Workspace.h"
#include "adapters/x11/XEmbedTrayIcon.h"
#include "base/NotificationCenter.h"
#include "base/SerialQueue.h"
#include "base/UserDefaults.h"
#include "capture/PngData.h"
#include "capture/ScreenSnipper.h"
#include "capture/SnipSaveDialogView.h"
#include "capture/SnippetPreviewCard.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardExperienceSettings.h"
#include "clipboard/ClipboardManager.h"
#include "clipboard/ClipboardSearchView.h"
#include "clipboard/ContentView.h"
#include "look/Look.h"
#include "look/ModalAlerts.h"
#include "panels/QtToastWindows.h"
#include "shell/AppDelegate.h"
#include "shell/CaptureServices.h"
#include "shell/EditorWindow.h"
#include "shell/FeatureFlags.h"
#include "shell/OnboardingView.h"
#include "shell/ShellTools.h"
#include "upload/JSUploadEngine.h"
#include "upload/Uploads.h"
#include "utilities/emoji/EmojiPickerStore.h"
#include "utilities/emoji/EmojiPickerView.h"

#include <QApplication>
#include <QToolTip>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>

using namespace tavrine;

namespace {

/// From the program's own folder, wherever it is installed.
constexpr auto emojiTablePath = "/../share/tavrine/emoji_data.json";

std::vector<std::unique_ptr<TrayIcon>> trayIcons() {
    std::vector<std::unique_ptr<TrayIcon>> icons;
    icons.push_back(std::make_unique<StatusNotifierItem>());
    icons.push_back(
        std::make_unique<XEmbedTrayIcon>([](QPoint place, const QString &text) { QToolTip::showText(place, text); }));
    return icons;
}

/// The desktop's wishes for looks, unsaid until the session bus is open.
class LateAppearance final : public QObject, public Appearance {
public:
    LateAppearance() {
        sessionBus::whenOpen(this, [this](const QDBusConnection &bus) {
            if (!bus.isConnected())
                return;
            m_portal.emplace(bus);
            m_portal->setOnChange(m_onChange);
        });
    }
    [[nodiscard]] DesktopAppearance settings() const override {
        return m_portal ? m_portal->settings() : DesktopAppearance{};
    }
    void setOnChange(std::function<void()> onChange) override {
        m_onChange = std::move(onChange);
        if (m_portal)
            m_portal->setOnChange(m_onChange);
    }

private:
    std::optional<PortalAppearance> m_portal;
    std::function<void()> m_onChange;
};

/// What only panels and toasts need: made with the first of them, which leaves a launch its speed.
struct PanelAdapters {
    PanelAdapters(const Pasteboard &pasteboard, look::Look &look)
        : poster([&pasteboard] { return pasteboard.string().value_or(QString()); }),
          compositor([&look](bool isRunning) { look.setCompositing(isRunning); }) {}

    X11ApplicationActivator activator;
    X11PanelWindows windows{activator};
    X11EventPoster poster;
    X11Screens screens;
    X11Compositor compositor;
    QtToastWindows toastWindows{windows};
};

/// What only captures need, made with the first of them.
struct CaptureAdapters {
    SerialQueue fileQueue{QStringLiteral("com.tavrine.snip")};
};

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
    LateAppearance appearance;
    look::Look look(time, &appearance);
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
    X11HotKeys hotKeys;
    X11EventMonitors monitors;
    X11Access access;
    look::ModalAlerts alerts;
    DesktopUrlOpener urlOpener;
    std::optional<PanelAdapters> panels;
    std::optional<EmojiPickerStore> emojiStore; // with its table, from the first opening on
    // For who uploads, soon after the launch, so that the first card has its button. Nobody else pays for the key ring,
    // or is asked to unlock it.
    PluginKeychain keychain([] { return qobject_cast<Keychain *>(loadPlugin(QStringLiteral("keychain"))); });
    Uploads uploads({.time = time,
                     .defaults = defaults,
                     .center = center,
                     .keychain = keychain,
                     .pasteboard = pasteboard,
                     .workerPath = uploadWorkerPath(),
                     .pngData = pngData});
    const auto desktop = [&] {
        panels.emplace(pasteboard, look);
        return ShellTools::Desktop{.panels = {.windows = panels->windows,
                                              .monitors = monitors,
                                              .poster = panels->poster,
                                              .screens = panels->screens,
                                              .workspace = workspace,
                                              .activator = panels->activator,
                                              .pasteboard = pasteboard,
                                              .defaults = defaults,
                                              .center = center,
                                              .time = time},
                                   .toastWindows = panels->toastWindows};
    };
    ShellTools::Views views;
    views.classic = [&](const auto &orderOutAllWindows, const auto &paste) {
        return new ContentView(clipboardManager, center, orderOutAllWindows, paste);
    };
    views.search = [&](const auto &dismiss, const auto &paste) {
        return new ClipboardSearchView({clipboardManager, alerts, center, time}, dismiss, paste);
    };
    views.emoji = [&](const auto &dismiss, const auto &insert) {
        if (!emojiStore)
            emojiStore.emplace(defaults, QApplication::applicationDirPath() + QLatin1String(emojiTablePath));
        return new EmojiPickerView({*emojiStore, center, time}, dismiss,
                                   [insert](const EmojiItem &item) { insert(item.emoji); });
    };
    views.welcome = [&](const auto &onClose) {
        return OnboardingView::makeWindow({defaults, access, time, urlOpener}, onClose).release();
    };
    QtFilePanels filePanels;
    PosixTaskLauncher taskLauncher(QApplication::applicationDirPath());
    ProcessRecognizer recognizer(QApplication::applicationDirPath());
    ProcessCodeDetector screenDetector(QApplication::applicationDirPath(), ProcessCodeDetector::screenPlugin);
    ProcessCodeDetector pictureDetector(QApplication::applicationDirPath(), ProcessCodeDetector::picturePlugin);
    X11ColorSamplers samplers;
    CaptureServices captureServices({.time = time,
                                     .defaults = defaults,
                                     .pasteboard = pasteboard,
                                     .application = ourselves,
                                     .urlOpener = urlOpener,
                                     .launcher = taskLauncher,
                                     .recognizer = recognizer,
                                     .screenDetector = screenDetector,
                                     .pictureDetector = pictureDetector,
                                     .samplers = samplers,
                                     .temporaryFolder = folders.temporary,
                                     .uploads = uploads});
    views.editor = [&](const EditorFlow::Window &window, const auto &close) {
        return makeEditorWindow(window,
                                {.ports = {time, pasteboard, filePanels, imageCoder, center, folders.documents},
                                 .clipboardManager = clipboardManager,
                                 .hooks = captureServices.editorHooks(),
                                 .toolkitRect = flippedRect},
                                close)
            .release();
    };
    ScreenSnipper snipper({taskLauncher, defaults, time, folders.temporary});
    std::optional<CaptureAdapters> capture;
    const auto snipFlow = [&](const ShellTools::Desktop &shown, const SnipFlow::Actions &actions) {
        capture.emplace();
        return std::make_unique<SnipFlow>(
            SnipFlow::Ports{.time = time,
                            .defaults = defaults,
                            .pasteboard = pasteboard,
                            .screens = shown.panels.screens,
                            .windows = shown.panels.windows,
                            .filePanels = filePanels,
                            .snipper = snipper,
                            .fileQueue = capture->fileQueue,
                            .folders = folders,
                            .uploads = uploads},
            actions,
            SnipFlow::Views{.card = [](const auto &model) { return new SnippetPreviewCard(model); },
                            .saveDialog = [](const auto &model) { return new SnipSaveDialogView(model); }});
    };
    ShellTools tools({.time = time,
                      .defaults = defaults,
                      .application = ourselves,
                      .hotKeys = hotKeys,
                      .monitors = monitors,
                      .access = access,
                      .alerts = alerts,
                      .urlOpener = urlOpener,
                      .desktop = desktop,
                      .snipper = &snipper,
                      .captureServices = &captureServices,
                      .snipFlow = snipFlow},
                     views);
    AppDelegate appDelegate({time, defaults, center, workspace, statusItem, ourselves, updater, clipboardManager, flags,
                             experienceSettings, tools});
    tools.setDelegate(&appDelegate);
    delegate = &appDelegate;
    appDelegate.applicationDidFinishLaunching();
    time.asyncAfter(Seconds(1), [&] { static_cast<void>(uploads.isButtonShown()); });
    return QApplication::exec();
}
