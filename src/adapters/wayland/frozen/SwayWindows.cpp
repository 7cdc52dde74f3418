#include "adapters/wayland/frozen/SwayWindows.h"

#include "base/Descriptor.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <chrono>
#include <cstdlib>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// The question and the answer begin alike: six letters, the length, the kind.
constexpr char magic[] = {'i', '3', '-', 'i', 'p', 'c'};
constexpr quint32 getTree = 4;
constexpr int headerBytes = sizeof magic + 2 * sizeof(quint32);
/// sway answers within a millisecond; on a machine that is busy it is as late with everything else.
constexpr auto longestSocketWait = 2s;
constexpr quint32 longestAnswer = 8U << 20;
constexpr int deepest = 64;

QRect rectOf(const QJsonValue &value) {
    const QJsonObject rect = value.toObject();
    return {rect[QLatin1String("x")].toInt(), rect[QLatin1String("y")].toInt(), rect[QLatin1String("width")].toInt(),
            rect[QLatin1String("height")].toInt()};
}

/// `from` below comes before: what is drawn last is met first.
void addWindows(std::vector<QRect> &windows, const QJsonObject &node, int depth) {
    if (depth > deepest)
        return;
    for (const auto *const key : {"floating_nodes", "nodes"}) {
        const QJsonArray children = node[QLatin1String(key)].toArray();
        for (qsizetype i = children.size() - 1; i >= 0; --i)
            addWindows(windows, children[i].toObject(), depth + 1);
    }
    const bool isWindow = !node[QLatin1String("pid")].isUndefined();
    if (!isWindow || !node[QLatin1String("visible")].toBool())
        return;
    QRect area = rectOf(node[QLatin1String("rect")]);
    // The title stands above what is told as the window.
    area.setTop(area.top() - rectOf(node[QLatin1String("deco_rect")]).height());
    if (!area.isEmpty())
        windows.push_back(area);
}

Descriptor connectToSway() {
    const char *const path = std::getenv("SWAYSOCK");
    sockaddr_un address{};
    if (!path || std::strlen(path) >= sizeof address.sun_path)
        return {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, path);
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (::connect(socket.number(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return {};
    return socket;
}

/// Empty when they are not here in time.
QByteArray read(const Descriptor &socket, qsizetype bytes, Clock::time_point until) {
    QByteArray read(bytes, Qt::Uninitialized);
    for (qsizetype have = 0; have < bytes;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
        pollfd readable{socket.number(), POLLIN, 0};
        if (left.count() <= 0 || ::poll(&readable, 1, static_cast<int>(left.count())) <= 0)
            return {};
        const ssize_t got = ::recv(socket.number(), read.data() + have, static_cast<size_t>(bytes - have), 0);
        if (got <= 0)
            return {};
        have += got;
    }
    return read;
}

} // namespace

std::vector<QRect> swayWindowsIn(const QByteArray &tree) {
    std::vector<QRect> windows;
    addWindows(windows, QJsonDocument::fromJson(tree).object(), 0);
    return windows;
}

std::vector<QRect> readSwayWindows() {
    const auto until = Clock::now() + longestSocketWait;
    const Descriptor socket = connectToSway();
    if (!socket.isOpen())
        return {};
    char question[headerBytes] = {};
    std::memcpy(question, magic, sizeof magic);
    std::memcpy(question + sizeof magic + sizeof(quint32), &getTree, sizeof getTree);
    if (::send(socket.number(), question, sizeof question, MSG_NOSIGNAL) != sizeof question)
        return {};
    const QByteArray header = read(socket, headerBytes, until);
    quint32 length = 0;
    if (header.isEmpty() || std::memcmp(header.constData(), magic, sizeof magic) != 0)
        return {};
    std::memcpy(&length, header.constData() + sizeof magic, sizeof length);
    return length <= longestAnswer ? swayWindowsIn(read(socket, length, until)) : std::vector<QRect>();
}

} // namespace tavrine
