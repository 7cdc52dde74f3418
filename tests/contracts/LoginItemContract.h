#pragma once

#include "ports/LoginItem.h"

#include <gtest/gtest.h>

namespace tavrine::test {

/// What every login item keeps. `Session` has: LoginItem &item(); void refuse() makes the desktop refuse from now on;
/// void switchOutside(bool) is the person in the desktop's own settings.
template <class Session>
class LoginItemContract : public testing::Test {
public:
    Session session;
};

TYPED_TEST_SUITE_P(LoginItemContract);

TYPED_TEST_P(LoginItemContract, isOffAtFirst) {
    EXPECT_FALSE(this->session.item().isEnabled());
}

TYPED_TEST_P(LoginItemContract, registeringSwitchesItOnAndUnregisteringOff) {
    EXPECT_TRUE(this->session.item().registerItem());
    EXPECT_TRUE(this->session.item().isEnabled());
    EXPECT_TRUE(this->session.item().unregisterItem());
    EXPECT_FALSE(this->session.item().isEnabled());
}

TYPED_TEST_P(LoginItemContract, eachActionMayBeRepeated) {
    EXPECT_TRUE(this->session.item().unregisterItem());
    EXPECT_TRUE(this->session.item().registerItem());
    EXPECT_TRUE(this->session.item().registerItem());
    EXPECT_TRUE(this->session.item().isEnabled());
    EXPECT_TRUE(this->session.item().unregisterItem());
    EXPECT_TRUE(this->session.item().unregisterItem());
}

TYPED_TEST_P(LoginItemContract, whatIsSwitchedElsewhereIsSeen) {
    ASSERT_TRUE(this->session.item().registerItem());
    this->session.switchOutside(false);
    EXPECT_FALSE(this->session.item().isEnabled());
    this->session.switchOutside(true);
    EXPECT_TRUE(this->session.item().isEnabled());
}

TYPED_TEST_P(LoginItemContract, registeringSwitchesOnWhatWasSwitchedOffElsewhere) {
    ASSERT_TRUE(this->session.item().registerItem());
    this->session.switchOutside(false);
    EXPECT_TRUE(this->session.item().registerItem());
    EXPECT_TRUE(this->session.item().isEnabled());
}

TYPED_TEST_P(LoginItemContract, aRefusedRegistrationAnswersFalseAndChangesNothing) {
    this->session.refuse();
    EXPECT_FALSE(this->session.item().registerItem());
    EXPECT_FALSE(this->session.item().isEnabled());
}

REGISTER_TYPED_TEST_SUITE_P(LoginItemContract, isOffAtFirst, registeringSwitchesItOnAndUnregisteringOff,
                            eachActionMayBeRepeated, whatIsSwitchedElsewhereIsSeen,
                            registeringSwitchesOnWhatWasSwitchedOffElsewhere,
                            aRefusedRegistrationAnswersFalseAndChangesNothing);

} // namespace tavrine::test
