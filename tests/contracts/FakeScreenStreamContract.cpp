// The streams of the fake screen, under their contract.
#include "adapters/fake/FakeScreenStreams.h"
#include "adapters/fake/VirtualTime.h"
#include "contracts/ScreenStreamContract.h"

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

struct FakeScreen {
    ScreenStreams &streams() { return fake; }
    [[nodiscard]] quint32 display() const { return FakeScreenStreams::displayID; }
    void paint(const QRect &area, quint32 colour) { fake.paint(area, colour); }
    WindowNumber addWindow() {
        content.windows.append(ShareableWindow{77});
        fake.setContent(content);
        return 77;
    }
    void removeWindow(WindowNumber window) {
        content.windows.removeOne(ShareableWindow{window});
        fake.setContent(content);
    }
    template <class Condition>
    bool eventually(Condition condition) {
        for (int i = 0; i < 10 && !condition(); ++i)
            time.advance(5ms);
        return condition();
    }
    bool passTime(std::chrono::milliseconds length) {
        time.advance(length);
        return true;
    }
    void settle() { time.advance(100ms); }

    VirtualTime time;
    FakeScreenStreams fake{time};
    ShareableContent content{.displays = {{FakeScreenStreams::displayID}}, .windows = {}};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ScreenStreamContract, FakeScreen);

TEST(FakeScreenStreams, whatATestOrdersBecomesTheAnswer) {
    VirtualTime time;
    FakeScreenStreams streams(time);
    std::optional<QString> ended;
    int samples = 0;
    ScreenStreamConfiguration configuration;
    configuration.width = configuration.height = 2;
    const auto stream =
        streams.makeStream({FakeScreenStreams::displayID, {}}, configuration,
                           {[&](const ScreenSample &) { ++samples; }, [&](const QString &error) { ended = error; }});
    std::optional<QString> answer;
    const auto note = [&](std::optional<QString> error) { answer = error.value_or(QString()); };
    streams.beSlow();
    streams.withholdFrames();
    stream->startCapture(note);
    time.runPending();
    EXPECT_EQ(answer, std::nullopt);
    streams.answerAll();
    time.runPending();
    EXPECT_EQ(answer, QString());
    EXPECT_EQ(samples, 0);
    streams.goOn();
    time.runPending();
    EXPECT_EQ(samples, 1);
    streams.deliver({std::nullopt, {}, streams.makeFrame({2, 2}, 9)});
    EXPECT_EQ(samples, 2);
    streams.endStreams(QStringLiteral("gone"));
    time.runPending();
    EXPECT_EQ(ended, QStringLiteral("gone"));
}

} // namespace
} // namespace tavrine::test
