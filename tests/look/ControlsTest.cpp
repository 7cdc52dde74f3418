#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/VirtualTime.h"
#include "look/Button.h"
#include "look/ChipStrip.h"
#include "look/FocusRing.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/MenuStyle.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/SearchField.h"
#include "look/SegmentedControl.h"
#include "look/Tile.h"
#include "look/Toggle.h"
#include "look/ToolTip.h"
#include "support/PaintedWords.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QPaintEvent>
#include <QTest>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

using namespace std::chrono_literals;

class ControlsTest : public testing::Test {
protected:
    VirtualTime time;
    FakeAppearance appearance;
    Look look{time, &appearance};
    QWidget window;
    QHBoxLayout layout{&window};

    template <class Widget>
    Widget *show(Widget *widget) {
        layout.addWidget(widget);
        window.resize(500, 200);
        window.show();
        window.activateWindow();
        QApplication::setActiveWindow(&window);
        return widget;
    }

    static QAccessible::Role roleOf(QWidget *widget) { return QAccessible::queryAccessibleInterface(widget)->role(); }
    static QString nameOf(QWidget *widget) {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
    }
};

TEST_F(ControlsTest, aButtonIsCalledByItsWords) {
    auto *button = show(new Button(QStringLiteral("Save"), ButtonStyle::prominent));
    EXPECT_EQ(roleOf(button), QAccessible::PushButton);
    EXPECT_EQ(nameOf(button), QStringLiteral("Save"));
}

TEST_F(ControlsTest, aScreenReaderPressesAControlAsAHandDoesInALaterTurn) {
    auto *toggle = show(new Toggle);
    auto *choices = show(new SegmentedControl({QStringLiteral("One"), QStringLiteral("Two")}));
    int chosen = -1;
    int clicks = 0;
    QObject::connect(toggle, &QAbstractButton::clicked, toggle, [&] { ++clicks; });
    QObject::connect(choices, &SegmentedControl::chosen, choices, [&](int index) { chosen = index; });
    for (Control *control : {static_cast<Control *>(toggle), choices->findChildren<Control *>().last()}) {
        auto *actions = QAccessible::queryAccessibleInterface(control)->actionInterface();
        ASSERT_TRUE(actions->actionNames().contains(QAccessibleActionInterface::toggleAction()));
        actions->doAction(QAccessibleActionInterface::toggleAction());
    }
    EXPECT_EQ(clicks, 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(clicks, 1);
    EXPECT_TRUE(toggle->isChecked());
    EXPECT_EQ(chosen, 1);
    toggle->setEnabled(false);
    EXPECT_FALSE(QAccessible::queryAccessibleInterface(toggle)->actionInterface()->actionNames().contains(
        QAccessibleActionInterface::toggleAction()));
}

TEST_F(ControlsTest, aSymbolAloneIsCalledByItsToolTip) {
    auto *button = show(new Button(QStringLiteral("trash"), QStringLiteral("Delete item")));
    EXPECT_EQ(roleOf(button), QAccessible::PushButton);
    EXPECT_EQ(nameOf(button), QStringLiteral("Delete item"));
    button->setToolTip(QStringLiteral("Remove pin"));
    EXPECT_EQ(nameOf(button), QStringLiteral("Remove pin"));
}

TEST_F(ControlsTest, aToggleIsACheckBoxCalledByItsRow) {
    auto *row = show(new SettingsRow(QStringLiteral("link"), QStringLiteral("Keep Awake")));
    auto *toggle = new Toggle;
    row->setTrailing(toggle);
    EXPECT_EQ(roleOf(toggle), QAccessible::CheckBox);
    EXPECT_EQ(nameOf(toggle), QStringLiteral("Keep Awake"));
    toggle->setChecked(true);
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(toggle)->state().checked);
}

TEST_F(ControlsTest, aClickOnARowPressesItsToggle) {
    auto *row = show(new SettingsRow(QStringLiteral("link"), QStringLiteral("Keep Awake")));
    auto *toggle = new Toggle;
    row->setTrailing(toggle);
    QTest::mouseClick(row, Qt::LeftButton, {}, QPoint(60, row->height() / 2));
    EXPECT_TRUE(toggle->isChecked());
    QTest::mouseClick(toggle, Qt::LeftButton);
    EXPECT_FALSE(toggle->isChecked());
}

TEST_F(ControlsTest, aChipIsARadioButton) {
    auto *strip = show(new ChipStrip({QStringLiteral("All"), QStringLiteral("Text")}));
    EXPECT_EQ(roleOf(strip->findChildren<Chip *>().first()), QAccessible::RadioButton);
}

TEST_F(ControlsTest, returnAndBlankPressTheFocusedControl) {
    auto *button = show(new Button(QStringLiteral("Save")));
    int clicks = 0;
    QObject::connect(button, &QAbstractButton::clicked, button, [&] { ++clicks; });
    QTest::keyClick(button, Qt::Key_Return);
    EXPECT_EQ(clicks, 1);
    QTest::keyClick(button, Qt::Key_Enter);
    EXPECT_EQ(clicks, 2);
    QTest::keyClick(button, Qt::Key_Space);
    EXPECT_EQ(clicks, 3);
}

TEST_F(ControlsTest, aClickTakesTheKeyboardFromNobody) {
    auto *field = show(new SearchField(QStringLiteral("Search")));
    auto *button = show(new Button(QStringLiteral("Save")));
    field->focus();
    ASSERT_TRUE(field->lineEdit()->hasFocus());
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_TRUE(field->lineEdit()->hasFocus());
}

TEST_F(ControlsTest, onlyTheKeyboardShowsTheFocusRing) {
    auto *button = show(new Button(QStringLiteral("Save")));
    button->setFocus(Qt::OtherFocusReason);
    EXPECT_FALSE(button->showsFocus());
    button->clearFocus();
    button->setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(button->showsFocus());
    const auto rings = window.findChildren<FocusRing *>();
    ASSERT_EQ(rings.size(), 1);
    EXPECT_TRUE(rings.first()->geometry().contains(button->geometry()));
    button->move(button->pos() + QPoint(20, 5));
    EXPECT_TRUE(rings.first()->geometry().contains(button->geometry()));
    button->clearFocus();
    EXPECT_FALSE(button->showsFocus());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(window.findChildren<FocusRing *>().isEmpty());
}

TEST_F(ControlsTest, theRingComesBackWithTheWindow) {
    auto *button = show(new Button(QStringLiteral("Save")));
    button->clearFocus();
    button->setFocus(Qt::TabFocusReason);
    const auto send = [&](QEvent::Type type) {
        QFocusEvent event(type, Qt::ActiveWindowFocusReason);
        QCoreApplication::sendEvent(button, &event);
    };
    send(QEvent::FocusOut);
    EXPECT_FALSE(button->showsFocus());
    send(QEvent::FocusIn);
    EXPECT_TRUE(button->showsFocus());
}

TEST_F(ControlsTest, theFocusRingIsSeen) {
    auto *button = show(new Button(QStringLiteral("Save")));
    button->clearFocus();
    const QImage before = window.grab().toImage();
    button->setFocus(Qt::TabFocusReason);
    const QImage after = window.grab().toImage();
    const QPoint edge(button->geometry().center().x(), button->geometry().top() - 2);
    EXPECT_NE(before.pixel(edge), after.pixel(edge));
}

TEST_F(ControlsTest, aDestroyedControlTakesItsRingAlong) {
    auto *button = show(new Button(QStringLiteral("Save")));
    button->setFocus(Qt::TabFocusReason);
    delete button;
    EXPECT_TRUE(window.findChildren<FocusRing *>().isEmpty());
}

TEST_F(ControlsTest, aToggleMovesAndRests) {
    auto *toggle = show(new Toggle);
    const QImage off = toggle->grab().toImage();
    toggle->click();
    time.advance(90ms);
    const QImage between = toggle->grab().toImage();
    time.advance(1s);
    const QImage on = toggle->grab().toImage();
    EXPECT_NE(off, between);
    EXPECT_NE(between, on);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(ControlsTest, exactlyOneChipIsChosen) {
    auto *strip = show(new ChipStrip({QStringLiteral("All"), QStringLiteral("Text"), QStringLiteral("Links")}));
    std::vector<int> chosen;
    QObject::connect(strip, &ChipStrip::chosen, strip, [&](int index) { chosen.push_back(index); });
    const auto chips = strip->findChildren<Chip *>();
    QTest::mouseClick(chips[2], Qt::LeftButton);
    EXPECT_EQ(strip->current(), 2);
    EXPECT_TRUE(chips[2]->isChecked());
    EXPECT_FALSE(chips[0]->isChecked());
    QTest::mouseClick(chips[2], Qt::LeftButton);
    EXPECT_EQ(chosen, (std::vector<int>{2}));
    EXPECT_TRUE(chips[2]->isChecked());
    strip->setCurrent(0);
    EXPECT_EQ(chosen.size(), 1U);
    strip->setCurrent(3);
    strip->setCurrent(-1);
    EXPECT_EQ(strip->current(), 0);
}

TEST_F(ControlsTest, aStripTooNarrowShowsTheChosenChip) {
    auto *strip = new ChipStrip({QStringLiteral("Everything"), QStringLiteral("My Saved"), QStringLiteral("Pictures"),
                                 QStringLiteral("Snippets")},
                                &window);
    strip->resize(120, 28);
    const auto chips = strip->findChildren<Chip *>();
    for (int i : {3, 1, 0, 2}) {
        strip->setCurrent(i);
        EXPECT_GE(chips[i]->geometry().left(), 0) << i;
        EXPECT_LE(chips[i]->geometry().right(), strip->width()) << i;
    }
}

TEST_F(ControlsTest, chipsStandCloserBeforeOneOfThemGoesOutOfSight) {
    auto *strip = new ChipStrip({QStringLiteral("Everything"), QStringLiteral("My Saved"), QStringLiteral("Pictures"),
                                 QStringLiteral("Snippets")},
                                &window);
    const auto chips = strip->findChildren<Chip *>();
    const int whole = strip->sizeHint().width();
    const int least = whole - 4 * 12;
    const auto right = [&](int width) {
        strip->resize(width, 28);
        strip->setCurrent(0); // places them, as a resize does where it is shown
        EXPECT_EQ(chips[0]->x(), 0) << width;
        for (int i = 1; i < 4; ++i)
            EXPECT_GE(chips[i]->x(), chips[i - 1]->geometry().right() + 1 + space::tiny) << width;
        return chips[3]->geometry().right() + 1;
    };
    EXPECT_EQ(right(whole), whole);
    EXPECT_LE(right(whole - 1), whole - 1);
    EXPECT_LE(right(least), least);
    EXPECT_GT(right(least - 1), least - 1);
    EXPECT_EQ(right(whole), whole);
}

TEST_F(ControlsTest, aStripTooNarrowShowsAPartOfTheNeighboursToo) {
    auto *strip = new ChipStrip({QStringLiteral("Everything"), QStringLiteral("My Saved"), QStringLiteral("Pictures"),
                                 QStringLiteral("Snippets")},
                                &window);
    strip->resize(160, 28);
    const auto chips = strip->findChildren<Chip *>();
    for (int i : {0, 1, 2, 3, 2, 1}) {
        strip->setCurrent(i);
        EXPECT_TRUE(i == 0 || chips[i - 1]->geometry().right() >= 20) << i;
        EXPECT_TRUE(i == 3 || chips[i + 1]->x() <= 160 - 20) << i;
    }
}

TEST_F(ControlsTest, aLineOfHintsWithoutRoomKeepsItsFirstOnes) {
    const auto hint = [](const char *words) { return KeyHint{{}, {}, QLatin1String(words)}; };
    auto *bar = new HintBar({hint("Navigate"), hint("Copy")}, {hint("Category"), hint("Details of it")}, &window);
    const auto wordsAt = [&](int width) {
        bar->resize(width, 40);
        test::WordsDevice device(bar->size());
        bar->render(&device, {}, {}, QWidget::DrawChildren);
        QStringList words = device.words();
        words.sort();
        return words.join(u' ');
    };
    EXPECT_EQ(wordsAt(600), QStringLiteral("Category Copy Details of it Navigate"));
    EXPECT_EQ(wordsAt(260), QStringLiteral("Category Copy Navigate"));
    EXPECT_EQ(wordsAt(160), QStringLiteral("Copy Navigate"));
    EXPECT_EQ(wordsAt(100), QStringLiteral("Navigate"));
}

TEST_F(ControlsTest, aSegmentIsChosenByAClick) {
    auto *segments = show(new SegmentedControl({QStringLiteral("Day"), QStringLiteral("Week")}));
    int chosen = -1;
    QObject::connect(segments, &SegmentedControl::chosen, segments, [&](int index) { chosen = index; });
    QTest::mouseClick(segments->findChildren<QAbstractButton *>()[1], Qt::LeftButton);
    EXPECT_EQ(chosen, 1);
    EXPECT_EQ(segments->current(), 1);
    time.advance(3s);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(ControlsTest, aSegmentThatIsPressedAgainSaysSoAndIsNoOtherChoice) {
    auto *segments = show(new SegmentedControl({QStringLiteral("Day"), QStringLiteral("Week")}));
    int chosen = 0;
    std::vector<int> pressed;
    QObject::connect(segments, &SegmentedControl::chosen, segments, [&] { ++chosen; });
    QObject::connect(segments, &SegmentedControl::pressed, segments, [&](int index) { pressed.push_back(index); });
    for (const int x : {segments->width() - 10, segments->width() - 10, 10})
        QTest::mouseClick(segments->childAt(x, 10), Qt::LeftButton);
    EXPECT_EQ(pressed, (std::vector{1, 1, 0}));
    EXPECT_EQ(chosen, 2);
}

/// What of a widget is painted.
class PaintedPart : public QObject {
public:
    QRegion region;

protected:
    bool eventFilter(QObject *, QEvent *event) override {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
};

TEST_F(ControlsTest, aFirstChoiceIsPaintedWithAllThatIsRoundIt) {
    auto *segments = show(new SegmentedControl({QStringLiteral("Day"), QStringLiteral("Week")}));
    segments->setCurrent(SegmentedControl::none);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QCoreApplication::processEvents();
    PaintedPart painted;
    segments->installEventFilter(&painted);
    segments->setCurrent(1);
    QCoreApplication::processEvents();
    EXPECT_EQ(painted.region.boundingRect(), segments->rect());
}

TEST_F(ControlsTest, segmentsAreAsWideAsEachOtherUntilTheWidestHasNoRoom) {
    auto *segments = show(new SegmentedControl({QStringLiteral("Day"), QStringLiteral("All the weeks")}));
    const auto widths = [&] {
        QList<int> found;
        for (const auto *each : segments->findChildren<QAbstractButton *>())
            found.append(each->width());
        return found;
    };
    segments->resize(400, segments->height());
    EXPECT_LE(std::abs(widths().first() - widths().last()), 1);
    segments->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    segments->resize(140, segments->height());
    EXPECT_GT(widths().last(), widths().first() + 20);
    EXPECT_LE(widths().first() + widths().last(), 140);
}

TEST_F(ControlsTest, theClearButtonIsThereWhileThereIsText) {
    auto *field = show(new SearchField(QStringLiteral("Search")));
    auto *clear = field->findChild<Button *>();
    EXPECT_FALSE(clear->isVisible());
    QTest::keyClicks(field->lineEdit(), QStringLiteral("abc"));
    EXPECT_TRUE(clear->isVisible());
    std::vector<QString> texts;
    QObject::connect(field, &SearchField::textChanged, field, [&](const QString &text) { texts.push_back(text); });
    QTest::mouseClick(clear, Qt::LeftButton);
    EXPECT_EQ(field->text(), QString());
    EXPECT_EQ(texts, std::vector<QString>{QString()});
    EXPECT_FALSE(clear->isVisible());
    EXPECT_TRUE(field->lineEdit()->hasFocus());
}

TEST_F(ControlsTest, theTextOfAFieldComesFromInputMethodsToo) {
    auto *field = show(new SearchField(QStringLiteral("Search")));
    field->focus();
    QInputMethodEvent event(QStringLiteral("に"), {});
    event.setCommitString(QStringLiteral("日本"));
    QCoreApplication::sendEvent(field->lineEdit(), &event);
    EXPECT_EQ(field->text(), QStringLiteral("日本"));
    EXPECT_TRUE(field->lineEdit()->testAttribute(Qt::WA_InputMethodEnabled));
}

TEST_F(ControlsTest, theFieldKeepsItsTextReadableWhenTheThemeChanges) {
    auto *field = show(new SearchField(QStringLiteral("Search")));
    appearance.set({.colorScheme = ColorScheme::dark});
    EXPECT_EQ(field->lineEdit()->palette().color(QPalette::Text), look.theme().text);
    EXPECT_TRUE(look.theme().isDark);
    appearance.set({.colorScheme = ColorScheme::light});
    EXPECT_EQ(field->lineEdit()->palette().color(QPalette::Text), lightTheme().text);
}

TEST_F(ControlsTest, aToolTipShowsUnderItsControlAndGoesWithThePointer) {
    auto *button = show(new Button(QStringLiteral("trash"), QStringLiteral("Delete item")));
    QHelpEvent event(QEvent::ToolTip, QPoint(5, 5), button->mapToGlobal(QPoint(5, 5)));
    QCoreApplication::sendEvent(button, &event);
    EXPECT_TRUE(ToolTip::isShown());
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(button, &leave);
    EXPECT_FALSE(ToolTip::isShown());
}

TEST_F(ControlsTest, aToolTipGoesWithItsControl) {
    auto *button = show(new Button(QStringLiteral("trash"), QStringLiteral("Delete item")));
    ToolTip::show(button, QStringLiteral("Delete item"), button->rect());
    ASSERT_TRUE(ToolTip::isShown());
    delete button;
    EXPECT_FALSE(ToolTip::isShown());
}

TEST(RowActions, standSideBySideWithinTheRow) {
    const QRectF row(10, 100, 400, 60);
    const auto rects = rowActionRects(row, 3);
    ASSERT_EQ(rects.size(), 3U);
    for (size_t i = 0; i < rects.size(); ++i) {
        EXPECT_TRUE(row.contains(rects[i]));
        EXPECT_NEAR(rects[i].center().y(), row.center().y(), 0.5);
        if (i > 0) {
            EXPECT_GT(rects[i].left(), rects[i - 1].right());
        }
    }
    EXPECT_TRUE(rowActionRects(row, 0).empty());
}

TEST_F(ControlsTest, aSeparatorPartsTheEntriesOfAMenu) {
    QMenu menu;
    look::dress(menu);
    QAction *above = menu.addAction(QStringLiteral("Above"));
    menu.addSeparator();
    QAction *below = menu.addAction(QStringLiteral("Below"));
    EXPECT_GE(menu.actionGeometry(below).top() - menu.actionGeometry(above).bottom(), 9);
}

TEST_F(ControlsTest, aFieldsContextMenuHasThePanelsLook) {
    appearance.set({.colorScheme = ColorScheme::dark});
    auto *field = show(new SearchField(QStringLiteral("Search")));
    field->setText(QStringLiteral("words"));
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5), field->mapToGlobal(QPoint(5, 5)));
    QCoreApplication::sendEvent(field->lineEdit(), &event);
    QMenu *menu = nullptr;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *candidate = qobject_cast<QMenu *>(widget); candidate && candidate->isVisible())
            menu = candidate;
    }
    ASSERT_NE(menu, nullptr);
    EXPECT_GE(menu->actions().size(), 6) << "undo and its fellows";
    const Theme &theme = look.theme();
    EXPECT_EQ(menu->grab().toImage().pixelColor(menu->width() / 2, 3), theme.elevated);
    QAction *selectAll = menu->actions().last();
    menu->setActiveAction(selectAll);
    const QRect item = menu->actionGeometry(selectAll);
    EXPECT_EQ(menu->grab().toImage().pixelColor(item.left() + 4, item.center().y()), theme.accent);
    menu->close();
    appearance.set({}); // the palette is the program's, and other tests begin with the desktop's
}

TEST_F(ControlsTest, aMenuItemShowsItsWordsWithoutMarksAndItsKeyApart) {
    QMenu menu;
    dress(menu);
    QAction *plain = menu.addAction(QStringLiteral("Save"));
    QAction *marked = menu.addAction(QStringLiteral("&Save"));
    QAction *keyed = menu.addAction(QStringLiteral("Save\tCtrl+S"));
    menu.popup(QPoint(0, 0));
    const QImage image = menu.grab().toImage();
    const auto left = [&](QAction *action) {
        QRect half = menu.actionGeometry(action);
        half.setWidth(half.width() / 2);
        return image.copy(half);
    };
    EXPECT_EQ(left(plain), left(marked));
    EXPECT_EQ(left(plain), left(keyed));
    const QRect whole = menu.actionGeometry(keyed);
    EXPECT_NE(image.copy(whole), image.copy(menu.actionGeometry(plain)));
}

} // namespace
} // namespace tavrine::look
