#include "capture/editor/ToolButton.h"

#include "CanvasFixture.h"
#include "capture/editor/AnnotationThicknessPanel.h"
#include "capture/editor/DrawingTool.h"
#include "capture/editor/ToolButtonRule.h"
#include "look/Symbols.h"

#include <QAccessible>
#include <QApplication>
#include <QHBoxLayout>
#include <QTest>

namespace tavrine {
namespace {

TEST(ToolButtonRule, anotherToolIsSelectedAndOffersItsSizes) {
    EXPECT_EQ(pressedTool(DrawingTool::arrow, DrawingTool::pen, false, false), (ToolPress{DrawingTool::arrow, true}));
    EXPECT_EQ(pressedTool(DrawingTool::text, DrawingTool::eraser, false, false), (ToolPress{DrawingTool::text, true}));
}

TEST(ToolButtonRule, theSelectedToolOpensAndClosesItsSizes) {
    EXPECT_EQ(pressedTool(DrawingTool::pen, DrawingTool::pen, false, false), (ToolPress{DrawingTool::pen, true}));
    EXPECT_EQ(pressedTool(DrawingTool::pen, DrawingTool::pen, true, false), (ToolPress{DrawingTool::pen, false}));
}

TEST(ToolButtonRule, theEraserHasNoSizes) {
    EXPECT_EQ(pressedTool(DrawingTool::eraser, DrawingTool::pen, false, false),
              (ToolPress{DrawingTool::eraser, false}));
    EXPECT_EQ(pressedTool(DrawingTool::eraser, DrawingTool::eraser, false, false),
              (ToolPress{DrawingTool::eraser, false}));
}

TEST(ToolButtonRule, aDisabledButtonChangesNothing) {
    EXPECT_EQ(pressedTool(DrawingTool::arrow, DrawingTool::pen, false, true), (ToolPress{DrawingTool::pen, false}));
    EXPECT_EQ(pressedTool(DrawingTool::pen, DrawingTool::pen, false, true), (ToolPress{DrawingTool::pen, false}));
}

class ToolButtonTest : public testing::Test {
protected:
    ToolButtonTest() {
        auto *row = new QHBoxLayout(&window);
        for (const DrawingToolEntry &entry : drawingTools) {
            auto *button =
                new ToolButton(entry.tool, {[this] { return tool; }, [this](DrawingTool now) { tool = now; }},
                               {[this] { return thickness; }, [this](AnnotationThickness now) { thickness = now; }});
            row->addWidget(button);
            buttons.push_back(button);
        }
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    ToolButton *of(DrawingTool which) {
        for (ToolButton *button : buttons) {
            if (button->tool() == which)
                return button;
        }
        return nullptr;
    }
    AnnotationThicknessPanel *panel() {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            auto *found = qobject_cast<AnnotationThicknessPanel *>(widget);
            if (found && found->isVisible())
                return found;
        }
        return nullptr;
    }
    QAbstractButton *choice(const char *label) {
        for (auto *button : panel()->findChildren<QAbstractButton *>()) {
            if (button->text() == str(label))
                return button;
        }
        return nullptr;
    }

    DrawingTool tool = DrawingTool::pen;
    AnnotationThickness thickness = AnnotationThickness::medium;
    QWidget window;
    std::vector<ToolButton *> buttons;
};

TEST_F(ToolButtonTest, isCalledByItsLabelAndHasASymbol) {
    for (ToolButton *button : buttons) {
        EXPECT_EQ(QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name), labelOf(button->tool()));
        EXPECT_TRUE(look::hasSymbol(iconOf(button->tool()))) << iconOf(button->tool()).toStdString();
    }
}

TEST_F(ToolButtonTest, aPressSelectsTheToolAndOffersThreeThicknessesWithTheChosenOneMarked) {
    of(DrawingTool::arrow)->click();
    EXPECT_EQ(tool, DrawingTool::arrow);
    EXPECT_TRUE(of(DrawingTool::arrow)->isChecked());
    ASSERT_TRUE(panel());
    QStringList labels;
    for (auto *button : panel()->findChildren<QAbstractButton *>()) {
        labels.append(button->text());
        EXPECT_EQ(button->isChecked(), button->text() == str("Medium"));
    }
    EXPECT_EQ(labels, (QStringList{str("Thin"), str("Medium"), str("Thick")}));
    choice("Thick")->click();
    EXPECT_EQ(thickness, AnnotationThickness::thick);
    EXPECT_FALSE(panel());
}

TEST_F(ToolButtonTest, aSecondPressClosesTheSizes) {
    of(DrawingTool::pen)->click();
    EXPECT_TRUE(of(DrawingTool::pen)->showsSizePicker());
    of(DrawingTool::pen)->click();
    EXPECT_FALSE(of(DrawingTool::pen)->showsSizePicker());
    EXPECT_EQ(tool, DrawingTool::pen);
    EXPECT_TRUE(of(DrawingTool::pen)->isChecked());
}

TEST_F(ToolButtonTest, theEraserOffersNone) {
    of(DrawingTool::eraser)->click();
    EXPECT_EQ(tool, DrawingTool::eraser);
    of(DrawingTool::eraser)->click();
    EXPECT_FALSE(panel());
}

TEST_F(ToolButtonTest, aDisabledButtonIsNotPressed) {
    of(DrawingTool::text)->setEnabled(false);
    QTest::mouseClick(of(DrawingTool::text), Qt::LeftButton);
    EXPECT_EQ(tool, DrawingTool::pen);
    EXPECT_FALSE(panel());
}

TEST_F(ToolButtonTest, showsWhatWasSelectedElsewhere) {
    tool = DrawingTool::oval;
    for (ToolButton *button : buttons)
        button->refresh();
    EXPECT_TRUE(of(DrawingTool::oval)->isChecked());
    EXPECT_FALSE(of(DrawingTool::pen)->isChecked());
}

TEST_F(ToolButtonTest, theArrowKeysGoThroughTheThicknessesAndReturnChooses) {
    of(DrawingTool::pen)->click();
    ASSERT_TRUE(panel());
    EXPECT_TRUE(choice("Medium")->hasFocus());
    QTest::keyClick(choice("Medium"), Qt::Key_Down);
    EXPECT_TRUE(choice("Thick")->hasFocus());
    QTest::keyClick(choice("Thick"), Qt::Key_Return);
    EXPECT_EQ(thickness, AnnotationThickness::thick);
    EXPECT_FALSE(panel());
}

TEST_F(ToolButtonTest, escapeClosesTheSizesAndChangesNothing) {
    of(DrawingTool::pen)->click();
    QTest::keyClick(choice("Medium"), Qt::Key_Escape);
    EXPECT_FALSE(panel());
    EXPECT_EQ(thickness, AnnotationThickness::medium);
}

TEST_F(ToolButtonTest, aPressOnTheButtonWhileItsSizesAreOpenOnlyClosesThem) {
    ToolButton *pen = of(DrawingTool::pen);
    pen->click();
    ASSERT_TRUE(panel());
    // The window system gives the press to the popover.
    AnnotationThicknessPanel *open = panel();
    const QPoint onButton = pen->mapToGlobal(pen->rect().center());
    QTest::mouseClick(open, Qt::LeftButton, {}, open->mapFromGlobal(onButton));
    QCoreApplication::processEvents();
    EXPECT_FALSE(panel());
}

} // namespace
} // namespace tavrine
