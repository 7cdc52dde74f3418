// The program's item in a bar of the desktop, and the menu that opens there.
#include "desktop/WaylandProgram.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <functional>
#include <optional>

namespace tavrine::testing {
namespace {

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

TEST_F(WaylandBar, theSpeedMeterIsInItAsWideAsItIs) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(program.writePreferences("<key>showInternetSpeed</key><true/>"
                                         "<key>speedTheme</key><string>White BG / Black Text</string>"));
    const QPoint ground{120, item().y() - 14}; // of a picture of 140 by 32, above what is written
    EXPECT_TRUE(waitUntil([&] { return seenAt(ground) == qRgb(237, 237, 237); }));
    EXPECT_NE(seenAt({200, ground.y()}), seenAt(ground));
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
