#include "adapters/desktops/GnomeDesktop.h"

#include "adapters/desktops/TriedAbilities.h"
#include "adapters/gnome/GnomeAccess.h"
#include "adapters/gnome/GnomeApplicationActivator.h"
#include "adapters/gnome/GnomeColorSamplers.h"
#include "adapters/gnome/GnomeEventMonitors.h"
#include "adapters/gnome/GnomeEventPoster.h"
#include "adapters/gnome/GnomeHotKeys.h"
#include "adapters/gnome/GnomeScreens.h"
#include "adapters/gnome/GnomeShell.h"
#include "adapters/gnome/GnomeTaskLauncher.h"
#include "adapters/gnome/GnomeWorkspace.h"
#include "adapters/linux/CastPortal.h"
#include "adapters/linux/ChosenScreenStreams.h"
#include "adapters/linux/NoScreenStreams.h"
#include "adapters/linux/PluginLoader.h"
#include "adapters/x11/X11Dragging.h"
#include "ports/EventTap.h"
#include "ports/Pasteboard.h"

namespace tavrine {
namespace {

/// The X server's hold of the keyboard would leave all programs of Wayland their keys.
class NoEventTaps final : public EventTaps {
public:
    [[nodiscard]] bool areThere() const override { return false; }
    [[nodiscard]] std::unique_ptr<EventTap> create(std::function<void()> /*onChange*/) override { return nullptr; }
};

} // namespace

GnomeDesktop::GnomeDesktop() = default;
GnomeDesktop::~GnomeDesktop() = default;

AbilityReport GnomeDesktop::report(Ability ability) {
    const bool isExtensions = ability == Ability::hotKeys || ability == Ability::doubleTap ||
                              ability == Ability::paste || ability == Ability::capture || ability == Ability::recording;
    if (ability == Ability::recording && isShownByPortal())
        return recordingByPortal();
    if (isExtensions && !shell().isAttached())
        return abilityReport::withoutExtension(ability);
    return X11Desktop::report(ability);
}

GnomeShell &GnomeDesktop::shell() {
    return m_shell.get([] { return std::make_unique<GnomeShell>(); });
}

Workspace &GnomeDesktop::workspace() {
    return m_workspace.get([this] { return std::make_unique<GnomeWorkspace>(shell()); });
}

ApplicationActivator &GnomeDesktop::applicationActivator() {
    return m_activator.get(
        [this] { return std::make_unique<GnomeApplicationActivator>(shell(), X11Desktop::applicationActivator()); });
}

Screens &GnomeDesktop::screens() {
    return m_screens.get([this] { return std::make_unique<GnomeScreens>(shell()); });
}

ColorSamplers &GnomeDesktop::colorSamplers() {
    return m_colorSamplers.get([this] { return std::make_unique<GnomeColorSamplers>(shell()); });
}

/// Without the extension the person has not said that this program may see the screen, and the portal asks.
bool GnomeDesktop::isShownByPortal() {
    return !shell().isAttached() && castPortal().answer() != CastPortal::Answer::missing;
}

ScreenStreams &GnomeDesktop::screenStreams() {
    return m_screenStreams.get(
        [this] { return std::make_unique<ChosenScreenStreams>([this]() -> ScreenStreams & { return streamsNow(); }); });
}

/// The X server's pictures of Wayland's programs are black.
ScreenStreams &GnomeDesktop::streamsNow() {
    const auto load = [](const char *plugin) {
        return [plugin] { return std::make_unique<PluginLoader<ScreenStreams>>(QString::fromLatin1(plugin)); };
    };
    ScreenStreams *const streams = isShownByPortal() ? m_portalStreams.get(load("portal_screen_stream")).port()
                                                     : m_ownStreams.get(load("gnome_screen_stream")).port();
    return streams ? *streams : m_noScreenStreams.get([] { return std::make_unique<NoScreenStreams>(); });
}

HotKeys &GnomeDesktop::hotKeys() {
    return m_hotKeys.get([this] { return std::make_unique<GnomeHotKeys>(shell()); });
}

EventMonitors &GnomeDesktop::eventMonitors() {
    return m_eventMonitors.get([this] { return std::make_unique<GnomeEventMonitors>(shell()); });
}

EventPoster &GnomeDesktop::eventPoster() {
    return m_eventPoster.get([this] {
        return std::make_unique<GnomeEventPoster>(shell(),
                                                  [this] { return pasteboard().string().value_or(QString()); });
    });
}

EventTaps &GnomeDesktop::eventTaps() {
    return m_eventTaps.get([] { return std::make_unique<NoEventTaps>(); });
}

Dragging &GnomeDesktop::dragging() {
    return m_dragging.get(
        [] { return std::make_unique<X11Dragging>(SelectionLimits{}, X11Dragging::Pointer::unknown); });
}

Access &GnomeDesktop::access() {
    return m_access.get(
        [this] { return std::make_unique<GnomeAccess>(shell(), [this] { return isShownByPortal(); }); });
}

TaskLauncher &GnomeDesktop::taskLauncher() {
    return m_taskLauncher.get(
        [this] { return std::make_unique<GnomeTaskLauncher>(shell(), LinuxDesktop::taskLauncher()); });
}

} // namespace tavrine
