#include "adapters/pasteboard/SelectionParser.h"

#include <gmock/gmock.h>

namespace tavrine::selection {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

QByteArray words(std::initializer_list<std::uint32_t> values) {
    QByteArray bytes;
    for (const std::uint32_t value : values)
        bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
    return bytes;
}

TEST(SelectionParser, atomsAreReadInOrderWithoutZerosAndRepetitions) {
    EXPECT_THAT(parseAtoms(words({7, 0, 9, 7, 8}), 10), ElementsAre(7, 9, 8));
}

TEST(SelectionParser, anIncompleteAtomAtTheEndIsLeftOut) {
    EXPECT_THAT(parseAtoms(words({7, 9}).chopped(1), 10), ElementsAre(7));
    EXPECT_THAT(parseAtoms("abc", 10), IsEmpty());
    EXPECT_THAT(parseAtoms({}, 10), IsEmpty());
}

TEST(SelectionParser, noMoreAtomsThanAllowedAreRead) {
    EXPECT_EQ(parseAtoms(words({1, 2, 3}), 3).size(), 3);
    EXPECT_THAT(parseAtoms(words({1, 2, 3}), 2), ElementsAre(1, 2));
}

TEST(SelectionParser, atomPairsKeepZerosAndDropAnOddOne) {
    EXPECT_THAT(parseAtomPairs(words({1, 2, 1, 0, 5}), 10), ElementsAre(std::pair(1u, 2u), std::pair(1u, 0u)));
    EXPECT_EQ(parseAtomPairs(words({1, 2, 3, 4}), 1).size(), 1);
}

TEST(SelectionParser, theTypeOfTheAnswerDecidesTheEncodingBeforeWhatWasAskedFor) {
    EXPECT_EQ(textEncoding("TEXT", "UTF8_STRING"), TextEncoding::utf8);
    EXPECT_EQ(textEncoding("TEXT", "STRING"), TextEncoding::latin1);
    EXPECT_EQ(textEncoding("UTF8_STRING", "STRING"), TextEncoding::latin1);
    EXPECT_EQ(textEncoding("text/plain", "text/plain;charset=UTF-8"), TextEncoding::utf8);
    EXPECT_EQ(textEncoding("text/plain", "text/plain"), TextEncoding::unmarked);
    EXPECT_EQ(textEncoding("UTF8_STRING", "SOMETHING"), TextEncoding::utf8);
}

TEST(SelectionParser, compoundTextAndUnknownAnswersToTextAreNotRead) {
    EXPECT_EQ(textEncoding("TEXT", "COMPOUND_TEXT"), std::nullopt);
    EXPECT_EQ(textEncoding("UTF8_STRING", "COMPOUND_TEXT"), std::nullopt);
    EXPECT_EQ(textEncoding("TEXT", "INTEGER"), std::nullopt);
}

TEST(SelectionParser, invalidUtf8BecomesReplacementCharacters) {
    EXPECT_EQ(decodeText("a\xFF"
                         "b",
                         TextEncoding::utf8),
              QStringLiteral("a\uFFFDb"));
    EXPECT_EQ(decodeText("a\xE2\x82", TextEncoding::utf8)->front(), QLatin1Char('a'));
    EXPECT_EQ(decodeText("a\xE2\x82", TextEncoding::utf8)->back(), QChar(0xFFFD)) << "cut off at the end";
}

TEST(SelectionParser, aByteOrderMarkIsPartOfTheText) {
    EXPECT_EQ(decodeText("\xEF\xBB\xBFtext", TextEncoding::utf8), QStringLiteral("\uFEFFtext"));
    EXPECT_EQ(decodeText("\xEF\xBB\xBFtext", TextEncoding::unmarked), QStringLiteral("\uFEFFtext"));
    EXPECT_EQ(decodeText("te\xEF\xBB\xBFxt", TextEncoding::utf8), QStringLiteral("te\uFEFFxt"));
    EXPECT_EQ(decodeText("\xEF\xBB\xBF", TextEncoding::utf8), QStringLiteral("\uFEFF"));
}

TEST(SelectionParser, terminatorsAreDroppedAndANulInsideIsKept) {
    EXPECT_EQ(decodeText(QByteArrayView("text\0\0", 6), TextEncoding::utf8), QStringLiteral("text"));
    EXPECT_EQ(decodeText(QByteArrayView("te\0xt", 5), TextEncoding::utf8), QString(QLatin1String("te\0xt", 5)));
    EXPECT_EQ(decodeText(QByteArrayView("\0\0", 2), TextEncoding::utf8), std::nullopt);
    EXPECT_EQ(decodeText({}, TextEncoding::utf8), std::nullopt);
}

TEST(SelectionParser, whiteSpaceStays) {
    EXPECT_EQ(decodeText(" \n", TextEncoding::utf8), QStringLiteral(" \n"));
}

TEST(SelectionParser, latin1TakesEveryByteAsACharacter) {
    EXPECT_EQ(decodeText("Gr\xFC\xDF"
                         "e",
                         TextEncoding::latin1),
              QStringLiteral("Grüße"));
}

TEST(SelectionParser, unmarkedTextIsUtf8WhereItIsValidAndLatin1Elsewhere) {
    EXPECT_EQ(decodeText("Gr\xC3\xBC\xC3\x9F"
                         "e",
                         TextEncoding::unmarked),
              QStringLiteral("Grüße"));
    EXPECT_EQ(decodeText("Gr\xFC\xDF"
                         "e",
                         TextEncoding::unmarked),
              QStringLiteral("Grüße"));
}

TEST(SelectionParser, localFilesOfAUriListAreFoundWithTheirNamesUnescaped) {
    EXPECT_THAT(parseLocalPaths("# comment\r\nfile:///home/a%20b/%C3%BC.png\r\nhttp://example.org/x.png\r\n"
                                "file://localhost/two\r\nFILE:/three\r\n",
                                "myhost", 10),
                ElementsAre("/home/a b/\xC3\xBC.png", "/two", "/three"));
}

TEST(SelectionParser, filesOfOtherHostsAreNotLocal) {
    EXPECT_THAT(parseLocalPaths("file://other/a\nfile://MyHost/b\n", "myhost", 10), ElementsAre("/b"));
}

TEST(SelectionParser, copiedFilesBeginWithAVerbThatIsNoFile) {
    EXPECT_THAT(parseLocalPaths("copy\nfile:///a\nfile:///b", "myhost", 10), ElementsAre("/a", "/b"));
    EXPECT_THAT(parseLocalPaths("cut\nfile:///a", "myhost", 10), ElementsAre("/a"));
}

TEST(SelectionParser, aTerminatorBehindAListOfFilesIsNoPartOfTheLastName) {
    EXPECT_THAT(parseLocalPaths(QByteArray("file:///a.png\0", 14), "host", 10), ElementsAre("/a.png"));
    EXPECT_THAT(parseLocalPaths(QByteArray("file:///a.png\r\n\0\0", 17), "host", 10), ElementsAre("/a.png"));
    EXPECT_THAT(parseLocalPaths(QByteArray("file:///a\0b\nfile:///c", 21), "host", 10), ElementsAre("/c"));
}

TEST(SelectionParser, noMorePathsThanAllowedAreRead) {
    EXPECT_EQ(parseLocalPaths("file:///a\nfile:///b\n", "h", 2).size(), 2);
    EXPECT_THAT(parseLocalPaths("file:///a\nfile:///b\n", "h", 1), ElementsAre("/a"));
}

TEST(SelectionParser, whatNamesNoAbsolutePathIsLeftOut) {
    EXPECT_THAT(parseLocalPaths("file:\nfile://\nfile://host\nfile:relative\nfile:///a%00b\n\n  \n", "host", 10),
                IsEmpty());
}

TEST(SelectionParser, strayPercentSignsStandForThemselves) {
    EXPECT_THAT(parseLocalPaths("file:///100%\nfile:///50%zz\nfile:///%4", "h", 10),
                ElementsAre("/100%", "/50%zz", "/%4"));
}

} // namespace
} // namespace tavrine::selection
