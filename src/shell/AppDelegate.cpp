#include "shell/AppDelegate.h"

#include "base/Print.h"
#include "base/Time.h"
#include "base/UserDefaults.h"
#include "capture/ColorPickerManager.h"
#include "ports/Access.h"
#include "ports/Application.h"
#include "ports/StatusItem.h"
#include "shell/FlagReactions.h"
#include "shell/OnboardingView.h"
#include "shell/StatusMenu.h"
#include "upload/Uploads.h"

#include <QPointer>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr Seconds onboardingDelay{0.2};
constexpr Seconds secondDrawDelay{0.5};
constexpr Seconds uploadsDelay{1.0};
constexpr Seconds newSnipDelay{0.5};
constexpr Seconds resumeDelay{2.0};
constexpr double freshCaptureSeconds = 5.0;

void debug(const char *text) {
    printLine(QStringLiteral("DEBUG: ") + QLatin1String(text));
}

} // namespace

AppDelegate::AppDelegate(const Shell::Parts &parts, QObject *parent)
    : QObject(parent), m_shell(parts, panelContents()), m_tools(m_shell),
      m_display({parts.desktop.statusItem(), parts.defaults, m_shell.flags(), m_tools.networkSpeed().monitor()}),
      m_hotKeys(parts.desktop.hotKeys(), parts.desktop.eventMonitors(), parts.defaults, parts.desktop.time(),
                hotKeyActions()),
      m_startActions(m_hotKeys, m_tools,
                     {.isOn = [this](Feature feature) { return m_shell.flags().isOn(feature); },
                      .openSettings = [this] { openSettings(); }}),
      m_settingsWindow({m_shell, m_tools, m_hotKeys, [this]() -> SoftwareUpdater & { return *m_updaterController; }}),
      m_onboarding(m_shell.largeWindows(), parts.desktop.time(),
                   {.makeWelcomeWindow =
                        [this](std::function<void()> onClose) {
                            Desktop &desktop = m_shell.desktop();
                            return OnboardingView::makeWindow({m_shell.defaults(), desktop.access(), desktop.time(),
                                                               desktop.urlOpener(), desktop.folders().resources,
                                                               &desktop.desktopAbilities()},
                                                              std::move(onClose));
                        },
                    .openSettings = [this] { openSettings(); }}) {}

AppDelegate::~AppDelegate() {
    m_shell.desktop().statusItem().setOnPress({});
    m_shell.desktop().statusItem().setOnSecondaryPress({});
    m_shell.desktop().statusItem().setMenu(
        {.lines = [] { return std::vector<StatusMenuLine>(); }, .onChosen = [](int) {}});
}

void AppDelegate::applicationDidFinishLaunching() {
    m_shell.pasteBack().listen();
    startUpdater();
    setupStatusItem();
    launch(Feature::notchShelf);
    debug("Registering Hotkeys...");
    m_hotKeys.registerHotkeys();
    startSpeedObservers();
    launch(Feature::networkSpeed);
    subscribeToHistory();
    launch(Feature::clipboardHistory);
    launch(Feature::snippingTool);
    launch(Feature::screenRecorder);
    launch(Feature::keepAwake);
    m_flagReactions =
        std::make_unique<FlagReactions>(FlagReactions::Parts{m_shell, m_tools, m_hotKeys, *m_statusMenu, m_display});
    decideOnboarding();
    after(secondDrawDelay, [this] { updateStatusItem(); });
    // So that the first card has its button; it costs something only for who uploads.
    after(uploadsDelay, [this] { static_cast<void>(m_shell.uploads().isButtonShown()); });
    NotificationCenter &center = m_shell.center();
    observe(center, "com.tavrine.restartSnip", [this](const Notification &) { handleRestartSnip(); });
    observe(center, "openClipboardSettingsRequested",
            [this](const Notification &) { handleOpenClipboardSettingsRequested(); });
    observe(center, "openTavrineEditorRequested", [this](const Notification &) { handleOpenTavrineEditorRequested(); });
    observe(center, "openLofiSettingsRequested", [this](const Notification &) { handleOpenLofiSettingsRequested(); });
}

void AppDelegate::launch(Feature feature) {
    if (Tool *tool = m_tools[feature])
        tool->launch(m_shell.flags().isOn(feature));
}

void AppDelegate::startUpdater() {
    Desktop &desktop = m_shell.desktop();
    m_updaterController = std::make_unique<SoftwareUpdater>(
        SoftwareUpdater::Ports{desktop.time(), m_shell.defaults(), desktop.packageUpdates(), desktop.updateFeed(),
                               desktop.userNotifications(), desktop.urlOpener()},
        QStringLiteral(TAVRINE_VERSION));
    connect(m_updaterController.get(), &SoftwareUpdater::unheard, this, &AppDelegate::showAbout);
    m_updaterController->start();
}

void AppDelegate::setupStatusItem() {
    m_display.setUp();
    observe(m_shell.center(), "updateMenuBarVisibility", [this](const Notification &notification) {
        const QVariant visible = notification.userInfo.value(QStringLiteral("visible"));
        if (visible.typeId() != QMetaType::Bool)
            return;
        m_shell.time().async(this, [this, isVisible = visible.toBool()] { m_display.setVisible(isVisible); });
    });
    m_statusMenu =
        std::make_unique<StatusMenu>(m_shell.defaults(), m_shell.flags(), m_shell.experienceSettings(),
                                     StatusMenu::Actions{
                                         .onHotKeyPressed = [this] { onHotKeyPressed(); },
                                         .onEmojiPickerHotKeyPressed = [this] { onEmojiPickerHotKeyPressed(); },
                                         .pickColor = [this] { pickColor(); },
                                         .checkForUpdates = [this] { checkForUpdates(); },
                                         .quitApp = [this] { quitApp(); },
                                     });
    m_shell.desktop().statusItem().setOnPress([this](QPoint place, Seconds ago) { trayMenu().press(place, ago); });
    m_shell.desktop().statusItem().setOnSecondaryPress(
        [this](QPoint place, Seconds ago) { secondaryPress(place, ago); });
    m_shell.desktop().statusItem().setMenu(
        {.lines = [this] { return trayMenu().lines(); }, .onChosen = [this](int id) { trayMenu().choose(id); }});
}

void AppDelegate::startSpeedObservers() {
    connect(&m_tools.networkSpeed().monitor(), &NetworkMonitor::published, this, [this] { updateStatusItemSoon(); });
    observe(m_shell.center(), UserDefaults::didChangeNotification,
            [this](const Notification &) { updateStatusItemSoon(); });
    updateStatusItem();
}

/// Once a turn, however much has changed in it.
void AppDelegate::updateStatusItemSoon() {
    if (!std::exchange(m_isUpdateDue, true))
        m_shell.time().async(this, [this] {
            m_isUpdateDue = false;
            updateStatusItem();
        });
}

void AppDelegate::subscribeToHistory() {
    ClipboardManager &manager = m_shell.clipboardManager();
    connect(&manager, &ClipboardManager::historyChanged, this, [this, &manager] {
        // Protected items stand before all others in the list, whatever their age.
        const auto &history = manager.history();
        const auto newest = std::max_element(history.begin(), history.end(),
                                             [](const auto &a, const auto &b) { return a.date < b.date; });
        m_shell.time().async(this, [this, item = newest == history.end() ? std::nullopt : std::optional(*newest)] {
            showFreshCapture(item);
        });
    });
}

void AppDelegate::showFreshCapture(const std::optional<ClipboardItem> &newest) {
    SnippingTool &snipping = m_tools.snipping();
    if (!newest || !snipping.isWaitingForCapture())
        return;
    const double age = std::abs((m_shell.time().now() - newest->date).count());
    if (age >= freshCaptureSeconds || !newest->imageFileName)
        return;
    snipping.setWaitingForCapture(false);
    snipping.showPreviewCard(*newest);
}

void AppDelegate::decideOnboarding() {
    if (!preference::hasCompletedOnboarding.get(m_shell.defaults())) {
        after(onboardingDelay, [this] { showOnboarding(); });
        return;
    }
    m_shell.desktop().access().whenKnown(this, [this] {
        const bool isTrusted = m_shell.windowManager().isAccessibilityTrusted(Prompt::allowed);
        printLine(QStringLiteral("DEBUG: Accessibility Trusted on Launch: ") +
                  (isTrusted ? QStringLiteral("true") : QStringLiteral("false")));
    });
}

// Triggers.

PanelController::Contents AppDelegate::panelContents() {
    return {.classic = [this] { return m_tools.clipboard().makeClassicView(); },
            .search = [this] { return m_tools.clipboard().makeSearchView(); },
            .emoji = [this] { return m_tools.emojiPicker().makeView(); }};
}

HotKeyCenter::Actions AppDelegate::hotKeyActions() {
    return {.isFeatureOn = [this](Trigger trigger) { return isFeatureOn(trigger); },
            .open = [this](Trigger trigger) { open(trigger); },
            .mayCaptureScreen = [this] { return m_shell.windowManager().mayCaptureScreen(); },
            .isPasting = [this] { return m_shell.pasteBack().isPasting(); },
            .refreshEmojiMenuEntry = [this] { m_statusMenu->refreshEmojiMenuItem(); },
            .refreshClipboardMenuEntry = [this] { m_statusMenu->refreshClipboardMenuItem(); }};
}

/// A key that would do nothing is not taken from other programs.
bool AppDelegate::isFeatureOn(Trigger trigger) {
    const Feature feature = featureOf(trigger);
    return m_tools[feature] && m_shell.flags().isOn(feature);
}

/// The menu entries come here too: a disabled entry cannot be chosen, so no flag is asked.
void AppDelegate::open(Trigger trigger) {
    m_tools[featureOf(trigger)]->open(trigger);
}

void AppDelegate::onHotKeyPressed() {
    open(Trigger::clipboard);
}

void AppDelegate::onEmojiPickerHotKeyPressed() {
    open(Trigger::emojiPicker);
}

void AppDelegate::startSnip() {
    m_tools.snipping().startSnip();
}

void AppDelegate::pickColor() {
    m_tools.colorPicker().pickColor();
}

// A new capture from the editor.

void AppDelegate::handleRestartSnip() {
    m_shell.time().async(this, [this] { restartSnip(); });
}

void AppDelegate::restartSnip() {
    debug("AppDelegate - Received restartSnip notification (Async).");
    debug("AppDelegate - Pausing clipboard monitoring...");
    m_shell.clipboardManager().pauseMonitoring();
    m_tools.editor().tearDownWindow();
    debug("AppDelegate - Scheduling new snip in 0.5s...");
    after(newSnipDelay, [this] {
        debug("AppDelegate - Executing startSnip...");
        m_tools.snipping().startCapture();
        after(resumeDelay, [this] {
            debug("AppDelegate - Resuming clipboard monitoring...");
            // Whatever the switch says: what was paused here is resumed here.
            ClipboardManager &manager = m_shell.clipboardManager();
            manager.setPaused(false);
            manager.reloadHistory();
            manager.startMonitoring();
        });
    });
}

// Windows.

bool AppDelegate::applicationShouldHandleReopen(bool /*hasVisibleWindows*/) {
    LargeWindows &windows = m_shell.largeWindows();
    const QWidget *editor = windows.window(LargeWindows::Kind::editor);
    if (editor && editor->isVisible())
        windows.bringForward(LargeWindows::Kind::editor);
    else
        openMainWindow(SidebarItem::home);
    return true;
}

void AppDelegate::startedAgain(const QString &action) {
    m_shell.desktop().access().whenKnown(this, [this, action] {
        if (!m_startActions.run(action))
            applicationShouldHandleReopen(false);
    });
}

void AppDelegate::dismissFloatingPanels() {
    if (PanelController *panels = m_shell.panelsIfMade())
        panels->orderOutAllPanels();
}

void AppDelegate::handleOpenClipboardSettingsRequested() {
    dismissFloatingPanels();
    openMainWindow(SidebarItem::clipboard);
}

void AppDelegate::handleOpenLofiSettingsRequested() {
    dismissFloatingPanels();
    openMainWindow(SidebarItem::lofi);
}

void AppDelegate::openSettings() {
    openMainWindow(SidebarItem::home);
}

void AppDelegate::openMainWindow(SidebarItem item) {
    LargeWindows &windows = m_shell.largeWindows();
    windows.becomeRegular();
    if (!windows.window(LargeWindows::Kind::settings))
        windows.keep(LargeWindows::Kind::settings, m_settingsWindow.makeWindow());
    windows.activateApplication();
    windows.bringForward(LargeWindows::Kind::settings);
    const char *notice = item == SidebarItem::clipboard ? "navigateToClipboardSettings"
                         : item == SidebarItem::lofi    ? "navigateToLofiSettings"
                                                        : nullptr;
    if (notice)
        m_shell.time().async(this, [this, notice] { m_shell.center().post(QLatin1String(notice)); });
}

/// Where the outcome of a look for updates stands.
void AppDelegate::showAbout() {
    openMainWindow(SidebarItem::about);
    if (QWidget *settings = m_shell.largeWindows().window(LargeWindows::Kind::settings))
        SettingsWindow::select(*settings, SidebarItem::about);
}

/// Once more, when the menu is gone for certain: the desktop may have given the front to another meanwhile. Who has
/// closed the window by then wants none.
void AppDelegate::bringSettingsForward() {
    LargeWindows &windows = m_shell.largeWindows();
    if (!windows.window(LargeWindows::Kind::settings))
        return;
    windows.becomeRegular();
    windows.activateApplication();
    windows.bringForward(LargeWindows::Kind::settings);
}

void AppDelegate::showOnboarding() {
    m_onboarding.showOnboarding();
}

void AppDelegate::openEditor(const std::optional<QImage> &image) {
    debug("AppDelegate - openTavrineEditor called");
    if (m_shell.flags().isOn(Feature::tavrineEditor))
        m_tools.editor().openTavrineEditor(image);
    else
        debug("Tavrine Editor is disabled in FeatureFlags.");
}

// The tray item.

TrayMenu &AppDelegate::trayMenu() {
    return m_trayMenu.get([this] {
        return std::make_unique<TrayMenu>(
            m_shell, m_tools, *m_statusMenu,
            TrayMenu::Actions{
                .willOpen = [this] { menuWillOpen(); },
                .openEditor = [this] { m_shell.center().post(QStringLiteral("openTavrineEditorRequested")); },
                .openSettings = [this] { openSettings(); },
                .bringSettingsForward = [this] { bringSettingsForward(); }});
    });
}

/// The clipboard is what people want most often; without it there is the menu.
void AppDelegate::secondaryPress(QPoint place, Seconds ago) {
    if (m_shell.flags().isOn(Feature::clipboardHistory))
        onHotKeyPressed();
    else
        trayMenu().press(place, ago);
}

void AppDelegate::menuWillOpen() {
    m_tools.keepAwake().menuWillOpen();
    m_statusMenu->refreshClipboardMenuItem();
    m_statusMenu->refreshEmojiMenuItem();
}

void AppDelegate::checkForUpdates() {
    m_updaterController->checkForUpdates();
}

void AppDelegate::quitApp() {
    m_shell.desktop().application().terminate();
}

void AppDelegate::observe(NotificationCenter &center, const char *name, NotificationCenter::Handler handler) {
    m_observers.push_back(center.addObserver(QLatin1String(name), std::move(handler)));
}

void AppDelegate::after(Seconds delay, std::function<void()> work) {
    m_shell.time().asyncAfter(delay, this, std::move(work));
}

} // namespace tavrine
