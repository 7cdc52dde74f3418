// The real worker in a network of its own (see `in-network`): a name server that never answers, and an address that
// counts as one of the internet.

#include "upload/RealWorker.h"

namespace tavrine {
namespace {

using test::HttpServer;
using test::runWorker;
using test::WorkerRun;

constexpr auto outside = "198.51.100.7";

/// A script that may await `get(url, headers)`, which gives the callback's arguments.
WorkerRun runWith(const QString &body) {
    return runWorker(QStringLiteral(R"js(
        const start = Date.now();
        const get = (url, headers = {}) =>
            new Promise((done) => nativeHTTPRequest(url, 'GET', headers, '', (...all) => done(all)));
        async function uploadImage() { %1 })js")
                         .arg(body));
}

TEST(WorkerNetwork, anUploadThatHasSucceededDoesNotWaitForANameThatIsStillLookedUp) {
    const HttpServer server;
    const WorkerRun run = runWith(QStringLiteral("get('http://silent.example/');"
                                                 "const [error] = await get('%1'); return error || 'good'")
                                      .arg(server.url("/echo")));
    EXPECT_EQ(run.text("url"), QStringLiteral("good")) << run.bytes.constData();
    EXPECT_LT(run.milliseconds, 5000);
}

TEST(WorkerNetwork, aNameThatNobodyKnowsIsGivenUpAfterTenSecondsAndHoldsUpNothing) {
    const HttpServer server;
    const WorkerRun run = runWith(QStringLiteral(R"js(
        const silent = get('http://silent.example/').then(([error]) => [error, Date.now() - start]);
        for (let i = 0; i < 4; ++i) {
            await new Promise((done) => setTimeout(done, 2800)); // the last of them while the name is given up
            const asked = Date.now();
            await get('%1');
            console.log(Date.now() - asked);
        }
        return (await silent).join('|'))js")
                                      .arg(server.url("/echo")));
    const QStringList outcome = run.text("url").split(QLatin1Char('|'));
    EXPECT_EQ(outcome.value(0), QStringLiteral("The name silent.example could not be looked up in time."));
    EXPECT_GE(outcome.value(1).toInt(), 9'900);
    EXPECT_LT(outcome.value(1).toInt(), 13'000);
    for (const QString &milliseconds : run.logs())
        EXPECT_LT(milliseconds.toInt(), 2000);
    EXPECT_LT(run.milliseconds, 16'000); // and the end waits for no thread
}

TEST(WorkerNetwork, lookupsWithoutEndAreRefusedOneByOne) {
    const WorkerRun run = runWith(QStringLiteral(R"js(
        const seen = new Set();
        for (let i = 0; i < 60; ++i) get('http://silent' + i + '.example/').then(([error]) => seen.add(error));
        await new Promise((done) => setTimeout(done, 1000));
        return [...seen].join('|'))js"));
    // Whichever bound is reached first: that depends on how soon the lookups begin.
    const QStringList bounds{QStringLiteral("There are too many requests at once."),
                             QStringLiteral("There are too many names being looked up.")};
    const QStringList seen = run.text("url").split(QLatin1Char('|'));
    for (const QString &error : seen)
        EXPECT_TRUE(bounds.contains(error)) << run.bytes.constData();
}

TEST(WorkerNetwork, aServerOfTheInternetDoesNotRedirectIntoAPrivateNetwork) {
    const HttpServer inside;
    const HttpServer internet({QStringLiteral("--on"), QLatin1String(outside)});
    const QString away = internet.url("/redirect/302?", "http", outside);
    for (const QString &target :
         {inside.url("/echo"), inside.url("/echo", "http", "localhost"),
          inside.url("/echo", "http", "[::ffff:127.0.0.1]"), inside.url("/echo", "http", "0")}) {
        const WorkerRun run =
            runWith(QStringLiteral("const [error] = await get('%1'); return String(error)").arg(away + target));
        EXPECT_EQ(run.text("url"), QStringLiteral("The server redirects into a private network."))
            << qPrintable(target);
    }
    // Neither by a detour.
    const WorkerRun detour =
        runWith(QStringLiteral("const [error] = await get('%1'); return String(error)")
                    .arg(away + internet.url("/redirect/302?", "http", outside) + inside.url("/echo")));
    EXPECT_EQ(detour.text("url"), QStringLiteral("The server redirects into a private network."));
}

TEST(WorkerNetwork, otherRedirectsAreFollowed) {
    const HttpServer inside;
    const HttpServer internet({QStringLiteral("--on"), QLatin1String(outside)});
    const QString there = internet.url("/echo", "http", outside);
    for (const QString &url :
         {inside.url("/redirect/302?") + there, inside.url("/redirect/302?/echo"),
          internet.url("/redirect/302?", "http", outside) + there, inside.url("/echo", "http", "localhost")}) {
        const WorkerRun run =
            runWith(QStringLiteral("const [error, status] = await get('%1'); return String(error) + status").arg(url));
        EXPECT_EQ(run.text("url"), QStringLiteral("null200")) << qPrintable(url);
    }
}

} // namespace
} // namespace tavrine
