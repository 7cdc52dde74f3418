#pragma once

#include "base/Date.h"

#include <QObject>
#include <QString>

#include <functional>

namespace tavrine {

class Application;
class Time;

/// Shows the welcome window, and leads from it to the settings. Belongs to AppDelegate; lives on the main thread.
class OnboardingFlow : public QObject {
    Q_OBJECT

public:
    static constexpr auto windowTitle = "Welcome to Tavrine";
    static constexpr int windowWidth = 600;
    static constexpr int windowHeight = 500;
    static constexpr Seconds settingsDelay{0.3};

    /// What is done to windows. The welcome window has no close button: only finishing ends it.
    struct Windows {
        std::function<bool()> hasWelcomeWindow;
        std::function<void()> makeWelcomeWindow; ///< centred, not yet shown
        std::function<void()> showWelcomeWindow; ///< key and front
        std::function<void()> closeWelcomeWindow;
        std::function<void(const QString &page)> openSettingsWindow;
        std::function<void()> showSettingsWindow; ///< key and front
        std::function<void()> activateApplication;
    };

    OnboardingFlow(Application &application, Time &time, Windows windows, QObject *parent = nullptr);

    void showOnboarding();
    void finish();

private:
    Application &m_application;
    Time &m_time;
    Windows m_windows;
};

} // namespace tavrine
