#include "adapters/x11/XSettingsAppearance.h"

#include "adapters/linux/DesktopLooks.h"

#include <QtEndian>

namespace tavrine {
namespace {

constexpr quint32 longestSettings = 64 * 1024;

/// Reads the protocol's numbers and texts in order; nothing more once something was missing.
class Reader {
public:
    explicit Reader(const QByteArray &bytes) : m_bytes(bytes), m_isBigEndian(bytes.startsWith('\1')) {}

    [[nodiscard]] bool isGood() const { return m_isGood; }
    void skip(qsizetype count) { (void)take(count); }
    [[nodiscard]] quint32 number(qsizetype size) {
        const QByteArray part = take(size);
        if (!m_isGood)
            return 0;
        if (size == 1)
            return static_cast<quint8>(part.front());
        if (size == 2)
            return m_isBigEndian ? qFromBigEndian<quint16>(part.constData())
                                 : qFromLittleEndian<quint16>(part.constData());
        return m_isBigEndian ? qFromBigEndian<quint32>(part.constData()) : qFromLittleEndian<quint32>(part.constData());
    }
    /// A text fills whole fours.
    [[nodiscard]] QByteArray text(quint32 length) {
        QByteArray text = take(length);
        skip((4 - length % 4) % 4);
        return text;
    }

private:
    QByteArray take(qsizetype count) {
        m_isGood = m_isGood && count <= m_bytes.size() - m_place;
        if (!m_isGood)
            return {};
        m_place += count;
        return m_bytes.mid(m_place - count, count);
    }

    const QByteArray &m_bytes;
    qsizetype m_place = 0;
    bool m_isBigEndian;
    bool m_isGood = true;
};

} // namespace

XSettings settingsIn(const QByteArray &bytes) {
    enum Type : quint32 { integer = 0, text = 1, colour = 2 };
    XSettings settings;
    Reader reader(bytes);
    reader.skip(8); // byte order and serial number
    for (quint32 left = reader.number(4); left > 0 && reader.isGood(); --left) {
        const quint32 type = reader.number(1);
        reader.skip(1);
        const QByteArray name = reader.text(reader.number(2));
        reader.skip(4); // when it changed
        if (type == text) {
            const QByteArray value = reader.text(reader.number(4));
            if (!reader.isGood())
                break;
            if (name == "Net/ThemeName")
                settings.theme = QString::fromUtf8(value);
            else if (name == "Net/IconThemeName")
                settings.themes.icons = QString::fromUtf8(value);
            else if (name == "Net/SoundThemeName")
                settings.themes.sounds = QString::fromUtf8(value);
        } else if (type == integer) {
            const quint32 value = reader.number(4);
            if (!reader.isGood())
                break;
            if (name == "Net/EnableEventSounds")
                settings.themes.hasEventSounds = value != 0;
            else if (name == "Gtk/EnableAnimations")
                settings.hasAnimations = value != 0;
        } else if (type == colour) {
            reader.skip(8);
        } else {
            break;
        }
    }
    return settings;
}

XSettingsAppearance::XSettingsAppearance() : m_client([this](const xcb_generic_event_t &event) { handle(event); }) {
    if (!m_client.isConnected())
        return;
    // A service that starts says so to the root window.
    const quint32 structure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_client.connection(), m_client.root(), XCB_CW_EVENT_MASK, &structure);
    findService();
}

void XSettingsAppearance::findService() {
    const xcb_atom_t selection = m_client.atom("_XSETTINGS_S" + std::to_string(m_client.screenNumber()));
    m_service = m_client.link().selectionOwner(selection);
    if (m_service) {
        const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_client.connection(), m_service, XCB_CW_EVENT_MASK, &events);
    }
    read();
}

void XSettingsAppearance::read() {
    QByteArray bytes;
    if (m_service)
        bytes = QByteArray::fromStdString(m_client.link().text(
            m_client.link().ask(m_service, m_client.atom("_XSETTINGS_SETTINGS"), longestSettings)));
    const XSettings settings = settingsIn(bytes);
    m_themes = settings.themes;
    DesktopAppearance now;
    if (isDarkTheme(settings.theme))
        now.colorScheme = ColorScheme::dark;
    now.reducesMotion = !settings.hasAnimations;
    if (std::exchange(m_settings, now) != now && m_onChange)
        m_onChange();
}

void XSettingsAppearance::handle(const xcb_generic_event_t &event) {
    switch (eventType(event)) {
    case XCB_CLIENT_MESSAGE:
        if (eventAs<xcb_client_message_event_t>(event).type == m_client.atom("MANAGER"))
            findService();
        break;
    case XCB_PROPERTY_NOTIFY:
        if (eventAs<xcb_property_notify_event_t>(event).window == m_service)
            read();
        break;
    case XCB_DESTROY_NOTIFY:
        if (eventAs<xcb_destroy_notify_event_t>(event).window == m_service)
            findService();
        break;
    default:
        break;
    }
}

} // namespace tavrine
