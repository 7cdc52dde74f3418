// The worker's nativeHTTPRequest against a server on this machine.

#include "upload/RealWorker.h"
#include "upload/UploadScripts.h"

#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

namespace tavrine {
namespace {

using test::HttpServer;
using test::runWorker;
using test::WorkerRun;

class WorkerHttp : public testing::Test {
protected:
    static void SetUpTestSuite() { server = new HttpServer; }
    static void TearDownTestSuite() { delete std::exchange(server, nullptr); }

    /// One request; its callback's arguments are the logs.
    static WorkerRun request(const QString &url, const char *method = "GET", const char *headers = "{}",
                             const char *body = "''") {
        const QString script =
            QStringLiteral(R"js(function uploadImage() { return new Promise((resolve) => {
            nativeHTTPRequest(%1, %2, %3, %4, (...all) => { for (const one of all) console.log(one); resolve('u') }) }) })js")
                .arg(QString::fromUtf8(QJsonDocument(QJsonArray{url}).toJson(QJsonDocument::Compact)) +
                         QStringLiteral("[0]"),
                     QLatin1Char('\'') + QLatin1String(method) + QLatin1Char('\''), QString::fromUtf8(headers),
                     QString::fromUtf8(body));
        WorkerRun run = runWorker(script);
        EXPECT_EQ(run.logs().size(), 3) << run.bytes.constData();
        return run;
    }
    static WorkerRun requestPath(const char *path, const char *method = "GET", const char *headers = "{}",
                                 const char *body = "''") {
        return request(server->url(path), method, headers, body);
    }
    static QJsonObject echo(const WorkerRun &run) {
        EXPECT_EQ(run.logs().value(1), QStringLiteral("200")) << run.bytes.constData();
        return QJsonDocument::fromJson(run.logs().value(2).toUtf8()).object();
    }
    static QString header(const QJsonObject &echo, const char *name) {
        return echo.value(QStringLiteral("headers"))
            .toObject()
            .value(QLatin1String(name))
            .toString(QStringLiteral("(none)"));
    }
    static void expectFailure(const WorkerRun &run, const char *part) {
        EXPECT_TRUE(run.logs().value(0).contains(QString::fromUtf8(part))) << run.bytes.constData();
        EXPECT_EQ(run.logs().mid(1), (QStringList{QStringLiteral("null"), QStringLiteral("null")}));
    }

    static inline HttpServer *server = nullptr;
};

TEST_F(WorkerHttp, aRequestArrivesAsItWasPut) {
    const QJsonObject echo = this->echo(
        requestPath("/echo?a=1", "PUT", "{ 'X-One': '1', Authorization: 'Bearer t', 'X-Empty': '' }", "'body'"));
    EXPECT_EQ(echo.value(QStringLiteral("method")).toString(), QStringLiteral("PUT"));
    EXPECT_EQ(echo.value(QStringLiteral("path")).toString(), QStringLiteral("/echo?a=1"));
    EXPECT_EQ(echo.value(QStringLiteral("body")).toString(), QStringLiteral("body"));
    EXPECT_EQ(header(echo, "x-one"), QStringLiteral("1"));
    EXPECT_EQ(header(echo, "authorization"), QStringLiteral("Bearer t"));
    EXPECT_EQ(header(echo, "x-empty"), QString());
    EXPECT_EQ(header(echo, "expect"), QStringLiteral("(none)"));
}

TEST_F(WorkerHttp, aCompletedExchangeIsNoErrorWhateverItsStatus) {
    for (const char *status : {"200", "404", "500"}) {
        const WorkerRun run = requestPath((QByteArray("/status/") + status).constData());
        EXPECT_EQ(run.logs(), (QStringList{QStringLiteral("null"), QLatin1String(status),
                                           QStringLiteral("status ") + QLatin1String(status)}));
    }
}

TEST_F(WorkerHttp, aFailureIsAString) {
    expectFailure(request(QStringLiteral("http://127.0.0.1:1/")), "connect");
    expectFailure(requestPath("/close"), "");
}

TEST_F(WorkerHttp, onlyHttpAndHttpsAreRequested) {
    for (const char *url :
         {"file:///etc/passwd", "ftp://127.0.0.1/", "gopher://127.0.0.1/", "dict://h/", "/path", "", "http:/h"})
        expectFailure(request(QLatin1String(url)), "Only http and https URLs can be requested.");
    expectFailure(requestPath("/a b"), "The URL is malformed.");
}

TEST_F(WorkerHttp, malformedPartsAreRefused) {
    expectFailure(requestPath("/echo", "GET", "{ 'X': 'a\\r\\nInjected: 1' }"), "A header is malformed.");
    expectFailure(requestPath("/echo", "GET", "{ 'X\\n': 'a' }"), "A header is malformed.");
    expectFailure(requestPath("/echo", "GET", "{ 'X Y': 'a' }"), "A header is malformed.");
    expectFailure(requestPath("/echo", "GET\\r\\nX: 1"), "The method is malformed.");
    expectFailure(requestPath("/echo", "CONNECT"), "The method is malformed.");
    expectFailure(
        requestPath("/echo", "GET", "Object.fromEntries(Array.from({ length: 101 }, (_, i) => ['h' + i, '']))"),
        "There are too many headers.");
}

TEST_F(WorkerHttp, aCallbackThatIsNoFunctionIsTold) {
    EXPECT_EQ(
        runWorker("function uploadImage() { nativeHTTPRequest('http://h/', 'GET', {}, '') }").text("errorMessage"),
        QStringLiteral("Error: nativeHTTPRequest(url, method, headers, body, callback) wants a callback function"));
}

TEST_F(WorkerHttp, theCallbackIsCalledOnceAndNeverAtOnce) {
    const WorkerRun run = runWorker(QStringLiteral(R"js(function uploadImage() { return new Promise((resolve) => {
        let calls = 0, isInside = true;
        for (const url of ['%1', 'file:///x', 'http://127.0.0.1:1/'])
            nativeHTTPRequest(url, 'GET', null, undefined, () => { ++calls; if (isInside) resolve('at once') });
        isInside = false;
        setTimeout(() => resolve('calls ' + calls), 1000);
    }) })js")
                                        .arg(server->url("/echo")));
    EXPECT_EQ(run.text("url"), QStringLiteral("calls 3"));
}

TEST_F(WorkerHttp, requestsRunSideBySideUpToTheLimit) {
    const QString script = QStringLiteral(R"js(async function uploadImage() {
        const one = () => new Promise((ok) => nativeHTTPRequest('%1', 'GET', {}, '', (e, s) => ok(e || s)));
        const all = await Promise.all(Array.from({ length: %2 }, one));
        return [...new Set(all)].join('|') })js")
                               .arg(server->url("/slow/300"));
    const WorkerRun most = runWorker(script.arg(16));
    EXPECT_EQ(most.text("url"), QStringLiteral("200"));
    EXPECT_LT(most.milliseconds, 16 * 300 / 2);
    EXPECT_EQ(runWorker(script.arg(17)).text("url"), QStringLiteral("200|There are too many requests at once."));
}

// ---- Bodies ----

TEST_F(WorkerHttp, textGoesOutAsUtf8) {
    for (const char *type : {"application/json", "text/plain", "application/x-www-form-urlencoded"}) {
        const QByteArray headers = QByteArray("{ 'Content-Type': '") + type + "' }";
        EXPECT_EQ(
            echo(requestPath("/echo", "POST", headers.constData(), "'é€'")).value(QStringLiteral("body")).toString(),
            QString::fromLatin1("\xC3\xA9\xE2\x82\xAC"));
        EXPECT_EQ(
            echo(requestPath("/echo", "POST", headers.constData(), "'é'")).value(QStringLiteral("body")).toString(),
            QString::fromLatin1("\xC3\xA9"));
    }
    EXPECT_EQ(echo(requestPath("/echo", "POST", "{}", "'é'")).value(QStringLiteral("body")).toString(),
              QString::fromLatin1("\xC3\xA9"));
}

TEST_F(WorkerHttp, everyByteArrivesInABinaryBody) {
    QString allBytes;
    for (int i = 0; i < 256; ++i)
        allBytes += QChar(i);
    const char *string = "String.fromCharCode(...Array(256).keys())";
    const struct {
        const char *headers;
        const char *body;
    } cases[] = {{"{ 'content-type': 'image/png' }", string},
                 {"{ 'Content-Type': 'application/octet-stream' }", string},
                 {"{ 'Content-Type': 'multipart/form-data; boundary=x' }", string},
                 {"{}", "Uint8Array.from(Array(256).keys())"},
                 {"{ 'Content-Type': 'text/plain' }", "Uint8Array.from(Array(256).keys()).buffer"}};
    for (const auto &one : cases)
        EXPECT_EQ(echo(requestPath("/echo", "POST", one.headers, one.body)).value(QStringLiteral("body")).toString(),
                  allBytes)
            << one.headers << one.body;
}

TEST_F(WorkerHttp, aPictureCanBePostedAsMultipart) {
    const QByteArray picture = QByteArray::fromBase64("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAQAAAC1HAwC/w==");
    const WorkerRun run =
        runWorker(QStringLiteral(R"js(function uploadImage(image, name) { return new Promise((ok, no) => {
        const body = '--b\r\nContent-Disposition: form-data; name="f"; filename="' + name + '"\r\n\r\n' + atob(image) + '\r\n--b--\r\n';
        nativeHTTPRequest('%1', 'POST', { 'Content-Type': 'multipart/form-data; boundary=b' }, body,
            (error, status, text) => error ? no(error) : ok(btoa(JSON.parse(text).body))) }) })js")
                      .arg(server->url("/echo")),
                  QString::fromLatin1(picture.toBase64()));
    const QByteArray sent = QByteArray::fromBase64(run.text("url").toLatin1());
    EXPECT_EQ(sent, "--b\r\nContent-Disposition: form-data; name=\"f\"; filename=\"shot.png\"\r\n\r\n" + picture +
                        "\r\n--b--\r\n");
}

TEST_F(WorkerHttp, multipartTextWithoutBytesIsText) {
    EXPECT_EQ(echo(requestPath("/echo", "POST", "{ 'Content-Type': 'multipart/form-data; boundary=b' }", "'é\\r\\n'"))
                  .value(QStringLiteral("body"))
                  .toString(),
              QString::fromLatin1("\xC3\xA9\r\n"));
}

TEST_F(WorkerHttp, aResponseThatIsNoTextIsGivenByteByByte) {
    const WorkerRun run = runWorker(QStringLiteral(R"js(function uploadImage() { return new Promise((ok) =>
        nativeHTTPRequest('%1', 'GET', {}, '', (e, s, body) => ok([...body].every((c, i) => c.charCodeAt(0) === i) + ' ' + body.length))) })js")
                                        .arg(server->url("/bytes")));
    EXPECT_EQ(run.text("url"), QStringLiteral("true 256"));
}

TEST_F(WorkerHttp, aLargeBodyGoesThrough) {
    const WorkerRun run = runWorker(QStringLiteral(R"js(function uploadImage(image) { return new Promise((ok) =>
        nativeHTTPRequest('%1', 'POST', { Authorization: 'Bearer YOUR_TOKEN' }, JSON.stringify({ image, fileName: 'n' }),
            (e, s, body) => ok(e || JSON.parse(body).url))) })js")
                                        .arg(server->url("/upload")),
                                    QString(20'000'000, QLatin1Char('A')));
    EXPECT_EQ(run.text("url"), QStringLiteral("https://own/n?20000000"));
}

TEST_F(WorkerHttp, aResponseOverTheLimitIsAnError) {
    const auto size = [](const char *path) {
        return runWorker(
                   QStringLiteral(
                       "function uploadImage() { return new Promise((ok) => nativeHTTPRequest('%1', 'GET', {}, '', "
                       "(e, s, body) => ok(e || String(body.length)))) }")
                       .arg(server->url(path)))
            .text("url");
    };
    EXPECT_EQ(size("/large/8388608"), QStringLiteral("8388608"));
    EXPECT_EQ(size("/large/8388609"), QStringLiteral("The response is larger than 8 MiB."));
    EXPECT_EQ(size("/endless"), QStringLiteral("The response is larger than 8 MiB."));
}

// ---- Redirects and TLS ----

TEST_F(WorkerHttp, redirectsAreFollowedUpToTheLimit) {
    EXPECT_EQ(echo(requestPath("/round/5")).value(QStringLiteral("path")).toString(), QStringLiteral("/echo"));
    expectFailure(requestPath("/round/6"), "There were too many redirects.");
}

TEST_F(WorkerHttp, aRedirectNeverChangesTheScheme) {
    for (const char *location :
         {"https://127.0.0.1/", "file:///etc/passwd", "ftp://127.0.0.1/", "gopher://127.0.0.1:1/"}) {
        const QByteArray path = QByteArray("/redirect/302?") + location;
        expectFailure(requestPath(path.constData()), "The server redirects to another scheme.");
    }
}

TEST_F(WorkerHttp, aRedirectChangesTheMethodAsInBrowsers) {
    const struct {
        const char *status;
        const char *method;
        const char *then;
    } cases[] = {{"301", "POST", "GET"}, {"302", "POST", "GET"},  {"303", "POST", "GET"}, {"303", "PUT", "GET"},
                 {"302", "PUT", "PUT"},  {"307", "POST", "POST"}, {"308", "POST", "POST"}};
    for (const auto &one : cases) {
        const QByteArray path = QByteArray("/redirect/") + one.status + "?/echo";
        const QJsonObject echo =
            this->echo(requestPath(path.constData(), one.method, "{ 'Content-Type': 'text/x' }", "'b'"));
        EXPECT_EQ(echo.value(QStringLiteral("method")).toString(), QLatin1String(one.then)) << one.status << one.method;
        const bool keeps = QByteArray(one.then) != "GET";
        EXPECT_EQ(echo.value(QStringLiteral("body")).toString(), keeps ? QStringLiteral("b") : QString());
        EXPECT_EQ(header(echo, "content-type"), keeps ? QStringLiteral("text/x") : QStringLiteral("(none)"));
    }
}

TEST_F(WorkerHttp, whatIdentifiesThePersonStaysWithItsServer) {
    const HttpServer other;
    const char *headers = "{ Authorization: 'secret', Cookie: 'c', 'X-Api-Key': 'k', Host: 'h', Accept: 'a/b' }";
    const QByteArray away = "/redirect/307?" + other.url("/echo").toUtf8();
    const QJsonObject there = echo(requestPath(away.constData(), "GET", headers));
    EXPECT_EQ(header(there, "authorization"), QStringLiteral("(none)"));
    EXPECT_EQ(header(there, "cookie"), QStringLiteral("(none)"));
    EXPECT_EQ(header(there, "x-api-key"), QStringLiteral("(none)"));
    EXPECT_EQ(header(there, "host"), QUrl(other.url("/")).authority());
    EXPECT_EQ(header(there, "accept"), QStringLiteral("a/b")); // says how to answer
    const QJsonObject here = echo(requestPath("/redirect/307?/echo", "GET", headers));
    EXPECT_EQ(header(here, "authorization"), QStringLiteral("secret"));
    EXPECT_EQ(header(here, "x-api-key"), QStringLiteral("k"));
}

TEST_F(WorkerHttp, aCertificateThatNobodyVouchesForIsRefused) {
    const QTemporaryDir folder;
    const QString key = folder.filePath(QStringLiteral("key"));
    const QString certificate = folder.filePath(QStringLiteral("certificate"));
    const QString arguments = QStringLiteral("req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=127.0.0.1 "
                                             "-addext subjectAltName=IP:127.0.0.1 -keyout key -out certificate");
    QProcess openssl;
    openssl.setWorkingDirectory(folder.path());
    openssl.start(QStringLiteral("openssl"), arguments.split(QLatin1Char(' ')));
    ASSERT_TRUE(openssl.waitForFinished());
    ASSERT_TRUE(QFile::exists(certificate));
    const HttpServer secure({certificate, key});
    expectFailure(request(secure.url("/echo", "https")), "certificate");
}

// ---- The two built-in scripts ----

TEST_F(WorkerHttp, theDefaultScriptIsNotImplementedYet) {
    const WorkerRun run = runWorker(defaultUploadScript());
    EXPECT_EQ(run.text("errorKind"), QStringLiteral("runtimeError"));
    EXPECT_EQ(run.text("errorMessage"), QStringLiteral("Error: uploadImage() is not implemented yet"));
}

TEST_F(WorkerHttp, theDefaultScriptsExampleWorksOnceItIsNoComment) {
    QString script = defaultUploadScript();
    script.remove(QStringLiteral("throw new Error(\"uploadImage() is not implemented yet\");"));
    script.replace(QStringLiteral("https://your-server.example.com/upload"), server->url("/upload"));
    script.remove(QStringLiteral("  // Example"));
    const qsizetype from = script.indexOf(QStringLiteral("  // return new Promise"));
    ASSERT_GT(from, 0);
    script = script.left(from) + script.mid(from).replace(QStringLiteral("  // "), QStringLiteral("  "));
    EXPECT_EQ(runWorker(script).text("url"), QStringLiteral("https://own/shot.png?8"));
    script.replace(QStringLiteral("YOUR_TOKEN"), QStringLiteral("other"));
    EXPECT_EQ(runWorker(script).text("errorMessage"), QStringLiteral("Upload failed: HTTP 403"));
}

TEST_F(WorkerHttp, theImgBBTemplateUploads) {
    const auto upload = [](const char *key, const QString &image) {
        QString script = imgBBUploadScript();
        EXPECT_TRUE(script.contains(QStringLiteral("https://api.imgbb.com/1/upload")));
        script.replace(QStringLiteral("https://api.imgbb.com"), server->url(""));
        script.replace(QStringLiteral("const apiKey = \"\""),
                       QStringLiteral("const apiKey = \"%1\"").arg(QLatin1String(key)));
        return runWorker(script, image, QStringLiteral("a b.png"));
    };
    const QString image = QStringLiteral("ab+/c=");
    EXPECT_EQ(upload("k", image).text("url"), QStringLiteral("https://i/a%20b.png/ab%2B%2Fc%3D"));
    EXPECT_EQ(upload("k", QStringLiteral("data:image/png;base64,") + image).text("url"),
              QStringLiteral("https://i/a%20b.png/ab%2B%2Fc%3D"));
    EXPECT_EQ(upload("", image).text("errorMessage"),
              QStringLiteral("ImgBB error (status 400): {\"error\":\"no key\"}"));
    for (const auto &[key, answer] : {std::pair{"no-success", R"({"data":{"url":"https://i/x"}})"},
                                      {"refused", R"({"success":false,"data":{"url":"https://i/x"}})"},
                                      {"no-data", R"({"success":true})"},
                                      {"null-data", R"({"success":true,"data":null})"},
                                      {"no-url", R"({"success":true,"data":{}})"},
                                      {"empty-url", R"({"success":true,"data":{"url":""}})"}})
        EXPECT_EQ(upload(key, image).text("errorMessage"),
                  QStringLiteral("Unexpected response: ") + QLatin1String(answer))
            << key;
    EXPECT_EQ(upload("text", image).text("errorMessage"), QStringLiteral("Failed to parse response: hello"));
}

TEST_F(WorkerHttp, theImgBBTemplateTellsOfANetworkError) {
    QString script = imgBBUploadScript();
    script.replace(QStringLiteral("https://api.imgbb.com"), QStringLiteral("http://127.0.0.1:1"));
    EXPECT_TRUE(runWorker(script).text("errorMessage").startsWith(QStringLiteral("Network error: ")));
}

TEST(UploadScripts, theDefaultScriptHas931Characters) {
    const QString script = defaultUploadScript();
    EXPECT_EQ(script.size(), 931);
    for (const char *part :
         {"// Write your own upload logic here, using your own API keys/credentials.",
          "// Return a URL string, or a Promise that resolves to one.", "nativeHTTPRequest", "/upload\"", "\"POST\"",
          "\"Content-Type\": \"application/json\"", "\"Authorization\": \"Bearer YOUR_TOKEN\"",
          "JSON.stringify({ fileName: fileName, image: imageBase64 })", "\"Upload failed: HTTP \" + status",
          "JSON.parse(responseBody).url"})
        EXPECT_TRUE(script.contains(QLatin1String(part))) << part;
}

} // namespace
} // namespace tavrine
