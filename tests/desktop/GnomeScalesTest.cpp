// GNOME on two monitors that it enlarges by 1.5 and by 1.25: its X server has a plane of fewer pixels than they do.
#include "desktop/GnomeFixture.h"
#include "support/MovieReading.h"
#include "support/WaylandPattern.h"

#include <cmath>

using namespace tavrine::testing;

namespace {

constexpr QRect left(0, 0, 1280, 720); // on the plane
constexpr QRect right(1280, 0, 1280, 720);

/// The pixels of a monitor that an area of the plane stands for.
QRect pixelsOf(const QRect &area, const QRect &monitor, double scale) {
    const auto place = [scale](int length) { return static_cast<int>(std::lround(length * scale)); };
    const QRect on = area.translated(-monitor.topLeft());
    const QPoint first(place(on.x()), place(on.y()));
    return {first, QPoint(place(on.x() + on.width()) - 1, place(on.y() + on.height()) - 1)};
}

class GnomeScales : public Gnome {
protected:
    void SetUp() override {
        Gnome::SetUp();
        ASSERT_TRUE(start());
        pattern = lineOf(TAVRINE_FULL_PATTERN, "wayland");
        ASSERT_TRUE(pattern->waitForFocus());
        hands.movePointer({640, 400});
    }
    /// `area` is what shall be taken; a drag ends on its last pixel.
    void expectCaptured(const QRect &area, int output, const QRect &pixels, double scale) {
        ASSERT_TRUE(capture(QRect(area.topLeft(), area.size() - QSize(1, 1))));
        const QImage expected = WaylandPattern::expected(output, pixels);
        QImage taken;
        EXPECT_TRUE(waitUntil(
            [&] {
                taken = QImage::fromData(tavrine::testing::paste("image/png")).convertToFormat(QImage::Format_RGB32);
                return taken == expected;
            },
            gnomePatience))
            << taken.width() << "x" << taken.height() << " for " << pixels.width() << "x" << pixels.height();
        EXPECT_NEAR(taken.dotsPerMeterX(), 96 * scale / 0.0254, 1);
    }
    void expectRecorded(const QRect &area, int output, const QRect &pixels) {
        const QString movie = record(area);
        ASSERT_FALSE(movie.isEmpty()) << qPrintable(program.output());
        EXPECT_EQ(tavrine::test::complaintsAbout(movie), QByteArray());
        expectPicturesAreLike(WaylandPattern::expected(output, pixels), tavrine::test::pixelsOf(movie));
    }

    std::unique_ptr<ForeignWindow> pattern;
};

TEST_F(GnomeScales, aCaptureHasThePixelsOfAScreenOfOneAndAHalf) {
    const QRect area(301, 197, 602, 370);
    expectCaptured(area, 0, pixelsOf(area, left, 1.5), 1.5);
}

TEST_F(GnomeScales, aCaptureHasThePixelsOfAScreenOfOneAndAQuarter) {
    const QRect area(right.x() + 301, 197, 602, 371);
    expectCaptured(area, 1, pixelsOf(area, right, 1.25), 1.25);
}

TEST_F(GnomeScales, aCaptureStaysOnTheScreenOnWhichItBegan) {
    const QRect dragged(1100, 200, 400, 300);
    const QRect taken = dragged & left;
    ASSERT_TRUE(capture(QRect(dragged.topLeft(), dragged.size() - QSize(1, 1))));
    const QImage expected = WaylandPattern::expected(0, pixelsOf(taken, left, 1.5));
    EXPECT_TRUE(waitUntil(
        [&] {
            return QImage::fromData(tavrine::testing::paste("image/png")).convertToFormat(QImage::Format_RGB32) ==
                   expected;
        },
        gnomePatience));
}

TEST_F(GnomeScales, aPickedColourIsThatOfOnePixel) {
    const auto asked = program.startAgain({QStringLiteral("--color")});
    ASSERT_TRUE(waitUntil([this] { return desktop.isFrozen(); }, gnomePatience));
    const QPoint place(333, 222);
    ASSERT_TRUE(pointAt(place));
    hands.pressButton();
    hands.releaseButton();
    QByteArray text;
    ASSERT_TRUE(waitUntil(
        [&] {
            text = tavrine::testing::paste();
            return text.startsWith('#');
        },
        gnomePatience));
    const QRgb picked = QColor(QString::fromUtf8(text)).rgb();
    const QRect pixels = pixelsOf(QRect(place, QSize(1, 1)), left, 1.5).adjusted(-1, -1, 1, 1);
    const QImage around = WaylandPattern::expected(0, pixels);
    bool isThere = false;
    for (int y = 0; y < around.height(); ++y)
        for (int x = 0; x < around.width(); ++x)
            isThere = isThere || around.pixel(x, y) == picked;
    EXPECT_TRUE(isThere) << text.toStdString();
}

TEST_F(GnomeScales, aRecordingHasThePixelsOfAScreenOfOneAndAHalf) {
    expectRecorded({301, 197, 600, 370}, 0, {452, 296, 900, 554});
}

TEST_F(GnomeScales, aRecordingHasThePixelsOfAScreenOfOneAndAQuarter) {
    expectRecorded({right.x() + 301, 197, 600, 370}, 1, {376, 246, 750, 462});
}

TEST_F(GnomeScales, aPanelOpensWholeOnTheScreenThatThePointerIsOn) {
    for (const QRect &screen : {left, right}) {
        hands.movePointer(screen.center());
        ASSERT_TRUE(openPanel());
        const QRect panel = desktop.geometry(desktop.windowsTitled(QLatin1String(clipboardPanel)).front());
        EXPECT_TRUE(screen.contains(panel)) << panel.x() << ", " << panel.y() << ", " << panel.width();
        EXPECT_LE(std::abs(panel.center().x() - screen.center().x()), 1);
        closePanel();
    }
}

} // namespace
