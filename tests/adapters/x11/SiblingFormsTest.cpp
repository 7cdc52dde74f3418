#include "adapters/x11/X11PasteboardFixture.h"
#include "ports/Pasteboard.h"
#include "support/ShadowMemory.h"

#include <QRandomGenerator>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::Contains;
using testing::Not;

QByteArray encoded(const QImage &image, const char *format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

/// Programs that offer one text or one picture in many forms.
class SiblingForms : public X11PasteboardFixture {
protected:
    SiblingForms() { start(); }

    /// The program ends when everything that is wanted of it has been fetched, `last` behind all else.
    void endAfter(const QByteArray &last) {
        ASSERT_TRUE(waitUntil([&] { return owner.requestCount(last) == 1; }));
        ASSERT_TRUE(settles());
        const xcb_window_t before = requestor.owner();
        owner.end();
        ASSERT_TRUE(waitUntil([&] { return requestor.hasOwnerOtherThan(before); }));
    }
    [[nodiscard]] QByteArray pasted(const QByteArray &target) {
        const auto value = requestor.paste(target);
        return value ? value->bytes : QByteArray("(refused)");
    }

    TestOwner owner;
    TestRequestor requestor;
    const QList<QByteArray> pictureForms{"image/tiff", "image/bmp",    "image/x-bmp", "image/x-MS-bmp",
                                         "image/jpeg", "image/x-icon", "image/webp",  "image/x-win-bitmap"};
    const QList<QByteArray> textForms{"STRING", "TEXT", "COMPOUND_TEXT", "text/plain", "text/plain;charset=utf-8"};
};

TEST_F(SiblingForms, ofAPictureAreNotFetchedWhereALosslessOneIsThere) {
    TestOwner::Contents contents;
    for (const QByteArray &form : pictureForms)
        contents.push_back({form, {.bytes = "as large as the picture"}});
    contents.push_back({"image/png", {.bytes = pngOf(coloured(40, 30))}});
    contents.push_back({"image/svg+xml", {.bytes = "<svg/>"}});
    contents.push_back({"x/last", {.bytes = "last"}});
    owner.own(contents);
    ASSERT_TRUE(changed());
    endAfter("x/last");
    for (const QByteArray &form : pictureForms)
        EXPECT_EQ(owner.requestCount(form), 0) << form.constData();
    EXPECT_EQ(owner.requestCount("image/png"), 1);
    EXPECT_EQ(owner.requestCount("image/svg+xml"), 1) << "that is more than a picture";
    for (const QByteArray &form : pictureForms) {
        const auto value = requestor.paste(form);
        ASSERT_TRUE(value) << form.constData();
        EXPECT_EQ(value->type, form);
        const QImage image = QImage::fromData(value->bytes);
        EXPECT_EQ(image.size(), QSize(40, 30)) << form.constData();
        EXPECT_NEAR(image.pixelColor(20, 15).blue(), 230, 4) << form.constData();
    }
    EXPECT_EQ(pasted("image/svg+xml"), "<svg/>");
}

TEST_F(SiblingForms, ofAPictureAreFetchedWhereOnlyALossyOneIsThere) {
    const QByteArray jpeg = encoded(coloured(40, 30), "jpeg");
    owner.own({{"image/jpeg", {.bytes = jpeg}}, {"image/x-icon", {.bytes = "an icon"}}});
    ASSERT_TRUE(changed());
    endAfter("image/x-icon");
    EXPECT_EQ(pasted("image/x-icon"), "an icon");
    EXPECT_EQ(pasted("image/jpeg"), jpeg);
}

TEST_F(SiblingForms, ofAPictureAreFetchedWhereTheLosslessOneIsBroken) {
    const QByteArray png = pngOf(coloured(60, 60));
    owner.own({{"image/png", {.bytes = png.first(png.size() / 2)}},
               {"image/jpeg", {.bytes = encoded(coloured(40, 30), "jpeg")}}});
    ASSERT_TRUE(changed());
    ASSERT_TRUE(pasteboard().image());
    EXPECT_EQ(pasteboard().image()->size(), QSize(40, 30));
}

TEST_F(SiblingForms, ofAPictureThatCannotBeMadeAreRefusedAndNotListedAnyMore) {
    QByteArray png = pngOf(coloured(60, 60));
    png[png.size() / 2] = static_cast<char>(png[png.size() / 2] + 1); // it begins and ends well
    owner.own({{"image/png", {.bytes = png}}, {"image/bmp", {}}, {"x/last", {.bytes = "last"}}});
    ASSERT_TRUE(changed());
    endAfter("x/last");
    EXPECT_THAT(requestor.targets(), Contains(QByteArray("image/bmp")));
    EXPECT_EQ(requestor.paste("image/bmp"), std::nullopt);
    EXPECT_THAT(requestor.targets(), Not(Contains(QByteArray("image/bmp"))));
    EXPECT_EQ(pasted("x/last"), "last");
}

TEST_F(SiblingForms, ofAPictureAreGivenTogetherToo) {
    owner.own({{"image/png", {.bytes = pngOf(coloured(40, 30))}},
               {"image/bmp", {}},
               {"image/jpeg", {}},
               {"x/last", {.bytes = "last"}}});
    ASSERT_TRUE(changed());
    endAfter("x/last");
    const auto values = requestor.pasteMultiple({"image/bmp", "x/nothing", "image/jpeg", "x/last"});
    ASSERT_TRUE(values[0] && values[2] && values[3]);
    EXPECT_EQ(QImage::fromData(values[0]->bytes).size(), QSize(40, 30));
    EXPECT_FALSE(values[1]);
    EXPECT_EQ(QImage::fromData(values[2]->bytes).size(), QSize(40, 30));
    EXPECT_EQ(values[3]->bytes, "last");
}

TEST_F(SiblingForms, ofATextAreNotFetchedAndHoldTheSameText) {
    TestOwner::Contents contents;
    for (const QByteArray &form : textForms)
        contents.push_back({form, {.bytes = "not asked for"}});
    contents.push_back({"UTF8_STRING", {.bytes = "Gr\xC3\xBC\xC3\x9F\x65"}});
    contents.push_back({"text/html", {.bytes = "<b>Gr</b>"}});
    owner.own(contents);
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("Grüße"));
    endAfter("text/html");
    EXPECT_EQ(owner.requestCount(), 3) << "TARGETS, the text and the page";
    EXPECT_EQ(pasted("UTF8_STRING"), "Gr\xC3\xBC\xC3\x9F\x65");
    EXPECT_EQ(pasted("STRING"), "Gr\xFC\xDF\x65");
    EXPECT_EQ(pasted("COMPOUND_TEXT"), "Gr\xFC\xDF\x65");
    EXPECT_EQ(pasted("text/plain"), "Gr\xC3\xBC\xC3\x9F\x65");
    EXPECT_EQ(pasted("text/plain;charset=utf-8"), "Gr\xC3\xBC\xC3\x9F\x65");
    EXPECT_EQ(requestor.paste("TEXT")->type, "UTF8_STRING");
    EXPECT_EQ(pasted("TEXT"), "Gr\xC3\xBC\xC3\x9F\x65");
    for (const QByteArray &form : textForms)
        EXPECT_THAT(requestor.targets(), Contains(form));
}

TEST_F(SiblingForms, ofATextInAnOlderEncodingAreFetched) {
    owner.own({{"STRING", {.bytes = "Gr\xFC\xDF\x65"}}, {"COMPOUND_TEXT", {.bytes = "more than Latin-1 holds"}}});
    ASSERT_TRUE(changed());
    endAfter("COMPOUND_TEXT");
    EXPECT_EQ(pasted("COMPOUND_TEXT"), "more than Latin-1 holds");
}

TEST_F(SiblingForms, ofALargePictureTakeNoRoomWhenTheirProgramEnds) {
    SelectionLimits limits;
    start(limits);
    QImage noise(1500, 1000, QImage::Format_RGB32);
    QRandomGenerator random(5);
    for (int y = 0; y < noise.height(); ++y)
        random.fillRange(reinterpret_cast<quint32 *>(noise.scanLine(y)), noise.width());
    const QByteArray png = pngOf(noise);
    TestOwner::Contents contents{{"image/png", {.bytes = png}}};
    for (const QByteArray &form : pictureForms)
        contents.push_back({form, {.bytes = QByteArray(8'000'000, form.back())}});
    contents.push_back({"x/last", {.bytes = "last"}});
    const auto resident = [] {
        QFile file(QStringLiteral("/proc/self/statm"));
        return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() * 4096 : 0;
    };
    owner.own(contents);
    const qint64 before = resident();
    ASSERT_TRUE(changed());
    ASSERT_TRUE(waitUntil([&] { return owner.requestCount("x/last") == 1; }));
    ASSERT_TRUE(settles());
    EXPECT_LT(resident() - before, 2 * test::shadows * png.size()) << "the picture, and not the 64 MB of its other forms";
}

} // namespace
} // namespace tavrine
