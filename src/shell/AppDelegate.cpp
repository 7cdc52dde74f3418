#include "shell/AppDelegate.h"

#include "base/Print.h"
#include "base/Time.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardManager.h"
#include "ports/Application.h"
#include "ports/StatusItem.h"
#include "ports/Updater.h"
#include "shell/FlagReactions.h"
#include "shell/StatusIcon.h"
#include "shell/StatusMenu.h"
#include "shell/ToolHooks.h"

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrine {
namespace {

constexpr Seconds onboardingDelay{0.2};
constexpr Seconds secondDrawDelay{0.5};
constexpr Seconds policyDelay{0.1};
constexpr Seconds detachedCloseDelay{0.1};
constexpr Seconds newSnipDelay{0.5};
constexpr Seconds resumeDelay{2.0};
constexpr double freshCaptureSeconds = 5.0;

void debug(const char *text) {
    printLine(QStringLiteral("DEBUG: ") + QLatin1String(text));
}

} // namespace

AppDelegate::AppDelegate(Ports ports, QObject *parent) : QObject(parent), m_ports(ports) {}

AppDelegate::~AppDelegate() {
    m_ports.statusItem.setOnPress({});
    for (QWidget *window : {editorWindow(), mainWindow(), onboardingWindow()})
        delete window;
}

void AppDelegate::applicationDidFinishLaunching() {
    ToolHooks &tools = hooks();
    observe(m_ports.workspace.notificationCenter(), Workspace::didDeactivateApplicationNotification,
            [this](const Notification &notification) { appDidDeactivate(notification); });
    m_ports.updater.start();
    setupStatusItem();
    if (flags().isOn(Feature::notchShelf))
        tools.showNotch();
    debug("Registering Hotkeys...");
    tools.registerHotkeys();
    tools.startSpeedObservers();
    if (!flags().isOn(Feature::networkSpeed))
        tools.stopMeter();
    subscribeToHistory();
    if (!flags().isOn(Feature::clipboardHistory))
        clipboardManager().pauseMonitoring();
    tools.setOnSnipComplete([self = QPointer<AppDelegate>(this)](const QImage &image) {
        if (self)
            self->hooks().presentSnip(image);
    });
    m_flagReactions = std::make_unique<FlagReactions>(*this);
    decideOnboarding();
    after(secondDrawDelay, [this] { hooks().updateStatusItem(); });
    NotificationCenter &center = m_ports.center;
    observe(center, "com.tavrine.restartSnip", [this](const Notification &) { handleRestartSnip(); });
    observe(center, "openClipboardSettingsRequested",
            [this](const Notification &) { handleOpenClipboardSettingsRequested(); });
    observe(center, "openTavrineEditorRequested", [this](const Notification &) { handleOpenTavrineEditorRequested(); });
    observe(center, "openLofiSettingsRequested", [this](const Notification &) { handleOpenLofiSettingsRequested(); });
}

void AppDelegate::setupStatusItem() {
    StatusItem &item = statusItem();
    item.setVisible(defaults().get<bool>(QStringLiteral("showInMenuBar"), true));
    observe(m_ports.center, "updateMenuBarVisibility", [this](const Notification &notification) {
        const QVariant visible = notification.userInfo.value(QStringLiteral("visible"));
        if (visible.typeId() != QMetaType::Bool)
            return;
        time().async(this, [this, isVisible = visible.toBool()] { statusItem().setVisible(isVisible); });
    });
    item.setImage(statusIcon(hooks().keepAwakeState().isAwake, defaults()));
    m_statusMenu =
        std::make_unique<StatusMenu>(defaults(), flags(), experienceSettings(),
                                     StatusMenu::Actions{
                                         .onHotKeyPressed = [this] { onHotKeyPressed(); },
                                         .onEmojiPickerHotKeyPressed = [this] { onEmojiPickerHotKeyPressed(); },
                                         .checkForUpdates = [this] { checkForUpdates(); },
                                         .quitApp = [this] { quitApp(); },
                                     });
    item.setOnPress([this](QPoint place) {
        menuWillOpen();
        m_statusMenu->popUp(place);
    });
}

void AppDelegate::subscribeToHistory() {
    connect(&clipboardManager(), &ClipboardManager::historyChanged, this, [this] {
        // Protected items stand before all others in the list, whatever their age.
        const auto &history = clipboardManager().history();
        const auto newest = std::max_element(history.begin(), history.end(),
                                             [](const auto &a, const auto &b) { return a.date < b.date; });
        time().async(this, [this, item = newest == history.end() ? std::nullopt : std::optional(*newest)] {
            showFreshCapture(item);
        });
    });
}

void AppDelegate::showFreshCapture(const std::optional<ClipboardItem> &newest) {
    if (!newest || !hooks().isWaitingForCapture())
        return;
    const double age = std::abs((time().now() - newest->date).count());
    if (age >= freshCaptureSeconds || !newest->imageFileName)
        return;
    hooks().clearWaitingForCapture();
    hooks().showPreviewCard(*newest);
}

void AppDelegate::decideOnboarding() {
    if (!defaults().get<bool>(QStringLiteral("hasCompletedOnboarding"), false)) {
        after(onboardingDelay, [this] { showOnboarding(); });
        return;
    }
    const bool isTrusted = hooks().accessibilityTrusted(true);
    printLine(QStringLiteral("DEBUG: Accessibility Trusted on Launch: ") +
              (isTrusted ? QStringLiteral("true") : QStringLiteral("false")));
}

void AppDelegate::handleRestartSnip() {
    time().async(this, [this] { restartSnip(); });
}

void AppDelegate::restartSnip() {
    debug("AppDelegate - Received restartSnip notification (Async).");
    debug("AppDelegate - Pausing clipboard monitoring...");
    clipboardManager().pauseMonitoring();
    tearDownEditor();
    debug("AppDelegate - Scheduling new snip in 0.5s...");
    after(newSnipDelay, [this] {
        debug("AppDelegate - Executing startSnip...");
        hooks().startCapture();
        after(resumeDelay, [this] {
            debug("AppDelegate - Resuming clipboard monitoring...");
            // Whatever the switch says: what was paused here is resumed here.
            clipboardManager().setPaused(false);
            clipboardManager().reloadHistory();
            clipboardManager().startMonitoring();
        });
    });
}

void AppDelegate::tearDownEditor() {
    if (!m_editorWindow) {
        debug("AppDelegate - No editor window found to close.");
        return;
    }
    debug("AppDelegate - Safely tearing down editor window...");
    const QPointer<QWidget> detached = m_editorWindow;
    detached->hide();
    restoreAccessoryPolicy();
    m_editorWindow = nullptr;
    after(detachedCloseDelay, [detached] {
        debug("AppDelegate - Closing detached window...");
        if (detached)
            detached->close();
        debug("AppDelegate - Editor window closed.");
    });
}

void AppDelegate::appDidDeactivate(const Notification &notification) {
    const QVariant value = notification.userInfo.value(QLatin1String(Workspace::applicationKey));
    if (!value.canConvert<RunningApplication>())
        return;
    const auto application = value.value<RunningApplication>();
    if (application.bundleIdentifier != QLatin1String(bundleIdentifier) &&
        application.processIdentifier != QCoreApplication::applicationPid())
        m_previouslyActiveApplication = application;
}

bool AppDelegate::applicationShouldHandleReopen(bool /*hasVisibleWindows*/) {
    if (m_editorWindow && m_editorWindow->isVisible()) {
        m_editorWindow->raise();
        m_editorWindow->activateWindow();
    } else {
        openMainWindow(QStringLiteral("Home"));
    }
    return true;
}

void AppDelegate::windowWillClose(QWidget *window) {
    for (QPointer<QWidget> *field : {&m_editorWindow, &m_mainWindow, &m_onboardingWindow}) {
        if (window && *field == window) {
            *field = nullptr;
            break;
        }
    }
    after(policyDelay, [this] { restoreAccessoryPolicy(); });
}

void AppDelegate::restoreAccessoryPolicy() {
    const std::array windows{m_editorWindow, m_mainWindow, m_onboardingWindow};
    if (std::none_of(windows.begin(), windows.end(), [](const auto &window) { return window && window->isVisible(); }))
        m_ports.application.setActivationPolicy(ActivationPolicy::accessory);
}

void AppDelegate::dismissFloatingPanels() {
    hooks().removePanelMonitors();
    hooks().orderOutFloatingPanels();
}

void AppDelegate::handleOpenClipboardSettingsRequested() {
    dismissFloatingPanels();
    openMainWindow(QStringLiteral("Clipboard"));
}

void AppDelegate::handleOpenLofiSettingsRequested() {
    dismissFloatingPanels();
    openMainWindow(QStringLiteral("Lo-Fi Vibe"));
}

void AppDelegate::menuWillOpen() {
    hooks().hideAdvancedPanel();
    refreshClipboardMenuItem();
    refreshEmojiMenuItem();
}

void AppDelegate::checkForUpdates() {
    m_ports.updater.checkForUpdates();
}
void AppDelegate::startSnip() {
    hooks().startSnip();
}
void AppDelegate::pickColor() {
    hooks().pickColor();
}
void AppDelegate::quitApp() {
    m_ports.application.terminate();
}
void AppDelegate::openSettings() {
    openMainWindow(QStringLiteral("Home"));
}
void AppDelegate::onHotKeyPressed() {
    hooks().toggleClipboardPanel();
}
void AppDelegate::onEmojiPickerHotKeyPressed() {
    hooks().toggleEmojiPanel();
}
void AppDelegate::openMainWindow(const QString &sidebarItem) {
    hooks().openMainWindow(sidebarItem);
}
void AppDelegate::showOnboarding() {
    hooks().showOnboarding();
}
void AppDelegate::refreshClipboardMenuItem() {
    m_statusMenu->refreshClipboardMenuItem();
}
void AppDelegate::refreshEmojiMenuItem() {
    m_statusMenu->refreshEmojiMenuItem();
}

void AppDelegate::openEditor(const std::optional<QImage> &image) {
    debug("AppDelegate - openTavrineEditor called");
    if (flags().isOn(Feature::tavrineEditor))
        hooks().openEditor(image);
    else
        debug("Tavrine Editor is disabled in FeatureFlags.");
}

void AppDelegate::keep(QPointer<QWidget> &field, QWidget *window) {
    field = window;
    if (window) {
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->installEventFilter(this);
    }
}

bool AppDelegate::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() != QEvent::Close)
        return QObject::eventFilter(watched, event);
    if (event->spontaneous() && watched == m_onboardingWindow) {
        event->ignore(); // it has no close button; a window manager may have another way to close it
        return true;
    }
    // The window is asked first: one that stays open is still ours.
    const QPointer window(qobject_cast<QWidget *>(watched));
    watched->event(event);
    if (event->isAccepted())
        windowWillClose(window);
    return true;
}

void AppDelegate::observe(NotificationCenter &center, const char *name, NotificationCenter::Handler handler) {
    m_observers.push_back(center.addObserver(QLatin1String(name), std::move(handler)));
}

void AppDelegate::after(Seconds delay, std::function<void()> work) {
    time().asyncAfter(delay, this, std::move(work));
}

} // namespace tavrine
