// The keyboard is free for the lock screen when the machine goes to sleep or the session is locked.

#include "adapters/x11/X11EventTap.h"
#include "support/DBusMock.h"
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

void lockSession(const DBusMock &logind, bool begins) {
    const auto method = begins ? QStringLiteral("Lock") : QStringLiteral("Unlock");
    (void)logind.call(logindPath + QStringLiteral("/session/c1"), mockInterface, QStringLiteral("EmitSignal"),
                      {logindName + QStringLiteral(".Session"), method, QString(), QVariantList()});
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
                          {"Lock", &lockSession},
                          {"ScreenSaver", &changeLockScreen<freedesktop>},
                          {"Gnome", &changeLockScreen<gnome>},
                          {"Cinnamon", &changeLockScreen<cinnamon>},
                          {"Mate", &changeLockScreen<mate>},
                          {"Xfce", &changeLockScreen<xfce>}};

class EventTapInSessionTest : public ::testing::TestWithParam<Teller> {
protected:
    EventTapInSessionTest() {
        (void)logind.call(logindPath, mockInterface, QStringLiteral("AddSession"),
                          {QStringLiteral("c1"), QStringLiteral("seat0"), 1000U, QStringLiteral("somebody"), true});
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
