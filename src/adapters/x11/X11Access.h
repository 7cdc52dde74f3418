#pragma once

#include "adapters/x11/XcbClient.h"
#include "ports/Access.h"

#include <QObject>

namespace tavrine {

/// An X server asks nobody: what works is granted. Events can be posted where XTEST is, and every program sees the
/// screen. The microphone is there when the sound server answers.
///
/// Lives on the main thread.
class X11Access : public QObject, public Access {
public:
    X11Access();

    [[nodiscard]] bool isAccessibilityTrusted() const override;
    bool requestAccessibility() override { return isAccessibilityTrusted(); }
    [[nodiscard]] bool isScreenCaptureGranted() const override { return m_client.isConnected(); }
    bool requestScreenCapture() override { return isScreenCaptureGranted(); }
    void probeScreenCapture(std::function<void(std::optional<QString>)> completion) override;
    [[nodiscard]] MicrophoneAuthorization microphoneAuthorization() const override;
    void requestMicrophone(std::function<void(bool)> completion) override;

private:
    mutable XcbClient m_client; // asking reads from it
    mutable bool m_hasTestExtension = false;
};

} // namespace tavrine
