#pragma once

#include "ports/EventTap.h"

#include <QObject>

namespace tavrine {

class Alerts;
class Time;
class UrlOpener;

/// Blocks the keyboard while it is wiped. Begun and ended with the mouse, which stays free; no key ends it. Lives on
/// the main thread, as long as the process.
///
///  1. `isCleaning` says that the block is in force, and nothing less: it stays false while another program holds the
///     keyboard, for a second at most, and becomes false when the desktop is lost, the machine goes to sleep or the
///     session is locked.
///  2. Where the block is not to be had, the person is told how to allow it, a turn later. A lock of the session or a
///     sleep that comes before it is no reason to.
class KeyboardCleanerManager : public QObject {
    Q_OBJECT

public:
    /// All outlive the manager.
    struct Ports {
        EventTaps &eventTaps;
        Alerts &alerts;
        UrlOpener &urlOpener;
        Time &time;
    };

    explicit KeyboardCleanerManager(const Ports &ports) : m_ports(ports) {}

    [[nodiscard]] bool isCleaning() const { return m_isCleaning; }
    /// Whether the block is still waited for.
    [[nodiscard]] bool isStarting() const { return m_eventTap && !m_isCleaning; }

    /// Nothing while the block is in force or waited for.
    void startCleaning();
    /// Also ends the wait.
    void stopCleaning();

Q_SIGNALS:
    /// Was set, be it to what it was.
    void isCleaningPublished(bool isCleaning);

private:
    void setCleaning(bool isCleaning);
    void onChange();
    void askForPermission();

    Ports m_ports;
    std::unique_ptr<EventTap> m_eventTap;
    bool m_isCleaning = false;
};

} // namespace tavrine
