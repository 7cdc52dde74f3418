#include "adapters/x11/X11EventTap.h"

#include "ForeignWindow.h"
#include "adapters/x11/X11EventMonitors.h"
#include "adapters/x11/X11HotKeys.h"
#include "adapters/x11/XkbHeader.h"
#include "base/VirtualKeys.h"
#include "contracts/EventTapContract.h"
#include "support/TestKeyboard.h"
#include "support/Wait.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRasterWindow>
#include <QTemporaryDir>

#include <array>
#include <cstdlib>
#include <vector>

#include <gmock/gmock.h>
#include <xcb/xinput.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using State = EventTap::State;
using testing::TestKeyboard;
using testing::waitUntil;
namespace key = testing::key;

constexpr int f2 = 68;
constexpr int mute = 121;
constexpr int brightnessUp = 233;

QString output(const char *command) {
    QProcess process;
    process.start(QStringLiteral("sh"), {QStringLiteral("-c"), QString::fromUtf8(command)});
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

void settle() {
    (void)waitUntil([] { return false; }, 60ms);
}

/// A window of another program, which has the keyboard and writes down what comes.
class Listener {
public:
    Listener() : m_connection(xcb_connect(nullptr, nullptr)), m_window(xcb_generate_id(m_connection)) {
        const auto *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
        const std::array<std::uint32_t, 2> values{1, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_BUTTON_PRESS};
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, screen->root, 1000, 600, 100, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
        xcb_map_window(m_connection, m_window);
        takeKeyboard();
    }
    ~Listener() { xcb_disconnect(m_connection); }
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    void takeKeyboard() {
        xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_PARENT, m_window, XCB_CURRENT_TIME);
        read();
        m_keys.clear();
    }
    [[nodiscard]] unsigned int window() const { return m_window; }
    [[nodiscard]] const std::vector<int> &keys() { return read(), m_keys; }
    [[nodiscard]] int clicks() { return read(), m_clicks; }

private:
    void read() {
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
        while (auto *event = xcb_poll_for_event(m_connection)) {
            if ((event->response_type & 0x7f) == XCB_KEY_PRESS)
                m_keys.push_back(reinterpret_cast<xcb_key_press_event_t *>(event)->detail);
            else if ((event->response_type & 0x7f) == XCB_BUTTON_PRESS)
                ++m_clicks;
            std::free(event);
        }
    }

    xcb_connection_t *m_connection;
    xcb_window_t m_window;
    std::vector<int> m_keys;
    int m_clicks = 0;
};

class X11EventTapTest : public ::testing::Test {
public:
    ~X11EventTapTest() override {
        tap.reset();
        for (const auto &[lock, mask] : {std::pair(key::capsLock, 0x02), {key::numLock, 0x10}})
            if (keyboard.locks() & mask)
                keyboard.tap(lock);
    }
    void start() {
        tap = taps.create([this] { ++changes; });
        ASSERT_TRUE(tap);
        // At once, but where a key that was just let go still holds the keyboard for somebody.
        ASSERT_TRUE(waitUntil([this] { return tap->state() == State::dropping; }));
    }
    std::shared_ptr<KeyboardSilence> silence = std::make_shared<KeyboardSilence>();
    TestKeyboard keyboard;
    X11EventTaps taps{silence};
    std::unique_ptr<EventTap> tap;
    int changes = 0;
};

TEST_F(X11EventTapTest, nothingReachesAFieldOfEitherToolkitAndEverythingDoesRightAfterwards) {
    for (const char *program : {TAVRINE_GTK_ENTRY, TAVRINE_QT_LINE_EDIT}) {
        testing::ForeignWindow field(QString::fromUtf8(program));
        ASSERT_TRUE(field.waitForFocus());
        keyboard.tap(key::v);
        ASSERT_TRUE(field.waitForText(QStringLiteral("v")));
        start();
        for (const int each : {key::v, key::b, key::escape, key::backspace, key::returnKey, key::leftAlt, mute,
                               brightnessUp, key::leftSuper})
            keyboard.tap(each);
        keyboard.chord({key::leftControl, key::v});
        tap.reset();
        keyboard.tap(key::b);
        EXPECT_TRUE(field.waitForText(QStringLiteral("vb"))) << program << qPrintable(field.text());
    }
}

TEST_F(X11EventTapTest, noKindOfKeyReachesAnotherProgramOrEndsItAndAClickReachesThatProgram) {
    Listener listener;
    ASSERT_TRUE(waitUntil([&] { return keyboard.focusedWindow() == listener.window(); }));
    const std::vector kinds{key::escape, mute, brightnessUp, key::leftAlt, key::leftSuper, key::leftControl, key::v};
    start();
    for (const int each : kinds) {
        keyboard.tap(each);
        EXPECT_EQ(tap->state(), State::dropping) << each;
    }
    keyboard.click(1, 1050, 650);
    ASSERT_TRUE(waitUntil([&] { return listener.clicks() == 1; })); // it was made after the keys
    EXPECT_THAT(listener.keys(), ::testing::IsEmpty());
    EXPECT_EQ(tap->state(), State::dropping);
    EXPECT_EQ(changes, 0);
    tap.reset();
    // A window manager that comes to the end of another window only now takes the keyboard away once more.
    EXPECT_TRUE(waitUntil([&] {
        listener.takeKeyboard();
        for (const int each : kinds)
            keyboard.tap(each);
        return listener.keys() == kinds;
    }));
}

TEST_F(X11EventTapTest, nothingReachesATerminal) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("typed"));
    QProcess terminal;
    terminal.start(QStringLiteral("xterm"),
                   {QStringLiteral("-e"), QStringLiteral("sh"), QStringLiteral("-c"), QStringLiteral("cat > ") + path});
    const auto typed = [&path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    ASSERT_TRUE(waitUntil([&] {
        keyboard.tap(key::v);
        keyboard.tap(key::returnKey);
        return typed().endsWith("v\n");
    }));
    settle();
    const QByteArray before = typed();
    start();
    keyboard.tap(key::v);
    keyboard.tap(key::returnKey);
    tap.reset();
    keyboard.tap(key::b);
    keyboard.tap(key::returnKey);
    EXPECT_TRUE(waitUntil([&] { return typed() == before + "b\n"; })) << typed().constData();
    terminal.kill();
    terminal.waitForFinished();
}

TEST_F(X11EventTapTest, theWindowManagersShortcutsDieAndLiveAgain) {
    const auto desktop = [] { return output("xprop -root _NET_CURRENT_DESKTOP"); };
    const QString before = desktop();
    start();
    keyboard.chord({key::leftSuper, f2});
    settle();
    EXPECT_EQ(desktop(), before);
    tap.reset();
    keyboard.chord({key::leftSuper, f2});
    EXPECT_TRUE(waitUntil([&] { return desktop() != before; }));
    keyboard.chord({key::leftSuper, f2 - 1});
    EXPECT_TRUE(waitUntil([&] { return desktop() == before; }));
}

TEST_F(X11EventTapTest, ourHotKeysAreDeafAlsoWhileAMenuHoldsThePointerAndHearRightAfterwards) {
    X11HotKeys hotKeys(silence);
    int presses = 0;
    hotKeys.installHandler([&](HotKeyId) {
        ++presses;
        return KeyboardNext::asBefore;
    });
    ASSERT_TRUE(hotKeys.registerHotKey(virtualKey::v, hotKeyModifier::command | hotKeyModifier::shift, {1, 1}));
    const auto press = [this] { keyboard.chord({key::leftSuper, key::leftShift, key::v}); };
    for (const bool isUnderMenu : {false, true}) {
        ASSERT_TRUE(!isUnderMenu || keyboard.grabPointer());
        start();
        press();
        settle();
        EXPECT_EQ(presses, 0) << isUnderMenu;
        press();
        tap.reset(); // the last raw events are still on their way
        settle();
        EXPECT_EQ(presses, 0) << isUnderMenu;
        keyboard.ungrabPointer();
        press();
        EXPECT_TRUE(waitUntil([&] { return presses == 1; }));
        presses = 0;
    }
}

TEST_F(X11EventTapTest, ourDoubleTapsAreDeafAndHearRightAfterwards) {
    X11EventMonitors monitors(silence);
    std::vector<quint32> heard;
    const auto monitor =
        monitors.addGlobalMonitor(eventMask::flagsChanged | eventMask::keyDown, [&](const InputEvent &event) {
            if (event.type == eventMask::keyDown || event.modifierFlags & modifierFlag::option)
                heard.push_back(event.type);
        });
    start();
    keyboard.tap(key::leftAlt);
    keyboard.tap(key::v);
    settle();
    EXPECT_TRUE(heard.empty());
    keyboard.tap(key::leftAlt);
    keyboard.tap(key::v);
    tap.reset();
    settle();
    EXPECT_TRUE(heard.empty());
    keyboard.tap(key::leftAlt);
    keyboard.tap(key::v);
    EXPECT_TRUE(waitUntil([&] { return heard.size() == 2; }));
}

TEST_F(X11EventTapTest, whatWasDownAtTheBeginningIsReleasedForTheProgramThatHadIt) {
    testing::ForeignWindow field(QString::fromUtf8(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(field.waitForFocus());
    keyboard.down(key::leftShift);
    start();
    EXPECT_FALSE(keyboard.isDown(key::leftShift));
    tap.reset();
    keyboard.tap(key::b);
    EXPECT_TRUE(field.waitForText(QStringLiteral("b"))) << qPrintable(field.text()); // small: no Shift is stuck
    keyboard.up(key::leftShift);
}

TEST_F(X11EventTapTest, whatIsDownAtTheEndIsReleasedAndDoesNotRepeat) {
    testing::ForeignWindow field(QString::fromUtf8(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(field.waitForFocus());
    start();
    keyboard.down(key::v);
    keyboard.down(key::leftControl);
    tap.reset();
    EXPECT_FALSE(keyboard.isDown(key::v));
    EXPECT_FALSE(keyboard.isDown(key::leftControl));
    (void)waitUntil([] { return false; }, 900ms); // past the delay of a key that repeats
    EXPECT_EQ(field.text(), QString());
    keyboard.up(key::v);
    keyboard.up(key::leftControl);
}

TEST_F(X11EventTapTest, locksThatWereWipedOnAreOffAgainAndThoseThatWereOnStay) {
    start();
    keyboard.tap(key::capsLock);
    keyboard.tap(key::numLock);
    tap.reset();
    EXPECT_EQ(keyboard.locks(), 0);
    keyboard.tap(key::capsLock); // the key itself has not lost count
    EXPECT_EQ(keyboard.locks(), 0x02);
    start();
    keyboard.tap(key::capsLock);
    tap.reset();
    EXPECT_EQ(keyboard.locks(), 0x02);
    keyboard.tap(key::capsLock);
    EXPECT_EQ(keyboard.locks(), 0);
}

TEST_F(X11EventTapTest, theLayoutThatKeysChangedIsAsBeforeAndOneThatThePersonChoseStays) {
    XcbClient client([](const xcb_generic_event_t &) {});
    const quint8 firstEvent = selectKeyboardNotices(client);
    ASSERT_NE(firstEvent, 0);
    const auto group = [&client] { return keyboardState(client).group; };
    (void)output("setxkbmap -layout us,de -option grp:caps_toggle");
    ASSERT_EQ(group(), 0);
    start();
    keyboard.tap(key::capsLock);
    EXPECT_EQ(group(), 1); // the key goes to the second layout
    tap.reset();
    EXPECT_EQ(group(), 0);
    start();
    xcb_xkb_latch_lock_state(client.connection(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, 1, 0, 0, 0); // from a panel
    EXPECT_EQ(group(), 1);
    settle();
    tap.reset();
    EXPECT_EQ(group(), 1);
    (void)output("setxkbmap -layout us -option ''");
}

/// The aids of the keyboard, as the server has them.
class KeyboardAids {
public:
    KeyboardAids() { (void)selectKeyboardNotices(m_client); }
    ~KeyboardAids() { set(XCB_XKB_BOOL_CTRL_STICKY_KEYS | XCB_XKB_BOOL_CTRL_ACCESS_X_KEYS, 0); }
    KeyboardAids(const KeyboardAids &) = delete;
    KeyboardAids &operator=(const KeyboardAids &) = delete;

    /// As a program does for the person.
    void set(uint32_t which, uint32_t on) {
        std::array<uint8_t, 32> repeats{};
        xcb_xkb_set_controls(m_client.connection(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, which, on,
                             XCB_XKB_CONTROL_CONTROLS_ENABLED, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                             repeats.data());
        (void)areOn(which);
    }
    [[nodiscard]] bool areOn(uint32_t which) {
        const auto answer = m_client.reply<xcb_xkb_get_controls_reply_t>(
            xcb_xkb_get_controls(m_client.connection(), XCB_XKB_ID_USE_CORE_KBD));
        return answer && (answer->enabledControls & which) == which;
    }

private:
    XcbClient m_client{[](const xcb_generic_event_t &) {}};
};

TEST_F(X11EventTapTest, anAidThatKeysSwitchedOnIsOffAgainAndOneThatThePersonChoseStays) {
    constexpr auto sticky = XCB_XKB_BOOL_CTRL_STICKY_KEYS;
    constexpr int tapsForSticky = 5;
    KeyboardAids aids;
    aids.set(sticky | XCB_XKB_BOOL_CTRL_ACCESS_X_KEYS, XCB_XKB_BOOL_CTRL_ACCESS_X_KEYS);
    ASSERT_FALSE(aids.areOn(sticky));
    start();
    for (int i = 0; i < tapsForSticky; ++i)
        keyboard.tap(key::leftShift);
    EXPECT_TRUE(aids.areOn(sticky)) << "the keys do nothing here, and this test shows nothing";
    settle();
    tap.reset();
    EXPECT_FALSE(aids.areOn(sticky));
    start();
    aids.set(sticky, sticky); // from the settings of the desktop
    settle();
    tap.reset();
    EXPECT_TRUE(aids.areOn(sticky));
    EXPECT_TRUE(aids.areOn(XCB_XKB_BOOL_CTRL_ACCESS_X_KEYS));
}

TEST_F(X11EventTapTest, theMouseStaysFree) {
    start();
    QRasterWindow window;
    window.resize(100, 100);
    window.setPosition(50, 50);
    window.show();
    ASSERT_TRUE(waitUntil([&] { return window.isExposed(); }));
    EXPECT_TRUE(keyboard.grabPointer());
    keyboard.ungrabPointer();
}

TEST_F(X11EventTapTest, theEndOfTheProgramByForceFreesTheKeyboard) {
    testing::ForeignWindow field(QString::fromUtf8(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(field.waitForFocus());
    QProcess program;
    program.start(QStringLiteral(TAVRINE_EVENT_TAP_PROGRAM), QStringList());
    ASSERT_TRUE(program.waitForReadyRead(5000));
    ASSERT_EQ(program.readLine(), QByteArray("dropping\n"));
    keyboard.tap(key::v);
    program.kill();
    program.waitForFinished();
    ASSERT_TRUE(waitUntil([&] {
        if (!keyboard.grabKeyboard())
            return false;
        keyboard.ungrabKeyboard();
        return true;
    }));
    keyboard.tap(key::b);
    EXPECT_TRUE(field.waitForText(QStringLiteral("b"))) << qPrintable(field.text());
}

/// Adds a master keyboard to the server, and takes it away at the end.
class SecondKeyboard {
public:
    SecondKeyboard() {
        struct {
            xcb_input_add_master_t head;
            char name[8];
        } change{};
        change.head.type = XCB_INPUT_HIERARCHY_CHANGE_TYPE_ADD_MASTER;
        change.head.len = sizeof change / 4;
        change.head.name_len = 6;
        change.head.send_core = 1;
        change.head.enable = 1;
        std::memcpy(reinterpret_cast<char *>(&change.head) + sizeof change.head, "second", 6);
        xcb_input_xi_change_hierarchy(m_connection, 1, reinterpret_cast<xcb_input_hierarchy_change_t *>(&change));
        for (const auto &[id, type] : masters())
            m_keyboard = type == XCB_INPUT_DEVICE_TYPE_MASTER_KEYBOARD ? std::max(m_keyboard, id) : m_keyboard;
    }
    ~SecondKeyboard() {
        xcb_input_remove_master_t change{};
        change.type = XCB_INPUT_HIERARCHY_CHANGE_TYPE_REMOVE_MASTER;
        change.len = sizeof change / 4;
        change.deviceid = m_keyboard;
        change.return_mode = XCB_INPUT_CHANGE_MODE_ATTACH;
        change.return_pointer = 2;
        change.return_keyboard = 3;
        xcb_input_xi_change_hierarchy(m_connection, 1, reinterpret_cast<xcb_input_hierarchy_change_t *>(&change));
        (void)masters();
        xcb_disconnect(m_connection);
    }
    SecondKeyboard(const SecondKeyboard &) = delete;
    SecondKeyboard &operator=(const SecondKeyboard &) = delete;

    [[nodiscard]] bool exists() const { return m_keyboard > 3; }
    /// Whether another program could take it for itself.
    [[nodiscard]] bool isFree() {
        const uint32_t mask = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
        auto *const answer = xcb_input_xi_grab_device_reply(
            m_connection,
            xcb_input_xi_grab_device(m_connection, m_root, XCB_CURRENT_TIME, XCB_NONE, m_keyboard,
                                     XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC,
                                     XCB_INPUT_GRAB_OWNER_NO_OWNER, 1, &mask),
            nullptr);
        const bool isFree = answer && answer->status == XCB_GRAB_STATUS_SUCCESS;
        std::free(answer);
        xcb_input_xi_ungrab_device(m_connection, XCB_CURRENT_TIME, m_keyboard);
        xcb_flush(m_connection);
        return isFree;
    }

private:
    std::vector<std::pair<uint16_t, uint16_t>> masters() {
        std::vector<std::pair<uint16_t, uint16_t>> list;
        std::free(
            xcb_input_xi_query_version_reply(m_connection, xcb_input_xi_query_version(m_connection, 2, 2), nullptr));
        auto *const answer = xcb_input_xi_query_device_reply(
            m_connection, xcb_input_xi_query_device(m_connection, XCB_INPUT_DEVICE_ALL_MASTER), nullptr);
        for (auto each = xcb_input_xi_query_device_infos_iterator(answer); each.rem > 0;
             xcb_input_xi_device_info_next(&each))
            list.emplace_back(each.data->deviceid, each.data->type);
        std::free(answer);
        return list;
    }
    xcb_connection_t *m_connection = xcb_connect(nullptr, nullptr);
    xcb_window_t m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    uint16_t m_keyboard = 0;
};

TEST_F(X11EventTapTest, aSecondKeyboardIsTakenWhetherItWasThereOrComesLater) {
    for (const bool comesLater : {false, true}) {
        if (comesLater)
            start();
        SecondKeyboard second;
        ASSERT_TRUE(second.exists());
        if (!comesLater) {
            EXPECT_TRUE(second.isFree());
            start();
        }
        EXPECT_TRUE(waitUntil([&] { return !second.isFree(); })) << comesLater;
        tap.reset();
        EXPECT_TRUE(second.isFree()) << comesLater;
    }
}

TEST_F(X11EventTapTest, theKeyboardIsTakenHalfASecondLaterWhenAnotherProgramHoldsItForSoLong) {
    // It waits for a second, and the machine may stand still for as long.
    for (int tries = 0; tries < 5; ++tries) {
        changes = 0;
        ASSERT_TRUE(keyboard.grabKeyboard());
        QElapsedTimer clock;
        clock.start();
        tap = taps.create([this] { ++changes; });
        ASSERT_TRUE(tap);
        const auto created = clock.elapsed();
        const State first = tap->state();
        (void)waitUntil([] { return false; }, 500ms);
        const State second = tap->state();
        keyboard.ungrabKeyboard();
        (void)waitUntil([&] { return tap->state() != State::waiting; });
        if (tap->state() == State::ended && clock.elapsed() >= 1000) {
            tap.reset();
            continue;
        }
        EXPECT_LT(created, 500); // nobody waited for it
        EXPECT_EQ(first, State::waiting);
        EXPECT_EQ(second, State::waiting);
        EXPECT_EQ(tap->state(), State::dropping);
        EXPECT_EQ(changes, 1);
        return;
    }
    FAIL() << "it was not taken in the second";
}

TEST_F(X11EventTapTest, theWaitEndsAfterASecondWhenAnotherProgramHoldsTheKeyboardForTwo) {
    ASSERT_TRUE(keyboard.grabKeyboard());
    QElapsedTimer clock;
    clock.start();
    tap = taps.create([this] { ++changes; });
    ASSERT_TRUE(tap);
    EXPECT_TRUE(waitUntil([&] { return tap->state() == State::ended; }));
    EXPECT_GE(clock.elapsed(), 1000);
    (void)waitUntil([&] { return clock.elapsed() > 2000; });
    keyboard.ungrabKeyboard();
    settle();
    EXPECT_TRUE(keyboard.grabKeyboard()); // it does not come back for it
    keyboard.ungrabKeyboard();
}

TEST_F(X11EventTapTest, aServerThatGoesEndsIt) {
    QProcess server;
    server.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                                          QStringLiteral("0"), QStringLiteral("200x200x24")});
    ASSERT_TRUE(waitUntil([&] { return server.canReadLine(); }));
    const QByteArray ours = qgetenv("DISPLAY");
    qputenv("DISPLAY", ':' + server.readLine().trimmed());
    start();
    qputenv("DISPLAY", ours);
    server.kill();
    server.waitForFinished();
    EXPECT_TRUE(waitUntil([&] { return changes == 1; }));
    EXPECT_EQ(tap->state(), State::ended);
    EXPECT_FALSE(silence->covers(1));
}

TEST_F(X11EventTapTest, aMenuOfOurOwnLendsTheKeyboardAndGetsItBack) {
    struct Menu : QRasterWindow {
        void keyPressEvent(QKeyEvent *) override { ++keys; }
        int keys = 0;
    } menu;
    menu.setFlag(Qt::Popup);
    menu.setGeometry(100, 100, 80, 80);
    menu.show();
    ASSERT_TRUE(waitUntil([&] { return menu.isExposed(); }));
    ASSERT_TRUE(waitUntil([&] { return menu.setKeyboardGrabEnabled(true); }));
    keyboard.tap(key::v);
    ASSERT_TRUE(waitUntil([&] { return menu.keys == 1; }));
    start();
    keyboard.tap(key::v);
    settle();
    EXPECT_EQ(menu.keys, 1);
    tap.reset();
    EXPECT_TRUE(waitUntil([&] {
        keyboard.tap(key::v);
        settle();
        return menu.keys > 1;
    }));
}

struct Machine {
    static constexpr bool answersAtOnce = true;
    Machine() { EXPECT_TRUE(field.waitForFocus()); }
    EventTaps &taps() { return real; }
    bool keyArrives() {
        const QString before = field.text();
        keyboard.tap(key::v);
        return field.waitForText(before + QLatin1Char('v'), 300ms);
    }
    void hold() { ASSERT_TRUE(keyboard.grabKeyboard()); }
    void letGo() { keyboard.ungrabKeyboard(); }
    template <class Condition>
    bool comes(Condition condition) {
        return waitUntil(condition, 2s);
    }
    TestKeyboard keyboard;
    testing::ForeignWindow field{QString::fromUtf8(TAVRINE_QT_LINE_EDIT)};
    X11EventTaps real{std::make_shared<KeyboardSilence>()};
};

TEST(KeyboardSilenceTest, coversEverythingWhileItLastsAndAfterwardsWhatWasDroppedToTheMillisecond) {
    KeyboardSilence silence;
    EXPECT_FALSE(silence.covers(0));
    silence.begin();
    EXPECT_TRUE(silence.covers(5));
    silence.drop(0xffff'fff0U); // the server's time begins anew
    silence.drop(0x10);
    EXPECT_TRUE(silence.covers(0x20));
    silence.end();
    EXPECT_FALSE(silence.covers(0xffff'ffefU));
    EXPECT_TRUE(silence.covers(0xffff'fff0U));
    EXPECT_TRUE(silence.covers(0x10));
    EXPECT_FALSE(silence.covers(0x11));
    silence.begin();
    silence.end();
    EXPECT_FALSE(silence.covers(0x10));
}

} // namespace
} // namespace tavrine

namespace tavrine::test {
INSTANTIATE_TYPED_TEST_SUITE_P(X11, EventTapContract, Machine);
} // namespace tavrine::test
