// The workspace and the activator over a real compositor, with programs that know nothing of them.

#include "adapters/wayland/WaylandWorkspace.h"

#include "adapters/wayland/LayerStack.h"
#include "adapters/wayland/WaylandApplicationActivator.h"
#include "adapters/wayland/WaylandEventTap.h"
#include "base/Program.h"
#include "contracts/WorkspaceContract.h"
#include "support/WaylandHand.h"

#include <QGuiApplication>
#include <QProcess>
#include <QRasterWindow>

#include <map>

namespace tavrine::test {
namespace {

/// A program of any name, as `named_window` plays it.
class NamedProgram {
public:
    explicit NamedProgram(const QString &name) {
        m_process.setProcessChannelMode(QProcess::ForwardedChannels);
        m_process.start(QStringLiteral(TAVRINE_NAMED_WINDOW), {name});
    }
    ~NamedProgram() {
        m_process.kill();
        m_process.waitForFinished(10'000);
    }
    void openWindow() { m_process.write("\n"); }
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }

private:
    QProcess m_process;
};

struct WaylandDesk {
    WaylandDesk() { // the windows of the last test's programs go a moment after these
        EXPECT_TRUE(eventually([this] { return windows->all().empty() && !real.frontmostApplication(); }));
    }
    Workspace &workspace() { return real; }
    void open(const QString &program) {
        const auto before = windows->all().size();
        programs.try_emplace(program, std::make_unique<NamedProgram>(program));
        ASSERT_TRUE(eventually([&] { return windows->all().size() > before; }));
    }
    void activate(const QString &program) {
        for (const RunningApplication &each : real.runningApplications())
            if (each.bundleIdentifier == program)
                activator.activate(each);
    }
    void openSecondWindow(const QString &program) { programs.at(program)->openWindow(); }
    void close(const QString &program) { programs.erase(program); }

    std::shared_ptr<WaylandWindows> windows = WaylandWindows::make();
    WaylandWorkspace real{windows};
    WaylandApplicationActivator activator{windows};
    std::map<QString, std::unique_ptr<NamedProgram>> programs;
};

class OwnWindow final : public QRasterWindow {};

class WaylandWorkspaceTest : public ::testing::Test {
protected:
    [[nodiscard]] QString frontmost() {
        const auto application = desk.real.frontmostApplication();
        return application ? application->bundleIdentifier : QString();
    }
    [[nodiscard]] bool comesToFront(const QString &program) {
        return eventually([&] { return frontmost() == program; });
    }
    const QString first = QStringLiteral("FirstProgram");
    const QString second = QStringLiteral("SecondProgram");
    WaylandDesk desk;
};

TEST_F(WaylandWorkspaceTest, aPasswordManagerHasItsIdentifierOfTheOtherPlatform) {
    desk.open(QStringLiteral("org.keepassxc.KeePassXC"));
    EXPECT_TRUE(comesToFront(QStringLiteral("org.keepassxc.keepassxc")));
    EXPECT_EQ(desk.real.frontmostApplication()->localizedName, QStringLiteral("KeePassXC"));
}

TEST_F(WaylandWorkspaceTest, aProgramOfX11IsKnownByItsClass) {
    QProcess xterm;
    xterm.setStandardErrorFile(QProcess::nullDevice());
    xterm.start(QStringLiteral("xterm"), QStringList());
    // KWin tells the instance instead of the class, in lower case.
    EXPECT_TRUE(eventually([&] { return frontmost().compare(QLatin1String("xterm"), Qt::CaseInsensitive) == 0; }));
    xterm.kill();
    xterm.waitForFinished(10'000);
}

TEST_F(WaylandWorkspaceTest, whatIsActivatedComesToTheFrontAndWhatHasEndedRunsNoMore) {
    desk.open(first);
    ASSERT_TRUE(comesToFront(first));
    const RunningApplication program = *desk.real.frontmostApplication();
    desk.open(second);
    ASSERT_TRUE(comesToFront(second));
    EXPECT_TRUE(desk.activator.isRunning(program));
    EXPECT_TRUE(desk.activator.activate(program));
    EXPECT_TRUE(comesToFront(first));
    desk.close(first);
    ASSERT_TRUE(comesToFront(second));
    EXPECT_FALSE(desk.activator.isRunning(program));
    EXPECT_FALSE(desk.activator.activate(program));
}

TEST_F(WaylandWorkspaceTest, aProgramWhoseWindowWasClosedIsReachedByItsOther) {
    desk.open(first);
    ASSERT_TRUE(comesToFront(first));
    RunningApplication program = *desk.real.frontmostApplication();
    desk.open(second);
    ASSERT_TRUE(comesToFront(second));
    program.window = 4711;
    EXPECT_TRUE(desk.activator.isRunning(program));
    EXPECT_TRUE(desk.activator.activate(program));
    EXPECT_TRUE(comesToFront(first));
}

TEST_F(WaylandWorkspaceTest, anOwnWindowIsThisProgramAndComesForward) {
    QGuiApplication::setDesktopFileName(ownBundleIdentifier);
    OwnWindow own;
    own.setTitle(QStringLiteral("Of this program"));
    own.resize(300, 200);
    own.show();
    desk.activator.bringForward(static_cast<quint32>(own.winId())); // which the compositor does not know yet
    ASSERT_TRUE(comesToFront(ownBundleIdentifier));
    EXPECT_TRUE(desk.real.runningApplications().isEmpty());
    desk.open(first);
    desk.activate(first); // some compositors keep a window in front that has just been used
    ASSERT_TRUE(comesToFront(first));
    desk.activator.bringForward(static_cast<quint32>(own.winId()));
    EXPECT_TRUE(comesToFront(ownBundleIdentifier));
}

/// As in Clean Mode, where the compositor gives it to no window.
TEST_F(WaylandWorkspaceTest, whileTheKeyboardIsHeldAProgramStaysInFrontUntilAnotherIsActivated) {
    testing::WaylandHand hand;
    LayerStack stack;
    WaylandEventTaps taps(std::make_shared<WaylandReader>(), stack);
    const WaylandWorkspace workspace(desk.windows, nullptr, [&stack] { return stack.isHeld(); });
    const auto isInFront = [&](const QString &program) {
        const auto front = workspace.frontmostApplication();
        return front && front->bundleIdentifier == program;
    };
    desk.open(first);
    desk.open(second);
    desk.activate(second);
    ASSERT_TRUE(comesToFront(second));
    hand.tap(KEY_LEFTSHIFT); // the first key of a new keyboard is lost
    auto tap = taps.create([] {});
    ASSERT_TRUE(tap);
    ASSERT_TRUE(eventually([&] {
        return tap->state() == EventTap::State::dropping && desk.windows->refresh() && !desk.windows->active();
    }));
    EXPECT_FALSE(eventually([&] { return !isInFront(second); }, std::chrono::milliseconds(500)));
    desk.activate(first);
    EXPECT_TRUE(eventually([&] { return isInFront(first); }));
    EXPECT_FALSE(eventually([&] { return !isInFront(first); }, std::chrono::milliseconds(500)));
    EXPECT_EQ(tap->state(), EventTap::State::dropping);
    tap.reset();
    EXPECT_TRUE(comesToFront(first));
    EXPECT_TRUE(isInFront(first));
}

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Wayland, WorkspaceContract, WaylandDesk);

} // namespace tavrine::test
