#include "ReadingTest.h"
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeImageCoder.h"
#include "base/NotificationCenter.h"
#include "base/SerialQueue.h"
#include "capture/editor/EditorScans.h"
#include "capture/reading/EditableTextView.h"
#include "capture/reading/OCRNotepadState.h"
#include "capture/reading/OCRNotepadView.h"
#include "capture/reading/OCRResultView.h"
#include "capture/reading/QRCodeRow.h"
#include "capture/reading/QRLabelBubble.h"
#include "capture/reading/QRResultView.h"
#include "capture/reading/ScanningAnimationView.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/PillView.h"
#include "support/Eventually.h"
#include "support/PaintedSymbols.h"

#include <QClipboard>
#include <QTest>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

class ReadingViewsTest : public ReadingTest {
protected:
    [[nodiscard]] static QAbstractButton *button(const QWidget &view, const char *words) {
        for (auto *each : view.findChildren<QAbstractButton *>())
            if (each->text() == QString::fromUtf8(words) || each->toolTip() == QString::fromUtf8(words))
                return each;
        return nullptr;
    }
    [[nodiscard]] static bool shows(const QWidget &view, const char *words) {
        for (const auto *label : view.findChildren<look::Label *>())
            if (label->text() == QString::fromUtf8(words) && label->isVisibleTo(&view))
                return true;
        return false;
    }
    struct Painted {
        QStringList words;
        QStringList symbols;
    };
    /// What is seen of it at its own size.
    [[nodiscard]] static Painted painted(QWidget &view) {
        view.resize(view.sizeHint());
        test::WordsDevice device(view.size());
        view.render(&device, {}, {}, QWidget::DrawChildren);
        return {device.words(), test::symbolsOn(device)};
    }
    [[nodiscard]] QRResultView::Ports rowPorts() { return {pasteboard, urlOpener, time}; }

    int dismissals = 0;
    std::function<void()> dismiss = [this] { ++dismissals; };
};

// The notepad.

TEST_F(ReadingViewsTest, theNotepadIs440By320) {
    OCRNotepadState state;
    const OCRNotepadView view(state, pasteboard, time, dismiss);
    EXPECT_EQ(view.sizeHint(), QSize(440, 320));
}

TEST_F(ReadingViewsTest, theNotepadSaysThatItIsLoadingUntilItShowsTheText) {
    OCRNotepadState state;
    OCRNotepadView view(state, pasteboard, time, dismiss);
    EXPECT_TRUE(shows(view, "Extracted Text"));
    EXPECT_TRUE(shows(view, "Extracting text…"));
    state.setText(text("Hello"));
    state.setLoading(false);
    EXPECT_FALSE(shows(view, "Extracting text…"));
    EXPECT_TRUE(shows(view, "5 characters"));
    EXPECT_EQ(view.findChild<EditableTextView *>()->text(), text("Hello"));
    EXPECT_TRUE(view.findChild<EditableTextView *>()->isReadOnly());
}

TEST_F(ReadingViewsTest, theNotepadShowsTheErrorInPlaceOfTheText) {
    OCRNotepadState state;
    OCRNotepadView view(state, pasteboard, time, dismiss);
    state.setErrorMessage(text("No text found in this image."));
    EXPECT_THAT(painted(view).words, Not(Contains(text("No text found in this image.")))) << "it is still looked for";
    EXPECT_THAT(painted(view).symbols, Not(Contains(text("text.page.slash"))));
    state.setLoading(false);
    EXPECT_THAT(painted(view).words, Contains(text("No text found in this image.")));
    EXPECT_THAT(painted(view).symbols, Contains(text("text.page.slash")));
    EXPECT_FALSE(view.findChild<EditableTextView *>()->isVisibleTo(&view));
    EXPECT_FALSE(button(view, "Copy All")->isVisibleTo(&view));
}

TEST_F(ReadingViewsTest, copyAllSaysCopied) {
    OCRNotepadState state;
    OCRNotepadView view(state, pasteboard, time, dismiss);
    state.setText(text("Hello"));
    state.setLoading(false);
    EXPECT_NE(button(view, "Copied"), nullptr);
    time.advance(Seconds{1});
    ASSERT_NE(button(view, "Copy All"), nullptr);
    button(view, "Copy All")->click();
    EXPECT_NE(button(view, "Copied"), nullptr);
}

TEST_F(ReadingViewsTest, theNotepadGoesByEscapeAndByItsButton) {
    OCRNotepadState state;
    OCRNotepadView view(state, pasteboard, time, dismiss);
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_EQ(dismissals, 1);
    button(view, "Close (Esc)")->click();
    EXPECT_EQ(dismissals, 2);
    state.setText(text("Hello"));
    state.setLoading(false);
    QTest::keyClick(view.findChild<EditableTextView *>(), Qt::Key_Escape);
    EXPECT_EQ(dismissals, 3);
}

TEST_F(ReadingViewsTest, theNotepadOutlivesItsState) {
    auto state = std::make_unique<OCRNotepadState>();
    OCRNotepadView view(*state, pasteboard, time, dismiss);
    state.reset();
    view.resize(440, 320);
    EXPECT_FALSE(view.grab().isNull());
}

TEST_F(ReadingViewsTest, theNotepadsSymbolsAndItsKeyAreSeen) {
    OCRNotepadState state;
    OCRNotepadView view(state, pasteboard, time, dismiss);
    EXPECT_THAT(painted(view).symbols, Contains(text("text.viewfinder")));
    EXPECT_THAT(painted(view).words, Contains(text("ESC")));
    state.setText(text("Hello"));
    state.setLoading(false);
    EXPECT_THAT(painted(view).symbols, Contains(text("checkmark"))) << "it was copied";
    time.advance(Seconds{1});
    EXPECT_THAT(painted(view).symbols, Contains(text("doc.on.doc")));
    EXPECT_THAT(painted(view).symbols, Not(Contains(text("checkmark"))));
    EXPECT_THAT(painted(view).words, Contains(text("Copy All")));
}

// The sheet.

TEST_F(ReadingViewsTest, theSheetsButtonsSayWhatTheyDo) {
    OCRResultView view(text("as read"), pasteboard, urlOpener, time, {.onCopy = {}, .onCancel = [] {}});
    const Painted before = painted(view);
    EXPECT_THAT(before.words, IsSupersetOf({text("Extracted Text"), text("Search Google"), text("Copy Text")}));
    EXPECT_THAT(before.symbols, IsSupersetOf({text("text.viewfinder"), text("xmark"), text("magnifyingglass"),
                                              text("doc.on.clipboard")}));
    EXPECT_THAT(before.symbols, Not(Contains(text("checkmark"))));
    button(view, "Copy Text")->click();
    const Painted after = painted(view);
    EXPECT_THAT(after.words, Contains(text("Copied!")));
    EXPECT_THAT(after.symbols, Contains(text("checkmark")));
    EXPECT_THAT(after.symbols, Not(Contains(text("doc.on.clipboard"))));
}

TEST_F(ReadingViewsTest, theSheetCopiesAndSearchesWhatWasTyped) {
    OCRResultView view(text("as read"), pasteboard, urlOpener, time, {.onCopy = dismiss, .onCancel = [] {}});
    EXPECT_TRUE(shows(view, "Tap to edit"));
    auto *field = view.findChild<EditableTextView *>();
    EXPECT_EQ(field->text(), text("as read"));
    field->selectAll();
    QTest::keyClicks(field, text("typed"));
    EXPECT_TRUE(shows(view, "5 characters"));
    button(view, "Copy Text")->click();
    EXPECT_EQ(pasteboard.string(), text("typed"));
    EXPECT_EQ(dismissals, 1);
    EXPECT_NE(button(view, "Copied!"), nullptr);
    button(view, "Search text on Google")->click();
    ASSERT_EQ(urlOpener.opened().size(), 1);
    EXPECT_EQ(urlOpener.opened().first().query(), text("q=typed"));
}

TEST_F(ReadingViewsTest, theSheetKeepsSpacesThatDoNotBreak) {
    OCRResultView view(text("20\u00a0km"), pasteboard, urlOpener, time, {.onCopy = {}, .onCancel = [] {}});
    auto *field = view.findChild<EditableTextView *>();
    field->moveCursor(QTextCursor::End);
    QTest::keyClicks(field, text("/h"));
    QTest::keyClick(field, Qt::Key_Return, Qt::ShiftModifier);
    button(view, "Copy Text")->click();
    EXPECT_EQ(pasteboard.string(), text("20\u00a0km/h\n"));
    button(view, "Search text on Google")->click();
    ASSERT_EQ(urlOpener.opened().size(), 1);
    EXPECT_EQ(urlOpener.opened().first().query(QUrl::FullyEncoded), text("q=20%C2%A0km/h%0A"));
    field->selectAll();
    field->copy();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), text("20\u00a0km/h\n"));
}

TEST_F(ReadingViewsTest, theSheetGoesByEscapeCancelAndItsButton) {
    OCRResultView view(text("a"), pasteboard, urlOpener, time, {.onCopy = {}, .onCancel = dismiss});
    QTest::keyClick(view.findChild<EditableTextView *>(), Qt::Key_Escape);
    EXPECT_EQ(dismissals, 1);
    button(view, "Cancel")->click();
    button(view, "Close (Esc)")->click();
    EXPECT_EQ(dismissals, 3);
}

// The panel of codes.

TEST_F(ReadingViewsTest, withoutCodesThePanelSaysSo) {
    const QRResultView view({}, rowPorts(), dismiss);
    EXPECT_TRUE(shows(view, "No QR Code Found"));
    EXPECT_TRUE(shows(view, "Nothing detected in selection"));
    EXPECT_TRUE(shows(view, "Try selecting a region that clearly contains a QR code."));
    EXPECT_TRUE(view.findChildren<QRCodeRow *>().isEmpty());
}

TEST_F(ReadingViewsTest, thePanelHasTheSymbolOfWhatWasFound) {
    QRResultView none({}, rowPorts(), dismiss);
    EXPECT_THAT(painted(none).symbols, IsSupersetOf({text("qrcode"), text("xmark.circle.fill")}));
    EXPECT_THAT(painted(none).symbols, Not(Contains(text("qrcode.viewfinder"))));
    QRResultView some({text("a")}, rowPorts(), dismiss);
    EXPECT_THAT(painted(some).symbols, IsSupersetOf({text("qrcode.viewfinder"), text("xmark.circle.fill")}));
}

TEST_F(ReadingViewsTest, aRowSaysWhatAClickDoesAndThatItIsDone) {
    const QRResultView view({text("first"), text("https://example.org")}, rowPorts(), dismiss);
    const auto rows = view.findChildren<QRCodeRow *>();
    const Painted before = painted(*rows[0]);
    EXPECT_THAT(before.words, UnorderedElementsAre(text("Code 1"), text("first"), text("Copy")));
    EXPECT_THAT(before.symbols, Contains(text("doc.on.doc")));
    EXPECT_THAT(painted(*rows[1]).words,
                UnorderedElementsAre(text("Code 2"), text("https://example.org"), text("Copy"), text("Open")));
    EXPECT_THAT(painted(*rows[1]).symbols, Contains(text("safari")));
    rows[0]->click();
    const Painted after = painted(*rows[0]);
    EXPECT_THAT(after.words, UnorderedElementsAre(text("Code 1"), text("first"), text("Copied!")));
    EXPECT_THAT(after.symbols, Contains(text("checkmark")));
    EXPECT_THAT(after.symbols, Not(Contains(text("doc.on.doc"))));
}

TEST_F(ReadingViewsTest, aRowCopiesItsCode) {
    const QRResultView view({text("first"), text("second")}, rowPorts(), dismiss);
    EXPECT_TRUE(shows(view, "2 QR Codes Found"));
    EXPECT_TRUE(shows(view, "Tap a result to copy"));
    const auto rows = view.findChildren<QRCodeRow *>();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[1]->accessibleName(), text("Code 2, second"));
    rows[1]->click();
    EXPECT_EQ(pasteboard.string(), text("second"));
    EXPECT_FALSE(rows[0]->isCopied());
    EXPECT_TRUE(rows[1]->isCopied());
    time.advance(1499ms);
    EXPECT_TRUE(rows[1]->isCopied());
    time.advance(1ms);
    EXPECT_FALSE(rows[1]->isCopied());
}

TEST_F(ReadingViewsTest, aSingleRowHasNoNumber) {
    const QRResultView view({text("only")}, rowPorts(), dismiss);
    EXPECT_EQ(view.findChild<QRCodeRow *>()->accessibleName(), text("only"));
}

TEST_F(ReadingViewsTest, onlyAnAddressCanBeOpened) {
    const QRResultView view({text("https://example.org/a"), text("plain")}, rowPorts(), dismiss);
    const auto rows = view.findChildren<QRCodeRow *>();
    ASSERT_NE(button(*rows[0], "Open"), nullptr);
    EXPECT_EQ(button(*rows[1], "Open"), nullptr);
    button(*rows[0], "Open")->click();
    EXPECT_EQ(urlOpener.opened(), QList<QUrl>{QUrl(text("https://example.org/a"))});
    EXPECT_EQ(pasteboard.changeCount(), 0) << "opening copies nothing";
}

TEST_F(ReadingViewsTest, hundredsOfCodesFitOnAScreen) {
    QStringList codes;
    for (int i = 0; i < 300; ++i)
        codes.append(QString(4000, QLatin1Char('x')));
    const QRResultView view(codes, rowPorts(), dismiss);
    EXPECT_LE(view.sizeHint().height(), 520);
    EXPECT_EQ(view.findChildren<QRCodeRow *>().size(), 300);
}

TEST_F(ReadingViewsTest, thePanelGoesByEscapeAndByItsButton) {
    QRResultView view({text("a")}, rowPorts(), dismiss);
    QTest::keyClick(&view, Qt::Key_Escape);
    button(view, "Close (Esc)")->click();
    EXPECT_EQ(dismissals, 2);
}

// Bubbles.

TEST_F(ReadingViewsTest, aBubbleOfAnAddressOpensIt) {
    QRLabelBubble bubble(text("https://example.org"), true, pasteboard, urlOpener, time);
    EXPECT_EQ(bubble.toolTip(), text("Open in browser"));
    bubble.click();
    EXPECT_EQ(urlOpener.opened().size(), 1);
    EXPECT_FALSE(bubble.isCopied());
}

TEST_F(ReadingViewsTest, anyOtherBubbleCopies) {
    QRLabelBubble bubble(text("HTTP://EXAMPLE.ORG"), false, pasteboard, urlOpener, time);
    EXPECT_EQ(bubble.toolTip(), text("Copy to clipboard"));
    bubble.click();
    EXPECT_EQ(pasteboard.string(), text("HTTP://EXAMPLE.ORG"));
    EXPECT_TRUE(bubble.isCopied());
    time.advance(1799ms);
    EXPECT_TRUE(bubble.isCopied());
    time.advance(1ms);
    EXPECT_FALSE(bubble.isCopied());
    EXPECT_TRUE(urlOpener.opened().isEmpty());
}

TEST_F(ReadingViewsTest, aBubbleShowsWhatAClickDoesAndThatItIsDone) {
    QRLabelBubble address(text("https://example.org"), true, pasteboard, urlOpener, time);
    EXPECT_THAT(painted(address).words, ElementsAre(text("https://example.org")));
    EXPECT_THAT(painted(address).symbols, Contains(text("link")));
    QRLabelBubble words(text("words"), false, pasteboard, urlOpener, time);
    EXPECT_THAT(painted(words).words, ElementsAre(text("words")));
    EXPECT_THAT(painted(words).symbols, Contains(text("doc.on.clipboard")));
    words.click();
    EXPECT_THAT(painted(words).words, ElementsAre(text("Copied!")));
    EXPECT_THAT(painted(words).symbols, Contains(text("checkmark")));
}

// In the editor.

class EditorScansTest : public ReadingViewsTest {
protected:
    EditorScansTest() {
        editor.resize(900, 600);
        editor.show();
        QCoreApplication::processEvents();
    }
    [[nodiscard]] EditorScanModel &model() { return EditorScans::of(editor, ports).model(); }

    FakeFilePanels panels{time};
    FakeImageCoder coder;
    NotificationCenter center;
    SerialQueue fileQueue{text("files")};
    EditorScans::Ports ports{{manager, detector, queue, time}, pasteboard, urlOpener};
    EditorView editor{
        picture(Qt::green),
        {time, pasteboard, panels, coder, center, QStringLiteral("/nonexistent"), fileQueue},
        {},
        {.opened = {}, .extractText = EditorScans::extractText(ports), .scanQr = EditorScans::scanQr(ports)}};
};

TEST_F(EditorScansTest, extractTextReadsThePixelsUnderTheAnnotations) {
    DrawingPath line;
    line.id = text("line");
    line.points = {{0, 0}, {1, 1}};
    line.color = Qt::red;
    editor.model().setDrawings({line});
    editor.model().extractText();
    settle();
    ASSERT_EQ(recognizer.images().size(), 1);
    EXPECT_EQ(recognizer.images().first().pixelColor(30, 20), QColor(Qt::green));
}

TEST_F(EditorScansTest, scanQrReadsThePixelsUnderTheAnnotations) {
    DrawingPath line;
    line.id = text("line");
    line.points = {{0, 0}, {1, 1}};
    line.color = Qt::red;
    editor.model().setDrawings({line});
    editor.model().scanQr();
    settle();
    ASSERT_EQ(detector.images().size(), 1);
    EXPECT_EQ(detector.images().first(), picture(Qt::green));
}

TEST_F(EditorScansTest, bothReadWhatACropLeft) {
    editor.model().toggleCropping();
    editor.model().dragCrop({0, 0}, {30, 20}, {60, 40});
    editor.model().applyCrop();
    editor.model().extractText();
    editor.model().scanQr();
    settle();
    ASSERT_EQ(recognizer.images().size(), 1);
    EXPECT_EQ(recognizer.images().first().size(), QSize(30, 20));
    ASSERT_EQ(detector.images().size(), 1);
    EXPECT_EQ(detector.images().first().size(), QSize(30, 20));
}

TEST_F(EditorScansTest, onlyAnAddressInSmallLettersIsOneForItsBubble) {
    detector.setPayloads({text("HTTP://EXAMPLE.ORG"), text("http://example.org")});
    editor.model().scanQr();
    settle();
    const auto bubbles = editor.findChildren<QRLabelBubble *>();
    ASSERT_EQ(bubbles.size(), 2);
    bubbles[0]->click();
    EXPECT_EQ(pasteboard.string(), text("HTTP://EXAMPLE.ORG"));
    EXPECT_TRUE(urlOpener.opened().isEmpty());
    bubbles[1]->click();
    EXPECT_EQ(urlOpener.opened(), QList<QUrl>{QUrl(text("http://example.org"))});
}

TEST_F(EditorScansTest, theButtonsOfTheScansHaveTheirSymbols) {
    for (const auto &[words, symbol] :
         {std::pair("Extract Text", "text.viewfinder"), {"Scan QR", "qrcode.viewfinder"}}) {
        const auto *scan = dynamic_cast<look::Button *>(button(editor, words));
        ASSERT_NE(scan, nullptr) << words;
        EXPECT_EQ(scan->symbol(), text(symbol));
    }
}

TEST_F(EditorScansTest, theSheetOpensWithTheTextAndGoesByCancel) {
    recognizer.setLines({text("found")});
    editor.model().extractText();
    settle();
    EXPECT_EQ(editor.findChild<OCRResultView *>(), nullptr);
    time.advance(Seconds{1.2});
    auto *sheet = editor.findChild<OCRResultView *>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->model().text(), text("found"));
    button(*sheet, "Cancel")->click();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(editor.findChild<OCRResultView *>(), nullptr);
    EXPECT_FALSE(model().showOCRResult());
}

TEST_F(EditorScansTest, aSecondReadingOpensASecondSheet) {
    recognizer.setLines({text("found")});
    for (int i = 0; i < 2; ++i) {
        editor.model().extractText();
        settle();
        time.advance(Seconds{1.2});
        auto *sheet = editor.findChild<OCRResultView *>();
        ASSERT_NE(sheet, nullptr) << i;
        QTest::keyClick(sheet->findChild<EditableTextView *>(), Qt::Key_Escape);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(EditorScansTest, theAnimationIsThereWhileCodesAreLookedFor) {
    editor.model().scanQr();
    EXPECT_NE(editor.findChild<ScanningAnimationView *>(), nullptr);
    settle();
    EXPECT_EQ(editor.findChild<ScanningAnimationView *>(), nullptr);
}

TEST_F(EditorScansTest, bubblesStandByTheRule) {
    detector.setCodes({{text("a"), {0.4, 0.5, 0.2, 0.2}}});
    editor.model().scanQr();
    settle();
    const auto *bubble = editor.findChild<QRLabelBubble *>();
    ASSERT_NE(bubble, nullptr);
    const QPointF wanted = bubbleCentre({0.4, 0.5, 0.2, 0.2}, editor.overlayLayer()->size());
    EXPECT_NEAR(QRectF(bubble->geometry()).center().x(), wanted.x(), 1);
    EXPECT_NEAR(QRectF(bubble->geometry()).center().y(), wanted.y(), 1);
}

TEST_F(EditorScansTest, bubblesFollowTheSizeOfThePicture) {
    detector.setCodes({{text("a"), {0.7, 0.2, 0.2, 0.2}}});
    editor.model().scanQr();
    settle();
    editor.resize(1300, 900);
    QCoreApplication::processEvents();
    const auto *bubble = editor.findChild<QRLabelBubble *>();
    const QPointF wanted = bubbleCentre({0.7, 0.2, 0.2, 0.2}, editor.overlayLayer()->size());
    EXPECT_NEAR(QRectF(bubble->geometry()).center().x(), wanted.x(), 1);
}

TEST_F(EditorScansTest, theButtonTakesTheBubblesAway) {
    detector.setPayloads({text("a"), text("b")});
    editor.model().scanQr();
    settle();
    EXPECT_EQ(editor.findChildren<QRLabelBubble *>().size(), 2);
    button(editor, "Hide the codes")->click();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(editor.findChildren<QRLabelBubble *>().isEmpty());
    EXPECT_EQ(button(editor, "Hide the codes"), nullptr);
    EXPECT_TRUE(model().qrAnnotations().isEmpty());
}

TEST_F(EditorScansTest, aCropTakesTheBubblesAway) {
    detector.setPayloads({text("a")});
    editor.model().scanQr();
    settle();
    editor.model().toggleCropping();
    editor.model().dragCrop({0, 0}, {30, 20}, {60, 40});
    editor.model().applyCrop();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(editor.findChildren<QRLabelBubble *>().isEmpty());
    EXPECT_TRUE(model().qrAnnotations().isEmpty());
}

TEST_F(EditorScansTest, withoutCodesTheToastComesAndGoes) {
    editor.model().scanQr();
    settle();
    PillView *toast = nullptr;
    for (auto *pill : editor.findChildren<PillView *>())
        if (pill->accessibleName() == text("No QR codes found in this image"))
            toast = pill;
    ASSERT_NE(toast, nullptr);
    EXPECT_TRUE(toast->isShown());
    time.advance(Seconds{2.5});
    EXPECT_FALSE(toast->isShown());
}

TEST_F(EditorScansTest, anEditorMayGoInTheMiddleOfBoth) {
    auto second = std::make_unique<EditorView>(
        picture(), EditorModel::Ports{time, pasteboard, panels, coder, center, QString(), fileQueue},
        EditorView::Actions{},
        EditorView::Hooks{
            .opened = {}, .extractText = EditorScans::extractText(ports), .scanQr = EditorScans::scanQr(ports)});
    recognizer.setLines({text("late")});
    second->model().extractText();
    second->model().scanQr();
    ASSERT_TRUE(test::eventually([&] { return recognizer.count() == 1; })); // one is being read, the other waits
    second.reset();
    settle();
    time.advance(Seconds{5}); // would touch freed memory
    EXPECT_EQ(recognizer.count(), 1);
}

} // namespace
} // namespace tavrine
