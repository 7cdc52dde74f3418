#include "shell/Shell.h"

#include "capture/PngData.h"
#include "capture/reading/Reading.h"
#include "look/Look.h"
#include "panels/ToastManager.h"
#include "panels/ToastView.h"
#include "ports/ApplicationActivator.h"
#include "ports/Folders.h"
#include "upload/Uploads.h"

namespace tavrine {

Shell::Shell(const Parts &parts, PanelController::Contents contents)
    : m_parts(parts), m_contents(std::move(contents)),
      m_clipboardManager({parts.desktop.time(), parts.defaults, parts.desktop.pasteboard(), parts.desktop.workspace(),
                          parts.desktop.applicationCatalog(), parts.desktop.imageCoder(), parts.desktop.movieAsset(),
                          parts.desktop.loginItem(), parts.desktop.folders(), parts.database}),
      m_flags(parts.defaults), m_experienceSettings(parts.defaults),
      m_windowManager({.access = parts.desktop.access(),
                       .alerts = parts.desktop.alerts(),
                       .urlOpener = parts.desktop.urlOpener(),
                       .time = parts.desktop.time(),
                       .clearSelectionWindow =
                           [this] {
                               if (m_clearSelectionWindow)
                                   m_clearSelectionWindow();
                           },
                       .activateApplication = [this] { activateApplication(); }}),
      m_largeWindows(parts.desktop.application(), parts.desktop.time(),
                     [this]() -> ApplicationActivator & { return m_parts.desktop.applicationActivator(); }),
      m_pasteBack(parts.desktop.workspace(), parts.desktop.time()) {}

Shell::~Shell() = default;

PanelController &Shell::panels() {
    return m_panels.get([this] {
        Desktop &desktop = m_parts.desktop;
        return std::make_unique<PanelController>(
            PanelController::Ports{.windows = panelWindows(),
                                   .monitors = desktop.eventMonitors(),
                                   .poster = desktop.eventPoster(),
                                   .screens = desktop.screens(),
                                   .workspace = desktop.workspace(),
                                   .pasteBack = m_pasteBack,
                                   .activator = desktop.applicationActivator(),
                                   .pasteboard = desktop.pasteboard(),
                                   .defaults = m_parts.defaults,
                                   .center = m_parts.center,
                                   .time = desktop.time()},
            m_contents,
            PanelController::Actions{
                .opensSearchPanel =
                    [this] { return m_experienceSettings.selectedExperience() == ClipboardExperience::search; },
                .copyToPasteboard = [this](const ClipboardItem &item) { m_clipboardManager.copyToPasteboard(item); },
                .showToast = [this](const QString &message, const QString &icon) { showToast(message, icon); },
                .isAccessibilityTrusted = [this] { return m_windowManager.isAccessibilityTrusted(Prompt::allowed); }});
    });
}

PanelWindows &Shell::panelWindows() {
    if (!m_watchesCompositing) {
        m_watchesCompositing = true;
        m_parts.desktop.watchCompositing([](bool isComposited) {
            if (look::Look *look = look::Look::current())
                look->setCompositing(isComposited);
        });
    }
    return m_parts.desktop.panelWindows();
}

void Shell::showToast(const QString &message, const QString &icon) {
    m_toasts
        .get([this] {
            return std::make_unique<ToastManager>(
                time(), m_parts.desktop.screens(), panelWindows(),
                [](const QString &words, const QString &symbol) { return new ToastView(words, symbol); });
        })
        .show(message, icon);
}

void Shell::activateApplication() {
    m_parts.desktop.applicationActivator().activateIgnoringOtherApps();
}

Uploads &Shell::uploads() {
    return m_uploads.get([this] {
        Desktop &desktop = m_parts.desktop;
        auto uploads = std::make_unique<Uploads>(
            Uploads::Ports{.time = desktop.time(),
                           .defaults = m_parts.defaults,
                           .center = m_parts.center,
                           .keychain = desktop.keychain(),
                           .pasteboard = desktop.pasteboard(),
                           .workerPath = desktop.folders().programs + QStringLiteral("/TavrineUploadWorker"),
                           .pngData = pngData});
        uploads->setShowToast([this](const QString &message, const QString &icon) { showToast(message, icon); });
        return uploads;
    });
}

Reading &Shell::reading() {
    return m_reading.get([this] {
        Desktop &desktop = m_parts.desktop;
        return std::make_unique<Reading>(Reading::Ports{desktop.recognizer(), desktop.screenCodeDetector(),
                                                        desktop.pictureCodeDetector(), desktop.time()});
    });
}

} // namespace tavrine
