#include "utilities/meter/SpeedImage.h"

#include "utilities/meter/SpeedCanvas.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

constexpr QColor label{0, 255, 0};
constexpr QColor blue{0, 0, 255};
constexpr QColor systemRed{255, 59, 48};

SpeedPicture picture(SpeedDisplayMode mode = SpeedDisplayMode::downloadOnly,
                     SpeedTheme theme = SpeedTheme::glassEffect) {
    return {.download = QStringLiteral("12.3MB"), .upload = QStringLiteral(" 517KB"), .mode = mode, .theme = theme};
}

QImage drawn(const SpeedPicture &wanted, double scale = 1, bool isSquare = false) {
    return speedImage(wanted).draw({.scale = scale, .label = label, .isSquare = isSquare});
}

QImage drawnOnAStrip(const SpeedPicture &wanted, double scale = 1) {
    return speedImage(wanted).draw({.scale = scale, .label = label, .isStrip = true});
}

/// How much of it is exactly of that colour.
int inked(const QImage &image, const QColor &color) {
    int pixels = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            pixels += image.pixelColor(x, y) == color ? 1 : 0;
    return pixels;
}

/// The smallest rectangle, in points from the lower left, outside of which nothing is like `color`.
QRectF placeOf(const QImage &image, const QColor &color, double scale = 1) {
    QRect place;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            const int distance = std::abs(pixel.red() - color.red()) + std::abs(pixel.green() - color.green()) +
                                 std::abs(pixel.blue() - color.blue());
            if (pixel.alpha() > 127 && distance < 30)
                place |= QRect(x, y, 1, 1);
        }
    return {place.x() / scale, (image.height() - place.y() - place.height()) / scale, place.width() / scale,
            place.height() / scale};
}

TEST(SpeedImage, is70By22ConnectedAnd92By22NotInEveryModeAndTheme) {
    for (const auto &mode : speedDisplayModeTexts)
        for (const auto &theme : speedThemeTexts)
            for (const double scale : {1.0, 1.5, 2.0}) {
                SpeedPicture wanted = picture(mode.choice, theme.choice);
                const StatusImage connected = speedImage(wanted);
                EXPECT_EQ(QSize(connected.width, connected.height), QSize(70, 22));
                EXPECT_FALSE(connected.isTemplate);
                EXPECT_EQ(drawn(wanted, scale).size(), QSize(int(70 * scale), int(22 * scale)));
                wanted.isConnected = false;
                const StatusImage none = speedImage(wanted);
                EXPECT_EQ(QSize(none.width, none.height), QSize(92, 22));
                EXPECT_EQ(drawn(wanted, scale).size(), QSize(int(92 * scale), int(22 * scale)));
            }
}

TEST(SpeedImage, theGlassThemeHasNoGroundAndTheTraysOwnColourForText) {
    const QImage image = drawn(picture(), 2);
    EXPECT_EQ(image.pixelColor(70, 2).alpha(), 0);
    EXPECT_EQ(image.pixelColor(4, 22).alpha(), 0);
    EXPECT_FALSE(placeOf(image, label, 2).isEmpty());
}

TEST(SpeedImage, theOtherThemesFillARoundedRectangleOneAndTwoPointsInside) {
    for (const auto &[theme, grey] : {std::pair(SpeedTheme::white, 237), {SpeedTheme::black, 31}}) {
        const QImage image = drawn(picture(SpeedDisplayMode::both, theme), 4);
        EXPECT_EQ(placeOf(image, QColor(grey, grey, grey), 4), QRectF(2, 1, 66, 20));
        EXPECT_EQ(image.pixelColor(9, 5).alpha(), 0); // the corner of a radius of six points
        EXPECT_EQ(image.pixelColor(8 + 24, 4), QColor(grey, grey, grey));
    }
}

TEST(SpeedImage, onALightGroundTextIsNearlyBlackAndOnADarkOneNearlyWhite) {
    const QColor dark(26, 26, 26);
    const QColor light(235, 235, 235);
    for (const auto &mode : speedDisplayModeTexts)
        for (const bool isConnected : {true, false}) {
            SCOPED_TRACE(mode.text);
            SpeedPicture wanted = picture(mode.choice, SpeedTheme::white);
            wanted.isConnected = isConnected;
            EXPECT_GT(inked(drawn(wanted, 4), dark), 100);
            EXPECT_EQ(inked(drawn(wanted, 4), label), 0);
            wanted.theme = SpeedTheme::black;
            EXPECT_GT(inked(drawn(wanted, 4), light), 100);
            EXPECT_EQ(inked(drawn(wanted, 4), label), 0);
        }
}

TEST(SpeedImage, theGroundIsAsWideWithoutAConnection) {
    SpeedPicture wanted = picture(SpeedDisplayMode::both, SpeedTheme::black);
    wanted.isConnected = false;
    EXPECT_EQ(placeOf(drawn(wanted, 4), QColor(31, 31, 31), 4), QRectF(2, 1, 88, 20));
}

TEST(SpeedImage, withTheIndicatorTheWholePictureIsFilledWithARadiusOfElevenAndTextIsWhite) {
    SpeedPicture wanted = picture(SpeedDisplayMode::downloadOnly, SpeedTheme::white);
    wanted.isAwake = true;
    wanted.indicator = blue;
    const QImage image = drawn(wanted, 4);
    EXPECT_EQ(placeOf(image, blue, 4), QRectF(0, 0, 70, 22));
    EXPECT_EQ(image.pixelColor(11, 11).alpha(), 0); // outside of the round end, inside of one of radius six
    EXPECT_FALSE(placeOf(image, Qt::white, 4).isEmpty());
}

TEST(SpeedImage, theIndicatorIsForTheTimeAwakeOnly) {
    SpeedPicture wanted = picture();
    wanted.indicator = blue;
    EXPECT_TRUE(placeOf(drawn(wanted, 2), blue, 2).isEmpty());
    EXPECT_FALSE(placeOf(drawn(wanted, 2), label, 2).isEmpty());
}

TEST(SpeedImage, oneFigureStandsInTheMiddleWithItsArrow) {
    for (const auto mode : {SpeedDisplayMode::downloadOnly, SpeedDisplayMode::uploadOnly})
        for (const double scale : {1.0, 2.0, 4.0}) {
            const QRectF place = placeOf(drawn(picture(mode), scale), label, scale);
            EXPECT_GE(place.left(), 4);
            EXPECT_LE(place.right(), 66);
            EXPECT_NEAR(place.center().x(), 35, 2.5);
            EXPECT_GE(place.top(), 6);     // above the line's lower edge
            EXPECT_LE(place.bottom(), 18); // below its upper edge
        }
}

TEST(SpeedImage, oneFigureIsOfMediumWeightAndTenPointsInALineOfTwelve) {
    for (const bool isUpload : {false, true}) {
        SpeedCanvas said(70, 22, 4);
        said.textWithArrow({4, 6, 62, 12}, isUpload ? ArrowDirection::up : ArrowDirection::down,
                           isUpload ? QStringLiteral(" 517KB") : QStringLiteral("12.3MB"), {10, QFont::Medium, label});
        EXPECT_EQ(drawn(picture(isUpload ? SpeedDisplayMode::uploadOnly : SpeedDisplayMode::downloadOnly), 4),
                  said.image());
    }
}

TEST(SpeedImage, bothFiguresAreOfMediumWeightAndEightPointsWithBoldArrows) {
    SpeedCanvas said(70, 22, 4);
    const SpeedCanvas::Style arrows{8, QFont::Bold, QColor(184, 184, 184)};
    const SpeedCanvas::Style figures{8, QFont::Medium, label};
    said.arrow({7, 3}, ArrowDirection::up, arrows);
    said.arrow({7, 11}, ArrowDirection::down, arrows);
    said.text({16, 3, 46, 9}, QStringLiteral("517KB"), figures, Qt::AlignRight);
    said.text({16, 11, 46, 9}, QStringLiteral("12.3MB"), figures, Qt::AlignRight);
    EXPECT_EQ(drawn(picture(SpeedDisplayMode::both), 4), said.image());
}

TEST(SpeedImage, theArrowOfTheDownloadPointsDownAndThatOfTheUploadUp) {
    // The middle of an arrow is empty between its two lines and full at its tip.
    const auto tip = [](SpeedDisplayMode mode) {
        const QImage image = drawn(picture(mode), 4);
        const QRectF place = placeOf(image, label, 4);
        const QRectF arrow = placeOf(image.copy(int(place.left() * 4), 0, 28, 88), label, 4);
        const int middle = qRound((place.left() + arrow.center().x()) * 4);
        for (int y = 0; y < image.height(); ++y)
            if (image.pixelColor(middle, y).alpha() > 127)
                return y;
        return -1;
    };
    EXPECT_GT(tip(SpeedDisplayMode::downloadOnly), 40);
    EXPECT_LT(tip(SpeedDisplayMode::uploadOnly), 30);
}

TEST(SpeedImage, bothFiguresStandAboveOneAnotherWithTheArrowsAtTheLeft) {
    const QImage image = drawn(picture(SpeedDisplayMode::both), 4);
    const QRectF figures = placeOf(image, label, 4);
    EXPECT_GE(figures.left(), 16);
    EXPECT_NEAR(figures.right(), 62, 1);
    EXPECT_GE(figures.top(), 1);
    EXPECT_LE(figures.bottom(), 20);
    const QRectF arrows = placeOf(image, QColor(184, 184, 184), 4);
    EXPECT_NEAR(arrows.left(), 8, 1);
    EXPECT_LE(arrows.right(), 15);
    EXPECT_NEAR(arrows.top(), 4.9, 1); // above the upload's descent
    EXPECT_NEAR(arrows.bottom(), 18.7, 1);
}

TEST(SpeedImage, theUpperFigureIsTheDownload) {
    SpeedPicture wanted = picture(SpeedDisplayMode::both);
    wanted.upload = QStringLiteral("   1 B");
    const QImage image = drawn(wanted, 4);
    const double upper = placeOf(image.copy(64, 0, 216, 44), label, 4).width();
    const double lower = placeOf(image.copy(64, 44, 216, 44), label, 4).width();
    EXPECT_GT(upper, lower + 5);
}

TEST(SpeedImage, theArrowsOfBothTakeTheThemesColourAndAreWhiteWhileAwakeWithAndWithoutIndicator) {
    for (const auto &[theme, grey] :
         {std::pair(SpeedTheme::glassEffect, 184), {SpeedTheme::white, 85}, {SpeedTheme::black, 184}}) {
        SpeedPicture wanted = picture(SpeedDisplayMode::both, theme);
        const auto arrowsAre = [&wanted](int level) {
            const QImage image = drawn(wanted, 4).copy(28, 0, 32, 88);
            int pixels = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    pixels += image.pixelColor(x, y) == QColor(level, level, level) ? 1 : 0;
            return pixels > 100;
        };
        EXPECT_TRUE(arrowsAre(grey));
        wanted.isAwake = true;
        EXPECT_TRUE(arrowsAre(255));
        EXPECT_FALSE(arrowsAre(grey));
        wanted.indicator = blue;
        EXPECT_TRUE(arrowsAre(255));
    }
}

TEST(SpeedImage, aSymbolThatCannotBeMadeIsAnOval) {
    SpeedCanvas canvas(22, 22, 4);
    canvas.symbolOrOval({6, 5, 12, 12}, QStringLiteral("no.such.symbol"), {8, 8, 6, 6}, systemRed);
    const QImage image = canvas.image();
    EXPECT_EQ(placeOf(image, systemRed, 4), QRectF(8, 8, 6, 6));
    EXPECT_EQ(image.pixelColor(8 * 4 + 1, 8 * 4 + 1).alpha(), 0); // no square
    SpeedCanvas other(22, 22, 4);
    other.symbolOrOval({6, 5, 12, 12}, QStringLiteral("wifi.slash"), {8, 8, 6, 6}, systemRed);
    EXPECT_GT(placeOf(other.image(), systemRed, 4).width(), 8);
}

TEST(SpeedImage, withoutAConnectionItShowsTheRedSymbolAndSaysSoInEveryMode) {
    for (const auto &mode : speedDisplayModeTexts) {
        SpeedPicture wanted = picture(mode.choice);
        wanted.isConnected = false;
        const QImage image = drawn(wanted, 4);
        const QRectF symbol = placeOf(image, systemRed, 4);
        EXPECT_TRUE(QRectF(6, 5, 12, 12).contains(symbol)) << symbol.x() << " " << symbol.y();
        EXPECT_GT(symbol.width(), 8);
        const QRectF words = placeOf(image, label, 4);
        EXPECT_NEAR(words.left(), 21, 1.5);
        EXPECT_LE(words.right(), 90);
        EXPECT_GT(words.width(), 55);
        EXPECT_GE(words.top(), 4);
        EXPECT_LE(words.bottom(), 18);
        SpeedCanvas said(92, 22, 4);
        said.text({21, 4, 69, 14}, QStringLiteral("No Connection"), {9, QFont::DemiBold, label}, Qt::AlignLeft);
        const QRect place(20 * 4, 0, 72 * 4, 22 * 4);
        EXPECT_EQ(image.copy(place), said.image().copy(place));
    }
}

TEST(SpeedImage, aFigureThatIsTooLongIsSetSmallerAndStaysInside) {
    SpeedPicture wanted = picture();
    wanted.download = QStringLiteral("123456.7MB");
    EXPECT_LE(placeOf(drawn(wanted, 2), label, 2).right(), 67);
    wanted.mode = SpeedDisplayMode::both;
    EXPECT_GE(placeOf(drawn(wanted, 2), label, 2).left(), 16);
}

TEST(SpeedImage, onASquareGroundEveryKindIsASquareThatIsFilled) {
    for (const auto &mode : speedDisplayModeTexts)
        for (const bool isConnected : {true, false})
            for (const double scale : {1.0, 2.0}) {
                SpeedPicture wanted = picture(mode.choice);
                wanted.isConnected = isConnected;
                const QImage image = drawn(wanted, scale, true);
                EXPECT_EQ(image.size(), QSize(int(22 * scale), int(22 * scale)));
                const QRectF place = placeOf(image, isConnected ? label : systemRed, scale);
                EXPECT_GT(place.width(), 11) << mode.text;
                EXPECT_GT(place.height(), 11) << mode.text;
            }
}

TEST(SpeedImage, onASquareGroundOneFigureStandsOverItsArrowAndUnit) {
    for (const bool isUpload : {false, true}) {
        SpeedCanvas said(22, 22, 4);
        said.text({2, 10, 18, 12}, isUpload ? QStringLiteral("517") : QStringLiteral("12.3"),
                  {11, QFont::DemiBold, label}, Qt::AlignHCenter);
        said.textWithArrow({2, 1, 18, 9}, isUpload ? ArrowDirection::up : ArrowDirection::down,
                           isUpload ? QStringLiteral("KB") : QStringLiteral("MB"), {8, QFont::Medium, label});
        EXPECT_EQ(drawn(picture(isUpload ? SpeedDisplayMode::uploadOnly : SpeedDisplayMode::downloadOnly), 4, true),
                  said.image());
    }
}

TEST(SpeedImage, onASquareGroundBothFiguresStandWithTheFirstLetterOfTheirUnitsTheDownloadAbove) {
    const QImage image = drawn(picture(SpeedDisplayMode::both), 4, true);
    const auto half = [&](int top, const char *figure) {
        SpeedCanvas said(22, 22, 4);
        const SpeedCanvas::Style style{
            said.sizeThatFits({QStringLiteral("12.3M"), QStringLiteral("517K")}, 20, {9, QFont::Medium, {}}),
            QFont::Medium, label};
        const double height = SpeedCanvas::lineHeight(style.size);
        said.text({1, (top == 0 ? 16 : 6) - height / 2, 20, height}, QLatin1String(figure), style, Qt::AlignRight);
        return said.image().copy(0, top, 88, 44);
    };
    EXPECT_EQ(image.copy(0, 0, 88, 44), half(0, "12.3M"));
    EXPECT_EQ(image.copy(0, 44, 88, 44), half(44, "517K"));
}

TEST(SpeedImage, onAStripItIsTheSameWithoutTheRowsInWhichNothingIsWritten) {
    for (const auto &mode : speedDisplayModeTexts)
        for (const bool isConnected : {true, false})
            for (const int scale : {1, 2, 4}) {
                SCOPED_TRACE(std::string(mode.text) + (isConnected ? "" : " without a connection"));
                SpeedPicture wanted = picture(mode.choice);
                wanted.isConnected = isConnected;
                const QImage whole = drawn(wanted, scale);
                const int width = (isConnected ? 70 : 92) * scale;
                EXPECT_EQ(drawnOnAStrip(wanted, scale), whole.copy(0, 3 * scale, width, 16 * scale));
                QImage nothing(width, 3 * scale, whole.format());
                nothing.fill(Qt::transparent);
                EXPECT_EQ(whole.copy(0, 0, width, 3 * scale), nothing);
                EXPECT_EQ(whole.copy(0, 19 * scale, width, 3 * scale), nothing);
            }
}

TEST(SpeedImage, onAStripTheGroundsAreAsHighAsItIs) {
    SpeedPicture wanted = picture(SpeedDisplayMode::both, SpeedTheme::black);
    EXPECT_EQ(placeOf(drawnOnAStrip(wanted, 4), QColor(31, 31, 31), 4), QRectF(2, 0, 66, 16));
    EXPECT_EQ(drawnOnAStrip(wanted, 4).pixelColor(20, 1).alpha(), 0); // round at the strip's own edge
    wanted.isAwake = true;
    wanted.indicator = blue;
    const QImage image = drawnOnAStrip(wanted, 4);
    EXPECT_EQ(placeOf(image, blue, 4), QRectF(0, 0, 70, 16));
    EXPECT_EQ(image.pixelColor(6, 6).alpha(), 0); // outside of a round end of eight points
}

TEST(SpeedImage, lettersStandOnWholePixels) {
    // The foot of the figures is one sharp line: below it nothing, not even a shade.
    for (const double scale : {1.0, 1.09, 1.5, 2.0}) {
        const QImage image = drawn(picture(), scale);
        const int baseline = qRound((4 + 0.952 * 10) * scale); // the line's top is four points from the picture's
        int inked = 0;
        for (int x = 0; x < image.width(); ++x) {
            EXPECT_EQ(image.pixelColor(x, baseline + 1).alpha(), 0) << scale << " at " << x;
            inked += image.pixelColor(x, baseline - 1).alpha() > 200 ? 1 : 0;
        }
        EXPECT_GT(inked, 3) << scale;
    }
}

TEST(SpeedImage, whatLooksTheSameHasOneIdentityAndWhatDoesNotHasAnother) {
    const auto identity = [](auto change) {
        SpeedPicture wanted = picture();
        change(wanted);
        return speedImage(wanted).identity;
    };
    const QString plain = identity([](SpeedPicture &) {});
    EXPECT_FALSE(plain.isEmpty());
    EXPECT_EQ(identity([](SpeedPicture &each) { each.upload = QStringLiteral("   9 B"); }), plain);
    EXPECT_EQ(identity([](SpeedPicture &each) { each.indicator = blue; }), plain);
    EXPECT_NE(identity([](SpeedPicture &each) { each.download = QStringLiteral("   9 B"); }), plain);
    EXPECT_NE(identity([](SpeedPicture &each) { each.mode = SpeedDisplayMode::uploadOnly; }), plain);
    EXPECT_NE(identity([](SpeedPicture &each) { each.mode = SpeedDisplayMode::both; }), plain);
    EXPECT_NE(identity([](SpeedPicture &each) { each.theme = SpeedTheme::black; }), plain);
    EXPECT_NE(identity([](SpeedPicture &each) { each.isConnected = false; }), plain);
    const QString awake = identity([](SpeedPicture &each) { each.isAwake = true; });
    EXPECT_NE(awake, plain);
    EXPECT_NE(identity([](SpeedPicture &each) {
                  each.isAwake = true;
                  each.indicator = blue;
              }),
              awake);
}

} // namespace
} // namespace tavrine
