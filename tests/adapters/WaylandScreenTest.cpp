// What is worked out of a compositor's words: where outputs lie among all pixels, how copied pixels lie in memory, and
// what a tree of windows says.
#include "adapters/wayland/frozen/SwayWindows.h"
#include "adapters/wayland/screen/CopiedPixels.h"
#include "adapters/wayland/screen/WaylandOutputs.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

WaylandOutput output(const QRect &logical, QSize mode, int transform = WL_OUTPUT_TRANSFORM_NORMAL) {
    WaylandOutput made;
    made.logical = logical;
    made.mode = mode;
    made.transform = transform;
    return made;
}

TEST(OutputPlaces, whatIsBesideAnotherOnTheDesktopIsSoInPixels) {
    // 1280 pixels at 1.5 are 853 points and a third.
    const std::vector outputs{output({0, 0, 853, 480}, {1280, 720}), output({853, 0, 853, 480}, {1280, 720}),
                              output({853, 480, 853, 480}, {1280, 720})};
    EXPECT_TRUE(haveOneScale(outputs));
    EXPECT_EQ(outputs[0].scale(), 1.5);
    EXPECT_EQ(placesOf(outputs),
              (std::vector{QRect(0, 0, 1280, 720), QRect(1280, 0, 1280, 720), QRect(1280, 720, 1280, 720)}));
}

TEST(OutputPlaces, noneCoversAnotherWhereScalesDiffer) {
    const std::vector outputs{output({-1280, 0, 1280, 720}, {1280, 720}), output({0, 0, 640, 360}, {1280, 720}),
                              output({640, 100, 853, 480}, {1280, 720})};
    EXPECT_FALSE(haveOneScale(outputs));
    const auto places = placesOf(outputs);
    for (size_t a = 0; a < places.size(); ++a) {
        EXPECT_GE(places[a].x(), 0);
        EXPECT_EQ(places[a].size(), QSize(1280, 720));
        for (size_t b = 0; b < a; ++b)
            EXPECT_FALSE(places[a].intersects(places[b])) << a << ' ' << b;
    }
}

TEST(OutputPlaces, aTurnedOutputIsAsHighAsItIsSeen) {
    EXPECT_EQ(placesOf({output({0, 0, 720, 1280}, {1280, 720}, WL_OUTPUT_TRANSFORM_90)}),
              std::vector{QRect(0, 0, 720, 1280)});
}

/// A picture of 3 x 2 pixels, 1 to 6, as it lies in the memory of a turned output.
struct Turned {
    int transform;
    QSize size;
    std::vector<quint32> pixels;
};

TEST(CopiedPixels, areSeenUprightHoweverTheOutputIsTurned) {
    const Turned cases[] = {
        {WL_OUTPUT_TRANSFORM_NORMAL, {3, 2}, {1, 2, 3, 4, 5, 6}},
        {WL_OUTPUT_TRANSFORM_90, {2, 3}, {3, 6, 2, 5, 1, 4}},
        {WL_OUTPUT_TRANSFORM_180, {3, 2}, {6, 5, 4, 3, 2, 1}},
        {WL_OUTPUT_TRANSFORM_270, {2, 3}, {4, 1, 5, 2, 6, 3}},
        {WL_OUTPUT_TRANSFORM_FLIPPED, {3, 2}, {3, 2, 1, 6, 5, 4}},
        {WL_OUTPUT_TRANSFORM_FLIPPED_90, {2, 3}, {1, 4, 2, 5, 3, 6}},
        {WL_OUTPUT_TRANSFORM_FLIPPED_180, {3, 2}, {4, 5, 6, 1, 2, 3}},
        {WL_OUTPUT_TRANSFORM_FLIPPED_270, {2, 3}, {6, 3, 5, 2, 4, 1}},
    };
    for (const Turned &each : cases) {
        const CopiedPixels copied{.data = reinterpret_cast<const std::uint8_t *>(each.pixels.data()),
                                  .format = WL_SHM_FORMAT_XRGB8888,
                                  .size = each.size,
                                  .lineBytes = each.size.width() * 4,
                                  .transform = each.transform};
        ASSERT_EQ(copied.seenSize(), QSize(3, 2));
        std::vector<quint32> seen(6);
        copied.putInto({seen.data(), 3, 2}, {}, {0, 0, 3, 2});
        EXPECT_EQ(seen, (std::vector<quint32>{1, 2, 3, 4, 5, 6})) << each.transform;
        // Where a place of the memory is seen: that of the pixel 3, in the upper right corner.
        const auto at = std::find(each.pixels.begin(), each.pixels.end(), 3U) - each.pixels.begin();
        const QPoint place(static_cast<int>(at) % each.size.width(), static_cast<int>(at) / each.size.width());
        EXPECT_EQ(copied.seen(QRect(place, QSize(1, 1))), QRect(2, 0, 1, 1)) << each.transform;
    }
}

TEST(CopiedPixels, mayLieUpsideDownAndInOtherOrders) {
    const quint32 lines[] = {0x00030201, 0x00060504};
    CopiedPixels copied{.data = reinterpret_cast<const std::uint8_t *>(lines),
                        .format = WL_SHM_FORMAT_XBGR8888,
                        .size = {1, 2},
                        .lineBytes = 4,
                        .isUpsideDown = true};
    std::vector<quint32> seen(2);
    copied.putInto({seen.data(), 1, 2}, {}, {0, 0, 1, 2});
    EXPECT_EQ(seen, (std::vector<quint32>{0x040506, 0x010203}));
    EXPECT_EQ(copied.seen({0, 0, 1, 1}), QRect(0, 1, 1, 1));
    EXPECT_FALSE(copied.isPlain());

    const quint32 deep = 0x3ffU << 20 | 0x200U << 10 | 0x004U; // ten bits each
    copied = {.data = reinterpret_cast<const std::uint8_t *>(&deep),
              .format = WL_SHM_FORMAT_XRGB2101010,
              .size = {1, 1},
              .lineBytes = 4};
    copied.putInto({seen.data(), 1, 1}, {}, {0, 0, 1, 1});
    EXPECT_EQ(seen[0], 0xff8001U);
    EXPECT_FALSE(isKnownFormat(WL_SHM_FORMAT_NV12));
}

TEST(CopiedPixels, nothingIsWrittenOutsideOfTheTarget) {
    const std::vector<quint32> pixels(12, 7);
    const CopiedPixels copied{.data = reinterpret_cast<const std::uint8_t *>(pixels.data()),
                              .format = WL_SHM_FORMAT_XRGB8888,
                              .size = {4, 3},
                              .lineBytes = 16};
    std::vector<quint32> seen(6);
    copied.putInto({seen.data(), 2, 2}, {-3, 1}, {-5, -5, 100, 100}); // two pixels more lie behind
    EXPECT_EQ(seen, (std::vector<quint32>{0, 0, 7, 0, 0, 0}));
}

TEST(SwayTree, tellsVisibleWindowsTheTopmostFirstAndWithTheirTitles) {
    const QByteArray tree = R"({"nodes": [{"nodes": [{"rect": {"x": 0, "y": 0, "width": 9, "height": 9},
        "nodes": [{"pid": 1, "visible": true, "rect": {"x": 0, "y": 20, "width": 400, "height": 300},
                   "deco_rect": {"x": 0, "y": 0, "width": 400, "height": 20}},
                  {"pid": 2, "visible": false, "rect": {"x": 0, "y": 0, "width": 800, "height": 600}}],
        "floating_nodes": [{"pid": 3, "visible": true, "rect": {"x": 5, "y": 6, "width": 70, "height": 80}},
                           {"pid": 4, "visible": true, "rect": {"x": 50, "y": 60, "width": 70, "height": 80}}]}]}]})";
    EXPECT_EQ(swayWindowsIn(tree), (std::vector{QRect(50, 60, 70, 80), QRect(5, 6, 70, 80), QRect(0, 0, 400, 320)}));
}

TEST(SwayTree, whatIsNoTreeHasNoWindows) {
    EXPECT_TRUE(swayWindowsIn("").empty());
    EXPECT_TRUE(swayWindowsIn("[1, 2]").empty());
    EXPECT_TRUE(swayWindowsIn(R"({"nodes": 3, "pid": 1, "visible": true})").empty());
    QByteArray deep;
    for (int i = 0; i < 500; ++i)
        deep += R"({"nodes": [)";
    EXPECT_TRUE(swayWindowsIn(deep).empty());
}

} // namespace
} // namespace tavrine
