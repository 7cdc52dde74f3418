#include "adapters/linux/SoundServer.h"

#include "base/Descriptor.h"

#include <QByteArray>

#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>

namespace tavrine {

bool soundServerAnswers() {
    if (qEnvironmentVariableIsSet("PULSE_SERVER"))
        return true;
    const QByteArray path = qgetenv("XDG_RUNTIME_DIR") + "/pulse/native";
    sockaddr_un address{};
    if (static_cast<size_t>(path.size()) >= sizeof address.sun_path)
        return false;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return socket.isOpen() &&
           ::connect(socket.number(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
}

} // namespace tavrine
