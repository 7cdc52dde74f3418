// The pictures of a PipeWire node as they are read, whatever its owner says of them.
#include "adapters/cast/CastReader.h"

#include "support/CastNode.h"
#include "support/PrivatePipeWire.h"
#include "support/Wait.h"

#include <QElapsedTimer>

#include <array>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using tavrine::testing::waitUntil;

TEST(CastLines, areTakenWhenAllOfThemLieInTheMemory) {
    constexpr QSize size(10, 4);
    constexpr CastLines plain{.offset = 0, .stride = 40};
    EXPECT_EQ(wholeLines(size, plain, 160), plain);
    EXPECT_EQ(wholeLines(size, plain, 159), std::nullopt);
    // The last line needs no room behind it.
    EXPECT_TRUE(wholeLines(size, {.offset = 0, .stride = 64}, 3 * 64 + 40));
    EXPECT_FALSE(wholeLines(size, {.offset = 0, .stride = 64}, 3 * 64 + 39));
    EXPECT_TRUE(wholeLines(size, {.offset = 7, .stride = 40}, 167));
    EXPECT_FALSE(wholeLines(size, {.offset = 8, .stride = 40}, 167));
}

TEST(CastLines, areRefusedWhenTheyAreBackwardsOrShorterThanThePicture) {
    constexpr QSize size(10, 4);
    EXPECT_FALSE(wholeLines(size, {.offset = 0, .stride = 39}, 1000));
    EXPECT_FALSE(wholeLines(size, {.offset = 0, .stride = 0}, 1000));
    EXPECT_FALSE(wholeLines(size, {.offset = 120, .stride = -40}, 1000));
    EXPECT_FALSE(wholeLines({0, 4}, {.offset = 0, .stride = 40}, 1000));
    EXPECT_FALSE(wholeLines({10, 0}, {.offset = 0, .stride = 40}, 1000));
    EXPECT_FALSE(wholeLines(size, {.offset = 0, .stride = 40}, 0));
    EXPECT_FALSE(wholeLines(size, {.offset = 0, .stride = 40}, -1));
}

TEST(CastLines, areCountedWithoutAnOverflow) {
    constexpr QSize longest(16384, 16384);
    constexpr auto mostRoom = std::int64_t{std::numeric_limits<std::uint32_t>::max()};
    EXPECT_FALSE(wholeLines(longest, {.offset = 0, .stride = std::numeric_limits<std::int32_t>::max()}, mostRoom));
    EXPECT_FALSE(wholeLines({10, 4}, {.offset = std::numeric_limits<std::uint32_t>::max(), .stride = 40}, mostRoom));
    EXPECT_TRUE(wholeLines(longest, {.offset = 0, .stride = 65536}, mostRoom));
}

class CastReading : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(pipeWire.isThere()); }

    /// Until the first picture is here and held. What is given before PipeWire runs on both sides is lost.
    void open(CastNode &node, std::uint32_t colour) {
        const auto error = reader->open(node.number());
        ASSERT_FALSE(error) << error->toStdString();
        node.paint(colour);
        ASSERT_TRUE(eventually([&] { return reader->hasPicture() || (node.paint(colour), false); }))
            << reader->lost().value_or(QString()).toStdString();
        EXPECT_EQ(pixels(0)[0], colour);
    }
    template <class Condition>
    [[nodiscard]] bool eventually(Condition condition) {
        return waitUntil([&] {
            reader->dispatch();
            return condition();
        });
    }
    [[nodiscard]] std::array<std::uint32_t, 3> pixels(int y) const {
        std::array<std::uint32_t, 3> pixels{};
        reader->readLine(y, 1, 3, pixels.data());
        return pixels;
    }
    /// A picture of one colour has come; it is let go.
    [[nodiscard]] bool sees(std::uint32_t colour) {
        return eventually([&] {
            if (!reader->hasPicture())
                return false;
            const auto last = pixels(reader->size().height() - 1);
            reader->letGo();
            return last == std::array{colour, colour, colour};
        });
    }
    /// Gives more bad pictures than there are buffers, so that some have come back: the one that is held stays.
    void expectRefused(CastNode &node, const CastNode::Said &said) {
        const auto held = pixels(0);
        for (int i = 0; i < 10; ++i) {
            ASSERT_TRUE(eventually([&] { return node.give(said); })) << i;
            reader->dispatch();
            ASSERT_TRUE(reader->hasPicture() && pixels(0) == held) << i;
        }
    }

    PrivatePipeWire pipeWire;
    std::optional<CastReader> reader{std::in_place};
};

TEST_F(CastReading, aPictureComesAsItWasPaintedInEitherOrderOfItsColoursAndEitherKindOfMemory) {
    for (const bool isRedFirst : {false, true}) {
        CastNode node({.colours = isRedFirst ? CastNode::Colours::redFirst : CastNode::Colours::blueFirst,
                       .isSealed = isRedFirst});
        reader.emplace();
        ASSERT_NO_FATAL_FAILURE(open(node, 0xff102030));
        node.paint({1, 5, 3, 1}, 0xffc0b0a0);
        ASSERT_TRUE(eventually([this] { return pixels(5)[0] == 0xffc0b0a0; }));
        EXPECT_EQ(pixels(5), (std::array{0xffc0b0a0U, 0xffc0b0a0U, 0xffc0b0a0U}));
        EXPECT_EQ(pixels(6), (std::array{0xff102030U, 0xff102030U, 0xff102030U}));
        EXPECT_EQ(reader->size(), QSize(64, 48));
    }
}

TEST_F(CastReading, pictureAfterPictureComesWhileTheOneBeforeIsLetGo) {
    CastNode node({});
    ASSERT_NO_FATAL_FAILURE(open(node, 0xff445566));
    for (std::uint32_t i = 1; i <= 20; ++i) {
        node.paint(0xff000000 + i);
        ASSERT_TRUE(sees(0xff000000 + i)) << i;
    }
    EXPECT_EQ(reader->lost(), std::nullopt);
}

TEST_F(CastReading, whatIsToldOfALineIsNotBelievedBeyondTheMemory) {
    CastNode node({});
    ASSERT_NO_FATAL_FAILURE(open(node, 0xff445566));
    node.paint(0xff778899);
    ASSERT_TRUE(eventually([this] { return pixels(0)[0] == 0xff778899; }));
    node.hide(0xff123456);
    const CastNode::Said hostile[] = {{.stride = -256},       {.stride = 255},      {.stride = 257},
                                      {.stride = 0x7fffffff}, {.offset = 4},        {.offset = 0xfffffff0},
                                      {.isEmpty = true},      {.isCorrupted = true}};
    for (const CastNode::Said &said : hostile)
        ASSERT_NO_FATAL_FAILURE(expectRefused(node, said)) << &said - hostile;
}

TEST_F(CastReading, memoryThatEndsBeforeWhatIsToldOfItIsNotRead) {
    CastNode node({.memoryBytes = 4096});
    ASSERT_NO_FATAL_FAILURE(open(node, 0xff445566));
    node.hide(0xff123456);
    ASSERT_NO_FATAL_FAILURE(expectRefused(node, {}));
}

TEST_F(CastReading, memoryThatIsTakenAwayWhileItIsReadIsBlack) {
    CastNode node({.isSealed = false});
    ASSERT_NO_FATAL_FAILURE(open(node, 0xff445566));
    ASSERT_TRUE(node.takeMemoryAway());
    EXPECT_EQ(pixels(47), (std::array{0xff000000U, 0xff000000U, 0xff000000U}));
    EXPECT_EQ(reader->lost(), std::nullopt);
}

TEST_F(CastReading, memoryThatIsSealedStays) {
    CastNode node({.isSealed = true});
    ASSERT_NO_FATAL_FAILURE(open(node, 0xff445566));
    ASSERT_FALSE(node.takeMemoryAway());
    EXPECT_EQ(pixels(47), (std::array{0xff445566U, 0xff445566U, 0xff445566U}));
}

TEST_F(CastReading, memoryOfTheGraphicsCardIsLeftForMemoryThatCanBeRead) {
    CastNode node({.memory = CastNode::Memory::both});
    ASSERT_NO_FATAL_FAILURE(open(node, 0xff445566));
}

TEST_F(CastReading, picturesOfAnotherSizeAreToldAsSuch) {
    CastNode node({});
    ASSERT_NO_FATAL_FAILURE(open(node, 0xff445566));
    node.resize({96, 20});
    ASSERT_TRUE(eventually([this] { return reader->size() == QSize(96, 20); }));
    ASSERT_TRUE(eventually([&] { return reader->hasPicture() || (node.paint(0xff778899), false); }));
    EXPECT_TRUE(sees(0xff778899));
}

TEST_F(CastReading, aNodeThatGoesIsTold) {
    {
        CastNode node({});
        ASSERT_NO_FATAL_FAILURE(open(node, 0xff445566));
    }
    EXPECT_TRUE(eventually([this] { return reader->lost().has_value(); }));
}

TEST_F(CastReading, aNodeThatIsNotThereIsTold) {
    static_cast<void>(reader->open(4711));
    EXPECT_TRUE(eventually([this] { return reader->lost().has_value(); }));
}

TEST_F(CastReading, aServerThatDiesIsTold) {
    CastNode node({});
    ASSERT_NO_FATAL_FAILURE(open(node, 0xff445566));
    pipeWire.end();
    EXPECT_TRUE(eventually([this] { return reader->lost().has_value(); }));
}

TEST_F(CastReading, aServerThatStandsStillHoldsUpNobody) {
    CastNode node({});
    const auto number = node.number();
    auto before = std::make_unique<CastReader>();
    ASSERT_FALSE(before->open(number));
    ASSERT_TRUE(waitUntil([&] { return before->dispatch(), node.isSeen(); }));
    pipeWire.hang();
    QElapsedTimer timer;
    timer.start();
    before->dispatch();
    before.reset();
    {
        CastReader after;
        static_cast<void>(after.open(number));
        after.dispatch();
    }
    EXPECT_LT(timer.elapsed(), 5'000); // it would be for ever
    pipeWire.end();
}

TEST(CastReader, withoutAServerThereIsNothingToRead) {
    const QByteArray before = qgetenv("XDG_RUNTIME_DIR");
    const QTemporaryDir empty;
    qputenv("XDG_RUNTIME_DIR", empty.path().toUtf8());
    CastReader reader;
    EXPECT_TRUE(reader.open(42));
    reader.dispatch();
    EXPECT_FALSE(reader.hasPicture());
    qputenv("XDG_RUNTIME_DIR", before);
}

} // namespace
} // namespace tavrine::test
