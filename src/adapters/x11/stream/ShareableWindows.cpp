#include "adapters/x11/stream/ShareableWindows.h"

#include <algorithm>

namespace tavrine {
namespace {

constexpr int maxClients = 8; // children of a frame that are looked at

struct Question {
    xcb_window_t window;
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_property_cookie_t state;
    xcb_get_property_cookie_t type;
    xcb_query_tree_cookie_t children;
};

Question ask(XcbLink &link, xcb_window_t window) {
    return {window, xcb_get_window_attributes(link.connection(), window), link.ask(window, link.atom("WM_STATE")),
            link.ask(window, link.atom("_NET_WM_WINDOW_TYPE")), xcb_query_tree(link.connection(), window)};
}

struct Answer {
    xcb_window_t window = XCB_WINDOW_NONE;
    bool isSeen = false;
    bool isClient = false; ///< a window manager says so
    bool isDesktop = false;
    std::vector<xcb_window_t> children;
};

Answer take(XcbLink &link, const Question &question) {
    const auto attributes = link.reply<xcb_get_window_attributes_reply_t>(question.attributes);
    const auto state = link.words(question.state);
    const auto types = link.words(question.type);
    const auto tree = link.reply<xcb_query_tree_reply_t>(question.children);
    Answer answer{.window = question.window, .children = {}};
    answer.isSeen = attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
                    attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
    answer.isClient = !state.empty();
    answer.isDesktop = std::find(types.begin(), types.end(), link.atom("_NET_WM_WINDOW_TYPE_DESKTOP")) != types.end();
    if (tree) {
        const xcb_window_t *const first = xcb_query_tree_children(tree.get());
        answer.children.assign(first, first + std::min(xcb_query_tree_children_length(tree.get()), maxClients));
    }
    return answer;
}

std::vector<Answer> lookAt(XcbLink &link, const std::vector<xcb_window_t> &windows) {
    std::vector<Question> questions; // all asked before the first is answered
    for (const xcb_window_t window : windows)
        questions.push_back(ask(link, window));
    std::vector<Answer> answers;
    for (const Question &question : questions)
        answers.push_back(take(link, question));
    return answers;
}

} // namespace

std::optional<QList<ShareableWindow>> readShareableWindows(XcbLink &link) {
    static_cast<void>(link.takeIsLate());
    const auto tree = link.reply<xcb_query_tree_reply_t>(xcb_query_tree(link.connection(), link.root()));
    if (!tree)
        return std::nullopt;
    const xcb_window_t *const first = xcb_query_tree_children(tree.get());
    const auto topLevels = lookAt(link, {first, first + xcb_query_tree_children_length(tree.get())});
    QList<ShareableWindow> windows;
    for (const Answer &topLevel : topLevels) {
        if (!topLevel.isSeen)
            continue;
        Answer client = topLevel;
        if (!topLevel.isClient)
            for (const Answer &child : lookAt(link, topLevel.children))
                if (child.isClient)
                    client = child;
        if (!client.isDesktop)
            windows.append(ShareableWindow{WindowNumber{client.window}});
    }
    return link.takeIsLate() ? std::nullopt : std::optional(windows);
}

} // namespace tavrine
