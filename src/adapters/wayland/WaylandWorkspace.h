#pragma once

#include "adapters/wayland/WaylandWindows.h"
#include "base/NotificationCenter.h"
#include "ports/Workspace.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

/// The desktop as its compositor tells it.
///
/// Lives on the main thread. Asking for the frontmost application costs one bounded round trip to the compositor, and
/// never one to another program.
///
///  1. The active window is the one that the compositor calls so. A moment without one, 100 ms at most, counts for the
///     program that was active before, and so does all the time in which a panel of this program has the keyboard.
///     While this program holds the keyboard for nobody, no window is active for longer than the moment in which it is
///     clicked: the one that was active last is in front then.
///  2. The identifier is the window's application identifier as `knownProgram` has it; for an X program that is its
///     window class.
///  3. A panel that is called belongs to no window, so while it has the keyboard this program is not in front. All the
///     same this program is told to be left when the person goes from a panel to a window: that has the keyboard then,
///     or it is active behind the panel, where the compositor gives the panel its keyboard back. To the window that was
///     there before goes who stays for 250 ms: a panel whose surface is made anew is without the keyboard for less.
///  4. The process is known where the compositor tells it. Else programs are the same that are called the same.
class WaylandWorkspace final : public QObject, public Workspace {
public:
    /// `isPanelCalled` tells whether a panel of this program is to have the keyboard, `isKeyboardHeld` whether this
    /// program holds it for nobody. Null: never.
    explicit WaylandWorkspace(std::shared_ptr<WaylandWindows> windows, std::function<bool()> isPanelCalled = nullptr,
                              std::function<bool()> isKeyboardHeld = nullptr);
    ~WaylandWorkspace() override;

    [[nodiscard]] NotificationCenter &notificationCenter() override { return m_center; }
    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] QList<RunningApplication> runningApplications() const override;
    void activateFileViewerSelecting(const QList<QUrl> &urls) override;

private:
    /// A panel, as it was when that was heard of first.
    struct Called {
        quint32 behind = 0; ///< the window that was active last
        bool hadKeyboard = false;
    };

    void update();
    [[nodiscard]] const WaylandWindow *windowInFront() const;
    [[nodiscard]] bool isCalled() const { return m_isPanelCalled && m_isPanelCalled(); }
    [[nodiscard]] bool isHeld() const { return m_isKeyboardHeld && m_isKeyboardHeld(); }
    [[nodiscard]] bool hasPanelTheKeyboard() const;
    [[nodiscard]] bool hasCalledPanelLostTheKeyboard() const;
    void become(std::optional<RunningApplication> next);
    void noteDeparture();
    void leavePanel();
    void tellLeft(const RunningApplication &application);

    std::shared_ptr<WaylandWindows> m_windows;
    WaylandWindows::Following m_following;
    NotificationCenter m_center;
    std::optional<RunningApplication> m_frontmost;
    const std::function<bool()> m_isPanelCalled;
    const std::function<bool()> m_isKeyboardHeld;
    std::optional<Called> m_called; ///< while a panel is to have the keyboard
    QTimer m_loss;                  ///< while that panel is without it
    QTimer m_pause;
    bool m_isPauseOver = false;
};

/// The program that a window belongs to. None when it names none.
[[nodiscard]] std::optional<RunningApplication> programOf(const WaylandWindow &window);

} // namespace tavrine
