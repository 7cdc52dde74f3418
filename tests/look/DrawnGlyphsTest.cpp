#include "look/DrawnGlyphs.h"

#include "look/EmojiGlyphs.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

constexpr int side = 24;

QImage square(Qt::GlobalColor colour, int edge = side) {
    QImage image(edge, edge, QImage::Format_ARGB32_Premultiplied);
    image.fill(colour);
    return image;
}

class DrawnGlyphsFile : public ::testing::Test {
protected:
    void SetUp() override {
        write(font, "a font");
        write(table, "a table");
        write(path, drawnGlyphsData(sources, font,
                                    {{dog, square(Qt::red)}, {cat, square(Qt::blue)}, {ant, square(Qt::green), true}}));
    }
    static void write(const QString &to, const QByteArray &bytes) {
        QFile file(to);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    [[nodiscard]] QByteArray bytes() const {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    template <class Value>
    [[nodiscard]] GlyphSources with(Value GlyphSources::*field, const Value &value) const {
        GlyphSources others = sources;
        others.*field = value;
        return others;
    }
    [[nodiscard]] static QImage picture(const DrawnGlyphs &glyphs, const QString &emoji) {
        const auto glyph = glyphs.glyph(emoji);
        return glyph ? glyph->picture : QImage();
    }
    [[nodiscard]] std::unique_ptr<DrawnGlyphs> open(int edge = side) const {
        return DrawnGlyphs::open(path, with(&GlyphSources::side, edge));
    }

    QTemporaryDir folder;
    QString font = folder.filePath(QStringLiteral("font.ttf"));
    QString table = folder.filePath(QStringLiteral("emojis.json"));
    GlyphSources sources{QStringLiteral("Emoji Font"), QStringLiteral("Sans,9"), table, side};
    QString path = folder.filePath(QStringLiteral("drawn"));
    QString dog = QString::fromUtf8("🐕");
    QString cat = QString::fromUtf8("🐈");
    QString ant = QString::fromUtf8("🐜");
};

TEST_F(DrawnGlyphsFile, everyPictureComesBackAsItWasDrawn) {
    const auto glyphs = open();
    ASSERT_TRUE(glyphs);
    EXPECT_EQ(glyphs->count(), 3);
    EXPECT_EQ(picture(*glyphs, dog), square(Qt::red));
    EXPECT_EQ(picture(*glyphs, cat), square(Qt::blue));
    EXPECT_EQ(picture(*glyphs, ant), square(Qt::green));
}

TEST_F(DrawnGlyphsFile, anEmojiThatWasNotDrawnHasNoPicture) {
    const auto glyphs = open();
    ASSERT_TRUE(glyphs);
    for (const char *emoji : {"🦊", "🐉", "🐁", "a", ""})
        EXPECT_TRUE(picture(*glyphs, QString::fromUtf8(emoji)).isNull()) << emoji;
}

TEST_F(DrawnGlyphsFile, isNotReadOnceWhatItWasMadeOfHasChanged) {
    ASSERT_TRUE(open());
    EXPECT_FALSE(open(side + 1));
    EXPECT_FALSE(DrawnGlyphs::open(path, with(&GlyphSources::family, QStringLiteral("Another Font"))));
    EXPECT_FALSE(DrawnGlyphs::open(path, with(&GlyphSources::textFont, QStringLiteral("Serif,10"))));
    EXPECT_FALSE(DrawnGlyphs::open(path, with(&GlyphSources::table, font)));
    write(font, "a newer font");
    EXPECT_FALSE(open());
    write(font, "a font");
    write(table, "a longer table");
    EXPECT_FALSE(open());
}

TEST_F(DrawnGlyphsFile, isNotReadOnceTheFontIsGone) {
    QFile::remove(font);
    EXPECT_FALSE(open());
}

TEST_F(DrawnGlyphsFile, thatIsMissingOrNoFileIsNone) {
    EXPECT_FALSE(DrawnGlyphs::open(folder.filePath(QStringLiteral("missing")), sources));
    EXPECT_FALSE(DrawnGlyphs::open(folder.path(), sources));
}

TEST_F(DrawnGlyphsFile, thatEndsTooEarlyGivesWhatIsWhole) {
    const QByteArray whole = bytes();
    for (qsizetype length = 0; length < whole.size(); ++length) {
        write(path, whole.left(length));
        const auto glyphs = open();
        if (!glyphs)
            continue;
        for (const QString &emoji : {dog, cat, ant}) {
            const QImage image = picture(*glyphs, emoji);
            EXPECT_TRUE(image.isNull() || image.size() == QSize(side, side)) << length;
        }
        EXPECT_TRUE(picture(*glyphs, dog).isNull() || picture(*glyphs, cat).isNull() || picture(*glyphs, ant).isNull());
    }
}

TEST_F(DrawnGlyphsFile, thatIsDamagedAnywhereGivesPicturesOrNone) {
    const QByteArray whole = bytes();
    for (qsizetype place = 0; place < whole.size(); ++place) {
        for (const char value : {'\0', '\xff', '\x80'}) {
            QByteArray damaged = whole;
            damaged[place] = value;
            write(path, damaged);
            const auto glyphs = open();
            for (const QString &emoji : {dog, cat, ant}) {
                const QImage image = glyphs ? picture(*glyphs, emoji) : QImage();
                EXPECT_TRUE(image.isNull() || image.size() == QSize(side, side)) << place;
            }
        }
    }
}

TEST_F(DrawnGlyphsFile, aSignIsShownInTheTextsColour) {
    const auto glyphs = open();
    ASSERT_TRUE(glyphs && glyphs->glyph(ant));
    EXPECT_TRUE(glyphs->glyph(ant)->isSign);
    EXPECT_FALSE(glyphs->glyph(dog)->isSign);
    EmojiGlyphs pictures(side);
    pictures.setDrawnBefore([&](int) { return glyphs.get(); });
    EXPECT_EQ(pictures.picture(ant, Qt::yellow, 1).toImage().pixelColor(3, 3), QColor(Qt::yellow));
    EXPECT_EQ(pictures.picture(ant, Qt::black, 1).toImage().pixelColor(3, 3), QColor(Qt::black));
    EXPECT_EQ(pictures.picture(dog, Qt::yellow, 1).toImage().pixelColor(3, 3), QColor(Qt::red));
}

TEST_F(DrawnGlyphsFile, leavesOutPicturesOfAnotherSize) {
    write(path, drawnGlyphsData(sources, font, {{dog, square(Qt::red, side + 1)}, {cat, square(Qt::blue)}}));
    const auto glyphs = open();
    ASSERT_TRUE(glyphs);
    EXPECT_EQ(glyphs->count(), 1);
    EXPECT_TRUE(picture(*glyphs, dog).isNull());
}

TEST_F(DrawnGlyphsFile, isAskedBeforeAGlyphIsDrawn) {
    const auto glyphs = open();
    ASSERT_TRUE(glyphs);
    EmojiGlyphs pictures(side / 2);
    QList<int> asked;
    pictures.setDrawnBefore([&](int edge) {
        asked.append(edge);
        return edge == side ? glyphs.get() : nullptr;
    });
    const QPixmap twice = pictures.picture(dog, Qt::black, 2);
    EXPECT_EQ(twice.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied).pixel(1, 1), qRgb(255, 0, 0));
    EXPECT_EQ(twice.deviceIndependentSize(), QSizeF(side / 2.0, side / 2.0));
    (void)pictures.picture(dog, Qt::black, 1);
    EXPECT_EQ(asked, QList<int>({side, side / 2}));
}

} // namespace
} // namespace tavrine::look
