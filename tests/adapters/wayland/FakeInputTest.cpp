// A paste that compositors hold up or do not let through, against one that is played.
#include "adapters/wayland/PlayedCompositor.h"
#include "adapters/wayland/WaylandClient.h"
#include "adapters/wayland/WaylandEventPoster.h"
#include "adapters/wayland/WaylandReader.h"
#include "base/VirtualKeys.h"
#include "ports/EventMonitors.h"
#include "support/FileSizeLimit.h"
#include "support/Wait.h"

#include <QElapsedTimer>

#include <semaphore>

#include <gtest/gtest.h>
#include <wayland-server-protocol.h>
#include <wayland/fake-input.h>
#include <wayland/virtual-keyboard-unstable-v1.h>

namespace tavrine {
namespace {

using tavrine::testing::waitUntil;

constexpr auto keyRequest = "org_kde_kwin_fake_input.keyboard_key";

/// It answers nothing from the moment at which somebody may type until it is let.
class SlowFakeInput : public ::testing::Test {
protected:
    ~SlowFakeInput() override { m_goOn.release(); }

    void goOn() { m_goOn.release(); }
    /// In milliseconds.
    template <class Work>
    [[nodiscard]] static qint64 timeOf(Work work) {
        QElapsedTimer timer;
        timer.start();
        work();
        return timer.elapsed();
    }
    static void paste(EventPoster &poster) {
        poster.postKeyboardEvent(virtualKey::v, true, modifierFlag::command);
        poster.postKeyboardEvent(virtualKey::v, false, modifierFlag::command);
    }

private:
    std::counting_semaphore<> m_goOn{0};

protected:
    PlayedCompositor compositor{{&wl_seat_interface, &org_kde_kwin_fake_input_interface},
                                [this](const PlayedCompositor::Request &request) {
                                    if (request.name == "org_kde_kwin_fake_input.authenticate")
                                        m_goOn.acquire();
                                }};
};

TEST_F(SlowFakeInput, aPasteIsHeldBackAtOnceAndTypedWhenItGoesOn) {
    std::optional<WaylandEventPoster> poster;
    EXPECT_LT(timeOf([&] { poster.emplace(WaylandWindows::make(), [] { return QString(); }); }), 1000);
    EXPECT_LT(timeOf([&] { paste(*poster); }), 1000);
    EXPECT_TRUE(poster->isHeldBack());
    EXPECT_EQ(poster->failure(), QStringLiteral("the compositor does not answer"));
    goOn();
    EXPECT_TRUE(waitUntil([&] {
        paste(*poster);
        return !poster->isHeldBack();
    }));
    EXPECT_TRUE(waitUntil([this] { return compositor.count(keyRequest) > 0; }));
    EXPECT_EQ(poster->failure(), QString());
}

TEST_F(SlowFakeInput, aCompositorThatTakesNoKeysIsNamedAsTheReason) {
    const PlayedCompositor another({&wl_seat_interface});
    WaylandEventPoster poster(WaylandWindows::make(), [] { return QString(); });
    paste(poster);
    EXPECT_FALSE(poster.isHeldBack());
    EXPECT_EQ(poster.failure(), QStringLiteral("the compositor takes no keys from this program"));
}

/// A terminal that pastes what was selected last with the chord that it is sent.
class Terminal final : public WaylandWindows {
public:
    Terminal() {
        WaylandWindow window;
        window.number = nextNumber();
        window.applicationId = QStringLiteral("xterm");
        window.isActive = true;
        add(window);
    }
};

TEST(WaylandPaste, isNotTypedWhereTheTextCannotBeWhatWasSelectedLast) {
    const PlayedCompositor compositor({&wl_seat_interface, &zwp_virtual_keyboard_manager_v1_interface});
    WaylandEventPoster poster(std::make_shared<Terminal>(), [] { return QStringLiteral("a password"); });
    poster.postKeyboardEvent(virtualKey::v, true, modifierFlag::command);
    poster.postKeyboardEvent(virtualKey::v, false, modifierFlag::command);
    EXPECT_FALSE(poster.isHeldBack());
    EXPECT_EQ(poster.failure(), QStringLiteral("the compositor gives this program no primary selection"));
    poster.postKeyboardEvent(virtualKey::enter, true, 0); // what comes before it has come as well
    EXPECT_TRUE(waitUntil([&] { return compositor.count("zwp_virtual_keyboard_v1.key") > 0; }));
    EXPECT_EQ(compositor.count("zwp_virtual_keyboard_v1.key"), 1);
}

TEST(WaylandPaste, isNotTypedOnAKeyboardWhoseKeysTheCompositorWasNotTold) {
    const PlayedCompositor compositor({&wl_seat_interface, &zwp_virtual_keyboard_manager_v1_interface});
    const auto reader = std::make_shared<WaylandReader>();
    WaylandClient client(reader);
    std::optional<WaylandEventPoster> poster;
    {
        const FileSizeLimit none(0);
        poster.emplace(
            WaylandWindows::make(), [] { return QString(); }, reader);
    }
    poster->postKeyboardEvent(virtualKey::v, true, modifierFlag::command);
    poster->postKeyboardEvent(virtualKey::v, false, modifierFlag::command);
    EXPECT_FALSE(poster->isHeldBack());
    EXPECT_EQ(poster->failure(), QStringLiteral("no keys can be typed"));
    EXPECT_TRUE(client.link().finish()); // what was asked for has come
    EXPECT_EQ(compositor.count("zwp_virtual_keyboard_manager_v1.create_virtual_keyboard"), 1);
    EXPECT_EQ(compositor.count("zwp_virtual_keyboard_v1.keymap"), 0);
    EXPECT_EQ(compositor.count("zwp_virtual_keyboard_v1.key"), 0); // it would end the connection
}

} // namespace
} // namespace tavrine
