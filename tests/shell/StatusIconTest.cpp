#include "shell/StatusIcon.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

constexpr QColor systemBlue{0, 122, 255};

TEST(StatusIcon, isATemplateOfEighteenPointsUnlessAwakeAndIndicated) {
    for (const auto &[isAwake, showsIndicator] : {std::pair(false, false), {false, true}, {true, false}}) {
        const StatusImage icon = statusIcon(isAwake, showsIndicator, QStringLiteral("#FF0000"));
        EXPECT_TRUE(icon.isTemplate);
        EXPECT_EQ(icon.width, 18);
        EXPECT_EQ(icon.height, 18);
        EXPECT_EQ(icon.draw({.scale = 2}).size(), QSize(36, 36));
    }
}

TEST(StatusIcon, isAPillOfTheChosenColourWhenAwakeAndIndicated) {
    const StatusImage icon = statusIcon(true, true, QStringLiteral("#FF8000"));
    EXPECT_FALSE(icon.isTemplate);
    EXPECT_EQ(icon.width, 28);
    EXPECT_EQ(icon.height, 22);
    const QImage image = icon.draw({.scale = 4});
    EXPECT_EQ(image.size(), QSize(112, 88));
    EXPECT_EQ(image.pixelColor(56, 2), QColor(0xFF, 0x80, 0x00)); // the full height
    EXPECT_EQ(image.pixelColor(2, 44), QColor(0xFF, 0x80, 0x00)); // the full width
    EXPECT_EQ(image.pixelColor(2, 2).alpha(), 0);                 // a radius of half the height
    EXPECT_EQ(image.pixelColor(109, 85).alpha(), 0);
}

TEST(StatusIcon, theSymbolOnThePillIsWhiteAndCentred) {
    const QImage pill = statusIcon(true, true, QStringLiteral("#000000")).draw({.scale = 4});
    const QImage symbol = statusIcon(false, false, {}).draw({.scale = 4});
    for (int y = 0; y < symbol.height(); ++y)
        for (int x = 0; x < symbol.width(); ++x)
            ASSERT_NEAR(pill.pixelColor(x + 20, y + 8).red(), symbol.pixelColor(x, y).alpha(), 2) << x << ", " << y;
}

TEST(StatusIcon, theColourIsSixHexadecimalDigitsBehindASign) {
    EXPECT_EQ(indicatorColor(QStringLiteral("#12abEF")), QColor(0x12, 0xAB, 0xEF));
    for (const char *text : {"", "#", "#12345", "#1234567", "123456", "#12345G", "#fff", "red", "#-12345", "# 12345"})
        EXPECT_EQ(indicatorColor(QLatin1String(text)), systemBlue) << text;
}

TEST(StatusIcon, theSymbolStaysInsideItsSquare) {
    EXPECT_TRUE(QRectF(0, 0, 18, 18).contains(menuBarSymbol().boundingRect()));
    EXPECT_FALSE(menuBarSymbol().isEmpty());
}

} // namespace
} // namespace tavrine
