#include "adapters/wayland/WaylandAccess.h"

#include "adapters/linux/SoundServer.h"

#include <QTimer>

namespace tavrine {

bool WaylandAccess::isKnownToKWin() const {
    return m_client.link().find("org_kde_kwin_fake_input") != nullptr;
}

bool WaylandAccess::isAccessibilityTrusted() const {
    return m_client.isConnected() &&
           (m_client.link().find("zwp_virtual_keyboard_manager_v1") != nullptr || isKnownToKWin());
}

bool WaylandAccess::isScreenCaptureGranted() const {
    return m_client.isConnected() && (m_client.link().find("zwlr_screencopy_manager_v1") != nullptr || isKnownToKWin());
}

void WaylandAccess::probeScreenCapture(std::function<void(std::optional<QString>)> completion) {
    QTimer::singleShot(0, this, [this, completion = std::move(completion)] {
        completion(isScreenCaptureGranted()
                       ? std::nullopt
                       : std::optional(QStringLiteral("This desktop does not show its screen to this program")));
    });
}

MicrophoneAuthorization WaylandAccess::microphoneAuthorization() const {
    return soundServerAnswers() ? MicrophoneAuthorization::authorized : MicrophoneAuthorization::denied;
}

void WaylandAccess::requestMicrophone(std::function<void(bool)> completion) {
    QTimer::singleShot(0, this, [this, completion = std::move(completion)] {
        completion(microphoneAuthorization() == MicrophoneAuthorization::authorized);
    });
}

} // namespace tavrine
