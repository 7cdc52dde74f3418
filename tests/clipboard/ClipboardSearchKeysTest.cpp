// What keys and buttons do in the search panel.
#include "ClipboardSearchModelTest.h"
#include "base/DesktopWords.h"

namespace tavrine {
namespace {

// Keys.

TEST_F(ClipboardSearchModelTest, everyKeyOfTheTableHasItsActionAndNoOtherDoes) {
    using Action = ClipboardSearchKeyAction;
    const std::map<std::pair<bool, int>, Action> expected{
        {{true, 51}, Action::deleteItem},     {{true, 35}, Action::togglePin},
        {{false, 36}, Action::paste},         {{false, 76}, Action::paste},
        {{false, 53}, Action::dismiss},       {{false, 123}, Action::previousCategory},
        {{false, 124}, Action::nextCategory}, {{false, 125}, Action::moveDown},
        {{false, 126}, Action::moveUp}};
    for (const bool isCommandHeld : {true, false}) {
        for (int code = -1; code <= 256; ++code) {
            const auto found = expected.find({isCommandHeld, code});
            EXPECT_EQ(ClipboardSearchModel::keyAction(code, isCommandHeld),
                      found == expected.end() ? std::nullopt : std::optional(found->second))
                << isCommandHeld << " " << code;
        }
    }
}

TEST_F(ClipboardSearchModelTest, leftAndRightMoveTheCategoryRoundBothEnds) {
    startWithEachKind();
    EXPECT_TRUE(press(virtualKey::left));
    EXPECT_EQ(model->selectedCategory(), Category::snippets);
    EXPECT_TRUE(press(virtualKey::right));
    EXPECT_EQ(model->selectedCategory(), Category::all);
    EXPECT_TRUE(press(virtualKey::right));
    EXPECT_EQ(model->selectedCategory(), Category::mySave);
}

TEST_F(ClipboardSearchModelTest, escapeDismisses) {
    startPanel();
    EXPECT_TRUE(press(virtualKey::escape));
    EXPECT_EQ(dismissals, 1);
}

TEST_F(ClipboardSearchModelTest, theWindowIsKnownByItsTitleInThePersonsLanguageToo) {
    startWithEachKind();
    setTranslation([](const QString &words) { return words == str("Clipboard Search") ? str("Suche") : words; });
    EXPECT_TRUE(model->handleKeyDown(str("Suche"), virtualKey::right, false));
    EXPECT_EQ(model->selectedCategory(), Category::mySave);
    setTranslation(nullptr);
}

TEST_F(ClipboardSearchModelTest, keysOfAnotherWindowPassThroughUntouched) {
    startWithEachKind();
    for (const char *title : {"", "clipboard search", "Clipboard Search ", "Emoji Picker"}) {
        for (const int key : {virtualKey::down, virtualKey::right, virtualKey::enter, virtualKey::escape})
            EXPECT_FALSE(model->handleKeyDown(str(title), key, false)) << title;
        EXPECT_FALSE(model->handleKeyDown(str(title), virtualKey::backspace, true)) << title;
    }
    EXPECT_EQ(selected(), str("pinned text"));
    EXPECT_EQ(model->selectedCategory(), Category::all);
    EXPECT_THAT(pasted, IsEmpty());
    EXPECT_EQ(rows().size(), 6U);
}

TEST_F(ClipboardSearchModelTest, otherKeysGoToTheSearchField) {
    startWithEachKind();
    EXPECT_FALSE(press(virtualKey::a));
    EXPECT_FALSE(press(virtualKey::backspace));
    EXPECT_FALSE(press(virtualKey::left, true));
    EXPECT_FALSE(press(virtualKey::enter, true));
}

// Actions.

TEST_F(ClipboardSearchModelTest, returnPastesTheSelectedItem) {
    startWithEachKind();
    press(virtualKey::down);
    EXPECT_TRUE(press(virtualKey::enter));
    EXPECT_EQ(pasted, QStringList{str("plain text")});
}

TEST_F(ClipboardSearchModelTest, returnInAnEmptyListIsSwallowedAndDoesNothing) {
    startPanel();
    EXPECT_TRUE(press(virtualKey::enter));
    EXPECT_TRUE(press(virtualKey::backspace, true));
    EXPECT_TRUE(press(virtualKey::p, true));
    EXPECT_THAT(pasted, IsEmpty());
}

TEST_F(ClipboardSearchModelTest, aClickPastesItsRow) {
    startWithEachKind();
    model->use(idOf(str("Copied Image")));
    EXPECT_EQ(pasted, QStringList{str("Copied Image")});
}

TEST_F(ClipboardSearchModelTest, anItemThatIsNotVisibleIsIgnored) {
    startWithEachKind();
    const QUuid saved = idOf(str("saved text"));
    model->use(saved);
    model->togglePin(saved);
    model->toggleSaved(saved);
    model->deleteItem(saved);
    model->deleteItem(QUuid::createUuid());
    EXPECT_THAT(pasted, IsEmpty());
    EXPECT_EQ(rows().size(), 6U);
    EXPECT_TRUE(stored(str("saved text"))->isSaved);
    EXPECT_EQ(selected(), str("pinned text"));
}

TEST_F(ClipboardSearchModelTest, commandPPinsTheSelectedItemAndKeepsItsDate) {
    startWithEachKind();
    select(str("plain text"));
    const Date before = stored(str("plain text"))->date;
    EXPECT_TRUE(press(virtualKey::p, true));
    EXPECT_TRUE(stored(str("plain text"))->isPinned);
    EXPECT_EQ(stored(str("plain text"))->date, before);
    EXPECT_EQ(selected(), str("plain text"));
    EXPECT_THAT(sections().front(), under("Pinned Snippets", {str("plain text"), str("pinned text")}));
}

TEST_F(ClipboardSearchModelTest, commandPOnASnippetTakesItOutOfSnippetsAtOnce) {
    startWithEachKind();
    model->setSelectedCategory(Category::snippets);
    press(virtualKey::p, true);
    EXPECT_THAT(visible(), IsEmpty());
    EXPECT_FALSE(stored(str("pinned text"))->isPinned);
    EXPECT_EQ(selected(), str("(none)"));
}

TEST_F(ClipboardSearchModelTest, commandDeleteRemovesTheSelectedItemAndSelectsTheFirst) {
    startWithEachKind();
    select(str("https://example.com"));
    EXPECT_TRUE(press(virtualKey::backspace, true));
    EXPECT_FALSE(stored(str("https://example.com")));
    EXPECT_EQ(selected(), str("pinned text"));
}

TEST_F(ClipboardSearchModelTest, aProtectedItemCanBeDeleted) {
    startWithEachKind();
    press(virtualKey::backspace, true);
    EXPECT_FALSE(stored(str("pinned text")));
    EXPECT_EQ(selected(), str("plain text"));
}

TEST_F(ClipboardSearchModelTest, deletingAnImageRemovesItsFileAndItsThumbnail) {
    start();
    const auto name = manager->saveImage(picture(8, 8));
    ASSERT_TRUE(name);
    save(str("Copied Image"), 0s, *name);
    startPanel();
    manager->cacheThumbnail(picture(8, 8), *name);
    press(virtualKey::backspace, true);
    EXPECT_THAT(storedImages(), IsEmpty());
    EXPECT_EQ(manager->thumbnailCache().object(*name), std::nullopt);
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(ClipboardSearchModelTest, deletingOneOfSeveralFoundRowsSearchesAnew) {
    startWithEachKind();
    model->setQuery(str("text"));
    press(virtualKey::backspace, true);
    EXPECT_EQ(visible(), (QStringList{str("saved text"), str("pinned text"), str("plain text")}));
    EXPECT_EQ(selected(), str("saved text"));
}

TEST_F(ClipboardSearchModelTest, theButtonsOfARowSelectItFirst) {
    startWithEachKind();
    model->togglePin(idOf(str("plain text")));
    EXPECT_EQ(selected(), str("plain text"));
    EXPECT_TRUE(stored(str("plain text"))->isPinned);
    model->togglePin(idOf(str("pinned text")));
    EXPECT_EQ(selected(), str("pinned text"));
    EXPECT_FALSE(stored(str("pinned text"))->isPinned);
}

TEST_F(ClipboardSearchModelTest, theSavedButtonMovesTheItemToMySavedAndBack) {
    startWithEachKind();
    model->toggleSaved(idOf(str("plain text")));
    EXPECT_TRUE(stored(str("plain text"))->isSaved);
    EXPECT_EQ(selected(), str("pinned text")) << "it is not visible any more";
    model->setSelectedCategory(Category::mySave);
    model->toggleSaved(idOf(str("plain text")));
    EXPECT_FALSE(stored(str("plain text"))->isSaved);
}

TEST_F(ClipboardSearchModelTest, theDeleteButtonRemovesItsRow) {
    startWithEachKind();
    model->deleteItem(idOf(str("Copied Image")));
    EXPECT_FALSE(stored(str("Copied Image")));
    EXPECT_EQ(selected(), str("pinned text"));
}

// Adding to My Saved.

TEST_F(ClipboardSearchModelTest, theAddButtonStandsInMySavedAlone) {
    startPanel();
    for (const auto &entry : clipboardSearchCategories) {
        model->setSelectedCategory(entry.category);
        EXPECT_EQ(model->showsAddButton(), entry.category == Category::mySave);
    }
}

TEST_F(ClipboardSearchModelTest, addingAsksForATextAndKeepsIt) {
    startWithEachKind();
    model->setQuery(str("text"));
    alerts.answerNextWithFirstButton(str("my own text"));
    model->addToMySaved();
    EXPECT_EQ(alerts.shown(), (QList<Alert>{{str("Add to My Saved"),
                                             str("Create a custom clipboard item you use often."),
                                             {str("Save"), str("Cancel")}}}));
    EXPECT_EQ(alerts.textAreaSize(), QSize(360, 120));
    EXPECT_TRUE(stored(str("my own text"))->isSaved);
    EXPECT_EQ(model->selectedCategory(), Category::mySave);
    EXPECT_EQ(model->query(), str("text"));
    EXPECT_EQ(visible(), (QStringList{str("both text"), str("my own text"), str("saved text")}));
    EXPECT_EQ(selected(), str("both text"));
}

TEST_F(ClipboardSearchModelTest, aCancelledAddingChangesNothing) {
    startWithEachKind();
    model->addToMySaved();
    EXPECT_EQ(rows().size(), 6U);
    EXPECT_EQ(model->selectedCategory(), Category::all);
}

TEST_F(ClipboardSearchModelTest, savingABlankTextKeepsNothing) {
    startWithEachKind();
    alerts.answerNextWithFirstButton(str(" \n"));
    model->addToMySaved();
    EXPECT_EQ(rows().size(), 6U);
    EXPECT_EQ(model->selectedCategory(), Category::mySave);
}

} // namespace
} // namespace tavrine
