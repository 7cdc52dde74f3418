// The fakes of the machine's power, its calendar and the desktop's notifications, and the real calendar, under their
// contracts.

#include "adapters/fake/FakeCalendar.h"
#include "adapters/fake/FakePowerAssertions.h"
#include "adapters/fake/FakePowerSource.h"
#include "adapters/fake/FakeUserNotifications.h"
#include "adapters/linux/SystemCalendar.h"
#include "contracts/CalendarContract.h"
#include "contracts/PowerContract.h"

namespace tavrine::test {
namespace {

struct WithVirtualTime {
    template <class Condition>
    bool eventually(Condition condition) {
        for (int step = 0; step < 20 && !condition(); ++step)
            time.advance(Seconds{0.1});
        return condition();
    }
    VirtualTime time;
};

struct FakeMachine : WithVirtualTime {
    PowerAssertions &assertions() { return fake; }
    bool screenStaysOn() { return fake.screenStaysOn(); }
    bool staysUp() { return fake.staysUp(); }
    bool suspendsWhenAsked() { return fake.suspendsWhenAsked(); }
    bool staysUpWithLidClosed() { return fake.staysUpWithLidClosed(); }
    void refuse() { fake.setRefusing(true); }
    void hang() { fake.setHanging(true); }
    void goOn() { fake.setHanging(false); }
    FakePowerAssertions fake{time};
};

struct FakePlug : WithVirtualTime {
    FakePlug() {
        fake.beSilent();
        time.async([this] { fake.answer(); });
    }
    PowerSource &source() { return fake; }
    void setPluggedIn(bool isPluggedIn) { fake.setPluggedIn(isPluggedIn); }
    FakePowerSource fake;
};

struct FakeDesk : WithVirtualTime {
    UserNotifications &notifications() { return fake; }
    QStringList shown() {
        QStringList texts;
        for (const UserNotification &each : fake.shown())
            texts.append(each.title + QStringLiteral(": ") + each.body);
        return texts;
    }
    void refuse() { fake.setGranted(false); }
    void press(const QString &identifier) { fake.press(identifier); }
    FakeUserNotifications fake{time};
};

struct FakeWall {
    Calendar &calendar() { return fake; }
    void setTimeZone(const char *name) { fake.setTimeZone(name); }
    FakeCalendar fake;
};

struct SystemWall {
    ~SystemWall() { qunsetenv("TZ"); }
    Calendar &calendar() { return real; }
    static void setTimeZone(const char *name) { qputenv("TZ", name); }
    SystemCalendar real;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, PowerAssertionsContract, FakeMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, PowerSourceContract, FakePlug);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, UserNotificationsContract, FakeDesk);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, CalendarContract, FakeWall);
INSTANTIATE_TYPED_TEST_SUITE_P(System, CalendarContract, SystemWall);

} // namespace tavrine::test
