#include "ReadingTest.h"
#include "capture/reading/CharacterCount.h"
#include "capture/reading/OCRResultModel.h"

namespace tavrine {
namespace {

class OCRResultTest : public ReadingTest {
protected:
    OCRResultModel model{QStringLiteral("as read"), pasteboard, urlOpener, time};

    [[nodiscard]] static QByteArray query(const char *utf8) {
        const auto url = OCRResultModel::searchUrl(QString::fromUtf8(utf8));
        return url ? url->toEncoded() : QByteArray("none");
    }
};

TEST_F(OCRResultTest, theEditedTextIsCopied) {
    model.setEditableText(text("as edited"));
    model.copyText();
    EXPECT_EQ(pasteboard.string(), text("as edited"));
    EXPECT_EQ(model.text(), text("as read"));
}

TEST_F(OCRResultTest, copiedStays) {
    EXPECT_FALSE(model.isCopied());
    model.copyText();
    time.advance(Seconds{3600});
    EXPECT_TRUE(model.isCopied());
}

TEST_F(OCRResultTest, theEditedTextIsSearched) {
    model.setEditableText(text("night train"));
    model.searchOnGoogle();
    ASSERT_EQ(urlOpener.opened().size(), 1);
    EXPECT_EQ(urlOpener.opened().first().toEncoded(), "https://www.google.com/search?q=night%20train");
}

TEST_F(OCRResultTest, anAmpersandStaysAndCutsTheQuery) {
    EXPECT_EQ(query("salt & pepper"), "https://www.google.com/search?q=salt%20&%20pepper");
}

TEST_F(OCRResultTest, whatMayStandInAQueryStays) {
    EXPECT_EQ(query("Az09-._~!$&'()*+,;=:@/?"), "https://www.google.com/search?q=Az09-._~!$&'()*+,;=:@/?");
}

TEST_F(OCRResultTest, whatMayNotStandInAQueryIsEncoded) {
    EXPECT_EQ(query("#%<>[]{}|\\^`\""), "https://www.google.com/search?q=%23%25%3C%3E%5B%5D%7B%7D%7C%5C%5E%60%22");
    EXPECT_EQ(query("a\nb\tc"), "https://www.google.com/search?q=a%0Ab%09c");
    EXPECT_EQ(query("café 😀"), "https://www.google.com/search?q=caf%C3%A9%20%F0%9F%98%80");
}

TEST_F(OCRResultTest, halfACharacterSearchesForNothing) {
    model.setEditableText(QString(QChar(0xD83D)));
    model.searchOnGoogle();
    EXPECT_TRUE(urlOpener.opened().isEmpty());
}

TEST_F(OCRResultTest, editingTellsOnlyOfChanges) {
    int changes = 0;
    QObject::connect(&model, &OCRResultModel::editableTextChanged, [&] { ++changes; });
    model.setEditableText(text("as read"));
    EXPECT_EQ(changes, 0);
    model.setEditableText(text("other"));
    EXPECT_EQ(changes, 1);
}

TEST(CharacterCountTest, charactersAreWhatAPersonCounts) {
    EXPECT_EQ(characterCount(QString()), 0);
    EXPECT_EQ(characterCount(QStringLiteral("abc")), 3);
    EXPECT_EQ(characterCount(QStringLiteral("a\nb")), 3);
    EXPECT_EQ(characterCount(QStringLiteral("a\r\nb")), 3);
    EXPECT_EQ(characterCount(QString::fromUtf8("e\u0301")), 1);
    EXPECT_EQ(characterCount(QString::fromUtf8("😀")), 1);
    EXPECT_EQ(characterCountText(QStringLiteral("a")), QStringLiteral("1 characters"));
}

} // namespace
} // namespace tavrine
