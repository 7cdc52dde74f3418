#include "adapters/stream/FrameBuffers.h"

#include <algorithm>

namespace tavrine {

QRegion ofFewRects(const QRegion &region) {
    constexpr int manyRects = 64;
    return region.rectCount() > manyRects ? QRegion(region.boundingRect()) : region;
}

struct FrameBuffers::Shared {
    std::shared_ptr<Waker> waker;
    std::atomic<bool> isAwaited = false;
};

FrameBuffers::FrameBuffers(QSize size, int depth, std::shared_ptr<Waker> waker)
    : m_size(size), m_slots(static_cast<size_t>(std::max(depth, 1))), m_shared(std::make_shared<Shared>()) {
    m_shared->waker = std::move(waker);
    for (size_t i = 0; i < m_slots.size(); ++i) {
        m_slots[i].number = static_cast<int>(i);
        m_slots[i].pending = QRegion(QRect({}, size));
    }
}

FrameBuffers::Buffer *FrameBuffers::free() {
    const auto find = [this] {
        // The lowest: with a quick reader few are ever made, and each is little behind.
        return std::find_if(m_slots.begin(), m_slots.end(), [](const Slot &slot) { return !*slot.isOut; });
    };
    m_shared->isAwaited = false;
    auto slot = find();
    if (slot == m_slots.end()) {
        m_shared->isAwaited = true;
        slot = find(); // one may have come back before it was said that it is waited for
    }
    if (slot == m_slots.end())
        return nullptr;
    if (!slot->memory)
        slot->memory = FrameMemory::make(m_size);
    return &*slot;
}

void FrameBuffers::change(const QRegion &changed) {
    for (Slot &slot : m_slots)
        slot.pending = ofFewRects(slot.pending + changed);
}

std::shared_ptr<const ScreenFrame> FrameBuffers::give(const Buffer &buffer, std::vector<QRect> changed) {
    const Slot &slot = m_slots[static_cast<size_t>(buffer.number)];
    *slot.isOut = true;
    auto frame = std::make_unique<ScreenFrame>(ScreenFrame{.memory = slot.memory->descriptor(),
                                                           .buffer = slot.number,
                                                           .size = m_size,
                                                           .bytesPerLine = m_size.width() * int{sizeof(quint32)},
                                                           .number = ++m_frames,
                                                           .changed = std::move(changed)});
    return {frame.release(), [memory = slot.memory, isOut = slot.isOut, shared = m_shared](const ScreenFrame *each) {
                delete each;
                *isOut = false;
                if (shared->isAwaited)
                    shared->waker->wake();
            }};
}

} // namespace tavrine
