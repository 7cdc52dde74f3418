#include "shell/OnboardingFlow.h"

#include "base/Time.h"
#include "shell/LargeWindows.h"

namespace tavrine {
namespace {

constexpr auto welcome = LargeWindows::Kind::welcome;

} // namespace

OnboardingFlow::OnboardingFlow(LargeWindows &windows, Time &time, Actions actions, QObject *parent)
    : QObject(parent), m_windows(windows), m_time(time), m_actions(std::move(actions)) {}

void OnboardingFlow::showOnboarding() {
    m_windows.becomeRegular();
    if (!m_windows.window(welcome))
        m_windows.keep(welcome, m_actions.makeWelcomeWindow([this] { finish(); }));
    m_windows.activateApplication();
    m_windows.bringForward(welcome);
}

void OnboardingFlow::finish() {
    m_windows.close(welcome);
    m_actions.openSettings();
    // Closing the last window takes the program out of the front; only then can it come back.
    m_time.asyncAfter(settingsDelay, this, [this] {
        m_windows.activateApplication();
        m_windows.bringForward(LargeWindows::Kind::settings);
    });
}

} // namespace tavrine
