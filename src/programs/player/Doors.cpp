#include "programs/player/Doors.h"

#include "base/Descriptor.h"
#include "base/ErrorText.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <deque>
#include <string_view>
#include <utility>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace tavrine {
namespace {

struct Door {
    Door(std::string itsPath, int itsSocket) : path(std::move(itsPath)), socket(itsSocket) {}

    std::string path;
    std::atomic<int> socket;
};

// Destroyed by nobody: threads of the libraries outlive main.
std::deque<Door> &doors() {
    static auto *const all = new std::deque<Door>;
    return *all;
}
std::atomic<bool> areClosed = false;

int callOfLibrary(int file, const sockaddr *address, socklen_t length) {
    static const auto libraryFunction = reinterpret_cast<decltype(&::connect)>(dlsym(RTLD_NEXT, "connect"));
    return libraryFunction(file, address, length);
}

/// The name in a local address, without the zero with which one begins that is no file's.
std::string_view pathIn(const sockaddr *address, socklen_t length) {
    constexpr std::size_t before = offsetof(sockaddr_un, sun_path);
    if (!address || length <= before || length > sizeof(sockaddr_un) || address->sa_family != AF_UNIX)
        return {};
    std::string_view name(reinterpret_cast<const char *>(address) + before, length - before);
    if (name.front() == '\0')
        name.remove_prefix(1);
    return name.substr(0, name.find('\0'));
}

/// `file` becomes the other end's of the door, as open and as patient as it was.
int handOn(int socket, int file) {
    const int flags = ::fcntl(file, F_GETFL);
    const int closing = ::fcntl(file, F_GETFD);
    if (flags < 0 || closing < 0 || ::fcntl(socket, F_SETFL, flags) < 0 ||
        ::dup3(socket, file, closing & FD_CLOEXEC ? O_CLOEXEC : 0) < 0)
        return -1;
    ::close(socket);
    return 0;
}

enum class Name { ofFile, abstract };

Descriptor called(const std::string &path, Name name) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    const std::size_t begin = name == Name::abstract ? 1 : 0;
    if (path.size() + begin >= sizeof(address.sun_path)) {
        errno = ENAMETOOLONG;
        return {};
    }
    std::memcpy(address.sun_path + begin, path.data(), path.size());
    const auto length =
        name == Name::abstract ? offsetof(sockaddr_un, sun_path) + begin + path.size() : sizeof(address);
    // A server that takes no calls at present is not waited for.
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (callOfLibrary(socket.number(), reinterpret_cast<const sockaddr *>(&address), static_cast<socklen_t>(length)) !=
        0)
        return {};
    return socket;
}

} // namespace

std::optional<std::string> Doors::open(const std::string &path) {
    Descriptor socket = called(path, Name::ofFile);
    if (!socket.isOpen())
        socket = called(path, Name::abstract);
    if (!socket.isOpen())
        return path + ": " + errorText(errno);
    doors().emplace_back(path, socket.release());
    return std::nullopt;
}

void Doors::close() {
    areClosed = true;
}

} // namespace tavrine

extern "C" [[gnu::visibility("default")]] int connect(int file, const sockaddr *address, socklen_t length) {
    using namespace tavrine;
    if (!areClosed)
        return callOfLibrary(file, address, length);
    const std::string_view path = pathIn(address, length);
    for (Door &door : doors()) {
        if (door.path != path)
            continue;
        const int socket = door.socket.exchange(-1);
        if (socket >= 0)
            return handOn(socket, file);
    }
    errno = ECONNREFUSED;
    return -1;
}
