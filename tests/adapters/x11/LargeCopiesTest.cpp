#include "adapters/fake/FakeApplicationCatalog.h"
#include "adapters/fake/FakeLoginItem.h"
#include "adapters/fake/FakeMovieAsset.h"
#include "adapters/fake/FakeWorkspace.h"
#include "adapters/linux/QtTime.h"
#include "adapters/linux/TurboImageCoder.h"
#include "adapters/x11/X11PasteboardFixture.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardManager.h"
#include "support/ShadowMemory.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QTimer>

namespace tavrine {
namespace {

/// The most memory that was resident since it was last asked for.
double peakMegabytes() {
    QFile status(QStringLiteral("/proc/self/status"));
    double peak = 0;
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : status.readAll().split('\n')) {
            if (line.startsWith("VmHWM:"))
                peak = line.simplified().split(' ').value(1).toDouble() / 1024;
        }
    }
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
    return peak;
}

QByteArray encoded(QSize size, const char *format, int alpha = 255) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    if (qstrcmp(format, "tiff") == 0)
        writer.setCompression(1);
    QImage image(size, alpha < 255 ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            row[x] = qRgba(x / 64, y / 64, (x ^ y) / 128, alpha);
    }
    writer.write(image);
    return bytes;
}

/// Milliseconds so far in which this thread was ready to go on and other programs had the processors.
qint64 withheld() {
    QFile file(QStringLiteral("/proc/thread-self/schedstat"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() / 1'000'000 : 0;
}

/// The history at work on a real clipboard, and how long it keeps the main thread from anything else. What a busy
/// machine keeps from that thread is not of its doing, and does not count.
class LargeCopies : public X11PasteboardFixture {
protected:
    LargeCopies() {
        defaults.set(QStringLiteral("ClipboardMySaveSeeded"), true);
        start({});
        manager = std::make_unique<ClipboardManager>(ClipboardManager::Ports{
            time, defaults, pasteboard(), workspace, catalog, coder, movies, loginItem, folders, database});
        beat.start(1);
        QObject::connect(&beat, &QTimer::timeout, &beat, [this] {
            longest = std::max(longest, stall());
            beginStall();
        });
    }
    ~LargeCopies() override { manager.reset(); }

    void beginStall() {
        sinceBeat.start();
        withheldBefore = withheld();
    }
    [[nodiscard]] qint64 stall() const { return sinceBeat.elapsed() - (withheld() - withheldBefore); }

    struct Times {
        qint64 whole = 0, longestStall = 0;
        double peak = 0;
    };
    /// From the copy to its row.
    Times copy(TestOwner::Contents contents) {
        const size_t rows = manager->history().size();
        static_cast<void>(peakMegabytes());
        const double before = peakMegabytes();
        QElapsedTimer clock;
        clock.start();
        owner.own(std::move(contents));
        beginStall();
        longest = 0;
        EXPECT_TRUE(waitUntil([&] { return manager->history().size() > rows; }, 30000));
        longest = std::max(longest, stall()); // the row may have come in the stall itself
        return {clock.elapsed(), longest, peakMegabytes() - before};
    }

    static constexpr qint64 longestStall = 150;
    /// Of a few tries: the machine itself may stand still in one.
    template <class Try>
    static Times calmest(Try attempt) {
        Times times = attempt();
        for (int tries = 1; tries < 3 && times.longestStall >= longestStall; ++tries)
            times = attempt();
        return times;
    }

    QTemporaryDir home;
    Folders folders{home.path() + QStringLiteral("/share"), home.path(), home.path(), home.path()};
    QtTime time;
    NotificationCenter center;
    UserDefaults defaults{home.path() + QStringLiteral("/defaults.plist"), time, center};
    FakeWorkspace workspace;
    FakeApplicationCatalog catalog;
    TurboImageCoder coder;
    FakeMovieAsset movies;
    FakeLoginItem loginItem;
    ClipboardDatabase database{home.path() + QStringLiteral("/clipboard.db")};
    std::unique_ptr<ClipboardManager> manager;
    TestOwner owner;
    QTimer beat;
    QElapsedTimer sinceBeat;
    qint64 withheldBefore = 0;
    qint64 longest = 0;
};

TEST_F(LargeCopies, ofPicturesLeaveTheMainThreadAlone) {
    for (const auto &[target, format] : std::initializer_list<std::pair<const char *, const char *>>{
             {"image/png", "png"}, {"image/tiff", "tiff"}, {"image/jpeg", "jpeg"}}) {
        const QByteArray bytes = encoded(QSize(6000, 4000), format);
        const Times times = calmest([&, target = target] { return copy({{target, {.bytes = bytes}}}); });
        std::printf("24 megapixels of %s: recorded after %lld ms, longest stall %lld ms, %.0f MB at most\n", format,
                    static_cast<long long>(times.whole), static_cast<long long>(times.longestStall), times.peak);
        EXPECT_LT(times.longestStall, longestStall) << format << ": below 50 on a quiet machine";
    }
}

TEST_F(LargeCopies, ofTransparentPicturesTakeNoMoreMemoryThanOthers) {
    const QSize size(8000, 5000); // more than are converted beside the picture
    static_cast<void>(copy({{"image/png", {.bytes = encoded(size, "png")}}})); // what the first one needs once
    const double opaque = copy({{"image/png", {.bytes = encoded(size, "png")}}}).peak;
    const double transparent = copy({{"image/png", {.bytes = encoded(size, "png", 128)}}}).peak;
    std::printf("40 megapixels: %.0f MB at most, transparent %.0f\n", opaque, transparent);
    EXPECT_LT(transparent, opaque + 28 * test::shadows) << "planes beside the pixels would be 57 MB";
}

TEST_F(LargeCopies, ofTextLeaveTheMainThreadAlone) {
    static_cast<void>(copy({{"UTF8_STRING", {.bytes = "so that the history is not empty"}}}));
    QByteArray bytes(60'000'000, 'x');
    for (const char first : {'a', 'b'}) {
        bytes.front() = first;
        const Times measured = calmest([&] {
            ++bytes.back(); // equal ones would be one row
            return copy({{"UTF8_STRING", {.bytes = bytes}}});
        });
        std::printf("60 MB of text: recorded after %lld ms, longest stall %lld ms, %.0f MB at most\n",
                    static_cast<long long>(measured.whole), static_cast<long long>(measured.longestStall),
                    measured.peak);
        EXPECT_LT(measured.longestStall, longestStall) << "below 50 on a quiet machine";
    }
}

} // namespace
} // namespace tavrine
