#include "capture/ColorPickerManager.h"

#include "adapters/fake/FakeColorSampler.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "capture/ClearedScreen.h"

#include <QTemporaryDir>

#include <utility>
#include <vector>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class ColorPicker : public testing::Test {
protected:
    void format(const char *label) {
        defaults.set(QLatin1String(preference::colorPickerFormat.key), QString::fromUtf8(label));
    }

    std::string pick(const QColor &colour) {
        picker->pickColor();
        samplers.take(colour);
        time.runPending();
        return pasteboard.string().value_or(QString()).toStdString();
    }

    /// What the program printed while `action` ran.
    template <class Action>
    std::string printedBy(Action action) {
        testing::internal::CaptureStdout();
        action();
        return testing::internal::GetCapturedStdout();
    }

    QTemporaryDir folder;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{folder.filePath(QStringLiteral("defaults.plist")), time, center};
    FakePasteboard pasteboard;
    FakeColorSamplers samplers{time};
    ClearedScreen screen{time};
    std::vector<std::pair<std::string, std::string>> toasts;
    std::unique_ptr<ColorPickerManager> picker =
        std::make_unique<ColorPickerManager>(ColorPickerManager::Ports{time, defaults, pasteboard, samplers, screen},
                                             [this](const QString &message, const QString &icon) {
                                                 toasts.emplace_back(message.toStdString(), icon.toStdString());
                                             });
};

const QColor half = QColor::fromRgbF(0.5F, 0.5F, 0.5F);

TEST_F(ColorPicker, aPickPutsTheColourOnThePasteboardAndSaysSo) {
    EXPECT_EQ(pick(QColor(18, 171, 255)), "#12ABFF");
    EXPECT_EQ(pasteboard.clearCount(), 1);
    EXPECT_THAT(toasts, ElementsAre(std::pair("Copied: #12ABFF", "paintbrush.fill")));
    EXPECT_FALSE(picker->isPicking());
    EXPECT_EQ(samplers.heldCount(), 0);
}

TEST_F(ColorPicker, aPickPrintsItsSteps) {
    EXPECT_EQ(printedBy([&] { pick(QColor(0, 0, 0)); }), "DEBUG: Starting color picker...\n"
                                                         "DEBUG: Color sampler callback received\n"
                                                         "DEBUG: Copied to clipboard: #000000\n");
}

TEST_F(ColorPicker, theColourIsCopiedInATurnAfterTheAnswer) {
    picker->pickColor();
    bool wasPicking = true;
    int changesAtAnswer = -1;
    samplers.take(Qt::red);
    time.async([&] { // runs after the answer and before the copy
        wasPicking = picker->isPicking();
        changesAtAnswer = pasteboard.changeCount();
    });
    time.runPending();
    EXPECT_FALSE(wasPicking);
    EXPECT_EQ(changesAtAnswer, 0);
    EXPECT_EQ(pasteboard.changeCount(), 1);
}

TEST_F(ColorPicker, aSecondTriggerDuringAPickChangesNothing) {
    picker->pickColor();
    EXPECT_EQ(printedBy([&] { picker->pickColor(); }), "DEBUG: Color picker already active, ignoring\n");
    EXPECT_EQ(samplers.shownCount(), 1);
    EXPECT_TRUE(picker->isPicking());
}

TEST_F(ColorPicker, escapeLeavesThePasteboardUntouched) {
    pasteboard.copyFromOutside(QStringLiteral("before"));
    picker->pickColor();
    EXPECT_EQ(printedBy([&] {
                  samplers.cancel();
                  time.runPending();
              }),
              "DEBUG: Color sampler callback received\nDEBUG: No color selected (user cancelled)\n");
    EXPECT_EQ(pasteboard.changeCount(), 1);
    EXPECT_EQ(pasteboard.string(), QStringLiteral("before"));
    EXPECT_THAT(toasts, IsEmpty());
    EXPECT_FALSE(picker->isPicking());
}

TEST_F(ColorPicker, aPickLeftUnansweredMayBeStartedAgainAfterThirtySeconds) {
    picker->pickColor();
    time.advance(29'999ms);
    EXPECT_TRUE(picker->isPicking());
    EXPECT_EQ(samplers.heldCount(), 1);
    EXPECT_EQ(printedBy([&] { time.advance(1ms); }), "DEBUG: Color picker timeout - resetting state\n");
    EXPECT_FALSE(picker->isPicking());
    EXPECT_EQ(samplers.heldCount(), 0);
    picker->pickColor();
    EXPECT_TRUE(picker->isPicking());
    EXPECT_EQ(samplers.shownCount(), 2);
}

TEST_F(ColorPicker, theTimeoutLeavesTheMagnifierOnTheScreen) {
    picker->pickColor();
    time.advance(30s);
    EXPECT_TRUE(samplers.isShown());
}

TEST_F(ColorPicker, anAnswerAfterTheTimeoutIsCopiedAllTheSame) {
    picker->pickColor();
    time.advance(45s);
    samplers.take(Qt::white);
    time.runPending();
    EXPECT_EQ(pasteboard.string(), QStringLiteral("#FFFFFF"));
    EXPECT_EQ(toasts.size(), 1U);
}

TEST_F(ColorPicker, theAnswerOfAReplacedMagnifierLeavesTheNextPickUnderWay) {
    picker->pickColor();
    time.advance(30s);
    picker->pickColor(); // ends the first magnifier, which was still there
    time.runPending();
    EXPECT_TRUE(picker->isPicking());
    EXPECT_EQ(samplers.heldCount(), 1);
    EXPECT_EQ(printedBy([&] { picker->pickColor(); }), "DEBUG: Color picker already active, ignoring\n");
    EXPECT_EQ(printedBy([&] { time.advance(29'999ms); }), "");
    EXPECT_EQ(printedBy([&] { time.advance(1ms); }), "DEBUG: Color picker timeout - resetting state\n");
}

TEST_F(ColorPicker, aLateColourIsCopiedWhileTheNextPickGoesOn) {
    picker->pickColor();
    time.advance(30s);
    samplers.take(Qt::white);
    picker->pickColor(); // before the answer arrives
    time.runPending();
    EXPECT_EQ(pasteboard.string(), QStringLiteral("#FFFFFF"));
    EXPECT_TRUE(picker->isPicking());
    EXPECT_TRUE(samplers.isShown());
}

TEST_F(ColorPicker, anAnswerEndsTheTimeout) {
    pick(Qt::white);
    time.advance(20s);
    picker->pickColor();
    EXPECT_EQ(printedBy([&] { time.advance(29'999ms); }), "");
    EXPECT_TRUE(picker->isPicking()) << "the first pick's timeout must not end the second";
    time.advance(1ms);
    EXPECT_FALSE(picker->isPicking());
}

TEST_F(ColorPicker, anAnswerAfterTheManagerIsGoneIsDropped) {
    picker->pickColor();
    picker.reset();
    samplers.take(Qt::white);
    time.advance(60s);
    EXPECT_EQ(pasteboard.changeCount(), 0);
}

TEST_F(ColorPicker, aScreenThatCannotBeReadIsACancelledPick) {
    samplers.setUnreadable(true);
    picker->pickColor();
    time.runPending();
    EXPECT_FALSE(picker->isPicking());
    EXPECT_EQ(pasteboard.changeCount(), 0);
}

TEST_F(ColorPicker, aColourThatIsNoneCannotBeConverted) {
    picker->pickColor();
    samplers.take(QColor());
    EXPECT_THAT(printedBy([&] { time.runPending(); }), testing::EndsWith("DEBUG: Failed to convert color to sRGB\n"));
    EXPECT_EQ(pasteboard.changeCount(), 0);
    EXPECT_THAT(toasts, IsEmpty());
}

TEST_F(ColorPicker, aHalfRoundsUpInHex) {
    EXPECT_EQ(pick(half), "#808080");
}

TEST_F(ColorPicker, aHalfIsCutOffInRgb) {
    format("RGB (255, 255, 255)");
    EXPECT_EQ(pick(half), "rgb(127, 127, 127)");
}

TEST_F(ColorPicker, everyWholeStepOfAScreenReadsTheSameInHexAndRgb) {
    for (int step = 0; step <= 255; ++step) {
        const QColor colour(step, 255 - step, step);
        EXPECT_EQ(colorText(colour, ColorFormat::rgb), QStringLiteral("rgb(%1, %2, %1)").arg(step).arg(255 - step));
        EXPECT_EQ(colorText(colour, ColorFormat::hex), QString::asprintf("#%02X%02X%02X", step, 255 - step, step));
    }
}

TEST_F(ColorPicker, theSwiftUIFormPrintsTwoDecimals) {
    format("SwiftUI (Color.red)");
    EXPECT_EQ(pick(Qt::red), "Color(red: 1.00, green: 0.00, blue: 0.00)");
    EXPECT_EQ(pick(QColor(51, 102, 200)), "Color(red: 0.20, green: 0.40, blue: 0.78)");
}

TEST_F(ColorPicker, theNSColorFormPrintsTwoDecimalsAndItsAlpha) {
    format("NSColor (sRGB)");
    EXPECT_EQ(pick(QColor(255, 128, 0)), "NSColor(srgbRed: 1.00, green: 0.50, blue: 0.00, alpha: 1.0)");
}

TEST_F(ColorPicker, everyFormatIsStoredAsItsLabel) {
    EXPECT_EQ(choiceOf(colorFormatLabels, QStringLiteral("Hex (#RRGGBB)")), ColorFormat::hex);
    EXPECT_EQ(choiceOf(colorFormatLabels, QStringLiteral("RGB (255, 255, 255)")), ColorFormat::rgb);
    EXPECT_EQ(choiceOf(colorFormatLabels, QStringLiteral("SwiftUI (Color.red)")), ColorFormat::swiftUI);
    EXPECT_EQ(choiceOf(colorFormatLabels, QStringLiteral("NSColor (sRGB)")), ColorFormat::nsColor);
}

TEST_F(ColorPicker, anUnknownFormatIsHex) {
    format("rgb");
    EXPECT_EQ(pick(Qt::blue), "#0000FF");
    format("");
    EXPECT_EQ(pick(Qt::green), "#00FF00");
}

TEST_F(ColorPicker, aFormatOfAnotherTypeIsHex) {
    defaults.set(QLatin1String(preference::colorPickerFormat.key), 1);
    EXPECT_EQ(pick(Qt::blue), "#0000FF");
}

} // namespace
} // namespace tavrine
