#pragma once

#include "base/Date.h"

#include <QObject>

#include <memory>

namespace tavrine {

class Access;
class Time;
class Timer;

/// Watches the two grants while a page shows them, so that a grant given in the desktop's settings is seen within two
/// seconds. Belongs to that page; lives on the main thread.
class PermissionChecker : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds pollInterval{2.0};
    static constexpr Seconds delayAfterRequest{1.0};

    PermissionChecker(Access &access, Time &time, QObject *parent = nullptr);
    ~PermissionChecker() override;

    [[nodiscard]] bool accessibilityGranted() const { return m_accessibilityGranted; }
    [[nodiscard]] bool screenRecordingGranted() const { return m_screenRecordingGranted; }

    /// Reads both grants in the next turn.
    void refresh();
    void requestAccessibility();
    void requestScreenRecording();

Q_SIGNALS:
    void accessibilityGrantedChanged();
    void screenRecordingGrantedChanged();

private:
    void read();

    Access &m_access;
    Time &m_time;
    bool m_accessibilityGranted = false;
    bool m_screenRecordingGranted = false;
    std::unique_ptr<Timer> m_timer;
};

} // namespace tavrine
