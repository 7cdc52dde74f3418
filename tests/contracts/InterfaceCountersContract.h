#pragma once

#include "ports/InterfaceCounters.h"

#include <gtest/gtest.h>

namespace tavrine::test {

/// What every list of interfaces keeps. `Machine` has a loopback and whatever a test adds:
///   InterfaceCounters &counters(); void addPair(const char *a, const char *b) adds two interfaces that are joined,
///   both down; void setUp(const char *name, bool isUp); void remove(const char *a) takes both ends away; void
///   send(const char *from, int bytes) sends to the other end.
template <class Machine>
class InterfaceCountersContract : public testing::Test {
public:
    std::vector<InterfaceAddress> interfaces() {
        auto list = machine.counters().interfaces();
        EXPECT_TRUE(list);
        return std::move(list).value_or(std::vector<InterfaceAddress>());
    }
    int count(quint32 mask, quint32 flags) {
        int number = 0;
        for (const InterfaceAddress &each : interfaces())
            number += each.isLinkLayer && (each.flags & mask) == flags ? 1 : 0;
        return number;
    }
    /// Of all interfaces but the loopback.
    InterfaceData total() {
        InterfaceData sum;
        for (const InterfaceAddress &each : interfaces())
            if (each.data && !(each.flags & interfaceFlag::loopback)) {
                sum.inputBytes += each.data->inputBytes;
                sum.outputBytes += each.data->outputBytes;
            }
        return sum;
    }
    Machine machine;
};

TYPED_TEST_SUITE_P(InterfaceCountersContract);

TYPED_TEST_P(InterfaceCountersContract, theLoopbackIsKnownAsSuch) {
    EXPECT_EQ(this->count(interfaceFlag::loopback, interfaceFlag::loopback), 1);
}

TYPED_TEST_P(InterfaceCountersContract, everyInterfaceHasOneEntryWithCounts) {
    const auto before = this->interfaces().size();
    this->machine.addPair("one", "two");
    const auto list = this->interfaces();
    EXPECT_EQ(list.size(), before + 2);
    for (const InterfaceAddress &each : list) {
        EXPECT_TRUE(each.isLinkLayer);
        EXPECT_TRUE(each.data);
    }
}

TYPED_TEST_P(InterfaceCountersContract, anInterfaceIsUpAfterItWasSwitchedOnAndUntilItIsSwitchedOff) {
    this->machine.addPair("one", "two");
    const int before = this->count(interfaceFlag::up, interfaceFlag::up);
    this->machine.setUp("one", true);
    EXPECT_EQ(this->count(interfaceFlag::up, interfaceFlag::up), before + 1);
    this->machine.setUp("one", false);
    EXPECT_EQ(this->count(interfaceFlag::up, interfaceFlag::up), before);
}

TYPED_TEST_P(InterfaceCountersContract, whatOneSideSendsTheOtherReceivesToTheByte) {
    this->machine.addPair("one", "two");
    this->machine.setUp("one", true);
    this->machine.setUp("two", true);
    const InterfaceData before = this->total();
    this->machine.send("one", 1000);
    this->machine.send("two", 60);
    const InterfaceData after = this->total();
    EXPECT_EQ(after.outputBytes - before.outputBytes, 1060U);
    EXPECT_EQ(after.inputBytes - before.inputBytes, 1060U);
}

TYPED_TEST_P(InterfaceCountersContract, anInterfaceThatGoesIsInTheListNoMore) {
    const auto before = this->interfaces().size();
    this->machine.addPair("one", "two");
    this->machine.remove("one");
    EXPECT_EQ(this->interfaces().size(), before);
}

REGISTER_TYPED_TEST_SUITE_P(InterfaceCountersContract, theLoopbackIsKnownAsSuch, everyInterfaceHasOneEntryWithCounts,
                            anInterfaceIsUpAfterItWasSwitchedOnAndUntilItIsSwitchedOff,
                            whatOneSideSendsTheOtherReceivesToTheByte, anInterfaceThatGoesIsInTheListNoMore);

} // namespace tavrine::test
