// The bars, the keys and the landing page of the editor.
#include "EditorWindowTest.h"
#include "adapters/fake/FakeAppearance.h"
#include "look/Indicators.h"
#include "look/Look.h"

#include <algorithm>

namespace tavrine {
namespace {

// The bars.

TEST_F(EditorWindowTest, theButtonsReadAsTheyShould) {
    edit();
    for (const char *name : {"Take a new screenshot", "Open an image file to edit", "Crop image area", "Undo", "Draw",
                             "Highlighter", "Arrow", "Text", "Rectangle", "Circle", "Number stamp", "Erase", "Color",
                             "Extract Text", "Scan QR", "Copy", "Save"})
        EXPECT_THAT(buttons(), Contains(name));
    EXPECT_THAT(buttons(), Not(Contains("Upload")));
    EXPECT_EQ(button("Color")->toolTip(), str("Annotation color"));
    EXPECT_TRUE(button("Undo")->toolTip().contains(str("Ctrl+Z")));
}

TEST_F(EditorWindowTest, anEditorForOnePictureOpensNoOther) {
    EditorView single(picture(10, 10), {time, pasteboard, panels, coder, center, home.path(), files}, {}, {});
    single.show();
    for (QAbstractButton *each : single.findChildren<QAbstractButton *>())
        EXPECT_NE(each->accessibleName(), str("Open an image file to edit"));
    QTest::keyClick(&single, Qt::Key_O, Qt::ControlModifier);
    EXPECT_FALSE(panels.isOpen());
}

TEST_F(EditorWindowTest, copiedAndTheNumberOfTheNextStampAreFadedInto) {
    FakeAppearance appearance;
    const look::Look look(time, &appearance);
    edit();
    const auto isFading = [](const QWidget &widget) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return !widget.findChildren<QWidget *>().isEmpty();
    };
    QAbstractButton *copy = button("Copy");
    copy->click();
    EXPECT_EQ(copy->accessibleName(), str("Copied"));
    EXPECT_TRUE(isFading(*copy));
    time.advance(1s);
    EXPECT_FALSE(isFading(*copy));
    time.advance(1s);
    EXPECT_EQ(copy->accessibleName(), str("Copy"));
    EXPECT_TRUE(isFading(*copy));
    button("Number stamp")->click();
    time.advance(1s);
    look::Label *number = nullptr;
    for (auto *label : window->findChildren<look::Label *>())
        if (label->text() == str("number 1"))
            number = label;
    ASSERT_TRUE(number);
    EXPECT_FALSE(isFading(*number));
    for (const char *step : {"Increase stamp number", "Decrease stamp number"}) {
        button(step)->click();
        EXPECT_TRUE(isFading(*number)) << step;
        time.advance(1s);
        EXPECT_FALSE(isFading(*number));
    }
    window.reset(); // before the look
}

TEST_F(EditorWindowTest, theStepperShowsWithTheStampTool) {
    edit();
    EXPECT_FALSE(button("Increase stamp number"));
    button("Number stamp")->click();
    QApplication::activePopupWidget()->close();
    ASSERT_TRUE(button("Increase stamp number"));
    const auto shows = [this](const char *words) {
        const auto labels = window->findChildren<look::Label *>();
        return std::ranges::any_of(
            labels, [words](const look::Label *each) { return each->isVisible() && each->text() == str(words); });
    };
    EXPECT_TRUE(shows("number 1"));
    EXPECT_FALSE(button("Decrease stamp number")->isEnabled());
    button("Increase stamp number")->click();
    EXPECT_EQ(model().nextStampNumber(), 2);
    EXPECT_TRUE(shows("number 2"));
    QTest::mouseClick(canvas(), Qt::LeftButton, {}, {100, 100});
    EXPECT_TRUE(shows("number 3"));
    button("Undo")->click();
    EXPECT_TRUE(shows("number 2"));
    button("Decrease stamp number")->click();
    EXPECT_EQ(model().nextStampNumber(), 1);
    EXPECT_TRUE(shows("number 1"));
    button("Draw")->click();
    EXPECT_FALSE(button("Increase stamp number"));
}

TEST_F(EditorWindowTest, theToolsStayUnderThePointerWhenTheStepperComes) {
    for (const int width : {760, 960}) {
        window->resize(width, 660);
        edit();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // the editor before it
        QCoreApplication::processEvents();
        const auto places = [this] {
            std::vector<int> found;
            for (const ToolButton *each : window->findChildren<ToolButton *>())
                found.push_back(each->mapTo(window.get(), QPoint()).x());
            return found;
        };
        const std::vector<int> before = places();
        button("Number stamp")->click();
        QCoreApplication::processEvents();
        ASSERT_TRUE(button("Increase stamp number"));
        EXPECT_EQ(places(), before) << width;
    }
}

TEST_F(EditorWindowTest, inASmallWindowEveryControlIsThereAndCanBeReached) {
    edit();
    model().setUploadButton(played.makeButton(UploadButton::AfterLink::returnToIdle));
    model().setCurrentTool(DrawingTool::numberStamp);
    const size_t all = buttons().size();
    for (const QSize size : {QSize(1024, 575), QSize(900, 600), QSize(760, 480), QSize(683, 360), QSize(480, 320)}) {
        window->resize(size);
        QApplication::processEvents();
        ASSERT_EQ(window->size(), size);
        EXPECT_EQ(buttons().size(), all) << size.width();
        std::vector<QRect> taken;
        for (QAbstractButton *each : window->findChildren<QAbstractButton *>()) {
            if (!each->isVisible())
                continue;
            const QRect place(each->mapTo(window.get(), QPoint()), each->size());
            const std::string name = each->accessibleName().toStdString();
            EXPECT_TRUE(window->rect().contains(place)) << name << " at " << size.width();
            EXPECT_GE(place.width(), each->minimumSizeHint().width()) << name << " at " << size.width();
            EXPECT_TRUE(
                std::none_of(taken.begin(), taken.end(), [&](const QRect &other) { return other.intersects(place); }))
                << name << " at " << size.width();
            taken.push_back(place);
        }
        EXPECT_GE(stage().height(), 160);
    }
}

TEST_F(EditorWindowTest, theWordsOfTheBarGiveWayToTheirSymbolsAndComeBack) {
    edit();
    QApplication::processEvents();
    auto *copy = button("Copy");
    const int wide = copy->width();
    window->resize(520, 400);
    QApplication::processEvents();
    EXPECT_TRUE(copy->text().isEmpty());
    EXPECT_EQ(copy->accessibleName(), str("Copy"));
    copy->click();
    EXPECT_EQ(copy->accessibleName(), str("Copied"));
    EXPECT_TRUE(copy->text().isEmpty());
    window->resize(960, 660);
    QApplication::processEvents();
    EXPECT_EQ(copy->text(), str("Copied"));
    time.advance(2s);
    QApplication::processEvents();
    EXPECT_EQ(copy->width(), wide);
}

TEST_F(EditorWindowTest, copyReadsCopiedForAWhile) {
    edit();
    button("Copy")->click();
    EXPECT_TRUE(button("Copied"));
    EXPECT_EQ(pasteboard.image()->size(), QSize(800, 400));
    time.advance(2s);
    EXPECT_TRUE(button("Copy"));
}

TEST_F(EditorWindowTest, theUploadButtonShowsItsState) {
    edit();
    EXPECT_FALSE(button("Upload"));
    model().setUploadButton(played.makeButton(UploadButton::AfterLink::returnToIdle));
    ASSERT_TRUE(button("Upload"));
    button("Upload")->click();
    played.prepare();
    EXPECT_TRUE(button("Uploading"));
    EXPECT_FALSE(button("Uploading")->isEnabled());
    played.succeed();
    EXPECT_TRUE(button("Uploaded"));
    time.advance(2s);
    EXPECT_TRUE(button("Upload"));
    played.isShown = false;
    Q_EMIT model().uploadButton()->changed();
    EXPECT_FALSE(button("Upload"));
}

TEST_F(EditorWindowTest, whatIsLentIsCalledWithTheView) {
    edit();
    EXPECT_EQ(opened, &view());
    button("Extract Text")->click();
    button("Scan QR")->click();
    EXPECT_EQ(extractedFrom, &view());
    EXPECT_EQ(scannedIn, &view());
}

TEST_F(EditorWindowTest, theColoursAndAnyOtherCanBeChosen) {
    edit();
    button("Color")->click();
    QWidget *popover = QApplication::activePopupWidget();
    ASSERT_TRUE(popover);
    const auto choices = popover->findChildren<QAbstractButton *>();
    ASSERT_EQ(choices.size(), 9);
    EXPECT_EQ(choices[8]->text(), str("Custom"));
    choices[5]->click();
    EXPECT_EQ(model().selectedColor(), EditorModel::colorPresets()[5]);
    EXPECT_FALSE(QApplication::activePopupWidget());
    button("Color")->click();
    QApplication::activePopupWidget()->findChildren<QAbstractButton *>()[8]->click();
    auto *dialog = window->findChild<QColorDialog *>();
    ASSERT_TRUE(dialog);
    dialog->setCurrentColor(QColor(1, 2, 3));
    EXPECT_EQ(model().selectedColor(), QColor(1, 2, 3));
}

// Keys.

TEST_F(EditorWindowTest, theKeysDoWhatTheyAreKnownFor) {
    edit();
    drag(canvas(), {10, 10}, {100, 100});
    command(Qt::Key_C);
    EXPECT_TRUE(model().isCopied());
    command(Qt::Key_Z);
    EXPECT_TRUE(model().drawings().empty());
    command(Qt::Key_S);
    EXPECT_EQ(panels.savePanels().size(), 1);
    panels.cancel();
    time.advance(0ms);
    command(Qt::Key_O);
    EXPECT_EQ(panels.openPanels().size(), 1);
    command(Qt::Key_W);
    EXPECT_EQ(closes, 1);
}

TEST_F(EditorWindowTest, superIsTheCommandKeyAsWell) {
    edit();
    drag(canvas(), {10, 10}, {100, 100});
    press(Qt::Key_Z, Qt::MetaModifier);
    EXPECT_TRUE(model().drawings().empty());
}

TEST_F(EditorWindowTest, escapeAloneClosesNothing) {
    edit();
    drag(canvas(), {10, 10}, {100, 100});
    press(Qt::Key_Escape);
    EXPECT_EQ(closes, 0);
    EXPECT_EQ(model().drawings().size(), 1U);
}

// The landing page.

/// Whether none of the buttons in sight leaves the window or lies over another.
bool areApart(const QWidget &window) {
    std::vector<QRect> taken;
    for (const QAbstractButton *each : window.findChildren<QAbstractButton *>()) {
        if (!each->isVisible())
            continue;
        const QRect place(each->mapTo(&window, QPoint()), each->size());
        if (!window.rect().contains(place) ||
            std::any_of(taken.begin(), taken.end(), [&](const QRect &other) { return other.intersects(place); }))
            return false;
        taken.push_back(place);
    }
    return true;
}

TEST_F(EditorWindowTest, theLandingPageFitsASmallScreenAndLeavesTheRecentOnesWhereTheyHaveNoRoom) {
    images = {{str("a.jpg"), time.now()}};
    pasteboard.copyFromOutside(picture(8, 8));
    make();
    window->setMinimumSize(1, 1); // as the window's maker has the last word
    window->show();
    time.advance(1s);
    ASSERT_TRUE(button("Paste from Clipboard"));
    for (const auto &[height, count] : {std::pair(352, 3U), std::pair(400, 4U), std::pair(352, 3U)}) {
        window->resize(640, height);
        EXPECT_TRUE(QTest::qWaitFor([&, height = height, count = count] {
            return window->height() == height && buttons().size() == count && areApart(*window);
        })) << height
            << ": " << testing::PrintToString(buttons());
    }
}

TEST_F(EditorWindowTest, theLandingPageReadsAsItShould) {
    pasteboard.copyFromOutside(picture(5, 5));
    EXPECT_THAT(buttons(), ElementsAre("Close Editor", "Choose Image File…"));
    time.advance(500ms);
    EXPECT_THAT(buttons(), ElementsAre("Close Editor", "Choose Image File…", "Paste from Clipboard"));
    button("Close Editor")->click();
    EXPECT_EQ(closes, 1);
}

TEST_F(EditorWindowTest, pastingOpensTheEditor) {
    pasteboard.copyFromOutside(picture(5, 5));
    time.advance(500ms);
    command(Qt::Key_V);
    ASSERT_TRUE(window->editor());
    EXPECT_EQ(model().shownImage().size(), QSize(5, 5));
    EXPECT_FALSE(window->landing() && window->landing()->isVisible());
    time.advance(5s);
    EXPECT_EQ(time.timerCount(), 0); // nobody looks at the pasteboard any more
}

TEST_F(EditorWindowTest, theRecentPicturesAreTilesAndOnlyThoseInSightAreDecoded) {
    for (int i = 0; i < 31; ++i)
        images.push_back({QStringLiteral("%1.jpg").arg(i), time.now()});
    window->historyChanged();
    EXPECT_EQ(window->findChildren<RecentImageTile *>().size(), 30);
    ASSERT_TRUE(button("Scroll to end"));
    EXPECT_TRUE(QTest::qWaitFor([this] {
        time.advance(100ms);
        return thumbnails.size() >= 4;
    }));
    EXPECT_LE(thumbnails.size(), 8U);
    auto *strip = window->findChild<RecentStripView *>();
    EXPECT_FALSE(button("Scroll to start")->isEnabled());
    button("Scroll to end")->click();
    EXPECT_EQ(strip->offset(), strip->maximumOffset());
    EXPECT_FALSE(button("Scroll to end")->isEnabled());
    EXPECT_TRUE(QTest::qWaitFor([this] {
        time.advance(100ms);
        return testing::Value(thumbnails, Contains("29.jpg"));
    }));
    button("Scroll to start")->click();
    EXPECT_EQ(strip->offset(), 0);
}

TEST_F(EditorWindowTest, aTileOpensItsPicture) {
    images.push_back({str("0.jpg"), time.now()});
    window->historyChanged();
    auto *tile = window->findChild<RecentImageTile *>();
    ASSERT_TRUE(tile);
    EXPECT_EQ(tile->toolTip(), str("Click to edit this screenshot"));
    QTest::mouseClick(tile, Qt::LeftButton);
    ASSERT_TRUE(window->editor());
    EXPECT_EQ(model().shownImage().size(), QSize(33, 22));
}

TEST_F(EditorWindowTest, aDropOpensTheEditor) {
    QMimeData data;
    data.setImageData(picture(9, 7));
    QDragEnterEvent enter(QPoint(300, 300), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(window->landing(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    EXPECT_TRUE(window->landing()->model().isTargeted());
    QDropEvent drop(QPointF(300, 300), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(window->landing(), &drop);
    EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
    ASSERT_TRUE(window->editor());
    EXPECT_EQ(model().shownImage().size(), QSize(9, 7));
}

TEST_F(EditorWindowTest, aNewFileReplacesTheEditorWithAllThatWasDrawn) {
    edit();
    drag(canvas(), {10, 10}, {100, 100});
    const QPointer<EditorView> former = &view();
    QFile file(home.filePath(str("a.png")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("fake picture 30 20\n");
    file.close();
    command(Qt::Key_O);
    panels.choose(file.fileName());
    time.advance(0ms);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(former);
    EXPECT_EQ(model().shownImage().size(), QSize(30, 20));
    EXPECT_TRUE(model().drawings().empty());
    EXPECT_FALSE(pill("Unsaved changes")->isVisible());
}

} // namespace
} // namespace tavrine
