#include "upload/JSUploadEngine.h"

#include "adapters/fake/VirtualTime.h"
#include "base/Date.h"
#include "support/Eventually.h"
#include "upload/FakeWorker.h"
#include "upload/WorkerRecords.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSemaphore>
#include <QThread>

#include <csignal>
#include <thread>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using test::FakeWorker;

const QString exitedWithoutResult = QStringLiteral("The upload worker exited without a result.");

/// No worker that is ended lives so much longer than its limit, in milliseconds, on a machine however busy.
constexpr qint64 longAfterTheLimit = 10'000;

constexpr auto ignoringTheSignal = R"(trap '' TERM; echo $$ > "${0%/*}/ready"; while :; do read -t 0.02 <> <(:); done)";

/// A main queue that looks at the world in the moment in which something is handed to it.
class WatchedTime final : public Time {
public:
    std::function<void()> onAsync; ///< on the thread that hands in

    Date now() const override { return m_time.now(); }
    Seconds systemUptime() const override { return m_time.systemUptime(); }
    void async(Work work) override {
        onAsync();
        m_time.async(std::move(work));
    }
    void asyncAfter(Seconds delay, Work work) override { m_time.asyncAfter(delay, std::move(work)); }
    std::unique_ptr<Timer> repeat(Seconds interval, Work work) override {
        return m_time.repeat(interval, std::move(work));
    }
    void runPending() { m_time.runPending(); }

private:
    VirtualTime m_time;
};

/// What a run came to, and how often it said so.
struct Outcome {
    UploadScriptRunResult result;
    int calls = 0;
    qint64 milliseconds = 0; // until `run` returned
};

UploadScriptRunResult link(const QString &url, const QStringList &logs = {}) {
    return {url, logs, std::nullopt};
}
UploadScriptRunResult failed(const UploadScriptError &error, const QStringList &logs = {}) {
    return {std::nullopt, logs, error};
}

class JSUploadEngineTest : public testing::Test {
protected:
    Outcome run(const QString &worker, double timeout = 20.0, const QString &image = QStringLiteral("aW1hZ2U=")) {
        JSUploadEngine engine(worker, time);
        Outcome outcome;
        QElapsedTimer timer;
        timer.start();
        engine.run(QStringLiteral("script é"), image, QStringLiteral("a.png"), timeout,
                   [&outcome](const UploadScriptRunResult &result) {
                       outcome.result = result;
                       ++outcome.calls;
                   });
        outcome.milliseconds = timer.elapsed();
        time.runPending();
        return outcome;
    }
    Outcome run(const char *lines, double timeout = 20.0) { return run(FakeWorker(lines).path(), timeout); }
    /// Of a worker that says `ready` once it takes the signal as it wants to. One that did not come so far before the
    /// limit, on a busy machine, gets a longer one.
    Outcome runOverTheLimit(const FakeWorker &worker, double &limit) {
        Outcome outcome = run(worker.path(), limit);
        while (worker.contents("ready").isEmpty() && limit < 20) {
            limit *= 3;
            outcome = run(worker.path(), limit);
        }
        return outcome;
    }
    UploadScriptRunResult resultOf(const char *lines, double timeout = 20.0) {
        const Outcome outcome = run(lines, timeout);
        EXPECT_EQ(outcome.calls, 1);
        return outcome.result;
    }

    VirtualTime time;
};

// ---- The input and the record ----

TEST_F(JSUploadEngineTest, theWorkerIsGivenTheThreeTextsAndTheEndOfItsInput) {
    const FakeWorker worker(R"(cat > "$(dirname $0)/input"; echo $# > "$(dirname $0)/arguments"
        echo '{"url":"https://h/a.png","logs":["one","two"]}')");
    const Outcome outcome = run(worker.path());
    EXPECT_EQ(outcome.result, link(QStringLiteral("https://h/a.png"), {QStringLiteral("one"), QStringLiteral("two")}));
    const QJsonObject input = QJsonDocument::fromJson(worker.contents("input")).object();
    EXPECT_EQ(input.size(), 3);
    EXPECT_EQ(input.value(QStringLiteral("script")).toString(), QStringLiteral("script é"));
    EXPECT_EQ(input.value(QStringLiteral("imageBase64")).toString(), QStringLiteral("aW1hZ2U="));
    EXPECT_EQ(input.value(QStringLiteral("fileName")).toString(), QStringLiteral("a.png"));
    EXPECT_EQ(worker.contents("arguments").trimmed(), "0");
}

TEST_F(JSUploadEngineTest, aUrlBesideAnErrorKindCountsAsASuccess) {
    EXPECT_EQ(resultOf(R"(echo '{"url":"https://h/","errorKind":"syntaxError","errorMessage":"x","logs":[]}')"),
              link(QStringLiteral("https://h/")));
}

TEST_F(JSUploadEngineTest, anEmptyOutputIsNoResult) {
    EXPECT_EQ(resultOf("exit 0"), failed(UploadScriptError::runtimeError(exitedWithoutResult)));
}

TEST_F(JSUploadEngineTest, outputWithoutLogsIsNoResult) {
    EXPECT_EQ(resultOf(R"(echo '{"url":"https://h/"}')"), failed(UploadScriptError::runtimeError(exitedWithoutResult)));
}

TEST_F(JSUploadEngineTest, theExitStatusIsNotLookedAt) {
    EXPECT_EQ(resultOf(R"(echo '{"url":"u","logs":[]}'; exit 7)"), link(QStringLiteral("u")));
    EXPECT_EQ(resultOf(R"(echo '{"url":"u","logs":[]}'; kill -SEGV $$)"), link(QStringLiteral("u")));
}

TEST_F(JSUploadEngineTest, whatTheWorkerPrintsOnStandardErrorIsLost) {
    EXPECT_EQ(
        resultOf(
            R"(echo '{"url":"wrong","logs":[]}' >&2; [ /dev/stderr -ef /dev/null ] && echo '{"url":"u","logs":[]}')"),
        link(QStringLiteral("u")));
}

TEST_F(JSUploadEngineTest, anErrorIsMappedFromItsKind) {
    using Error = UploadScriptError;
    const auto message = QStringLiteral("m");
    const struct {
        const char *line;
        Error error;
    } cases[] = {
        {R"(echo '{"errorKind":"syntaxError","errorMessage":"m","logs":["l"]}')", Error::syntaxError(message)},
        {R"(echo '{"errorKind":"syntaxError","logs":["l"]}')", Error::syntaxError(QStringLiteral("Syntax error."))},
        {R"(echo '{"errorKind":"missingFunction","errorMessage":"m","logs":["l"]}')", Error::missingFunction()},
        {R"(echo '{"errorKind":"invalidReturnValue","errorMessage":"m","logs":["l"]}')", Error::invalidReturnValue()},
        {R"(echo '{"errorKind":"runtimeError","errorMessage":"m","logs":["l"]}')", Error::runtimeError(message)},
        {R"(echo '{"errorKind":"SyntaxError","errorMessage":"m","logs":["l"]}')", Error::runtimeError(message)},
        {R"(echo '{"errorMessage":"m","logs":["l"]}')", Error::runtimeError(message)},
        {R"(echo '{"logs":["l"]}')", Error::runtimeError(QStringLiteral("Unknown error."))},
        {R"(echo '{"url":null,"errorKind":null,"errorMessage":null,"logs":["l"]}')",
         Error::runtimeError(QStringLiteral("Unknown error."))},
    };
    for (const auto &one : cases)
        EXPECT_EQ(resultOf(one.line), failed(one.error, {QStringLiteral("l")})) << one.line;
}

// ---- What goes wrong before there is a worker ----

TEST_F(JSUploadEngineTest, aMissingWorkerIsReported) {
    const Outcome outcome = run(QStringLiteral("/nowhere/TavrineUploadWorker"));
    EXPECT_EQ(outcome.calls, 1);
    const QString text = QStringLiteral("The upload worker is missing from the app bundle.");
    EXPECT_EQ(outcome.result, failed(UploadScriptError::runtimeError(text)));
}

TEST_F(JSUploadEngineTest, anInputThatIsTooLargeIsNotEncoded) {
    const QString image(largestWorkerInput + 1, QLatin1Char('A'));
    const Outcome outcome = run(FakeWorker("exit 0").path(), 20.0, image);
    const QString text = QStringLiteral("Could not encode the script for the upload worker.");
    EXPECT_EQ(outcome.result, failed(UploadScriptError::runtimeError(text)));
}

TEST_F(JSUploadEngineTest, aWorkerThatCannotBeLaunchedIsReportedWithTheReason) {
    const FakeWorker worker("exit 0");
    QFile::setPermissions(worker.path(), QFile::ReadOwner);
    const Outcome outcome = run(worker.path(), 0.5);
    EXPECT_EQ(outcome.calls, 1);
    const QString text = QStringLiteral("Could not launch the upload worker: Permission denied");
    EXPECT_EQ(outcome.result, failed(UploadScriptError::runtimeError(text)));
    // The watchdog was called off: nothing comes after.
    QThread::msleep(600);
    time.runPending();
    EXPECT_EQ(outcome.calls, 1);
}

// ---- The limit ----

TEST_F(JSUploadEngineTest, aWorkerOverTheLimitIsAskedToEnd) {
    const FakeWorker worker(
        R"(trap 'echo asked > "${0%/*}/signal"; exit 0' TERM; echo yes > "${0%/*}/ready"
           while :; do read -t 0.02 <> <(:); done)");
    double limit = 0.3;
    const Outcome outcome = runOverTheLimit(worker, limit);
    EXPECT_EQ(outcome.result, failed(UploadScriptError::timeout(limit)));
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_GE(static_cast<double>(outcome.milliseconds), limit * 1000);
    EXPECT_EQ(worker.contents("signal"), "asked\n") << "it was not asked, or not left the time to answer";
}

TEST_F(JSUploadEngineTest, aWorkerThatIgnoresTheSignalIsKilledHalfASecondLaterAndReportedOnce) {
    const FakeWorker worker(ignoringTheSignal);
    double limit = 0.3;
    const Outcome outcome = runOverTheLimit(worker, limit);
    EXPECT_EQ(outcome.result, failed(UploadScriptError::timeout(limit)));
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_GE(static_cast<double>(outcome.milliseconds), limit * 1000 + 500);
    EXPECT_LT(outcome.milliseconds, static_cast<qint64>(limit * 1000) + longAfterTheLimit);
}

TEST_F(JSUploadEngineTest, theHalfSecondIsNotLonger) {
    const FakeWorker worker(ignoringTheSignal);
    WatchedTime watched;
    QElapsedTimer sinceTheReport; // handed in just before the worker is asked to end
    watched.onAsync = [&] { sinceTheReport.start(); };
    const auto isReady = [&] { return !worker.contents("ready").isEmpty(); };
    // A busy machine makes single ones longer; the shortest tells what was waited for.
    qint64 shortest = longAfterTheLimit;
    for (int attempt = 0; attempt < 20 && shortest >= 600; ++attempt) {
        QFile::remove(worker.file("ready"));
        JSUploadEngine engine(worker.path(), watched);
        engine.run({}, {}, {}, 0.3 * (1 + attempt / 4), [](const UploadScriptRunResult &) {});
        if (isReady())
            shortest = std::min(shortest, sinceTheReport.elapsed());
    }
    EXPECT_GE(shortest, 499);
    EXPECT_LT(shortest, 600);
}

TEST_F(JSUploadEngineTest, theTimeOutIsReportedBeforeTheWorkerIsDead) {
    const FakeWorker worker(ignoringTheSignal);
    WatchedTime watched;
    pid_t pid = 0;
    bool wasAlive = false;
    watched.onAsync = [&] {
        pid = worker.contents("ready").trimmed().toInt();
        wasAlive = pid > 0 && ::kill(pid, 0) == 0;
    };
    int runs = 0;
    int calls = 0;
    for (double limit = 0.2; pid == 0 && limit < 20; limit *= 3) { // on a busy machine it needs its time to be ready
        QFile::remove(worker.file("ready"));
        JSUploadEngine engine(worker.path(), watched);
        engine.run({}, {}, {}, limit, [&](const UploadScriptRunResult &) { ++calls; });
        ++runs;
    }
    EXPECT_TRUE(wasAlive);
    watched.runPending();
    EXPECT_EQ(calls, runs);
}

TEST_F(JSUploadEngineTest, aWorkerThatAnsweredAndLivesOnTimesOut) {
    const Outcome outcome =
        run(R"(echo '{"url":"u","logs":[]}'; exec >&-; while :; do read -t 0.02 <> <(:); done)", 0.3);
    EXPECT_EQ(outcome.result, failed(UploadScriptError::timeout(0.3)));
    EXPECT_EQ(outcome.calls, 1);
}

TEST_F(JSUploadEngineTest, aRecordOfAWorkerThatKeepsItsOutputOpenTimesOut) {
    const Outcome outcome = run(R"(echo '{"url":"u","logs":[]}'; while :; do read -t 0.02 <> <(:); done)", 0.3);
    EXPECT_EQ(outcome.result, failed(UploadScriptError::timeout(0.3)));
}

TEST_F(JSUploadEngineTest, aStoppedWorkerIsEndedAllTheSame) {
    const Outcome outcome = run("kill -STOP $$", 0.3);
    EXPECT_EQ(outcome.result, failed(UploadScriptError::timeout(0.3)));
    EXPECT_LT(outcome.milliseconds, longAfterTheLimit);
}

TEST_F(JSUploadEngineTest, aLimitOfNothingStillEndsTheWorker) {
    for (const double none : {0.0, -5.0, std::numeric_limits<double>::quiet_NaN()}) {
        const Outcome outcome = run("while :; do read -t 0.02 <> <(:); done", none);
        EXPECT_EQ(outcome.result.error->kind, UploadScriptError::Kind::timeout);
        EXPECT_LT(outcome.milliseconds, longAfterTheLimit);
    }
}

// ---- A hostile worker ----

TEST_F(JSUploadEngineTest, aGrandchildThatHoldsTheOutputHoldsNothingUp) {
    const FakeWorker worker(R"(echo '{"url":"u","logs":[]}'; sleep 30 & echo $! > "$(dirname $0)/pid")");
    const Outcome outcome = run(worker.path());
    EXPECT_EQ(outcome.result, link(QStringLiteral("u")));
    EXPECT_LT(outcome.milliseconds, 5000);
    ::kill(worker.contents("pid").trimmed().toInt(), SIGKILL);
}

TEST_F(JSUploadEngineTest, aGrandchildThatFloodsTheOutputHoldsNothingUp) {
    const FakeWorker worker(R"(echo '{"url":"u","logs":[]}'; yes & echo $! > "$(dirname $0)/pid"; exit)");
    const Outcome outcome = run(worker.path());
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_LT(outcome.milliseconds, 5000);
    ::kill(worker.contents("pid").trimmed().toInt(), SIGKILL);
}

TEST_F(JSUploadEngineTest, aFloodThatEndsIsNoResult) {
    EXPECT_EQ(resultOf("head -c 300000000 /dev/zero"), failed(UploadScriptError::runtimeError(exitedWithoutResult)));
}

TEST_F(JSUploadEngineTest, aFloodThatDoesNotEndTimesOut) {
    const Outcome outcome = run("exec yes", 0.3);
    EXPECT_EQ(outcome.result, failed(UploadScriptError::timeout(0.3)));
    EXPECT_LT(outcome.milliseconds, longAfterTheLimit);
}

TEST_F(JSUploadEngineTest, aRecordUpToTheLimitIsDecodedAndALongerOneIsNot) {
    const auto lines = [](qsizetype size) {
        return "head -c " + QByteArray::number(size - 21) + R"( /dev/zero | tr '\0' 'a' > "$(dirname $0)/a"
            echo -n '{"url":"u","logs":["'; cat "$(dirname $0)/a"; echo -n '"]}')";
    };
    const QByteArray most = lines(largestWorkerOutput - 2);
    EXPECT_EQ(resultOf(most.constData()).url, QStringLiteral("u"));
    const QByteArray tooMuch = lines(largestWorkerOutput + 1);
    EXPECT_EQ(resultOf(tooMuch.constData()), failed(UploadScriptError::runtimeError(exitedWithoutResult)));
}

TEST_F(JSUploadEngineTest, aLargeInputThatIsNeverReadHoldsUpNoWatchdog) {
    const QString image(10'000'000, QLatin1Char('A'));
    const Outcome outcome = run(FakeWorker("while :; do read -t 0.02 <> <(:); done").path(), 0.3, image);
    EXPECT_EQ(outcome.result, failed(UploadScriptError::timeout(0.3)));
    EXPECT_LT(outcome.milliseconds, longAfterTheLimit);
}

TEST_F(JSUploadEngineTest, aWorkerThatEndsUnreadCostsNothing) {
    const QString image(10'000'000, QLatin1Char('A'));
    const Outcome outcome = run(FakeWorker(R"(echo '{"url":"u","logs":[]}')").path(), 20.0, image);
    EXPECT_EQ(outcome.result, link(QStringLiteral("u")));
}

TEST_F(JSUploadEngineTest, aLargeInputAndALargeOutputDoNotWaitForEachOther) {
    const QString image(4'000'000, QLatin1Char('A'));
    const FakeWorker worker(
        R"(head -c 3000000 /dev/zero | tr '\0' ' '; cat > /dev/null; echo '{"url":"u","logs":[]}')");
    EXPECT_EQ(run(worker.path(), 20.0, image).result, link(QStringLiteral("u")));
}

// ---- Queues ----

TEST_F(JSUploadEngineTest, theCompletionIsCalledOnTheMainQueueAndNotBefore) {
    const FakeWorker worker(R"(echo '{"url":"u","logs":[]}')");
    JSUploadEngine engine(worker.path(), time);
    std::thread::id calledOn;
    QSemaphore isOver;
    engine.queue().async([&] {
        engine.run({}, {}, {}, 20.0, [&](const UploadScriptRunResult &) { calledOn = std::this_thread::get_id(); });
        isOver.release();
    });
    isOver.acquire();
    EXPECT_EQ(calledOn, std::thread::id());
    time.runPending();
    EXPECT_EQ(calledOn, std::this_thread::get_id());
}

TEST_F(JSUploadEngineTest, runsDoNotWaitForEachOther) {
    // Each of the eight ends only once all eight have begun.
    const FakeWorker worker(R"sh(cd "$(dirname $0)"; touch began.$$
        while [ $(ls began.* | wc -l) -lt 8 ]; do read -t 0.02 <> <(:); done; echo '{"url":"u","logs":[]}')sh");
    JSUploadEngine engine(worker.path(), time);
    int links = 0;
    for (int i = 0; i < 8; ++i) {
        engine.queue().async([&] {
            engine.run({}, {}, {}, 20.0, [&](const UploadScriptRunResult &result) { links += result.url ? 1 : 0; });
        });
    }
    EXPECT_TRUE(test::eventually(
        [&] {
            time.runPending();
            return links == 8;
        },
        20s));
}

TEST_F(JSUploadEngineTest, theQueueHasItsLabel) {
    JSUploadEngine engine({}, time);
    EXPECT_EQ(engine.queue().label(), QStringLiteral("com.tavrine.jsUploadEngine"));
    char name[16] = {};
    QSemaphore isOver;
    engine.queue().async([&] {
        pthread_getname_np(pthread_self(), name, sizeof name);
        isOver.release();
    });
    isOver.acquire();
    EXPECT_STREQ(name, "com.tavrine.jsU");
}

TEST_F(JSUploadEngineTest, anEngineThatGoesEndsItsWorkers) {
    const FakeWorker worker(R"(echo $$ > "$(dirname $0)/pid"; while :; do read -t 0.02 <> <(:); done)");
    QElapsedTimer timer;
    timer.start();
    {
        JSUploadEngine engine(worker.path(), time);
        engine.queue().async([&] { engine.run({}, {}, {}, 60.0, [](const UploadScriptRunResult &) {}); });
        ASSERT_TRUE(test::eventually([&] { return worker.contents("pid").endsWith('\n'); }));
    }
    EXPECT_LT(timer.elapsed(), 20'000);
    EXPECT_NE(::kill(worker.contents("pid").trimmed().toInt(), 0), 0);
}

TEST_F(JSUploadEngineTest, aFileNameHasTheLocalTime) {
    JSUploadEngine engine({}, time);
    const auto moment = QDateTime(QDate(2026, 3, 9), QTime(7, 5, 3, 999)); // local
    time.setWallClock({moment.toMSecsSinceEpoch() / 1000.0});
    EXPECT_EQ(engine.uploadFileName(), QStringLiteral("screenshot-20260309-070503.png"));
}

} // namespace
} // namespace tavrine
