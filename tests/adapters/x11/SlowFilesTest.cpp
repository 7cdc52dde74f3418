#include "adapters/pasteboard/PasteboardImage.h"
#include "adapters/x11/SelectionThread.h"
#include "adapters/x11/X11PasteboardFixture.h"
#include "ports/Pasteboard.h"

#include <QTemporaryDir>

#include <condition_variable>

namespace tavrine {
namespace {

/// Files that are read only when the test says so.
struct SlowFiles {
    std::optional<QByteArray> read(const QList<QByteArray> &paths) {
        std::unique_lock lock(mutex);
        ++begun;
        changed.wait(lock, [this] { return isReleased; });
        return pasteboardImage::firstImageFile(paths, 1024 * 1024);
    }
    void release() {
        const std::lock_guard lock(mutex);
        isReleased = true;
        changed.notify_all();
    }
    [[nodiscard]] int count() {
        const std::lock_guard lock(mutex);
        return begun;
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool isReleased = false;
    int begun = 0;
};

/// Copied files on a file system that takes its time.
class SlowFilesTest : public X11PasteboardFixture {
protected:
    SlowFilesTest() {
        EXPECT_TRUE(coloured(12, 11).save(path));
        owner.own({{"text/uri-list", {.bytes = QUrl::fromLocalFile(path).toEncoded() + "\r\n"}}});
        EXPECT_TRUE(waitUntil([&] { return files->count() == 1; }));
    }
    ~SlowFilesTest() override { files->release(); }

    [[nodiscard]] QList<Publication> published() {
        const std::lock_guard lock(mutex);
        return publications;
    }

    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.png"));
    std::shared_ptr<SlowFiles> files = std::make_shared<SlowFiles>();
    ImageFileReader reader{[files = files](const QList<QByteArray> &paths) { return files->read(paths); }};
    std::mutex mutex;
    QList<Publication> publications;
    SelectionThread thread{shortLimits(), reader, [this](const Publication &publication) {
                               const std::lock_guard lock(mutex);
                               publications.append(publication);
                           }};
    TestRequestor requestor;
    TestOwner owner;
};

TEST_F(SlowFilesTest, thePictureIsToldOfThoughTheFileManagerEndsRightAfterTheCopy) {
    const xcb_window_t before = requestor.owner();
    owner.end();
    ASSERT_TRUE(waitUntil([&] { return requestor.hasOwnerOtherThan(before); }));
    EXPECT_TRUE(requestor.paste("text/uri-list")) << "the copied file can be pasted at once";
    EXPECT_TRUE(published().isEmpty()) << "the change is told of with its picture";
    files->release();
    ASSERT_TRUE(waitUntil([&] { return !published().isEmpty(); }));
    EXPECT_EQ(published().first().changes, 1);
    EXPECT_EQ(published().first().contents->types, QStringList(QLatin1String(pasteboardType::fileUrl)));
    EXPECT_EQ(published().first().contents->images.size(), 1);
    EXPECT_FALSE(waitUntil([&] { return published().size() > 1; }, 200));
    EXPECT_TRUE(requestor.paste("text/uri-list"));
}

TEST_F(SlowFilesTest, aFileThatIsNeverReadIsGivenUpInTimeThoughTheFileManagerHasEnded) {
    owner.end();
    ASSERT_TRUE(waitUntil([&] { return !published().isEmpty(); }, 3000));
    EXPECT_EQ(published().first().changes, 1);
    EXPECT_TRUE(published().first().contents->images.isEmpty());
}

TEST_F(SlowFilesTest, aCopyAfterTheEndOfTheFileManagerReplacesItsPicture) {
    owner.end();
    TestOwner next;
    next.ownText("next");
    ASSERT_TRUE(waitUntil([&] { return !published().isEmpty(); }));
    EXPECT_EQ(published().first().changes, 2);
    EXPECT_EQ(published().first().contents->text, "next");
    files->release();
    EXPECT_FALSE(waitUntil([&] { return published().size() > 1; }, 200));
}

} // namespace
} // namespace tavrine
