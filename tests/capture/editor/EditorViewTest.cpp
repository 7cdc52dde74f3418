#include "capture/editor/EditorView.h"

#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/SerialQueue.h"
#include "capture/editor/CropOverlayView.h"
#include "capture/editor/DrawView.h"
#include "capture/editor/EditorStageView.h"
#include "capture/editor/RecentImageTile.h"
#include "capture/editor/RecentStripView.h"
#include "capture/editor/TavrineEditorContainerView.h"
#include "capture/editor/ToolButton.h"
#include "look/Button.h"
#include "look/PillView.h"
#include "upload/PlayedUpload.h"

#include <QApplication>
#include <QColorDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

QString str(const char *text) {
    return QString::fromUtf8(text);
}

QImage picture(int width, int height, const QColor &color = Qt::darkGreen) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

/// The container with everything in it, in a window, over fakes. Nothing moves, since there is no Look.
class EditorWindowTest : public testing::Test {
protected:
    void SetUp() override {
        make();
        window->resize(960, 660);
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    void make() {
        window = std::make_unique<TavrineEditorContainerView>(TavrineEditorContainerView::Parts{
            .ports = {time, pasteboard, panels, coder, center, home.path(), files},
            .hooks = {.opened = [this](EditorView &view) { opened = &view; },
                      .extractText = [this](EditorView &view) { extractedFrom = &view; },
                      .scanQr = [this](EditorView &view) { scannedIn = &view; }},
            .history = {.images = [this] { return images; },
                        .cachedThumbnail = [](const QString &) { return std::optional<QImage>(); },
                        .makeThumbnail =
                            [this](const QString &name) {
                                thumbnails.push_back(name.toStdString());
                                return std::optional<QImage>();
                            },
                        .loadImage = [](const QString &) { return std::optional(picture(33, 22)); }},
            .close = [this] { ++closes; }});
    }
    void edit(const QImage &image = picture(800, 400)) { window->select(image); }

    [[nodiscard]] EditorView &view() const { return *window->editor(); }
    [[nodiscard]] EditorModel &model() const { return view().model(); }
    [[nodiscard]] EditorStageView &stage() const { return *window->editor()->findChild<EditorStageView *>(); }
    [[nodiscard]] DrawView *canvas() const { return window->editor()->findChild<DrawView *>(); }
    [[nodiscard]] QAbstractButton *button(const char *name) const {
        for (QAbstractButton *each : window->findChildren<QAbstractButton *>()) {
            if (each->isVisible() && (each->text() == str(name) || each->accessibleName() == str(name)))
                return each;
        }
        return nullptr;
    }
    [[nodiscard]] std::vector<std::string> buttons() const {
        std::vector<std::string> names;
        for (QAbstractButton *each : window->findChildren<QAbstractButton *>()) {
            if (each->isVisible())
                names.push_back((each->text().isEmpty() ? each->accessibleName() : each->text()).toStdString());
        }
        return names;
    }
    [[nodiscard]] PillView *pill(const char *text) const {
        for (PillView *each : window->findChildren<PillView *>()) {
            if (each->accessibleName() == str(text))
                return each;
        }
        return nullptr;
    }
    /// The colour at a point: the tests run at one and at two pixels for each.
    [[nodiscard]] QColor at(const QImage &image, QPoint place) const {
        return image.pixelColor(place * window->devicePixelRatioF());
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(window->windowHandle(), key, modifiers);
    }
    void command(Qt::Key key) { press(key, Qt::ControlModifier); }
    void drag(QWidget *widget, QPoint from, QPoint to) {
        QTest::mousePress(widget, Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, widget->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &move);
        QTest::mouseRelease(widget, Qt::LeftButton, {}, to);
    }
    void wheel(QPoint place, int notches, Qt::KeyboardModifiers modifiers) {
        QWheelEvent event(place, stage().mapToGlobal(place), {}, QPoint(0, 120 * notches), Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&stage(), &event);
    }
    void startTyping(const char *text) {
        model().setCurrentTool(DrawingTool::text);
        QTest::mouseClick(canvas(), Qt::LeftButton, {}, QPoint(100, 100));
        ASSERT_TRUE(canvas()->activeTextField());
        QTest::keyClicks(canvas()->activeTextField(), str(text));
    }

    QTemporaryDir home;
    VirtualTime time;
    FakePasteboard pasteboard;
    test::PlayedUpload played{time, pasteboard};
    FakeFilePanels panels{time};
    FakeImageCoder coder;
    NotificationCenter center;
    SerialQueue files{QStringLiteral("com.tavrine.snip")};
    std::vector<RecentImage> images;
    std::vector<std::string> thumbnails;
    EditorView *opened = nullptr;
    EditorView *extractedFrom = nullptr;
    EditorView *scannedIn = nullptr;
    int closes = 0;
    std::unique_ptr<TavrineEditorContainerView> window;
};

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

TEST_F(EditorWindowTest, theStepperShowsWithTheStampTool) {
    edit();
    EXPECT_FALSE(button("Increase stamp number"));
    button("Number stamp")->click();
    QApplication::activePopupWidget()->close();
    ASSERT_TRUE(button("Increase stamp number"));
    EXPECT_FALSE(button("Decrease stamp number")->isEnabled());
    button("Increase stamp number")->click();
    EXPECT_EQ(model().nextStampNumber(), 2);
    button("Decrease stamp number")->click();
    EXPECT_EQ(model().nextStampNumber(), 1);
    button("Draw")->click();
    EXPECT_FALSE(button("Increase stamp number"));
}

TEST_F(EditorWindowTest, theToolsStayUnderThePointerWhenTheStepperComes) {
    for (const int width : {760, 960}) {
        window->resize(width, 660);
        edit();
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

// Drawing.

TEST_F(EditorWindowTest, theDialogOfColoursGoesWithItsPicture) {
    const auto choose = [this] {
        button("Annotation color")->click();
        QApplication::processEvents();
        for (QAbstractButton *each : QApplication::activePopupWidget()->findChildren<QAbstractButton *>())
            if (each->text() == str("Custom"))
                return each->click();
    };
    edit();
    choose();
    ASSERT_EQ(window->findChildren<QColorDialog *>().size(), 1);
    edit(picture(30, 20));
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window->findChildren<QColorDialog *>().size(), 0);
    choose();
    auto *dialog = window->findChild<QColorDialog *>();
    ASSERT_TRUE(dialog);
    dialog->setCurrentColor(Qt::darkYellow);
    EXPECT_EQ(model().selectedColor(), QColor(Qt::darkYellow));
}

TEST_F(EditorWindowTest, theDialogOfColoursStandsWhollyOnTheScreen) {
    edit();
    const QRect usable = window->screen()->availableGeometry();
    window->move(usable.bottomRight() - QPoint(60, 60));
    button("Color")->click();
    QApplication::activePopupWidget()->findChildren<QAbstractButton *>()[8]->click();
    auto *dialog = window->findChild<QColorDialog *>();
    ASSERT_TRUE(dialog);
    QApplication::processEvents();
    EXPECT_TRUE(usable.contains(dialog->frameGeometry()));
}

TEST_F(EditorWindowTest, aStrokeIsStoredInFractionsAndShowsThePill) {
    edit();
    EXPECT_FALSE(pill("Unsaved changes")->isVisible());
    drag(canvas(), {0, 0}, QPoint(canvas()->width() / 2, canvas()->height() / 2));
    ASSERT_EQ(model().drawings().size(), 1U);
    EXPECT_EQ(model().drawings()[0].points.back(), QPointF(0.5, 0.5));
    EXPECT_EQ(model().drawings()[0].lineWidth, 3.0);
    EXPECT_TRUE(pill("Unsaved changes")->isVisible());
    button("Save & Copy")->click();
    EXPECT_FALSE(pill("Unsaved changes")->isVisible());
    EXPECT_TRUE(pasteboard.image());
}

TEST_F(EditorWindowTest, theCanvasLiesExactlyOverThePictureAtEveryZoom) {
    edit(picture(3000, 2000));
    for (const Qt::Key key : {Qt::Key_0, Qt::Key_1, Qt::Key_Minus, Qt::Key_Plus}) {
        command(key);
        EXPECT_EQ(canvas()->geometry(), stage().imageRect());
    }
    window->resize(1100, 700);
    EXPECT_EQ(canvas()->geometry(), stage().imageRect());
}

TEST_F(EditorWindowTest, aPictureOfTwoPixelsAPointIsShownCroppedAndDrawnOnInItsPoints) {
    QImage image = picture(1600, 800);
    image.setDevicePixelRatio(2);
    edit(image);
    command(Qt::Key_1);
    EXPECT_EQ(stage().imageRect().size(), QSize(800, 400));
    EXPECT_EQ(stage().scale(), 1);
    drag(canvas(), {100, 200}, {700, 200});
    const QImage flat = model().flattenedImage();
    EXPECT_EQ(flat.size(), QSize(1600, 800));
    EXPECT_EQ(flat.devicePixelRatio(), 2);
    int thick = 0; // three points are six pixels
    for (int y = 380; y < 420; ++y)
        thick += flat.pixelColor(800, y) == QColor(0xFF, 0x3B, 0x30);
    EXPECT_EQ(thick, 6);
    model().toggleCropping();
    model().dragCrop({0, 0}, {0.5, 0.5}, {1, 1});
    model().applyCrop();
    command(Qt::Key_1);
    EXPECT_EQ(stage().imageRect().size(), QSize(800, 400)) << "a crop has a point for each pixel";
}

TEST_F(EditorWindowTest, zoomingTouchesNoStoredPoint) {
    edit(picture(3000, 2000));
    drag(canvas(), {10, 10}, {200, 150});
    const std::vector<DrawingPath> before = model().drawings();
    command(Qt::Key_1);
    EXPECT_EQ(stage().scale(), 1);
    wheel({300, 200}, 2, Qt::ControlModifier);
    EXPECT_GT(stage().scale(), 1.2);
    wheel({300, 200}, -1, Qt::NoModifier);
    wheel({300, 200}, -1, Qt::ShiftModifier);
    command(Qt::Key_0);
    EXPECT_TRUE(stage().isFit());
    EXPECT_EQ(model().drawings(), before);
}

TEST_F(EditorWindowTest, aFieldFollowsThePictureWhenItIsZoomed) {
    edit(picture(3000, 2000));
    startTyping("abc");
    const QPointF place = model().drawings().back().points.front();
    QLineEdit *field = canvas()->activeTextField();
    for (const double factor : {1.0, 2.0}) {
        wheel({300, 200}, int(4 * factor), Qt::ControlModifier);
        EXPECT_NEAR(field->x(), place.x() * canvas()->width(), 1);
        EXPECT_NEAR(field->y(), place.y() * canvas()->height(), 1);
    }
    window->resize(1100, 700);
    EXPECT_NEAR(field->x(), place.x() * canvas()->width(), 1);
    EXPECT_EQ(field->text(), str("abc"));
}

TEST_F(EditorWindowTest, whateverTheZoomOnlyWhatShowsIsKeptAndItIsSharp) {
    QImage image = picture(4000, 2000, Qt::white);
    image.setPixelColor(2000, 1000, Qt::black);
    edit(image);
    const QPoint middle = stage().imageRect().center();
    for (int i = 0; i < 30; ++i)
        wheel(middle, 1, Qt::ControlModifier);
    EXPECT_EQ(stage().scale(), ImageZoom::largest);
    EXPECT_EQ(canvas()->width(), 64000);
    const QPoint away = stage().rect().center() - stage().imageRect().topLeft() - QPoint(2000 * 16, 1000 * 16);
    wheel(middle, away.x() / 60, Qt::ShiftModifier); // a notch is 60 points
    wheel(middle, away.y() / 60, Qt::NoModifier);
    QApplication::processEvents();
    const QImage shown = stage().grab().toImage();
    const QPoint corner = stage().imageRect().topLeft() + QPoint(2000 * 16, 1000 * 16);
    ASSERT_TRUE(stage().rect().contains(QRect(corner, QSize(16, 16))));
    EXPECT_EQ(at(shown, corner), QColor(Qt::black));
    EXPECT_EQ(at(shown, corner + QPoint(15, 15)), QColor(Qt::black));
    EXPECT_EQ(at(shown, corner + QPoint(16, 16)), QColor(Qt::white));
    EXPECT_EQ(at(shown, corner - QPoint(1, 1)), QColor(Qt::white));
    // A stroke far from the canvas' corner, and what is moved into sight afterwards.
    const QPoint from = canvas()->mapFrom(&stage(), QPoint(100, 150));
    drag(canvas(), from, from + QPoint(200, 0));
    EXPECT_EQ(at(stage().grab().toImage(), {200, 150}), QColor(0xFF, 0x3B, 0x30));
    wheel({300, 200}, 2, Qt::NoModifier);
    EXPECT_EQ(at(stage().grab().toImage(), {200, 270}), QColor(0xFF, 0x3B, 0x30));
}

TEST_F(EditorWindowTest, theMiddleButtonMovesThePictureAndDrawsNothing) {
    edit(picture(3000, 2000));
    command(Qt::Key_1);
    const QRect before = stage().imageRect();
    const QPoint from = canvas()->mapFrom(&stage(), QPoint(300, 200));
    QTest::mousePress(canvas(), Qt::MiddleButton, {}, from);
    QMouseEvent move(QEvent::MouseMove, from, canvas()->mapToGlobal(from + QPoint(40, 30)), Qt::NoButton,
                     Qt::MiddleButton, {});
    QApplication::sendEvent(canvas(), &move);
    QTest::mouseRelease(canvas(), Qt::MiddleButton);
    EXPECT_EQ(stage().imageRect().topLeft() - before.topLeft(), QPoint(40, 30));
    EXPECT_TRUE(model().drawings().empty());
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

// Typing.

TEST_F(EditorWindowTest, undoDropsWhatIsBeingTyped) {
    edit();
    startTyping("half a wo");
    EXPECT_EQ(model().drawings().size(), 1U);
    button("Undo")->click();
    EXPECT_TRUE(model().drawings().empty());
    EXPECT_FALSE(canvas()->activeTextField());
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(model().drawings().empty());
}

TEST_F(EditorWindowTest, theFieldsOwnUndoStaysWithTheField) {
    edit();
    startTyping("abc");
    command(Qt::Key_Z);
    EXPECT_EQ(model().drawings().size(), 1U);
    EXPECT_TRUE(canvas()->activeTextField());
}

TEST_F(EditorWindowTest, anotherToolLeavesTheTypingAsItIs) {
    edit();
    startTyping("abc");
    model().setCurrentTool(DrawingTool::rectangle);
    ASSERT_TRUE(canvas()->activeTextField());
    EXPECT_EQ(canvas()->activeTextField()->text(), str("abc"));
    EXPECT_EQ(model().drawings()[0].text, str("abc"));
}

TEST_F(EditorWindowTest, escapeKeepsTheTextAndTheEditor) {
    edit();
    startTyping("abc");
    press(Qt::Key_Escape);
    EXPECT_FALSE(canvas()->activeTextField());
    ASSERT_EQ(model().drawings().size(), 1U);
    EXPECT_EQ(model().drawings()[0].text, str("abc"));
    EXPECT_EQ(model().currentTool(), DrawingTool::pen);
    EXPECT_EQ(closes, 0);
}

TEST_F(EditorWindowTest, copyingTakesWhatWasTypedSoFar) {
    edit();
    const QImage before = model().flattenedImage();
    startTyping("abc");
    button("Copy")->click();
    EXPECT_NE(pasteboard.image()->convertToFormat(before.format()), before);
}

TEST_F(EditorWindowTest, croppingKeepsWhatWasTypedAndDropsAnEmptyText) {
    edit();
    startTyping("abc");
    button("Crop image area")->click();
    ASSERT_EQ(model().drawings().size(), 1U);
    EXPECT_EQ(model().drawings()[0].text, str("abc"));
    press(Qt::Key_Escape);
    startTyping("  ");
    button("Crop image area")->click();
    EXPECT_EQ(model().drawings().size(), 1U);
}

TEST_F(EditorWindowTest, theWindowMayCloseWhileSomethingIsTyped) {
    edit();
    startTyping("abc");
    window.reset();
    time.advance(5s);
}

// Crop.

TEST_F(EditorWindowTest, cropModeGivesWayToADragAndReturnApplies) {
    edit();
    button("Crop image area")->click();
    EXPECT_FALSE(canvas());
    EXPECT_TRUE(pill("Drag selection box to crop")->isVisible());
    EXPECT_FALSE(button("Draw")->isEnabled());
    auto *overlay = window->findChild<CropOverlayView *>();
    ASSERT_TRUE(overlay);
    EXPECT_EQ(overlay->geometry(), stage().imageRect());
    drag(overlay, QPoint(overlay->width() / 2, overlay->height() / 2), QPoint(0, 0));
    press(Qt::Key_Return);
    EXPECT_EQ(model().shownImage().size(), QSize(400, 200));
    EXPECT_TRUE(canvas());
    EXPECT_EQ(canvas()->geometry(), stage().imageRect());
    EXPECT_FALSE(pill("Drag selection box to crop")->isVisible());
    EXPECT_TRUE(pill("Unsaved changes")->isVisible());
    EXPECT_TRUE(button("Draw")->isEnabled());
}

TEST_F(EditorWindowTest, aCropThatIsBeingDraggedKeepsItsPlaceOnThePictureWhenItIsZoomed) {
    edit(picture(3000, 2000));
    button("Crop image area")->click();
    auto *overlay = window->findChild<CropOverlayView *>();
    const auto dragTo = [overlay](double across, double down) {
        const QPointF place(overlay->width() * across, overlay->height() * down);
        QMouseEvent move(QEvent::MouseMove, place, overlay->mapToGlobal(place), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(overlay, &move);
    };
    QTest::mousePress(overlay, Qt::LeftButton, {}, QPoint(overlay->width() / 4, overlay->height() / 4));
    dragTo(0.5, 0.5);
    command(Qt::Key_1);
    dragTo(0.75, 0.5);
    const QRectF part = model().crop().rect();
    EXPECT_NEAR(part.x(), 0.25, 0.003);
    EXPECT_NEAR(part.y(), 0.25, 0.003);
    EXPECT_NEAR(part.right(), 0.75, 0.003);
}

TEST_F(EditorWindowTest, escapeAndCancelLeaveCropMode) {
    edit();
    button("Crop image area")->click();
    press(Qt::Key_Escape);
    EXPECT_FALSE(model().isCropping());
    EXPECT_TRUE(canvas());
    button("Crop image area")->click();
    button("Cancel")->click();
    EXPECT_FALSE(model().isCropping());
    EXPECT_EQ(model().shownImage().size(), QSize(800, 400));
}

TEST_F(EditorWindowTest, theButtonAppliesTheCrop) {
    edit();
    button("Crop image area")->click();
    model().dragCrop({0, 0}, {0.5, 1}, {1, 1});
    button("Apply Crop")->click();
    EXPECT_EQ(model().shownImage().size(), QSize(400, 400));
}

TEST_F(EditorWindowTest, undoInCropModeTakesAnAnnotationAndKeepsTheMode) {
    edit();
    drag(canvas(), {10, 10}, {100, 100});
    button("Crop image area")->click();
    command(Qt::Key_Z);
    EXPECT_TRUE(model().drawings().empty());
    EXPECT_TRUE(model().isCropping());
    EXPECT_TRUE(window->findChild<CropOverlayView *>());
}

TEST_F(EditorWindowTest, theOutsideOfTheSelectionIsDimmed) {
    edit();
    const auto colourAt = [this](double x, double y) {
        const QRect rect = stage().imageRect();
        return at(stage().grab().toImage(), rect.topLeft() + QPoint(int(rect.width() * x), int(rect.height() * y)));
    };
    const QColor plain = colourAt(0.2, 0.2);
    button("Crop image area")->click();
    model().dragCrop({0.5, 0.5}, {0.9, 0.9}, {1, 1});
    EXPECT_LT(colourAt(0.2, 0.2).lightness(), plain.lightness());
    EXPECT_EQ(colourAt(0.7, 0.7), plain);
}

// What others put over the picture.

TEST_F(EditorWindowTest, theOverlayLayerFollowsThePictureAndLetsClicksThroughBesideItsChildren) {
    edit();
    auto *bubble = new QWidget;
    bubble->setParent(view().overlayLayer());
    bubble->setGeometry(10, 10, 50, 20);
    bubble->show();
    EXPECT_EQ(view().overlayLayer()->geometry(), stage().imageRect());
    const QPoint corner = stage().imageRect().topLeft();
    EXPECT_EQ(stage().childAt(corner + QPoint(20, 20)), bubble);
    EXPECT_EQ(stage().childAt(corner + QPoint(200, 100)), canvas());
    command(Qt::Key_1);
    EXPECT_EQ(view().overlayLayer()->geometry(), stage().imageRect());
    const QPointer<QWidget> watched = bubble;
    button("Crop image area")->click();
    model().dragCrop({0, 0}, {0.5, 1}, {1, 1});
    press(Qt::Key_Return);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(watched);
}

TEST_F(EditorWindowTest, theScanningOverlayCoversThePictureUntilItIsTakenAway) {
    edit();
    view().setScanningOverlay(str("Extracting text…"));
    const QPoint middle = stage().geometry().center();
    EXPECT_NE(view().childAt(middle), canvas());
    view().setScanningOverlay({});
    EXPECT_EQ(view().childAt(middle), canvas());
}

TEST_F(EditorWindowTest, aSheetTakesTheKeysAndEscapeDismissesIt) {
    edit();
    drag(canvas(), {10, 10}, {100, 100});
    const QPointer<QWidget> sheet = new QWidget;
    sheet->setFocusPolicy(Qt::StrongFocus);
    sheet->setMinimumSize(200, 100);
    view().presentSheet(sheet);
    EXPECT_TRUE(sheet->isVisible());
    command(Qt::Key_Z);
    EXPECT_EQ(model().drawings().size(), 1U);
    press(Qt::Key_Escape);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(sheet);
    command(Qt::Key_Z);
    EXPECT_TRUE(model().drawings().empty());
}

// The landing page.

TEST_F(EditorWindowTest, theLandingPageFitsASmallScreen) {
    images = {{str("a.jpg"), time.now()}};
    pasteboard.copyFromOutside(picture(8, 8));
    make();
    window->setMinimumSize(1, 1); // as the window's maker has the last word
    window->resize(640, 352);
    window->show();
    time.advance(1s);
    QApplication::processEvents();
    ASSERT_TRUE(button("Paste from Clipboard"));
    std::vector<QRect> taken;
    for (QAbstractButton *each : window->findChildren<QAbstractButton *>()) {
        if (!each->isVisible())
            continue;
        const QRect place(each->mapTo(window.get(), QPoint()), each->size());
        const std::string name = each->text().toStdString() + each->accessibleName().toStdString();
        EXPECT_TRUE(window->rect().contains(place)) << name << ' ' << place.y() << ' ' << place.bottom();
        EXPECT_TRUE(std::none_of(taken.begin(), taken.end(), [&](const QRect &other) {
            return other.intersects(place);
        })) << name;
        taken.push_back(place);
    }
    EXPECT_GE(taken.size(), 4U);
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
