#include "adapters/x11/stream/WindowStack.h"

#include "adapters/x11/XcbLink.h"

#include <algorithm>

namespace tavrine {
namespace {

QRect outerArea(int x, int y, int width, int height, int border) {
    return {x, y, width + 2 * border, height + 2 * border};
}

} // namespace

void WindowStack::add(Window window) {
    remove(window.id);
    window.content = ++m_contents;
    m_windows.push_back(window);
}

const WindowStack::Window *WindowStack::find(xcb_window_t id) const {
    const auto found =
        std::find_if(m_windows.begin(), m_windows.end(), [id](const Window &each) { return each.id == id; });
    return found == m_windows.end() ? nullptr : &*found;
}

WindowStack::Place WindowStack::place(xcb_window_t id) {
    return std::find_if(m_windows.begin(), m_windows.end(), [id](const Window &each) { return each.id == id; });
}

std::optional<WindowStack::Change> WindowStack::apply(const xcb_generic_event_t &event) {
    switch (eventType(event)) {
    case XCB_CREATE_NOTIFY: {
        const auto &notice = eventAs<xcb_create_notify_event_t>(event);
        if (notice.parent != m_root || find(notice.window))
            return std::nullopt;
        add({.id = notice.window,
             .area = outerArea(notice.x, notice.y, notice.width, notice.height, notice.border_width),
             .border = notice.border_width});
        return Change{notice.window, {}};
    }
    case XCB_DESTROY_NOTIFY:
        return remove(eventAs<xcb_destroy_notify_event_t>(event).window);
    case XCB_MAP_NOTIFY:
        return map(eventAs<xcb_map_notify_event_t>(event).window, true);
    case XCB_UNMAP_NOTIFY:
        return map(eventAs<xcb_unmap_notify_event_t>(event).window, false);
    case XCB_CONFIGURE_NOTIFY:
        return configure(eventAs<xcb_configure_notify_event_t>(event));
    case XCB_CIRCULATE_NOTIFY:
        return circulate(eventAs<xcb_circulate_notify_event_t>(event));
    case XCB_REPARENT_NOTIFY: {
        // The notice does not tell its size; who follows the stack begins anew with those that arrive.
        const auto &notice = eventAs<xcb_reparent_notify_event_t>(event);
        const auto change = remove(notice.window);
        if (notice.parent != m_root)
            return change.value_or(Change{notice.window, {}});
        add({.id = notice.window, .area = QRect(notice.x, notice.y, 1, 1)});
        return Change{notice.window, {}};
    }
    default:
        return std::nullopt;
    }
}

std::optional<WindowStack::Change> WindowStack::remove(xcb_window_t id) {
    const auto window = place(id);
    if (window == m_windows.end())
        return std::nullopt;
    const Change change{id, window->isMapped ? window->area : QRect()};
    m_windows.erase(window);
    return change;
}

std::optional<WindowStack::Change> WindowStack::map(xcb_window_t id, bool isMapped) {
    const auto window = place(id);
    if (window == m_windows.end())
        return std::nullopt;
    if (window->isMapped != isMapped)
        window->content = ++m_contents;
    window->isMapped = isMapped;
    return Change{id, window->area};
}

std::optional<WindowStack::Change> WindowStack::configure(const xcb_configure_notify_event_t &notice) {
    const auto window = place(notice.window);
    if (window == m_windows.end())
        return std::nullopt;
    Window changed = *window;
    changed.area = outerArea(notice.x, notice.y, notice.width, notice.height, notice.border_width);
    changed.border = notice.border_width;
    if (changed.area.size() != window->area.size() || changed.border != window->border)
        changed.content = ++m_contents;
    Change change{notice.window, changed.isMapped ? changed.area | window->area : QRect()};
    m_windows.erase(window);
    const auto below = place(notice.above_sibling);
    change.isOrderLost = notice.above_sibling != XCB_WINDOW_NONE && below == m_windows.end();
    m_windows.insert(below == m_windows.end() ? m_windows.begin() : below + 1, changed);
    return change;
}

std::optional<WindowStack::Change> WindowStack::circulate(const xcb_circulate_notify_event_t &notice) {
    const auto window = place(notice.window);
    if (window == m_windows.end())
        return std::nullopt;
    if (notice.place == XCB_PLACE_ON_TOP)
        std::rotate(window, window + 1, m_windows.end());
    else
        std::rotate(m_windows.begin(), window, window + 1);
    return Change{notice.window, find(notice.window)->area};
}

} // namespace tavrine
