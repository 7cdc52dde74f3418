#include "look/EmojiGlyphs.h"

#include "look/EmojiText.h"

#include <QImage>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

TEST(EmojiGlyphs, keepWithinTheirBound) {
    EmojiGlyphs glyphs(38);
    const qsizetype one = 38 * 2 * 38 * 2 * 4;
    const int more = int(EmojiGlyphs::limitBytes / one) + 50;
    int drawn = 0;
    for (int i = 0; i < more; ++i)
        drawn += glyphs.picture(QString(QChar(u'A' + i % 26)) + QString::number(i), Qt::black, 2).isNull() ? 0 : 1;
    ASSERT_EQ(drawn, more);
    EXPECT_LE(glyphs.bytesInUse(), EmojiGlyphs::limitBytes);
    EXPECT_LT(glyphs.count(), more);
    EXPECT_GT(glyphs.count(), more / 2);
}

TEST(EmojiGlyphs, aSequenceIsOnePictureOfItsOwn) {
    EmojiGlyphs glyphs(32);
    const auto picture = [&](const char *emoji) {
        return glyphs.picture(QString::fromUtf8(emoji), Qt::black, 1).toImage();
    };
    const QImage man = picture("👨");
    const QImage family = picture("👨‍👩‍👧‍👦");
    const QImage darkThumb = picture("👍🏿");
    ASSERT_FALSE(man.isNull());
    EXPECT_EQ(family.size(), QSize(32, 32));
    EXPECT_NE(family, man); // and not its first person
    EXPECT_NE(darkThumb, picture("👍"));
    EXPECT_NE(picture("🇩🇪"), picture("🇺🇳"));
}

TEST(EmojiGlyphs, aSequenceWithASelectorInsideIsOnePicture) {
    EmojiGlyphs glyphs(64);
    // Two glyphs beside each other, fitted into the square, would be half as high as wide.
    for (const char *emoji :
         {"🏳️‍🌈", "🕵️‍♂️", "👩‍❤️‍👨", "👩‍❤️‍💋‍👨", "🏴‍☠️",
          "👁️‍🗨️", "⛹🏽‍♀️", "1️⃣", "❤️‍🔥"}) {
        const QImage image = glyphs.picture(QString::fromUtf8(emoji), Qt::black, 1).toImage();
        QRect ink;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qAlpha(image.pixel(x, y)) > 64)
                    ink |= QRect(x, y, 1, 1);
        EXPECT_GT(ink.height(), ink.width() * 0.65) << emoji;
        EXPECT_GT(ink.width(), 32) << emoji;
    }
}

TEST(EmojiGlyphs, aPictureStandsInTheMiddleAndIsNotCut) {
    for (const qreal scale : {1.0, 2.0}) {
        EmojiGlyphs glyphs(32);
        const QImage image = glyphs.picture(QString::fromUtf8("😀"), Qt::black, scale).toImage();
        ASSERT_EQ(image.width(), int(32 * scale));
        QRect ink;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qAlpha(image.pixel(x, y)) > 64)
                    ink |= QRect(x, y, 1, 1);
        EXPECT_LE(std::abs(ink.center().x() - image.width() / 2), int(2 * scale));
        EXPECT_LE(std::abs(ink.center().y() - image.height() / 2), int(2 * scale));
        EXPECT_GT(ink.width(), int(20 * scale));
        EXPECT_FALSE(ink.left() == 0 || ink.top() == 0 || ink.right() == image.width() - 1);
    }
}

TEST(EmojiGlyphs, aSelectorDecidesBetweenPictureAndSign) {
    EXPECT_TRUE(isEmojiPresentation(QString::fromUtf8("❤️")));
    EXPECT_FALSE(isEmojiPresentation(QString::fromUtf8("❤")));
    EXPECT_TRUE(isEmojiPresentation(QString::fromUtf8("✅")));
    EXPECT_FALSE(isEmojiPresentation(QString::fromUtf8("→")));
    EXPECT_TRUE(isEmojiPresentation(QString::fromUtf8("😀")));
}

TEST(EmojiLines, takeOutWhatIsShownAsAPicture) {
    const auto taken = [](const char *utf8) { return emojiLine(QString::fromUtf8(utf8)).emojis; };
    EXPECT_EQ(
        taken("a 🕵️‍♂️ b 🇩🇪1️⃣"),
        (QStringList{QString::fromUtf8("🕵️‍♂️"), QString::fromUtf8("🇩🇪"), QString::fromUtf8("1️⃣")}));
    EXPECT_EQ(taken("plain words, → and ❤ and 1 and שלום"), QStringList());
    EXPECT_EQ(taken("a\uFE0F"), QStringList()) << "a letter stays one, whatever selects it";
}

TEST(EmojiLines, giveTheTextBackAsItWas) {
    const QString text = QString::fromUtf8("two 😀😀 faces 👍🏿");
    const EmojiLine line = emojiLine(text);
    ASSERT_EQ(line.emojis.size(), 3);
    EXPECT_EQ(line.whole(line.text), text);
    EXPECT_EQ(line.whole(line.text.left(5)), QString::fromUtf8("two 😀"));
}

} // namespace
} // namespace tavrine::look
