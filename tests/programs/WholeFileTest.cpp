#include "programs/screencapture/WholeFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

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
        return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    const FilePieces pieces{{'o', 'n', 'e', ' '}, {}, {'t', 'w', 'o'}};
    QTemporaryDir folder;
};

const auto never = [] { return false; };
const auto always = [] { return true; };

TEST_F(WholeFile, holdsAllPiecesInOrder) {
    EXPECT_EQ(writeWholeFile(path("a"), pieces, never), 0);
    EXPECT_EQ(contents("a"), "one two");
    EXPECT_EQ(names().size(), 1);
}

TEST_F(WholeFile, replacesWhatStoodThere) {
    ASSERT_EQ(writeWholeFile(path("a"), {{'o', 'l', 'd'}}, never), 0);
    EXPECT_EQ(writeWholeFile(path("a"), pieces, never), 0);
    EXPECT_EQ(contents("a"), "one two");
    EXPECT_EQ(names().size(), 1);
}

TEST_F(WholeFile, isNotThereWhenItWasStopped) {
    EXPECT_EQ(writeWholeFile(path("a"), pieces, always), ECANCELED);
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(WholeFile, leavesTheOldOneWhenItWasStopped) {
    ASSERT_EQ(writeWholeFile(path("a"), {{'o', 'l', 'd'}}, never), 0);
    EXPECT_EQ(writeWholeFile(path("a"), pieces, always), ECANCELED);
    EXPECT_EQ(contents("a"), "old");
}

TEST_F(WholeFile, aFullDiskLeavesNothing) {
    // A device that is always full, as a file system is whose last block is taken.
    EXPECT_NE(writeWholeFile("/dev/full/a", pieces, never), 0);
    EXPECT_EQ(writeWholeFile(path("missing/a"), pieces, never), ENOENT);
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(WholeFile, tellsBeforehandWhatCannotBeWritten) {
    EXPECT_EQ(whyNotWritable(path("a")), 0);
    EXPECT_EQ(whyNotWritable("a"), 0) << "in the working folder";
    EXPECT_EQ(whyNotWritable(path("missing/a")), ENOENT);
    EXPECT_EQ(whyNotWritable(folder.path().toStdString()), EISDIR);
    EXPECT_EQ(whyNotWritable(path("a/")), EISDIR);
    EXPECT_EQ(whyNotWritable(""), EISDIR);
    ASSERT_EQ(writeWholeFile(path("file"), pieces, never), 0);
    EXPECT_EQ(whyNotWritable(path("file")), 0);
    EXPECT_EQ(whyNotWritable(path("file/a")), ENOTDIR);
}

} // namespace
} // namespace tavrine
