#include "upload/WorkerRecords.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

bool isDecoded(const QByteArray &bytes) {
    return decodeWorkerOutput(bytes).has_value();
}

TEST(WorkerRecords, membersThatAreNotKnownAreIgnored) {
    const auto output = decodeWorkerOutput(R"( {"logs":[],"url":"u","more":{"a":[1]}} )");
    ASSERT_TRUE(output);
    EXPECT_EQ(output->url, QStringLiteral("u"));
}

TEST(WorkerRecords, aMemberOfAnotherTypeSpoilsTheRecord) {
    EXPECT_FALSE(isDecoded(R"({"logs":[],"url":1})"));
    EXPECT_FALSE(isDecoded(R"({"logs":[],"errorKind":[]})"));
    EXPECT_FALSE(isDecoded(R"({"logs":[],"errorMessage":{}})"));
    EXPECT_FALSE(isDecoded(R"({"logs":null})"));
    EXPECT_FALSE(isDecoded(R"({"logs":"x"})"));
    EXPECT_FALSE(isDecoded(R"({"logs":["a",1]})"));
    EXPECT_FALSE(isDecoded(R"({"logs":[null]})"));
}

TEST(WorkerRecords, whatIsNotOneObjectIsNoRecord) {
    for (const char *bytes : {"", " ", "[]", "null", "\"x\"", "{", R"({"logs":[]}x)", R"({"logs":[]}{"logs":[]})"})
        EXPECT_FALSE(isDecoded(bytes)) << bytes;
    EXPECT_FALSE(isDecoded(QByteArray("{\"logs\":[\"\xFF\"]}")));
    EXPECT_FALSE(isDecoded(QByteArray(100'000, '[')));
}

TEST(WorkerRecords, halfOfASurrogatePairBecomesAReplacementCharacter) {
    const auto output = decodeWorkerOutput(R"({"logs":["a\ud800b"],"url":"\udc00"})");
    ASSERT_TRUE(output);
    EXPECT_EQ(output->url, QString(QChar(0xFFFD)));
    EXPECT_EQ(output->logs.value(0), QStringLiteral("a") + QChar(0xFFFD) + QStringLiteral("b"));
}

TEST(WorkerRecords, anInputSurvivesItsJson) {
    const auto json = encode({QStringLiteral("a \"\\\n\u2028\U0001F60E"), QStringLiteral("+/="), QStringLiteral("n")});
    ASSERT_TRUE(json);
    EXPECT_TRUE(json->contains("\"imageBase64\":\"+/=\""));
    EXPECT_TRUE(json->contains("\"fileName\":\"n\""));
    EXPECT_FALSE(json->contains('\n'));
}

} // namespace
} // namespace tavrine
