#pragma once

#include "adapters/desktops/X11Desktop.h"

namespace tavrine {

class GnomeShell;

/// A Wayland desktop that lets programs neither place windows nor hear of the clipboard: this program stays on the X
/// server inside it. What that server does not see is told by this program's extension of GNOME Shell; without the
/// extension, and on other such desktops, the X server's own answers stand, and recordings are the ScreenCast portal's.
class GnomeDesktop final : public X11Desktop {
public:
    GnomeDesktop();
    ~GnomeDesktop() override;

    [[nodiscard]] Workspace &workspace() override;
    [[nodiscard]] ApplicationActivator &applicationActivator() override;
    [[nodiscard]] Screens &screens() override;
    [[nodiscard]] ColorSamplers &colorSamplers() override;
    [[nodiscard]] ScreenStreams &screenStreams() override;
    [[nodiscard]] HotKeys &hotKeys() override;
    [[nodiscard]] EventMonitors &eventMonitors() override;
    [[nodiscard]] EventPoster &eventPoster() override;
    [[nodiscard]] EventTaps &eventTaps() override;
    [[nodiscard]] Dragging &dragging() override;
    [[nodiscard]] Access &access() override;
    [[nodiscard]] TaskLauncher &taskLauncher() override;

protected:
    [[nodiscard]] AbilityReport report(Ability ability) override;

private:
    [[nodiscard]] GnomeShell &shell();
    [[nodiscard]] bool isShownByPortal();
    [[nodiscard]] ScreenStreams &streamsNow();

    // Outlives what asks it.
    MadeOnce<GnomeShell> m_shell;
    MadeOnce<Workspace> m_workspace;
    MadeOnce<ApplicationActivator> m_activator;
    MadeOnce<Screens> m_screens;
    MadeOnce<ColorSamplers> m_colorSamplers;
    MadeOnce<PluginLoader<ScreenStreams>> m_ownStreams;
    MadeOnce<PluginLoader<ScreenStreams>> m_portalStreams;
    MadeOnce<ScreenStreams> m_screenStreams;
    MadeOnce<ScreenStreams> m_noScreenStreams;
    MadeOnce<HotKeys> m_hotKeys;
    MadeOnce<EventMonitors> m_eventMonitors;
    MadeOnce<EventPoster> m_eventPoster;
    MadeOnce<EventTaps> m_eventTaps;
    MadeOnce<Dragging> m_dragging;
    MadeOnce<Access> m_access;
    MadeOnce<TaskLauncher> m_taskLauncher;
};

} // namespace tavrine
