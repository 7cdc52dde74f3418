#include "clipboard/ContentView.h"

#include "PanelViewTest.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

class ContentViewTest : public PanelViewTest {
protected:
    void startPanel(const QString &title = str("Classic Clipboard")) {
        start();
        auto *view = new ContentView(
            *manager, center, [this] { ++orderOuts; },
            [this](const ClipboardItem &item) { pasted.append(item.content); });
        show(view, title, {320, 450});
        center.post(str("floatingPanelOpened"));
    }
    void startWithThree() {
        save(str("first"), 1s);
        save(str("second"), 2s);
        save(str("third"), 3s);
        startPanel();
    }

    /// Where the picture of a row stands.
    [[nodiscard]] QRectF pictureOf(int row) const {
        const QRectF rect = list().rowRect(row);
        return {rect.left() + look::space::medium, rect.top() + look::space::small, 56, 56};
    }

    static constexpr qreal fallbackSide = 24;
    const QStringList symbols{str("photo"), str("video"), str("play.fill"), str("pause.fill"), str("doc.text")};
    int orderOuts = 0;
};

TEST_F(ContentViewTest, showsTheHistoryUnderTheTitleWithTheFirstSelected) {
    startWithThree();
    EXPECT_EQ(shown(), (QStringList{str("first"), str("second"), str("third")}));
    EXPECT_EQ(selected(), str("first"));
    EXPECT_EQ(field().placeholderText(), str("Search history…"));
    EXPECT_TRUE(field().hasFocus());
}

TEST_F(ContentViewTest, typingFiltersAndMovesNoSelection) {
    startWithThree();
    type("thi");
    EXPECT_EQ(shown(), QStringList{str("third")});
    EXPECT_EQ(selected(), str("(none)"));
    press(Qt::Key_Down);
    EXPECT_EQ(selected(), str("third"));
}

TEST_F(ContentViewTest, keysActWhileItIsOpen) {
    startWithThree();
    press(Qt::Key_Down, Qt::ControlModifier);
    press(Qt::Key_Return);
    EXPECT_EQ(pasted, QStringList{str("second")});
    window.hide();
    QTest::keyClick(&field(), Qt::Key_Return);
    EXPECT_EQ(pasted.size(), 1);
}

TEST_F(ContentViewTest, leftAndRightGoToTheSearchField) {
    startWithThree();
    type("ir");
    press(Qt::Key_Left);
    EXPECT_EQ(field().cursorPosition(), 1);
    press(Qt::Key_Right);
    EXPECT_EQ(field().cursorPosition(), 2);
    press(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(field().selectedText(), str("r"));
    EXPECT_EQ(selected(), str("first")) << "the selection in the list stays";
}

TEST_F(ContentViewTest, typingInTheMiddleKeepsTheCaretAndTheUndo) {
    startWithThree();
    type("fist");
    press(Qt::Key_Left);
    press(Qt::Key_Left);
    type("r");
    EXPECT_EQ(field().text(), str("first"));
    EXPECT_EQ(field().cursorPosition(), 3);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(field().text(), str("fist"));
}

TEST_F(ContentViewTest, controlChordsOfTheFieldEditByWords) {
    startWithThree();
    type("two words");
    press(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(field().cursorPosition(), 4);
    press(Qt::Key_Backspace, Qt::ControlModifier);
    EXPECT_EQ(field().text(), str("words"));
}

TEST_F(ContentViewTest, lettersTypedWhileAnotherControlHasTheFocusArriveInTheField) {
    startWithThree();
    press(Qt::Key_Tab);
    ASSERT_FALSE(field().hasFocus());
    typeBlindly("thi");
    EXPECT_EQ(field().text(), str("thi"));
    EXPECT_EQ(shown(), QStringList{str("third")});
}

TEST_F(ContentViewTest, thePageKeysMoveByAPage) {
    for (int i = 0; i < 60; ++i)
        save(str("row %1").arg(i), Seconds(i));
    startPanel();
    const int page = list().height() / static_cast<int>(list().rowRect(0).height());
    press(Qt::Key_PageDown);
    EXPECT_EQ(selected(), str("row %1").arg(page - 1));
    press(Qt::Key_PageUp);
    EXPECT_EQ(selected(), str("row 0"));
}

TEST_F(ContentViewTest, keysPassOnInAWindowOfAnotherTitle) {
    save(str("first"));
    startPanel(str("Classic"));
    press(Qt::Key_Return);
    EXPECT_EQ(pasted, QStringList());
}

TEST_F(ContentViewTest, aClickUsesItsRowOnce) {
    startWithThree();
    clickRow("third");
    EXPECT_EQ(pasted, QStringList{str("third")});
}

TEST_F(ContentViewTest, aRowsButtonsActOnItAndUseNothing) {
    startWithThree();
    clickAction("third", 0, 2);
    EXPECT_TRUE(stored("third")->isPinned);
    clickAction("second", 1, 2);
    EXPECT_TRUE(stored("second")->isSaved);
    EXPECT_EQ(pasted, QStringList());
    EXPECT_EQ(list().accessibleText(rowOf("third")), str("third, Pinned"));
    EXPECT_EQ(list().actionNames(rowOf("second")), (QStringList{str("Pin snippet"), str("Remove from My Saved")}));
}

TEST_F(ContentViewTest, theHeadersButtonsCloseEverythingAndAskForTheSettings) {
    startPanel();
    int requests = 0;
    const auto token =
        center.addObserver(str("openClipboardSettingsRequested"), [&](const Notification &) { ++requests; });
    ASSERT_TRUE(button("Settings") && button("Close"));
    QTest::mouseClick(button("Settings"), Qt::LeftButton);
    EXPECT_EQ(requests, 1);
    EXPECT_EQ(orderOuts, 0);
    QTest::mouseClick(button("Close"), Qt::LeftButton);
    EXPECT_EQ(orderOuts, 1);
}

TEST_F(ContentViewTest, emptyListsTellWhy) {
    startPanel();
    EXPECT_EQ(empty().accessibleName(), str("History is empty"));
    type("x");
    EXPECT_EQ(empty().accessibleName(), str("No results found"));
    EXPECT_TRUE(list().isHidden());
}

TEST_F(ContentViewTest, openingBeginsAnew) {
    startWithThree();
    type("thi");
    window.hide();
    window.show();
    center.post(str("floatingPanelOpened"));
    EXPECT_EQ(field().text(), QString());
    EXPECT_EQ(selected(), str("first"));
}

TEST_F(ContentViewTest, opensAtTheTopHoweverItWasLeft) {
    for (int i = 0; i < 60; ++i)
        save(str("row %1").arg(i), Seconds(i));
    startPanel();
    wheelOver(&list(), 5);
    ASSERT_GT(list().offset(), 0);
    window.hide();
    window.show();
    center.post(str("floatingPanelOpened"));
    EXPECT_EQ(list().offset(), 0);
}

TEST_F(ContentViewTest, aTextOfWhiteSpaceAloneIsSpokenOf) {
    save(str(" \n"), 1s);
    startPanel();
    EXPECT_EQ(shown(), QStringList{str("White space")});
}

TEST_F(ContentViewTest, aPictureRowHasRoomForItsThumbnail) {
    save(str("Copied Image"), 4s, str("gone.png"));
    startWithThree();
    EXPECT_EQ(shown().last(), str("Image"));
    EXPECT_GE(list().rowRect(3).height(), 56);
}

TEST_F(ContentViewTest, withoutItsPictureARowShowsWhatItWouldBeOf) {
    save(str("Copied Image"), 1s, str("gone.png"));
    save(str("[Screen Recording] A"), 2s, str("gone.mp4"));
    startPanel();
    ASSERT_EQ(shown(), (QStringList{str("Image"), str("Screen Recording")}));
    EXPECT_EQ(symbolInList(pictureOf(0), fallbackSide, symbols), str("photo"));
    EXPECT_EQ(symbolInList(pictureOf(1), fallbackSide, symbols), str("video"));
}

TEST_F(ContentViewTest, theRowOfARecordingShowsItsPictureUnderItsBadgeWhenThatIsMade) {
    write(quickShotsFolder + str("/A.mp4"));
    save(str("[Screen Recording] A"), 1s, str("A.mp4"));
    QImage frame(64, 36, QImage::Format_RGB32);
    frame.fill(Qt::magenta);
    movies.setFrame(frame);
    startPanel();
    EXPECT_EQ(shown().last(), str("Screen Recording"));
    EXPECT_EQ(pixelsLike(Qt::magenta), 0);
    movies.answerAll();
    EXPECT_GT(pixelsLike(Qt::magenta), 500) << "in the turn in which it was made";
    EXPECT_EQ(symbolInList(pictureOf(0), look::symbolsize::small, symbols), str("play.fill"));
}

TEST_F(ContentViewTest, theRowOfAPictureHasNoBadgeOnIt) {
    write(imagesFolder + str("/A.png"), "fake picture 60 60\n");
    save(str("Copied Image"), 1s, str("A.png"));
    startPanel();
    ASSERT_EQ(manager->thumbnailCache().count(), 1);
    EXPECT_EQ(symbolInList(pictureOf(0), look::symbolsize::small, symbols), QString());
}

} // namespace
} // namespace tavrine
