#pragma once

#include "ports/PanelWindow.h"

#include <QObject>

#include <memory>
#include <vector>

class QWidget;

namespace tavrine {

class Time;

/// The place of one window that the recorder lays over a screen. Main thread; outlived by its ports.
///
/// A window that goes is off the screen at once, or, when the next takes its place, a turn after that one is on it.
/// It is destroyed in that later turn, because its own button may be what closes it.
class OverlayWindow final : public QObject {
    Q_OBJECT

public:
    enum class Keyboard { taken, leftWhereItIs };

    OverlayWindow(PanelWindows &windows, Time &time) : m_windows(windows), m_time(time) {}

    /// Takes the content over.
    void show(const PanelDescription &description, const QRectF &frame, QWidget *content, Keyboard keyboard);
    void clear();
    /// The same in a later turn, for whatever is here then.
    void hide();

    /// Null while there is none.
    [[nodiscard]] PanelWindow *window() const { return m_window.get(); }

private:
    void tearDown(std::unique_ptr<PanelWindow> window);

    PanelWindows &m_windows;
    Time &m_time;
    std::unique_ptr<PanelWindow> m_window;
    std::vector<std::unique_ptr<PanelWindow>> m_tornDown;
};

} // namespace tavrine
