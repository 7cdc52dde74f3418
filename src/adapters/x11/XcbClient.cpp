#include "adapters/x11/XcbClient.h"

#include <QSocketNotifier>

#include <utility>

namespace tavrine {

XcbClient::XcbClient(Handler handler, std::function<void()> onDrained, QObject *parent)
    : QObject(parent), m_link(longestWait), m_handler(std::move(handler)), m_onDrained(std::move(onDrained)) {
    if (!isConnected())
        return;
    m_notifier = new QSocketNotifier(m_link.descriptor(), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &XcbClient::onReadable);
}

XcbClient::~XcbClient() {
    delete m_notifier; // before the descriptor that it watches
}

xcb_atom_t XcbClient::atom(const std::string &name) {
    const xcb_atom_t atom = m_link.atom(name);
    drainSoon();
    return atom;
}

xcb_get_property_cookie_t XcbClient::ask(xcb_window_t window, const std::string &property) {
    return m_link.ask(window, atom(property));
}

std::vector<quint32> XcbClient::words(xcb_get_property_cookie_t cookie) {
    auto words = m_link.words(cookie);
    drainSoon();
    return words;
}

QByteArray XcbClient::text(xcb_get_property_cookie_t cookie) {
    const std::string text = m_link.text(cookie);
    drainSoon();
    return QByteArray::fromStdString(text);
}

/// Events that were read along with a reply no longer make the socket readable.
void XcbClient::drainSoon() {
    if (!m_isDraining && !std::exchange(m_isDrainPosted, true))
        QMetaObject::invokeMethod(this, &XcbClient::onReadable, Qt::QueuedConnection);
}

void XcbClient::drain() {
    if (!isConnected() || std::exchange(m_isDraining, true))
        return;
    while (const XcbEvent event = m_link.nextEvent()) {
        // An error here belongs to a request about a window that went meanwhile.
        if (event->response_type != 0)
            m_handler(*event);
    }
    m_isDraining = false;
}

void XcbClient::setReading(bool isReading) {
    if (m_notifier)
        m_notifier->setEnabled(isReading && isConnected());
}

void XcbClient::onReadable() {
    m_isDrainPosted = false;
    drain();
    if (!isConnected() && m_notifier)
        m_notifier->setEnabled(false); // the server is gone; a closed socket stays readable for ever
    if (m_onDrained)
        m_onDrained();
}

} // namespace tavrine
