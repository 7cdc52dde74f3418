// Windows at the edge of a screen, as they stand on a real desktop: what is seen of them, and who gets the clicks. Run
// with and without a compositor and a window manager.
#include "adapters/x11/X11EdgeWindow.h"

#include "adapters/x11/X11ApplicationActivator.h"
#include "adapters/x11/X11Screens.h"
#include "desktop/Desktop.h"
#include "support/ScreenClient.h"
#include "support/Wait.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QProcess>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <ctime>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::ScreenClient;
using testing::waitUntil;

constexpr auto title = "At the edge";
constexpr QRgb notchColour = 0xff0000ff;
constexpr std::uint32_t groundColour = 0x33aa33;
constexpr double radius = 12;

QPainterPath notch(const QSizeF &size) {
    QPainterPath path;
    path.addRoundedRect(QRectF(0, -radius, size.width(), size.height() + radius), radius, radius);
    QPainterPath visible;
    visible.addRect(QRectF(QPointF(), size));
    return path & visible;
}

/// Blue to the outline, and what it was asked to paint and took of the mouse.
class Notch final : public QWidget {
public:
    int clicks = 0;
    QString typed;
    QList<QSize> painted;
    QList<qint64> times;

protected:
    void paintEvent(QPaintEvent *) override {
        static QElapsedTimer clock = [] {
            QElapsedTimer timer;
            timer.start();
            return timer;
        }();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillPath(notch(size()), QColor(notchColour));
        painted.append(size());
        times.append(clock.nsecsElapsed());
    }
    void mousePressEvent(QMouseEvent *) override { ++clicks; }
    void keyPressEvent(QKeyEvent *event) override { typed += event->text(); }
};

class X11EdgeWindowTest : public ::testing::Test {
protected:
    X11EdgeWindowTest() {
        content->setFocusPolicy(Qt::StrongFocus);
        window->setContentView(content);
    }
    /// A compositor is there before it shows anything.
    void SetUp() override {
        if (!ground.isComposited())
            return;
        const auto clear = ground.addTranslucent({0, 0, 8, 8}, 0);
        EXPECT_TRUE(waitUntil([this] { return shownAt({4, 4}) == QColor(groundColour); }));
        ground.destroy(clear);
    }

    static EdgeWindowDescription description() {
        return {.title = QLatin1String(title), .largestSize = {550, 224}, .outline = notch};
    }
    /// At the middle of the upper edge.
    [[nodiscard]] QRectF frame(double width, double height, int screen = 0) const {
        const QRectF whole = screens.screens().at(screen).frame;
        return {whole.center().x() - width / 2, maxY(whole) - height, width, height};
    }
    [[nodiscard]] QRect pixels(QSize size) const {
        return {QPoint(desktop.size().width() / 2 - size.width() / 2, 0), size};
    }
    [[nodiscard]] QColor shownAt(QPoint place) const {
        return QColor(ground.screen(QRect(place, QSize(1, 1))).pixel(0, 0));
    }
    /// The whole of it is blue and what is beside it is not.
    [[nodiscard]] bool isShownAs(const QRect &part) const {
        const auto isBlue = [this](QPoint place) { return shownAt(place) == QColor(notchColour); };
        return isBlue(part.topLeft()) && isBlue(part.topRight()) && isBlue(part.center()) &&
               isBlue({part.center().x(), part.bottom()}) && !isBlue(part.topLeft() - QPoint(2, 0)) &&
               !isBlue(part.topRight() + QPoint(2, 0)) && !isBlue({part.center().x(), part.bottom() + 2}) &&
               !isBlue(part.bottomLeft()) && !isBlue(part.bottomRight());
    }
    void showAs(double width, double height) {
        window->setFrame(frame(width, height), 0ms);
        window->orderFrontRegardless();
        ASSERT_TRUE(waitUntil([&] { return isShownAs(pixels(QSizeF(width, height).toSize())); }));
    }

    testing::Desktop desktop;
    ScreenClient ground;
    const ScreenClient::Window below = ground.add(ground.wholeScreen(), groundColour);
    X11ApplicationActivator activator;
    X11EdgeWindows windows{activator};
    X11Screens screens;
    std::unique_ptr<EdgeWindow> window = windows.makeEdgeWindow(description());
    QPointer<Notch> content = new Notch;
};

TEST_F(X11EdgeWindowTest, aWindowThatWasMadeIsOutIgnoresTheMouseAndHasTheFrameThatItWasGiven) {
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(window->ignoresMouseEvents());
    window->setFrame({100.5, 20, 465, 224}, 0ms);
    EXPECT_EQ(window->frame(), QRectF(100.5, 20, 465, 224));
}

TEST_F(X11EdgeWindowTest, whatIsShownIsTheFrameAndNothingBesideIt) {
    showAs(300, 24);
    EXPECT_EQ(content->size(), QSize(300, 24));
    const QImage picture = ground.screen({0, 0, desktop.size().width(), 230});
    const QRect part = pixels({300, 24});
    int strange = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            strange += !part.contains(x, y) && (picture.pixel(x, y) & 0xffffff) != groundColour;
    EXPECT_EQ(strange, 0);
}

TEST_F(X11EdgeWindowTest, itsRoundCornersShowWhatIsBelowAndNoBlack) {
    showAs(300, 24);
    const QRect part = pixels({300, 24});
    const QImage corner = ground.screen({part.left(), part.bottom() - 11, 12, 12});
    int clear = 0;
    for (int y = 0; y < corner.height(); ++y) {
        for (int x = 0; x < corner.width(); ++x) {
            const QRgb colour = corner.pixel(x, y);
            clear += (colour & 0xffffff) == groundColour;
            // Between blue and the ground with a compositor, between blue and black by half at most without one.
            EXPECT_GE(qBlue(colour), 0x33 - 1) << x << ' ' << y;
            EXPECT_TRUE(qBlue(colour) >= 126 || qGreen(colour) > 80)
                << x << ' ' << y << QColor(colour).name().toStdString();
        }
    }
    EXPECT_NEAR(clear, 31, 8); // (1 - pi/4) of the corner's square
}

TEST_F(X11EdgeWindowTest, whatIgnoresTheMouseIsAsIfItWereNotThere) {
    showAs(300, 24);
    const QPoint place = pixels({300, 24}).center();
    EXPECT_EQ(desktop.keyboard.windowAt(place.x(), place.y()), below);
    window->setIgnoresMouseEvents(false);
    desktop.click(place);
    EXPECT_TRUE(waitUntil([this] { return content->clicks == 1; }));
    window->setIgnoresMouseEvents(true);
    EXPECT_TRUE(waitUntil([&] { return desktop.keyboard.windowAt(place.x(), place.y()) == below; }));
}

TEST_F(X11EdgeWindowTest, itTakesTheMouseWhereItsFrameIsAndNowhereElseFromTheMomentItIsSet) {
    showAs(300, 24);
    window->setIgnoresMouseEvents(false);
    // Without a compositor it can take the mouse only where it is shown.
    window->setFrame(frame(465, 224), ground.isComposited() ? 2000ms : 0ms);
    const QRect part = pixels({465, 224});
    const auto takes = [this](QPoint place) { return desktop.keyboard.windowAt(place.x(), place.y()) != below; };
    EXPECT_TRUE(waitUntil([&] { return takes({part.center().x(), part.bottom() - 20}); }, 1000ms));
    EXPECT_FALSE(takes({part.center().x(), part.bottom() + 2}));
    EXPECT_FALSE(takes({part.left() - 3, 4}));
    EXPECT_FALSE(takes({part.right() + 3, 4}));
    window->setFrame(frame(300, 24), 0ms);
    EXPECT_TRUE(waitUntil([&] { return !takes({part.center().x(), 30}); }));
    EXPECT_TRUE(takes({part.center().x(), 20}));
}

TEST_F(X11EdgeWindowTest, growingIsEasedAndItsContentIsAlwaysAsLargeAsWhatIsShown) {
    showAs(300, 24);
    content->painted.clear();
    content->times.clear();
    const std::clock_t processor = std::clock();
    window->setFrame(frame(465, 224), 250ms);
    EXPECT_EQ(window->frame(), frame(465, 224));
    EXPECT_TRUE(waitUntil([this] { return content->size() == QSize(465, 224); }, 10s));
    EXPECT_TRUE(waitUntil([this] { return isShownAs(pixels({465, 224})); }));
    int slow = 0;
    for (qsizetype i = 1; i < content->times.size(); ++i)
        slow += content->times[i] - content->times[i - 1] > 20'000'000;
    std::printf("frames %d, later than 20 ms %d, processor %ld us\n", int(content->times.size()), slow,
                long((std::clock() - processor) * 1'000'000 / CLOCKS_PER_SEC));
    EXPECT_LE(content->painted.size(), 16) << "sixty a second";
    for (qsizetype i = 1; i < content->painted.size(); ++i) {
        EXPECT_GE(content->painted[i].height(), content->painted[i - 1].height());
        EXPECT_NEAR(content->painted[i].width(), 300 + (content->painted[i].height() - 24) * 165 / 200.0, 2);
    }
}

TEST_F(X11EdgeWindowTest, aChangeThatComesMeanwhileGoesOnFromWhatIsShown) {
    showAs(300, 24);
    window->setFrame(frame(300, 224), 200ms);
    ASSERT_TRUE(waitUntil([this] { return content->height() > 100; }));
    const int reached = content->height();
    content->painted.clear();
    window->setFrame(frame(300, 24), 200ms);
    EXPECT_TRUE(waitUntil([this] { return content->size() == QSize(300, 24); }));
    EXPECT_TRUE(waitUntil([this] { return isShownAs(pixels({300, 24})); }));
    for (const QSize &size : std::as_const(content->painted))
        EXPECT_LE(size.height(), reached);
}

TEST_F(X11EdgeWindowTest, nothingRunsOnceItHasArrived) {
    showAs(300, 24);
    window->setFrame(frame(300, 79), 100ms);
    ASSERT_TRUE(waitUntil([this] { return isShownAs(pixels({300, 79})); }));
    for (const QTimer *timer : content->window()->findChildren<QTimer *>())
        EXPECT_FALSE(timer->isActive());
    const qsizetype paintings = content->painted.size();
    (void)waitUntil([] { return false; }, 200ms);
    EXPECT_EQ(content->painted.size(), paintings);
}

TEST_F(X11EdgeWindowTest, theKeyboardStaysWhereItIsUntilItIsTakenAndGoesBackThere) {
    showAs(300, 24);
    const auto before = desktop.keyboard.focusedWindow();
    window->setIgnoresMouseEvents(false);
    desktop.click(pixels({300, 24}).center());
    ASSERT_TRUE(waitUntil([this] { return content->clicks == 1; }));
    EXPECT_EQ(desktop.keyboard.focusedWindow(), before);
    window->takeKeyboard();
    content->setFocus();
    ASSERT_TRUE(waitUntil([this] { return content->hasFocus(); }));
    desktop.type("abc");
    EXPECT_TRUE(waitUntil([this] { return content->typed == QLatin1String("abc"); })) << content->typed.toStdString();
    window->returnKeyboard();
    EXPECT_TRUE(waitUntil([&] { return desktop.keyboard.focusedWindow() == before; }));
}

TEST_F(X11EdgeWindowTest, aWindowThatGoesOutGivesTheKeyboardBack) {
    showAs(300, 24);
    const auto before = desktop.keyboard.focusedWindow();
    window->takeKeyboard();
    ASSERT_TRUE(waitUntil([&] { return desktop.keyboard.focusedWindow() == window->windowNumber(); }));
    window->orderOut();
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(waitUntil([&] { return desktop.keyboard.focusedWindow() == before; }));
    EXPECT_TRUE(waitUntil([this] { return shownAt({desktop.size().width() / 2, 4}) == QColor(groundColour); }));
}

TEST_F(X11EdgeWindowTest, itStandsAboveAWindowThatCameAfterItOnceItIsBroughtToTheFront) {
    showAs(300, 24);
    const auto above = ground.add(pixels({300, 24}), 0xcc0000);
    ASSERT_TRUE(waitUntil([this] { return shownAt(pixels({300, 24}).center()) == QColor(0xcc0000); }));
    window->orderFrontRegardless();
    EXPECT_TRUE(waitUntil([this] { return isShownAs(pixels({300, 24})); }));
    ground.destroy(above);
}

TEST_F(X11EdgeWindowTest, itsContentGoesWithIt) {
    const QPointer<QWidget> gone = content.data();
    window->orderFrontRegardless();
    window.reset();
    EXPECT_TRUE(gone.isNull());
}

TEST_F(X11EdgeWindowTest, aCompositorThatComesAndGoesMeanwhileChangesNothingThatIsSeen) {
    showAs(300, 79);
    for (int round = 0; round < 2; ++round) {
        QProcess picom;
        const bool isThere = ground.isComposited();
        if (!isThere)
            picom.start(QStringLiteral("picom"), {QStringLiteral("--backend"), QStringLiteral("xrender"),
                                                  QStringLiteral("--config"), QStringLiteral("/dev/null")});
        ASSERT_TRUE(waitUntil([this] { return ground.isComposited(); }));
        window->setFrame(frame(465, 224), 100ms);
        EXPECT_TRUE(waitUntil([this] { return isShownAs(pixels({465, 224})); }));
        if (isThere)
            return; // it is another's
        picom.kill();
        picom.waitForFinished();
        EXPECT_TRUE(waitUntil([this] { return isShownAs(pixels({465, 224})); }));
        window->setFrame(frame(300, 79), 100ms);
        EXPECT_TRUE(waitUntil([this] { return isShownAs(pixels({300, 79})); }));
    }
}

} // namespace
} // namespace tavrine

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
