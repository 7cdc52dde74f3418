#include "adapters/desktops/X11Desktop.h"

#include "adapters/linux/ApplicationObject.h"
#include "adapters/linux/NoScreenStreams.h"
#include "adapters/linux/PluginLoader.h"
#include "adapters/linux/StatusNotifierItem.h"
#include "adapters/linux/TrayStatusItem.h"
#include "adapters/x11/X11Access.h"
#include "adapters/x11/X11ApplicationActivator.h"
#include "adapters/x11/X11ColorSampler.h"
#include "adapters/x11/X11Compositor.h"
#include "adapters/x11/X11DragPasteboards.h"
#include "adapters/x11/X11Dragging.h"
#include "adapters/x11/X11EdgeWindow.h"
#include "adapters/x11/X11EventMonitors.h"
#include "adapters/x11/X11EventPoster.h"
#include "adapters/x11/X11EventTap.h"
#include "adapters/x11/X11HotKeys.h"
#include "adapters/x11/X11PanelWindow.h"
#include "adapters/x11/X11Pasteboard.h"
#include "adapters/x11/X11ScreenSaverKeeper.h"
#include "adapters/x11/X11Screens.h"
#include "adapters/x11/X11SessionNotices.h"
#include "adapters/x11/X11Workspace.h"
#include "adapters/x11/XEmbedTrayIcon.h"
#include "adapters/x11/XSettingsAppearance.h"

#include <QToolTip>

#include <vector>

namespace tavrine {
namespace {

/// In the order in which they are tried.
std::vector<std::unique_ptr<TrayIcon>> trayIcons() {
    std::vector<std::unique_ptr<TrayIcon>> icons;
    icons.push_back(std::make_unique<StatusNotifierItem>());
    icons.push_back(
        std::make_unique<XEmbedTrayIcon>([](QPoint place, const QString &text) { QToolTip::showText(place, text); }));
    return icons;
}

} // namespace

X11Desktop::X11Desktop() : m_silence(std::make_shared<KeyboardSilence>()) {}
X11Desktop::~X11Desktop() = default;

SessionNotices &X11Desktop::sessionNotices() {
    return m_sessionNotices.get([] { return std::make_unique<X11SessionNotices>(); });
}

Workspace &X11Desktop::workspace() {
    return m_workspace.get([] { return std::make_unique<X11Workspace>(); });
}

X11ApplicationActivator &X11Desktop::x11Activator() {
    return m_activator.get([] { return std::make_unique<X11ApplicationActivator>(); });
}

ApplicationActivator &X11Desktop::applicationActivator() {
    return x11Activator();
}

void X11Desktop::startedAgain(const StartIdentifiers &identifiers) {
    x11Activator().noteStartup(identifiers.startupId);
}

Screens &X11Desktop::screens() {
    return m_screens.get([] { return std::make_unique<X11Screens>(); });
}

PanelWindows &X11Desktop::panelWindows() {
    return m_panelWindows.get([this] { return std::make_unique<X11PanelWindows>(x11Activator()); });
}

EdgeWindows &X11Desktop::edgeWindows() {
    return m_edgeWindows.get([this] {
        return std::make_unique<X11EdgeWindows>([this]() -> X11ApplicationActivator & { return x11Activator(); });
    });
}

StatusItem &X11Desktop::statusItem() {
    return m_statusItem.get([] { return std::make_unique<TrayStatusItem>(trayIcons()); });
}

ColorSamplers &X11Desktop::colorSamplers() {
    return m_colorSamplers.get([] { return std::make_unique<X11ColorSamplers>(); });
}

ScreenStreams &X11Desktop::screenStreams() {
    ScreenStreams *const streams =
        m_screenStreams
            .get([] { return std::make_unique<PluginLoader<ScreenStreams>>(QStringLiteral("screen_stream")); })
            .port();
    return streams ? *streams : m_noScreenStreams.get([] { return std::make_unique<NoScreenStreams>(); });
}

void X11Desktop::watchCompositing(std::function<void(bool isComposited)> handler) {
    m_compositor = std::make_unique<X11Compositor>(std::move(handler));
}

HotKeys &X11Desktop::hotKeys() {
    return m_hotKeys.get([this] { return std::make_unique<X11HotKeys>(m_silence); });
}

EventMonitors &X11Desktop::eventMonitors() {
    return m_eventMonitors.get([this] { return std::make_unique<X11EventMonitors>(m_silence); });
}

EventPoster &X11Desktop::eventPoster() {
    // Some programs paste the primary selection: it gets the same text.
    return m_eventPoster.get([this] {
        return std::make_unique<X11EventPoster>([this] { return pasteboard().string().value_or(QString()); });
    });
}

EventTaps &X11Desktop::eventTaps() {
    return m_eventTaps.get([this] { return std::make_unique<X11EventTaps>(m_silence); });
}

DragPasteboards &X11Desktop::dragPasteboards() {
    return m_dragPasteboards.get([] { return std::make_unique<X11DragPasteboards>(); });
}

Dragging &X11Desktop::dragging() {
    return m_dragging.get([] { return std::make_unique<X11Dragging>(); });
}

Access &X11Desktop::access() {
    return m_access.get([] { return std::make_unique<X11Access>(); });
}

std::vector<std::unique_ptr<Appearance>> X11Desktop::toolkitSettings() {
    auto settings = LinuxDesktop::toolkitSettings();
    auto service = std::make_unique<XSettingsAppearance>();
    m_settings = service.get();
    settings.insert(settings.begin(), std::move(service));
    return settings;
}

DesktopThemes X11Desktop::themes() {
    static_cast<void>(appearance());
    DesktopThemes themes = m_settings->themes();
    const DesktopThemes files = LinuxDesktop::themes();
    if (themes.icons.isEmpty())
        themes.icons = files.icons;
    if (themes.sounds.isEmpty())
        themes.sounds = files.sounds;
    if (!themes.hasEventSounds)
        themes.hasEventSounds = files.hasEventSounds;
    return themes;
}

std::vector<std::unique_ptr<PowerKeeper>> X11Desktop::powerKeepers() {
    auto keepers = LinuxDesktop::powerKeepers();
    keepers.push_back(std::make_unique<X11ScreenSaverKeeper>());
    return keepers;
}

Pasteboard &X11Desktop::pasteboard() {
    return m_pasteboard.get([] { return std::make_unique<X11Pasteboard>(); });
}

} // namespace tavrine
