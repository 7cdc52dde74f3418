// Drags by the toolkits that people use, and all the strokes that are none. bench/drag-strokes does a thousand of each.

#include "adapters/x11/DragStrokes.h"

#include <csignal>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

struct Toolkit {
    const char *name;
    const char *command;
    const char *title;
};

class ForeignDragsTest : public ::testing::TestWithParam<Toolkit> {
protected:
    void SetUp() override {
        ASSERT_TRUE(program.isShown());
        letPass(100ms);
    }
    void TearDown() override { opener.hand().release(1); }
    Opener::Result stroke(DragProgram::Field field, bool isOpeningExpected) {
        const QPoint from = program.middleOf(field);
        return opener.stroke(from, from + QPoint(150, -30), isOpeningExpected);
    }

    Opener opener;
    DragProgram program{QString::fromUtf8(GetParam().command), QString::fromUtf8(GetParam().title)};
};

INSTANTIATE_TEST_SUITE_P(By, ForeignDragsTest,
                         ::testing::Values(Toolkit{"Gtk3", DRAG_CLIENTS "/gtk3-dragger", "GTK 3 drags"},
                                           Toolkit{"Gtk4", DRAG_CLIENTS "/gtk4-dragger", "GTK 4 drags"},
                                           Toolkit{"Qt5", DRAG_CLIENTS "/qt5-dragger", "Qt 5 drags"},
                                           Toolkit{"Qt6", QT_DRAGGER, "Qt 6 drags"}),
                         [](const auto &each) { return std::string(each.param.name); });

TEST_P(ForeignDragsTest, filesOpenAndNothingElseDoes) {
    const auto drag = stroke(DragProgram::file, true);
    EXPECT_TRUE(drag.isOpened);
    EXPECT_EQ(drag.drags, 1);
    for (const auto field : {DragProgram::text, DragProgram::link, DragProgram::line, DragProgram::slider})
        EXPECT_FALSE(stroke(field, false).isOpened) << field;
    EXPECT_EQ(stroke(DragProgram::slider, false).drags, 0);
    EXPECT_EQ(stroke(DragProgram::file, true).drags, 1) << "again, after others";
    EXPECT_GE(program.takeBegun(), 4); // the strokes that drag did so
    const auto move = opener.stroke(program.titleBar(), program.titleBar() + QPoint(30, 0), false);
    EXPECT_FALSE(move.isOpened);
    EXPECT_EQ(move.drags, 0);
}

class EndedInADragTest : public ForeignDragsTest {};
INSTANTIATE_TEST_SUITE_P(By, EndedInADragTest,
                         ::testing::Values(Toolkit{"Gtk3", DRAG_CLIENTS "/gtk3-dragger", "GTK 3 drags"},
                                           Toolkit{"Qt6", QT_DRAGGER, "Qt 6 drags"}),
                         [](const auto &each) { return std::string(each.param.name); });

TEST_P(EndedInADragTest, aProgramThatIsStoppedOrKilledInItsDragLeavesNothingOpen) {
    auto &hand = opener.hand();
    const QPoint from = program.middleOf(DragProgram::file);
    // A program that was stopped gets done with its drag in its own time.
    const auto begin = [&] {
        hand.release(1);
        hand.movePointer(from.x(), from.y());
        letPass(20ms);
        hand.press(1);
        for (int step = 0; step < 40; ++step) {
            hand.movePointer(from.x() + 4 * step, from.y());
            letPass(2ms);
        }
        return eventually([&] { return opener.isOpen(); }, 300ms);
    };
    ASSERT_TRUE(eventually(begin));
    ::kill(static_cast<pid_t>(program.processId()), SIGSTOP);
    hand.movePointer(from.x(), from.y());
    hand.release(1);
    EXPECT_TRUE(eventually([&] { return !opener.isOpen() && !opener.pasteboard().isDragging(); }));
    ::kill(static_cast<pid_t>(program.processId()), SIGCONT);
    ASSERT_TRUE(eventually(begin));
    ::kill(static_cast<pid_t>(program.processId()), SIGKILL);
    EXPECT_TRUE(eventually([&] { return !opener.isOpen() && !opener.pasteboard().isDragging(); }));
    hand.release(1);
}

} // namespace
} // namespace tavrine::test
