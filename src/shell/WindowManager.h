#pragma once

#include <functional>

class QString;

namespace tavrine {

class Access;
class Alerts;
class Time;
class UrlOpener;

/// Whether the desktop may ask the person.
enum class Prompt { never, allowed };

/// Asks for permissions, and manages no windows: the few operations through which every tool goes that meets a missing
/// grant, which are the tests, the requests and the alerts. One instance, as long as the process; lives on the main
/// thread.
class WindowManager {
public:
    struct Ports {
        Access &access;
        Alerts &alerts;
        UrlOpener &urlOpener;
        Time &time;
        /// Takes the recorder's selection window off the screen and drops it.
        std::function<void()> clearSelectionWindow;
        /// Brings this program to the front.
        std::function<void()> activateApplication;
    };
    explicit WindowManager(Ports ports) : m_ports(std::move(ports)) {}

    /// True when keystrokes may be sent to other programs. When they may not and a prompt is allowed, the desktop's
    /// own request is shown, each time.
    bool isAccessibilityTrusted(Prompt prompt);

    /// The way into every capture and recording: true to go on. Otherwise the desktop has shown its request, and either
    /// it was granted there and the person starts again, or an alert follows in a later turn.
    [[nodiscard]] bool mayCaptureScreen();
    [[nodiscard]] bool mayRecordScreen();

    /// Puts the program into the desktop's list of those that want the screen. Nothing comes back.
    void probeScreenCapture();
    void showScreenRecordingAlert();

    /// True when the microphone may be heard. Otherwise the person is asked by the desktop, the first time, or by an
    /// alert in a later turn.
    [[nodiscard]] bool checkMicrophonePermission();
    void showMicrophoneAlert();

private:
    void alertWithSettings(const QString &message, const QString &information, const QString &settingsButton,
                           const QString &settingsPage);

    Ports m_ports;
};

} // namespace tavrine
