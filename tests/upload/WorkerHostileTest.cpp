// Scripts that mean harm, in the real worker. Each run must end with one whole record.

#include "adapters/fake/VirtualTime.h"
#include "upload/JSUploadEngine.h"
#include "upload/RealWorker.h"

namespace tavrine {
namespace {

using test::runWorker;
using test::WorkerRun;

constexpr int kib = 1024;

/// Through the engine, for what only the watchdog ends.
UploadScriptRunResult runInEngine(const char *script, double timeout) {
    VirtualTime time;
    JSUploadEngine engine(QStringLiteral(UPLOAD_WORKER), time);
    UploadScriptRunResult given;
    int calls = 0;
    engine.run(QString::fromUtf8(script), {}, {}, timeout, [&](const UploadScriptRunResult &result) {
        given = result;
        ++calls;
    });
    time.runPending();
    EXPECT_EQ(calls, 1);
    return given;
}

TEST(WorkerHostile, endlessScriptsEndAtTheLimit) {
    for (const char *script : {
             "for (;;);",
             "function uploadImage() { for (;;); }",
             "function uploadImage() { return new Promise(() => {}) }",
             "function uploadImage() { return { then() {} } }",
             "function uploadImage() { const f = () => Promise.resolve().then(f); return f() }",
             "function uploadImage() { return new Promise(() => setInterval(() => {}, 0)) }",
             "function uploadImage() { /(a+)+$/.test('a'.repeat(60) + 'b'); return 'u' }",
             "function uploadImage() { throw { toString() { for (;;); } } }",
             "function uploadImage() { const nest = () => ({ then(ok) { ok(nest()) } }); return nest() }",
             "function uploadImage() { Atomics.wait(new Int32Array(new SharedArrayBuffer(4)), 0, 0) }",
         }) {
        const UploadScriptRunResult result = runInEngine(script, 0.6);
        const bool isEnded = result.error == UploadScriptError::timeout(0.6) ||
                             (result.error && result.error->kind == UploadScriptError::Kind::runtimeError);
        EXPECT_TRUE(isEnded) << script;
    }
    EXPECT_EQ(runInEngine("function uploadImage() { for (;;); }", 0.6).error, UploadScriptError::timeout(0.6));
    EXPECT_EQ(runInEngine("function uploadImage() { return new Promise(() => {}) }", 0.6).error,
              UploadScriptError::timeout(0.6));
}

TEST(WorkerHostile, unboundedMemoryEndsTheScriptAndNotTheRecord) {
    for (const char *script : {
             "function uploadImage() { const all = []; for (;;) all.push(new Uint8Array(1 << 20).fill(1)); }",
             "function uploadImage() { let s = 'x'; for (;;) s += s; }",
             // Small objects by the thousand at a time: one after the other they take the interpreter half a minute.
             "function uploadImage() { const all = []; for (;;) all.push(JSON.parse('[' + '{},'.repeat(20000) + "
             "'{}]')); }",
             "function uploadImage() { const all = []; for (;;) all.push({ a: all.length, b: Array(1000).fill(0.5) }); "
             "}",
             "function uploadImage() { const all = []; for (let i = 0;; ++i) all.push('x'.repeat(1 << 20) + i + "
             "'!'.at(0)); }",
             "function uploadImage() { return 'x'.repeat(2 ** 30) + 'y'.repeat(2 ** 29) }",
             "function uploadImage() { const all = []; for (;;) all.push(new Array(1e6).fill(0)); }",
         }) {
        const WorkerRun run = runWorker(script);
        EXPECT_EQ(run.text("errorKind"), QStringLiteral("runtimeError")) << script;
        EXPECT_FALSE(run.text("errorMessage").isEmpty()) << script;
    }
}

TEST(WorkerHostile, aMillionLogsAreCutAndTold) {
    const WorkerRun run =
        runWorker("function uploadImage() { for (let i = 0; i < 1e6; ++i) console.log('line ' + i); return 'u' }");
    EXPECT_EQ(run.text("url"), QStringLiteral("u"));
    ASSERT_EQ(run.logs().size(), 1001);
    EXPECT_EQ(run.logs().at(999), QStringLiteral("line 999"));
    EXPECT_EQ(run.logs().last(), QStringLiteral("(The script logged more than is kept.)"));
}

TEST(WorkerHostile, aThousandLogsAreAllKept) {
    const WorkerRun run =
        runWorker("function uploadImage() { for (let i = 0; i < 1000; ++i) console.log(i); return 'u' }");
    ASSERT_EQ(run.logs().size(), 1000);
    EXPECT_EQ(run.logs().last(), QStringLiteral("999"));
}

TEST(WorkerHostile, longLinesAndMessagesAreCut) {
    const WorkerRun run = runWorker("function uploadImage() { console.log('é'.repeat(5000)); "
                                    "console.log('x'.repeat(8192)); throw 'm'.repeat(1e6) }");
    EXPECT_LE(run.logs().at(0).toUtf8().size(), 8 * kib);
    EXPECT_GT(run.logs().at(0).toUtf8().size(), 8 * kib - 8);
    EXPECT_TRUE(run.logs().at(0).endsWith(QStringLiteral("é…")));
    EXPECT_EQ(run.logs().at(1).size(), 8192);
    EXPECT_LE(run.text("errorMessage").toUtf8().size(), 16 * kib);
    EXPECT_TRUE(run.text("errorMessage").endsWith(QStringLiteral("m…")));
}

TEST(WorkerHostile, manyLongLogsAreCutInAll) {
    const WorkerRun run = runWorker(
        "function uploadImage() { for (let i = 0; i < 900; ++i) console.log('\\0'.repeat(8000)); return 'u' }");
    EXPECT_EQ(run.logs().size(), 66); // 65 lines of 8,000 bytes fit 512 KiB
    EXPECT_EQ(run.logs().last(), QStringLiteral("(The script logged more than is kept.)"));
}

TEST(WorkerHostile, aHugeResultIsRefused) {
    const WorkerRun run = runWorker("function uploadImage() { return 'x'.repeat(200e6) }");
    EXPECT_EQ(run.text("errorMessage"), QStringLiteral("The returned URL is longer than 256 KiB."));
}

TEST(WorkerHostile, aResultAtTheLimitIsWhole) {
    EXPECT_EQ(runWorker("function uploadImage() { return 'é'.repeat(131072) }").text("url").size(), 131072);
    EXPECT_EQ(runWorker("function uploadImage() { return 'é'.repeat(131072) + 'x' }").text("errorKind"),
              QStringLiteral("runtimeError"));
}

TEST(WorkerHostile, gamesWithPrototypesDoNotBreakTheRecord) {
    for (const char *game : {
             "Object.prototype.toJSON = () => 'x'; String.prototype.toJSON = () => 1; Array.prototype.toJSON = () => 2",
             "JSON.stringify = () => 'x'; JSON.parse = () => ({ url: 'evil' })",
             "Object.defineProperty(Object.prototype, 'url', { get() { throw 1 } }); Object.prototype.logs = 'x'",
             "Array.prototype.push = Array.prototype.join = () => { throw 1 }; Array.prototype[Symbol.iterator] = null",
             "Promise.prototype.then = () => {}; Promise.resolve = () => 'evil'; Promise = null",
             "Object.defineProperty(Promise, Symbol.species, { get() { throw 1 } })",
             "Function.prototype.call = Function.prototype.apply = Function.prototype.bind = () => 'evil'",
             "Object.defineProperty(Promise.prototype, 'constructor', { get() { return function () {} } })",
             "String = Number = Error = Uint8Array = Map = Set = Reflect = Object = null",
             "for (const k of Object.getOwnPropertyNames(String.prototype)) try { String.prototype[k] = () => { throw "
             "1 } } catch {}",
             "Object.setPrototypeOf(Error.prototype, new Proxy({}, { get() { throw 1 } }))",
         }) {
        const QString script =
            QString::fromUtf8(game) +
            QStringLiteral("\nasync function uploadImage() { await null; console.log('a %s', 'b'); return 'good' }");
        const WorkerRun run = runWorker(script);
        EXPECT_EQ(run.text("url"), QStringLiteral("good")) << game << run.bytes.constData();
        EXPECT_EQ(run.logs(), QStringList{QStringLiteral("a b")}) << game;
    }
}

TEST(WorkerHostile, aReasonThatThrowsIsStillAReason) {
    for (const char *thrown : {
             "{ toString() { throw 1 } }",
             "{ get toString() { throw 1 }, get message() { throw 2 } }",
             "new Proxy({}, { get() { throw 1 }, ownKeys() { throw 2 }, getPrototypeOf() { throw 3 } })",
             "Object.create(null)",
             "{ [Symbol.toPrimitive]() { return {} } }",
             "(() => { const e = new Error('x'); Object.defineProperty(e, 'name', { get() { throw 1 } }); return e "
             "})()",
         }) {
        for (const char *way : {"throw %1", "return Promise.reject(%1)"}) {
            const QString script = QStringLiteral("function uploadImage() { ") +
                                   QString::fromLatin1(way).arg(QString::fromLatin1(thrown)) + QStringLiteral(" }");
            const WorkerRun run = runWorker(script);
            EXPECT_EQ(run.text("errorKind"), QStringLiteral("runtimeError")) << thrown;
            EXPECT_FALSE(run.text("errorMessage").isEmpty()) << thrown;
        }
    }
}

TEST(WorkerHostile, aHostileThenableIsARuntimeError) {
    for (const char *value : {"{ get then() { throw new Error('no') } }", "{ then(ok, no) { no(new Error('no')) } }",
                              "{ then() { throw new Error('no') } }"}) {
        const QString script = QStringLiteral("function uploadImage() { return %1 }").arg(QLatin1String(value));
        EXPECT_EQ(runWorker(script).text("errorMessage"), QStringLiteral("Error: no")) << value;
    }
    EXPECT_EQ(runWorker("function uploadImage() { return { then(ok, no) { ok('first'); no('second'); ok('third') } } }")
                  .text("url"),
              QStringLiteral("first"));
}

TEST(WorkerHostile, deepRecursionIsAnError) {
    for (const char *script :
         {"function uploadImage() { return uploadImage() + 1 }",
          "function uploadImage() { const a = []; let b = a; for (let i = 0; i < 1e5; ++i) b = b[0] = []; return "
          "JSON.stringify(a) }",
          "function uploadImage() { return new Function('return ' + '('.repeat(1e5) + ')'.repeat(1e5))() }"})
        EXPECT_EQ(runWorker(script).text("errorKind"), QStringLiteral("runtimeError")) << script;
    const QString deep = QStringLiteral("(").repeated(200'000);
    EXPECT_EQ(runWorker(deep).text("errorKind"), QStringLiteral("syntaxError"));
}

TEST(WorkerHostile, loggingHostileObjectsIsSafe) {
    const WorkerRun run = runWorker(R"js(function uploadImage() {
        console.log(new Proxy({}, { ownKeys() { throw 1 }, getOwnPropertyDescriptor() { throw 2 }, getPrototypeOf() { throw 3 } }));
        const endless = new Proxy({}, { getPrototypeOf: () => endless }); console.log(endless);
        console.log({ toString() { throw 1 }, [Symbol.toPrimitive]() { throw 2 } });
        console.log('%s', Object.create(null)); console.log('%d', { valueOf() { throw 1 } });
        const e = new Error('x'); Object.defineProperty(e, 'stack', { get() { throw 1 } }); console.log(e);
        console.log(Object.assign([], { length: 1e9 })); console.log(new Array(1e9));
        console.log('x'.repeat(1e8)); console.log(Array.from({ length: 1e5 }, (_, i) => ({ i })));
        return 'u' })js");
    EXPECT_EQ(run.text("url"), QStringLiteral("u"));
    EXPECT_EQ(run.logs().size(), 10);
}

TEST(WorkerHostile, halvesOfSurrogatePairsBecomeReplacementCharacters) {
    const WorkerRun run =
        runWorker("function uploadImage() { console.log('a\\ud800b', ['\\udc00']); return 'u\\ud83d\\ude0e\\ud83d' }");
    EXPECT_EQ(run.text("url"), QStringLiteral("u😎\uFFFD"));
    EXPECT_TRUE(run.logs().at(0).startsWith(QStringLiteral("a\uFFFDb")));
    EXPECT_EQ(QString::fromUtf8(run.bytes).toUtf8(), run.bytes);
}

TEST(WorkerHostile, controlCharactersSurviveTheRecord) {
    EXPECT_EQ(runWorker("function uploadImage() { return '\\0\\x01\"\\\\\\u2028\\x7f' }").text("url"),
              QString::fromUtf8("\0\x01\"\\\xE2\x80\xA8\x7f", 8));
}

} // namespace
} // namespace tavrine
