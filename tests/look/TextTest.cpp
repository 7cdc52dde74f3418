#include "look/Text.h"

#include <QElapsedTimer>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
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

TEST(OneLine, aTextOfWhiteSpaceAloneShowsWhatItIs) {
    EXPECT_EQ(oneLine(QStringLiteral("  "), body(), 300), QString::fromUtf8("␣␣"));
    EXPECT_EQ(oneLine(QStringLiteral(" \t\r\n\n\u00A0\u3000"), body(), 300), QString::fromUtf8("␣⇥↵↵␣␣"));
    EXPECT_EQ(oneLine(QStringLiteral(" a "), body(), 300), QStringLiteral("a"));
    EXPECT_EQ(oneLine(QString(), body(), 300), QString());
    const QString cut = oneLine(QString(100'000, u' '), body(), 100);
    EXPECT_TRUE(cut.startsWith(QString::fromUtf8("␣␣")) && cut.endsWith(ellipsis));
    EXPECT_LE(widthOf(cut), 100.5);
}

/// The width that a line takes when it is painted, and the area that its ink covers.
std::pair<qreal, QRect> painted(const char *utf8, qreal width = 400) {
    QImage image(420, 40, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    const qreal used = paintLine(painter, QRectF(4, 0, width, 40), QString::fromUtf8(utf8), TextRole::body, Qt::black);
    painter.end();
    QRect ink;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) > 64)
                ink |= QRect(x, y, 1, 1);
    return {used, ink};
}

TEST(PaintLine, aSequenceOfEmojiIsOneGlyph) {
    const auto one = painted("😀");
    ASSERT_GT(one.second.width(), 8);
    for (const char *emoji : {"🏳️‍🌈", "🕵️‍♂️", "👩‍❤️‍👨", "👨‍👩‍👧‍👦",
                              "1️⃣", "❤️", "👍🏿", "🇩🇪"}) {
        const auto [width, ink] = painted(emoji);
        EXPECT_NEAR(width, one.first, 1.5) << emoji;
        EXPECT_NEAR(ink.width(), one.second.width(), 4) << emoji;
    }
}

TEST(PaintLine, wordsStandBesideASequenceAsWideAsEver) {
    const qreal words = painted("before after").first;
    EXPECT_NEAR(painted("before 🕵️‍♂️after").first, words + painted("😀").first, 2);
}

TEST(PaintLine, aLineOfSequencesIsCutBetweenThem) {
    const auto [width, ink] =
        painted("🕵️‍♂️🕵️‍♂️🕵️‍♂️🕵️‍♂️🕵️‍♂️🕵️‍♂️", 50);
    EXPECT_LE(width, 50.5);
    EXPECT_LE(ink.right(), 55);
    EXPECT_GT(width, 30);
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
