#include "utilities/emoji/EmojiTable.h"

#include "utilities/emoji/EmojiCategory.h"
#include "utilities/emoji/EmojiPickerStore.h"

#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

std::vector<EmojiItem> table(const char *json) {
    return emojiTableFromJson(QByteArray(json));
}

TEST(EmojiTable, rowsStandInTheOrderOfTheFile) {
    EXPECT_EQ(table(R"([{"emoji":"b","name":"B","category":"Food & Drink","keywords":"x,y"},
                        {"emoji":"a","name":"A","category":"Flags","keywords":""}])"),
              (std::vector<EmojiItem>{
                  {QStringLiteral("b"), QStringLiteral("B"), QStringLiteral("x,y"), QStringLiteral("Food & Drink")},
                  {QStringLiteral("a"), QStringLiteral("A"), QString(), QStringLiteral("Flags")}}));
}

TEST(EmojiTable, keywordsMayBeAbsent) {
    const auto rows = table(R"([{"emoji":"a","name":"A","category":"Flags"}])");
    ASSERT_THAT(rows, SizeIs(1));
    EXPECT_THAT(rows[0].keywords(), IsEmpty());
}

TEST(EmojiTable, emptyKeywordsAreDroppedAndBlanksStay) {
    EXPECT_EQ(table(R"([{"emoji":"a","name":"A","category":"Flags","keywords":",one,, two,"}])")[0].keywords(),
              (QStringList{QStringLiteral("one"), QStringLiteral(" two")}));
}

TEST(EmojiTable, anObjectWithoutOneOfTheThreeKeysIsLeftOut) {
    const auto rows = table(R"([{"name":"A","category":"Flags"},{"emoji":"a","category":"Flags"},
                                {"emoji":"a","name":"A"},{},{"emoji":"k","name":"K","category":"Flags"}])");
    ASSERT_THAT(rows, SizeIs(1));
    EXPECT_EQ(rows[0].emoji, QStringLiteral("k"));
}

TEST(EmojiTable, oneValueThatIsNoTextMakesItNoTable) {
    const char *const good = R"({"emoji":"a","name":"A","category":"Flags"})";
    for (const char *bad :
         {R"({"emoji":1,"name":"A","category":"Flags"})",
          R"({"emoji":"a","name":"A","category":"Flags","keywords":["k"]})",
          R"({"emoji":"a","name":null,"category":"Flags"})", R"({"emoji":"a","name":"A","category":{"x":"y"}})",
          R"({"emoji":"a","name":"A","category":"Flags","other":true})", "\"text\"", "[]", "7", "null"}) {
        const QByteArray json = QByteArray("[") + good + "," + bad + "]";
        EXPECT_THAT(emojiTableFromJson(json), IsEmpty()) << bad;
    }
    EXPECT_THAT(emojiTableFromJson(QByteArray("[") + good + "]"), SizeIs(1));
}

TEST(EmojiTable, whatIsNoArrayOfObjectsIsEmpty) {
    for (const char *json : {"", "{}", "null", "[", "[{\"emoji\":\"a\"", "\xff\xfe[]", R"({"emoji":"a","name":"A"})"})
        EXPECT_THAT(table(json), IsEmpty()) << json;
}

TEST(EmojiTable, deepNestingIsNoTable) {
    EXPECT_THAT(emojiTableFromJson(QByteArray(100'000, '[') + QByteArray(100'000, ']')), IsEmpty());
}

TEST(EmojiTable, aMissingFileIsEmpty) {
    EXPECT_THAT(loadEmojiTable(QStringLiteral("/nonexistent/emoji_data.json")), IsEmpty());
    EXPECT_THAT(loadEmojiTable(QString()), IsEmpty());
}

class EmojiTableFile : public testing::TestWithParam<qint64> {
protected:
    /// A table of one row, filled up with blanks to `size` bytes.
    [[nodiscard]] std::vector<EmojiItem> loadOfSize(qint64 size) const {
        QFile file(folder.filePath(QStringLiteral("emoji_data.json")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        const QByteArray row = R"([{"emoji":"a","name":"A","category":"Flags"}])";
        file.write(row + QByteArray(size - row.size(), ' '));
        file.close();
        return loadEmojiTable(file.fileName());
    }
    QTemporaryDir folder;
};

TEST_F(EmojiTableFile, aFileOfExactlyTheLimitIsRead) {
    EXPECT_THAT(loadOfSize(emojiTableLimit), SizeIs(1));
}

TEST_F(EmojiTableFile, aFileOneByteLargerIsNot) {
    EXPECT_THAT(loadOfSize(emojiTableLimit + 1), IsEmpty());
}

/// The table that is built and installed.
class BuiltEmojiTable : public testing::Test {
protected:
    static void SetUpTestSuite() { rows = loadEmojiTable(QStringLiteral(TAVRINE_EMOJI_TABLE)); }
    static void TearDownTestSuite() { rows.clear(); }

    static const EmojiItem *find(const QString &emoji) {
        for (const EmojiItem &row : rows) {
            if (row.emoji == emoji)
                return &row;
        }
        return nullptr;
    }
    static std::vector<EmojiItem> rows;
};
std::vector<EmojiItem> BuiltEmojiTable::rows;

TEST_F(BuiltEmojiTable, holdsEveryDefaultRecentAndPin) {
    for (const QString &emoji : preference::recentEmojis.fallbackValue() + preference::pinnedEmojis.fallbackValue())
        EXPECT_TRUE(find(emoji)) << emoji.toStdString();
}

TEST_F(BuiltEmojiTable, hasTheEightCategoriesInTheirOrderAndNoOther) {
    QStringList seen;
    for (const EmojiItem &row : rows) {
        if (seen.isEmpty() || seen.last() != row.category)
            seen.append(row.category);
    }
    QStringList expected;
    for (const EmojiCategoryRow &row : emojiCategories) {
        if (row.category != EmojiCategory::all)
            expected.append(row.longName);
    }
    EXPECT_EQ(seen, expected);
}

TEST_F(BuiltEmojiTable, holdsEachEmojiOnceAndNamesIt) {
    QSet<QString> seen;
    for (const EmojiItem &row : rows) {
        EXPECT_FALSE(row.emoji.isEmpty() || row.name.isEmpty());
        EXPECT_FALSE(seen.contains(row.emoji)) << row.emoji.toStdString();
        seen.insert(row.emoji);
    }
    EXPECT_GT(rows.size(), 5000U);
}

TEST_F(BuiltEmojiTable, holdsSkinTonesAndFlags) {
    EXPECT_TRUE(find(QStringLiteral("\U0001F44D\U0001F3FD")));
    EXPECT_TRUE(find(QStringLiteral("\U0001F1E9\U0001F1EA")));
    EXPECT_FALSE(find(QStringLiteral("\U0001F3FD"))) << "a skin tone alone is no emoji";
}

TEST_F(BuiltEmojiTable, holdsTheSignsThatPeopleInsert) {
    const QString signs = QStringLiteral("⌘⌥⇧⌃⎋↵⏎⌫⇥⇪→←↑↓⇒⇔◦•–—…×÷±≠≤≥≈∞√π°§¶€£¥©®™✓✗★☆½²µ“”«»");
    for (const QChar sign : signs) {
        const EmojiItem *row = find(QString(sign));
        ASSERT_TRUE(row) << QString(sign).toStdString();
        EXPECT_EQ(row->category, QStringLiteral("Symbols"));
    }
}

struct Wanted {
    const char *query;
    const char *sign;
};

class BuiltEmojiTableSearch : public BuiltEmojiTable, public testing::WithParamInterface<Wanted> {};

TEST_P(BuiltEmojiTableSearch, findsTheSignAmongTheFirstTwenty) {
    const EmojiSearch search(rows);
    const auto found = search.search(QString::fromUtf8(GetParam().query), EmojiCategory::symbols);
    const auto end = found.begin() + static_cast<std::ptrdiff_t>(std::min<size_t>(20, found.size()));
    EXPECT_TRUE(std::any_of(found.begin(), end, [](const EmojiItem *item) {
        return item->emoji == QString::fromUtf8(GetParam().sign);
    })) << GetParam().query;
}

INSTANTIATE_TEST_SUITE_P(Signs, BuiltEmojiTableSearch,
                         testing::Values(Wanted{"command", "⌘"}, Wanted{"cmd", "⌘"}, Wanted{"option", "⌥"},
                                         Wanted{"shift", "⇧"}, Wanted{"control", "⌃"}, Wanted{"escape", "⎋"},
                                         Wanted{"return", "⏎"}, Wanted{"right arrow", "→"}, Wanted{"bullet", "•"},
                                         Wanted{"em dash", "—"}, Wanted{"infinity", "∞"}, Wanted{"euro", "€"},
                                         Wanted{"ellipsis", "…"}, Wanted{"check", "✓"}, Wanted{"not equal", "≠"},
                                         Wanted{"degree", "°"}, Wanted{"pi", "π"}, Wanted{"section", "§"}));

} // namespace
} // namespace tavrine
