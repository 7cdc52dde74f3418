#include "clipboard/ClassicPanelModel.h"

#include "ManagerTest.h"
#include "base/DesktopWords.h"
#include "base/VirtualKeys.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::IsEmpty;

class ClassicPanelModelTest : public ManagerTest {
protected:
    void startWithHistory() {
        save(str("first"), 1s);
        save(str("second"), 2s);
        save(str("third"), 3s);
        startPanel();
    }
    void startPanel() {
        start();
        model = std::make_unique<ClassicPanelModel>(*manager, center, [this] { ++orderOuts; });
        model->setOnPaste([this](const ClipboardItem &item) { pasted.append(item.content); });
    }
    void openPanel() { center.post(str("floatingPanelOpened")); }
    bool press(int keyCode) { return model->handleKeyDown(str("Classic Clipboard"), keyCode); }

    [[nodiscard]] QStringList shown() const { return contents(model->visibleItems()); }
    [[nodiscard]] QString selected() {
        for (const ClipboardItem &item : rows()) {
            if (item.id == model->selectedID())
                return item.content;
        }
        return str("(none)");
    }
    [[nodiscard]] ClipboardItem stored(const QString &content) {
        for (const ClipboardItem &item : rows()) {
            if (item.content == content)
                return item;
        }
        return {};
    }

    std::unique_ptr<ClassicPanelModel> model;
    QStringList pasted;
    int orderOuts = 0;
};

TEST_F(ClassicPanelModelTest, showsTheHistoryAsItStands) {
    savePinned(str("pinned"), 9s);
    saveInMySaved(str("saved"), 10s);
    startWithHistory();
    EXPECT_EQ(shown(), (QStringList{str("saved"), str("pinned"), str("first"), str("second"), str("third")}));
}

TEST_F(ClassicPanelModelTest, aSearchTextFiltersTheHistoryWhateverTheCase) {
    save(str("ÄPFEL"), 4s);
    startWithHistory();
    model->setSearchText(str("IR"));
    EXPECT_EQ(shown(), (QStringList{str("first"), str("third")}));
    model->setSearchText(str("äpfel"));
    EXPECT_EQ(shown(), QStringList{str("ÄPFEL")});
}

TEST_F(ClassicPanelModelTest, aTextOlderThanTheNewestTwoHundredIsNotFound) {
    save(str("needle"), 1000s);
    for (int i = 0; i < 199; ++i)
        save(QString::number(i), Seconds(i));
    startPanel();
    model->setSearchText(str("needle"));
    EXPECT_EQ(shown(), QStringList{str("needle")});
    copy(str("one more"));
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(ClassicPanelModelTest, aNewCopyShowsAtOnce) {
    startWithHistory();
    copy(str("newest"));
    EXPECT_EQ(shown().first(), str("newest"));
    model->setSearchText(str("st"));
    copy(str("latest"));
    EXPECT_EQ(shown(), (QStringList{str("latest"), str("newest"), str("first")}));
}

TEST_F(ClassicPanelModelTest, anEmptyListTellsWhy) {
    startPanel();
    EXPECT_EQ(model->emptyState().text, str("History is empty"));
    EXPECT_EQ(model->emptyState().symbol, str("clipboard"));
    model->setSearchText(str(" "));
    EXPECT_EQ(model->emptyState().text, str("No results found"));
    EXPECT_EQ(model->emptyState().symbol, str("magnifyingglass"));
}

TEST_F(ClassicPanelModelTest, openingBeginsAnew) {
    startWithHistory();
    model->setSearchText(str("third"));
    openPanel();
    EXPECT_TRUE(model->isPanelOpen());
    EXPECT_EQ(model->searchText(), QString());
    EXPECT_EQ(selected(), str("first"));
    press(virtualKey::down);
    openPanel();
    EXPECT_EQ(selected(), str("first"));
}

TEST_F(ClassicPanelModelTest, openingAnEmptyListSelectsNothing) {
    startPanel();
    openPanel();
    EXPECT_EQ(model->selectedID(), std::nullopt);
}

TEST_F(ClassicPanelModelTest, everyKeyOfTheTableHasItsActionAndNoOtherDoes) {
    for (int code = -1; code <= 256; ++code) {
        std::optional<ClassicPanelKeyAction> expected;
        if (code == 36 || code == 76)
            expected = ClassicPanelKeyAction::useItem;
        else if (code == 125)
            expected = ClassicPanelKeyAction::moveDown;
        else if (code == 126)
            expected = ClassicPanelKeyAction::moveUp;
        EXPECT_EQ(ClassicPanelModel::keyAction(code), expected) << code;
    }
}

TEST_F(ClassicPanelModelTest, leftRightAndEscapePassOn) {
    startWithHistory();
    openPanel();
    EXPECT_FALSE(press(virtualKey::left));
    EXPECT_FALSE(press(virtualKey::right));
    EXPECT_FALSE(press(virtualKey::escape));
    EXPECT_EQ(selected(), str("first"));
}

TEST_F(ClassicPanelModelTest, keysCountOnlyWhileThePanelIsOpen) {
    startWithHistory();
    EXPECT_FALSE(press(virtualKey::enter));
    openPanel();
    EXPECT_TRUE(press(virtualKey::enter));
    model->close();
    EXPECT_FALSE(press(virtualKey::enter));
    EXPECT_EQ(pasted, QStringList{str("first")});
}

TEST_F(ClassicPanelModelTest, theWindowIsKnownByItsTitleInThePersonsLanguageToo) {
    startWithHistory();
    openPanel();
    setTranslation([](const QString &words) { return words == str("Classic Clipboard") ? str("Verlauf") : words; });
    EXPECT_TRUE(model->handleKeyDown(str("Verlauf"), virtualKey::down));
    EXPECT_NE(selected(), str("first"));
    setTranslation(nullptr);
}

TEST_F(ClassicPanelModelTest, keysOfAnotherWindowPassThrough) {
    startWithHistory();
    openPanel();
    for (const char *title : {"", "classic clipboard", "Clipboard Search"})
        EXPECT_FALSE(model->handleKeyDown(str(title), virtualKey::down)) << title;
    EXPECT_EQ(selected(), str("first"));
}

TEST_F(ClassicPanelModelTest, arrowsStopAtTheEnds) {
    startWithHistory();
    openPanel();
    EXPECT_TRUE(press(virtualKey::up));
    EXPECT_EQ(selected(), str("first"));
    for (const char *next : {"second", "third", "third"}) {
        EXPECT_TRUE(press(virtualKey::down));
        EXPECT_EQ(selected(), str(next));
    }
}

TEST_F(ClassicPanelModelTest, arrowsInAnEmptyListAreSwallowedAndDoNothing) {
    startPanel();
    openPanel();
    EXPECT_TRUE(press(virtualKey::down));
    EXPECT_EQ(model->selectedID(), std::nullopt);
}

TEST_F(ClassicPanelModelTest, typingMovesNoSelectionAndTheNextArrowReplacesOneThatIsGone) {
    startWithHistory();
    openPanel();
    press(virtualKey::down);
    model->setSearchText(str("ir"));
    EXPECT_EQ(selected(), str("second")) << "filtered out, and still selected";
    EXPECT_TRUE(press(virtualKey::enter));
    EXPECT_THAT(pasted, IsEmpty());
    press(virtualKey::up);
    EXPECT_EQ(selected(), str("first"));
}

TEST_F(ClassicPanelModelTest, withoutASelectionAnArrowTakesTheFirstItem) {
    startPanel();
    openPanel();
    copy(str("only"));
    EXPECT_EQ(model->selectedID(), std::nullopt);
    press(virtualKey::down);
    EXPECT_EQ(selected(), str("only"));
}

TEST_F(ClassicPanelModelTest, returnWithoutASelectionIsSwallowedAndDoesNothing) {
    startPanel();
    openPanel();
    EXPECT_TRUE(press(virtualKey::keypadEnter));
    EXPECT_THAT(pasted, IsEmpty());
    EXPECT_EQ(orderOuts, 0);
}

TEST_F(ClassicPanelModelTest, withoutAPasterAnItemIsCopiedAndEveryWindowGoes) {
    startWithHistory();
    openPanel();
    model->setOnPaste(nullptr);
    press(virtualKey::down);
    EXPECT_TRUE(press(virtualKey::enter));
    EXPECT_EQ(pasteboard.string(), str("second"));
    EXPECT_EQ(orderOuts, 1);
}

TEST_F(ClassicPanelModelTest, aClickUsesItsRow) {
    startWithHistory();
    model->use(stored(str("third")).id);
    EXPECT_EQ(pasted, QStringList{str("third")});
    EXPECT_EQ(orderOuts, 0);
    EXPECT_EQ(pasteboard.clearCount(), 0);
}

TEST_F(ClassicPanelModelTest, theActionsOfARowInvertItsFlags) {
    startWithHistory();
    const QUuid id = stored(str("second")).id;
    model->togglePin(id);
    EXPECT_TRUE(stored(str("second")).isPinned);
    EXPECT_EQ(shown().first(), str("second"));
    model->toggleSaved(id);
    EXPECT_TRUE(stored(str("second")).isSaved);
    model->togglePin(id);
    model->toggleSaved(id);
    EXPECT_FALSE(stored(str("second")).isProtected());
}

TEST_F(ClassicPanelModelTest, anActionOnAnItemThatIsGoneDoesNothing) {
    startWithHistory();
    const QUuid id = stored(str("second")).id;
    database.remove(id);
    manager->reloadHistory();
    model->togglePin(id);
    model->use(id);
    EXPECT_EQ(rows().size(), 2U);
    EXPECT_THAT(pasted, IsEmpty());
}

TEST_F(ClassicPanelModelTest, theHeadersButtonsOrderOutAndAskForTheSettings) {
    startPanel();
    int requests = 0;
    const auto token =
        center.addObserver(str("openClipboardSettingsRequested"), [&](const Notification &) { ++requests; });
    model->requestSettings();
    model->orderOutAllWindows();
    EXPECT_EQ(requests, 1);
    EXPECT_EQ(orderOuts, 1);
}

TEST(ClassicPanelRowTest, readsAsItsItem) {
    ClipboardItem item;
    item.content = str("hello");
    EXPECT_EQ(ClassicPanelModel::row(item),
              (ClassicPanelRow{str("hello"), QString(), false, {}, str("Add to My Saved"), str("Pin snippet")}));
    item.imageFileName = str("a.png");
    EXPECT_EQ(ClassicPanelModel::row(item),
              (ClassicPanelRow{str("Image"), str("photo"), false, {}, str("Add to My Saved"), str("Pin snippet")}));
    for (const char *name : {"a.mp4", "a.mov"}) {
        item.imageFileName = str(name);
        EXPECT_EQ(ClassicPanelModel::row(item),
                  (ClassicPanelRow{
                      str("Screen Recording"), str("video"), true, {}, str("Add to My Saved"), str("Pin snippet")}));
    }
}

TEST(ClassicPanelRowTest, isLabelledWhenPinnedAndWhenSaved) {
    ClipboardItem item;
    const ClassicPanelRow::Label pinned{str("Pinned"), str("pin.fill")};
    const ClassicPanelRow::Label saved{str("My Saved"), str("bookmark.fill")};
    item.isPinned = true;
    EXPECT_EQ(ClassicPanelModel::row(item).labels, QList{pinned});
    item.isSaved = true;
    EXPECT_EQ(ClassicPanelModel::row(item).labels, (QList{pinned, saved}));
    EXPECT_EQ(ClassicPanelModel::row(item).savedToolTip, str("Remove from My Saved"));
    EXPECT_EQ(ClassicPanelModel::row(item).pinToolTip, str("Remove pin"));
}

TEST_F(ClassicPanelModelTest, aLongTextIsFoundByWhatStandsBehindItsBeginning) {
    save(QString(5000, QLatin1Char('x')) + str(" Straße"), 1s);
    save(QString(5000, QLatin1Char('y')), 2s);
    startPanel();
    model->setSearchText(str("STRASSE"));
    constexpr int mostTries = 10'000; // the look may step back for the very operation that waits for it
    for (int i = 0; i < mostTries && shown().isEmpty(); ++i) {
        (void)database.counts(); // behind it on the queue
        time.advance(0s);
    }
    ASSERT_EQ(shown().size(), 1);
    EXPECT_TRUE(shown().front().startsWith(QLatin1Char('x')));
    model->setSearchText(str("yyy"));
    ASSERT_EQ(shown().size(), 1);
    EXPECT_TRUE(shown().front().startsWith(QLatin1Char('y')));
}

} // namespace
} // namespace tavrine
