#include "adapters/x11/X11PasteboardFixture.h"
#include "ports/Pasteboard.h"

#include <QTemporaryDir>

#include <sys/stat.h>

namespace tavrine {
namespace {

/// Which of the forms that another program offers is read, and how.
class Reading : public X11PasteboardFixture {};

TEST_F(Reading, imagesWithoutLossComeBeforeJpeg) {
    start();
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    coloured(30, 30).save(&buffer, "jpeg");
    TestOwner owner;
    owner.own({{"image/jpeg", {.bytes = jpeg}}, {"image/png", {.bytes = pngOf(coloured(20, 20))}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().image()->size(), QSize(20, 20));
    owner.own({{"image/jpeg", {.bytes = jpeg}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().image()->size(), QSize(30, 30));
}

TEST_F(Reading, everyImageFormatIsRead) {
    start();
    for (const auto &[target, format] :
         std::initializer_list<std::pair<const char *, const char *>>{{"image/png", "png"},
                                                                      {"image/tiff", "tiff"},
                                                                      {"image/bmp", "bmp"},
                                                                      {"image/x-bmp", "bmp"},
                                                                      {"image/x-MS-bmp", "bmp"},
                                                                      {"image/webp", "webp"},
                                                                      {"image/jpeg", "jpeg"}}) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        ASSERT_TRUE(coloured(9, 8).save(&buffer, format)) << format;
        TestOwner owner;
        owner.own({{target, {.bytes = bytes}}});
        ASSERT_TRUE(changed()) << target;
        ASSERT_TRUE(pasteboard().image()) << target;
        EXPECT_EQ(pasteboard().image()->size(), QSize(9, 8)) << target;
    }
}

TEST_F(Reading, aPictureInACopiedFileIsTheImageAndItsPathTheText) {
    start();
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("ein Bild.png"));
    ASSERT_TRUE(coloured(12, 11).save(path));
    const QByteArray uri = QUrl::fromLocalFile(path).toEncoded();
    for (const TestOwner::Contents &contents :
         {TestOwner::Contents{{"text/uri-list", {.bytes = "file:///nowhere.png\r\n" + uri + "\r\n"}}},
          TestOwner::Contents{{"x-special/gnome-copied-files", {.bytes = "copy\n" + uri}}}}) {
        TestOwner owner;
        owner.own(contents);
        ASSERT_TRUE(changed());
        EXPECT_EQ(pasteboard().types(), QStringList(QLatin1String(pasteboardType::fileUrl)));
        ASSERT_TRUE(pasteboard().image());
        EXPECT_EQ(pasteboard().image()->size(), QSize(12, 11));
    }
}

TEST_F(Reading, copiedPipesFoldersAndTextsAreNoImages) {
    start();
    const QTemporaryDir folder;
    const QString pipe = folder.filePath(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
    TestOwner owner;
    owner.own(
        {{"text/uri-list",
          {.bytes = QUrl::fromLocalFile(pipe).toEncoded() + "\r\n" + QUrl::fromLocalFile(folder.path()).toEncoded() +
                    "\r\nfile:///dev/zero\r\nfile:///etc/passwd"}},
         {"UTF8_STRING", {.bytes = "paths"}}});
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().image());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("paths"));
}

TEST_F(Reading, aLoneSurrogateInTheTextBecomesReplacementCharacters) {
    start();
    TestOwner owner;
    owner.ownText("a\xED\xA0\x80z");
    ASSERT_TRUE(changed());
    const QString text = pasteboard().string().value_or(QString());
    EXPECT_TRUE(text.startsWith(QStringLiteral("a\uFFFD")) && text.endsWith(QStringLiteral("\uFFFDz")));
    EXPECT_TRUE(text.isValidUtf16());
}

TEST_F(Reading, legacyTextIsReadByItsEncoding) {
    start();
    TestOwner owner;
    owner.own({{"STRING",
                {.bytes = "Gr\xFC\xDF"
                          "e"}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("Grüße"));
    owner.own({{"TEXT",
                {.bytes = "Gr\xC3\xBC\xC3\x9F"
                          "e",
                 .type = "UTF8_STRING"}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("Grüße"));
    owner.own({{"STRING", {.bytes = "l"}}, {"text/plain;charset=UTF-8", {.bytes = "u"}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("u"));
    owner.own({{"COMPOUND_TEXT", {.bytes = "c"}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), std::nullopt);
}

} // namespace
} // namespace tavrine
