// A person who goes from the panels to other programs and back by the keyboard, under a window manager's own keys.

#include "desktop/Desktop.h"
#include "desktop/PasteTargets.h"
#include "desktop/Program.h"

#include <gtest/gtest.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

constexpr auto switchBound = 3000ms;
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
    pass(panelSettles);
    switchWindow();
    EXPECT_TRUE(waitUntil([&, name = title] { return !desktop.isShown(name); }, switchBound));
    EXPECT_TRUE(waitUntil([&] { return isInFront(target); }, switchBound));
    desktop.type("on");
    EXPECT_TRUE(waitUntil([&] { return target.text() == QLatin1String("on"); }, switchBound));
}
