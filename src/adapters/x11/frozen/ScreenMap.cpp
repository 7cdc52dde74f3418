#include "adapters/x11/frozen/ScreenMap.h"

#include "adapters/x11/frozen/MonitorScale.h"

#include <algorithm>
#include <cstdlib>

#include <xcb/randr.h>

namespace tavrine {
namespace {

// A desktop with more windows than this has them stacked out of sight.
constexpr int maxWindows = 512;
constexpr quint32 longestResources = 64 * 1024;
constexpr int maxClients = 8; // children of a frame that are looked at

std::string environment(const char *name) {
    const char *const value = std::getenv(name);
    return value ? value : "";
}

std::string atomName(XcbLink &link, xcb_atom_t atom) {
    const auto answer = link.reply<xcb_get_atom_name_reply_t>(xcb_get_atom_name(link.connection(), atom));
    return answer ? std::string(xcb_get_atom_name_name(answer.get()),
                                static_cast<size_t>(xcb_get_atom_name_name_length(answer.get())))
                  : std::string();
}

/// Left, right, top and bottom of the shadow that a window draws within itself.
std::optional<QMargins> shadowOf(const xcb_get_property_reply_t *answer) {
    if (!answer || answer->format != 32 || answer->value_len < 4)
        return std::nullopt;
    const auto *sides = static_cast<const quint32 *>(xcb_get_property_value(answer));
    constexpr quint32 widest = 400; // more is no shadow
    if (std::any_of(sides, sides + 4, [](quint32 side) { return side > widest; }))
        return std::nullopt;
    return QMargins(static_cast<int>(sides[0]), static_cast<int>(sides[2]), static_cast<int>(sides[1]),
                    static_cast<int>(sides[3]));
}

} // namespace

std::vector<OverlayMonitor> readMonitors(XcbLink &link) {
    ScaleWishes wishes;
    wishes.scaleFactor = environment("QT_SCALE_FACTOR");
    wishes.screenScaleFactors = environment("QT_SCREEN_SCALE_FACTORS");
    wishes.dotsPerInch = dotsPerInchOf(link.text(link.ask(link.root(), XCB_ATOM_RESOURCE_MANAGER, longestResources)));
    const bool areNamed = wishes.screenScaleFactors.find('=') != std::string::npos;
    std::vector<OverlayMonitor> monitors;
    const auto *const extension = xcb_get_extension_data(link.connection(), &xcb_randr_id);
    const auto answer =
        extension && extension->present
            ? link.reply<xcb_randr_get_monitors_reply_t>(xcb_randr_get_monitors(link.connection(), link.root(), 1))
            : nullptr;
    if (answer)
        for (auto each = xcb_randr_get_monitors_monitors_iterator(answer.get()); each.rem > 0;
             xcb_randr_monitor_info_next(&each)) {
            const QRect area =
                QRect(each.data->x, each.data->y, each.data->width, each.data->height) & screenRect(link);
            const std::string name = areNamed ? atomName(link, each.data->name) : std::string();
            if (!area.isEmpty())
                monitors.push_back({area, monitorScale(wishes, name, static_cast<int>(monitors.size()))});
        }
    if (monitors.empty())
        monitors.push_back({screenRect(link), monitorScale(wishes, {}, 0)});
    return monitors;
}

std::vector<QRect> readWindows(XcbLink &link, xcb_window_t except) {
    auto *const connection = link.connection();
    const xcb_atom_t shadowAtom = link.atom("_GTK_FRAME_EXTENTS");
    const auto tree = link.reply<xcb_query_tree_reply_t>(xcb_query_tree(connection, link.root()));
    if (!tree)
        return {};
    struct Question {
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_geometry_cookie_t geometry;
        xcb_get_property_cookie_t shadow;
        xcb_query_tree_cookie_t children;
    };
    const auto askShadow = [&](xcb_window_t window) {
        return xcb_get_property(connection, 0, window, shadowAtom, XCB_ATOM_CARDINAL, 0, 4);
    };
    std::vector<Question> questions; // all asked before the first is answered
    const xcb_window_t *const children = xcb_query_tree_children(tree.get());
    for (int i = xcb_query_tree_children_length(tree.get()) - 1; i >= 0 && questions.size() < maxWindows; --i)
        if (children[i] != except)
            questions.push_back({xcb_get_window_attributes(connection, children[i]),
                                 xcb_get_geometry(connection, children[i]), askShadow(children[i]),
                                 xcb_query_tree(connection, children[i])});
    std::vector<QRect> windows;
    for (const Question &question : questions) {
        const auto attributes = link.reply<xcb_get_window_attributes_reply_t>(question.attributes);
        const auto geometry = link.reply<xcb_get_geometry_reply_t>(question.geometry);
        const auto ownShadow = link.reply<xcb_get_property_reply_t>(question.shadow);
        const auto clients = link.reply<xcb_query_tree_reply_t>(question.children);
        if (!attributes || !geometry || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
            attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT)
            continue;
        auto shadow = shadowOf(ownShadow.get());
        const int clientCount = clients ? std::min(xcb_query_tree_children_length(clients.get()), maxClients) : 0;
        for (int i = 0; i < clientCount && !shadow; ++i)
            shadow = shadowOf(
                link.reply<xcb_get_property_reply_t>(askShadow(xcb_query_tree_children(clients.get())[i])).get());
        const int border = 2 * geometry->border_width;
        const QRect area = QRect(geometry->x, geometry->y, geometry->width + border, geometry->height + border)
                               .marginsRemoved(shadow.value_or(QMargins())) &
                           screenRect(link);
        if (area.width() > 1 && area.height() > 1) // programs keep windows of one pixel for their messages
            windows.push_back(area);
    }
    return windows;
}

} // namespace tavrine
