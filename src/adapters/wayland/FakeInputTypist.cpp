#include "adapters/linux/SessionBus.h"
#include "adapters/wayland/KeymapText.h"
#include "adapters/wayland/Typist.h"
#include "adapters/wayland/WaylandClient.h"

#include <QDBusConnection>
#include <QObject>

#include <utility>

#include <linux/input-event-codes.h>
#include <wayland/fake-input.h>
#include <xkbcommon/xkbcommon.h>

namespace tavrine {
namespace {

constexpr int highestVersion = 4; // the first that types
constexpr int highestSeat = 1;
constexpr WaylandLink::Wait longestAnswer{100}; // a healthy compositor needs a millisecond or two
constexpr xkb_keycode_t xkbOffset = 8;
constexpr int modifierKeys[] = {KEY_LEFTSHIFT, KEY_RIGHTSHIFT, KEY_LEFTCTRL, KEY_RIGHTCTRL,
                                KEY_LEFTALT,   KEY_RIGHTALT,   KEY_LEFTMETA, KEY_RIGHTMETA};

/// What the person's keyboard has where, as the compositor tells everybody.
class PersonsKeymap {
public:
    explicit PersonsKeymap(WaylandLink &link) {
        static constexpr wl_seat_listener listener{.capabilities =
                                                       [](void *self, wl_seat *seat, std::uint32_t capabilities) {
                                                           static_cast<PersonsKeymap *>(self)->take(
                                                               seat, capabilities & WL_SEAT_CAPABILITY_KEYBOARD);
                                                       },
                                                   .name = [](void *, wl_seat *, const char *) {}};
        m_seat = link.bind<wl_seat>(wl_seat_interface, highestSeat);
        if (m_seat)
            wl_seat_add_listener(m_seat, &listener, this);
    }
    ~PersonsKeymap() {
        if (m_keyboard)
            wl_keyboard_destroy(m_keyboard);
        if (m_seat)
            wl_seat_destroy(m_seat);
        xkb_keymap_unref(m_map);
        xkb_context_unref(m_context);
    }
    PersonsKeymap(const PersonsKeymap &) = delete;
    PersonsKeymap &operator=(const PersonsKeymap &) = delete;

    /// The key that types the letter without a modifier; 0 for none. A layout that is not there is the first: the
    /// number comes from the bus, and the library reads past its table with a large one.
    [[nodiscard]] int keyOf(char letter, xkb_layout_index_t layout) const {
        if (!m_map)
            return 0;
        if (layout >= xkb_keymap_num_layouts(m_map))
            layout = 0;
        const xkb_keysym_t wanted = xkb_utf32_to_keysym(static_cast<std::uint32_t>(letter));
        for (xkb_keycode_t key = xkb_keymap_min_keycode(m_map); key <= xkb_keymap_max_keycode(m_map); ++key) {
            const xkb_keysym_t *symbols = nullptr;
            if (xkb_keymap_key_get_syms_by_level(m_map, key, layout, 0, &symbols) == 1 && symbols[0] == wanted)
                return static_cast<int>(key - xkbOffset);
        }
        return 0;
    }

private:
    void take(wl_seat *seat, bool hasKeyboard) {
        static constexpr wl_keyboard_listener listener{
            .keymap =
                [](void *self, wl_keyboard *, std::uint32_t format, std::int32_t file, std::uint32_t bytes) {
                    static_cast<PersonsKeymap *>(self)->read(format, Descriptor(file), bytes);
                },
            .enter = [](void *, wl_keyboard *, std::uint32_t, wl_surface *, wl_array *) {},
            .leave = [](void *, wl_keyboard *, std::uint32_t, wl_surface *) {},
            .key = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
            .modifiers = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                            std::uint32_t) {},
            .repeat_info = [](void *, wl_keyboard *, std::int32_t, std::int32_t) {}};
        if (m_keyboard)
            wl_keyboard_destroy(std::exchange(m_keyboard, nullptr));
        if (!hasKeyboard)
            return;
        m_keyboard = wl_seat_get_keyboard(seat);
        wl_keyboard_add_listener(m_keyboard, &listener, this);
    }

    void read(std::uint32_t format, const Descriptor &file, std::uint32_t bytes) {
        const std::string text = format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1 ? keymapText(file, bytes) : std::string();
        if (text.empty())
            return;
        if (!m_context)
            m_context = xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES);
        xkb_keymap_unref(m_map);
        m_map = xkb_keymap_new_from_buffer(m_context, text.data(), text.size(), XKB_KEYMAP_FORMAT_TEXT_V1,
                                           XKB_KEYMAP_COMPILE_NO_FLAGS);
    }

    wl_seat *m_seat = nullptr;
    wl_keyboard *m_keyboard = nullptr;
    xkb_context *m_context = nullptr;
    xkb_keymap *m_map = nullptr;
};

/// Which of the person's layouts is in use. KWin tells it to who has the keyboard, and to everybody over D-Bus.
class LayoutInUse final : public QObject {
    Q_OBJECT

public:
    LayoutInUse() {
        sessionBus::follow(this, [this](QDBusConnection bus) {
            if (!bus.isConnected())
                return;
            const auto name = QStringLiteral("org.kde.keyboard");
            const auto path = QStringLiteral("/Layouts");
            const auto interface = QStringLiteral("org.kde.KeyboardLayouts");
            bus.connect(QString(), path, interface, QStringLiteral("layoutChanged"), this, SLOT(take(uint)));
            auto question = QDBusMessage::createMethodCall(name, path, interface, QStringLiteral("getLayout"));
            question.setAutoStartService(false);
            sessionBus::ask(bus, question, this, [this](const QDBusPendingCall &answer) {
                const QVariant layout = answer.isError() ? QVariant() : answer.reply().arguments().value(0);
                if (layout.typeId() == QMetaType::UInt)
                    take(layout.toUInt());
            });
        });
    }
    [[nodiscard]] xkb_layout_index_t number() const { return m_number; }

private Q_SLOTS:
    void take(uint number) { m_number = number; }

private:
    xkb_layout_index_t m_number = 0;
};

class FakeInput final : public Typist {
public:
    FakeInput(WaylandClient &client, org_kde_kwin_fake_input *input)
        : m_client(client), m_input(input), m_keymap(client.link()) {
        org_kde_kwin_fake_input_authenticate(m_input, "Tavrine", "Pastes what was chosen from the clipboard's history");
        m_client.flush();
    }

    ~FakeInput() override { org_kde_kwin_fake_input_destroy(m_input); }
    FakeInput(const FakeInput &) = delete;
    FakeInput &operator=(const FakeInput &) = delete;

    /// The seat comes with the first answer, its keyboard's map with the second.
    [[nodiscard]] bool isReady() override {
        for (; m_answersLeft > 0; --m_answersLeft)
            if (!m_client.link().finish(longestAnswer))
                return false;
        return true;
    }

    [[nodiscard]] bool press(const WaylandChord &chord) override {
        m_key = chord.key ? chord.key : m_keymap.keyOf(chord.letter, m_layout.number());
        if (m_key == 0)
            return false;
        m_held = {};
        // The chord's modifiers go down first: a lone Super or Alt that is let go opens a menu.
        if (chord.hasControl)
            hold(KEY_LEFTCTRL);
        if (chord.hasShift)
            hold(KEY_LEFTSHIFT);
        if (chord.hasAlt)
            hold(KEY_LEFTALT);
        for (const int modifier : modifierKeys)
            if (std::ranges::find(m_held, modifier) == m_held.end())
                send(modifier, false);
        send(m_key, false);
        send(m_key, true);
        m_client.flush();
        return true;
    }

    void release() override {
        send(m_key, false);
        for (const int modifier : m_held)
            send(modifier, false);
        m_client.flush();
    }

private:
    void hold(int modifier) {
        send(modifier, true);
        m_held.push_back(modifier);
    }
    void send(int key, bool isDown) {
        org_kde_kwin_fake_input_keyboard_key(m_input, static_cast<std::uint32_t>(key), isDown ? 1 : 0);
    }

    WaylandClient &m_client;
    org_kde_kwin_fake_input *m_input;
    PersonsKeymap m_keymap;
    LayoutInUse m_layout; ///< asked for at once: a chord waits for no answer of the bus
    std::vector<int> m_held;
    int m_key = 0;
    int m_answersLeft = 2;
};

} // namespace

std::unique_ptr<Typist> Typist::fakeInput(WaylandClient &client) {
    WaylandLink &link = client.link();
    const auto *const offered = link.find(org_kde_kwin_fake_input_interface.name);
    if (!offered || offered->version < highestVersion)
        return nullptr;
    auto *const input = link.bind<org_kde_kwin_fake_input>(org_kde_kwin_fake_input_interface, highestVersion);
    return input ? std::make_unique<FakeInput>(client, input) : nullptr;
}

} // namespace tavrine

#include "FakeInputTypist.moc"
