#include "clipboard/LinkRule.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

bool isLinkText(const char *content) {
    ClipboardItem item;
    item.content = QString::fromUtf8(content);
    return isLink(item);
}

class LinkText : public testing::TestWithParam<const char *> {};
class NoLinkText : public testing::TestWithParam<const char *> {};

TEST_P(LinkText, isALink) {
    EXPECT_TRUE(isLinkText(GetParam()));
}
TEST_P(NoLinkText, isNoLink) {
    EXPECT_FALSE(isLinkText(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(WithAScheme, LinkText,
                         testing::Values("https://example.com", "HTTP://EXAMPLE.COM/A?b=c#d", "ftp://x", "foo:bar",
                                         "hello:", "http:", "http://", "tel:+49123", "file:///etc/passwd", "c:/x",
                                         "std::vector", "host:80", "a+b:c",
                                         "data:text/plain;base64,QQ==", "x-apple.systempreferences:com.example"));
INSTANTIATE_TEST_SUITE_P(WithADotInTheHost, LinkText,
                         testing::Values("example.com", "www.example.com/path", "a.b", "example.com:80",
                                         "127.0.0.1:8080", "1.5", "e.g.", "word.", "exam_ple.com", "bücher.de",
                                         "例え.jp/パス", "x.y/z?q#f", "[::ffff:1.2.3.4]"));
INSTANTIATE_TEST_SUITE_P(WithWhiteSpaceAround, LinkText,
                         testing::Values("  https://example.com\n", "\texample.com\r\n", "\u00A0example.com\u3000"));

INSTANTIATE_TEST_SUITE_P(WithoutSchemeAndDot, NoLinkText,
                         testing::Values("", " \n", "word", "localhost", "localhost/a.b", "?a.b", "#a.b", "/etc/x.y",
                                         "//a.b", "日本語", "[::1]"));
INSTANTIATE_TEST_SUITE_P(OfNumbers, NoLinkText, testing::Values("1234", "12:30", "99", "0x7f", "12:30/1.5"));
INSTANTIATE_TEST_SUITE_P(WithAnAt, NoLinkText,
                         testing::Values("me@example.com", "mailto:me@example.com", "https://me@example.com",
                                         "https://example.com/@me", "@"));
INSTANTIATE_TEST_SUITE_P(WithWhiteSpaceInside, NoLinkText,
                         testing::Values("https://example.com/a b", "see example.com", "https://example.com\nfoo",
                                         "a\u00A0b.c", "a\u2028b.c", "a\tb.c"));
INSTANTIATE_TEST_SUITE_P(ThatAreNoAddress, NoLinkText,
                         testing::Values("C:\\x", "C:\\Users\\me.txt", "a.b|c", "\"a.b\"", "{a.b}", "http://x/{",
                                         "http://a|b", "a%zz.b", "1:a", "+a:b", "127.0.0.1:65536", "://", ":"));
// RFC 3986 has room for these; no name in the network is made of them.
INSTANTIATE_TEST_SUITE_P(WhoseHostIsNoName, NoLinkText,
                         testing::Values("...", ".word", "a..b", "-a.b", "a.b,c", "(a.b)", "f(x).y", "http://a,b.c",
                                         "http://-a.b", "http://f(x).y"));

TEST(LinkRule, anItemWithAFileIsNeverALink) {
    ClipboardItem item;
    item.content = QStringLiteral("https://example.com");
    EXPECT_TRUE(isLink(item));
    item.imageFileName = QStringLiteral("a.png");
    EXPECT_FALSE(isLink(item));
}

} // namespace
} // namespace tavrine
