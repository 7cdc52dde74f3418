// The adapters of the machine's power and of notifications under their contracts, with the daemons of a desktop on
// private buses.

#include "adapters/linux/DesktopNotifications.h"
#include "adapters/linux/InhibitingServices.h"
#include "adapters/linux/LinuxPowerAssertions.h"
#include "adapters/linux/UPowerSource.h"
#include "contracts/PowerContract.h"
#include "support/DBusMock.h"
#include "support/InhibitService.h"

#include <QDBusArgument>

namespace tavrine::test {
namespace {

const PrivateBus &systemBusOfTests = privateSystemBus();

/// Within a little more than a service may take.
struct WithRealTime {
    template <class Condition>
    bool eventually(Condition condition) {
        return test::eventually(condition, std::chrono::milliseconds(1500));
    }
};

struct Machine : WithRealTime {
    ~Machine() { logind.goOn(); }

    PowerAssertions &assertions() { return real; }
    QStringList locks() {
        const QVariantList answer =
            logind.call(QStringLiteral("/org/freedesktop/login1"), QStringLiteral("org.freedesktop.login1.Manager"),
                        QStringLiteral("ListInhibitors"));
        QStringList what;
        if (answer.isEmpty())
            return what;
        const auto list = answer.value(0).value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            QString kind;
            QString who;
            QString why;
            QString mode;
            uint user = 0;
            uint process = 0;
            list.beginStructure();
            list >> kind >> who >> why >> mode >> user >> process;
            list.endStructure();
            EXPECT_EQ(mode, QStringLiteral("block"));
            EXPECT_EQ(who, QStringLiteral("Tavrine"));
            EXPECT_EQ(why, QStringLiteral("Contract"));
            what.append(kind);
        }
        list.endArray();
        return what;
    }
    bool screenStaysOn() { return !screenSaver.held().isEmpty(); }
    bool staysUp() { return locks().contains(QStringLiteral("idle")) || !suspendsWhenAsked(); }
    bool suspendsWhenAsked() { return !locks().contains(QStringLiteral("sleep")); }
    bool staysUpWithLidClosed() { return locks().contains(QStringLiteral("handle-lid-switch")); }
    void refuse() { logind.end(); }
    void hang() { logind.hang(); }
    void goOn() { logind.goOn(); }

    DBusMock logind{DBusMock::Bus::system, QStringLiteral("logind"), QStringLiteral("org.freedesktop.login1")};
    InhibitService screenSaver{QStringLiteral("org.freedesktop.ScreenSaver")};
    LinuxPowerAssertions real{makeInhibitingServices(), makeLastResorts()};
};

struct Plug : WithRealTime {
    PowerSource &source() { return real; }
    void setPluggedIn(bool isPluggedIn) {
        const auto path = QStringLiteral("/org/freedesktop/UPower");
        static_cast<void>(upower.call(path, QStringLiteral("org.freedesktop.DBus.Mock"),
                                      QStringLiteral("SetupDisplayDevice"),
                                      {2U, isPluggedIn ? 1U : 2U, 50.0, 50.0, 100.0, 1.0, qlonglong(60), qlonglong(60),
                                       true, QStringLiteral("battery"), 1U}));
        static_cast<void>(upower.call(
            path, QStringLiteral("org.freedesktop.DBus.Mock"), QStringLiteral("UpdateProperties"),
            {QStringLiteral("org.freedesktop.UPower"), QVariantMap{{QStringLiteral("OnBattery"), !isPluggedIn}}}));
    }

    DBusMock upower{DBusMock::Bus::system, QStringLiteral("upower"), QStringLiteral("org.freedesktop.UPower")};
    UPowerSource real{Seconds{0}};
};

/// A server whose notifications are heard of by the signals of the mock.
class Listener final : public QObject {
    Q_OBJECT

public:
    explicit Listener(QDBusConnection bus) {
        bus.connect(QString(), QStringLiteral("/org/freedesktop/Notifications"),
                    QStringLiteral("org.freedesktop.DBus.Mock"), QStringLiteral("MethodCalled"), this,
                    SLOT(onCall(QString, QVariantList)));
    }
    QMap<uint, QString> shown;

private Q_SLOTS:
    void onCall(const QString &method, const QVariantList &arguments) {
        if (method != QLatin1String("Notify"))
            return;
        const uint replaced = arguments.value(1).toUInt();
        shown[replaced != 0 ? replaced : ++m_last] =
            arguments.value(3).toString() + QStringLiteral(": ") + arguments.value(4).toString();
    }

private:
    uint m_last = 0;
};

struct NotifyingDesk : WithRealTime {
    UserNotifications &notifications() { return real; }
    QStringList shown() { return listener.shown.values(); }
    void refuse() { server.end(); }
    /// Each was given the next number when it was new.
    void press(const QString &identifier) {
        static const QStringList inOrder{QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three")};
        letPass(std::chrono::milliseconds(50)); // the number is on its way
        static_cast<void>(server.call(
            QStringLiteral("/org/freedesktop/Notifications"), QStringLiteral("org.freedesktop.DBus.Mock"),
            QStringLiteral("EmitSignal"),
            {QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("ActionInvoked"), QStringLiteral("us"),
             QVariantList{uint(inOrder.indexOf(identifier) + 1), QStringLiteral("default")}}));
    }

    DBusMock server{DBusMock::Bus::session, QStringLiteral("notification_daemon"),
                    QStringLiteral("org.freedesktop.Notifications")};
    Listener listener{server.connection()};
    DesktopNotifications real;
};

TEST(DesktopNotificationsTest, aPressThatAnotherProgramMakesUpIsNone) {
    NotifyingDesk desk;
    int presses = 0;
    desk.notifications().add({QStringLiteral("one"), QStringLiteral("A title"), QStringLiteral("first")},
                             [&] { ++presses; });
    ASSERT_TRUE(desk.eventually([&] { return !desk.shown().isEmpty(); }));
    auto stranger = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("stranger"));
    auto signal =
        QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/Notifications"),
                                   QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("ActionInvoked"));
    signal << 1U << QStringLiteral("default");
    letPass(std::chrono::milliseconds(50)); // the number is on its way
    EXPECT_TRUE(stranger.send(signal));
    letPass(std::chrono::milliseconds(50));
    EXPECT_EQ(presses, 0);
    desk.press(QStringLiteral("one"));
    EXPECT_TRUE(desk.eventually([&] { return presses == 1; }));
    QDBusConnection::disconnectFromBus(QStringLiteral("stranger"));
}

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, PowerAssertionsContract, Machine);
INSTANTIATE_TYPED_TEST_SUITE_P(UPower, PowerSourceContract, Plug);
INSTANTIATE_TYPED_TEST_SUITE_P(Desktop, UserNotificationsContract, NotifyingDesk);

} // namespace tavrine::test

#include "RealPower.moc"
