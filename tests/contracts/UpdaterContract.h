#pragma once

#include "ports/Updater.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace tavrine::test {

/// What every updater without a feed keeps. `Build` has: Updater &updater(); QStringList told() is what the person was
/// told so far.
template <class Build>
class UpdaterContract : public testing::Test {
public:
    Build build;
};

TYPED_TEST_SUITE_P(UpdaterContract);

TYPED_TEST_P(UpdaterContract, startsQuietly) {
    this->build.updater().start();
    EXPECT_TRUE(this->build.told().isEmpty());
}

TYPED_TEST_P(UpdaterContract, everyLookThatWasAskedForIsAnswered) {
    this->build.updater().start();
    this->build.updater().checkForUpdates();
    this->build.updater().checkForUpdates();
    const QString noFeed = QStringLiteral(
        "This copy of Tavrine does not look for updates by itself. New versions come the way it was installed.");
    EXPECT_EQ(this->build.told(), QStringList({noFeed, noFeed}));
}

REGISTER_TYPED_TEST_SUITE_P(UpdaterContract, startsQuietly, everyLookThatWasAskedForIsAnswered);

} // namespace tavrine::test
