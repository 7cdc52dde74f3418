#include "adapters/wayland/OfferedDrop.h"

#include "base/Descriptor.h"

#include <algorithm>
#include <cerrno>

#include <poll.h>
#include <unistd.h>

namespace tavrine {

OfferedDrop::OfferedDrop(std::shared_ptr<const DragOffers::Offer> offer, const SelectionLimits &limits,
                         std::function<void()> flush, int stop)
    : m_offer(std::move(offer)), m_limits(limits), m_flush(std::move(flush)),
      m_end(std::chrono::steady_clock::now() + limits.total), m_stop(stop) {}

DroppedContent OfferedDrop::read() {
    return readDroppedForms(m_offer->types, {.imagePixels = m_limits.imagePixels},
                            [this](const QByteArray &type) { return fetch(type); });
}

std::optional<DroppedForm> OfferedDrop::fetch(const QByteArray &type) {
    constexpr qsizetype pieceBytes = qsizetype{64} * 1024; // what a pipe holds
    const Descriptor pipe(m_isLost ? -1 : m_offer->open(type));
    if (pipe.number() < 0)
        return std::nullopt;
    m_flush();
    const qsizetype mostBytes = std::min(m_limits.transferBytes, m_limits.changeBytes - m_bytes);
    QByteArray bytes;
    auto patience = m_limits.answer;
    for (auto progress = std::chrono::steady_clock::now(); !m_isLost; patience = m_limits.stall) {
        const auto until = std::min(m_end, progress + patience);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        pollfd descriptors[] = {{pipe.number(), POLLIN, 0}, {m_stop, POLLIN, 0}};
        const int found = left.count() > 0 ? ::poll(descriptors, std::size(descriptors), int(left.count())) : 0;
        if (found < 0 && errno == EINTR)
            continue;
        if (found <= 0 || descriptors[1].revents != 0) {
            m_isLost = true;
            break;
        }
        const qsizetype before = bytes.size();
        bytes.resize(before + pieceBytes);
        const auto count = ::read(pipe.number(), bytes.data() + before, size_t(pieceBytes));
        bytes.resize(before + std::max<qsizetype>(count, 0));
        if (count == 0) {
            m_bytes += bytes.size();
            return DroppedForm{type, std::move(bytes)};
        }
        if ((count < 0 && errno != EAGAIN && errno != EINTR) || bytes.size() > mostBytes)
            return std::nullopt;
        progress = std::chrono::steady_clock::now();
    }
    return std::nullopt;
}

} // namespace tavrine
