// The built program with all its real parts: an area is recorded by the hot key, while it changes in a known way, and
// the movie's pictures are looked at.

#include "desktop/Desktop.h"
#include "desktop/Program.h"
#include "support/Wait.h"

#include <QColor>
#include <QDir>
#include <QProcess>

#include <gmock/gmock.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

constexpr int keySix = 15;
constexpr QRect area(100, 140, 320, 240);
constexpr auto overlay = "Select Area to Record";
constexpr auto bar = "Recording";
constexpr auto preview = "Recording Complete";
constexpr auto each = 400ms; ///< colour

QByteArray outputOf(const QString &command, const QStringList &arguments) {
    QProcess process;
    process.start(command, arguments);
    return process.waitForFinished() ? process.readAllStandardOutput() : QByteArray();
}

/// The colour of a movie's picture at a place, one for each picture that differs from the one before; by name where it
/// is near a plain one.
QStringList coloursOf(const QString &path, QPoint place) {
    const QByteArray frames =
        outputOf(QStringLiteral("ffmpeg"), {QStringLiteral("-loglevel"), QStringLiteral("error"), QStringLiteral("-i"),
                                            path, QStringLiteral("-f"), QStringLiteral("rawvideo"),
                                            QStringLiteral("-pix_fmt"), QStringLiteral("rgb24"), QStringLiteral("-")});
    const qsizetype length = qsizetype{3} * area.width() * area.height();
    QStringList found;
    for (qsizetype start = 0; start + length <= frames.size(); start += length) {
        const auto *pixel = reinterpret_cast<const uchar *>(frames.constData()) + start +
                            qsizetype{3} * (place.y() * area.width() + place.x());
        QString name = QStringLiteral("other");
        for (const char *plain : {"red", "lime", "blue", "white"}) {
            const QColor colour(QString::fromLatin1(plain));
            if (std::abs(colour.red() - pixel[0]) + std::abs(colour.green() - pixel[1]) +
                    std::abs(colour.blue() - pixel[2]) <
                24)
                name = QString::fromLatin1(plain);
        }
        if (found.isEmpty() || found.last() != name)
            found << name;
    }
    return found;
}

class RecordingsOfAProgram : public ::testing::Test {
protected:
    static void pass(std::chrono::milliseconds length) {
        (void)waitUntil([] { return false; }, length);
    }
    /// By the hot key, a drag and Return.
    void startRecording() {
        desktop.keyboard.chord({key::leftSuper, key::leftShift, keySix});
        ASSERT_TRUE(waitUntil([this] { return desktop.hasKeyboard(overlay); })) << qPrintable(program.output());
        desktop.keyboard.movePointer(area.left(), area.top());
        pass(200ms);
        desktop.keyboard.press(1);
        desktop.keyboard.movePointer(area.center().x(), area.center().y());
        desktop.keyboard.movePointer(area.left() + area.width(), area.top() + area.height());
        desktop.keyboard.release(1);
        pass(200ms);
        desktop.pressReturn();
        ASSERT_TRUE(waitUntil([this] { return desktop.isShown(bar); })) << qPrintable(program.output());
        ASSERT_TRUE(waitUntil([this] { return !desktop.isShown(overlay); }));
    }
    void clickAtTheRightEnd(const char *title, QPoint fromTheLowerRightCorner) {
        const auto windows = desktop.windowsTitled(QString::fromUtf8(title));
        ASSERT_EQ(windows.size(), 1U);
        desktop.click(desktop.geometry(windows.front()).bottomRight() - fromTheLowerRightCorner);
    }

    /// What is behind all windows, from now on.
    static void fillScreen(const char *colour) {
        (void)outputOf(QStringLiteral("xsetroot"), {QStringLiteral("-solid"), QString::fromLatin1(colour)});
    }

    Program program;
    Desktop desktop;
};

TEST_F(RecordingsOfAProgram, whatHappensInTheAreaIsInTheMovieAndNothingElse) {
    fillScreen("black");
    ASSERT_TRUE(program.startOnboarded());
    startRecording();
    pass(each);
    for (const char *colour : {"red", "lime", "blue", "white"}) {
        fillScreen(colour);
        pass(each);
    }
    clickAtTheRightEnd(bar, {40, 20});
    ASSERT_TRUE(waitUntil([this] { return desktop.isShown(preview); })) << qPrintable(program.output());
    EXPECT_FALSE(desktop.isShown(bar));
    pass(500ms);
    clickAtTheRightEnd(preview, {60, 30});
    const QString shots = program.home() + QStringLiteral("/Documents/Tavrine QuickShots");
    ASSERT_TRUE(waitUntil([&] { return QDir(shots).entryList(QDir::Files).size() == 1; }))
        << qPrintable(program.output());
    const QString path = shots + u'/' + QDir(shots).entryList(QDir::Files).constFirst();
    const QStringList ofCentre{QStringLiteral("red"), QStringLiteral("lime"), QStringLiteral("blue"),
                               QStringLiteral("white")};
    EXPECT_EQ(coloursOf(path, {160, 120}).mid(1), ofCentre); // after black
    EXPECT_EQ(coloursOf(path, {0, 0}).mid(1), ofCentre);     // the frame lies outside
    const QByteArray facts = outputOf(
        QStringLiteral("ffprobe"),
        {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-select_streams"), QStringLiteral("v:0"),
         QStringLiteral("-show_entries"), QStringLiteral("stream=width,height,profile:format=duration"),
         QStringLiteral("-of"), QStringLiteral("default=noprint_wrappers=1:nokey=1"), path});
    const QByteArrayList lines = facts.trimmed().split('\n');
    ASSERT_EQ(lines.size(), 4) << facts.constData();
    EXPECT_EQ(lines[0], "High");
    EXPECT_EQ(lines[1], "320");
    EXPECT_EQ(lines[2], "240");
    EXPECT_GT(lines[3].toDouble(), 1.9); // five of 400 ms
    EXPECT_LT(lines[3].toDouble(), 4.0);
    EXPECT_TRUE(waitUntil([this] {
        return !program.rows("SELECT content FROM items WHERE content LIKE '[Screen Recording]%'").isEmpty();
    }));
}

} // namespace
