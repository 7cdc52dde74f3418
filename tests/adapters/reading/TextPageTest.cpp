#include "adapters/reading/FixedPitch.h"
#include "adapters/reading/PagePreparation.h"
#include "adapters/reading/RecognitionLanguages.h"
#include "adapters/reading/TextRepair.h"

#include <QPainter>

#include <gtest/gtest.h>

namespace tavrine::reading {
namespace {

QString words(const char *utf8) {
    return QString::fromUtf8(utf8);
}

QStringList list(std::initializer_list<const char *> texts) {
    QStringList result;
    for (const char *each : texts)
        result.append(QString::fromUtf8(each));
    return result;
}

QImage filled(int width, int height, int grey) {
    QImage image(width, height, QImage::Format_Grayscale8);
    image.fill(qRgb(grey, grey, grey));
    return image;
}

int at(const QImage &image, int x, int y) {
    return image.constScanLine(y)[x];
}

// Languages.

TEST(RecognitionLanguagesTest, englishStandsAlone) {
    EXPECT_EQ(recognitionLanguages(list({"en-US", "en"}), list({"eng", "osd", "deu"})), list({"eng"}));
}

TEST(RecognitionLanguagesTest, theDesktopsLanguagesStandBeforeEnglish) {
    EXPECT_EQ(recognitionLanguages(list({"de-CH", "de", "fr"}), list({"eng", "fra", "deu"})),
              list({"deu", "fra", "eng"}));
}

TEST(RecognitionLanguagesTest, whatIsNotInstalledIsLeftOut) {
    EXPECT_EQ(recognitionLanguages(list({"de", "fr"}), list({"eng", "fra"})), list({"fra", "eng"}));
    EXPECT_EQ(recognitionLanguages(list({"de"}), list({"eng"})), list({"eng"}));
}

TEST(RecognitionLanguagesTest, withoutEnglishTheOthersDo) {
    EXPECT_EQ(recognitionLanguages(list({"de", "en"}), list({"deu"})), list({"deu"}));
}

TEST(RecognitionLanguagesTest, withoutAnyThereIsNone) {
    EXPECT_TRUE(recognitionLanguages(list({"de", "en"}), list({"osd"})).isEmpty());
    EXPECT_TRUE(recognitionLanguages({}, {}).isEmpty());
}

TEST(RecognitionLanguagesTest, chineseGoesByItsScript) {
    const QStringList installed = list({"chi_sim", "chi_tra", "eng"});
    EXPECT_EQ(recognitionLanguages(list({"zh-CN"}), installed), list({"chi_sim", "eng"}));
    EXPECT_EQ(recognitionLanguages(list({"zh-TW"}), installed), list({"chi_tra", "eng"}));
    EXPECT_EQ(recognitionLanguages(list({"zh-Hant-HK"}), installed), list({"chi_tra", "eng"}));
}

TEST(RecognitionLanguagesTest, unknownLanguagesAreLeftOut) {
    EXPECT_EQ(recognitionLanguages(list({"C", "tlh", ""}), list({"eng", "C"})), list({"eng"}));
    EXPECT_EQ(recognizerName(words("den")), QString()) << "no piece of a code counts";
}

// The page.

TEST(PagePreparationTest, aLightPageStays) {
    QImage page = filled(100, 60, 255);
    page.setPixel(50, 30, qRgb(0, 0, 0));
    EXPECT_EQ(withDarkLetters(page), page);
}

TEST(PagePreparationTest, aDarkPageIsInverted) {
    const QImage page = withDarkLetters(filled(100, 60, 30));
    EXPECT_EQ(at(page, 0, 0), 225);
    EXPECT_EQ(at(page, 99, 59), 225);
}

TEST(PagePreparationTest, onlyTheDarkHalfIsInverted) {
    QImage page = filled(128, 64, 240);
    QPainter(&page).fillRect(64, 0, 64, 64, QColor(20, 20, 20));
    page = withDarkLetters(page);
    EXPECT_EQ(at(page, 10, 30), 240);
    EXPECT_EQ(at(page, 120, 30), 235);
}

TEST(PagePreparationTest, aFatLetterIsNoRegion) {
    QImage page = filled(160, 160, 255);
    QPainter(&page).fillRect(64, 64, 16, 16, Qt::black);
    EXPECT_EQ(withDarkLetters(page), page);
}

TEST(PagePreparationTest, transparencyIsWhite) {
    QImage image(10, 10, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    EXPECT_EQ(at(greyOf(image), 5, 5), 255);
}

TEST(PagePreparationTest, smallLettersAreEnlargedAndLargeOnesAreNot) {
    EXPECT_EQ(readingScale({600, 400}, 16), 2);
    EXPECT_EQ(readingScale({600, 400}, 17), 1);
    EXPECT_EQ(readingScale({600, 400}, std::nullopt), 2);
}

TEST(PagePreparationTest, whatIsTooLargeIsReadSmaller) {
    EXPECT_EQ(readingScale({4000, 4000}, 10), 2);
    EXPECT_EQ(readingScale({8000, 8000}, 10), 1);
    EXPECT_DOUBLE_EQ(readingScale({16000, 16000}, 40), 0.5);
    EXPECT_DOUBLE_EQ(readingScale({64000, 10}, 10), 0.5);
    EXPECT_EQ(readingScale({0, 0}, 10), 1);
}

TEST(PagePreparationTest, linesAreMeasuredBetweenTheirGaps) {
    QImage page = filled(240, 200, 255);
    QPainter painter(&page);
    for (int y = 10; y < 180; y += 20)
        painter.fillRect(0, y, 240, 12, Qt::black);
    EXPECT_EQ(lineHeightOf(page), 12);
}

TEST(PagePreparationTest, rulesAndPicturesAreNoLines) {
    QImage page = filled(240, 400, 255);
    QPainter painter(&page);
    painter.fillRect(0, 10, 240, 5, Qt::black);
    painter.fillRect(0, 100, 240, 200, Qt::black);
    painter.end();
    EXPECT_EQ(lineHeightOf(page), std::nullopt);
    EXPECT_EQ(lineHeightOf(filled(1, 1, 0)), std::nullopt);
}

TEST(PagePreparationTest, aLineAtTheVeryBottomCounts) {
    QImage page = filled(240, 40, 255);
    QPainter(&page).fillRect(0, 20, 240, 20, Qt::black);
    EXPECT_EQ(lineHeightOf(page), 20);
}

TEST(PagePreparationTest, nothingGivesNothing) {
    EXPECT_TRUE(preparedPage(QImage()).isNull());
    EXPECT_EQ(preparedPage(filled(1, 1, 255)).size(), QSize(2, 2));
}

// Words put together: letters are blocks of 10 by 20 that stand on row 40.

class JoinedWordsTest : public testing::Test {
protected:
    void block(int x, int width) { QPainter(&page).fillRect(x, 20, width, 20, Qt::black); }
    void underscore(int x, int width) { QPainter(&page).fillRect(x, 43, width, 2, Qt::black); }
    [[nodiscard]] QString join(int rightOfFirst, int leftOfSecond, const char *first = "a", const char *second = "b") {
        return joinedWords({{words(first), QRect(QPoint(10, 20), QPoint(rightOfFirst, 39)), 40},
                            {words(second), QRect(QPoint(leftOfSecond, 20), QPoint(190, 39)), 40}},
                           page);
    }
    QImage page = filled(200, 60, 255);
};

TEST_F(JoinedWordsTest, wordsApartStayApart) {
    block(10, 50);
    block(66, 120);
    EXPECT_EQ(join(59, 66), words("a b"));
}

TEST_F(JoinedWordsTest, wordsThatAllButTouchAreOne) {
    block(10, 50);
    block(62, 120);
    EXPECT_EQ(join(59, 62), words("ab"));
}

TEST_F(JoinedWordsTest, aLowStrokeIsAnUnderscore) {
    block(10, 50);
    underscore(61, 16);
    block(78, 110);
    EXPECT_EQ(join(59, 78), words("a_b"));
}

TEST_F(JoinedWordsTest, anUnderscoreThatWasReadIsNotDoubled) {
    block(10, 50);
    underscore(61, 16);
    block(78, 110);
    EXPECT_EQ(join(76, 78, "a_"), words("a_b"));
    EXPECT_EQ(join(59, 61, "a", "_b"), words("a_b"));
}

TEST_F(JoinedWordsTest, aLineUnderBothWordsIsNoUnderscore) {
    block(10, 50);
    block(78, 110);
    underscore(10, 178); // an underlined link
    EXPECT_EQ(join(59, 78), words("a b"));
}

TEST_F(JoinedWordsTest, boxesBeyondThePageDoNoHarm) {
    EXPECT_EQ(
        joinedWords({{words("a"), QRect(-50, -50, 20, 20), -30}, {words("b"), QRect(500, 500, 20, 20), 520}}, page),
        words("a b"));
    EXPECT_EQ(joinedWords({}, page), QString());
    EXPECT_EQ(joinedWords({{words("a"), {}, 0}, {words("b"), {}, 0}}, page), words("a b"));
}

// Fixed pitch: a page as a terminal shows it.

class GridTest : public testing::Test {
protected:
    void draw(const char *text, const char *family = "DejaVu Sans Mono") {
        page.fill(Qt::white);
        QPainter painter(&page);
        QFont font(words(family));
        font.setPixelSize(26);
        painter.setFont(font);
        painter.drawText(QPointF(20, 40), words(text));
        const QRectF ink = painter.boundingRect(QRectF(20, 10, 900, 60), words(text));
        line = QRect(20, 18, int(ink.width()), 22);
    }
    /// What is made of a line that the engine read as `read`.
    [[nodiscard]] QString mended(const char *read) {
        const auto grid = gridOf(page, line, 40, words(read).size());
        return grid ? onGrid(words(read), *grid, page, line, 40) : words("no grid");
    }
    QImage page = filled(960, 70, 255);
    QRect line;
};

TEST_F(GridTest, blanksAreWhereThePageHasThem) {
    draw("int count = size (a, b);");
    EXPECT_EQ(mended("intcount=size( a,b) ;"), words("int count = size (a, b);"));
}

TEST_F(GridTest, underscoresAreWhereThePageHasThem) {
    draw("def folder_of(THE_PATH):");
    EXPECT_EQ(mended("def folder of(THE _PATH):"), words("def folder_of(THE_PATH):"));
}

TEST_F(GridTest, aLetterThatWasReadTwiceGoes) {
    draw("curve(x11, y11) == z1;");
    EXPECT_EQ(mended("curve(x1l1, y11) == z1;"), words("curve(x11, y11) == z1;"));
}

TEST_F(GridTest, zerosOfProgramsAreNoSigns) {
    draw("parts[0] = 1.0 + mail@host");
    EXPECT_EQ(mended("parts[®] = 1.@ + mail@host"), words("parts[0] = 1.0 + mail@host"));
}

TEST_F(GridTest, whatCannotBeCountedStays) {
    draw("return low + high;");
    EXPECT_EQ(mended("return lo + high;"), words("return lo + high;"));
}

TEST_F(GridTest, lettersOfTheirOwnWidthsStandOnNoGrid) {
    draw("The miller will fill it with wild lilies and mimosa", "DejaVu Sans");
    EXPECT_EQ(mended("The miller will fill it with wild lilies and mimosa"), words("no grid"));
}

TEST_F(GridTest, aShortLineTellsNothing) {
    draw("return 7;");
    EXPECT_EQ(mended("return 7;"), words("no grid"));
}

TEST_F(GridTest, linesBesideThePageDoNoHarm) {
    EXPECT_EQ(gridOf(page, QRect(-900, -900, 500, 20), -880, 40), std::nullopt);
    EXPECT_EQ(gridOf(QImage(), QRect(0, 0, 500, 20), 20, 40), std::nullopt);
    static_cast<void>(gridOf(page, QRect(-50, -50, 5000, 500), 9000, 40));
}

// Quotes.

TEST(QuotesTest, aProgramHasStraightQuotes) {
    EXPECT_EQ(withPlausibleQuotes(list({"#include “base/Time.h\"", "x = “a\"", "\"“b\""})),
              list({"#include \"base/Time.h\"", "x = \"a\"", "\"b\""}));
}

TEST(QuotesTest, typographicQuotesInPairsStay) {
    const QStringList prose = list({"“Yes,” she said.", "“No.”", "It’s late."});
    EXPECT_EQ(withPlausibleQuotes(prose), prose);
}

TEST(QuotesTest, aQuoteMayCloseOnALaterLine) {
    const QStringList prose = list({"“Yes,", "of course.”"});
    EXPECT_EQ(withPlausibleQuotes(prose), prose);
}

TEST(QuotesTest, singleQuotesFollowTheMajority) {
    EXPECT_EQ(withPlausibleQuotes(list({"r'x'", "‘y'"})), list({"r'x'", "'y'"}));
}

} // namespace
} // namespace tavrine::reading
