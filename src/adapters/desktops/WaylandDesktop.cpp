#include "adapters/desktops/WaylandDesktop.h"

#include "adapters/desktops/TriedAbilities.h"
#include "adapters/linux/ApplicationObject.h"
#include "adapters/linux/CastPortal.h"
#include "adapters/linux/DesktopHotKeys.h"
#include "adapters/linux/LinuxSessionNotices.h"
#include "adapters/linux/NoScreenStreams.h"
#include "adapters/linux/PluginLoader.h"
#include "adapters/linux/StatusNotifierItem.h"
#include "adapters/linux/TrayStatusItem.h"
#include "adapters/wayland/AbsentPorts.h"
#include "adapters/wayland/CompositorLoss.h"
#include "adapters/wayland/HiddenWindows.h"
#include "adapters/wayland/KeyboardsOnScreen.h"
#include "adapters/wayland/LayerEdgeWindow.h"
#include "adapters/wayland/LayerPanelWindow.h"
#include "adapters/wayland/LayerParts.h"
#include "adapters/wayland/StiffWindows.h"
#include "adapters/wayland/ToolkitScale.h"
#include "adapters/wayland/TrayPlace.h"
#include "adapters/wayland/WaylandAccess.h"
#include "adapters/wayland/WaylandApplicationActivator.h"
#include "adapters/wayland/WaylandColorSampler.h"
#include "adapters/wayland/WaylandDragging.h"
#include "adapters/wayland/WaylandEventMonitors.h"
#include "adapters/wayland/WaylandEventPoster.h"
#include "adapters/wayland/WaylandEventTap.h"
#include "adapters/wayland/WaylandIdleKeeper.h"
#include "adapters/wayland/WaylandLink.h"
#include "adapters/wayland/WaylandPasteboard.h"
#include "adapters/wayland/WaylandReader.h"
#include "adapters/wayland/WaylandScreens.h"
#include "adapters/wayland/WaylandWorkspace.h"
#include "look/Look.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <vector>

namespace tavrine {

namespace {

constexpr auto portalPlugin = "portal_screen_stream";

} // namespace

WaylandDesktop::WaylandDesktop(std::shared_ptr<WaylandConnection> connection) : m_connection(std::move(connection)) {
    LayerShell::prepareToolkit();
    compositorLoss::watchToolkit();
}
WaylandDesktop::~WaylandDesktop() = default;

std::vector<std::unique_ptr<Appearance>> WaylandDesktop::toolkitSettings() {
    hiddenWindows::guard();
    m_toolkitScale = std::make_unique<ToolkitScale>([this] { scaleChanged(); });
    return LinuxDesktop::toolkitSettings();
}

/// What floats is shown anew at its places; large windows keep theirs and what they show.
void WaylandDesktop::scaleChanged() {
    if (LayerParts *parts = m_layerParts.ifMade())
        parts->shell.showAnew();
    const auto windows = QGuiApplication::topLevelWindows();
    for (QWindow *window : windows)
        if (window->isVisible() && !window->flags().testFlag(Qt::BypassWindowManagerHint))
            window->setGeometry(window->geometry());
    if (WaylandScreens *screens = m_screens.ifMade())
        screens->tellChange();
}

void WaylandDesktop::startedAgain(const StartIdentifiers &identifiers) {
    // Where the toolkit looks when the next window comes forward.
    if (!identifiers.activationToken.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", identifiers.activationToken);
}

AbilityReport WaylandDesktop::report(Ability ability) {
    if (ability == Ability::hotKeys)
        return abilityReport::hotKeys(hotKeys().traits());
    if (ability == Ability::doubleTap)
        return abilityReport::doubleTap(hotKeys().traits());
    if (ability == Ability::recording) {
        const char *const plugin = streamPlugin();
        if (plugin == portalPlugin)
            return recordingByPortal();
        return plugin ? abilityReport::there(ability) : abilityReport::missing(ability);
    }
    return LinuxDesktop::report(ability);
}

/// The plugin that this compositor gives moving pictures to; where it gives none to any, the portal's, which asks the
/// person. Null when it does not answer.
const char *WaylandDesktop::streamPlugin() {
    if (m_streamPlugin)
        return m_streamPlugin;
    const WaylandLink link(m_connection);
    if (!link.isOpen())
        return nullptr;
    if (link.find("zwlr_screencopy_manager_v1"))
        return m_streamPlugin = "wayland_screen_stream";
    return m_streamPlugin = link.find("zkde_screencast_unstable_v1") ? "kwin_screen_stream" : portalPlugin;
}

const std::shared_ptr<WaylandReader> &WaylandDesktop::reader() {
    if (!m_reader)
        m_reader = std::make_shared<WaylandReader>(m_connection);
    return m_reader;
}

const std::shared_ptr<WaylandWindows> &WaylandDesktop::windows() {
    if (!m_windows)
        m_windows = WaylandWindows::make(reader());
    return m_windows;
}

/// Who has large windows asks for it before the first of them is shown.
Application &WaylandDesktop::application() {
    (void)m_stiffWindows.get([] { return std::make_unique<StiffWindows>(); });
    return LinuxDesktop::application();
}

SessionNotices &WaylandDesktop::sessionNotices() {
    return m_sessionNotices.get([] { return std::make_unique<LinuxSessionNotices>(); });
}

Workspace &WaylandDesktop::workspace() {
    return m_workspace.get([this] {
        const auto stack = [this] {
            const LayerParts *parts = m_layerParts.ifMade();
            return parts ? &parts->stack : nullptr;
        };
        return std::make_unique<WaylandWorkspace>(
            windows(), [stack] { return stack() && stack()->asksForKeyboard(); },
            [stack] { return stack() && stack()->isHeld(); });
    });
}

ApplicationActivator &WaylandDesktop::applicationActivator() {
    return m_activator.get([this] { return std::make_unique<WaylandApplicationActivator>(windows()); });
}

Screens &WaylandDesktop::screens() {
    return m_screens.get([this] { return std::make_unique<WaylandScreens>(reader()); });
}

PanelWindows &WaylandDesktop::panelWindows() {
    return m_panelWindows.get([this] { return std::make_unique<LayerPanelWindows>(layerParts()); });
}

LayerParts &WaylandDesktop::layerParts() {
    return m_layerParts.get([] { return std::make_unique<LayerParts>(); });
}

/// Once presses beside them are heard.
LayerParts &WaylandDesktop::watchedParts() {
    LayerParts &parts = layerParts();
    (void)m_keyboardsOnScreen.get([&] { return std::make_unique<KeyboardsOnScreen>(parts.shell, screens()); });
    return parts;
}

EdgeWindows &WaylandDesktop::edgeWindows() {
    // Who shows no panel never asks whether windows show through. A tool tip of the shelf's would have square corners.
    if (look::Look *look = look::Look::current())
        look->setCompositing(true);
    return m_edgeWindows.get([this] { return std::make_unique<LayerEdgeWindows>(layerParts()); });
}

StatusItem &WaylandDesktop::statusItem() {
    return m_statusItem.get([this] {
        std::vector<std::unique_ptr<TrayIcon>> icons;
        icons.push_back(std::make_unique<StatusNotifierItem>());
        return std::make_unique<TrayStatusItem>(std::move(icons), TrayPlace(screens()));
    });
}

ColorSamplers &WaylandDesktop::colorSamplers() {
    return m_colorSamplers.get([] { return std::make_unique<WaylandColorSamplers>(); });
}

ScreenStreams &WaylandDesktop::screenStreams() {
    const char *const plugin = m_screenStreams.ifMade() ? "" : streamPlugin();
    if (!plugin) // the compositor is too busy to say, and is asked again
        return m_noScreenStreams.get([] { return std::make_unique<NoScreenStreams>(); });
    ScreenStreams *const streams =
        m_screenStreams
            .get([plugin] { return std::make_unique<PluginLoader<ScreenStreams>>(QString::fromLatin1(plugin)); })
            .port();
    return streams ? *streams : m_noScreenStreams.get([] { return std::make_unique<NoScreenStreams>(); });
}

void WaylandDesktop::watchCompositing(std::function<void(bool isComposited)> handler) {
    handler(true); // always
}

HotKeys &WaylandDesktop::hotKeys() {
    return m_hotKeys.get([] { return std::make_unique<DesktopHotKeys>(); });
}

EventMonitors &WaylandDesktop::eventMonitors() {
    return m_eventMonitors.get(
        [this] { return std::make_unique<WaylandEventMonitors>([this]() -> LayerParts & { return watchedParts(); }); });
}

EventPoster &WaylandDesktop::eventPoster() {
    // Some programs paste the primary selection: it gets the same text.
    return m_eventPoster.get([this] {
        return std::make_unique<WaylandEventPoster>(
            windows(), [this] { return pasteboard().string().value_or(QString()); }, reader());
    });
}

EventTaps &WaylandDesktop::eventTaps() {
    return m_eventTaps.get([this] { return std::make_unique<WaylandEventTaps>(reader(), layerParts().stack); });
}

DragPasteboards &WaylandDesktop::dragPasteboards() {
    return m_dragPasteboards.get([] { return std::make_unique<absent::NoDragPasteboards>(); });
}

Dragging &WaylandDesktop::dragging() {
    return m_dragging.get([this] { return std::make_unique<WaylandDragging>(layerParts().shell, m_connection); });
}

Access &WaylandDesktop::access() {
    return m_access.get([this] {
        return std::make_unique<WaylandAccess>(
            [this] { return streamPlugin() == portalPlugin && castPortal().answer() != CastPortal::Answer::missing; },
            WaylandLink::usualWait, m_connection);
    });
}

std::vector<std::unique_ptr<PowerKeeper>> WaylandDesktop::powerKeepers() {
    auto keepers = LinuxDesktop::powerKeepers();
    keepers.push_back(std::make_unique<WaylandIdleKeeper>(reader()));
    return keepers;
}

Pasteboard &WaylandDesktop::pasteboard() {
    return m_pasteboard.get([] { return std::make_unique<WaylandPasteboard>(compositorLoss::endProgram); });
}

} // namespace tavrine
