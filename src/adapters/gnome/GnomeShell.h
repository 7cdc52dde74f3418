#pragma once

#include "adapters/gnome/MutterMonitors.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QDBusPendingCall;

namespace tavrine {

/// A window of a program, as the shell tells it.
struct GnomeWindow {
    QString application; ///< its identifier; empty where it has none
    QString windowClass;
    qint64 process = 0; ///< 0 when unknown
    quint32 number = 0; ///< names it while the shell lives
};

/// The pointer in pixels of the X server's plane, and what is held.
struct GnomePointer {
    QPoint place;
    quint32 state = 0; ///< bits of `gnomeState`
    bool operator==(const GnomePointer &) const = default;
};

/// One screen's part of what `takePicture` gives.
struct GnomePicture {
    QRect area;        ///< of the screen, on the X server's plane
    qint64 length = 0; ///< of its PNG, in bytes; they follow one another
};

/// What is held, as the shell numbers it.
namespace gnomeState {
inline constexpr quint32 shift = 1U << 0;
inline constexpr quint32 capsLock = 1U << 1;
inline constexpr quint32 control = 1U << 2;
inline constexpr quint32 alt = 1U << 3;
inline constexpr quint32 super = 1U << 6;
inline constexpr quint32 leftButton = 1U << 8;
inline constexpr quint32 middleButton = 1U << 9;
inline constexpr quint32 rightButton = 1U << 10;
} // namespace gnomeState

/// Accelerators as the shell spells them, by the key's position.
namespace gnomeKey {
inline constexpr QLatin1String escape("0x09");
} // namespace gnomeKey

/// The way to this program's extension of GNOME Shell. Lives on the main thread and never waits: everything is asked
/// with a limit, and what is known stands here meanwhile.
///
///  1. It attaches as soon as the extension is there, and again when it was switched on anew or the shell was
///  restarted.
///  2. Without it nothing is known, and what is asked is refused at once.
///  3. Only the owner of the shell's own name on the bus is listened to.
class GnomeShell final : public QObject {
    Q_OBJECT

public:
    /// A shell that is busy answers late; nobody waits for it.
    static constexpr std::chrono::seconds usualPatience{5};

    explicit GnomeShell(std::chrono::milliseconds patience = usualPatience);

    /// What somebody has to be told when a program starts is held back for it no longer than this.
    static constexpr std::chrono::seconds longestSilence{2};

    [[nodiscard]] bool isAttached() const { return m_isAttached; }
    /// Calls `settled` once it is known whether the extension is there, or the shell has been silent for too long;
    /// within the call after that. Not called when `context` is gone by then.
    void whenSettled(QObject *context, const std::function<void()> &settled);
    /// In the order in which they came.
    [[nodiscard]] const std::vector<GnomeWindow> &windows() const { return m_windows; }
    /// None while no window of a program has the keyboard.
    [[nodiscard]] std::optional<GnomeWindow> focusedWindow() const;
    /// Where the pointer was when the shell told it last.
    [[nodiscard]] const GnomePointer &pointer() const { return m_pointer; }
    /// How many pixels the screen that begins there on the X server's plane has for one of that plane's.
    [[nodiscard]] double finenessAt(QPoint corner) const;

    /// `answered` gets the number of the grab: 0 when the combination is taken or the shell does not answer in time. A
    /// shell that answers after that has the grab all the same: `answered` is called once more, with its number.
    void grabKey(const QString &accelerator, QObject *context, std::function<void(quint32)> answered);
    void ungrabKey(quint32 action);
    void activateWindow(quint32 number);
    /// Keys by their X symbols, all pressed in this order and let go in the other.
    void typeChord(const std::vector<quint32> &symbols);
    /// Has pictures of all screens written to a file, of one moment, each in the screen's own pixels; the file is the
    /// caller's. None when the shell does not give them.
    void takePicture(int descriptor, QObject *context,
                     std::function<void(const std::vector<GnomePicture> &pictures)> answered);

    /// While anybody holds one, `inputChanged` is told every so often while the person does something.
    using InputWatch = std::shared_ptr<void>;
    [[nodiscard]] InputWatch watchInput(std::chrono::milliseconds interval);

Q_SIGNALS:
    void attached();
    void detached();
    void settled();
    void keyPressed(quint32 action);
    void windowsChanged();
    void monitorsChanged();
    void inputChanged(const tavrine::GnomePointer &before);

private Q_SLOTS:
    void onSignal(const QDBusMessage &message);
    void onOwnerChanged(const QString &name, const QString &before, const QString &after);
    void onMonitorsChanged(const QDBusMessage &message);

private:
    void onBus(const QDBusConnection &bus);
    void setOwner(const QString &owner);
    void askUntilAnswered(const QDBusMessage &call, const std::function<void(const QDBusMessage &)> &answered,
                          const std::function<void()> &refused = {});
    void askForMonitors();
    void attach();
    void detach();
    void settle();
    void takeAttached(const QList<QVariant> &arguments);
    void tellInterval();
    void ask(const QString &method, const QList<QVariant> &arguments, QObject *context,
             std::function<void(const QDBusPendingCall &)> answered = {});

    const std::chrono::milliseconds m_patience;
    std::optional<QDBusConnection> m_bus; ///< once one is open
    QString m_owner;                      ///< of the shell's name
    std::vector<GnomeWindow> m_windows;
    quint32 m_focused = 0;
    GnomePointer m_pointer;
    std::vector<MutterMonitor> m_monitors;
    std::vector<std::weak_ptr<std::chrono::milliseconds>> m_watches;
    std::chrono::milliseconds m_interval{0}; ///< that the shell was told
    bool m_isAttached = false;
    bool m_isSettled = false;
};

} // namespace tavrine
