#pragma once

#include "adapters/pasteboard/SelectionLimits.h"

namespace tavrine {

/// Limits with which what must time out does so within a test's patience, and what is too large is small.
inline SelectionLimits shortLimits() {
    using namespace std::chrono_literals;
    SelectionLimits limits;
    limits.answer = 400ms;
    limits.stall = 300ms;
    limits.lastChance = 100ms;
    limits.total = 1500ms;
    limits.transferBytes = 1024 * 1024;
    limits.changeBytes = 1536 * 1024;
    limits.imagePixels = 10000;
    limits.handOver = 1000ms;
    limits.outgoingStall = 500ms;
    return limits;
}

} // namespace tavrine
