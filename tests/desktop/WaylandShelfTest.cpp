// The shelf of the built program on a Wayland desktop: what a person drags onto it and out again.

#include "adapters/wayland/WaylandWindows.h"
#include "desktop/Program.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

#include <QFile>
#include <QUrl>

#include <gmock/gmock.h>

namespace tavrine::testing {
namespace {

using namespace std::chrono_literals;

constexpr auto untilThere = 60s; ///< on a machine that does much else

/// A foreign window that drags files and takes drops. Its middle is the screen's, whoever places it.
class Neighbour {
public:
    explicit Neighbour(const char *drags, const QString &list = {}) {
        m_process.start(QStringLiteral(TAVRINE_CLIENTS "/gtk-drag"), {QStringLiteral("3"), QLatin1String(drags), list});
    }
    ~Neighbour() {
        m_process.kill();
        m_process.waitForFinished();
    }
    [[nodiscard]] bool says(const QByteArray &line, std::chrono::milliseconds limit = 10s) {
        return waitUntil([&] { return (m_said += m_process.readAllStandardOutput()).contains(line); }, limit);
    }
    void forget() { m_said.clear(); }
    [[nodiscard]] const QByteArray &said() const { return m_said; }

private:
    QProcess m_process;
    QByteArray m_said;
};

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
    [[nodiscard]] bool prints(const char *line, std::chrono::milliseconds limit = test::patience) {
        return waitUntil([&] { return program.output().contains(QString::fromUtf8(line)); }, limit);
    }
    /// Until `over` says that what is dragged is where it should be, with the button down.
    template <class Over>
    [[nodiscard]] bool dragUntil(QPoint from, QPoint to, Over over) {
        hand.dragAndHold(from, to);
        if (waitUntil(
                [&, step = 0]() mutable { // a hand is never still
                    hand.move(to + QPoint(++step % 5, 0));
                    return over();
                },
                2s))
            return true;
        hand.release(); // what is dragged, or what it is dragged to, was not there yet
        return false;
    }
    /// Its program may be ready before the compositor has its window.
    [[nodiscard]] bool comesToBeThere(Neighbour &neighbour) {
        return neighbour.says("ready", untilThere) && waitUntil(
                                                          [this] {
                                                              windows->refresh();
                                                              return windows->active() != nullptr;
                                                          },
                                                          untilThere);
    }
    void putOnShelf() {
        ASSERT_TRUE(program.startOnboarded());
        Neighbour neighbour("files", list);
        ASSERT_TRUE(comesToBeThere(neighbour));
        // A slow program may have seen a drag come that was given up meanwhile.
        const auto entries = [this] { return program.output().count(QLatin1String("Drag entered!")); };
        ASSERT_TRUE(waitUntil(
            [&] {
                if (!dragUntil(middle, top, [&, before = entries()] { return entries() > before; }))
                    return false;
                hand.release();
                return prints("[NotchShelf] Found 1 file URLs", 5s);
            },
            untilThere))
            << qPrintable(program.output());
        ASSERT_TRUE(neighbour.says("dropped copy"));
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
                return dragUntil(tile, middle, [&] { return neighbour.says("over", 5ms); });
            },
            limit);
    }
    /// And onto the neighbour, who tells how it was meant.
    void dragOut(Neighbour &neighbour) {
        ASSERT_TRUE(comesOver(neighbour, untilThere)) << neighbour.said().constData();
        hand.release();
    }

    WaylandHand hand;
    std::shared_ptr<WaylandWindows> windows = WaylandWindows::make();
    Program program;
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
    ASSERT_TRUE(comesToBeThere(neighbour));
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
