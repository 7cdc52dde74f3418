#include "CanvasFixture.h"
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/SerialQueue.h"
#include "capture/editor/EditorModel.h"
#include "capture/editor/Flattening.h"

#include <cstdio>

#include <sys/resource.h>

namespace tavrine {
namespace {

constexpr rlim_t megabyte = 1024 * 1024;

/// From now on this process gets that much more memory than it has, and no more.
bool leaveMemory(rlim_t bytes) {
    long pages = 0;
    std::FILE *const sizes = std::fopen("/proc/self/statm", "r");
    const bool isKnown = sizes && std::fscanf(sizes, "%ld", &pages) == 1;
    if (sizes)
        std::fclose(sizes);
    const rlim_t most = static_cast<rlim_t>(pages) * 4096 + bytes;
    const rlimit limit{most, most};
    return isKnown && setrlimit(RLIMIT_AS, &limit) == 0;
}

/// 122 MB.
QImage large(QImage::Format format) {
    QImage image(8000, 4000, format);
    image.fill(Qt::darkGreen);
    return image;
}

std::vector<DrawingPath> stroke() {
    return {drawing(DrawingKind::path, {{0.1, 0.1}, {0.9, 0.9}})};
}

/// Runs `isTrue` in a process of its own that has little memory left.
template <class Claim>
void expectWithLittleMemory(const Claim &isTrue) {
    EXPECT_EXIT(std::_Exit(leaveMemory(64 * megabyte) && isTrue() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(LittleMemory, thereIsNoFlattenedPicture) {
    const QImage opaque = large(QImage::Format_RGB32);
    const QImage clear = large(QImage::Format_ARGB32);
    EXPECT_FALSE(flattenedImage(opaque, stroke()).isNull()); // with enough of it
    expectWithLittleMemory([&] { return flattenedImage(opaque, stroke()).isNull(); });
    expectWithLittleMemory([&] { return flattenedImage(clear, {}).isNull(); });
    expectWithLittleMemory([&] { return !flattenedImage(opaque, {}).isNull(); }); // shares its pixels
}

TEST(LittleMemory, thereIsNoCroppedPicture) {
    const QImage picture = large(QImage::Format_RGB32);
    expectWithLittleMemory([&] { return !cropImage(picture, {0, 0, 1, 0.9}); });
    expectWithLittleMemory([&] { return cropImage(picture, {0, 0, 0.1, 0.1}).has_value(); });
}

TEST(LittleMemory, theEditorKeepsPictureAnnotationsAndPasteboard) {
    VirtualTime time;
    FakePasteboard pasteboard;
    FakeFilePanels panels{time};
    FakeImageCoder coder;
    NotificationCenter center;
    SerialQueue files{str("com.tavrine.snip")};
    EditorModel model(large(QImage::Format_RGB32), {time, pasteboard, panels, coder, center, {}, files}, {});
    model.setDrawings(stroke());
    expectWithLittleMemory([&] {
        model.copyFlattened();
        model.toggleCropping();
        model.dragCrop({0, 0}, {1, 0.9}, {1, 1});
        model.applyCrop();
        return pasteboard.clearCount() == 0 && !model.isCopied() && model.drawings().size() == 1 &&
               model.shownImage().height() == 4000 && !model.isCropping();
    });
}

} // namespace
} // namespace tavrine
