#include "adapters/x11/SelectionFetch.h"

namespace tavrine {

SelectionFetch::SelectionFetch(XConnection &connection, const SelectionLimits &limits, SecretDigests &secrets,
                               xcb_timestamp_t time, PasteboardFetch::Hooks hooks)
    : m_connection(connection), m_limits(limits), m_time(time), m_window(connection.createWindow()),
      m_fetch(*this, limits, secrets, std::move(hooks)) {
    m_fetch.start();
}

SelectionFetch::~SelectionFetch() {
    if (m_hasOpenTransfer || (m_transfer && m_transfer->mayStillBeWritten()))
        m_connection.retireWindow(m_window);
    else
        m_connection.destroyWindow(m_window);
}

void SelectionFetch::onSelectionNotify(const xcb_selection_notify_event_t &event) {
    if (!m_transfer || !m_fetch.isRunning())
        return;
    m_transfer->onSelectionNotify(event);
    m_fetch.proceed();
}

void SelectionFetch::onPropertyNotify(const xcb_property_notify_event_t &event) {
    if (!m_transfer || !m_fetch.isRunning())
        return;
    m_transfer->onPropertyNotify(event);
    m_fetch.proceed();
}

std::unique_ptr<PasteboardTransfer> SelectionFetch::track(std::unique_ptr<SelectionTransfer> transfer) {
    m_transfer = transfer.get();
    return transfer;
}

PropertyValue SelectionFetch::endTransfer() {
    SelectionTransfer &transfer = *std::exchange(m_transfer, nullptr);
    m_hasOpenTransfer = m_hasOpenTransfer || transfer.mayStillBeWritten();
    return transfer.state() == SelectionTransfer::State::done ? transfer.takeValue() : PropertyValue{};
}

std::unique_ptr<PasteboardTransfer> SelectionFetch::askForTargets() {
    return track(std::make_unique<SelectionTransfer>(m_connection, m_window, m_connection.atoms().targets, m_time,
                                                     qsizetype{m_limits.targets} * 4, Excess::cutOff));
}

QList<QByteArray> SelectionFetch::targets(PasteboardTransfer * /*ended*/) {
    const PropertyValue value = endTransfer();
    // Some old owners give the list the type TARGETS; everyone accepts that.
    const bool isList =
        value.format == 32 && (value.type == XCB_ATOM_ATOM || value.type == m_connection.atoms().targets);
    const QList<std::uint32_t> atoms = selection::parseAtoms(isList ? value.bytes : QByteArray(), m_limits.targets);
    QList<QByteArray> names = m_connection.atomNames(atoms);
    for (qsizetype i = 0; i < names.size(); ++i)
        m_atoms.insert(names[i], atoms[i]);
    return names;
}

std::unique_ptr<PasteboardTransfer> SelectionFetch::ask(const QByteArray &target, qsizetype maxBytes) {
    return track(std::make_unique<SelectionTransfer>(m_connection, m_window, m_atoms.value(target), m_time, maxBytes));
}

std::optional<Received> SelectionFetch::received(const QByteArray &target, PasteboardTransfer & /*ended*/) {
    PropertyValue value = endTransfer();
    if (value.type == 0)
        return std::nullopt;
    return Received{target, std::move(value.bytes), value.type, value.format};
}

std::optional<selection::TextEncoding> SelectionFetch::encodingOf(const Received &received) {
    return selection::textEncoding(received.target, m_connection.atomNames({received.type}).first());
}

} // namespace tavrine
