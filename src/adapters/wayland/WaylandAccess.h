#pragma once

#include "adapters/wayland/WaylandClient.h"
#include "ports/Access.h"

#include <QObject>

namespace tavrine {

/// What the compositor offers is granted. KWin offers to the program of an installed desktop file what that file asks
/// for: who gets one of it gets all.
///
/// Lives on the main thread, on a connection of its own.
class WaylandAccess final : public QObject, public Access {
public:
    /// Events can be posted. What others type is told to no program.
    [[nodiscard]] bool isAccessibilityTrusted() const override;
    bool requestAccessibility() override { return isAccessibilityTrusted(); }
    [[nodiscard]] bool isScreenCaptureGranted() const override;
    bool requestScreenCapture() override { return isScreenCaptureGranted(); }
    void probeScreenCapture(std::function<void(std::optional<QString>)> completion) override;
    [[nodiscard]] MicrophoneAuthorization microphoneAuthorization() const override;
    void requestMicrophone(std::function<void(bool)> completion) override;

private:
    [[nodiscard]] bool isKnownToKWin() const;

    WaylandClient m_client;
};

} // namespace tavrine
