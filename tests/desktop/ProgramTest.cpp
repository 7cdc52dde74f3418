#include "desktop/Program.h"

#include "adapters/x11/TestOwner.h"
#include "adapters/x11/TestRequestor.h"
#include "desktop/Exclusions.h"
#include "support/Wait.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QUrl>

#include <csignal>

#include <gtest/gtest.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

QByteArray png(int width, int height, Qt::GlobalColor color) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    QByteArray data;
    QBuffer buffer(&data);
    image.save(&buffer, "PNG");
    return data;
}

/// Runs xdotool with these words; true when it succeeded.
bool xdotool(const char *words) {
    QProcess process;
    process.start(QStringLiteral("xdotool"), QString::fromUtf8(words).split(QLatin1Char(' ')));
    return process.waitForFinished(10000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

void writeFile(const QString &path, const QByteArray &content) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

} // namespace

class ProgramOnADesktop : public testing::Test {
protected:
    bool comesToHold(const QString &content) {
        return waitUntil([&] { return program.rowsWith(content) == 1; });
    }
    QStringList imageNames() const {
        return program.rows("SELECT image_file_name FROM items WHERE image_file_name IS NOT NULL");
    }

    Program program;
};

TEST_F(ProgramOnADesktop, aTextCopiedInAForeignProgramIsInTheDatabase) {
    ASSERT_TRUE(program.start());
    copy("Grüße aus der Ferne ✓");
    EXPECT_TRUE(comesToHold(QStringLiteral("Grüße aus der Ferne ✓")));
}

TEST_F(ProgramOnADesktop, aTextCopiedWithTheKeyboardInAGtkWindowIsInTheDatabase) {
    ASSERT_TRUE(program.start());
    const Client window(QStringLiteral(TAVRINE_CLIENTS "/gtk-text"), {QStringLiteral("typed in a GTK window")});
    ASSERT_TRUE(xdotool("search --sync --onlyvisible --class gtk-text windowactivate --sync"));
    // A window that has just appeared may take its first keys before its text has the focus, so they are sent until
    // they arrive.
    EXPECT_TRUE(waitUntil([&] {
        return xdotool("key ctrl+a key ctrl+c") &&
               waitUntil([&] { return program.rowsWith(QStringLiteral("typed in a GTK window")) == 1; }, 1s);
    }));
}

TEST_F(ProgramOnADesktop, aPictureCopiedIsKeptAsAJpegFileOfItsOwn) {
    ASSERT_TRUE(program.start());
    copy(png(320, 200, Qt::red), "image/png");
    ASSERT_TRUE(waitUntil([&] { return imageNames().size() == 1; }));
    EXPECT_EQ(program.rows("SELECT content FROM items WHERE image_file_name IS NOT NULL"),
              QStringList{QStringLiteral("Copied Image")});
    const QString path = program.dataFolder() + QStringLiteral("/Images/") + imageNames().constFirst();
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.peek(3) == QByteArray("\xff\xd8\xff"));
    const QImage stored(path);
    EXPECT_EQ(stored.size(), QSize(320, 200));
    EXPECT_GT(qRed(stored.pixel(10, 10)), 240);
}

TEST_F(ProgramOnADesktop, aPictureFileCopiedInAFileManagerIsKeptAsAPicture) {
    ASSERT_TRUE(program.start());
    const QString path = program.home() + QStringLiteral("/Documents/a picture.png");
    writeFile(path, png(40, 30, Qt::blue));
    copy(QUrl::fromLocalFile(path).toEncoded() + "\r\n", "text/uri-list");
    EXPECT_TRUE(waitUntil([&] { return imageNames().size() == 1; }));
}

TEST_F(ProgramOnADesktop, whatIsMarkedAsAPasswordIsNotRecorded) {
    ASSERT_TRUE(program.start());
    {
        const Client manager(QStringLiteral(TAVRINE_CLIENTS "/gtk-secret"), {QStringLiteral("secret")});
        ASSERT_TRUE(waitUntil([] { return paste() == "secret" && !paste("x-kde-passwordManagerHint").isEmpty(); }));
        // Two periods of the poll, in which the copy is seen and dropped.
        (void)waitUntil([] { return false; }, 1200ms);
    }
    copy("no secret");
    ASSERT_TRUE(comesToHold(QStringLiteral("no secret")));
    EXPECT_EQ(program.rowsWith(QStringLiteral("secret")), 0);
}

TEST_F(ProgramOnADesktop, aCopyWhileAPasswordManagerIsInFrontIsNeverRecorded) {
    ASSERT_TRUE(program.start());
    {
        const Client manager(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("KeePassXC"),
                                                       QStringLiteral("-name"), QStringLiteral("keepassxc")});
        ASSERT_TRUE(xdotool("search --sync --onlyvisible --class KeePassXC windowactivate --sync"));
        copy("hunter2");
        // Two periods of the poll, in which the copy is seen and dropped.
        (void)waitUntil([] { return false; }, 1200ms);
    }
    ASSERT_TRUE(waitUntil([] { return !xdotool("search --onlyvisible --class KeePassXC"); }));
    copy("an ordinary text");
    ASSERT_TRUE(comesToHold(QStringLiteral("an ordinary text")));
    EXPECT_EQ(program.rowsWith(QStringLiteral("hunter2")), 0);
}

TEST_F(ProgramOnADesktop, aCopyThatIsStrippedIsPlainTextForOthersAndOneRow) {
    ASSERT_TRUE(program.writePreferences("<key>StripRichTextFormatting</key><true/>"));
    ASSERT_TRUE(program.start());
    tavrine::TestOwner owner;
    owner.own({{"UTF8_STRING", {.bytes = "bold"}},
               {"text/html", {.bytes = "<b>bold</b>"}},
               {"text/rtf", {.bytes = "{\\rtf1 bold}"}},
               {"x/own", {.bytes = "own"}}});
    ASSERT_TRUE(comesToHold(QStringLiteral("bold")));
    ASSERT_TRUE(waitUntil([&] { return !owner.isOwner(); }));
    tavrine::TestRequestor others;
    const auto plain = others.paste("UTF8_STRING");
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->bytes, "bold");
    const QList<QByteArray> targets = others.targets();
    for (const char *rich : {"text/html", "text/rtf", "x/own"})
        EXPECT_FALSE(targets.contains(rich)) << rich;
    const QStringList rows = program.rows("SELECT id FROM items");
    (void)waitUntil([] { return false; }, 1200ms); // two periods of the poll, in which a claim would be seen
    EXPECT_EQ(program.rows("SELECT id FROM items"), rows) << "its own claim is no copy";
    copy("the next copy");
    EXPECT_TRUE(comesToHold(QStringLiteral("the next copy")));
}

/// The toolkit gives its windows a class with a capital, and the file names none.
TEST_F(ProgramOnADesktop, aProgramExcludedByItsFileIsNotRecordedHoweverItsWindowsSpellIt) {
    const QString path = installInHome(program.home(), "gtk-text.desktop", "Exec=/usr/bin/gtk-text %U\n");
    ASSERT_TRUE(program.startOnboarded(exclusionByFile(path)));
    {
        const Client window(QStringLiteral(TAVRINE_CLIENTS "/gtk-text"), {QStringLiteral("a line")});
        ASSERT_TRUE(xdotool("search --sync --onlyvisible --class gtk-text windowactivate --sync"));
        copy("hidden");
        // Two periods of the poll, in which the copy is seen and dropped.
        (void)waitUntil([] { return false; }, 1200ms);
    }
    ASSERT_TRUE(waitUntil([] { return !xdotool("search --onlyvisible --class gtk-text"); }));
    const Client other(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("Gtk-text-viewer")});
    ASSERT_TRUE(
        waitUntil([] { return xdotool("search --onlyvisible --class Gtk-text-viewer windowactivate --sync"); }));
    copy("of a program whose name merely begins like that");
    ASSERT_TRUE(comesToHold(QStringLiteral("of a program whose name merely begins like that")));
    EXPECT_EQ(program.rowsWith(QStringLiteral("hidden")), 0);
}

/// As GNOME tells it, by the name of its file.
TEST_F(ProgramOnADesktop, aProgramExcludedInAnotherKindOfSessionIsNotRecordedHere) {
    const QString path = installInHome(program.home(), "org.example.Line.desktop", "StartupWMClass=LineOfText\n");
    const QString there = installInHome(program.home(), "there/org.example.Line.desktop", "");
    ASSERT_FALSE(path.isEmpty());
    ASSERT_TRUE(program.startOnboarded(exclusionByFile(there)));
    {
        const Client window(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("LineOfText")});
        ASSERT_TRUE(xdotool("search --sync --onlyvisible --class LineOfText windowactivate --sync"));
        copy("hidden");
        // Two periods of the poll, in which the copy is seen and dropped.
        (void)waitUntil([] { return false; }, 1200ms);
    }
    // A moment without a program in front still counts for the one before it.
    const Client other(QStringLiteral("xterm"), {QStringLiteral("-class"), QStringLiteral("Another")});
    ASSERT_TRUE(waitUntil([] { return xdotool("search --onlyvisible --class Another windowactivate --sync"); }));
    copy("an ordinary text");
    ASSERT_TRUE(comesToHold(QStringLiteral("an ordinary text")));
    EXPECT_EQ(program.rowsWith(QStringLiteral("hidden")), 0);
}

TEST_F(ProgramOnADesktop, aCopyOutlivesTheProgramThatItCameFrom) {
    ASSERT_TRUE(program.start());
    {
        const Client owner(
            QStringLiteral("xclip"),
            {QStringLiteral("-quiet"), QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-i")},
            "left behind");
        ASSERT_TRUE(comesToHold(QStringLiteral("left behind")));
    }
    EXPECT_TRUE(waitUntil([] { return paste() == "left behind"; }));
    EXPECT_EQ(program.rowsWith(QStringLiteral("left behind")), 1);
}

TEST_F(ProgramOnADesktop, aRecordedCopySurvivesBeingKilled) {
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(program.start());
        const QString text = QStringLiteral("before the crash %1").arg(round);
        copy(text.toUtf8());
        ASSERT_TRUE(comesToHold(text));
        program.kill9();
        EXPECT_EQ(program.rows("PRAGMA integrity_check"), QStringList{QStringLiteral("ok")});
        EXPECT_EQ(program.rowsWith(text), 1);
    }
}

TEST_F(ProgramOnADesktop, whatWasCopiedBeforeTheStartIsNotRecorded) {
    copy("older than the program");
    ASSERT_TRUE(program.start());
    copy("newer than the program");
    ASSERT_TRUE(comesToHold(QStringLiteral("newer than the program")));
    EXPECT_EQ(program.rowsWith(QStringLiteral("older than the program")), 0);
}

TEST_F(ProgramOnADesktop, aSecondStartEndsAtOnceAndTheFirstGoesOn) {
    ASSERT_TRUE(program.start());
    const auto second = program.startAgain();
    ASSERT_TRUE(second->waitForFinished(20000));
    EXPECT_EQ(second->exitCode(), 0);
    EXPECT_EQ(second->exitStatus(), QProcess::NormalExit);
    EXPECT_TRUE(program.isRunning());
    copy("still recording");
    EXPECT_TRUE(comesToHold(QStringLiteral("still recording")));
}

TEST_F(ProgramOnADesktop, whatItWritesBelongsToThePersonAlone) {
    ASSERT_TRUE(program.start());
    copy(png(20, 20, Qt::green), "image/png");
    ASSERT_TRUE(waitUntil([&] { return imageNames().size() == 1 && QFile::exists(program.preferencesPath()); }));
    const auto others =
        QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    const QString images = program.dataFolder() + QStringLiteral("/Images");
    for (const QString &path : {program.dataFolder(), images, images + QLatin1Char('/') + imageNames().constFirst(),
                                program.databasePath(), program.preferencesPath()})
        EXPECT_EQ(QFile::permissions(path) & others, QFile::Permissions()) << qPrintable(path);
}

TEST_F(ProgramOnADesktop, brokenPreferencesAreSetAsideAndToldOnStandardOutput) {
    writeFile(program.preferencesPath(), "<plist><dict><key>feat");
    ASSERT_TRUE(program.start());
    const QStringList aside = QDir(program.home() + QStringLiteral("/.config"))
                                  .entryList({QStringLiteral("com.veltrane.Tavrine.plist.unreadable*")}, QDir::Files);
    ASSERT_EQ(aside.size(), 1);
    EXPECT_TRUE(program.output().contains(aside.constFirst())) << qPrintable(program.output());
    copy("recorded on defaults");
    EXPECT_TRUE(comesToHold(QStringLiteral("recorded on defaults")));
}

TEST_F(ProgramOnADesktop, aDataFolderThatCannotBeMadeDoesNotStopIt) {
    writeFile(program.dataFolder(), "a file in the folder's place");
    ASSERT_TRUE(program.start());
    copy("goes nowhere");
    copy(png(10, 10, Qt::red), "image/png");
    (void)waitUntil([] { return false; }, 1200ms);
    EXPECT_TRUE(program.isRunning());
}

TEST_F(ProgramOnADesktop, aForeignFileInTheDatabasesPlaceIsSetAsideAndTheHistoryBeginsAnew) {
    const QByteArray foreign = QByteArray(5000, 'x');
    writeFile(program.databasePath(), foreign);
    ASSERT_TRUE(program.start());
    copy("kept all the same");
    EXPECT_TRUE(comesToHold(QStringLiteral("kept all the same")));
    const QDir folder = QFileInfo(program.databasePath()).dir();
    const QStringList aside = folder.entryList({QStringLiteral("clipboard.db.unreadable-*")}, QDir::Files);
    ASSERT_EQ(aside.size(), 1);
    QFile file(folder.filePath(aside.first()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), foreign);
}

TEST_F(ProgramOnADesktop, withoutASessionBusItRunsAllTheSame) {
    program.environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    program.environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), program.home());
    ASSERT_TRUE(program.start());
    copy("without a bus");
    EXPECT_TRUE(comesToHold(QStringLiteral("without a bus")));
}

TEST_F(ProgramOnADesktop, aHangingOwnerDoesNotKeepTheNextCopyFromBeingRecorded) {
    ASSERT_TRUE(program.start());
    {
        Client owner(
            QStringLiteral("xclip"),
            {QStringLiteral("-quiet"), QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-i")},
            "hangs");
        ASSERT_TRUE(waitUntil([] { return paste() == "hangs"; }));
        ::kill(static_cast<pid_t>(owner.processId()), SIGSTOP);
        copy("after the one that hangs");
        EXPECT_TRUE(comesToHold(QStringLiteral("after the one that hangs")));
    }
}

TEST_F(ProgramOnADesktop, theFirstLaunchPrintsItsLinesAndAsksForNoPermission) {
    ASSERT_TRUE(program.start());
    EXPECT_TRUE(program.output().contains(QLatin1String("DEBUG: Registering Hotkeys...\n")));
    EXPECT_FALSE(program.output().contains(QLatin1String("Accessibility Trusted on Launch")));
}
