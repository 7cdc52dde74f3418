#pragma once

#include "adapters/desktops/LinuxDesktop.h"

namespace tavrine {

class WaylandConnection;
class WaylandReader;
class WaylandWindows;
class KeyboardsOnScreen;
struct LayerParts;
class StiffWindows;
class ToolkitScale;
class WaylandScreens;

/// A desktop whose windows a Wayland compositor draws, with the layer shell for panels and data control for the
/// clipboard.
class WaylandDesktop final : public LinuxDesktop {
public:
    /// Tells the toolkit, which has not started, how to draw here. All of the main thread but the toolkit and what is
    /// asked in passing goes over `connection`.
    explicit WaylandDesktop(std::shared_ptr<WaylandConnection> connection);
    ~WaylandDesktop() override;

    [[nodiscard]] SessionNotices &sessionNotices() override;
    [[nodiscard]] Workspace &workspace() override;
    [[nodiscard]] ApplicationActivator &applicationActivator() override;
    [[nodiscard]] Screens &screens() override;
    [[nodiscard]] PanelWindows &panelWindows() override;
    [[nodiscard]] EdgeWindows &edgeWindows() override;
    [[nodiscard]] StatusItem &statusItem() override;
    [[nodiscard]] Application &application() override;
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
    /// The first that is asked for looks; their size is followed from then on.
    [[nodiscard]] std::vector<std::unique_ptr<Appearance>> toolkitSettings() override;
    void startedAgain(const StartIdentifiers &identifiers) override;
    [[nodiscard]] std::vector<std::unique_ptr<PowerKeeper>> powerKeepers() override;
    [[nodiscard]] AbilityReport report(Ability ability) override;

private:
    void scaleChanged();
    [[nodiscard]] LayerParts &layerParts();
    [[nodiscard]] LayerParts &watchedParts();

    [[nodiscard]] const std::shared_ptr<WaylandReader> &reader();
    [[nodiscard]] const std::shared_ptr<WaylandWindows> &windows();
    [[nodiscard]] const char *streamPlugin();

    const std::shared_ptr<WaylandConnection> m_connection;
    std::shared_ptr<WaylandReader> m_reader; ///< null before the toolkit is there
    const char *m_streamPlugin = nullptr;    ///< it does not change while a session lasts
    std::shared_ptr<WaylandWindows> m_windows;
    MadeOnce<LayerParts> m_layerParts; ///< outlives the windows
    MadeOnce<StiffWindows> m_stiffWindows;
    MadeOnce<Pasteboard> m_pasteboard;
    MadeOnce<Workspace> m_workspace;
    MadeOnce<StatusItem> m_statusItem;
    MadeOnce<HotKeys> m_hotKeys;
    MadeOnce<EventMonitors> m_eventMonitors;
    MadeOnce<Access> m_access;
    MadeOnce<ApplicationActivator> m_activator;
    MadeOnce<PanelWindows> m_panelWindows;
    MadeOnce<EdgeWindows> m_edgeWindows;
    MadeOnce<DragPasteboards> m_dragPasteboards;
    MadeOnce<Dragging> m_dragging;
    MadeOnce<SessionNotices> m_sessionNotices;
    MadeOnce<EventPoster> m_eventPoster;
    MadeOnce<EventTaps> m_eventTaps;
    MadeOnce<WaylandScreens> m_screens;
    MadeOnce<KeyboardsOnScreen> m_keyboardsOnScreen; ///< goes before the screens
    MadeOnce<ColorSamplers> m_colorSamplers;
    MadeOnce<PluginLoader<ScreenStreams>> m_screenStreams;
    MadeOnce<ScreenStreams> m_noScreenStreams;
    std::unique_ptr<ToolkitScale> m_toolkitScale;
};

} // namespace tavrine
