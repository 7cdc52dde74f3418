#include "base/WholeFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>
#include <cstring>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavrine {
namespace {

using Pieces = std::vector<std::string_view>;

class WholeFile : public testing::Test {
protected:
    [[nodiscard]] std::string path(const char *name) const {
        return folder.filePath(QString::fromLatin1(name)).toStdString();
    }
    [[nodiscard]] QByteArray contents(const char *name) const {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
    [[nodiscard]] QStringList names() const {
        return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    [[nodiscard]] unsigned modeOf(const char *name) const {
        struct stat status {};
        return ::stat(path(name).c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
    }
    void makeFile(const char *name, mode_t mode) const {
        ASSERT_EQ(writeWholeFile(path(name), {"old"}), 0);
        ASSERT_EQ(::chmod(path(name).c_str(), mode), 0);
    }
    const Pieces pieces{"one ", {}, "two"};
    QTemporaryDir folder;
};

const WholeFileOptions stopped{.isStopped = [] { return true; }};
const WholeFileOptions asUsual{.rights = FileRights::asUsual, .isStopped = {}};

TEST_F(WholeFile, holdsAllPiecesInOrder) {
    EXPECT_EQ(writeWholeFile(path("a"), pieces), 0);
    EXPECT_EQ(contents("a"), "one two");
    EXPECT_EQ(names().size(), 1);
}

TEST_F(WholeFile, replacesWhatStoodThere) {
    ASSERT_EQ(writeWholeFile(path("a"), {"old"}), 0);
    EXPECT_EQ(writeWholeFile(path("a"), pieces), 0);
    EXPECT_EQ(contents("a"), "one two");
    EXPECT_EQ(names().size(), 1);
}

TEST_F(WholeFile, isNotThereWhenItWasStopped) {
    EXPECT_EQ(writeWholeFile(path("a"), pieces, stopped), ECANCELED);
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(WholeFile, leavesTheOldOneWhenItWasStopped) {
    ASSERT_EQ(writeWholeFile(path("a"), {"old"}), 0);
    EXPECT_EQ(writeWholeFile(path("a"), pieces, stopped), ECANCELED);
    EXPECT_EQ(contents("a"), "old");
}

TEST_F(WholeFile, aFullDiskLeavesNothing) {
    // A device that is always full, as a file system is whose last block is taken.
    EXPECT_NE(writeWholeFile("/dev/full/a", pieces), 0);
    EXPECT_EQ(writeWholeFile(path("missing/a"), pieces), ENOENT);
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(WholeFile, tellsBeforehandWhatCannotBeWritten) {
    EXPECT_EQ(whyNotWritable(path("a")), std::nullopt);
    EXPECT_EQ(whyNotWritable("a"), std::nullopt) << "in the working folder";
    EXPECT_EQ(whyNotWritable(path("missing/a")), std::strerror(ENOENT));
    EXPECT_EQ(whyNotWritable(folder.path().toStdString()), std::strerror(EISDIR));
    EXPECT_EQ(whyNotWritable(path("a/")), std::strerror(EISDIR));
    EXPECT_EQ(whyNotWritable(""), std::strerror(EISDIR));
    ASSERT_EQ(writeWholeFile(path("file"), pieces), 0);
    EXPECT_EQ(whyNotWritable(path("file")), std::nullopt);
    EXPECT_EQ(whyNotWritable(path("file/a")), std::strerror(ENOTDIR));
    EXPECT_EQ(names(), QStringList(QStringLiteral("file")));
}

TEST_F(WholeFile, whatIsNoPlainFileIsLeftAlone) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/null"), folder.filePath(QStringLiteral("device"))));
    for (const char *const name : {"pipe", "device"}) {
        EXPECT_EQ(whyNotWritable(path(name)), "not a plain file") << name;
        EXPECT_EQ(writeWholeFile(path(name), pieces), ENOTSUP) << name;
    }
    struct stat status {};
    ASSERT_EQ(::stat(path("pipe").c_str(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
    EXPECT_EQ(names().size(), 2);
}

TEST_F(WholeFile, aLinkStaysAndWhatItPointsToIsReplaced) {
    makeFile("target", 0600);
    ASSERT_TRUE(QFile::link(QStringLiteral("target"), folder.filePath(QStringLiteral("link"))));
    ASSERT_TRUE(QFile::link(QStringLiteral("new"), folder.filePath(QStringLiteral("nowhere"))));
    EXPECT_EQ(writeWholeFile(path("link"), pieces), 0);
    EXPECT_EQ(writeWholeFile(path("nowhere"), pieces), 0);
    EXPECT_EQ(contents("target"), "one two");
    EXPECT_EQ(contents("new"), "one two");
    EXPECT_TRUE(QFileInfo(folder.filePath(QStringLiteral("link"))).isSymLink());
    EXPECT_TRUE(QFileInfo(folder.filePath(QStringLiteral("nowhere"))).isSymLink());
}

TEST_F(WholeFile, aPrivateFileIsPrivateAlsoWhereAnOpenOneStood) {
    makeFile("open", 0644);
    EXPECT_EQ(writeWholeFile(path("open"), pieces), 0);
    EXPECT_EQ(writeWholeFile(path("new"), pieces), 0);
    EXPECT_EQ(modeOf("open"), 0600U);
    EXPECT_EQ(modeOf("new"), 0600U);
}

TEST_F(WholeFile, aUsualFileFollowsTheMaskOrTheFileThatItReplaces) {
    makeFile("shared", 0664);
    const mode_t before = ::umask(0022);
    EXPECT_EQ(writeWholeFile(path("shared"), pieces, asUsual), 0);
    EXPECT_EQ(writeWholeFile(path("new"), pieces, asUsual), 0);
    ::umask(before);
    EXPECT_EQ(modeOf("shared"), 0664U);
    EXPECT_EQ(modeOf("new"), 0644U);
}

TEST_F(WholeFile, aProcessThatEndsWhileItWritesLeavesTheOldFileAndNoOther) {
    makeFile("file", 0600);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        static_cast<void>(writeWholeFile(path("file"), pieces, {.isStopped = []() -> bool { ::_exit(0); }}));
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(contents("file"), "old");
    EXPECT_EQ(names(), QStringList(QStringLiteral("file")));
}

} // namespace
} // namespace tavrine
