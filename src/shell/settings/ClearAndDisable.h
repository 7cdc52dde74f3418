#pragma once

#include "base/Date.h"

#include <QObject>

namespace tavrine {

class Alerts;
class ClipboardManager;
class FeatureFlags;
class Time;

/// Clears the clipboard history and switches it off, once the person has said so. Lives as long as the settings window;
/// main thread.
class ClearAndDisable : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds overlayTime{2.4};

    /// All outlive it.
    struct Ports {
        Alerts &alerts;
        ClipboardManager &clipboardManager;
        FeatureFlags &flags;
        Time &time;
    };
    explicit ClearAndDisable(Ports ports, QObject *parent = nullptr);

    /// Asks, with the main loop running meanwhile.
    void ask();
    [[nodiscard]] bool showClipboardClearConfirm() const { return m_showClipboardClearConfirm; }
    /// While the window tells that it is done.
    [[nodiscard]] bool showMemoryCleaningOverlay() const { return m_showMemoryCleaningOverlay; }

Q_SIGNALS:
    void changed();

private:
    void tellCleared();

    Ports m_ports;
    bool m_showClipboardClearConfirm = false;
    bool m_showMemoryCleaningOverlay = false;
    int m_run = 0;
};

} // namespace tavrine
