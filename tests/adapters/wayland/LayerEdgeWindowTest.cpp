// Windows at the edge of a screen on a Wayland desktop: who gets the clicks, the keys and what is dragged there.
#include "adapters/wayland/LayerEdgeWindow.h"

#include "adapters/wayland/LayerPanelWindow.h"
#include "adapters/wayland/LayerParts.h"
#include "adapters/wayland/WaylandDragging.h"
#include "adapters/wayland/WaylandScreens.h"
#include "adapters/x11/ForeignWindow.h"
#include "support/StoppedCompositor.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QMimeData>
#include <QPainter>
#include <QPointer>
#include <QProcess>
#include <QWidget>

#include <csignal>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::waitUntil;

class EdgeContent final : public QWidget {
public:
    EdgeContent() {
        setAcceptDrops(true);
        setFocusPolicy(Qt::StrongFocus);
    }
    QList<QPoint> clicks; ///< in the toolkit's plane
    QString typed;
    QStringList entered; ///< what the last drag that came in carries
    Dragging *dragging = nullptr;
    std::optional<DroppedContent> dropped;
    qint64 heldUpMs = -1; ///< how long the last drop's event took
    bool isReadWithin = false;

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), Qt::black); }
    void mousePressEvent(QMouseEvent *event) override { clicks.append(event->globalPosition().toPoint()); }
    void keyPressEvent(QKeyEvent *event) override { typed += event->text(); }
    void dragEnterEvent(QDragEnterEvent *event) override {
        entered = event->mimeData()->formats();
        event->setDropAction(Qt::CopyAction);
        event->accept();
    }
    void dropEvent(QDropEvent *event) override {
        QElapsedTimer timer;
        timer.start();
        if (dragging)
            dragging->readDrop(*event->mimeData(), [this](const DroppedContent &content) { dropped = content; });
        heldUpMs = timer.elapsed();
        isReadWithin = dropped.has_value();
        event->setDropAction(Qt::CopyAction);
        event->accept();
    }
};

class LayerEdgeWindowTest : public ::testing::Test {
protected:
    LayerEdgeWindowTest() {
        below->setContentView(under);
        below->setFrame({400, 420, 480, 300});
        below->orderFrontRegardless();
        window->setContentView(content);
        window->setFrame(atRest, 0ms);
        window->orderFrontRegardless();
    }
    /// Clicks until one of the two has heard it, and tells which. To be asked about each place once.
    [[nodiscard]] EdgeContent *clicked(QPoint place) {
        EdgeContent *found = nullptr;
        (void)waitUntil([&] {
            hand.click(place);
            for (EdgeContent *each : {content, under})
                if (each->clicks.contains(place)) // one from before may be on its way still
                    found = each;
            return found != nullptr;
        });
        content->clicks.clear();
        under->clicks.clear();
        return found;
    }

    const QRectF atRest{490, 696, 300, 24};
    const QRectF open{408, 496, 464, 224};
    testing::WaylandHand hand;
    LayerParts parts;
    LayerPanelWindows panels{parts};
    LayerEdgeWindows windows{parts};
    WaylandScreens screens;
    std::unique_ptr<PanelWindow> below =
        panels.makePanel({.title = {}, .contentSize = {480, 300}, .canBecomeKey = false});
    EdgeContent *under = new EdgeContent;
    std::unique_ptr<EdgeWindow> window =
        windows.makeEdgeWindow({.title = QStringLiteral("At the edge"), .largestSize = {464, 224}, .outline = {}});
    EdgeContent *content = new EdgeContent;
};

TEST_F(LayerEdgeWindowTest, atRestClicksReachWhatLiesBelow) {
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->ignoresMouseEvents());
    EXPECT_EQ(clicked({640, 12}), under);
}

TEST_F(LayerEdgeWindowTest, atRestAClickInTheUppermostRowGetsThroughAfterAMoment) {
    ASSERT_EQ(clicked({640, 12}), under);
    EXPECT_TRUE(waitUntil([&] {
        hand.click({640, 0});
        return under->clicks.contains(QPoint(640, 0));
    }));
}

TEST_F(LayerEdgeWindowTest, thePointerIsHeardOfInTheUppermostRow) {
    EXPECT_TRUE(waitUntil([&, x = 600]() mutable {
        hand.move({x++ % 40 + 600, 0});
        return screens.mouseLocation().y() > 718 && screens.mouseLocation().x() >= 600;
    }));
}

TEST_F(LayerEdgeWindowTest, whatIsOpenTakesClicksAndNothingBeside) {
    window->setFrame(open, 100ms);
    window->setIgnoresMouseEvents(false);
    ASSERT_TRUE(waitUntil([&] { return content->size() == QSize(464, 224); }));
    EXPECT_EQ(clicked({640, 200}), content);
    EXPECT_EQ(clicked({640, 230}), under);
    EXPECT_EQ(clicked({404, 12}), under);
    window->setFrame(atRest, 0ms);
    window->setIgnoresMouseEvents(true);
    EXPECT_EQ(clicked({640, 201}), under);
}

TEST_F(LayerEdgeWindowTest, theKeyboardIsTakenAndGivenBack) {
    testing::ForeignWindow other(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(other.waitForFocus());
    hand.tap(KEY_B);
    ASSERT_TRUE(other.waitForText(QStringLiteral("b")));
    window->setIgnoresMouseEvents(false);
    window->takeKeyboard();
    content->setFocus();
    EXPECT_TRUE(waitUntil([&] {
        hand.tap(KEY_P);
        return !content->typed.isEmpty();
    }));
    window->returnKeyboard();
    EXPECT_TRUE(waitUntil([&] {
        hand.tap(KEY_V);
        return other.text().endsWith(QLatin1Char('v'));
    }));
}

/// Such a compositor tells of the keyboard once it is no longer wanted.
TEST_F(LayerEdgeWindowTest, theKeyboardIsGivenBackByABusyCompositorToo) {
    testing::ForeignWindow other(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(other.waitForFocus());
    window->setIgnoresMouseEvents(false);
    {
        const testing::StoppedCompositor stopped;
        ASSERT_TRUE(stopped.hasBegun());
        window->takeKeyboard();
        window->returnKeyboard();
        (void)waitUntil([] { return false; }, 400ms); // longer than a compositor that is well needs
    }
    EXPECT_TRUE(waitUntil([&] {
        hand.tap(KEY_V);
        return other.text().endsWith(QLatin1Char('v'));
    }));
}

class DragsAtTheEdge : public LayerEdgeWindowTest {
protected:
    DragsAtTheEdge() {
        below->orderOut();
        content->dragging = &dragging;
    }
    ~DragsAtTheEdge() override {
        dragger.kill();
        dragger.waitForFinished();
    }
    [[nodiscard]] bool hasTold(const char *word) {
        told += dragger.readAllStandardOutput();
        return told.contains(word);
    }
    /// A drag of a file of another program lies over the window, with the button down.
    [[nodiscard]] bool dragIn() {
        dragger.start(QStringLiteral(TAVRINE_QT_DRAGGER), {QStringLiteral("/etc/hostname")});
        if (!waitUntil([&] { return hasTold("ready"); }))
            return false;
        // Its uppermost field drags: of a window in the middle of the screen, or of one that fills it.
        const bool isInTheMiddle = qgetenv("XDG_CURRENT_DESKTOP") == "KDE";
        const QPoint field(640, isInTheMiddle ? 200 : 72);
        const bool isDragged = waitUntil([&] {
            hand.dragAndHold(field, field + QPoint(40, 0));
            if (waitUntil([&] { return hasTold("drag"); }, 2s))
                return true;
            hand.release(); // it was not there yet
            return false;
        });
        if (!isDragged)
            return false;
        return waitUntil([&, x = 0]() mutable {
            hand.move({600 + ++x % 80, 0});
            return content->entered.contains(QStringLiteral("text/uri-list"));
        });
    }

    WaylandDragging dragging{parts.shell};
    QProcess dragger;
    QByteArray told;
};

TEST_F(DragsAtTheEdge, atRestADragOfAnotherProgramIsHeardOf) {
    ASSERT_TRUE(dragIn());
    EXPECT_EQ(screens.pressedMouseButtons(), 1U);
    hand.move({640, 500});
    EXPECT_TRUE(waitUntil([&] { return screens.pressedMouseButtons() == 0; }));
    hand.release();
}

TEST_F(DragsAtTheEdge, aDroppedFileIsReadWithinTheEvent) {
    ASSERT_TRUE(dragIn());
    hand.release();
    ASSERT_TRUE(waitUntil([&] { return content->dropped.has_value(); }));
    EXPECT_TRUE(content->isReadWithin || content->heldUpMs >= Dragging::answerLimit.count());
    EXPECT_EQ(content->dropped->fileUrls, QList<QUrl>{QUrl::fromLocalFile(QStringLiteral("/etc/hostname"))});
}

TEST_F(DragsAtTheEdge, aProgramThatHangsIsNotWaitedFor) {
    ASSERT_TRUE(dragIn());
    ::kill(static_cast<pid_t>(dragger.processId()), SIGSTOP);
    hand.release();
    ASSERT_TRUE(waitUntil([&] { return content->heldUpMs >= 0; }));
    EXPECT_GE(content->heldUpMs, 100);  // it was asked
    EXPECT_LT(content->heldUpMs, 3500); // what is read elsewhere is waited for for 4 s
    dragger.kill();
    EXPECT_TRUE(waitUntil([&] { return content->dropped.has_value(); }));
    EXPECT_TRUE(content->dropped->fileUrls.isEmpty());
}

} // namespace
} // namespace tavrine
