// What the recorder does when it is lied to, when whoever started it is killed, and when the disk is full.
#include "adapters/linux/RecorderProcess.h"
#include "adapters/linux/RecorderProtocol.h"
#include "base/Descriptor.h"
#include "support/Eventually.h"
#include "support/MovieReading.h"
#include "support/ScreenFrames.h"
#include "support/Text.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <csignal>
#include <random>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/wait.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using namespace recorderProtocol;

/// The program alone, spoken to by hand.
class Recorder {
public:
    explicit Recorder(const QString &path)
        : m_file(::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600)) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
        m_socket = Descriptor(ends[0]);
        const Descriptor other(::fcntl(ends[1], F_DUPFD_CLOEXEC, 10));
        const Descriptor file(::fcntl(m_file.number(), F_DUPFD_CLOEXEC, 10));
        ::close(ends[1]);
        const QByteArray program = QFile::encodeName(QCoreApplication::applicationDirPath() + text("/TavrineRecorder"));
        m_pid = ::fork();
        if (m_pid == 0) {
            ::dup2(other.number(), recorderProtocol::socket);
            ::dup2(file.number(), recorderProtocol::file);
            ::execl(program.constData(), program.constData(), nullptr);
            ::_exit(127);
        }
    }
    ~Recorder() { static_cast<void>(end()); }
    Recorder(const Recorder &) = delete;
    Recorder &operator=(const Recorder &) = delete;

    void tell(const std::string &message, int descriptor = -1) const {
        iovec part{const_cast<char *>(message.data()), message.size()};
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
        msghdr header{};
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        if (descriptor >= 0) {
            header.msg_control = control;
            header.msg_controllen = sizeof control;
            cmsghdr *const one = CMSG_FIRSTHDR(&header);
            one->cmsg_level = SOL_SOCKET;
            one->cmsg_type = SCM_RIGHTS;
            one->cmsg_len = CMSG_LEN(sizeof descriptor);
            std::memcpy(CMSG_DATA(one), &descriptor, sizeof descriptor);
        }
        ::sendmsg(m_socket.number(), &header, MSG_NOSIGNAL);
    }
    void begin() const {
        tell(messageOf(Start{.width = 64, .height = 48, .bitRate = 4'000'000, .frameRate = 60}));
        tell(messageOf(Session{.time = 100}));
    }
    /// Its next report, but for those of the end that comes nearer; none when it has ended.
    [[nodiscard]] std::optional<Report> report() const {
        while (true) {
            pollfd socket{m_socket.number(), POLLIN, 0};
            if (::poll(&socket, 1, 10'000) <= 0)
                return std::nullopt;
            char bytes[1024];
            const ssize_t count = ::recv(m_socket.number(), bytes, sizeof bytes, 0);
            if (count < 0 && errno == ECONNRESET)
                continue;
            const auto report = count > 0 ? reportIn({bytes, std::size_t(count)}) : std::nullopt;
            if (!report || report->kind != Report::Kind::writing)
                return report;
        }
    }
    /// Its status as the system tells it.
    [[nodiscard]] int end() {
        m_socket.close();
        int status = -1;
        if (m_pid > 0)
            ::waitpid(std::exchange(m_pid, -1), &status, 0);
        return status;
    }
    [[nodiscard]] pid_t processIdentifier() const { return m_pid; }

private:
    Descriptor m_file;
    Descriptor m_socket;
    pid_t m_pid = -1;
};

class RecorderAttack : public testing::Test {
protected:
    static Descriptor memory(off_t size) {
        Descriptor made(::memfd_create("attack", MFD_CLOEXEC));
        EXPECT_EQ(::ftruncate(made.number(), size), 0);
        return made;
    }
    void expectRefusal(const std::function<void(const Recorder &recorder)> &tell) {
        Recorder recorder(path);
        tell(recorder);
        std::optional<Report> report = recorder.report();
        while (report && report->kind == Report::Kind::taken)
            report = recorder.report();
        ASSERT_TRUE(report);
        EXPECT_EQ(*report, (Report{Report::Kind::failed, "it was told what makes no sense"}));
        EXPECT_TRUE(WIFEXITED(recorder.end()));
    }
    void expectPlayable(int leastFrames = 1) {
        EXPECT_EQ(complaintsAbout(path), "");
        EXPECT_GE(streamsOf(path).value(0)[QLatin1String("nb_read_frames")].toString().toInt(), leastFrames);
    }

    QTemporaryDir folder;
    QString path = folder.filePath(text("movie.mp4"));
    const Picture good{.time = 100, .number = 1, .buffer = 0, .bytesPerLine = 256, .isWhole = true};
};

TEST_F(RecorderAttack, itIsLockedInBeforeItIsToldAnything) {
    Recorder recorder(path);
    recorder.begin();
    QFile status(QStringLiteral("/proc/%1/status").arg(recorder.processIdentifier()));
    QByteArray lines;
    EXPECT_TRUE(eventually([&] {
        QFile file(status.fileName());
        lines = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        return lines.contains("Seccomp:\t2");
    }));
    EXPECT_TRUE(lines.contains("NoNewPrivs:\t1"));
}

TEST_F(RecorderAttack, whatMakesNoSenseEndsItWithWords) {
    const Descriptor enough = memory(256 * 48);
    const Descriptor little = memory(256 * 48 - 1);
    expectRefusal([&](const Recorder &recorder) { recorder.tell("x"); });
    expectRefusal([&](const Recorder &recorder) { recorder.tell(std::string(longestMessage + 1, 'x')); });
    expectRefusal([&](const Recorder &recorder) { recorder.tell(messageOf(Session{.time = 1})); });
    expectRefusal([&](const Recorder &recorder) { recorder.tell(messageOf(good), enough.number()); });
    expectRefusal([&](const Recorder &recorder) {
        recorder.begin();
        recorder.begin();
    });
    expectRefusal([&](const Recorder &recorder) { // no memory came with it
        recorder.begin();
        recorder.tell(messageOf(good));
    });
    expectRefusal([&](const Recorder &recorder) {
        recorder.begin();
        recorder.tell(messageOf(good), little.number());
    });
    expectRefusal([&](const Recorder &recorder) { // a descriptor of something else
        int ends[2] = {-1, -1};
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        recorder.begin();
        recorder.tell(messageOf(good), ends[0]);
        ::close(ends[0]);
        ::close(ends[1]);
    });
    expectRefusal([&](const Recorder &recorder) { // lines that overlap
        Picture picture = good;
        picture.bytesPerLine = 252;
        recorder.begin();
        recorder.tell(messageOf(picture), enough.number());
    });
    expectRefusal([&](const Recorder &recorder) { // sound without a track for it
        const float sample[2] = {};
        recorder.begin();
        recorder.tell(messageOf(100, sample, 2));
    });
    expectRefusal([&](const Recorder &recorder) { // a picture of next month
        Picture picture = good;
        picture.time = 100 + mostNanoseconds + 1;
        recorder.begin();
        recorder.tell(messageOf(picture), enough.number());
    });
}

TEST_F(RecorderAttack, whatCameBeforeTheNonsenseIsAMovie) {
    const Descriptor enough = memory(256 * 48);
    expectRefusal([&](const Recorder &recorder) {
        recorder.begin();
        recorder.tell(messageOf(good), enough.number());
        Picture next = good;
        next.time = 99; // time goes back: it is taken for the next moment
        next.isWhole = false;
        next.changed = {{-2'000'000'000, 2'000'000'000, 2'147'483'647, 2'147'483'647}, {60, 40, 2'000'000, 50}};
        next.number = 2;
        recorder.tell(messageOf(next));
        recorder.tell("nonsense");
    });
    expectPlayable(2);
    EXPECT_EQ(boxesOf(path).value(2), "moov");
}

TEST_F(RecorderAttack, memoryThatIsTakenAwayEndsItAndTheMovieStays) {
    const Descriptor enough = memory(256 * 48);
    Recorder recorder(path);
    recorder.begin();
    recorder.tell(messageOf(good), enough.number());
    ASSERT_TRUE(recorder.report());
    ASSERT_TRUE(eventually([&] { return boxesOf(path).contains("mdat"); }));
    ASSERT_EQ(::ftruncate(enough.number(), 0), 0);
    Picture next = good;
    next.number = 2;
    recorder.tell(messageOf(next));
    EXPECT_EQ(recorder.report(), std::nullopt);
    EXPECT_TRUE(WIFSIGNALED(recorder.end()));
    expectPlayable(1);
}

TEST_F(RecorderAttack, aParentThatIsKilledAtAnyMomentLeavesAFinishedMovie) {
    std::mt19937 random(std::random_device{}());
    for (int round = 0; round < 4; ++round) {
        path = folder.filePath(QString::number(round));
        QProcess parent;
        parent.start(text(RECORDING_PROGRAM), {path, text("640"), text("360")});
        ASSERT_TRUE(parent.waitForReadyRead());
        letPass(std::chrono::milliseconds(random() % 700));
        parent.kill();
        parent.waitForFinished();
        EXPECT_TRUE(eventually([&] { return boxesOf(path).value(2) == "moov"; })) << round;
        expectPlayable(1);
    }
}

TEST_F(RecorderAttack, aDiskThatIsFullFromTheBeginningIsNamed) {
    const QByteArray disk = QFile::encodeName(folder.path());
    if (::mount("none", disk.constData(), "tmpfs", 0, "size=64k") != 0) {
        GTEST_LOG_(INFO) << "only root can make a small disk";
        return;
    }
    path = folder.filePath(text("movie.mp4"));
    {
        Recorder recorder(path);
        recorder.begin();
        recorder.tell(messageOf(Finish{.time = 200})); // without a picture
        const auto report = recorder.report();
        ASSERT_TRUE(report);
        EXPECT_EQ(report->kind, Report::Kind::diskIsFull);
    }
    EXPECT_TRUE(eventually([&] { return ::umount(disk.constData()) == 0; }));
}

TEST_F(RecorderAttack, aFullDiskEndsTheMovieWithWhatFitted) {
    const QByteArray disk = QFile::encodeName(folder.path());
    if (::mount("none", disk.constData(), "tmpfs", 0, "size=2m") != 0) {
        GTEST_LOG_(INFO) << "only root can make a small disk; a limit of the file's size stands in for it elsewhere";
        return;
    }
    path = folder.filePath(text("movie.mp4"));
    RecorderProcesses recorders{QCoreApplication::applicationDirPath()};
    {
        auto made = recorders.makeWriter(path);
        const auto &writer = std::get<std::unique_ptr<MovieWriter>>(made);
        const auto endings = std::make_shared<std::atomic<int>>(0);
        writer->setOnEndedByItself([endings] { ++*endings; });
        constexpr QSize size(320, 180);
        ASSERT_TRUE(
            writer->addVideoInput({.width = size.width(), .height = size.height(), .averageBitRate = 4'000'000}));
        ASSERT_TRUE(writer->startWriting());
        writer->startSessionAtSourceTime(0s);
        ScreenFrames frames(size, 12);
        std::mt19937 random(7);
        for (int i = 0; i < 1200 && writer->status() == MovieWriterStatus::writing; ++i) {
            auto frame = frames.next(QRect({}, size), [&](QPainter &painter) {
                for (int n = 0; n < 30; ++n)
                    painter.fillRect(int(random() % 300), int(random() % 160), 30, 30, QColor::fromRgb(random()));
            });
            ASSERT_TRUE(eventually([&] {
                return writer->isVideoReadyForMoreMediaData() || writer->status() != MovieWriterStatus::writing;
            }));
            writer->appendVideo({.status = 0, .presentationTime = i * 1s / 60, .frame = frame});
        }
        EXPECT_TRUE(eventually([&] { return writer->status() == MovieWriterStatus::failed; }));
        EXPECT_EQ(writer->error(), text("No space left on device"));
        EXPECT_EQ(writer->failure(), MovieWriterFailure::diskIsFull);
        EXPECT_TRUE(eventually([&] { return *endings == 1; })); // nobody has asked
        expectPlayable(30);
        EXPECT_EQ(boxesOf(path), (QList<QByteArray>{"ftyp", "free", "moov", "free", "mdat"}));
    }
    EXPECT_TRUE(eventually([&] { return ::umount(disk.constData()) == 0; }));
}

} // namespace
} // namespace tavrine::test
