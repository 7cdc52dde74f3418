#include "adapters/wayland/frozen/KWinScreenShots.h"

#include "base/Descriptor.h"

#include <chrono>
#include <cstdio>
#include <cstring>

#include <dbus/dbus.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <wayland-client.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// KWin draws the whole output anew for the picture; on a processor that takes some 40 ms.
constexpr auto longestWait = 3s;
constexpr quint32 longestSide = 65535;
constexpr int pipeBytes = 1 << 20; // the most that everybody may have

/// Of KWin's numbers, which are those of QImage.
std::optional<std::uint32_t> formatOf(quint32 format) {
    switch (format) {
    case 4: // RGB32
    case 5: // ARGB32
    case 6: // the same, premultiplied
        return WL_SHM_FORMAT_XRGB8888;
    case 16: // RGBX8888, byte by byte
    case 17:
    case 18:
        return WL_SHM_FORMAT_XBGR8888;
    default:
        return std::nullopt;
    }
}

/// What KWin answers.
struct Description {
    quint32 format = 0;
    quint32 width = 0;
    quint32 height = 0;
    quint32 stride = 0;
};

} // namespace

/// The functions of the bus' library that are used, and a connection.
struct KWinScreenShots::Bus {
    template <class Function>
    void find(Function &function, const char *name) {
        function = reinterpret_cast<Function>(::dlsym(library, name));
        isWhole = isWhole && function;
    }
    [[nodiscard]] bool load();
    [[nodiscard]] bool connect();
    void appendOption(DBusMessageIter &options, const char *name, bool value) const;
    [[nodiscard]] std::optional<Description> call(const std::string &output, int pipe) const;
    [[nodiscard]] Description read(DBusMessage *answer) const;

    ~Bus() {
        if (connection) {
            connectionClose(connection);
            connectionUnref(connection);
        }
    }

    void *library = nullptr;
    bool isWhole = true;
    DBusConnection *connection = nullptr;
    decltype(&dbus_bus_get_private) busGet;
    decltype(&dbus_connection_set_exit_on_disconnect) setExit;
    decltype(&dbus_connection_close) connectionClose;
    decltype(&dbus_connection_unref) connectionUnref;
    decltype(&dbus_connection_send_with_reply_and_block) send;
    decltype(&dbus_message_new_method_call) newCall;
    decltype(&dbus_message_unref) messageUnref;
    decltype(&dbus_message_iter_init_append) beginAppend;
    decltype(&dbus_message_iter_append_basic) append;
    decltype(&dbus_message_iter_open_container) openContainer;
    decltype(&dbus_message_iter_close_container) closeContainer;
    decltype(&dbus_message_iter_init) begin;
    decltype(&dbus_message_iter_get_arg_type) typeOf;
    decltype(&dbus_message_iter_recurse) recurse;
    decltype(&dbus_message_iter_next) next;
    decltype(&dbus_message_iter_get_basic) get;
    decltype(&dbus_error_init) errorInit;
    decltype(&dbus_error_free) errorFree;
};

bool KWinScreenShots::Bus::load() {
    library = ::dlopen("libdbus-1.so.3", RTLD_NOW);
    if (!library)
        return false;
    find(busGet, "dbus_bus_get_private");
    find(setExit, "dbus_connection_set_exit_on_disconnect");
    find(connectionClose, "dbus_connection_close");
    find(connectionUnref, "dbus_connection_unref");
    find(send, "dbus_connection_send_with_reply_and_block");
    find(newCall, "dbus_message_new_method_call");
    find(messageUnref, "dbus_message_unref");
    find(beginAppend, "dbus_message_iter_init_append");
    find(append, "dbus_message_iter_append_basic");
    find(openContainer, "dbus_message_iter_open_container");
    find(closeContainer, "dbus_message_iter_close_container");
    find(begin, "dbus_message_iter_init");
    find(typeOf, "dbus_message_iter_get_arg_type");
    find(recurse, "dbus_message_iter_recurse");
    find(next, "dbus_message_iter_next");
    find(get, "dbus_message_iter_get_basic");
    find(errorInit, "dbus_error_init");
    find(errorFree, "dbus_error_free");
    return isWhole;
}

bool KWinScreenShots::Bus::connect() {
    connection = busGet(DBUS_BUS_SESSION, nullptr);
    if (connection)
        setExit(connection, 0);
    return connection != nullptr;
}

void KWinScreenShots::Bus::appendOption(DBusMessageIter &options, const char *name, bool value) const {
    DBusMessageIter entry;
    DBusMessageIter variant;
    const dbus_bool_t isOn = value;
    openContainer(&options, DBUS_TYPE_DICT_ENTRY, nullptr, &entry);
    append(&entry, DBUS_TYPE_STRING, &name);
    openContainer(&entry, DBUS_TYPE_VARIANT, DBUS_TYPE_BOOLEAN_AS_STRING, &variant);
    append(&variant, DBUS_TYPE_BOOLEAN, &isOn);
    closeContainer(&entry, &variant);
    closeContainer(&options, &entry);
}

std::optional<Description> KWinScreenShots::Bus::call(const std::string &output, int pipe) const {
    DBusMessage *const message =
        newCall("org.kde.KWin.ScreenShot2", "/org/kde/KWin/ScreenShot2", "org.kde.KWin.ScreenShot2", "CaptureScreen");
    if (!message)
        return std::nullopt;
    DBusMessageIter arguments;
    DBusMessageIter options;
    const char *const name = output.c_str();
    beginAppend(message, &arguments);
    append(&arguments, DBUS_TYPE_STRING, &name);
    openContainer(&arguments, DBUS_TYPE_ARRAY, "{sv}", &options);
    appendOption(options, "include-cursor", false);
    appendOption(options, "native-resolution", true);
    closeContainer(&arguments, &options);
    append(&arguments, DBUS_TYPE_UNIX_FD, &pipe);
    DBusError error;
    errorInit(&error);
    DBusMessage *const answer =
        send(connection, message, static_cast<int>(std::chrono::milliseconds(longestWait).count()), &error);
    messageUnref(message);
    if (!answer) {
        std::fprintf(stderr, "screencapture: %s\n", error.message ? error.message : "KWin does not answer");
        errorFree(&error);
        return std::nullopt;
    }
    const Description description = read(answer);
    messageUnref(answer);
    return description;
}

Description KWinScreenShots::Bus::read(DBusMessage *answer) const {
    Description description;
    DBusMessageIter arguments;
    if (!begin(answer, &arguments) || typeOf(&arguments) != DBUS_TYPE_ARRAY)
        return description;
    DBusMessageIter entries;
    recurse(&arguments, &entries);
    for (; typeOf(&entries) == DBUS_TYPE_DICT_ENTRY; next(&entries)) {
        DBusMessageIter entry;
        DBusMessageIter value;
        const char *key = nullptr;
        recurse(&entries, &entry);
        if (typeOf(&entry) != DBUS_TYPE_STRING)
            continue;
        get(&entry, &key);
        next(&entry);
        if (typeOf(&entry) != DBUS_TYPE_VARIANT)
            continue;
        recurse(&entry, &value);
        if (typeOf(&value) != DBUS_TYPE_UINT32)
            continue;
        const std::string_view name = key;
        if (quint32 *const field = name == "format"   ? &description.format
                                   : name == "width"  ? &description.width
                                   : name == "height" ? &description.height
                                   : name == "stride" ? &description.stride
                                                      : nullptr)
            get(&value, field);
    }
    return description;
}

KWinScreenShots::KWinScreenShots(std::unique_ptr<Bus> bus) : m_bus(std::move(bus)) {}

KWinScreenShots::~KWinScreenShots() = default;

std::unique_ptr<KWinScreenShots> KWinScreenShots::open() {
    auto bus = std::make_unique<Bus>();
    if (!bus->load() || !bus->connect())
        return nullptr;
    return std::unique_ptr<KWinScreenShots>(new KWinScreenShots(std::move(bus)));
}

std::optional<CopiedPixels> KWinScreenShots::take(const std::string &output) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return std::nullopt;
    const Descriptor from(ends[0]);
    Descriptor to(ends[1]);
    ::fcntl(from.number(), F_SETPIPE_SZ, pipeBytes);
    const auto answer = m_bus->call(output, to.number());
    to.close(); // KWin has its own; the end of the pixels is the end of that
    const auto format = answer ? formatOf(answer->format) : std::nullopt;
    if (!format || answer->width > longestSide || answer->height > longestSide ||
        answer->stride < answer->width * sizeof(quint32) || answer->stride > longestSide * 8)
        return std::nullopt;
    m_bytes.resize(size_t{answer->stride} * answer->height);
    const auto until = Clock::now() + longestWait;
    for (size_t have = 0; have < m_bytes.size();) {
        pollfd readable{from.number(), POLLIN, 0};
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
        if (left <= 0 || ::poll(&readable, 1, static_cast<int>(left)) <= 0)
            return std::nullopt;
        const ssize_t got = ::read(from.number(), m_bytes.data() + have, m_bytes.size() - have);
        if (got <= 0)
            return std::nullopt;
        have += static_cast<size_t>(got);
    }
    return CopiedPixels{.data = m_bytes.data(),
                        .format = *format,
                        .size = {static_cast<int>(answer->width), static_cast<int>(answer->height)},
                        .lineBytes = static_cast<int>(answer->stride)};
}

} // namespace tavrine
