#pragma once

#include "adapters/wayland/WaylandWindows.h"
#include "adapters/x11/ForeignWindow.h"
#include "desktop/Program.h"
#include "support/CommandOutput.h"
#include "support/StatusNotifierTray.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

#include <QImage>

#include <gtest/gtest.h>

namespace tavrine::testing {

inline QByteArray pasted() {
    return outputOf(QStringLiteral("wl-paste"), {QStringLiteral("--no-newline")});
}

/// What is to be seen in a part of the layout, by another program. On sway.
inline QImage seenIn(const QRect &part) {
    const QString area = QStringLiteral("%1,%2 %3x%4").arg(part.x()).arg(part.y()).arg(part.width()).arg(part.height());
    return QImage::fromData(outputOf(QStringLiteral("grim"), {QStringLiteral("-t"), QStringLiteral("ppm"),
                                                              QStringLiteral("-g"), area, QStringLiteral("-")}));
}
inline QRgb seenAt(QPoint place) {
    return seenIn({place, QSize(1, 1)}).pixel(0, 0);
}

/// As a program that stays the owner until it is killed.
inline std::unique_ptr<Client> copyAs(const QString &text) {
    auto owner = std::make_unique<Client>(QStringLiteral("wl-copy"),
                                          QStringList{QStringLiteral("--foreground"), QStringLiteral("--"), text});
    EXPECT_TRUE(waitUntil([&text] { return pasted() == text.toUtf8(); }));
    return owner;
}

/// The program on the desktop of a compositor, with a hand that clicks and types.
class WaylandProgram : public ::testing::Test {
protected:
    [[nodiscard]] bool comesToHold(const QString &content) {
        return waitUntil([&] { return program.rowsWith(content) == 1; });
    }
    /// By a word on the command line, as from the desktop's own shortcuts, and until it has the keyboard.
    [[nodiscard]] bool openPanel(const char *word) {
        const auto caller = program.startAgain({QLatin1String(word)});
        return caller->waitForFinished(10'000) && hasAPanelTheKeyboard();
    }
    /// With its icon there.
    [[nodiscard]] bool startIn(test::StatusNotifierTray &tray) {
        tray.start();
        return program.startOnboarded() && waitUntil([&tray] { return !tray.properties().isEmpty(); });
    }
    [[nodiscard]] bool hasAPanelTheKeyboard(std::chrono::milliseconds limit = test::patience) {
        return waitUntil(
            [this] {
                windows->refresh();
                return !windows->active();
            },
            limit);
    }
    [[nodiscard]] bool hasAWindowTheKeyboard(std::chrono::milliseconds limit = std::chrono::seconds(10)) {
        return waitUntil(
            [this] {
                windows->refresh();
                return windows->active() != nullptr;
            },
            limit);
    }
    /// Whether the panel that was opened keeps the keyboard while nobody does anything.
    [[nodiscard]] bool panelStays() { return !hasAWindowTheKeyboard(std::chrono::milliseconds(1500)); }
    /// Clicks until the keyboard is back: what hears of it comes a moment after the panel.
    [[nodiscard]] bool clickBrings(QPoint place) {
        return waitUntil([&] {
            hand.click(place);
            return hasAWindowTheKeyboard(std::chrono::seconds(1));
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

    [[nodiscard]] bool isInFront(const char *application) {
        return waitUntil([this, application] {
            windows->refresh();
            return windows->active() && windows->active()->applicationId == QLatin1String(application);
        });
    }
    /// Copies, and leaves it for two periods of the poll, in which the copy is seen and dropped.
    static void copyInVain(const QString &text) {
        const auto owner = copyAs(text);
        EXPECT_FALSE(waitUntil([] { return false; }, std::chrono::milliseconds(1200)));
    }
    /// Copies something else while a program of this name is in front, and true when that came into the history.
    [[nodiscard]] bool isRecordedInFrontOf(const char *application) {
        const Client other(QStringLiteral(TAVRINE_NAMED_WINDOW), {QLatin1String(application)});
        EXPECT_TRUE(isInFront(application));
        const QString text = QStringLiteral("copied in front of %1").arg(QLatin1String(application));
        const auto owner = copyAs(text);
        return comesToHold(text);
    }

    /// Where the menu's left edge is while the pointer, as here, is far from every tray.
    const QPoint menuAtTheRight{1280 - 290, 0};
    const QPoint middle{640, 360};
    const QPoint besideAll{60, 650};
    WaylandHand hand;
    std::shared_ptr<WaylandWindows> windows = WaylandWindows::make();
    Program program;
};

} // namespace tavrine::testing
