#include "adapters/gnome/MutterMonitors.h"

#include <QDBusArgument>
#include <QVariantMap>

#include <gtest/gtest.h>

using namespace tavrine;

namespace {

TEST(MutterMonitors, areAskedOfWhomItIsSaid) {
    const auto question = mutterMonitors::question(QStringLiteral(":1.7"));
    EXPECT_EQ(question.service(), QStringLiteral(":1.7"));
    EXPECT_EQ(question.member(), QStringLiteral("GetCurrentState"));
    EXPECT_FALSE(question.autoStartService());
}

TEST(MutterMonitors, areNoneInAnAnswerOfAnotherKind) {
    EXPECT_TRUE(mutterMonitors::read(QDBusMessage()).empty());
    EXPECT_TRUE(
        mutterMonitors::read(mutterMonitors::question(QStringLiteral("a.b")).createReply(QVariant(7U))).empty());
    EXPECT_TRUE(mutterMonitors::read(mutterMonitors::question(QStringLiteral("a.b"))
                                         .createErrorReply(QDBusError::AccessDenied, QStringLiteral("no")))
                    .empty());
}

} // namespace
