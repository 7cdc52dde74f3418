// The way to the extension of GNOME Shell, and keys over it, beside a shell that is played and takes its time.
#include "adapters/gnome/GnomeHotKeys.h"
#include "base/VirtualKeys.h"
#include "support/Eventually.h"
#include "support/PlayedGnome.h"

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
