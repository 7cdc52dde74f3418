#include "utilities/emoji/EmojiGrid.h"

#include <deque>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

/// Sections with the given numbers of items; item i of section s is called "s:i".
class EmojiGridTest : public testing::Test {
protected:
    void make(std::initializer_list<int> counts) {
        int section = 0;
        for (const int count : counts) {
            EmojiSection made{QString::number(section), {}};
            for (int i = 0; i < count; ++i) {
                items.push_back({name(section, i), {}, {}, {}});
                made.items.push_back(&items.back());
            }
            sections.push_back(made);
            ++section;
        }
    }
    static QString name(int section, int item) { return QStringLiteral("%1:%2").arg(section).arg(item); }

    [[nodiscard]] QString after(EmojiMove move, int section, int item) const {
        return emojiGrid::moved(sections, name(section, item), move).value_or(QStringLiteral("none"));
    }
    std::deque<EmojiItem> items;
    std::vector<EmojiSection> sections;
};

using enum EmojiMove;

TEST_F(EmojiGridTest, leftIsThePreviousItem) {
    make({10});
    EXPECT_EQ(after(left, 0, 8), name(0, 7));
    EXPECT_EQ(after(left, 0, 1), name(0, 0));
}

TEST_F(EmojiGridTest, leftFromTheFirstItemIsTheLastOfThePreviousSection) {
    make({10, 3});
    EXPECT_EQ(after(left, 1, 0), name(0, 9));
}

TEST_F(EmojiGridTest, leftFromTheVeryFirstItemStays) {
    make({10, 3});
    EXPECT_EQ(after(left, 0, 0), name(0, 0));
}

TEST_F(EmojiGridTest, rightIsTheNextItem) {
    make({10});
    EXPECT_EQ(after(right, 0, 7), name(0, 8));
    EXPECT_EQ(after(right, 0, 8), name(0, 9));
}

TEST_F(EmojiGridTest, rightFromTheLastItemIsTheFirstOfTheNextSection) {
    make({10, 3});
    EXPECT_EQ(after(right, 0, 9), name(1, 0));
}

TEST_F(EmojiGridTest, rightFromTheVeryLastItemStays) {
    make({10, 3});
    EXPECT_EQ(after(right, 1, 2), name(1, 2));
}

TEST_F(EmojiGridTest, upIsTheItemEightBack) {
    make({20});
    EXPECT_EQ(after(up, 0, 8), name(0, 0));
    EXPECT_EQ(after(up, 0, 19), name(0, 11));
}

TEST_F(EmojiGridTest, upFromTheFirstRowIsTheLastRowOfThePreviousSectionAtTheSameColumn) {
    make({14, 9});
    EXPECT_EQ(after(up, 1, 5), name(0, 13));
    EXPECT_EQ(after(up, 1, 0), name(0, 8));
    EXPECT_EQ(after(up, 1, 7), name(0, 13)) << "the last row is shorter";
}

TEST_F(EmojiGridTest, upIntoASectionOfTenAtColumnFiveIsItsLastItem) {
    make({10, 8});
    EXPECT_EQ(after(up, 1, 5), name(0, 9));
    EXPECT_EQ(after(up, 1, 1), name(0, 9));
    EXPECT_EQ(after(up, 1, 0), name(0, 8));
}

TEST_F(EmojiGridTest, upIntoAFullLastRowKeepsTheColumn) {
    make({16, 8});
    EXPECT_EQ(after(up, 1, 7), name(0, 15));
    EXPECT_EQ(after(up, 1, 0), name(0, 8));
}

TEST_F(EmojiGridTest, upFromTheFirstRowOfTheFirstSectionStays) {
    make({14, 9});
    EXPECT_EQ(after(up, 0, 7), name(0, 7));
    EXPECT_EQ(after(up, 0, 8), name(0, 0));
}

TEST_F(EmojiGridTest, downIsTheItemEightOn) {
    make({17});
    EXPECT_EQ(after(down, 0, 0), name(0, 8));
    EXPECT_EQ(after(down, 0, 8), name(0, 16));
}

TEST_F(EmojiGridTest, downWithoutAnItemEightOnIsTheNextSectionAtTheSameColumn) {
    make({12, 9});
    EXPECT_EQ(after(down, 0, 3), name(0, 11));
    EXPECT_EQ(after(down, 0, 4), name(1, 4)) << "the row below is shorter, so the move goes past it";
    EXPECT_EQ(after(down, 0, 11), name(1, 3));
}

TEST_F(EmojiGridTest, downIntoAShorterSectionIsItsLastItem) {
    make({8, 3});
    EXPECT_EQ(after(down, 0, 7), name(1, 2));
    EXPECT_EQ(after(down, 0, 2), name(1, 2));
    EXPECT_EQ(after(down, 0, 1), name(1, 1));
}

TEST_F(EmojiGridTest, downFromTheLastRowOfTheLastSectionStays) {
    make({8, 12});
    EXPECT_EQ(after(down, 1, 10), name(1, 10));
}

TEST_F(EmojiGridTest, downOverAShortLastRowOfTheLastSectionStays) {
    make({12});
    EXPECT_EQ(after(down, 0, 4), name(0, 4));
    EXPECT_EQ(after(down, 0, 3), name(0, 11));
}

TEST_F(EmojiGridTest, withoutASelectionEveryMoveSelectsTheFirstItem) {
    make({3, 3});
    for (const EmojiMove move : {left, right, up, down})
        EXPECT_EQ(emojiGrid::moved(sections, std::nullopt, move), name(0, 0));
}

TEST_F(EmojiGridTest, aSelectionThatIsNowhereCountsAsNone) {
    make({3, 3});
    for (const EmojiMove move : {left, right, up, down})
        EXPECT_EQ(emojiGrid::moved(sections, QStringLiteral("gone"), move), name(0, 0));
}

TEST_F(EmojiGridTest, withoutItemsNothingIsSelected) {
    EXPECT_EQ(emojiGrid::moved(sections, std::nullopt, right), std::nullopt);
    make({0});
    EXPECT_EQ(emojiGrid::moved(sections, std::nullopt, right), std::nullopt);
}

TEST_F(EmojiGridTest, aStepIntoAnEmptySectionSelectsNothing) {
    make({0, 2, 0});
    for (const EmojiMove move : {left, up})
        EXPECT_EQ(after(move, 1, 0), QStringLiteral("none"));
    for (const EmojiMove move : {right, down})
        EXPECT_EQ(after(move, 1, 1), QStringLiteral("none"));
}

TEST_F(EmojiGridTest, anEmojiInTwoSectionsStandsWhereItComesFirst) {
    make({3, 3});
    sections[1].items[1] = sections[0].items[2];
    EXPECT_EQ(emojiGrid::find(sections, name(0, 2)), (emojiGrid::Position{0, 2}));
    EXPECT_EQ(after(right, 0, 2), name(1, 0));
}

} // namespace
} // namespace tavrine
