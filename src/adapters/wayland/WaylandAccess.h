#pragma once

#include "adapters/wayland/WaylandLink.h"
#include "ports/Access.h"

#include <QElapsedTimer>
#include <QObject>

namespace tavrine {

/// A compositor gives a program what it offers it, and asks nobody: a virtual keyboard or fake input for posting
/// events, copies of its outputs for the screen. KWin offers fake input to the program of a desktop file that asks for
/// it, and shows it the screen by a service of its own. The microphone is there when the sound server answers.
///
/// What is offered does not change while a session lasts, and is asked for until it is answered once. Lives on the main
/// thread.
class WaylandAccess final : public QObject, public Access {
public:
    /// `showsScreen`: the desktop shows the screen over time, whatever the compositor itself does. A compositor that
    /// was silent for a second or more is taken for silent for a second more. It is asked over `connection`; null for
    /// one of its own each time.
    explicit WaylandAccess(
        std::function<bool()> showsScreen = [] { return false; },
        WaylandLink::Wait longestAnswer = WaylandLink::usualWait,
        std::shared_ptr<WaylandConnection> connection = nullptr)
        : m_showsScreen(std::move(showsScreen)), m_longestAnswer(longestAnswer), m_connection(std::move(connection)) {}

    [[nodiscard]] bool isAccessibilityTrusted() const override { return offer().hasInput; }
    bool requestAccessibility() override { return isAccessibilityTrusted(); }
    [[nodiscard]] bool isScreenCaptureGranted() const override;
    bool requestScreenCapture() override { return isScreenCaptureGranted(); }
    [[nodiscard]] bool isScreenRecordingGranted() const override {
        return isScreenCaptureGranted() || (offer().hasLayers && m_showsScreen());
    }
    void probeScreenCapture(std::function<void(std::optional<QString>)> completion) override;
    [[nodiscard]] MicrophoneAuthorization microphoneAuthorization() const override;
    void requestMicrophone(std::function<void(bool)> completion) override;

private:
    struct Offer {
        bool hasInput = false;
        bool hasLayers = false;
        bool hasCopies = false;
    };
    [[nodiscard]] Offer offer() const;

    const std::function<bool()> m_showsScreen;
    const WaylandLink::Wait m_longestAnswer;
    const std::shared_ptr<WaylandConnection> m_connection;
    mutable std::optional<Offer> m_offer;
    mutable QElapsedTimer m_sinceSilence;
};

} // namespace tavrine
