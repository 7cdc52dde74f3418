#include "utilities/emoji/EmojiPickerView.h"

#include "PickerTest.h"
#include "look/ChipStrip.h"
#include "look/EmptyState.h"
#include "look/Indicators.h"
#include "look/SearchField.h"
#include "look/VirtualList.h"
#include "support/Eventually.h"
#include "support/PaintedWords.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <QWheelEvent>

#include <cmath>

namespace tavrine {
namespace {

class EmojiPickerViewTest : public PickerTest {
protected:
    EmojiPickerViewTest() {
        storeRecents({});
        storePins(array({"👍"}));
        start();
    }
    void start() {
        view.reset();
        store = makeStore();
        view = std::make_unique<EmojiPickerView>(
            EmojiPickerModel::Ports{*store, center, time}, [this] { ++dismissals; },
            [this](const EmojiItem &item) { chosen.append(item.emoji); });
        view->setWindowTitle(QStringLiteral("Emoji Picker"));
        view->resize(view->sizeHint());
        view->show();
        QCoreApplication::processEvents();
    }

    /// With four hundred objects and nothing else.
    void startLong() {
        QByteArray rows;
        for (int i = 0; i < 400; ++i)
            rows += (i ? "," : "[") + QByteArray(R"({"emoji":"e)") + QByteArray::number(i) +
                    R"(","name":"n","category":"Objects"})";
        QFile file(tablePath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(rows + "]");
        file.close();
        storePins({});
        start();
    }
    [[nodiscard]] bool comesTo(double offset) {
        return test::eventually([&] { return list()->offset() == offset; });
    }
    static void wheelOver(QWidget &widget, int notches) {
        const QPointF place = widget.rect().center();
        QWheelEvent event(place, widget.mapToGlobal(place), {}, QPoint(0, -120 * notches), Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&event); // only what comes from outside goes on to the parents
        qApp->notify(&widget, &event);
    }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(field(), key, modifiers);
    }
    [[nodiscard]] QLineEdit *field() const { return view->findChild<QLineEdit *>(); }
    [[nodiscard]] look::VirtualList *list() const { return view->findChild<look::VirtualList *>(); }
    [[nodiscard]] look::ChipStrip *strip() const { return view->findChild<look::ChipStrip *>(); }

    std::unique_ptr<EmojiPickerStore> store;
    std::unique_ptr<EmojiPickerView> view;
    QStringList chosen;
    int dismissals = 0;
};

// The lines: "Pinned", its item, "Smileys & People", its three, "Objects", eight, two, "Flags", one.
TEST_F(EmojiPickerViewTest, movesReachTheGrid) {
    EXPECT_EQ(list()->count(), 9);
    EXPECT_EQ(list()->selectedRow(), 1);
    key(Qt::Key_Down); // the pinned one stands first among the sections, so the next is the first smiley
    EXPECT_EQ(list()->selectedRow(), 3);
    key(Qt::Key_Return);
    EXPECT_EQ(chosen, QStringList{text("😀")});
}

TEST_F(EmojiPickerViewTest, commandIsControlOrSuper) {
    key(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(strip()->current(), 1);
    key(Qt::Key_Left, Qt::MetaModifier);
    key(Qt::Key_Left, Qt::MetaModifier);
    EXPECT_EQ(strip()->current(), 8);
    key(Qt::Key_P, Qt::ControlModifier);
    EXPECT_EQ(store->pinnedEmojis(), (QStringList{text("👍"), text("🏁")}));
}

TEST_F(EmojiPickerViewTest, controlArrowsMoveByWordsInAFieldWithText) {
    field()->setText(QStringLiteral("object o"));
    key(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(field()->cursorPosition(), 7);
    EXPECT_EQ(strip()->current(), 0);
    key(Qt::Key_Left, Qt::MetaModifier);
    EXPECT_EQ(strip()->current(), 8);
    EXPECT_EQ(field()->cursorPosition(), 7);
}

TEST_F(EmojiPickerViewTest, typingInTheMiddleKeepsTheCaretAndTheUndo) {
    field()->setText(QStringLiteral("fae"));
    field()->setCursorPosition(2);
    QTest::keyClicks(field(), QStringLiteral("c"));
    EXPECT_EQ(field()->text(), QStringLiteral("face"));
    EXPECT_EQ(field()->cursorPosition(), 3);
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(field()->text(), QStringLiteral("fae"));
}

TEST_F(EmojiPickerViewTest, lettersTypedWhileAnotherControlHasTheFocusArriveInTheField) {
    auto *chip = view->findChildren<look::Chip *>().at(3);
    QTest::keyClicks(chip, QStringLiteral("face"));
    EXPECT_EQ(field()->text(), QStringLiteral("face"));
}

TEST_F(EmojiPickerViewTest, thePageKeysMoveByAPageAndKeepTheColumn) {
    startLong();
    key(Qt::Key_Right);
    const int page = list()->height() / int(list()->rowRect(1).height());
    key(Qt::Key_PageDown);
    EXPECT_EQ(list()->selectedRow(), 1 + page - 1);
    key(Qt::Key_PageDown);
    key(Qt::Key_PageUp);
    EXPECT_EQ(list()->selectedRow(), 1 + page - 1);
    key(Qt::Key_Return);
    EXPECT_EQ(chosen, QStringList{QStringLiteral("e%1").arg(8 * (page - 1) + 1)});
}

TEST_F(EmojiPickerViewTest, theGridScrollsToTheSelectionAndBackToItsFirstHeader) {
    startLong();
    for (int i = 0; i < 20; ++i)
        key(Qt::Key_Down);
    const auto distance = [this] {
        return std::abs(list()->rowRect(list()->selectedRow()).center().y() - list()->height() / 2.0);
    };
    EXPECT_EQ(list()->selectedRow(), 21);
    EXPECT_TRUE(test::eventually([&] { return distance() < 1; })) << distance();
    for (int i = 0; i < 20; ++i)
        key(Qt::Key_Up);
    EXPECT_TRUE(comesTo(0)) << list()->offset();
}

TEST_F(EmojiPickerViewTest, anOpeningBeginsAtTheTopAgain) {
    startLong();
    wheelOver(*list(), 20);
    ASSERT_GT(list()->offset(), 0);
    center.post(QStringLiteral("emojiPickerPanelOpened"));
    EXPECT_TRUE(comesTo(0)) << list()->offset();
}

TEST_F(EmojiPickerViewTest, theWheelScrollsTheGridWhereverInThePanelThePointerIs) {
    startLong();
    double before = list()->offset();
    for (QWidget *under : std::initializer_list<QWidget *>{field(), strip(), list()}) {
        wheelOver(*under, 2);
        EXPECT_GT(list()->offset(), before) << under->metaObject()->className();
        before = list()->offset();
    }
}

TEST_F(EmojiPickerViewTest, theChipsAreTheCategories) {
    QStringList words;
    const auto chips = strip()->findChildren<look::Chip *>();
    for (const look::Chip *chip : chips)
        words.append(chip->text());
    EXPECT_EQ(words.join(u'|'), text("All|Smileys|Nature|Food|Activity|Travel|Objects|Symbols|Flags"));
}

TEST_F(EmojiPickerViewTest, theFooterSaysWhatTheKeysDoAtPresent) {
    const auto *footer = view->findChild<look::HintBar *>();
    EXPECT_EQ(footer->accessibleName(), text("Navigate, Copy, Ctrl+← Ctrl+→ Category, Show Details ↵ | Actions Ctrl"));
    field()->setText(text("face"));
    EXPECT_EQ(footer->accessibleName(),
              text("Navigate, Copy, Super+← Super+→ Category, Show Details ↵ | Actions Ctrl"));
}

TEST_F(EmojiPickerViewTest, escapeDismisses) {
    key(Qt::Key_Escape);
    EXPECT_EQ(dismissals, 1);
}

TEST_F(EmojiPickerViewTest, underAnotherTitleKeysDoNothing) {
    view->setWindowTitle(QStringLiteral("Emoji Pickers"));
    key(Qt::Key_Escape);
    key(Qt::Key_Return);
    EXPECT_EQ(dismissals, 0);
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(EmojiPickerViewTest, aClickChoosesTheEmojiUnderIt) {
    const QRectF line = list()->rowRect(3);
    QTest::mouseClick(list(), Qt::LeftButton, {},
                      QPointF(line.left() + line.width() * 2.5 / 8, line.center().y()).toPoint());
    EXPECT_EQ(chosen, QStringList{text("😬")});
}

TEST_F(EmojiPickerViewTest, aClickBesideTheLastOfALineChoosesNothing) {
    const QRectF line = list()->rowRect(3);
    QTest::mouseClick(list(), Qt::LeftButton, {},
                      QPointF(line.left() + line.width() * 3.5 / 8, line.center().y()).toPoint());
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(EmojiPickerViewTest, typingSearchesAndNothingFoundSaysSo) {
    QTest::keyClicks(field(), QStringLiteral("zzz"));
    auto *state = view->findChild<look::EmptyState *>();
    EXPECT_TRUE(state->isVisible());
    EXPECT_FALSE(list()->isVisible());
    test::WordsDevice device(state->size());
    state->render(&device);
    EXPECT_EQ(device.words(), QStringList{text("No emojis found")});
    const auto looks = [&](const char *symbol) {
        look::EmptyState other(text(symbol), text("No emojis found"), {}, state->parentWidget());
        other.setGeometry(state->geometry());
        return other.grab().toImage();
    };
    EXPECT_EQ(state->grab().toImage(), looks("magnifyingglass"));
    EXPECT_NE(looks("magnifyingglass"), looks("wifi.slash"));
    field()->setText(QStringLiteral("thumb"));
    EXPECT_TRUE(list()->isVisible());
    key(Qt::Key_Return);
    EXPECT_EQ(chosen, QStringList{text("👍")});
}

TEST_F(EmojiPickerViewTest, anOpeningBeginsAnew) {
    key(Qt::Key_Right, Qt::ControlModifier);
    field()->setText(QStringLiteral("face"));
    center.post(QStringLiteral("emojiPickerPanelOpened"));
    EXPECT_EQ(field()->text(), QString());
    EXPECT_EQ(strip()->current(), 0);
    EXPECT_EQ(list()->selectedRow(), 1);
    EXPECT_EQ(list()->offset(), 0);
}

} // namespace
} // namespace tavrine
