// The frontmost program where no window manager runs.

#include "adapters/x11/X11Workspace.h"
#include "base/NotificationCenter.h"
#include "support/Eventually.h"
#include "support/Program.h"

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

class BareWorkspaceTest : public testing::Test {
public:
    [[nodiscard]] bool isFrontmost(const QString &identifier) {
        return eventually([&] {
            const auto application = workspace.frontmostApplication();
            return (application ? application->bundleIdentifier : QString()) == identifier;
        });
    }
    /// Gives the keyboard to the window of that class.
    static void focus(const QString &windowClass) {
        QString window;
        ASSERT_TRUE(eventually([&] {
            window = outputOf(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                                          QStringLiteral("--class"), windowClass});
            return !window.isEmpty();
        }));
        static_cast<void>(
            outputOf(QStringLiteral("xdotool"), {QStringLiteral("windowfocus"), QStringLiteral("--sync"), window}));
    }
    X11Workspace workspace;
};

TEST_F(BareWorkspaceTest, theWindowWithTheKeyboardIsFrontmostAndTheOneThatLosesItIsTold) {
    QStringList left;
    const auto observer = workspace.notificationCenter().addObserver(
        QLatin1String(Workspace::didDeactivateApplicationNotification), [&](const Notification &notice) {
            left.append(notice.userInfo.value(QLatin1String(Workspace::applicationKey))
                            .value<RunningApplication>()
                            .bundleIdentifier);
        });
    EXPECT_FALSE(workspace.frontmostApplication().has_value());
    const Program first(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("First")});
    const Program second(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("Second")});
    focus(QStringLiteral("First"));
    ASSERT_TRUE(isFrontmost(QStringLiteral("First")));
    EXPECT_EQ(workspace.frontmostApplication()->processIdentifier, first.processIdentifier());
    focus(QStringLiteral("Second"));
    // Without a question: the notice comes by itself.
    EXPECT_TRUE(eventually([&] { return left == QStringList{QStringLiteral("First")}; }));
    EXPECT_TRUE(isFrontmost(QStringLiteral("Second")));
}

TEST_F(BareWorkspaceTest, aWindowManagerThatStartsIsFollowedAndOneThatEndsIsNot) {
    const Program first(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("First")});
    focus(QStringLiteral("First"));
    ASSERT_TRUE(isFrontmost(QStringLiteral("First")));
    {
        const Program manager(QStringLiteral("openbox"), {});
        const Program second(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("Second")});
        ASSERT_TRUE(isFrontmost(QStringLiteral("Second")));
    }
    focus(QStringLiteral("First"));
    EXPECT_TRUE(isFrontmost(QStringLiteral("First")));
}

} // namespace
} // namespace tavrine::test
