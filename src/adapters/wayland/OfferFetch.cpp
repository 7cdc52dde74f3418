#include "adapters/wayland/OfferFetch.h"

namespace tavrine {

OfferFetch::OfferFetch(WaylandLink &link, const DescriptorSet &descriptors, const SelectionLimits &limits,
                       SecretDigests &secrets, std::unique_ptr<DataOffer> offer, PasteboardFetch::Hooks hooks)
    : m_link(link), m_descriptors(descriptors), m_offer(std::move(offer)),
      m_fetch(*this, limits, secrets, std::move(hooks)) {}

std::unique_ptr<PasteboardTransfer> OfferFetch::ask(const QByteArray &target, qsizetype maxBytes) {
    auto transfer = std::make_unique<PipeTransfer>(m_link, m_descriptors, *m_offer, target, maxBytes,
                                                   [this] { m_fetch.proceed(); });
    m_transfer = transfer.get();
    return transfer;
}

std::optional<Received> OfferFetch::received(const QByteArray &target, PasteboardTransfer & /*ended*/) {
    std::optional<QByteArray> bytes = std::exchange(m_transfer, nullptr)->takeBytes();
    if (!bytes)
        return std::nullopt;
    return Received{target, std::move(*bytes)};
}

std::optional<selection::TextEncoding> OfferFetch::encodingOf(const Received &received) {
    return selection::textEncoding(received.target, {});
}

void OfferFetch::read(int descriptor) {
    if (m_transfer && m_transfer->descriptor() == descriptor)
        m_transfer->read();
}

void OfferFetch::expire(PasteboardFetch::TimePoint now) {
    m_fetch.expire(now);
    if (m_transfer && !m_fetch.isRunning())
        m_transfer->close(); // given up: its owner need not wait for a reader
}

} // namespace tavrine
