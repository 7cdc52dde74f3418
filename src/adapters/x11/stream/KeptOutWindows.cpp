#include "adapters/x11/stream/KeptOutWindows.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include <xcb/composite.h>
#include <xcb/shape.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

/// A program draws what was covered within a few milliseconds; one that hangs is not waited for, and the first frame
/// has to be there 150 ms after the start.
constexpr auto longestUnsettled = 80ms;
constexpr int deepestWindow = 16;

/// Properties of the root window by which others are told of its picture.
constexpr const char *namesOfWallpaper[] = {"_XROOTPMAP_ID", "ESETROOT_PMAP_ID"};

} // namespace

KeptOutWindows::KeptOutWindows(XcbLink &link, const QRect &area, const QList<WindowNumber> &windows)
    : m_link(link), m_area(area), m_clients(windows),
      m_stack(link.isOpen() ? link.root() : static_cast<xcb_window_t>(XCB_WINDOW_NONE)) {}

KeptOutWindows::~KeptOutWindows() {
    forgetPicture();
}

bool KeptOutWindows::open() {
    if (m_clients.isEmpty())
        return true;
    auto *const connection = m_link.connection();
    const auto *const composite = m_link.extension(xcb_composite_id);
    const auto *const damage = m_link.extension(xcb_damage_id);
    const auto *const shape = m_link.extension(xcb_shape_id);
    if (!composite || !damage || !shape || !m_link.extension(xcb_render_id))
        return false;
    m_damageNotice = damage->first_event + XCB_DAMAGE_NOTIFY;
    m_shapeNotice = shape->first_event + XCB_SHAPE_NOTIFY;
    constexpr std::uint32_t withNamedPixmaps = 2; // of 0.2
    const auto version =
        m_link.reply<xcb_composite_query_version_reply_t>(xcb_composite_query_version(connection, 0, withNamedPixmaps));
    if (!version || (version->major_version == 0 && version->minor_version < withNamedPixmaps) ||
        !m_link.reply<xcb_render_query_version_reply_t>(xcb_render_query_version(connection, 0, 11)) ||
        !m_formats.read(m_link))
        return false;
    for (const char *const name : namesOfWallpaper)
        static_cast<void>(m_link.atom(name)); // known from here on: a notice does not wait for the server
    const std::uint32_t notices =
        XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection, m_link.root(), XCB_CW_EVENT_MASK, &notices);
    m_isOld = m_isTreeOld = true;
    return true;
}

/// From here on the stack follows the notices. Those that were under way say again what is known already.
bool KeptOutWindows::load() {
    auto *const connection = m_link.connection();
    const auto rootQuestion = xcb_get_geometry(connection, m_link.root());
    const auto tree = m_link.reply<xcb_query_tree_reply_t>(xcb_query_tree(connection, m_link.root()));
    const auto root = m_link.reply<xcb_get_geometry_reply_t>(rootQuestion);
    if (!tree || !root)
        return false;
    m_screen = QRect(0, 0, root->width, root->height);
    const xcb_window_t *const children = xcb_query_tree_children(tree.get());
    const int count = xcb_query_tree_children_length(tree.get());
    std::vector<std::pair<xcb_get_geometry_cookie_t, xcb_get_window_attributes_cookie_t>> questions;
    for (int i = 0; i < count; ++i)
        questions.emplace_back(xcb_get_geometry(connection, children[i]),
                               xcb_get_window_attributes(connection, children[i]));
    m_stack.clear();
    for (int i = 0; i < count; ++i) {
        const auto &[geometryQuestion, attributesQuestion] = questions[static_cast<size_t>(i)];
        const auto geometry = m_link.reply<xcb_get_geometry_reply_t>(geometryQuestion);
        const auto attributes = m_link.reply<xcb_get_window_attributes_reply_t>(attributesQuestion);
        if (!geometry || !attributes)
            continue;
        const int border = geometry->border_width;
        m_stack.add(
            {.id = children[i],
             .area = QRect(geometry->x, geometry->y, geometry->width + 2 * border, geometry->height + 2 * border),
             .border = border,
             .isMapped = attributes->map_state == XCB_MAP_STATE_VIEWABLE});
    }
    findTopLevels();
    return true;
}

void KeptOutWindows::findTopLevels() {
    m_topLevels.clear();
    for (const WindowNumber client : m_clients) {
        auto window = static_cast<xcb_window_t>(client);
        for (int depth = 0; depth < deepestWindow && !m_stack.find(window); ++depth) {
            const auto tree = m_link.reply<xcb_query_tree_reply_t>(xcb_query_tree(m_link.connection(), window));
            window = tree ? tree->parent : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
            if (window == XCB_WINDOW_NONE)
                break;
        }
        if (m_stack.find(window)) {
            m_topLevels.push_back(window);
            xcb_shape_select_input(m_link.connection(), window, 1);
        }
    }
}

bool KeptOutWindows::isKeptOut(xcb_window_t window) const {
    return std::find(m_topLevels.begin(), m_topLevels.end(), window) != m_topLevels.end();
}

/// The window that `makeBackground` makes.
bool KeptOutWindows::isOurs(xcb_window_t window) const {
    const xcb_setup_t &setup = *xcb_get_setup(m_link.connection());
    return (window & ~setup.resource_id_mask) == setup.resource_id_base;
}

bool KeptOutWindows::handle(const xcb_generic_event_t &event) {
    if (m_damageNotice < 0)
        return false;
    const int type = eventType(event);
    if (type == m_damageNotice) {
        const auto &notice = eventAs<xcb_damage_notify_event_t>(event);
        for (const auto &layer : m_layers)
            if (layer->damage() == notice.damage)
                return layer->isDamaged = true;
        return false;
    }
    if (type == m_shapeNotice) {
        const auto window = eventAs<xcb_shape_notify_event_t>(event).affected_window;
        if (!isKeptOut(window))
            m_changed += m_hidden;
        return m_isOld = true;
    }
    if (type == XCB_PROPERTY_NOTIFY) {
        const auto &notice = eventAs<xcb_property_notify_event_t>(event);
        if (m_hidden.isEmpty() || std::none_of(std::begin(namesOfWallpaper), std::end(namesOfWallpaper),
                                               [&](const char *name) { return notice.atom == m_link.atom(name); }))
            return false;
        forgetPicture(); // the root window has another picture
        return m_isOld = true;
    }
    const auto change = m_stack.apply(event);
    if (!change || isOurs(change->window))
        return false;
    if (type == XCB_REPARENT_NOTIFY) {
        const bool hasArrived = eventAs<xcb_reparent_notify_event_t>(event).parent == m_link.root();
        m_isTreeOld = m_isTreeOld || hasArrived || m_clients.contains(WindowNumber{change->window});
    }
    m_isTreeOld = m_isTreeOld || change->isOrderLost;
    const bool isAboutUs = isKeptOut(change->window) || m_isTreeOld;
    if (!isAboutUs && !change->area.intersects(m_hidden.boundingRect()))
        return false;
    m_changed += m_hidden & change->area;
    return m_isOld = true;
}

void KeptOutWindows::findHidden() {
    auto *const connection = m_link.connection();
    m_covers.clear();
    m_hidden = {};
    for (const xcb_window_t id : m_topLevels) {
        const auto *const window = m_stack.find(id);
        if (!window || !window->isMapped || !window->area.intersects(m_area))
            continue;
        const auto shape = m_link.reply<xcb_shape_get_rectangles_reply_t>(
            xcb_shape_get_rectangles(connection, id, XCB_SHAPE_SK_BOUNDING));
        if (!shape)
            continue;
        const xcb_rectangle_t *const rects = xcb_shape_get_rectangles_rectangles(shape.get());
        const int count = xcb_shape_get_rectangles_rectangles_length(shape.get());
        const QPoint inner = window->area.topLeft() + QPoint(window->border, window->border);
        QRegion region;
        for (int i = 0; i < count; ++i)
            region += QRect(rects[i].x + inner.x(), rects[i].y + inner.y(), rects[i].width, rects[i].height);
        m_hidden += m_covers[id] = region & window->area & m_area;
    }
}

/// Of what is hidden: where a window lies below one that is kept out, and so was not kept itself.
QRegion KeptOutWindows::coveredPartOf(const WindowStack::Window &window) const {
    QRegion covered;
    bool isAbove = false;
    for (const WindowStack::Window &each : m_stack.windows()) {
        if (const auto cover = m_covers.find(each.id); isAbove && cover != m_covers.end())
            covered += cover->second;
        isAbove = isAbove || each.id == window.id;
    }
    return covered & window.area;
}

void KeptOutWindows::update() {
    const auto stack = m_stack;
    const auto topLevels = m_topLevels;
    const auto covers = m_covers;
    const QRegion before = m_hidden;
    m_isLate = m_link.takeIsLate() || m_isLate;
    const bool isLoaded = !m_isTreeOld || load();
    if (isLoaded)
        findHidden();
    const bool isComposited = isLoaded && !m_hidden.isEmpty() && isCompositorRunning(m_link);
    if (m_link.takeIsLate() || !isLoaded) {
        // What was known stands until the server answers: a window that is let go meanwhile would not be whole again.
        m_stack = stack;
        m_topLevels = topLevels;
        m_covers = covers;
        m_hidden = before;
        m_isLate = true;
        return;
    }
    m_isOld = m_isTreeOld = false;
    if (std::exchange(m_isComposited, isComposited) != isComposited)
        forgetPicture();
    // What was hidden is the screen's again, and the other way round.
    m_changed += m_hidden ^ before;
    if (m_hidden.boundingRect() != before.boundingRect())
        forgetPicture();
    follow();
    if (!m_hidden.isEmpty() && m_pixmap == 0) {
        makePicture();
        m_changed += m_hidden;
    }
}

/// The windows that lie where something is hidden, and no others, in their order.
void KeptOutWindows::follow() {
    std::vector<std::unique_ptr<WindowLayer>> before;
    before.swap(m_layers);
    for (const WindowStack::Window &window : m_stack.windows()) {
        if (!window.isMapped || isKeptOut(window.id) || !m_hidden.intersects(window.area))
            continue;
        const auto known = std::find_if(before.begin(), before.end(),
                                        [&](const auto &layer) { return layer && layer->window() == window.id; });
        auto layer = known != before.end() ? std::move(*known) : WindowLayer::make(m_link, m_formats, window.id);
        if (!layer)
            continue;
        if (known == before.end() && !m_isComposited && !layer->isKeptAnyway()) {
            layer->unpainted = coveredPartOf(window);
            m_settles = std::chrono::steady_clock::now() + longestUnsettled;
            m_wasLastLook = false;
        }
        layer->follow(window);
        m_layers.push_back(std::move(layer));
    }
}

bool KeptOutWindows::isSettled(std::chrono::steady_clock::time_point now) {
    return std::all_of(m_layers.begin(), m_layers.end(),
                       [](const auto &layer) { return layer->unpainted.isEmpty(); }) ||
           (now >= m_settles && std::exchange(m_wasLastLook, true));
}

void KeptOutWindows::makePicture() {
    auto *const connection = m_link.connection();
    const QRect area = m_hidden.boundingRect();
    const xcb_screen_t &screen = m_link.screen();
    m_pixmap = m_link.newId();
    xcb_create_pixmap(connection, screen.root_depth, m_pixmap, m_link.root(), static_cast<std::uint16_t>(area.width()),
                      static_cast<std::uint16_t>(area.height()));
    m_picture = m_link.newId();
    xcb_render_create_picture(connection, m_picture, m_pixmap, m_formats.forVisual(screen.root_visual), 0, nullptr);
    if (m_isComposited)
        makeComposedBackground();
    else
        makeBackground();
}

/// The server itself paints the root window's picture into a window that has that of its parent. It is there for no
/// more than this request's time, below all others, where the same picture is seen anyway; what it was given stays.
void KeptOutWindows::makeBackground() {
    auto *const connection = m_link.connection();
    const QRect area = m_hidden.boundingRect();
    const xcb_window_t window = m_link.newId();
    const std::uint32_t values[] = {XCB_BACK_PIXMAP_PARENT_RELATIVE, 1};
    xcb_grab_server(connection); // nobody else hears of it before it is gone
    m_backgroundOrigin = area.topLeft();
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, m_link.root(), static_cast<std::int16_t>(area.x()),
                      static_cast<std::int16_t>(area.y()), static_cast<std::uint16_t>(area.width()),
                      static_cast<std::uint16_t>(area.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, values);
    const std::uint32_t below = XCB_STACK_MODE_BELOW;
    xcb_configure_window(connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &below);
    xcb_composite_redirect_window(connection, window, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    xcb_map_window(connection, window);
    xcb_clear_area(connection, 0, window, 0, 0, 0, 0);
    m_backgroundPixmap = m_link.newId();
    xcb_composite_name_window_pixmap(connection, window, m_backgroundPixmap);
    xcb_destroy_window(connection, window);
    xcb_ungrab_server(connection);
    m_background = m_link.newId();
    xcb_render_create_picture(connection, m_background, m_backgroundPixmap,
                              m_formats.forVisual(m_link.screen().root_visual), 0, nullptr);
}

/// Under a compositor the root window's own picture is seen nowhere. What is seen is the pixmap that a property names,
/// over and over; without one, one colour, which is taken from beside what is hidden.
void KeptOutWindows::makeComposedBackground() {
    auto *const connection = m_link.connection();
    m_backgroundOrigin = {};
    m_background = m_link.newId();
    const auto named = m_link.words(m_link.ask(m_link.root(), m_link.atom("_XROOTPMAP_ID")));
    const auto geometry =
        named.empty() ? nullptr : m_link.reply<xcb_get_geometry_reply_t>(xcb_get_geometry(connection, named.front()));
    if (geometry && geometry->depth == m_link.screen().root_depth) {
        const std::uint32_t repeat = XCB_RENDER_REPEAT_NORMAL;
        xcb_render_create_picture(connection, m_background, named.front(),
                                  m_formats.forVisual(m_link.screen().root_visual), XCB_RENDER_CP_REPEAT, &repeat);
        return;
    }
    const std::uint32_t pixel = colourBesideTheHidden().value_or(0);
    const auto wide = [pixel](int shift) { return static_cast<std::uint16_t>((pixel >> shift & 0xFF) * 0x101); };
    xcb_render_create_solid_fill(connection, m_background, {wide(16), wide(8), wide(0), 0xFFFF});
}

/// Where nothing but the background is seen.
QRegion KeptOutWindows::bare() const {
    QRegion taken = m_hidden;
    for (const WindowStack::Window &window : m_stack.windows())
        if (window.isMapped && !isKeptOut(window.id))
            taken += window.area;
    return QRegion(m_screen) - taken;
}

void KeptOutWindows::heed(const QRegion &drawn) {
    if (m_pixmap == 0)
        return;
    const QRegion seen = bare();
    if (seen.isEmpty() || !(seen - drawn).isEmpty())
        return;
    forgetPicture();
    makePicture();
    m_changed += m_hidden;
}

/// The nearest such pixel.
std::optional<std::uint32_t> KeptOutWindows::colourBesideTheHidden() {
    const QPoint middle = m_hidden.boundingRect().center();
    std::optional<QPoint> nearest;
    for (const QRect &free : bare()) {
        const QPoint place(std::clamp(middle.x(), free.left(), free.right()),
                           std::clamp(middle.y(), free.top(), free.bottom()));
        if (!nearest || (place - middle).manhattanLength() < (*nearest - middle).manhattanLength())
            nearest = place;
    }
    if (!nearest)
        return std::nullopt;
    const auto image = m_link.reply<xcb_get_image_reply_t>(
        xcb_get_image(m_link.connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_link.root(),
                      static_cast<std::int16_t>(nearest->x()), static_cast<std::int16_t>(nearest->y()), 1, 1, ~0U));
    if (!image || xcb_get_image_data_length(image.get()) < 4)
        return std::nullopt;
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, xcb_get_image_data(image.get()), sizeof(pixel));
    return pixel;
}

void KeptOutWindows::forgetPicture() {
    auto *const connection = m_link.connection();
    for (xcb_render_picture_t *picture : {&m_picture, &m_background})
        if (*picture)
            xcb_render_free_picture(connection, std::exchange(*picture, 0));
    for (xcb_pixmap_t *pixmap : {&m_pixmap, &m_backgroundPixmap})
        if (*pixmap)
            xcb_free_pixmap(connection, std::exchange(*pixmap, 0));
}

void KeptOutWindows::ask() {
    if (m_isOld)
        update();
    for (const auto &layer : m_layers)
        layer->askDamage();
}

QRegion KeptOutWindows::take() {
    for (const auto &layer : m_layers) {
        const QRegion damage = layer->takeDamage();
        layer->unpainted -= damage;
        m_changed += damage & m_hidden;
    }
    return std::exchange(m_changed, {});
}

void KeptOutWindows::draw(const QRegion &part) {
    auto *const connection = m_link.connection();
    const QRect whole = m_hidden.boundingRect();
    const xcb_xfixes_region_t region = makeRegion(m_link, part, whole.topLeft());
    const auto x = static_cast<std::int16_t>(whole.x() - m_backgroundOrigin.x());
    const auto y = static_cast<std::int16_t>(whole.y() - m_backgroundOrigin.y());
    xcb_xfixes_set_picture_clip_region(connection, m_picture, region, 0, 0);
    xcb_render_composite(connection, XCB_RENDER_PICT_OP_SRC, m_background, XCB_NONE, m_picture, x, y, 0, 0, 0, 0,
                         static_cast<std::uint16_t>(whole.width()), static_cast<std::uint16_t>(whole.height()));
    for (const auto &layer : m_layers)
        layer->draw(m_picture, whole.topLeft(), region, m_isComposited);
    xcb_xfixes_destroy_region(connection, region);
}

} // namespace tavrine
