#pragma once

#include "reliability/FaultOrders.h"

namespace tavrine::testing {

/// While it lives, the `number`-th call of a kind that this process makes fails with `error`, whatever makes it; the
/// others do what they do. One at a time.
class FailingCall {
public:
    FailingCall(FaultKind kind, int number, int error);
    ~FailingCall();
    FailingCall(const FailingCall &) = delete;
    FailingCall &operator=(const FailingCall &) = delete;

    [[nodiscard]] bool hasFailed() const;
};

} // namespace tavrine::testing
