#include "shell/tools/EditorWindow.h"

#include "base/SerialQueue.h"
#include "capture/editor/DrawView.h"
#include "capture/editor/RecentImageTile.h"
#include "capture/editor/TavrineEditorContainerView.h"
#include "shell/ShellTest.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>

#include <array>

namespace tavrine {
namespace {

class EditorWindowShellTest : public ShellTest {
protected:
    void SetUp() override { launch(); }

    std::unique_ptr<QWidget> make(const EditorFlow::Window &wanted) {
        return makeEditorWindow(wanted,
                                {.ports = {time, desktop.pasteboard(), desktop.filePanels(), desktop.imageCoder(),
                                           center, desktop.folders().documents, files},
                                 .clipboardManager = manager(),
                                 .hooks = {},
                                 .toolkitRect = [](const QRectF &rect) { return rect.translated(7, 9); }},
                                [this] { ++closes; });
    }
    static QImage picture(int width, int height) {
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        return image;
    }
    static EditorFlow::Window single(const QImage &image) {
        return {text("Tavrine Snap Editor"), QRectF(100, 50, 900, 600), image, false};
    }
    static EditorFlow::Window landing(const std::optional<QImage> &image = {}) {
        return {text("Tavrine Editor"), QRectF(100, 50, 960, 660), image, true};
    }

    SerialQueue files{text("com.tavrine.editor")};
    int closes = 0;
};

TEST_F(EditorWindowShellTest, itStandsWhereItWasAskedForUnderItsTitle) {
    const auto window = make(single(picture(30, 20)));
    EXPECT_EQ(window->windowTitle(), text("Tavrine Snap Editor"));
    EXPECT_EQ(window->pos(), QPoint(107, 59));
    EXPECT_EQ(window->size(), QSize(900, 600));
    EXPECT_FALSE(window->isVisible());
    auto *editor = qobject_cast<EditorView *>(window.get());
    ASSERT_TRUE(editor);
    EXPECT_FALSE(editor->model().canOpenNewImage());
    editor->model().close();
    EXPECT_EQ(closes, 1);
}

TEST_F(EditorWindowShellTest, withThePageOtherPicturesCanBeOpened) {
    const auto window = make(landing(picture(30, 20)));
    auto *container = qobject_cast<TavrineEditorContainerView *>(window.get());
    ASSERT_TRUE(container && container->editor());
    EXPECT_TRUE(container->editor()->model().canOpenNewImage());
    const auto empty = make(landing());
    EXPECT_TRUE(qobject_cast<TavrineEditorContainerView *>(empty.get())->landing());
}

TEST_F(EditorWindowShellTest, thePageShowsTheImagesOfTheHistoryAsTheyCome) {
    manager().addItem(text("words"));
    manager().addItem(text("Copied Image"), manager().saveImage(picture(30, 20)));
    const auto window = make(landing());
    auto *container = qobject_cast<TavrineEditorContainerView *>(window.get());
    EXPECT_EQ(container->landing()->model().recentImages().size(), 1U);
    const std::optional<QString> name = manager().saveImage(picture(40, 20));
    manager().addItem(text("Copied Image"), name);
    EXPECT_EQ(container->landing()->model().recentImages().size(), 2U);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window->findChildren<RecentImageTile *>().size(), 2);
    // Thumbnails are the manager's, made once and kept by it.
    EXPECT_TRUE(container->landing()->model().thumbnail(*name));
    manager().thumbnailCache().removeAllObjects();
    EXPECT_FALSE(container->landing()->model().thumbnail(*name));
    time.advance(0ms);
    EXPECT_TRUE(container->landing()->model().thumbnail(*name));
    EXPECT_TRUE(manager().thumbnailCache().object(*name));
    container->landing()->model().openRecentImage(*name);
    ASSERT_TRUE(container->editor());
    EXPECT_EQ(container->editor()->model().shownImage().size(), QSize(40, 20));
    manager().addItem(text("Copied Image"), manager().saveImage(picture(50, 20))); // nobody is left to hear of it
}

TEST_F(EditorWindowShellTest, theTileOfARecordingGetsItsThumbnailLater) {
    const QString folder = manager().quickShotsDirectory().value();
    QFile movie(folder + text("/A.mp4"));
    ASSERT_TRUE(movie.open(QIODevice::WriteOnly));
    desktop.movieAsset().setFrame(picture(30, 20));
    manager().addItem(text("[Screen Recording] A"), text("A.mp4"));
    const auto window = make(landing());
    EditorLandingModel &model = qobject_cast<TavrineEditorContainerView *>(window.get())->landing()->model();
    EXPECT_FALSE(model.thumbnail(text("A.mp4")));
    time.advance(0ms);
    EXPECT_FALSE(model.thumbnail(text("A.mp4")));
    QStringList announced;
    QObject::connect(&model, &EditorLandingModel::thumbnailMade, &model,
                     [&](const QString &name) { announced.append(name); });
    desktop.movieAsset().answerAll();
    EXPECT_EQ(announced, QStringList{text("A.mp4")});
    EXPECT_TRUE(model.thumbnail(text("A.mp4")));
}

TEST_F(EditorWindowShellTest, aClosedEditorReleasesItsPictures) {
    bool isReleased = false;
    const auto release = [](void *flag) { *static_cast<bool *>(flag) = true; };
    static std::array<uchar, 64 * 64 * 4> pixels{};
    {
        QImage image(pixels.data(), 64, 64, QImage::Format_RGB32, release, &isReleased);
        QWidget *window = make(single(image)).release();
        image = {};
        largeWindows().keep(LargeWindows::Kind::editor, std::unique_ptr<QWidget>(window));
        window->show();
        QCoreApplication::processEvents();
        EXPECT_FALSE(isReleased);
        window->close();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(isReleased);
}

} // namespace
} // namespace tavrine
