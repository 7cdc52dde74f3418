// The menu of the built program in a tray of either kind, by hand.

#include "desktop/Desktop.h"
#include "desktop/Program.h"
#include "support/StatusNotifierTray.h"
#include "support/Wait.h"

#include <utility>

#include <gtest/gtest.h>

using namespace tavrine::testing;

namespace {

constexpr auto menuTitle = "Tavrine Menu";

class Menu : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(program.startOnboarded());
        // Its bar is as wide as what it holds, and the icon is there for clicks once the program draws it.
        QRect before;
        ASSERT_TRUE(waitUntil([&] {
            const QRect bar = frameOfBar();
            const bool hasSettled = bar.width() >= 18 && bar.width() < 100 && bar == std::exchange(before, bar);
            icon = bar.center();
            return hasSettled && desktop.keyboard.windowAt(icon.x(), icon.y()) != bars().front() &&
                   !waitUntil([&] { return frameOfBar() != bar; }, std::chrono::milliseconds(300));
        }));
    }
    std::vector<quint32> bars() const { return desktop.windowsTitled(QStringLiteral("panel")); }
    QRect frameOfBar() const { return bars().empty() ? QRect() : desktop.geometry(bars().front()); }
    QRect menu() const {
        const auto windows = desktop.windowsTitled(QLatin1String(menuTitle));
        return windows.empty() ? QRect() : desktop.geometry(windows.front());
    }
    bool comes() {
        return waitUntil([this] { return desktop.isShown(menuTitle); });
    }
    bool goes() {
        return waitUntil([this] { return !desktop.isShown(menuTitle); });
    }
    void move(QPoint place) { desktop.keyboard.movePointer(place.x(), place.y()); }

    Desktop desktop;
    Client tray{QStringLiteral("trayer"),
                {QStringLiteral("--edge"), QStringLiteral("top"), QStringLiteral("--height"), QStringLiteral("24"),
                 QStringLiteral("--widthtype"), QStringLiteral("request")}};
    Program program;
    QPoint icon;
};

TEST_F(Menu, aPressOnTheIconThatIsLetGoOverAnEntryChoosesIt) {
    move(icon);
    desktop.keyboard.press(1);
    ASSERT_TRUE(comes()) << qPrintable(program.output());
    const QRect frame = menu();
    for (int y = icon.y(); y < frame.bottom() - 18; y += 12) // Quit is the last one
        move({frame.center().x(), y});
    move({frame.center().x(), frame.bottom() - 18});
    EXPECT_TRUE(program.isRunning());
    desktop.keyboard.release(1);
    EXPECT_TRUE(waitUntil([this] { return !program.isRunning(); }));
}

TEST_F(Menu, aClickOnTheIconLeavesItOpenAndASecondOneClosesIt) {
    desktop.click(icon);
    ASSERT_TRUE(comes());
    desktop.click(icon);
    EXPECT_TRUE(goes());
    (void)waitUntil([this] { return desktop.isShown(menuTitle); }, std::chrono::milliseconds(500));
    EXPECT_FALSE(desktop.isShown(menuTitle));
}

TEST_F(Menu, theMiddleButtonOpensTheClipboard) {
    desktop.keyboard.click(2, icon.x(), icon.y());
    EXPECT_TRUE(waitUntil([this] { return desktop.hasKeyboard(clipboardPanel); }));
    EXPECT_FALSE(desktop.isShown(menuTitle));
}

/// The keyboard is gone by then, and whatever ends that has to go by the mouse.
TEST_F(Menu, theTileOfCleanModeBlocksTheKeyboardAndAClickOnItEndsThatAlsoInAMenuOpenedAnew) {
    ASSERT_TRUE(program.writePreferences("<key>layoutOrder</key><string>cleanMode,screenshot,screenRecord,qrScan,"
                                         "settings,editor</string>"));
    const auto isBlocked = [this] {
        const bool isFree = desktop.keyboard.grabKeyboard();
        if (isFree)
            desktop.keyboard.ungrabKeyboard();
        return !isFree;
    };
    const auto clickTile = [this] { desktop.click(menu().topLeft() + QPoint(62, 37)); }; // the first of the grid
    desktop.click(icon);
    ASSERT_TRUE(comes());
    ASSERT_TRUE(waitUntil([&] { return !isBlocked(); }));
    clickTile();
    ASSERT_TRUE(waitUntil(isBlocked));
    clickTile();
    ASSERT_TRUE(waitUntil([&] { return !isBlocked(); }));

    clickTile();
    ASSERT_TRUE(waitUntil(isBlocked));
    desktop.click(icon);
    ASSERT_TRUE(goes());
    EXPECT_TRUE(isBlocked());
    EXPECT_FALSE(waitUntil([] { return false; }, std::chrono::milliseconds(500))); // or it is the same press
    desktop.click(icon);
    ASSERT_TRUE(comes());
    clickTile();
    EXPECT_TRUE(waitUntil([&] { return !isBlocked(); }));
}

class MenuOverTheBus : public testing::Test {
protected:
    void SetUp() override {
        tray.start();
        ASSERT_TRUE(program.startOnboarded());
        ASSERT_TRUE(waitUntil([this] { return !tray.items().isEmpty() && !tray.properties().isEmpty(); }));
    }

    Desktop desktop;
    tavrine::test::StatusNotifierTray tray;
    Program program;
};

TEST_F(MenuOverTheBus, aPressThatTheTrayKeepsForItselfChoosesWhereItIsLetGo) {
    const QPoint icon(640, 4);
    desktop.keyboard.movePointer(icon.x(), icon.y());
    ASSERT_TRUE(desktop.keyboard.grabPointer()); // as a window has it from a press to its release
    desktop.keyboard.press(1);
    tray.call(QStringLiteral("Activate"), icon);
    ASSERT_TRUE(waitUntil([this] { return desktop.isShown(menuTitle); }));
    const QRect frame = desktop.geometry(desktop.windowsTitled(QLatin1String(menuTitle)).front());
    desktop.keyboard.movePointer(frame.center().x(), frame.bottom() - 18); // Quit is the last one
    EXPECT_TRUE(program.isRunning());
    desktop.keyboard.release(1);
    desktop.keyboard.ungrabPointer();
    EXPECT_TRUE(waitUntil([this] { return !program.isRunning(); }));
}

} // namespace
