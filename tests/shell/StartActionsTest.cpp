// What a further start of the program asks for, and how the program answers.

#include "ShellTest.h"
#include "ports/Instance.h"

namespace tavrine {
namespace {

class StartActionsTest : public ShellTest {
protected:
    void startAgain(const char *action) {
        quietly([&] {
            delegate->startedAgain(text(action));
            time.advance(1s);
        });
    }
    [[nodiscard]] bool hasSettings() { return window(LargeWindows::Kind::settings) != nullptr; }
};

TEST_F(StartActionsTest, aTriggerOpensItsToolAsItsHotKeyDoes) {
    launch();
    record();
    const std::string tools[] = {"clipboardHistory", "emojiPicker", "snippingTool", "screenRecorder"};
    const char *const words[] = {"clipboard", "emoji", "capture", "record"};
    desktop.access().setScreenCaptureGranted(true);
    for (std::size_t i = 0; i < 4; ++i) {
        startAgain(words[i]);
        EXPECT_THAT(takeCalls(), ElementsAre(tools[i] + " opened")) << words[i];
    }
    EXPECT_FALSE(hasSettings());
}

TEST_F(StartActionsTest, aTriggerOfAToolThatIsOffBringsTheSettingsForward) {
    defaults.set(text("featureEmojiPicker"), false);
    launch();
    record();
    startAgain("emoji");
    EXPECT_THAT(takeCalls(), Not(Contains("emojiPicker opened")));
    EXPECT_TRUE(hasSettings());
}

TEST_F(StartActionsTest, theColourPickerOpensItsLoupe) {
    launch();
    startAgain("color");
    EXPECT_TRUE(desktop.colorSamplers().isShown());
    EXPECT_FALSE(hasSettings());
}

TEST_F(StartActionsTest, theScanOfACodeStartsTheCaptureTool) {
    launch();
    startAgain("qr-scan");
    EXPECT_EQ(desktop.taskLauncher().tasks().size(), 1);
    EXPECT_FALSE(hasSettings());
}

TEST_F(StartActionsTest, theCardOfACaptureGetsTheKeyboard) {
    desktop.access().setScreenCaptureGranted(true);
    launch();
    startAgain("card"); // there is none
    EXPECT_EQ(desktop.panelWindows().living(), 0);
    startAgain("capture");
    ASSERT_EQ(desktop.taskLauncher().tasks().size(), 1);
    QImage picture(8, 6, QImage::Format_RGB32);
    picture.fill(Qt::red);
    ASSERT_TRUE(picture.save(desktop.taskLauncher().tasks().last()->arguments().last()));
    quietly([&] {
        desktop.taskLauncher().tasks().last()->finish(0);
        time.advance(1s);
    });
    ASSERT_EQ(desktop.panelWindows().living(), 1);
    EXPECT_EQ(desktop.panelWindows().keyWindow(), nullptr);
    startAgain("card");
    ASSERT_EQ(desktop.panelWindows().living(), 1);
    EXPECT_EQ(desktop.panelWindows().keyWindow(), desktop.panelWindows().windows().front());
    EXPECT_EQ(desktop.taskLauncher().tasks().size(), 1); // no other capture
    EXPECT_FALSE(hasSettings());
}

TEST_F(StartActionsTest, theSettingsOpen) {
    launch();
    startAgain("settings");
    EXPECT_TRUE(hasSettings());
}

TEST_F(StartActionsTest, twoTapsOfAltInTimeOpenTheToolThatIsSetToThem) {
    defaults.set(text("clipboardHotkeyMode"), text("doubleOption"));
    launch();
    record();
    delegate->startedAgain(text("alt-tap"));
    time.advance(450ms);
    delegate->startedAgain(text("alt-tap"));
    EXPECT_THAT(takeCalls(), ElementsAre("clipboardHistory opened"));
    EXPECT_FALSE(hasSettings());
}

TEST_F(StartActionsTest, everyWordOfAStartIsKnown) {
    launch();
    for (const QLatin1String word : startAction::all) {
        if (word != startAction::settings) {
            startAgain(word.data());
            EXPECT_FALSE(hasSettings()) << word.data();
        }
    }
}

} // namespace
} // namespace tavrine
