#include "clipboard/ClipboardSearchView.h"

#include "PanelViewTest.h"
#include "adapters/fake/FakeAlerts.h"
#include "look/ChipStrip.h"
#include "look/Indicators.h"
#include "support/PaintedWords.h"

#include <QElapsedTimer>
#include <QHelpEvent>

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

class ClipboardSearchViewTest : public PanelViewTest {
protected:
    void startPanel(const QString &title = str("Clipboard Search")) {
        start();
        auto *view = new ClipboardSearchView(
            {*manager, alerts, center, time}, [this] { ++dismissals; },
            [this](const ClipboardItem &item) { pasted.append(item.content); });
        show(view, title, {680, 500});
        openPanel();
    }
    void startWithThree() {
        save(str("first"), 1s);
        save(str("second"), 2s);
        save(str("third"), 3s);
        startPanel();
    }
    void openPanel() {
        center.post(str("clipboardSearchPanelOpened"));
        time.runPending();
    }
    [[nodiscard]] look::ChipStrip &strip() const { return *window.findChild<look::ChipStrip *>(); }

    FakeAlerts alerts;
    int dismissals = 0;
};

TEST_F(ClipboardSearchViewTest, listsSectionsUnderTheirHeadersWithTheFirstItemSelected) {
    savePinned(str("pinned"), 9s);
    startWithThree();
    EXPECT_EQ(shown(), (QStringList{str("Pinned Snippets"), str("pinned"), str("Recent Clipboard"), str("first"),
                                    str("second"), str("third")}));
    EXPECT_EQ(selected(), str("pinned"));
}

TEST_F(ClipboardSearchViewTest, rowsAreSixtyPointsHigh) {
    startWithThree();
    EXPECT_EQ(list().rowRect(rowOf("second")).height(), 60);
}

TEST_F(ClipboardSearchViewTest, itsCornersAreRoundedByEighteenPoints) {
    startPanel();
    const QRegion shape = window.mask(); // as without a compositor
    int x = 0;
    while (x < window.width() && !shape.contains(QPoint(x, 0)))
        ++x;
    // Where the middle of the first row of pixels meets a circle of that radius; one of 16 or of 20 is met elsewhere.
    EXPECT_NEAR(x, 18 - std::sqrt(18 * 18 - 17.5 * 17.5), 0.9);
}

TEST_F(ClipboardSearchViewTest, theButtonsOfARowShowTheirSymbols) {
    startWithThree();
    const QStringList known{str("pin.fill"), str("pin"),       str("bookmark"), str("bookmark.fill"),
                            str("trash"),    str("star.fill"), str("doc.text")};
    const auto symbols = [&] {
        QStringList found;
        for (const QRectF &place : look::rowActionRects(list().rowRect(rowOf("first")), 3))
            found.append(symbolInList(place, look::symbolsize::medium, known));
        return found;
    };
    ASSERT_EQ(selected(), str("first"));
    EXPECT_EQ(symbols(), (QStringList{str("pin.fill"), str("bookmark"), str("trash")}));
    type("first"); // a saved item shows where there is a query
    clickAction("first", 1, 3);
    ASSERT_TRUE(stored("first")->isSaved);
    EXPECT_EQ(symbols(), (QStringList{str("pin.fill"), str("bookmark.fill"), str("trash")}));
}

TEST_F(ClipboardSearchViewTest, typingFiltersAndRepaints) {
    startWithThree();
    const QImage before = grabbed();
    type("sec");
    EXPECT_EQ(shown(), (QStringList{str("Recent Clipboard"), str("second")}));
    EXPECT_EQ(selected(), str("second"));
    EXPECT_NE(grabbed().copy(list().geometry()), before.copy(list().geometry()));
}

TEST_F(ClipboardSearchViewTest, theClearButtonBringsEverythingBack) {
    startWithThree();
    type("sec");
    ASSERT_NE(button("Clear"), nullptr);
    EXPECT_TRUE(button("Clear")->isVisible());
    QTest::mouseClick(button("Clear"), Qt::LeftButton);
    EXPECT_EQ(field().text(), QString());
    EXPECT_FALSE(button("Clear")->isVisible()) << "there is nothing to clear";
    EXPECT_EQ(shown().size(), 4);
}

TEST_F(ClipboardSearchViewTest, arrowsMoveAndNeverReachTheCaret) {
    startWithThree();
    type("ir"); // "first" and "third"
    press(Qt::Key_Down);
    EXPECT_EQ(selected(), str("third"));
    press(Qt::Key_Up);
    EXPECT_EQ(selected(), str("first"));
    press(Qt::Key_Left);
    EXPECT_EQ(strip().current(), 5);
    EXPECT_EQ(field().cursorPosition(), 2);
    press(Qt::Key_Right);
    EXPECT_EQ(strip().current(), 0);
    press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(strip().current(), 1);
    press(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(strip().current(), 0);
    EXPECT_EQ(field().cursorPosition(), 2);
    EXPECT_FALSE(field().hasSelectedText());
}

// What each key does, as a person sees it, whatever of Shift and Alt is held with it.
TEST_F(ClipboardSearchViewTest, shiftAndAltChangeNoKeyOfThePanel) {
    save(str("fourth"), 4s);
    startWithThree();
    for (const auto held : {Qt::KeyboardModifiers(Qt::ShiftModifier), Qt::KeyboardModifiers(Qt::AltModifier),
                            Qt::ShiftModifier | Qt::AltModifier}) {
        SCOPED_TRACE(int(held));
        openPanel();
        pasted.clear();
        dismissals = 0;
        const QString first = selected();
        press(Qt::Key_Down, held);
        const QString second = selected();
        EXPECT_NE(second, first);
        press(Qt::Key_Return, held);
        press(Qt::Key_Enter, held | Qt::KeypadModifier);
        EXPECT_EQ(pasted, (QStringList{second, second}));
        press(Qt::Key_Up, held);
        EXPECT_EQ(selected(), first);
        press(Qt::Key_Left, held);
        EXPECT_EQ(strip().current(), 5);
        press(Qt::Key_Right, held);
        EXPECT_EQ(strip().current(), 0);
        press(Qt::Key_P, held | Qt::MetaModifier);
        EXPECT_TRUE(stored(first.toUtf8().constData())->isPinned);
        press(Qt::Key_Backspace, held | Qt::MetaModifier);
        EXPECT_FALSE(stored(first.toUtf8().constData()));
        press(Qt::Key_Escape, held);
        EXPECT_EQ(dismissals, 1);
        EXPECT_EQ(field().text(), QString());
    }
}

TEST_F(ClipboardSearchViewTest, theFooterTellsTheKeysInTheirOrder) {
    startPanel();
    EXPECT_EQ(window.findChild<look::HintBar *>()->accessibleName(),
              str("Navigate, Paste, esc Close, \u2190 \u2192 Category"));
    test::WordsDevice device(window.size());
    window.findChild<look::HintBar *>()->render(&device);
    auto painted = device.painted();
    std::ranges::sort(painted, {}, [](const test::PaintedWord &word) { return word.place.left(); });
    QString line;
    for (const test::PaintedWord &word : painted)
        line += word.text.trimmed();
    EXPECT_EQ(line, str("NavigatePasteescClose\u2190\u2192Category"));
}

TEST_F(ClipboardSearchViewTest, returnPastesTheSelectedItemAndEscapeDismisses) {
    startWithThree();
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    press(Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(pasted, (QStringList{str("second"), str("second")}));
    press(Qt::Key_Escape);
    EXPECT_EQ(dismissals, 1);
}

TEST_F(ClipboardSearchViewTest, controlAndSuperAreBothCommand) {
    startWithThree();
    press(Qt::Key_P, Qt::ControlModifier);
    EXPECT_TRUE(stored("first")->isPinned);
    press(Qt::Key_P, Qt::MetaModifier);
    EXPECT_FALSE(stored("first")->isPinned);
}

TEST_F(ClipboardSearchViewTest, superBackspaceAndShiftDeleteRemoveTheSelectedItem) {
    startWithThree();
    press(Qt::Key_Backspace, Qt::MetaModifier);
    EXPECT_FALSE(stored("first"));
    press(Qt::Key_Delete, Qt::ShiftModifier);
    EXPECT_FALSE(stored("second"));
    press(Qt::Key_Delete);
    EXPECT_TRUE(stored("third"));
}

TEST_F(ClipboardSearchViewTest, controlBackspaceDeletesAWordAndNeverAnItem) {
    save(str("two words"), 9s);
    startWithThree();
    type("two words");
    ASSERT_EQ(selected(), str("two words"));
    press(Qt::Key_Backspace, Qt::ControlModifier);
    EXPECT_EQ(field().text(), str("two "));
    for (int i = 0; i < 3; ++i) // whoever clears a field word by word presses once too often
        press(Qt::Key_Backspace, Qt::ControlModifier);
    EXPECT_EQ(field().text(), QString());
    EXPECT_EQ(rows().size(), 4U);
}

TEST_F(ClipboardSearchViewTest, shiftDeleteCutsTextThatIsSelected) {
    startWithThree();
    type("fir");
    field().setSelection(1, 2);
    press(Qt::Key_Delete, Qt::ShiftModifier);
    EXPECT_EQ(field().text(), str("f"));
    EXPECT_TRUE(stored("first"));
}

TEST_F(ClipboardSearchViewTest, typingInTheMiddleKeepsTheCaretAndTheUndo) {
    startWithThree();
    type("fist");
    field().setCursorPosition(2);
    type("r");
    EXPECT_EQ(field().text(), str("first"));
    EXPECT_EQ(field().cursorPosition(), 3);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(field().text(), str("fist"));
}

TEST_F(ClipboardSearchViewTest, lettersTypedWhileAnotherControlHasTheFocusArriveInTheField) {
    startWithThree();
    press(Qt::Key_Tab);
    ASSERT_FALSE(field().hasFocus());
    typeBlindly("fi");
    EXPECT_EQ(field().text(), str("fi"));
    EXPECT_TRUE(field().hasFocus());
    press(Qt::Key_Tab);
    press(Qt::Key_Backspace);
    EXPECT_EQ(field().text(), str("f"));
    press(Qt::Key_Tab);
    press(Qt::Key_Backspace, Qt::ControlModifier);
    EXPECT_EQ(field().text(), QString());
}

TEST_F(ClipboardSearchViewTest, theSpaceKeyPressesTheControlThatHasTheFocus) {
    startWithThree();
    strip().findChildren<look::Chip *>().at(2)->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_EQ(strip().current(), 2);
    EXPECT_EQ(field().text(), QString());
}

TEST_F(ClipboardSearchViewTest, thePageKeysMoveByAPage) {
    for (int i = 0; i < 60; ++i)
        save(str("row %1").arg(i), Seconds(i));
    startPanel();
    const int page = list().height() / 60;
    press(Qt::Key_PageDown);
    EXPECT_EQ(selected(), str("row %1").arg(page - 1));
    press(Qt::Key_PageDown);
    EXPECT_EQ(selected(), str("row %1").arg(2 * (page - 1)));
    press(Qt::Key_PageUp);
    EXPECT_EQ(selected(), str("row %1").arg(page - 1));
    for (int i = 0; i < 20; ++i)
        press(Qt::Key_PageDown);
    EXPECT_EQ(selected(), str("row 59"));
}

TEST_F(ClipboardSearchViewTest, backspaceAloneEditsTheQuery) {
    startWithThree();
    type("fi");
    press(Qt::Key_Backspace);
    EXPECT_EQ(field().text(), str("f"));
    EXPECT_TRUE(stored("first"));
}

TEST_F(ClipboardSearchViewTest, keysPassOnInAWindowOfAnotherTitle) {
    save(str("first"));
    startPanel(str("Clipboard search"));
    type("fi");
    press(Qt::Key_Left);
    EXPECT_EQ(field().cursorPosition(), 1);
    press(Qt::Key_Return);
    EXPECT_EQ(pasted, QStringList());
}

TEST_F(ClipboardSearchViewTest, keysPassOnInTheWindowsOfOthers) {
    startWithThree();
    QLineEdit other(str("abc"));
    other.setWindowTitle(str("Clipboard Search"));
    other.show();
    QTest::keyClick(&other, Qt::Key_Left);
    EXPECT_EQ(other.cursorPosition(), 2);
    EXPECT_EQ(strip().current(), 0);
}

TEST_F(ClipboardSearchViewTest, aClickPastesItsRowOnce) {
    startWithThree();
    clickRow("third");
    EXPECT_EQ(pasted, QStringList{str("third")});
}

TEST_F(ClipboardSearchViewTest, aClickOnAHeaderDoesNothing) {
    startWithThree();
    clickRow("Recent Clipboard");
    EXPECT_EQ(pasted, QStringList());
    EXPECT_EQ(selected(), str("first"));
}

TEST_F(ClipboardSearchViewTest, aRowsButtonsActOnItAndPasteNothing) {
    startWithThree();
    clickAction("third", 0, 3);
    EXPECT_TRUE(stored("third")->isPinned);
    EXPECT_EQ(selected(), str("third"));
    clickAction("second", 1, 3);
    EXPECT_TRUE(stored("second")->isSaved);
    clickAction("first", 2, 3);
    EXPECT_FALSE(stored("first"));
    EXPECT_EQ(pasted, QStringList());
    EXPECT_EQ(shown(), (QStringList{str("Pinned Snippets"), str("third")}));
}

TEST_F(ClipboardSearchViewTest, aDoubleClickOnTheBinDeletesOneItem) {
    startWithThree();
    const QPoint bin = look::rowActionRects(list().rowRect(rowOf("first")), 3)[2].center().toPoint();
    for (const auto type : {QEvent::MouseMove, QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                            QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease}) {
        const bool isDown = type == QEvent::MouseButtonPress || type == QEvent::MouseButtonDblClick;
        QMouseEvent event(type, bin, list().mapToGlobal(bin), Qt::LeftButton, isDown ? Qt::LeftButton : Qt::NoButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&list(), &event);
    }
    EXPECT_FALSE(stored("first"));
    EXPECT_TRUE(stored("second")); // which has moved up under the pointer
}

TEST_F(ClipboardSearchViewTest, aRowsButtonsAreKnownByTheirToolTips) {
    saveInMySaved(str("kept"));
    savePinned(str("pinned"), 1s);
    startWithThree();
    EXPECT_EQ(list().actionNames(rowOf("first")),
              (QStringList{str("Pin snippet"), str("Add to My Saved"), str("Delete item")}));
    EXPECT_EQ(list().actionNames(rowOf("pinned")).first(), str("Remove pin"));
    EXPECT_EQ(list().actionNames(rowOf("Recent Clipboard")), QStringList());
    type("kept");
    EXPECT_EQ(list().actionNames(rowOf("kept")).at(1), str("Remove from My Saved"));
}

TEST_F(ClipboardSearchViewTest, aToolTipShowsOverAButtonAndNotOverTheTitle) {
    startWithThree();
    const QRectF row = list().rowRect(rowOf("second"));
    const auto rest = [this](QPointF place) {
        QHelpEvent event(QEvent::ToolTip, place.toPoint(), list().mapToGlobal(place.toPoint()));
        QCoreApplication::sendEvent(&list(), &event);
        return look::ToolTip::isShown();
    };
    EXPECT_FALSE(rest(row.center()));
    EXPECT_TRUE(rest(look::rowActionRects(row, 3)[2].center()));
    look::ToolTip::hide();
}

TEST_F(ClipboardSearchViewTest, aScreenReaderActsByTheButtonsNames) {
    startWithThree();
    QAccessibleInterface *reader = QAccessible::queryAccessibleInterface(&list());
    ASSERT_NE(reader, nullptr);
    QAccessibleInterface *row = reader->child(rowOf("second"));
    ASSERT_TRUE(row && row->actionInterface());
    row->actionInterface()->doAction(str("Pin snippet"));
    EXPECT_TRUE(stored("second")->isPinned);
}

TEST_F(ClipboardSearchViewTest, controlsAreCalledByTheirTexts) {
    startPanel();
    EXPECT_EQ(field().placeholderText(), str("Search clipboard & snippets..."));
    EXPECT_NE(button("Add item to My Saved"), nullptr);
}

TEST_F(ClipboardSearchViewTest, openingResetsAndFocusesTheField) {
    for (int i = 0; i < 60; ++i)
        save(str("row %1").arg(i), Seconds(i));
    startPanel();
    type("row");
    press(Qt::Key_Right);
    press(Qt::Key_Left);
    wheelOver(&list(), 5);
    ASSERT_GT(list().offset(), 0);
    field().clearFocus();
    openPanel();
    EXPECT_EQ(field().text(), QString());
    EXPECT_EQ(strip().current(), 0);
    EXPECT_EQ(list().offset(), 0);
    EXPECT_EQ(selected(), str("row 0"));
    EXPECT_TRUE(field().hasFocus());
}

TEST_F(ClipboardSearchViewTest, emptyListsTellWhy) {
    startPanel();
    EXPECT_TRUE(list().isHidden());
    EXPECT_TRUE(empty().isVisible());
    EXPECT_EQ(empty().accessibleName(), str("Your clipboard is empty"));
    type("x");
    EXPECT_TRUE(QTest::qWaitFor([this] { return empty().accessibleName() == str("No clipboard items found"); }));
    copy(str("x marks it"));
    EXPECT_TRUE(empty().isHidden());
    EXPECT_EQ(shown().last(), str("x marks it"));
}

TEST_F(ClipboardSearchViewTest, aNewCopyShowsAndTheSelectionGoesWithItsItem) {
    startWithThree();
    press(Qt::Key_Down);
    copy(str("newest"));
    EXPECT_EQ(shown().at(1), str("newest"));
    EXPECT_EQ(selected(), str("second"));
}

TEST_F(ClipboardSearchViewTest, thePlusButtonStandsInMySavedAlone) {
    startPanel();
    EXPECT_FALSE(button("Add item to My Saved")->isVisible());
    press(Qt::Key_Right);
    ASSERT_EQ(strip().current(), 1);
    EXPECT_TRUE(button("Add item to My Saved")->isVisible());
    alerts.answerNextWithFirstButton(str("my own text"));
    QTest::mouseClick(button("Add item to My Saved"), Qt::LeftButton);
    EXPECT_EQ(alerts.textAreaSize(), QSize(360, 120));
    EXPECT_EQ(shown(), (QStringList{str("My Saved"), str("my own text")}));
    press(Qt::Key_Right);
    EXPECT_FALSE(button("Add item to My Saved")->isVisible());
}

TEST_F(ClipboardSearchViewTest, aChipChoosesItsCategory) {
    save(str("https://example.com"), 5s);
    startWithThree();
    QTest::mouseClick(strip().findChildren<look::Chip *>().at(4), Qt::LeftButton);
    EXPECT_EQ(shown(), (QStringList{str("Recent Clipboard"), str("https://example.com")}));
}

TEST_F(ClipboardSearchViewTest, fiveHundredRowsScrollWithTheSelectionAtTheCentre) {
    for (int i = 0; i < 501; ++i)
        save(str("row %1").arg(i), Seconds(i));
    startPanel();
    type("row");
    ASSERT_EQ(list().count(), 501); // five hundred and a header
    for (int i = 0; i < 250; ++i)
        press(Qt::Key_Down);
    EXPECT_EQ(selected(), str("row 250"));
    EXPECT_NEAR(list().rowRect(list().selectedRow()).center().y(), list().height() / 2.0, 1.0);
    for (int i = 0; i < 260; ++i)
        press(Qt::Key_Down);
    EXPECT_EQ(selected(), str("row 499"));
    EXPECT_EQ(list().offset(), list().maximumOffset());
}

TEST_F(ClipboardSearchViewTest, theWheelScrollsTheListWhereverInThePanelThePointerIs) {
    for (int i = 0; i < 60; ++i)
        save(str("row %1").arg(i), Seconds(i));
    startPanel();
    wheelOver(&field(), 2);
    const qreal first = list().offset();
    EXPECT_GT(first, 0);
    wheelOver(&list(), 2);
    EXPECT_GT(list().offset(), first);
}

TEST_F(ClipboardSearchViewTest, thumbnailsAreMadeForTheRowsInSightAlone) {
    start();
    for (int i = 0; i < 40; ++i)
        copy(QImage(100 + i, 50, QImage::Format_RGB32));
    quit();
    startPanel();
    grabbed();
    ASSERT_EQ(list().count(), 41);
    EXPECT_GE(manager->thumbnailCache().count(), 5);
    EXPECT_LE(manager->thumbnailCache().count(), 8);
    list().scrollTo(list().maximumOffset(), false);
    grabbed();
    EXPECT_LE(manager->thumbnailCache().count(), 16);
}

TEST_F(ClipboardSearchViewTest, aPictureWhoseFileIsGoneShowsItsSymbol) {
    save(str("Copied Image"), 1s, str("gone.png"));
    startPanel();
    EXPECT_EQ(shown().last(), str("Screenshot"));
    grabbed();
    EXPECT_EQ(manager->thumbnailCache().count(), 0);
}

TEST_F(ClipboardSearchViewTest, aHugeTextPaintsAsFastAsAShortOne) {
    save(QString(3 * 1024 * 1024, u'w'), 1s);
    save(str("a wide text of many words ").repeated(120'000), 2s);
    startPanel();
    grabbed();
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 10; ++i)
        grabbed();
    EXPECT_LT(clock.elapsed(), 10 * 100) << "a tenth of a second for a panel, on a slow machine under a debugger";
}

TEST_F(ClipboardSearchViewTest, theRowOfARecordingShowsItsPictureWhenThatIsMade) {
    write(quickShotsFolder + str("/A.mp4"));
    save(str("[Screen Recording] A"), 1s, str("A.mp4"));
    QImage frame(64, 36, QImage::Format_RGB32);
    frame.fill(Qt::magenta);
    movies.setFrame(frame);
    startPanel();
    EXPECT_EQ(shown().last(), str("Screenshot"));
    EXPECT_EQ(pixelsLike(Qt::magenta), 0);
    movies.answerAll();
    EXPECT_GT(pixelsLike(Qt::magenta), 500) << "in the turn in which it was made";
}

} // namespace
} // namespace tavrine
