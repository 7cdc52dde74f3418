#include "base/PrivateFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavrine {
namespace {

class PrivateFiles : public testing::Test {
protected:
    [[nodiscard]] QString at(const char *name) const { return folder.filePath(QString::fromUtf8(name)); }

    static unsigned modeOf(const QString &path) {
        struct stat status {};
        return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777U : 0;
    }
    static QByteArray contentOf(const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
    }

    QTemporaryDir folder;
};

TEST_F(PrivateFiles, aFolderIsMadeWithItsParentsForThePersonAlone) {
    EXPECT_TRUE(makePrivateFolder(at("one/two")));
    EXPECT_EQ(modeOf(at("one")), 0700U);
    EXPECT_EQ(modeOf(at("one/two")), 0700U);
}

TEST_F(PrivateFiles, aFolderOfTheProgramsOwnLosesTheRightsOfOthers) {
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("open")));
    ASSERT_EQ(::chmod(QFile::encodeName(at("open")).constData(), 0755), 0);
    EXPECT_TRUE(claimPrivateFolder(at("open")));
    EXPECT_EQ(modeOf(at("open")), 0700U);
}

TEST_F(PrivateFiles, aFolderThatThePersonMayOnlyReadStaysSo) {
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("sealed")));
    ASSERT_EQ(::chmod(QFile::encodeName(at("sealed")).constData(), 0555), 0);
    EXPECT_TRUE(claimPrivateFolder(at("sealed")));
    EXPECT_EQ(modeOf(at("sealed")), 0500U);
}

TEST_F(PrivateFiles, aFileLosesTheRightsOfOthersAndWhatALinkPointsToDoesNot) {
    ASSERT_TRUE(writePrivateFile(at("file"), "a"));
    ASSERT_TRUE(writePrivateFile(at("elsewhere"), "b"));
    ASSERT_EQ(::chmod(QFile::encodeName(at("file")).constData(), 0644), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(at("elsewhere")).constData(), 0644), 0);
    ASSERT_TRUE(QFile::link(at("elsewhere"), at("link")));
    claimPrivateFile(at("file"));
    claimPrivateFile(at("link"));
    claimPrivateFile(at("absent"));
    EXPECT_EQ(modeOf(at("file")), 0600U);
    EXPECT_EQ(modeOf(at("elsewhere")), 0644U);
    EXPECT_FALSE(QFile::exists(at("absent")));
}

TEST_F(PrivateFiles, aFolderThatStandsKeepsItsMode) {
    ASSERT_EQ(::mkdir(QFile::encodeName(at("open")).constData(), 0755), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(at("open")).constData(), 0755), 0);
    EXPECT_TRUE(makePrivateFolder(at("open")));
    EXPECT_EQ(modeOf(at("open")), 0755U);
}

TEST_F(PrivateFiles, aFolderCannotBeMadeWhereAFileStands) {
    ASSERT_TRUE(writePrivateFile(at("file"), "x"));
    EXPECT_FALSE(makePrivateFolder(at("file")));
    EXPECT_FALSE(makePrivateFolder(at("file/below")));
    EXPECT_FALSE(makePrivateFolder(QString()));
}

TEST_F(PrivateFiles, aFileIsReplacedWholeForThePersonAlone) {
    QFile open(at("file"));
    ASSERT_TRUE(open.open(QIODevice::WriteOnly));
    open.write("something longer than what follows");
    open.close();
    EXPECT_TRUE(writePrivateFile(at("file"), "short"));
    EXPECT_EQ(contentOf(at("file")), "short");
    EXPECT_EQ(modeOf(at("file")), 0600U);
}

TEST_F(PrivateFiles, whoeverReadsTheOldFileReadsItToTheEnd) {
    ASSERT_TRUE(writePrivateFile(at("file"), "old content"));
    QFile reader(at("file"));
    ASSERT_TRUE(reader.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
    ASSERT_TRUE(writePrivateFile(at("file"), "new"));
    EXPECT_EQ(reader.readAll(), "old content");
}

TEST_F(PrivateFiles, aFailedWriteLeavesTheOldAndNothingElse) {
    ASSERT_TRUE(QDir(folder.path()).mkpath(at("folder/inside")));
    EXPECT_FALSE(writePrivateFile(at("folder"), "x")); // a folder cannot be replaced by a file
    EXPECT_FALSE(writePrivateFile(at("missing/file"), "x"));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
              QStringList{QStringLiteral("folder")});
}

TEST_F(PrivateFiles, aFullDiskLeavesTheOldContentAndNoTemporaryFile) {
    ASSERT_TRUE(writePrivateFile(at("file"), "old"));
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // No file may grow beyond four bytes: the first write is short and the next one fails, as on a full disk.
        const rlimit full{4, 4};
        std::signal(SIGXFSZ, SIG_IGN);
        if (::setrlimit(RLIMIT_FSIZE, &full) != 0)
            ::_exit(2);
        ::_exit(writePrivateFile(at("file"), "longer than four bytes") ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "1: it told of success, 2: no limit could be set";
    EXPECT_EQ(contentOf(at("file")), "old");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
              QStringList{QStringLiteral("file")});
}

TEST_F(PrivateFiles, aProgramThatEndsInTheMiddleOfAWriteLeavesNothing) {
    ASSERT_TRUE(writePrivateFile(at("file"), "old"));
    for (const char *name : {"file", "another"}) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            const rlimit full{4, 4}; // the write beyond it ends the process
            const rlimit noCore{0, 0};
            std::signal(SIGXFSZ, SIG_DFL);
            if (::setrlimit(RLIMIT_FSIZE, &full) == 0 && ::setrlimit(RLIMIT_CORE, &noCore) == 0)
                (void)static_cast<bool>(writePrivateFile(at(name), "longer than four bytes"));
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status));
    }
    EXPECT_EQ(contentOf(at("file")), "old");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
              QStringList{QStringLiteral("file")});
}

TEST_F(PrivateFiles, aLinkKeepsItsPlace) {
    ASSERT_TRUE(writePrivateFile(at("target"), "old"));
    ASSERT_TRUE(QFile::link(at("target"), at("link")));
    EXPECT_TRUE(writePrivateFile(at("link"), "new"));
    EXPECT_EQ(contentOf(at("target")), "new");
    EXPECT_TRUE(QFileInfo(at("link")).isSymLink());
}

TEST_F(PrivateFiles, anEmptyFileCanBeWritten) {
    EXPECT_TRUE(writePrivateFile(at("file"), QByteArray()));
    EXPECT_EQ(contentOf(at("file")), "");
}

} // namespace
} // namespace tavrine
