#include "shell/OnboardingFlow.h"

#include "base/Time.h"
#include "ports/Application.h"

namespace tavrine {

OnboardingFlow::OnboardingFlow(Application &application, Time &time, Windows windows, QObject *parent)
    : QObject(parent), m_application(application), m_time(time), m_windows(std::move(windows)) {}

void OnboardingFlow::showOnboarding() {
    m_application.setActivationPolicy(ActivationPolicy::regular);
    if (!m_windows.hasWelcomeWindow())
        m_windows.makeWelcomeWindow();
    m_windows.activateApplication();
    m_windows.showWelcomeWindow();
}

void OnboardingFlow::finish() {
    m_windows.closeWelcomeWindow();
    m_windows.openSettingsWindow(QStringLiteral("Home"));
    // Closing the last window takes the program out of the front; only then can it come back.
    m_time.asyncAfter(settingsDelay, this, [this] {
        m_windows.activateApplication();
        m_windows.showSettingsWindow();
    });
}

} // namespace tavrine
