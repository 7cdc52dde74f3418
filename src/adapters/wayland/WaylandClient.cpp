#include "adapters/wayland/WaylandClient.h"

#include "adapters/wayland/CompositorLoss.h"

#include <QSocketNotifier>

namespace tavrine {

WaylandClient::WaylandClient(QObject *parent) : QObject(parent) {
    if (!m_link.isOpen())
        return;
    m_notifier = new QSocketNotifier(m_link.descriptor(), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &WaylandClient::read);
}

WaylandClient::~WaylandClient() = default;

void WaylandClient::read() {
    if (m_link.dispatch()) {
        m_link.flush(); // what the handlers asked for
        return;
    }
    m_notifier->setEnabled(false);
    if (!m_onLost)
        compositorLoss::endProgram(m_link.whyClosed());
    std::exchange(m_onLost, nullptr)();
}

} // namespace tavrine
