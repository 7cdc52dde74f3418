#include "adapters/x11/X11Access.h"

#include "adapters/linux/SoundServer.h"

#include <QTimer>

#include <xcb/xtest.h>

namespace tavrine {
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
                                            : std::optional(QStringLiteral("Nothing shows the screens to this program")));
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
