// The panels under a real keyboard, mouse and window manager.
#include "PanelViewTest.h"
#include "adapters/fake/FakeAlerts.h"
#include "clipboard/ClipboardSearchView.h"
#include "look/ChipStrip.h"
#include "look/ModalAlerts.h"
#include "support/Eventually.h"
#include "support/TestKeyboard.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QTimer>

namespace tavrine {
namespace {

using test::eventually;

namespace keycode {
constexpr int backspace = 22;
constexpr int p = 33;
constexpr int control = 37;
constexpr int left = 113;
constexpr int down = 116;
} // namespace keycode
constexpr int wheelDown = 5;

class PanelViewsOnX11Test : public PanelViewTest {
protected:
    void startPanel(int rows) {
        for (int i = 0; i < rows; ++i)
            save(str("row %1").arg(i), Seconds(i));
        start();
        auto *view = new ClipboardSearchView(
            {*manager, alerts, center, time}, [this] { ++dismissals; },
            [this](const ClipboardItem &item) { pasted.append(item.content); });
        window.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        show(view, str("Clipboard Search"), {680, 500});
        center.post(str("clipboardSearchPanelOpened"));
        time.runPending();
        ASSERT_TRUE(eventually([this] { return keyboard.focusedWindow() == window.winId(); }));
    }
    [[nodiscard]] QPoint onScreen(QPointF placeInList) { return list().mapToGlobal(placeInList.toPoint()); }

    testing::TestKeyboard keyboard;
    FakeAlerts alerts;
    int dismissals = 0;
};

TEST_F(PanelViewsOnX11Test, keysAreKnownByTheirPlaceAndSwallowed) {
    startPanel(4);
    keyboard.tap(keycode::down);
    EXPECT_TRUE(eventually([this] { return selected() == str("row 1"); }));
    keyboard.chord({keycode::control, keycode::p});
    EXPECT_TRUE(eventually([this] { return stored("row 1")->isPinned; }));
    keyboard.chord({testing::key::leftSuper, keycode::backspace});
    EXPECT_TRUE(eventually([this] { return !stored("row 1"); }));
    keyboard.tap(keycode::left);
    EXPECT_TRUE(eventually([this] { return window.findChild<look::ChipStrip *>()->current() == 5; }));
    keyboard.tap(keycode::p);
    EXPECT_TRUE(eventually([this] { return field().text() == str("p"); }));
    keyboard.tap(keycode::backspace);
    EXPECT_TRUE(eventually([this] { return field().text().isEmpty(); }));
    keyboard.tap(testing::key::escape);
    EXPECT_TRUE(eventually([this] { return dismissals == 1; }));
}

TEST_F(PanelViewsOnX11Test, aClickPastesOnceAndAButtonActs) {
    startPanel(4);
    const QPoint row = onScreen(list().rowRect(rowOf("row 2")).center());
    keyboard.click(1, row.x(), row.y());
    EXPECT_TRUE(eventually([this] { return !pasted.isEmpty(); }));
    const QPoint bin = onScreen(look::rowActionRects(list().rowRect(rowOf("row 1")), 3)[2].center());
    keyboard.click(1, bin.x(), bin.y());
    EXPECT_TRUE(eventually([this] { return !stored("row 1"); }));
    EXPECT_EQ(pasted, QStringList{str("row 2")});
}

TEST_F(PanelViewsOnX11Test, theWheelOverTheSearchFieldScrollsTheList) {
    startPanel(40);
    const QPoint place = field().mapToGlobal(field().rect().center());
    keyboard.click(wheelDown, place.x(), place.y());
    EXPECT_TRUE(eventually([this] { return list().offset() > 0; }));
}

TEST_F(PanelViewsOnX11Test, aModalQuestionGetsTheKeyboardAndThePanelGetsItBack) {
    startPanel(4);
    look::ModalAlerts questions;
    QTimer typing;
    int step = 0;
    QObject::connect(&typing, &QTimer::timeout, [&] { // once the question has the keyboard, and once it has the text
        auto *shown = qobject_cast<look::AlertWindow *>(QApplication::activeModalWidget());
        if (!shown || !shown->textEdit()->hasFocus() || keyboard.focusedWindow() != shown->winId())
            return;
        if (step == 0)
            keyboard.tap(testing::key::v);
        else if (shown->textEdit()->toPlainText() == str("v"))
            keyboard.chord({keycode::control, testing::key::returnKey});
        else
            return;
        ++step;
    });
    QTimer::singleShot(10'000, &typing, [] {
        if (auto *shown = qobject_cast<QDialog *>(QApplication::activeModalWidget()))
            shown->reject();
    });
    typing.start(10);
    const auto text =
        questions.runModalForText({str("Keep?"), str("It stays."), {str("Save"), str("Cancel")}}, 360, 120);
    EXPECT_EQ(text, str("v"));
    EXPECT_EQ(pasted, QStringList()) << "the keys were the question's";
    EXPECT_TRUE(eventually([this] { return keyboard.focusedWindow() == window.winId() && field().hasFocus(); }));
}

} // namespace
} // namespace tavrine
