#include "adapters/linux/DesktopLooks.h"
#include "adapters/x11/XSettingsAppearance.h"
#include "support/Wait.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

QByteArray padded(QByteArray text) {
    while (text.size() % 4)
        text += '\0';
    return text;
}

QByteArray number(quint32 value) {
    return {reinterpret_cast<const char *>(&value), sizeof value};
}

QByteArray head(char type, const QByteArray &name) {
    return QByteArray(1, type) + '\0' + QByteArray(1, static_cast<char>(name.size())) + '\0' + padded(name) +
           QByteArray(4, '\0');
}

QByteArray words(const QByteArray &name, const QByteArray &value) {
    return head(1, name) + number(static_cast<quint32>(value.size())) + padded(value);
}

/// What a settings service on a little-endian machine keeps.
QByteArray settingsWithTheme(const QByteArray &theme) {
    return QByteArray(1, '\0') + QByteArray(3, '\0') + number(7) + number(3) + head(0, "Net/DoubleClickTime") +
           number(400) + head(2, "Net/Colour") + QByteArray(8, '\x7f') + words("Net/ThemeName", theme);
}

TEST(XSettings, theThemesNameIsFoundBehindOtherSettings) {
    EXPECT_EQ(settingsIn(settingsWithTheme("Adwaita-dark")).theme, QStringLiteral("Adwaita-dark"));
    EXPECT_EQ(settingsIn(settingsWithTheme("Arc")).theme, QStringLiteral("Arc"));
}

TEST(XSettings, theThemesOfIconsAndSoundsAreFoundAndWhetherThereAreSounds) {
    EXPECT_EQ(settingsIn(settingsWithTheme("Arc")).themes.hasEventSounds, std::nullopt);
    const auto bytes = [](quint32 sounds) {
        return QByteArray(8, '\0') + number(3) + words("Net/IconThemeName", "Papirus") +
               head(0, "Net/EnableEventSounds") + number(sounds) + words("Net/SoundThemeName", "ocean");
    };
    const DesktopThemes themes = settingsIn(bytes(1)).themes;
    EXPECT_EQ(themes.icons, QStringLiteral("Papirus"));
    EXPECT_EQ(themes.sounds, QStringLiteral("ocean"));
    EXPECT_EQ(themes.hasEventSounds, true);
    EXPECT_EQ(settingsIn(bytes(0)).themes.hasEventSounds, false);
}

TEST(XSettings, thingsMoveUnlessItSaysThatTheyDoNot) {
    const auto bytes = [](quint32 animations) {
        return QByteArray(8, '\0') + number(2) + head(0, "Gtk/EnableAnimations") + number(animations) +
               words("Net/ThemeName", "Arc");
    };
    EXPECT_TRUE(settingsIn(settingsWithTheme("Arc")).hasAnimations);
    EXPECT_TRUE(settingsIn(bytes(1)).hasAnimations);
    EXPECT_FALSE(settingsIn(bytes(0)).hasAnimations);
    EXPECT_TRUE(settingsIn(bytes(0).first(36)).hasAnimations); // its value is cut
}

TEST(XSettings, bytesThatEndTooEarlyGiveNoName) {
    const QByteArray whole = settingsWithTheme("Adwaita-dark");
    for (qsizetype length = 0; length < whole.size(); ++length)
        EXPECT_EQ(settingsIn(whole.first(length)).theme, QString()) << length;
}

TEST(XSettings, lengthsBeyondTheEndAndUnknownKindsGiveNoName) {
    QByteArray endless = settingsWithTheme("Adwaita-dark");
    endless.replace(8, 4, QByteArray(4, '\xff')); // four thousand million settings
    EXPECT_EQ(settingsIn(endless).theme, QStringLiteral("Adwaita-dark"));
    QByteArray unknown = settingsWithTheme("Adwaita-dark");
    unknown[12] = 9;
    EXPECT_EQ(settingsIn(unknown).theme, QString());
}

TEST(XSettings, aThemeIsDarkByAPartOfItsName) {
    for (const char *dark : {"Adwaita-dark", "Breeze-Dark", "Materia-dark-compact", "Adwaita:dark", "Yaru_dark"})
        EXPECT_TRUE(isDarkTheme(QString::fromLatin1(dark))) << dark;
    for (const char *light : {"Adwaita", "Arc-Darker", "Darkness", ""})
        EXPECT_FALSE(isDarkTheme(QString::fromLatin1(light))) << light;
}

/// A settings service as desktops run one.
class SettingsService {
public:
    SettingsService() : m_link(XcbLink::forEver), m_window(m_link.newId()) {
        xcb_create_window(m_link.connection(), 0, m_window, m_link.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          XCB_COPY_FROM_PARENT, 0, nullptr);
        const xcb_atom_t selection = m_link.atom("_XSETTINGS_S" + std::to_string(m_link.screenNumber()));
        xcb_set_selection_owner(m_link.connection(), m_window, selection, XCB_CURRENT_TIME);
        xcb_client_message_event_t notice{};
        notice.response_type = XCB_CLIENT_MESSAGE;
        notice.format = 32;
        notice.window = m_link.root();
        notice.type = m_link.atom("MANAGER");
        notice.data.data32[1] = selection;
        notice.data.data32[2] = m_window;
        xcb_send_event(m_link.connection(), 0, m_link.root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                       reinterpret_cast<const char *>(&notice));
        (void)m_link.finish();
    }
    void set(const QByteArray &theme) { tell(settingsWithTheme(theme)); }
    void tell(const QByteArray &bytes) {
        const xcb_atom_t property = m_link.atom("_XSETTINGS_SETTINGS");
        xcb_change_property(m_link.connection(), XCB_PROP_MODE_REPLACE, m_window, property, property, 8,
                            static_cast<quint32>(bytes.size()), bytes.constData());
        (void)m_link.finish();
    }

private:
    XcbLink m_link;
    xcb_window_t m_window;
};

TEST(XSettingsService, isReadFollowedAndMissedWhenItGoes) {
    XSettingsAppearance appearance;
    int changes = 0;
    appearance.setOnChange([&] { ++changes; });
    EXPECT_EQ(appearance.settings(), DesktopAppearance{});
    {
        SettingsService service; // it comes later
        service.set("Adwaita-dark");
        ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings().colorScheme == ColorScheme::dark; }));
        service.set("Adwaita");
        ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings() == DesktopAppearance{}; }));
        service.set("Arc-Dark");
        EXPECT_TRUE(testing::waitUntil([&] { return changes == 3; }));
        service.tell(QByteArray(8, '\0') + number(1) + head(0, "Gtk/EnableAnimations") + number(0));
        EXPECT_TRUE(testing::waitUntil([&] { return appearance.settings().reducesMotion; }));
        service.set("Arc-Dark");
        EXPECT_TRUE(testing::waitUntil([&] { return !appearance.settings().reducesMotion; }));
        EXPECT_EQ(XSettingsAppearance().settings().colorScheme, ColorScheme::dark); // it was there before
    }
    EXPECT_TRUE(testing::waitUntil([&] { return appearance.settings() == DesktopAppearance{}; }));
}

} // namespace
} // namespace tavrine
