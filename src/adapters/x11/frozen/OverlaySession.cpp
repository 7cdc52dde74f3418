#include "adapters/x11/frozen/OverlaySession.h"

#include "adapters/x11/frozen/CrossCursor.h"

#include <algorithm>

#include <xcb/randr.h>
#include <xcb/render.h>
#include <xcb/shm.h>

namespace tavrine {
namespace {

constexpr quint16 pointerEvents =
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;
// Two programs that both want to be on top must not fight for ever.
constexpr int maxRaises = 20;

} // namespace

OverlaySession::OverlaySession() = default;

std::unique_ptr<OverlaySession> OverlaySession::open(const std::string &picture) {
    auto session = begin(picture);
    if (!session)
        return nullptr;
    for (auto wait = session->timeToWait(); wait.count() > 0; wait = session->timeToWait())
        session->m_link.waitForInput(wait);
    return session->freeze() ? std::move(session) : nullptr;
}

std::unique_ptr<OverlaySession> OverlaySession::begin(const std::string &picture) {
    std::unique_ptr<OverlaySession> session(new OverlaySession);
    session->m_pictureFile = picture;
    if (!session->m_link.isOpen())
        return nullptr;
    for (xcb_extension_t *const extension : {&xcb_shm_id, &xcb_randr_id, &xcb_render_id})
        xcb_prefetch_extension_data(session->m_link.connection(), extension);
    session->m_turn.emplace(session->m_link);
    return session;
}

OverlaySession::~OverlaySession() {
    if (m_window)
        hide();
    m_canvas.reset();
    m_picture.reset();
}

bool OverlaySession::freeze() {
    auto *const connection = m_link.connection();
    m_picture = SharedPixels::make(m_link);
    m_canvas = SharedPixels::make(m_link);
    if (!m_picture || !m_canvas)
        return false;
    if (!m_pictureFile.empty())
        return freezeFile();
    m_picture->beginReading();
    const auto keysCookie = OverlayKeys::ask(m_link);
    const auto pointerCookie = xcb_query_pointer(connection, m_link.root());
    m_canvas->prepareForPainting(); // while the server copies the screen
    if (!m_picture->finishReading())
        return false;
    m_keys = OverlayKeys::read(m_link, keysCookie);
    if (const auto pointer = m_link.reply<xcb_query_pointer_reply_t>(pointerCookie))
        m_firstPointer = {pointer->root_x, pointer->root_y};
    m_monitors = readMonitors(m_link);
    createWindow();
    return true;
}

bool OverlaySession::freezeFile() {
    m_file = PictureFile::open(m_pictureFile, rect().size());
    if (!m_file)
        return false;
    const PixelsToRead plane = m_file->plane();
    std::copy(plane.data, plane.line(plane.height), m_picture->pixels().data);
    m_firstPointer = m_file->pointer(); // the server does not know it
    m_keys = OverlayKeys::read(m_link, OverlayKeys::ask(m_link));
    m_monitors = readMonitors(m_link);
    createWindow();
    return true;
}

void OverlaySession::createWindow() {
    auto *const connection = m_link.connection();
    m_cursor = crossCursor(m_link, monitorAt(m_monitors, m_firstPointer).scale);
    m_window = m_link.newId();
    const quint32 values[] = {XCB_BACK_PIXMAP_NONE, 1,
                              XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_VISIBILITY_CHANGE | XCB_EVENT_MASK_KEY_PRESS |
                                  XCB_EVENT_MASK_KEY_RELEASE | pointerEvents,
                              m_cursor};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_window, m_link.root(), 0, 0,
                      static_cast<quint16>(rect().width()), static_cast<quint16>(rect().height()), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, m_link.screen().root_visual,
                      XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_CURSOR, values);
    const quint32 notices = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, m_link.root(), XCB_CW_EVENT_MASK, &notices);
    const quint32 withoutExposures = 0;
    m_context = m_link.newId();
    xcb_create_gc(connection, m_context, m_window, XCB_GC_GRAPHICS_EXPOSURES, &withoutExposures);
}

void OverlaySession::show() {
    xcb_map_window(m_link.connection(), m_window);
    const quint32 above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(m_link.connection(), m_window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    put({rect()});
}

void OverlaySession::put(const std::vector<QRect> &areas) {
    for (const QRect &area : areas)
        m_canvas->put(m_window, m_context, area);
    m_link.finish();
}

void OverlaySession::hide() {
    auto *const connection = m_link.connection();
    xcb_ungrab_pointer(connection, XCB_CURRENT_TIME);
    xcb_ungrab_keyboard(connection, XCB_CURRENT_TIME);
    xcb_destroy_window(connection, std::exchange(m_window, 0));
    m_turn->noteEnd();
    xcb_flush(connection);
}

void OverlaySession::tryGrabs() {
    auto *const connection = m_link.connection();
    xcb_grab_pointer_cookie_t pointer{};
    xcb_grab_keyboard_cookie_t keyboard{};
    if (!m_hasPointer)
        pointer = xcb_grab_pointer(connection, 0, m_window, pointerEvents, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                                   XCB_NONE, m_cursor, XCB_CURRENT_TIME);
    if (!m_hasKeyboard)
        keyboard =
            xcb_grab_keyboard(connection, 0, m_window, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    if (!m_hasPointer) {
        const auto answer = m_link.reply<xcb_grab_pointer_reply_t>(pointer);
        m_hasPointer = answer && answer->status == XCB_GRAB_STATUS_SUCCESS;
        if (m_hasPointer && !m_isFirstTry)
            takeHeldButton();
    }
    if (!m_hasKeyboard) {
        const auto answer = m_link.reply<xcb_grab_keyboard_reply_t>(keyboard);
        m_hasKeyboard = answer && answer->status == XCB_GRAB_STATUS_SUCCESS;
    }
    m_isFirstTry = false;
}

/// The press that made another program give its grab back is the one that begins here: to the person it fell on what
/// is on the screen.
void OverlaySession::takeHeldButton() {
    const auto pointer = m_link.reply<xcb_query_pointer_reply_t>(xcb_query_pointer(m_link.connection(), m_link.root()));
    if (!pointer)
        return;
    OverlayEvent event;
    event.place = {pointer->root_x, pointer->root_y};
    m_pending.push_back(event);
    if (pointer->mask & XCB_BUTTON_MASK_1) {
        event.kind = OverlayEvent::Kind::buttonPressed;
        event.button = 1;
        m_pending.push_back(event);
    }
}

std::optional<OverlayEvent> OverlaySession::nextEvent() {
    if (!m_pending.empty()) {
        const OverlayEvent event = m_pending.front();
        m_pending.pop_front();
        return event;
    }
    while (const XcbEvent event = m_link.nextEvent())
        if (const auto known = translated(*event))
            return known;
    if (m_link.isOpen())
        return std::nullopt;
    OverlayEvent end;
    end.kind = OverlayEvent::Kind::ended;
    return end;
}

std::optional<OverlayEvent> OverlaySession::translated(const xcb_generic_event_t &event) {
    using Kind = OverlayEvent::Kind;
    OverlayEvent known;
    switch (event.response_type & 0x7f) {
    case XCB_MOTION_NOTIFY: {
        const auto &motion = reinterpret_cast<const xcb_motion_notify_event_t &>(event);
        known.place = {motion.root_x, motion.root_y};
        return known;
    }
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE: {
        const auto &button = reinterpret_cast<const xcb_button_press_event_t &>(event);
        known.kind = (event.response_type & 0x7f) == XCB_BUTTON_PRESS ? Kind::buttonPressed : Kind::buttonReleased;
        known.place = {button.root_x, button.root_y};
        known.button = button.detail;
        return known;
    }
    case XCB_KEY_RELEASE: {
        const auto &key = reinterpret_cast<const xcb_key_release_event_t &>(event);
        m_releasedKey = key.detail;
        m_releasedAt = key.time;
        return std::nullopt;
    }
    case XCB_KEY_PRESS: {
        const auto &key = reinterpret_cast<const xcb_key_press_event_t &>(event);
        known.kind = Kind::keyPressed;
        known.key = m_keys.key(key.detail);
        known.isShift = key.state & XCB_MOD_MASK_SHIFT;
        known.isControl = key.state & XCB_MOD_MASK_CONTROL;
        // A key that repeats is released and pressed at the same moment.
        known.isRepeated = key.detail == m_releasedKey && key.time == m_releasedAt;
        return known;
    }
    case XCB_EXPOSE: {
        const auto &expose = reinterpret_cast<const xcb_expose_event_t &>(event);
        known.kind = Kind::uncovered;
        known.area = {expose.x, expose.y, expose.width, expose.height};
        return known;
    }
    case XCB_VISIBILITY_NOTIFY:
        if (reinterpret_cast<const xcb_visibility_notify_event_t &>(event).state != XCB_VISIBILITY_UNOBSCURED &&
            m_raises++ < maxRaises && m_window) {
            const quint32 above = XCB_STACK_MODE_ABOVE;
            xcb_configure_window(m_link.connection(), m_window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
            xcb_flush(m_link.connection());
        }
        return std::nullopt;
    case XCB_CONFIGURE_NOTIFY: {
        const auto &screen = reinterpret_cast<const xcb_configure_notify_event_t &>(event);
        known.kind = Kind::ended;
        return screen.window == m_link.root() && QSize(screen.width, screen.height) != rect().size()
                   ? std::optional(known)
                   : std::nullopt;
    }
    default:
        known.kind = Kind::ended;
        return m_turn->isLostBy(event) ? std::optional(known) : std::nullopt;
    }
}

void OverlaySession::movePointer(QPoint place) {
    xcb_warp_pointer(m_link.connection(), XCB_NONE, m_link.root(), 0, 0, 0, 0, static_cast<qint16>(place.x()),
                     static_cast<qint16>(place.y()));
    xcb_flush(m_link.connection());
}

} // namespace tavrine
