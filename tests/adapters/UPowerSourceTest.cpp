// The power source, with a UPower that changes, hangs and is started anew.

#include "adapters/linux/UPowerSource.h"

#include "support/DBusMock.h"

#include <QDBusArgument>
#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

const PrivateBus &systemBusOfTests = privateSystemBus();

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
    /// Questions that it was asked.
    [[nodiscard]] qsizetype asked() const {
        const auto list = mock(QStringLiteral("GetCalls")).value(0).value<QDBusArgument>();
        qsizetype count = 0;
        for (list.beginArray(); !list.atEnd(); ++count) {
            qulonglong moment = 0;
            QString method;
            QVariantList arguments;
            list.beginStructure();
            list >> moment >> method >> arguments;
            list.endStructure();
        }
        return count;
    }

private:
    QVariantList mock(const QString &method, const QVariantList &arguments = {}) const {
        return call(QStringLiteral("/org/freedesktop/UPower"), QStringLiteral("org.freedesktop.DBus.Mock"), method,
                    arguments);
    }
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
    const UPower upower;
    upower.setBattery(batteryType, true, 50);
    ASSERT_TRUE(becomes("AC Power"));
    letPass(100ms);
    const auto asked = upower.asked();
    for (int reading = 0; reading < 100; ++reading)
        static_cast<void>(state());
    letPass(200ms);
    EXPECT_EQ(upower.asked(), asked);
}

} // namespace
} // namespace tavrine::test
