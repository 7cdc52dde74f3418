#include "shell/WindowManager.h"

#include "base/Print.h"
#include "base/Time.h"
#include "ports/Access.h"
#include "ports/Alerts.h"
#include "ports/UrlOpener.h"

namespace tavrine {

bool WindowManager::isAccessibilityTrusted(Prompt prompt) {
    if (m_ports.access.isAccessibilityTrusted()) {
        printLine(QStringLiteral("DEBUG: Accessibility already trusted"));
        return true;
    }
    if (prompt == Prompt::never)
        return false;
    const bool isTrusted = m_ports.access.requestAccessibility();
    printLine(QStringLiteral("DEBUG: Accessibility prompt shown, trusted: ") +
              (isTrusted ? QStringLiteral("true") : QStringLiteral("false")));
    return isTrusted;
}

bool WindowManager::mayCaptureScreen() {
    if (m_ports.access.isScreenCaptureGranted())
        return true;
    if (!m_ports.access.requestScreenCapture()) {
        probeScreenCapture();
        m_ports.time.async([this] { showScreenRecordingAlert(); });
    }
    return false;
}

bool WindowManager::mayRecordScreen() {
    return m_ports.access.isScreenRecordingGranted() || mayCaptureScreen();
}

void WindowManager::probeScreenCapture() {
    m_ports.access.probeScreenCapture([](const std::optional<QString> &error) {
        if (error)
            printLine(QStringLiteral("Debug: SCShareableContent check failed (Expected if permission denied): ") +
                      *error);
    });
}

void WindowManager::showScreenRecordingAlert() {
    alertWithSettings(QStringLiteral("Screen Recording Permission Required"),
                      QStringLiteral("To capture screenshots, this app needs Screen Recording access. Please grant "
                                     "access in System Settings > Privacy & Security > Screen Recording."),
                      QStringLiteral("Open Settings"), QStringLiteral("Privacy_ScreenCapture"));
}

bool WindowManager::checkMicrophonePermission() {
    switch (m_ports.access.microphoneAuthorization()) {
    case MicrophoneAuthorization::authorized:
        return true;
    case MicrophoneAuthorization::notDetermined:
        // The answer is not waited for: the person starts again.
        m_ports.access.requestMicrophone([](bool) {});
        return false;
    case MicrophoneAuthorization::restricted:
    case MicrophoneAuthorization::denied:
        break;
    }
    m_ports.time.async([this] { showMicrophoneAlert(); });
    return false;
}

void WindowManager::showMicrophoneAlert() {
    // The selection window lies above everything, the alert included.
    m_ports.clearSelectionWindow();
    m_ports.activateApplication();
    alertWithSettings(QStringLiteral("Microphone Permission Required"),
                      QStringLiteral("Tavrine needs Microphone access to record audio during screen recording. Please "
                                     "grant access in System Settings > Privacy & Security > Microphone."),
                      QStringLiteral("Open System Settings"), QStringLiteral("Privacy_Microphone"));
}

void WindowManager::alertWithSettings(const QString &message, const QString &information, const QString &settingsButton,
                                      const QString &settingsPage) {
    if (m_ports.alerts.runModal({message, information, {settingsButton, QStringLiteral("Cancel")}}))
        m_ports.urlOpener.openUrl(
            QUrl(QStringLiteral("x-apple.systempreferences:com.apple.preference.security?") + settingsPage));
}

} // namespace tavrine
