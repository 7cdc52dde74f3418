// What the keyboard reaches, and that it is seen there.
#include "look/SegmentedControl.h"
#include "shell/settings/MainAppView.h"
#include "shell/settings/SidebarView.h"
#include "shell/views/ProgramViews.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QPlainTextEdit>
#include <QTest>

namespace tavrine {
namespace {

class Reach : public ProgramViews {
protected:
    void SetUp() override { start(ColorScheme::light); }
    /// The settings on a page, as large as this, with the keyboard.
    QWidget &settings(SidebarItem page, const QSize &size) {
        quietly([this] { delegate->openSettings(); });
        auto &view = *qobject_cast<MainAppView *>(window(LargeWindows::Kind::settings));
        view.resize(size);
        view.show();
        view.activateWindow();
        view.setSelection(page);
        settle();
        return view;
    }
    static QStringList names(const QList<QWidget *> &widgets) {
        QStringList names;
        for (const QWidget *each : widgets) {
            const auto *button = qobject_cast<const QAbstractButton *>(each);
            names.append(button && !button->text().isEmpty() ? button->text() : each->accessibleName());
        }
        return names;
    }
    /// What has the keyboard after each Tab, until one comes again.
    static QList<QWidget *> round(QWidget &view) {
        QList<QWidget *> seen;
        for (int i = 0; i < 100; ++i) {
            // Where Tab belongs to what is written, it hands the keyboard on with Control.
            const bool isWriting = qobject_cast<QPlainTextEdit *>(QApplication::focusWidget()) != nullptr;
            QTest::keyClick(view.windowHandle(), Qt::Key_Tab, isWriting ? Qt::ControlModifier : Qt::NoModifier);
            QWidget *focused = QApplication::focusWidget();
            if (!focused || seen.contains(focused))
                break;
            seen.append(focused);
        }
        return seen;
    }
};

TEST_F(Reach, whatTheKeysChooseInTheBarOfThePagesIsInSight) {
    QWidget &view = settings(SidebarItem::home, {MainAppView::smallestSize.width(), 300});
    auto *bar = view.findChild<SidebarView *>();
    for (auto *row : bar->findChildren<QAbstractButton *>())
        if (row->isChecked())
            row->setFocus();
    for (const int key : {Qt::Key_End, Qt::Key_Up, Qt::Key_Up, Qt::Key_Home}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(key));
        settle();
        const QWidget *row = QApplication::focusWidget();
        const QRect shown(row->mapTo(bar, QPoint(0, 0)), row->size());
        EXPECT_TRUE(bar->rect().contains(shown)) << names({QApplication::focusWidget()}).first().toStdString();
    }
}

TEST_F(Reach, tabGoesRoundThroughEveryControlOfEveryPageOrTheGroupThatItIsIn) {
    defaults.set(text("cloudUploadEnabled"), true);
    for (const SidebarItemText &page : sidebarItemTexts) {
        QWidget &view = settings(page.item, MainAppView::firstSize);
        const QList<QWidget *> stops = round(view);
        QTest::keyClick(view.windowHandle(), Qt::Key_Backtab, Qt::ShiftModifier); // back over the seam
        EXPECT_EQ(QApplication::focusWidget(), stops.last()) << page.text;
        for (auto *button : view.findChildren<QAbstractButton *>()) {
            if (!button->isVisible() || !button->isEnabled())
                continue;
            const bool isReached = std::ranges::any_of(stops, [button](const QWidget *stop) {
                return stop == button || (button->autoExclusive() && stop->parentWidget() == button->parentWidget());
            });
            EXPECT_TRUE(isReached) << page.text << ": " << names({button}).first().toStdString();
            EXPECT_FALSE(names({button}).first().isEmpty()) << page.text;
        }
    }
}

TEST_F(Reach, theEditorOfTheScriptHandsTheKeyboardOnAndIsNotChangedByThat) {
    defaults.set(text("cloudUploadEnabled"), true);
    QWidget &view = settings(SidebarItem::cloudUpload, MainAppView::firstSize);
    auto *editor = view.findChild<QPlainTextEdit *>();
    const QString script = editor->toPlainText();
    const auto leavesBy = [&](Qt::Key key, Qt::KeyboardModifiers modifiers) {
        editor->setFocus();
        QTest::keyClick(view.windowHandle(), key, modifiers);
        return QApplication::focusWidget() != editor;
    };
    EXPECT_TRUE(leavesBy(Qt::Key_Escape, Qt::NoModifier));
    EXPECT_TRUE(leavesBy(Qt::Key_Tab, Qt::ControlModifier));
    EXPECT_TRUE(leavesBy(Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier));
    EXPECT_EQ(editor->toPlainText(), script);
    EXPECT_FALSE(leavesBy(Qt::Key_Tab, Qt::NoModifier)); // this is the text's
}

TEST_F(Reach, nothingThatTakesTheKeyboardIsWithoutAName) {
    const Visit visit = [](QWidget &view, const QString &name) {
        for (const QWidget *each : view.findChildren<QWidget *>())
            if (each->isVisible() && each->focusPolicy() != Qt::NoFocus && !each->focusProxy()) {
                const QAccessibleInterface *told = QAccessible::queryAccessibleInterface(const_cast<QWidget *>(each));
                EXPECT_FALSE(told && told->text(QAccessible::Name).isEmpty())
                    << name.toStdString() << ": " << each->metaObject()->className();
            }
    };
    visitSettings(visit);
    visitMenu(visit);
    visitPanels(visit);
    visitEditor(visit);
    visitWelcome(visit);
    visitCards(visit);
}

TEST_F(Reach, tabComesToWhatIsChosenOfChoicesSideBySide) {
    defaults.set(text("ClipboardExperience"), text("classic"));
    delegate->shell().experienceSettings().setSelectedExperience(ClipboardExperience::classic);
    QWidget &view = settings(SidebarItem::clipboard, MainAppView::firstSize);
    const QStringList stops = names(round(view));
    EXPECT_TRUE(stops.contains(text("Classic"))) << stops.join(u',').toStdString();
    EXPECT_FALSE(stops.contains(text("Search"))) << stops.join(u',').toStdString();
}

TEST_F(Reach, theArrowsGoOnFromTheChoiceToWhichTabCame) {
    QWidget window;
    look::SegmentedControl choices({text("One"), text("Two"), text("Three")}, &window);
    choices.resize(choices.sizeHint());
    choices.setCurrent(1);
    window.show();
    window.activateWindow();
    QTest::keyClick(window.windowHandle(), Qt::Key_Tab);
    EXPECT_EQ(names({QApplication::focusWidget()}).first(), text("Two"));
    QTest::keyClick(window.windowHandle(), Qt::Key_Right);
    EXPECT_EQ(choices.current(), 2);
    EXPECT_EQ(names({QApplication::focusWidget()}).first(), text("Three"));
    choices.setCurrent(0); // by somebody else
    QTest::keyClick(window.windowHandle(), Qt::Key_Tab);
    EXPECT_EQ(names({QApplication::focusWidget()}).first(), text("One"));
}

TEST_F(Reach, tabGoesThroughTheTilesOfTheLayoutAsTheyStand) {
    QWidget &view = settings(SidebarItem::layout, MainAppView::firstSize);
    const QList<QWidget *> stops = round(view);
    QList<QWidget *> tiles;
    for (QWidget *each : stops)
        if (each->parentWidget()->accessibleName() == text("PREVIEW"))
            tiles.append(each);
    ASSERT_EQ(tiles.size(), 7) << names(stops).join(u',').toStdString();
    for (qsizetype i = 1; i < tiles.size(); ++i) {
        const QPoint before = tiles.at(i - 1)->pos();
        const QPoint here = tiles.at(i)->pos();
        EXPECT_TRUE(here.y() > before.y() || (here.y() == before.y() && here.x() > before.x()))
            << names(tiles).join(u',').toStdString();
    }
}

} // namespace
} // namespace tavrine
