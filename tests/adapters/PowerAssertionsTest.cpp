// What keeps the machine awake, with services that hang, end, refuse and come back, and with the X server itself.

#include "adapters/ScreenSaverWatch.h"
#include "adapters/linux/InhibitingServices.h"
#include "adapters/linux/LinuxPowerAssertions.h"
#include "adapters/x11/X11ScreenSaverKeeper.h"
#include "support/DBusMock.h"
#include "support/InhibitService.h"
#include "support/Program.h"

#include <QDBusArgument>
#include <QElapsedTimer>

#include <optional>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const PrivateBus &systemBusOfTests = privateSystemBus();

const auto screenSaverName = QStringLiteral("org.freedesktop.ScreenSaver");
const auto sessionManagerName = QStringLiteral("org.gnome.SessionManager");
const auto powerManagementName = QStringLiteral("org.freedesktop.PowerManagement");
const auto displayLine = QStringLiteral("Tavrine, Tavrine Keep Awake");

/// logind, as the mock plays it.
class Logind : public DBusMock {
public:
    Logind() : DBusMock(Bus::system, QStringLiteral("logind"), QStringLiteral("org.freedesktop.login1")) {}
    ~Logind() { goOn(); }

    [[nodiscard]] QStringList locks() const {
        const QVariantList answer =
            call(QStringLiteral("/org/freedesktop/login1"), QStringLiteral("org.freedesktop.login1.Manager"),
                 QStringLiteral("ListInhibitors"));
        QStringList what;
        if (answer.isEmpty())
            return what;
        const auto list = answer.first().value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            QString kind;
            list.beginStructure();
            list >> kind;
            list.endStructure();
            what.append(kind);
        }
        list.endArray();
        what.sort();
        return what;
    }
    [[nodiscard]] qsizetype inhibitCalls() const {
        const QVariantList answer =
            call(QStringLiteral("/org/freedesktop/login1"), QStringLiteral("org.freedesktop.DBus.Mock"),
                 QStringLiteral("GetMethodCalls"), {QStringLiteral("Inhibit")});
        const auto list = answer.value(0).value<QDBusArgument>();
        qsizetype count = 0;
        for (list.beginArray(); !list.atEnd(); ++count) {
            qulonglong moment = 0;
            QVariantList arguments;
            list.beginStructure();
            list >> moment >> arguments;
            list.endStructure();
        }
        list.endArray();
        return count;
    }
};

class PowerAssertionsTest : public testing::Test {
protected:
    quint32 create(PowerAssertionType type) {
        result.reset();
        return assertions->createWithName(type, QStringLiteral("Tavrine Keep Awake"),
                                          [this](int given) { result = given; });
    }
    /// Its result, waited for.
    int hold(PowerAssertionType type) {
        id = create(type);
        static_cast<void>(eventually([this] { return result.has_value(); }, 3s));
        return result.value_or(-1);
    }

    std::optional<LinuxPowerAssertions> assertions{std::in_place, makeInhibitingServices(), makeLastResorts()};
    quint32 id = 0;
    std::optional<int> result;
};

TEST_F(PowerAssertionsTest, eachServiceIsAskedForWhatItCanHoldOffAndGivenItBack) {
    const Logind logind;
    const InhibitService screenSaver(screenSaverName);
    const InhibitService sessionManager(sessionManagerName);
    const InhibitService powerManagement(powerManagementName);
    const auto locks = [&] { return logind.locks(); };

    EXPECT_EQ(hold(PowerAssertionType::noDisplaySleep), PowerAssertions::success);
    EXPECT_TRUE(eventually([&] { return locks() == QStringList{QStringLiteral("idle")}; }))
        << "a person may still ask for the suspend";
    EXPECT_TRUE(eventually([&] { return powerManagement.held().size() == 1; }));
    EXPECT_EQ(screenSaver.held(), QStringList{displayLine});
    EXPECT_EQ(sessionManager.held(), QStringList{QStringLiteral("Tavrine, 0, Tavrine Keep Awake, 8")});
    assertions->release(id);
    EXPECT_TRUE(eventually([&] {
        return locks().isEmpty() && screenSaver.held().isEmpty() && sessionManager.held().isEmpty() &&
               powerManagement.held().isEmpty();
    }));

    EXPECT_EQ(hold(PowerAssertionType::preventSystemSleep), PowerAssertions::success);
    assertions->setAppliesOnLidClose(id);
    EXPECT_TRUE(eventually([&] {
        return locks() == QStringList{QStringLiteral("handle-lid-switch"), QStringLiteral("sleep")};
    }));
    EXPECT_TRUE(eventually([&] { return powerManagement.held().isEmpty(); })) << "it may keep the screen on as well";
    EXPECT_TRUE(screenSaver.held().isEmpty());
    EXPECT_EQ(sessionManager.held(), QStringList{QStringLiteral("Tavrine, 0, Tavrine Keep Awake, 4")});
    assertions.reset();
    EXPECT_TRUE(eventually([&] { return locks().isEmpty() && sessionManager.held().isEmpty(); }));
}

TEST_F(PowerAssertionsTest, whatIsAssertedAnewInTheSameTurnIsNeverGivenBack) {
    const Logind logind;
    const InhibitService sessionManager(sessionManagerName);
    ASSERT_EQ(hold(PowerAssertionType::preventSystemSleep), PowerAssertions::success);
    ASSERT_TRUE(eventually(
        [&] { return logind.locks() == QStringList{QStringLiteral("sleep")} && sessionManager.held().size() == 1; }));
    const qsizetype calls = logind.inhibitCalls();
    const int asked = sessionManager.asked;
    assertions->release(id);
    EXPECT_EQ(hold(PowerAssertionType::preventSystemSleep), PowerAssertions::success);
    letPass(100ms);
    EXPECT_EQ(logind.inhibitCalls(), calls);
    EXPECT_EQ(sessionManager.asked, asked);
}

TEST_F(PowerAssertionsTest, whereTheScreenMayBlankASessionManagerOrThePowerManagerSparesTheOthers) {
    const Logind logind;
    const InhibitService powerManagement(powerManagementName);
    const auto nothing = [&] { return logind.locks().isEmpty(); };
    EXPECT_EQ(hold(PowerAssertionType::noIdleSleep), PowerAssertions::success);
    EXPECT_TRUE(eventually(nothing)) << "Plasma takes logind's idleness for the screen's";
    EXPECT_EQ(powerManagement.held(), QStringList{displayLine});
    {
        const InhibitService sessionManager(sessionManagerName);
        const QStringList expected{QStringLiteral("Tavrine, 0, Tavrine Keep Awake, 4")};
        EXPECT_TRUE(eventually([&] { return sessionManager.held() == expected && powerManagement.held().isEmpty(); }));
        EXPECT_TRUE(nothing());
    }
    EXPECT_TRUE(eventually([&] { return !powerManagement.held().isEmpty(); })) << "it is the next again";
}

TEST_F(PowerAssertionsTest, withLogindAloneItIsToldThatNobodyIsIdle) {
    const Logind logind;
    EXPECT_EQ(hold(PowerAssertionType::noIdleSleep), PowerAssertions::success);
    EXPECT_EQ(logind.locks(), QStringList{QStringLiteral("idle")});
    assertions->release(id);
    EXPECT_TRUE(eventually([&] { return logind.locks().isEmpty(); }));
}

TEST_F(PowerAssertionsTest, aSessionManagerThatHangsOrRefusesOverAnotherTypeHasNotTakenIt) {
    InhibitService sessionManager(sessionManagerName);
    ASSERT_EQ(hold(PowerAssertionType::noIdleSleep), PowerAssertions::success);
    sessionManager.isHanging = true;
    assertions->release(id);
    EXPECT_NE(hold(PowerAssertionType::noDisplaySleep), PowerAssertions::success);
    sessionManager.goOn();
    EXPECT_TRUE(eventually([&] { return sessionManager.held().isEmpty(); }));

    ASSERT_EQ(hold(PowerAssertionType::noIdleSleep), PowerAssertions::success);
    sessionManager.isRefusing = true;
    assertions->release(id);
    EXPECT_NE(hold(PowerAssertionType::noDisplaySleep), PowerAssertions::success);
    EXPECT_TRUE(eventually([&] { return sessionManager.held().isEmpty(); }));
}

TEST_F(PowerAssertionsTest, thePowerManagerKeepsAMachineUpThatHasNobodyElse) {
    const InhibitService powerManagement(powerManagementName);
    EXPECT_EQ(hold(PowerAssertionType::noIdleSleep), PowerAssertions::success);
    EXPECT_EQ(powerManagement.held(), QStringList{displayLine});
}

TEST_F(PowerAssertionsTest, aServiceThatCannotKeepThePromiseIsNoSuccess) {
    const InhibitService screenSaver(screenSaverName);
    EXPECT_NE(hold(PowerAssertionType::noIdleSleep), PowerAssertions::success);
    {
        const Logind logind; // which knows nothing of screens
        InhibitService refusing(sessionManagerName);
        refusing.isRefusing = true;
        EXPECT_EQ(hold(PowerAssertionType::noIdleSleep), PowerAssertions::success);
        assertions->release(id);
        EXPECT_TRUE(eventually([&] { return logind.locks().isEmpty(); }));
    }
    InhibitService refusing(sessionManagerName);
    refusing.isRefusing = true;
    EXPECT_NE(hold(PowerAssertionType::preventSystemSleep), PowerAssertions::success);
    EXPECT_THAT(refusing.asked,
                testing::AllOf(testing::Ge(1), testing::Le(2))); // again when it is told that it has come
}

TEST_F(PowerAssertionsTest, daemonsThatAreStartedAnewAreAskedAgainWithinASecond) {
    Logind logind;
    InhibitService screenSaver(screenSaverName);
    ASSERT_EQ(hold(PowerAssertionType::noDisplaySleep), PowerAssertions::success);
    for (int i = 0; i < 2; ++i) {
        logind.end();
        screenSaver.end();
        letPass(50ms);
        screenSaver.start();
        logind.start();
        EXPECT_TRUE(eventually([&] { return screenSaver.held() == QStringList{displayLine}; }, 1s));
        EXPECT_TRUE(eventually([&] { return logind.locks().size() == 1; }, 1s));
    }
    assertions->release(id);
    EXPECT_TRUE(eventually([&] { return logind.locks().isEmpty() && screenSaver.held().isEmpty(); }, 1s));
}

TEST_F(PowerAssertionsTest, aDaemonThatStartsLaterIsAskedToo) {
    InhibitService screenSaver(screenSaverName);
    ASSERT_EQ(hold(PowerAssertionType::noDisplaySleep), PowerAssertions::success);
    const Logind logind;
    EXPECT_TRUE(eventually([&] { return logind.locks().size() == 1; }, 1s));
}

TEST_F(PowerAssertionsTest, aStoppedDaemonHoldsNobodyAndIsBelievedWhenItGoesOn) {
    const Logind logind;
    const InhibitService screenSaver(screenSaverName);
    logind.hang();
    QElapsedTimer turn;
    turn.start();
    qint64 longestTurn = 0;
    id = create(PowerAssertionType::noDisplaySleep);
    EXPECT_TRUE(eventually([&] {
        longestTurn = std::max(longestTurn, turn.restart());
        return result.has_value();
    }));
    EXPECT_EQ(result, PowerAssertions::success) << "the screen is kept on";
    EXPECT_LT(longestTurn, 200);
    logind.goOn();
    EXPECT_TRUE(eventually([&] { return logind.locks().size() == 1; }, 1s));
}

TEST_F(PowerAssertionsTest, theAnswerToWhatIsNotWantedAnyMoreIsGivenBack) {
    const Logind logind;
    InhibitService screenSaver(screenSaverName);
    screenSaver.isHanging = true;
    logind.hang();
    EXPECT_NE(hold(PowerAssertionType::noDisplaySleep), PowerAssertions::success);
    logind.goOn();
    screenSaver.goOn();
    EXPECT_EQ(screenSaver.asked, 1);
    EXPECT_TRUE(eventually([&] { return screenSaver.held().isEmpty(); }));
    EXPECT_TRUE(eventually([&] { return logind.inhibitCalls() == 1 && logind.locks().isEmpty(); }));
    letPass(100ms);
    EXPECT_THAT(logind.locks(), IsEmpty());
}

// The X server.

TEST(X11ScreenSaver, doesNotComeWhileTheScreenIsKeptOnAndComesAfterwards) {
    ScreenSaverWatch watch;
    X11ScreenSaverKeeper keeper;
    int changes = 0;
    keeper.setOnChange([&] { ++changes; });
    keeper.want({.display = true, .sleep = true}, {});
    EXPECT_TRUE(keeper.isAsking());
    ASSERT_TRUE(eventually([&] { return changes == 1; }));
    EXPECT_TRUE(keeper.held().display);
    EXPECT_FALSE(keeper.held().sleep);
    EXPECT_FALSE(watch.comes());
    keeper.want({.sleep = true}, {});
    EXPECT_FALSE(keeper.held().display);
    EXPECT_TRUE(watch.comes());
}

TEST(X11ScreenSaver, whoWatchesTheIdleTimeSeesSomebody) {
    ScreenSaverWatch watch;
    X11ScreenSaverKeeper keeper(100ms);
    keeper.want({.display = true}, {});
    letPass(300ms);
    for (int i = 0; i < 10; ++i) {
        letPass(40ms);
        EXPECT_LT(watch.idleTime(), 200ms);
    }
    keeper.want({}, {});
    EXPECT_TRUE(eventually([&] { return watch.idleTime() > 400ms; }, 2s));
}

TEST(X11ScreenSaver, aScreenThatIsBlankAlreadyStaysBlank) {
    ScreenSaverWatch watch;
    ASSERT_TRUE(watch.comes());
    X11ScreenSaverKeeper keeper(50ms);
    keeper.want({.display = true}, {});
    letPass(300ms);
    EXPECT_TRUE(watch.isBlank());
}

TEST(X11ScreenSaver, isGivenBackAlsoWhenItWasNotTakenYet) {
    ScreenSaverWatch watch;
    {
        X11ScreenSaverKeeper keeper;
        keeper.want({.display = true}, {});
        keeper.want({}, {});
        keeper.want({.display = true}, {});
    }
    EXPECT_TRUE(watch.comes());
}

TEST(X11ScreenSaver, noSettingOfTheServerIsTouched) {
    const auto settings = [] { return outputOf(QStringLiteral("xset"), {QStringLiteral("q")}); };
    const QString before = settings();
    ASSERT_THAT(before.toStdString(), testing::HasSubstr("Screen Saver"));
    X11ScreenSaverKeeper keeper;
    keeper.want({.display = true}, {});
    ASSERT_TRUE(eventually([&] { return keeper.held().display; }));
    EXPECT_EQ(settings(), before);
}

// A launch on battery, which is known a second later.

TEST(LaunchOnBattery, endsWhatWasSwitchedOnForMainsPowerBeforeTheFirstTick) {
    const Logind logind;
    const DBusMock upower(DBusMock::Bus::system, QStringLiteral("upower"), QStringLiteral("org.freedesktop.UPower"));
    const auto tell = [&](const char *method, const QVariantList &arguments) {
        static_cast<void>(upower.call(QStringLiteral("/org/freedesktop/UPower"),
                                      QStringLiteral("org.freedesktop.DBus.Mock"), QLatin1String(method), arguments));
    };
    tell("SetupDisplayDevice",
         {2U, 2U, 50.0, 50.0, 100.0, 1.0, qlonglong(60), qlonglong(60), true, QStringLiteral("battery"), 1U});
    tell("UpdateProperties",
         {QStringLiteral("org.freedesktop.UPower"), QVariantMap{{QStringLiteral("OnBattery"), true}}});
    const Program forMains(QStringLiteral(KEEP_AWAKE),
                           {QStringLiteral("displayAwake"), QStringLiteral("charging-only")});
    EXPECT_TRUE(eventually([&] { return !logind.locks().isEmpty(); }));
    EXPECT_TRUE(eventually([&] { return logind.locks().isEmpty(); }, 5s));
    const Program forAny(QStringLiteral(KEEP_AWAKE), {QStringLiteral("displayAwake")});
    EXPECT_TRUE(eventually([&] { return !logind.locks().isEmpty(); }));
    letPass(2s);
    EXPECT_FALSE(logind.locks().isEmpty());
}

// A process that is killed.

TEST(KilledProgram, leavesNothingInhibited) {
    const Logind logind;
    const InhibitService screenSaver(screenSaverName);
    ScreenSaverWatch watch;
    Program program(QStringLiteral(KEEP_AWAKE), {QStringLiteral("displayAwake")});
    ASSERT_TRUE(eventually([&] { return logind.locks().size() == 1 && screenSaver.held().size() == 1; }));
    letPass(100ms); // the server is asked last
    watch.wake();
    EXPECT_FALSE(watch.comes());
    program.end();
    EXPECT_TRUE(eventually([&] { return logind.locks().isEmpty() && screenSaver.held().isEmpty(); }));
    EXPECT_TRUE(watch.comes());
}

TEST(KilledProgram, heldTheLidByItsSchedule) {
    const Logind logind;
    Program program(QStringLiteral(KEEP_AWAKE), {QStringLiteral("lidClosed"), QStringLiteral("schedule")});
    const QStringList expected{QStringLiteral("handle-lid-switch"), QStringLiteral("sleep")};
    EXPECT_TRUE(eventually([&] { return logind.locks() == expected; }));
    program.end();
    EXPECT_TRUE(eventually([&] { return logind.locks().isEmpty(); }));
}

} // namespace
} // namespace tavrine::test
