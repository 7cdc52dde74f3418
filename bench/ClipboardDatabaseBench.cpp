// What the history costs at 1,000, 100,000 and 1,000,000 rows of 140 bytes.
//
// The rows are made once in the system's temporary folder and reused: the same rows on every machine, inserted in the
// order of their dates, as a history grows. Benchmarks that write work on a copy.

#include "base/Uuid.h"
#include "clipboard/ClipboardDatabase.h"

#include <QDir>
#include <QFile>

#include <random>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

namespace tavrine {
namespace {

constexpr double firstDate = 1'700'000'000.25;
constexpr double secondsBetweenCopies = 60.5;
constexpr int textLength = 140;
constexpr int inMemoryItems = 200;

QString folder() {
    return QDir::temp().filePath(QStringLiteral("tavrine-bench"));
}
QString fileOf(int rows) {
    return folder() + QStringLiteral("/clipboard-%1.db").arg(rows);
}

class Rows {
public:
    explicit Rows(int count) : m_count(count) {}

    [[nodiscard]] ClipboardItem next() {
        ClipboardItem item;
        item.id = QUuid(static_cast<uint>(m_random()), static_cast<ushort>(m_random()), 0x4abc, 0x9d, byte(), byte(),
                        byte(), byte(), byte(), byte(), byte());
        while (item.content.size() < textLength)
            item.content += word() + QLatin1Char(' ');
        item.content.truncate(textLength);
        item.date = Date{firstDate + m_made * secondsBetweenCopies};
        // A handful of each kind, spread over the whole history.
        item.isPinned = m_made % (m_count / 4) == 7;
        item.isSaved = m_made % (m_count / 4) == 11;
        if (m_made % (m_count / 40) == 5) {
            item.imageFileName = uuidString(item.id) + QStringLiteral(".png");
            item.content = QStringLiteral("Copied Image");
        }
        ++m_made;
        return item;
    }

private:
    uchar byte() { return static_cast<uchar>(m_random()); }
    QString word() {
        QString word;
        for (auto letters = 2 + m_random() % 8; letters > 0; --letters)
            word += QLatin1Char("etaoinshrdlucmfwypvbgkjqxzETAOIN"[std::min(m_random() % 32, m_random() % 32)]);
        return word;
    }

    int m_count;
    int m_made = 0;
    std::mt19937_64 m_random{20'240'229};
};

void make(int rows) {
    const QString path = fileOf(rows) + QStringLiteral(".unfinished");
    QFile::remove(path);
    { const ClipboardDatabase schemaOnly(path); }
    sqlite3 *db = nullptr;
    sqlite3_open(path.toUtf8().constData(), &db);
    sqlite3_exec(db, "PRAGMA synchronous=OFF; PRAGMA cache_size=-2000000; BEGIN;", nullptr, nullptr, nullptr);
    sqlite3_stmt *insert = nullptr;
    sqlite3_prepare_v2(db, "INSERT INTO items VALUES (?,?,?,?,?,?);", -1, &insert, nullptr);
    Rows source(rows);
    for (int i = 0; i < rows; ++i) {
        const ClipboardItem item = source.next();
        sqlite3_bind_text(insert, 1, uuidString(item.id).toUtf8().constData(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(insert, 2, item.content.toUtf8().constData(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_double(insert, 3, item.date.secondsSince1970);
        sqlite3_bind_int(insert, 4, item.isPinned);
        sqlite3_bind_int(insert, 5, item.isSaved);
        if (item.imageFileName)
            sqlite3_bind_text(insert, 6, item.imageFileName->toUtf8().constData(), -1, SQLITE_TRANSIENT);
        else
            sqlite3_bind_null(insert, 6);
        sqlite3_step(insert);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(db, "COMMIT;", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    QFile::rename(path, fileOf(rows));
}

/// The path of a database with so many rows, made when it is not there.
QString database(const benchmark::State &state) {
    const auto rows = static_cast<int>(state.range(0));
    QDir().mkpath(folder());
    if (!QFile::exists(fileOf(rows)))
        make(rows);
    return fileOf(rows);
}

void search(benchmark::State &state, const QString &query) {
    ClipboardDatabase db(database(state));
    std::size_t found = 0;
    for (auto _ : state) {
        const auto items = db.search(query, 500);
        found = items.size();
        benchmark::DoNotOptimize(items.data());
    }
    state.counters["found"] = static_cast<double>(found);
}

void searchForARareWord(benchmark::State &state) {
    search(state, QStringLiteral("Quixotic"));
}
void searchForSomeRows(benchmark::State &state) {
    search(state, QStringLiteral("nose"));
}
void searchForOneLetter(benchmark::State &state) {
    search(state, QStringLiteral("e"));
}
void searchForWhatIsNotAscii(benchmark::State &state) {
    search(state, QStringLiteral("größe"));
}

void loadCold(benchmark::State &state) {
    const QString path = database(state);
    for (auto _ : state) {
        ClipboardDatabase db(path);
        benchmark::DoNotOptimize(db.loadProtectedAndRecent({}, inMemoryItems).size());
    }
}

void loadWarm(benchmark::State &state) {
    ClipboardDatabase db(database(state));
    (void)db.loadProtectedAndRecent({}, inMemoryItems);
    for (auto _ : state)
        benchmark::DoNotOptimize(db.loadProtectedAndRecent({}, inMemoryItems).size());
}

/// The steps of one copy of a text that is in the history already, as the manager takes them.
class Copies {
public:
    explicit Copies(const benchmark::State &state)
        : m_path(fileOf(static_cast<int>(state.range(0))) + QStringLiteral(".copy")) {
        const QString source = database(state);
        QFile::remove(m_path);
        QFile::copy(source, m_path);
        m_db.emplace(m_path);
        m_items = m_db->loadProtectedAndRecent({}, inMemoryItems);
        m_now = m_items.back().date.secondsSince1970 + 1e6;
        cleanAndLoad(); // the first one of a run reads every row, and one an hour
    }
    ~Copies() {
        m_db.reset();
        QFile::remove(m_path);
    }
    Copies(const Copies &) = delete;
    Copies &operator=(const Copies &) = delete;

    ClipboardDatabase &db() { return *m_db; }
    void read() {
        m_item = m_items[m_items.size() - 1 - m_turn++ % (inMemoryItems / 2)];
        m_item.date = Date{m_now += 1.5};
        benchmark::DoNotOptimize(m_db->findDuplicate({}, m_item.content).has_value());
    }
    void remove() { m_db->remove(m_item.id); }
    void save() { m_db->save(m_item); }
    void cleanAndLoad() {
        (void)m_db->prune(true, Date{m_now - 604'800}, {});
        (void)m_db->prune(true, {}, 50);
        benchmark::DoNotOptimize(m_db->loadProtectedAndRecent({}, inMemoryItems).size());
    }

private:
    QString m_path;
    std::optional<ClipboardDatabase> m_db;
    std::vector<ClipboardItem> m_items;
    ClipboardItem m_item;
    std::size_t m_turn = 0;
    double m_now = 0;
};

void copyWhole(benchmark::State &state) {
    Copies copies(state);
    for (auto _ : state) {
        copies.read();
        copies.remove();
        copies.save();
        copies.cleanAndLoad();
    }
}

/// The same without the two statements that write, and so without the disk.
void copyBesidesItsCommits(benchmark::State &state) {
    Copies copies(state);
    for (auto _ : state) {
        copies.read();
        state.PauseTiming();
        copies.remove();
        copies.save();
        state.ResumeTiming();
        copies.cleanAndLoad();
    }
}

/// What the first copy of a run pays on top: both prunings read every row.
void firstCleaning(benchmark::State &state) {
    const QString path = database(state);
    for (auto _ : state) {
        state.PauseTiming();
        ClipboardDatabase db(path);
        (void)db.loadProtectedAndRecent({}, inMemoryItems);
        state.ResumeTiming();
        benchmark::DoNotOptimize(db.prune(true, Date{0}, {}).deletedCount);
        benchmark::DoNotOptimize(db.prune(true, {}, 50).deletedCount);
    }
}

void rows(benchmark::internal::Benchmark *bench) {
    bench->Arg(1'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(searchForARareWord)->Apply(rows);
BENCHMARK(searchForSomeRows)->Apply(rows);
BENCHMARK(searchForOneLetter)->Apply(rows);
BENCHMARK(searchForWhatIsNotAscii)->Apply(rows);
BENCHMARK(loadCold)->Apply(rows);
BENCHMARK(loadWarm)->Apply(rows);
BENCHMARK(firstCleaning)->Apply(rows);
BENCHMARK(copyWhole)->Apply(rows);
BENCHMARK(copyBesidesItsCommits)->Apply(rows);

} // namespace
} // namespace tavrine

BENCHMARK_MAIN();
