#pragma once

#include "adapters/x11/ForeignWindow.h"
#include "desktop/Desktop.h"
#include "desktop/GnomeHands.h"
#include "desktop/Program.h"
#include "support/Wait.h"

#include <QDBusMessage>
#include <QImage>
#include <QRect>

#include <chrono>
#include <memory>

#include <gtest/gtest.h>

namespace tavrine::testing {

using namespace std::chrono_literals;

/// A shell that is busy on a busy machine is waited for.
inline constexpr std::chrono::seconds gnomePatience{20};

/// The exit status; -1 when it does not end.
int runProgram(const QString &command, const QStringList &arguments, const QByteArray &input = {});
/// As a program that speaks Wayland: what it offers is its own until another copies.
void copyOnWayland(const QByteArray &text);

QDBusMessage askExtension(const char *method, const QVariantList &arguments = {});
[[nodiscard]] bool isRefused(const char *method, const QVariantList &arguments = {});
[[nodiscard]] bool isAttached();
[[nodiscard]] bool isExtensionThere();
[[nodiscard]] bool switchExtension(bool isOn);

[[nodiscard]] bool lockScreen();
/// A question for the password that a key has opened is given up first.
[[nodiscard]] bool unlockScreen(const GnomeHands &hands);

/// A line of text of a program on this platform.
[[nodiscard]] std::unique_ptr<ForeignWindow> lineOf(const char *command, const char *platform);

/// What gtk-pattern shows there.
[[nodiscard]] QImage patternIn(const QRect &area);
/// Each picture of a movie is what was drawn, but for a few places that the pointer covers.
void expectPicturesAreLike(const QImage &drawn, const QByteArray &pixels);

/// The whole program on GNOME under Wayland, and the person's hands there.
class Gnome : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(hands.areThere());
        hands.leaveOverview();
    }
    /// The launch looks for the extension once and goes on; here it is waited for.
    [[nodiscard]] bool start(const QByteArray &preferences = {}) {
        return program.writePreferences(preferences) && program.start() && waitUntil(isAttached, gnomePatience);
    }
    [[nodiscard]] bool isPanelShown() const { return desktop.isShown(clipboardPanel); }
    /// As the shell sees it and as the X server does, of which either may be ahead.
    [[nodiscard]] bool isPanelActive() const {
        const auto panels = desktop.windowsTitled(QLatin1String(clipboardPanel));
        return panels.size() == 1 && panels.front() == desktop.activeWindow() && desktop.hasKeyboard(clipboardPanel);
    }
    /// The toolkit hears of the keyboard a moment after the server does; what is pressed before is lost.
    void closePanel();
    /// The shell answers a registration when it gets to it, and until then the combination is nobody's. A press that
    /// comes through late closes the panel again, and the next one opens it.
    [[nodiscard]] bool openPanel();
    [[nodiscard]] bool isRecorded(const char *text) {
        return waitUntil([this, text] { return program.rowsWith(QString::fromUtf8(text)) == 1; }, gnomePatience);
    }
    void paste(ForeignWindow &target, const char *text);
    /// The pointer is at a place of the X server's plane, over a window of that server.
    [[nodiscard]] bool pointAt(QPoint place);
    /// Across an area, from its upper left corner, over a window of the X server.
    [[nodiscard]] bool dragAcross(const QRect &area);
    [[nodiscard]] bool freeze();
    /// Takes an area and waits for the card.
    [[nodiscard]] bool capture(const QRect &area);
    /// Records an area until the bar is clicked, and gives the movie's path.
    [[nodiscard]] QString record(const QRect &area);
    /// The shell watches for the key a moment after the overlay is there.
    [[nodiscard]] bool escape();

    Desktop desktop;
    GnomeHands hands;
    Program program;
};

} // namespace tavrine::testing
