#include "adapters/wayland/OutgoingPipes.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr qsizetype bytesPerTurn = qsizetype{1024} * 1024; // a program that pastes must not keep the others waiting

bool isPipe(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

} // namespace

OutgoingPipes::OutgoingPipes(const DescriptorSet &descriptors, std::chrono::milliseconds stall, int most)
    : m_descriptors(descriptors), m_stall(stall), m_most(static_cast<std::size_t>(most)) {}

OutgoingPipes::~OutgoingPipes() {
    for (const Outgoing &outgoing : m_outgoing)
        drop(outgoing);
}

void OutgoingPipes::write(int descriptor, const QByteArray &bytes) {
    Outgoing outgoing{descriptor, bytes, 0, std::chrono::steady_clock::now()};
    const bool isServed =
        isPipe(descriptor) && ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK) == 0;
    if (!isServed || writeSome(outgoing) || m_outgoing.size() >= m_most || !m_descriptors.add(descriptor, EPOLLOUT)) {
        ::close(descriptor);
        return;
    }
    m_outgoing.push_back(std::move(outgoing));
}

bool OutgoingPipes::writeSome(Outgoing &outgoing) {
    const qsizetype end = std::min(outgoing.offset + bytesPerTurn, outgoing.bytes.size());
    while (outgoing.offset < end) {
        const ssize_t written = ::write(outgoing.descriptor, outgoing.bytes.constData() + outgoing.offset,
                                        static_cast<size_t>(end - outgoing.offset));
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0 && errno == EAGAIN)
            return false;
        if (written <= 0)
            return true; // nobody reads any more
        outgoing.offset += written;
        outgoing.lastProgress = std::chrono::steady_clock::now();
    }
    return outgoing.offset == outgoing.bytes.size();
}

void OutgoingPipes::proceed(int descriptor) {
    const auto found = std::find_if(m_outgoing.begin(), m_outgoing.end(),
                                    [descriptor](const Outgoing &o) { return o.descriptor == descriptor; });
    if (found == m_outgoing.end() || !writeSome(*found))
        return;
    drop(*found);
    m_outgoing.erase(found);
}

void OutgoingPipes::drop(const Outgoing &outgoing) const {
    m_descriptors.remove(outgoing.descriptor);
    ::close(outgoing.descriptor);
}

std::optional<OutgoingPipes::TimePoint> OutgoingPipes::deadline() const {
    std::optional<TimePoint> first;
    for (const Outgoing &outgoing : m_outgoing) {
        const TimePoint due = outgoing.lastProgress + m_stall;
        first = std::min(first.value_or(due), due);
    }
    return first;
}

void OutgoingPipes::expire(TimePoint now) {
    std::erase_if(m_outgoing, [&](const Outgoing &outgoing) {
        const bool isOver = outgoing.lastProgress + m_stall <= now;
        if (isOver)
            drop(outgoing);
        return isOver;
    });
}

} // namespace tavrine
