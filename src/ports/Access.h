#pragma once

#include <QString>

#include <functional>
#include <optional>

class QObject;

namespace tavrine {

/// Whether the microphone may be heard. The numbers are the platform's.
enum class MicrophoneAuthorization { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

/// What the desktop lets this program do: post events and watch the keyboard, see the screen, hear the microphone.
///
/// Lives on the main thread, as long as the process; answers that come later come there. A person may give or take a
/// grant at any time, so nobody keeps an answer for long. A desktop that knows no such grants answers as it acts: true
/// where the thing works.
class Access {
public:
    virtual ~Access() = default;

    /// Calls `known` once the desktop has said what it grants, within the call where that is known by then. Who asks
    /// at the very start of the process waits for this: a desktop that has yet to answer has granted nothing. One that
    /// does not answer in time grants nothing until it does. Not called when `context` is gone by then.
    virtual void whenKnown(QObject * /*context*/, const std::function<void()> &known) { known(); }

    /// True when this process may post events and watch keys. Never shows anything.
    [[nodiscard]] virtual bool isAccessibilityTrusted() const = 0;

    /// The same; when not trusted, the desktop shows its own request, for which the call does not wait.
    virtual bool requestAccessibility() = 0;

    /// True when the pixels of other programs can be read. Never shows anything.
    [[nodiscard]] virtual bool isScreenCaptureGranted() const = 0;

    /// The same; when not granted, the desktop shows its own request, for which the call does not wait.
    virtual bool requestScreenCapture() = 0;

    /// True when the screen can be recorded, after the desktop has asked the person where it does. Desktops that let a
    /// program see the screen let it do so over time as well, but not the other way round.
    [[nodiscard]] virtual bool isScreenRecordingGranted() const { return isScreenCaptureGranted(); }

    /// Asks for the contents of the screen and throws them away, so that the program appears in the desktop's list of
    /// those that want them. `completion` comes later, never within the call: with the error's text when it was
    /// refused.
    virtual void probeScreenCapture(std::function<void(std::optional<QString>)> completion) = 0;

    [[nodiscard]] virtual MicrophoneAuthorization microphoneAuthorization() const = 0;

    /// Shows the desktop's own request. `completion` comes later, never within the call: true when granted.
    virtual void requestMicrophone(std::function<void(bool)> completion) = 0;
};

} // namespace tavrine
