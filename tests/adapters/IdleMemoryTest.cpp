#include "adapters/linux/IdleMemory.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>

#include <gtest/gtest.h>
#include <sys/mman.h>

namespace tavrine {
namespace {

constexpr qint64 large = 4 * 1024 * 1024;

/// A file in memory as the toolkit has its fonts.
class MappedFile {
public:
    MappedFile(const QString &path, qint64 size) : m_file(path), m_size(size) {
        if (!m_file.open(QIODevice::ReadWrite))
            return;
        m_file.write(QByteArray(static_cast<qsizetype>(size), 'x'));
        m_file.flush();
        m_memory = static_cast<const char *>(
            mmap(nullptr, static_cast<size_t>(size), PROT_READ, MAP_PRIVATE, m_file.handle(), 0));
    }
    ~MappedFile() { munmap(const_cast<char *>(m_memory), static_cast<size_t>(m_size)); }
    MappedFile(const MappedFile &) = delete;
    MappedFile &operator=(const MappedFile &) = delete;

    /// Reads all of it.
    [[nodiscard]] bool isWhole() const {
        return std::all_of(m_memory, m_memory + m_size, [](char each) { return each == 'x'; });
    }
    /// In kilobytes.
    [[nodiscard]] qint64 resident() const {
        QFile maps(QStringLiteral("/proc/self/smaps"));
        if (!maps.open(QIODevice::ReadOnly))
            return -1;
        bool isOurs = false;
        for (const QByteArray &line : maps.readAll().split('\n')) {
            if (line.contains('-') && line.contains('/'))
                isOurs = line.endsWith(QFile::encodeName(m_file.fileName()));
            else if (isOurs && line.startsWith("Rss:"))
                return line.mid(4).trimmed().split(' ').first().toLongLong();
        }
        return -1;
    }

private:
    QFile m_file;
    qint64 m_size;
    const char *m_memory = nullptr;
};

TEST(IdleMemory, theLettersOfALargeFontAreReadAgainFromItsFile) {
    const QTemporaryDir folder;
    const MappedFile font(folder.filePath(QStringLiteral("a colour font.ttf")), large);
    ASSERT_TRUE(font.isWhole());
    ASSERT_EQ(font.resident(), large / 1024);
    giveIdleMemoryBack();
    EXPECT_EQ(font.resident(), 0);
    EXPECT_TRUE(font.isWhole());
}

TEST(IdleMemory, whatTheSystemKnowsOfItsFontsIsReadAgainFromItsFile) {
    const QTemporaryDir folder;
    ASSERT_TRUE(QDir(folder.path()).mkpath(QStringLiteral("fontconfig")));
    const MappedFile cache(folder.filePath(QStringLiteral("fontconfig/0bd3dc09-le64.cache-8")), large / 8);
    const MappedFile other(folder.filePath(QStringLiteral("fontconfig/fonts.conf")), large / 8);
    ASSERT_TRUE(cache.isWhole() && other.isWhole());
    giveIdleMemoryBack();
    EXPECT_EQ(cache.resident(), 0);
    EXPECT_EQ(other.resident(), large / 8 / 1024);
    EXPECT_TRUE(cache.isWhole());
}

TEST(IdleMemory, aSmallFontAndWhatIsNoFontStay) {
    const QTemporaryDir folder;
    const MappedFile font(folder.filePath(QStringLiteral("letters.ttf")), large / 8);
    const MappedFile other(folder.filePath(QStringLiteral("pictures")), large);
    ASSERT_TRUE(font.isWhole() && other.isWhole());
    giveIdleMemoryBack();
    EXPECT_EQ(font.resident(), large / 8 / 1024);
    EXPECT_EQ(other.resident(), large / 1024);
}

} // namespace
} // namespace tavrine
