#pragma once

#include "base/Date.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <array>
#include <functional>
#include <memory>

namespace tavrine {

class Application;
class ApplicationActivator;
class Time;

/// The large windows, one of each kind at most: who holds them, how they close, and with them the activation policy.
/// The program is in the task bar while one of them is on the screen, and an accessory otherwise.
///
/// One instance, as long as the process; lives on the main thread. A window that closes is deleted and forgotten.
class LargeWindows : public QObject {
    Q_OBJECT

public:
    enum class Kind { editor, settings, welcome };

    /// From the closing of a window to the leaving of the task bar: the next window may be on its way.
    static constexpr Seconds policyDelay{0.1};

    using Activator = std::function<ApplicationActivator &()>; ///< made when it is first needed

    LargeWindows(Application &application, Time &time, Activator activator, QObject *parent = nullptr);
    ~LargeWindows() override;

    [[nodiscard]] QWidget *window(Kind kind) const { return m_windows[index(kind)]; }
    /// Takes a window over that is not on the screen yet.
    void keep(Kind kind, std::unique_ptr<QWidget> window);

    /// Puts the program into the task bar: before a window appears.
    void becomeRegular();
    /// Shown, in front, with the keyboard. Nothing when there is none.
    void bringForward(Kind kind);
    void activateApplication();

    /// Closes the window, which may refuse, and forgets it all the same. Nothing when there is none.
    void close(Kind kind);
    /// Forgets the window without closing it: whoever takes it closes it.
    [[nodiscard]] QPointer<QWidget> detach(Kind kind);
    /// Takes all of them off the screen and closes none.
    void orderOutAll();

    /// Forgets one of the windows that closes, and leaves the task bar a little later. Nothing for any other window.
    void windowWillClose(QWidget *window);
    /// A panel, a toast or the shelf is no window among others, and never counts.
    [[nodiscard]] bool isAnyVisible() const;
    /// Leaves the task bar when none of the windows is visible.
    void restoreAccessoryPolicy();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    static constexpr std::size_t index(Kind kind) { return static_cast<std::size_t>(kind); }

    Application &m_application;
    Time &m_time;
    Activator m_activator;
    std::array<QPointer<QWidget>, 3> m_windows;
};

} // namespace tavrine
