#include "adapters/x11/X11Access.h"

#include <QFile>
#include <QTimer>

#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xtest.h>

namespace tavrine {
namespace {

/// True when something accepts connections at the sound server's usual place, or the person names another server.
bool soundServerAnswers() {
    if (qEnvironmentVariableIsSet("PULSE_SERVER"))
        return true;
    const QByteArray path = qgetenv("XDG_RUNTIME_DIR") + "/pulse/native";
    sockaddr_un address{};
    if (static_cast<size_t>(path.size()) >= sizeof address.sun_path)
        return false;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0)
        return false;
    const bool answers = ::connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    ::close(descriptor);
    return answers;
}

} // namespace

X11Access::X11Access() : m_client([](const xcb_generic_event_t &) {}) {}

bool X11Access::isAccessibilityTrusted() const {
    if (!m_client.isConnected())
        return false;
    m_hasTestExtension = m_hasTestExtension || m_client.link().extension(xcb_test_id);
    return m_hasTestExtension;
}

void X11Access::probeScreenCapture(std::function<void(std::optional<QString>)> completion) {
    QTimer::singleShot(0, this, [this, completion = std::move(completion)] {
        completion(isScreenCaptureGranted() ? std::nullopt
                                            : std::optional(QStringLiteral("There is no X server to capture from")));
    });
}

MicrophoneAuthorization X11Access::microphoneAuthorization() const {
    return soundServerAnswers() ? MicrophoneAuthorization::authorized : MicrophoneAuthorization::denied;
}

void X11Access::requestMicrophone(std::function<void(bool)> completion) {
    QTimer::singleShot(0, this, [this, completion = std::move(completion)] {
        completion(microphoneAuthorization() == MicrophoneAuthorization::authorized);
    });
}

} // namespace tavrine
