#include "adapters/wayland/PipeTransfer.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr qsizetype bytesPerRead = qsizetype{1024} * 1024; // a flood must not keep everything else waiting
/// The kernel closes what a killed program had open one by one, and the compositor's end may come after the pipe's.
constexpr int confirmations = 2;

} // namespace

PipeTransfer::PipeTransfer(WaylandLink &link, const DescriptorSet &descriptors, DataOffer &offer,
                           const QByteArray &target, qsizetype maxBytes, std::function<void()> onEnded)
    : m_link(link), m_descriptors(descriptors), m_maxBytes(maxBytes), m_onEnded(std::move(onEnded)),
      m_lastProgress(std::chrono::steady_clock::now()), m_bytes(QByteArray()) {
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) == 0) {
        m_pipe = ends[0];
        ::fcntl(m_pipe, F_SETFL, O_NONBLOCK); // this end's alone: owners rarely expect a pipe that does not wait
        offer.receive(target, ends[1]);
        ::close(ends[1]);
        if (m_descriptors.add(m_pipe, EPOLLIN))
            return;
    }
    m_bytes.reset();
    confirm(1); // the end comes in a turn of its own, as ever
}

PipeTransfer::~PipeTransfer() {
    close();
}

void PipeTransfer::close() {
    if (m_pipe < 0)
        return;
    m_descriptors.remove(m_pipe);
    ::close(std::exchange(m_pipe, -1));
}

void PipeTransfer::read() {
    if (m_pipe < 0)
        return;
    for (qsizetype taken = 0; taken < bytesPerRead;) {
        const qsizetype before = m_bytes->size();
        // One byte more than allowed tells what is too large from what fits.
        m_bytes->resize(before + std::min(pipeBytes, m_maxBytes - before + 1));
        const ssize_t got = ::read(m_pipe, m_bytes->data() + before, static_cast<size_t>(m_bytes->size() - before));
        m_bytes->resize(before + std::max<ssize_t>(got, 0));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0 && errno == EAGAIN)
            return;
        m_state = State::coming;
        m_lastProgress = std::chrono::steady_clock::now();
        if (m_bytes->size() > m_maxBytes || got < 0)
            m_bytes.reset();
        if (got <= 0 || !m_bytes) {
            close();
            confirm(confirmations);
            return;
        }
        taken += got;
    }
}

void PipeTransfer::confirm(int times) {
    m_state = State::confirmed;
    m_barrier = std::make_unique<WaylandBarrier>(m_link, [this, times] {
        if (times > 1)
            confirm(times - 1);
        else
            end();
    });
}

void PipeTransfer::ownerEnded() {
    if (!isRunning())
        return;
    read(); // what it wrote last may have come with the news
    if (m_state != State::confirmed || (m_bytes && m_bytes->size() > pipeBytes))
        m_bytes.reset();
    close();
    m_barrier.reset();
    m_state = State::ended;
}

void PipeTransfer::end() {
    m_barrier.reset();
    m_state = State::ended;
    if (m_bytes)
        m_bytes->squeeze();
    const auto onEnded = m_onEnded; // it may end this object
    onEnded();
}

} // namespace tavrine
