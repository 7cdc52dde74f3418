// The real worker, by its records: what it promises the program and the script.

#include "upload/RealWorker.h"

#include <QFile>

#include <unistd.h>

namespace tavrine {
namespace {

using test::runWorker;
using test::runWorkerOn;
using test::shown;
using test::WorkerRun;

void expectEnd(const WorkerRun &run, const char *kind, const char *message) {
    EXPECT_FALSE(run.record.contains(QStringLiteral("url")));
    EXPECT_EQ(run.text("errorKind"), QLatin1String(kind));
    EXPECT_EQ(run.text("errorMessage"), QString::fromUtf8(message));
}

// ---- The ends of a run ----

TEST(WorkerContract, aStringIsTheUrl) {
    const WorkerRun run = runWorker("function uploadImage(image, name) { return 'https://h/' + image + name }");
    EXPECT_EQ(run.text("url"), QStringLiteral("https://h/aGVsbG8=shot.png"));
    EXPECT_FALSE(run.record.contains(QStringLiteral("errorKind")));
    EXPECT_TRUE(run.logs().isEmpty());
}

TEST(WorkerContract, aPromiseOfAStringIsTheUrl) {
    EXPECT_EQ(runWorker("function uploadImage() { return Promise.resolve('p') }").text("url"), QStringLiteral("p"));
    EXPECT_EQ(runWorker("async function uploadImage() { return 'a' }").text("url"), QStringLiteral("a"));
    EXPECT_EQ(runWorker("const uploadImage = (i, n) => new Promise(ok => setTimeout(ok, 20, n))").text("url"),
              QStringLiteral("shot.png"));
}

TEST(WorkerContract, aNestedThenableIsFollowedToItsEnd) {
    const WorkerRun run = runWorker(R"js(
        const nest = (depth) => ({ then(ok) { depth ? ok(nest(depth - 1)) : ok('deep') } });
        function uploadImage() { return nest(200) })js");
    EXPECT_EQ(run.text("url"), QStringLiteral("deep"));
}

TEST(WorkerContract, aSyntaxFailureHasTheEnginesWords) {
    expectEnd(runWorker("function uploadImage( {"), "syntaxError", "SyntaxError: Unexpected end of script");
}

TEST(WorkerContract, aScriptWithoutTheFunctionIsTold) {
    for (const char *script :
         {"", "// uploadImage", "var uploadImage = 'x'", "const uploadImage = {}", "function upload() {}"})
        EXPECT_EQ(runWorker(script).text("errorKind"), QStringLiteral("missingFunction")) << script;
}

TEST(WorkerContract, whatIsThrownIsTheMessage) {
    expectEnd(runWorker("function uploadImage() { throw new Error('boom') }"), "runtimeError", "Error: boom");
    expectEnd(runWorker("function uploadImage() { throw 'text' }"), "runtimeError", "text");
    expectEnd(runWorker("function uploadImage() { return Promise.reject(new TypeError('bad')) }"), "runtimeError",
              "TypeError: bad");
    expectEnd(runWorker("async function uploadImage() { null.x }"), "runtimeError",
              "TypeError: null is not an object (evaluating 'null.x')");
    expectEnd(runWorker("throw new Error('at the top')"), "runtimeError", "Error: at the top");
    expectEnd(runWorker("function uploadImage() { throw { code: 7 } }"), "runtimeError", "{ code: 7 }");
    expectEnd(runWorker("function uploadImage() { throw undefined }"), "runtimeError", "undefined");
    expectEnd(runWorker("function uploadImage() { throw Symbol('s') }"), "runtimeError", "Symbol(s)");
}

TEST(WorkerContract, anErrorThatNobodyCatchesEndsTheRun) {
    expectEnd(
        runWorker(
            "function uploadImage() { return new Promise(() => setTimeout(() => { throw new Error('late') }, 5)) }"),
        "runtimeError", "Error: late");
    expectEnd(runWorker("function uploadImage() { return new Promise(() => queueMicrotask(() => { throw 'micro' })) }"),
              "runtimeError", "micro");
}

TEST(WorkerContract, whatIsNoFullStringIsAnInvalidReturnValue) {
    for (const char *value : {"", "''", "undefined", "null", "7", "true", "{}", "[]", "new String('u')",
                              "Promise.resolve()", "Promise.resolve('')", "Promise.resolve(3)", "Symbol('s')", "10n"}) {
        const QString script = QStringLiteral("function uploadImage() { return %1 }").arg(QLatin1String(value));
        EXPECT_EQ(runWorker(script).text("errorKind"), QStringLiteral("invalidReturnValue")) << value;
    }
}

TEST(WorkerContract, inputThatIsNoRecordGivesARecordAllTheSame) {
    for (const char *input : {"", "x", "[]", "{}", R"({"script":1,"imageBase64":"","fileName":""})",
                              R"({"script":"","imageBase64":""})", "\xFF\xFE"}) {
        const WorkerRun run = runWorkerOn(input);
        expectEnd(run, "runtimeError", "The upload worker could not read its input.");
    }
}

TEST(WorkerContract, aWorkerThatNobodyWaitsForEnds) {
    QProcess pipeline; // ends when all its programs have
    const QString input =
        QStringLiteral(R"({"script":"function uploadImage() { for (;;); }","imageBase64":"","fileName":""})");
    pipeline.start(QStringLiteral("bash"), {QStringLiteral("-c"), QStringLiteral("printf %s \"$0\" | \"$1\" | true"),
                                            input, QStringLiteral(UPLOAD_WORKER)});
    EXPECT_TRUE(pipeline.waitForFinished(10'000));
}

TEST(WorkerContract, theScriptsProcessEndsWithTheOther) {
    QProcess process;
    process.start(QStringLiteral(UPLOAD_WORKER), {});
    process.write(R"({"script":"function uploadImage() { for (;;); }","imageBase64":"","fileName":""})");
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForStarted());
    const QString children = QStringLiteral("/proc/%1/task/%1/children").arg(process.processId());
    pid_t child = 0;
    for (int i = 0; i < 500 && child == 0; ++i) {
        QFile file(children);
        if (file.open(QIODevice::ReadOnly))
            child = file.readAll().trimmed().toInt();
        process.waitForReadyRead(10);
    }
    ASSERT_GT(child, 0);
    process.kill();
    ASSERT_TRUE(process.waitForFinished(10'000));
    bool isGone = false;
    for (int i = 0; i < 500 && !isGone; ++i) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(child));
        isGone = !stat.open(QIODevice::ReadOnly) || stat.readAll().contains(") Z ");
        if (!isGone)
            usleep(10'000);
    }
    EXPECT_TRUE(isGone);
}

// ---- Locks that cannot be applied ----

TEST(WorkerContract, whereALockCannotBeAppliedItRefusesToRunAndSaysSo) {
    const std::pair<const char *, const char *> steps[] = {{"seccomp", "seccomp: "},
                                                           {"landlock_create_ruleset", "landlock: "},
                                                           {"prlimit64", "memory: "},
                                                           {"prctl", "no_new_privs: "}};
    for (const auto &[call, step] : steps) {
        QProcess process;
        process.start(QStringLiteral(WITHOUT_CALL), {QLatin1String(call), QStringLiteral(UPLOAD_WORKER)});
        process.write(R"({"script":"function uploadImage() { return 'u' }","imageBase64":"","fileName":""})");
        process.closeWriteChannel();
        ASSERT_TRUE(process.waitForFinished(20'000));
        const QJsonObject record = QJsonDocument::fromJson(process.readAllStandardOutput()).object();
        EXPECT_FALSE(record.contains(QStringLiteral("url"))) << call;
        EXPECT_TRUE(record.value(QStringLiteral("logs")).isArray()) << call;
        const QString message = record.value(QStringLiteral("errorMessage")).toString();
        EXPECT_TRUE(message.startsWith(QStringLiteral("The upload worker could not lock")))
            << call << message.toStdString();
        EXPECT_TRUE(message.contains(QLatin1String(step))) << call << message.toStdString();
    }
}

// ---- The console ----

TEST(WorkerContract, everyConsoleFunctionReachesTheLogs) {
    const WorkerRun run = runWorker(R"js(function uploadImage() {
        console.log('log', 1); console.info('info'); console.warn('warn'); console.error('error'); console.debug('debug');
        console.assert(true, 'no'); console.assert(false, 'yes', 2);
        console.group('g'); console.log('in'); console.groupEnd(); console.log('out');
        console.count(); console.count(); console.table([1]); console.dir({ a: 1 });
        return 'u' })js");
    EXPECT_EQ(
        run.logs().join(QLatin1Char('|')),
        QStringLiteral(
            "log 1|info|warn|error|debug|Assertion failed: yes 2|g|  in|out|default: 1|default: 2|[ 1 ]|{ a: 1 }"));
}

TEST(WorkerContract, logsOfAFailedRunAreKept) {
    EXPECT_EQ(runWorker("console.log('a'); function uploadImage() { console.log('b'); throw 1 }").logs(),
              (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
}

TEST(WorkerContract, aFormatIsFilledIn) {
    EXPECT_EQ(shown("'%s is %d years, %i, %f', 'Bob', '42', 42.9, '1.5'"), QStringLiteral("Bob is 42 years, 42, 1.5"));
    EXPECT_EQ(shown("'%o %O %j', {a:'x'}, [1], null"), QStringLiteral("{ a: 'x' } [ 1 ] null"));
    EXPECT_EQ(shown("'%s %s', 'one'"), QStringLiteral("one %s"));
    EXPECT_EQ(shown("'100%', 'a'"), QStringLiteral("100% a"));
    EXPECT_EQ(shown("'%% %d %x', 7, 8"), QStringLiteral("% 7 %x 8"));
    EXPECT_EQ(shown("'%cstyled', 'color: red', 'x'"), QStringLiteral("styled x"));
    EXPECT_EQ(shown("'%d', Symbol('s')"), QStringLiteral("NaN"));
}

TEST(WorkerContract, valuesAreShownAsConsolesDo) {
    EXPECT_EQ(shown("'s', 1, -0, 2n, true, null, undefined, Symbol('x')"),
              QStringLiteral("s 1 -0 2n true null undefined Symbol(x)"));
    EXPECT_EQ(shown("['a', \"it's\", [[]], , 3]"), QStringLiteral("[ 'a', 'it\\'s', [ [] ], <empty>, 3 ]"));
    EXPECT_EQ(shown("{ a: 1, 'b-c': { d: null }, [Symbol('k')]: 2 }"),
              QStringLiteral("{ a: 1, 'b-c': { d: null }, [Symbol(k)]: 2 }"));
    EXPECT_EQ(shown("function named() {}, () => {}, class A {}"),
              QStringLiteral("[Function: named] [Function: (anonymous)] [class A]"));
    EXPECT_EQ(shown("new Map([['a', 1]]), new Set([1, 'b'])"), QStringLiteral("Map(1) { 'a' => 1 } Set(2) { 1, 'b' }"));
    EXPECT_EQ(shown("new Date(0), new Date(NaN), /a+/gi"),
              QStringLiteral("1970-01-01T00:00:00.000Z Invalid Date /a+/gi"));
    EXPECT_EQ(shown("new Uint8Array([1, 2]), new ArrayBuffer(1)"),
              QStringLiteral("Uint8Array(2 bytes) [ 1, 2 ] ArrayBuffer(1 bytes) [ 0 ]"));
    EXPECT_EQ(shown("new (class Point { constructor() { this.x = 1 } })"), QStringLiteral("Point { x: 1 }"));
    EXPECT_EQ(shown("{ get a() { throw 1 }, set b(v) {} }"), QStringLiteral("{ a: [Getter], b: [Setter] }"));
}

TEST(WorkerContract, anErrorIsShownWithItsStack) {
    EXPECT_TRUE(
        shown("new TypeError('bad')").startsWith(QStringLiteral("TypeError: bad\n    at uploadImage@script:1:")));
}

TEST(WorkerContract, cyclesAndDepthAreSafe) {
    EXPECT_EQ(shown("(() => { const a = { n: 1 }; a.self = a; return a })()"),
              QStringLiteral("{ n: 1, self: [Circular] }"));
    EXPECT_EQ(shown("{a:{b:{c:{d:{e:1}}}}}"), QStringLiteral("{ a: { b: { c: { d: [Object] } } } }"));
    EXPECT_EQ(shown("(() => { const o = {}; return [o, o] })()"), QStringLiteral("[ {}, {} ]"));
}

// ---- Timers ----

TEST(WorkerContract, timersRunInTheOrderOfTheirMoments) {
    const WorkerRun run = runWorker(R"js(function uploadImage() { return new Promise((ok) => {
        const order = [];
        setTimeout(() => order.push('c'), 30);
        setTimeout((a, b) => order.push(a + b), 10, 'a', '1');
        setTimeout(() => order.push('b'), 10);
        clearTimeout(setTimeout(() => order.push('never'), 5));
        setTimeout(() => order.push('0'));
        setTimeout(() => ok(order.join(' ')), 60);
    }) })js");
    EXPECT_EQ(run.text("url"), QStringLiteral("0 a1 b c"));
}

TEST(WorkerContract, anIntervalRunsUntilItIsCleared) {
    const WorkerRun run = runWorker(R"js(function uploadImage() { return new Promise((ok) => {
        let ticks = 0;
        const id = setInterval((step) => { if ((ticks += step) === 3) clearInterval(id) }, 5, 1);
        setTimeout(() => ok('ticks ' + ticks), 300);
    }) })js");
    EXPECT_EQ(run.text("url"), QStringLiteral("ticks 3"));
}

TEST(WorkerContract, thereIsALimitOfTimers) {
    EXPECT_EQ(
        runWorker("function uploadImage() { for (let i = 0; i < 10000; ++i) setTimeout(() => {}, 9e4); return 'u' }")
            .text("url"),
        QStringLiteral("u"));
    EXPECT_EQ(
        runWorker("function uploadImage() { for (let i = 0; i < 10001; ++i) setTimeout(() => {}, 9e4); return 'u' }")
            .text("errorMessage"),
        QStringLiteral("Error: there are too many timers"));
}

// ---- Text and bytes ----

TEST(WorkerContract, base64GoesBothWays) {
    EXPECT_EQ(shown("atob('aGVsbG8='), atob(' aGVs bG8 '), atob(''), btoa('hi'), btoa('\\u00ff\\0')"),
              QStringLiteral("hello hello  aGk= /wA="));
    for (const char *bad :
         {"atob('a')", "atob('a=')", "atob('ab=')", "atob('a$bc')", "btoa('\\u0100')", "atob('ab==c')"})
        EXPECT_EQ(
            shown((QByteArray("(() => { try { return ") + bad + " } catch (e) { return e.name } })()").constData()),
            QStringLiteral("Error"))
            << bad;
}

TEST(WorkerContract, textIsEncodedAndDecoded) {
    EXPECT_EQ(shown("Array.from(new TextEncoder().encode('aé€😎')).join()"),
              QStringLiteral("97,195,169,226,130,172,240,159,152,142"));
    EXPECT_EQ(shown("new TextDecoder().decode(new Uint8Array([0xef,0xbb,0xbf,0xc3,0xa9,0xff]))"),
              QStringLiteral("é\uFFFD"));
    EXPECT_EQ(shown("new TextDecoder('utf-16le').decode(new Uint8Array([0x61,0,0xac,0x20]).buffer)"),
              QStringLiteral("a€"));
    EXPECT_EQ(shown("new TextDecoder('latin1').decode(new Uint8Array([0xe9,0x80]))"), QStringLiteral("é€"));
    EXPECT_EQ(shown("(() => { try { new TextDecoder('utf-8', { fatal: true }).decode(new Uint8Array([255])) }"
                    " catch (e) { return e.name } })()"),
              QStringLiteral("TypeError"));
}

TEST(WorkerContract, urlsAreParsedAndPutTogether) {
    EXPECT_EQ(shown("new URL('../x?q=1#f', 'https://User@Example.com:443/a/b/c').href"),
              QStringLiteral("https://User@example.com/a/x?q=1#f"));
    EXPECT_EQ(shown("(() => { const u = new URL('http://h/p'); u.searchParams.append('a b', 'ü&'); u.hash = 'z'; "
                    "return u + '' })()"),
              QStringLiteral("http://h/p?a+b=%C3%BC%26#z"));
    EXPECT_EQ(shown("new URL('http://bücher.example/').host, new URL('http://0x7f.1/').host"),
              QStringLiteral("xn--bcher-kva.example 127.0.0.1"));
    EXPECT_EQ(shown("URL.canParse('nonsense'), URL.canParse('a', 'http://h')"), QStringLiteral("false true"));
    EXPECT_EQ(
        shown("[...new URLSearchParams('?a=1&b=%20+2&a=3')].join(';'), new URLSearchParams({ k: 'v/w' }).toString()"),
        QStringLiteral("a,1;b,  2;a,3 k=v%2Fw"));
}

TEST(WorkerContract, timeZonesAndLocalesWorkWithoutFiles) {
    EXPECT_EQ(shown("new Date(Date.UTC(2026, 6, 1)).toLocaleString('en-GB', { timeZone: 'Asia/Tokyo' })"),
              QStringLiteral("01/07/2026, 09:00:00"));
    EXPECT_EQ(shown("'é'.normalize('NFD').length, 'ä'.localeCompare('z', 'de')"), QStringLiteral("2 -1"));
}

TEST(WorkerContract, thereIsNoWayOut) {
    EXPECT_EQ(shown("typeof require, typeof process, typeof module, typeof Deno, typeof load, typeof readFile, typeof "
                    "WebAssembly"),
              QStringLiteral("undefined undefined undefined undefined undefined undefined undefined"));
    EXPECT_EQ(runWorker("async function uploadImage() { await import('/etc/passwd'); return 'u' }").text("errorKind"),
              QStringLiteral("runtimeError"));
}

} // namespace
} // namespace tavrine
