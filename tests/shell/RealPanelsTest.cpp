// The tools of the shell with real panels and views on a real desktop, in time that only the test moves.
#include "ShellTest.h"
#include "adapters/fake/FakeAccess.h"
#include "adapters/fake/FakeAlerts.h"
#include "adapters/fake/FakeEventPoster.h"
#include "adapters/fake/FakeHotKeys.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/x11/X11ApplicationActivator.h"
#include "adapters/x11/X11EventMonitors.h"
#include "adapters/x11/X11PanelWindow.h"
#include "adapters/x11/X11Screens.h"
#include "base/VirtualKeys.h"
#include "clipboard/ClipboardSearchView.h"
#include "clipboard/ContentView.h"
#include "desktop/Desktop.h"
#include "look/Look.h"
#include "look/ModalAlerts.h"
#include "panels/QtToastWindows.h"
#include "shell/ShellTools.h"
#include "support/Wait.h"
#include "utilities/emoji/EmojiPickerStore.h"
#include "utilities/emoji/EmojiPickerView.h"

#include <QApplication>
#include <QPointer>
#include <QProcess>

namespace tavrine {
namespace {

using testing::Desktop;
using testing::waitUntil;

class RealPanels : public ShellTest {
protected:
    void SetUp() override {
        flags = std::make_unique<FeatureFlags>(defaults);
        experience = std::make_unique<ClipboardExperienceSettings>(defaults);
        manager = std::make_unique<ClipboardManager>(ClipboardManager::Ports{
            time, defaults, pasteboard, workspace, coder, movies, loginItem, folders, database});
        for (int i = 0; i < 30; ++i) {
            manager->addItem(text("line %1").arg(i));
            time.advance(1s);
        }
        tools = std::make_unique<ShellTools>(
            ShellTools::Ports{time, defaults, application, hotKeys, monitors, access, alerts, urlOpener,
                              [this] {
                                  return ShellTools::Desktop{.panels = {.windows = windows,
                                                                        .monitors = monitors,
                                                                        .poster = poster,
                                                                        .screens = screens,
                                                                        .workspace = workspace,
                                                                        .activator = activator,
                                                                        .pasteboard = pasteboard,
                                                                        .defaults = defaults,
                                                                        .center = center,
                                                                        .time = time},
                                                             .toastWindows = toasts};
                              }},
            views());
        delegate =
            std::make_unique<AppDelegate>(AppDelegate::Ports{time, defaults, center, workspace, statusItem, application,
                                                             updater, *manager, *flags, *experience, *tools});
        tools->setDelegate(delegate.get());
        access.setAccessibilityTrusted(true);
        defaults.set(text("hasCompletedOnboarding"), true);
        static_cast<void>(outputOf([this] { delegate->applicationDidFinishLaunching(); }));
    }
    void TearDown() override {
        tools->unloadClipboardPanels();
        tools->unloadEmojiPanel();
        delegate.reset();
    }
    ShellTools::Views views() {
        ShellTools::Views made;
        made.classic = [this](const auto &orderOut, const auto &paste) {
            return view = new ContentView(*manager, center, orderOut, paste);
        };
        made.search = [this](const auto &dismiss, const auto &paste) {
            return view = new ClipboardSearchView({*manager, alerts, center, time}, dismiss, paste);
        };
        made.emoji = [this](const auto &dismiss, const auto &insert) {
            return view = new EmojiPickerView({store, center, time}, dismiss,
                                              [insert](const EmojiItem &item) { insert(item.emoji); });
        };
        return made;
    }

    void press(int key) {
        static_cast<void>(outputOf([&] { hotKeys.press(key, hotKeyModifier::command | hotKeyModifier::shift); }));
        time.advance(0ms);
    }
    bool open(int key, const char *title) {
        press(key);
        return waitUntil([&] { return desktop.hasKeyboard(title); });
    }
    bool isGone(const char *title) {
        return waitUntil([&] { return !desktop.isShown(title); });
    }
    void set(Feature feature, bool isOn) {
        static_cast<void>(outputOf([&] {
            flags->set(feature, isOn);
            time.advance(0ms);
        }));
    }
    static void settle() {
        (void)waitUntil([] { return false; }, 100ms);
    }

    static constexpr int keyV = virtualKey::v;
    static constexpr int keyE = 14;
    Desktop desktop;
    look::Look look{time};
    FakeHotKeys hotKeys;
    FakeAccess access;
    FakeAlerts alerts;
    FakeUrlOpener urlOpener;
    FakeEventPoster poster;
    X11EventMonitors monitors;
    X11ApplicationActivator activator;
    X11PanelWindows windows{activator};
    X11Screens screens;
    QtToastWindows toasts{windows};
    EmojiPickerStore store{defaults, text("/nowhere")};
    QPointer<QWidget> view;
    std::unique_ptr<ShellTools> tools;
};

TEST_F(RealPanels, historySwitchedOffTakesTheOpenSearchPanelAwayWithWhatStandsInIt) {
    ASSERT_TRUE(open(keyV, testing::clipboardPanel));
    desktop.type("line");
    settle();
    set(Feature::clipboardHistory, false);
    EXPECT_TRUE(isGone(testing::clipboardPanel));
    EXPECT_FALSE(view);
    desktop.type("x"); // goes to nobody
    desktop.click({5, 5});
    settle();
    press(keyV);
    settle();
    EXPECT_FALSE(desktop.isShown(testing::clipboardPanel));
    set(Feature::clipboardHistory, true);
    EXPECT_TRUE(open(keyV, testing::clipboardPanel));
}

TEST_F(RealPanels, historySwitchedOffDuringTheShrinkingOfTheClassicPanelHarmsNothing) {
    static_cast<void>(outputOf([&] { experience->setSelectedExperience(ClipboardExperience::classic); }));
    time.advance(0ms);
    ASSERT_TRUE(open(keyV, testing::classicPanel));
    time.advance(200ms);
    press(keyV); // it shrinks
    time.advance(90ms);
    set(Feature::clipboardHistory, false);
    EXPECT_TRUE(isGone(testing::classicPanel));
    EXPECT_FALSE(view);
    time.advance(1s);
    set(Feature::clipboardHistory, true);
    ASSERT_TRUE(open(keyV, testing::classicPanel));
    EXPECT_EQ(desktop.geometry(desktop.windowsTitled(text(testing::classicPanel)).at(0)).size(), QSize(320, 450));
}

TEST_F(RealPanels, theEmojiPickerSwitchedOffTakesItsOpenPanelAwayAndLeavesTheOthers) {
    ASSERT_TRUE(open(keyE, testing::emojiPanel));
    set(Feature::emojiPicker, false);
    EXPECT_TRUE(isGone(testing::emojiPanel));
    EXPECT_FALSE(view);
    EXPECT_TRUE(open(keyV, testing::clipboardPanel));
}

TEST_F(RealPanels, aPasteWithoutAccessibilityShowsItsToastNearTheBottomAndTakesItAway) {
    access.setAccessibilityTrusted(false);
    ASSERT_TRUE(open(keyV, testing::clipboardPanel));
    static_cast<void>(outputOf([&] {
        desktop.pressReturn();
        EXPECT_TRUE(isGone(testing::clipboardPanel));
        time.advance(0ms);
    }));
    EXPECT_EQ(pasteboard.string(), text("line 29"));
    const QSize all = desktop.size();
    const QRect rising(all.width() / 2 - 125, all.height() - 120 - 60 - 10, 250, 60);
    const auto toast = [&] { return desktop.overlayAt(rising.center()); };
    time.advance(300ms); // it has faded in and risen by ten
    ASSERT_TRUE(waitUntil([&] { return toast() != 0; }));
    EXPECT_EQ(desktop.geometry(toast()), rising);
    time.advance(1999ms);
    EXPECT_NE(toast(), 0U);
    time.advance(501ms);
    EXPECT_TRUE(waitUntil([&] { return toast() == 0; }));
    EXPECT_TRUE(poster.posted().empty());
}

TEST_F(RealPanels, aToastIsAboveAFullScreenWindow) {
    QProcess xterm;
    xterm.start(text("xterm"),
                {text("-T"), text("full screen"), text("-fullscreen"), text("-e"), text("sleep"), text("60")});
    ASSERT_TRUE(waitUntil([&] {
        const auto found = desktop.windowsTitled(text("full screen"));
        return !found.empty() && desktop.geometry(found.at(0)).size() == desktop.size();
    }));
    tools->showToast(text("above"), text("checkmark"));
    time.advance(300ms);
    const QSize all = desktop.size();
    const QPoint middle(all.width() / 2, all.height() - 160);
    EXPECT_TRUE(waitUntil([&] { return desktop.overlayAt(middle) != 0; }));
    EXPECT_TRUE(desktop.isAbove(desktop.overlayAt(middle), desktop.windowsTitled(text("full screen")).at(0)));
    xterm.kill();
    xterm.waitForFinished();
}

} // namespace
} // namespace tavrine
