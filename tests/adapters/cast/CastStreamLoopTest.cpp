// A stream over a cast, from a node of the test's own: what comes of it, and how it ends.
#include "adapters/cast/CastStreamLoop.h"

#include "support/CastNode.h"
#include "support/PrivatePipeWire.h"
#include "support/SampleLog.h"
#include "support/Wait.h"

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using tavrine::testing::waitUntil;

constexpr QSize pictures(64, 48);
constexpr QRect wantedArea(10, 20, 30, 16);

/// Its cast is there already.
class ReadyCast final : public CastSource {
public:
    ReadyCast(std::uint32_t node, QSize size) : m_node(node), m_size(size) {}
    [[nodiscard]] std::variant<QString, Cast> open(const StreamPlan & /*plan*/,
                                                   const ScreenStreamConfiguration & /*configuration*/,
                                                   const ThreadedScreenStream::Session & /*session*/) override {
        return Cast::of(m_node, m_size, wantedArea);
    }

private:
    const std::uint32_t m_node;
    const QSize m_size;
};

class CastStream : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(pipeWire.isThere()); }

    void start(std::uint32_t number, QSize size = pictures) {
        ScreenStreamConfiguration configuration;
        configuration.width = wantedArea.width();
        configuration.height = wantedArea.height();
        stream = std::make_unique<ThreadedScreenStream>(
            StreamPlan{.area = QRect({}, wantedArea.size()),
                       .keptOut = {},
                       .showsPointer = false,
                       .interval = configuration.minimumFrameInterval,
                       .queueDepth = 3},
            [=](const StreamPlan &plan, ThreadedScreenStream::Session &session) {
                return std::make_unique<CastStreamLoop>(std::make_unique<ReadyCast>(number, size), plan, configuration,
                                                        session);
            },
            ScreenStreams::Handlers{[this](const ScreenSample &sample) { log.take(sample); },
                                    [this](const QString &why) { end = why; }});
        stream->startCapture([this](std::optional<QString> error) { answer = error.value_or(QString()); });
    }
    /// Until the first frame, of one colour. What is given before PipeWire runs on both sides is lost.
    void startOn(CastNode &node, std::uint32_t colour) {
        start(node.number());
        ASSERT_TRUE(waitUntil([&] {
            if (!answer)
                node.paint(colour);
            return log.count() >= 1 && answer == QString();
        })) << answer.value_or(QString()).toStdString();
    }
    [[nodiscard]] bool sees(QPoint place, std::uint32_t colour) {
        return waitUntil([&] { return log.last().picture.pixel(place) == colour; });
    }
    void stopBy10Seconds() {
        bool isStopped = false;
        stream->stopCapture([&](const auto &) { isStopped = true; });
        EXPECT_TRUE(waitUntil([&] { return isStopped; }));
    }

    PrivatePipeWire pipeWire;
    SampleLog log;
    std::optional<QString> answer; ///< to the start; empty for success
    QString end;
    std::unique_ptr<ThreadedScreenStream> stream;
};

TEST_F(CastStream, showsTheAreaOfThePicturesAndWhatChangedInIt) {
    CastNode node({.size = pictures});
    ASSERT_NO_FATAL_FAILURE(startOn(node, 0xff102030));
    const auto first = log.entries().front();
    EXPECT_EQ(first.size, wantedArea.size());
    EXPECT_EQ(first.changed, (std::vector{QRect({}, wantedArea.size())}));

    node.paint({12, 23, 3, 2}, 0xffc0b0a0);
    ASSERT_TRUE(sees({2, 3}, 0xffc0b0a0));
    EXPECT_EQ(log.last().changed, (std::vector{QRect(2, 3, 3, 2)}));
    EXPECT_EQ(log.last().picture.pixel(1, 3), 0xff102030);
    EXPECT_EQ(log.last().picture.pixel(5, 4), 0xff102030);
    EXPECT_EQ(end, QString());
}

TEST_F(CastStream, doesNotBeginOnPicturesOfAnotherSizeThanTheScreen) {
    CastNode node({.size = pictures});
    start(node.number(), pictures + QSize(1, 0));
    ASSERT_TRUE(waitUntil([&] { return node.paint(0xff102030), answer.has_value(); }));
    EXPECT_FALSE(answer->isEmpty());
    EXPECT_EQ(log.count(), 0U);
}

TEST_F(CastStream, endsWhenThePicturesGetAnotherSize) {
    CastNode node({.size = pictures});
    ASSERT_NO_FATAL_FAILURE(startOn(node, 0xff102030));
    node.resize(pictures * 2);
    EXPECT_TRUE(waitUntil([&] { return node.paint(0xff405060), !end.isEmpty(); }));
    EXPECT_EQ(log.last().size, wantedArea.size());
    EXPECT_NE(log.last().picture.pixel(0, 0), 0xff405060);
}

TEST_F(CastStream, endsWithTheNodeAndWhatItHasGivenStays) {
    log.setKeeps(true);
    {
        CastNode node({.size = pictures});
        ASSERT_NO_FATAL_FAILURE(startOn(node, 0xff102030));
    }
    EXPECT_TRUE(waitUntil([&] { return !end.isEmpty(); }));
    const auto kept = log.takeKept();
    ASSERT_FALSE(kept.empty());
    EXPECT_EQ(pictureOf(*kept.front()).pixel(3, 3), 0xff102030);
}

TEST_F(CastStream, endsWithPipeWire) {
    CastNode node({.size = pictures});
    ASSERT_NO_FATAL_FAILURE(startOn(node, 0xff102030));
    pipeWire.end();
    EXPECT_TRUE(waitUntil([&] { return !end.isEmpty(); }));
}

TEST_F(CastStream, isStoppedWhilePipeWireStandsStill) {
    CastNode node({.size = pictures});
    ASSERT_NO_FATAL_FAILURE(startOn(node, 0xff102030));
    pipeWire.hang();
    stopBy10Seconds();
    stream.reset();
    pipeWire.end();
}

TEST_F(CastStream, isStoppedWhileItWaitsForItsFirstPicture) {
    const CastNode node({.size = pictures});
    start(node.number());
    ASSERT_TRUE(waitUntil([&] { return node.isSeen(); }));
    EXPECT_EQ(answer, std::nullopt);
    stopBy10Seconds();
    EXPECT_FALSE(answer->isEmpty());
    EXPECT_EQ(log.count(), 0U);
}

/// Whose one picture was lost because PipeWire did not run on both sides yet.
TEST_F(CastStream, beginsOnAScreenThatStandsStillAndGivesItsPictureToWhoBeginsToLook) {
    CastNode node({.size = pictures, .stillFrom = 3});
    node.hide(0xff102030);
    start(node.number());
    ASSERT_TRUE(waitUntil([&] { return answer && log.count() > 0; }));
    EXPECT_EQ(*answer, QString());
    EXPECT_EQ(log.last().picture.pixel(3, 3), 0xff102030);
    node.paint(0xff405060);
    EXPECT_TRUE(waitUntil([&] { return log.last().picture.pixel(3, 3) == 0xff405060; }));
}

TEST_F(CastStream, doesNotBeginWithoutANode) {
    start(4711);
    ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
    EXPECT_FALSE(answer->isEmpty());
}

} // namespace
} // namespace tavrine::test
