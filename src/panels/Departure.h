#pragma once

#include "base/Date.h"

#include <QObject>

#include <memory>

namespace tavrine {

class PanelWindows;
class Time;
class Workspace;

/// Hears that the person went from a panel of this program on to another program where no click tells it: by the
/// keyboard, or by a task bar. Main thread; owned by whoever has the panel.
///
///  1. The desktop gives the keyboard to no program for a moment while it moves it, and a panel that was just shown may
///     get it late. `left` is said once that is over, and another program is still in front.
///  2. It is not said while a question of this program is open.
class Departure final : public QObject {
    Q_OBJECT

public:
    /// All of them outlive it.
    struct Ports {
        Workspace &workspace;
        PanelWindows &windows;
        Time &time;
    };

    explicit Departure(const Ports &ports);
    ~Departure() override;

    /// A panel was shown at this moment.
    void panelShown();

Q_SIGNALS:
    void left();

private:
    void askAfter(Seconds delay);

    Ports m_ports;
    Seconds m_lastShowing{0}; ///< as uptime
    std::shared_ptr<void> m_deactivations;
};

} // namespace tavrine
