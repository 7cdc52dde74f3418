#include "adapters/wayland/WaylandClient.h"

#include "adapters/wayland/CompositorLoss.h"

#include <QSocketNotifier>

namespace tavrine {

WaylandClient::WaylandClient(QObject *parent) : QObject(parent) {
    if (!m_link.isOpen())
        return;
    m_notifier = new QSocketNotifier(m_link.descriptor(), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &WaylandClient::read);
    m_room = new QSocketNotifier(m_link.descriptor(), QSocketNotifier::Write, this);
    m_room->setEnabled(false);
    connect(m_room, &QSocketNotifier::activated, this, &WaylandClient::flush);
}

WaylandClient::~WaylandClient() = default;

void WaylandClient::flush() {
    const bool isAllOut = m_link.flush();
    if (m_room)
        m_room->setEnabled(!isAllOut);
}

void WaylandClient::read() {
    if (m_link.dispatch()) {
        flush();
        return;
    }
    m_notifier->setEnabled(false);
    m_room->setEnabled(false);
    if (!m_onLost)
        compositorLoss::endProgram(m_link.whyClosed());
    std::exchange(m_onLost, nullptr)();
}

} // namespace tavrine
