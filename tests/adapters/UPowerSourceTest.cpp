// The power source, with a UPower that changes, hangs and is started anew.

#include "adapters/linux/UPowerSource.h"

#include "support/DBusMock.h"

#include <QDBusVirtualObject>
#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

const PrivateBus &upowersBus = privateSystemBus();

constexpr uint unknownType = 0;
constexpr uint batteryType = 2;
constexpr uint mouseType = 5;

class UPower : public DBusMock {
public:
    UPower() : DBusMock(Bus::system, QStringLiteral("upower"), QStringLiteral("org.freedesktop.UPower")) {}
    ~UPower() { goOn(); }

    void setBattery(uint type, bool isPresent, double percentage = 50.0) const {
        mock(QStringLiteral("SetupDisplayDevice"),
             {type, 2U, percentage, 50.0, 100.0, 1.0, qlonglong(60), qlonglong(60), isPresent, QString(), 1U});
    }
    void setOnBattery(bool isOnBattery) const {
        mock(QStringLiteral("UpdateProperties"),
             {QStringLiteral("org.freedesktop.UPower"), QVariantMap{{QStringLiteral("OnBattery"), isOnBattery}}});
    }

private:
    QVariantList mock(const QString &method, const QVariantList &arguments = {}) const {
        return call(QStringLiteral("/org/freedesktop/UPower"), QStringLiteral("org.freedesktop.DBus.Mock"), method,
                    arguments);
    }
};

/// A UPower that counts what it is asked, which the mock does not.
class CountingUPower final : public QDBusVirtualObject {
public:
    CountingUPower() {
        m_bus.registerVirtualObject(QStringLiteral("/org/freedesktop/UPower"), this, QDBusConnection::SubPath);
        m_bus.registerService(QStringLiteral("org.freedesktop.UPower"));
    }
    ~CountingUPower() override { QDBusConnection::disconnectFromBus(QStringLiteral("counting")); }

    int asked = 0;

    void tell(const QString &interface, const QString &property, const QVariant &value) {
        auto notice = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/UPower/devices/DisplayDevice"),
                                                 QStringLiteral("org.freedesktop.DBus.Properties"),
                                                 QStringLiteral("PropertiesChanged"));
        notice << interface << QVariantMap{{property, value}} << QStringList();
        m_bus.send(notice);
    }
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        if (message.member() != QLatin1String("GetAll"))
            return false;
        ++asked;
        return bus.send(message.createReply(QVariantMap{{QStringLiteral("OnBattery"), false},
                                                        {QStringLiteral("IsPresent"), true},
                                                        {QStringLiteral("Type"), batteryType}}));
    }

private:
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("counting"));
};

class UPowerSourceTest : public testing::Test {
protected:
    [[nodiscard]] QString state() {
        const auto sources = source.sources();
        return sources.isEmpty() ? QString() : sources.first().value(QStringLiteral("Power Source State")).toString();
    }
    [[nodiscard]] bool becomes(const char *expected) {
        return eventually([&] { return state() == QLatin1String(expected); }, 1s);
    }

    UPowerSource source{Seconds{0}};
};

TEST_F(UPowerSourceTest, aDesktopMachineHasNoSourceAlsoOnceUPowerHasAnswered) {
    const UPower upower;
    upower.setBattery(unknownType, false);
    EXPECT_EQ(state(), QString());
    letPass(200ms);
    EXPECT_EQ(state(), QString());
    upower.setBattery(mouseType, true);
    letPass(200ms);
    EXPECT_EQ(state(), QString()) << "the battery of a mouse is none of the machine's";
}

TEST_F(UPowerSourceTest, whatIsThereBeforeTheFirstReadingIsKnown) {
    const UPower upower;
    upower.setBattery(batteryType, true);
    upower.setOnBattery(true);
    EXPECT_TRUE(becomes("Battery Power"));
}

TEST_F(UPowerSourceTest, theAnswerThatIsToldFirstHasTheBatteryAndTheMachine) {
    const UPower upower;
    upower.setBattery(batteryType, true);
    for (const bool isOnBattery : {true, false}) { // one is known of the machine alone, the other of its battery
        upower.setOnBattery(isOnBattery);
        UPowerSource anew{Seconds{0}};
        QString first = QStringLiteral("none");
        anew.whenKnown([&] {
            const auto sources = anew.sources();
            first = sources.value(0).value(QLatin1String(PowerSource::stateKey)).toString();
        });
        EXPECT_TRUE(eventually([&] { return first != QStringLiteral("none"); }));
        EXPECT_EQ(first, isOnBattery ? QStringLiteral("Battery Power") : QStringLiteral("AC Power"));
    }
}

TEST_F(UPowerSourceTest, whereThereIsNobodyToAskThatIsKnownToo) {
    bool isKnown = false;
    source.whenKnown([&] { isKnown = true; });
    EXPECT_TRUE(eventually([&] { return isKnown; }));
    EXPECT_EQ(state(), QString());
}

TEST_F(UPowerSourceTest, aUPowerThatHangsIsWaitedForAndOneThatEndsIsNot) {
    UPower upower;
    upower.hang();
    bool isKnown = false;
    source.whenKnown([&] { isKnown = true; });
    letPass(300ms);
    EXPECT_FALSE(isKnown);
    upower.end();
    EXPECT_TRUE(eventually([&] { return isKnown; }));
}

TEST_F(UPowerSourceTest, aBatteryThatIsPutInAndTakenOutIsFollowed) {
    const UPower upower;
    static_cast<void>(state());
    upower.setBattery(batteryType, true);
    EXPECT_TRUE(becomes("AC Power"));
    upower.setBattery(batteryType, false);
    EXPECT_TRUE(becomes(""));
}

TEST_F(UPowerSourceTest, aUPowerThatIsStartedAnewIsAskedAgain) {
    UPower upower;
    upower.setBattery(batteryType, true);
    upower.setOnBattery(true);
    ASSERT_TRUE(becomes("Battery Power"));
    upower.end();
    EXPECT_TRUE(becomes("")) << "nobody to ask counts as plugged in";
    upower.start();
    upower.setOnBattery(true);
    EXPECT_TRUE(becomes("Battery Power"));
}

TEST_F(UPowerSourceTest, withAUPowerThatHangsTheLastStateIsReadAtOnce) {
    const UPower upower;
    upower.setBattery(batteryType, true);
    upower.setOnBattery(true);
    ASSERT_TRUE(becomes("Battery Power"));
    upower.hang();
    QElapsedTimer timer;
    timer.start();
    for (int reading = 0; reading < 1000; ++reading)
        EXPECT_EQ(state(), QStringLiteral("Battery Power"));
    EXPECT_LT(timer.elapsed(), 200);
}

TEST_F(UPowerSourceTest, readingsAndNoticesOfTheChargeAskNobody) {
    const auto device = QStringLiteral("org.freedesktop.UPower.Device");
    CountingUPower upower;
    ASSERT_TRUE(becomes("AC Power"));
    ASSERT_TRUE(eventually([&] { return upower.asked == 2; })) << "of the machine, and of its battery";
    for (int reading = 0; reading < 100; ++reading)
        static_cast<void>(state());
    upower.tell(device, QStringLiteral("Percentage"), 49.0);
    letPass(200ms);
    EXPECT_EQ(upower.asked, 2);
    upower.tell(device, QStringLiteral("IsPresent"), false);
    EXPECT_TRUE(eventually([&] { return upower.asked == 4; })) << "a notice is a reason to ask, and not believed";
    EXPECT_EQ(state(), QStringLiteral("AC Power"));
}

} // namespace
} // namespace tavrine::test
