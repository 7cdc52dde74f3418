#pragma once

#include "ports/EdgeWindow.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>

#include <gtest/gtest.h>

namespace tavrine::test {

/// What such a window shows; it writes down what it hears.
class EdgeContent final : public QWidget {
public:
    EdgeContent() { setFocusPolicy(Qt::StrongFocus); }
    int clicks = 0;
    QString typed;

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), Qt::black); }
    void mousePressEvent(QMouseEvent *) override { ++clicks; }
    void keyPressEvent(QKeyEvent *event) override { typed += event->text(); }
};

struct ShownAtEdge {
    std::unique_ptr<EdgeWindow> window;
    QPointer<EdgeContent> content = new EdgeContent;
};

/// A desktop with another program under all of the middle of its upper edge, which has the keyboard.
class EdgeDesk {
public:
    virtual ~EdgeDesk() = default;
    virtual EdgeWindows &windows() = 0;
    /// In points from the bottom left.
    [[nodiscard]] virtual QRectF screen() = 0;
    /// Whether a click there comes to be for that one; null for the other program.
    [[nodiscard]] virtual bool clickIsFor(const ShownAtEdge *shown, QPointF place) = 0;
    /// Whether that one comes to have the keyboard; null for the other program.
    [[nodiscard]] virtual bool keyboardIsWith(const ShownAtEdge *shown) = 0;
    [[nodiscard]] virtual bool comes(const std::function<bool()> &condition) = 0;
};

class EdgeWindowContract : public ::testing::TestWithParam<std::unique_ptr<EdgeDesk> (*)()> {
protected:
    static constexpr QSizeF largest{464, 224};
    static constexpr std::chrono::milliseconds atOnce{0};
    static constexpr std::chrono::milliseconds moment{100};

    [[nodiscard]] QRectF frame(double width, double height) const {
        return {middle - width / 2, top - height, width, height};
    }
    /// A place in the middle, so many points below the edge.
    [[nodiscard]] QPointF below(double points) const { return {middle, top - points}; }
    [[nodiscard]] ShownAtEdge make() {
        ShownAtEdge made{.window = desk->windows().makeEdgeWindow(
                             {.title = QStringLiteral("At the edge"), .largestSize = largest, .outline = {}})};
        made.window->setContentView(made.content);
        return made;
    }
    /// On the screen, with that size, and for the mouse.
    [[nodiscard]] ShownAtEdge show(double width, double height) {
        ShownAtEdge shown = make();
        shown.window->setFrame(frame(width, height), atOnce);
        shown.window->setIgnoresMouseEvents(false);
        shown.window->orderFrontRegardless();
        return shown;
    }

    std::unique_ptr<EdgeDesk> desk = GetParam()();
    const double middle = desk->screen().center().x();
    const double top = desk->screen().y() + desk->screen().height();
};

TEST_P(EdgeWindowContract, aWindowThatWasMadeIsOutIgnoresTheMouseAndHasANumberOfItsOwn) {
    const ShownAtEdge one = make();
    const ShownAtEdge other = make();
    EXPECT_FALSE(one.window->isVisible());
    EXPECT_TRUE(one.window->ignoresMouseEvents());
    EXPECT_NE(one.window->windowNumber(), 0);
    EXPECT_NE(one.window->windowNumber(), other.window->windowNumber());
}

TEST_P(EdgeWindowContract, aWindowThatIsOutIsInNobodysWay) {
    const ShownAtEdge shown = show(300, 100);
    EXPECT_TRUE(shown.window->isVisible());
    ASSERT_TRUE(desk->clickIsFor(&shown, below(50)));
    shown.window->orderOut();
    EXPECT_FALSE(shown.window->isVisible());
    EXPECT_TRUE(desk->clickIsFor(nullptr, below(50)));
    shown.window->orderFrontRegardless();
    EXPECT_TRUE(desk->clickIsFor(&shown, below(50)));
}

TEST_P(EdgeWindowContract, whatIgnoresTheMouseLetsClicksThroughUntilItIsTold) {
    const ShownAtEdge shown = show(300, 100);
    shown.window->setIgnoresMouseEvents(true);
    EXPECT_TRUE(shown.window->ignoresMouseEvents());
    EXPECT_TRUE(desk->clickIsFor(nullptr, below(50)));
    shown.window->setIgnoresMouseEvents(false);
    EXPECT_FALSE(shown.window->ignoresMouseEvents());
    EXPECT_TRUE(desk->clickIsFor(&shown, below(50)));
}

TEST_P(EdgeWindowContract, itTakesTheMouseInItsFrameAndNowhereElse) {
    const ShownAtEdge shown = show(300, 100);
    EXPECT_TRUE(desk->clickIsFor(&shown, below(95)));
    EXPECT_TRUE(desk->clickIsFor(nullptr, below(105)));
    EXPECT_TRUE(desk->clickIsFor(&shown, below(50) + QPointF(145, 0)));
    EXPECT_TRUE(desk->clickIsFor(nullptr, below(50) + QPointF(155, 0)));
    EXPECT_TRUE(desk->clickIsFor(nullptr, below(50) - QPointF(155, 0)));
}

TEST_P(EdgeWindowContract, itsFrameIsWhereItGoesAndTheScreenFollows) {
    const ShownAtEdge shown = show(300, 24);
    ASSERT_TRUE(desk->clickIsFor(nullptr, below(150)));
    shown.window->setFrame(frame(464, 224), moment);
    EXPECT_EQ(shown.window->frame(), frame(464, 224));
    EXPECT_TRUE(desk->comes([&] { return shown.content->size() == QSize(464, 224); }));
    EXPECT_TRUE(desk->clickIsFor(&shown, below(150)));
    shown.window->setFrame(frame(300, 24), moment);
    EXPECT_TRUE(desk->comes([&] { return shown.content->size() == QSize(300, 24); }));
    EXPECT_TRUE(desk->clickIsFor(nullptr, below(150)));
    EXPECT_EQ(shown.window->frame(), frame(300, 24));
}

TEST_P(EdgeWindowContract, aWindowThatIsOutHasItsFrameAndItsContentAtOnce) {
    const ShownAtEdge shown = make();
    shown.window->setFrame(frame(300, 24), moment);
    EXPECT_EQ(shown.content->size(), QSize(300, 24));
    const QPointer<EdgeContent> later = new EdgeContent;
    shown.window->setContentView(later);
    EXPECT_TRUE(shown.content.isNull()) << "the one before was the window's";
    EXPECT_EQ(later->size(), QSize(300, 24));
    shown.window->orderFrontRegardless();
    shown.window->setFrame(frame(464, 224), moment);
    shown.window->orderOut();
    EXPECT_EQ(later->size(), QSize(464, 224)) << "the change was not waited for";
}

TEST_P(EdgeWindowContract, itsContentGoesWithIt) {
    ShownAtEdge shown = show(300, 24);
    shown.window.reset();
    EXPECT_TRUE(shown.content.isNull());
}

TEST_P(EdgeWindowContract, theKeyboardStaysWhereItIsUntilItIsTakenAndGoesBackThere) {
    const ShownAtEdge shown = show(300, 24);
    EXPECT_TRUE(desk->keyboardIsWith(nullptr));
    shown.window->takeKeyboard();
    EXPECT_TRUE(desk->keyboardIsWith(&shown));
    shown.window->orderFrontRegardless();
    EXPECT_TRUE(desk->keyboardIsWith(&shown));
    shown.window->returnKeyboard();
    EXPECT_TRUE(desk->keyboardIsWith(nullptr));
}

TEST_P(EdgeWindowContract, aWindowThatGoesOutOrIsGoneGivesTheKeyboardBack) {
    ShownAtEdge shown = show(300, 24);
    ASSERT_TRUE(desk->keyboardIsWith(nullptr));
    shown.window->takeKeyboard();
    ASSERT_TRUE(desk->keyboardIsWith(&shown));
    shown.window->orderOut();
    EXPECT_TRUE(desk->keyboardIsWith(nullptr));
    shown.window->orderFrontRegardless();
    shown.window->takeKeyboard();
    ASSERT_TRUE(desk->keyboardIsWith(&shown));
    shown.window.reset();
    EXPECT_TRUE(desk->keyboardIsWith(nullptr));
}

TEST_P(EdgeWindowContract, aWindowThatIsOutGetsNoKeyboardAndOneWithoutItTakesItFromNobody) {
    const ShownAtEdge out = make();
    out.window->takeKeyboard();
    EXPECT_TRUE(desk->keyboardIsWith(nullptr));
    const ShownAtEdge shown = show(300, 24);
    shown.window->takeKeyboard();
    ASSERT_TRUE(desk->keyboardIsWith(&shown));
    out.window->returnKeyboard();
    EXPECT_TRUE(desk->keyboardIsWith(&shown));
}

/// Where the program has a say in the order of windows, as no compositor gives it.
class StackingContract : public EdgeWindowContract {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(StackingContract);

TEST_P(StackingContract, ofTwoTheOneThatWasShownLastIsInFront) {
    const ShownAtEdge one = show(464, 224);
    const ShownAtEdge other = show(300, 100);
    EXPECT_TRUE(desk->clickIsFor(&other, below(50)));
    EXPECT_TRUE(desk->clickIsFor(&one, below(150)));
    one.window->orderFrontRegardless();
    EXPECT_TRUE(desk->clickIsFor(&one, below(50)));
}

TEST_P(StackingContract, aWindowThatIsKeptInFrontStaysBelowTheOneThatCameAfterIt) {
    const ShownAtEdge one = show(464, 224);
    const ShownAtEdge other = show(300, 100);
    ASSERT_TRUE(desk->clickIsFor(&other, below(50)));
    one.window->keepInFront();
    EXPECT_TRUE(desk->clickIsFor(&one, below(150)));
    EXPECT_TRUE(desk->clickIsFor(&other, below(50)));
    other.window->keepInFront();
    EXPECT_TRUE(desk->clickIsFor(&other, below(50)));
    other.window->orderOut();
    one.window->orderOut();
    one.window->keepInFront();
    EXPECT_TRUE(desk->clickIsFor(&one, below(50)));
}

} // namespace tavrine::test
