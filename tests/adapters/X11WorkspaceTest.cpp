// Which program a window belongs to, with real programs.

#include "adapters/x11/X11Workspace.h"

#include "base/NotificationCenter.h"
#include "support/Eventually.h"
#include "support/Program.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRasterWindow>
#include <QTemporaryDir>

#include <cstdlib>

#include <gtest/gtest.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace tavrine::test {
namespace {

class X11WorkspaceTest : public testing::Test {
public:
    [[nodiscard]] RunningApplication frontmost() {
        return workspace.frontmostApplication().value_or(RunningApplication{});
    }
    [[nodiscard]] bool comesToFront(const QString &identifier) {
        return eventually([&] { return frontmost().bundleIdentifier == identifier; });
    }
    static QStringList xterm(const QString &windowClass) { return {QStringLiteral("-class"), windowClass}; }

    const QString command = QStringLiteral("xterm");
    X11Workspace workspace;
};

TEST_F(X11WorkspaceTest, theProcessIsTheOneThatOpenedTheWindow) {
    const Program program(command, xterm(QStringLiteral("Anything")));
    ASSERT_TRUE(comesToFront(QStringLiteral("Anything")));
    EXPECT_EQ(frontmost().processIdentifier, program.processIdentifier());
    EXPECT_NE(frontmost().window, 0U);
    EXPECT_EQ(frontmost().localizedName, QStringLiteral("Anything"));
}

TEST_F(X11WorkspaceTest, allThatTheWindowCallsItsProgramIsTold) {
    const Program program(command, xterm(QStringLiteral("Anything")) +
                                       QStringList{QStringLiteral("-name"), QStringLiteral("something")});
    ASSERT_TRUE(comesToFront(QStringLiteral("Anything")));
    EXPECT_EQ(frontmost().names, (QStringList{QString(), QStringLiteral("Anything"), QStringLiteral("something")}));
}

TEST_F(X11WorkspaceTest, aPasswordManagerHasTheIdentifierOfTheList) {
    const Program program(command, xterm(QStringLiteral("KeePassXC")));
    ASSERT_TRUE(comesToFront(QStringLiteral("org.keepassxc.keepassxc")));
    EXPECT_EQ(frontmost().localizedName, QStringLiteral("KeePassXC"));
}

TEST_F(X11WorkspaceTest, anApplicationIdentifierGoesBeforeTheClass) {
    const QString script = QStringLiteral("import gi; gi.require_version('Gtk', '3.0'); from gi.repository import Gtk\n"
                                          "a = Gtk.Application(application_id='org.example.Written')\n"
                                          "def up(a):\n  w = Gtk.ApplicationWindow(application=a); w.show_all()\n"
                                          "a.connect('activate', up); a.run()\n");
    const Program program(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-c"), script});
    ASSERT_TRUE(comesToFront(QStringLiteral("org.example.Written")));
    EXPECT_EQ(frontmost().processIdentifier, program.processIdentifier());
}

TEST_F(X11WorkspaceTest, ourOwnWindowsAreThisProgram) {
    QRasterWindow window;
    window.resize(200, 100);
    window.show();
    ASSERT_TRUE(comesToFront(QStringLiteral("com.veltrane.Tavrine")));
    EXPECT_EQ(frontmost().processIdentifier, ::getpid());
}

TEST_F(X11WorkspaceTest, leavingForOurOwnWindowTellsWhoWasLeft) {
    RunningApplication left;
    const auto observer = workspace.notificationCenter().addObserver(
        QLatin1String(Workspace::didDeactivateApplicationNotification), [&](const Notification &notice) {
            left = notice.userInfo.value(QLatin1String(Workspace::applicationKey)).value<RunningApplication>();
        });
    const Program program(command, xterm(QStringLiteral("Target")));
    ASSERT_TRUE(comesToFront(QStringLiteral("Target")));
    QRasterWindow window;
    window.resize(200, 100);
    window.show();
    ASSERT_TRUE(eventually([&] { return left.bundleIdentifier == QStringLiteral("Target"); }));
    EXPECT_EQ(left.processIdentifier, program.processIdentifier());
}

TEST_F(X11WorkspaceTest, aServerThatAnotherProgramHoldsDelaysAReadByAFractionOfASecond) {
    const Program program(command, xterm(QStringLiteral("Anything")));
    ASSERT_TRUE(comesToFront(QStringLiteral("Anything")));
    xcb_connection_t *const holder = xcb_connect(nullptr, nullptr);
    xcb_grab_server(holder);
    std::free(xcb_get_input_focus_reply(holder, xcb_get_input_focus(holder), nullptr)); // it holds by now
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(frontmost().bundleIdentifier, QStringLiteral("Anything")); // what was known last
    EXPECT_LT(timer.elapsed(), 8000);                                    // it is held until this test lets it go
    EXPECT_FALSE(workspace.isFrontmostKnown());
    xcb_ungrab_server(holder);
    xcb_disconnect(holder);
    EXPECT_TRUE(comesToFront(QStringLiteral("Anything")));
    EXPECT_TRUE(eventually([this] {
        static_cast<void>(frontmost());
        return workspace.isFrontmostKnown();
    }));
}

TEST_F(X11WorkspaceTest, readingCostsLessThanAMillisecond) {
    const Program program(command, xterm(QStringLiteral("Anything")));
    ASSERT_TRUE(comesToFront(QStringLiteral("Anything")));
    constexpr int reads = 200;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < reads; ++i)
        static_cast<void>(frontmost());
    const double each = double(timer.nsecsElapsed()) / reads / 1e6;
    RecordProperty("millisecondsPerRead", std::to_string(each));
    std::printf("a read: %.3f ms\n", each);
    EXPECT_LT(each, 1.0);
}

TEST_F(X11WorkspaceTest, filesAreShownByTheFileManagerElseByTheirFolder) {
    // No file manager is on this bus, so the folder is opened by the desktop's opener, here a script in its place.
    QTemporaryDir folder;
    const QString opener = folder.filePath(QStringLiteral("xdg-open"));
    const QString opened = folder.filePath(QStringLiteral("opened"));
    QFile script(opener);
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\necho \"$1\" >> '" + QFile::encodeName(opened) + "'\n");
    script.close();
    script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QFile::encodeName(folder.path()) + ':' + path);
    workspace.activateFileViewerSelecting({QUrl::fromLocalFile(folder.filePath(QStringLiteral("a picture.png"))),
                                           QUrl::fromLocalFile(folder.filePath(QStringLiteral("another.png")))});
    QByteArray text;
    EXPECT_TRUE(eventually([&] {
        QFile file(opened);
        text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        return text.endsWith('\n');
    }));
    qputenv("PATH", path);
    EXPECT_EQ(text, QFile::encodeName(folder.path()) + "\n");
}

} // namespace
} // namespace tavrine::test
