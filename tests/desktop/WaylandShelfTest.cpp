// The shelf of the built program on a Wayland desktop: what a person drags onto it and out again.

#include "desktop/ShelfDragging.h"

#include <QFile>
#include <QUrl>

#include <gmock/gmock.h>

namespace tavrine::testing {
namespace {

using namespace std::chrono_literals;

class WaylandShelf : public ::testing::Test {
protected:
    void SetUp() override {
        path = program.home() + QStringLiteral("/Report.txt");
        write(path, "words");
        list = program.home() + QStringLiteral("/dragged.list");
        write(list, QUrl::fromLocalFile(path).toEncoded() + "\r\n");
    }
    void TearDown() override {
        hand.up(KEY_LEFTCTRL);
        hand.release();
    }
    static void write(const QString &name, const QByteArray &content) {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    void putOnShelf() {
        ASSERT_TRUE(program.startOnboarded());
        ASSERT_TRUE(drags.putOnShelf(list, middle, top)) << qPrintable(program.output());
        hand.move(aside);
    }
    /// Tries to take the only tile out of the shelf and over the neighbour.
    [[nodiscard]] bool comesOver(Neighbour &neighbour, std::chrono::milliseconds limit) {
        return waitUntil(
            [&] {
                (void)waitUntil([this, step = 0]() mutable { // which opens it, and it has slid in some time
                    hand.move(top + QPoint(++step % 5, 0));
                    return step == 60;
                });
                return drags.dragUntil(tile, middle, [&] { return neighbour.says("over", 5ms); });
            },
            limit);
    }
    /// And onto the neighbour, who tells how it was meant.
    void dragOut(Neighbour &neighbour) {
        ASSERT_TRUE(comesOver(neighbour, ShelfDragging::untilThere)) << neighbour.said().constData();
        hand.release();
    }

    WaylandHand hand;
    Program program;
    ShelfDragging drags{program, hand};
    QString path;
    QString list;
    const QPoint top{640, 0};
    const QPoint tile{640, 120};
    const QPoint middle{640, 360};
    const QPoint aside{40, 700};
};

TEST_F(WaylandShelf, aFileIsDraggedOutAgainAsACopyAndWithControlHeldAsAMoveThatTakesItOffTheShelf) {
    ASSERT_NO_FATAL_FAILURE(putOnShelf());
    Neighbour neighbour("nothing");
    ASSERT_TRUE(drags.comesToBeThere(neighbour));
    const QByteArray address = QUrl::fromLocalFile(path).toEncoded();
    dragOut(neighbour);
    EXPECT_TRUE(neighbour.says("took copy " + address)) << neighbour.said().constData();
    neighbour.forget();
    hand.move(aside);
    hand.down(KEY_LEFTCTRL);
    dragOut(neighbour);
    EXPECT_TRUE(neighbour.says("took move " + address)) << neighbour.said().constData();

    // The neighbour has left the file where it is. Once one that is moved has left, the shelf has it no more.
    neighbour.forget();
    hand.move(aside);
    dragOut(neighbour);
    ASSERT_TRUE(neighbour.says("took move " + address)) << neighbour.said().constData();
    ASSERT_TRUE(QFile::remove(path));
    hand.up(KEY_LEFTCTRL);
    hand.move(aside);
    (void)waitUntil([] { return false; }, 3s); // it asks for a little less
    neighbour.forget();
    EXPECT_FALSE(comesOver(neighbour, 8s)) << "there is nothing to drag";
}

} // namespace
} // namespace tavrine::testing
