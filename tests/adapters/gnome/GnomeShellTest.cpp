// The way to the extension of GNOME Shell, and keys over it, beside a shell that is played and takes its time.
#include "adapters/gnome/GnomeAccess.h"
#include "adapters/gnome/GnomeHotKeys.h"
#include "base/VirtualKeys.h"
#include "support/Eventually.h"
#include "support/PlayedGnome.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

const auto attach = QStringLiteral("Attach");
const auto grab = QStringLiteral("GrabKey");
const auto monitors = QStringLiteral("GetCurrentState");
constexpr auto patience = 100ms;

TEST(BusyGnomeShell, isAskedAgainUntilItAnswers) {
    PlayedGnome played;
    played.kept = {attach, monitors};
    played.appear();
    const GnomeShell shell(patience);
    ASSERT_TRUE(eventually([&] { return played.asked(attach) >= 3 && played.asked(monitors) >= 3; }));
    EXPECT_FALSE(shell.isAttached());
    played.kept.clear();
    EXPECT_TRUE(eventually([&] { return shell.isAttached(); }));
    const auto asked = played.asked(attach);
    letPass(4 * patience);
    EXPECT_EQ(played.asked(attach), asked);
}

TEST(BusyGnomeShell, isNotAskedAgainWhenItRefuses) {
    PlayedGnome played;
    played.refused = {attach};
    played.appear();
    const GnomeShell shell(patience);
    ASSERT_TRUE(eventually([&] { return played.asked(attach) == 1; }));
    letPass(4 * patience);
    EXPECT_EQ(played.asked(attach), 1);
    EXPECT_FALSE(shell.isAttached());
}

/// Who asks what the extension grants in the first turns of the process, before the shell has said anything.
class GnomeGrants : public ::testing::Test {
protected:
    [[nodiscard]] bool isKnown() const { return m_isKnown; }
    void ask(GnomeAccess &access) {
        access.whenKnown(&context, [this, &access] {
            m_isKnown = true;
            wasGranted = access.isAccessibilityTrusted() && access.isScreenCaptureGranted();
        });
    }

    void expectNoneSoon() {
        GnomeShell shell(patience);
        GnomeAccess access(shell, [] { return false; });
        QElapsedTimer timer;
        timer.start();
        ask(access);
        ASSERT_TRUE(eventually([this] { return isKnown(); }));
        EXPECT_FALSE(wasGranted);
        EXPECT_LT(timer.elapsed(), std::chrono::milliseconds(GnomeShell::longestSilence).count());
    }

    QObject context;
    PlayedGnome played;
    bool wasGranted = false;

private:
    bool m_isKnown = false;
};

TEST_F(GnomeGrants, areKnownOnceTheShellHasAnswered) {
    played.appear();
    GnomeShell shell(patience);
    GnomeAccess access(shell, [] { return false; });
    ask(access);
    EXPECT_FALSE(isKnown());
    ASSERT_TRUE(eventually([this] { return isKnown(); }));
    EXPECT_TRUE(wasGranted);
    bool isSaidAtOnce = false;
    access.whenKnown(&context, [&isSaidAtOnce] { isSaidAtOnce = true; });
    EXPECT_TRUE(isSaidAtOnce);
}

TEST_F(GnomeGrants, areKnownToBeNoneWhereTheExtensionIsNotThere) {
    played.refused = {attach};
    played.appear();
    expectNoneSoon();
}

TEST_F(GnomeGrants, areKnownToBeNoneWhereThereIsNoShell) {
    expectNoneSoon();
}

TEST_F(GnomeGrants, areWaitedForNoLongerThanTwoSecondsAndKnownAllTheSameLater) {
    played.kept = {attach};
    played.appear();
    GnomeShell shell(patience);
    GnomeAccess access(shell, [] { return false; });
    ask(access);
    letPass(GnomeShell::longestSilence - 500ms);
    EXPECT_FALSE(isKnown());
    ASSERT_TRUE(eventually([this] { return isKnown(); }));
    EXPECT_FALSE(wasGranted);
    played.kept.clear();
    EXPECT_TRUE(eventually([&] { return access.isScreenCaptureGranted(); }));
}

TEST_F(GnomeGrants, areToldToNobodyWhoHasGone) {
    played.appear();
    GnomeShell shell(patience);
    GnomeAccess access(shell, [] { return false; });
    bool isTold = false;
    {
        QObject gone;
        access.whenKnown(&gone, [&isTold] { isTold = true; });
    }
    ASSERT_TRUE(eventually([&] { return shell.isAttached(); }));
    EXPECT_FALSE(isTold);
}

class GnomeKeys : public ::testing::Test {
protected:
    void SetUp() override {
        played.appear();
        ASSERT_TRUE(eventually([this] { return shell.isAttached(); }));
        keys.setOnHeld([this](HotKeyRef, bool isHeld) { told.push_back(isHeld); });
        keys.installHandler([this](HotKeyId id) {
            pressed.push_back(id.id);
            return KeyboardNext::asBefore;
        });
    }
    /// Registers a key for which the shell has no time.
    void registerLate() {
        played.kept = {grab};
        ref = keys.registerHotKey(virtualKey::v, hotKeyModifier::command, {.signature = 1, .id = 4});
        ASSERT_TRUE(ref);
        ASSERT_TRUE(eventually([this] { return told == std::vector{false}; }));
        letPass(2 * patience); // a bus that waits no longer than this program has thrown it away by now
    }

    PlayedGnome played;
    GnomeShell shell{patience};
    GnomeHotKeys keys{shell};
    std::optional<HotKeyRef> ref;
    std::vector<bool> told;
    std::vector<quint32> pressed;
};

TEST_F(GnomeKeys, areHeldAsSoonAsTheShellSaysSo) {
    ref = keys.registerHotKey(virtualKey::v, hotKeyModifier::command, {.signature = 1, .id = 4});
    ASSERT_TRUE(eventually([this] { return !told.empty(); }));
    letPass(4 * patience);
    EXPECT_EQ(told, (std::vector{true}));
    played.pressKey(1);
    EXPECT_TRUE(eventually([this] { return pressed == std::vector<quint32>{4}; }));
}

TEST_F(GnomeKeys, thatTheShellGrabsLateAreHeldFromThenOn) {
    ASSERT_NO_FATAL_FAILURE(registerLate());
    played.answer(played.last(grab), {7U});
    ASSERT_TRUE(eventually([this] { return told == (std::vector{false, true}); }));
    played.pressKey(7);
    EXPECT_TRUE(eventually([this] { return pressed == std::vector<quint32>{4}; }));
}

TEST_F(GnomeKeys, thatTheShellRefusesLateAreToldOnce) {
    ASSERT_NO_FATAL_FAILURE(registerLate());
    played.answer(played.last(grab), {0U});
    letPass(2 * patience);
    EXPECT_EQ(told, (std::vector{false}));
}

TEST_F(GnomeKeys, thatWereGivenUpAreLetGoWhenTheShellGrabsThemLate) {
    ASSERT_NO_FATAL_FAILURE(registerLate());
    keys.unregisterHotKey(*ref);
    played.answer(played.last(grab), {7U});
    EXPECT_TRUE(
        eventually([this] { return played.last(QStringLiteral("UngrabKey")).arguments() == QVariantList{7U}; }));
}

} // namespace
} // namespace tavrine::test
