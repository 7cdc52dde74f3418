#include "shell/PanelFixture.h"

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::PanelFixture;

class PasteBackTest : public PanelFixture {
protected:
    static ClipboardItem item(const char *text) {
        ClipboardItem made;
        made.content = QString::fromUtf8(text);
        return made;
    }
    const QString notTyped = QStringLiteral("On the clipboard: paste it yourself|exclamationmark.triangle.fill");
    [[nodiscard]] bool hasPasted() const { return !poster.posted().empty(); }
    /// Pastes from the search panel and gives the moment of the keystroke, in whole milliseconds from the call.
    int pasteAndMeasure() {
        controller.pasteFromSearch(item("text"));
        for (int ms = 0; ms <= 2000; ++ms) {
            if (hasPasted())
                return ms;
            time.advance(1ms);
        }
        return -1;
    }
};

TEST_F(PasteBackTest, theContentIsCopiedAndPastedIntoTheProgramThePersonCameFrom) {
    controller.toggleSearchPanel();
    controller.pasteFromSearch(item("hello"));
    EXPECT_EQ(copied, QStringList(QStringLiteral("hello")));
    EXPECT_FALSE(search()->isVisible());
    ASSERT_EQ(activator.activated().size(), 1U);
    EXPECT_EQ(activator.activated()[0], editor);
    time.advance(80ms);
    const std::vector<FakeEventPoster::Posted> commandV{{9, true, 0x100000}, {9, false, 0x100000}};
    EXPECT_EQ(poster.posted(), commandV);
}

TEST_F(PasteBackTest, aPasteIsSentOnce) {
    controller.toggleSearchPanel();
    controller.pasteFromSearch(item("hello"));
    time.advance(10s);
    EXPECT_EQ(poster.posted().size(), 2U);
}

TEST_F(PasteBackTest, theClassicPanelGoesWithoutItsAnimation) {
    controller.toggleClassicPanel();
    controller.pasteFromClassic(item("hello"));
    EXPECT_FALSE(classic()->isVisible());
    EXPECT_EQ(monitors.globalCount(), 0);
    time.advance(80ms);
    EXPECT_TRUE(hasPasted());
}

TEST_F(PasteBackTest, theKeystrokeFollowsEightHundredthsAfterTheTargetIsInFront) {
    controller.toggleSearchPanel();
    EXPECT_EQ(pasteAndMeasure(), 80);
}

TEST_F(PasteBackTest, aTargetThatNeedsThreeTenthsGetsTheKeystrokeEightHundredthsLater) {
    controller.toggleSearchPanel();
    activator.setImmediate(false);
    time.asyncAfter(300ms, [this] { workspace.setFrontmost(editor); });
    EXPECT_EQ(pasteAndMeasure(), 380);
}

TEST_F(PasteBackTest, aTargetThatComesInTheLastRoundStillCounts) {
    controller.toggleSearchPanel();
    activator.setImmediate(false);
    time.asyncAfter(599ms, [this] { workspace.setFrontmost(editor); });
    EXPECT_EQ(pasteAndMeasure(), 680);
}

TEST_F(PasteBackTest, aTargetThatNeverComesGetsTheKeystrokeAllTheSame) {
    controller.toggleSearchPanel();
    activator.setImmediate(false);
    EXPECT_EQ(pasteAndMeasure(), 800);
}

TEST_F(PasteBackTest, aKeystrokeThatIsHeldBackComesOnceTheKeyboardIsFree) {
    controller.toggleSearchPanel();
    poster.holdBack(3);
    EXPECT_EQ(pasteAndMeasure(), 140);
    time.advance(10s);
    EXPECT_EQ(poster.posted().size(), 2U);
}

TEST_F(PasteBackTest, aKeyboardThatNeverGetsFreeEndsThePaste) {
    controller.toggleSearchPanel();
    poster.holdBack(1'000'000);
    controller.pasteFromSearch(item("text"));
    time.advance(2079ms);
    EXPECT_TRUE(pasteBack.isPasting());
    time.advance(1ms);
    EXPECT_FALSE(pasteBack.isPasting());
    EXPECT_FALSE(hasPasted());
}

TEST_F(PasteBackTest, aPasteThatIsNotTypedIsToldOnceWithItsReason) {
    controller.toggleSearchPanel();
    poster.setFailure(QStringLiteral("no hands"));
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(pasteAndMeasure(), -1);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "DEBUG: The paste was not typed: no hands\n");
    EXPECT_EQ(copied, QStringList(QStringLiteral("text")));
    EXPECT_EQ(toasts, QStringList(notTyped));
}

TEST_F(PasteBackTest, anEmojiThatIsNotTypedIsToldToo) {
    controller.showOrDismissEmojiPanel();
    poster.setFailure(QStringLiteral("no hands"));
    controller.insertEmoji(QStringLiteral("x"));
    time.advance(10s);
    EXPECT_EQ(pasteboard.string(), QStringLiteral("x"));
    EXPECT_EQ(toasts, QStringList(notTyped));
}

TEST_F(PasteBackTest, aKeyboardThatNeverGetsFreeIsToldWhenThePasteIsGivenUp) {
    controller.toggleSearchPanel();
    poster.holdBack(1'000'000);
    controller.pasteFromSearch(item("text"));
    ::testing::internal::CaptureStdout();
    time.advance(2079ms);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    ::testing::internal::CaptureStdout();
    time.advance(1ms);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "DEBUG: The paste was not typed: the keyboard was not free\n");
    EXPECT_EQ(toasts, QStringList(notTyped));
    poster.holdBack(0);
    time.advance(1min);
    EXPECT_FALSE(hasPasted()) << "whoever writes on by then would be surprised";
    EXPECT_EQ(toasts.size(), 1);
}

TEST_F(PasteBackTest, aPasteThatIsTypedSaysNothing) {
    controller.toggleSearchPanel();
    poster.holdBack(3);
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(pasteAndMeasure(), 140);
    time.advance(10s);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_TRUE(toasts.isEmpty());
}

TEST_F(PasteBackTest, theTargetIsKnownByItsProcessWhateverItsWindow) {
    controller.toggleSearchPanel();
    activator.setImmediate(false);
    RunningApplication otherWindow = editor;
    otherWindow.window = 77;
    time.asyncAfter(100ms, [this, otherWindow] { workspace.setFrontmost(otherWindow); });
    EXPECT_EQ(pasteAndMeasure(), 180);
}

TEST_F(PasteBackTest, aTargetThatHasQuitMakesThisProgramGiveWay) {
    controller.toggleSearchPanel();
    activator.quit(editor);
    EXPECT_EQ(pasteAndMeasure(), 200);
    EXPECT_EQ(activator.hides(), 1);
    EXPECT_TRUE(activator.activated().empty());
}

TEST_F(PasteBackTest, aPasteWithoutATargetMakesThisProgramGiveWay) {
    FakeWorkspace emptyDesktop;
    PasteBack onEmptyDesktop(emptyDesktop, time);
    onEmptyDesktop.noteFrontmost();
    EXPECT_FALSE(onEmptyDesktop.previouslyActiveApplication());
    onEmptyDesktop.paste(activator, poster);
    EXPECT_EQ(activator.hides(), 1);
    EXPECT_TRUE(activator.activated().empty());
    time.advance(199ms);
    EXPECT_FALSE(hasPasted());
    time.advance(1ms);
    EXPECT_TRUE(hasPasted());
}

TEST_F(PasteBackTest, aProgramThatWasLeftBeforeThereWasAPanelIsTheTarget) {
    workspace.setFrontmost(browser);
    workspace.setFrontmost(std::nullopt);
    EXPECT_EQ(pasteBack.previouslyActiveApplication(), browser);
    EXPECT_EQ(windows.made(), 0);
    controller.toggleSearchPanel();
    controller.pasteFromSearch(item("text"));
    EXPECT_EQ(activator.activated().at(0), browser);
}

TEST_F(PasteBackTest, theTargetIsTheProgramThatWasLeftLast) {
    workspace.setFrontmost(browser);
    controller.toggleSearchPanel();
    controller.pasteFromSearch(item("text"));
    EXPECT_EQ(activator.activated()[0], browser);
}

TEST_F(PasteBackTest, thisProgramIsNeverItsOwnTarget) {
    controller.toggleSearchPanel(); // ours in front, the editor left
    pasteBack.appDidDeactivate(ours);
    RunningApplication sameIdentifier = ours;
    sameIdentifier.processIdentifier = 0;
    pasteBack.appDidDeactivate(sameIdentifier);
    controller.pasteFromSearch(item("text"));
    EXPECT_EQ(activator.activated()[0], editor);
}

TEST_F(PasteBackTest, theProgramInFrontIsTheTargetEvenWhenNoNoticeComes) {
    FakeApplicationActivator &silent = activator; // activates itself without the desktop's telling
    silent.setOwn(editor);
    controller.toggleSearchPanel();
    controller.pasteFromSearch(item("text"));
    ASSERT_EQ(activator.activated().size(), 1U);
    EXPECT_EQ(activator.activated()[0], editor);
}

TEST_F(PasteBackTest, withoutAccessibilityTheSearchPanelGoesAndAToastTellsWhy) {
    isTrusted = false;
    controller.toggleSearchPanel();
    EXPECT_EQ(pasteAndMeasure(), -1);
    EXPECT_EQ(copied, QStringList(QStringLiteral("text")));
    EXPECT_EQ(trustQuestions, 1);
    EXPECT_FALSE(search()->isVisible());
    EXPECT_EQ(monitors.globalCount(), 0);
    EXPECT_EQ(toasts,
              QStringList(QStringLiteral("Enable Accessibility to paste automatically|exclamationmark.triangle.fill")));
    EXPECT_TRUE(activator.activated().empty());
}

TEST_F(PasteBackTest, withoutAccessibilityTheClassicPanelKeepsItsMonitors) {
    isTrusted = false;
    controller.toggleClassicPanel();
    controller.pasteFromClassic(item("text"));
    EXPECT_FALSE(classic()->isVisible());
    EXPECT_EQ(monitors.globalCount(), 2);
    EXPECT_EQ(toasts.size(), 1);
}

TEST_F(PasteBackTest, aSecondPasteDuringAWaitStartsAWaitOfItsOwn) {
    controller.toggleSearchPanel();
    activator.setImmediate(false);
    controller.pasteFromSearch(item("one"));
    time.advance(100ms);
    controller.pasteFromSearch(item("two"));
    time.advance(699ms);
    EXPECT_EQ(poster.posted().size(), 0U);
    time.advance(1ms);
    EXPECT_EQ(poster.posted().size(), 2U);
    time.advance(100ms);
    EXPECT_EQ(poster.posted().size(), 4U);
}

TEST_F(PasteBackTest, aPanelThatIsCalledDuringAPasteComesBehindTheKeystroke) {
    controller.toggleSearchPanel();
    controller.pasteFromSearch(item("text"));
    bool isVisible = true;
    poster.setOnPost([&] { isVisible = search()->isVisible(); });
    controller.toggleClipboardPanel();
    time.advance(79ms);
    EXPECT_FALSE(search()->isVisible());
    time.advance(1ms);
    EXPECT_EQ(poster.posted().size(), 2U);
    EXPECT_FALSE(isVisible) << "the panel would have got the keystroke";
    EXPECT_TRUE(search()->isVisible());
    time.advance(1s);
    EXPECT_EQ(poster.posted().size(), 2U);
}

TEST_F(PasteBackTest, anEmojiPanelThatIsCalledDuringAPasteComesBehindTheKeystrokeToo) {
    controller.toggleSearchPanel();
    controller.pasteFromSearch(item("text"));
    controller.toggleEmojiPanel();
    time.advance(79ms);
    EXPECT_EQ(emoji(), nullptr);
    time.advance(1ms);
    EXPECT_TRUE(emoji()->isVisible());
}

TEST_F(PasteBackTest, aPanelWaitsForTheLastOfTheKeystrokesAndNoLongerThanForTheBlindOne) {
    controller.toggleSearchPanel();
    activator.setImmediate(false);
    controller.pasteFromSearch(item("one"));
    time.advance(100ms);
    controller.pasteFromSearch(item("two"));
    controller.toggleClipboardPanel();
    time.advance(799ms);
    EXPECT_TRUE(pasteBack.isPasting());
    EXPECT_FALSE(search()->isVisible());
    time.advance(1ms);
    EXPECT_FALSE(pasteBack.isPasting());
    EXPECT_TRUE(search()->isVisible());
}

TEST_F(PasteBackTest, aPanelComesAtOnceWhereNoPasteIsUnderWay) {
    controller.toggleSearchPanel();
    controller.pasteFromSearch(item("text"));
    time.advance(80ms);
    controller.toggleClipboardPanel();
    time.runPending();
    EXPECT_TRUE(search()->isVisible());
}

TEST_F(PasteBackTest, whoIsGoneIsNotCalledAfterAPaste) {
    auto context = std::make_unique<QObject>();
    int calls = 0;
    pasteBack.paste(activator, poster);
    pasteBack.afterPastes(context.get(), [&] { ++calls; });
    context.reset();
    time.advance(1s);
    EXPECT_EQ(calls, 0);
    pasteBack.afterPastes(&pasteBack, [&] { ++calls; });
    EXPECT_EQ(calls, 1);
}

TEST_F(PasteBackTest, anEmojiReplacesThePasteboardAndStaysThere) {
    pasteboard.copyFromOutside(QStringLiteral("before"));
    controller.showOrDismissEmojiPanel();
    controller.insertEmoji(QStringLiteral("😀"));
    time.advance(5s);
    EXPECT_EQ(pasteboard.string(), QStringLiteral("😀"));
    EXPECT_EQ(pasteboard.clearCount(), 1);
    EXPECT_EQ(poster.posted().size(), 2U);
    EXPECT_TRUE(copied.isEmpty());
}

TEST_F(PasteBackTest, theEmojiPanelHasLeftTheScreenBeforeTheKeystroke) {
    controller.showOrDismissEmojiPanel();
    time.advance(1s);
    bool isVisible = true;
    poster.setOnPost([&] { isVisible = emoji()->isVisible(); });
    controller.insertEmoji(QStringLiteral("😀"));
    time.advance(80ms);
    EXPECT_TRUE(hasPasted());
    EXPECT_FALSE(isVisible);
}

TEST_F(PasteBackTest, withoutAccessibilityTheEmojiStaysOnThePasteboard) {
    isTrusted = false;
    controller.showOrDismissEmojiPanel();
    controller.insertEmoji(QStringLiteral("😀"));
    time.advance(5s);
    EXPECT_FALSE(hasPasted());
    EXPECT_FALSE(emoji()->isVisible());
    EXPECT_EQ(pasteboard.string(), QStringLiteral("😀"));
    EXPECT_EQ(toasts, QStringList(QStringLiteral(
                          "Enable Accessibility to insert automatically|exclamationmark.triangle.fill")));
}

} // namespace
} // namespace tavrine
