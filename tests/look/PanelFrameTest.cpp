#include "look/PanelFrame.h"

#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/VirtualTime.h"
#include "look/Button.h"
#include "look/Look.h"
#include "look/ScrollArea.h"
#include "look/Shadow.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

using namespace std::chrono_literals;

class PanelFrameTest : public testing::Test {
protected:
    VirtualTime time;
    FakeAppearance appearance;
    Look look{time, &appearance};
};

TEST_F(PanelFrameTest, isThePanelAloneWithMaskedCornersWithoutACompositor) {
    PanelFrame panel({680, 500});
    panel.show();
    EXPECT_EQ(panel.size(), QSize(680, 500));
    EXPECT_FALSE(panel.mask().contains(QPoint(1, 1)));
    EXPECT_FALSE(panel.mask().contains(QPoint(678, 498)));
    EXPECT_TRUE(panel.mask().contains(QPoint(18, 18)));
    EXPECT_TRUE(panel.mask().contains(QPoint(340, 0)));
}

TEST_F(PanelFrameTest, hasRoomForItsShadowUnderACompositor) {
    look.setCompositing(true);
    PanelFrame panel({680, 500});
    panel.show();
    EXPECT_EQ(panel.panelGeometry().size(), QSize(680, 500));
    EXPECT_EQ(panel.size(), QSize(680, 500).grownBy(shadowMargins));
    EXPECT_TRUE(panel.mask().isEmpty());
    const QImage picture = panel.grab().toImage();
    const QPoint below(panel.width() / 2, panel.height() - shadowMargins.bottom() + 4);
    EXPECT_GT(qAlpha(picture.pixel(below)), 10);
    EXPECT_EQ(picture.pixelColor(panel.rect().center()), look.theme().surface);
}

TEST_F(PanelFrameTest, theShadowEndsBeforeTheWindowDoes) {
    look.setCompositing(true);
    PanelFrame panel({320, 450});
    const QImage picture = panel.grab().toImage();
    for (int x = 0; x < picture.width(); ++x) {
        EXPECT_LE(qAlpha(picture.pixel(x, 0)), 8);
        EXPECT_LE(qAlpha(picture.pixel(x, picture.height() - 1)), 8);
    }
    for (int y = 0; y < picture.height(); ++y) {
        EXPECT_LE(qAlpha(picture.pixel(0, y)), 8);
        EXPECT_LE(qAlpha(picture.pixel(picture.width() - 1, y)), 8);
    }
}

TEST_F(PanelFrameTest, keepsThePanelsPlaceWhenTheCompositorComesAndGoes) {
    PanelFrame panel({320, 450});
    panel.movePanel({200, 150});
    panel.show();
    look.setCompositing(true);
    EXPECT_EQ(panel.panelGeometry(), QRect(200, 150, 320, 450));
    EXPECT_TRUE(panel.isVisible());
    EXPECT_TRUE(panel.testAttribute(Qt::WA_TranslucentBackground));
    look.setCompositing(false);
    EXPECT_EQ(panel.panelGeometry(), QRect(200, 150, 320, 450));
    EXPECT_FALSE(panel.testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_FALSE(panel.mask().isEmpty());
}

TEST_F(PanelFrameTest, givesItsContentThePanelsRectangle) {
    look.setCompositing(true);
    PanelFrame panel({320, 450});
    auto *content = new QWidget;
    panel.setContent(content);
    panel.show();
    EXPECT_EQ(content->geometry(), panel.rect().marginsRemoved(shadowMargins));
    QPointer<QWidget> old = content;
    panel.setContent(nullptr);
    EXPECT_TRUE(old.isNull());
}

using LookTest = PanelFrameTest;

TEST_F(LookTest, followsTheDesktopsScheme) {
    int changes = 0;
    QObject::connect(&look, &Look::changed, &look, [&] { ++changes; });
    appearance.set({.colorScheme = ColorScheme::dark});
    EXPECT_TRUE(look.theme().isDark);
    EXPECT_EQ(changes, 1);
    appearance.set({.colorScheme = ColorScheme::light});
    EXPECT_FALSE(look.theme().isDark);
    EXPECT_EQ(changes, 2);
}

TEST_F(LookTest, followsThePaletteWhereTheDesktopSaysNothing) {
    QApplication::setPalette(QPalette(QColor(0x22, 0x22, 0x22)));
    QCoreApplication::processEvents();
    EXPECT_TRUE(look.theme().isDark);
    QApplication::setPalette(QPalette(QColor(0xEE, 0xEE, 0xEE)));
    QCoreApplication::processEvents();
    EXPECT_FALSE(look.theme().isDark);
    QApplication::setPalette(QPalette());
}

TEST_F(LookTest, takesTheDesktopsAccent) {
    appearance.set({.colorScheme = ColorScheme::dark, .accent = QColor(0x2E, 0x7D, 0x32)});
    EXPECT_EQ(look.theme(), darkTheme(QColor(0x2E, 0x7D, 0x32)));
    appearance.set({.colorScheme = ColorScheme::dark});
    EXPECT_EQ(look.theme(), darkTheme(defaultAccent));
}

TEST_F(LookTest, aWidgetMayHaveAThemeOfItsOwn) {
    appearance.set({.colorScheme = ColorScheme::light});
    QWidget window;
    auto *inside = new QWidget(&window);
    QWidget other;
    look.setTheme(&window, darkTheme());
    EXPECT_TRUE(themeOf(inside).isDark);
    EXPECT_FALSE(themeOf(&other).isDark);
}

TEST_F(LookTest, theToolkitsDialogsAreOfTheSameTheme) {
    appearance.set({.colorScheme = ColorScheme::dark});
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), darkTheme().surface);
    appearance.set({});
    EXPECT_NE(QApplication::palette().color(QPalette::Window), darkTheme().surface);
}

TEST_F(LookTest, aScrollPaneMovesItsContentByItsOffset) {
    auto *content = new QWidget;
    content->setMinimumHeight(1000);
    auto *box = new QVBoxLayout(content);
    auto *tall = new QWidget;
    tall->setFixedSize(100, 980);
    box->addWidget(tall);
    ScrollPane pane(content);
    pane.resize(200, 300);
    pane.show();
    QCoreApplication::processEvents();
    EXPECT_GT(pane.maximumOffset(), 600);
    pane.scrollTo(100, false);
    EXPECT_EQ(content->y(), -100);
    pane.scrollTo(1e9, false);
    EXPECT_EQ(content->y(), -int(pane.maximumOffset()));
    EXPECT_LE(content->y() + content->height(), 301);
}

} // namespace
} // namespace tavrine::look
