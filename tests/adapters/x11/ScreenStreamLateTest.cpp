// What an X server's screen gives a stream when the server is late with any of its answers, or was at work elsewhere.
#include "adapters/x11/ScreenStreamFixture.h"
#include "adapters/x11/stream/StreamLoop.h"
#include "support/LateScreen.h"

#include <future>

namespace tavrine::test {
namespace {

using testing::LateScreen;

TEST_F(ScreenStreamTest, whicheverAnswerIsLateThePictureIsRightInTheEnd) {
    constexpr XcbLink::Wait longestWait{20};
    constexpr int moreThanThereAre = 400; // about a hundred
    constexpr int step = 3;               // 1 goes through all of them, in half a minute on a busy machine
    const auto below = client.add(area, 0x4080c0);
    static_cast<void>(shown(area.topLeft(), 0x4080c0));
    const std::vector<QRect> shapes[] = {{QRect(0, 0, 150, 240), QRect(200, 100, 60, 60)}, {QRect(90, 90, 100, 20)}};
    QImage expected[2];
    for (int i = 1; i >= 0; --i) {
        client.shape(below, shapes[i]);
        static_cast<void>(shown(area.topLeft(), i == 0 ? 0x4080c0 : 0x303030));
        expected[i] = shown(area.topLeft() + QPoint(160, 0), 0x303030);
    }
    const auto bar = client.add(area.adjusted(60, 60, -60, -60), 0xff0000);
    bool isHeld = true;
    int late = 1;
    for (; isHeld && late < moreThanThereAre; late += step) {
        SCOPED_TRACE(late);
        client.shape(below, shapes[0]);
        client.setMapped(bar, true);
        LateScreen screen(2 * longestWait);
        screen.hold(late);
        ASSERT_TRUE(screen.isThere());
        const int before = frames();
        followed = {};
        SampleGate<ScreenSample> session([this](const ScreenSample &sample) { take(sample); });
        StreamLoop loop({.area = area, .keptOut = {bar}, .interval = 1ms, .queueDepth = 3}, session, longestWait);
        auto running = std::async(std::launch::async, [&] {
            const auto error = loop.open();
            return error ? error : loop.run();
        });
        EXPECT_TRUE(eventually([&] { return frames() > before; }));
        EXPECT_TRUE(eventually([&] { return picture() == expected[0]; })) << describe(picture(), expected[0]);
        client.setMapped(bar, false);
        client.shape(below, shapes[1]);
        client.setMapped(bar, true);
        EXPECT_TRUE(eventually([&] { return picture() == expected[1]; })) << describe(picture(), expected[1]);
        isHeld = screen.hasHeld();
        session.end();
        EXPECT_EQ(running.get().value_or(QString()).toStdString(), "");
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(late, 20);
    EXPECT_FALSE(isHeld);
    EXPECT_TRUE(isAllTold());
}

} // namespace
} // namespace tavrine::test
