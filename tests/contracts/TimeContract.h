#pragma once

#include "base/Time.h"

#include <memory>

#include <gtest/gtest.h>

namespace tavrine {

/// One implementation of `Time`, and the way to let its time pass.
class TimeUnderTest {
public:
    virtual ~TimeUnderTest() = default;
    virtual Time &time() = 0;
    /// Lets at least `length` pass and runs what falls due.
    virtual void pass(Seconds length) = 0;
};

/// What every `Time` promises. The parameter makes a fresh one.
class TimeContract : public testing::TestWithParam<std::unique_ptr<TimeUnderTest> (*)()> {
protected:
    std::unique_ptr<TimeUnderTest> subject = GetParam()();
    Time &time = subject->time();
};

} // namespace tavrine
