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
        write(path, drawnGlyphsData({family, font, table, side},
                                    {{dog, square(Qt::red)}, {cat, square(Qt::blue)}, {ant, square(Qt::green)}}));
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
    [[nodiscard]] std::unique_ptr<DrawnGlyphs> open(int edge = side) const {
        return DrawnGlyphs::open(path, family, table, edge);
    }

    QTemporaryDir folder;
    QString family = QStringLiteral("Emoji Font");
    QString font = folder.filePath(QStringLiteral("font.ttf"));
    QString table = folder.filePath(QStringLiteral("emojis.json"));
    QString path = folder.filePath(QStringLiteral("drawn"));
    QString dog = QString::fromUtf8("🐕");
    QString cat = QString::fromUtf8("🐈");
    QString ant = QString::fromUtf8("🐜");
};

TEST_F(DrawnGlyphsFile, everyPictureComesBackAsItWasDrawn) {
    const auto glyphs = open();
    ASSERT_TRUE(glyphs);
    EXPECT_EQ(glyphs->count(), 3);
    EXPECT_EQ(glyphs->picture(dog), square(Qt::red));
    EXPECT_EQ(glyphs->picture(cat), square(Qt::blue));
    EXPECT_EQ(glyphs->picture(ant), square(Qt::green));
}

TEST_F(DrawnGlyphsFile, anEmojiThatWasNotDrawnHasNoPicture) {
    const auto glyphs = open();
    ASSERT_TRUE(glyphs);
    for (const char *emoji : {"🦊", "🐉", "🐁", "a", ""})
        EXPECT_TRUE(glyphs->picture(QString::fromUtf8(emoji)).isNull()) << emoji;
}

TEST_F(DrawnGlyphsFile, isNotReadOnceWhatItWasMadeOfHasChanged) {
    ASSERT_TRUE(open());
    EXPECT_FALSE(open(side + 1));
    EXPECT_FALSE(DrawnGlyphs::open(path, QStringLiteral("Another Font"), table, side));
    EXPECT_FALSE(DrawnGlyphs::open(path, family, font, side));
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
    EXPECT_FALSE(DrawnGlyphs::open(folder.filePath(QStringLiteral("missing")), family, table, side));
    EXPECT_FALSE(DrawnGlyphs::open(folder.path(), family, table, side));
}

TEST_F(DrawnGlyphsFile, thatEndsTooEarlyGivesWhatIsWhole) {
    const QByteArray whole = bytes();
    for (qsizetype length = 0; length < whole.size(); ++length) {
        write(path, whole.left(length));
        const auto glyphs = open();
        if (!glyphs)
            continue;
        for (const QString &emoji : {dog, cat, ant}) {
            const QImage picture = glyphs->picture(emoji);
            EXPECT_TRUE(picture.isNull() || picture.size() == QSize(side, side)) << length;
        }
        EXPECT_TRUE(glyphs->picture(dog).isNull() || glyphs->picture(cat).isNull() || glyphs->picture(ant).isNull());
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
                const QImage picture = glyphs ? glyphs->picture(emoji) : QImage();
                EXPECT_TRUE(picture.isNull() || picture.size() == QSize(side, side)) << place;
            }
        }
    }
}

TEST_F(DrawnGlyphsFile, leavesOutPicturesOfAnotherSize) {
    write(path,
          drawnGlyphsData({family, font, table, side}, {{dog, square(Qt::red, side + 1)}, {cat, square(Qt::blue)}}));
    const auto glyphs = open();
    ASSERT_TRUE(glyphs);
    EXPECT_EQ(glyphs->count(), 1);
    EXPECT_TRUE(glyphs->picture(dog).isNull());
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
