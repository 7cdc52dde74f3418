#include "adapters/x11/DragQuestion.h"

#include <algorithm>
#include <string>
#include <string_view>

#include <strings.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr size_t keptWindows = 4;     // a program that answers late is not to fail for it
constexpr auto longestAnswer = 250ms; // of one try; what comes later was for an older motion

/// Whether a list of addresses names a local file. Lines are comments behind a "#".
bool namesFile(std::string_view list) {
    constexpr std::string_view scheme = "file:";
    while (!list.empty()) {
        const size_t end = std::min(list.find_first_of("\r\n"), list.size());
        const std::string_view line = list.substr(0, end);
        if (line.size() > scheme.size() && ::strncasecmp(line.data(), scheme.data(), scheme.size()) == 0)
            return true;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

std::string_view bytesOf(const xcb_get_property_reply_t &value) {
    return {static_cast<const char *>(xcb_get_property_value(&value)),
            static_cast<size_t>(xcb_get_property_value_length(&value))};
}

} // namespace

DragQuestion::DragQuestion(XcbLink &link)
    : m_link(link), m_targets(link.atom("TARGETS")), m_uriList(link.atom("text/uri-list")), m_incr(link.atom("INCR")),
      m_property(link.atom("TAVRINE_DRAGGED")) {}

void DragQuestion::ask(xcb_atom_t selection, xcb_window_t owner, xcb_timestamp_t taken, xcb_timestamp_t claimed) {
    m_selection = selection;
    m_taken = taken;
    m_tries = 0;
    m_pieces = 0;
    m_isFiles = false;
    openWindow();
    if (!isOfQt(owner)) {
        m_stage = Stage::types;
        return convert(m_targets, taken);
    }
    m_stage = Stage::tries;
    m_motion = claimed;
    convert(m_uriList, claimed);
}

/// A fresh one for each drag, so that no late answer is taken for one of the next.
void DragQuestion::openWindow() {
    const xcb_window_t window = m_link.newId();
    const std::uint32_t values[] = {1, XCB_EVENT_MASK_PROPERTY_CHANGE};
    xcb_create_window(m_link.connection(), 0, window, m_link.root(), -10, -10, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    m_windows.push_back(window);
    if (m_windows.size() > keptWindows) {
        xcb_destroy_window(m_link.connection(), m_windows.front());
        m_windows.pop_front();
    }
}

bool DragQuestion::isOfQt(xcb_window_t owner) {
    const auto name = m_link.ask(owner, m_link.atom("_NET_WM_NAME"));
    const auto plainName = m_link.ask(owner, XCB_ATOM_WM_NAME);
    const std::string text = m_link.text(name);
    const std::string plainText = m_link.text(plainName);
    constexpr const char *start = "Qt Selection Owner";
    return text.starts_with(start) || plainText.starts_with(start);
}

void DragQuestion::convert(xcb_atom_t target, xcb_timestamp_t time) {
    xcb_convert_selection(m_link.connection(), m_windows.back(), m_selection, target, m_property, time);
    m_link.flush();
    m_askedAt = Clock::now();
    m_triedTime = time;
    m_isAsked = true;
    ++m_tries;
}

void DragQuestion::handle(const xcb_generic_event_t &event) {
    if (m_stage == Stage::idle || m_windows.empty())
        return;
    if (eventType(event) == XCB_SELECTION_NOTIFY) {
        const auto &answer = eventAs<xcb_selection_notify_event_t>(event);
        if (answer.requestor == m_windows.back() && m_isAsked)
            onAnswer(answer);
    } else if (eventType(event) == XCB_PROPERTY_NOTIFY && m_pieces > 0) {
        const auto &notice = eventAs<xcb_property_notify_event_t>(event);
        if (notice.window == m_windows.back() && notice.atom == m_property && notice.state == XCB_PROPERTY_NEW_VALUE)
            onPiece();
    }
}

void DragQuestion::onAnswer(const xcb_selection_notify_event_t &answer) {
    m_isAsked = false;
    const bool isRefused = answer.property != m_property;
    if (m_stage == Stage::types)
        return isRefused ? settle(false) : onTypes();
    if (!isRefused)
        onData();
    else if (m_stage == Stage::data)
        settle(true); // it is listed; some give nothing before the drop
}

void DragQuestion::onTypes() {
    const auto value = takeProperty();
    if (!value || value->format != 32)
        return settle(false);
    const auto *first = static_cast<const xcb_atom_t *>(xcb_get_property_value(value.get()));
    if (std::find(first, first + value->value_len, m_uriList) == first + value->value_len)
        return settle(false);
    m_stage = Stage::data;
    convert(m_uriList, m_taken);
}

void DragQuestion::onData() {
    const auto value = takeProperty();
    if (!value)
        return;
    if (value->type == m_incr) {
        m_pieces = mostPieces; // taking the property away has asked for the first
        return;
    }
    // An empty one is no answer of Qt's to the end.
    if (value->value_len > 0 || m_stage == Stage::data)
        settle(namesFile(bytesOf(*value)));
}

/// The rest is taken as it comes and not looked at, so that the other program gets done with it.
void DragQuestion::onPiece() {
    --m_pieces;
    const auto value = takeProperty();
    if (!value || value->value_len == 0)
        m_pieces = 0;
    else if (!m_isFiles)
        m_isFiles = namesFile(bytesOf(*value));
    if (m_pieces == 0)
        settle(m_isFiles);
}

XcbReply<xcb_get_property_reply_t> DragQuestion::takeProperty() {
    const xcb_window_t window = m_windows.back();
    auto value = m_link.reply<xcb_get_property_reply_t>(m_link.ask(window, m_property, readBytes));
    xcb_delete_property(m_link.connection(), window, m_property);
    m_link.flush();
    return value;
}

void DragQuestion::settle(bool isFiles) {
    m_isFiles = isFiles;
    m_isAsked = false;
    m_stage = Stage::idle;
}

std::chrono::milliseconds DragQuestion::pauseBetweenTries() const {
    return std::chrono::milliseconds(2 * m_tries); // forty of them last over a second and a half of motion
}

std::optional<DragQuestion::Clock::time_point> DragQuestion::deadline() const {
    if (m_stage == Stage::data && !m_isFiles)
        return m_askedAt + patience;
    if (m_stage == Stage::tries && m_pieces == 0 && m_motion != m_triedTime)
        return m_askedAt + (m_isAsked ? longestAnswer : pauseBetweenTries());
    return std::nullopt;
}

void DragQuestion::goOn() {
    const auto due = deadline();
    if (!due || Clock::now() < *due)
        return;
    if (m_stage == Stage::data)
        m_isFiles = true; // by the list; what comes may still say otherwise
    else if (m_tries < mostTries)
        convert(m_uriList, m_motion);
    else
        settle(false);
}

} // namespace tavrine
