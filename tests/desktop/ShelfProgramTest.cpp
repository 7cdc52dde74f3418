// The built program with all its real parts, and other programs that drag: what a person does with the shelf.

#include "adapters/x11/TestDrop.h"
#include "desktop/Desktop.h"
#include "desktop/Program.h"
#include "support/Wait.h"

#include <QFile>
#include <QProcess>
#include <QUrl>

#include <gmock/gmock.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;
using ::testing::HasSubstr;

namespace {

constexpr int restingHeight = 24;
constexpr int dropHeight = 79;
constexpr int itemsHeight = 224;

/// A foreign window that drags one thing and takes others.
class DragClient {
public:
    DragClient(const QString &kind, const QString &file) {
        m_process.start(QStringLiteral(TAVRINE_CLIENTS "/gtk-drag"), {QStringLiteral("3"), kind, file});
    }
    ~DragClient() {
        m_process.kill();
        m_process.waitForFinished();
    }
    void kill9() { m_process.kill(); }
    [[nodiscard]] bool says(const QByteArray &line, std::chrono::milliseconds limit = 10s) {
        return waitUntil([&] { return (m_said += m_process.readAllStandardOutput()).contains(line); }, limit);
    }
    [[nodiscard]] const QByteArray &said() const { return m_said; }
    void forget() { m_said.clear(); }

private:
    QProcess m_process;
    QByteArray m_said;
};

class ShelfOfAProgram : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(program.startOnboarded());
        ASSERT_TRUE(waitUntil([this] { return desktop.windowsTitled(QStringLiteral("NotchShelf")).size() == 1; }))
            << qPrintable(program.output());
        shelf = desktop.windowsTitled(QStringLiteral("NotchShelf")).front();
        top = QPoint(desktop.size().width() / 2, 0);
        desktop.keyboard.movePointer(10, desktop.size().height() - 10);
    }
    void TearDown() override { desktop.keyboard.release(1); }

    QString write(const char *name, const QByteArray &content) {
        const QString path = program.home() + u'/' + QString::fromUtf8(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return path;
    }
    /// A file, and the list that a program drags it by.
    QString listOf(const QString &path) {
        return write("dragged.list", QUrl::fromLocalFile(path).toEncoded() + "\r\n");
    }

    /// The middle of the other program's window, once it is there and takes clicks.
    [[nodiscard]] QPoint whereToDragFrom(DragClient &client) {
        EXPECT_TRUE(client.says("ready", 30s)) << client.said().constData();
        QPoint middle;
        EXPECT_TRUE(waitUntil([&] {
            // What it drags beside the pointer has the same title.
            for (const quint32 window : desktop.windowsTitled(QStringLiteral("gtk-drag")))
                if (desktop.geometry(window).width() == 300)
                    middle = desktop.geometry(window).center();
            return !middle.isNull() && desktop.title(desktop.topWindowAt(middle)) == QStringLiteral("gtk-drag");
        }));
        return middle;
    }
    void beginDrag(QPoint from) {
        desktop.keyboard.movePointer(from.x(), from.y());
        desktop.keyboard.press(1);
        for (int step = 1; step <= 5; ++step)
            desktop.keyboard.movePointer(from.x(), from.y() + 4 * step);
    }
    /// By steps, as a hand does it.
    void moveTo(QPoint from, QPoint to) {
        for (int step = 1; step <= 10; ++step) {
            const QPoint place = from + (to - from) * step / 10;
            desktop.keyboard.movePointer(place.x(), place.y());
        }
    }
    [[nodiscard]] bool hasHeight(int height) {
        return waitUntil([&] { return desktop.inputOf(shelf).height() == height; });
    }
    [[nodiscard]] bool prints(const char *line) {
        return waitUntil([&] { return program.output().contains(QString::fromUtf8(line)); });
    }
    /// A drag by a foreign program that ends on the shelf.
    void dropOnShelf(DragClient &client, int opensTo) {
        const QPoint from = whereToDragFrom(client);
        beginDrag(from);
        ASSERT_TRUE(client.says("begin"));
        ASSERT_TRUE(hasHeight(opensTo)) << qPrintable(program.output());
        moveTo(from, top + QPoint(0, 12));
        ASSERT_TRUE(prints("[NotchShelf] Drag entered!")) << qPrintable(program.output());
        ASSERT_TRUE(hasHeight(dropHeight));
        desktop.keyboard.release(1);
        ASSERT_TRUE(client.says("dropped")) << qPrintable(program.output());
    }

    /// Drags the only item out, as a person does it, who sees it and then sees what it is over.
    void dragOutOnto(QPoint target, DragClient &client) {
        const QPoint tile = top + QPoint(0, 120);
        // It is lit under the pointer, and in its place when it is so from top to bottom.
        const auto isLit = [&](int y) { return desktop.brightnessAt(top + QPoint(-30, y)) > 20; };
        moveTo(target, top + QPoint(0, 1));
        ASSERT_TRUE(hasHeight(itemsHeight));
        moveTo(top + QPoint(0, 1), tile);
        int step = 0; // a hand is never still
        ASSERT_TRUE(waitUntil([&] {
            desktop.keyboard.movePointer(tile.x() + ++step % 5, tile.y());
            return isLit(82) && isLit(188);
        }));
        beginDrag(tile);
        client.forget();
        moveTo(tile, target);
        ASSERT_TRUE(waitUntil([&] {
            desktop.keyboard.movePointer(target.x() + ++step % 5, target.y());
            return client.says("over", 20ms);
        }));
        desktop.keyboard.release(1);
    }

    Desktop desktop;
    Program program;
    quint32 shelf = 0;
    QPoint top; ///< the middle of the screen's upper edge
};

TEST_F(ShelfOfAProgram, aFileThatIsDraggedAnywhereOpensItAndIsHeldAndCanBeDraggedOutAgain) {
    const QString path = write("Report.txt", "words");
    DragClient client(QStringLiteral("files"), listOf(path));
    dropOnShelf(client, dropHeight);
    ASSERT_TRUE(prints("[NotchShelf] Found 1 file URLs")) << qPrintable(program.output());
    ASSERT_TRUE(hasHeight(itemsHeight)); // the pointer is still there
    EXPECT_THAT(client.said(), HasSubstr("dropped copy"));

    const QPoint other = whereToDragFrom(client); // which takes the pointer away
    ASSERT_TRUE(hasHeight(0));
    dragOutOnto(other, client);
    EXPECT_TRUE(client.says("took copy " + QUrl::fromLocalFile(path).toEncoded()))
        << client.said().constData() << qPrintable(program.output());
    EXPECT_TRUE(QFile::exists(path));
}

TEST_F(ShelfOfAProgram, aFileThatIsMovedAwayLeavesTheShelfOnceItHasReallyLeft) {
    const QString path = write("Report.txt", "words");
    DragClient client(QStringLiteral("files"), listOf(path));
    dropOnShelf(client, dropHeight);
    ASSERT_TRUE(hasHeight(itemsHeight));
    const QPoint other = whereToDragFrom(client);
    const QByteArray taken = "took move " + QUrl::fromLocalFile(path).toEncoded();
    for (const bool leaves : {false, true}) {
        SCOPED_TRACE(leaves);
        moveTo(top, other);
        ASSERT_TRUE(hasHeight(0));
        desktop.keyboard.down(key::leftControl);
        dragOutOnto(other, client);
        ASSERT_TRUE(client.says(taken)) << client.said().constData();
        desktop.keyboard.up(key::leftControl);
        ASSERT_TRUE(!leaves || QFile::remove(path));
        (void)waitUntil([] { return false; }, 3s); // it asks for a little less
        moveTo(other, top + QPoint(0, 1));
        EXPECT_EQ(waitUntil([&] { return desktop.inputOf(shelf).height() == itemsHeight; }, 2s), !leaves);
    }
}

TEST_F(ShelfOfAProgram, aTextThatIsDraggedOpensNothingAndCanBeDroppedAllTheSame) {
    DragClient client(QStringLiteral("text"), write("words.txt", "some words"));
    beginDrag(whereToDragFrom(client));
    ASSERT_TRUE(client.says("begin"));
    ASSERT_TRUE(hasHeight(restingHeight)); // it takes drops
    EXPECT_FALSE(waitUntil([&] { return desktop.inputOf(shelf).height() != restingHeight; }, 300ms));
    desktop.keyboard.release(1);
    ASSERT_TRUE(hasHeight(0));
    dropOnShelf(client, restingHeight);
    EXPECT_TRUE(hasHeight(itemsHeight));
}

TEST_F(ShelfOfAProgram, aDropOfWhichNothingCanBeKeptIsRefused) {
    tavrine::TestDrop drag(shelf);
    const auto accepts = [&](const QByteArray &address) {
        EXPECT_TRUE(drag.enter({{"text/uri-list", {.bytes = address + "\r\n"}}}, top + QPoint(0, 12)));
        drag.drop();
        EXPECT_TRUE(waitUntil([&] { return drag.isFinished(); }));
        return drag.isAccepted();
    };
    EXPECT_FALSE(accepts("file://another-machine/tmp/Report.txt"));
    EXPECT_TRUE(accepts("file:///tmp/Report.txt"));
}

TEST_F(ShelfOfAProgram, aPanelThatIsCalledLiesAboveTheOpenShelfUntilThatIsCalled) {
    DragClient client(QStringLiteral("text"), write("words.txt", "some words"));
    dropOnShelf(client, restingHeight);
    ASSERT_TRUE(hasHeight(itemsHeight)); // the pointer is still there
    const QPoint both = top + QPoint(0, itemsHeight - 20);
    const auto shows = [&](const char *title) {
        return waitUntil([&] { return desktop.title(desktop.topWindowAt(both)) == QLatin1String(title); });
    };
    ASSERT_TRUE(shows("NotchShelf"));
    desktop.openClipboardPanel();
    ASSERT_TRUE(waitUntil([&] { return desktop.hasKeyboard(clipboardPanel); }));
    EXPECT_TRUE(shows(clipboardPanel));
    desktop.pressEscape();
    EXPECT_TRUE(shows("NotchShelf"));
    desktop.openEmojiPanel();
    ASSERT_TRUE(waitUntil([&] { return desktop.hasKeyboard(emojiPanel); }));
    EXPECT_TRUE(shows(emojiPanel));
    desktop.keyboard.movePointer(10, desktop.size().height() - 10);
    ASSERT_TRUE(hasHeight(0));
    moveTo(top + QPoint(0, 40), top); // called in its turn
    ASSERT_TRUE(hasHeight(itemsHeight));
    EXPECT_TRUE(shows("NotchShelf"));
}

TEST_F(ShelfOfAProgram, aClickAtTheTopReachesWhatIsBelow) {
    EXPECT_TRUE(desktop.geometry(shelf).contains(top));
    EXPECT_NE(desktop.keyboard.windowAt(top.x(), top.y()), shelf);
    EXPECT_NE(desktop.keyboard.windowAt(top.x(), top.y() + 12), shelf);
}

TEST_F(ShelfOfAProgram, aDragThatIsCancelledOrWhoseProgramDiesClosesIt) {
    const QString list = listOf(write("Report.txt", "words"));
    DragClient client(QStringLiteral("files"), list);
    beginDrag(whereToDragFrom(client));
    ASSERT_TRUE(hasHeight(dropHeight));
    desktop.pressEscape();
    EXPECT_TRUE(hasHeight(0));
    desktop.keyboard.release(1);
    ASSERT_TRUE(client.says("failed"));
    beginDrag(whereToDragFrom(client));
    ASSERT_TRUE(hasHeight(dropHeight));
    client.kill9();
    EXPECT_TRUE(hasHeight(0));
}

TEST_F(ShelfOfAProgram, aStartThatAsksForItOpensItForTheKeyboardAndEscapeGivesTheKeyboardBack) {
    DragClient client(QStringLiteral("text"), write("words.txt", "some words"));
    dropOnShelf(client, restingHeight);
    desktop.keyboard.movePointer(10, desktop.size().height() - 10);
    ASSERT_TRUE(hasHeight(0));
    const auto focus = desktop.keyboard.focusedWindow();
    const auto start = program.startAgain({QStringLiteral("--shelf")});
    EXPECT_TRUE(start->waitForFinished(30000)); // it hands the word on and ends
    EXPECT_TRUE(hasHeight(itemsHeight)) << qPrintable(program.output());
    EXPECT_TRUE(waitUntil([&] { return desktop.hasKeyboard("NotchShelf"); }));
    desktop.pressEscape();
    EXPECT_TRUE(hasHeight(0));
    EXPECT_TRUE(waitUntil([&] { return desktop.keyboard.focusedWindow() == focus; }));
}

} // namespace
