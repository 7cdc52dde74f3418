// The program as built, on a private desktop of a Wayland compositor, used with the hand.

#include "adapters/wayland/WaylandWindows.h"
#include "adapters/x11/ForeignWindow.h"
#include "desktop/Program.h"
#include "support/InhibitService.h"
#include "support/StatusNotifierTray.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"
#include "support/WaylandPattern.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <functional>
#include <optional>

#include <gtest/gtest.h>

namespace tavrine::testing {
namespace {

QByteArray outputOf(const QString &command, const QStringList &arguments) {
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(command, arguments);
    return process.waitForFinished(10'000) ? process.readAllStandardOutput() : QByteArray();
}

QByteArray pasted() {
    return outputOf(QStringLiteral("wl-paste"), {QStringLiteral("--no-newline")});
}

/// As a program that stays the owner until it is killed.
std::unique_ptr<Client> copyAs(const QString &text) {
    auto owner = std::make_unique<Client>(QStringLiteral("wl-copy"),
                                          QStringList{QStringLiteral("--foreground"), QStringLiteral("--"), text});
    EXPECT_TRUE(waitUntil([&text] { return pasted() == text.toUtf8(); }));
    return owner;
}

class WaylandProgram : public ::testing::Test {
protected:
    [[nodiscard]] bool comesToHold(const QString &content) {
        return waitUntil([&] { return program.rowsWith(content) == 1; });
    }
    /// By a word on the command line, as from the desktop's own shortcuts, and until it has the keyboard.
    [[nodiscard]] bool openPanel(const char *word) {
        const auto caller = program.startAgain({QLatin1String(word)});
        return caller->waitForFinished(10'000) && waitUntil([this] {
                   windows->refresh();
                   return !windows->active();
               });
    }
    /// Finds a row in the panel and pastes it.
    void searchAndPaste(ForeignWindow &window, const char *search, const QString &expected) {
        ASSERT_TRUE(window.waitForFocus());
        ASSERT_TRUE(openPanel("--clipboard"));
        hand.type(search);
        hand.tap(KEY_ENTER);
        EXPECT_TRUE(window.waitForText(expected)) << window.text().toStdString();
    }

    /// Where the menu's left edge is while the pointer, as here, is far from every tray.
    const QPoint menuAtTheRight{1280 - 290, 0};
    const QPoint middle{640, 360};
    WaylandHand hand;
    std::shared_ptr<WaylandWindows> windows = WaylandWindows::make();
    Program program;
};

TEST_F(WaylandProgram, aCopyIsInTheHistoryAndIsPastedIntoGtkAndQt) {
    ASSERT_TRUE(program.startOnboarded());
    const auto needle = copyAs(QStringLiteral("the needle"));
    ASSERT_TRUE(comesToHold(QStringLiteral("the needle")));
    const auto last = copyAs(QStringLiteral("hay"));
    ASSERT_TRUE(comesToHold(QStringLiteral("hay")));
    {
        ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
        searchAndPaste(window, "need", QStringLiteral("the needle"));
    }
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    searchAndPaste(window, "hay", QStringLiteral("hay"));
}

TEST_F(WaylandProgram, whatAPasswordManagerMarksIsNotRecorded) {
    ASSERT_TRUE(program.startOnboarded());
    {
        ForeignWindow manager(QStringLiteral(TAVRINE_COPY_ON_KEY),
                              {QStringLiteral("a secret"), QStringLiteral("x-kde-passwordManagerHint")});
        ASSERT_TRUE(manager.waitForFocus());
        hand.tap(KEY_A);
        ASSERT_TRUE(waitUntil([] { return pasted() == "a secret"; }));
    }
    // What is copied next comes after it.
    ForeignWindow other(QStringLiteral(TAVRINE_COPY_ON_KEY), {QStringLiteral("no secret")});
    ASSERT_TRUE(other.waitForFocus());
    hand.tap(KEY_A);
    ASSERT_TRUE(comesToHold(QStringLiteral("no secret")));
    EXPECT_EQ(program.rowsWith(QStringLiteral("a secret")), 0);
}

TEST_F(WaylandProgram, aCopyOutlivesItsProgram) {
    ASSERT_TRUE(program.startOnboarded());
    const auto owner = copyAs(QStringLiteral("of a program that dies"));
    ASSERT_TRUE(comesToHold(QStringLiteral("of a program that dies")));
    owner->kill9();
    EXPECT_TRUE(waitUntil([] { return pasted() == "of a program that dies"; }));
}

/// Starts it as a process whose words the test reads.
static bool startsTrusted(QProcess &process, const QProcessEnvironment &environment) {
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TAVRINE_BINARY), {});
    QByteArray printed;
    return waitUntil([&] {
        printed += process.readAllStandardOutput();
        return printed.contains("Accessibility Trusted on Launch: true");
    });
}

TEST_F(WaylandProgram, itStartsWithoutAWordOfErrors) {
    ASSERT_TRUE(program.writePreferences({}));
    QProcess process;
    EXPECT_TRUE(startsTrusted(process, program.environment));
    EXPECT_EQ(process.readAllStandardError(), QByteArray());
    process.kill();
    process.waitForFinished();
}

/// The toolkit's, the clipboard's and one for all else: KWin reads the whole program for each. The first thing that is
/// made on a connection is its registry.
TEST_F(WaylandProgram, itStartsAndShowsItsPanelWithThreeConnections) {
    ASSERT_TRUE(program.writePreferences({}));
    program.environment.insert(QStringLiteral("WAYLAND_DEBUG"), QStringLiteral("1"));
    QProcess process;
    EXPECT_TRUE(startsTrusted(process, program.environment));
    program.environment.remove(QStringLiteral("WAYLAND_DEBUG"));
    EXPECT_TRUE(openPanel("--clipboard"));
    process.kill();
    process.waitForFinished();
    EXPECT_EQ(process.readAllStandardError().count("get_registry(new id wl_registry@2)"), 3);
}

TEST_F(WaylandProgram, theTrayItemIsShownAndItsMenuOpens) {
    test::StatusNotifierTray tray;
    tray.start();
    ASSERT_TRUE(program.startOnboarded());
    ASSERT_TRUE(waitUntil([&] { return !tray.properties().isEmpty(); }));
    EXPECT_FALSE(tray.pixmaps().isEmpty());
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    tray.call(QStringLiteral("Activate"), {0, 0});
    EXPECT_TRUE(waitUntil([this] {
        windows->refresh();
        return !windows->active();
    }));
    hand.tap(KEY_ESC);
    EXPECT_TRUE(waitUntil([this] {
        windows->refresh();
        return windows->active() != nullptr;
    }));
}

TEST_F(WaylandProgram, keepAwakeIsSwitchedOnInTheMenuAndEndsWithTheProgram) {
    const test::InhibitService session(QStringLiteral("org.gnome.SessionManager"));
    test::StatusNotifierTray tray;
    tray.start();
    ASSERT_TRUE(program.startOnboarded());
    ASSERT_TRUE(waitUntil([&] { return !tray.properties().isEmpty(); }));
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    hand.move(middle);
    tray.call(QStringLiteral("Activate"), {0, 0});
    ASSERT_TRUE(waitUntil([this] { // the menu asks where the pointer is before it comes
        windows->refresh();
        return !windows->active();
    }));
    // The switch of its card, once the menu is there; what comes late must not be switched off again.
    EXPECT_TRUE(waitUntil(
        [&] {
            hand.click(menuAtTheRight + QPoint(247, 128));
            return waitUntil([&session] { return !session.held().isEmpty(); }, std::chrono::seconds(5));
        },
        std::chrono::seconds(30)));
    program.kill9();
    EXPECT_TRUE(waitUntil([&session] { return session.held().isEmpty(); }));
}

/// What is to be seen in a part of the layout, by another program. On sway.
QImage seenIn(const QRect &part) {
    const QString area = QStringLiteral("%1,%2 %3x%4").arg(part.x()).arg(part.y()).arg(part.width()).arg(part.height());
    return QImage::fromData(outputOf(QStringLiteral("grim"), {QStringLiteral("-t"), QStringLiteral("ppm"),
                                                              QStringLiteral("-g"), area, QStringLiteral("-")}));
}
QRgb seenAt(QPoint place) {
    return seenIn({place, QSize(1, 1)}).pixel(0, 0);
}

/// On sway, with a second output of another scale at the right.
class WaylandOutputs : public WaylandProgram {
protected:
    /// Where neither the overlay's help nor a window is.
    const QPoint corner{5, 700};
};

TEST_F(WaylandOutputs, aCaptureIsOnTheClipboardPixelForPixelAndInTheHistory) {
    WaylandPattern pattern;
    ASSERT_TRUE(pattern.isThere());
    const QPoint parked = hand.layout().bottomRight() - QPoint(9, 9); // this compositor draws the pointer into pictures
    hand.move(parked);
    ASSERT_TRUE(waitUntil([this] { return seenAt(corner) == WaylandPattern::colourAt(0, corner.x(), corner.y()); }));
    ASSERT_TRUE(program.startOnboarded());
    const auto caller = program.startAgain({QStringLiteral("--capture")});
    ASSERT_TRUE(caller->waitForFinished(10'000));
    ASSERT_TRUE(waitUntil([this] { return seenAt(corner) != WaylandPattern::colourAt(0, corner.x(), corner.y()); }));
    const QRect area(100, 100, 200, 100);
    hand.drag(area.topLeft(), area.bottomRight());
    QImage taken;
    EXPECT_TRUE(waitUntil([&taken] {
        taken = QImage::fromData(
            outputOf(QStringLiteral("wl-paste"), {QStringLiteral("--type"), QStringLiteral("image/png")}));
        return !taken.isNull();
    }));
    ASSERT_EQ(taken.size(), area.size());
    EXPECT_TRUE(taken.convertToFormat(QImage::Format_RGB32) == WaylandPattern::expected(0, area));
    EXPECT_TRUE(waitUntil([this] {
        return !program.rows("SELECT image_file_name FROM items WHERE image_file_name IS NOT NULL").isEmpty();
    }));
}

/// Beside others it would get a tile in which it has no room.
TEST_F(WaylandOutputs, theSettingsFloatOverTheTiles) {
    ASSERT_TRUE(program.startOnboarded());
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    const auto caller = program.startAgain({QStringLiteral("--settings")});
    ASSERT_TRUE(caller->waitForFinished(10'000));
    EXPECT_TRUE(waitUntil([] {
        const auto floating = [](const QJsonObject &part, const auto &inner) -> QJsonArray {
            QJsonArray found = part[QStringLiteral("floating_nodes")].toArray();
            const auto parts = part[QStringLiteral("nodes")].toArray();
            for (const auto &each : parts)
                for (const auto &deeper : inner(each.toObject(), inner))
                    found.append(deeper);
            return found;
        };
        const auto tree = outputOf(QStringLiteral("swaymsg"),
                                   {QStringLiteral("-r"), QStringLiteral("-t"), QStringLiteral("get_tree")});
        const QJsonArray all = floating(QJsonDocument::fromJson(tree).object(), floating);
        return all.size() == 1 && all.at(0)[QStringLiteral("name")] == QStringLiteral("Tavrine") &&
               all.at(0)[QStringLiteral("window_rect")][QStringLiteral("width")].toInt() == 900;
    }));
}

TEST_F(WaylandProgram, aTerminalIsPastedInto) {
    ASSERT_TRUE(program.startOnboarded());
    const auto needle = copyAs(QStringLiteral("the needle"));
    ASSERT_TRUE(comesToHold(QStringLiteral("the needle")));
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("typed"));
    // foot divides by the size of its screen, and KWin's outputs without a screen have none.
    const bool isSway = qgetenv("XDG_CURRENT_DESKTOP") == "sway";
    const Client terminal(
        isSway ? QStringLiteral("foot") : QStringLiteral("xfce4-terminal"),
        (isSway ? QStringList() : QStringList{QStringLiteral("--disable-server"), QStringLiteral("-x")}) +
            QStringList{QStringLiteral("sh"), QStringLiteral("-c"),
                        QStringLiteral("stty -icanon; exec cat > '%1'").arg(path)});
    const auto typed = [&path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(path) && windows->active(); }));
    hand.type("r"); // once this is there, the terminal has the keyboard
    ASSERT_TRUE(waitUntil([&typed] { return typed() == "r"; }));
    ASSERT_TRUE(openPanel("--clipboard"));
    hand.type("need");
    hand.tap(KEY_ENTER);
    EXPECT_TRUE(waitUntil([&typed] { return typed() == "rthe needle"; })) << typed().toStdString();
}

/// Once, on sway: the session's other tests have a tray of their own.
class WaylandBar : public WaylandProgram {
protected:
    WaylandBar() {
        QFile config(m_folder.filePath(QStringLiteral("bar")));
        EXPECT_TRUE(config.open(QIODevice::WriteOnly));
        config.write("{\"position\": \"bottom\", \"height\": 40, \"modules-left\": [\"tray\"],"
                     " \"tray\": {\"icon-size\": 32}}");
        config.close();
        m_bar.emplace(QStringLiteral("waybar"), QStringList{QStringLiteral("--config"), config.fileName()});
    }

    [[nodiscard]] bool start() {
        hand.move(middle); // a window comes to the output on which the pointer was last
        m_window.emplace(QStringLiteral(TAVRINE_QT_LINE_EDIT));
        // It may have the keyboard before it is to be seen, and before others are told of it.
        return program.startOnboarded() && m_window->waitForFocus() && waitUntil([this] {
                   windows->refresh();
                   return windows->active() && seenAt(above) == field && seenAt(corner) == field &&
                          seenAt(item()) != seenAt(beside);
               });
    }
    /// The item comes when bar and program have found each other.
    [[nodiscard]] bool opensWith(const std::function<void()> &press) {
        return waitUntil(
            [&] {
                press();
                return waitUntil(
                    [this] {
                        windows->refresh();
                        return !windows->active();
                    },
                    std::chrono::seconds(5));
            },
            std::chrono::seconds(30));
    }

    [[nodiscard]] QPoint item() { return {16, hand.layout().bottom() - 20}; }

    const QPoint above{60, 560};
    const QPoint corner{1240, 60};
    const QPoint beside{600, 700};          // in the bar
    const QRgb field = qRgb(255, 255, 255); // the ground of the window, which is one field

private:
    QTemporaryDir m_folder;
    std::optional<Client> m_bar;
    std::optional<ForeignWindow> m_window;
};

TEST_F(WaylandBar, aClickOnTheItemInABarOpensTheMenu) {
    ASSERT_TRUE(start());
    EXPECT_TRUE(opensWith([this] { hand.click(item()); }));
    EXPECT_TRUE(waitUntil([&] { return seenAt(above) != field; }));
    EXPECT_EQ(seenAt(corner), field);
}

/// As by a bar's own keys: the pointer is elsewhere, and the item is taken to be at the end of the bar.
TEST_F(WaylandBar, aPressByAKeyOpensTheMenuAtTheEndOfTheBar) {
    ASSERT_TRUE(start());
    const QRect edgeOfTheMenu(1280 - 284, 0, 1, 720); // plain ground from its top to its bottom
    EXPECT_TRUE(opensWith([this] {
        (void)outputOf(QStringLiteral("gdbus"),
                       {QStringLiteral("call"), QStringLiteral("--session"), QStringLiteral("--dest"),
                        QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(program.processId()),
                        QStringLiteral("--object-path"), QStringLiteral("/StatusNotifierItem"),
                        QStringLiteral("--method"), QStringLiteral("org.kde.StatusNotifierItem.Activate"),
                        QStringLiteral("0"), QStringLiteral("0")});
    }));
    QImage seen;
    EXPECT_TRUE(waitUntil([&] {
        seen = seenIn(edgeOfTheMenu);
        return seen.pixel(0, 660) != field;
    }));
    EXPECT_EQ(seen.pixel(0, 10), field);
}

/// Until it is let go, the pointer belongs to the bar, and nobody else is told where it is.
TEST_F(WaylandBar, aButtonHeldOnTheItemOpensTheMenuThereToo) {
    ASSERT_TRUE(start());
    const auto hold = [this] {
        hand.move(item());
        hand.press();
        EXPECT_FALSE(waitUntil([] { return false; }, std::chrono::milliseconds(400)));
        hand.release();
    };
    EXPECT_TRUE(opensWith(hold));
    EXPECT_TRUE(waitUntil([&] { return seenAt(above) != field; }));
    EXPECT_EQ(seenAt(corner), field);
    // The press that closes it is not told again as one that opens it: the next one is.
    hold();
    EXPECT_TRUE(waitUntil([&] { return seenAt(above) == field; }));
    EXPECT_FALSE(waitUntil([&] { return seenAt(above) != field; }, std::chrono::milliseconds(400)));
    hold();
    EXPECT_TRUE(waitUntil([&] { return seenAt(above) != field; }));
}

} // namespace
} // namespace tavrine::testing
