#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeMovieAsset.h"
#include "adapters/fake/FakeMoviePlayers.h"
#include "adapters/fake/VirtualTime.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "recording/CountdownModel.h"
#include "recording/CountdownOverlayView.h"
#include "recording/FinishingView.h"
#include "recording/FloatingStopBarView.h"
#include "recording/RecorderTest.h"
#include "recording/RecordingBorderView.h"
#include "recording/ScreenRecordingPreviewView.h"
#include "recording/SeenViews.h"

#include <QLayout>
#include <QLineEdit>
#include <QTest>

namespace tavrine {
namespace {

using testing::Contains;
using testing::IsSupersetOf;

class StopBarView : public RecorderTest {};

TEST_F(StopBarView, itShowsTheTimeAndEndsTheRecordingInThreeWays) {
    record();
    FloatingStopBarView bar(*recorder);
    expectNames(bar);
    EXPECT_GE(bar.sizeHint().height(), 40);
    EXPECT_EQ(button(bar, "Restart")->toolTip(), text("Restart recording from 00:00"));
    EXPECT_EQ(button(bar, "Cancel")->toolTip(), text("Discard recording without saving"));
    button(bar, "Restart")->click();
    time.advance(1s);
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    awaitPicture();
    EXPECT_EQ(streams.streams().size(), 2U);
    button(bar, "Stop")->click();
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    recorder->previewModel()->pressDelete();
    record();
    button(bar, "Cancel")->click();
    EXPECT_FALSE(recorder->isRecording());
    settle();
    EXPECT_THAT(temporaryFiles(), IsEmpty());
}

TEST_F(StopBarView, itsButtonsHaveTheirSymbolsAndItsClockTheTime) {
    record();
    FloatingStopBarView bar(*recorder);
    bar.resize(bar.sizeHint());
    test::WordsDevice device(bar.size());
    bar.render(&device, {}, {}, QWidget::DrawChildren);
    EXPECT_THAT(test::symbolsOn(device),
                IsSupersetOf({text("arrow.counterclockwise"), text("xmark"), text("square.fill")}));
    const auto clock = [&bar] { // digit by digit, and then the button's word
        bar.resize(bar.sizeHint());
        return wordsOn(bar).join(QString()).left(5);
    };
    EXPECT_EQ(clock(), text("00:00"));
    time.advance(61s);
    EXPECT_EQ(clock(), text("01:01"));
    QStringList names;
    for (const auto *widget : bar.findChildren<QWidget *>())
        names << widget->accessibleName();
    EXPECT_THAT(names, Contains(text("Recording time 01:01")));
}

TEST_F(StopBarView, theDotFadesAndComesBackSlowlyAtBothEnds) {
    FakeAppearance appearance;
    const look::Look look(time, &appearance);
    record();
    FloatingStopBarView bar(*recorder);
    bar.show();
    QWidget *dot = bar.layout()->itemAt(0)->widget();
    const auto opacity = [dot] {
        QImage image(dot->size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        dot->render(&image, {}, {}, QWidget::DrawChildren);
        return image.pixelColor(image.rect().center()).alphaF();
    };
    const double faintest = 0.3;
    const auto expected = [&](double part) { return 1 - (1 - faintest) * look::easeInOut.at(part); };
    EXPECT_NEAR(opacity(), 1, 0.01);
    time.advance(160ms); // by the frames of 16 ms
    EXPECT_NEAR(opacity(), expected(0.2), 0.04);
    EXPECT_GT(opacity(), 1 - 0.2 * (1 - faintest)) << "slower than a straight line";
    time.advance(240ms);
    EXPECT_NEAR(opacity(), expected(0.5), 0.04);
    time.advance(400ms);
    EXPECT_NEAR(opacity(), faintest, 0.04);
    time.advance(400ms);
    EXPECT_NEAR(opacity(), expected(0.5), 0.04);
    time.advance(400ms);
    EXPECT_NEAR(opacity(), 1, 0.04);
    time.advance(800ms);
    EXPECT_NEAR(opacity(), faintest, 0.04) << "and so on";
}

TEST_F(StopBarView, itGrowsWhenItHasMoreToSay) {
    access.setMicrophone(MicrophoneAuthorization::authorized);
    auto &card = selectArea();
    card.pressMic();
    card.start();
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    FloatingStopBarView bar(*recorder);
    const QSize before = bar.sizeHint();
    QList<QSize> sizes;
    QObject::connect(&bar, &FloatingStopBarView::fittingSizeChanged, [&](const QSize &size) { sizes << size; });
    time.advance(1s);
    EXPECT_THAT(sizes, IsEmpty());
    mediaNow += 3s;
    time.advance(1s);
    ASSERT_EQ(sizes.size(), 1);
    EXPECT_GT(sizes.first().width(), before.width() + 100);
    const QRectF frame = recorder->floatingStopWindow()->frame();
    recorder->fitStopBar(sizes.first());
    const QRectF grown = recorder->floatingStopWindow()->frame();
    EXPECT_EQ(grown.size(), QSizeF(sizes.first()));
    EXPECT_EQ(grown.right(), frame.right()); // "Stop" stays under a pointer that is on its way there
    EXPECT_EQ(maxY(grown), maxY(frame));
}

TEST(BorderView, itsWindowIsTheLineOutsideOfTheArea) {
    RecordingBorderView view({100, 200, 320, 240}, 900);
    view.resize(1440, 900);
    view.show();
    const QRegion mask = view.mask();
    const QRect area(100, 900 - 200 - 240, 320, 240);
    EXPECT_TRUE((mask & area).isEmpty());
    EXPECT_EQ(mask.boundingRect(), area.adjusted(-4, -4, 4, 4)); // 6 wider, and half of the line's 2 on each side
    EXPECT_FALSE(mask.contains(QPoint(98, 600)));                // between the line and the area
    EXPECT_TRUE(mask.contains(QPoint(97, 600)));
}

TEST(BorderView, theLineIsRedTwoPointsWideAndAllOfItsWindow) {
    RecordingBorderView view({100, 200, 320, 240}, 900);
    view.resize(1440, 900);
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    view.render(&image, {}, {}, QWidget::DrawChildren);
    const QRect outer = QRect(100, 460, 320, 240).adjusted(-4, -4, 4, 4);
    const QRect inner = outer.adjusted(2, 2, -2, -2);
    int others = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const bool isLine = outer.contains(x, y) && !inner.contains(x, y);
            others += image.pixelColor(x, y) == (isLine ? QColor(0xFF, 0x3B, 0x30) : QColor(Qt::transparent)) ? 0 : 1;
        }
    EXPECT_EQ(others, 0);
}

TEST(Finishing, itIsCalledWhatItShowsAndIsAsHighAsTheBar) {
    const FinishingView view;
    EXPECT_EQ(view.accessibleName(), text("Finishing…"));
    EXPECT_EQ(view.sizeHint().height(), 44);
    EXPECT_GT(view.sizeHint().width(), 100);
}

class PreviewView : public testing::Test {
protected:
    [[nodiscard]] std::shared_ptr<ScreenRecordingPreviewModel> makeModel() {
        using Choice = ScreenRecordingPreviewModel::Choice;
        return std::make_shared<ScreenRecordingPreviewModel>(
            home.filePath(text("movie.mp4")), text("recording_1"), text("/home/ada/Films"),
            ScreenRecordingPreviewModel::Ports{asset, players, panels},
            ScreenRecordingPreviewModel::Actions{
                .onSave = [this](const Choice &choice) { calls << text("save ") + choice.fileName; },
                .onCopy = [this](const Choice &choice) { calls << text("copy ") + choice.fileName; },
                .onCancel = [this] { calls << text("delete"); },
                .onFolderChosen = [](const QString &) {}});
    }

    QTemporaryDir home;
    VirtualTime time;
    FakeMovieAsset asset;
    FakeMoviePlayers players{time};
    FakeFilePanels panels{time};
    QStringList calls;
    std::shared_ptr<ScreenRecordingPreviewModel> model = makeModel();
};

TEST_F(PreviewView, theMoviePlaysOnceItIsShown) {
    ScreenRecordingPreviewView view(model);
    view.resize(380, 430);
    EXPECT_TRUE(players.movies().empty());
    view.show();
    ASSERT_EQ(players.movies().size(), 1U);
    EXPECT_TRUE(players.movies().front()->isPlaying);
    view.hide();
    view.show();
    EXPECT_EQ(players.movies().size(), 1U);
    model->stop();
}

/// The rows that a picture fills.
QRect filled(const QImage &image, QRgb color) {
    QRect all;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixel(x, y) == color)
                all |= QRect(x, y, 1, 1);
    return all;
}

TEST_F(PreviewView, theMovieFillsItsPlaceInThePixelsOfTheScreen) {
    const QRgb colour = qRgb(1, 255, 2);
    players.setColor(colour);
    asset.setFacts(MovieFacts{.naturalSize = {400, 200}, .hasAudioTrack = true, .duration = 1s});
    QFile file(model->filePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ScreenRecordingPreviewView view(model);
    view.resize(380, 430);
    view.show();
    EXPECT_TRUE(filled(view.grab().toImage(), colour).isEmpty());
    model->load();
    asset.answer();
    time.runPending();
    const QImage image = view.grab().toImage();
    time.runPending();
    const QRect place = filled(image, colour);
    EXPECT_NEAR(double(place.width()) / place.height(), 2, 0.02);
    EXPECT_EQ(players.movies().front()->pictureSize, place.size());
    EXPECT_GT(place.width(), 300 * view.devicePixelRatioF());
    model->stop();
}

TEST_F(PreviewView, aMovieThatCannotBeShownAnyMoreLeavesNoPicture) {
    const QRgb colour = qRgb(1, 255, 2);
    players.setColor(colour);
    ScreenRecordingPreviewView view(model);
    view.resize(380, 430);
    view.show();
    time.runPending();
    EXPECT_FALSE(filled(view.grab().toImage(), colour).isEmpty());
    players.fail(text("why"));
    time.runPending();
    EXPECT_TRUE(filled(view.grab().toImage(), colour).isEmpty());
}

TEST_F(PreviewView, whatWentWrongStandsAboveTheMovie) {
    const auto hasLine = [](const QWidget &view, const char *words) {
        return std::ranges::any_of(view.findChildren<look::Label *>(),
                                   [&](const look::Label *label) { return label->text() == text(words); });
    };
    EXPECT_FALSE(hasLine(ScreenRecordingPreviewView(model), ""));
    model->setNotice(text("Recording stopped: the disk is full"));
    EXPECT_TRUE(hasLine(ScreenRecordingPreviewView(model), "Recording stopped: the disk is full"));
}

TEST_F(PreviewView, theControlsDoWhatTheySay) {
    ScreenRecordingPreviewView view(model);
    view.resize(380, 430);
    EXPECT_THAT(wordsOn(view), IsSupersetOf({text("Audio Track:"), text("Path:"), text("File Name")}));
    expectNames(view);
    auto *field = view.findChild<QLineEdit *>();
    EXPECT_EQ(field->text(), text("recording_1"));
    field->setText(text(" other "));
    button(view, "Save Video")->click();
    button(view, "Copy Video")->click();
    button(view, "Delete")->click();
    EXPECT_THAT(calls, ElementsAre(text("save other"), text("copy other"), text("delete")));
    button(view, "Include Audio")->click();
    EXPECT_TRUE(model->isMuted());
    EXPECT_FALSE(button(view, "Include Audio")->isChecked());
    button(view, "Change...")->click();
    EXPECT_EQ(panels.openPanels().size(), 1);
    EXPECT_EQ(button(view, "Copy Video")->toolTip(),
              text("Copy video file directly to macOS clipboard (Cmd+V to paste anywhere)"));
}

TEST_F(PreviewView, returnInTheNameSavesAndNowhereElse) {
    ScreenRecordingPreviewView view(model);
    QTest::keyClick(&view, Qt::Key_Return);
    EXPECT_THAT(calls, IsEmpty());
    QTest::keyClick(view.findChild<QLineEdit *>(), Qt::Key_Return);
    EXPECT_THAT(calls, ElementsAre(text("save recording_1")));
}

TEST_F(PreviewView, withoutSoundThereIsNothingToSwitch) {
    ScreenRecordingPreviewView view(model);
    QFile file(model->filePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    asset.setFacts(MovieFacts{.naturalSize = {10, 10}, .hasAudioTrack = false, .duration = 1s});
    model->load();
    asset.answer();
    EXPECT_FALSE(button(view, "Include Audio")->isEnabled());
    EXPECT_FALSE(button(view, "Include Audio")->isChecked());
}

/// The number that a countdown paints: what it is, how opaque, and how much larger than its letters.
struct PaintedNumber {
    QString text;
    double opacity = 0;
    double scale = 0;
};

PaintedNumber numberIn(QWidget &view) {
    test::WordsDevice device(view.size());
    view.render(&device, {}, {}, QWidget::DrawChildren);
    if (device.painted().empty())
        return {};
    const auto &word = device.painted().front();
    return {word.text, word.colour.alphaF(), word.place.height() / QFontMetricsF(word.font).height()};
}

TEST(CountdownView, eachNumberGrowsAndAppearsAnew) {
    VirtualTime time;
    look::Look look(time);
    auto model = std::make_shared<CountdownModel>(3, time, [] {});
    CountdownOverlayView view(model);
    view.resize(800, 600);
    view.show();
    model->appear();
    for (const char *number : {"3", "2", "1"}) {
        SCOPED_TRACE(number);
        time.advance(16ms);
        const PaintedNumber early = numberIn(view);
        EXPECT_LT(early.opacity, 0.2);
        EXPECT_NEAR(early.scale, 0.5 + 0.65 * early.opacity, 0.01);
        time.advance(484ms);
        const PaintedNumber late = numberIn(view);
        EXPECT_EQ(late.text, text(number));
        EXPECT_EQ(late.opacity, 1);
        EXPECT_NEAR(late.scale, 1.15, 1e-6);
        time.advance(500ms);
    }
}

TEST(CountdownView, itsWindowIsAsLargeAsItsDiscWhereNothingShowsThroughItAlsoWhenThatChanges) {
    VirtualTime time;
    look::Look look(time);
    look.setCompositing(true);
    CountdownOverlayView view(std::make_shared<CountdownModel>(3, time, [] {}));
    view.resize(800, 600);
    view.show();
    EXPECT_TRUE(view.mask().isEmpty()) << "all of it";
    look.setCompositing(false);
    EXPECT_EQ(view.mask().boundingRect(), QRect(312, 212, 176, 176));
    EXPECT_FALSE(view.mask().contains(QPoint(314, 214)));
    look.setCompositing(true);
    EXPECT_TRUE(view.mask().isEmpty());
}

TEST(CountdownView, itIsCalledWhatItShows) {
    VirtualTime time;
    auto model = std::make_shared<CountdownModel>(3, time, [] {});
    CountdownOverlayView view(model);
    view.resize(800, 600);
    view.show();
    model->appear();
    EXPECT_EQ(view.accessibleName(), text("Recording starts in 3"));
    time.advance(1s);
    EXPECT_EQ(view.accessibleName(), text("Recording starts in 2"));
}

} // namespace
} // namespace tavrine
