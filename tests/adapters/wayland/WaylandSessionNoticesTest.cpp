#include "adapters/linux/LinuxSessionNotices.h"
#include "support/Wait.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QRasterWindow>

#include <algorithm>

#include <gtest/gtest.h>

namespace tavrine::testing {
namespace {

class WaylandSessionNoticesTest : public ::testing::Test {
protected:
    [[nodiscard]] bool isTold(SessionNotice notice) const {
        return std::find(told.begin(), told.end(), notice) != told.end();
    }

    LinuxSessionNotices notices;
    std::vector<SessionNotice> told;
    SessionNotices::Token following = notices.follow([this](SessionNotice notice) { told.push_back(notice); });
};

TEST_F(WaylandSessionNoticesTest, theEndOfTheLockIsTold) {
    EXPECT_TRUE(notices.tells(SessionNotice::screenIsUnlocked));
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("test-session"));
    // The bus is opened behind the following.
    EXPECT_TRUE(waitUntil([&] {
        auto signal =
            QDBusMessage::createSignal(QStringLiteral("/ScreenSaver"), QStringLiteral("org.freedesktop.ScreenSaver"),
                                       QStringLiteral("ActiveChanged"));
        signal << false;
        return bus.send(signal) && isTold(SessionNotice::screenIsUnlocked);
    }));
}

TEST_F(WaylandSessionNoticesTest, theKeyboardsComingIsTold) {
    EXPECT_TRUE(notices.tells(SessionNotice::didBecomeActive));
    QRasterWindow window;
    window.resize(200, 100);
    window.show();
    EXPECT_TRUE(waitUntil([this] { return isTold(SessionNotice::didBecomeActive); }));
}

TEST_F(WaylandSessionNoticesTest, whatNoCompositorTellsIsSaidToBeMissing) {
    EXPECT_FALSE(notices.tells(SessionNotice::screensDidWake));
    EXPECT_FALSE(notices.tells(SessionNotice::activeSpaceDidChange));
    EXPECT_FALSE(notices.tells(SessionNotice::didUnhide));
}

} // namespace
} // namespace tavrine::testing
