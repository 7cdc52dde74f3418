#include "adapters/wayland/WaylandEventPoster.h"

#include "adapters/x11/ForeignWindow.h"
#include "base/VirtualKeys.h"
#include "ports/EventMonitors.h"
#include "support/CompositorStall.h"
#include "support/WaylandHand.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavrine::testing {
namespace {

constexpr int pastes = 5;

QString part(int i) {
    return QStringLiteral("p%1;").arg(i, 3, 10, QLatin1Char('0'));
}

/// As a foreign program; it stays on the clipboard until the next.
bool copy(const QString &text) {
    QProcess copier;
    copier.setStandardOutputFile(QProcess::nullDevice());
    copier.start(QStringLiteral("wl-copy"), {QStringLiteral("--"), text});
    return copier.waitForFinished(10'000) && copier.exitCode() == 0 && waitUntil([&text] {
               QProcess reader;
               reader.start(QStringLiteral("wl-paste"), {QStringLiteral("--no-newline")});
               return reader.waitForFinished(10'000) && QString::fromUtf8(reader.readAllStandardOutput()) == text;
           });
}

class WaylandEventPosterTest : public ::testing::Test {
protected:
    /// Again and again while the compositor stands still, as the program does.
    void down(int keyCode, quint32 flags) {
        EXPECT_TRUE(waitUntil([=, this] {
            poster.postKeyboardEvent(keyCode, true, flags);
            return !poster.isHeldBack();
        }));
    }
    void post(int keyCode, quint32 flags) {
        down(keyCode, flags);
        poster.postKeyboardEvent(keyCode, false, flags);
    }
    void postPaste() { post(virtualKey::v, modifierFlag::command); }

    /// Pastes distinct texts one after the other; each must arrive once, and in its place.
    void pasteMany(ForeignWindow &window) {
        ASSERT_TRUE(window.waitForFocus());
        QString expected;
        for (int i = 0; i < pastes; ++i) {
            ASSERT_TRUE(copy(part(i)));
            postPaste();
            expected += part(i);
            ASSERT_TRUE(window.waitForText(expected)) << "after paste " << i << ": " << window.text().toStdString();
        }
        // What is typed now comes after a second arrival.
        hand.type("e");
        EXPECT_TRUE(window.waitForText(expected + QLatin1Char('e'))) << window.text().toStdString();
    }

    void pasteIntoTerminal(const QString &terminal, const QStringList &arguments);

    WaylandHand hand; // before the poster: its keyboard is the person's
    std::shared_ptr<WaylandWindows> windows = WaylandWindows::make();
    QString text;
    WaylandEventPoster poster{windows, [this] { return text; }};
};

TEST_F(WaylandEventPosterTest, eventsCanBePostedHere) {
    EXPECT_TRUE(poster.canPost());
}

TEST_F(WaylandEventPosterTest, everyPasteArrivesOnceInAGtkWindow) {
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    pasteMany(window);
}

TEST_F(WaylandEventPosterTest, everyPasteArrivesOnceInAQtWindow) {
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    pasteMany(window);
}

void WaylandEventPosterTest::pasteIntoTerminal(const QString &terminal, const QStringList &arguments) {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("typed"));
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(terminal, arguments + QStringList{QStringLiteral("sh"), QStringLiteral("-c"),
                                                    QStringLiteral("stty -icanon; exec cat > '%1'").arg(path)});
    const auto typed = [&path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    };
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(path) && windows->active(); }));
    // Typing shows that the terminal has the keyboard.
    hand.type("ready ");
    ASSERT_TRUE(waitUntil([&] { return typed() == QLatin1String("ready "); })) << typed().toStdString();
    QString expected = typed();
    for (int i = 0; i < 3; ++i) {
        text = part(i);
        ASSERT_TRUE(copy(part(i)));
        postPaste();
        expected += part(i);
        ASSERT_TRUE(waitUntil([&] { return typed() == expected; })) << i << ": " << typed().toStdString();
    }
    process.kill();
    process.waitForFinished();
}

TEST_F(WaylandEventPosterTest, aTerminalGetsItsOwnChord) {
    // foot divides by the size of its screen, and KWin's outputs without a screen have none.
    if (qgetenv("XDG_CURRENT_DESKTOP") == "sway")
        pasteIntoTerminal(QStringLiteral("foot"), {});
    else
        pasteIntoTerminal(QStringLiteral("xfce4-terminal"), {QStringLiteral("--disable-server"), QStringLiteral("-x")});
}

TEST_F(WaylandEventPosterTest, xtermGetsTheTextAsThePrimarySelection) {
    pasteIntoTerminal(QStringLiteral("xterm"), {QStringLiteral("-e")});
}

TEST_F(WaylandEventPosterTest, keysThatThePersonHoldsDoNotSpoilThePaste) {
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(window.waitForFocus());
    const std::vector<std::vector<int>> combinations = {
        {KEY_LEFTMETA, KEY_LEFTSHIFT}, {KEY_LEFTALT}, {KEY_LEFTCTRL, KEY_LEFTALT, KEY_LEFTSHIFT}, {KEY_V}};
    QString expected;
    for (std::size_t i = 0; i < combinations.size(); ++i) {
        ASSERT_TRUE(copy(part(static_cast<int>(i))));
        for (const int held : combinations[i])
            hand.down(held);
        if (combinations[i] == std::vector{KEY_V}) {
            // The letter repeats while it is held.
            ASSERT_TRUE(waitUntil([&] { return window.text().startsWith(expected + QLatin1Char('v')); }));
        }
        postPaste();
        for (const int held : combinations[i])
            hand.up(held);
        EXPECT_TRUE(waitUntil([&] { return window.text().endsWith(part(static_cast<int>(i))); }))
            << i << ": " << window.text().toStdString();
        expected = window.text();
    }
    // And nothing stays down that the person let go.
    hand.type("x");
    EXPECT_TRUE(window.waitForText(expected + QLatin1Char('x'))) << window.text().toStdString();
}

TEST_F(WaylandEventPosterTest, aKeyDownWithoutItsKeyUpIsMadeGoodByTheNext) {
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    ASSERT_TRUE(copy(QStringLiteral("x")));
    down(virtualKey::v, modifierFlag::command);
    postPaste();
    EXPECT_TRUE(window.waitForText(QStringLiteral("xx"))) << window.text().toStdString();
}

TEST_F(WaylandEventPosterTest, aPasteIsHeldBackWhileTheCompositorStandsStill) {
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    ASSERT_TRUE(copy(QStringLiteral("x")));
    {
        const CompositorStall stall(std::chrono::milliseconds(1500));
        ASSERT_TRUE(stall.hasBegun());
        poster.postKeyboardEvent(virtualKey::v, true, modifierFlag::command);
        EXPECT_TRUE(poster.isHeldBack());
    }
    postPaste();
    EXPECT_TRUE(window.waitForText(QStringLiteral("x"))) << window.text().toStdString();
    hand.type("e");
    EXPECT_TRUE(window.waitForText(QStringLiteral("xe"))) << window.text().toStdString();
}

TEST_F(WaylandEventPosterTest, aKeyWithoutAPositionPostsNothing) {
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    post(4711, 0);
    post(virtualKey::a, modifierFlag::shift);
    post(virtualKey::a, 0);
    EXPECT_TRUE(window.waitForText(QStringLiteral("Aa"))) << window.text().toStdString();
}

} // namespace
} // namespace tavrine::testing
