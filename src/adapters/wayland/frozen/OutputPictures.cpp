#include "adapters/wayland/frozen/OutputPictures.h"

#include "adapters/wayland/frozen/KWinScreenShots.h"

#include <algorithm>

#include <wayland/wlr-screencopy-unstable-v1.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t copyVersion = 3;
/// A compositor copies with its next frame.
constexpr auto longestCopy = 10s; // on a busy machine too

} // namespace

OutputPictures::OutputPictures(WaylandLink &link, wl_shm *shm, const std::vector<WaylandOutput> &outputs,
                               const std::vector<QRect> &places)
    : m_link(link), m_shm(shm), m_outputs(outputs), m_places(places) {
    m_manager = link.bind<zwlr_screencopy_manager_v1>(zwlr_screencopy_manager_v1_interface, copyVersion);
}

OutputPictures::~OutputPictures() {
    m_parts.clear();
    if (m_manager)
        zwlr_screencopy_manager_v1_destroy(m_manager);
}

void OutputPictures::begin() {
    if (!m_manager)
        return;
    for (const WaylandOutput &output : m_outputs)
        m_parts.push_back({std::make_unique<ScreenCopy>(m_manager, output.proxy, false), nullptr});
    m_link.flush();
}

/// False when it has failed.
bool OutputPictures::advance(Part &part) const {
    const ScreenCopy &copy = *part.copy;
    if (copy.state() == ScreenCopy::State::described) {
        if (!isKnownFormat(copy.format()))
            return false;
        part.buffer = ShmBuffer::make(m_shm, copy.format(), copy.size(), copy.lineBytes());
        if (!part.buffer)
            return false;
        part.copy->copy(part.buffer->buffer());
    }
    return copy.state() != ScreenCopy::State::failed;
}

bool OutputPictures::copyAll() {
    const auto until = Clock::now() + longestCopy;
    const auto isReady = [](const Part &part) { return part.copy->state() == ScreenCopy::State::ready; };
    while (!std::all_of(m_parts.begin(), m_parts.end(), isReady)) {
        for (Part &part : m_parts)
            if (!advance(part))
                return false;
        const auto left = std::chrono::ceil<WaylandLink::Wait>(until - Clock::now());
        if (left.count() <= 0 || !m_link.dispatch(left))
            return false;
    }
    return true;
}

CopiedPixels OutputPictures::copiedBy(const Part &part, const WaylandOutput &output) {
    return {.data = reinterpret_cast<const std::uint8_t *>(part.buffer->memory()->pixels().data),
            .format = part.copy->format(),
            .size = part.copy->size(),
            .lineBytes = part.copy->lineBytes(),
            .transform = output.transform,
            .isUpsideDown = part.copy->isUpsideDown()};
}

std::shared_ptr<FrameMemory> OutputPictures::finish(QSize plane) {
    if (!m_manager)
        return finishByKWin(plane);
    if (!copyAll())
        return nullptr;
    for (size_t i = 0; i < m_parts.size(); ++i)
        if (copiedBy(m_parts[i], m_outputs[i]).seenSize() != m_places[i].size())
            return nullptr; // it has changed meanwhile
    if (m_parts.size() == 1 && m_places[0] == QRect({}, plane) && copiedBy(m_parts[0], m_outputs[0]).isPlain())
        return m_parts[0].buffer->memory();
    auto picture = FrameMemory::make(plane);
    for (size_t i = 0; i < m_parts.size() && picture; ++i) {
        const CopiedPixels copied = copiedBy(m_parts[i], m_outputs[i]);
        copied.putInto(picture->pixels(), m_places[i].topLeft(), QRect({}, copied.seenSize()));
    }
    return picture;
}

std::shared_ptr<FrameMemory> OutputPictures::finishByKWin(QSize plane) const {
    const auto shots = KWinScreenShots::open();
    auto picture = shots ? FrameMemory::make(plane) : nullptr;
    for (size_t i = 0; i < m_outputs.size() && picture; ++i) {
        const auto shot = shots->take(m_outputs[i].name);
        if (!shot || shot->size != m_places[i].size())
            return nullptr;
        shot->putInto(picture->pixels(), m_places[i].topLeft(), QRect({}, shot->size));
    }
    return picture;
}

} // namespace tavrine
