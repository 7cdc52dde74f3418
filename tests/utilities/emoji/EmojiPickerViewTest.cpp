#include "utilities/emoji/EmojiPickerView.h"

#include "PickerTest.h"
#include "look/ChipStrip.h"
#include "look/EmptyState.h"
#include "look/Indicators.h"
#include "look/SearchField.h"
#include "look/VirtualList.h"

#include <QLineEdit>
#include <QTest>

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
    EXPECT_TRUE(view->findChild<look::EmptyState *>()->isVisible());
    EXPECT_FALSE(list()->isVisible());
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
