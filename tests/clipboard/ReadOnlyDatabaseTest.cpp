#include "clipboard/ClipboardDatabase.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace tavrine;

namespace {

constexpr uid_t nobody = 65534;

ClipboardItem itemWith(const char *content) {
    ClipboardItem item;
    item.id = QUuid::createUuid();
    item.content = QString::fromUtf8(content);
    item.date = Date{1769860800.0};
    return item;
}

/// In a process of its own: files that the superuser made, in a folder where the person may only read.
[[noreturn]] void readWithoutTheRightToWrite() {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("clipboard.db"));
    {
        ClipboardDatabase database(path);
        database.save(itemWith("stands"));
    }
    ::chmod(QFile::encodeName(path).constData(), 0444);
    ::chmod(QFile::encodeName(folder.path()).constData(), 0555);
    const bool isRoot = ::geteuid() == 0;
    if (isRoot && ::setresuid(nobody, nobody, 0) != 0)
        std::_Exit(2);
    bool isRight = false;
    {
        ClipboardDatabase database(path);
        database.save(itemWith("waits"));
        const auto rows = database.loadAll(std::nullopt, 10);
        isRight = rows.size() == 1 && rows.front().content == QLatin1String("stands") && database.counts().total == 2;
    }
    if (isRoot && ::setresuid(0, 0, 0) != 0)
        std::_Exit(3);
    ::chmod(QFile::encodeName(folder.path()).constData(), 0755);
    QFile::remove(path);
    ::rmdir(QFile::encodeName(folder.path()).constData());
    std::_Exit(isRight ? 0 : 1);
}

} // namespace

TEST(ReadOnlyDatabaseDeathTest, aFileThatMayOnlyBeReadIsReadAndItsWritesWait) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(readWithoutTheRightToWrite(), testing::ExitedWithCode(0), "");
}
