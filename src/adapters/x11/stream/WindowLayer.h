#pragma once

#include "adapters/x11/XcbLink.h"
#include "adapters/x11/stream/WindowStack.h"

#include <QRegion>

#include <map>
#include <optional>

#include <xcb/damage.h>
#include <xcb/render.h>
#include <xcb/xfixes.h>

namespace tavrine {

/// The kinds of pictures that the server draws with, by the visual of a window.
class PictureFormats {
public:
    [[nodiscard]] bool read(XcbLink &link);
    /// 0 when there is none.
    [[nodiscard]] xcb_render_pictformat_t forVisual(xcb_visualid_t visual) const;

private:
    std::map<xcb_visualid_t, xcb_render_pictformat_t> m_formats;
};

/// One window of somebody else whose contents the server keeps for us, whole, whatever covers it. Lives on the stream's
/// thread; letting it go gives everything back.
class WindowLayer {
public:
    /// From now on the server keeps it. Null for a window that cannot be seen, or is gone.
    [[nodiscard]] static std::unique_ptr<WindowLayer> make(XcbLink &link, const PictureFormats &formats,
                                                           xcb_window_t window);
    ~WindowLayer();
    WindowLayer(const WindowLayer &) = delete;
    WindowLayer &operator=(const WindowLayer &) = delete;

    [[nodiscard]] xcb_window_t window() const { return m_window; }
    [[nodiscard]] xcb_damage_damage_t damage() const { return m_damage; }

    /// The server keeps windows of another depth than the screen's for itself, always.
    [[nodiscard]] bool isKeptAnyway() const { return m_hasOwnDepth; }

    /// Takes the contents as they are kept now; the same `content` is taken once.
    void follow(const WindowStack::Window &state);

    /// Draws it over `target`, whose first pixel is at `origin` of the root window, within `part` of the target and the
    /// window's own shape; what is unpainted is left out, for what covered the window stands there.
    void draw(xcb_render_picture_t target, QPoint origin, xcb_xfixes_region_t part, bool isComposited);

    // What was drawn in it since the last question that was answered, as a region of the root window. An answer that is
    // late is lost, and who never hears that a program has drawn would leave its window out for good: the server keeps
    // what it told until it was heard.
    void askDamage();
    [[nodiscard]] QRegion takeDamage();

    bool isDamaged = false; ///< the server has said so
    QRegion unpainted;      ///< of the root window: what the program has not drawn since the server keeps it

private:
    explicit WindowLayer(XcbLink &link) : m_link(link) {}
    void forgetContents();
    void forgetUntold();

    XcbLink &m_link;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    xcb_render_pictformat_t m_format = 0;
    bool m_hasAlpha = false;
    bool m_hasOwnDepth = false;
    xcb_damage_damage_t m_damage = 0;
    xcb_pixmap_t m_pixmap = 0;
    xcb_render_picture_t m_picture = 0;
    std::uint64_t m_content = 0;
    QRect m_area;
    int m_border = 0;
    unsigned int m_damageQuestion = 0;
    xcb_xfixes_region_t m_untold = 0; ///< what the server was asked for and has not answered
};

/// The region, made in the server, with `origin` as its zero.
[[nodiscard]] xcb_xfixes_region_t makeRegion(XcbLink &link, const QRegion &region, QPoint origin);
/// Asks for what is damaged, which is not any more then, and takes it. None when the server did not answer in time.
[[nodiscard]] unsigned int askRegion(XcbLink &link, xcb_damage_damage_t damage);
[[nodiscard]] std::optional<QRegion> takeRegion(XcbLink &link, unsigned int question);

} // namespace tavrine
