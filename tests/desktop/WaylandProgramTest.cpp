// The program as built, on a private desktop of a Wayland compositor, used with the hand.

#include "adapters/wayland/WaylandWindows.h"
#include "adapters/x11/ForeignWindow.h"
#include "desktop/Program.h"
#include "support/StatusNotifierTray.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"


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
        EXPECT_TRUE(window.waitForText(expected, std::chrono::seconds(10))) << window.text().toStdString();
    }

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

} // namespace
} // namespace tavrine::testing
