#pragma once

#include <QByteArray>
#include <QList>

#include <map>
#include <memory>

#include <wayland-client.h>

namespace tavrine {

class LayerShell;

/// What is dragged over this program's windows, heard beside the toolkit, whose own way to it waits for programs that
/// hang. Lives on the main thread.
class DragOffers {
public:
    /// One drag's content, as the program that drags offers it. Its pipes are asked for on any thread.
    class Offer {
    public:
        explicit Offer(wl_data_offer *offer) : m_offer(offer) {}
        ~Offer();
        Offer(const Offer &) = delete;
        Offer &operator=(const Offer &) = delete;

        QList<QByteArray> types;
        /// The descriptor to read that form from, which does not wait; -1 for none. The caller closes it.
        [[nodiscard]] int open(const QByteArray &type) const;

    private:
        wl_data_offer *const m_offer;
    };

    explicit DragOffers(LayerShell &shell);
    ~DragOffers();
    DragOffers(const DragOffers &) = delete;
    DragOffers &operator=(const DragOffers &) = delete;

    /// Of the drag that is over a window now, or was dropped last. It stays until the next one comes, since a program
    /// takes back what is given up before it is done. Null for none.
    [[nodiscard]] std::shared_ptr<Offer> current() const { return m_current; }

private:
    static const wl_data_device_listener &listener();
    void offered(wl_data_offer *offer);
    [[nodiscard]] std::shared_ptr<Offer> take(wl_data_offer *offer);

    wl_data_device *m_device = nullptr;
    std::map<wl_data_offer *, std::shared_ptr<Offer>> m_announced;
    std::shared_ptr<Offer> m_current;
    bool m_isDropped = false;
};

} // namespace tavrine
