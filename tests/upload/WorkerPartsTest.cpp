// The worker's parts that are pure functions.

#include "upload/worker/AddressRules.h"
#include "upload/worker/Frames.h"
#include "upload/worker/HttpRules.h"
#include "upload/worker/ScriptEncodings.h"
#include "upload/worker/WorkerLimits.h"
#include "upload/worker/WorkerRecord.h"
#include "upload/worker/WorkerText.h"

#include <chrono>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

TEST(WorkerText, everyUnitBecomesValidUtf8) {
    EXPECT_EQ(utf8FromUnits(u"aé€\U0001F60E"), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x8E");
    const char16_t halves[] = {0xD83D, u'x', 0xDE0E, 0xD83D};
    EXPECT_EQ(utf8FromUnits(std::u16string_view(halves, 4)), "\xEF\xBF\xBDx\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(WorkerText, aLongTextIsCutBetweenCharacters) {
    EXPECT_EQ(utf8FromUnits(u"abcdef", 6), "abcdef");
    EXPECT_EQ(utf8FromUnits(u"abcdefg", 6), "abc\xE2\x80\xA6");
    EXPECT_EQ(utf8FromUnits(u"aéé€", 8), "a\xC3\xA9\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(utf8FromUnits(u"aéé€", 7), "a\xC3\xA9\xE2\x80\xA6");
    EXPECT_EQ(repairedUtf8("\xF0\x9F\x98\x8E\xF0\x9F\x98\x8E", 7), "\xF0\x9F\x98\x8E\xE2\x80\xA6");
}

TEST(WorkerText, whatIsNoUtf8IsFoundAndRepaired) {
    for (const char *bad : {"\x80", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80",
                            "\xE2\x82", "\xC3("})
        EXPECT_FALSE(isUtf8(bad)) << bad;
    EXPECT_TRUE(isUtf8("\xF4\x8F\xBF\xBF\xEE\x80\x80\xC2\x80"));
    EXPECT_EQ(repairedUtf8("a\xFF\xE2\x82z"), "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBDz");
}

TEST(WorkerText, aBodyIsTextUnlessItCanOnlyBeBytes) {
    const std::u16string bytes(u"\0\xFF", 2);
    EXPECT_EQ(requestBytes(bytes, "image/png"), std::string("\0\xFF", 2));
    EXPECT_EQ(requestBytes(bytes, "IMAGE/PNG"), std::string("\0\xFF", 2));
    EXPECT_EQ(requestBytes(bytes, "multipart/form-data; boundary=x"), std::string("\0\xFF", 2));
    EXPECT_EQ(requestBytes(bytes, "text/plain"), std::string("\0\xC3\xBF", 3));
    EXPECT_EQ(requestBytes(bytes, ""), std::string("\0\xC3\xBF", 3));
    EXPECT_EQ(requestBytes(u"\xFF\r\n\t\f", "multipart/form-data"), "\xC3\xBF\r\n\t\f");
    EXPECT_EQ(requestBytes(u"\u0100\x01", "image/png"), "\xC4\x80\x01");
    EXPECT_EQ(requestBytes(u"é", "image/svg+xml"), "\xC3\xA9");
}

TEST(WorkerText, aResponseIsTextWhenItCanBe) {
    EXPECT_EQ(responseUnits("\xC3\xA9"), u"é");
    EXPECT_EQ(responseUnits("\xC3\xA9\xFF"), u"\u00C3\u00A9\u00FF");
}

TEST(WorkerRecord, theRecordIsOneLineOfJson) {
    WorkerLogs logs;
    logs.add("a\"\\\n\x7F\x01");
    EXPECT_EQ(workerRecord({WorkerEnd::url, "u\xFF"}, logs),
              "{\"url\":\"u\xEF\xBF\xBD\",\"logs\":[\"a\\\"\\\\\\u000a\x7F\\u0001\"]}\n");
    EXPECT_EQ(workerRecord({WorkerEnd::missingFunction, ""}, {}), "{\"errorKind\":\"missingFunction\",\"logs\":[]}\n");
}

TEST(WorkerRecord, logsAreKeptUpToEachLimit) {
    WorkerLogs lines;
    for (std::size_t i = 0; i < limits::logLines; ++i)
        EXPECT_TRUE(lines.add("x"));
    EXPECT_FALSE(lines.isFull());
    EXPECT_FALSE(lines.add("one more"));
    EXPECT_FALSE(lines.add("and another"));
    EXPECT_EQ(lines.lines().size(), limits::logLines + 1);
    WorkerLogs bytes;
    for (std::size_t i = 0; i < limits::logBytes / limits::logLineBytes; ++i)
        EXPECT_TRUE(bytes.add(std::string(limits::logLineBytes, 'x')));
    EXPECT_FALSE(bytes.add("x"));
}

TEST(Frames, arrivingInPiecesTheyAreWholeAgain) {
    const std::string bytes = FrameWriter(FrameKind::request).number(7).text("url").text("").take() +
                              FrameWriter(FrameKind::log).text(std::string(1000, 'x')).take();
    FrameAssembler frames;
    std::vector<Frame> whole;
    for (const char byte : bytes) {
        frames.add(std::string_view(&byte, 1));
        while (auto frame = frames.next())
            whole.push_back(std::move(*frame));
    }
    ASSERT_EQ(whole.size(), 2u);
    FrameReader reader(whole[0].payload);
    EXPECT_EQ(reader.number(), 7u);
    EXPECT_EQ(reader.text(), "url");
    EXPECT_EQ(reader.text(), "");
    EXPECT_TRUE(reader.isAtEnd());
    EXPECT_EQ(reader.number(), std::nullopt);
}

TEST(Frames, whatIsTakenOutCostsTheSameHoweverMuchIsBehindIt) {
    // A large frame that is under way lies behind many small ones.
    const auto timeFor = [](std::size_t behind) {
        const std::string small = FrameWriter(FrameKind::log).text("line").take();
        std::string bytes;
        for (int i = 0; i < 20'000; ++i)
            bytes += small;
        bytes += FrameWriter(FrameKind::request).text(std::string(behind, 'x')).take();
        bytes.pop_back(); // so that it is never whole
        FrameAssembler frames;
        frames.add(bytes);
        const auto begin = std::chrono::steady_clock::now();
        int taken = 0;
        for (; frames.next(); ++taken)
            frames.add({});
        EXPECT_EQ(taken, 20'000);
        return std::chrono::steady_clock::now() - begin;
    };
    static_cast<void>(timeFor(1000));
    const auto little = timeFor(1000) + std::chrono::milliseconds(5); // below that the clock is the measure
    EXPECT_LT(timeFor(4'000'000), 10 * little);
}

TEST(Frames, aLengthOrKindThatIsNoneBreaksTheStream) {
    FrameAssembler length;
    length.add(std::string_view("\2\xFF\xFF\xFF\xFF", 5));
    EXPECT_FALSE(length.next());
    EXPECT_TRUE(length.isBroken());
    FrameAssembler kind;
    kind.add(std::string_view("\x40\0\0\0\0", 5));
    EXPECT_FALSE(kind.next());
    EXPECT_TRUE(kind.isBroken());
    EXPECT_EQ(FrameReader(std::string_view("\xFF\0\0\0x", 5)).text(), std::nullopt);
}

TEST(HttpRules, onlyTwoSchemesAreKnown) {
    EXPECT_EQ(schemeOf("HTTPS://h"), "https");
    EXPECT_EQ(schemeOf("http://h"), "http");
    for (const char *url : {"httpx://h", "http:/h", "http", "", "//h", " http://h", "file:///x", "http\t://h"})
        EXPECT_EQ(schemeOf(url), "") << url;
}

TEST(HttpRules, sizesHaveLimitsOnBothSides) {
    HttpRequest request{1, "http://h/", "GET", {}, ""};
    EXPECT_EQ(refusal(request), std::nullopt);
    request.url += std::string(limits::requestUrlBytes - request.url.size(), 'a');
    EXPECT_EQ(refusal(request), std::nullopt);
    request.url += 'a';
    EXPECT_TRUE(refusal(request));
    request.url = "http://h/";
    request.headers.emplace_back("n", std::string(limits::requestHeaderBytes - 1, 'v'));
    EXPECT_EQ(refusal(request), std::nullopt);
    request.headers[0].second += 'v';
    EXPECT_TRUE(refusal(request));
    request.headers.assign(limits::requestHeaders, {"n", "v"});
    EXPECT_EQ(refusal(request), std::nullopt);
    request.headers.emplace_back("n", "v");
    EXPECT_TRUE(refusal(request));
}

TEST(HttpRules, anotherServerIsToldByHostAndPort) {
    const auto keeps = [](const char *from, const char *to) {
        HttpRequest request{1, from, "GET", {{"AUTHORIZATION", "s"}}, ""};
        EXPECT_EQ(followRedirect(request, 302, to), std::nullopt);
        return !request.headers.empty();
    };
    EXPECT_TRUE(keeps("http://h/a", "http://H:80/b"));
    EXPECT_TRUE(keeps("https://u@h/a", "https://h:443/b"));
    EXPECT_FALSE(keeps("http://h/a", "http://h:81/"));
    EXPECT_FALSE(keeps("http://h/a", "http://h.x/"));
    EXPECT_FALSE(keeps("http://h/a", "http://h@x/"));
    EXPECT_FALSE(keeps("http://h/a", "http://x#@h/"));
    EXPECT_TRUE(keeps("http://h/a", "http://h?@x/"));
}

TEST(AddressRules, theInternetIsWhatIsNotNear) {
    for (const char *near : {"0.0.0.0",
                             "10.0.0.1",
                             "10.255.255.255",
                             "100.64.0.1",
                             "100.127.255.255",
                             "127.0.0.1",
                             "127.255.255.255",
                             "169.254.169.254",
                             "172.16.0.1",
                             "172.31.255.255",
                             "192.168.0.1",
                             "224.0.0.1",
                             "255.255.255.255",
                             "::",
                             "::1",
                             "::7f00:1",
                             "::ffff:127.0.0.1",
                             "::ffff:10.0.0.1",
                             "64:ff9b::7f00:1",
                             "2002:7f00:1::",
                             "fc00::1",
                             "fdff::1",
                             "fe80::1",
                             "febf::1",
                             "fec0::1",
                             "ff02::1",
                             "",
                             "localhost"})
        EXPECT_FALSE(isPublicAddress(std::string(near))) << near;
    for (const char *far :
         {"1.1.1.1",          "9.255.255.255",   "11.0.0.0",        "100.63.255.255",  "100.128.0.0",
          "126.255.255.255",  "128.0.0.0",       "169.253.255.255", "169.255.0.0",     "172.15.255.255",
          "172.32.0.0",       "192.167.255.255", "192.169.0.0",     "223.255.255.255", "::ffff:1.1.1.1",
          "64:ff9b::101:101", "2002:101:101::",  "2001:4860::1",    "fbff::1",         "fe00::1"})
        EXPECT_TRUE(isPublicAddress(std::string(far))) << far;
}

TEST(HttpRules, aHostThatProgramsReadInTwoWaysIsRefused) {
    for (const char *url : {"http://h\\@x/", "http://h\\x/", "http://h\\"}) {
        EXPECT_EQ(refusal({1, url, "GET", {}, ""}), "The URL is malformed.") << url;
        HttpRequest request{1, "http://h/", "GET", {}, ""};
        EXPECT_EQ(followRedirect(request, 302, url), "The URL is malformed.") << url;
    }
    EXPECT_EQ(refusal({1, "http://h/a\\b?c\\d", "GET", {}, ""}), std::nullopt);
}

TEST(HttpRules, theSenderAloneTellsWhereABodyEnds) {
    EXPECT_TRUE(isFraming("Content-Length"));
    EXPECT_TRUE(isFraming("TRANSFER-encoding"));
    EXPECT_FALSE(isFraming("Content-Type"));
    EXPECT_FALSE(isFraming("Content-Length2"));
}

TEST(ScriptEncodings, base64IsReadAsInBrowsers) {
    EXPECT_EQ(decodedBase64(u"YQ"), u"a");
    EXPECT_EQ(decodedBase64(u"YWI="), u"ab");
    EXPECT_EQ(decodedBase64(u" Y\tWJj\n"), u"abc");
    for (const char16_t *bad : {u"Y", u"YQ=", u"YQ===", u"YWJj=", u"Y=Q=", u"Y-_x", u"YWJjZ", u"="})
        EXPECT_EQ(decodedBase64(bad), std::nullopt);
    EXPECT_EQ(encodedBase64(u""), u"");
    EXPECT_EQ(encodedBase64(u"abcd"), u"YWJjZA==");
}

} // namespace
} // namespace tavrine
