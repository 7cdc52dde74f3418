#pragma once

#include "adapters/wayland/WaylandLink.h"

#include <QByteArray>
#include <QList>

#include <functional>
#include <map>
#include <memory>

struct zwlr_data_control_device_v1;
struct zwlr_data_control_manager_v1;
struct zwlr_data_control_offer_v1;
struct zwlr_data_control_source_v1;

namespace tavrine {

/// What an owner has, as the compositor announced it.
class DataOffer {
public:
    explicit DataOffer(zwlr_data_control_offer_v1 *offer, int maxTargets);
    ~DataOffer();
    DataOffer(const DataOffer &) = delete;
    DataOffer &operator=(const DataOffer &) = delete;

    /// Each once, in the owner's order; the first so many.
    [[nodiscard]] const QList<QByteArray> &targets() const { return m_targets; }
    /// Has the owner write into the pipe, whose end the caller closes then.
    void receive(const QByteArray &target, int descriptor);

private:
    void add(const char *target);

    zwlr_data_control_offer_v1 *m_offer;
    const int m_maxTargets;
    QList<QByteArray> m_targets;
};

/// The protocol in its newer or its older form, in `highest` at most; null where the compositor has neither. The newer
/// one has another name and the same messages under the same numbers.
[[nodiscard]] zwlr_data_control_manager_v1 *bindDataControl(WaylandLink &link, std::uint32_t highest);

/// The protocol by which a program without a window follows a seat's clipboard and takes it.
///
/// Owned by who owns the link, and on its thread. Of several seats the first counts.
class DataControl {
public:
    struct Hooks {
        /// Somebody owns the clipboard from now on; null for nobody.
        std::function<void(std::unique_ptr<DataOffer>)> onSelection;
    };

    /// Both must outlive this object. What stands on the clipboard is told when the link is next dispatched.
    DataControl(WaylandLink &link, int maxTargets, Hooks hooks);
    ~DataControl();
    DataControl(const DataControl &) = delete;
    DataControl &operator=(const DataControl &) = delete;

    [[nodiscard]] bool isUsable() const { return m_manager != nullptr; }
    /// The compositor takes what is marked so only while nobody owns the clipboard. Empty where it knows no such mark.
    [[nodiscard]] QByteArray onlyWhenFreeMark() const;

    [[nodiscard]] zwlr_data_control_source_v1 *makeSource() const;
    /// Null empties it.
    void setSelection(zwlr_data_control_source_v1 *source) const;

private:
    void takeSeat();
    void dropDevice();

    WaylandLink &m_link;
    const int m_maxTargets;
    Hooks m_hooks;
    zwlr_data_control_manager_v1 *m_manager = nullptr;
    std::uint32_t m_seatName = 0;
    wl_seat *m_seat = nullptr;
    zwlr_data_control_device_v1 *m_device = nullptr;
    std::map<zwlr_data_control_offer_v1 *, std::unique_ptr<DataOffer>> m_announced; ///< not yet said for what
};

} // namespace tavrine
