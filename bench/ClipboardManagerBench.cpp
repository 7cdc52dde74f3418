// What a copy costs the main thread: a text through the poll, and a picture of 24 megapixels. The cost of SQLite's
// commit stands apart, for it is the disk's.

#include "adapters/fake/FakeApplicationCatalog.h"
#include "adapters/fake/FakeLoginItem.h"
#include "adapters/fake/FakeMovieAsset.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeWorkspace.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/linux/TurboImageCoder.h"
#include "base/NotificationCenter.h"
#include "base/PrivateFiles.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardManager.h"
#include "clipboard/JpegLadder.h"
#include "ports/ImageCoder.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImageReader>
#include <QTemporaryDir>

#include <cmath>
#include <random>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

namespace tavrine {
namespace {

struct Bench {
    explicit Bench(int64_t rows) {
        if (rows > 0)
            fill(rows);
        manager = std::make_unique<ClipboardManager>(ClipboardManager::Ports{
            time, defaults, pasteboard, workspace, catalog, coder, movies, loginItem, folders, database});
        time.advance(ClipboardManager::pollInterval);
    }

    void fill(int64_t rows) {
        sqlite3 *db = nullptr;
        sqlite3_open((folders.applicationSupport + QStringLiteral("/Tavrine/clipboard.db")).toUtf8().constData(), &db);
        const QByteArray insert =
            "INSERT INTO items(id,content,date) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<" +
            QByteArray::number(static_cast<qint64>(rows)) +
            ") SELECT printf('00000000-0000-4000-8000-%012d',i), "
            "'a line of text as people copy it, number '||i, 1700000000+i FROM n;";
        sqlite3_exec(db, insert.constData(), nullptr, nullptr, nullptr);
        sqlite3_close(db);
    }

    QTemporaryDir home;
    Folders folders{home.path() + QStringLiteral("/share"), home.path(), home.path() + QStringLiteral("/Documents"),
                    home.path() + QStringLiteral("/tmp")};
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.path() + QStringLiteral("/defaults.plist"), time, center};
    FakePasteboard pasteboard;
    FakeWorkspace workspace;
    FakeApplicationCatalog catalog;
    TurboImageCoder coder;
    FakeMovieAsset movies;
    FakeLoginItem loginItem;
    ClipboardDatabase database{folders.applicationSupport + QStringLiteral("/Tavrine/clipboard.db")};
    std::unique_ptr<ClipboardManager> manager;
};

/// The whole tick that records a new text, the commit of its row included.
void copyThroughThePoll(benchmark::State &state) {
    Bench bench(state.range(0));
    int i = 0;
    for (auto _ : state) {
        state.PauseTiming();
        bench.pasteboard.copyFromOutside(QStringLiteral("a new text, number %1").arg(i++));
        state.ResumeTiming();
        bench.time.advance(ClipboardManager::pollInterval);
    }
}

/// The commit of one row alone, in the same database.
void commitAlone(benchmark::State &state) {
    Bench bench(state.range(0));
    int i = 0;
    for (auto _ : state) {
        ClipboardItem item;
        item.id = QUuid::createUuid();
        item.content = QStringLiteral("a new text, number %1").arg(i++);
        item.date = bench.time.now();
        bench.database.save(item);
    }
}

/// A later start of the program: the database opened and the manager made over it.
void startUp(benchmark::State &state) {
    Bench bench(state.range(0));
    bench.manager.reset();
    for (auto _ : state) {
        ClipboardDatabase database(bench.folders.applicationSupport + QStringLiteral("/Tavrine/clipboard.db"));
        const ClipboardManager manager({bench.time, bench.defaults, bench.pasteboard, bench.workspace, bench.catalog,
                                        bench.coder, bench.movies, bench.loginItem, bench.folders, database});
        benchmark::DoNotOptimize(manager.history().size());
    }
}

/// A tick that finds nothing new.
void idleTick(benchmark::State &state) {
    Bench bench(state.range(0));
    for (auto _ : state)
        bench.time.advance(ClipboardManager::pollInterval);
}

/// 6000 by 4000 pixels as from a camera in poor light: no factor brings them to 200000 bytes.
const QImage &photograph() {
    static const QImage image = [] {
        QImage made(6000, 4000, QImage::Format_ARGB32);
        std::minstd_rand random(7);
        for (int y = 0; y < made.height(); ++y) {
            auto *line = reinterpret_cast<QRgb *>(made.scanLine(y));
            for (int x = 0; x < made.width(); ++x) {
                const int base = 110 + static_cast<int>(70 * std::sin(x * 0.004) * std::cos(y * 0.007));
                const auto channel = [&] { return base + static_cast<int>(random() % 33U) - 16; };
                line[x] = qRgb(channel(), channel(), channel());
            }
        }
        return made;
    }();
    return image;
}

void decodePng(benchmark::State &state) {
    QByteArray png;
    QBuffer out(&png);
    out.open(QIODevice::WriteOnly);
    photograph().save(&out, "PNG");
    TurboImageCoder coder; // raises the allocation limit
    for (auto _ : state) {
        QBuffer in(&png);
        in.open(QIODevice::ReadOnly);
        benchmark::DoNotOptimize(QImageReader(&in).read());
    }
    state.counters["PNG bytes"] = static_cast<double>(png.size());
}

void saveImage(benchmark::State &state) {
    Bench bench(0);
    for (auto _ : state)
        benchmark::DoNotOptimize(bench.manager->saveImage(photograph()));
}

void prepareForEncoding(benchmark::State &state) {
    TurboImageCoder coder;
    for (auto _ : state)
        benchmark::DoNotOptimize(coder.bitmapRepresentation(photograph()));
}

void encodeWithFactor(benchmark::State &state) {
    TurboImageCoder coder;
    const auto source = coder.bitmapRepresentation(photograph());
    const double factor = jpegFactors[static_cast<size_t>(state.range(0))];
    qsizetype size = 0;
    for (auto _ : state)
        size = source->encode(factor)->size();
    state.counters["bytes"] = static_cast<double>(size);
    state.counters["factor"] = factor;
}

void judgeFactorByAPart(benchmark::State &state) {
    TurboImageCoder coder;
    const auto source = coder.bitmapRepresentation(photograph());
    const double factor = jpegFactors[static_cast<size_t>(state.range(0))];
    bool isLarger = false;
    for (auto _ : state)
        isLarger = source->isCertainlyLargerThan(jpegSizeLimit, factor);
    state.counters["certain"] = isLarger ? 1 : 0;
    state.counters["factor"] = factor;
}

void writeDurably(benchmark::State &state) {
    const QTemporaryDir folder;
    const QByteArray data(state.range(0), 'x');
    for (auto _ : state)
        writePrivateFile(folder.filePath(QStringLiteral("file")), data);
}

void makeThumbnail(benchmark::State &state) {
    Bench bench(0);
    const QString name = bench.manager->saveImage(photograph()).value();
    for (auto _ : state)
        benchmark::DoNotOptimize(bench.manager->makeThumbnail(name));
}

BENCHMARK(copyThroughThePoll)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(commitAlone)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(startUp)->Arg(0)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(idleTick)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(decodePng)->Unit(benchmark::kMillisecond);
BENCHMARK(saveImage)->Unit(benchmark::kMillisecond);
BENCHMARK(prepareForEncoding)->Unit(benchmark::kMillisecond);
BENCHMARK(encodeWithFactor)->DenseRange(0, 5)->Unit(benchmark::kMillisecond);
BENCHMARK(judgeFactorByAPart)->DenseRange(0, 4)->Unit(benchmark::kMillisecond);
BENCHMARK(writeDurably)->Arg(200'000)->Arg(2'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(makeThumbnail)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tavrine

int main(int argc, char **argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
