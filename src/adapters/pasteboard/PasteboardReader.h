#pragma once

#include "adapters/pasteboard/PasteboardContents.h"

#include <chrono>
#include <functional>

namespace tavrine {

/// Brings what other programs copy and offers what is ours, on a connection and a thread of its own, so that no other
/// program can make the main thread wait. Each kind of desktop has one.
class PasteboardReader {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    /// Tells of changes that other programs made; called on the reader's thread.
    using Publish = std::function<void(const Publication &)>;

    virtual ~PasteboardReader() = default;

    /// Makes the clipboard ours as of the moment `writtenAt`: a change by another program after it stands, and is told
    /// of. `serial` grows with each call. Returns at once; called on the main thread.
    virtual void claim(OwnContents contents, int serial, TimePoint writtenAt) = 0;
};

} // namespace tavrine
