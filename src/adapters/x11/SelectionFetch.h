#pragma once

#include "adapters/pasteboard/PasteboardFetch.h"
#include "adapters/x11/SelectionTransfer.h"

#include <QHash>

namespace tavrine {

/// The fetch of what the owner of an X selection has. Lives on the selection thread; one for each change.
class SelectionFetch final : private PasteboardOwner {
public:
    /// `time` is the server's time of the notice that told of the change.
    SelectionFetch(XConnection &connection, const SelectionLimits &limits, SecretDigests &secrets, xcb_timestamp_t time,
                   PasteboardFetch::Hooks hooks);
    ~SelectionFetch() override;
    SelectionFetch(const SelectionFetch &) = delete;
    SelectionFetch &operator=(const SelectionFetch &) = delete;

    void onSelectionNotify(const xcb_selection_notify_event_t &event);
    void onPropertyNotify(const xcb_property_notify_event_t &event);

    [[nodiscard]] PasteboardFetch &contents() { return m_fetch; }

private:
    [[nodiscard]] std::unique_ptr<PasteboardTransfer> askForTargets() override;
    [[nodiscard]] QList<QByteArray> targets(PasteboardTransfer *ended) override;
    [[nodiscard]] std::unique_ptr<PasteboardTransfer> ask(const QByteArray &target, qsizetype maxBytes) override;
    [[nodiscard]] std::optional<Received> received(const QByteArray &target, PasteboardTransfer &ended) override;
    [[nodiscard]] std::optional<selection::TextEncoding> encodingOf(const Received &received) override;
    [[nodiscard]] std::unique_ptr<PasteboardTransfer> track(std::unique_ptr<SelectionTransfer> transfer);
    /// What the transfer that is under way brought.
    [[nodiscard]] PropertyValue endTransfer();

    XConnection &m_connection;
    const SelectionLimits &m_limits;
    xcb_timestamp_t m_time;
    xcb_window_t m_window;
    bool m_hasOpenTransfer = false; ///< some owner may still write to our window
    QHash<QByteArray, xcb_atom_t> m_atoms;
    SelectionTransfer *m_transfer = nullptr; ///< the one under way; the fetch owns it
    PasteboardFetch m_fetch;
};

} // namespace tavrine
