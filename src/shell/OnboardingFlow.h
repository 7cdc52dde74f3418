#pragma once

#include "base/Date.h"

#include <QObject>

#include <functional>
#include <memory>

class QWidget;

namespace tavrine {

class LargeWindows;
class Time;

/// Shows the welcome window, and leads from it to the settings. Belongs to AppDelegate; lives on the main thread.
class OnboardingFlow : public QObject {
    Q_OBJECT

public:
    static constexpr auto windowTitle = "Welcome to Tavrine";
    static constexpr int windowWidth = 600;
    static constexpr int windowHeight = 500;
    static constexpr Seconds settingsDelay{0.3};

    struct Actions {
        /// Not yet shown; `onClose` comes when the person has finished.
        std::function<std::unique_ptr<QWidget>(std::function<void()> onClose)> makeWelcomeWindow;
        std::function<void()> openSettings; ///< on their first page
    };

    OnboardingFlow(LargeWindows &windows, Time &time, Actions actions, QObject *parent = nullptr);

    void showOnboarding();
    /// The welcome window has no close button: only this ends it.
    void finish();

private:
    LargeWindows &m_windows;
    Time &m_time;
    Actions m_actions;
};

} // namespace tavrine
