#pragma once

#include "base/Time.h"

#include <memory>
#include <ostream>

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

/// How a fresh one is made, and what it is called in the names of the tests.
struct TimeMaker {
    const char *name;
    std::unique_ptr<TimeUnderTest> (*make)();
    friend void PrintTo(const TimeMaker &maker, std::ostream *out) { *out << maker.name; }
};

/// What every `Time` promises.
class TimeContract : public testing::TestWithParam<TimeMaker> {
protected:
    std::unique_ptr<TimeUnderTest> subject = GetParam().make();
    Time &time = subject->time();
};

} // namespace tavrine
