// What GNOME's compositor is asked for when a cast begins, played on the session bus.
#include "adapters/gnome/cast/MutterCast.h"

#include "support/Eventually.h"
#include "support/OpeningCast.h"
#include "support/PlayedGnome.h"

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

const auto monitors = QStringLiteral("GetCurrentState");
const auto record = QStringLiteral("RecordArea");
const auto start = QStringLiteral("Start");

std::unique_ptr<MutterCast> castOf(StreamBus::Wait longestAnswer) {
    return std::make_unique<MutterCast>(QRect(0, 0, 200, 100), 1, longestAnswer);
}

TEST(MutterCast, hearsAStopWhileTheCompositorDoesNotAnswer) {
    PlayedGnome mutter;
    mutter.kept = {monitors};
    mutter.appear();
    OpeningCast opening([] { return castOf(1h); });
    ASSERT_TRUE(eventually([&] { return mutter.asked(monitors) == 1; }));
    EXPECT_FALSE(opening.hasReturned());
    opening.stop();
    EXPECT_TRUE(eventually([&] { return opening.hasReturned(); }));
    EXPECT_TRUE(opening.isRefused());
}

TEST(MutterCast, givesUpOnACompositorThatNeverAnswers) {
    PlayedGnome mutter;
    mutter.kept = {monitors};
    mutter.appear();
    const OpeningCast opening([] { return castOf(50ms); });
    EXPECT_TRUE(eventually([&] { return opening.hasReturned(); }));
    EXPECT_TRUE(opening.isRefused());
}

void tellNode(PlayedGnome &mutter) {
    mutter.tell(QStringLiteral("/played/stream"), QStringLiteral("org.gnome.Mutter.ScreenCast.Stream"),
                QStringLiteral("PipeWireStreamAdded"), {42U});
}

TEST(MutterCast, isOpenOnceTheCompositorTellsItsNode) {
    PlayedGnome mutter;
    mutter.appear();
    const OpeningCast opening([] { return castOf(1h); });
    ASSERT_TRUE(eventually([&] { return mutter.asked(start) == 1; }));
    letPass(50ms);
    EXPECT_FALSE(opening.hasReturned());
    tellNode(mutter);
    EXPECT_TRUE(eventually([&] { return opening.hasReturned(); }));
    EXPECT_FALSE(opening.isRefused());
}

/// Who has a name is asked of the bus, which may not answer: it is not asked for each step.
TEST(MutterCast, isHadFromWhoAnsweredFirstWhoeverHasItsNameThen) {
    PlayedGnome mutter;
    mutter.kept = {record};
    mutter.appear();
    const OpeningCast opening([] { return castOf(1h); });
    ASSERT_TRUE(eventually([&] { return mutter.asked(record) == 1; }));
    mutter.giveUpCastName();
    mutter.answer(mutter.last(record));
    ASSERT_TRUE(eventually([&] { return mutter.asked(start) == 1 || opening.hasReturned(); }));
    tellNode(mutter);
    EXPECT_TRUE(eventually([&] { return opening.hasReturned(); }));
    EXPECT_FALSE(opening.isRefused());
}

} // namespace
} // namespace tavrine::test
