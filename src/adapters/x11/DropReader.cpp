#include "adapters/x11/DropReader.h"

#include "adapters/pasteboard/SelectionParser.h"
#include "adapters/x11/SelectionTransfer.h"

#include <algorithm>

#include <poll.h>

namespace tavrine {

DropReader::DropReader(Drop drop, const SelectionLimits &limits, int stop)
    : m_drop(std::move(drop)), m_limits(limits), m_end(std::chrono::steady_clock::now() + limits.total), m_stop(stop) {}

DroppedContent DropReader::read() {
    XConnection connection;
    connection.open();
    if (!connection.isUsable())
        return {};
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection.get(), m_drop.source, XCB_CW_EVENT_MASK, &events);
    return readDroppedForms(targets(connection), {.imagePixels = m_limits.imagePixels},
                            [&](const QByteArray &target) { return fetch(connection, target); });
}

QList<QByteArray> DropReader::targets(XConnection &connection) const {
    QList<std::uint32_t> atoms = m_drop.types;
    if (m_drop.hasMoreTypes) {
        const XcbReply<xcb_get_property_reply_t> list(
            xcb_get_property_reply(connection.get(),
                                   xcb_get_property(connection.get(), 0, m_drop.source, connection.atom("XdndTypeList"),
                                                    XCB_ATOM_ATOM, 0, static_cast<std::uint32_t>(m_limits.targets)),
                                   nullptr));
        if (list && list->format == 32)
            atoms = selection::parseAtoms({static_cast<const char *>(xcb_get_property_value(list.get())),
                                           qsizetype{xcb_get_property_value_length(list.get())}},
                                          m_limits.targets);
    }
    QList<QByteArray> names = atoms.isEmpty() ? m_drop.names : connection.atomNames(atoms);
    names.removeAll(QByteArray());
    return names;
}

bool DropReader::waitForEvents(XConnection &connection, TimePoint until) const {
    connection.flush();
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
    if (left.count() <= 0 || !connection.isUsable())
        return false;
    if (connection.readAhead())
        return true;
    pollfd descriptors[] = {{connection.descriptor(), POLLIN, 0}, {m_stop, POLLIN, 0}};
    const int count = ::poll(descriptors, std::size(descriptors), static_cast<int>(left.count()));
    return count >= 0 && descriptors[1].revents == 0; // with nothing to read the clock is looked at
}

std::optional<DroppedForm> DropReader::fetch(XConnection &connection, const QByteArray &target) {
    if (m_isLost)
        return std::nullopt;
    const xcb_window_t window = connection.createWindow(); // goes with the connection
    SelectionTransfer transfer(connection, window, connection.atom(target), m_drop.time,
                               std::min(m_limits.transferBytes, m_limits.changeBytes - m_bytes), Excess::refused,
                               connection.atom("XdndSelection"));
    while (transfer.isRunning() && !m_isLost) {
        const auto patience = transfer.state() == SelectionTransfer::State::asked ? m_limits.answer : m_limits.stall;
        if (!waitForEvents(connection, std::min(m_end, transfer.lastProgress() + patience)))
            m_isLost = true;
        while (const XEvent event = connection.nextEvent()) {
            if (eventType(*event) == XCB_SELECTION_NOTIFY)
                transfer.onSelectionNotify(eventAs<xcb_selection_notify_event_t>(*event));
            else if (eventType(*event) == XCB_PROPERTY_NOTIFY)
                transfer.onPropertyNotify(eventAs<xcb_property_notify_event_t>(*event));
            else if (eventType(*event) == XCB_DESTROY_NOTIFY)
                m_isLost = m_isLost || eventAs<xcb_destroy_notify_event_t>(*event).window == m_drop.source;
        }
    }
    if (transfer.state() != SelectionTransfer::State::done)
        return std::nullopt;
    PropertyValue value = transfer.takeValue();
    if (value.format != 8)
        return std::nullopt;
    m_bytes += value.bytes.size();
    return DroppedForm{connection.atomNames({value.type}).first(), std::move(value.bytes)};
}

} // namespace tavrine
