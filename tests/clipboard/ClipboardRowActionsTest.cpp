#include "clipboard/ClipboardRowActions.h"

#include "ManagerTest.h"

namespace tavrine {
namespace {

class RowThumbnailTest : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        start();
    }
    [[nodiscard]] ClipboardItem imageItem() {
        ClipboardItem item;
        item.imageFileName = manager->saveImage(picture(40, 20));
        EXPECT_TRUE(item.imageFileName);
        return item;
    }
};

TEST_F(RowThumbnailTest, isMadeAtOnceAndCached) {
    const ClipboardItem item = imageItem();
    manager->thumbnailCache().removeAllObjects();
    ASSERT_TRUE(clipboardRow::thumbnail(*manager, item));
    EXPECT_TRUE(manager->thumbnailCache().object(*item.imageFileName));
}

TEST_F(RowThumbnailTest, isTakenFromTheCacheAlsoWhenTheFileIsGone) {
    const ClipboardItem item = imageItem();
    manager->cacheThumbnail(picture(7, 5), *item.imageFileName);
    manager->removeImageFile(item.imageFileName);
    manager->cacheThumbnail(picture(7, 5), *item.imageFileName);
    const auto thumbnail = clipboardRow::thumbnail(*manager, item);
    ASSERT_TRUE(thumbnail);
    EXPECT_EQ(thumbnail->size(), QSize(7, 5));
}

TEST_F(RowThumbnailTest, aMissingFileHasNone) {
    ClipboardItem item;
    item.imageFileName = str("missing.png");
    EXPECT_EQ(clipboardRow::thumbnail(*manager, item), std::nullopt);
    EXPECT_EQ(manager->thumbnailCache().count(), 0);
}

TEST_F(RowThumbnailTest, aTextHasNone) {
    EXPECT_EQ(clipboardRow::thumbnail(*manager, ClipboardItem()), std::nullopt);
}

} // namespace
} // namespace tavrine
