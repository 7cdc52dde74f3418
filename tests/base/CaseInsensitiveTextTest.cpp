#include "base/CaseInsensitiveText.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

bool isIn(const char *text, const char *other) {
    return CaseInsensitiveText(QString::fromUtf8(text)).isIn(QString::fromUtf8(other));
}

TEST(CaseInsensitiveText, isFoundWhateverItsCase) {
    EXPECT_TRUE(isIn("LoW", "yellow"));
    EXPECT_TRUE(isIn("low", "YELLOW"));
    EXPECT_FALSE(isIn("lows", "yellow"));
}

TEST(CaseInsensitiveText, theEmptyTextIsInEveryText) {
    EXPECT_TRUE(isIn("", ""));
    EXPECT_TRUE(isIn("", "x"));
    EXPECT_FALSE(isIn("x", ""));
}

TEST(CaseInsensitiveText, blanksCount) {
    EXPECT_TRUE(isIn(" b", "a b"));
    EXPECT_FALSE(isIn(" b", "ab"));
    EXPECT_FALSE(isIn(" ", "ab"));
}

TEST(CaseInsensitiveText, signsOfPatternsMeanThemselves) {
    EXPECT_TRUE(isIn("50%_", "was 50%_ off"));
    EXPECT_FALSE(isIn("5%f", "50 off"));
    EXPECT_FALSE(isIn(".", "ab"));
}

TEST(CaseInsensitiveText, lettersBeyondAsciiHaveNoCaseEither) {
    EXPECT_TRUE(isIn("ÄÖÜ", "xäöüx"));
    EXPECT_TRUE(isIn("привет", "ПРИВЕТ"));
    EXPECT_TRUE(isIn("σας", "ΣΑΣ"));
    EXPECT_TRUE(isIn("ΣΑΣ", "σας"));
    EXPECT_TRUE(isIn("\xF0\x90\x90\xA8", "\xF0\x90\x90\x80")) << "Deseret, beyond the basic plane";
}

TEST(CaseInsensitiveText, aLetterThatFoldsToSeveralMatchesThem) {
    EXPECT_TRUE(isIn("STRASSE", "Hauptstraße 1"));
    EXPECT_TRUE(isIn("straße", "HAUPTSTRASSE"));
    EXPECT_TRUE(isIn("ﬁn", "FINE"));
    EXPECT_TRUE(isIn("fin", "ﬁne"));
    EXPECT_FALSE(isIn("straße", "strase"));
}

TEST(CaseInsensitiveText, anAccentCountsHoweverItIsComposed) {
    const char *const composed = "caf\xC3\xA9";
    const char *const decomposed = "cafe\xCC\x81";
    EXPECT_TRUE(isIn(composed, decomposed));
    EXPECT_TRUE(isIn(decomposed, composed));
    EXPECT_TRUE(isIn("CAF\xC3\x89", decomposed));
    EXPECT_FALSE(isIn("cafe", composed));
    EXPECT_FALSE(isIn("cafe", decomposed));
    EXPECT_TRUE(isIn("cafe", "cafe\xCC\x81 cafe")) << "the second one has no accent";
}

TEST(CaseInsensitiveText, theDotlessIIsAnotherLetter) {
    EXPECT_FALSE(isIn("i", "\xC4\xB1"));
    EXPECT_TRUE(isIn("\xC4\xB1", "\xC4\xB1"));
}

TEST(CaseInsensitiveText, aNulIsACharacter) {
    const QString withNul = QStringLiteral("a") + QChar(0) + QStringLiteral("B");
    EXPECT_TRUE(CaseInsensitiveText(QStringLiteral("b")).isIn(withNul));
    EXPECT_FALSE(CaseInsensitiveText(QStringLiteral("ab")).isIn(withNul));
}

TEST(CaseInsensitiveText, everyLetterIsFoundInItsCapitalForm) {
    for (char32_t code = 0x21; code < 0x10000; ++code) {
        const QChar letter(static_cast<char16_t>(code));
        if (!letter.isLetter() || letter == QChar(0x0131)) // the dotless i, whose capital is that of the dotted one
            continue;
        const QString text(letter);
        ASSERT_TRUE(CaseInsensitiveText(text).isIn(text.toUpper())) << static_cast<unsigned>(code);
        ASSERT_TRUE(CaseInsensitiveText(text.toUpper()).isIn(text)) << static_cast<unsigned>(code);
    }
}

} // namespace
} // namespace tavrine
