// Icons and small pictures of files, under one contract over the fake and over the desktop's theme.
#include "adapters/fake/FakeFileIcons.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/linux/DrawnFileIcon.h"
#include "adapters/linux/ThemeFileIcons.h"
#include "adapters/linux/ThumbnailReader.h"
#include "support/Eventually.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QIcon>
#include <QPainter>
#include <QTemporaryDir>

#include <ctime>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

QImage photo(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    QPainter(&image).fillRect(0, 0, width / 2, height, Qt::red);
    return image;
}

class Files : public testing::Test {
protected:
    Files() { // where there is no desktop
        QIcon::setThemeSearchPaths({text("/usr/share/icons")});
        QIcon::setThemeName({});
    }
    [[nodiscard]] QString path(const char *name) const { return m_folder.filePath(text(name)); }
    QString write(const char *name, const QByteArray &data) {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(data), data.size());
        return file.fileName();
    }
    QString writePhoto(const char *name, int width, int height) {
        EXPECT_TRUE(photo(width, height).save(path(name)));
        return path(name);
    }

private:
    QTemporaryDir m_folder;
};

struct Fakes {
    FileIcons &icons() { return fake; }
    void tellPicture(const QString &path, const QImage &picture) { fake.setPicture(path, picture); }
    template <class Condition>
    bool eventually(Condition condition) {
        time.runPending();
        return condition();
    }
    void settle() { time.runPending(); }

    VirtualTime time;
    FakeFileIcons fake{time};
};

struct Reals {
    FileIcons &icons() { return real; }
    void tellPicture(const QString &, const QImage &) {}
    template <class Condition>
    bool eventually(Condition condition) {
        return test::eventually(condition);
    }
    void settle() { letPass(300ms); }

    ThemeFileIcons real{[] { return DesktopThemes{.icons = text("Adwaita"), .sounds = {}}; }};
};

template <class Icons>
class FileIconsContract : public Files {
protected:
    QString writeKnownPhoto(const char *name, int width, int height) {
        const QString file = writePhoto(name, width, height);
        icons.tellPicture(file, photo(width, height));
        return file;
    }
    Icons icons;
};

using Keepers = testing::Types<Fakes, Reals>;
TYPED_TEST_SUITE(FileIconsContract, Keepers);

TYPED_TEST(FileIconsContract, theIconHasTheSizeThatWasAskedFor) {
    for (const int pixels : {1, 16, 50, 100, 128, 512}) {
        const QImage icon = this->icons.icons().iconForFile(text("/there/is/no.pdf"), pixels);
        EXPECT_EQ(icon.size(), QSize(pixels, pixels));
    }
}

TYPED_TEST(FileIconsContract, filesOfAKindShareOneIcon) {
    FileIcons &all = this->icons.icons();
    EXPECT_EQ(all.iconForFile(text("/a/one.txt"), 64).cacheKey(), all.iconForFile(text("/b/two.txt"), 64).cacheKey());
    EXPECT_NE(all.iconForFile(text("/a/one.txt"), 64), all.iconForFile(text("/a/one.mp3"), 64));
}

TYPED_TEST(FileIconsContract, aNameOfAnyKindHasAnIcon) {
    const QString strange[] = {{},
                               text("/"),
                               text("."),
                               text("/a/.."),
                               text("/a/."),
                               text("/a/\n.\n"),
                               text("/a/.zip"),
                               text("/a/name."),
                               QString(100'000, u'x'),
                               text("/a/x.") + QString(5000, u'y')};
    for (const QString &name : strange)
        EXPECT_FALSE(this->icons.icons().iconForFile(name, 32).isNull()) << qPrintable(name.left(20));
}

TYPED_TEST(FileIconsContract, aSmallPictureComesInALaterTurnAndIsNoLargerThanWasAskedFor) {
    const QString file = this->writeKnownPhoto("photo.png", 400, 200);
    std::vector<QImage> pictures;
    const auto token = this->icons.icons().thumbnail(file, 100, [&](const QImage &made) { pictures.push_back(made); });
    EXPECT_TRUE(pictures.empty());
    ASSERT_TRUE(this->icons.eventually([&] { return !pictures.empty(); }));
    EXPECT_EQ(pictures.front().size(), QSize(100, 50));
    this->icons.settle();
    EXPECT_EQ(pictures.size(), 1U);
}

TYPED_TEST(FileIconsContract, aSmallerPictureKeepsItsSize) {
    QImage picture;
    const auto token = this->icons.icons().thumbnail(this->writeKnownPhoto("photo.png", 20, 30), 100,
                                                     [&](const QImage &made) { picture = made; });
    ASSERT_TRUE(this->icons.eventually([&] { return !picture.isNull(); }));
    EXPECT_EQ(picture.size(), QSize(20, 30));
}

TYPED_TEST(FileIconsContract, whoLetsGoOfARequestHearsNothing) {
    const QString file = this->writeKnownPhoto("photo.png", 400, 200);
    bool isAnswered = false;
    auto token = this->icons.icons().thumbnail(file, 100, [&](const QImage &) { isAnswered = true; });
    token.reset();
    this->icons.settle();
    EXPECT_FALSE(isAnswered);
}

TYPED_TEST(FileIconsContract, whatIsNoPictureHasNone) {
    bool isAnswered = false;
    const auto answer = [&](const QImage &) { isAnswered = true; };
    const auto missing = this->icons.icons().thumbnail(this->path("missing.png"), 100, answer);
    const auto words = this->icons.icons().thumbnail(this->write("words.png", "no picture"), 100, answer);
    this->icons.settle();
    EXPECT_FALSE(isAnswered);
}

/// What only the real ones can meet.
class ThemeFileIconsTest : public Files {
protected:
    [[nodiscard]] QImage icon(const QString &path) { return icons.iconForFile(path, 48); }

    DesktopThemes themes{.icons = text("Adwaita"), .sounds = {}};
    ThemeFileIcons icons{[this] { return themes; }, 10s}; // however busy the machine is
};

TEST_F(ThemeFileIconsTest, aFolderAndAProgramAreKnownWhateverTheirNames) {
    QDir().mkpath(path("v2.0"));
    const QImage folder = icon(path("v2.0"));
    EXPECT_EQ(folder, icon(text("/nowhere/known-by-its-slash/")));
    const QImage plain = icon(write("release", "text"));
    EXPECT_NE(folder, plain);
    write("program", "text");
    ASSERT_EQ(::chmod(QFile::encodeName(path("program")).constData(), 0755), 0);
    EXPECT_NE(icon(path("program")), plain);
}

TEST_F(ThemeFileIconsTest, theThemesIconsAreShown) {
    const QImage drawn = drawnFileIcon(text("text-x-generic"), 48);
    EXPECT_NE(icon(text("/a/b.txt")), drawn);
    EXPECT_EQ(icon(text("/a/b.txt")), QIcon::fromTheme(text("text-x-generic")).pixmap(QSize(48, 48), 1).toImage());
    QIcon::setThemeSearchPaths({text("/nowhere")});
    themes.icons = text("nobody has this theme");
    letPass(10ms); // another turn
    EXPECT_EQ(icon(text("/a/b.txt")), drawnFileIcon(text("text-plain"), 48));
}

TEST_F(ThemeFileIconsTest, theKindIsToldByTheWholeEnding) {
    EXPECT_EQ(icon(text("/a/b.tar.gz")), icon(text("/a/c.2024.zip")));
    EXPECT_EQ(icon(text("/a/CMakeLists.txt")), icon(text("/a/notes.TXT")));
    EXPECT_NE(icon(text("/a/b.mp4")), icon(text("/a/b.mp3")));
}

TEST_F(ThemeFileIconsTest, whereThereIsNoThemeIconsAreDrawn) {
    QIcon::setThemeSearchPaths({path("no themes")});
    QIcon::setFallbackSearchPaths({});
    QIcon::setThemeName(text("none"));
    themes.icons = text("nobody has this theme");
    std::vector<QImage> seen;
    for (const char *name :
         {"a.png", "a.mp4", "a.mp3", "a.zip", "a.txt", "a.pdf", "a.unknownending", "a.sh", "folder/"}) {
        const QImage drawn = icon(text("/a/") + text(name));
        ASSERT_EQ(drawn.size(), QSize(48, 48)) << name;
        EXPECT_GT(drawn.pixelColor(24, 32).alpha(), 250) << name;
        EXPECT_EQ(std::count(seen.begin(), seen.end(), drawn), 0) << name << " looks like another kind";
        seen.push_back(drawn);
    }
}

TEST_F(ThemeFileIconsTest, anotherThemeIsFollowed) {
    static_cast<void>(icon(text("/a/b.txt")));
    EXPECT_EQ(QIcon::themeName(), text("Adwaita"));
    themes.icons = text("hicolor-of-somebody");
    letPass(10ms); // another turn
    static_cast<void>(icon(text("/a/b.txt")));
    EXPECT_EQ(QIcon::themeName(), text("hicolor-of-somebody"));
}

TEST_F(ThemeFileIconsTest, whereTheDesktopNamesNoThemeOneThatIsThereIsShown) {
    themes.icons.clear();
    QIcon::setThemeName(text("hicolor")); // as the toolkit has it then
    static_cast<void>(icon(text("/a/b.txt")));
    EXPECT_EQ(QIcon::themeName(), text("Adwaita"));
}

TEST_F(ThemeFileIconsTest, aPipeWithoutAWriterIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(icon(path("pipe")).isNull());
    EXPECT_EQ(thumbnailOf(path("pipe"), 100), std::nullopt);
    EXPECT_LT(timer.elapsed(), 2000);
}

TEST_F(ThemeFileIconsTest, whatIsNoPlainFileIsNotLookedInto) {
    QDir().mkpath(path("folder.png"));
    QFile::link(path("nothing there"), path("broken.png"));
    QFile::link(path("circle.png"), path("circle.png"));
    for (const QString &file : {path("folder.png"), path("broken.png"), path("circle.png"), text("/dev/zero"),
                                text("/dev/stdin"), text("/proc/self/mem"), text("/proc/self/maps"), text("/proc/kmsg"),
                                text("/sys/kernel/mm/ksm/run"), QString()})
        EXPECT_EQ(thumbnailOf(file, 100), std::nullopt) << qPrintable(file);
}

/// A picture of 30,000 by 30,000 is a hundred kilobytes on the disk and 3.6 GB decoded.
TEST_F(ThemeFileIconsTest, aPictureThatIsTooLargeToBeDecodedHasNoSmallOne) {
    QByteArray head = QByteArray::fromHex("89504e470d0a1a0a0000000d4948445200007530000075300802000000e9456fed");
    const QString png = write("huge.png", head + QByteArray(64, '\0'));
    const QByteArray bitmap =
        QByteArray("BM") + QByteArray::fromHex("36e00ca10000000036000000280000003075000030750000010018000000"
                                               "000000000000000000000000000000000000000000000000");
    const QString bmp = write("huge.bmp", bitmap + QByteArray(5000, '\0'));
    EXPECT_EQ(thumbnailOf(png, 100), std::nullopt);
    EXPECT_EQ(thumbnailOf(bmp, 100), std::nullopt);
}

TEST_F(ThemeFileIconsTest, theLimitOfPixelsIsKeptOnBothSides) {
    // One colour, so that it is small and soon decoded.
    QImage inside(8000, 4000, QImage::Format_Mono);
    inside.fill(1);
    ASSERT_TRUE(inside.save(path("inside.png")));
    QImage outside(8000, 4001, QImage::Format_Mono);
    outside.fill(1);
    ASSERT_TRUE(outside.save(path("outside.png")));
    EXPECT_TRUE(thumbnailOf(path("inside.png"), 100));
    EXPECT_FALSE(thumbnailOf(path("outside.png"), 100));
}

TEST_F(ThemeFileIconsTest, drawingsThatAreProgramsAreNotLookedInto) {
    EXPECT_EQ(thumbnailOf(write("drawing.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>"), 100),
              std::nullopt);
}

TEST_F(ThemeFileIconsTest, picturesOfAllThatCamerasAndBrowsersWriteAreMadeSmall) {
    for (const char *name : {"a.png", "a.jpg", "a.webp", "a.bmp", "a.tiff", "jpeg without ending"}) {
        ASSERT_TRUE(
            photo(600, 300).save(path(name), text(name).endsWith(u'g') && text(name).contains(u' ') ? "JPG" : nullptr))
            << name;
        const auto small = thumbnailOf(path(name), 100);
        ASSERT_TRUE(small) << name;
        EXPECT_EQ(small->size(), QSize(100, 50)) << name;
    }
}

TEST_F(ThemeFileIconsTest, aDamagedPictureHasNoSmallOne) {
    QFile whole(writePhoto("whole.png", 300, 300));
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    const QByteArray bytes = whole.readAll();
    EXPECT_FALSE(thumbnailOf(write("half.png", bytes.first(bytes.size() / 2)), 100));
    EXPECT_FALSE(thumbnailOf(write("head.png", bytes.first(30)), 100));
}

/// What this thread has computed for, whatever else the machine does.
std::chrono::milliseconds computed() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::milliseconds(time.tv_nsec / 1'000'000);
}

TEST_F(ThemeFileIconsTest, tenThousandFilesAreSoonNamed) {
    ThemeFileIcons usual([this] { return themes; });
    static_cast<void>(usual.iconForFile(text("/a/b.txt"), 48));
    const auto begun = computed();
    for (int i = 0; i < 10'000; ++i)
        static_cast<void>(usual.iconForFile(text("/a/name %1.txt").arg(i), 48));
    const auto known = computed() - begun;
    for (int i = 0; i < 10'000; ++i)
        static_cast<void>(usual.iconForFile(path("nothing %1").arg(i), 48));
    const auto unknown = computed() - begun - known;
    std::printf("10,000 icons: %lld ms by name, %lld ms for names that tell nothing\n",
                static_cast<long long>(known.count()), static_cast<long long>(unknown.count()));
    EXPECT_LT(known, 500ms);
    EXPECT_LT(unknown, 800ms);
}

TEST_F(ThemeFileIconsTest, aReaderThatGoesMayLeaveReadsBehind) {
    std::vector<FileIcons::Token> tokens;
    bool isAnswered = false;
    {
        ThumbnailReader reader;
        const QString file = writePhoto("photo.png", 3000, 3000);
        for (int i = 0; i < 20; ++i)
            tokens.push_back(reader.read(file, 100, [&](const QImage &) { isAnswered = true; }));
    }
    letPass(300ms);
    EXPECT_FALSE(isAnswered);
}

} // namespace
} // namespace tavrine::test
