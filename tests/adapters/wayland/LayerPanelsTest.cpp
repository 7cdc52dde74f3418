// Panels as they stand on a Wayland desktop, where nobody but the person's hand tells what they really do.
#include "adapters/wayland/LayerPanelWindow.h"
#include "adapters/wayland/LayerParts.h"
#include "adapters/wayland/WaylandScreens.h"
#include "adapters/x11/ForeignWindow.h"
#include "support/CompositorStall.h"
#include "support/DesktopBar.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QProcess>
#include <QWidget>
#include <QWindow>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::ForeignWindow;
using testing::waitUntil;

/// What it was told by the mouse and the keyboard.
class Content : public QWidget {
public:
    Content() { setFocusPolicy(Qt::StrongFocus); }
    QList<QPoint> clicks;
    QString typed;

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), Qt::darkCyan); }
    void mousePressEvent(QMouseEvent *event) override {
        clicks.append(event->position().toPoint());
        event->ignore(); // the panel may be moved by it
    }
    void keyPressEvent(QKeyEvent *event) override { typed += event->text(); }
};

struct Panel {
    std::unique_ptr<PanelWindow> window;
    QPointer<Content> content;
};

class LayerPanelsTest : public ::testing::Test {
protected:
    Panel make(PanelDescription description, const QRectF &frame) {
        description.contentSize = frame.size();
        Panel panel{windows.makePanel(description), new Content};
        panel.window->setContentView(panel.content);
        panel.window->setFrame(frame);
        return panel;
    }
    Panel show(const QRectF &frame, const PanelDescription &description = {}) {
        Panel panel = make(description, frame);
        panel.window->makeKeyAndOrderFront();
        return panel;
    }
    /// From the bottom left, as panels have it.
    [[nodiscard]] QPoint onLayout(QPointF place) {
        return screens.toolkitRect({place, QSizeF(0, 0)}).topLeft().toPoint();
    }
    void click(QPointF place) { hand.click(onLayout(place)); }
    /// Types until it arrives: a compositor gives the keyboard when it comes to it.
    [[nodiscard]] bool hearsKeys(const Content &content) {
        return waitUntil([&, before = content.typed.size()] {
            hand.tap(KEY_P);
            return content.typed.size() > before;
        });
    }
    /// Clicks until it arrives at that place of the content.
    [[nodiscard]] bool hearsClickAt(Content &content, QPointF place, QPoint within) {
        content.clicks.clear();
        return waitUntil([&] {
            click(place);
            return content.clicks.contains(within);
        });
    }
    /// Moves until it arrives: as with clicks, but nothing follows from it.
    [[nodiscard]] bool hearsMotion(QPoint onLayout, const std::function<bool()> &isHeard) {
        return waitUntil([&, step = 0]() mutable {
            hand.move(onLayout + QPoint(step++ % 2, 0));
            return isHeard();
        });
    }
    /// Clicks until it arrives: a surface takes clicks once it is on the screen.
    [[nodiscard]] bool hearsClick(Content &content, QPointF place) {
        content.clicks.clear();
        return waitUntil([&] {
            click(place);
            return !content.clicks.isEmpty();
        });
    }

    testing::WaylandHand hand;
    LayerParts parts;
    LayerPanelWindows windows{parts};
    WaylandScreens screens;
};

TEST_F(LayerPanelsTest, theScreenIsToldFromTheBottomLeft) {
    const auto all = screens.screens();
    ASSERT_EQ(all.size(), 1);
    EXPECT_EQ(all[0].frame, QRectF(0, 0, 1280, 720));
    EXPECT_EQ(all[0].visibleFrame, all[0].frame);
    EXPECT_EQ(all[0].scale, 1.0);
    EXPECT_EQ(screens.mainScreen(), all[0]);
}

/// Compositors tell how much is free and not where.
TEST_F(LayerPanelsTest, whatABarLeavesFreeIsKnownOnWhicheverSideItStands) {
    using testing::DesktopBar;
    const std::pair<DesktopBar::Edge, QRectF> sides[] = {{DesktopBar::Edge::top, {0, 0, 1280, 680}},
                                                         {DesktopBar::Edge::bottom, {0, 40, 1280, 680}},
                                                         {DesktopBar::Edge::left, {40, 0, 1240, 720}},
                                                         {DesktopBar::Edge::right, {0, 0, 1240, 720}}};
    for (const auto &[edge, free] : sides) {
        SCOPED_TRACE(static_cast<int>(edge));
        const QRectF whole(0, 0, 1280, 720);
        ASSERT_TRUE(waitUntil([&] { return screens.screens().at(0).visibleFrame == whole; }));
        const DesktopBar bar(edge, 40);
        ASSERT_TRUE(bar.isThere());
        const QRectF &told = free;
        EXPECT_TRUE(waitUntil([&] { return screens.screens().at(0).visibleFrame == told; }))
            << screens.screens().at(0).visibleFrame.x() << ' ' << screens.screens().at(0).visibleFrame.y();
        const WaylandScreens ofALaterStart;
        EXPECT_TRUE(waitUntil([&] { return ofALaterStart.screens().at(0).visibleFrame == told; }));
    }
}

TEST_F(LayerPanelsTest, aPanelTakesTheKeyboardAndGivesItBack) {
    ForeignWindow other(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(other.waitForFocus());
    hand.tap(KEY_B);
    ASSERT_TRUE(other.waitForText(QStringLiteral("b")));
    const Panel panel = show({400, 300, 300, 200});
    EXPECT_TRUE(panel.window->isVisible());
    ASSERT_TRUE(waitUntil([&] { return panel.content->window()->isActiveWindow(); }));
    ASSERT_TRUE(hearsKeys(*panel.content));
    EXPECT_EQ(other.text(), QStringLiteral("b"));
    panel.window->orderOut();
    EXPECT_FALSE(panel.window->isVisible());
    EXPECT_TRUE(waitUntil([&] {
        hand.tap(KEY_V);
        return other.text().contains(QLatin1Char('v'));
    }));
    EXPECT_FALSE(other.text().contains(QLatin1Char('p'))) << other.text().toStdString();
}

TEST_F(LayerPanelsTest, aPanelStandsWhereItWasPutEachTime) {
    const Panel panel = show({400, 300, 300, 200});
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(hearsClick(*panel.content, {401, 499})) << round; // its upper left corner
        EXPECT_EQ(panel.content->clicks.first(), QPoint(1, 1));
        EXPECT_EQ(panel.window->frame(), QRectF(400, 300, 300, 200));
        panel.window->orderOut();
        panel.window->makeKeyAndOrderFront();
    }
}

TEST_F(LayerPanelsTest, aPanelOpensThoughTheCompositorStandsStillForASecond) {
    using namespace std::chrono_literals;
    const testing::CompositorStall stall(800ms);
    ASSERT_TRUE(stall.hasBegun());
    const LayerShell ofASlowStart;
    EXPECT_NE(ofASlowStart.shell(), nullptr);
    const testing::CompositorStall another(800ms);
    ASSERT_TRUE(another.hasBegun());
    const Panel panel = show({400, 300, 300, 200});
    EXPECT_TRUE(hearsClick(*panel.content, {550, 400}));
}

TEST_F(LayerPanelsTest, aShownPanelMovesAndGrowsAsItIsTold) {
    const Panel panel = show({400, 300, 300, 200});
    ASSERT_TRUE(hearsClick(*panel.content, {550, 400}));
    panel.window->setFrame({100, 50, 600, 400});
    EXPECT_TRUE(hearsClickAt(*panel.content, {101, 449}, {1, 1}));
    EXPECT_TRUE(hearsClick(*panel.content, {698, 52})); // where it was not before
}

TEST_F(LayerPanelsTest, theRoomOfAShadowIsNoPartOfThePanel) {
    const Panel below = show({200, 200, 500, 400});
    PanelDescription description;
    description.canBecomeKey = false;
    description.shadow = {.room = QMargins(40, 30, 40, 50), .paint = [](QPainter &, const QRectF &) {}};
    const Panel panel = show({400, 300, 100, 100}, description);
    ASSERT_TRUE(hearsClick(*panel.content, {401, 399}));
    EXPECT_EQ(panel.content->clicks.first(), QPoint(1, 1));
    EXPECT_TRUE(hearsClick(*below.content, {390, 350}));
    EXPECT_EQ(panel.window->frame(), QRectF(400, 300, 100, 100));
}

TEST_F(LayerPanelsTest, aPanelThatIgnoresTheMouseLetsClicksPass) {
    const Panel below = show({200, 200, 500, 400});
    PanelDescription description;
    description.canBecomeKey = false;
    description.ignoresMouseEvents = true;
    const Panel panel = show({300, 300, 200, 200}, description);
    ASSERT_TRUE(hearsClick(*below.content, {400, 400}));
    EXPECT_TRUE(panel.content->clicks.isEmpty());
    panel.window->setIgnoresMouseEvents(false);
    EXPECT_TRUE(hearsClick(*panel.content, {400, 400}));
}

/// As the border of what is recorded, which is a line and nothing within.
class MaskedContent final : public Content {
protected:
    void showEvent(QShowEvent *event) override {
        Content::showEvent(event);
        window()->setMask(QRegion(0, 0, 200, 200) - QRegion(50, 50, 100, 100));
    }
};

TEST_F(LayerPanelsTest, aPanelWithAMaskThatIgnoresTheMouseLetsClicksPassOnItToo) {
    const Panel below = show({200, 200, 500, 400});
    PanelDescription description;
    description.canBecomeKey = false;
    description.ignoresMouseEvents = true;
    Panel panel{windows.makePanel(description), new MaskedContent};
    panel.window->setContentView(panel.content);
    for (int showing = 0; showing < 2; ++showing) {
        panel.window->setFrame({300, 300, 200, 200});
        panel.window->makeKeyAndOrderFront();
        ASSERT_TRUE(hearsClickAt(*below.content, {310, 400}, {110, 200}));
        EXPECT_TRUE(panel.content->clicks.isEmpty());
        panel.window->orderOut();
    }
}

TEST_F(LayerPanelsTest, whatAMaskLeavesOutOfAPanelTakesNoClicks) {
    const Panel below = show({200, 200, 500, 400});
    PanelDescription description;
    description.canBecomeKey = false;
    Panel panel{windows.makePanel(description), new MaskedContent};
    panel.window->setContentView(panel.content);
    panel.window->setFrame({300, 300, 200, 200});
    panel.window->makeKeyAndOrderFront();
    ASSERT_TRUE(hearsClickAt(*below.content, {400, 400}, {200, 200}));
    EXPECT_TRUE(hearsClickAt(*panel.content, {310, 400}, {10, 100}));
}

TEST_F(LayerPanelsTest, aPanelIsAboveAFullScreenWindow) {
    QProcess terminal;
    terminal.start(QStringLiteral("foot"), {QStringLiteral("--fullscreen"), QStringLiteral("cat")});
    ASSERT_TRUE(terminal.waitForStarted());
    // It is there once it takes the keys that went to the window before.
    ForeignWindow other(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    const Panel panel = show({400, 300, 300, 200});
    EXPECT_TRUE(hearsClick(*panel.content, {550, 400}));
    EXPECT_TRUE(hearsKeys(*panel.content));
    terminal.kill();
    terminal.waitForFinished();
}

TEST_F(LayerPanelsTest, ofTwoPanelsTheNewerOneIsInFrontAndHasTheKeyboard) {
    const Panel first = show({300, 200, 300, 300});
    ASSERT_TRUE(hearsKeys(*first.content));
    const Panel second = show({400, 300, 300, 300});
    ASSERT_TRUE(hearsKeys(*second.content));
    EXPECT_TRUE(hearsClick(*second.content, {500, 400})); // where both are
    second.window->orderOut();
    EXPECT_TRUE(hearsKeys(*first.content));
    EXPECT_TRUE(hearsClick(*first.content, {500, 400}));
}

TEST_F(LayerPanelsTest, aPanelThatIsOrderedToTheFrontComesBeforeTheOthers) {
    PanelDescription description;
    description.canBecomeKey = false;
    const Panel first = show({300, 200, 300, 300}, description);
    const Panel second = show({400, 300, 300, 300}, description);
    ASSERT_TRUE(hearsClick(*second.content, {500, 400}));
    first.window->orderFrontRegardless();
    EXPECT_TRUE(hearsClick(*first.content, {500, 400}));
}

TEST_F(LayerPanelsTest, thePersonMovesAPanelByItsBackground) {
    PanelDescription description;
    description.isMovableByBackground = true;
    const Panel panel = show({400, 300, 300, 200}, description);
    int moves = 0;
    panel.window->setOnMoved([&] { ++moves; });
    const QRectF before = panel.window->frame();
    ASSERT_TRUE(hearsMotion(onLayout({550, 400}), [&] { return panel.content->underMouse(); }));
    hand.drag(onLayout({550, 400}), onLayout({450, 250}));
    ASSERT_TRUE(waitUntil([&] { return moves == 1; }));
    EXPECT_EQ(panel.window->frame(), before.translated(-100, -150));
    EXPECT_TRUE(hearsClick(*panel.content, {302, 152}));
}

TEST_F(LayerPanelsTest, aMenuOfAPanelOpensWhereItIsWantedAndTakesAClick) {
    const Panel panel = show({400, 300, 300, 200});
    ASSERT_TRUE(hearsMotion(onLayout({550, 400}), [&] { return panel.content->underMouse(); }));
    QMenu menu(panel.content);
    bool isChosen = false;
    QObject::connect(menu.addAction(QStringLiteral("An entry")), &QAction::triggered, &menu, [&] { isChosen = true; });
    for (int round = 0; round < 2; ++round) {
        isChosen = false;
        menu.popup(panel.content->mapToGlobal(QPoint(280, 180))); // beyond the panel's edge
        ASSERT_TRUE(menu.isVisible());
        const QPoint entry = menu.mapToGlobal(menu.actionGeometry(menu.actions().first()).center());
        ASSERT_TRUE(hearsMotion(entry, [&] { return menu.activeAction() != nullptr; })) << round;
        hand.click(entry);
        EXPECT_TRUE(waitUntil([&] { return isChosen; })) << round;
        EXPECT_FALSE(menu.isVisible());
    }
    menu.popup(panel.content->mapToGlobal(QPoint(20, 20)));
    EXPECT_TRUE(waitUntil([&] {
        hand.tap(KEY_ESC);
        return !menu.isVisible();
    }));
    EXPECT_TRUE(panel.window->isVisible());
}

TEST_F(LayerPanelsTest, aQuestionBeforeAPanelHasTheKeyboardAndIsInFront) {
    const Panel panel = show({200, 100, 600, 500});
    ASSERT_TRUE(hearsKeys(*panel.content));
    QDialog question(nullptr, Qt::Dialog | Qt::FramelessWindowHint);
    auto *inside = new Content;
    inside->setParent(&question);
    inside->setGeometry(0, 0, 200, 100);
    question.setModal(true);
    (void)question.winId();
    question.windowHandle()->setTransientParent(panel.content->window()->windowHandle());
    question.setGeometry(500, 300, 200, 100);
    question.show();
    inside->setFocus();
    EXPECT_TRUE(windows.isAsking());
    EXPECT_TRUE(hearsKeys(*inside));
    EXPECT_TRUE(hearsClickAt(*inside, screens.toolkitRect({502, 302, 0, 0}).topLeft(), {2, 2}));
    panel.window->orderOut();
    EXPECT_FALSE(question.isVisible());
    EXPECT_FALSE(windows.isAsking());
}

TEST_F(LayerPanelsTest, aLargeWindowOfTheProgramTakesTheKeyboardFromAPanel) {
    const Panel panel = show({200, 100, 300, 300});
    ASSERT_TRUE(hearsKeys(*panel.content));
    Content large;
    large.resize(500, 300);
    large.show();
    EXPECT_TRUE(hearsKeys(large));
    large.hide();
    EXPECT_TRUE(hearsKeys(*panel.content));
}

TEST_F(LayerPanelsTest, thePointerIsKnownOverAPanelAndIsNotTakenToBeThereWhenItHasLeft) {
    const Panel panel = show({400, 300, 300, 200});
    ASSERT_TRUE(hearsClick(*panel.content, {550, 400}));
    hand.move(onLayout({500, 350}));
    EXPECT_TRUE(waitUntil([&] { return screens.mouseLocation() == QPointF(500, 350); }))
        << screens.mouseLocation().x() << " " << screens.mouseLocation().y();
    hand.move({2, 2});
    EXPECT_TRUE(waitUntil([&] { return !panel.window->frame().contains(screens.mouseLocation()); }));
}

TEST_F(LayerPanelsTest, everyPanelHasANumberThatStaysWithIt) {
    const Panel panel = show({400, 300, 300, 200});
    const Panel other = make({}, {0, 0, 30, 20});
    const qint64 number = panel.window->windowNumber();
    EXPECT_NE(number, 0);
    EXPECT_NE(number, other.window->windowNumber());
    panel.window->orderOut();
    panel.window->makeKeyAndOrderFront();
    EXPECT_EQ(panel.window->windowNumber(), number);
}

} // namespace
} // namespace tavrine
