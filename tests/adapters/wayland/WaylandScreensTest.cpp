// Two screens side by side, the right one with half as many pixels again for a point. Run on sway with these two.
#include "adapters/wayland/WaylandScreens.h"

#include "adapters/wayland/LayerPanelWindow.h"
#include "adapters/wayland/LayerParts.h"
#include "adapters/wayland/WaylandEventMonitors.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

#include <QApplication>
#include <QMouseEvent>
#include <QProcess>
#include <QWidget>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::waitUntil;

class Content final : public QWidget {
public:
    QList<QPoint> clicks;

protected:
    void mousePressEvent(QMouseEvent *event) override { clicks.append(event->position().toPoint()); }
};

class WaylandScreensTest : public ::testing::Test {
protected:
    static bool sway(const char *words) {
        return QProcess::execute(QStringLiteral("swaymsg"), {QStringLiteral("-q"), QString::fromLatin1(words)}) == 0;
    }
    [[nodiscard]] bool hearsClickAt(Content &content, QPoint onLayout, QPoint within) {
        return waitUntil([&] {
            hand.click(onLayout);
            return content.clicks.contains(within);
        });
    }

    testing::WaylandHand hand;
    LayerParts parts;
    LayerPanelWindows windows{parts};
    WaylandScreens screens;
};

TEST_F(WaylandScreensTest, eachScreenHasItsPlaceAndItsOwnScale) {
    const auto all = screens.screens();
    ASSERT_EQ(all.size(), 2);
    EXPECT_EQ(all[0].frame, QRectF(0, 0, 1280, 720));
    EXPECT_EQ(all[0].scale, 1.0);
    EXPECT_EQ(all[1].frame, QRectF(1280, 720 - 800, 1200, 800));
    EXPECT_EQ(all[1].scale, 1.5);
    EXPECT_NE(all[0].number, all[1].number);
}

TEST_F(WaylandScreensTest, thePointerIsAskedForWhereNoWindowOfTheProgramIs) {
    hand.move({2000, 300});
    EXPECT_TRUE(waitUntil([&] { return screens.mouseLocation() == QPointF(2000, 420); }))
        << screens.mouseLocation().x() << " " << screens.mouseLocation().y();
    hand.move({100, 50});
    EXPECT_TRUE(waitUntil([&] { return screens.mouseLocation() == QPointF(100, 670); }));
}

TEST_F(WaylandScreensTest, theMainScreenIsTheOneWithTheKeyboard) {
    for (const int screen : {1, 0}) {
        ASSERT_TRUE(sway(screen == 1 ? "focus output HEADLESS-2" : "focus output HEADLESS-1"));
        EXPECT_TRUE(waitUntil([&] { return screens.mainScreen() == screens.screens().at(screen); })) << screen;
    }
}

TEST_F(WaylandScreensTest, aPanelStandsOnTheScreenOfItsFrameAndGoesToAnotherWithIt) {
    const auto panel = windows.makePanel({.title = {}, .contentSize = {300, 200}});
    auto *content = new Content;
    panel->setContentView(content);
    panel->setFrame({1500, 300, 300, 200});
    panel->makeKeyAndOrderFront();
    EXPECT_TRUE(hearsClickAt(*content, {1501, 221}, {1, 1}));
    panel->setFrame({500, 300, 300, 200});
    EXPECT_TRUE(panel->isVisible());
    content->clicks.clear();
    EXPECT_TRUE(hearsClickAt(*content, {501, 221}, {1, 1}));
}

TEST_F(WaylandScreensTest, aPressBesideAPanelIsHeardOnEachScreenAlsoOnOneThatComes) {
    WaylandEventMonitors monitors([this]() -> LayerParts & { return parts; });
    std::vector<QPointF> places;
    const auto monitor = monitors.addGlobalMonitor(
        eventMask::leftMouseDown, [&](const InputEvent &) { places.push_back(screens.mouseLocation()); });
    const auto panel = windows.makePanel({.title = {}, .contentSize = {300, 200}});
    panel->setFrame({500, 300, 300, 200});
    panel->makeKeyAndOrderFront();
    const auto isHeardAt = [&](QPoint onLayout, QPointF place) {
        return waitUntil([&] {
            places.clear();
            hand.click(onLayout);
            return waitUntil([&] { return !places.empty(); }, std::chrono::milliseconds(500)) &&
                   (places.back() - place).manhattanLength() <= 2; // the hand's places are rounded over the layout
        });
    };
    EXPECT_TRUE(isHeardAt({100, 50}, {100, 670}));
    EXPECT_TRUE(isHeardAt({2000, 300}, {2000, 420}));
    ASSERT_TRUE(sway("create_output"));
    ASSERT_TRUE(waitUntil([&] { return screens.screens().size() == 3; }));
    const QPointF there = screens.screens().at(2).frame.center();
    EXPECT_TRUE(isHeardAt(screens.toolkitRect({there, QSizeF()}).topLeft().toPoint(), there));
}

} // namespace
} // namespace tavrine
