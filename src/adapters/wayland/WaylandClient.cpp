#include "adapters/wayland/WaylandClient.h"

#include "adapters/wayland/CompositorLoss.h"

#include <utility>

namespace tavrine {

WaylandClient::WaylandClient(std::shared_ptr<WaylandReader> reader)
    : m_reader(reader ? std::move(reader) : std::make_shared<WaylandReader>()), m_link(m_reader->connection()) {
    if (m_link.isOpen())
        m_reader->add(*this);
}

WaylandClient::~WaylandClient() {
    m_reader->remove(*this);
}

void WaylandClient::lose() {
    if (!m_onLost)
        compositorLoss::endProgram(m_link.whyClosed());
    std::exchange(m_onLost, nullptr)();
}

} // namespace tavrine
