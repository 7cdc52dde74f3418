#include "adapters/pasteboard/ImageFileReader.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

/// A file system that hangs until it is told to go on. It outlives the test with the threads that are stuck in it.
struct HungFiles {
    std::optional<QByteArray> read(const QList<QByteArray> &paths) {
        std::unique_lock lock(mutex);
        begun.append(paths.first());
        changed.notify_all();
        if (paths.first().startsWith("hung"))
            changed.wait(lock, [this] { return isReleased; });
        return paths.first();
    }
    void done(const std::optional<QByteArray> &bytes) {
        const std::lock_guard lock(mutex);
        ended.append(bytes.value_or("none"));
        changed.notify_all();
    }
    void release() {
        const std::lock_guard lock(mutex);
        isReleased = true;
        changed.notify_all();
    }
    [[nodiscard]] bool waitFor(const std::function<bool()> &condition, std::chrono::milliseconds patience) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, patience, condition);
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool isReleased = false;
    QList<QByteArray> begun;
    QList<QByteArray> ended;
};

class ImageFileReaderTest : public testing::Test {
protected:
    ~ImageFileReaderTest() override { files->release(); }

    void read(const QByteArray &path) {
        reader.read({path}, [files = files](const std::optional<QByteArray> &bytes) { files->done(bytes); });
    }
    [[nodiscard]] bool begins(qsizetype count, std::chrono::milliseconds patience = std::chrono::seconds(5)) {
        return files->waitFor([&] { return files->begun.size() >= count; }, patience);
    }
    [[nodiscard]] bool ends(const QByteArray &path) {
        return files->waitFor([&] { return files->ended.contains(path); }, std::chrono::seconds(5));
    }

    std::shared_ptr<HungFiles> files = std::make_shared<HungFiles>();
    ImageFileReader reader{[files = files](const QList<QByteArray> &paths) { return files->read(paths); }};
};

TEST_F(ImageFileReaderTest, whatWasReadIsHandedOver) {
    read("picture");
    EXPECT_TRUE(ends("picture"));
}

TEST_F(ImageFileReaderTest, readsThatHangLeaveRoomForAnotherUpToTheLimit) {
    for (int i = 1; i < ImageFileReader::maxReads; ++i)
        read("hung");
    ASSERT_TRUE(begins(ImageFileReader::maxReads - 1));
    read("one");
    ASSERT_TRUE(ends("one"));
    read("two");
    EXPECT_TRUE(ends("two")) << "a read that has ended makes room";
}

TEST_F(ImageFileReaderTest, noMoreReadsThanTheLimitAreUnderWayAndOfTheOthersTheNewestAloneFollows) {
    for (int i = 0; i < ImageFileReader::maxReads; ++i)
        read("hung");
    ASSERT_TRUE(begins(ImageFileReader::maxReads));
    for (int i = 0; i < 20; ++i)
        read("replaced");
    read("newest");
    EXPECT_FALSE(begins(ImageFileReader::maxReads + 1, std::chrono::milliseconds(200)));
    files->release();
    ASSERT_TRUE(ends("newest"));
    EXPECT_FALSE(begins(ImageFileReader::maxReads + 2, std::chrono::milliseconds(200)));
    const std::lock_guard lock(files->mutex);
    EXPECT_FALSE(files->begun.contains("replaced"));
}

TEST_F(ImageFileReaderTest, aReadMayEndAfterTheReader) {
    {
        ImageFileReader shortLived([files = files](const QList<QByteArray> &paths) { return files->read(paths); });
        shortLived.read({"hung late"}, [files = files](const std::optional<QByteArray> &b) { files->done(b); });
        ASSERT_TRUE(begins(1));
    }
    files->release();
    EXPECT_TRUE(ends("hung late"));
}

} // namespace
} // namespace tavrine
