#include "adapters/x11/SelectionTransfer.h"

#include "adapters/pasteboard/SelectionParser.h"

#include <algorithm>

namespace tavrine {

SelectionTransfer::SelectionTransfer(XConnection &connection, xcb_window_t window, xcb_atom_t target,
                                     xcb_timestamp_t time, qsizetype maxBytes, Excess excess, xcb_atom_t selection)
    : m_connection(connection), m_window(window),
      m_selection(selection != XCB_ATOM_NONE ? selection : connection.atoms().clipboard), m_target(target),
      m_time(time), m_maxBytes(maxBytes), m_excess(excess), m_lastProgress(std::chrono::steady_clock::now()) {
    ask(window);
}

SelectionTransfer::~SelectionTransfer() {
    for (const xcb_window_t window : m_furtherWindows)
        m_connection.retireWindow(window);
}

void SelectionTransfer::ask(xcb_window_t window) const {
    xcb_convert_selection(m_connection.get(), window, m_selection, m_target, m_target, m_time);
}

void SelectionTransfer::askAgain() {
    m_furtherWindows.push_back(m_connection.createWindow());
    ask(m_furtherWindows.back());
}

bool SelectionTransfer::isOurs(xcb_window_t window) const {
    return window == m_window ||
           std::find(m_furtherWindows.begin(), m_furtherWindows.end(), window) != m_furtherWindows.end();
}

void SelectionTransfer::onSelectionNotify(const xcb_selection_notify_event_t &event) {
    if (m_state != State::asked || !isOurs(event.requestor) || event.target != m_target)
        return;
    m_lastProgress = std::chrono::steady_clock::now();
    if (event.property != m_target) {
        m_state = State::refused;
        return;
    }
    m_window = event.requestor;
    // Taking the property deletes it, which is also the sign for a piecemeal owner to begin.
    m_value = m_connection.takeProperty(m_window, m_target, m_maxBytes, m_excess);
    if (m_value.type == m_connection.atoms().incr) {
        // The owner announces at least how much will come. It may lie; but when even that is too much there is no
        // point in waiting for it.
        const auto announced = selection::parseAtoms(m_value.bytes, 1);
        const bool isHopeless = m_excess == Excess::refused && !announced.isEmpty() && announced.first() > m_maxBytes;
        m_value = {};
        m_state = isHopeless ? State::tooLarge : State::piecemeal;
        m_isAbandoned = isHopeless;
    } else if (m_value.isTooLarge && m_excess == Excess::refused) {
        m_state = State::tooLarge;
    } else {
        m_state = m_value.type == 0 ? State::refused : State::done;
    }
}

void SelectionTransfer::onPropertyNotify(const xcb_property_notify_event_t &event) {
    if (m_state == State::piecemeal && event.window == m_window && event.atom == m_target &&
        event.state == XCB_PROPERTY_NEW_VALUE)
        takePiece();
}

void SelectionTransfer::takePiece() {
    PropertyValue piece = m_connection.takeProperty(m_window, m_target, m_maxBytes - m_value.bytes.size(), m_excess);
    if (piece.type == 0)
        return; // an older notice, whose piece was taken with the one before
    m_lastProgress = std::chrono::steady_clock::now();
    if (piece.isTooLarge && m_excess == Excess::refused) {
        m_value = {};
        m_state = State::tooLarge;
        m_isAbandoned = true;
        return;
    }
    const bool isCutOff = piece.isTooLarge;
    if (!m_hasPiece) {
        m_hasPiece = true;
        m_value = std::move(piece);
    } else if (piece.bytes.isEmpty()) {
        m_value.bytes.squeeze();
        m_state = State::done;
        return;
    } else if (piece.type == m_value.type && piece.format == m_value.format) {
        m_value.bytes.append(piece.bytes);
    } else {
        m_value = {};
        m_state = State::refused;
        m_isAbandoned = true;
        return;
    }
    if (m_value.bytes.isEmpty())
        m_state = State::done; // the end came first: nothing is what there is
    if (isCutOff) {            // the rest is not waited for
        m_state = State::done;
        m_isAbandoned = true;
    }
}

} // namespace tavrine
