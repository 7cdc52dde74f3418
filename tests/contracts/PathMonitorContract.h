#pragma once

#include "ports/PathMonitor.h"

#include <vector>

#include <gtest/gtest.h>

namespace tavrine::test {

/// What every watcher of the way out keeps. `Machine` has no way out at first:
///   PathMonitor &monitor(); void open(); void close(); bool comes(condition) lets time pass until the condition holds;
///   void rest() lets pass what is under way.
template <class Machine>
class PathMonitorContract : public testing::Test {
public:
    using Statuses = std::vector<PathStatus>;

    void start() {
        machine.monitor().start([this](PathStatus status) { told.push_back(status); });
    }
    bool isTold(PathStatus status) {
        return machine.comes([&] { return !told.empty() && told.back() == status; });
    }
    Machine machine;
    Statuses told;
};

TYPED_TEST_SUITE_P(PathMonitorContract);

TYPED_TEST_P(PathMonitorContract, thePresentStatusIsToldSoonAndNotWithinTheCall) {
    this->start();
    EXPECT_TRUE(this->told.empty());
    EXPECT_TRUE(this->isTold(PathStatus::unsatisfied));
}

TYPED_TEST_P(PathMonitorContract, aWayThatIsThereFromTheBeginningIsTold) {
    this->machine.open();
    this->start();
    EXPECT_TRUE(this->isTold(PathStatus::satisfied));
}

TYPED_TEST_P(PathMonitorContract, eachChangeIsToldAndNothingElse) {
    this->start();
    ASSERT_TRUE(this->isTold(PathStatus::unsatisfied));
    this->machine.open();
    EXPECT_TRUE(this->isTold(PathStatus::satisfied));
    this->machine.close();
    EXPECT_TRUE(this->isTold(PathStatus::unsatisfied));
    this->machine.rest();
    using enum PathStatus;
    EXPECT_EQ(this->told, (std::vector{unsatisfied, satisfied, unsatisfied}));
}

TYPED_TEST_P(PathMonitorContract, whatIsToldLastIsWhatHoldsHoweverFastItChanged) {
    this->start();
    ASSERT_TRUE(this->isTold(PathStatus::unsatisfied));
    for (int i = 0; i < 10; ++i) {
        this->machine.open();
        this->machine.close();
    }
    this->machine.open();
    EXPECT_TRUE(this->isTold(PathStatus::satisfied));
    this->machine.rest();
    EXPECT_EQ(this->told.back(), PathStatus::satisfied);
    EXPECT_LT(this->told.size(), 6U);
}

TYPED_TEST_P(PathMonitorContract, anotherHandlerTakesThePlaceOfTheFirstAndHearsThePresentStatus) {
    this->start();
    ASSERT_TRUE(this->isTold(PathStatus::unsatisfied));
    std::vector<PathStatus> second;
    this->machine.monitor().start([&second](PathStatus status) { second.push_back(status); });
    EXPECT_TRUE(this->machine.comes([&] { return second == std::vector{PathStatus::unsatisfied}; }));
    this->machine.open();
    EXPECT_TRUE(this->machine.comes([&] { return second.size() == 2; }));
    EXPECT_EQ(this->told.size(), 1U);
}

REGISTER_TYPED_TEST_SUITE_P(PathMonitorContract, thePresentStatusIsToldSoonAndNotWithinTheCall,
                            aWayThatIsThereFromTheBeginningIsTold, eachChangeIsToldAndNothingElse,
                            whatIsToldLastIsWhatHoldsHoweverFastItChanged,
                            anotherHandlerTakesThePlaceOfTheFirstAndHearsThePresentStatus);

} // namespace tavrine::test
