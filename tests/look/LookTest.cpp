#include "look/Look.h"

#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/VirtualTime.h"
#include "look/ScrollArea.h"

#include <QApplication>
#include <QPalette>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

using namespace std::chrono_literals;

class LookTest : public testing::Test {
protected:
    VirtualTime time;
    FakeAppearance appearance;
    Look look{time, &appearance};
};

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
