#pragma once

#include "base/Date.h"

#include <QObject>

namespace tavrine {

class Alerts;
class ClipboardManager;
class Time;
class UrlOpener;

/// What the privacy page does. Lives as long as its page; main thread.
class PrivacySettingsModel : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds clearedTime{3.0};

    /// All outlive the model.
    struct Ports {
        Alerts &alerts;
        ClipboardManager &clipboardManager;
        Time &time;
        UrlOpener &urlOpener;
        QString resources;
    };
    explicit PrivacySettingsModel(Ports ports, QObject *parent = nullptr);

    /// Asks first, with the main loop running meanwhile. Pinned and saved items stay.
    void clearAll();
    /// For a while after the clearing.
    [[nodiscard]] bool cleared() const { return m_cleared; }
    void openPolicy();

Q_SIGNALS:
    void changed();

private:
    void tellCleared();

    Ports m_ports;
    bool m_cleared = false;
};

} // namespace tavrine
