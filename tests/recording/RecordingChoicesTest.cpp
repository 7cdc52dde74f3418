// What a recording's figures and its microphone follow from.

#include "recording/MicrophoneChoice.h"
#include "recording/RecordingGeometry.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

TEST(RecordingGeometry, theSourceRectangleIsTurnedRoundAndKeepsItsFractions) {
    EXPECT_EQ(recordingSourceRect({10, 20, 100.5, 33.3}, 900), QRectF(10, 900 - 20 - 33.3, 100.5, 33.3));
}

TEST(RecordingGeometry, aPointOnAScreenOfScaleOneIsTwoPixels) {
    EXPECT_EQ(recordingPixelSize({1, 1}, 1), QSize(2, 2));
    EXPECT_EQ(recordingPixelSize({0, 0}, 1), QSize(2, 2));
}

TEST(RecordingGeometry, pixelsAreRoundedAndThenMadeEven) {
    EXPECT_EQ(recordingPixelSize({100.5, 33.3}, 2), QSize(200, 66));
    EXPECT_EQ(recordingPixelSize({1281, 1280}, 1), QSize(1280, 1280));
    EXPECT_EQ(recordingPixelSize({11.5, 12.5}, 1), QSize(12, 12)); // 12 and 13: ties go away from zero
}

TEST(RecordingGeometry, theBitRateStaysWithinItsTwoBounds) {
    EXPECT_EQ(recordingBitRate({2, 2}), 4'000'000);
    EXPECT_EQ(recordingBitRate({666'666, 1}), 4'000'000); // 3,999,996
    EXPECT_EQ(recordingBitRate({1000, 668}), 4'008'000);
    EXPECT_EQ(recordingBitRate({2500, 2000}), 30'000'000);
    EXPECT_EQ(recordingBitRate({5120, 2880}), 30'000'000);
    EXPECT_EQ(recordingBitRate({65'534, 65'534}), 30'000'000); // more than fits into 32 bits
}

TEST(MicrophoneChoice, theDefaultComesFirstThenABuiltInOneThenTheFirst) {
    const MicrophoneDevice plain{.uniqueID = QStringLiteral("usb"), .localizedName = {}};
    const MicrophoneDevice builtIn{.uniqueID = QStringLiteral("built-in"), .localizedName = {}, .isBuiltIn = true};
    const MicrophoneDevice chosen{.uniqueID = QStringLiteral("headset"), .localizedName = {}, .isDefault = true};
    EXPECT_EQ(chosenMicrophone({plain, builtIn, chosen}), chosen);
    EXPECT_EQ(chosenMicrophone({plain, builtIn}), builtIn);
    EXPECT_EQ(chosenMicrophone({plain}), plain);
    EXPECT_EQ(chosenMicrophone({}), std::nullopt);
}

} // namespace
} // namespace tavrine
