#include "adapters/wayland/WaylandReader.h"

#include "adapters/wayland/WaylandClient.h"

#include <QSocketNotifier>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace tavrine {

WaylandReader::WaylandReader(std::shared_ptr<WaylandConnection> connection)
    : m_connection(connection ? std::move(connection) : std::make_shared<WaylandConnection>()) {
    if (!m_connection->isOpen())
        return;
    const int descriptor = wl_display_get_fd(m_connection->display());
    m_notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &WaylandReader::read);
    m_room = new QSocketNotifier(descriptor, QSocketNotifier::Write, this);
    m_room->setEnabled(false);
    connect(m_room, &QSocketNotifier::activated, this, &WaylandReader::flush);
    m_connection->setOnRead([this] { readLater(); });
}

WaylandReader::~WaylandReader() {
    m_connection->setOnRead({});
}

void WaylandReader::add(WaylandClient &client) {
    m_clients.push_back(&client);
}

void WaylandReader::remove(const WaylandClient &client) {
    std::erase(m_clients, &client);
}

void WaylandReader::flush() {
    if (m_room && m_connection->isOpen())
        m_room->setEnabled(wl_display_flush(m_connection->display()) < 0 && errno == EAGAIN);
}

void WaylandReader::readLater() {
    if (!m_clients.empty() && !std::exchange(m_isTurnDue, true))
        QMetaObject::invokeMethod(this, &WaylandReader::read, Qt::QueuedConnection);
}

void WaylandReader::read() {
    m_isTurnDue = false;
    if (!m_notifier->isEnabled())
        return;
    giveTurns();
    flush();
    if (m_connection->isOpen())
        return;
    m_notifier->setEnabled(false);
    m_room->setEnabled(false);
    tellLoss();
}

/// What is called may make clients and end them.
void WaylandReader::giveTurns() {
    const auto clients = m_clients;
    for (WaylandClient *const client : clients)
        if (std::ranges::find(m_clients, client) != m_clients.end())
            static_cast<void>(client->link().dispatch());
}

void WaylandReader::tellLoss() {
    const auto clients = m_clients;
    for (WaylandClient *const client : clients)
        if (std::ranges::find(m_clients, client) != m_clients.end())
            client->lose();
}

} // namespace tavrine
