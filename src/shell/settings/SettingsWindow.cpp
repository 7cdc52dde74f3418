#include "shell/settings/SettingsWindow.h"

#include "capture/SnipperSettingsModel.h"
#include "capture/SnipperSettingsView.h"
#include "ports/Alerts.h"
#include "shell/HotKeyCenter.h"
#include "shell/Shell.h"
#include "shell/settings/AboutView.h"
#include "shell/settings/ClearAndDisable.h"
#include "shell/settings/ClipboardSettingsView.h"
#include "shell/settings/FeaturesSettingsView.h"
#include "shell/settings/GeneralSettingsView.h"
#include "shell/settings/HomeDashboardView.h"
#include "shell/settings/KeepAwakeSettingsView.h"
#include "shell/settings/LayoutSettingsView.h"
#include "shell/settings/MainAppView.h"
#include "shell/settings/MemoryCleaningOverlayView.h"
#include "shell/settings/NetworkSettingsView.h"
#include "shell/settings/PrivacySettingsView.h"
#include "shell/settings/TriggerSettingsView.h"
#include "shell/tools/Tools.h"
#include "upload/CloudUploadSettingsView.h"
#include "upload/CustomUploadManager.h"
#include "upload/UploadScripts.h"
#include "upload/Uploads.h"
#include "utilities/awake/KeepAwakeControlView.h"

#include <QCoreApplication>

namespace tavrine {
namespace {

/// The version that the program's entry has named.
QString appVersion() {
    constexpr auto unknown = "2.3.1";
    const QString version = QCoreApplication::applicationVersion();
    return version.isEmpty() ? QLatin1String(unknown) : version;
}

} // namespace

std::unique_ptr<QWidget> SettingsWindow::makeWindow() {
    Shell &shell = m_parts.shell;
    Desktop &desktop = shell.desktop();
    auto flow = std::make_unique<ClearAndDisable>(
        ClearAndDisable::Ports{desktop.alerts(), shell.clipboardManager(), shell.flags(), shell.time()});
    ClearAndDisable *clearAndDisable = flow.get();
    auto window = MainAppView::makeWindow(
        shell.center(), [this, clearAndDisable](SidebarItem item) { return make(item, *clearAndDisable); },
        [&desktop](const look::Draft::Question &question) {
            return desktop.alerts().runModal(
                {.message = question.message,
                 .information = question.information,
                 .buttons = {QStringLiteral("Save Changes"), QStringLiteral("Don't Save")}});
        });
    flow.release()->setParent(window.get());
    auto *overlay = new MemoryCleaningOverlay(window.get());
    QObject::connect(clearAndDisable, &ClearAndDisable::changed, overlay,
                     [clearAndDisable, overlay] { overlay->setShown(clearAndDisable->showMemoryCleaningOverlay()); });
    return window;
}

void SettingsWindow::select(QWidget &window, SidebarItem item) {
    if (auto *view = qobject_cast<MainAppView *>(&window))
        view->setSelection(item);
}

std::unique_ptr<QWidget> SettingsWindow::make(SidebarItem item, ClearAndDisable &clearAndDisable) {
    Shell &shell = m_parts.shell;
    Desktop &desktop = shell.desktop();
    const QString &resources = desktop.folders().resources;
    switch (item) {
    case SidebarItem::home:
        return makeHome();
    case SidebarItem::general:
        return std::make_unique<GeneralSettingsView>(GeneralSettingsModel::Ports{
            shell.defaults(), shell.center(), desktop.loginItem(), shell.clipboardManager()});
    case SidebarItem::features:
        return std::make_unique<FeaturesSettingsView>(shell.flags(), shell.time(),
                                                      [&clearAndDisable] { clearAndDisable.ask(); });
    case SidebarItem::clipboard:
        return makeClipboard();
    case SidebarItem::emoji:
        return std::make_unique<TriggerSettingsView>(TriggerSettingsView::emojiPicker, makeEditor(Trigger::emojiPicker),
                                                     shell.flags(), desktop.urlOpener());
    case SidebarItem::screenRecord:
        return std::make_unique<TriggerSettingsView>(
            TriggerSettingsView::screenRecord, makeEditor(Trigger::screenRecorder), shell.flags(), desktop.urlOpener());
    case SidebarItem::snipper:
        return makeSnipper();
    case SidebarItem::cloudUpload:
        return makeCloudUpload();
    case SidebarItem::privacy:
        return std::make_unique<PrivacySettingsView>(PrivacySettingsModel::Ports{
            desktop.alerts(), shell.clipboardManager(), shell.time(), desktop.urlOpener(), resources});
    case SidebarItem::about:
        return std::make_unique<AboutView>(
            AboutView::Parts{desktop.urlOpener(), m_parts.updater(), resources, appVersion(), {}});
    case SidebarItem::layout:
        return std::make_unique<LayoutSettingsView>(shell.flags(), shell.defaults(), shell.center());
    case SidebarItem::keepAwake:
        return std::make_unique<KeepAwakeSettingsView>(
            std::make_unique<KeepAwakeSettingsModel>(shell.defaults(), shell.center()),
            shell.flags().isOn(Feature::keepAwake) ? m_parts.tools.keepAwake().makeControlView({}) : nullptr);
    case SidebarItem::lofi:
        return std::unique_ptr<QWidget>(m_parts.tools.lofi().makeSettingsView());
    case SidebarItem::network:
        return std::make_unique<NetworkSettingsView>(
            std::make_unique<NetworkSettingsModel>(shell.defaults(), shell.center()));
    }
    return nullptr;
}

std::unique_ptr<ShortcutEditor> SettingsWindow::makeEditor(Trigger trigger) {
    Shell &shell = m_parts.shell;
    return std::make_unique<ShortcutEditor>(
        trigger, shell.defaults(), shell.time(),
        ShortcutEditor::Actions{
            .isFeatureOn = [&shell](Trigger other) { return shell.flags().isOn(featureOf(other)); },
            .registerHotkeys = [this] { m_parts.hotKeys.registerHotkeys(); },
            .setHotkeyCharacter = [&shell](const QString &key) { shell.clipboardManager().setHotkeyCharacter(key); },
            .isTakenElsewhere = [this](Trigger asked) { return m_parts.hotKeys.isTakenElsewhere(asked); }});
}

std::unique_ptr<QWidget> SettingsWindow::makeHome() {
    Shell &shell = m_parts.shell;
    Desktop &desktop = shell.desktop();
    auto home = std::make_unique<HomeDashboardView>(
        HomeDashboardModel::Ports{shell.defaults(), desktop.access(), shell.time(), desktop.urlOpener(),
                                  desktop.folders().resources, desktop.desktopAbilities(),
                                  [&desktop]() -> Pasteboard & { return desktop.pasteboard(); }},
        appVersion());
    // A desktop that keeps the keys may answer while the page is read.
    QObject::connect(&m_parts.hotKeys, &HotKeyCenter::heldChanged, home.get(), &HomeDashboardView::desktopChanged);
    return home;
}

std::unique_ptr<QWidget> SettingsWindow::makeClipboard() {
    Shell &shell = m_parts.shell;
    Desktop &desktop = shell.desktop();
    const ClipboardSettingsModel::Ports ports{shell.clipboardManager(),
                                              shell.experienceSettings(),
                                              shell.defaults(),
                                              shell.center(),
                                              shell.time(),
                                              desktop.alerts(),
                                              desktop.filePanels(),
                                              desktop.workspace(),
                                              desktop.applicationCatalog()};
    return std::make_unique<ClipboardSettingsView>(
        ClipboardSettingsView::Parts{ports, shell.flags(), desktop.urlOpener()}, makeEditor(Trigger::clipboard));
}

std::unique_ptr<QWidget> SettingsWindow::makeSnipper() {
    Shell &shell = m_parts.shell;
    Desktop &desktop = shell.desktop();
    auto model = std::make_unique<SnipperSettingsModel>(
        SnipperSettingsModel::Ports{shell.defaults(), shell.center(), desktop.filePanels(), desktop.folders()});
    return std::make_unique<SnipperSettingsView>(
        std::move(model), new ShortcutEditorView(makeEditor(Trigger::capture),
                                                 {.typeNote = {},
                                                  .keyTitle = QStringLiteral("Capture Hotkey"),
                                                  .keyNote = QStringLiteral("Trigger screen capture from anywhere"),
                                                  .doubleTapNote = {}},
                                                 desktop.urlOpener()));
}

std::unique_ptr<QWidget> SettingsWindow::makeCloudUpload() {
    Shell &shell = m_parts.shell;
    Desktop &desktop = shell.desktop();
    Uploads &uploads = shell.uploads();
    return std::make_unique<CloudUploadSettingsView>(
        CloudUploadSettingsModel::Ports{uploads.manager(), shell.time(), desktop.urlOpener(),
                                        [&desktop] { return desktop.scriptSyntax(); }, uploads.runner(),
                                        [&uploads] { return uploads.uploadFileName(); }, desktop.folders().resources},
        CloudUploadSettingsModel::Texts{defaultUploadScript(), imgBBUploadScript()});
}

} // namespace tavrine
