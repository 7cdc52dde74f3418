#include "look/Theme.h"

#include "adapters/fake/VirtualTime.h"
#include "look/Look.h"
#include "look/SearchField.h"

#include <QLineEdit>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

const QColor accents[] = {defaultAccent,
                          QColor(0xFF, 0x95, 0x00),
                          QColor(0xFF, 0xE6, 0x00),
                          QColor(0xE6, 0x1A, 0x4B),
                          QColor(0x00, 0x00, 0x00),
                          QColor(0xFF, 0xFF, 0xFF),
                          QColor(0x2E, 0x7D, 0x32),
                          QColor(0x8A, 0x2B, 0xE2),
                          QColor(0x80, 0x80, 0x80)};

class ThemeTest : public testing::TestWithParam<std::tuple<bool, size_t>> {
protected:
    Theme theme() const {
        const auto [isDark, accent] = GetParam();
        return isDark ? darkTheme(accents[accent]) : lightTheme(accents[accent]);
    }
};

TEST_P(ThemeTest, primaryAndSecondaryTextStandOutOnEveryGround) {
    const Theme theme = this->theme();
    const QColor grounds[] = {theme.surface,
                              theme.elevated,
                              theme.field,
                              over(theme.surface, theme.hover),
                              over(theme.surface, theme.pressed),
                              over(theme.surface, theme.selection),
                              over(theme.surface, theme.control),
                              over(theme.elevated, theme.control)};
    for (const QColor &ground : grounds) {
        EXPECT_GE(contrast(theme.text, ground), 4.5) << ground.name().toStdString();
        EXPECT_GE(contrast(theme.secondaryText, ground), 4.5) << ground.name().toStdString();
    }
}

TEST_P(ThemeTest, tertiaryTextStandsOutAtThreeToOne) {
    EXPECT_GE(contrast(theme().tertiaryText, theme().surface), 3.0);
}

TEST_P(ThemeTest, placeholdersStandOutOnFieldsAndPanels) {
    const Theme theme = this->theme();
    VirtualTime time;
    Look look(time);
    SearchField field(QStringLiteral("Search"));
    look.setTheme(&field, theme);
    const QColor placeholder = field.lineEdit()->palette().color(QPalette::PlaceholderText);
    for (const QColor &ground : {theme.surface, theme.field})
        EXPECT_GE(contrast(placeholder, ground), 4.5);
    EXPECT_GE(contrast(theme.text, placeholder), 1.5) << "no typed text";
}

TEST_P(ThemeTest, colouredWordsStandOutOnTheirGrounds) {
    const Theme theme = this->theme();
    for (const QColor &ground : {theme.surface, theme.elevated}) {
        EXPECT_GE(contrast(theme.accentText, ground), 4.5);
        EXPECT_GE(contrast(theme.dangerText, ground), 4.5);
        EXPECT_GE(contrast(theme.successText, ground), 4.5);
    }
}

TEST_P(ThemeTest, wordsOnFillsStandOut) {
    const Theme theme = this->theme();
    EXPECT_GE(contrast(theme.onAccent, theme.accent), 4.5);
    EXPECT_GE(contrast(theme.onDanger, theme.danger), 4.5);
    EXPECT_GE(contrast(theme.onToolTip, theme.toolTip), 4.5);
}

INSTANTIATE_TEST_SUITE_P(BothForEveryAccent, ThemeTest,
                         testing::Combine(testing::Bool(), testing::Range(size_t(0), std::size(accents))));

TEST(Contrast, isOneForEqualAndTwentyOneForBlackOnWhite) {
    EXPECT_DOUBLE_EQ(contrast(Qt::white, Qt::white), 1.0);
    EXPECT_NEAR(contrast(Qt::black, Qt::white), 21.0, 1e-9);
    EXPECT_NEAR(contrast(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.005); // the well-known near miss
}

TEST(Over, laysAColourOnItsGround) {
    EXPECT_EQ(over(Qt::white, QColor(0, 0, 0, 0)), QColor(Qt::white).toRgb());
    EXPECT_EQ(over(Qt::white, QColor(255, 0, 0, 255)).rgb(), QColor(255, 0, 0).rgb());
    EXPECT_NEAR(over(Qt::white, QColor(0, 0, 0, 51)).red(), 204, 1);
}

TEST(Mixed, keepsTheColourWhileItFadesIn) {
    const QColor half = mixed(Qt::transparent, QColor(255, 0, 0, 200), 0.5);
    EXPECT_EQ(half.red(), 255);
    EXPECT_NEAR(half.alpha(), 100, 1);
}

TEST(Readable, leavesAColourThatIsReadableAlready) {
    EXPECT_EQ(readable(QColor(0x10, 0x20, 0x30), Qt::white, 4.5).rgb(), QColor(0x10, 0x20, 0x30).rgb());
}

} // namespace
} // namespace tavrine::look
