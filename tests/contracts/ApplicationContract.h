#pragma once

#include "ports/Application.h"

#include <gtest/gtest.h>

namespace tavrine::test {

/// What every application port keeps. `Process` has: Application &application(); bool endsAfter(action) runs the main
/// loop around `action` and tells whether it came to its end.
template <class Process>
class ApplicationContract : public testing::Test {
public:
    Process process;
};

TYPED_TEST_SUITE_P(ApplicationContract);

TYPED_TEST_P(ApplicationContract, isAnAccessoryAtFirst) {
    EXPECT_EQ(this->process.application().activationPolicy(), ActivationPolicy::accessory);
}

TYPED_TEST_P(ApplicationContract, keepsThePolicyThatWasSetLast) {
    this->process.application().setActivationPolicy(ActivationPolicy::regular);
    EXPECT_EQ(this->process.application().activationPolicy(), ActivationPolicy::regular);
    this->process.application().setActivationPolicy(ActivationPolicy::accessory);
    EXPECT_EQ(this->process.application().activationPolicy(), ActivationPolicy::accessory);
}

TYPED_TEST_P(ApplicationContract, terminatingEndsTheMainLoop) {
    EXPECT_TRUE(this->process.endsAfter([this] { this->process.application().terminate(); }));
}

TYPED_TEST_P(ApplicationContract, nothingElseEndsTheMainLoop) {
    EXPECT_FALSE(this->process.endsAfter(
        [this] { this->process.application().setActivationPolicy(ActivationPolicy::regular); }));
}

REGISTER_TYPED_TEST_SUITE_P(ApplicationContract, isAnAccessoryAtFirst, keepsThePolicyThatWasSetLast,
                            terminatingEndsTheMainLoop, nothingElseEndsTheMainLoop);

} // namespace tavrine::test
