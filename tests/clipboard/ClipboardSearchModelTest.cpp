#include "ClipboardSearchModelTest.h"

#include "DatabaseFixture.h"

namespace tavrine {
namespace {

// Categories, sections and the visible list.

TEST_F(ClipboardSearchModelTest, allListsNoSavedItemsWithoutAQuery) {
    startWithEachKind();
    EXPECT_THAT(sections(), ElementsAre(under("Pinned Snippets", {str("pinned text")}),
                                        under("Recent Clipboard",
                                              {str("plain text"), str("https://example.com"), str("Copied Image")})));
}

TEST_F(ClipboardSearchModelTest, aQueryBringsTheSavedItemsInAsTheFirstSection) {
    startWithEachKind();
    model->setQuery(str("text"));
    EXPECT_THAT(sections(), ElementsAre(under("My Saved", {str("both text"), str("saved text")}),
                                        under("Pinned Snippets", {str("pinned text")}),
                                        under("Recent Clipboard", {str("plain text")})));
}

TEST_F(ClipboardSearchModelTest, mySavedListsTheSavedItemsAloneAlsoThePinnedOnes) {
    startWithEachKind();
    model->setSelectedCategory(Category::mySave);
    EXPECT_THAT(sections(), ElementsAre(under("My Saved", {str("both text"), str("saved text")})));
}

TEST_F(ClipboardSearchModelTest, textListsWhatHasNoFileAndIsNoLink) {
    startWithEachKind();
    model->setSelectedCategory(Category::text);
    EXPECT_EQ(visible(), (QStringList{str("pinned text"), str("plain text")}));
}

TEST_F(ClipboardSearchModelTest, imagesListsEveryFileAlsoRecordings) {
    save(str("Screen Recording"), 9s, str("r.mp4"));
    startWithEachKind();
    model->setSelectedCategory(Category::images);
    EXPECT_EQ(visible(), (QStringList{str("Copied Image"), str("Screen Recording")}));
}

TEST_F(ClipboardSearchModelTest, linksListsLinks) {
    startWithEachKind();
    model->setSelectedCategory(Category::links);
    EXPECT_EQ(visible(), QStringList{str("https://example.com")});
}

TEST_F(ClipboardSearchModelTest, snippetsListsPinnedItemsThatAreNotSaved) {
    startWithEachKind();
    model->setSelectedCategory(Category::snippets);
    EXPECT_EQ(visible(), QStringList{str("pinned text")});
}

TEST_F(ClipboardSearchModelTest, noCategoryButAllAndMySavedListsASavedItemWhateverTheQuery) {
    startWithEachKind();
    model->setQuery(str("text"));
    for (const Category category : {Category::text, Category::images, Category::links, Category::snippets}) {
        model->setSelectedCategory(category);
        EXPECT_FALSE(visible().contains(str("saved text")) || visible().contains(str("both text")));
    }
}

TEST_F(ClipboardSearchModelTest, anAddressWithABlankInItIsText) {
    save(str("https://example.com/a b"));
    startPanel();
    model->setSelectedCategory(Category::links);
    EXPECT_THAT(visible(), IsEmpty());
    model->setSelectedCategory(Category::text);
    EXPECT_EQ(visible(), QStringList{str("https://example.com/a b")});
}

TEST_F(ClipboardSearchModelTest, aQueryOfBlanksCountsAsNoneButIsSearchedAsItStands) {
    startWithEachKind();
    model->setQuery(str(" "));
    EXPECT_FALSE(model->hasQuery());
    EXPECT_EQ(visible(), (QStringList{str("pinned text"), str("plain text"), str("Copied Image")}))
        << "items with a blank, without the saved ones";
    model->setQuery(str("  "));
    EXPECT_THAT(visible(), IsEmpty());
}

TEST_F(ClipboardSearchModelTest, blanksAroundAQueryCount) {
    startWithEachKind();
    model->setQuery(str("plain "));
    EXPECT_EQ(visible(), QStringList{str("plain text")});
    model->setQuery(str("text "));
    EXPECT_THAT(visible(), IsEmpty());
}

TEST_F(ClipboardSearchModelTest, anImageIsFoundByItsCaption) {
    startWithEachKind();
    model->setQuery(str("copied"));
    EXPECT_EQ(visible(), QStringList{str("Copied Image")});
}

TEST_F(ClipboardSearchModelTest, aQueryFindsRowsOlderThanTheHistoryInMemory) {
    save(str("needle"), 1000s);
    for (int i = 0; i < 200; ++i)
        save(QString::number(i), Seconds(i));
    startPanel();
    EXPECT_FALSE(visible().contains(str("needle")));
    model->setQuery(str("NEEDLE"));
    EXPECT_EQ(visible(), QStringList{str("needle")});
}

TEST_F(ClipboardSearchModelTest, aQueryOfBlanksFindsRowsOlderThanTheHistoryInMemory) {
    save(str("old row"), 1000s);
    for (int i = 0; i < 200; ++i)
        save(QString::number(i), Seconds(i));
    startPanel();
    EXPECT_FALSE(visible().contains(str("old row")));
    model->setQuery(str(" "));
    EXPECT_EQ(visible(), QStringList{str("old row")});
    EXPECT_FALSE(model->hasQuery());
}

TEST_F(ClipboardSearchModelTest, aQueryFindsAtMostFiveHundredRows) {
    for (int i = 0; i < 501; ++i)
        save(str("row %1").arg(i), Seconds(i));
    startPanel();
    model->setQuery(str("row"));
    EXPECT_EQ(visible().size(), 500);
    EXPECT_EQ(visible().first(), str("row 0"));
    EXPECT_FALSE(visible().contains(str("row 500")));
}

TEST_F(ClipboardSearchModelTest, signsOfPatternsAndQuotesMeanThemselves) {
    const QStringList texts{str("100% sure"),
                            str("snake_case"),
                            str("back\\slash"),
                            str("it's \"quoted\""),
                            str("'; DROP TABLE items;--"),
                            str("a plain text")};
    for (const QString &text : texts)
        save(text);
    startPanel();
    const std::pair<const char *, int> queries[] = {{"%", 0},  {"_", 1},    {"\\", 2},
                                                    {"\"", 3}, {"it's", 3}, {"'; DROP", 4}};
    for (const auto &[query, found] : queries) {
        model->setQuery(str(query));
        EXPECT_EQ(visible(), QStringList{texts.at(found)}) << query;
    }
    for (const char *query : {"%%", "__", "\\\\", "%_", "100_", "sn%se",
                              "\""
                              "'"}) {
        model->setQuery(str(query));
        EXPECT_EQ(visible(), QStringList()) << query;
    }
    model->setQuery(str("'"));
    EXPECT_EQ(visible().size(), 2);
    EXPECT_EQ(rows().size(), 6U);
}

TEST_F(ClipboardSearchModelTest, twoHundredProtectedRowsAreAllShownAndReached) {
    for (int i = 0; i < 200; ++i)
        savePinned(str("pinned %1").arg(i), Seconds(i));
    save(str("ordinary"));
    startPanel();
    ASSERT_EQ(visible().size(), 201);
    for (int i = 0; i < 250; ++i)
        press(virtualKey::down);
    EXPECT_EQ(selected(), str("ordinary"));
    for (int i = 0; i < 250; ++i)
        press(virtualKey::up);
    EXPECT_EQ(selected(), visible().first());
}

TEST_F(ClipboardSearchModelTest, anEmptyListTellsWhy) {
    startPanel();
    EXPECT_THAT(model->sections(), IsEmpty());
    EXPECT_EQ(model->emptyState().text, str("Your clipboard is empty"));
    EXPECT_EQ(model->emptyState().symbol, str("clipboard"));
    model->setQuery(str(" "));
    EXPECT_EQ(model->emptyState().text, str("No clipboard items found"));
    EXPECT_EQ(model->emptyState().symbol, str("magnifyingglass"));
}

TEST_F(ClipboardSearchModelTest, aSearchThatFailsShowsTheEmptyList) {
    save(str("apple"));
    startPanel();
    ASSERT_EQ(visible(), QStringList{str("apple")});
    ASSERT_TRUE(Outside(folders.applicationSupport + str("/Tavrine/clipboard.db"))
                    .run("ALTER TABLE items RENAME TO nothing_of_ours"));
    model->setQuery(str("app"));
    EXPECT_FALSE(model->isSearching());
    EXPECT_EQ(visible(), QStringList());
    EXPECT_EQ(selected(), str("(none)"));
    EXPECT_EQ(model->emptyState().text, str("No clipboard items found"));
    EXPECT_EQ(model->emptyState().symbol, str("magnifyingglass"));
}

TEST_F(ClipboardSearchModelTest, theVisibleListIsMadeOncePerChange) {
    startWithEachKind();
    int made = 0;
    QObject::connect(model.get(), &ClipboardSearchModel::visibleItemsChanged, [&made] { ++made; });
    model->setQuery(str("t"));
    EXPECT_EQ(made, 1);
    model->setSelectedCategory(Category::text);
    EXPECT_EQ(made, 2);
    press(virtualKey::down);
    EXPECT_EQ(made, 2);
}

TEST(ClipboardSearchCategoryTable, standsInTheOrderOfTheStrip) {
    QStringList texts;
    for (const auto &entry : clipboardSearchCategories)
        texts.append(rawValue(entry.category));
    EXPECT_EQ(texts,
              (QStringList{str("All"), str("My Saved"), str("Text"), str("Images"), str("Links"), str("Snippets")}));
}

TEST(ClipboardSearchCategoryTable, movesRoundBothEnds) {
    EXPECT_EQ(movedCategory(Category::all, -1), Category::snippets);
    EXPECT_EQ(movedCategory(Category::snippets, +1), Category::all);
    EXPECT_EQ(movedCategory(Category::text, +1), Category::images);
    EXPECT_EQ(movedCategory(Category::text, -1), Category::mySave);
}

// Selection.

TEST_F(ClipboardSearchModelTest, theFirstVisibleItemIsSelected) {
    startWithEachKind();
    EXPECT_EQ(selected(), str("pinned text"));
    model->setQuery(str("text"));
    EXPECT_EQ(selected(), str("both text"));
    model->setSelectedCategory(Category::links);
    EXPECT_EQ(selected(), str("(none)"));
}

TEST_F(ClipboardSearchModelTest, downAndUpStopAtTheEnds) {
    startWithEachKind();
    EXPECT_EQ(selected(), str("pinned text"));
    press(virtualKey::up);
    EXPECT_EQ(selected(), str("pinned text"));
    for (const char *next : {"plain text", "https://example.com", "Copied Image", "Copied Image"}) {
        press(virtualKey::down);
        EXPECT_EQ(selected(), str(next));
    }
    press(virtualKey::up);
    EXPECT_EQ(selected(), str("https://example.com"));
}

TEST_F(ClipboardSearchModelTest, movingInAnEmptyListDoesNothing) {
    startPanel();
    press(virtualKey::down);
    EXPECT_EQ(selected(), str("(none)"));
}

TEST_F(ClipboardSearchModelTest, aNewCopyKeepsTheSelection) {
    startWithEachKind();
    select(str("https://example.com"));
    copy(str("newest"));
    EXPECT_EQ(selected(), str("https://example.com"));
    EXPECT_EQ(visible().at(1), str("newest"));
}

TEST_F(ClipboardSearchModelTest, aSelectionThatIsGoneIsReset) {
    startWithEachKind();
    select(str("Copied Image"));
    database.remove(idOf(str("Copied Image")));
    manager->reloadHistory();
    EXPECT_EQ(selected(), str("pinned text"));
}

TEST_F(ClipboardSearchModelTest, aNewCopyIsSearchedForWithTheQueryThatStands) {
    startWithEachKind();
    model->setQuery(str("text"));
    copy(str("another text"));
    EXPECT_TRUE(visible().contains(str("another text")));
    copy(str("other"));
    EXPECT_FALSE(visible().contains(str("other")));
}

TEST_F(ClipboardSearchModelTest, aChangeOfTheQueryResetsTheSelection) {
    startWithEachKind();
    select(str("plain text"));
    model->setQuery(str("text"));
    EXPECT_EQ(selected(), str("both text"));
    select(str("plain text"));
    model->setQuery(str("text"));
    EXPECT_EQ(selected(), str("plain text")) << "the same query is no change";
}

// Opening.

TEST_F(ClipboardSearchModelTest, openingBeginsAnew) {
    startWithEachKind();
    model->setQuery(str("example"));
    model->setSelectedCategory(Category::links);
    openPanel();
    EXPECT_EQ(model->query(), QString());
    EXPECT_EQ(model->selectedCategory(), Category::all);
    EXPECT_EQ(selected(), str("pinned text"));
    EXPECT_EQ(visible().size(), 4);
}

TEST_F(ClipboardSearchModelTest, openingSelectsTheFirstItemAgain) {
    startWithEachKind();
    press(virtualKey::down);
    openPanel();
    EXPECT_EQ(selected(), str("pinned text"));
}

TEST_F(ClipboardSearchModelTest, openingFocusesTheSearchFieldInTheNextTurn) {
    startPanel();
    openPanel();
    EXPECT_EQ(focusWishes, 0);
    time.runPending();
    EXPECT_EQ(focusWishes, 1);
}

TEST_F(ClipboardSearchModelTest, aPanelThatIsGoneHearsOfNothing) {
    startPanel();
    openPanel();
    model.reset();
    time.runPending();
    openPanel();
    copy(str("x"));
    EXPECT_EQ(focusWishes, 0);
}

// Rows.

TEST_F(ClipboardSearchModelTest, aRowReadsAsItsItem) {
    startWithEachKind();
    EXPECT_EQ(model->row(*stored(str("https://example.com"))).icon, str("link"));
    EXPECT_EQ(model->row(*stored(str("plain text"))).icon, str("doc.text"));
    EXPECT_EQ(model->row(*stored(str("pinned text"))).subtitle, str("Pinned snippet"));
}

// Searches that take longer than a key may.

class SlowSearch : public ClipboardSearchModelTest {
protected:
    SlowSearch() { searchPatience = -1ms; }
    /// Until the database has an answer and the main queue has brought it.
    void arrive() {
        constexpr int mostTries = 10'000; // a search may step back for the very operation that waits for it
        for (int i = 0; i < mostTries && model->isSearching(); ++i) {
            (void)database.counts(); // behind it on the queue
            time.advance(0s);
        }
    }
};

TEST_F(SlowSearch, theListStaysUntilTheAnswerComes) {
    save(str("apple"), 1s);
    save(str("pear"), 2s);
    startPanel();
    model->setQuery(str("pe"));
    EXPECT_EQ(model->query(), str("pe"));
    EXPECT_EQ(visible(), (QStringList{str("apple"), str("pear")}));
    arrive();
    EXPECT_EQ(visible(), QStringList{str("pear")});
    EXPECT_EQ(selected(), str("pear"));
}

TEST_F(SlowSearch, anAnswerToAnOlderQueryIsDropped) {
    save(str("apple"), 1s);
    save(str("pear"), 2s);
    startPanel();
    model->setQuery(str("app"));
    (void)database.counts(); // likely behind its end
    model->setQuery(str("pear"));
    time.advance(0s); // brings the notice of the first
    EXPECT_NE(visible(), QStringList{str("apple")});
    arrive();
    EXPECT_EQ(visible(), QStringList{str("pear")});
}

TEST_F(SlowSearch, keysForTheListWaitForItInTheirOrder) {
    save(str("a plum"), 1s);
    save(str("a pear"), 2s);
    save(str("a peach"), 3s);
    startPanel();
    model->setQuery(str("pe"));
    press(virtualKey::down);
    press(virtualKey::enter);
    EXPECT_TRUE(pasted.isEmpty());
    arrive();
    EXPECT_EQ(pasted, QStringList{str("a peach")});
}

TEST_F(SlowSearch, aLongTextOfAnOlderAnswerIsShownOnlyWhereItsBeginningMatches) {
    const QString filling(5000, QLatin1Char('x'));
    save(str("pear ") + filling, 1s);
    save(str("apple ") + filling, 2s);
    save(str("plum ") + filling + str(" pear"), 3s);
    startPanel();
    model->setQuery(str("pear"));
    model->setSelectedCategory(Category::text); // its list is made while the answer is awaited
    const auto beginnings = [&] {
        QStringList words;
        for (const QString &content : visible())
            words.append(content.left(content.indexOf(u' ')));
        return words;
    };
    EXPECT_EQ(beginnings(), QStringList{str("pear")});
    arrive();
    EXPECT_EQ(beginnings(), (QStringList{str("pear"), str("plum")}));
}

TEST_F(SlowSearch, escapeWaitsForNothing) {
    save(str("pear"), 1s);
    startPanel();
    model->setQuery(str("pe"));
    press(virtualKey::escape);
    EXPECT_EQ(dismissals, 1);
}

TEST_F(SlowSearch, anOpeningForgetsWhatWasUnderWay) {
    save(str("pear"), 1s);
    startPanel();
    model->setQuery(str("x"));
    press(virtualKey::enter);
    openPanel();
    arrive();
    EXPECT_EQ(visible(), QStringList{str("pear")});
    EXPECT_TRUE(pasted.isEmpty());
}

TEST_F(SlowSearch, aChangeOfTheHistoryMeanwhileStillEndsWithTheFirstItemSelected) {
    save(str("pear"), 1s);
    save(str("pearl"), 2s);
    startPanel();
    press(virtualKey::down);
    model->setQuery(str("pea"));
    manager->reloadHistory();
    arrive();
    EXPECT_EQ(selected(), str("pear"));
}

} // namespace
} // namespace tavrine
