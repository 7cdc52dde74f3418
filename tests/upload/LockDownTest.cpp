// The locks, tried from inside by native code: what a script could do at worst if it broke out of its engine.
//
// A denial proves something only where the same thing comes to something else without the lock. So there is a control
// for each thing that a test below names. What ordinary persons, or those of a container, may not do at all is tried
// with arguments that the kernel finds fault with before it asks who is calling.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <array>

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tavrine {
namespace {

struct Control {
    const char *thing;
    const char *outcome; ///< without a lock
};
constexpr Control controls[] = {
    {"read", "done"},
    {"read-proc", "done"},
    {"read-run", "done"},
    {"read-private", "done"},
    {"write", "done"},
    {"write-both", "done"},
    {"create", "done"},
    {"create-old", "done"},
    {"open-newer", "Invalid argument"},
    {"remove", "done"},
    {"rename", "done"},
    {"truncate", "done"},
    {"change-mode", "done"},
    {"change-owner", "done"},
    {"change-time", "done"},
    {"read-attribute", "done"},
    {"remove-attribute", "No data available"},
    {"make-folder", "done"},
    {"link", "done"},
    {"memory-file", "done"},
    {"mount", "Bad address"},
    {"execute", ""},
    {"fork", "done"},
    {"clone", "done"},
    {"thread", "done"},
    {"trace", "done"},
    {"read-process", "done"},
    {"namespace", "Invalid argument"},
    {"signal", "done"},
    {"signal-by-file", "done"},
    {"pidfd", "done"},
    {"read-limit", "done"},
    {"lower-limit", "done"},
    {"read-limit-of-another", "done"},
    {"lower-limit-of-another", "done"},
    {"undo-privileges", "done"},
    {"socket", "done"},
    {"local-socket", "done"},
    {"local-datagram-socket", "done"},
    {"call-local-socket", "No such file or directory"},
    {"socket-pair", "done"},
    {"datagram-pair", "done"},
    {"duplicate", "done"},
    {"map-code", "done"},
    {"make-code", "done"},
    {"map-memory", "done"},
    {"map-some-memory", "done"},
    {"measure", "Bad address"},
    {"call-that-nobody-knows", "ENOSYS"},
};

class LockDown : public testing::Test {
protected:
    /// What `thing` came to under `lock`, each time with a fresh file of the person's.
    QString attempt(const char *lock, const char *thing) {
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("private")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("secret") == 6);
        file.close();
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PRIVATE_FILE"), file.fileName());
        program.setProcessEnvironment(environment);
        program.setWorkingDirectory(folder.path());
        program.start(QStringLiteral(LOCKED_PROGRAM), {QLatin1String(lock), QLatin1String(thing)});
        EXPECT_TRUE(program.waitForFinished(20'000));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit) << lock << ' ' << thing;
        EXPECT_TRUE(program.exitCode() == 0) << thing << " is not known, or not locked";
        return QString::fromUtf8(program.readAllStandardOutput());
    }
    /// Each of them under `lock`; none without a control.
    void expectAll(const char *lock, const char *outcome, std::initializer_list<const char *> things) {
        for (const char *thing : things) {
            EXPECT_TRUE(std::any_of(std::begin(controls), std::end(controls),
                                    [thing, outcome](const Control &control) {
                                        return QByteArray(control.thing) == thing &&
                                               QByteArray(control.outcome) != outcome;
                                    }))
                << thing << " has no control";
            EXPECT_EQ(attempt(lock, thing), QLatin1String(outcome)) << thing;
        }
    }
    static bool hasLandlock() { return syscall(444, nullptr, 0, 1) > 0; }
};

/// The proof that a denial below is the lock's doing.
TEST_F(LockDown, withoutALockEachOfTheseThingsComesToSomethingElse) {
    for (const Control &control : controls)
        EXPECT_EQ(attempt("none", control.thing), QLatin1String(control.outcome)) << control.thing;
}

TEST_F(LockDown, theScriptsProcessHasNoFiles) {
    expectAll("script", "EPERM",
              {"read",           "read-proc",        "read-run",    "read-private", "write",  "write-both",
               "create",         "create-old",       "open-newer",  "remove",       "rename", "truncate",
               "change-mode",    "change-owner",     "change-time", "make-folder",  "link",   "memory-file",
               "read-attribute", "remove-attribute", "mount"});
}

TEST_F(LockDown, theScriptsProcessHasNothingElse) {
    expectAll("script", "EPERM",
              {"execute",
               "fork",
               "clone",
               "thread",
               "trace",
               "read-process",
               "namespace",
               "signal",
               "signal-by-file",
               "pidfd",
               "read-limit",
               "lower-limit",
               "read-limit-of-another",
               "lower-limit-of-another",
               "undo-privileges",
               "socket",
               "local-socket",
               "socket-pair",
               "datagram-pair",
               "duplicate",
               "map-code",
               "make-code",
               "measure",
               "call-that-nobody-knows"});
}

TEST_F(LockDown, theScriptsProcessHasALimitOfMemory) {
    EXPECT_EQ(attempt("script", "map-some-memory"), QStringLiteral("done"));
    expectAll("script", "Cannot allocate memory", {"map-memory"});
}

TEST_F(LockDown, theNetworkProcessHasTheNetworkAndReadsTheSystemsFiles) {
    for (const char *thing : {"socket", "socket-pair", "read", "thread", "map-some-memory", "read-limit", "duplicate"})
        EXPECT_EQ(attempt("network", thing), QStringLiteral("done")) << thing;
}

TEST_F(LockDown, theNetworkProcessReachesNoProgramOfThisMachine) {
    expectAll("network", "EPERM", {"local-socket", "datagram-pair"});
}

TEST_F(LockDown, theNetworkProcessChangesNoFile) {
    expectAll("network", "EPERM",
              {"write", "write-both", "create", "create-old", "remove", "rename", "truncate", "change-mode",
               "change-owner", "change-time", "make-folder", "link", "memory-file", "mount", "read-attribute",
               "remove-attribute"});
    expectAll("network", "ENOSYS", {"open-newer"});
}

TEST_F(LockDown, theNetworkProcessHasNothingElse) {
    expectAll("network", "EPERM",
              {"execute", "fork", "clone", "trace", "read-process", "namespace", "signal", "signal-by-file", "pidfd",
               "lower-limit", "read-limit-of-another", "lower-limit-of-another", "undo-privileges", "map-code",
               "make-code", "measure", "call-that-nobody-knows"});
    expectAll("network", "Cannot allocate memory", {"map-memory"});
}

TEST_F(LockDown, thePersonsFilesAreOutOfTheNetworkProcessesReachWhereTheKernelCanTell) {
    const QString expected = hasLandlock() ? QStringLiteral("EACCES") : QStringLiteral("done");
    for (const char *thing : {"read-private", "read-proc", "read-run"})
        EXPECT_EQ(attempt("network", thing), expected) << thing;
}

TEST_F(LockDown, thePlayerHasTheSoundServersSocketAndMemoryToShareWithIt) {
    for (const char *player : {"player", "movie-player"})
        for (const char *thing :
             {"local-socket", "socket-pair", "memory-file", "thread", "map-some-memory", "read-limit"})
            EXPECT_EQ(attempt(player, thing), QStringLiteral("done")) << player << " " << thing;
}

TEST_F(LockDown, thePlayerOfMoviesCallsNobodyAnyMore) {
    EXPECT_EQ(attempt("player", "call-local-socket"), QStringLiteral("No such file or directory"));
    expectAll("movie-player", "EPERM", {"call-local-socket", "local-datagram-socket", "datagram-pair"});
}

TEST_F(LockDown, thePlayerFindsNoFile) {
    for (const char *player : {"player", "movie-player"}) {
        expectAll(player, "No such file or directory",
                  {"read", "read-proc", "read-run", "read-private", "write", "write-both", "create"});
        expectAll(player, "EPERM",
                  {"create-old", "open-newer", "remove", "rename", "truncate", "change-mode", "change-owner",
                   "change-time", "make-folder", "link", "mount", "read-attribute", "remove-attribute"});
    }
}

TEST_F(LockDown, thePlayerHasNothingElse) {
    for (const char *player : {"player", "movie-player"}) {
        expectAll(player, "EPERM",
                  {"socket", "execute", "fork", "clone", "trace", "read-process", "namespace", "signal",
                   "signal-by-file", "pidfd", "lower-limit", "read-limit-of-another", "lower-limit-of-another",
                   "undo-privileges", "map-code", "make-code", "measure", "call-that-nobody-knows"});
        expectAll(player, "Cannot allocate memory", {"map-memory"});
    }
}

} // namespace
} // namespace tavrine
