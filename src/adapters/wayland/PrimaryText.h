#pragma once

#include <QByteArray>
#include <QObject>

struct wl_seat;
struct zwlr_data_control_device_v1;
struct zwlr_data_control_manager_v1;

namespace tavrine {

class WaylandClient;

/// The primary selection, as far as this program ever has it: one text. Main thread, on the connection of its owner.
class PrimaryText final : public QObject {
public:
    explicit PrimaryText(WaylandClient &client);
    ~PrimaryText() override;

    /// Takes the selection, and answers for it until somebody else does. False where the compositor gives no background
    /// program the primary selection.
    [[nodiscard]] bool own(const QByteArray &text);

private:
    void answer(const QByteArray &text, int file);

    WaylandClient &m_client;
    zwlr_data_control_manager_v1 *m_manager = nullptr;
    wl_seat *m_seat = nullptr;
    zwlr_data_control_device_v1 *m_device = nullptr;
};

} // namespace tavrine
