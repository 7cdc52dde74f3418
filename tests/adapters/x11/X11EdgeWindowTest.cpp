// Windows at the edge of a screen, as they stand on a real desktop: what is seen of them, and who gets the clicks. Run
// with and without a compositor and a window manager.
#include "adapters/x11/X11EdgeWindow.h"

#include "adapters/x11/ForeignWindow.h"
#include "adapters/x11/X11ApplicationActivator.h"
#include "adapters/x11/X11Screens.h"
#include "desktop/Desktop.h"
#include "support/ScreenClient.h"
#include "support/Wait.h"

#include <QApplication>
#include <QBackingStore>
#include <QElapsedTimer>
#include <QFile>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>
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
    /// The whole of it is blue, and beside it and at its round corners is what lies below.
    [[nodiscard]] bool isShownAs(const QRect &part) const {
        const auto isBlue = [this](QPoint place) { return shownAt(place) == QColor(notchColour); };
        const auto isGround = [this](QPoint place) { return shownAt(place) == QColor(groundColour); };
        return isBlue(part.topLeft()) && isBlue(part.topRight()) && isBlue(part.center()) &&
               isBlue({part.center().x(), part.bottom()}) && isGround(part.topLeft() - QPoint(2, 0)) &&
               isGround(part.topRight() + QPoint(2, 0)) && isGround({part.center().x(), part.bottom() + 2}) &&
               isGround(part.bottomLeft()) && isGround(part.bottomRight());
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
    X11EdgeWindows windows{[this]() -> X11ApplicationActivator & { return activator; }};
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
    // The server may hear of the click first: it comes by another connection.
    ASSERT_TRUE(waitUntil([&] { return desktop.keyboard.windowAt(place.x(), place.y()) != below; }));
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
    EXPECT_TRUE(waitUntil([&] { return takes({part.center().x(), part.bottom() - 20}); }));
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
    const qsizetype paintings = content->painted.size();
    (void)waitUntil([] { return false; }, 200ms);
    EXPECT_EQ(content->painted.size(), paintings);
}

/// What the server shows of a window is lost, and it says so: as when a window that covered it has gone, where the
/// server keeps no picture of what is covered.
void spoil(xcb_window_t window) {
    XcbLink link(10s);
    auto *const connection = link.connection();
    const xcb_gcontext_t context = link.newId();
    const std::uint32_t red = 0xffff0000;
    const xcb_rectangle_t all{0, 0, 550, 224};
    xcb_create_gc(connection, context, window, XCB_GC_FOREGROUND, &red);
    xcb_poly_fill_rectangle(connection, window, context, 1, &all);
    xcb_clear_area(connection, 1, window, 0, 0, 0, 0);
    ASSERT_TRUE(link.finish());
}

/// Of the largest size, for a small part that shows.
TEST_F(X11EdgeWindowTest, aWindowThatNobodyUsesKeepsNoPictureOfItselfAndPaintsItselfAllTheSame) {
    const auto hasPicture = [](const QWidget &view) { return view.backingStore()->size() == QSize(550, 224); };
    window->setIgnoresMouseEvents(false);
    showAs(300, 24);
    const auto other = windows.makeEdgeWindow(description());
    auto *const otherContent = new Notch;
    other->setContentView(otherContent);
    other->setFrame(frame(300, 24), 0ms);
    other->orderFrontRegardless();
    const auto later = [&] { return waitUntil([&] { return !hasPicture(*otherContent->window()); }); };
    ASSERT_TRUE(waitUntil([&] { return !otherContent->painted.isEmpty(); }));
    EXPECT_TRUE(later());
    EXPECT_TRUE(hasPicture(*content->window())) << "it takes the mouse";
    window->setIgnoresMouseEvents(true);
    EXPECT_TRUE(waitUntil([&] { return !hasPicture(*content->window()); }));
    other->orderOut();
    spoil(static_cast<xcb_window_t>(window->windowNumber()));
    EXPECT_TRUE(waitUntil([this] { return isShownAs(pixels({300, 24})); }));
    window->setFrame(frame(465, 224), 0ms);
    EXPECT_TRUE(waitUntil([this] { return isShownAs(pixels({465, 224})); }));
    EXPECT_TRUE(hasPicture(*content->window()));
    EXPECT_TRUE(waitUntil([&] { return !hasPicture(*content->window()); })) << "again";
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
    const auto above = ground.add(pixels({200, 12}), 0xcc0000);
    ASSERT_TRUE(waitUntil([this] { return shownAt(pixels({200, 12}).center()) == QColor(0xcc0000); }));
    window->orderFrontRegardless();
    EXPECT_TRUE(waitUntil([this] { return isShownAs(pixels({300, 24})); }));
    ground.destroy(above);
}

TEST_F(X11EdgeWindowTest, keptInFrontItStandsAboveAWindowOfAnotherProgramAndBelowThoseOfItsOwnThatCameAfterIt) {
    showAs(300, 24);
    const auto other = windows.makeEdgeWindow(description());
    other->setFrame(frame(200, 12), 0ms);
    other->setIgnoresMouseEvents(false);
    other->orderFrontRegardless();
    const auto above = ground.add(pixels({300, 24}), 0xcc0000);
    const auto topmost = [this](int y) { return desktop.keyboard.windowAt(desktop.size().width() / 2, y); };
    window->setIgnoresMouseEvents(false);
    ASSERT_TRUE(waitUntil([&] { return topmost(20) == above; }));
    other->keepInFront();
    window->keepInFront();
    EXPECT_TRUE(waitUntil([&] { return topmost(20) == window->windowNumber(); }));
    EXPECT_EQ(topmost(6), other->windowNumber());
    ground.destroy(above);
}

TEST_F(X11EdgeWindowTest, itsContentGoesWithIt) {
    const QPointer<QWidget> gone = content.data();
    window->orderFrontRegardless();
    window.reset();
    EXPECT_TRUE(gone.isNull());
}

TEST_F(X11EdgeWindowTest, aCompositorThatComesAndGoesMeanwhileChangesNothingThatIsSeen) {
    for (const bool isShownBefore : {true, false}) {
        if (isShownBefore)
            showAs(300, 79);
        QProcess picom;
        picom.start(QStringLiteral("picom"), {QStringLiteral("--backend"), QStringLiteral("xrender"),
                                              QStringLiteral("--config"), QStringLiteral("/dev/null")});
        ASSERT_TRUE(waitUntil([this] { return ground.isComposited(); }));
        if (!isShownBefore)
            showAs(300, 79);
        window->setFrame(frame(465, 224), 100ms);
        EXPECT_TRUE(waitUntil([this] { return isShownAs(pixels({465, 224})); }));
        picom.kill();
        picom.waitForFinished();
        EXPECT_TRUE(waitUntil([this] { return isShownAs(pixels({465, 224})); })) << isShownBefore;
        window->setFrame(frame(300, 79), 100ms);
        EXPECT_TRUE(waitUntil([this] { return isShownAs(pixels({300, 79})); })) << isShownBefore;
        window->orderOut();
    }
}

/// What stands at the top of a screen below it.
class BelowTheEdge : public X11EdgeWindowTest {
protected:
    void SetUp() override {
        X11EdgeWindowTest::SetUp();
        ground.setMapped(below, false);
    }
    /// A program's window with the keyboard, on a strict window manager too.
    quint32 windowWithKeyboard(testing::ForeignWindow &program) {
        EXPECT_TRUE(waitUntil([&] { return desktop.windowOf(program.processId()) != 0; }));
        const quint32 foreign = desktop.windowOf(program.processId());
        EXPECT_TRUE(waitUntil([&] {
            desktop.activate(foreign);
            (void)waitUntil([] { return false; }, 50ms);
            return desktop.activeWindow() == foreign;
        }));
        EXPECT_TRUE(program.waitForFocus());
        return foreign;
    }
    [[nodiscard]] QPoint middle() const { return pixels({300, 24}).center(); }
    void showAtRest() {
        window->setFrame(frame(300, 24), 0ms);
        window->orderFrontRegardless();
        ASSERT_TRUE(waitUntil([this] { return shownAt(middle()) == QColor(notchColour); }));
    }
    [[nodiscard]] bool hasManager() const { return desktop.windowManager() != 0; }
};

TEST_F(BelowTheEdge, aFullScreenProgramGetsItsClicksAndKeysAndTheWindowStaysAboveIt) {
    testing::ForeignWindow program(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    const quint32 foreign = windowWithKeyboard(program);
    showAtRest();
    desktop.setFullScreen(foreign, true);
    ASSERT_TRUE(waitUntil([&] { return desktop.geometry(foreign).size() == desktop.size(); }));
    window->orderFrontRegardless();
    EXPECT_TRUE(waitUntil([this] { return shownAt(middle()) == QColor(notchColour); }));
    desktop.click(middle());
    EXPECT_EQ(content->clicks, 0);
    desktop.type("abc");
    EXPECT_TRUE(program.waitForText(QStringLiteral("abc"), 10s)) << program.text().toStdString();
    EXPECT_EQ(desktop.activeWindow(), foreign);
}

TEST_F(BelowTheEdge, theProgramThatHadTheKeyboardGetsItBack) {
    testing::ForeignWindow program(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    static_cast<void>(windowWithKeyboard(program));
    showAtRest();
    window->takeKeyboard();
    content->setFocus();
    ASSERT_TRUE(waitUntil([this] { return content->hasFocus(); }));
    desktop.type("abc");
    ASSERT_TRUE(waitUntil([this] { return content->typed == QLatin1String("abc"); }));
    window->returnKeyboard();
    ASSERT_TRUE(waitUntil([this] { return desktop.keyboard.focusedWindow() != window->windowNumber(); }));
    desktop.type("def");
    EXPECT_TRUE(program.waitForText(QStringLiteral("def"), 10s)) << program.text().toStdString();
}

TEST_F(BelowTheEdge, noListOfTheWindowManagerHasIt) {
    testing::ForeignWindow program(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    const quint32 foreign = windowWithKeyboard(program);
    showAtRest();
    QProcess list;
    list.start(QStringLiteral("wmctrl"), {QStringLiteral("-l")});
    ASSERT_TRUE(list.waitForFinished(10000));
    EXPECT_FALSE(list.readAllStandardOutput().contains(title));
    desktop.keyboard.down(testing::key::leftAlt);
    desktop.keyboard.tap(testing::key::tab);
    (void)waitUntil([] { return false; }, 200ms);
    desktop.keyboard.up(testing::key::leftAlt);
    (void)waitUntil([] { return false; }, 100ms);
    EXPECT_EQ(desktop.activeWindow(), foreign) << "the only one to switch to";
}

TEST_F(BelowTheEdge, aPanelAtTheTopGetsItsClicks) {
    QTemporaryDir folder;
    const QString clicked = folder.filePath(QStringLiteral("clicked"));
    QFile settings(folder.filePath(QStringLiteral("tint2rc")));
    ASSERT_TRUE(settings.open(QIODevice::WriteOnly));
    settings.write("panel_items = P\npanel_position = top center horizontal\npanel_size = 100% 30\npanel_layer = top\n"
                   "button = new\nbutton_text = a button that is wide enough to lie below the middle of the screen\n"
                   "panel_padding = 300 0 0\nbutton_lclick_command = touch " +
                   clicked.toUtf8() + "\n");
    settings.close();
    QProcess panel;
    panel.start(QStringLiteral("tint2"), {QStringLiteral("-c"), settings.fileName()});
    ASSERT_TRUE(waitUntil([this] { return !desktop.windowsTitled(QStringLiteral("tint2")).empty(); }));
    showAtRest();
    EXPECT_TRUE(waitUntil([&] {
        desktop.click(middle());
        return QFile::exists(clicked);
    }));
    EXPECT_EQ(content->clicks, 0);
    EXPECT_EQ(shownAt(middle()), QColor(notchColour)) << "it is drawn above the panel";
    panel.kill();
    panel.waitForFinished();
}

TEST_F(BelowTheEdge, aWindowManagerThatIsReplacedChangesNothing) {
    showAtRest();
    QProcess manager;
    manager.start(QStringLiteral("openbox"), {QStringLiteral("--replace")});
    ASSERT_TRUE(waitUntil([&] { return desktop.windowManager() == manager.processId(); }));
    EXPECT_TRUE(waitUntil([this] { return shownAt(middle()) == QColor(notchColour); }));
    window->setFrame(frame(300, 79), 100ms);
    EXPECT_TRUE(waitUntil([this] { return shownAt({middle().x(), 70}) == QColor(notchColour); }));
    manager.kill();
    manager.waitForFinished();
    EXPECT_TRUE(waitUntil([this] { return shownAt(middle()) == QColor(notchColour); }));
    QProcess::startDetached(QStringLiteral("openbox"), {}); // for the tests that follow; it ends with the display
    EXPECT_TRUE(waitUntil([this] { return hasManager(); }));
}

TEST_F(BelowTheEdge, aScreenThatIsResizedWhileItGrowsLeavesItAtTheNewPlace) {
    showAtRest();
    window->setFrame(frame(465, 224), 400ms);
    ASSERT_TRUE(waitUntil([this] { return content->height() > 50; }));
    const auto xrandr = [](std::initializer_list<const char *> words) {
        QStringList arguments;
        for (const char *word : words)
            arguments.append(QLatin1String(word));
        EXPECT_EQ(QProcess::execute(QStringLiteral("xrandr"), arguments), 0);
    };
    xrandr({"--newmode", "small", "40", "800", "840", "968", "1056", "600", "601", "605", "628"});
    xrandr({"--addmode", "screen", "small"});
    xrandr({"--output", "screen", "--mode", "small"});
    EXPECT_TRUE(waitUntil([] { return QGuiApplication::primaryScreen()->geometry().size() == QSize(800, 600); }));
    window->setFrame(frame(465, 224), 250ms);
    EXPECT_TRUE(waitUntil([this] {
        return shownAt({400 - 200, 100}) == QColor(notchColour) && shownAt({400 + 200, 220}) == QColor(notchColour);
    }));
    EXPECT_EQ(content->size(), QSize(465, 224));
    xrandr({"--output", "screen", "--mode", "1280x800"});
    xrandr({"--delmode", "screen", "small"});
    xrandr({"--rmmode", "small"});
    EXPECT_TRUE(waitUntil([] { return QGuiApplication::primaryScreen()->geometry().size() == QSize(1280, 800); }));
}

/// Two monitors side by side, the right one with twice the pixels for a point. Run with that scale set.
TEST_F(X11EdgeWindowTest, twoScreensOfDifferentScaleHaveItInTheirOwnPixels) {
    const auto xrandr = [](const QStringList &arguments) {
        return QProcess::execute(QStringLiteral("xrandr"), arguments) == 0;
    };
    ASSERT_TRUE(xrandr({QStringLiteral("--setmonitor"), QStringLiteral("left"), QStringLiteral("1280/300x800/200+0+0"),
                        QStringLiteral("screen")}));
    ASSERT_TRUE(xrandr({QStringLiteral("--setmonitor"), QStringLiteral("right"),
                        QStringLiteral("1280/300x800/200+1280+0"), QStringLiteral("none")}));
    ASSERT_TRUE(waitUntil([this] { return screens.screens().size() == 2; }));
    for (const int screen : {0, 1, 0}) {
        const int scale = screen == 0 ? 1 : 2;
        ASSERT_EQ(screens.screens().at(screen).scale, scale);
        const auto part = [&](int width, int height) {
            return QRect(QPoint(640 + 1280 * screen - width * scale / 2, 0), QSize(width, height) * scale);
        };
        window->setFrame(frame(300, 24, screen), 0ms);
        window->orderFrontRegardless();
        window->setIgnoresMouseEvents(false);
        EXPECT_TRUE(waitUntil([&] { return isShownAs(part(300, 24)); })) << screen;
        EXPECT_EQ(content->size(), QSize(300, 24));
        window->setFrame(frame(464, 224, screen), 100ms);
        EXPECT_TRUE(waitUntil([&] { return isShownAs(part(464, 224)); })) << screen;
        const QRect whole = part(464, 224);
        const auto takes = [&](QPoint place) { return desktop.keyboard.windowAt(place.x(), place.y()) != below; };
        EXPECT_TRUE(waitUntil([&] { return takes(whole.center() + QPoint(0, whole.height() / 2 - 8)); }));
        EXPECT_TRUE(takes({whole.left() + 10, 10}));
        EXPECT_FALSE(takes({whole.left() - 3, 10}));
        EXPECT_FALSE(takes({whole.center().x(), whole.bottom() + 3}));
    }
    EXPECT_TRUE(xrandr({QStringLiteral("--delmonitor"), QStringLiteral("right")}));
    EXPECT_TRUE(xrandr({QStringLiteral("--delmonitor"), QStringLiteral("left")}));
}

} // namespace
} // namespace tavrine

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
