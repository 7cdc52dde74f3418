// Recordings in the history of the built program: their rows show them, and pasting one gives its file.
#include "desktop/Desktop.h"
#include "desktop/Program.h"
#include "support/MovieScreen.h"
#include "support/Movies.h"
#include "support/Wait.h"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QUrl>

#include <gtest/gtest.h>

using namespace tavrine::testing;
using namespace tavrine::test;

namespace {

/// Of this colour, on the whole screen, by one in four.
int pixelsLike(const QColor &color) {
    const QImage screen = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    int count = 0;
    for (int y = 0; y < screen.height(); y += 2)
        for (int x = 0; x < screen.width(); x += 2)
            count += isLike(screen.pixelColor(x, y), color) ? 4 : 0;
    return count;
}

class RecordingRows : public testing::Test {
protected:
    /// A history with one recording.
    bool start(const QByteArray &preferences = {}) {
        const QString folder = program.home() + QStringLiteral("/Documents/Tavrine QuickShots");
        QDir().mkpath(folder);
        movie = folder + QStringLiteral("/Demo_1.mp4");
        makeMovie(movie, plain(QStringLiteral("magenta"), 0.2, QStringLiteral("640x360")));
        return program.startOnboarded(preferences) &&
               program.execute(QStringLiteral("INSERT INTO items(id,content,date,image_file_name) VALUES ("
                                              "'5C1C3C5E-6D1B-4C4E-8E57-0B7F0A2A1B11','[Screen Recording] Demo 1',"
                                              "strftime('%s','now'),'Demo_1.mp4')"));
    }
    bool showPanel(const char *title) {
        desktop.openClipboardPanel();
        return waitUntil([&] { return desktop.hasKeyboard(title); });
    }

    Desktop desktop;
    Program program;
    QString movie;
};

} // namespace

TEST_F(RecordingRows, theRowShowsTheRecordingAndItsPasteIntoAFileManagerIsTheFile) {
    ASSERT_TRUE(start());
    const QString target = program.home() + QStringLiteral("/target");
    QDir().mkpath(target);
    const Client manager(QStringLiteral("pcmanfm"), {QStringLiteral("--no-desktop"), target});
    ASSERT_TRUE(waitUntil([&] { return desktop.windowOf(manager.processId()) != 0; }));
    desktop.activate(desktop.windowOf(manager.processId()));
    ASSERT_TRUE(waitUntil([&] { return desktop.activeWindow() == desktop.windowOf(manager.processId()); }));
    EXPECT_EQ(pixelsLike(Qt::magenta), 0);
    ASSERT_TRUE(showPanel(clipboardPanel));
    EXPECT_TRUE(waitUntil([] { return pixelsLike(Qt::magenta) > 500; })) << "the row shows the movie";
    desktop.type("demo");
    ASSERT_TRUE(waitUntil([] { return pixelsLike(Qt::magenta) > 500; }));
    desktop.pressReturn();
    EXPECT_TRUE(waitUntil([&] { return QFile::exists(target + QStringLiteral("/Demo_1.mp4")); }));
    EXPECT_EQ(paste("text/uri-list").trimmed(), QUrl::fromLocalFile(movie).toEncoded());
    EXPECT_EQ(paste("x-special/gnome-copied-files"), "copy\n" + QUrl::fromLocalFile(movie).toEncoded());
    EXPECT_TRUE(QFile::exists(movie)) << "it is copied, not moved";
}

TEST_F(RecordingRows, theClassicPanelShowsItAndItsPasteIntoATextIsThePathWhichIsNotRecorded) {
    ASSERT_TRUE(start("<key>ClipboardExperience</key><string>classic</string>"
                      "<key>ClipboardSearchPrimaryMigrationV1</key><true/>"));
    ASSERT_TRUE(showPanel(classicPanel));
    EXPECT_TRUE(waitUntil([] { return pixelsLike(Qt::magenta) > 500; }));
    desktop.type("demo");
    desktop.keyboard.tap(key::down);
    desktop.pressReturn();
    EXPECT_TRUE(waitUntil([&] { return paste() == QFile::encodeName(movie); }));
    (void)waitUntil([] { return false; }, std::chrono::milliseconds(1200)); // two periods of the poll
    EXPECT_EQ(program.rowsWith(movie), 0);
}
