#pragma once

#include "support/Patience.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

#include <chrono>

namespace tavrine::test {

/// Runs the event loop until `condition` holds; false when it does not within `longest`. For what other processes do.
template <class Condition>
[[nodiscard]] bool eventually(Condition condition, std::chrono::milliseconds longest = patience) {
    const QDeadlineTimer deadline(longest);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 10);
    }
    return true;
}

/// Runs the event loop for `length`, for proofs that nothing happens.
inline void letPass(std::chrono::milliseconds length) {
    static_cast<void>(eventually([] { return false; }, length));
}

} // namespace tavrine::test
