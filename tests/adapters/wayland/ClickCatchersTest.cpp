// What is pressed beside a panel, on a compositor that tells no program what others get.
#include "adapters/wayland/ClickCatchers.h"

#include "adapters/wayland/KeyboardsOnScreen.h"
#include "adapters/wayland/LayerPanelWindow.h"
#include "adapters/wayland/LayerParts.h"
#include "adapters/wayland/WaylandEventMonitors.h"
#include "adapters/wayland/WaylandScreens.h"
#include "adapters/x11/ForeignWindow.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QMenu>
#include <QMouseEvent>
#include <QProcess>
#include <QTemporaryDir>
#include <QWindow>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::ForeignWindow;
using testing::waitUntil;

constexpr quint32 presses = eventMask::leftMouseDown | eventMask::rightMouseDown;

class Pressed final : public QWidget {
public:
    int presses = 0;

protected:
    void mousePressEvent(QMouseEvent *) override { ++presses; }
};

class ClickCatchersTest : public ::testing::Test {
protected:
    std::unique_ptr<PanelWindow> show(const QRectF &frame, const PanelDescription &description = {}) {
        auto panel = windows.makePanel(description);
        content = new Pressed;
        content->setFocusPolicy(Qt::StrongFocus);
        panel->setContentView(content);
        panel->setFrame(frame);
        panel->makeKeyAndOrderFront();
        return panel;
    }
    void watch() {
        monitor = monitors.addGlobalMonitor(presses, [this](const InputEvent &event) {
            told.push_back(event.type);
            places.push_back(screens.mouseLocation());
        });
    }
    [[nodiscard]] static qsizetype count() {
        const auto windows = QGuiApplication::topLevelWindows();
        return std::count_if(windows.begin(), windows.end(),
                             [](const QWindow *each) { return each->isVisible() && ClickCatchers::isCatcher(each); });
    }
    [[nodiscard]] bool areThere() {
        return waitUntil([] { return count() == QGuiApplication::screens().size(); });
    }
    [[nodiscard]] bool areGone() {
        return waitUntil([] { return count() == 0; });
    }
    [[nodiscard]] QPoint onLayout(QPointF place) {
        return screens.toolkitRect({place, QSizeF(0, 0)}).topLeft().toPoint();
    }
    /// Clicks until it is told, once for each click.
    [[nodiscard]] bool isTold(QPointF place, int button = BTN_LEFT) {
        return waitUntil([&] {
            told.clear();
            places.clear();
            hand.click(onLayout(place), button);
            return waitUntil([&] { return !told.empty(); }, 500ms);
        });
    }
    /// Clicks until it arrives in the panel that was shown last.
    [[nodiscard]] bool reachesPanel(QPointF place) {
        content->presses = 0;
        return waitUntil([&] {
            hand.click(onLayout(place));
            return waitUntil([&] { return content->presses > 0; }, 500ms);
        });
    }

    const bool isPlasma = qgetenv("XDG_CURRENT_DESKTOP") == "KDE";
    testing::WaylandHand hand;
    LayerParts parts;
    LayerPanelWindows windows{parts};
    WaylandScreens screens;
    KeyboardsOnScreen keyboards{parts.shell, screens};
    WaylandEventMonitors monitors{[this]() -> LayerParts & { return parts; }};
    std::unique_ptr<EventMonitor> monitor;
    Pressed *content = nullptr;
    std::vector<quint32> told;
    std::vector<QPointF> places;
};

TEST_F(ClickCatchersTest, aPressBesideAPanelIsToldWithItsPlace) {
    const auto panel = show({400, 300, 300, 200});
    watch();
    ASSERT_TRUE(areThere());
    ASSERT_TRUE(isTold({100, 100}));
    EXPECT_THAT(told, ::testing::ElementsAre(eventMask::leftMouseDown));
    EXPECT_EQ(places.at(0), QPointF(100, 100));
    ASSERT_TRUE(isTold({399, 400}, BTN_RIGHT)); // the last point before the panel
    EXPECT_THAT(told, ::testing::ElementsAre(eventMask::rightMouseDown));
    EXPECT_EQ(places.at(0), QPointF(399, 400));
}

TEST_F(ClickCatchersTest, aPressInAPanelIsThePanelsWhereverThatGoes) {
    const auto panel = show({400, 300, 300, 200});
    watch();
    ASSERT_TRUE(areThere());
    EXPECT_TRUE(reachesPanel({401, 301}));
    panel->setFrame({100, 50, 600, 400});
    EXPECT_TRUE(reachesPanel({101, 51}));
    EXPECT_TRUE(reachesPanel({699, 449}));
    EXPECT_THAT(told, ::testing::IsEmpty());
    panel->setFrame({400, 300, 300, 200});
    EXPECT_TRUE(isTold({101, 51}));
}

TEST_F(ClickCatchersTest, whatElseFloatsTakesItsOwnPresses) {
    const auto panel = show({400, 300, 300, 200});
    watch();
    ASSERT_TRUE(areThere());
    const auto toast =
        show({900, 500, 200, 100}, {.title = {}, .contentSize = {}, .canBecomeKey = false}); // comes later
    EXPECT_TRUE(reachesPanel({1000, 550}));
    EXPECT_THAT(told, ::testing::IsEmpty());
    toast->setIgnoresMouseEvents(true);
    EXPECT_TRUE(isTold({1000, 550}));
    toast->setIgnoresMouseEvents(false);
    EXPECT_TRUE(reachesPanel({1000, 550}));
    toast->orderOut();
    EXPECT_TRUE(isTold({1000, 550}));
}

/// What keeps this much of the screen's lower edge to itself. A press on it leaves a file.
class AtTheEdge {
public:
    explicit AtTheEdge(int height) {
        QFile config(m_folder.filePath(QStringLiteral("config")));
        EXPECT_TRUE(config.open(QIODevice::WriteOnly));
        config.write(QStringLiteral(R"({"position": "bottom", "height": %1, "modules-left": ["custom/key"],)"
                                    R"( "custom/key": {"format": "a key", "on-click": "touch %2"}})")
                         .arg(height)
                         .arg(pressed())
                         .toUtf8());
        config.close();
        m_bar.setProcessChannelMode(QProcess::ForwardedChannels);
        m_bar.start(QStringLiteral("waybar"), {QStringLiteral("--config"), config.fileName()});
    }
    ~AtTheEdge() {
        m_bar.terminate();
        m_bar.waitForFinished();
    }
    [[nodiscard]] bool isPressed() const { return QFile::exists(pressed()); }

private:
    [[nodiscard]] QString pressed() const { return m_folder.filePath(QStringLiteral("pressed")); }

    QTemporaryDir m_folder;
    QProcess m_bar;
};

TEST_F(ClickCatchersTest, aKeyboardOnTheScreenTakesItsOwnPressesAndABarDoesNot) {
    const auto isFree = [&](double height) {
        return waitUntil([&] { return screens.mainScreen()->visibleFrame.height() == height; });
    };
    const double whole = screens.mainScreen()->frame.height();
    const auto panel = show({400, 300, 300, 200});
    watch();
    ASSERT_TRUE(areThere());
    {
        const AtTheEdge keyboard(200);
        ASSERT_TRUE(isFree(whole - 200));
        EXPECT_TRUE(waitUntil([&] {
            hand.click(onLayout({20, 100}));
            return waitUntil([&] { return keyboard.isPressed(); }, 500ms);
        }));
        EXPECT_THAT(told, ::testing::IsEmpty());
        panel->orderOut(); // Plasma takes the keyboard to nobody with such a press; its own keyboards are of another
                           // kind
        ASSERT_TRUE(areGone());
        panel->makeKeyAndOrderFront();
        ASSERT_TRUE(areThere());
        EXPECT_TRUE(isTold({20, 210})); // beside both
    }
    ASSERT_TRUE(isFree(whole));
    EXPECT_TRUE(isTold({20, 100}));
    {
        const AtTheEdge bar(64);
        ASSERT_TRUE(isFree(whole - 64));
        EXPECT_FALSE(waitUntil([&] { return parts.shell.taken().contains(onLayout({20, 32})); }, 500ms));
        EXPECT_TRUE(isTold({20, 32}));
        EXPECT_FALSE(bar.isPressed());
    }
}

TEST_F(ClickCatchersTest, theyAreThereWhileAPressIsWaitedForAndAPanelHasTheKeyboard) {
    watch();
    const auto silent = show({900, 500, 200, 100}, {.title = {}, .contentSize = {}, .canBecomeKey = false});
    EXPECT_FALSE(waitUntil([] { return count() != 0; }, 300ms));
    const auto panel = show({400, 300, 300, 200});
    ASSERT_TRUE(areThere());
    monitor.reset();
    EXPECT_TRUE(areGone());
    monitor = monitors.addGlobalMonitor(eventMask::keyDown | eventMask::leftMouseUp, [](const InputEvent &) {});
    EXPECT_FALSE(waitUntil([] { return count() != 0; }, 300ms));
    watch();
    ASSERT_TRUE(areThere());
    panel->orderOut();
    EXPECT_TRUE(areGone());
    panel->makeKeyAndOrderFront();
    EXPECT_TRUE(areThere());
}

/// As a file chooser, which stands below everything that floats.
TEST_F(ClickCatchersTest, aLargeWindowThatCameLaterIsNotBehindThem) {
    const auto panel = show({400, 300, 300, 200});
    watch();
    ASSERT_TRUE(areThere());
    QWidget large;
    large.resize(500, 300);
    large.show();
    EXPECT_TRUE(areGone());
    large.hide();
    EXPECT_TRUE(areThere());
}

TEST_F(ClickCatchersTest, aQuestionIsNotBehindThem) {
    const auto panel = show({400, 300, 300, 200});
    watch();
    ASSERT_TRUE(areThere());
    QDialog question;
    question.setModal(true);
    (void)question.winId();
    question.windowHandle()->setTransientParent(content->window()->windowHandle());
    question.setGeometry(500, 300, 200, 100);
    question.show();
    EXPECT_TRUE(areGone());
    question.hide();
    EXPECT_TRUE(areThere());
}

TEST_F(ClickCatchersTest, whileAMenuIsOpenAPressBesideClosesThatAlone) {
    const auto panel = show({400, 300, 300, 200});
    watch();
    ASSERT_TRUE(areThere());
    QMenu menu(content);
    menu.addAction(QStringLiteral("An entry"));
    menu.addAction(QStringLiteral("Another"));
    menu.popup(content->mapToGlobal(QPoint(280, 180))); // beyond the panel's edge
    ASSERT_TRUE(menu.isVisible());
    const QPoint entry = menu.mapToGlobal(menu.actionGeometry(menu.actions().at(1)).center());
    EXPECT_TRUE(waitUntil([&, step = 0]() mutable { // it is reached there
        hand.move(entry + QPoint(step++ % 2, 0));
        return menu.activeAction() == menu.actions().at(1);
    }));
    hand.click(onLayout({100, 100}));
    EXPECT_TRUE(waitUntil([&] { return !menu.isVisible(); }));
    EXPECT_THAT(told, ::testing::IsEmpty());
    EXPECT_TRUE(isTold({100, 100}));
}

/// The press that ends them and its release are one click, of which the window below gets nothing; the next one is its.
TEST_F(ClickCatchersTest, whatIsPressedReachesNobodyElse) {
    ForeignWindow below(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(below.waitForFocus());
    const QPoint middle(640, 370);
    hand.click(middle); // sets the cursor where there is nothing yet
    ASSERT_TRUE(waitUntil([&] {
        hand.tap(KEY_B);
        return !below.text().isEmpty();
    }));
    const QString before = below.text();
    const auto panel = show({5, 5, 30, 20});
    monitor = monitors.addGlobalMonitor(presses, [&](const InputEvent &event) {
        told.push_back(event.type);
        panel->orderOut();
        monitor.reset();
    });
    // At the left of the text, where a click puts the cursor: of a window in the middle, or of one that fills the
    // screen.
    const QPoint start(isPlasma ? 392 : 3, middle.y());
    ASSERT_TRUE(waitUntil([&, step = 0]() mutable { // until they hear of the pointer
        const QPoint place = start + QPoint(0, step++ % 2);
        hand.move(place);
        return waitUntil([&] { return onLayout(screens.mouseLocation()) == place; }, 100ms);
    }));
    hand.press();
    ASSERT_TRUE(waitUntil([&] { return !told.empty(); }));
    EXPECT_FALSE(waitUntil([] { return count() == 0; }, 300ms)); // it is held
    hand.release();
    EXPECT_TRUE(areGone());
    ASSERT_TRUE(waitUntil([&] {
        hand.tap(KEY_E);
        return below.text().size() > before.size();
    }));
    EXPECT_TRUE(below.text().startsWith(before)) << below.text().toStdString();
    hand.click(start);
    EXPECT_TRUE(waitUntil([&] {
        hand.tap(KEY_D);
        return below.text().startsWith(QLatin1Char('d'));
    })) << below.text().toStdString();
}

/// As when the screen is locked meanwhile: the pointer comes back without the button.
TEST_F(ClickCatchersTest, aPressWhoseReleaseNeverComesEndsWithTheNextMove) {
    const auto panel = show({400, 300, 300, 200});
    monitor = monitors.addGlobalMonitor(presses, [&](const InputEvent &event) {
        told.push_back(event.type);
        panel->orderOut();
        monitor.reset();
    });
    ASSERT_TRUE(areThere());
    ASSERT_TRUE(waitUntil([&, step = 0]() mutable { // until they hear of the pointer
        const QPoint place(100, 600 + step++ % 2);
        hand.move(place);
        return waitUntil([&] { return onLayout(screens.mouseLocation()) == place; }, 100ms);
    }));
    hand.press();
    ASSERT_TRUE(waitUntil([&] { return !told.empty(); }));
    hand.move({110, 600});
    EXPECT_FALSE(waitUntil([] { return count() == 0; }, 300ms)); // it is held
    const auto all = QGuiApplication::topLevelWindows();
    for (QWindow *each : all)
        if (ClickCatchers::isCatcher(each)) {
            QMouseEvent move(QEvent::MouseMove, QPointF(100, 100), QPointF(100, 100), Qt::NoButton, Qt::NoButton,
                             Qt::NoModifier);
            QCoreApplication::sendEvent(each, &move);
        }
    EXPECT_TRUE(areGone());
    hand.release();
}

TEST_F(ClickCatchersTest, whatAnotherProgramDragsPasses) {
    QProcess dragger;
    dragger.start(QStringLiteral(TAVRINE_QT_DRAGGER), {QStringLiteral("/etc/hostname")});
    ASSERT_TRUE(dragger.waitForReadyRead(40'000));
    // Its uppermost field drags: of a window in the middle of the screen, or of one that fills it.
    const QPoint field(640, isPlasma ? 200 : 72);
    ASSERT_TRUE(waitUntil([&] {
        hand.dragAndHold(field, field + QPoint(40, 0));
        if (waitUntil([&] { return dragger.readAllStandardOutput().contains("drag"); }, 2s))
            return true;
        hand.release(); // it was not there yet
        return false;
    }));
    const auto panel = show({5, 5, 30, 20});
    watch();
    // They may come where the panel gets the keyboard meanwhile, and go again.
    EXPECT_TRUE(waitUntil([&, step = 0]() mutable {
        hand.move(field + QPoint(60 + step++ % 40, 30));
        return step > 40 && count() == 0;
    }));
    EXPECT_FALSE(waitUntil(
        [&, step = 0]() mutable {
            hand.move(field + QPoint(60 + step++ % 40, 30));
            return count() != 0;
        },
        500ms));
    hand.release();
    dragger.kill();
    dragger.waitForFinished();
}

TEST_F(ClickCatchersTest, whatThisProgramDragsPasses) {
    const auto panel = show({400, 300, 300, 200});
    watch();
    ASSERT_TRUE(areThere());
    parts.shell.setDragging(true);
    EXPECT_TRUE(areGone());
    parts.shell.setDragging(false);
    EXPECT_TRUE(areThere());
}

TEST_F(ClickCatchersTest, thePointerIsWhereItWasWhenTheyGo) {
    const auto panel = show({400, 300, 300, 200});
    watch();
    ASSERT_TRUE(areThere());
    ASSERT_TRUE(isTold({1000, 650}));
    panel->orderOut();
    ASSERT_TRUE(areGone());
    EXPECT_EQ(screens.mouseLocation(), QPointF(1000, 650));
}

} // namespace
} // namespace tavrine
