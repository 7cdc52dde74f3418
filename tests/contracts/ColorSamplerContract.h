#pragma once

#include "ports/ColorSampler.h"

#include <vector>

#include <gtest/gtest.h>

namespace tavrine::test {

/// What every colour sampler keeps. `Screen` has: ColorSamplers &samplers(); colour(), which `take()` clicks, as a
/// person does; `cancel()`; `settle()` runs the main queue until what was done has arrived.
template <class Screen>
class ColorSamplerContract : public testing::Test {
protected:
    using Answers = std::vector<std::optional<QColor>>;

    std::shared_ptr<ColorSampler> show(Answers &to) {
        auto sampler = screen.samplers().makeSampler();
        sampler->showSampler([&to](std::optional<QColor> colour) { to.push_back(colour); });
        return sampler;
    }

    Screen screen;
    Answers answers;
};

TYPED_TEST_SUITE_P(ColorSamplerContract);

TYPED_TEST_P(ColorSamplerContract, aClickAnswersOnceWithThePixelsColour) {
    const auto sampler = this->show(this->answers);
    this->screen.take();
    EXPECT_TRUE(this->answers.empty()) << "the answer comes in a later turn";
    this->screen.settle();
    ASSERT_EQ(this->answers.size(), 1U);
    EXPECT_EQ(this->answers[0], this->screen.colour());
    EXPECT_FALSE(this->screen.isShown());
}

TYPED_TEST_P(ColorSamplerContract, cancellingAnswersOnceWithNone) {
    const auto sampler = this->show(this->answers);
    this->screen.cancel();
    this->screen.settle();
    ASSERT_EQ(this->answers.size(), 1U);
    EXPECT_EQ(this->answers[0], std::nullopt);
    EXPECT_FALSE(this->screen.isShown());
}

TYPED_TEST_P(ColorSamplerContract, droppingItBeforeItsAnswerLeavesTheScreenAsItIs) {
    this->show(this->answers).reset();
    this->screen.settle();
    EXPECT_TRUE(this->screen.isShown());
    EXPECT_TRUE(this->answers.empty());
    this->screen.take();
    this->screen.settle();
    ASSERT_EQ(this->answers.size(), 1U);
    EXPECT_EQ(this->answers[0], this->screen.colour());
}

TYPED_TEST_P(ColorSamplerContract, aSecondOneEndsTheFirstWithNone) {
    typename TestFixture::Answers first;
    const auto before = this->show(first);
    const auto sampler = this->show(this->answers);
    EXPECT_TRUE(first.empty()) << "the answer comes in a later turn";
    this->screen.settle();
    ASSERT_EQ(first.size(), 1U);
    EXPECT_EQ(first[0], std::nullopt);
    EXPECT_TRUE(this->screen.isShown());
    this->screen.take();
    this->screen.settle();
    ASSERT_EQ(this->answers.size(), 1U);
    EXPECT_EQ(this->answers[0], this->screen.colour());
    EXPECT_EQ(first.size(), 1U);
}

REGISTER_TYPED_TEST_SUITE_P(ColorSamplerContract, aClickAnswersOnceWithThePixelsColour, cancellingAnswersOnceWithNone,
                            droppingItBeforeItsAnswerLeavesTheScreenAsItIs, aSecondOneEndsTheFirstWithNone);

} // namespace tavrine::test
