// A person who types before the panel is on the screen, and one who captures while a menu is open: the built program
// with real programs behind it.

#include "desktop/Desktop.h"
#include "desktop/PasteTargets.h"
#include "desktop/Program.h"

#include <gtest/gtest.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

// How long what has to come is waited for on a desktop that may be busy; how fast it comes is measured elsewhere.
constexpr auto panelBound = 10s;
constexpr auto pasteBound = 10s;

class TypingAhead : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(program.startOnboarded());
        program.kill9();
        ASSERT_TRUE(program.addRows({QStringLiteral("first text"), QStringLiteral("second text")}));
        ASSERT_TRUE(program.startOnboarded());
    }
    /// The chord and the letters in one go; Return when the panel is there to take it.
    void chooseSecondAtOnce() {
        desktop.openClipboardPanel();
        desktop.type("sec");
        ASSERT_TRUE(waitUntil([this] { return desktop.hasKeyboard(clipboardPanel); }, panelBound));
        (void)waitUntil([] { return false; }, 150ms); // the list follows the letters
        desktop.pressReturn();
    }
    void expectTwentyOfTwenty(PasteTarget &target) {
        ASSERT_TRUE(target.isReady());
        QString expected;
        for (int time = 1; time <= 20; ++time) {
            ASSERT_NO_FATAL_FAILURE(chooseSecondAtOnce()) << time;
            // A row that is pasted rises: it is the letters that find it each time.
            expected += QStringLiteral("second text");
            const auto hasArrived = [&] { return target.text().remove(u'\n') == expected; };
            if (target.end().isEmpty()) {
                ASSERT_TRUE(waitUntil(hasArrived, pasteBound)) << time << ": " << qPrintable(target.text());
                continue;
            }
            // The program shows whole lines, and the keystroke takes its time.
            ASSERT_TRUE(waitUntil([this] { return !desktop.isShown(clipboardPanel); }, panelBound));
            ASSERT_TRUE(waitUntil([&] {
                (void)waitUntil([] { return false; }, 200ms);
                desktop.pressReturn();
                return waitUntil(hasArrived, 200ms);
            })) << time
                << ": " << qPrintable(target.text());
        }
    }

    Desktop desktop;
    Program program;
};

TEST_F(TypingAhead, findsItsFirstLetterInTheFieldAndNotInAnEntryBehind) {
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    expectTwentyOfTwenty(target);
}

TEST_F(TypingAhead, findsItsFirstLetterInTheFieldAndNotInATerminalBehind) {
    TerminalTarget target(desktop);
    expectTwentyOfTwenty(target);
}

} // namespace
