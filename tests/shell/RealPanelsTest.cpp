// The tools of the shell with real panels and views on a real desktop, in time that only the test moves.
#include "ShellTest.h"
#include "adapters/x11/X11ApplicationActivator.h"
#include "adapters/x11/X11EventMonitors.h"
#include "adapters/x11/X11PanelWindow.h"
#include "adapters/x11/X11Screens.h"
#include "base/VirtualKeys.h"
#include "clipboard/ClipboardSearchView.h"
#include "clipboard/ContentView.h"
#include "desktop/Desktop.h"
#include "look/Look.h"
#include "support/Wait.h"
#include "utilities/emoji/EmojiPickerView.h"

#include <QApplication>
#include <QProcess>

namespace tavrine {
namespace {

using testing::waitUntil;

/// Panels, screens, pointer and the coming to the front are an X server's; the rest is the test's.
class PanelDesktop final : public Desktop {
public:
    explicit PanelDesktop(FakeDesktop &fake) : m_fake(fake) {}

    ApplicationActivator &applicationActivator() override { return m_activator; }
    Screens &screens() override { return m_screens; }
    PanelWindows &panelWindows() override { return m_windows; }
    EventMonitors &eventMonitors() override { return m_monitors; }

    const Folders &folders() override { return m_fake.folders(); }
    void followStarts(std::function<void(const QString &)> onStartedAgain) override {
        m_fake.followStarts(std::move(onStartedAgain));
    }
    DesktopAbilities &desktopAbilities() override { return m_fake.desktopAbilities(); }
    SessionNotices &sessionNotices() override { return m_fake.sessionNotices(); }
    EdgeWindows &edgeWindows() override { return m_fake.edgeWindows(); }
    DragPasteboards &dragPasteboards() override { return m_fake.dragPasteboards(); }
    Dragging &dragging() override { return m_fake.dragging(); }
    FileIcons &fileIcons() override { return m_fake.fileIcons(); }
    SystemSounds &systemSounds() override { return m_fake.systemSounds(); }
    Application &application() override { return m_fake.application(); }
    Workspace &workspace() override { return m_fake.workspace(); }
    ApplicationCatalog &applicationCatalog() override { return m_fake.applicationCatalog(); }
    LoginItem &loginItem() override { return m_fake.loginItem(); }
    PackageUpdates &packageUpdates() override { return m_fake.packageUpdates(); }
    UpdateFeed *updateFeed() override { return m_fake.updateFeed(); }
    Time &time() override { return m_fake.time(); }
    Appearance &appearance() override { return m_fake.appearance(); }
    StatusItem &statusItem() override { return m_fake.statusItem(); }
    ColorSamplers &colorSamplers() override { return m_fake.colorSamplers(); }
    ScreenStreams &screenStreams() override { return m_fake.screenStreams(); }
    void watchCompositing(std::function<void(bool)> handler) override { m_fake.watchCompositing(std::move(handler)); }
    HotKeys &hotKeys() override { return m_fake.hotKeys(); }
    EventPoster &eventPoster() override { return m_fake.eventPoster(); }
    Access &access() override { return m_fake.access(); }
    Alerts &alerts() override { return m_fake.alerts(); }
    FilePanels &filePanels() override { return m_fake.filePanels(); }
    UrlOpener &urlOpener() override { return m_fake.urlOpener(); }
    Keychain &keychain() override { return m_fake.keychain(); }
    Pasteboard &pasteboard() override { return m_fake.pasteboard(); }
    ImageCoder &imageCoder() override { return m_fake.imageCoder(); }
    MovieAsset &movieAsset() override { return m_fake.movieAsset(); }
    MovieWriters &movieWriters() override { return m_fake.movieWriters(); }
    MoviePlayers &moviePlayers() override { return m_fake.moviePlayers(); }
    Recognizer &recognizer() override { return m_fake.recognizer(); }
    CodeDetector &screenCodeDetector() override { return m_fake.screenCodeDetector(); }
    CodeDetector &pictureCodeDetector() override { return m_fake.pictureCodeDetector(); }
    Calendar &calendar() override { return m_fake.calendar(); }
    PowerAssertions &powerAssertions() override { return m_fake.powerAssertions(); }
    PowerSource &powerSource() override { return m_fake.powerSource(); }
    EventTaps &eventTaps() override { return m_fake.eventTaps(); }
    UserNotifications &userNotifications() override { return m_fake.userNotifications(); }
    InterfaceCounters &interfaceCounters() override { return m_fake.interfaceCounters(); }
    PathMonitor &pathMonitor() override { return m_fake.pathMonitor(); }
    AudioPlayers &audioPlayers() override { return m_fake.audioPlayers(); }
    AudioDevices &audioDevices() override { return m_fake.audioDevices(); }
    MicrophoneSessions &microphoneSessions() override { return m_fake.microphoneSessions(); }
    Downloads &downloads() override { return m_fake.downloads(); }
    ScriptSyntax *scriptSyntax() override { return m_fake.scriptSyntax(); }
    TaskLauncher &taskLauncher() override { return m_fake.taskLauncher(); }

private:
    FakeDesktop &m_fake;
    X11ApplicationActivator m_activator;
    X11EventMonitors m_monitors;
    X11PanelWindows m_windows{m_activator};
    X11Screens m_screens;
};

class RealPanels : public ShellTest {
protected:
    void SetUp() override {
        desktop.panelWindows().setComposited(false); // as the server has it
        desktop.access().setAccessibilityTrusted(true);
        defaults.set(text("hasCompletedOnboarding"), true);
        delegate = std::make_unique<AppDelegate>(Shell::Parts{panelDesktop, defaults, center, database});
        for (int i = 0; i < 30; ++i) {
            manager().addItem(text("line %1").arg(i));
            time.advance(1s);
        }
        quietly([this] { delegate->applicationDidFinishLaunching(); });
    }
    void TearDown() override { delegate.reset(); }

    void press(int key) {
        quietly([&] { desktop.hotKeys().press(key, hotKeyModifier::command | hotKeyModifier::shift); });
        time.advance(0ms);
    }
    bool open(int key, const char *title) {
        press(key);
        return waitUntil([&] { return screen.hasKeyboard(title); });
    }
    bool isGone(const char *title) {
        return waitUntil([&] { return !screen.isShown(title); });
    }
    void set(Feature feature, bool isOn) {
        quietly([&] {
            ShellTest::set(feature, isOn);
            time.advance(0ms);
        });
    }
    /// Whether what stands in a panel is alive.
    template <class View>
    [[nodiscard]] static bool lives() {
        const QWidgetList widgets = QApplication::allWidgets();
        return std::any_of(widgets.begin(), widgets.end(),
                           [](QWidget *widget) { return qobject_cast<View *>(widget) != nullptr; });
    }
    static void settle() {
        (void)waitUntil([] { return false; }, 100ms);
    }

    static constexpr int keyV = virtualKey::v;
    static constexpr int keyE = 14;
    testing::Desktop screen;
    look::Look look{time};
    PanelDesktop panelDesktop{desktop};
};

TEST_F(RealPanels, historySwitchedOffTakesTheOpenSearchPanelAwayWithWhatStandsInIt) {
    ASSERT_TRUE(open(keyV, testing::clipboardPanel));
    screen.type("line");
    settle();
    set(Feature::clipboardHistory, false);
    EXPECT_TRUE(isGone(testing::clipboardPanel));
    EXPECT_FALSE(lives<ClipboardSearchView>());
    screen.type("x"); // goes to nobody
    screen.click({5, 5});
    settle();
    press(keyV);
    settle();
    EXPECT_FALSE(screen.isShown(testing::clipboardPanel));
    set(Feature::clipboardHistory, true);
    EXPECT_TRUE(open(keyV, testing::clipboardPanel));
}

TEST_F(RealPanels, historySwitchedOffDuringTheShrinkingOfTheClassicPanelHarmsNothing) {
    delegate->shell().experienceSettings().setSelectedExperience(ClipboardExperience::classic);
    time.advance(0ms);
    ASSERT_TRUE(open(keyV, testing::classicPanel));
    time.advance(200ms);
    press(keyV); // it shrinks
    time.advance(90ms);
    set(Feature::clipboardHistory, false);
    EXPECT_TRUE(isGone(testing::classicPanel));
    EXPECT_FALSE(lives<ContentView>());
    time.advance(1s);
    set(Feature::clipboardHistory, true);
    ASSERT_TRUE(open(keyV, testing::classicPanel));
    EXPECT_EQ(screen.geometry(screen.windowsTitled(text(testing::classicPanel)).at(0)).size(), QSize(320, 450));
}

TEST_F(RealPanels, theEmojiPickerSwitchedOffTakesItsOpenPanelAwayAndLeavesTheOthers) {
    ASSERT_TRUE(open(keyE, testing::emojiPanel));
    set(Feature::emojiPicker, false);
    EXPECT_TRUE(isGone(testing::emojiPanel));
    EXPECT_FALSE(lives<EmojiPickerView>());
    EXPECT_TRUE(open(keyV, testing::clipboardPanel));
}

TEST_F(RealPanels, aPasteWithoutAccessibilityShowsItsToastNearTheBottomAndTakesItAway) {
    desktop.access().setAccessibilityTrusted(false);
    ASSERT_TRUE(open(keyV, testing::clipboardPanel));
    quietly([&] {
        screen.pressReturn();
        EXPECT_TRUE(isGone(testing::clipboardPanel));
        time.advance(0ms);
    });
    EXPECT_EQ(desktop.pasteboard().string(), text("line 29"));
    const QSize all = screen.size();
    const QRect rising(all.width() / 2 - 125, all.height() - 120 - 60 - 10, 250, 60);
    const auto toast = [&] { return screen.overlayAt(rising.center()); };
    time.advance(300ms); // it has faded in and risen by ten
    ASSERT_TRUE(waitUntil([&] { return toast() != 0; }));
    EXPECT_EQ(screen.geometry(toast()), rising);
    time.advance(1999ms);
    EXPECT_NE(toast(), 0U);
    time.advance(501ms);
    EXPECT_TRUE(waitUntil([&] { return toast() == 0; }));
    EXPECT_TRUE(desktop.eventPoster().posted().empty());
}

TEST_F(RealPanels, aToastIsAboveAFullScreenWindow) {
    QProcess xterm;
    xterm.start(text("xterm"),
                {text("-T"), text("full screen"), text("-fullscreen"), text("-e"), text("sleep"), text("60")});
    ASSERT_TRUE(waitUntil([&] {
        const auto found = screen.windowsTitled(text("full screen"));
        return !found.empty() && screen.geometry(found.at(0)).size() == screen.size();
    }));
    delegate->shell().showToast(text("above"), text("checkmark"));
    time.advance(300ms);
    const QSize all = screen.size();
    const QPoint middle(all.width() / 2, all.height() - 160);
    EXPECT_TRUE(waitUntil([&] { return screen.overlayAt(middle) != 0; }));
    EXPECT_TRUE(screen.isAbove(screen.overlayAt(middle), screen.windowsTitled(text("full screen")).at(0)));
    xterm.kill();
    xterm.waitForFinished();
}

} // namespace
} // namespace tavrine
