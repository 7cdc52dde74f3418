#pragma once

#include "adapters/desktops/LinuxDesktop.h"

namespace tavrine {

class KeyboardSilence;
class X11ApplicationActivator;
class X11Compositor;
class XSettingsAppearance;

/// A desktop whose windows an X server draws.
class X11Desktop : public LinuxDesktop {
public:
    X11Desktop();
    ~X11Desktop() override;

    [[nodiscard]] SessionNotices &sessionNotices() override;
    [[nodiscard]] Workspace &workspace() override;
    [[nodiscard]] ApplicationActivator &applicationActivator() override;
    [[nodiscard]] Screens &screens() override;
    [[nodiscard]] PanelWindows &panelWindows() override;
    [[nodiscard]] EdgeWindows &edgeWindows() override;
    [[nodiscard]] StatusItem &statusItem() override;
    [[nodiscard]] ColorSamplers &colorSamplers() override;
    [[nodiscard]] ScreenStreams &screenStreams() override;
    void watchCompositing(std::function<void(bool isComposited)> handler) override;
    [[nodiscard]] HotKeys &hotKeys() override;
    [[nodiscard]] EventMonitors &eventMonitors() override;
    [[nodiscard]] EventPoster &eventPoster() override;
    [[nodiscard]] EventTaps &eventTaps() override;
    [[nodiscard]] DragPasteboards &dragPasteboards() override;
    [[nodiscard]] Dragging &dragging() override;
    [[nodiscard]] Access &access() override;
    [[nodiscard]] Pasteboard &pasteboard() override;

protected:
    void startedAgain(const StartIdentifiers &identifiers) override;
    [[nodiscard]] std::vector<std::unique_ptr<Appearance>> toolkitSettings() override;
    [[nodiscard]] DesktopThemes themes() override;
    [[nodiscard]] std::vector<std::unique_ptr<PowerKeeper>> powerKeepers() override;

private:
    [[nodiscard]] X11ApplicationActivator &x11Activator();

    const std::shared_ptr<KeyboardSilence> m_silence; ///< while keys are dropped
    MadeOnce<Pasteboard> m_pasteboard;
    MadeOnce<Workspace> m_workspace;
    MadeOnce<StatusItem> m_statusItem;
    MadeOnce<HotKeys> m_hotKeys;
    MadeOnce<EventMonitors> m_eventMonitors;
    MadeOnce<Access> m_access;
    MadeOnce<X11ApplicationActivator> m_activator;
    MadeOnce<PanelWindows> m_panelWindows;
    MadeOnce<EdgeWindows> m_edgeWindows;
    MadeOnce<DragPasteboards> m_dragPasteboards;
    MadeOnce<Dragging> m_dragging;
    MadeOnce<SessionNotices> m_sessionNotices;
    MadeOnce<EventPoster> m_eventPoster;
    MadeOnce<EventTaps> m_eventTaps;
    MadeOnce<Screens> m_screens;
    MadeOnce<ColorSamplers> m_colorSamplers;
    MadeOnce<PluginLoader<ScreenStreams>> m_screenStreams;
    MadeOnce<ScreenStreams> m_noScreenStreams;
    std::unique_ptr<X11Compositor> m_compositor;
    const XSettingsAppearance *m_settings = nullptr; ///< the appearance's, once that is made
};

} // namespace tavrine
