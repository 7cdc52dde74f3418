// What other programs may say over a bus: calls of the tray's menu, the portal's settings, and the answers of Plasma's
// service for hot keys, with values of any types. The other end of the connection is ours, so no bus is needed.

#include "FuzzFiles.h"
#include "adapters/linux/DBusMenu.h"
#include "adapters/linux/KGlobalAccelClaim.h"
#include "adapters/linux/PortalAppearance.h"

#include <QDBusServer>

#include <array>
#include <chrono>
#include <memory>
#include <optional>

#include <dbus/dbus.h>

namespace tavrine::fuzz {
namespace {

using namespace std::chrono_literals;

constexpr auto menuPath = "/MenuBar";
constexpr auto menuInterface = "com.canonical.dbusmenu";

struct Member {
    const char *path;
    const char *interface;
    const char *name;
    const char *types; ///< that it has when all is well
    bool isSignal = false;
};
constexpr std::array<Member, 9> members{{
    {menuPath, menuInterface, "GetLayout", "iias"},
    {menuPath, menuInterface, "GetGroupProperties", "aias"},
    {menuPath, menuInterface, "GetProperty", "is"},
    {menuPath, menuInterface, "Event", "isvu"},
    {menuPath, menuInterface, "EventGroup", "a(isvu)"},
    {menuPath, menuInterface, "AboutToShow", "i"},
    {menuPath, menuInterface, "AboutToShowGroup", "ai"},
    {menuPath, "org.freedesktop.DBus.Properties", "Get", "ss"},
    {"/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged", "ssv", true},
}};
/// Of arguments and answers, whoever asks.
constexpr std::array types{
    "i",         "u",          "s",         "b",  "d",     "y",     "x",     "o",       "v",
    "as",        "ai",         "av",        "ay", "(ai)",  "a(ai)", "(ddd)", "(iiay)",  "a{sv}",
    "a{sa{sv}}", "(ia{sv}av)", "a(ia{sv})", "",   "a(ss)", "ssv",   "aas",   "a(isvu)", "a{sa{s(ddd)}}"};
constexpr std::array texts{
    "org.freedesktop.appearance", "color-scheme", "accent-color",   "org.gnome.desktop.interface", "enable-animations",
    "org.kde.kdeglobals.KDE",     "clicked",      "reduced-motion", "AnimationDurationFactor",     "Version"};

const char *pick(Values &values, const auto &rows) {
    return rows[values.number<unsigned char>() % rows.size()];
}

/// A bus takes 64 containers in one another, and closes the connection of whoever says more.
constexpr int deepest = 32;

void append(DBusMessageIter &to, DBusSignatureIter type, Values &values, int depth = 0);

std::string textFrom(Values &values) {
    if (values.number<unsigned char>() % 2 == 0)
        return pick(values, texts);
    const std::string text(values.text());
    return text.find('\0') == std::string::npos && dbus_validate_utf8(text.c_str(), nullptr) ? text : "?";
}

void appendBasic(DBusMessageIter &to, int type, Values &values) {
    if (type == DBUS_TYPE_STRING || type == DBUS_TYPE_OBJECT_PATH) {
        std::string text = textFrom(values);
        if (type == DBUS_TYPE_OBJECT_PATH && !dbus_validate_path(text.c_str(), nullptr))
            text = "/a";
        const char *pointer = text.c_str();
        dbus_message_iter_append_basic(&to, type, &pointer);
    } else if (type == DBUS_TYPE_BOOLEAN) {
        const dbus_bool_t value = values.number<unsigned char>() % 2;
        dbus_message_iter_append_basic(&to, type, &value);
    } else {
        DBusBasicValue value{};
        value.u64 = values.number<dbus_uint64_t>();
        dbus_message_iter_append_basic(&to, type, &value);
    }
}

void appendContainer(DBusMessageIter &to, DBusSignatureIter type, Values &values, int depth) {
    const int kind = dbus_signature_iter_get_current_type(&type);
    DBusMessageIter inner;
    DBusSignatureIter content;
    if (kind == DBUS_TYPE_VARIANT) {
        std::string signature = pick(values, types);
        if (depth >= deepest || !dbus_signature_validate_single(signature.c_str(), nullptr))
            signature = "i";
        dbus_signature_iter_init(&content, signature.c_str());
        dbus_message_iter_open_container(&to, kind, signature.c_str(), &inner);
        append(inner, content, values, depth + 1);
    } else if (kind == DBUS_TYPE_ARRAY) {
        dbus_signature_iter_recurse(&type, &content);
        char *const signature = dbus_signature_iter_get_signature(&content);
        dbus_message_iter_open_container(&to, kind, signature, &inner);
        dbus_free(signature);
        for (int count = values.number<unsigned char>() % 4; count > 0 && !values.isAtEnd(); --count)
            append(inner, content, values, depth + 1);
    } else {
        dbus_signature_iter_recurse(&type, &content);
        dbus_message_iter_open_container(&to, kind, nullptr, &inner);
        do
            append(inner, content, values, depth + 1);
        while (dbus_signature_iter_next(&content));
    }
    dbus_message_iter_close_container(&to, &inner);
}

void append(DBusMessageIter &to, DBusSignatureIter type, Values &values, int depth) {
    const int kind = dbus_signature_iter_get_current_type(&type);
    if (dbus_type_is_basic(kind))
        appendBasic(to, kind, values);
    else
        appendContainer(to, type, values, depth);
}

using Message = std::unique_ptr<DBusMessage, decltype(&dbus_message_unref)>;

void appendAll(DBusMessage *message, const char *signature, Values &values) {
    if (!*signature)
        return;
    DBusMessageIter to;
    dbus_message_iter_init_append(message, &to);
    DBusSignatureIter type;
    dbus_signature_iter_init(&type, signature);
    do
        append(to, type, values);
    while (dbus_signature_iter_next(&type));
}

/// The program's end of a connection, with what stands on it, and the other end.
class Peers {
public:
    Peers() {
        m_server.setAnonymousAuthenticationAllowed(true);
        QObject::connect(&m_server, &QDBusServer::newConnection, [this](const QDBusConnection &bus) { m_bus = bus; });
        DBusError error = DBUS_ERROR_INIT;
        m_other = dbus_connection_open_private(m_server.address().toUtf8().constData(), &error);
        require(m_other);
        dbus_connection_set_exit_on_disconnect(m_other, FALSE);
        pumpUntil([this] { return m_bus.has_value(); });
        m_menu.exportOn(*m_bus, QLatin1String(menuPath));
    }

    void talk(Bytes input) {
        Values values(input);
        PortalAppearance appearance(*m_bus);
        KGlobalAccelClaim claim(
            {.action = {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("d")}, .key = 65},
            {.isWanted = [](const QString &) { return false; }, .settled = [](bool) {}});
        claim.ask(*m_bus);
        constexpr int mostMessages = 8;
        for (int count = 0; count < mostMessages && !values.isAtEnd(); ++count)
            say(values);
        // What was said before is worked off when this is answered.
        const Message fence(dbus_message_new_method_call(nullptr, menuPath, menuInterface, "AboutToShow"),
                            &dbus_message_unref);
        Values none({});
        appendAll(fence.get(), "i", none);
        dbus_connection_send(m_other, fence.get(), &m_fence);
        m_isAnswered = false;
        m_answers = 0;
        pumpUntil([&] {
            listen(values);
            return m_isAnswered;
        });
        for (const DesktopAppearance told = appearance.settings(); told.accent;)
            return require(told.accent->isValid());
    }

private:
    void say(Values &values) {
        const Member &member = members[values.number<unsigned char>() % members.size()];
        const Message message(member.isSignal
                                  ? dbus_message_new_signal(member.path, member.interface, member.name)
                                  : dbus_message_new_method_call(nullptr, member.path, member.interface, member.name),
                              &dbus_message_unref);
        appendAll(message.get(), values.number<unsigned char>() % 4 == 0 ? pick(values, types) : member.types, values);
        dbus_connection_send(m_other, message.get(), nullptr);
    }

    /// Answers what the program asks: with values as they come, and with an error once there are none.
    void listen(Values &values) {
        dbus_connection_read_write(m_other, 0);
        constexpr int mostAnswers = 32;
        while (const Message message{dbus_connection_pop_message(m_other), &dbus_message_unref}) {
            const int type = dbus_message_get_type(message.get());
            m_isAnswered = m_isAnswered || (type != DBUS_MESSAGE_TYPE_METHOD_CALL &&
                                            dbus_message_get_reply_serial(message.get()) == m_fence);
            if (type != DBUS_MESSAGE_TYPE_METHOD_CALL)
                continue;
            const bool isError = values.isAtEnd() || ++m_answers > mostAnswers;
            const Message answer(isError ? dbus_message_new_error(message.get(), DBUS_ERROR_FAILED, "no")
                                         : dbus_message_new_method_return(message.get()),
                                 &dbus_message_unref);
            if (!isError)
                appendAll(answer.get(), pick(values, types), values);
            dbus_connection_send(m_other, answer.get(), nullptr);
        }
    }

    template <class Condition>
    void pumpUntil(const Condition &condition) {
        const auto end = std::chrono::steady_clock::now() + 60s;
        while (!condition()) {
            require(std::chrono::steady_clock::now() < end); // nothing that is said keeps the program from answering
            QCoreApplication::processEvents();
            dbus_connection_read_write(m_other, 1); // the toolkit's own thread has what is left of the time
        }
        QCoreApplication::processEvents();
    }

    QDBusServer m_server{QStringLiteral("unix:tmpdir=/tmp")};
    std::optional<QDBusConnection> m_bus;
    DBusConnection *m_other = nullptr;
    std::vector<StatusMenuLine> m_lines{{.id = 3, .label = QStringLiteral("Clean_Mode"), .isOn = true}, {}};
    DBusMenu m_menu{{.lines = [this] { return m_lines; }, .onChosen = [](int id) { require(id == 3); }}};
    dbus_uint32_t m_fence = 0;
    bool m_isAnswered = false;
    int m_answers = 0;
};

void talkOverBus(Bytes input) {
    makeApplication();
    // As long as the process: the toolkit's threads outlive main.
    static auto *const peers = new Peers;
    peers->talk(input);
}

std::vector<std::string> words() {
    return {{"\4\1\3\0\0\0\0\0\0\0\0\6\0\0", 14},
            {"\x08\1\0\0\0\1\0\1\2\0\0\0\0\0\0\0", 16},
            {"\x08\1\0\0\0\2\x0F\0\0\0\0\0\0\xE0\x3F\0\0\0\0\0\0\0\0\0\0\0\0\0\0\xF0\x3F", 31},
            {"\0\1\0\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\0", 19},
            "\x08" + std::string(37, 'P') + '.',                 // bytes for a list of keys
            std::string("\x08\0", 2) + std::string(70, '\x92')}; // a list in a list, and so on
}

const Target busTarget("dbus-values", &talkOverBus, &words);

} // namespace
} // namespace tavrine::fuzz
