#include "shell/ShellTools.h"

#include "base/Time.h"
#include "capture/ScreenSnipper.h"
#include "clipboard/ClipboardExperienceSettings.h"
#include "clipboard/ClipboardManager.h"
#include "ports/ApplicationActivator.h"
#include "ports/Screens.h"
#include "shell/AppDelegate.h"
#include "shell/CaptureServices.h"
#include "shell/FeatureFlags.h"
#include "shell/PanelTraits.h"

#include <QWidget>

namespace tavrine {
namespace {

void bringForward(QWidget *window) {
    if (!window)
        return;
    window->show();
    window->raise();
    window->activateWindow();
}

} // namespace

ShellTools::ShellTools(Ports ports, Views views)
    : m_ports(std::move(ports)), m_views(std::move(views)),
      m_windowManager({.access = m_ports.access,
                       .alerts = m_ports.alerts,
                       .urlOpener = m_ports.urlOpener,
                       .time = m_ports.time,
                       .clearSelectionWindow = [] {}, // there is no recorder yet
                       .activateApplication = [this] { desktop().panels.activator.activateIgnoringOtherApps(); }}),
      m_hotKeyCenter(m_ports.hotKeys, m_ports.monitors, m_ports.access, m_ports.defaults, m_ports.time,
                     hotKeyActions()),
      m_onboarding(m_ports.application, m_ports.time, onboardingWindows()),
      m_editor({m_ports.time, m_ports.application, [this]() -> Screens & { return desktop().panels.screens; }},
               editorWindows()) {
    if (m_ports.captureServices)
        m_ports.captureServices->setShowToast(
            [this](const QString &message, const QString &icon) { showToast(message, icon); });
}

ShellTools::~ShellTools() = default;

ShellTools::Desktop &ShellTools::desktop() {
    if (!m_desktop)
        m_desktop.emplace(m_ports.desktop());
    return *m_desktop;
}

PanelController &ShellTools::panels() {
    if (!m_panels) {
        m_panels = std::make_unique<PanelController>(desktop().panels, panelContents(), panelActions());
        // It hears of the programs that are left from now on; the delegate has from the start.
        if (const auto &left = m_delegate->previouslyActiveApplication())
            m_panels->appDidDeactivate(*left);
    }
    return *m_panels;
}

SnipFlow *ShellTools::snip() {
    if (!m_snip && m_ports.snipFlow)
        m_snip = m_ports.snipFlow(
            desktop(),
            {.mayCaptureScreen = [this] { return m_windowManager.mayCaptureScreen(); },
             .saveImage = [this](const QImage &image) { return m_delegate->clipboardManager().saveImage(image); },
             .activateApplication = [this] { desktop().panels.activator.activateIgnoringOtherApps(); },
             .openEditorDirectly = [this](const QImage &image) { openEditorDirectly(image); },
             .getTextFromSnip = [this](const QImage &image) { getTextFromSnip(image); }});
    return m_snip.get();
}

bool ShellTools::isFeatureOn(Trigger trigger) const {
    switch (trigger) {
    case Trigger::clipboard:
        return m_delegate->flags().isOn(Feature::clipboardHistory);
    case Trigger::emojiPicker:
        return m_delegate->flags().isOn(Feature::emojiPicker);
    case Trigger::capture:
        return m_ports.snipper && m_delegate->flags().isOn(Feature::snippingTool);
    case Trigger::screenRecorder:
        break; // a key that would do nothing is not taken from other programs
    }
    return false;
}

HotKeyCenter::Actions ShellTools::hotKeyActions() {
    return {.isFeatureOn = [this](Trigger trigger) { return isFeatureOn(trigger); },
            .toggleClipboardPanel = [this] { panels().toggleClipboardPanel(); },
            .toggleEmojiPanel = [this] { panels().toggleEmojiPanel(); },
            .startSnip = [this] { startCapture(); }, // the hot key has asked for the permission
            .startScreenRecording = [] {},
            .explainScreenCapture =
                [this] {
                    m_windowManager.probeScreenCapture();
                    m_ports.time.async(this, [this] { m_windowManager.showScreenRecordingAlert(); });
                },
            .refreshEmojiMenuEntry = [this] { m_delegate->refreshEmojiMenuItem(); },
            .refreshClipboardMenuEntry = [this] { m_delegate->refreshClipboardMenuItem(); }};
}

PanelController::Contents ShellTools::panelContents() {
    return {.classic =
                [this] {
                    return m_views.classic([this] { orderOutAllWindows(); },
                                           [this](const ClipboardItem &item) { panels().pasteFromClassic(item); });
                },
            .search =
                [this] {
                    return m_views.search([this] { panels().dismissSearchPanel(); },
                                          [this](const ClipboardItem &item) { panels().pasteFromSearch(item); });
                },
            .emoji =
                [this] {
                    return m_views.emoji([this] { panels().dismissEmojiPanel(); },
                                         [this](const QString &text) { panels().insertEmoji(text); });
                }};
}

PanelController::Actions ShellTools::panelActions() {
    return {.opensSearchPanel =
                [this] { return m_delegate->experienceSettings().selectedExperience() == ClipboardExperience::search; },
            .copyToPasteboard =
                [this](const ClipboardItem &item) { m_delegate->clipboardManager().copyToPasteboard(item); },
            .showToast = [this](const QString &message, const QString &icon) { showToast(message, icon); },
            .isAccessibilityTrusted = [this] { return accessibilityTrusted(true); }};
}

OnboardingFlow::Windows ShellTools::onboardingWindows() {
    return {.hasWelcomeWindow = [this] { return m_delegate->onboardingWindow() != nullptr; },
            .makeWelcomeWindow =
                [this] { m_delegate->setOnboardingWindow(m_views.welcome([this] { m_onboarding.finish(); })); },
            .showWelcomeWindow = [this] { bringForward(m_delegate->onboardingWindow()); },
            .closeWelcomeWindow =
                [this] {
                    if (QWidget *window = m_delegate->onboardingWindow())
                        window->close();
                    m_delegate->setOnboardingWindow(nullptr);
                },
            .openSettingsWindow = [this](const QString &page) { m_delegate->openMainWindow(page); },
            .showSettingsWindow = [this] { bringForward(m_delegate->mainWindow()); },
            .activateApplication = [this] { desktop().panels.activator.activateIgnoringOtherApps(); }};
}

EditorFlow::Windows ShellTools::editorWindows() {
    const auto closeWindow = [this] {
        if (QWidget *window = m_delegate->editorWindow())
            window->close();
        m_delegate->setEditorWindow(nullptr);
    };
    return {
        .hasWindow = [this] { return m_delegate->editorWindow() != nullptr; },
        .closeWindow = closeWindow,
        .makeWindow =
            [this, closeWindow](const EditorFlow::Window &window) {
                m_delegate->setEditorWindow(m_views.editor(window, closeWindow));
            },
        .bringWindowForward = [this] { bringForward(m_delegate->editorWindow()); },
        .activateApplication = [this] { desktop().panels.activator.activateIgnoringOtherApps(); },
        .loadImage = [this](const QString &fileName) { return m_delegate->clipboardManager().loadImage(fileName); }};
}

void ShellTools::openEditorForItem(const ClipboardItem &item) {
    if (item.imageFileName)
        m_editor.openEditorForItem(*item.imageFileName);
}

void ShellTools::showToast(const QString &message, const QString &icon) {
    if (!m_toasts)
        m_toasts = std::make_unique<ToastManager>(m_ports.time, desktop().panels.screens, desktop().toastWindows);
    m_toasts->show(message, icon);
}

void ShellTools::orderOutAllWindows() {
    panels().orderOutAllPanels();
    for (QWidget *window : {m_delegate->editorWindow(), m_delegate->mainWindow(), m_delegate->onboardingWindow()})
        if (window)
            window->hide();
}

void ShellTools::registerHotkeys() {
    m_hotKeyCenter.registerHotkeys();
    if (m_snip && !m_delegate->flags().isOn(Feature::snippingTool))
        m_snip->unload();
}

void ShellTools::showPreviewCard(const ClipboardItem &item) {
    const auto image =
        item.imageFileName ? m_delegate->clipboardManager().loadImage(*item.imageFileName) : std::nullopt;
    if (image && snip())
        snip()->showSnipPreview(*image);
}

void ShellTools::setOnSnipComplete(const std::function<void(const QImage &)> &onSnipComplete) {
    if (m_ports.snipper)
        m_ports.snipper->setOnSnipComplete(onSnipComplete);
}

void ShellTools::presentSnip(const QImage &image) {
    if (snip())
        snip()->presentSnip(image);
}

void ShellTools::startSnip() {
    if (m_delegate->flags().isOn(Feature::snippingTool) && snip())
        snip()->startSnip();
}

void ShellTools::startCapture() {
    if (m_ports.snipper)
        m_ports.snipper->startCapture();
}

void ShellTools::removePanelMonitors() {
    if (m_panels)
        m_panels->removePanelMonitors();
}

void ShellTools::orderOutClipboardPanels() {
    if (m_panels)
        m_panels->orderOutClipboardPanels();
}

void ShellTools::orderOutFloatingPanels() {
    if (m_panels)
        m_panels->orderOutAllPanels();
}

void ShellTools::unloadClipboardPanels() {
    if (m_panels)
        m_panels->unloadClipboardPanels();
}

void ShellTools::unloadEmojiPanel() {
    if (m_panels)
        m_panels->unloadEmojiPanel();
}

bool ShellTools::accessibilityTrusted(bool promptAllowed) {
    return m_windowManager.isAccessibilityTrusted(promptAllowed ? Prompt::allowed : Prompt::never);
}

void ShellTools::getTextFromSnip(const QImage &image) {
    if (m_ports.captureServices)
        m_ports.captureServices->getTextFromSnip(image, desktop().panels, [this](const QImage &read) {
            if (snip())
                snip()->autoSaveSnip(read);
        });
}

void ShellTools::pickColor() {
    if (m_ports.captureServices)
        m_ports.captureServices->pickColor();
}

} // namespace tavrine
