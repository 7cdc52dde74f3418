#pragma once

#include "adapters/pasteboard/PasteboardFetch.h"
#include "adapters/wayland/PipeTransfer.h"

namespace tavrine {

/// The fetch of what one offer has. Lives on the reader's thread; one for each change.
class OfferFetch final : private PasteboardOwner {
public:
    OfferFetch(WaylandLink &link, const DescriptorSet &descriptors, const SelectionLimits &limits,
               SecretDigests &secrets, std::unique_ptr<DataOffer> offer, PasteboardFetch::Hooks hooks);

    /// The targets are known: what is nothing or concealed is told of within.
    void start() { m_fetch.start(); }
    /// Takes what is in the pipe, if that is this fetch's.
    void read(int descriptor);
    void expire(PasteboardFetch::TimePoint now);

    [[nodiscard]] PasteboardFetch &contents() { return m_fetch; }

private:
    [[nodiscard]] std::unique_ptr<PasteboardTransfer> askForTargets() override { return nullptr; }
    [[nodiscard]] QList<QByteArray> targets(PasteboardTransfer * /*ended*/) override { return m_offer->targets(); }
    [[nodiscard]] std::unique_ptr<PasteboardTransfer> ask(const QByteArray &target, qsizetype maxBytes) override;
    [[nodiscard]] std::optional<Received> received(const QByteArray &target, PasteboardTransfer &ended) override;
    [[nodiscard]] std::optional<selection::TextEncoding> encodingOf(const Received &received) override;

    WaylandLink &m_link;
    const DescriptorSet &m_descriptors;
    const std::unique_ptr<DataOffer> m_offer;
    PipeTransfer *m_transfer = nullptr; ///< the one under way; the fetch owns it
    PasteboardFetch m_fetch;
};

} // namespace tavrine
