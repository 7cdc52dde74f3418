#include "utilities/emoji/EmojiSearch.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

EmojiItem row(const char *emoji, const char *name, const QStringList &keywords = {}, const char *category = "Objects") {
    return {text(emoji), text(name), keywords.join(u','), text(category)};
}

/// Points of a row whose emoji means nothing.
qint64 score(const char *name, const QStringList &keywords, const char *query, const char *emoji = "x") {
    const std::vector<EmojiItem> table{row(emoji, name, keywords)};
    return EmojiSearch(table).score(table[0], text(query));
}

std::vector<QString> names(const std::vector<EmojiItem> &table, const char *query,
                           EmojiCategory category = EmojiCategory::all, const QStringList &recents = {}) {
    EmojiSearch search(table);
    search.setRecents(recents);
    std::vector<QString> result;
    for (const EmojiItem *item : search.search(text(query), category))
        result.push_back(item->name);
    return result;
}

TEST(EmojiScore, aNameThatEqualsTheTokenHas120) {
    EXPECT_EQ(score("Rocket", {}, "rocket"), 120);
}

TEST(EmojiScore, aNameThatBeginsWithTheTokenHas90) {
    EXPECT_EQ(score("Rocket ship", {}, "rocket"), 90);
}

TEST(EmojiScore, aKeywordThatEqualsTheTokenHas80) {
    EXPECT_EQ(score("a", {text("Launch")}, "launch"), 80);
}

TEST(EmojiScore, aKeywordThatBeginsWithTheTokenHas65) {
    EXPECT_EQ(score("a", {text("Launching")}, "launch"), 65);
}

TEST(EmojiScore, aTextThatContainsTheTokenHas35) {
    EXPECT_EQ(score("big rocket", {}, "rocket"), 35);
    EXPECT_EQ(score("a", {text("relaunch")}, "launch"), 35);
}

TEST(EmojiScore, theLongCategoryNameCounts) {
    EXPECT_EQ(score("a", {}, "objects"), 35);
}

TEST(EmojiScore, theSearchTextIsJoinedByBlanksSoThatNoWordsRunTogether) {
    EXPECT_EQ(score("ab", {text("cd")}, "bobj"), 0);
    EXPECT_EQ(score("ab", {text("cd"), text("ef")}, "cdef"), 0);
}

TEST(EmojiScore, theFirstRuleThatAppliesCountsAlone) {
    EXPECT_EQ(score("rocket", {text("rocket")}, "rocket"), 120);
    EXPECT_EQ(score("rocket ship", {text("rocket")}, "rocket"), 90);
}

TEST(EmojiScore, anEqualKeywordBehindOneThatOnlyBeginsStillHas80) {
    EXPECT_EQ(score("a", {text("hearts"), text("heart")}, "heart"), 80);
    EXPECT_EQ(score("a", {text("heart"), text("hearts")}, "heart"), 80);
}

TEST(EmojiScore, tokensAdd) {
    EXPECT_EQ(score("rocket ship", {text("fast")}, "rocket fast ship"), 90 + 80 + 35);
}

TEST(EmojiScore, aTokenTypedTwiceCountsTwice) {
    EXPECT_EQ(score("rocket", {}, "rocket rocket"), 240);
}

TEST(EmojiScore, oneTokenWithoutAMatchPutsTheRowOut) {
    EXPECT_EQ(score("rocket", {text("fast")}, "rocket slow"), 0);
}

TEST(EmojiScore, tokensAreSplitAtEveryKindOfWhiteSpaceAndLowerCased) {
    EXPECT_EQ(score("rocket", {text("fast")}, "\t ROCKET\u00a0\n\u3000Fast "), 120 + 80);
}

TEST(EmojiScore, theThreeBoostedEmojiGain35ForTheirWord) {
    EXPECT_EQ(score("mark", {text("check")}, "check", "\u2705"), 80 + 35);
    EXPECT_EQ(score("smile", {text("happy")}, "happy", "\U0001F60A"), 80 + 35);
    EXPECT_EQ(score("thumbs up", {}, "thumb", "\U0001F44D"), 90 + 35);
}

TEST(EmojiScore, theBoostIsForTheWholeWordAndTheEmojiAlone) {
    EXPECT_EQ(score("thumbs up", {}, "thumbs", "\U0001F44D"), 90);
    EXPECT_EQ(score("thumbs up", {}, "thu", "\U0001F44D"), 90);
    EXPECT_EQ(score("thumbs down", {}, "thumb", "\U0001F44E"), 90);
    EXPECT_EQ(score("thumbs up", {}, "thumb", "\U0001F44D\U0001F3FD"), 90);
    EXPECT_EQ(score("check happy", {}, "happy", "\u2705"), 35);
}

TEST(EmojiScore, theBoostCountsForEachToken) {
    EXPECT_EQ(score("thumbs up", {}, "thumb thumb", "\U0001F44D"), 2 * (90 + 35));
}

TEST(EmojiScore, aBoostedWordThatTheTextLacksDoesNotHelp) {
    EXPECT_EQ(score("mark", {}, "check", "\u2705"), 0);
}

TEST(EmojiScore, aRecentGainsEightOnce) {
    const std::vector<EmojiItem> table{row("x", "rocket ship"), row("y", "rocket ship")};
    EmojiSearch search(table);
    search.setRecents({text("x")});
    EXPECT_EQ(search.score(table[0], text("rocket ship")), 90 + 35 + 8);
    EXPECT_EQ(search.score(table[1], text("rocket ship")), 90 + 35);
    search.setRecents({});
    EXPECT_EQ(search.score(table[0], text("rocket ship")), 90 + 35);
}

TEST(EmojiScore, aRecentThatDoesNotMatchStaysOut) {
    const std::vector<EmojiItem> table{row("x", "rocket")};
    EmojiSearch search(table);
    search.setRecents({text("x")});
    EXPECT_EQ(search.score(table[0], text("ship")), 0);
}

TEST(EmojiScore, manyTokensDoNotOverflow) {
    EXPECT_EQ(score("a", {}, QByteArray("a ").repeated(1'000'000).constData()), 120'000'000);
}

TEST(EmojiSearchResult, theHighestScoreComesFirst) {
    EXPECT_THAT(names({row("1", "big rocket"), row("2", "rocket ship"), row("3", "rocket")}, "rocket"),
                ElementsAre(text("rocket"), text("rocket ship"), text("big rocket")));
}

TEST(EmojiSearchResult, equalScoresSortByName) {
    EXPECT_THAT(names({row("1", "rocket c"), row("2", "rocket a"), row("3", "rocket b")}, "rocket"),
                ElementsAre(text("rocket a"), text("rocket b"), text("rocket c")));
}

TEST(EmojiSearchResult, namesCompareByTheirCharactersSoThatCapitalsComeFirst) {
    EXPECT_THAT(names({row("1", "rocket a"), row("2", "rocket B")}, "rocket"),
                ElementsAre(text("rocket B"), text("rocket a")));
}

TEST(EmojiSearchResult, equalNamesKeepTheOrderOfTheTable) {
    const std::vector<EmojiItem> table{row("2", "rocket"), row("1", "rocket")};
    EXPECT_THAT(EmojiSearch(table).search(text("rocket"), EmojiCategory::all), ElementsAre(&table[0], &table[1]));
}

TEST(EmojiSearchResult, aRecentRisesAboveItsEquals) {
    EXPECT_THAT(names({row("1", "rocket a"), row("2", "rocket b")}, "rocket", EmojiCategory::all, {text("2")}),
                ElementsAre(text("rocket b"), text("rocket a")));
}

TEST(EmojiSearchResult, aQueryOfBlanksGivesTheCategoryListInTableOrder) {
    EXPECT_THAT(names({row("2", "b"), row("1", "a")}, " \t"), ElementsAre(text("b"), text("a")));
    EXPECT_THAT(names({row("2", "b"), row("1", "a")}, ""), ElementsAre(text("b"), text("a")));
}

TEST(EmojiSearchResult, isTakenFromTheCategoryAlone) {
    const std::vector<EmojiItem> table{row("1", "rocket a", {}, "Flags"), row("2", "rocket b", {}, "Activity")};
    EXPECT_THAT(names(table, "rocket", EmojiCategory::activity), ElementsAre(text("rocket b")));
    EXPECT_THAT(names(table, "rocket", EmojiCategory::food), IsEmpty());
}

TEST(EmojiSearchResult, categoriesCompareExactly) {
    const std::vector<EmojiItem> table{row("1", "a", {}, "flags"), row("2", "b", {}, "Flags"), row("3", "c", {}, "")};
    EXPECT_THAT(names(table, "", EmojiCategory::flags), ElementsAre(text("b")));
    EXPECT_THAT(names(table, "", EmojiCategory::all), ElementsAre(text("a"), text("b"), text("c")));
}

TEST(EmojiSearchResult, thumbRanksTheThumbAboveRowsThatMatchByKeywordAlone) {
    EXPECT_THAT(names({row("1", "a fist", {text("thumb")}), row("\U0001F44D", "up hand", {text("thumbs")})}, "thumb"),
                ElementsAre(text("up hand"), text("a fist")));
}

TEST(EmojiCategoryTable, standsInTheOrderOfTheStripWithItsNames) {
    std::vector<std::pair<QString, QString>> rows;
    for (const EmojiCategoryRow &entry : emojiCategories)
        rows.emplace_back(rawValue(entry.category), longName(entry.category));
    const auto pair = [](const char *a, const char *b) { return std::pair(text(a), text(b)); };
    EXPECT_THAT(rows, ElementsAre(pair("All", ""), pair("Smileys", "Smileys & People"),
                                  pair("Nature", "Animals & Nature"), pair("Food", "Food & Drink"),
                                  pair("Activity", "Activity"), pair("Travel", "Travel & Places"),
                                  pair("Objects", "Objects"), pair("Symbols", "Symbols"), pair("Flags", "Flags")));
}

TEST(EmojiCategoryTable, aLongNameLeadsBackAndNothingElseDoes) {
    for (const EmojiCategoryRow &entry : emojiCategories) {
        if (entry.category != EmojiCategory::all) {
            EXPECT_EQ(emojiCategoryFromLongName(longName(entry.category)), entry.category);
        }
    }
    for (const char *other : {"", "Nature", "food & drink", "Flags ", "All"})
        EXPECT_EQ(emojiCategoryFromLongName(text(other)), std::nullopt) << other;
}

TEST(EmojiCategoryTable, movesRoundBothEnds) {
    EXPECT_EQ(movedCategory(EmojiCategory::all, -1), EmojiCategory::flags);
    EXPECT_EQ(movedCategory(EmojiCategory::flags, +1), EmojiCategory::all);
    EXPECT_EQ(movedCategory(EmojiCategory::food, +1), EmojiCategory::activity);
    EXPECT_EQ(movedCategory(EmojiCategory::food, -1), EmojiCategory::animals);
}

} // namespace
} // namespace tavrine
