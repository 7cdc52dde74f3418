// The frontmost program where no window manager runs.

#include "adapters/x11/X11Workspace.h"
#include "base/NotificationCenter.h"
#include "support/Eventually.h"
#include "support/Program.h"
#include "support/ServerHolder.h"

#include <cstdlib>

#include <gtest/gtest.h>
#include <xcb/xcb.h>

namespace tavrine::test {
namespace {

/// A window manager that does nothing but say which window is active, and waits until the server has it.
class SayingManager {
public:
    SayingManager() {
        const xcb_window_t check = xcb_generate_id(m_connection);
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, check, m_root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        set(check, "_NET_SUPPORTING_WM_CHECK", check);
        set(m_root, "_NET_SUPPORTING_WM_CHECK", check);
        activate(XCB_WINDOW_NONE);
    }
    ~SayingManager() { xcb_disconnect(m_connection); }
    SayingManager(const SayingManager &) = delete;
    SayingManager &operator=(const SayingManager &) = delete;

    void activate(xcb_window_t window) {
        set(m_root, "_NET_ACTIVE_WINDOW", window);
        sync();
    }

private:
    void sync() { std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr)); }
    void set(xcb_window_t window, const char *property, xcb_window_t value) {
        xcb_intern_atom_reply_t *const atom = xcb_intern_atom_reply(
            m_connection, xcb_intern_atom(m_connection, 0, static_cast<quint16>(qstrlen(property)), property), nullptr);
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, atom->atom, XCB_ATOM_WINDOW, 32, 1, &value);
        std::free(atom);
    }

    xcb_connection_t *m_connection = xcb_connect(nullptr, nullptr);
    xcb_window_t m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
};

class BareWorkspaceTest : public ::testing::Test {
public:
    [[nodiscard]] bool isFrontmost(const QString &identifier) {
        return eventually([&] {
            const auto application = workspace.frontmostApplication();
            return (application ? application->bundleIdentifier : QString()) == identifier;
        });
    }
    static quint32 windowOf(const QString &windowClass) {
        QString window;
        static_cast<void>(eventually([&] {
            window = outputOf(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                                          QStringLiteral("--class"), windowClass});
            return !window.isEmpty();
        }));
        return window.toUInt();
    }
    /// Gives the keyboard to the window of that class.
    static void focus(const QString &windowClass) {
        static_cast<void>(outputOf(QStringLiteral("xdotool"), {QStringLiteral("windowfocus"), QStringLiteral("--sync"),
                                                               QString::number(windowOf(windowClass))}));
    }
    [[nodiscard]] QString frontmostNow() {
        const auto application = workspace.frontmostApplication();
        return application ? application->bundleIdentifier : QString();
    }
    X11Workspace workspace;
};

TEST_F(BareWorkspaceTest, aReadRightAfterAChangeIsCorrectWithoutATurnOfTheLoop) {
    const Program one(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("First")});
    const Program other(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("Second")});
    const quint32 first = windowOf(QStringLiteral("First"));
    const quint32 second = windowOf(QStringLiteral("Second"));
    SayingManager manager;
    for (int i = 0; i < 100; ++i) {
        manager.activate(first);
        ASSERT_EQ(frontmostNow(), QStringLiteral("First"));
        manager.activate(second);
        ASSERT_EQ(frontmostNow(), QStringLiteral("Second"));
    }
}

TEST_F(BareWorkspaceTest, aMomentWithoutAnActiveWindowIsNoDepartureAndALongerOneIs) {
    const Program one(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("First")});
    const quint32 first = windowOf(QStringLiteral("First"));
    int notices = 0;
    const auto observer = workspace.notificationCenter().addObserver(
        QLatin1String(Workspace::didDeactivateApplicationNotification), [&](const Notification &) { ++notices; });
    SayingManager manager;
    manager.activate(first);
    EXPECT_EQ(frontmostNow(), QStringLiteral("First"));
    manager.activate(XCB_WINDOW_NONE);
    EXPECT_EQ(frontmostNow(), QStringLiteral("First"));
    manager.activate(first);
    letPass(std::chrono::milliseconds(300));
    EXPECT_EQ(notices, 0);
    manager.activate(XCB_WINDOW_NONE);
    EXPECT_TRUE(eventually([&] { return notices == 1; }));
    EXPECT_EQ(frontmostNow(), QString());
}

TEST_F(BareWorkspaceTest, aDepartureIsToldThoughTheServerDidNotAnswerWhenItWasLookedFor) {
    const Program one(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("First")});
    const quint32 first = windowOf(QStringLiteral("First"));
    int notices = 0;
    const auto observer = workspace.notificationCenter().addObserver(
        QLatin1String(Workspace::didDeactivateApplicationNotification), [&](const Notification &) { ++notices; });
    SayingManager manager;
    manager.activate(first);
    ASSERT_TRUE(isFrontmost(QStringLiteral("First")));
    testing::ServerHolder holder;
    manager.activate(XCB_WINDOW_NONE);
    holder.hold(std::chrono::milliseconds(1500), false);
    EXPECT_TRUE(eventually([&] { return notices == 1; })) << "without a question";
}

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
        ASSERT_TRUE(eventually([] {
            return outputOf(QStringLiteral("wmctrl"), {QStringLiteral("-m")}).contains(QStringLiteral("Openbox"));
        }));
        const Program second(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("Second")});
        ASSERT_TRUE(isFrontmost(QStringLiteral("Second")));
    }
    focus(QStringLiteral("First"));
    EXPECT_TRUE(isFrontmost(QStringLiteral("First")));
}

} // namespace
} // namespace tavrine::test
