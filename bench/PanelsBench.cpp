// What a key press costs in the panels before anything is painted: in the clipboard search with its search of the
// database, at 1,000, 100,000 and 1,000,000 rows, in its filters alone, and in the emoji picker over the whole table.

#include "adapters/fake/FakeAlerts.h"
#include "adapters/fake/FakeApplicationCatalog.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakeLoginItem.h"
#include "adapters/fake/FakeMovieAsset.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeWorkspace.h"
#include "adapters/fake/VirtualTime.h"
#include "base/CaseInsensitiveText.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardManager.h"
#include "clipboard/ClipboardSearchModel.h"
#include "utilities/emoji/EmojiPickerModel.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

namespace tavrine {
namespace {

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

struct Panel {
    explicit Panel(int64_t rows) {
        fill(rows);
        manager = std::make_unique<ClipboardManager>(ClipboardManager::Ports{
            time, defaults, pasteboard, workspace, catalog, coder, movies, loginItem, folders, database});
        model = std::make_unique<ClipboardSearchModel>(ClipboardSearchModel::Ports{*manager, alerts, center, time});
    }

    // Lines of 140 characters; every tenth is a link, every hundredth not in ASCII, one in 5,000 pinned.
    void fill(int64_t rows) {
        sqlite3 *db = nullptr;
        sqlite3_open((folders.applicationSupport + text("/Tavrine/clipboard.db")).toUtf8().constData(), &db);
        const QByteArray insert =
            "INSERT INTO items(id,content,date,is_pinned) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n "
            "WHERE i<" +
            QByteArray::number(static_cast<qint64>(rows)) +
            ") SELECT printf('00000000-0000-4000-8000-%012d',i), CASE WHEN i%10=0 THEN 'https://example.com/page/'||i "
            "WHEN i%100=1 THEN 'eine Zeile über Straßen und Äpfel, Nummer '||i ELSE substr('a line of text as people "
            "copy it out of a page or a letter, long enough to fill a row of the panel and some more, number '||i||' "
            "'||hex(randomblob(40)),1,140) END, 1700000000+i, i%5000=1 FROM n;";
        sqlite3_exec(db, insert.constData(), nullptr, nullptr, nullptr);
        sqlite3_close(db);
    }

    QTemporaryDir home;
    Folders folders{home.path() + text("/share"), home.path(), home.path() + text("/Documents"),
                    home.path() + text("/tmp")};
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.path() + text("/defaults.plist"), time, center};
    FakePasteboard pasteboard;
    FakeWorkspace workspace;
    FakeApplicationCatalog catalog;
    FakeImageCoder coder;
    FakeMovieAsset movies;
    FakeLoginItem loginItem;
    FakeAlerts alerts;
    ClipboardDatabase database{folders.applicationSupport + text("/Tavrine/clipboard.db")};
    std::unique_ptr<ClipboardManager> manager;
    std::unique_ptr<ClipboardSearchModel> model;
};

/// From one query to the next, both with hits all over, in a few rows, or in none.
void clipboardKey(benchmark::State &state, const char *first, const char *second) {
    Panel panel(state.range(0));
    const QString queries[] = {text(first), text(second)};
    int i = 0;
    for (auto _ : state)
        panel.model->setQuery(queries[i++ % 2]);
    state.counters["visible"] = static_cast<double>(panel.model->visibleItems().size());
}
BENCHMARK_CAPTURE(clipboardKey, commonText, "te", "tex")
    ->Arg(1000)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(clipboardKey, rareText, "number 77", "number 777")
    ->Arg(1000)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(clipboardKey, noHit, "qqqqqx", "qqqqqxy")
    ->Arg(1000)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(clipboardKey, beyondAscii, "äpf", "Äpfe")
    ->Arg(1000)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);

/// The filters alone: 500 found rows, from category to category.
void clipboardCategory(benchmark::State &state) {
    Panel panel(1000);
    panel.model->setQuery(text("e"));
    for (auto _ : state)
        panel.model->moveCategory(+1);
}
BENCHMARK(clipboardCategory)->Unit(benchmark::kMicrosecond);

/// The text filter over 500 rows of 140 characters, none of which has the text: in ASCII, and with one other letter.
void textFilter(benchmark::State &state, const char *letter) {
    const QString row = text("a line of text as people copy it out of a page or a letter, long enough to fill a row of "
                             "the panel and some more, ") +
                        text(letter);
    const CaseInsensitiveText wanted(text("qqq"));
    int found = 0;
    for (auto _ : state) {
        for (int i = 0; i < 500; ++i)
            found += wanted.isIn(row) ? 1 : 0;
        benchmark::DoNotOptimize(found);
    }
}
BENCHMARK_CAPTURE(textFilter, ascii, "o")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(textFilter, beyondAscii, "ö")->Unit(benchmark::kMicrosecond);

struct Picker {
    QTemporaryDir home;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.path() + text("/defaults.plist"), time, center};
    EmojiPickerStore store{defaults, text(TAVRINE_EMOJI_TABLE)};
    EmojiPickerModel model{{store, center, time}};
};

void emojiKey(benchmark::State &state, const char *query) {
    Picker picker;
    const QString queries[] = {text(query), QString()};
    for (auto _ : state) {
        picker.model.setQuery(queries[0]);
        state.PauseTiming();
        if (picker.model.isEmpty())
            state.SkipWithError("nothing found");
        picker.model.setQuery(queries[1]);
        state.ResumeTiming();
    }
    state.counters["rows"] = static_cast<double>(picker.store.emojis().size());
}
BENCHMARK_CAPTURE(emojiKey, oneLetterThatNearlyAllHave, "a")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(emojiKey, oneWord, "heart")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(emojiKey, threeWords, "face with e")->Unit(benchmark::kMicrosecond);

void emojiTable(benchmark::State &state) {
    Picker picker;
    for (auto _ : state)
        benchmark::DoNotOptimize(EmojiPickerStore(picker.defaults, text(TAVRINE_EMOJI_TABLE)).emojis().size());
}
BENCHMARK(emojiTable)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tavrine

BENCHMARK_MAIN();
