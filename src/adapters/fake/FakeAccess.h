#pragma once

#include "ports/Access.h"

#include <QObject>
#include <QPointer>

#include <utility>
#include <vector>

namespace tavrine {

/// A desktop whose grants a test gives and takes. A request is only noted: the person answers when the test says so.
class FakeAccess final : public Access {
public:
    // Knobs: what the person has granted in the desktop's settings.
    void setAccessibilityTrusted(bool isTrusted) { m_isAccessibilityTrusted = isTrusted; }
    void setScreenCaptureGranted(bool isGranted) { m_isScreenCaptureGranted = isGranted; }
    void setMicrophone(MicrophoneAuthorization state) { m_microphone = state; }

    /// The desktop has yet to say what it grants, until `tellGrants`.
    void keepGrantsBack() { m_isKnown = false; }
    void tellGrants() {
        m_isKnown = true;
        for (const auto &[context, known] : std::exchange(m_waiting, {}))
            if (context)
                known();
    }

    /// The next request for that thing is granted at once, as by a desktop that asks nobody.
    void grantNextAccessibilityRequest() { m_grantsNextAccessibility = true; }
    void grantNextScreenCaptureRequest() { m_grantsNextScreenCapture = true; }

    /// Called at each request for it.
    void setOnAccessibilityPrompt(std::function<void()> onPrompt) { m_onAccessibilityPrompt = std::move(onPrompt); }

    /// The text with which a probe fails while capture is not granted.
    void setProbeError(const QString &error) { m_probeError = error; }

    /// Lets all probes that are under way come back, with what is granted now.
    void finishProbes() {
        const std::optional<QString> error = m_isScreenCaptureGranted ? std::nullopt : std::optional(m_probeError);
        for (const auto &completion : std::exchange(m_probes, {}))
            completion(error);
    }

    /// The person answers the request for the microphone.
    void answerMicrophone(bool isGranted) {
        m_microphone = isGranted ? MicrophoneAuthorization::authorized : MicrophoneAuthorization::denied;
        for (const auto &completion : std::exchange(m_microphoneRequests, {}))
            completion(isGranted);
    }

    // What was shown to the person, as counts since the start.
    [[nodiscard]] int accessibilityPrompts() const { return m_accessibilityPrompts; }
    [[nodiscard]] int screenCapturePrompts() const { return m_screenCapturePrompts; }
    [[nodiscard]] int microphonePrompts() const { return m_microphonePrompts; }
    [[nodiscard]] int probes() const { return m_probeCount; }

    void whenKnown(QObject *context, const std::function<void()> &known) override {
        if (m_isKnown)
            known();
        else
            m_waiting.emplace_back(context, known);
    }
    [[nodiscard]] bool isAccessibilityTrusted() const override { return m_isAccessibilityTrusted; }
    bool requestAccessibility() override {
        m_isAccessibilityTrusted |= std::exchange(m_grantsNextAccessibility, false);
        m_accessibilityPrompts += m_isAccessibilityTrusted ? 0 : 1;
        if (m_onAccessibilityPrompt)
            m_onAccessibilityPrompt();
        return m_isAccessibilityTrusted;
    }

    [[nodiscard]] bool isScreenCaptureGranted() const override { return m_isScreenCaptureGranted; }
    bool requestScreenCapture() override {
        m_isScreenCaptureGranted |= std::exchange(m_grantsNextScreenCapture, false);
        m_screenCapturePrompts += m_isScreenCaptureGranted ? 0 : 1;
        return m_isScreenCaptureGranted;
    }
    void probeScreenCapture(std::function<void(std::optional<QString>)> completion) override {
        ++m_probeCount;
        m_probes.push_back(std::move(completion));
    }

    [[nodiscard]] MicrophoneAuthorization microphoneAuthorization() const override { return m_microphone; }
    void requestMicrophone(std::function<void(bool)> completion) override {
        ++m_microphonePrompts;
        m_microphoneRequests.push_back(std::move(completion));
    }

private:
    bool m_isKnown = true;
    std::vector<std::pair<QPointer<QObject>, std::function<void()>>> m_waiting;
    bool m_isAccessibilityTrusted = false;
    bool m_isScreenCaptureGranted = false;
    MicrophoneAuthorization m_microphone = MicrophoneAuthorization::notDetermined;
    bool m_grantsNextAccessibility = false;
    std::function<void()> m_onAccessibilityPrompt;
    bool m_grantsNextScreenCapture = false;
    QString m_probeError = QStringLiteral("The user declined");
    int m_accessibilityPrompts = 0;
    int m_screenCapturePrompts = 0;
    int m_microphonePrompts = 0;
    int m_probeCount = 0;
    std::vector<std::function<void(std::optional<QString>)>> m_probes;
    std::vector<std::function<void(bool)>> m_microphoneRequests;
};

} // namespace tavrine
