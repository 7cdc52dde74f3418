#pragma once

#include "support/Patience.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <chrono>

namespace tavrine::testing {

/// Waits for a real part of the desktop: until `condition` holds, for `limit` at most, with the event loop running.
/// True when it came to hold.
template <class Condition>
[[nodiscard]] bool waitUntil(Condition condition, std::chrono::milliseconds limit = test::patience) {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > limit.count())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(5);
    }
    return true;
}

} // namespace tavrine::testing
