// Floating panels as windows of a real desktop: their frames, what a window manager and a compositor do to them, and
// what they take from it. Run under several of both.
#include "adapters/linux/QtTime.h"
#include "adapters/x11/X11ApplicationActivator.h"
#include "adapters/x11/X11PanelWindow.h"
#include "adapters/x11/X11Screens.h"
#include "desktop/Desktop.h"
#include "look/Look.h"
#include "look/ModalAlerts.h"
#include "look/Shadow.h"
#include "panels/FloatingPanel.h"
#include "panels/Placement.h"
#include "panels/ToastManager.h"
#include "support/Wait.h"

#include <QApplication>
#include <QBackingStore>
#include <QProcess>
#include <QScreen>
#include <QWidget>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::waitUntil;

constexpr auto title = "A panel";

/// The person chooses 800 by 600 for a while.
class SmallScreen {
public:
    SmallScreen() {
        xrandr({"--newmode", "small", "40", "800", "840", "968", "1056", "600", "601", "605", "628"});
        xrandr({"--addmode", "screen", "small"});
        xrandr({"--output", "screen", "--mode", "small"});
    }
    ~SmallScreen() {
        xrandr({"--output", "screen", "--mode", "1280x800"});
        xrandr({"--delmode", "screen", "small"});
        xrandr({"--rmmode", "small"});
        EXPECT_TRUE(waitUntil([] { return QGuiApplication::primaryScreen()->geometry().size() == QSize(1280, 800); }));
    }
    SmallScreen(const SmallScreen &) = delete;
    SmallScreen &operator=(const SmallScreen &) = delete;

private:
    static void xrandr(std::initializer_list<const char *> words) {
        QStringList arguments;
        for (const char *word : words)
            arguments.append(QLatin1String(word));
        EXPECT_EQ(QProcess::execute(QStringLiteral("xrandr"), arguments), 0);
    }
};

class X11PanelFrames : public ::testing::Test {
protected:
    static FloatingPanel::Traits traits() {
        return {
            .description = {.title = QLatin1String(title), .contentSize = {320, 450}, .isMovableByBackground = true},
            .placement = [](const Screens &all, QSizeF size) -> std::optional<QRectF> {
                const auto screen = all.mainScreen();
                return screen ? std::optional(centredIn(screen->visibleFrame, size)) : std::nullopt;
            },
            .placed = FloatingPanel::Placed::once,
            .motion = {.fadeIn = 100ms, .fadeOut = 150ms, .timingOut = look::easeIn, .shrinksTo = 0.6}};
    }
    void settle(std::chrono::milliseconds length = 150ms) {
        (void)waitUntil([] { return false; }, length);
    }
    bool show() {
        panel.show();
        return waitUntil([this] { return desktop.hasKeyboard(title); });
    }
    bool goesOff() {
        return waitUntil([this] { return !desktop.isShown(title); });
    }
    [[nodiscard]] quint32 window() const {
        const auto all = desktop.windowsTitled(QLatin1String(title));
        return all.empty() ? 0 : all.front();
    }
    /// Of the panel itself on the screen, in the server's coordinates.
    [[nodiscard]] QRect onScreen() const {
        return desktop.geometry(window()).marginsRemoved(windows.isComposited() ? look::shadowMargins : QMargins());
    }
    [[nodiscard]] QRect wanted() const {
        const QRectF frame = panel.frame();
        return QRectF(QPointF(frame.x(), desktop.size().height() - maxY(frame)), frame.size()).toRect();
    }

    testing::Desktop desktop;
    QtTime time;
    look::Look look{time};
    X11ApplicationActivator activator;
    X11PanelWindows windows{activator};
    X11Screens screens;
    FloatingPanel panel{{windows, screens, time}, traits()};
};

TEST_F(X11PanelFrames, aPanelThatShrinksAwayComesBackInItsSizeEachTime) {
    panel.build(new QWidget);
    for (int round = 0; round < 6; ++round) {
        ASSERT_TRUE(show()) << round;
        settle();
        EXPECT_EQ(panel.frame().size(), QSizeF(320, 450)) << round;
        EXPECT_EQ(onScreen(), wanted()) << round;
        panel.dismiss(Dismissal::animated);
        ASSERT_TRUE(goesOff()) << round;
    }
}

TEST_F(X11PanelFrames, aPanelThatIsHiddenForAWhileGivesItsPictureBackAndPaintsItAnew) {
    auto *content = new QWidget;
    content->setAutoFillBackground(true);
    content->setPalette(QPalette(Qt::white, Qt::darkGreen));
    panel.build(content);
    const auto shown = [this] {
        return QGuiApplication::primaryScreen()->grabWindow(0).toImage().pixelColor(wanted().center());
    };
    ASSERT_TRUE(show());
    ASSERT_TRUE(waitUntil([&] { return shown() == QColor(Qt::darkGreen); }));
    panel.dismiss(Dismissal::animated);
    ASSERT_TRUE(goesOff());
    const QBackingStore *picture = content->window()->backingStore();
    ASSERT_NE(picture, nullptr);
    EXPECT_FALSE(picture->size() == QSize(1, 1)) << "often it is wanted again soon";
    EXPECT_TRUE(waitUntil([picture] { return picture->size() == QSize(1, 1); }, std::chrono::seconds(3)));
    ASSERT_TRUE(show());
    EXPECT_TRUE(waitUntil([&] { return shown() == QColor(Qt::darkGreen); })) << shown().name().toStdString();
}

TEST_F(X11PanelFrames, aPanelThatIsLargerThanTheScreenStandsInItsFreePart) {
    FloatingPanel::Traits large = traits();
    large.description.contentSize = QSizeF(desktop.size()) * 1.1;
    FloatingPanel whole({windows, screens, time}, large);
    whole.build(new QWidget);
    whole.show();
    ASSERT_TRUE(waitUntil([this] { return desktop.hasKeyboard(title); }));
    settle(300ms);
    const Screen screen = screens.screens().constFirst();
    EXPECT_EQ(QSizeF(desktop.geometry(window()).size()), screen.visibleFrame.size()) << "without room for a shadow";
    EXPECT_TRUE(QRect(QPoint(), desktop.size()).contains(desktop.geometry(window())));
}

TEST_F(X11PanelFrames, aPanelShownAgainWhileItShrinksHasItsSize) {
    panel.build(new QWidget);
    for (int round = 0; round < 6; ++round) {
        ASSERT_TRUE(show()) << round;
        settle();
        panel.dismiss(Dismissal::animated);
        settle(std::chrono::milliseconds(20 + 25 * round));
        ASSERT_TRUE(show()) << round;
        settle();
        EXPECT_EQ(onScreen(), wanted()) << round;
        EXPECT_EQ(onScreen().size(), QSize(320, 450)) << round;
    }
}

TEST_F(X11PanelFrames, aPanelThatIsClosedFromOutsideAsksItsToolAndStays) {
    panel.build(new QWidget);
    int wishes = 0;
    panel.setOnClosed([&] { ++wishes; });
    ASSERT_TRUE(show());
    desktop.close(window());
    EXPECT_TRUE(waitUntil([&] { return wishes == 1; }));
    EXPECT_TRUE(panel.isVisible());
    EXPECT_TRUE(desktop.isShown(title));
}

TEST_F(X11PanelFrames, aPanelThatThePersonDragsByTheWindowManagersMeansIsRemembered) {
    panel.build(new QWidget);
    int moves = 0;
    panel.setOnMoved([&] { ++moves; });
    ASSERT_TRUE(show());
    settle(600ms);
    const QRectF before = panel.frame();
    const QPoint middle = onScreen().center();
    desktop.keyboard.movePointer(middle.x(), middle.y());
    desktop.keyboard.down(testing::key::leftAlt);
    settle(50ms);
    desktop.keyboard.press(1);
    // A window manager that gets no turn would miss the steps: they go on once it follows.
    const QPoint still = onScreen().topLeft();
    int nudges = 0;
    EXPECT_TRUE(waitUntil([&] {
        desktop.keyboard.movePointer(middle.x() - 10 - 10 * (++nudges % 2), middle.y() + 10);
        return onScreen().topLeft() != still;
    }));
    for (int step = 1; step <= 10; ++step) {
        desktop.keyboard.movePointer(middle.x() - 10 * step, middle.y() + 5 * step);
        settle(20ms);
    }
    desktop.keyboard.release(1);
    desktop.keyboard.up(testing::key::leftAlt);
    EXPECT_TRUE(waitUntil([&] { return moves > 0; }));
    // The window manager lets go of the pointer when it has come to the last step, and the panel hears of it after
    // that.
    ASSERT_TRUE(waitUntil([&] { return desktop.keyboard.grabPointer(); }));
    desktop.keyboard.ungrabPointer();
    EXPECT_TRUE(waitUntil([&] {
        return std::abs(panel.frame().x() - before.x() + 100) <= 50 &&
               std::abs(panel.frame().y() - before.y() + 50) <= 25 && onScreen() == wanted();
    })) << panel.frame().x()
        << ' ' << panel.frame().y();
    settle(400ms);
    const QRectF dragged = panel.frame();
    panel.dismiss(Dismissal::animated);
    ASSERT_TRUE(goesOff());
    ASSERT_TRUE(show());
    settle();
    EXPECT_EQ(panel.frame(), dragged);
    EXPECT_EQ(onScreen(), wanted());
}

TEST_F(X11PanelFrames, aScreenThatShrinksUnderAPanelTakesItAlong) {
    panel.build(new QWidget);
    ASSERT_TRUE(show());
    panel.window()->setFrame({1280 - 320, 20, 320, 450});
    settle();
    const SmallScreen small;
    const bool follows =
        waitUntil([&] { return desktop.size() == QSize(800, 600) && QRect(0, 0, 800, 600).contains(onScreen()); });
    const QRect place = onScreen();
    EXPECT_TRUE(follows) << place.x() << ' ' << place.y();
    EXPECT_EQ(onScreen(), wanted());
}

TEST_F(X11PanelFrames, aProgramThatGivesWayKeepsItsPanels) {
    panel.build(new QWidget);
    ASSERT_TRUE(show());
    QWidget ordinary;
    ordinary.setWindowTitle(QStringLiteral("Ordinary"));
    ordinary.show();
    ASSERT_TRUE(waitUntil([&] { return desktop.isShown("Ordinary"); }));
    desktop.clear(window(), "_NET_WM_STATE"); // as before the window manager has come to what the panel told it
    activator.hide();
    EXPECT_TRUE(waitUntil([&] { return !desktop.isShown("Ordinary"); }));
    QWidget later;
    later.setWindowTitle(QStringLiteral("Later"));
    later.show();
    ASSERT_TRUE(waitUntil([&] { return desktop.isShown("Later"); })); // and so all before it is done
    EXPECT_TRUE(desktop.isShown(title));
}

TEST_F(X11PanelFrames, aPanelWithoutTheKeyboardShowsItsToolTips) {
    class Content final : public QWidget {
    public:
        int toolTips = 0;

    protected:
        bool event(QEvent *event) override {
            toolTips += event->type() == QEvent::ToolTip ? 1 : 0;
            return QWidget::event(event);
        }
    };
    auto *content = new Content;
    auto card = traits();
    card.description.canBecomeKey = false;
    FloatingPanel other({windows, screens, time}, card);
    other.build(content);
    other.show();
    ASSERT_TRUE(waitUntil([&] { return desktop.isShown(title); }));
    settle();
    const QPoint middle = onScreen().center();
    desktop.keyboard.movePointer(middle.x() - 20, middle.y());
    settle();
    desktop.keyboard.movePointer(middle.x(), middle.y());
    EXPECT_TRUE(waitUntil([&] { return content->toolTips > 0; }));
}

TEST_F(X11PanelFrames, aQuestionStandsBeforeThePanelThatAsksAndGoesWithIt) {
    panel.build(new QWidget);
    ASSERT_TRUE(show());
    settle();
    const quint32 asking = window();
    bool isBefore = false;
    bool isAsking = false;
    time.asyncAfter(500ms, [&] {
        const auto questions = desktop.windowsTitled(QStringLiteral("Keep?"));
        isBefore = questions.size() == 1 && desktop.topWindowAt(onScreen().center()) == questions.front() &&
                   desktop.keyboard.focusedWindow() == questions.front() && questions.front() != asking;
        isAsking = windows.isAsking();
        panel.release(Dismissal::atOnce);
    });
    time.asyncAfter(5s, [] { // a question that nobody answers would stand for ever
        if (QWidget *question = QApplication::activeModalWidget())
            question->close();
    });
    look::ModalAlerts alerts;
    const auto answer = alerts.runModalForText({QStringLiteral("Keep?"), {}, {QStringLiteral("Save"), {}}}, 200, 60);
    EXPECT_TRUE(isBefore);
    EXPECT_TRUE(isAsking);
    EXPECT_FALSE(answer);
    EXPECT_FALSE(windows.isAsking());
    EXPECT_TRUE(waitUntil([&] { return desktop.windowsTitled(QStringLiteral("Keep?")).empty(); }));
}

TEST_F(X11PanelFrames, aPanelCastsAShadowWhereOneCanBeSeen) {
    QWidget ground(nullptr, Qt::Window | Qt::BypassWindowManagerHint);
    ground.setStyleSheet(QStringLiteral("background: white"));
    ground.setGeometry(0, 0, 1280, 800);
    ground.show();
    ground.lower();
    auto *content = new QWidget;
    content->setStyleSheet(QStringLiteral("background: rgb(10, 200, 30)"));
    panel.build(content);
    ASSERT_TRUE(show());
    settle(400ms);
    const QRect place = onScreen();
    const QImage picture = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    const auto lightness = [&](QPoint point) { return picture.pixelColor(point).lightness(); };
    const QPoint below(place.center().x(), place.bottom() + 8);
    EXPECT_EQ(picture.pixelColor(place.center()), QColor(10, 200, 30));
    if (windows.isComposited()) {
        EXPECT_LT(lightness(below), 235);
        EXPECT_LT(lightness({place.left() - 6, place.center().y()}), 250);
    } else {
        EXPECT_EQ(lightness(below), 255);
    }
    EXPECT_EQ(lightness({place.left() - 60, place.center().y()}), 255);
    // It takes no clicks.
    EXPECT_NE(desktop.topWindowAt(below), window());
    EXPECT_EQ(desktop.topWindowAt(place.center()), window());
}

TEST_F(X11PanelFrames, aToastIsAsLargeAsItIsTold) {
    ToastManager toasts(time, screens, windows, [](const QString &, const QString &) { return new QWidget; });
    toasts.show(QStringLiteral("A toast"), QString());
    const QPoint middle(desktop.size().width() / 2, desktop.size().height() - 155);
    ASSERT_TRUE(waitUntil([&] { return desktop.overlayAt(middle) != 0; }));
    const quint32 toast = desktop.overlayAt(middle);
    int looks = 0;
    (void)waitUntil(
        [&] {
            const QSize size = desktop.geometry(toast).size();
            EXPECT_EQ(size, QSize(250, 60));
            ++looks;
            return size != QSize(250, 60);
        },
        400ms); // it rises meanwhile, by parts of points
    EXPECT_GT(looks, 10);
}

} // namespace
} // namespace tavrine

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
