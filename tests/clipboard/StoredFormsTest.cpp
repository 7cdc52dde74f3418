#include "base/Uuid.h"
#include "clipboard/ClipboardExport.h"
#include "clipboard/ExcludedApp.h"
#include "clipboard/JpegLadder.h"
#include "clipboard/OldHistory.h"
#include "clipboard/RetentionPeriod.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

const QByteArray id = "8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10";

/// The items of an old history of one object with these members besides a valid id.
std::optional<std::vector<ClipboardItem>> decodeOne(const QByteArray &members) {
    return decodeOldHistory("[{\"id\":\"" + id + "\"," + members + "}]");
}

TEST(OldHistory, readsAllFields) {
    const auto items = decodeOne(R"("content":"caption","date":-1.25,"isPinned":true,"isSaved":true,)"
                                 R"("imageFileName":"A.jpg","somethingElse":[1,{}])");
    ASSERT_TRUE(items);
    ClipboardItem expected;
    expected.id = *uuidFromString(QString::fromLatin1(id));
    expected.content = QStringLiteral("caption");
    expected.date = {978307198.75};
    expected.isPinned = true;
    expected.isSaved = true;
    expected.imageFileName = QStringLiteral("A.jpg");
    EXPECT_EQ(*items, std::vector{expected});
}

TEST(OldHistory, whatMayBeAbsentIsFalseOrAbsent) {
    for (const QByteArray &rest :
         {QByteArray(), QByteArray(R"(,"isPinned":null,"isSaved":null,"imageFileName":null)")}) {
        const auto items = decodeOne(R"("content":"","date":0)" + rest);
        ASSERT_TRUE(items);
        EXPECT_FALSE(items->front().isPinned);
        EXPECT_FALSE(items->front().isSaved);
        EXPECT_EQ(items->front().imageFileName, std::nullopt);
        EXPECT_EQ(items->front().content, QString());
        EXPECT_EQ(items->front().date.secondsSince1970, 978307200.0);
    }
}

TEST(OldHistory, anEmptyContentWithAFileReadsAsImage) {
    EXPECT_EQ(decodeOne(R"("content":"","date":0,"imageFileName":"A.jpg")")->front().content, QStringLiteral("Image"));
}

TEST(OldHistory, anEmptyListIsAHistory) {
    EXPECT_EQ(decodeOldHistory("[]"), std::vector<ClipboardItem>());
}

TEST(OldHistory, anIdInLowerCaseIsRead) {
    EXPECT_TRUE(decodeOldHistory("[{\"id\":\"" + id.toLower() + R"(","content":"a","date":0}])"));
}

class UnreadableOldHistory : public testing::TestWithParam<const char *> {};

TEST_P(UnreadableOldHistory, isReadNeitherWholeNorInPart) {
    const QByteArray good = "{\"id\":\"" + id + R"(","content":"good","date":0})";
    const QByteArray bad = GetParam();
    EXPECT_EQ(decodeOldHistory("[" + good + "," + bad + "]"), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    OldHistory, UnreadableOldHistory,
    testing::Values(R"(null)", R"(5)", R"("text")", R"([])", R"({})",
                    R"({"content":"a","date":0})",                                                  // no id
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","date":0})",                    // no content
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":"a"})",               // no date
                    R"({"id":null,"content":"a","date":0})",                                        //
                    R"({"id":5,"content":"a","date":0})",                                           //
                    R"({"id":"","content":"a","date":0})",                                          //
                    R"({"id":"{8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10}","content":"a","date":0})",    //
                    R"({"id":"8F14E45FCEEA467FAB1C2D5A6C3E9B10","content":"a","date":0})",          //
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B1X","content":"a","date":0})",      //
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":5,"date":0})",        //
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":null,"date":0})",     //
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":"a","date":"0"})",    //
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":"a","date":null})",   //
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":"a","date":true})",   //
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":"a","date":NaN})",    //
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":"a","date":1e999})",  //
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":"a","date":-1e999})", //
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":"a","date":0,"isPinned":1})",
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":"a","date":0,"isSaved":"true"})",
                    R"({"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":"a","date":0,"imageFileName":5})"));

TEST(OldHistory, whatIsNoListOfObjectsIsUnreadable) {
    for (const char *json : {"", "null", "{}", "5", "\"text\"", "[", "[1", "[{]", "[] []", "[{\"id\":\"\xff\"}]"})
        EXPECT_EQ(decodeOldHistory(json), std::nullopt) << json;
}

TEST(OldHistory, deepNestingIsUnreadable) {
    const QByteArray deep = QByteArray(1'000'000, '[') + QByteArray(1'000'000, ']');
    EXPECT_EQ(decodeOldHistory(deep), std::nullopt);
    EXPECT_EQ(decodeOne(R"("content":"a","date":0,"extra":)" + deep), std::nullopt);
}

TEST(OldHistory, aLargeDateThatFitsADoubleIsKept) {
    EXPECT_EQ(decodeOne(R"("content":"a","date":1e300)")->front().date.secondsSince1970, 1e300);
    EXPECT_EQ(decodeOne(R"("content":"a","date":9223372036854775807)")->front().date.secondsSince1970,
              9223372036854775807.0 + 978307200.0);
}

TEST(OldHistory, ofAKeyThatStandsTwiceTheLastCounts) {
    EXPECT_EQ(decodeOne(R"("content":"first","date":0,"content":"second")")->front().content, QStringLiteral("second"));
}

TEST(OldHistory, halfASurrogatePairReadsAsAQuestionMark) {
    const QString replaced = QStringLiteral("a?b");
    EXPECT_EQ(decodeOne(R"("content":"a\ud83db","date":0)")->front().content, replaced);
    EXPECT_EQ(decodeOne(R"("content":"a\ude00b","date":0)")->front().content, replaced);
    EXPECT_EQ(decodeOne(R"("content":"\ud83d\ude00","date":0)")->front().content, QStringLiteral("\U0001F600"));
}

TEST(OldHistory, aLongHistoryOfLongTextsIsRead) {
    QByteArray json = "[";
    for (int i = 0; i < 5000; ++i) {
        json += i == 0 ? "" : ",";
        json += "{\"id\":\"" + id + R"(","content":")" + QByteArray(1000, 'x') + R"(","date":)" +
                QByteArray::number(i) + "}";
    }
    EXPECT_EQ(decodeOldHistory(json + "]")->size(), 5000U);
}

// The excluded applications.

TEST(ExcludedAppForm, isReadAsItWasWritten) {
    const std::vector<ExcludedApp> apps{
        {QUuid::createUuid(), QStringLiteral("org.example.bank"), QStringLiteral("Bänk \"1\"\n")},
        {QUuid::createUuid(), QString(), QString()},
    };
    EXPECT_EQ(decodeExcludedApps(encodeExcludedApps(apps)), apps);
    EXPECT_EQ(encodeExcludedApps({}), "[]");
}

TEST(ExcludedAppForm, hasTheThreeKeys) {
    const ExcludedApp app{*uuidFromString(QString::fromLatin1(id)), QStringLiteral("b"), QStringLiteral("d")};
    EXPECT_EQ(encodeExcludedApps({app}), R"([{"bundleID":"b","displayName":"d","id":")" + id + R"("}])");
}

TEST(ExcludedAppForm, allKeysAreRequiredAndAreTexts) {
    const QByteArray start = "[{\"id\":\"" + id + '"';
    EXPECT_TRUE(decodeExcludedApps(start + R"(,"bundleID":"b","displayName":"d","more":1}])"));
    EXPECT_EQ(decodeExcludedApps(start + R"(,"bundleID":"b"}])"), std::nullopt);
    EXPECT_EQ(decodeExcludedApps(start + R"(,"displayName":"d"}])"), std::nullopt);
    EXPECT_EQ(decodeExcludedApps(R"([{"bundleID":"b","displayName":"d"}])"), std::nullopt);
    EXPECT_EQ(decodeExcludedApps(start + R"(,"bundleID":5,"displayName":"d"}])"), std::nullopt);
    EXPECT_EQ(decodeExcludedApps(start + R"(,"bundleID":"b","displayName":null}])"), std::nullopt);
    EXPECT_EQ(decodeExcludedApps(R"([{"id":"no id","bundleID":"b","displayName":"d"}])"), std::nullopt);
    EXPECT_EQ(decodeExcludedApps("{}"), std::nullopt);
    EXPECT_EQ(decodeExcludedApps(""), std::nullopt);
}

TEST(ExcludedAppForm, equalEntriesHashAlike) {
    const ExcludedApp app{QUuid::createUuid(), QStringLiteral("b"), QStringLiteral("d")};
    const ExcludedApp other{QUuid::createUuid(), QStringLiteral("b"), QStringLiteral("d")};
    EXPECT_EQ(qHash(app), qHash(ExcludedApp(app)));
    EXPECT_NE(qHash(app), qHash(other));
}

// The retention period.

TEST(RetentionPeriodText, isReadAsItWasWritten) {
    QStringList texts;
    for (const auto period : {RetentionPeriod::tenMinutes, RetentionPeriod::threeDays, RetentionPeriod::thirtyDays}) {
        texts.append(textOf(retentionPeriodTexts, period));
        EXPECT_EQ(choiceOf(retentionPeriodTexts, texts.last()), period);
    }
    EXPECT_EQ(texts.join(u'|'), QStringLiteral("10 Minutes|3 Days|30 Days"));
}

TEST(RetentionPeriodText, otherTextsAreNoPeriod) {
    for (const char *text : {"", "30 days", " 30 Days", "thirtyDays"})
        EXPECT_EQ(choiceOf(retentionPeriodTexts, QString::fromLatin1(text)), std::nullopt) << text;
}

// The factors of the JPEG encodings.

TEST(JpegFactors, areTheStartLessTheStepUntilOneIsNotAboveTheEnd) {
    double factor = 0.82;
    std::vector<double> all{factor};
    while (factor > 0.2) {
        factor -= 0.15;
        all.push_back(factor);
    }
    ASSERT_EQ(all.size(), jpegFactors.size());
    for (size_t i = 0; i < all.size(); ++i)
        EXPECT_NEAR(all[i], jpegFactors[i], 1e-12);
}

TEST(ExportName, isTheIntegerPartOfTheSeconds) {
    EXPECT_EQ(exportFileName({1769860800.999}), QStringLiteral("clipboard_export_1769860800.txt"));
}

} // namespace
} // namespace tavrine
