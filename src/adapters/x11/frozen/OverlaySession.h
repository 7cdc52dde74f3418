#pragma once

#include "adapters/x11/frozen/OverlayKeys.h"
#include "adapters/x11/frozen/ScreenMap.h"
#include "adapters/x11/frozen/ScreenTurn.h"
#include "adapters/x11/frozen/SharedPixels.h"

#include <deque>
#include <memory>
#include <optional>
#include <vector>

namespace tavrine {

/// What a person did over a frozen screen. Places are device pixels of the whole screen.
struct OverlayEvent {
    enum class Kind {
        pointerMoved,
        buttonPressed,
        buttonReleased,
        keyPressed,
        uncovered, ///< `area` must be put again
        ended,     ///< the screen changed, another capture began or the server went: nothing more will come
    };
    Kind kind = Kind::pointerMoved;
    QPoint place;
    int button = 0;
    OverlayKey key = OverlayKey::other;
    bool isShift = false;
    bool isControl = false;
    bool isRepeated = false; ///< of a key that is held
    QRect area;
};

/// The screen as it was at one moment, shown over itself, with the pointer and the keyboard in our hands.
///
/// Owned by who shows it; one thread, no event loop. Destroying it gives everything back: windows, grabs, pictures.
///
///  1. The picture is taken before anything else is done, all monitors, device pixels, without the pointer. What is
///     open stays in it, menus of other programs too.
///  2. The canvas begins empty; its owner paints all of it before `show`.
///  3. Another program's grab is waited out: `tryGrabs` is called again until it holds both.
class OverlaySession {
public:
    /// Null without a server, and when the screen cannot be read. Waits for its turn, half a second at most.
    [[nodiscard]] static std::unique_ptr<OverlaySession> open();

    /// The same in two steps, for a thread that must not wait: `freeze` takes the picture when `timeToWait` says that
    /// the turn has come. Null without a server; `freeze` is false when the screen cannot be read.
    [[nodiscard]] static std::unique_ptr<OverlaySession> begin();
    [[nodiscard]] std::chrono::milliseconds timeToWait() { return m_turn->timeToWait(); }
    [[nodiscard]] bool freeze();

    ~OverlaySession();
    OverlaySession(const OverlaySession &) = delete;
    OverlaySession &operator=(const OverlaySession &) = delete;

    [[nodiscard]] PixelsToRead picture() const { return m_picture->pixels(); }
    [[nodiscard]] PixelsToPaint canvas() const { return m_canvas->pixels(); }
    [[nodiscard]] QRect rect() const { return screenRect(m_link); }
    [[nodiscard]] const std::vector<OverlayMonitor> &monitors() const { return m_monitors; }
    /// Where the pointer was when the picture was taken.
    [[nodiscard]] QPoint firstPointer() const { return m_firstPointer; }

    /// Puts the canvas over everything.
    void show();
    /// Puts these parts of the canvas; afterwards the canvas may be painted again.
    void put(const std::vector<QRect> &areas);
    /// Takes the overlay off and gives the grabs back; the picture stays.
    void hide();

    /// Asks for what of pointer and keyboard is not held yet. Cheap; to be called every few milliseconds.
    void tryGrabs();
    [[nodiscard]] bool hasPointer() const { return m_hasPointer; }
    [[nodiscard]] bool hasBoth() const { return m_hasPointer && m_hasKeyboard; }

    /// Other programs' windows, the topmost first.
    [[nodiscard]] std::vector<QRect> windows() { return readWindows(m_link, m_window); }

    /// The next of what has arrived; none when there is nothing more now.
    [[nodiscard]] std::optional<OverlayEvent> nextEvent();
    /// Becomes readable when something arrives.
    [[nodiscard]] int fileDescriptor() const { return xcb_get_file_descriptor(m_link.connection()); }

    void movePointer(QPoint place);

private:
    /// A server that is in another program's hands for longer keeps its screen.
    static constexpr XcbLink::Wait longestWait{2000};

    OverlaySession();
    void createWindow();
    void takeHeldButton();
    [[nodiscard]] std::optional<OverlayEvent> translated(const xcb_generic_event_t &event);

    XcbLink m_link{longestWait};
    std::optional<ScreenTurn> m_turn;
    std::unique_ptr<SharedPixels> m_picture;
    std::unique_ptr<SharedPixels> m_canvas;
    std::vector<OverlayMonitor> m_monitors;
    OverlayKeys m_keys;
    QPoint m_firstPointer;
    xcb_window_t m_window = 0;
    xcb_gcontext_t m_context = 0;
    xcb_cursor_t m_cursor = 0;
    bool m_hasPointer = false;
    bool m_hasKeyboard = false;
    bool m_isFirstTry = true;
    int m_raises = 0;
    quint8 m_releasedKey = 0; ///< the key that was released last, and when
    xcb_timestamp_t m_releasedAt = 0;
    std::deque<OverlayEvent> m_pending;
};

} // namespace tavrine
