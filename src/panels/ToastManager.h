#pragma once

#include "panels/PanelAnimator.h"
#include "ports/Screens.h"

#include <QObject>
#include <QRectF>

#include <functional>
#include <memory>

class QWidget;

namespace tavrine {

class PanelWindow;
class PanelWindows;
class Time;

/// Shows a short message near the bottom of the main screen, without taking the keyboard. One instance, as long as the
/// process.
///
///  1. There is one toast at most and no queue: a new one replaces the present one at once.
///  2. What was begun for a toast is never cancelled. It acts on the toast that is there when it is due, so one that
///     appears during the wait of the one before gets that one's fade and lives shorter.
///  3. One whose screen goes away comes to the main one of those that are left.
class ToastManager : public QObject {
    Q_OBJECT

public:
    /// What stands in a toast; taken over by its window. `icon` is a symbol.
    using View = std::function<QWidget *(const QString &message, const QString &icon)>;

    static constexpr double width = 250;
    static constexpr double height = 60;
    static constexpr double heightAboveBottom = 120; ///< of the whole screen: a task bar does not count
    static constexpr Seconds fadeIn{0.3};
    static constexpr Seconds stay{2.0};
    static constexpr Seconds fadeOut{0.5};
    static constexpr double riseOnFadeIn = 10;
    static constexpr double riseOnFadeOut = 5;

    ToastManager(Time &time, Screens &screens, PanelWindows &windows, View view, QObject *parent = nullptr);
    ~ToastManager() override;

    /// May be called on any thread. `icon` is a symbol.
    void show(const QString &message, const QString &icon);

private:
    void showNow(const QString &message, const QString &icon);
    void beginFadeOut();
    void placeOn(const Screen &screen);
    void followScreens();
    void riseTo(double alpha, double rise, Seconds duration);
    void close();

    Time &m_time;
    Screens &m_screens;
    PanelWindows &m_windows;
    View m_view;
    PanelAnimator m_animator;
    std::unique_ptr<PanelWindow> m_window;
    QRectF m_frame; ///< where the window is, or where it is going
    quint32 m_screen = 0;
    double m_alpha = 0; ///< that it has, or is getting
    double m_risen = 0;
    Screens::Token m_changes;
};

} // namespace tavrine
