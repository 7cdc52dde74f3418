#pragma once

#include "adapters/wayland/WaylandLink.h"

#include <QByteArray>
#include <QList>

#include <chrono>
#include <map>
#include <optional>

struct zwlr_data_control_device_v1;
struct zwlr_data_control_manager_v1;
struct zwlr_data_control_offer_v1;

namespace tavrine {

/// A program that pastes, on a connection of its own, with nothing but the data-control protocol. Calls wait for the
/// answer.
class TestPaster {
public:
    TestPaster();
    ~TestPaster();
    TestPaster(const TestPaster &) = delete;
    TestPaster &operator=(const TestPaster &) = delete;

    /// None when there is no such target or it is refused; what came when there is no end in time.
    [[nodiscard]] std::optional<QByteArray> paste(const QByteArray &target);
    [[nodiscard]] QList<QByteArray> targets();
    /// How often it was told that nobody owns the clipboard.
    [[nodiscard]] int timesEmpty() const { return m_timesEmpty; }
    [[nodiscard]] bool isOwned();
    /// How often somebody has taken or left the clipboard since the beginning.
    [[nodiscard]] int notices();

    /// Asks, and takes nothing.
    void askAndHang(const QByteArray &target);
    /// Asks, and closes its end of the pipe.
    void askAndLeave(const QByteArray &target);
    /// Asks for the bytes to be written into that.
    void askInto(const QByteArray &target, int descriptor);
    /// Goes on with what `askAndHang` left.
    [[nodiscard]] QByteArray finish();

    std::chrono::milliseconds patience{10000};

private:
    /// The reading end of a pipe into which somebody writes now.
    [[nodiscard]] int ask(const QByteArray &target);
    [[nodiscard]] QByteArray readAll(int pipe) const;
    void set(zwlr_data_control_offer_v1 *offer);

    WaylandLink m_link;
    zwlr_data_control_manager_v1 *m_manager;
    zwlr_data_control_device_v1 *m_device;
    std::map<zwlr_data_control_offer_v1 *, QList<QByteArray>> m_offers;
    zwlr_data_control_offer_v1 *m_current = nullptr;
    int m_notices = 0;
    int m_timesEmpty = 0;
    int m_hanging = -1;
};

} // namespace tavrine
