#include "base/NotificationCenter.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

const QString name = QStringLiteral("news");

class NotificationCenterTest : public testing::Test {
protected:
    NotificationCenter::Handler note(int number) {
        return [this, number](const Notification &) { calls.push_back(number); };
    }

    NotificationCenter center;
    std::vector<int> calls;
};

TEST_F(NotificationCenterTest, observersAreCalledAtOnceInTheOrderOfRegistration) {
    const auto one = center.addObserver(name, note(1));
    const auto two = center.addObserver(name, note(2));
    center.post(name);
    EXPECT_EQ(calls, (std::vector{1, 2}));
}

TEST_F(NotificationCenterTest, anObserverIsHandedTheNameAndTheUserInfo) {
    Notification seen;
    const auto token = center.addObserver(name, [&](const Notification &each) { seen = each; });
    center.post(name, {{QStringLiteral("visible"), true}});
    EXPECT_EQ(seen.name, name);
    EXPECT_EQ(seen.userInfo.value(QStringLiteral("visible")), QVariant(true));
}

TEST_F(NotificationCenterTest, otherNamesAreNotHeard) {
    const auto token = center.addObserver(name, note(1));
    center.post(QStringLiteral("other"));
    EXPECT_TRUE(calls.empty());
}

TEST_F(NotificationCenterTest, releasingTheTokenRemovesTheObserver) {
    auto token = center.addObserver(name, note(1));
    token.reset();
    center.post(name);
    EXPECT_TRUE(calls.empty());
}

TEST_F(NotificationCenterTest, anObserverThatGoesDuringADeliveryIsNotCalledAnyMore) {
    NotificationCenter::Token second;
    const auto first = center.addObserver(name, [&](const Notification &) { second.reset(); });
    second = center.addObserver(name, note(2));
    center.post(name);
    EXPECT_TRUE(calls.empty());
}

TEST_F(NotificationCenterTest, anObserverMayReleaseItself) {
    NotificationCenter::Token token;
    token = center.addObserver(name, [&](const Notification &) {
        token.reset();
        calls.push_back(1);
    });
    center.post(name);
    center.post(name);
    EXPECT_EQ(calls, std::vector{1});
}

TEST_F(NotificationCenterTest, anObserverThatArrivesDuringADeliveryIsFirstCalledForTheNext) {
    NotificationCenter::Token late;
    const auto first = center.addObserver(name, [&](const Notification &) {
        if (!late)
            late = center.addObserver(name, note(2));
    });
    center.post(name);
    EXPECT_TRUE(calls.empty());
    center.post(name);
    EXPECT_EQ(calls, std::vector{2});
}

TEST_F(NotificationCenterTest, aTokenMayOutliveTheCentre) {
    NotificationCenter::Token token;
    {
        NotificationCenter brief;
        token = brief.addObserver(name, note(1));
    }
    token.reset();
    EXPECT_TRUE(calls.empty());
}

} // namespace
} // namespace tavrine
