// From a screen's colours to a film's.
#include "programs/recorder/FilmPicture.h"

#include <array>
#include <cmath>
#include <random>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

struct Film {
    Film(int width, int height)
        : lines(static_cast<std::size_t>(height)), perLine(static_cast<std::size_t>(width)),
          luma(perLine * lines, untouched), blue(perLine / 2 * (lines / 2), untouched), red(blue) {}
    FilmPixels pixels() {
        return {.luma = luma.data(),
                .blue = blue.data(),
                .red = red.data(),
                .lumaPerLine = perLine,
                .chromaPerLine = perLine / 2};
    }
    bool operator==(const Film &) const = default;

    static constexpr std::uint8_t untouched = 7;
    std::size_t lines;
    std::size_t perLine;
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> blue;
    std::vector<std::uint8_t> red;
};

std::vector<std::uint8_t> noise(int width, int height) {
    std::mt19937 random(11);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    for (std::uint8_t &byte : bytes)
        byte = static_cast<std::uint8_t>(random() % 4 == 0 ? (random() % 2) * 255 : random());
    return bytes;
}

TEST(Colors, bothWaysGiveTheSameNumbersForEveryPart) {
    if (!hasAvx2())
        GTEST_LOG_(INFO) << "this processor has the plain way alone";
    constexpr int width = 150;
    constexpr int height = 20;
    const auto screen = noise(width, height);
    const ScreenPixels from{.bytes = screen.data(), .bytesPerLine = width * 4};
    const auto convertQuickly = hasAvx2() ? convertWithAvx2 : convertPlainly;
    for (int left = 0; left < 40; left += 2)
        for (int wide = 2; left + wide <= width; wide += 2) {
            Film plain(width, height);
            Film quick(width, height);
            const Part part{left, 4, wide, 6};
            convertPlainly(from, plain.pixels(), part);
            convertQuickly(from, quick.pixels(), part);
            ASSERT_EQ(plain, quick) << left << " " << wide;
        }
}

TEST(Colors, everyColorIsWithinAStepOrLittleMoreOfTheRule) {
    constexpr int width = 64;
    constexpr int height = 2;
    std::mt19937 random(3);
    for (int round = 0; round < 2000; ++round) {
        const std::array<std::uint8_t, 4> color{static_cast<std::uint8_t>(random()),
                                                static_cast<std::uint8_t>(random()),
                                                static_cast<std::uint8_t>(random()), 0};
        std::vector<std::uint8_t> screen;
        for (int i = 0; i < width * height; ++i)
            screen.insert(screen.end(), color.begin(), color.end());
        Film film(width, height);
        convertColors({.bytes = screen.data(), .bytesPerLine = width * 4}, film.pixels(), {0, 0, width, height});
        const double b = color[0] / 255.0;
        const double g = color[1] / 255.0;
        const double r = color[2] / 255.0;
        const double y = 0.2126 * r + 0.7152 * g + 0.0722 * b;
        ASSERT_NEAR(film.luma[33], 16 + 219 * y, 1);
        ASSERT_NEAR(film.blue[17], 128 + 224 * (b - y) / 1.8556, 1.2);
        ASSERT_NEAR(film.red[17], 128 + 224 * (r - y) / 1.5748, 1.2);
    }
}

TEST(Colors, aPartIsRoundedOutwardToEvenNumbersWithinThePicture) {
    EXPECT_EQ(evenPart({3, 5, 2, 1}, 100, 60), (Part{2, 4, 4, 2}));
    EXPECT_EQ(evenPart({2, 4, 2, 2}, 100, 60), (Part{2, 4, 2, 2}));
    EXPECT_EQ(evenPart({-5, -5, 6, 6}, 100, 60), (Part{0, 0, 2, 2}));
    EXPECT_EQ(evenPart({99, 59, 50, 50}, 100, 60), (Part{98, 58, 2, 2}));
    EXPECT_EQ(evenPart({100, 0, 5, 5}, 100, 60).width, 0);
    EXPECT_EQ(evenPart({10, 10, -3, 5}, 100, 60).width, 0);
    constexpr int largest = 2'147'483'647;
    EXPECT_EQ(evenPart({largest, largest, largest, largest}, 100, 60).width, 0);
    EXPECT_EQ(evenPart({-largest - 1, 0, largest, 4}, 100, 60).width, 0);
    EXPECT_EQ(evenPart({1, 1, largest, largest}, 100, 60), (Part{0, 0, 100, 60}));
}

TEST(FilmPicture, onlyWhatChangedIsReadAndOnlyBlocksThatItTouchesCountAsChanged) {
    constexpr int width = 50; // four blocks, the last in part
    constexpr int height = 34;
    FilmPicture film(width, height);
    auto screen = noise(width, height);
    const ScreenPixels from{.bytes = screen.data(), .bytesPerLine = width * 4};
    film.replace(from);
    EXPECT_THAT(film.constantBlocks(), testing::SizeIs(12));
    EXPECT_THAT(film.constantBlocks(), testing::Each(0));
    const std::uint8_t corner = film.pixels().luma[0];
    const std::uint8_t inside = film.pixels().luma[20 * film.pixels().lumaPerLine + 18];
    for (std::uint8_t &byte : screen)
        byte = static_cast<std::uint8_t>(byte + 128);
    film.update(from, {{17, 17, 15, 3}, {49, 33, 1, 1}});
    EXPECT_EQ(film.pixels().luma[0], corner);
    EXPECT_NE(film.pixels().luma[18 * film.pixels().lumaPerLine + 18], inside);
    EXPECT_THAT(film.constantBlocks(), testing::ElementsAre(1, 1, 1, 1, 1, 0, 1, 1, 1, 1, 1, 0));
    film.update(from, {});
    EXPECT_THAT(film.constantBlocks(), testing::Each(1));
}

} // namespace
} // namespace tavrine::test
