#include "PickerTest.h"

namespace tavrine {
namespace {

using testing::Each;
using testing::IsEmpty;
using testing::SizeIs;

class EmojiPickerStoreTest : public PickerTest {
protected:
    static EmojiItem item(const QString &emoji) { return {emoji, {}, {}, {}}; }
};

TEST_F(EmojiPickerStoreTest, startsOnTheSeeds) {
    const auto store = makeStore();
    EXPECT_EQ(store->recentEmojis(), preference::recentEmojis.fallbackValue());
    EXPECT_EQ(store->pinnedEmojis(), preference::pinnedEmojis.fallbackValue());
}

TEST_F(EmojiPickerStoreTest, theSeedsAreTheSixteenAndTheFourCodePoints) {
    QList<uint> points;
    for (const QString &emoji : preference::recentEmojis.fallbackValue())
        points += emoji.toUcs4();
    EXPECT_EQ(points, (QList<uint>{0x1F5A4, 0x1F680, 0x1F60E, 0x1F606, 0x2318, 0x1F607, 0x1F4AC, 0x25E6, 0x1F44A,
                                   0x1F91D, 0x2705, 0x1F4B0, 0x1F62C, 0x1F52B, 0x2192, 0x1F937}));
    points.clear();
    for (const QString &emoji : preference::pinnedEmojis.fallbackValue())
        points += emoji.toUcs4();
    EXPECT_EQ(points, (QList<uint>{0x2764, 0xFE0F, 0x1F62C, 0x1F64F, 0x1F389}));
}

TEST_F(EmojiPickerStoreTest, aStoredListReplacesTheSeedsWholly) {
    storeRecents(array({"a", "b"}));
    storePins(array({"c"}));
    const auto store = makeStore();
    EXPECT_EQ(store->recentEmojis(), (QStringList{text("a"), text("b")}));
    EXPECT_EQ(store->pinnedEmojis(), QStringList{text("c")});
}

TEST_F(EmojiPickerStoreTest, anEmptyStoredListDoesNotBringTheSeedsBack) {
    storeRecents({});
    storePins({});
    const auto store = makeStore();
    EXPECT_THAT(store->recentEmojis(), IsEmpty());
    EXPECT_THAT(store->pinnedEmojis(), IsEmpty());
}

TEST_F(EmojiPickerStoreTest, whatIsNoListOfTextsCountsAsNotStored) {
    defaults.set(QLatin1String(preference::recentEmojis.key), QStringLiteral("a"));
    UserDefaults::Array mixed = array({"a"});
    mixed.emplace_back(qint64{7});
    storePins(mixed);
    const auto store = makeStore();
    EXPECT_EQ(store->recentEmojis(), preference::recentEmojis.fallbackValue());
    EXPECT_EQ(store->pinnedEmojis(), preference::pinnedEmojis.fallbackValue());
}

TEST_F(EmojiPickerStoreTest, aUsedEmojiComesToTheFrontAndIsWritten) {
    storeRecents(array({"a", "b"}));
    const auto store = makeStore();
    store->recordRecent(item(text("c")));
    EXPECT_EQ(store->recentEmojis(), (QStringList{text("c"), text("a"), text("b")}));
    EXPECT_EQ(stored(preference::recentEmojis.key), array({"c", "a", "b"}));
}

TEST_F(EmojiPickerStoreTest, everyOlderOccurrenceOfAUsedEmojiGoes) {
    storeRecents(array({"a", "b", "a", "c", "a"}));
    const auto store = makeStore();
    store->recordRecent(item(text("a")));
    EXPECT_EQ(store->recentEmojis(), (QStringList{text("a"), text("b"), text("c")}));
}

TEST_F(EmojiPickerStoreTest, twentyFourRecentsStayAndTheTwentyFifthFallsOff) {
    storeRecents({});
    const auto store = makeStore();
    for (int i = 1; i <= 24; ++i)
        store->recordRecent(item(QString::number(i)));
    EXPECT_THAT(store->recentEmojis(), SizeIs(24));
    EXPECT_EQ(store->recentEmojis().last(), text("1"));
    store->recordRecent(item(text("25")));
    EXPECT_THAT(store->recentEmojis(), SizeIs(24));
    EXPECT_EQ(store->recentEmojis().last(), text("2"));
}

TEST_F(EmojiPickerStoreTest, aLongerStoredListIsCutAtTheNextUseAlone) {
    UserDefaults::Array many;
    for (int i = 0; i < 40; ++i)
        many.emplace_back(QString::number(i));
    storeRecents(many);
    const auto store = makeStore();
    EXPECT_THAT(store->recentEmojis(), SizeIs(40));
    store->recordRecent(item(text("x")));
    EXPECT_THAT(store->recentEmojis(), SizeIs(24));
    EXPECT_EQ(store->recentEmojis().last(), text("22"));
}

TEST_F(EmojiPickerStoreTest, aPinIsAppendedAndWritten) {
    storePins(array({"a"}));
    const auto store = makeStore();
    store->togglePin(item(text("b")));
    EXPECT_EQ(store->pinnedEmojis(), (QStringList{text("a"), text("b")}));
    EXPECT_EQ(stored(preference::pinnedEmojis.key), array({"a", "b"}));
}

TEST_F(EmojiPickerStoreTest, unpinningRemovesEveryOccurrence) {
    storePins(array({"a", "b", "a"}));
    const auto store = makeStore();
    store->togglePin(item(text("a")));
    EXPECT_EQ(store->pinnedEmojis(), QStringList{text("b")});
    EXPECT_EQ(stored(preference::pinnedEmojis.key), array({"b"}));
}

TEST_F(EmojiPickerStoreTest, unknownEntriesStayStored) {
    storePins(array({"unknown"}));
    const auto store = makeStore();
    store->togglePin(*store->item(text("o1")));
    EXPECT_EQ(stored(preference::pinnedEmojis.key), array({"unknown", "o1"}));
}

TEST_F(EmojiPickerStoreTest, usingAPinnedEmojiChangesNoPins) {
    storePins(array({"o1"}));
    storeRecents(array({"o2", "o1"}));
    const auto store = makeStore();
    store->recordRecent(*store->item(text("o1")));
    EXPECT_EQ(store->pinnedEmojis(), QStringList{text("o1")});
    EXPECT_EQ(store->recentEmojis(), (QStringList{text("o1"), text("o2")}));
}

TEST_F(EmojiPickerStoreTest, anItemIsTheFirstRowWithThatEmoji) {
    QFile file(tablePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"([{"emoji":"x","name":"one","category":"Flags"},{"emoji":"x","name":"two","category":"Flags"}])");
    file.close();
    const auto store = makeStore();
    ASSERT_TRUE(store->item(text("x")));
    EXPECT_EQ(store->item(text("x"))->name, text("one"));
    EXPECT_EQ(store->item(text("y")), nullptr);
}

TEST_F(EmojiPickerStoreTest, withoutATableThereAreNoEmojis) {
    EmojiPickerStore store(defaults, QStringLiteral("/nonexistent"));
    EXPECT_THAT(store.emojis(), IsEmpty());
    EXPECT_EQ(store.item(text("o1")), nullptr);
}

} // namespace
} // namespace tavrine
