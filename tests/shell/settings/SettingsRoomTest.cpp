// Every page of the settings where there is little room: the smallest window, and words half as long again, as other
// languages have them.

#include "look/Control.h"
#include "look/Text.h"
#include "look/Tile.h"
#include "shell/ShellTest.h"
#include "shell/settings/MainAppView.h"
#include "shell/settings/SidebarView.h"
#include "support/PaintedWords.h"

#include <QApplication>

namespace tavrine {
namespace {

using test::WordsDevice;

class SettingsRoom : public ShellTest {
protected:
    void SetUp() override {
        launch();
        desktop.access().setAccessibilityTrusted(false); // so that Home asks for it
        delegate->openSettings();
        view().resize(MainAppView::smallestSize);
        view().show();
    }
    void TearDown() override { QApplication::setFont(m_before); }
    MainAppView &view() { return *qobject_cast<MainAppView *>(window(LargeWindows::Kind::settings)); }
    void lengthenWords(int percent) {
        QFont longer = m_before;
        longer.setStretch(percent);
        QApplication::setFont(longer);
    }
    void go(SidebarItem item) {
        view().setSelection(std::nullopt);
        view().setSelection(item);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (int round = 0; round < 3; ++round) {
            QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
            quietly([this] { time.advance(1s); });
        }
    }
    /// What is painted of the whole page, as if the window were as high as it.
    static QStringList wordsOf(QWidget &page) {
        page.resize(page.width(), 4000);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        WordsDevice device(page.size());
        page.render(&device, {}, {}, QWidget::DrawChildren);
        return device.words();
    }
    /// What the widgets of the page are called and say in full.
    static QString everythingOf(const QWidget &page) {
        QString all;
        for (const auto *widget : page.findChildren<QWidget *>()) {
            const auto *button = qobject_cast<const QAbstractButton *>(widget);
            all += widget->accessibleName() + u'\n' + widget->accessibleDescription() + u'\n' +
                   (button ? button->text() : QString()) + u'\n';
        }
        return all;
    }
    void expectRoom(SidebarItem item) {
        const char *const name = textOf(item).text;
        go(item);
        QWidget &page = *view().page();
        const QStringList words = wordsOf(page);
        EXPECT_GT(words.size(), 3) << name;
        const QString all = everythingOf(page);
        for (const QString &each : words) {
            EXPECT_TRUE(!each.contains(QChar(0x2026)) || all.contains(each)) << name << ": " << each.toStdString();
        }
        for (auto *control : page.findChildren<look::Control *>()) {
            if (!control->isVisibleTo(&page))
                continue;
            const QString title = control->text() + u'/' + control->accessibleName();
            const QRect inPage(control->mapTo(&page, QPoint()), control->size());
            EXPECT_GE(inPage.left(), 0) << name << ": " << title.toStdString();
            EXPECT_LE(inPage.right(), page.width()) << name << ": " << title.toStdString();
            for (const auto *other :
                 control->parentWidget()->findChildren<look::Control *>(QString(), Qt::FindDirectChildrenOnly))
                EXPECT_TRUE(other == control || !other->isVisibleTo(&page) ||
                            !other->geometry().intersects(control->geometry()))
                    << name << ": " << title.toStdString();
        }
        for (const auto *wrapping : page.findChildren<QWidget *>()) {
            if (!wrapping->isVisibleTo(&page) || !wrapping->hasHeightForWidth())
                continue;
            EXPECT_GE(wrapping->height(), wrapping->heightForWidth(wrapping->width()))
                << name << ": " << wrapping->metaObject()->className() << ' '
                << wrapping->accessibleName().toStdString();
        }
    }

private:
    QFont m_before = QApplication::font();
};

TEST_F(SettingsRoom, inTheSmallestWindowNothingIsCutOnAnyPage) {
    for (const SidebarItem item : SidebarView::order())
        expectRoom(item);
}

TEST_F(SettingsRoom, wordsHalfAsLongAgainAreCutOnNoPage) {
    lengthenWords(150);
    ASSERT_GT(look::lineWidth(text("Screenshot"), look::TextRole::body), 80) << "they are not longer";
    defaults.set(text("cloudUploadEnabled"), true);
    for (const SidebarItem item : SidebarView::order())
        expectRoom(item);
}

TEST_F(SettingsRoom, inALargeWindowNoRowIsHigherThanItsWords) {
    view().resize(1400, 1200);
    for (const SidebarItem item : SidebarView::order()) {
        go(item);
        for (const auto *row : view().page()->findChildren<look::SettingsRow *>()) {
            if (row->isVisibleTo(view().page())) {
                EXPECT_EQ(row->height(), row->heightForWidth(row->width())) << textOf(item).text;
            }
        }
    }
}

TEST_F(SettingsRoom, theBarOfThePagesHasRoomForLongWords) {
    lengthenWords(150);
    view().setSelection(std::nullopt);
    auto *bar = view().findChild<SidebarView *>();
    WordsDevice device(bar->size());
    bar->render(&device, {}, {}, QWidget::DrawChildren);
    for (const QString &each : device.words())
        EXPECT_FALSE(each.contains(QChar(0x2026))) << each.toStdString();
}

} // namespace
} // namespace tavrine
