// Keys that nobody gets under a Wayland compositor: typed by the hand, looked for in other programs, in shortcuts of
// the compositor's and in panels of our own.
#include "adapters/wayland/WaylandEventTap.h"

#include "adapters/wayland/KeyboardOwner.h"
#include "adapters/wayland/LayerPanelWindow.h"
#include "adapters/wayland/LayerParts.h"
#include "adapters/wayland/WaylandWindows.h"
#include "adapters/x11/ForeignWindow.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

#include <QApplication>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QFile>
#include <QKeyEvent>
#include <QPointer>
#include <QSet>
#include <QTemporaryDir>
#include <QWidget>

#include <gmock/gmock.h>
#include <wayland/wlr-input-inhibitor-unstable-v1.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using State = EventTap::State;
using testing::ForeignWindow;
using testing::waitUntil;

constexpr int kinds[] = {KEY_V,       KEY_B,        KEY_ESC,          KEY_BACKSPACE, KEY_ENTER,  KEY_TAB,
                         KEY_LEFTALT, KEY_LEFTMETA, KEY_BRIGHTNESSUP, KEY_MUTE,      KEY_DELETE, KEY_PRINT};

void settle(std::chrono::milliseconds length = 200ms) {
    (void)waitUntil([] { return false; }, length);
}

QByteArray swaymsg(const QString &command) {
    QProcess process;
    process.start(QStringLiteral("swaymsg"), {QStringLiteral("--"), command});
    process.waitForFinished(10'000);
    return process.readAllStandardOutput();
}

class WaylandEventTapTest : public ::testing::Test {
protected:
    WaylandEventTapTest() { hand.tap(KEY_LEFTSHIFT); } // the first key of a new keyboard is lost

    void create() {
        changes = 0;
        tap = taps.create([this] { ++changes; });
        ASSERT_TRUE(tap);
    }
    void start() {
        create();
        ASSERT_TRUE(becomes(State::dropping)); // which is told in a turn of its own
        changes = 0;
    }
    [[nodiscard]] bool isHeardUntilTheStart(ForeignWindow &field) {
        if (!field.waitForFocus() || !comesToBeHeard(field))
            return false;
        start();
        settle();
        return true;
    }
    [[nodiscard]] bool becomes(State state) {
        return waitUntil([&] { return tap->state() == state && changes > 0; });
    }
    [[nodiscard]] bool isHeard(ForeignWindow &field) {
        const QString before = field.text();
        hand.tap(KEY_V);
        return field.waitForText(before + QLatin1Char('v'), 300ms);
    }
    [[nodiscard]] bool comesToBeHeard(ForeignWindow &field) {
        return waitUntil([&] { return isHeard(field); });
    }
    void typeEverything() {
        for (const int key : kinds)
            hand.tap(key);
        hand.chord({KEY_LEFTCTRL, KEY_V});
        hand.chord({KEY_LEFTALT, KEY_TAB});
        hand.chord({KEY_LEFTALT, KEY_F4});
        hand.chord({KEY_LEFTSHIFT, KEY_LEFTCTRL, KEY_A});
    }

    testing::WaylandHand hand;
    LayerParts parts;
    WaylandEventTaps taps{std::make_shared<WaylandReader>(), parts.stack};
    std::unique_ptr<EventTap> tap;
    int changes = 0;
};

struct Kind {
    const char *name;
    QString command;
    QStringList arguments;
};

class WaylandEventTapAndProgramTest : public WaylandEventTapTest, public ::testing::WithParamInterface<Kind> {};
INSTANTIATE_TEST_SUITE_P(
    Of, WaylandEventTapAndProgramTest,
    ::testing::Values(
        Kind{"Gtk", QStringLiteral(TAVRINE_GTK_ENTRY), {}}, Kind{"Qt", QStringLiteral(TAVRINE_QT_LINE_EDIT), {}},
        Kind{"X11", QStringLiteral("env"), {QStringLiteral("GDK_BACKEND=x11"), QStringLiteral(TAVRINE_GTK_ENTRY)}}),
    [](const auto &each) { return std::string(each.param.name); });

TEST_P(WaylandEventTapAndProgramTest, noKeyReachesItAndEverythingDoesAfterwards) {
    ForeignWindow field(GetParam().command, GetParam().arguments);
    ASSERT_TRUE(isHeardUntilTheStart(field));
    const QString before = field.text();
    typeEverything();
    settle();
    EXPECT_EQ(field.text(), before);
    EXPECT_EQ(tap->state(), State::dropping);
    EXPECT_EQ(changes, 0);
    tap.reset();
    EXPECT_TRUE(comesToBeHeard(field));
    EXPECT_EQ(field.text().count(QLatin1Char('v')), field.text().size()) << field.text().toStdString();
}

TEST_P(WaylandEventTapAndProgramTest, theMouseIsFreeAndAClickIntoItsWindowEndsNothing) {
    ForeignWindow field(GetParam().command, GetParam().arguments);
    ASSERT_TRUE(isHeardUntilTheStart(field));
    const QString before = field.text();
    for (int clicks = 0; clicks < 3; ++clicks) {
        hand.click(hand.layout().center());
        settle();
        typeEverything();
        settle();
    }
    EXPECT_EQ(field.text(), before);
    EXPECT_EQ(tap->state(), State::dropping);
    EXPECT_EQ(changes, 0);
}

TEST_P(WaylandEventTapAndProgramTest, aKeyThatIsDownWhenItBeginsOrEndsIsForNobody) {
    ForeignWindow field(GetParam().command, GetParam().arguments);
    ASSERT_TRUE(field.waitForFocus());
    ASSERT_TRUE(comesToBeHeard(field));
    hand.down(KEY_A);
    start();
    settle();
    const QString before = field.text();
    settle(1s); // it would repeat
    hand.up(KEY_A);
    hand.down(KEY_S);
    settle();
    tap.reset();
    settle(1s);
    EXPECT_EQ(field.text(), before);
    hand.up(KEY_S);
    EXPECT_TRUE(comesToBeHeard(field));
    EXPECT_FALSE(field.text().contains(QLatin1Char('s')));
}

TEST_F(WaylandEventTapTest, whatIsStillDownAfterItsEndKeepsTheKeyboardForAMomentOnly) {
    ForeignWindow field(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(field.waitForFocus());
    start();
    hand.down(KEY_LEFTALT); // a cloth lies on it
    settle();
    tap.reset();
    settle();
    EXPECT_FALSE(isHeard(field));
    EXPECT_TRUE(waitUntil([&] {
        hand.tap(KEY_F);
        hand.up(KEY_LEFTALT);
        return isHeard(field);
    }));
}

/// Keys that the compositor obeys itself.
class Shortcuts {
public:
    virtual ~Shortcuts() = default;
    virtual void press() = 0;
    /// Which of them have been obeyed since the last question.
    [[nodiscard]] virtual QSet<QByteArray> obeyed() = 0;
    [[nodiscard]] virtual QSet<QByteArray> all() const = 0;
};

class SwaysShortcuts final : public Shortcuts {
public:
    explicit SwaysShortcuts(testing::WaylandHand &hand) : m_hand(hand) {
        for (const auto &[keys, name] :
             {std::pair("Mod4+t", "chord"), {"XF86AudioMute", "media"}, {"--release Alt_L", "tap"}})
            swaymsg(
                QStringLiteral("bindsym %1 exec echo %2 >> %3").arg(QLatin1String(keys), QLatin1String(name), m_path));
    }
    ~SwaysShortcuts() override {
        for (const char *keys : {"Mod4+t", "XF86AudioMute", "--release Alt_L"})
            swaymsg(QStringLiteral("unbindsym %1").arg(QLatin1String(keys)));
    }
    void press() override {
        m_hand.chord({KEY_LEFTMETA, KEY_T});
        m_hand.tap(KEY_MUTE);
        m_hand.tap(KEY_LEFTALT);
    }
    [[nodiscard]] QSet<QByteArray> obeyed() override {
        QFile file(m_path);
        QSet<QByteArray> names;
        if (file.open(QIODevice::ReadWrite)) {
            const auto lines = file.readAll().split('\n');
            names = {lines.begin(), lines.end()};
            names.remove(QByteArray());
            file.resize(0);
        }
        return names;
    }
    [[nodiscard]] QSet<QByteArray> all() const override { return {"chord", "media", "tap"}; }

private:
    testing::WaylandHand &m_hand;
    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath(QStringLiteral("obeyed"));
};

/// A lone modifier, which calls a method of ours, and the keys of the second desktop and the first.
class KWinsShortcuts final : public Shortcuts, public QDBusVirtualObject {
public:
    explicit KWinsShortcuts(testing::WaylandHand &hand) : m_hand(hand) {
        QFile file(qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/kwinrc"));
        EXPECT_TRUE(file.open(QIODevice::Append));
        file.write("\n[ModifierOnlyShortcuts]\nAlt=" + m_bus.baseService().toUtf8() + ",/tap,org.test,Tapped\n");
        file.close();
        m_bus.registerVirtualObject(QStringLiteral("/tap"), this);
        ask(QStringLiteral("/KWin"), QStringLiteral("org.kde.KWin"), QStringLiteral("reconfigure"), {});
        ask(desktops(), manager(), QStringLiteral("createDesktop"), {1U, QStringLiteral("second")});
        m_desktop = desktop();
    }
    ~KWinsShortcuts() override { m_bus.unregisterObject(QStringLiteral("/tap")); }
    void press() override {
        m_hand.tap(KEY_LEFTALT);
        m_isOnSecond = !m_isOnSecond;
        m_hand.chord({KEY_LEFTCTRL, m_isOnSecond ? KEY_F2 : KEY_F1});
    }
    [[nodiscard]] QSet<QByteArray> obeyed() override {
        QSet<QByteArray> names;
        if (std::exchange(m_taps, 0) > 0)
            names.insert("tap");
        if (const QString now = desktop(); std::exchange(m_desktop, now) != now)
            names.insert("chord");
        return names;
    }
    [[nodiscard]] QSet<QByteArray> all() const override { return {"chord", "tap"}; }

    [[nodiscard]] QString introspect(const QString & /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage & /*message*/, const QDBusConnection & /*connection*/) override {
        ++m_taps;
        return true;
    }

private:
    static QString desktops() { return QStringLiteral("/VirtualDesktopManager"); }
    static QString manager() { return QStringLiteral("org.kde.KWin.VirtualDesktopManager"); }
    QVariant ask(const QString &path, const QString &interface, const QString &method, const QVariantList &arguments) {
        auto message = QDBusMessage::createMethodCall(QStringLiteral("org.kde.KWin"), path, interface, method);
        message.setArguments(arguments);
        return m_bus.call(message).arguments().value(0);
    }
    [[nodiscard]] QString desktop() {
        const QVariant answer = ask(desktops(), QStringLiteral("org.freedesktop.DBus.Properties"),
                                    QStringLiteral("Get"), {manager(), QStringLiteral("current")});
        return answer.value<QDBusVariant>().variant().toString();
    }

    testing::WaylandHand &m_hand;
    QDBusConnection m_bus = QDBusConnection::sessionBus();
    QString m_desktop;
    bool m_isOnSecond = false;
    int m_taps = 0;
};

TEST_F(WaylandEventTapTest, theCompositorsOwnShortcutsDieAndLiveAgain) {
    const bool isSway = qEnvironmentVariableIsSet("SWAYSOCK");
    const std::unique_ptr<Shortcuts> shortcuts =
        isSway ? std::unique_ptr<Shortcuts>(std::make_unique<SwaysShortcuts>(hand))
               : std::make_unique<KWinsShortcuts>(hand);
    const auto allAreObeyed = [&] {
        shortcuts->press();
        QSet<QByteArray> obeyed;
        return waitUntil([&] { return obeyed.unite(shortcuts->obeyed()) == shortcuts->all(); }, 2s);
    };
    ASSERT_TRUE(waitUntil(allAreObeyed));
    start();
    for (int times = 0; times < 2; ++times) {
        shortcuts->press();
        settle(400ms);
        EXPECT_EQ(shortcuts->obeyed(), QSet<QByteArray>());
    }
    tap.reset();
    EXPECT_TRUE(waitUntil(allAreObeyed));
}

/// What it was told by the keyboard.
class Content final : public QWidget {
public:
    Content() { setFocusPolicy(Qt::StrongFocus); }
    QString typed;

protected:
    void keyPressEvent(QKeyEvent *event) override { typed += event->text(); }
};

[[nodiscard]] bool comesToHear(const Content &content, testing::WaylandHand &hand) {
    return waitUntil([&, before = content.typed.size()] {
        hand.tap(KEY_P);
        return content.typed.size() > before;
    });
}

[[nodiscard]] std::unique_ptr<PanelWindow> showPanel(LayerParts &parts, const QRectF &frame,
                                                     QPointer<Content> &content) {
    auto panel = LayerPanelWindows(parts).makePanel({.title = {}, .contentSize = frame.size()});
    panel->setContentView(content = new Content);
    panel->setFrame(frame);
    panel->makeKeyAndOrderFront();
    return panel;
}

/// A panel of a program that knows nothing of this one's.
struct OtherPanel {
    [[nodiscard]] bool comesToHear(testing::WaylandHand &hand) const { return tavrine::comesToHear(*content, hand); }
    LayerParts parts;
    QPointer<Content> content;
    std::unique_ptr<PanelWindow> panel = showPanel(parts, {300, 300, 100, 100}, content);
};

TEST_F(WaylandEventTapTest, panelsOfOurOwnLendTheKeyboardAndGetItBack) {
    QPointer<Content> first;
    QPointer<Content> second;
    const auto before = showPanel(parts, {100, 100, 200, 200}, first);
    ASSERT_TRUE(comesToHear(*first, hand));
    start();
    settle();
    first->typed.clear();
    typeEverything();
    const auto later = showPanel(parts, {500, 100, 200, 200}, second);
    settle();
    hand.click(hand.layout().topLeft() + QPoint(600, hand.layout().height() - 200)); // into it
    settle();
    typeEverything();
    settle();
    EXPECT_EQ(first->typed + second->typed, QString());
    EXPECT_EQ(tap->state(), State::dropping);
    tap.reset();
    EXPECT_TRUE(comesToHear(*second, hand));
    later->orderOut();
    EXPECT_TRUE(comesToHear(*first, hand));
}

/// As of a launcher: where its layer counts it is obeyed, elsewhere who came last.
TEST_F(WaylandEventTapTest, aPanelOfAnotherProgramEndsItOrGetsNothing) {
    start();
    const OtherPanel other;
    if (qEnvironmentVariableIsSet("SWAYSOCK")) {
        EXPECT_TRUE(becomes(State::ended));
        EXPECT_TRUE(other.comesToHear(hand));
        EXPECT_EQ(changes, 1);
        return;
    }
    settle(500ms);
    typeEverything();
    settle(1500ms);
    EXPECT_EQ(tap->state(), State::dropping);
    EXPECT_EQ(other.content->typed, QString());
}

TEST_F(WaylandEventTapTest, ofTwoThatWantTheKeyboardOneGetsIt) {
    LayerStack othersStack;
    WaylandEventTaps others(std::make_shared<WaylandReader>(), othersStack);
    ForeignWindow field(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(field.waitForFocus());
    start();
    const auto other = others.create([] {});
    ASSERT_TRUE(other);
    EXPECT_TRUE(waitUntil([&] { return tap->state() == State::ended || other->state() == State::ended; }));
    settle(1500ms);
    EXPECT_NE(tap->state() == State::dropping, other->state() == State::dropping);
    EXPECT_FALSE(isHeard(field));
}

TEST_F(WaylandEventTapTest, aWindowThatTakesTheKeyboardAgainAndAgainKeepsIt) {
    ForeignWindow field(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(field.waitForFocus());
    const auto othersWindows = WaylandWindows::make();
    ASSERT_TRUE(waitUntil([&] { return othersWindows->refresh() && othersWindows->all().size() == 1; }));
    const quint32 number = othersWindows->all().front().number;
    start();
    if (qEnvironmentVariableIsSet(
            "SWAYSOCK")) { // it gives the keyboard to no window while a surface like ours is there
        for (int times = 0; times < 40; ++times) {
            othersWindows->activate(number);
            settle(10ms);
        }
        EXPECT_FALSE(isHeard(field));
        EXPECT_EQ(tap->state(), State::dropping);
        return;
    }
    EXPECT_TRUE(waitUntil([&] {
        othersWindows->activate(number);
        settle(10ms);
        return changes > 0;
    }));
    EXPECT_EQ(tap->state(), State::ended);
    EXPECT_TRUE(comesToBeHeard(field));
}

class KWinsEventTapTest : public WaylandEventTapTest {};

TEST_F(KWinsEventTapTest, whatHasTheKeyboardBeforeAllWindowsEndsIt) {
    ForeignWindow field(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(field.waitForFocus());
    start();
    testing::KeyboardOwner owner(hand);
    owner.take();
    EXPECT_TRUE(becomes(State::ended));
    owner.letGo();
    EXPECT_TRUE(comesToBeHeard(field));
    EXPECT_EQ(changes, 1);
}

TEST_F(WaylandEventTapTest, aLockScreenThatTellsOfItselfGetsTheKeyboard) {
    ForeignWindow field(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(field.waitForFocus());
    start();
    EXPECT_TRUE(waitUntil([this] { // until it listens
        auto signal =
            QDBusMessage::createSignal(QStringLiteral("/ScreenSaver"), QStringLiteral("org.freedesktop.ScreenSaver"),
                                       QStringLiteral("ActiveChanged"));
        signal << true;
        QDBusConnection::sessionBus().send(signal);
        return changes > 0;
    }));
    EXPECT_EQ(tap->state(), State::gaveWay);
    EXPECT_TRUE(comesToBeHeard(field)); // it plays the lock screen
    EXPECT_EQ(changes, 1);
}

TEST_F(WaylandEventTapTest, aKeyboardThatComesMeanwhileIsHeldToo) {
    ForeignWindow field(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(isHeardUntilTheStart(field));
    const QString before = field.text();
    for (int times = 0; times < 3; ++times) {
        testing::WaylandHand another;
        settle();
        for (const int key : kinds)
            another.tap(key);
        hand.tap(KEY_V);
        settle();
    }
    EXPECT_EQ(field.text(), before);
    EXPECT_EQ(tap->state(), State::dropping);
}

TEST_F(WaylandEventTapTest, withoutACompositorThereAreNone) {
    const QByteArray display = qgetenv("WAYLAND_DISPLAY");
    qputenv("WAYLAND_DISPLAY", "nobody-0");
    WaylandEventTaps nowhere(std::make_shared<WaylandReader>(), parts.stack);
    EXPECT_FALSE(nowhere.areThere());
    EXPECT_FALSE(nowhere.create([] {}));
    qputenv("WAYLAND_DISPLAY", display);
}

using SwaysEventTapTest = WaylandEventTapTest;

TEST_F(SwaysEventTapTest, wherePeopleKeepTheirShortcutsItIsRefused) {
    ForeignWindow field(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(field.waitForFocus());
    swaymsg(QStringLiteral("seat seat0 shortcuts_inhibitor disable"));
    testing::WaylandHand another; // a seat that is told something loses what was on it
    another.tap(KEY_LEFTSHIFT);
    settle();
    create();
    EXPECT_EQ(tap->state(), State::waiting);
    EXPECT_TRUE(becomes(State::ended));
    swaymsg(QStringLiteral("seat seat0 shortcuts_inhibitor enable"));
}

/// As by a program that is started when nobody has done anything for a while.
TEST_F(SwaysEventTapTest, aLockScreenThatTellsNobodyGetsTheKeyboardAndKeepsIt) {
    start();
    WaylandLink locker;
    auto *const manager = locker.bind<zwlr_input_inhibit_manager_v1>(zwlr_input_inhibit_manager_v1_interface, 1);
    ASSERT_TRUE(manager);
    auto *const lock = zwlr_input_inhibit_manager_v1_get_inhibitor(manager);
    EXPECT_TRUE(locker.finish());
    OtherPanel screen;
    EXPECT_TRUE(becomes(State::ended));
    EXPECT_TRUE(screen.comesToHear(hand));
    settle();
    EXPECT_TRUE(screen.comesToHear(hand));
    zwlr_input_inhibitor_v1_destroy(lock);
    EXPECT_TRUE(locker.finish());
}

/// Where outputs can be unplugged.
using UnpluggedEventTapTest = WaylandEventTapTest;

TEST_F(UnpluggedEventTapTest, anOutputThatGoesTakesItNotAlong) {
    ForeignWindow field(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(field.waitForFocus());
    ASSERT_TRUE(comesToBeHeard(field));
    swaymsg(QStringLiteral("move window to output WL-1"));
    swaymsg(QStringLiteral("focus output WL-2")); // where new surfaces come
    start();
    QProcess outer;
    outer.start(QStringLiteral("swaymsg"), {QStringLiteral("-s"), qEnvironmentVariable("OUTER_SWAYSOCK"),
                                            QStringLiteral("[title=\"wlroots - WL-2\"] kill")});
    EXPECT_TRUE(outer.waitForFinished(10'000));
    ASSERT_TRUE(waitUntil([] { return QGuiApplication::screens().size() == 1; }));
    swaymsg(QStringLiteral("[app_id=.*] focus"));
    settle(1500ms);
    EXPECT_FALSE(isHeard(field));
    EXPECT_EQ(tap->state(), State::dropping);
    tap.reset();
    EXPECT_TRUE(comesToBeHeard(field));
}

} // namespace
} // namespace tavrine
