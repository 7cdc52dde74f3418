// Every view on the lowest screen that people have, 1024 by 600, where a person wants twice the text: 512 by 300
// points, of which the shelf's band takes 24.
#include "base/Catalogue.h"
#include "base/DesktopWords.h"
#include "look/Control.h"
#include "look/ScrollArea.h"
#include "shell/settings/LayoutPreviewView.h"
#include "shell/settings/MainAppView.h"
#include "shell/settings/SidebarView.h"
#include "shell/views/ProgramViews.h"
#include "support/PaintedWords.h"

#include <QFile>
#include <QTest>

namespace tavrine {
namespace {

constexpr QSize room(512, 276);

class LowScreen : public ProgramViews {
protected:
    ~LowScreen() override { setTranslation(nullptr); }

    void speakGerman() {
        QFile file(QStringLiteral(TAVRINE_TEXTS "/de.txt"));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        setTranslation(Catalogue::parse(file.readAll(), nullptr));
    }
    /// Cut by nothing round it but what scrolls, and that to above and below only.
    static bool isWholeIn(const QWidget &widget, const QWidget &view) {
        bool scrolls = false;
        for (const QWidget *each = &widget; each != &view; each = each->parentWidget()) {
            const QWidget *around = each->parentWidget();
            const QRect place(widget.mapTo(around, QPoint()), widget.size());
            scrolls = scrolls || qobject_cast<const look::ScrollArea *>(around);
            if (place.left() < 0 || place.right() >= around->width())
                return false;
            if (!scrolls && (place.top() < 0 || place.bottom() >= around->height()))
                return false;
        }
        return true;
    }
    /// What the widgets are called and say in full.
    static QString everythingOf(const QWidget &view) {
        QString all;
        for (const auto *widget : view.findChildren<QWidget *>()) {
            const auto *button = qobject_cast<const QAbstractButton *>(widget);
            all += widget->accessibleName() + u'\n' + widget->accessibleDescription() + u'\n' +
                   inDesktopWords(widget->toolTip()) + u'\n' + (button ? button->text() : QString()) + u'\n';
        }
        return all;
    }
    /// As the desktop gives them, whatever they would like.
    void fit(QWidget &view) {
        view.setMinimumSize(0, 0);
        view.resize(view.size().boundedTo(room));
        settle();
    }
    static void expectInSight(QWidget &view, const QString &name) {
        EXPECT_LE(view.width(), room.width()) << name.toStdString();
        EXPECT_LE(view.height(), room.height()) << name.toStdString();
        for (const auto *control : view.findChildren<look::Control *>()) {
            if (!control->isVisibleTo(&view))
                continue;
            EXPECT_TRUE(isWholeIn(*control, view)) << name.toStdString() << ": " << control->text().toStdString() << '/'
                                                   << control->accessibleName().toStdString();
        }
        test::WordsDevice device(view.size());
        view.render(&device, {}, {}, QWidget::DrawChildren);
        EXPECT_FALSE(device.painted().empty()) << name.toStdString();
        const QString told = everythingOf(view);
        for (const QString &each : device.words())
            EXPECT_TRUE(!each.endsWith(QChar(0x2026)) || told.contains(each))
                << name.toStdString() << ": " << each.toStdString();
        for (const test::PaintedWord &each : device.painted())
            EXPECT_TRUE(each.isWhole || each.place.height() <= 1)
                << name.toStdString() << ": " << each.text.toStdString();
    }
    Visit look() {
        return [this](QWidget &view, const QString &name) {
            fit(view);
            expectInSight(view, name);
        };
    }
    void lookAtAll() {
        start(ColorScheme::dark);
        visitSettings(look());
        visitMenu(look());
        visitPanels(look());
        visitEditor(look());
        visitWelcome([this](QWidget &view, const QString &name) {
            for (int page = 1; page <= 3; ++page) {
                look()(view, name + QString::number(page));
                if (page < 3)
                    QTest::keyClick(&view, Qt::Key_Return);
                settle();
            }
        });
        visitCards(look());
        visitCapture(look());
        visitRecording(look());
    }
};

TEST_F(LowScreen, nothingIsCutWhereItCannotBeScrolledTo) {
    lookAtAll();
}

TEST_F(LowScreen, norInGerman) {
    speakGerman();
    lookAtAll();
}

/// On every screen: the menu is as wide everywhere.
TEST_F(LowScreen, inGermanATitleOfTheMenuEndsBeforeItsKeys) {
    speakGerman();
    start(ColorScheme::light);
    visitMenu([](QWidget &view, const QString &) {
        test::WordsDevice device(view.size());
        view.render(&device, {}, {}, QWidget::DrawChildren);
        const auto &words = device.painted();
        for (auto one = words.begin(); one != words.end(); ++one)
            for (auto other = one + 1; other != words.end(); ++other)
                EXPECT_FALSE(one->place.adjusted(0, 4, 2, -4).intersects(other->place.adjusted(0, 4, 0, -4)))
                    << one->text.toStdString() << " / " << other->text.toStdString();
    });
}

class NarrowSettings : public LowScreen {
protected:
    void SetUp() override {
        start(ColorScheme::light);
        quietly([this] { delegate->openSettings(); });
        view().setMinimumSize(0, 0);
    }
    MainAppView &view() { return *qobject_cast<MainAppView *>(window(LargeWindows::Kind::settings)); }
    void widen(int width) {
        view().resize(width, 276);
        view().show();
        settle();
    }
};

TEST_F(NarrowSettings, thePagesAreShownBySymbolsAloneAndCalledByToolTips) {
    auto *bar = view().findChild<SidebarView *>();
    const auto tips = [bar] {
        QStringList found;
        for (const auto *row : bar->findChildren<QAbstractButton *>())
            found << row->toolTip();
        return found;
    };
    const auto words = [bar] {
        test::WordsDevice device(bar->size());
        bar->render(&device, {}, {}, QWidget::DrawChildren);
        return device.words().size();
    };
    widen(620);
    EXPECT_EQ(tips().join(QString()), QString());
    EXPECT_GT(words(), 6);
    widen(619);
    EXPECT_FALSE(tips().contains(QString()));
    EXPECT_TRUE(tips().contains(text("Screen Record")));
    EXPECT_EQ(words(), 0);
    EXPECT_EQ(view().page()->geometry(), QRect(bar->width(), 0, 619 - bar->width(), 276));
    widen(620);
    EXPECT_EQ(tips().join(QString()), QString());
    EXPECT_GT(words(), 6);
}

/// At three times the text.
TEST_F(NarrowSettings, thePreviewOfTheLayoutIsAsNarrowAsItsPage) {
    view().setSelection(SidebarItem::layout);
    widen(340);
    auto *preview = view().findChild<LayoutPreviewView *>();
    const auto tiles = preview->findChildren<look::Control *>();
    ASSERT_EQ(tiles.size(), 7);
    for (const auto *tile : tiles)
        EXPECT_TRUE(preview->rect().adjusted(4, 0, -4, 0).contains(tile->geometry())) << tile->text().toStdString();
    widen(900);
    for (const auto *tile : tiles)
        EXPECT_LE(tile->width(), 290) << "it is as wide as the menu";
}

} // namespace
} // namespace tavrine
