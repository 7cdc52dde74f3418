#include "adapters/wayland/DataControl.h"

#include <wayland/wlr-data-control-unstable-v1.h>

namespace tavrine {
namespace {

constexpr auto newerName = "ext_data_control_manager_v1";

} // namespace

DataOffer::DataOffer(zwlr_data_control_offer_v1 *offer, int maxTargets) : m_offer(offer), m_maxTargets(maxTargets) {
    static constexpr zwlr_data_control_offer_v1_listener listener{
        .offer = [](void *self, zwlr_data_control_offer_v1 *, const char *target) {
            static_cast<DataOffer *>(self)->add(target);
        }};
    zwlr_data_control_offer_v1_add_listener(m_offer, &listener, this);
}

DataOffer::~DataOffer() {
    zwlr_data_control_offer_v1_destroy(m_offer);
}

void DataOffer::add(const char *target) {
    if (m_targets.size() < m_maxTargets && *target && !m_targets.contains(target))
        m_targets.append(target);
}

void DataOffer::receive(const QByteArray &target, int descriptor) {
    zwlr_data_control_offer_v1_receive(m_offer, target.constData(), descriptor);
}

zwlr_data_control_manager_v1 *bindDataControl(WaylandLink &link, std::uint32_t highest) {
    const wl_interface &known = zwlr_data_control_manager_v1_interface;
    static const wl_interface newer{newerName, 1, known.method_count, known.methods, known.event_count, known.events};
    auto *const manager = link.bind<zwlr_data_control_manager_v1>(newer, 1);
    return manager ? manager : link.bind<zwlr_data_control_manager_v1>(known, highest);
}

DataControl::DataControl(WaylandLink &link, int maxTargets, Hooks hooks)
    : m_link(link), m_maxTargets(maxTargets), m_hooks(std::move(hooks)) {
    m_manager = bindDataControl(m_link, 1);
    if (!m_manager)
        return;
    m_link.setOnGlobal([this](const WaylandLink::Global &global, bool isThere) {
        if (!isThere && global.name == m_seatName)
            dropDevice();
        takeSeat();
    });
    takeSeat();
}

DataControl::~DataControl() {
    m_link.setOnGlobal(nullptr);
    dropDevice();
    if (m_manager)
        zwlr_data_control_manager_v1_destroy(m_manager);
}

QByteArray DataControl::onlyWhenFreeMark() const {
    // KWin's way to keep the desktop's own clipboard manager from running over a program that copies meanwhile.
    return m_link.find("org_kde_plasma_window_management") ? "application/x-kde-onlyReplaceEmpty" : QByteArray();
}

void DataControl::takeSeat() {
    const WaylandLink::Global *const global = m_link.find(wl_seat_interface.name);
    if (m_device || !global)
        return;
    m_seatName = global->name;
    m_seat = m_link.bind<wl_seat>(*global, wl_seat_interface, 1);
    m_device = zwlr_data_control_manager_v1_get_data_device(m_manager, m_seat);
    static constexpr auto selfOf = [](void *self) { return static_cast<DataControl *>(self); };
    static constexpr zwlr_data_control_device_v1_listener listener{
        .data_offer =
            [](void *self, zwlr_data_control_device_v1 *, zwlr_data_control_offer_v1 *offer) {
                selfOf(self)->m_announced[offer] = std::make_unique<DataOffer>(offer, selfOf(self)->m_maxTargets);
            },
        .selection =
            [](void *self, zwlr_data_control_device_v1 *, zwlr_data_control_offer_v1 *offer) {
                const auto found = selfOf(self)->m_announced.find(offer);
                std::unique_ptr<DataOffer> told;
                if (found != selfOf(self)->m_announced.end())
                    told = std::move(found->second);
                selfOf(self)->m_announced.clear();
                selfOf(self)->m_hooks.onSelection(std::move(told));
            },
        .finished = [](void *self, zwlr_data_control_device_v1 *) { selfOf(self)->dropDevice(); },
        .primary_selection = [](void *self, zwlr_data_control_device_v1 *,
                                zwlr_data_control_offer_v1 *offer) { selfOf(self)->m_announced.erase(offer); },
    };
    zwlr_data_control_device_v1_add_listener(m_device, &listener, this);
}

void DataControl::dropDevice() {
    if (!m_device)
        return;
    m_announced.clear();
    zwlr_data_control_device_v1_destroy(std::exchange(m_device, nullptr));
    wl_seat_destroy(std::exchange(m_seat, nullptr));
}

zwlr_data_control_source_v1 *DataControl::makeSource() const {
    return zwlr_data_control_manager_v1_create_data_source(m_manager);
}

void DataControl::setSelection(zwlr_data_control_source_v1 *source) const {
    if (m_device)
        zwlr_data_control_device_v1_set_selection(m_device, source);
}

} // namespace tavrine
