#include "utilities/emoji/EmojiPickerModel.h"

#include "PickerTest.h"
#include "base/DesktopWords.h"
#include "base/VirtualKeys.h"

#include <map>

namespace tavrine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class EmojiPickerModelTest : public PickerTest {
protected:
    EmojiPickerModelTest() {
        storePins(array({"👍", "unknown"}));
        storeRecents(array({"o2", "unknown", "😬", "o1"}));
        start();
    }

    void start() {
        model.reset();
        store = makeStore();
        model = std::make_unique<EmojiPickerModel>(EmojiPickerModel::Ports{*store, center, time});
        model->setOnCopy([this](const EmojiItem &item) { copied.append(item.emoji); });
        model->setOnDismiss([this] { ++dismissals; });
        QObject::connect(model.get(), &EmojiPickerModel::searchFieldFocusWanted, [this] { ++focusWishes; });
    }

    void open() { center.post(QLatin1String(EmojiPickerModel::openedNotification)); }
    bool press(int keyCode, bool isCommandHeld = false) {
        return model->handleKeyDown(text("Emoji Picker"), keyCode, isCommandHeld);
    }

    /// Titles with the emoji below them.
    [[nodiscard]] std::vector<std::pair<QString, QStringList>> shown() const {
        std::vector<std::pair<QString, QStringList>> result;
        for (const EmojiSection &section : model->sections()) {
            QStringList emojis;
            for (const EmojiItem *item : section.items)
                emojis.append(item->emoji);
            result.emplace_back(section.title, emojis);
        }
        return result;
    }
    [[nodiscard]] QStringList titles() const {
        QStringList result;
        for (const EmojiSection &section : model->sections())
            result.append(section.title);
        return result;
    }
    [[nodiscard]] QString selected() const { return model->selectedID().value_or(text("none")); }

    std::unique_ptr<EmojiPickerStore> store;
    std::unique_ptr<EmojiPickerModel> model;
    QStringList copied;
    int dismissals = 0;
    int focusWishes = 0;
};

TEST_F(EmojiPickerModelTest, allShowsPinsThenRecentsThenTheCategoriesInOrder) {
    EXPECT_EQ(titles(), (QStringList{text("Pinned"), text("Frequently Used"), text("Smileys & People"), text("Objects"),
                                     text("Flags")}));
    EXPECT_EQ(shown()[0].second, QStringList{text("👍")});
    EXPECT_EQ(shown()[1].second, (QStringList{text("o2"), text("😬"), text("o1")})) << "unknown ones are skipped";
    EXPECT_EQ(shown()[4].second, QStringList{text("🏁")});
}

TEST_F(EmojiPickerModelTest, emptyPinsAndRecentsHaveNoSection) {
    storePins(array({"unknown"}));
    storeRecents({});
    start();
    EXPECT_EQ(titles(), (QStringList{text("Smileys & People"), text("Objects"), text("Flags")}));
}

TEST_F(EmojiPickerModelTest, aCategoryIsOneSectionUnderItsLongName) {
    model->setSelectedCategory(EmojiCategory::smileys);
    EXPECT_THAT(shown(), ElementsAre(Pair(text("Smileys & People"), QStringList{text("😀"), text("👍"), text("😬")})));
}

TEST_F(EmojiPickerModelTest, aCategoryWithoutRowsIsEmptyAndSelectsNothing) {
    model->setSelectedCategory(EmojiCategory::food);
    EXPECT_TRUE(model->isEmpty());
    EXPECT_EQ(selected(), text("none"));
    model->move(EmojiMove::down);
    EXPECT_EQ(selected(), text("none"));
}

TEST_F(EmojiPickerModelTest, aQueryShowsTheResultsAlone) {
    model->setQuery(text("face"));
    EXPECT_THAT(shown(), ElementsAre(Pair(text("Results"), QStringList{text("😬"), text("😀")})))
        << "a recent has eight points more";
    EXPECT_FALSE(model->isEmpty());
}

TEST_F(EmojiPickerModelTest, aQueryOfTwoWordsNeedsBoth) {
    model->setQuery(text("face hand"));
    EXPECT_THAT(shown(), ElementsAre(Pair(text("Results"), QStringList())));
    EXPECT_TRUE(model->isEmpty());
    EXPECT_EQ(selected(), text("none"));
}

TEST_F(EmojiPickerModelTest, aQueryOfBlanksIsNoQuery) {
    model->setQuery(text(" \n"));
    EXPECT_FALSE(model->hasQuery());
    EXPECT_EQ(titles().first(), text("Pinned"));
}

TEST_F(EmojiPickerModelTest, aQueryIsSearchedInTheCategory) {
    model->setSelectedCategory(EmojiCategory::objects);
    model->setQuery(text("face"));
    EXPECT_TRUE(model->isEmpty());
}

TEST_F(EmojiPickerModelTest, withoutATableItIsEmpty) {
    QFile::remove(tablePath());
    start();
    EXPECT_TRUE(model->isEmpty());
    EXPECT_THAT(model->sections(), IsEmpty());
    EXPECT_EQ(selected(), text("none"));
}

TEST_F(EmojiPickerModelTest, beginsOnTheFirstItem) {
    EXPECT_EQ(selected(), text("👍"));
}

TEST_F(EmojiPickerModelTest, aChangeOfTheQuerySelectsTheFirstItem) {
    model->setSelectedID(text("o5"));
    model->setQuery(text("object"));
    EXPECT_EQ(selected(), text("o1")) << "the recents come first, by name";
}

TEST_F(EmojiPickerModelTest, aChangeOfTheCategorySelectsTheFirstItem) {
    model->setSelectedID(text("o5"));
    model->setSelectedCategory(EmojiCategory::objects);
    EXPECT_EQ(selected(), text("o0"));
}

TEST_F(EmojiPickerModelTest, theSameQueryAgainKeepsTheSelection) {
    model->setSelectedID(text("o5"));
    model->setQuery(QString());
    model->setSelectedCategory(EmojiCategory::all);
    EXPECT_EQ(selected(), text("o5"));
}

TEST_F(EmojiPickerModelTest, aChangeOfThePinsKeepsASelectionThatIsStillShown) {
    model->setSelectedID(text("o5"));
    store->togglePin(*store->item(text("o5")));
    EXPECT_EQ(selected(), text("o5"));
    EXPECT_EQ(shown()[0].second, (QStringList{text("👍"), text("o5")}));
}

TEST_F(EmojiPickerModelTest, aChangeOfTheRecentsReplacesASelectionThatIsShownNoMore) {
    model->setSelectedID(text("gone"));
    store->recordRecent(*store->item(text("o5")));
    EXPECT_EQ(selected(), text("👍"));
}

TEST_F(EmojiPickerModelTest, openingBeginsAnew) {
    model->setSelectedCategory(EmojiCategory::objects);
    model->setQuery(text("object"));
    open();
    EXPECT_EQ(model->query(), QString());
    EXPECT_EQ(model->selectedCategory(), EmojiCategory::all);
    EXPECT_EQ(selected(), text("👍"));
}

TEST_F(EmojiPickerModelTest, openingFocusesTheSearchFieldInTheNextTurn) {
    open();
    EXPECT_EQ(focusWishes, 0);
    time.runPending();
    EXPECT_EQ(focusWishes, 1);
}

TEST_F(EmojiPickerModelTest, aPickerThatIsGoneHearsOfNoOpening) {
    open();
    model.reset();
    time.runPending();
    open();
    EXPECT_EQ(focusWishes, 0);
}

TEST_F(EmojiPickerModelTest, sectionsAreMadeOncePerChangeAndNotPerLook) {
    int made = 0;
    QObject::connect(model.get(), &EmojiPickerModel::sectionsChanged, [&made] { ++made; });
    model->setQuery(text("object"));
    EXPECT_EQ(made, 1);
    press(virtualKey::down);
    static_cast<void>(model->sections());
    EXPECT_EQ(made, 1);
}

TEST_F(EmojiPickerModelTest, everyKeyOfTheTableHasItsActionAndNoOtherDoes) {
    using enum EmojiPickerKeyAction;
    const std::map<std::pair<bool, int>, EmojiPickerKeyAction> expected{
        {{true, 35}, togglePin},     {{true, 123}, previousCategory},
        {{true, 124}, nextCategory}, {{false, 36}, copy},
        {{false, 76}, copy},         {{false, 53}, dismiss},
        {{false, 123}, moveLeft},    {{false, 124}, moveRight},
        {{false, 125}, moveDown},    {{false, 126}, moveUp}};
    for (const bool isCommandHeld : {true, false}) {
        for (int code = -1; code <= 256; ++code) {
            const auto found = expected.find({isCommandHeld, code});
            EXPECT_EQ(EmojiPickerModel::keyAction(code, isCommandHeld),
                      found == expected.end() ? std::nullopt : std::optional(found->second))
                << isCommandHeld << " " << code;
        }
    }
}

TEST_F(EmojiPickerModelTest, keysMoveTheSelection) {
    model->setSelectedCategory(EmojiCategory::objects);
    EXPECT_TRUE(press(virtualKey::right));
    EXPECT_EQ(selected(), text("o1"));
    EXPECT_TRUE(press(virtualKey::down));
    EXPECT_EQ(selected(), text("o9"));
    EXPECT_TRUE(press(virtualKey::up));
    EXPECT_EQ(selected(), text("o1"));
    EXPECT_TRUE(press(virtualKey::left));
    EXPECT_EQ(selected(), text("o0"));
}

TEST_F(EmojiPickerModelTest, commandArrowsMoveTheCategoryRoundBothEnds) {
    EXPECT_TRUE(press(virtualKey::left, true));
    EXPECT_EQ(model->selectedCategory(), EmojiCategory::flags);
    EXPECT_TRUE(press(virtualKey::right, true));
    EXPECT_EQ(model->selectedCategory(), EmojiCategory::all);
}

TEST_F(EmojiPickerModelTest, escapeDismisses) {
    EXPECT_TRUE(press(virtualKey::escape));
    EXPECT_EQ(dismissals, 1);
}

TEST_F(EmojiPickerModelTest, theWindowIsKnownByItsTitleInThePersonsLanguageToo) {
    setTranslation([](const QString &words) { return words == text("Emoji Picker") ? text("Emoji-Auswahl") : words; });
    EXPECT_TRUE(model->handleKeyDown(text("Emoji-Auswahl"), virtualKey::escape, false));
    EXPECT_FALSE(model->handleKeyDown(text("Emoji Picker"), virtualKey::escape, false));
    EXPECT_EQ(dismissals, 1);
    setTranslation(nullptr);
}

TEST_F(EmojiPickerModelTest, keysOfAnotherWindowPassThrough) {
    for (const char *title : {"", "Emoji Picker ", "emoji picker", "Clipboard Search"}) {
        EXPECT_FALSE(model->handleKeyDown(text(title), virtualKey::enter, false)) << title;
        EXPECT_FALSE(model->handleKeyDown(text(title), virtualKey::p, true)) << title;
    }
    EXPECT_THAT(copied, IsEmpty());
    EXPECT_EQ(store->pinnedEmojis().size(), 2);
}

TEST_F(EmojiPickerModelTest, otherKeysGoToTheSearchField) {
    EXPECT_FALSE(press(virtualKey::a));
    EXPECT_FALSE(press(virtualKey::p));
    EXPECT_FALSE(press(virtualKey::down, true));
    EXPECT_FALSE(press(virtualKey::enter, true));
}

TEST_F(EmojiPickerModelTest, returnUsesTheSelectedEmoji) {
    model->setSelectedID(text("o7"));
    EXPECT_TRUE(press(virtualKey::enter));
    EXPECT_EQ(copied, QStringList{text("o7")});
    EXPECT_EQ(store->recentEmojis().first(), text("o7"));
}

TEST_F(EmojiPickerModelTest, theUseIsRecordedBeforeTheCopy) {
    QString firstRecent;
    model->setOnCopy([&](const EmojiItem &) { firstRecent = store->recentEmojis().first(); });
    model->choose(text("o7"));
    EXPECT_EQ(firstRecent, text("o7"));
}

TEST_F(EmojiPickerModelTest, choosingAPinnedEmojiLeavesThePins) {
    press(virtualKey::enter);
    EXPECT_EQ(copied, QStringList{text("👍")});
    EXPECT_EQ(store->pinnedEmojis(), (QStringList{text("👍"), text("unknown")}));
    EXPECT_EQ(store->recentEmojis().first(), text("👍"));
}

TEST_F(EmojiPickerModelTest, anEmojiThatTheTableLacksIsNotUsed) {
    model->choose(text("unknown"));
    model->setSelectedID(std::nullopt);
    EXPECT_TRUE(press(virtualKey::enter)) << "swallowed all the same";
    EXPECT_THAT(copied, IsEmpty());
}

TEST_F(EmojiPickerModelTest, commandPTogglesThePinAndNothingElse) {
    model->setSelectedID(text("o7"));
    EXPECT_TRUE(press(virtualKey::p, true));
    EXPECT_EQ(store->pinnedEmojis(), (QStringList{text("👍"), text("unknown"), text("o7")}));
    EXPECT_TRUE(press(virtualKey::p, true));
    EXPECT_EQ(store->pinnedEmojis(), (QStringList{text("👍"), text("unknown")}));
    EXPECT_EQ(selected(), text("o7"));
    EXPECT_EQ(store->recentEmojis().first(), text("o2"));
    EXPECT_THAT(copied, IsEmpty());
}

} // namespace
} // namespace tavrine
