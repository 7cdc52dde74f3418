// Clean Mode of the built program on sway and KWin, with real typing.
#include "desktop/WaylandProgram.h"

#include <optional>

namespace tavrine::testing {
namespace {

/// With the menu open at the right, its tile of Clean Mode, and a field in the middle.
class WaylandCleanMode : public WaylandProgram {
protected:
    void start() {
        hand.tap(KEY_LEFTSHIFT); // the first key of a new keyboard is lost
        ASSERT_TRUE(startIn(tray));
        field.emplace(QStringLiteral(TAVRINE_QT_LINE_EDIT));
        ASSERT_TRUE(field->waitForFocus());
        ASSERT_TRUE(comesToBeHeard());
        hand.move(middle);
    }
    void openMenu() { tray.call(QStringLiteral("Activate"), {0, 0}); }
    [[nodiscard]] bool menuComes() {
        openMenu();
        return hasAPanelTheKeyboard();
    }
    /// As trays that draw the menu themselves see the line.
    [[nodiscard]] static bool isOn() {
        const QString layout = QString::fromUtf8(
            outputOf(QStringLiteral("gdbus"), onMenu("GetLayout", {QStringLiteral("0"), QStringLiteral("--"),
                                                                   QStringLiteral("-1"), QStringLiteral("[]")})));
        const QString line = layout.section(QStringLiteral("Clean Mode"), 0, 0).section(u'(', -1) +
                             layout.section(QStringLiteral("Clean Mode"), 1, 1).section(u')', 0, 0);
        return line.contains(QStringLiteral("'toggle-state': <1>"));
    }
    [[nodiscard]] static bool comesToBe(bool on) {
        return waitUntil([on] { return isOn() == on; }, std::chrono::seconds(5));
    }
    /// Clicks it until it is so; what comes late must not be undone again.
    [[nodiscard]] bool clicksTile(bool on) {
        return waitUntil(
            [&] {
                hand.click(menuAtTheRight + tile);
                return comesToBe(on);
            },
            std::chrono::seconds(30));
    }
    [[nodiscard]] bool isHeard() {
        const QString before = field->text();
        hand.tap(KEY_V);
        return field->waitForText(before + QLatin1Char('v'), std::chrono::milliseconds(300));
    }
    [[nodiscard]] bool comesToBeHeard() {
        return waitUntil([this] { return isHeard(); });
    }
    void settle() {
        EXPECT_FALSE(waitUntil([] { return false; }, std::chrono::milliseconds(300)));
    }
    void typeEverything() {
        hand.type("wiped ");
        for (const int key : {KEY_ESC, KEY_ENTER, KEY_LEFTMETA, KEY_LEFTALT, KEY_MUTE, KEY_BRIGHTNESSUP, KEY_SPACE})
            hand.tap(key);
        hand.chord({KEY_LEFTALT, KEY_TAB});
        hand.chord({KEY_LEFTALT, KEY_F4});
        hand.chord({KEY_LEFTMETA, KEY_LEFTSHIFT, KEY_V}); // the history's hot key, where there are any
    }
    /// Of the menu that trays draw themselves.
    static void chooseLine() {
        const QString layout = QString::fromUtf8(
            outputOf(QStringLiteral("gdbus"), onMenu("GetLayout", {QStringLiteral("0"), QStringLiteral("--"),
                                                                   QStringLiteral("-1"), QStringLiteral("[]")})));
        const QString id = layout.section(QStringLiteral("Clean Mode"), 0, 0).section(u'(', -1).section(u',', 0, 0);
        (void)outputOf(QStringLiteral("gdbus"),
                       onMenu("Event", {id, QStringLiteral("clicked"), QStringLiteral("<0>"), QStringLiteral("0")}));
    }
    static QStringList onMenu(const char *method, const QStringList &arguments) {
        return QStringList{
                   QStringLiteral("call"),          QStringLiteral("--session"),
                   QStringLiteral("--dest"),        QStringLiteral("com.veltrane.Tavrine"),
                   QStringLiteral("--object-path"), QStringLiteral("/MenuBar"),
                   QStringLiteral("--method"),      QStringLiteral("com.canonical.dbusmenu.") + QLatin1String(method)} +
               arguments;
    }

    const QPoint tile{213, 330};
    test::StatusNotifierTray tray;
    std::optional<ForeignWindow> field;
};

TEST_F(WaylandCleanMode, dropsEveryKeyUntilItsTileIsClickedAgain) {
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_TRUE(menuComes());
    ASSERT_TRUE(clicksTile(true));
    settle();
    const QString before = field->text();
    typeEverything(); // with the menu open: Escape closes it else, and Return presses in it
    settle();
    EXPECT_TRUE(isOn());
    hand.click(middle); // into the field
    settle();
    typeEverything();
    settle();
    EXPECT_EQ(field->text(), before);
    EXPECT_TRUE(isOn());
    EXPECT_TRUE(clicksTile(false)); // no key has closed the menu
    hand.tap(KEY_ESC);
    EXPECT_TRUE(comesToBeHeard());
}

TEST_F(WaylandCleanMode, theTraysOwnLineAndTheEndOfTheProgramEndItToo) {
    ASSERT_NO_FATAL_FAILURE(start());
    chooseLine();
    ASSERT_TRUE(comesToBe(true));
    EXPECT_FALSE(isHeard());
    chooseLine();
    ASSERT_TRUE(comesToBe(false));
    EXPECT_TRUE(comesToBeHeard());
    chooseLine();
    ASSERT_TRUE(comesToBe(true));
    EXPECT_FALSE(isHeard());
    program.kill9();
    EXPECT_TRUE(comesToBeHeard());
}

/// With the mouse: no window has the keyboard then.
TEST_F(WaylandCleanMode, aCopyInFrontOfAPasswordManagerIsNotRecordedInItEither) {
    ASSERT_NO_FATAL_FAILURE(start());
    // To the end: if it went first, the field would be in front for a moment, and its toolkit asks for that once more
    // when another window is there already.
    const Client manager(QStringLiteral(TAVRINE_NAMED_WINDOW), {QStringLiteral("org.keepassxc.KeePassXC")});
    ASSERT_TRUE(isInFront("org.keepassxc.KeePassXC"));
    chooseLine();
    ASSERT_TRUE(comesToBe(true));
    settle();
    copyInVain(QStringLiteral("hunter2"));
    chooseLine();
    ASSERT_TRUE(comesToBe(false));
    ASSERT_TRUE(isRecordedInFrontOf("org.example.editor"));
    EXPECT_EQ(program.rowsWith(QStringLiteral("hunter2")), 0);
}

} // namespace
} // namespace tavrine::testing
