#pragma once

#include "adapters/fake/FakeCalendar.h"
#include "adapters/fake/FakePowerAssertions.h"
#include "adapters/fake/FakePowerSource.h"
#include "adapters/fake/FakeUserNotifications.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "utilities/awake/KeepAwakeManager.h"

#include <QDateTime>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine {

using namespace std::chrono_literals;
using testing::HasSubstr;

/// "2026-02-02 12:00" and the like, in UTC.
inline Date utc(const char *text) {
    const QDateTime date = QDateTime::fromString(QLatin1String(text), QStringLiteral("yyyy-MM-dd HH:mm"));
    return {static_cast<double>(QDateTime(date.date(), date.time(), Qt::UTC).toSecsSinceEpoch())};
}

/// A manager on a Monday at noon, on a machine without a battery.
class AwakeFixture : public testing::Test {
protected:
    AwakeFixture() { make(); }

    /// A new launch, with the preferences as they are. What is due at once has happened.
    void make() {
        manager.reset();
        quietly([&] {
            manager = std::make_unique<KeepAwakeManager>(
                KeepAwakeManager::Ports{time, defaults, calendar, assertions, powerSource, notifications});
            time.runPending();
        });
    }

    template <class Work>
    std::string outputOf(Work work) {
        testing::internal::CaptureStdout();
        work();
        return testing::internal::GetCapturedStdout();
    }
    template <class Work>
    void quietly(Work work) {
        static_cast<void>(outputOf(work));
    }
    /// Does it, and lets the turn and what follows at once pass.
    template <class Work>
    void after(Work work) {
        quietly([&] {
            work();
            time.runPending();
        });
    }
    void pass(Seconds length) {
        quietly([&] { time.advance(length); });
    }
    void switchOn() {
        after([&] { manager->enable(); });
        ASSERT_TRUE(manager->isAwake());
    }
    void setPluggedIn(bool isPluggedIn) { powerSource.setPluggedIn(isPluggedIn); }
    /// The machine is suspended for that long: nothing runs, and both clocks that count through it have moved.
    void suspend(Seconds length) {
        time.setSystemUptime(time.systemUptime() + length);
        time.setWallClock(time.now() + length);
    }

    QTemporaryDir home;
    VirtualTime time{utc("2026-02-02 12:00")};
    NotificationCenter center;
    UserDefaults defaults{home.filePath(QStringLiteral("preferences.plist")), time, center};
    FakeCalendar calendar;
    FakePowerAssertions assertions{time};
    FakePowerSource powerSource;
    FakeUserNotifications notifications{time};
    std::unique_ptr<KeepAwakeManager> manager;
};

} // namespace tavrine
