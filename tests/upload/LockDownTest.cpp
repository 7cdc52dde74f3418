// The locks, tried from inside by native code: what a script could do at worst if it broke out of its engine.

#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tavrine {
namespace {

class LockDown : public testing::Test {
protected:
    void SetUp() override {
        QFile file(m_folder.filePath(QStringLiteral("private")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("secret");
    }

    /// What `thing` came to under `lock`.
    QString attempt(const char *lock, const char *thing) {
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PRIVATE_FILE"), m_folder.filePath(QStringLiteral("private")));
        program.setProcessEnvironment(environment);
        program.start(QStringLiteral(LOCKED_PROGRAM), {QLatin1String(lock), QLatin1String(thing)});
        EXPECT_TRUE(program.waitForFinished(20'000));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit) << lock << ' ' << thing;
        return QString::fromUtf8(program.readAllStandardOutput());
    }

    static bool hasLandlock() { return syscall(444, nullptr, 0, 1) > 0; }

    QTemporaryDir m_folder;
};

/// The proof that a denial below is the lock's doing: outside it the same thing works.
TEST_F(LockDown, withoutALockTheseThingsWork) {
    for (const char *thing : {"read",       "read-proc",   "read-private", "write",        "write-both",  "create",
                              "create-old", "change-mode", "fork",         "clone",        "thread",      "trace",
                              "signal",     "pidfd",       "socket",       "local-socket", "socket-pair", "duplicate",
                              "map-code",   "make-code",   "map-memory",   "memory-file",  "rename"})
        EXPECT_EQ(attempt("none", thing), QStringLiteral("done")) << thing;
    EXPECT_EQ(attempt("none", "execute"), QString());
    QFile::remove(QStringLiteral("/tmp/tavrine-locked"));
    QFile::remove(QStringLiteral("/tmp/tavrine-renamed"));
}

TEST_F(LockDown, theScriptsProcessHasNothing) {
    for (const char *thing :
         {"read",         "read-proc",   "read-private", "write",    "write-both",  "create",
          "create-old",   "openat2",     "remove",       "rename",   "change-mode", "make-folder",
          "link",         "execute",     "fork",         "clone",    "thread",      "trace",
          "read-parent",  "namespace",   "mount",        "signal",   "pidfd",       "socket",
          "local-socket", "socket-pair", "duplicate",    "map-code", "make-code",   "memory-file",
          "io-uring",     "user-fault",  "bpf",          "key-ring", "raise-limit", "undo-privileges"})
        EXPECT_EQ(attempt("script", thing), QStringLiteral("EPERM")) << thing;
}

TEST_F(LockDown, theScriptsProcessHasALimitOfMemory) {
    EXPECT_EQ(attempt("script", "map-some-memory"), QStringLiteral("done"));
    EXPECT_EQ(attempt("script", "map-memory"), QStringLiteral("Cannot allocate memory"));
}

TEST_F(LockDown, theNetworkProcessHasTheNetworkAndReadsTheSystemsFiles) {
    for (const char *thing : {"socket", "local-socket", "socket-pair", "read", "thread", "map-some-memory"})
        EXPECT_EQ(attempt("network", thing), QStringLiteral("done")) << thing;
}

TEST_F(LockDown, theNetworkProcessHasNothingElse) {
    for (const char *thing :
         {"write",  "write-both", "create",      "create-old", "remove", "rename",      "change-mode", "make-folder",
          "link",   "execute",    "fork",        "clone",      "trace",  "read-parent", "namespace",   "mount",
          "signal", "pidfd",      "memory-file", "user-fault", "bpf",    "key-ring"})
        EXPECT_EQ(attempt("network", thing), QStringLiteral("EPERM")) << thing;
    for (const char *thing : {"openat2", "io-uring"})
        EXPECT_EQ(attempt("network", thing), QStringLiteral("ENOSYS")) << thing;
    EXPECT_EQ(attempt("network", "map-memory"), QStringLiteral("Cannot allocate memory"));
    EXPECT_EQ(attempt("network", "undo-privileges"), QStringLiteral("Invalid argument"));
}

TEST_F(LockDown, thePersonsFilesAreOutOfTheNetworkProcessesReachWhereTheKernelCanTell) {
    const QString expected = hasLandlock() ? QStringLiteral("EACCES") : QStringLiteral("done");
    EXPECT_EQ(attempt("network", "read-private"), expected);
    EXPECT_EQ(attempt("network", "read-proc"), expected);
}

} // namespace
} // namespace tavrine
