// Downloads, under one contract over the fake and over the real ones, which fetch from a server of the test's own.
#include "adapters/fake/FakeDownloads.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/linux/DownloadProtocol.h"
#include "adapters/linux/DownloaderProcess.h"
#include "support/Eventually.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <optional>

#include <gmock/gmock.h>
#include <sys/resource.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using downloadProtocol::Report;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// The server of the uploads' tests.
class Server {
public:
    Server() {
        m_program.start(text(HTTP_SERVER), {});
        m_program.waitForReadyRead(10'000);
        m_port = QString::fromLatin1(m_program.readLine()).trimmed();
    }
    ~Server() {
        m_program.kill();
        m_program.waitForFinished();
    }
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;
    [[nodiscard]] QUrl at(const QString &path) const { return QUrl(text("http://127.0.0.1:") + m_port + path); }

private:
    QProcess m_program;
    QString m_port;
};

struct FakeNet {
    Downloads &downloads() { return fake; }
    QUrl music() { return QUrl(text("http://example.org/large/300000")); }
    QUrl missing() { return QUrl(text("http://example.org/status/404")); }
    void arrive() {
        fake.progress(300'000, 300'000);
        fake.finish(QByteArray(300'000, 'a'));
    }
    void refuse() { fake.fail(text("404")); }
    template <class Condition>
    bool eventually(Condition condition) {
        time.runPending();
        return condition();
    }
    void settle() { time.runPending(); }

    VirtualTime time;
    FakeDownloads fake{time};
};

struct RealNet {
    Downloads &downloads() { return real; }
    QUrl music() { return server.at(text("/large/300000")); }
    QUrl missing() { return server.at(text("/status/404")); }
    void arrive() {}
    void refuse() {}
    template <class Condition>
    bool eventually(Condition condition) {
        return test::eventually(condition);
    }
    void settle() { letPass(200ms); }

    Server server;
    DownloaderProcesses real{QCoreApplication::applicationDirPath(), 1s};
};

template <class Net>
class DownloadsContract : public testing::Test {
protected:
    void fetch(const QUrl &url, const DownloadBounds &bounds = {}) {
        lastWritten = 0;
        finishes = 0;
        completions = 0;
        task = net.downloads().downloadTask(url, destination,
                                            {.didWriteData =
                                                 [this](qint64 written, qint64 expected) {
                                                     EXPECT_GE(written, lastWritten);
                                                     lastWritten = written;
                                                     lastExpected = expected;
                                                 },
                                             .didFinishDownloading =
                                                 [this](DownloadedFile &file) {
                                                     ++finishes;
                                                     EXPECT_EQ(kept(), keptBefore); // without a name so far
                                                     if (takesFile)
                                                         moved = file.moveToDestination();
                                                 },
                                             .didComplete =
                                                 [this](const QString &words) {
                                                     ++completions;
                                                     error = words;
                                                     task.reset();
                                                 }},
                                            bounds);
        task->resume();
        EXPECT_EQ(completions, 0);
    }
    [[nodiscard]] QStringList kept() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden); }
    [[nodiscard]] QByteArray contents() const {
        QFile file(destination);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    bool isComplete() {
        return net.eventually([this] { return completions == 1; });
    }

    QTemporaryDir folder;
    QString destination = folder.filePath(text("track_1.mp3"));
    Net net;
    std::unique_ptr<DownloadTask> task;
    QStringList keptBefore;
    bool takesFile = true;
    qint64 lastWritten = 0;
    qint64 lastExpected = 0;
    int finishes = 0;
    int completions = 0;
    std::optional<FileResult> moved;
    QString error;
};

using Nets = testing::Types<FakeNet, RealNet>;
TYPED_TEST_SUITE(DownloadsContract, Nets);

TYPED_TEST(DownloadsContract, whatArrivesGetsItsNameWholeAndInOneStep) {
    this->fetch(this->net.music());
    ASSERT_TRUE(this->task);
    EXPECT_EQ(this->task->originalRequestUrl(), this->net.music());
    this->net.arrive();
    EXPECT_TRUE(this->isComplete());
    EXPECT_EQ(this->error, QString());
    EXPECT_EQ(this->finishes, 1);
    EXPECT_TRUE(this->moved && *this->moved);
    EXPECT_EQ(this->contents(), QByteArray(300'000, 'a'));
    EXPECT_EQ(this->lastWritten, 300'000);
    EXPECT_EQ(this->lastExpected, 300'000);
    EXPECT_EQ(this->kept(), QStringList(text("track_1.mp3")));
}

TYPED_TEST(DownloadsContract, aFileThatStoodThereIsReplaced) {
    QFile old(this->destination);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    old.close();
    this->keptBefore = this->kept();
    this->fetch(this->net.music());
    this->net.arrive();
    EXPECT_TRUE(this->isComplete());
    EXPECT_EQ(this->contents().size(), 300'000);
    EXPECT_EQ(this->kept(), QStringList(text("track_1.mp3")));
}

TYPED_TEST(DownloadsContract, aFileThatNobodyTakesLeavesNothing) {
    this->takesFile = false;
    this->fetch(this->net.music());
    this->net.arrive();
    EXPECT_TRUE(this->isComplete());
    EXPECT_EQ(this->kept(), QStringList());
}

TYPED_TEST(DownloadsContract, whatIsNotThereIsAnError) {
    this->fetch(this->net.missing());
    this->net.refuse();
    EXPECT_TRUE(this->isComplete());
    EXPECT_TRUE(this->error.contains(text("404"))) << this->error.toStdString();
    EXPECT_EQ(this->finishes, 0);
    EXPECT_EQ(this->kept(), QStringList());
}

TYPED_TEST(DownloadsContract, anAddressOfAnotherKindIsAnError) {
    for (const char *address :
         {"ftp://example.org/a.mp3", "data:,x", "javascript:1", "gopher://example.org/", "a.mp3", ""}) {
        this->fetch(QUrl(text(address)));
        EXPECT_TRUE(this->isComplete()) << address;
        EXPECT_EQ(this->error, text("unsupported URL")) << address;
    }
    EXPECT_EQ(this->kept(), QStringList());
}

TYPED_TEST(DownloadsContract, moreBytesThanAreLetInAreAnErrorAndThatManyAreNone) {
    this->fetch(this->net.music(), {.mostBytes = 299'999});
    this->net.arrive();
    EXPECT_TRUE(this->isComplete());
    EXPECT_EQ(this->error, text("the file is too large"));
    EXPECT_EQ(this->finishes, 0);
    EXPECT_EQ(this->kept(), QStringList());
    this->fetch(this->net.music(), {.mostBytes = 300'000});
    this->net.arrive();
    EXPECT_TRUE(this->isComplete());
    EXPECT_EQ(this->contents().size(), 300'000);
}

TYPED_TEST(DownloadsContract, whereOnlySecureAddressesCountAnyOtherIsAnError) {
    for (const QUrl &url : {this->net.music(), QUrl::fromLocalFile(text("/etc/hostname")), QUrl(text("ftp://a/b"))}) {
        this->fetch(url, {.schemes = DownloadBounds::Schemes::secure});
        EXPECT_TRUE(this->isComplete()) << url.toString().toStdString();
        EXPECT_EQ(this->error, text("unsupported URL")) << url.toString().toStdString();
    }
    EXPECT_EQ(this->kept(), QStringList());
}

TYPED_TEST(DownloadsContract, aDroppedTaskSaysNothingMoreAndLeavesNothing) {
    this->fetch(this->net.music());
    this->task.reset();
    this->net.arrive();
    this->net.settle();
    EXPECT_EQ(this->finishes, 0);
    EXPECT_EQ(this->completions, 0);
    EXPECT_EQ(this->kept(), QStringList());
}

// The real ones alone.

class DownloaderTest : public DownloadsContract<RealNet> {
protected:
    void expectError(const QUrl &url, const char *words) {
        fetch(url);
        EXPECT_TRUE(isComplete());
        EXPECT_TRUE(error.contains(text(words), Qt::CaseInsensitive)) << error.toStdString();
        EXPECT_EQ(finishes, 0);
        EXPECT_EQ(kept(), QStringList());
    }
};

TEST_F(DownloaderTest, aFileOfThisMachineIsFetchedLikeAnyOther) {
    QTemporaryDir elsewhere;
    QFile file(elsewhere.filePath(text("50% ü #1?.mp3")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("music") == 5);
    file.close();
    fetch(QUrl::fromLocalFile(file.fileName()));
    EXPECT_TRUE(isComplete());
    EXPECT_EQ(error, QString());
    EXPECT_EQ(contents(), "music");
}

TEST_F(DownloaderTest, aFileThatIsNotThereIsAnError) {
    expectError(QUrl::fromLocalFile(folder.filePath(text("none.mp3"))), "open file");
}

TEST_F(DownloaderTest, redirectsAreFollowedToTheNetworkAndNowhereElse) {
    fetch(net.server.at(text("/redirect/302?/bytes")));
    EXPECT_TRUE(isComplete());
    EXPECT_EQ(contents().size(), 256);
    EXPECT_EQ(QFileInfo(destination).fileName(), text("track_1.mp3"));
    QFile::remove(destination);
    expectError(net.server.at(text("/redirect/302?file:///etc/hostname")), "file");
    expectError(net.server.at(text("/round/50")), "redirect");
}

TEST_F(DownloaderTest, whereNobodyAnswersThereIsAnError) {
    expectError(QUrl(text("http://127.0.0.1:1/track_1.mp3")), "connect");
    expectError(QUrl(text("http://no-such-host.invalid/track_1.mp3")), "resolve");
}

TEST_F(DownloaderTest, aServerThatStallsIsGivenUp) {
    expectError(net.server.at(text("/slow/60000")), "too slow");
}

TEST_F(DownloaderTest, aFullDiskIsToldAndNothingIsLeft) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{100'000, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    expectError(net.music(), "too large");
    ::setrlimit(RLIMIT_FSIZE, &before);
}

TEST_F(DownloaderTest, aFolderThatIsNotThereIsAnError) {
    destination = folder.filePath(text("none/track_1.mp3"));
    expectError(net.music(), "No such file or directory");
}

TEST_F(DownloaderTest, aDownloaderThatCrashesIsAnErrorAndTheEndOfTheTaskEndsIt) {
    const auto children = [] {
        QFile file(QStringLiteral("/proc/self/task/%1/children").arg(QCoreApplication::applicationPid()));
        QList<pid_t> found;
        if (file.open(QIODevice::ReadOnly))
            for (const QByteArray &child : file.readAll().split(' ')) {
                QFile name(QStringLiteral("/proc/%1/comm").arg(child.toInt()));
                if (name.open(QIODevice::ReadOnly) && name.readAll().startsWith("TavrineDown"))
                    found.append(child.toInt());
            }
        return found;
    };
    fetch(net.server.at(text("/endless")));
    ASSERT_TRUE(eventually([&] { return lastWritten > 0; }));
    ASSERT_EQ(children().size(), 1);
    ::kill(children().front(), SIGKILL);
    EXPECT_TRUE(isComplete());
    EXPECT_EQ(error, text("the downloader: it ended unexpectedly"));
    ASSERT_TRUE(eventually([&] { return children().isEmpty(); })); // it closes its pipe before it has ended
    fetch(net.server.at(text("/endless")));
    ASSERT_EQ(children().size(), 1);
    task.reset();
    EXPECT_TRUE(eventually([&] { return children().isEmpty(); }));
    EXPECT_EQ(kept(), QStringList());
}

TEST(DownloadProtocol, everyReportComesBackAsItWent) {
    for (const Report &report :
         {Report{Report::Kind::progress, 0, 0}, Report{Report::Kind::progress, 5, 7'000'000'000},
          Report{Report::Kind::done}, Report{.kind = Report::Kind::failed, .words = "404 – nö"}}) {
        const std::string line = downloadProtocol::lineOf(report);
        EXPECT_EQ(downloadProtocol::reportIn({line.data(), line.size() - 1}), report);
    }
}

TEST(DownloadProtocol, whatNoDownloaderSaysIsNothing) {
    for (const char *line : {"", "done ", "done now", "progress", "progress 1", "progress 1 ", "progress -1 5",
                             "progress 1 2 3", "progress 1 99999999999999999999", "failed", "FAILED x", "\xff"})
        EXPECT_EQ(downloadProtocol::reportIn(line), std::nullopt) << line;
}

} // namespace
} // namespace tavrine::test
