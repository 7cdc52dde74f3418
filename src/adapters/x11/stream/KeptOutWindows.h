#pragma once

#include "adapters/x11/stream/WindowLayer.h"
#include "ports/ScreenStream.h"

#include <chrono>
#include <utility>

namespace tavrine {

/// What would be seen where windows lie that are kept out of a picture.
///
/// The server shows nothing of what a window covers, and keeps nothing of it either. So it is asked to keep the
/// windows that lie there, whole, beside showing them, and the place is drawn again from them: the root window's own
/// picture, then each window from the lowest up. Nothing is asked for while the windows lie outside of the area. What
/// the server keeps for us ends with the connection.
///
/// Without a compositor what a window covered before it was kept has to be drawn anew by its program; until then the
/// place is said to be unsettled, for a short while at most, and after that what is below shows.
///
/// Lives on the stream's thread. All areas are of the root window, in pixels.
class KeptOutWindows {
public:
    KeptOutWindows(XcbLink &link, const QRect &area, const QList<WindowNumber> &windows);
    ~KeptOutWindows();
    KeptOutWindows(const KeptOutWindows &) = delete;
    KeptOutWindows &operator=(const KeptOutWindows &) = delete;

    /// False when the server lacks what it takes, or is late. Without windows to keep out there is nothing to do.
    [[nodiscard]] bool open();
    /// True when the event may have changed the picture.
    [[nodiscard]] bool handle(const xcb_generic_event_t &event);

    /// What is known of the windows, and of what is behind all of them, may be wrong.
    void doubt() {
        m_isOld = m_isTreeOld = !m_clients.isEmpty();
        forgetPicture();
    }
    /// Windows have moved, come or gone where something is hidden, and `ask` was not called since.
    [[nodiscard]] bool isOld() const { return m_isOld; }
    /// True when the server did not answer in time since the last question.
    [[nodiscard]] bool takeIsLate() { return std::exchange(m_isLate, false); }

    /// Brings everything up to date with the events, and begins to ask what has changed; `take` gives the answer: of
    /// the picture, and of what is hidden.
    void ask();
    [[nodiscard]] QRegion take();
    /// `drawn` is what was drawn on the screen since the last look. Where that is all that is seen of the background,
    /// another one has come: the properties that name it are written before it is there, or not at all.
    void heed(const QRegion &drawn);

    /// Where the windows lie within the area.
    [[nodiscard]] const QRegion &hidden() const { return m_hidden; }
    /// False while something hidden was not drawn yet. When the time for that is over, one look more is due: where this
    /// program or the server stood still, nothing of what was drawn has been heard of.
    [[nodiscard]] bool isSettled(std::chrono::steady_clock::time_point now);

    /// Draws `part` of what is hidden. In the drawable it stands at its place less `origin`.
    void draw(const QRegion &part);
    [[nodiscard]] xcb_drawable_t drawable() const { return m_pixmap; }
    [[nodiscard]] QPoint origin() const { return m_hidden.boundingRect().topLeft(); }

private:
    [[nodiscard]] bool load();
    void update();
    void findTopLevels();
    void findHidden();
    [[nodiscard]] QRegion coveredPartOf(const WindowStack::Window &window) const;
    void follow();
    void makePicture();
    void makeBackground();
    void makeComposedBackground();
    [[nodiscard]] std::optional<std::uint32_t> colourBesideTheHidden();
    void forgetPicture();
    [[nodiscard]] bool isKeptOut(xcb_window_t window) const;
    [[nodiscard]] bool isOurs(xcb_window_t window) const;
    [[nodiscard]] QRegion bare() const;

    XcbLink &m_link;
    QRect m_area;
    QRect m_screen;
    QList<WindowNumber> m_clients;
    std::vector<xcb_window_t> m_topLevels; ///< that the clients are in
    WindowStack m_stack;
    PictureFormats m_formats;
    std::vector<std::unique_ptr<WindowLayer>> m_layers; ///< from the lowest to the uppermost
    std::map<xcb_window_t, QRegion> m_covers;           ///< what each of the top-levels covers of the area
    QRegion m_hidden;                                   ///< all of that
    QRegion m_changed;                                  ///< of the hidden parts, since the last look
    xcb_pixmap_t m_pixmap = 0;
    xcb_render_picture_t m_picture = 0;
    xcb_pixmap_t m_backgroundPixmap = 0;
    xcb_render_picture_t m_background = 0;
    QPoint m_backgroundOrigin; ///< the place on the screen of its upper left corner
    int m_damageNotice = -1;
    int m_shapeNotice = -1;
    bool m_isComposited = false;
    bool m_isLate = false;
    bool m_isOld = false;     ///< an event has changed where windows lie
    bool m_isTreeOld = false; ///< and the stack cannot say how
    std::chrono::steady_clock::time_point m_settles{};
    bool m_wasLastLook = false; ///< the one after `m_settles`
};

} // namespace tavrine
