#include "adapters/x11/SelectionTransfer.h"

#include "adapters/x11/SelectionParser.h"

namespace tavrine {

SelectionTransfer::SelectionTransfer(XConnection &connection, xcb_window_t window, xcb_atom_t target,
                                     xcb_timestamp_t time, qsizetype maxBytes)
    : m_connection(connection), m_window(window), m_target(target), m_maxBytes(maxBytes),
      m_lastProgress(std::chrono::steady_clock::now()) {
    xcb_convert_selection(connection.get(), window, connection.atoms().clipboard, target, target, time);
}

void SelectionTransfer::onSelectionNotify(const xcb_selection_notify_event_t &event) {
    if (m_state != State::asked || event.requestor != m_window || event.target != m_target)
        return;
    m_lastProgress = std::chrono::steady_clock::now();
    if (event.property != m_target) {
        m_state = State::refused;
        return;
    }
    // Taking the property deletes it, which is also the sign for a piecemeal owner to begin.
    m_value = m_connection.takeProperty(m_window, m_target, m_maxBytes);
    if (m_value.type == m_connection.atoms().incr) {
        // The owner announces at least how much will come. It may lie; but when even that is too much there is no
        // point in waiting for it.
        const auto announced = selection::parseAtoms(m_value.bytes, 1);
        const bool isHopeless = !announced.isEmpty() && announced.first() > m_maxBytes;
        m_value = {};
        m_state = isHopeless ? State::tooLarge : State::piecemeal;
        m_isAbandoned = isHopeless;
    } else if (m_value.isTooLarge) {
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
    PropertyValue piece = m_connection.takeProperty(m_window, m_target, m_maxBytes - m_value.bytes.size());
    if (piece.type == 0)
        return; // an older notice, whose piece was taken with the one before
    m_lastProgress = std::chrono::steady_clock::now();
    if (piece.isTooLarge) {
        m_value = {};
        m_state = State::tooLarge;
        m_isAbandoned = true;
        return;
    }
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
}

} // namespace tavrine
