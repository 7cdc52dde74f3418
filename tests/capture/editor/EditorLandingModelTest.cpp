#include "capture/editor/EditorLandingModel.h"

#include "EditorModelTest.h"
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/VirtualTime.h"

#include <QFile>
#include <QMimeData>
#include <QTemporaryDir>
#include <QUrl>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class EditorLandingModelTest : public testing::Test {
protected:
    void make() {
        model = std::make_unique<EditorLandingModel>(
            EditorLandingModel::Ports{time, pasteboard, panels, coder},
            EditorLandingModel::History{.images = [this] { return images; },
                                        .cachedThumbnail =
                                            [this](const QString &name) {
                                                return cached.contains(name) ? std::optional(cached[name])
                                                                             : std::nullopt;
                                            },
                                        .makeThumbnail = [this](const QString &name) -> std::optional<QImage> {
                                            made.push_back(name.toStdString());
                                            if (name.startsWith(str("broken")))
                                                return std::nullopt;
                                            return cached[name] = picture(4, 4);
                                        },
                                        .loadImage = [](const QString &name) -> std::optional<QImage> {
                                            return name.startsWith(str("broken")) ? std::nullopt
                                                                                  : std::optional(picture(12, 8));
                                        }},
            EditorLandingModel::Actions{
                .selectImage = [this](const QImage &image) { selected.push_back(image.size()); },
                .close = [this] { ++closes; }});
        QObject::connect(model.get(), &EditorLandingModel::thumbnailMade,
                         [this](const QString &name) { announced.push_back(name.toStdString()); });
    }
    void record(int count) {
        for (int i = 0; i < count; ++i)
            images.push_back({QStringLiteral("%1.jpg").arg(images.size()), time.now()});
    }
    QString file(const char *name, const char *contents) {
        const QString path = home.filePath(str(name));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        return path;
    }

    QTemporaryDir home;
    VirtualTime time;
    FakePasteboard pasteboard;
    FakeFilePanels panels{time};
    FakeImageCoder coder;
    std::vector<RecentImage> images;
    QHash<QString, QImage> cached;
    std::vector<std::string> made;
    std::vector<std::string> announced;
    std::vector<QSize> selected;
    int closes = 0;
    std::unique_ptr<EditorLandingModel> model;
};

// Recent images.

TEST_F(EditorLandingModelTest, thirtyImagesAreShownWhole) {
    record(30);
    make();
    EXPECT_EQ(model->recentImages().size(), 30U);
    EXPECT_EQ(model->recentImages(), images);
}

TEST_F(EditorLandingModelTest, ofThirtyOneTheFirstThirtyAreShown) {
    record(31);
    make();
    ASSERT_EQ(model->recentImages().size(), 30U);
    EXPECT_EQ(model->recentImages().front().fileName, str("0.jpg"));
    EXPECT_EQ(model->recentImages().back().fileName, str("29.jpg"));
}

TEST_F(EditorLandingModelTest, theListFollowsTheHistoryAndIsToldOnlyWhenItIsAnother) {
    make();
    int changes = 0;
    QObject::connect(model.get(), &EditorLandingModel::recentImagesChanged, [&changes] { ++changes; });
    EXPECT_THAT(model->recentImages(), IsEmpty());
    record(1);
    model->historyChanged();
    EXPECT_EQ(model->recentImages().size(), 1U);
    model->historyChanged();
    EXPECT_EQ(changes, 1);
}

TEST_F(EditorLandingModelTest, thumbnailsAreMadeOneInATurnTheLastAskedForFirst) {
    record(3);
    make();
    for (const RecentImage &image : images)
        EXPECT_FALSE(model->thumbnail(image.fileName));
    EXPECT_THAT(made, IsEmpty()); // not within the call
    time.advance(0ms);
    EXPECT_THAT(made, ElementsAre("2.jpg", "1.jpg", "0.jpg"));
    EXPECT_EQ(announced, made);
    EXPECT_TRUE(model->thumbnail(str("1.jpg")));
    EXPECT_EQ(made.size(), 3U);
}

TEST_F(EditorLandingModelTest, aThumbnailThatIsAskedForOftenIsMadeOnce) {
    record(1);
    make();
    static_cast<void>(model->thumbnail(str("0.jpg")));
    static_cast<void>(model->thumbnail(str("0.jpg")));
    time.advance(0ms);
    EXPECT_THAT(made, ElementsAre("0.jpg"));
}

TEST_F(EditorLandingModelTest, anUnreadableFileIsTriedOnceUntilTheHistoryChanges) {
    images.push_back({str("broken.jpg"), time.now()});
    make();
    EXPECT_FALSE(model->thumbnail(str("broken.jpg")));
    time.advance(0ms);
    EXPECT_FALSE(model->thumbnail(str("broken.jpg")));
    time.advance(0ms);
    EXPECT_THAT(made, ElementsAre("broken.jpg"));
    EXPECT_THAT(announced, ElementsAre("broken.jpg"));
    model->historyChanged();
    EXPECT_FALSE(model->thumbnail(str("broken.jpg")));
    time.advance(0ms);
    EXPECT_EQ(made.size(), 2U);
}

TEST_F(EditorLandingModelTest, aClickOnATileSelectsTheFullImage) {
    record(1);
    make();
    model->openRecentImage(str("0.jpg"));
    EXPECT_THAT(selected, ElementsAre(QSize(12, 8)));
    model->openRecentImage(str("broken.jpg"));
    EXPECT_EQ(selected.size(), 1U);
}

TEST_F(EditorLandingModelTest, theTimeTextNamesTodayYesterdayOrTheMonth) {
    const QLocale english(QLocale::English, QLocale::UnitedStates);
    const QTimeZone utc = QTimeZone::utc();
    const Date noon{1769860800.0}; // 2026-01-31 12:00
    const auto textOf = [&](Seconds ago) {
        return EditorLandingModel::timeText(noon - ago, noon, english, utc).toStdString();
    };
    EXPECT_EQ(textOf(0s), "12:00 PM, today");
    EXPECT_EQ(textOf(12h), "12:00 AM, today");
    EXPECT_EQ(textOf(12h + 1min), "11:59 PM, yesterday");
    EXPECT_EQ(textOf(36h), "12:00 AM, yesterday");
    EXPECT_EQ(textOf(36h + 1min), "11:59 PM, Jan");
    EXPECT_EQ(textOf(24h * 40), "12:00 PM, Dec");
    EXPECT_EQ(textOf(-24h), "12:00 PM, Feb"); // a clock that was put back
    EXPECT_EQ(EditorLandingModel::timeText(noon - 2h - 55min, noon, english, utc).toStdString(), "9:05 AM, today");
    // A calendar day is one of the place where the person is.
    EXPECT_EQ(EditorLandingModel::timeText(noon - 1h, noon, english, QTimeZone(12 * 3600)).toStdString(),
              "11:00 PM, yesterday");
}

// Paste.

TEST_F(EditorLandingModelTest, pasteIsOfferedOnlyWhileThereIsAnImage) {
    pasteboard.copyFromOutside(picture(5, 5));
    make();
    EXPECT_FALSE(model->canPaste());
    model->appear();
    EXPECT_FALSE(model->canPaste()); // the window opens first
    time.advance(0ms);
    EXPECT_TRUE(model->canPaste());
    pasteboard.copyFromOutside(str("words"));
    time.advance(499ms);
    EXPECT_TRUE(model->canPaste());
    time.advance(1ms);
    EXPECT_FALSE(model->canPaste());
}

TEST_F(EditorLandingModelTest, theSameContentsAreDecodedOnce) {
    pasteboard.copyFromOutside(picture(5, 5));
    make();
    model->appear();
    time.advance(10s);
    EXPECT_EQ(pasteboard.imageReadCount(), 1);
}

TEST_F(EditorLandingModelTest, aPageThatIsGoneLooksAtNoPasteboard) {
    make();
    model->appear();
    model->disappear();
    pasteboard.copyFromOutside(picture(5, 5));
    time.advance(5s);
    EXPECT_EQ(pasteboard.imageReadCount(), 0);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(EditorLandingModelTest, pastingSelectsTheImage) {
    make();
    model->paste();
    EXPECT_THAT(selected, IsEmpty());
    pasteboard.copyFromOutside(picture(5, 5));
    model->paste();
    EXPECT_THAT(selected, ElementsAre(QSize(5, 5)));
}

// Files and drops.

TEST_F(EditorLandingModelTest, aChosenFileIsSelected) {
    make();
    model->chooseImageFile();
    EXPECT_EQ(panels.openPanels().first().title, str("Select Image to Edit"));
    panels.choose(file("a.png", "fake picture 30 20\n"));
    time.advance(0ms);
    EXPECT_THAT(selected, ElementsAre(QSize(30, 20)));
    model->chooseImageFile();
    panels.cancel();
    time.advance(0ms);
    EXPECT_EQ(selected.size(), 1U);
}

TEST_F(EditorLandingModelTest, anAnswerAfterThePageIsGoneSelectsNothing) {
    make();
    model->chooseImageFile();
    model.reset();
    panels.choose(file("a.png", "fake picture 30 20\n"));
    time.advance(0ms);
    EXPECT_THAT(selected, IsEmpty());
}

TEST_F(EditorLandingModelTest, aDragOfAFileOrAnImageTargetsThePageUntilItLeaves) {
    make();
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(str("/somewhere/a.png"))});
    EXPECT_TRUE(model->dragEntered(files));
    EXPECT_TRUE(model->isTargeted());
    model->dragExited();
    EXPECT_FALSE(model->isTargeted());
    QMimeData image;
    image.setImageData(picture(3, 3));
    EXPECT_TRUE(model->dragEntered(image));
    QMimeData words;
    words.setText(str("words"));
    EXPECT_FALSE(model->dragEntered(words));
    EXPECT_FALSE(model->isTargeted());
}

TEST_F(EditorLandingModelTest, theFirstFileOfADropIsSelected) {
    make();
    QMimeData data;
    data.setUrls({QUrl(str("https://example.org/x.png")), QUrl::fromLocalFile(file("a.png", "fake picture 30 20\n")),
                  QUrl::fromLocalFile(file("b.png", "fake picture 9 9\n"))});
    data.setImageData(picture(3, 3));
    model->dragEntered(data);
    model->drop(data);
    EXPECT_THAT(selected, ElementsAre(QSize(30, 20)));
    EXPECT_FALSE(model->isTargeted());
}

TEST_F(EditorLandingModelTest, withoutAFileTheImageOfADropIsSelected) {
    make();
    QMimeData data;
    data.setUrls({QUrl(str("https://example.org/x.png"))});
    data.setImageData(picture(3, 3));
    model->drop(data);
    EXPECT_THAT(selected, ElementsAre(QSize(3, 3)));
}

TEST_F(EditorLandingModelTest, aDropOfNothingReadableDoesNothing) {
    make();
    QMimeData broken;
    broken.setUrls({QUrl::fromLocalFile(file("a.png", "no picture"))});
    broken.setImageData(picture(3, 3)); // the file was what was dropped
    model->drop(broken);
    QMimeData words;
    words.setText(str("words"));
    model->drop(words);
    QMimeData nothing;
    nothing.setImageData(QImage());
    model->drop(nothing);
    EXPECT_THAT(selected, IsEmpty());
}

TEST_F(EditorLandingModelTest, selectingMayDestroyIt) {
    pasteboard.copyFromOutside(picture(5, 5));
    bool isGone = false;
    std::unique_ptr<EditorLandingModel> other;
    other = std::make_unique<EditorLandingModel>(
        EditorLandingModel::Ports{time, pasteboard, panels, coder},
        EditorLandingModel::History{[] { return std::vector<RecentImage>(); }, {}, {}, {}},
        EditorLandingModel::Actions{[&](const QImage &) {
                                        other.reset();
                                        isGone = true;
                                    },
                                    {}});
    other->paste();
    EXPECT_TRUE(isGone);
}

TEST_F(EditorLandingModelTest, theHeadersButtonCloses) {
    make();
    model->close();
    EXPECT_EQ(closes, 1);
}

} // namespace
} // namespace tavrine
