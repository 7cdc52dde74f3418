// The whole program's history on a Wayland desktop, with wl-copy and wl-paste as the other programs.
#include "adapters/wayland/TestPaster.h"
#include "adapters/wayland/TestSource.h"
#include "desktop/Program.h"
#include "support/Wait.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QUrl>

#include <algorithm>
#include <csignal>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

namespace tavrine {
namespace {

using tavrine::testing::Client;
using tavrine::testing::Program;
using tavrine::testing::waitUntil;

constexpr auto text = "text/plain;charset=utf-8";
constexpr std::chrono::seconds patience{30}; ///< with a program that starts on a busy machine

/// The process at the other end of a socket; 0 for what is none.
pid_t peerOf(int socket) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

pid_t compositor() {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    const QByteArray path = qgetenv("XDG_RUNTIME_DIR") + '/' + qgetenv("WAYLAND_DISPLAY");
    std::copy(path.begin(), path.end(), std::begin(address.sun_path));
    const bool isThere = ::connect(socket, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    const pid_t process = isThere ? peerOf(socket) : 0;
    ::close(socket);
    return process;
}

/// Ends the newest of the process's connections to the compositor, as the compositor does with a program that does what
/// it should not. False when there are not several.
bool endNewestConnection(qint64 process, pid_t compositor) {
    const auto handle = static_cast<int>(::syscall(SYS_pidfd_open, static_cast<pid_t>(process), 0));
    std::vector<int> found;
    for (int number = 0; number < 256; ++number) {
        const auto copy = static_cast<int>(::syscall(SYS_pidfd_getfd, handle, number, 0));
        if (copy >= 0 && peerOf(copy) == compositor)
            found.push_back(copy);
        else if (copy >= 0)
            ::close(copy);
    }
    if (found.size() > 1)
        ::shutdown(found.back(), SHUT_RDWR);
    for (const int copy : found)
        ::close(copy);
    ::close(handle);
    return found.size() > 1;
}

class ProgramOnWayland : public ::testing::Test {
protected:
    ProgramOnWayland() {
        program.environment.remove(QStringLiteral("QT_QPA_PLATFORM")); // this test needs no screen; the program does
        TestSource().clear();
    }

    bool comesToHold(const QString &content) {
        return waitUntil([&] { return program.rowsWith(content) == 1; }, patience);
    }
    /// It stays in the foreground, and says the type: what it finds out by itself depends on the desktop's tools.
    static Client copied(const QByteArray &bytes, const QString &type = QStringLiteral("text/plain")) {
        return {QStringLiteral("wl-copy"), {QStringLiteral("--foreground"), QStringLiteral("--type"), type}, bytes};
    }
    /// Others get it, though the program that copied it is gone.
    void expectKept(const QByteArray &target, const QByteArray &bytes) {
        TestPaster paster;
        EXPECT_TRUE(waitUntil([&] { return paster.paste(target) == bytes; })) << target.constData();
    }
    /// Starts the program, has `end` end its compositor or its connection, and reads its last words.
    void expectOrderlyEnd(const std::function<void(QProcess &process)> &end) {
        ASSERT_TRUE(program.start());
        program.kill9(); // it has a database now
        const auto process = program.startAgain();
        ASSERT_TRUE(process->waitForStarted());
        process->setReadChannel(QProcess::StandardError);
        TestSource source;
        ASSERT_TRUE(waitUntil(
            [&] { // until it listens
                source.ownText("the last copy");
                return program.rowsWith(QStringLiteral("the last copy")) == 1;
            },
            patience));
        static_cast<void>(process->readAllStandardError());
        end(*process);
        ASSERT_TRUE(process->state() == QProcess::NotRunning || process->waitForFinished(30'000));
        const QByteArray words = process->readAllStandardError();
        EXPECT_EQ(process->exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process->exitCode(), 69) << words.constData();
        const QList<QByteArray> lines = words.trimmed().split('\n');
        EXPECT_TRUE(lines.last().startsWith("tavrine: the Wayland compositor is gone: ")) << words.constData();
        for (const QByteArray &line : lines.first(lines.size() - 1)) // of what it was writing
            EXPECT_TRUE(line.startsWith("tavrine: libwayland: ")) << words.constData();
        EXPECT_EQ(program.rowsWith(QStringLiteral("the last copy")), 1);
    }

    Program program;
};

TEST_F(ProgramOnWayland, copiesOfOtherProgramsAreInTheDatabaseWhateverTheirSize) {
    ASSERT_TRUE(program.start());
    {
        const Client client = copied("hello");
        EXPECT_TRUE(comesToHold(QStringLiteral("hello")));
    }
    const QByteArray large(3'000'000, 'L');
    const Client client = copied(large);
    EXPECT_TRUE(comesToHold(QString::fromLatin1(large)));
}

TEST_F(ProgramOnWayland, whatAKilledProgramHadIsStillThereInSevenForms) {
    ASSERT_TRUE(program.start());
    const Client first = copied("first");
    ASSERT_TRUE(comesToHold(QStringLiteral("first"))); // what is copied while it starts is no row
    const auto before = program.rows("SELECT id FROM items").size();
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray png;
    QBuffer buffer(&png);
    image.save(&buffer, "PNG");
    const TestSource::Contents contents{{"UTF8_STRING", {.bytes = "seven"}},
                                        {text, {.bytes = "seven"}},
                                        {"text/html", {.bytes = "<b>seven</b>"}},
                                        {"text/rtf", {.bytes = "{\\rtf1 seven}"}},
                                        {"image/png", {.bytes = png}},
                                        {"x/own", {.bytes = QByteArray(3'000'000, 'o')}},
                                        {"x/last", {.bytes = "last"}}};
    TestSource source;
    source.own(contents);
    ASSERT_TRUE(waitUntil([&] { return source.requestCount("x/last") == 1; }));
    TestPaster paster;
    const int notices = paster.notices();
    source.end();
    ASSERT_TRUE(waitUntil([&] { return paster.notices() >= notices + 2; }));
    for (const auto &[target, answer] : contents)
        EXPECT_TRUE(paster.paste(target) == answer.bytes) << target.constData();
    EXPECT_TRUE(waitUntil([&] { return program.rows("SELECT id FROM items").size() == before + 1; }, patience));
    program.kill9();
    EXPECT_TRUE(waitUntil([&] { return !paster.isOwned(); })) << "what it kept ends with it";
}

TEST_F(ProgramOnWayland, aCopyThatIsStrippedIsPlainTextForOthersAndOneRow) {
    ASSERT_TRUE(program.writePreferences("<key>StripRichTextFormatting</key><true/>"));
    ASSERT_TRUE(program.start());
    const Client first = copied("first");
    ASSERT_TRUE(comesToHold(QStringLiteral("first"))); // what is copied while it starts is no row
    TestSource source;
    source.own({{text, {.bytes = "bold"}},
                {"text/html", {.bytes = "<b>bold</b>"}},
                {"text/rtf", {.bytes = "{\\rtf1 bold}"}},
                {"x/own", {.bytes = "own"}}});
    ASSERT_TRUE(comesToHold(QStringLiteral("bold")));
    ASSERT_TRUE(waitUntil([&] { return !source.isOwner(); }, patience));
    TestPaster others;
    EXPECT_EQ(others.paste(text), "bold");
    const QList<QByteArray> targets = others.targets();
    for (const char *rich : {"text/html", "text/rtf", "x/own"})
        EXPECT_FALSE(targets.contains(rich)) << rich;
    const QStringList rows = program.rows("SELECT id FROM items");
    (void)waitUntil([] { return false; }, std::chrono::milliseconds(1200)); // two periods of the poll
    EXPECT_EQ(program.rows("SELECT id FROM items"), rows) << "its own claim is no copy";
    const Client next = copied("the next copy");
    EXPECT_TRUE(comesToHold(QStringLiteral("the next copy")));
}

TEST_F(ProgramOnWayland, aRealProgramThatIsKilledLeavesItsText) {
    ASSERT_TRUE(program.start());
    Client client = copied("left behind");
    ASSERT_TRUE(comesToHold(QStringLiteral("left behind")));
    client.kill9();
    expectKept(text, "left behind");
}

TEST_F(ProgramOnWayland, aPictureAndACopiedFileAreRows) {
    ASSERT_TRUE(program.start());
    QImage image(50, 40, QImage::Format_RGB32);
    image.fill(Qt::blue);
    const QString path = program.home() + QStringLiteral("/blue picture.png");
    ASSERT_TRUE(image.save(path));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const auto pictures = [this] {
        return program.rows("SELECT image_file_name FROM items WHERE image_file_name IS NOT NULL").size();
    };
    const Client picture = copied(file.readAll(), QStringLiteral("image/png"));
    EXPECT_TRUE(waitUntil([&] { return pictures() == 1; }, patience));
    image.fill(Qt::green);
    ASSERT_TRUE(image.save(path));
    const Client uri = copied(QUrl::fromLocalFile(path).toEncoded() + "\r\n", QStringLiteral("text/uri-list"));
    EXPECT_TRUE(waitUntil([&] { return pictures() == 2; }, patience));
}

TEST_F(ProgramOnWayland, aSecretIsNoRowAndIsNotKept) {
    ASSERT_TRUE(program.start());
    const auto rows = [this] { return program.rows("SELECT id FROM items").size(); };
    const auto before = rows();
    TestSource source;
    source.own({{text, {.bytes = "hunter2"}}, {"x-kde-passwordManagerHint", {.bytes = "secret"}}});
    ASSERT_TRUE(waitUntil([&] { return source.requestCount(text) == 1; })); // its digest is taken
    source.end();
    const Client next = copied("the next copy");
    ASSERT_TRUE(comesToHold(QStringLiteral("the next copy")));
    EXPECT_EQ(program.rowsWith(QStringLiteral("hunter2")), 0);
    EXPECT_EQ(rows(), before + 1);
}

TEST_F(ProgramOnWayland, afterAKillItFollowsTheClipboardAgain) {
    ASSERT_TRUE(program.start());
    Client first = copied("first");
    ASSERT_TRUE(comesToHold(QStringLiteral("first")));
    program.kill9();
    ASSERT_TRUE(program.start());
    const Client second = copied("second");
    EXPECT_TRUE(comesToHold(QStringLiteral("second")));
    EXPECT_EQ(program.rowsWith(QStringLiteral("first")), 1);
}

TEST_F(ProgramOnWayland, oneConnectionThatEndsEndsTheProgramAndSaysSo) {
    expectOrderlyEnd([](QProcess &process) {
        // The newest may be one of a moment, or that by which the windows are told, which is made anew.
        for (int tries = 0; tries < 3 && process.state() == QProcess::Running; ++tries) {
            ASSERT_TRUE(endNewestConnection(process.processId(), compositor()));
            (void)process.waitForFinished(5'000);
        }
    });
}

// Last, as nothing runs without one.
TEST_F(ProgramOnWayland, theEndOfTheCompositorIsTheProgramsEnd) {
    expectOrderlyEnd([](QProcess &) { ASSERT_EQ(::kill(compositor(), SIGKILL), 0); });
}

} // namespace
} // namespace tavrine
