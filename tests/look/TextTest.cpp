#include "look/Text.h"

#include <QElapsedTimer>
#include <QFontMetricsF>
#include <QTextBoundaryFinder>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

const QString ellipsis(QChar(0x2026));

QFont body() {
    return fontFor(TextRole::body);
}
qreal widthOf(const QString &text) {
    return QFontMetricsF(body()).horizontalAdvance(text);
}

TEST(OneLine, leavesWhatFits) {
    EXPECT_EQ(oneLine(QStringLiteral("short"), body(), 300), QStringLiteral("short"));
}

TEST(OneLine, joinsLinesAndRunsOfWhiteSpace) {
    EXPECT_EQ(oneLine(QStringLiteral("  one\n\ttwo   three\r\n"), body(), 900), QStringLiteral("one two three"));
}

TEST(OneLine, endsInAnEllipsisWhenCut) {
    const QString line = oneLine(QStringLiteral("a long line of words that does not fit").repeated(4), body(), 120);
    EXPECT_TRUE(line.endsWith(ellipsis));
    EXPECT_LE(widthOf(line), 120.5);
}

TEST(OneLine, takesExactlyTheWidthOfTheText) {
    const QString text = QStringLiteral("exactly");
    EXPECT_EQ(oneLine(text, body(), widthOf(text)), text);
    EXPECT_NE(oneLine(text, body(), widthOf(text) - 1), text);
}

TEST(OneLine, isEmptyWithoutRoom) {
    EXPECT_EQ(oneLine(QStringLiteral("text"), body(), 0), QString());
    EXPECT_EQ(oneLine(QStringLiteral("text"), body(), -5), QString());
}

TEST(OneLine, costsNothingMoreForThreeMegabytes) {
    const QString large = QStringLiteral("word and number 12345\n").repeated(150'000);
    ASSERT_GT(large.size(), 3'000'000);
    QElapsedTimer timer;
    timer.start();
    QString line;
    for (int i = 0; i < 20; ++i)
        line = oneLine(large, body(), 500);
    // Laid out whole, one pass takes seconds.
    EXPECT_LT(timer.elapsed() / 20.0, 20);
    EXPECT_TRUE(line.endsWith(ellipsis));
    EXPECT_LE(widthOf(line), 500.5);
}

TEST(OneLine, findsTheFirstWordBehindBlankLines) {
    EXPECT_EQ(oneLine(QString(4000, u'\n') + QStringLiteral("word"), body(), 300), QStringLiteral("word"));
}

TEST(OneLine, partsNoLetterFromItsMarks) {
    const QString letter = QStringLiteral("e\u0301\u0323"); // e with an acute above and a dot below
    for (int width = 20; width < 200; width += 7) {
        QString line = oneLine(letter.repeated(5000), body(), width);
        ASSERT_TRUE(line.endsWith(ellipsis)) << width;
        line.chop(1);
        EXPECT_EQ(line.size() % letter.size(), 0) << width;
    }
}

TEST(OneLine, partsNoPairOfCodeUnits) {
    const QString family = QString::fromUtf8("👨‍👩‍👧");
    for (int width = 20; width < 300; width += 9) {
        QString line = oneLine(family.repeated(2000), body(), width);
        ASSERT_TRUE(line.endsWith(ellipsis)) << width;
        line.chop(1);
        EXPECT_EQ(line.size() % family.size(), 0) << width;
    }
}

TEST(OneLine, cutsALetterWithThousandsOfMarks) {
    const QString line = oneLine(QStringLiteral("a") + QString(100'000, QChar(0x0301)), body(), 300);
    EXPECT_LE(line.size(), 4096);
    EXPECT_FALSE(line.isEmpty());
}

TEST(OneLine, keepsTheOrderOfRightToLeftText) {
    const QString hebrew = QString::fromUtf8("שלום עולם");
    EXPECT_EQ(oneLine(hebrew, body(), 400), hebrew);
    const QString cut = oneLine(hebrew.repeated(100), body(), 200);
    EXPECT_TRUE(cut.endsWith(ellipsis));
    EXPECT_TRUE(hebrew.repeated(100).startsWith(cut.chopped(1)));
}

TEST(OneLine, holdsNoControlCharacters) {
    EXPECT_EQ(oneLine(QStringLiteral("a\u0007b\u0000c"), body(), 300).contains(QChar(7)), false);
}

TEST(Fonts, haveSizesInPixelsThatOnlyTheScreenScales) {
    EXPECT_EQ(fontFor(TextRole::body).pixelSize(), 13);
    EXPECT_EQ(fontFor(TextRole::search).pixelSize(), 19);
    EXPECT_EQ(fontFor(TextRole::mini).pixelSize(), 10);
}

} // namespace
} // namespace tavrine::look
