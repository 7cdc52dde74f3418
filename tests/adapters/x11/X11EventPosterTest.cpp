#include "adapters/x11/X11EventPoster.h"

#include "adapters/x11/ForeignWindow.h"
#include "adapters/x11/XcbLink.h"
#include "base/VirtualKeys.h"
#include "desktop/Desktop.h"
#include "ports/EventMonitors.h"
#include "reliability/FailingCall.h"
#include "support/ServerHolder.h"
#include "support/TestKeyboard.h"

#include <QFile>
#include <QTemporaryDir>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>
#include <xcb/xcb.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::copyByXclip;
using testing::ForeignWindow;
using testing::waitUntil;
namespace key = testing::key;

constexpr int pastes = 100;

QString part(int i) {
    return QStringLiteral("p%1;").arg(i, 3, 10, QLatin1Char('0'));
}

/// A poster that is made without a connection pastes nothing, for as long as the program runs.
TEST(XcbLinkTest, aConnectionThatIsRefusedOnceIsMadeAllTheSame) {
    const testing::FailingCall call(testing::FaultKind::connect, 1, EAGAIN);
    const XcbLink link(1s);
    EXPECT_TRUE(call.hasFailed());
    EXPECT_TRUE(link.isOpen());
}

class X11EventPosterTest : public ::testing::Test {
protected:
    void TearDown() override {
        for (const int held : {key::leftSuper, key::leftShift, key::leftAlt, key::leftControl, key::v})
            if (keyboard.isDown(held))
                keyboard.up(held);
        if (keyboard.locks() & 0x02)
            keyboard.tap(key::capsLock);
        QProcess::execute(QStringLiteral("setxkbmap"), {QStringLiteral("us")});
    }
    void postPaste() {
        poster.postKeyboardEvent(virtualKey::v, true, modifierFlag::command);
        poster.postKeyboardEvent(virtualKey::v, false, modifierFlag::command);
    }
    /// Pastes distinct texts one after the other; each must arrive once, and in its place.
    void pasteMany(ForeignWindow &window) {
        ASSERT_TRUE(window.waitForFocus());
        QString expected;
        for (int i = 0; i < pastes; ++i) {
            ASSERT_TRUE(copyByXclip(part(i)));
            postPaste();
            expected += part(i);
            ASSERT_TRUE(window.waitForText(expected)) << "after paste " << i << ": " << window.text().toStdString();
        }
        (void)waitUntil([] { return false; }, 200ms); // a second arrival would come now
        EXPECT_EQ(window.text(), expected);
    }

    testing::TestKeyboard keyboard;
    QString text;
    X11EventPoster poster{[this] { return text; }};
};

TEST_F(X11EventPosterTest, eventsCanBePostedHere) {
    EXPECT_TRUE(poster.canPost());
}

TEST_F(X11EventPosterTest, everyPasteArrivesOnceInAGtkWindow) {
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    pasteMany(window);
}

TEST_F(X11EventPosterTest, everyPasteArrivesOnceInAQtWindow) {
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    pasteMany(window);
}

TEST_F(X11EventPosterTest, everyPasteArrivesOnceInXterm) {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("typed"));
    QProcess xterm;
    xterm.start(QStringLiteral("xterm"), {QStringLiteral("-e"), QStringLiteral("sh"), QStringLiteral("-c"),
                                          QStringLiteral("exec cat > '%1'").arg(path)});
    const auto typed = [&] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    };
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(path) && keyboard.focusedWindow() > 1; }));
    (void)waitUntil([] { return false; }, 300ms); // the keyboard reaches xterm's inner window a little later
    QString expected;
    for (int i = 0; i < pastes; ++i) {
        text = part(i) + QLatin1Char('\n');
        ASSERT_TRUE(copyByXclip(QStringLiteral("of the clipboard\n"))); // which xterm does not paste
        postPaste();
        expected += text;
        ASSERT_TRUE(waitUntil([&] { return typed() == expected; })) << i << ": " << typed().toStdString();
    }
    (void)waitUntil([] { return false; }, 200ms);
    EXPECT_EQ(typed(), expected);
    xterm.kill();
    xterm.waitForFinished();
}

TEST_F(X11EventPosterTest, aKeyThatNoKeyboardHasIsNotTypedAndSaysSo) {
    constexpr int noKey = 0xFFFF;
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(window.waitForFocus());
    poster.postKeyboardEvent(noKey, true, 0);
    poster.postKeyboardEvent(noKey, false, 0);
    EXPECT_FALSE(poster.isHeldBack());
    EXPECT_EQ(poster.failure(), QStringLiteral("the keyboard has no such key"));
    ASSERT_TRUE(copyByXclip(part(0)));
    postPaste();
    EXPECT_EQ(poster.failure(), QString());
    EXPECT_TRUE(window.waitForText(part(0)));
}

TEST_F(X11EventPosterTest, aPasteIsHeldBackWhileTheServerDoesNotSayWhoHasTheKeyboard) {
    // The toolkit of this test waits for the server without end, and so it does nothing meanwhile.
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(window.waitForFocus());
    ASSERT_TRUE(copyByXclip(part(0)));
    testing::ServerHolder holder;
    holder.holdAlone();
    postPaste();
    EXPECT_TRUE(poster.isHeldBack());
    holder.letGo();
    ASSERT_TRUE(waitUntil([this] {
        if (poster.isHeldBack())
            postPaste();
        return !poster.isHeldBack();
    }));
    EXPECT_TRUE(window.waitForText(part(0)));
    (void)waitUntil([] { return false; }, 200ms);
    EXPECT_EQ(window.text(), part(0)) << "once";
}

/// A window manager that has no turn, when the keyboard is with nobody: as after a panel that goes.
class ALateManager : public X11EventPosterTest {
protected:
    void SetUp() override {
        ASSERT_TRUE(window.waitForFocus());
        ASSERT_TRUE(copyByXclip(part(0)));
        ASSERT_TRUE(waitUntil([this] {
            const quint32 ours = desktop.windowOf(window.processId());
            return ours != 0 && desktop.activeWindow() == ours;
        }));
        m_manager = static_cast<pid_t>(desktop.windowManager());
        ASSERT_GT(m_manager, 0);
        ASSERT_EQ(::kill(m_manager, SIGSTOP), 0);
        keyboard.giveToNobody();
    }
    void TearDown() override { letGo(); }
    void letGo() const {
        if (m_manager > 0)
            ::kill(m_manager, SIGCONT);
    }

    testing::Desktop desktop;
    ForeignWindow window{QStringLiteral(TAVRINE_GTK_ENTRY)};

private:
    pid_t m_manager = 0;
};

TEST_F(ALateManager, holdsAPasteBackUntilItHasGivenTheKeyboardOn) {
    postPaste();
    EXPECT_TRUE(poster.isHeldBack());
    letGo();
    // The manager may need longer for it than a paste is held back, but the next one comes when it is there.
    ASSERT_TRUE(waitUntil([this] {
        return keyboard.focusedWindow() != XCB_INPUT_FOCUS_POINTER_ROOT &&
               desktop.activeWindow() == desktop.windowOf(window.processId());
    }));
    postPaste();
    EXPECT_FALSE(poster.isHeldBack());
    EXPECT_TRUE(window.waitForText(part(0)));
}

TEST_F(ALateManager, holdsAPasteBackAlsoWhileItNamesNoActiveWindow) {
    QProcess::execute(QStringLiteral("xprop"),
                      {QStringLiteral("-root"), QStringLiteral("-format"), QStringLiteral("_NET_ACTIVE_WINDOW"),
                       QStringLiteral("32x"), QStringLiteral("-set"), QStringLiteral("_NET_ACTIVE_WINDOW"),
                       QStringLiteral("0")});
    ASSERT_EQ(desktop.activeWindow(), 0U);
    postPaste();
    EXPECT_TRUE(poster.isHeldBack());
}

TEST_F(ALateManager, holdsAPasteBackNoLongerThanSomebodyWouldWait) {
    ASSERT_TRUE(waitUntil([this] {
        postPaste();
        return !poster.isHeldBack();
    })) << "it has stopped for good";
}

TEST_F(X11EventPosterTest, keysThatAreLetGoDuringAPasteAreUpAfterIt) {
    for (int i = 0; i < 300; ++i) {
        keyboard.down(key::leftSuper);
        keyboard.down(key::leftShift);
        std::atomic<bool> isPosting = false;
        std::thread person([&] {
            testing::TestKeyboard other;
            isPosting = true;
            std::this_thread::sleep_for(std::chrono::microseconds(i * 5)); // at another moment of it each time
            other.up(key::leftShift);
            other.up(key::leftSuper);
        });
        while (!isPosting)
            std::this_thread::yield();
        postPaste();
        person.join();
        ASSERT_TRUE(waitUntil([this] { return !keyboard.isDown(key::leftControl); })) << i;
        ASSERT_FALSE(keyboard.isDown(key::leftSuper)) << i;
        ASSERT_FALSE(keyboard.isDown(key::leftShift)) << i;
    }
}

TEST_F(X11EventPosterTest, keysThatThePersonHoldsDoNotSpoilThePasteAndStayHeld) {
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(window.waitForFocus());
    const std::vector<std::vector<int>> combinations = {{key::leftSuper, key::leftShift},
                                                        {key::leftAlt},
                                                        {key::leftShift},
                                                        {key::leftControl},
                                                        {key::leftControl, key::leftAlt, key::leftShift}};
    QString expected;
    for (size_t i = 0; i < combinations.size(); ++i) {
        ASSERT_TRUE(copyByXclip(part(static_cast<int>(i))));
        for (const int held : combinations[i])
            keyboard.down(held);
        postPaste();
        expected += part(static_cast<int>(i));
        EXPECT_TRUE(window.waitForText(expected)) << i << ": " << window.text().toStdString();
        for (const int held : combinations[i]) {
            EXPECT_TRUE(waitUntil([&] { return keyboard.isDown(held); })) << held;
            keyboard.up(held);
        }
        EXPECT_FALSE(keyboard.isDown(key::leftControl));
        EXPECT_FALSE(keyboard.isDown(key::v));
    }
}

/// A hot key of another program, whose press holds the keyboard until that program goes on.
class HoldingHotKey {
public:
    explicit HoldingHotKey(int keycode) : m_connection(xcb_connect(nullptr, nullptr)) {
        const auto root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        std::free(xcb_request_check(m_connection, xcb_grab_key_checked(m_connection, 1, root, XCB_MOD_MASK_ANY,
                                                                       static_cast<uint8_t>(keycode),
                                                                       XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_SYNC)));
    }
    ~HoldingHotKey() { xcb_disconnect(m_connection); }
    HoldingHotKey(const HoldingHotKey &) = delete;
    HoldingHotKey &operator=(const HoldingHotKey &) = delete;

    void goOn() {
        xcb_allow_events(m_connection, XCB_ALLOW_ASYNC_KEYBOARD, XCB_CURRENT_TIME);
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    }

private:
    xcb_connection_t *m_connection;
};

TEST_F(X11EventPosterTest, aPasteWhileAHotKeyHoldsTheKeyboardIsHeldBackAndLeavesNothingBehind) {
    constexpr int hotKey = 95; // F11
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(window.waitForFocus());
    ASSERT_TRUE(copyByXclip(part(0)));
    HoldingHotKey other(hotKey);
    keyboard.down(hotKey);
    postPaste();
    EXPECT_TRUE(poster.isHeldBack());
    keyboard.up(hotKey);
    other.goOn();
    ASSERT_TRUE(waitUntil([&] { return !keyboard.isDown(hotKey) && !keyboard.isDown(key::leftControl); }));
    postPaste();
    EXPECT_FALSE(poster.isHeldBack());
    EXPECT_TRUE(window.waitForText(part(0))) << window.text().toStdString();
    ASSERT_TRUE(copyByXclip(part(1)));
    postPaste();
    EXPECT_TRUE(window.waitForText(part(0) + part(1))) << window.text().toStdString();
    EXPECT_FALSE(keyboard.isDown(key::leftControl));
    EXPECT_FALSE(keyboard.isDown(key::v));
}

/// Another program that has all keys kept for later.
class AHeldKeyboard : public X11EventPosterTest {
protected:
    void SetUp() override {
        ASSERT_TRUE(window.waitForFocus());
        ASSERT_TRUE(copyByXclip(part(0)));
    }
    void hold() {
        ASSERT_TRUE(waitUntil([this] { return keyboard.freezeKeyboard(); }));
    }
    void tryToPaste() {
        for (int tries = 0; tries < 20; ++tries) {
            postPaste();
            EXPECT_TRUE(poster.isHeldBack()) << tries;
            (void)waitUntil([] { return false; }, 5ms);
        }
    }
    /// What was kept has come to the window.
    [[nodiscard]] bool isFree() {
        return waitUntil([this] { return window.presses(QStringLiteral("Control_L")) > 0; });
    }

    ForeignWindow window{QStringLiteral(TAVRINE_GTK_ENTRY)};
};

TEST_F(AHeldKeyboard, givesTheWindowOneModifierOfAllTriesAndTakesTheNextPaste) {
    for (int times = 1; times <= 2; ++times) {
        ASSERT_NO_FATAL_FAILURE(hold());
        tryToPaste();
        const int before = window.presses(QStringLiteral("Control_L"));
        keyboard.ungrabKeyboard();
        ASSERT_TRUE(waitUntil([&] { return window.presses(QStringLiteral("Control_L")) > before; }));
        (void)waitUntil([] { return false; }, 200ms); // the others would come now
        EXPECT_EQ(window.presses(QStringLiteral("Control_L")), before + 1);
        EXPECT_FALSE(keyboard.isDown(key::leftControl));
        postPaste();
        EXPECT_FALSE(poster.isHeldBack());
        EXPECT_TRUE(window.waitForText(part(0).repeated(times))) << window.text().toStdString();
    }
}

TEST_F(AHeldKeyboard, leavesWhatIsTypedMeanwhileAsItIs) {
    ASSERT_NO_FATAL_FAILURE(hold());
    tryToPaste();
    keyboard.tap(key::b);
    tryToPaste();
    keyboard.ungrabKeyboard();
    EXPECT_TRUE(window.waitForText(QStringLiteral("b"))) << window.text().toStdString();
}

TEST_F(AHeldKeyboard, leavesAModifierThatThePersonHoldsDown) {
    keyboard.down(key::leftShift);
    ASSERT_NO_FATAL_FAILURE(hold());
    tryToPaste();
    keyboard.ungrabKeyboard();
    EXPECT_TRUE(isFree());
    EXPECT_TRUE(waitUntil([this] { return !keyboard.isDown(key::leftControl); }));
    EXPECT_TRUE(keyboard.isDown(key::leftShift));
}

TEST_F(X11EventPosterTest, capsLockDoesNotSpoilThePaste) {
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    keyboard.tap(key::capsLock);
    ASSERT_TRUE(copyByXclip(QStringLiteral("with caps lock")));
    postPaste();
    EXPECT_TRUE(window.waitForText(QStringLiteral("with caps lock")));
    EXPECT_EQ(keyboard.locks() & 0x02, 0x02);
}

TEST_F(X11EventPosterTest, thePasteFollowsTheLetterOnAnotherLayout) {
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(window.waitForFocus());
    const std::pair<const char *, const char *> layouts[] = {{"us", "dvorak"}, {"fr", ""}, {"ru", ""}, {"de", "neo"}};
    QString expected;
    for (const auto &[layout, variant] : layouts) {
        ASSERT_EQ(
            QProcess::execute(QStringLiteral("setxkbmap"), {QStringLiteral("-layout"), QString::fromLatin1(layout),
                                                            QStringLiteral("-variant"), QString::fromLatin1(variant)}),
            0);
        (void)waitUntil([] { return false; }, 150ms);
        ASSERT_TRUE(copyByXclip(QString::fromLatin1(layout)));
        postPaste();
        expected += QString::fromLatin1(layout);
        EXPECT_TRUE(window.waitForText(expected)) << layout << ' ' << variant << ": " << window.text().toStdString();
        expected = window.text();
    }
}

TEST_F(X11EventPosterTest, aKeyDownWithoutItsKeyUpIsMadeGoodByTheNext) {
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(window.waitForFocus());
    ASSERT_TRUE(copyByXclip(QStringLiteral("x")));
    poster.postKeyboardEvent(virtualKey::v, true, modifierFlag::command);
    postPaste();
    EXPECT_TRUE(window.waitForText(QStringLiteral("xx")));
    EXPECT_FALSE(keyboard.isDown(key::leftControl));
}

TEST_F(X11EventPosterTest, aKeyWithoutAPositionPostsNothing) {
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(window.waitForFocus());
    poster.postKeyboardEvent(4711, true, 0);
    poster.postKeyboardEvent(4711, false, 0);
    poster.postKeyboardEvent(virtualKey::a, true, 0);
    poster.postKeyboardEvent(virtualKey::a, false, 0);
    EXPECT_TRUE(window.waitForText(QStringLiteral("a")));
}

} // namespace
} // namespace tavrine
