// What a script can try against the worker's own names and against the network's half. Each run ends with one whole
// record, and nothing leaves but the request that the rules allow.

#include "upload/RealWorker.h"

#include <utility>

namespace tavrine {
namespace {

using test::HttpServer;
using test::runWorker;
using test::WorkerRun;

class WorkerAttack : public testing::Test {
protected:
    static void SetUpTestSuite() { server = new HttpServer; }
    static void TearDownTestSuite() { delete std::exchange(server, nullptr); }

    /// A script whose `body` may await `get(url, method, headers, body)`, which gives the callback's arguments.
    static WorkerRun attack(const char *body) {
        const QString script = QStringLiteral(R"js(
            const server = '%1';
            const get = (url, method = 'GET', headers = {}, body = '') =>
                new Promise((done) => nativeHTTPRequest(url, method, headers, body, (...all) => done(all)));
            async function uploadImage() { %2 })js")
                                   .arg(server->url(""), QString::fromUtf8(body));
        return runWorker(script);
    }
    static void expectGood(const char *body) {
        const WorkerRun run = attack(body);
        EXPECT_EQ(run.text("url"), QStringLiteral("good")) << body << run.bytes.left(600).constData();
    }

    static inline HttpServer *server = nullptr;
};

TEST_F(WorkerAttack, aScriptsProcessThatWasTakenOverForgesNoSuccessWithoutALink) {
    const auto recordOf = [](const char *what) {
        QProcess program;
        program.start(QStringLiteral(FORGED_SCRIPT), {QLatin1String(what)});
        EXPECT_TRUE(program.waitForFinished(20'000));
        return QJsonDocument::fromJson(program.readAllStandardOutput()).object();
    };
    EXPECT_EQ(recordOf("link").value(QStringLiteral("url")).toString(), QStringLiteral("https://i/1"));
    for (const char *what : {"empty-link", "unknown-end"}) {
        const QJsonObject record = recordOf(what);
        EXPECT_FALSE(record.contains(QStringLiteral("url"))) << what;
        EXPECT_EQ(record.value(QStringLiteral("errorMessage")).toString(),
                  QStringLiteral("The script's process ended abnormally. It may have run out of memory."))
            << what;
    }
}

TEST_F(WorkerAttack, aPackedBombIsAnErrorOfItsRequest) {
    expectGood("const [error] = await get(server + '/bomb/64');"
               "return error === 'The response is larger than 8 MiB.' ? 'good' : String(error)");
    expectGood("const [error, , body] = await get(server + '/bomb/7');"
               "return !error && body.length === 7 << 20 ? 'good' : String(error)");
}

TEST_F(WorkerAttack, headersWithoutEndAreAnErrorOfTheirRequest) {
    expectGood("const [error] = await get(server + '/headers');"
               "return error === \"The response's headers are larger than 256 KiB.\" ? 'good' : String(error)");
}

TEST_F(WorkerAttack, noSpellingOfALineBreakAddsAHeader) {
    // Characters whose lower byte is a line break, and every control character.
    expectGood(R"js(
        for (const value of ['a\u010d\u010aX-Evil: 1', 'a\u{1f60d}\u560d\u560aX-Evil: 1', 'a\u2028X-Evil: 1', 'a\x0bX-Evil: 1']) {
            const [error, , body] = await get(server + '/echo', 'GET', { 'X-One': value });
            if (!error && 'x-evil' in JSON.parse(body).headers) return 'evil by ' + escape(value);
        }
        for (const value of ['a\rX-Evil: 1', 'a\nX-Evil: 1', 'a\r\n\r\nGET /evil HTTP/1.1', 'a\0b']) {
            const [error] = await get(server + '/echo', 'GET', { 'X-One': value });
            if (error !== 'A header is malformed.') return 'no error by ' + escape(value);
        }
        for (const name of ['', ' ', 'X:', 'X\0', 'X\r\nY', 'é', 'X\u010a', ':path']) {
            const [error] = await get(server + '/echo', 'GET', { [name]: '1' });
            if (error !== 'A header is malformed.') return 'no error by the name ' + escape(name);
        }
        return 'good')js");
}

TEST_F(WorkerAttack, urlsThatProgramsReadDifferentlyAreRefused) {
    expectGood(R"js(
        for (const url of [server + '\\@evil.invalid/', server + '\r\nX: 1', server + '/\0', server + '/\t', ' ' + server,
                           'http:\\\\127.0.0.1/', 'hTtP://127.0.0.1:1 /', 'http://a\u0000b/']) {
            const [error] = await get(url);
            if (error !== 'The URL is malformed.' && error !== 'Only http and https URLs can be requested.')
                return escape(url) + ' gave ' + error;
        }
        for (const url of ['file:///etc/passwd', 'FILE:///etc/passwd', 'http+unix://%2Ftmp%2Fx/', 'javascript:1', 'data:,a',
                           '\u0000file:///etc/passwd', 'view-source:http://h/', 'smb://h/', 'ldap://h/', 'telnet://h/']) {
            const [error] = await get(url);
            if (error !== 'Only http and https URLs can be requested.') return escape(url) + ' gave ' + error;
        }
        return 'good')js");
}

TEST_F(WorkerAttack, aRedirectToAHostInDisguiseDoesNotCarryTheSecret) {
    expectGood(R"js(
        const port = server.split(':')[2];
        const secret = { Authorization: 'Bearer secret', Cookie: 'a=b' };
        for (const location of ['http://127.0.0.1:' + port + '\\@localhost:' + port + '/echo',
                                'http://127.0.0.1:' + port + '@localhost:' + port + '/echo',
                                '//localhost:' + port + '/echo']) {
            const [error, , body] = await get(server + '/redirect/307?' + location, 'GET', secret);
            if (error) continue;
            const { headers } = JSON.parse(body);
            if (headers.authorization === 'Bearer secret' || headers.cookie) return 'leaked by ' + location;
        }
        return 'good')js");
}

TEST_F(WorkerAttack, theScriptDoesNotTellWhereItsBodyEnds) {
    expectGood(R"js(
        for (const headers of [{ 'Content-Length': '3' }, { 'transfer-encoding': 'chunked' },
                               { 'Content-Length': '3', 'Transfer-Encoding': 'chunked' }]) {
            const [error, , text] = await get(server + '/echo', 'POST', headers, 'abcdef\r\n\r\nGET /evil HTTP/1.1\r\n\r\n');
            if (error) return error;
            const echo = JSON.parse(text);
            if (echo.body.length !== 32 || echo.headers['content-length'] !== '32' || echo.headers['transfer-encoding'])
                return text;
        }
        return 'good')js");
}

TEST_F(WorkerAttack, headersThatAreAProxyAreReadOrRefused) {
    expectGood(R"js(
        const traps = ['ownKeys', 'get', 'getOwnPropertyDescriptor', 'getPrototypeOf', 'has'];
        for (const trap of traps) {
            const headers = new Proxy({ 'X-One': '1' }, { [trap]() { throw new Error('trapped') } });
            try {
                const [error] = await get(server + '/echo', 'GET', headers);
            } catch (error) {
                if (error.message !== 'trapped') return trap + ' threw ' + error;
            }
        }
        const many = new Proxy({}, {
            ownKeys: () => Array.from({ length: 100000 }, (_, i) => 'h' + i),
            getOwnPropertyDescriptor: () => ({ enumerable: true, configurable: true, value: '1' }), get: () => '1',
        });
        const [tooMany] = await get(server + '/echo', 'GET', many);
        if (tooMany !== 'There are too many headers.') return String(tooMany);
        const [none, status] = await get(server + '/echo'); // and the world is whole
        return none === null && status === 200 ? 'good' : String(none))js");
}

TEST_F(WorkerAttack, gettersAndConversionsThatThrowReachTheScriptAlone) {
    expectGood(R"js(
        const bad = { toString() { throw new Error('thrown') } };
        const nothing = () => {};
        const attempts = [
            () => nativeHTTPRequest(bad, 'GET', {}, '', nothing), () => nativeHTTPRequest('u', bad, {}, '', nothing),
            () => nativeHTTPRequest('u', 'GET', { get a() { throw new Error('thrown') } }, '', nothing),
            () => nativeHTTPRequest('u', 'GET', { a: bad }, '', nothing), () => nativeHTTPRequest('u', 'GET', {}, bad, nothing),
        ];
        for (const attempt of attempts) {
            try { attempt(); return 'nothing thrown by ' + attempt; } catch (error) { if (error.message !== 'thrown') return String(error) }
        }
        for (const symbol of [Symbol(), Symbol.iterator, Object(Symbol('x'))]) {
            for (const args of [[symbol, 'GET', {}, ''], ['u', symbol, {}, ''], ['u', 'GET', { a: symbol }, ''], ['u', 'GET', {}, symbol]]) {
                try { nativeHTTPRequest(...args, nothing); return 'a symbol passed'; } catch (error) { if (!(error instanceof TypeError)) return String(error) }
            }
        }
        // Symbols as names are no headers; a request from within a getter is one of its own.
        let inner;
        const headers = { [Symbol('a')]: '1', get 'X-One'() { inner = get(server + '/status/204'); return '1' } };
        const [, , body] = await get(server + '/echo', 'GET', headers);
        const [, status] = await inner;
        return JSON.parse(body).headers['x-one'] === '1' && status === 204 ? 'good' : body)js");
}

TEST_F(WorkerAttack, callbacksThatAreNoPlainFunctionsAreCalledOrRefused) {
    expectGood(R"js(
        const viaProxy = await new Promise((done) => nativeHTTPRequest(server + '/status/200', 'GET', {}, '', new Proxy(function (...all) { done(all) }, {})));
        if (viaProxy[1] !== 200) return String(viaProxy);
        for (const callback of [undefined, null, 1, 'x', {}, [], Symbol(), new Proxy({}, {})]) {
            try { nativeHTTPRequest(server, 'GET', {}, '', callback); return 'took ' + String(callback); } catch {}
        }
        return 'good')js");
    // A class cannot be called: its error ends the run, as any that nobody catches.
    EXPECT_EQ(attack("return new Promise(() => nativeHTTPRequest(server + '/echo', 'GET', {}, '', class {}))")
                  .text("errorKind"),
              QStringLiteral("runtimeError"));
}

TEST_F(WorkerAttack, viewsOfABufferSendTheirOwnBytesOnly) {
    expectGood(R"js(
        const buffer = new Uint8Array([1, 2, 3, 4, 5, 6, 7, 8]).buffer;
        const cases = [[new Uint8Array(buffer, 2, 3), '\x03\x04\x05'], [new Uint16Array(buffer, 4, 1), '\x05\x06'],
                       [new Uint8Array(buffer, 8), ''], [new Uint8Array(0), ''], [buffer, '\x01\x02\x03\x04\x05\x06\x07\x08']];
        for (const [view, wanted] of cases) {
            const [error, , body] = await get(server + '/echo', 'POST', { 'Content-Type': 'application/octet-stream' }, view);
            if (error || JSON.parse(body).body !== wanted) return view.constructor.name + ': ' + (error || body);
        }
        const gone = new Uint8Array(8);
        try { structuredClone(gone.buffer, { transfer: [gone.buffer] }) } catch {}
        await get(server + '/echo', 'POST', {}, gone);
        return 'good')js");
}

TEST_F(WorkerAttack, immenseTextsAreRefusedOneByOne) {
    expectGood(R"js(
        const huge = 'x'.repeat(2e6);
        const answers = [await get('http://' + huge), await get(server, huge), await get(server, 'GET', { [huge]: '1' }), await get(server, 'GET', { a: huge })];
        const wanted = ['The URL is malformed.', 'The method is malformed.', 'The headers are too long.', 'The headers are too long.'];
        const got = answers.map(([error]) => error);
        return JSON.stringify(got) === JSON.stringify(wanted) ? 'good' : JSON.stringify(got))js");
}

TEST_F(WorkerAttack, aBodyOverTheLimitEndsTheRunWithARecord) {
    const WorkerRun run = attack("await get(server + '/echo', 'POST', {}, new Uint8Array(162 << 20)); return 'u'");
    EXPECT_EQ(run.text("errorKind"), QStringLiteral("runtimeError"));
    EXPECT_FALSE(run.text("errorMessage").isEmpty());
}

TEST_F(WorkerAttack, aFloodOfRequestsIsAnsweredToTheLast) {
    expectGood(R"js(
        let refused = 0, answered = 0;
        return new Promise((resolve) => {
            for (let i = 0; i < 20000; ++i)
                nativeHTTPRequest(server + '/status/200', 'GET', {}, '', (error) => {
                    refused += error === 'There are too many requests at once.';
                    if (++answered === 20000) resolve(refused > 1000 ? 'good' : 'refused ' + refused);
                });
        }))js");
}

TEST_F(WorkerAttack, aFloodOfTimersIsStoppedAtTheLimitAndTheRestRuns) {
    expectGood(R"js(
        let made = 0, ran = 0;
        try { for (;;) { setTimeout(() => { ++ran }, 0); ++made; } } catch (error) { if (made !== 10000) return 'made ' + made }
        while (ran < 10000) await get(server + '/status/200');
        return 'good')js");
}

TEST_F(WorkerAttack, zerosInTextsCutNothingOff) {
    expectGood(R"js(
        const [, , body] = await get(server + '/echo', 'POST', { 'Content-Type': 'text/plain' }, 'a\0b');
        console.log('a\0b');
        return JSON.parse(body).body === 'a\0b' && atob(btoa('a\0b')) === 'a\0b' ? 'good' : body)js");
    const WorkerRun run =
        runWorker(QStringLiteral("function uploadImage(image, name) { console.log(name); return 'a\\0b' }"), QString(),
                  QStringLiteral("a") + QChar(0) + QStringLiteral("b"));
    EXPECT_EQ(run.text("url").size(), 3);
    EXPECT_EQ(run.logs().value(0).size(), 3);
}

// The native half that the preludes are given never shows itself, whatever the script puts in the language's place.
TEST_F(WorkerAttack, thePreludesKeepTheirNativeHalfToThemselves) {
    const WorkerRun run = runWorker(R"js(
        const seen = [];
        const watch = (object) => {
            for (const key of Reflect.ownKeys(object)) {
                const found = Reflect.getOwnPropertyDescriptor(object, key);
                if (typeof found.value !== 'function' || key === 'constructor' || !found.configurable) continue;
                const original = found.value;
                try {
                    Object.defineProperty(object, key, { ...found, value: function (...args) {
                        if (seen.length < 1e5) seen[seen.length] = this, seen[seen.length] = args;
                        return Reflect_apply(original, this, args);
                    } });
                } catch {}
            }
        };
        const Reflect_apply = Reflect.apply;
        const Reflect_ownKeys = Reflect.ownKeys;
        for (const type of [String, Array, RegExp, Map, Set, Promise, Number, Uint8Array, Error, Date]) watch(type.prototype), watch(type);
        for (const space of [Object, JSON, Math]) watch(space);
        watch(Function.prototype);
        function uploadImage() {
            const url = new URL('http://ü.example:8080/a/../b?c=d#e', 'http://h/');
            url.searchParams.append('x', 'y z'); url.searchParams.sort(); String(url);
            new URLSearchParams({ a: 'b' }).toString();
            console.log('%s %d', 'a', 1, { b: new Map([[1, { c: 2 }]]) }, new Error('x'));
            console.time('t'); console.timeEnd('t'); console.count();
            new TextDecoder().decode(new TextEncoder().encode('ä'));
            queueMicrotask(() => {});
            for (const value of [...seen]) {
                for (const one of Array.isArray(value) ? value : [value]) {
                    if ((typeof one === 'object' && one !== null && Reflect_ownKeys(one).includes('uncaught'))) return 'evil';
                }
            }
            return seen.length > 20 ? 'good' : 'seen ' + seen.length;
        })js");
    EXPECT_EQ(run.text("url"), QStringLiteral("good")) << run.bytes.left(600).constData();
}

} // namespace
} // namespace tavrine
