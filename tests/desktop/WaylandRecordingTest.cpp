// A recording by the built program on a private desktop of a Wayland compositor, begun and ended with the hand, and the
// movie as FFmpeg's programs read it.

#include "desktop/Program.h"
#include "support/ColourRuns.h"
#include "support/MovieReading.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"
#include "support/WaylandPattern.h"

#include <QColor>
#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace tavrine::testing {
namespace {

using test::packetsOf;
using test::pixelsOf;
using test::runProgram;
using test::streamsOf;

constexpr QRgb red = qRgb(200, 30, 40);
constexpr QRgb green = qRgb(20, 180, 60);

class WaylandRecording : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override {
        ASSERT_TRUE(pattern.isThere());
        ASSERT_EQ(pattern.outputs().size(), 2U);
        output = pattern.outputs()[size_t(GetParam())];
        scale = output.scale();
        ASSERT_TRUE(program.startOnboarded());
        hand.move(output.logical.bottomRight() - QPoint(9, 9)); // the overlay comes to the screen of the pointer
        ASSERT_TRUE(waitUntil([this] { return isPlain(GetParam()); }));
    }

    /// What is to be seen in `area`, in points of the output, by another program and in the output's pixels.
    [[nodiscard]] static QImage shown(const WaylandOutput &output, const QRect &area) {
        const QRect place = area.translated(output.logical.topLeft());
        const QString words = QStringLiteral("%1,%2 %3x%4").arg(place.x()).arg(place.y());
        return QImage::fromData(
            runProgram(QStringLiteral("grim"), {QStringLiteral("-t"), QStringLiteral("ppm"), QStringLiteral("-g"),
                                                words.arg(place.width()).arg(place.height()), QStringLiteral("-")})
                .output);
    }
    /// Nothing covers that output.
    [[nodiscard]] bool isPlain(int index) const {
        const WaylandOutput each = pattern.outputs()[size_t(index)];
        const QPoint corner(5, each.logical.height() - 20);
        const QImage seen = shown(each, {corner, QSize(1, 1)});
        const auto inPixels = [&each](int points) { return int(std::lround(points * each.scale())); };
        return !seen.isNull() &&
               (seen.pixel(0, 0) & 0xffffffU) ==
                   (WaylandPattern::colourAt(index, inPixels(corner.x()), inPixels(corner.y())) & 0xffffffU);
    }
    [[nodiscard]] bool says(const char *words) {
        return waitUntil([&] { return program.output().contains(QLatin1String(words)); });
    }
    /// On the output. A busy compositor that does not tell in time where the pointer is has it opened on another: a
    /// person closes it there and tries again.
    [[nodiscard]] bool openOverlay() {
        for (int tries = 0; tries < 5; ++tries) {
            const auto caller = program.startAgain({QStringLiteral("--record")});
            if (!caller->waitForFinished(10'000) || !waitUntil([this] { return !isPlain(0) || !isPlain(1); }))
                return false;
            if (!isPlain(GetParam()))
                return true;
            hand.tap(KEY_ESC);
            if (!waitUntil([this] { return isPlain(0) && isPlain(1); }))
                return false;
        }
        return false;
    }
    /// `area` in points of the output.
    void startRecording(const QRect &area) {
        ASSERT_TRUE(openOverlay());
        const QPoint origin = output.logical.topLeft();
        hand.drag(origin + area.topLeft(), origin + area.topLeft() + QPoint(area.width(), area.height()));
        hand.tap(KEY_ENTER);
        ASSERT_TRUE(says("from first SCStream frame")) << qPrintable(program.output());
        movie = QRect(pixels(area.x()), pixels(area.y()), pixels(area.width()), pixels(area.height()));
    }
    [[nodiscard]] int pixels(int points) const { return int(std::lround(points * scale)); }

    /// What is not the pattern within an area, both in points of the output: where a window of the recorder's is.
    [[nodiscard]] QRect coveredIn(const QRect &area) const {
        const QImage seen = shown(output, area);
        const QPoint origin(pixels(area.x()), pixels(area.y()));
        QRect covered;
        for (int y = 0; y < seen.height(); ++y)
            for (int x = 0; x < seen.width(); ++x)
                if (!isLike(seen.pixel(x, y), WaylandPattern::colourAt(GetParam(), origin.x() + x, origin.y() + y)))
                    covered |= QRect(x, y, 1, 1);
        return {area.topLeft() + covered.topLeft() / scale, covered.size() / scale};
    }
    /// Clicks at the right end of the bar that is seen in `area`, until the program has heard it.
    [[nodiscard]] bool clickStop(const QRect &area) {
        return waitUntil(
            [&] {
                const QRect bar = coveredIn(area);
                hand.click(output.logical.topLeft() + QPoint(bar.right() - 24, bar.center().y()));
                return waitUntil([this] { return program.output().contains(QLatin1String("stopRecording() called")); },
                                 std::chrono::seconds(2));
            },
            std::chrono::seconds(20));
    }
    /// The movie that the program says it has finished.
    [[nodiscard]] QString finished() {
        QRegularExpressionMatch match;
        (void)waitUntil(
            [&] {
                static const QRegularExpression words(QStringLiteral("finished successfully at (.*), showing preview"));
                match = words.match(program.output());
                return match.hasMatch();
            },
            std::chrono::seconds(30));
        return match.captured(1);
    }
    [[nodiscard]] static std::vector<QImage> picturesOf(const QByteArray &bytes, QSize size) {
        std::vector<QImage> pictures;
        const qsizetype each = qsizetype{3} * size.width() * size.height();
        for (qsizetype at = 0; at + each <= bytes.size(); at += each)
            pictures.push_back(QImage(reinterpret_cast<const uchar *>(bytes.constData()) + at, size.width(),
                                      size.height(), size.width() * 3, QImage::Format_RGB888)
                                   .copy());
        return pictures;
    }
    [[nodiscard]] QString movieThatIsWritten() const {
        const QString folder = program.home() + QStringLiteral("/.cache/Tavrine/tmp/");
        return folder + QDir(folder).entryList({QStringLiteral("*.mp4")}, QDir::Files).value(0);
    }
    /// The newest picture that can be read of the movie while it is written.
    [[nodiscard]] QImage newest() const {
        const auto pictures = picturesOf(pixelsOf(movieThatIsWritten()), movie.size());
        return pictures.empty() ? QImage() : pictures.back();
    }
    /// Paints most of the area, and waits until the movie shows it.
    [[nodiscard]] bool paint(QRgb colour) {
        pattern.paint(GetParam(), movie.adjusted(margin, margin, -margin, -margin), colour);
        return waitUntil([&] {
            const QImage picture = newest();
            return !picture.isNull() && isLike(picture.pixel(picture.rect().center()), colour);
        });
    }
    /// Every picture has the area's frame as it is on the screen, and within it the pattern, red or green in turn.
    void expectOnlyTheArea(const std::vector<QImage> &pictures) const {
        const QImage plain = WaylandPattern::expected(GetParam(), movie);
        const QPoint middle = plain.rect().center();
        int turn = 0;
        const QRgb inTurn[] = {plain.pixel(middle), red, green};
        for (const QImage &picture : pictures) {
            while (turn < 2 && !isLike(picture.pixel(middle), inTurn[turn]))
                ++turn;
            EXPECT_TRUE(isLike(picture.pixel(middle), inTurn[turn]));
            int wrong = 0;
            for (int x = margin / 2; x < plain.width(); x += margin)
                for (const int y : {margin / 2, plain.height() - 1 - margin / 2})
                    wrong += isLike(blurred(picture, {x, y}), blurred(plain, {x, y})) ? 0 : 1;
            EXPECT_EQ(wrong, 0) << "in turn " << turn;
        }
        EXPECT_EQ(turn, 2);
    }
    /// A movie has one colour for four pixels, and is not exact.
    [[nodiscard]] static QRgb blurred(const QImage &picture, QPoint place) {
        int sum[3] = {};
        for (int y = -2; y < 2; ++y)
            for (int x = -2; x < 2; ++x) {
                const QRgb pixel = picture.pixel(place + QPoint(x, y));
                sum[0] += qRed(pixel);
                sum[1] += qGreen(pixel);
                sum[2] += qBlue(pixel);
            }
        return qRgb(sum[0] / 16, sum[1] / 16, sum[2] / 16);
    }
    /// What was recorded between the first picture and the end, `longest` after the key that began it.
    void expectMovie(const QString &path, double betweenPaints, double longest) const {
        ASSERT_FALSE(path.isEmpty());
        EXPECT_EQ(test::complaintsAbout(path), QByteArray());
        const auto streams = streamsOf(path);
        ASSERT_EQ(streams.size(), 1);
        EXPECT_EQ(streams.front()[QLatin1String("width")].toInt(), movie.width());
        EXPECT_EQ(streams.front()[QLatin1String("height")].toInt(), movie.height());
        const double duration = streams.front()[QLatin1String("duration")].toString().toDouble();
        EXPECT_GE(duration, betweenPaints - 0.1);
        EXPECT_LE(duration, longest);
        expectOnlyTheArea(picturesOf(pixelsOf(path), movie.size()));
    }

    void keepPicture(const QImage &picture) const {
        const QString pictures = qEnvironmentVariable("TAVRINE_TEST_PICTURES");
        if (!pictures.isEmpty())
            picture.save(QStringLiteral("%1/preview-%2.png").arg(pictures).arg(GetParam()));
    }

    static constexpr int margin = 16;
    static constexpr int below = 32; ///< the shelf at the upper edge
    WaylandPattern pattern;
    WaylandHand hand;
    WaylandOutput output;
    double scale = 1;
    QRect movie; ///< of the output's pixels
    Program program;
};

TEST_P(WaylandRecording, itsMovieShowsWhatWasDrawnInTheAreaAndNothingOfTheRecorders) {
    QElapsedTimer timer;
    timer.start();
    ASSERT_NO_FATAL_FAILURE(startRecording({200, 140, 320, 200})); // below the bar
    ASSERT_TRUE(paint(red)) << qPrintable(program.output());
    QElapsedTimer betweenPaints;
    betweenPaints.start();
    ASSERT_TRUE(paint(green));
    const double between = double(betweenPaints.elapsed()) / 1000;
    ASSERT_TRUE(clickStop({0, below, output.logical.width(), 120 - below}));
    const QString path = finished();
    expectMovie(path, between, double(timer.elapsed()) / 1000);
}

TEST_P(WaylandRecording, theBarStandsBesideAnAreaThatHasItsPlaceAndTheActionEndsTheRecordingToo) {
    const int width = output.logical.width() - 2 * below;
    ASSERT_NO_FATAL_FAILURE(startRecording({below, below, width, 160}));
    ASSERT_TRUE(paint(red)) << qPrintable(program.output());
    ASSERT_TRUE(paint(green));
    const QRect bar = coveredIn({0, below + 160 + 5, output.logical.width(), 120});
    EXPECT_GE(bar.width(), 200);
    const std::size_t seen = picturesOf(pixelsOf(movieThatIsWritten()), movie.size()).size();
    ASSERT_TRUE(openOverlay()); // which this compositor shows in the pictures as well
    hand.tap(KEY_SPACE);
    const QString path = finished();
    auto pictures = picturesOf(pixelsOf(path), movie.size());
    ASSERT_GE(pictures.size(), seen);
    pictures.resize(seen);
    expectOnlyTheArea(pictures);
}

TEST_P(WaylandRecording, itsPreviewPlaysItAsLargeAsItFits) {
    ASSERT_NO_FATAL_FAILURE(startRecording({200, 140, 320, 200}));
    ASSERT_TRUE(paint(red)) << qPrintable(program.output());
    ASSERT_TRUE(paint(green));
    ASSERT_TRUE(clickStop({0, below, output.logical.width(), 120 - below}));
    ASSERT_FALSE(finished().isEmpty());
    // What was recorded is green by now, and red in the movie alone.
    const QRect preview(24, output.logical.height() - 48 - 430, 380, 430);
    QImage seen;
    QRect place;
    EXPECT_TRUE(waitUntil([&] {
        seen = shown(output, preview);
        place = filledBy(red, seen, pixels(100));
        return !place.isEmpty();
    }));
    keepPicture(seen);
    const QSizeF painted = movie.size() - QSize(2 * margin, 2 * margin);
    // Round it are the pattern's colours, some of which are like it.
    EXPECT_NEAR(double(place.width()) / place.height(), painted.width() / painted.height(), 0.1);
    EXPECT_GT(place.width() / scale, 280);
    EXPECT_NEAR(place.center().x() / scale, preview.width() / 2.0, 8);
    EXPECT_TRUE(waitUntil([&] {
        const QRect later = filledBy(green, shown(output, preview), pixels(100));
        return later.intersects(place) && std::abs(later.height() - place.height()) < 4;
    })) << "and goes on";
}

INSTANTIATE_TEST_SUITE_P(Outputs, WaylandRecording, ::testing::Values(0, 1));

} // namespace
} // namespace tavrine::testing
