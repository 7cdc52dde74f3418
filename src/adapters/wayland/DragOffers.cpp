#include "adapters/wayland/DragOffers.h"

#include "adapters/wayland/LayerShell.h"

#include <QCoreApplication>

#include <fcntl.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr qsizetype mostTypes = 500;

/// The connection ends with the toolkit.
bool isConnected() {
    return QCoreApplication::instance() != nullptr;
}

} // namespace

DragOffers::Offer::~Offer() {
    if (isConnected())
        wl_data_offer_destroy(m_offer);
}

int DragOffers::Offer::open(const QByteArray &type) const {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return -1;
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK); // of our end alone
    wl_data_offer_receive(m_offer, type.constData(), ends[1]);
    ::close(ends[1]);
    return ends[0];
}

DragOffers::DragOffers(LayerShell &shell) : m_device(shell.makeDataDevice()) {
    if (m_device)
        wl_data_device_add_listener(m_device, &listener(), this);
}

DragOffers::~DragOffers() {
    m_announced.clear();
    m_current.reset();
    if (m_device && isConnected())
        wl_data_device_release(m_device);
}

void DragOffers::offered(wl_data_offer *offer) {
    static constexpr wl_data_offer_listener types{
        .offer =
            [](void *data, wl_data_offer *, const char *type) {
                auto *announced = static_cast<Offer *>(data);
                if (announced->types.size() < mostTypes)
                    announced->types.append(type);
            },
        .source_actions = [](void *, wl_data_offer *, std::uint32_t) {},
        .action = [](void *, wl_data_offer *, std::uint32_t) {},
    };
    const auto announced = m_announced[offer] = std::make_shared<Offer>(offer);
    wl_data_offer_add_listener(offer, &types, announced.get());
}

std::shared_ptr<DragOffers::Offer> DragOffers::take(wl_data_offer *offer) {
    const auto found = m_announced.find(offer);
    if (found == m_announced.end())
        return nullptr;
    auto taken = std::move(found->second);
    m_announced.erase(found);
    return taken;
}

const wl_data_device_listener &DragOffers::listener() {
    static constexpr wl_data_device_listener all{
        .data_offer = [](void *self, wl_data_device *,
                         wl_data_offer *offer) { static_cast<DragOffers *>(self)->offered(offer); },
        .enter =
            [](void *self, wl_data_device *, std::uint32_t, wl_surface *, wl_fixed_t, wl_fixed_t,
               wl_data_offer *offer) {
                auto *offers = static_cast<DragOffers *>(self);
                offers->m_current = offers->take(offer);
                offers->m_isDropped = false;
            },
        .leave =
            [](void *self, wl_data_device *) {
                auto *offers = static_cast<DragOffers *>(self);
                if (!offers->m_isDropped)
                    offers->m_current.reset();
            },
        .motion = [](void *, wl_data_device *, std::uint32_t, wl_fixed_t, wl_fixed_t) {},
        .drop = [](void *self, wl_data_device *) { static_cast<DragOffers *>(self)->m_isDropped = true; },
        // The clipboard is heard elsewhere.
        .selection = [](void *self, wl_data_device *,
                        wl_data_offer *offer) { (void)static_cast<DragOffers *>(self)->take(offer); },
    };
    return all;
}

} // namespace tavrine
