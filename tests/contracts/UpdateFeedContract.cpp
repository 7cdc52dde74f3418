// The feed of versions, under one contract over the fake and over the real one, which is fetched over TLS from a server
// of the test's own and signed as a release is.
#include "adapters/fake/FakeUpdateFeed.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/linux/AppcastFeed.h"
#include "adapters/linux/DownloaderProcess.h"
#include "adapters/linux/HelperProcess.h"
#include "base/Descriptor.h"
#include "shell/updates/UpdateOutcome.h"
#include "support/Eventually.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <optional>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using Answer = UpdateFeed::Answer;
using Kind = Answer::Kind;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// The standard output of a program that succeeds.
QByteArray outputOf(const QString &program, const QStringList &arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}
void openssl(const QString &arguments) {
    static_cast<void>(outputOf(text("openssl"), arguments.split(u' ')));
}
void write(const QString &path, const QByteArray &bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}
QByteArray read(const QString &path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

/// A pair of keys of the makers.
class Makers {
public:
    Makers() { openssl(text("genpkey -algorithm ed25519 -out ") + m_key); }
    /// As the build takes it.
    [[nodiscard]] QString publicKey() const {
        return QString::fromLatin1(outputOf(text(SIGN_FEED), {text("--public"), m_key})).trimmed();
    }
    [[nodiscard]] QByteArray sign(const QByteArray &feed) const {
        const QString path = m_folder.filePath(text("feed.xml"));
        write(path, feed);
        static_cast<void>(outputOf(text(SIGN_FEED), {m_key, path}));
        return read(path);
    }

private:
    QTemporaryDir m_folder;
    QString m_key = m_folder.filePath(text("key.pem"));
};

class SecureServer {
public:
    explicit SecureServer(const QString &folder = qEnvironmentVariable("OWN_CERTIFICATES")) {
        m_program.start(text(HTTP_SERVER), {folder + text("/ca-certificates.crt"), folder + text("/key")});
        m_program.waitForReadyRead(10'000);
        m_port = QString::fromLatin1(m_program.readLine()).trimmed();
    }
    ~SecureServer() {
        m_program.kill();
        m_program.waitForFinished();
    }
    SecureServer(const SecureServer &) = delete;
    SecureServer &operator=(const SecureServer &) = delete;
    [[nodiscard]] QUrl at(const QString &path) const { return QUrl(text("https://127.0.0.1:") + m_port + path); }

private:
    QProcess m_program;
    QString m_port;
};

/// One for all tests, as are the makers: nothing changes in them.
SecureServer &server() {
    static SecureServer server;
    return server;
}
const Makers &makers() {
    static const Makers makers;
    return makers;
}

struct FakeNet {
    UpdateFeed &feed() { return fake; }
    void publish(const QByteArray &bytes) { fake.setContents(bytes); }
    void publishUnsigned(const QByteArray &) { fake.setRefused(); }
    void goAway() { fake.setUnreachable(); }
    void stall() { fake.setHanging(true); }
    template <class Condition>
    bool eventually(Condition condition) {
        time.runPending();
        return condition();
    }
    void settle() { time.runPending(); }
    static bool leftAnything() { return false; }

    VirtualTime time;
    FakeUpdateFeed fake{time};
};

struct RealNet {
    RealNet() { become({makers().publicKey()}); }
    UpdateFeed &feed() { return *real; }
    void publish(const QByteArray &bytes) { publishUnsigned(makers().sign(bytes)); }
    void publishUnsigned(const QByteArray &bytes) { write(published, bytes); }
    void goAway() { become({makers().publicKey()}, QUrl(text("https://127.0.0.1:1/feed.xml"))); }
    void stall() { become({makers().publicKey()}, server().at(text("/slow/60000"))); }
    template <class Condition>
    bool eventually(Condition condition) {
        return test::eventually(condition);
    }
    void settle() { letPass(50ms); }
    [[nodiscard]] bool leftAnything() const {
        return !QDir(temporary).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    /// From now on the build names this.
    void become(const QStringList &keys, const QUrl &address) {
        real = std::make_unique<AppcastFeed>(AppcastFeed::Parts{downloads, temporary, programs, address, keys});
    }
    void become(const QStringList &keys) { become(keys, server().at(text("/file?") + published)); }

    QTemporaryDir folder;
    QString published = folder.filePath(text("feed.xml"));
    QString temporary = folder.filePath(text("cache/tmp"));
    QString programs = QCoreApplication::applicationDirPath();
    DownloaderProcesses downloads{QCoreApplication::applicationDirPath()};
    std::unique_ptr<AppcastFeed> real;
};

constexpr auto feedBytes = "<rss><channel><item><version>2.4.0</version><enclosure length='1' "
                           "url='https://example.org/t.deb'/></item></channel></rss>\n";

template <class Net>
class UpdateFeedContract : public testing::Test {
protected:
    void fetch() {
        answer.reset();
        question = net.feed().fetch([this](const Answer &given) {
            EXPECT_FALSE(answer) << "a second answer";
            answer = given;
            question.reset();
        });
        EXPECT_FALSE(answer) << "the answer comes in a later turn";
    }
    [[nodiscard]] Answer fetched() {
        fetch();
        EXPECT_TRUE(net.eventually([this] { return answer.has_value(); }));
        EXPECT_FALSE(net.leftAnything());
        return answer.value_or(Answer{});
    }

    Net net;
    std::unique_ptr<UpdateFeed::Question> question;
    std::optional<Answer> answer;
};

using Nets = testing::Types<FakeNet, RealNet>;
TYPED_TEST_SUITE(UpdateFeedContract, Nets);

TYPED_TEST(UpdateFeedContract, whatTheMakersSignedComesAsItIs) {
    this->net.publish(feedBytes);
    const Answer first = this->fetched();
    EXPECT_EQ(first.kind, Kind::contents);
    EXPECT_TRUE(first.contents.startsWith(feedBytes));
    this->net.publish(QByteArray(feedBytes) + "<!-- newer -->\n");
    EXPECT_TRUE(this->fetched().contents.contains("newer"));
}

TYPED_TEST(UpdateFeedContract, whatTheyDidNotSignIsRefused) {
    this->net.publishUnsigned(feedBytes);
    EXPECT_EQ(this->fetched(), Answer{Kind::refused});
}

TYPED_TEST(UpdateFeedContract, whereNobodyAnswersThereIsNoAnswer) {
    this->net.goAway();
    EXPECT_EQ(this->fetched(), Answer{});
}

TYPED_TEST(UpdateFeedContract, aServerThatStallsDoesNotEndTheQuestion) {
    this->net.stall();
    this->fetch();
    this->net.settle();
    EXPECT_FALSE(this->answer);
}

TYPED_TEST(UpdateFeedContract, aDroppedQuestionIsNotAnsweredAndLeavesNothing) {
    this->net.publish(feedBytes);
    this->fetch();
    this->question.reset();
    this->net.settle();
    EXPECT_FALSE(this->answer);
    EXPECT_FALSE(this->net.leftAnything());
}

TYPED_TEST(UpdateFeedContract, theSystemHasAVersion) {
    EXPECT_TRUE(this->net.feed().systemVersion().contains(u'.'));
}

// The real one alone.

class AppcastFeedTest : public UpdateFeedContract<RealNet> {
protected:
    [[nodiscard]] Kind kindOf(const QByteArray &bytes) {
        net.publishUnsigned(bytes);
        return fetched().kind;
    }
    [[nodiscard]] Kind kindAt(const QUrl &address) {
        net.become({makers().publicKey()}, address);
        return fetched().kind;
    }
    /// Behind 20 bytes that every feed has, and the line of its signature.
    [[nodiscard]] static QByteArray feedOfSize(qsizetype size) {
        const QByteArray empty = makers().sign("<rss><channel/></rss>\n");
        return makers().sign(QByteArray(size - empty.size(), ' ') + "<rss><channel/></rss>\n");
    }
};

TEST_F(AppcastFeedTest, aMegabyteIsTheMost) {
    const QByteArray most = feedOfSize(UpdateFeed::mostBytes);
    ASSERT_EQ(most.size(), UpdateFeed::mostBytes);
    EXPECT_EQ(kindOf(most), Kind::contents);
    EXPECT_EQ(answer->contents, most);
    EXPECT_EQ(kindOf(feedOfSize(UpdateFeed::mostBytes + 1)), Kind::noAnswer);
    EXPECT_EQ(kindOf(feedOfSize(10'000'000)), Kind::noAnswer);
    EXPECT_EQ(kindAt(server().at(text("/endless"))), Kind::noAnswer);
}

TEST_F(AppcastFeedTest, anotherKeyIsNoKeyOfTheMakersUnlessTheBuildNamesIt) {
    const Makers others;
    net.publishUnsigned(others.sign(feedBytes));
    EXPECT_EQ(fetched().kind, Kind::refused);
    net.become({makers().publicKey(), others.publicKey()});
    EXPECT_EQ(fetched().kind, Kind::contents);
    net.publish(feedBytes);
    EXPECT_EQ(fetched().kind, Kind::contents);
    net.become({});
    EXPECT_EQ(fetched().kind, Kind::refused);
}

TEST_F(AppcastFeedTest, theSignatureOfAnotherFeedIsNone) {
    const QByteArray one = makers().sign(feedBytes);
    const QByteArray other = makers().sign("<rss><channel/></rss>\n");
    const QByteArray signature = other.sliced(other.indexOf("<!-- ed25519"));
    EXPECT_EQ(kindOf(one.first(one.indexOf("<!-- ed25519")) + signature), Kind::refused);
    EXPECT_EQ(kindOf(one + signature), Kind::refused);
    EXPECT_EQ(kindOf(other), Kind::contents);
}

TEST_F(AppcastFeedTest, aFeedOfWhichAnythingIsOtherwiseIsRefused) {
    const QByteArray good = makers().sign(feedBytes);
    for (qsizetype place = 0; place < good.size(); place += 61) {
        QByteArray changed = good;
        changed[place] = static_cast<char>(changed[place] ^ 1);
        EXPECT_EQ(kindOf(changed), Kind::refused) << place;
    }
    const qsizetype line = good.indexOf("<!-- ed25519");
    for (const QByteArray &changed :
         {QByteArray(), QByteArray("\n"), good.sliced(line), good.chopped(1), good + '\n', good + "<!-- more -->\n",
          ' ' + good, QByteArray(good).replace("ed25519 ", "ed25519  "), QByteArray(good).replace("==", "=A"),
          QByteArray(good).replace("ed25519", "ed25518"), QByteArray(good).replace(" -->", " ->>"),
          good.first(line) + "<!-- ed25519  -->\n", good.first(line) + QByteArray(3, '\0') + good.sliced(line)})
        EXPECT_EQ(kindOf(changed), Kind::refused) << changed.toStdString();
}

TEST_F(AppcastFeedTest, onlyTlsCounts) {
    net.publish(feedBytes);
    QUrl address = server().at(text("/file?") + net.published);
    EXPECT_EQ(kindAt(address), Kind::contents);
    EXPECT_EQ(kindAt(QUrl::fromLocalFile(net.published)), Kind::noAnswer);
    QProcess plain;
    plain.start(text(HTTP_SERVER), {});
    ASSERT_TRUE(plain.waitForReadyRead(10'000));
    address = QUrl(text("http://127.0.0.1:") + QString::fromLatin1(plain.readLine()).trimmed() + text("/file?") +
                   net.published);
    EXPECT_EQ(kindAt(address), Kind::noAnswer);
    EXPECT_EQ(kindAt(server().at(text("/redirect/302?") + address.toString())), Kind::noAnswer)
        << "a redirect out of TLS";
    EXPECT_EQ(kindAt(server().at(text("/redirect/302?/file?") + net.published)), Kind::contents);
    plain.kill();
    plain.waitForFinished();
}

TEST_F(AppcastFeedTest, aServerThatNobodyVouchesForIsNotHeard) {
    const QTemporaryDir folder;
    openssl(text("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=127.0.0.1 "
                 "-addext subjectAltName=IP:127.0.0.1 -keyout %1/key -out %1/ca-certificates.crt")
                .arg(folder.path()));
    const SecureServer stranger(folder.path());
    net.publish(feedBytes);
    EXPECT_EQ(kindAt(stranger.at(text("/file?") + net.published)), Kind::noAnswer);
}

TEST_F(AppcastFeedTest, anAnswerThatIsNoFeedIsNone) {
    EXPECT_EQ(kindAt(server().at(text("/status/404"))), Kind::noAnswer);
    EXPECT_EQ(kindAt(server().at(text("/status/500"))), Kind::noAnswer);
    EXPECT_EQ(kindAt(server().at(text("/close"))), Kind::noAnswer);
    EXPECT_EQ(kindAt(server().at(text("/bytes"))), Kind::refused);
}

TEST_F(AppcastFeedTest, withoutAVerifierThatSaysSoNothingIsSigned) {
    net.publish(feedBytes);
    net.programs = net.folder.filePath(text("bin"));
    net.become({makers().publicKey()});
    EXPECT_EQ(fetched().kind, Kind::noAnswer) << "there is none";
    ASSERT_TRUE(QDir().mkpath(net.programs));
    const QString program = net.programs + text("/TavrineFeedVerifier");
    for (const char *script :
         {"kill -9 $$", "exit 0", "echo GOOD", "echo good enough", "printf good", "echo; echo good"}) {
        QFile::remove(program);
        write(program, QByteArray("#!/bin/sh\n") + script + '\n');
        ASSERT_TRUE(QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner));
        EXPECT_EQ(fetched().kind, Kind::noAnswer) << script;
    }
}

TEST_F(AppcastFeedTest, theVerifierReadsItsFirstByteBehindWalls) {
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    std::vector<std::string> lines;
    HelperProcess verifier({.program = net.programs + text("/TavrineFeedVerifier"),
                            .arguments = {makers().publicKey()},
                            .file = reading.number()},
                           {.line = [&](const std::string &line) { lines.push_back(line); }, .ended = {}});
    const QString status = text("/proc/%1/status").arg(verifier.processIdentifier());
    EXPECT_TRUE(eventually([&] { return read(status).contains("Seccomp:\t2\n"); }));
    EXPECT_TRUE(lines.empty());
    const QByteArray feed = makers().sign(feedBytes);
    ASSERT_EQ(::write(writing.number(), feed.constData(), static_cast<std::size_t>(feed.size())), feed.size());
    writing.close();
    EXPECT_TRUE(eventually([&] { return !lines.empty(); }));
    EXPECT_THAT(lines, testing::ElementsAre("good"));
}

TEST_F(AppcastFeedTest, aKeyThatIsNoneSignsNothing) {
    net.publish(feedBytes);
    for (const char *key : {"", "x", "AAAA", "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA="}) {
        net.become({text(key)});
        EXPECT_NE(fetched().kind, Kind::contents) << key;
    }
}

TEST_F(AppcastFeedTest, whereTheFileCannotBeKeptThereIsNoAnswer) {
    net.publish(feedBytes);
    net.temporary = net.published; // a file, where a folder would be
    net.become({makers().publicKey()});
    fetch();
    EXPECT_TRUE(eventually([this] { return answer.has_value(); }));
    EXPECT_EQ(answer, Answer{});
}

TEST_F(AppcastFeedTest, aFeedThatIsSignedTwiceIsSignedOnce) {
    const QByteArray once = makers().sign(feedBytes);
    EXPECT_EQ(makers().sign(once), once);
    const Makers others;
    EXPECT_EQ(makers().sign(others.sign(feedBytes)), once);
    EXPECT_EQ(makers().sign(QByteArray(feedBytes).chopped(1)), once) << "the last line has an end";
}

TEST_F(AppcastFeedTest, aFeedOfYesterdayIsAsGoodAsEverAndOffersNothing) {
    net.publish("<rss><channel><item><version>2.3.0</version><enclosure length='1' "
                "url='https://example.org/t.deb'/></item></channel></rss>\n");
    const UpdateAnswers answers{.ownVersion = text("2.3.1"),
                                .packages = {PackageUpdates::Answer::Kind::unavailable},
                                .feed = fetched(),
                                .systemVersion = net.feed().systemVersion()};
    EXPECT_EQ(answers.feed->kind, Kind::contents);
    EXPECT_EQ(outcomeOf(answers).kind, UpdateOutcome::Kind::upToDate);
}

} // namespace
} // namespace tavrine::test
