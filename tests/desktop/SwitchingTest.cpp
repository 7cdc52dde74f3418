// A person who goes from the panels to other programs and back by the keyboard, under a window manager's own keys.

#include "desktop/Capturing.h"
#include "desktop/Desktop.h"
#include "desktop/PasteTargets.h"
#include "desktop/Program.h"

#include <gtest/gtest.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

constexpr auto editorWindow = "Tavrine Snap Editor";
// How long what has to come is waited for on a desktop that may be busy; how fast it comes is measured elsewhere.
constexpr auto switchBound = 10s;
constexpr auto panelSettles =
    700ms; ///< until a panel that came up takes the loss of the keyboard for the person's wish

class Switching : public testing::Test {
protected:
    void pass(std::chrono::milliseconds length) {
        (void)waitUntil([] { return false; }, length);
    }
    [[nodiscard]] quint32 windowOf(const LineTarget &target) const { return desktop.windowOf(target.processId()); }
    [[nodiscard]] bool isInFront(const LineTarget &target) {
        const quint32 window = windowOf(target);
        return desktop.activeWindow() == window && desktop.topWindowAt(desktop.geometry(window).center()) == window;
    }
    /// Alt and Tab, held as a person holds them.
    void switchWindow() {
        desktop.keyboard.down(key::leftAlt);
        desktop.keyboard.tap(key::tab);
        pass(100ms);
        desktop.keyboard.up(key::leftAlt);
    }

    Desktop desktop;
    Program program;
};

/// The person is at work in another program, and the editor of a capture stands behind it.
class StartingAgain : public Switching {
protected:
    void SetUp() override {
        ASSERT_TRUE(program.startOnboarded());
        ASSERT_TRUE(capturing.take({60, 60, 400, 300}));
        ASSERT_TRUE(capturing.clickInCard(onThumbnail));
        ASSERT_TRUE(waitUntil([this] { return desktop.hasKeyboard(editorWindow); }));
        target = std::make_unique<LineTarget>(TAVRINE_QT_LINE_EDIT);
        ASSERT_TRUE(target->isReady());
        desktop.activate(windowOf(*target)); // where a manager does not bring a new window forward
        ASSERT_TRUE(waitUntil([this] { return isInFront(*target); }));
        workOn("on"); // a window manager knows by it when the person last did something there
    }
    void workOn(const char *letters) {
        const QString before = target->text();
        desktop.type(letters);
        ASSERT_TRUE(waitUntil([&] { return target->text() == before + QLatin1String(letters); }));
    }
    void startAgain(const QString &startupId = {}) {
        program.environment.insert(QStringLiteral("DESKTOP_STARTUP_ID"), startupId);
        const auto second = program.startAgain();
        ASSERT_TRUE(waitUntil([&] { return second->state() == QProcess::NotRunning; }));
        ASSERT_EQ(second->exitCode(), 0);
    }
    [[nodiscard]] bool isEditorInFront() const {
        const auto windows = desktop.windowsTitled(QLatin1String(editorWindow));
        return desktop.hasKeyboard(editorWindow) && desktop.activeWindow() == windows.front();
    }

    Capturing capturing{desktop, program};
    std::unique_ptr<LineTarget> target;
};

struct PanelKey {
    const char *title;
    bool isClassic;
};

class SwitchingFromAPanel : public Switching, public testing::WithParamInterface<PanelKey> {};

INSTANTIATE_TEST_SUITE_P(Each, SwitchingFromAPanel,
                         testing::Values(PanelKey{clipboardPanel, false}, PanelKey{classicPanel, true},
                                         PanelKey{emojiPanel, false}),
                         [](const auto &each) { return QByteArray(each.param.title).replace(' ', "").toStdString(); });

} // namespace

TEST_P(SwitchingFromAPanel, leavesItGoneAndTheOtherWindowInFrontWithTheKeyboard) {
    const auto &[title, isClassic] = GetParam();
    ASSERT_TRUE(program.startOnboarded(isClassic ? "<key>ClipboardSearchPrimaryMigrationV1</key><true/>"
                                                   "<key>ClipboardExperience</key><string>classic</string>"
                                                 : ""));
    LineTarget target(TAVRINE_QT_LINE_EDIT);
    ASSERT_TRUE(target.isReady());
    if (title == emojiPanel)
        desktop.openEmojiPanel();
    else
        desktop.openClipboardPanel();
    ASSERT_TRUE(waitUntil([&, name = title] { return desktop.hasKeyboard(name); }, switchBound));
    // The press that opened the panel holds the keyboard until its keys are up, and a busy machine takes its time.
    ASSERT_TRUE(waitUntil([this] { return desktop.keyboard.grabKeyboard(); }));
    desktop.keyboard.ungrabKeyboard();
    pass(panelSettles);
    switchWindow();
    EXPECT_TRUE(waitUntil([&, name = title] { return !desktop.isShown(name); }, switchBound));
    EXPECT_TRUE(waitUntil([&] { return isInFront(target); }, switchBound));
    desktop.type("on");
    EXPECT_TRUE(waitUntil([&] { return target.text() == QLatin1String("on"); }, switchBound));
}

TEST_F(StartingAgain, bringsTheEditorForwardFromBehindAnotherProgram) {
    startAgain();
    EXPECT_TRUE(waitUntil([this] { return isEditorInFront(); }, switchBound));
}

TEST_F(StartingAgain, bringsTheEditorForwardByTheRightOfALauncher) {
    startAgain(QStringLiteral("launcher_TIME%1").arg(desktop.time()));
    EXPECT_TRUE(waitUntil([this] { return isEditorInFront(); }, switchBound));
}

TEST_F(StartingAgain, fromTheBusAloneBringsTheEditorForward) {
    pass(50ms); // nothing that this program sees since the person's last key tells the time
    QProcess call;
    call.start(QStringLiteral("gdbus"),
               {QStringLiteral("call"), QStringLiteral("--session"), QStringLiteral("--dest=com.veltrane.Tavrine"),
                QStringLiteral("--object-path=/com/veltrane/Tavrine"),
                QStringLiteral("--method=org.freedesktop.Application.Activate"), QStringLiteral("{}")});
    ASSERT_TRUE(call.waitForFinished(10000));
    ASSERT_EQ(call.exitCode(), 0);
    EXPECT_TRUE(waitUntil([this] { return isEditorInFront(); }, switchBound));
}

using StartingAgainUnderAStrictManager = StartingAgain;

TEST_F(StartingAgainUnderAStrictManager, leavesThePersonAloneWhoHasGoneOnWorkingSince) {
    const quint32 startedAt = desktop.time();
    pass(100ms);
    ASSERT_NO_FATAL_FAILURE(workOn("ward"));
    startAgain(QStringLiteral("launcher_TIME%1").arg(startedAt));
    EXPECT_FALSE(waitUntil([this] { return isEditorInFront(); }, 700ms));
    EXPECT_TRUE(isInFront(*target));
}
