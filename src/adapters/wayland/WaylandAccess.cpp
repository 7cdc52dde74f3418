#include "adapters/wayland/WaylandAccess.h"

#include "adapters/linux/SoundServer.h"

#include <QTimer>

namespace tavrine {
WaylandAccess::Offer WaylandAccess::offer() const {
    if (!m_offer) {
        constexpr qint64 silenceHoldsMs = 1000; // one press asks several times, and shall wait for it once
        if (m_sinceSilence.isValid() && m_sinceSilence.elapsed() < silenceHoldsMs)
            return {};
        QElapsedTimer asked;
        asked.start();
        const WaylandLink link(m_connection, m_longestAnswer);
        if (!link.isOpen()) { // which is no answer: asked again
            if (asked.elapsed() >= silenceHoldsMs)
                m_sinceSilence.start();
            return {};
        }
        const bool isKnownToKWin = link.find("org_kde_kwin_fake_input") != nullptr;
        m_offer = Offer{.hasInput = isKnownToKWin || link.find("zwp_virtual_keyboard_manager_v1") != nullptr,
                        .hasLayers = link.find("zwlr_layer_shell_v1") != nullptr,
                        .hasCopies = isKnownToKWin || link.find("zwlr_screencopy_manager_v1") != nullptr};
    }
    return *m_offer;
}

bool WaylandAccess::isScreenCaptureGranted() const {
    return offer().hasLayers && offer().hasCopies; // a part of the screen is chosen on a layer
}

void WaylandAccess::probeScreenCapture(std::function<void(std::optional<QString>)> completion) {
    QTimer::singleShot(0, this, [this, completion = std::move(completion)] {
        completion(isScreenCaptureGranted()
                       ? std::nullopt
                       : std::optional(QStringLiteral("This compositor does not show its screen to programs.")));
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
