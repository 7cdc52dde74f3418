// The keyboard is free for the lock screen when the machine goes to sleep or the session is locked.

#include "adapters/x11/X11EventTap.h"
#include "support/DBusMock.h"
#include "support/Program.h"
#include "support/TestKeyboard.h"

#include <QDBusArgument>
#include <QRasterWindow>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using State = EventTap::State;

const PrivateBus &systemBusOfTests = privateSystemBus();

const auto logindName = QStringLiteral("org.freedesktop.login1");
const auto logindPath = QStringLiteral("/org/freedesktop/login1");
const auto mockInterface = QStringLiteral("org.freedesktop.DBus.Mock");

/// Who tells of it, and how; `begins` is false for waking and for unlocking.
struct Teller {
    const char *name;
    void (*tell)(const DBusMock &logind, bool begins);
};

void prepareForSleep(const DBusMock &logind, bool begins) {
    (void)logind.call(logindPath, mockInterface, QStringLiteral("EmitSignal"),
                      {logindName + QStringLiteral(".Manager"), QStringLiteral("PrepareForSleep"), QStringLiteral("b"),
                       QVariantList{begins}});
}

void lockSession(const DBusMock &logind, const char *session, bool begins) {
    const auto method = begins ? QStringLiteral("Lock") : QStringLiteral("Unlock");
    (void)logind.call(logindPath + QStringLiteral("/session/") + QLatin1String(session), mockInterface,
                      QStringLiteral("EmitSignal"),
                      {logindName + QStringLiteral(".Session"), method, QString(), QVariantList()});
}

void lockFirstSession(const DBusMock &logind, bool begins) {
    lockSession(logind, "c1", begins);
}

template <const auto &interface>
void changeLockScreen(const DBusMock & /*logind*/, bool begins) {
    auto signal = QDBusMessage::createSignal(QStringLiteral("/ScreenSaver"), QLatin1String(interface),
                                             QStringLiteral("ActiveChanged"));
    signal << begins;
    QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("test-session")).send(signal);
}

constexpr char freedesktop[] = "org.freedesktop.ScreenSaver";
constexpr char gnome[] = "org.gnome.ScreenSaver";
constexpr char cinnamon[] = "org.cinnamon.ScreenSaver";
constexpr char mate[] = "org.mate.ScreenSaver";
constexpr char xfce[] = "org.xfce.ScreenSaver";

const Teller tellers[] = {{"Sleep", &prepareForSleep},
                          {"Lock", &lockFirstSession},
                          {"ScreenSaver", &changeLockScreen<freedesktop>},
                          {"Gnome", &changeLockScreen<gnome>},
                          {"Cinnamon", &changeLockScreen<cinnamon>},
                          {"Mate", &changeLockScreen<mate>},
                          {"Xfce", &changeLockScreen<xfce>}};

class EventTapInSessionTest : public ::testing::TestWithParam<Teller> {
protected:
    EventTapInSessionTest() {
        qunsetenv("XDG_SESSION_ID");
        for (const char *session : {"c1", "c2"})
            (void)logind.call(logindPath, mockInterface, QStringLiteral("AddSession"),
                              {QLatin1String(session), QStringLiteral("seat0"), uid, QStringLiteral("somebody"), true});
    }
    ~EventTapInSessionTest() override { qunsetenv("XDG_SESSION_ID"); }

    /// Whether the keyboard stays blocked when another session is locked, and not when this one is, the second.
    void expectThatOnlyTheSecondSessionCounts() {
        start();
        ASSERT_TRUE(eventually(
            [this] {
                lockSession(logind, "c2", true);
                return changes > 0;
            },
            3s));
        tap.reset();
        letPass(100ms);
        changes = 0;
        start();
        letPass(100ms);
        lockSession(logind, "c1", true);
        letPass(100ms);
        EXPECT_EQ(tap->state(), State::dropping);
        lockSession(logind, "c2", true);
        EXPECT_TRUE(eventually([this] { return tap->state() == State::gaveWay; }, 1s));
    }
    void start() {
        tap = taps.create([this] { ++changes; });
        ASSERT_TRUE(tap);
    }
    void tell(bool begins) { GetParam().tell(logind, begins); }
    /// The buses are opened behind the tap: it is told until it hears.
    [[nodiscard]] bool endsWhenTold() {
        return eventually(
            [this] {
                tell(true);
                return changes > 0;
            },
            3s);
    }

    /// And everything that was told has come.
    void openBuses() {
        start();
        ASSERT_TRUE(endsWhenTold());
        tap.reset();
        letPass(100ms);
        changes = 0;
    }

    static constexpr uint uid = 1000;
    DBusMock logind{DBusMock::Bus::system, QStringLiteral("logind"), logindName};
    testing::TestKeyboard keyboard;
    X11EventTaps taps{std::make_shared<KeyboardSilence>()};
    std::unique_ptr<EventTap> tap;
    int changes = 0;
};

INSTANTIATE_TEST_SUITE_P(By, EventTapInSessionTest, ::testing::ValuesIn(tellers),
                         [](const auto &each) { return std::string(each.param.name); });

TEST_P(EventTapInSessionTest, theKeyboardIsFreeForTheLockScreenAndIsNotTakenAgain) {
    start();
    ASSERT_EQ(tap->state(), State::dropping);
    EXPECT_FALSE(keyboard.grabKeyboard());
    ASSERT_TRUE(endsWhenTold());
    EXPECT_EQ(tap->state(), State::gaveWay);
    EXPECT_TRUE(keyboard.grabKeyboard());
    keyboard.ungrabKeyboard();
    tell(false);
    tell(true);
    letPass(50ms);
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(keyboard.grabKeyboard());
}

TEST_P(EventTapInSessionTest, wakingAndUnlockingEndNothing) {
    openBuses();
    start();
    letPass(50ms);
    tell(false);
    letPass(50ms);
    EXPECT_EQ(tap->state(), State::dropping);
    EXPECT_FALSE(keyboard.grabKeyboard());
    EXPECT_TRUE(endsWhenTold());
}

class EventTapAndLockTest : public EventTapInSessionTest {};
INSTANTIATE_TEST_SUITE_P(By, EventTapAndLockTest, ::testing::Values(tellers[1]),
                         [](const auto &each) { return std::string(each.param.name); });

TEST_P(EventTapAndLockTest, aLockOfAnotherSessionEndsNothing) {
    qputenv("XDG_SESSION_ID", "c2");
    expectThatOnlyTheSecondSessionCounts();
}

TEST_P(EventTapAndLockTest, withoutANumberOfItsOwnItBelongsToThePersonsSessionWithAScreen) {
    const auto self = logindPath + QStringLiteral("/user/self");
    const auto interface = logindName + QStringLiteral(".User");
    static_cast<void>(
        outputOf(QStringLiteral("gdbus"),
                 {QStringLiteral("call"), QStringLiteral("--address"), qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS"),
                  QStringLiteral("--dest"), logindName, QStringLiteral("--object-path"), logindPath,
                  QStringLiteral("--method"), mockInterface + QStringLiteral(".AddObject"), self, interface,
                  QStringLiteral("{'Display': <('c2', objectpath '%1/session/c2')>}").arg(logindPath),
                  QStringLiteral("@a(ssss) []")}));
    expectThatOnlyTheSecondSessionCounts();
}

class EventTapAndSleepTest : public EventTapInSessionTest {};
INSTANTIATE_TEST_SUITE_P(By, EventTapAndSleepTest, ::testing::Values(tellers[0]),
                         [](const auto &each) { return std::string(each.param.name); });

TEST_P(EventTapAndSleepTest, aTapThatWaitsForTheKeyboardTakesItNoMore) {
    openBuses();
    ASSERT_TRUE(keyboard.grabKeyboard()); // the lock screen was faster
    start();
    letPass(50ms);
    ASSERT_EQ(tap->state(), State::waiting);
    tell(true);
    EXPECT_TRUE(eventually([this] { return tap->state() == State::gaveWay; }, 500ms)); // sooner than by itself
    keyboard.ungrabKeyboard();
    letPass(100ms);
    EXPECT_TRUE(keyboard.grabKeyboard());
}

TEST_P(EventTapAndSleepTest, aMenuOfOurOwnThatLentTheKeyboardIsClosed) {
    QRasterWindow menu;
    menu.setFlag(Qt::Popup);
    menu.setGeometry(100, 100, 80, 80);
    menu.show();
    ASSERT_TRUE(eventually([&] { return menu.isExposed() && menu.setKeyboardGrabEnabled(true); }));
    start();
    ASSERT_TRUE(endsWhenTold());
    tap.reset();
    EXPECT_FALSE(menu.isVisible());
    EXPECT_TRUE(eventually([this] { return keyboard.grabKeyboard() && keyboard.grabPointer(); }));
}

TEST_P(EventTapAndSleepTest, nobodyListensWithoutATap) {
    using Rules = QMap<QString, QStringList>;
    const auto areHeard = [this] {
        const auto answer = logind.connection().call(QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus.Debug.Stats"), QStringLiteral("GetAllMatchRules")));
        EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << answer.errorMessage().toStdString();
        QStringList all;
        for (const QStringList &rules : qdbus_cast<Rules>(answer.arguments().value(0)))
            all += rules;
        return all.join(u'\n').contains(QStringLiteral("PrepareForSleep"));
    };
    start();
    EXPECT_TRUE(eventually(areHeard, 3s));
    tap.reset();
    EXPECT_TRUE(eventually([&] { return !areHeard(); }, 3s));
    start();
    EXPECT_TRUE(eventually(areHeard, 3s));
}

} // namespace
} // namespace tavrine::test
