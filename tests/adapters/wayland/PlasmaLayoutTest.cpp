// Which of the person's layouts a paste by KWin's fake input is typed in: told over the bus by a service that is
// played.
#include "adapters/wayland/PlayedCompositor.h"
#include "adapters/wayland/WaylandEventPoster.h"
#include "base/Descriptor.h"
#include "base/VirtualKeys.h"
#include "ports/EventMonitors.h"
#include "support/Eventually.h"
#include "support/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QElapsedTimer>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-server-protocol.h>
#include <wayland/fake-input.h>
#include <xkbcommon/xkbcommon.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using test::eventually;
using test::PrivateBus;

/// That of this test program, made before anybody asks for it.
const PrivateBus &busOfTests = []() -> const PrivateBus & {
    static const PrivateBus bus;
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toLocal8Bit());
    return bus;
}();

/// The service of the layouts, as KWin has it: on a connection of its own.
class PlayedLayouts final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.KeyboardLayouts")

public:
    /// `answer` is what is said to whoever asks; nothing, ever, where it is not valid.
    explicit PlayedLayouts(QVariant answer) : m_answer(std::move(answer)) {
        m_bus.registerObject(QStringLiteral("/Layouts"), this, QDBusConnection::ExportAllSlots);
        EXPECT_TRUE(m_bus.registerService(QStringLiteral("org.kde.keyboard")));
    }
    ~PlayedLayouts() override {
        m_bus.unregisterService(QStringLiteral("org.kde.keyboard"));
        m_bus.unregisterObject(QStringLiteral("/Layouts"));
    }

    [[nodiscard]] int questions() const { return m_questions; }
    void tell(const QVariant &layout) {
        auto signal = QDBusMessage::createSignal(QStringLiteral("/Layouts"), QStringLiteral("org.kde.KeyboardLayouts"),
                                                 QStringLiteral("layoutChanged"));
        signal << layout;
        EXPECT_TRUE(m_bus.send(signal));
    }
    /// To the first who asked.
    void answerNow(const QVariant &answer) { m_bus.send(m_question.createReply(answer)); }

public Q_SLOTS:
    QDBusVariant getLayout() {
        ++m_questions;
        setDelayedReply(true);
        if (!m_answer.isValid())
            m_question = message();
        else
            m_bus.send(message().createReply(m_answer));
        return {};
    }

private:
    QDBusConnection m_bus =
        QDBusConnection::connectToBus(busOfTests.address(), QStringLiteral("the service of the layouts"));
    const QVariant m_answer;
    QDBusMessage m_question;
    int m_questions = 0;
};

/// An American keyboard and, as its second layout, Dvorak's, which has V where the first one has the full stop.
class PlasmaLayout : public ::testing::Test {
protected:
    static constexpr int first = KEY_V;
    static constexpr int second = KEY_DOT;

    /// The key that a paste is typed with. It is pressed at once, whatever the bus does.
    [[nodiscard]] int pasted() {
        m_key = 0;
        QElapsedTimer pressing;
        pressing.start();
        m_poster->postKeyboardEvent(virtualKey::v, true, modifierFlag::command);
        m_poster->postKeyboardEvent(virtualKey::v, false, modifierFlag::command);
        EXPECT_LT(pressing.elapsed(), 1000);
        EXPECT_FALSE(m_poster->isHeldBack());
        EXPECT_TRUE(eventually([this] { return m_key != 0; }));
        return m_key;
    }
    void plugIn() {
        m_poster.emplace(WaylandWindows::make(), [] { return QString(); });
    }
    [[nodiscard]] bool comesToPaste(int key) {
        return eventually([this, key] { return pasted() == key; });
    }

private:
    /// On the compositor's thread.
    void answer(const PlayedCompositor::Request &request) {
        if (request.name == "wl_seat.bind") {
            wl_seat_send_capabilities(request.resource, WL_SEAT_CAPABILITY_KEYBOARD);
        } else if (request.name == "wl_seat.get_keyboard") {
            const Descriptor file(memfd_create("keymap", MFD_CLOEXEC));
            const auto size = m_map.size() + 1; // with the null that ends it
            if (write(file.number(), m_map.c_str(), size) == static_cast<ssize_t>(size))
                wl_keyboard_send_keymap(request.made, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file.number(),
                                        static_cast<std::uint32_t>(size));
        } else if (request.name == "org_kde_kwin_fake_input.keyboard_key") {
            const auto key = static_cast<int>(request.arguments[0].u);
            if (request.arguments[1].u == 1 && (key == first || key == second))
                m_key = key;
        }
    }
    static std::string mapOfBoth() {
        xkb_context *const context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
        const xkb_rule_names names{
            .rules = "evdev", .model = "pc105", .layout = "us,us", .variant = ",dvorak", .options = ""};
        xkb_keymap *const map = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
        char *const text = xkb_keymap_get_as_string(map, XKB_KEYMAP_FORMAT_TEXT_V1);
        const std::string copy = text;
        std::free(text);
        xkb_keymap_unref(map);
        xkb_context_unref(context);
        return copy;
    }

    const std::string m_map = mapOfBoth();
    std::atomic<int> m_key = 0;
    PlayedCompositor m_compositor{{&wl_seat_interface, &org_kde_kwin_fake_input_interface},
                                  [this](const PlayedCompositor::Request &request) { answer(request); }};
    std::optional<WaylandEventPoster> m_poster;
};

TEST_F(PlasmaLayout, isTheOneThatTheServiceNames) {
    const PlayedLayouts layouts(1U);
    plugIn();
    EXPECT_TRUE(comesToPaste(second));
    EXPECT_EQ(layouts.questions(), 1);
}

TEST_F(PlasmaLayout, isTheFirstWhereNobodyServesLayouts) {
    plugIn();
    test::letPass(50ms);
    EXPECT_EQ(pasted(), first);
}

TEST_F(PlasmaLayout, followsEachChange) {
    PlayedLayouts layouts(0U);
    plugIn();
    ASSERT_TRUE(eventually([&] { return layouts.questions() == 1; }));
    EXPECT_EQ(pasted(), first);
    layouts.tell(1U);
    EXPECT_TRUE(comesToPaste(second));
    layouts.tell(0U);
    EXPECT_TRUE(comesToPaste(first));
}

TEST_F(PlasmaLayout, isTheFirstUntilAServiceThatIsSlowHasAnswered) {
    PlayedLayouts layouts{QVariant()};
    plugIn();
    ASSERT_TRUE(eventually([&] { return layouts.questions() == 1; }));
    EXPECT_EQ(pasted(), first);
    layouts.answerNow(1U);
    EXPECT_TRUE(comesToPaste(second));
}

class PlasmaLayoutRubbish : public PlasmaLayout, public ::testing::WithParamInterface<QVariant> {};

TEST_P(PlasmaLayoutRubbish, asAnAnswerIsTheFirstLayout) {
    const PlayedLayouts layouts(GetParam());
    plugIn();
    ASSERT_TRUE(eventually([&] { return layouts.questions() == 1; }));
    test::letPass(100ms);
    EXPECT_EQ(pasted(), first);
}

TEST_P(PlasmaLayoutRubbish, asAChangeIsNoSecondLayout) {
    PlayedLayouts layouts(0U);
    plugIn();
    ASSERT_TRUE(eventually([&] { return layouts.questions() == 1; }));
    layouts.tell(GetParam());
    test::letPass(100ms);
    EXPECT_EQ(pasted(), first);
}

INSTANTIATE_TEST_SUITE_P(, PlasmaLayoutRubbish,
                         ::testing::Values(QVariant(QStringLiteral("1")), QVariant(QStringLiteral("rubbish")),
                                           QVariant(-1), QVariant(7U), QVariant(4'000'000'001U),
                                           QVariant(QByteArray("\1")), QVariant(QStringList{})));

} // namespace
} // namespace tavrine

#include "PlasmaLayoutTest.moc"
