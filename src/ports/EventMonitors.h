#pragma once

#include <QPoint>
#include <QtGlobal>

#include <functional>
#include <memory>

namespace tavrine {

/// Kinds of events, as bits of a mask.
namespace eventMask {
inline constexpr quint32 leftMouseDown = 1U << 1;
inline constexpr quint32 leftMouseUp = 1U << 2;
inline constexpr quint32 rightMouseDown = 1U << 3;
inline constexpr quint32 rightMouseUp = 1U << 4;
inline constexpr quint32 mouseMoved = 1U << 5;
inline constexpr quint32 leftMouseDragged = 1U << 6;
inline constexpr quint32 rightMouseDragged = 1U << 7;
inline constexpr quint32 keyDown = 1U << 10;
inline constexpr quint32 flagsChanged = 1U << 12;
inline constexpr quint32 scrollWheel = 1U << 22;
inline constexpr quint32 otherMouseUp = 1U << 26;
inline constexpr quint32 otherMouseDragged = 1U << 27;
} // namespace eventMask

/// Modifier keys that are down, as bits. The low 16 bits carry nothing that anybody may rely on.
namespace modifierFlag {
inline constexpr quint32 capsLock = 0x10000; ///< the lock is on
inline constexpr quint32 shift = 0x20000;
inline constexpr quint32 control = 0x40000;
inline constexpr quint32 option = 0x80000;
inline constexpr quint32 command = 0x100000;
inline constexpr quint32 function = 0x800000; ///< any other key that shifts what keys mean
inline constexpr quint32 deviceIndependent = 0xFFFF0000;
} // namespace modifierFlag

/// What a monitor is told of one event.
struct InputEvent {
    quint32 type = 0; ///< one bit of the mask
    quint32 modifierFlags = 0;
    int keyCode = -1;   ///< virtual key code of a key event; -1 for keys that have none
    QPoint scrollDelta; ///< of a scroll-wheel event, in eighths of a degree
};

/// A monitor that is at work. Destroying it ends it: its handler is not called again.
class EventMonitor {
public:
    virtual ~EventMonitor() = default;
};

/// Watches over keyboard and mouse. Lives on the main thread, as long as the process.
///
///  1. Every event is told to either the global or the local monitors of its kind: to the global ones when it goes to
///     another program, to the local ones when it goes to a window of this program.
///  2. Global monitors see events while another program holds a grab or a drag is under way, and change nothing.
///  3. A flags-changed event tells the flags after the change. A key that repeats makes none. Option is either Alt
///     key as the layout has it; the key that reaches a third level of the layout is none.
///  4. A local monitor may swallow a key or a scroll event; then nothing else in the program sees it.
///  5. A drag is for the window where the button was pressed, wherever it goes. While a view of this program drags
///     data, that drag consumes its own moves, and only its release is told, to the local monitors.
///  6. Moves and drags that come fast are told as one, a hundred times a second and more. A release is told each time,
///     after the moves before it.
///  7. Where the desktop tells no program what goes to the others, `tellsOfOthers` says so. Global monitors are told
///     of presses alone there, and of those while a panel of this program has the keyboard: such a press reaches
///     nobody else.
class EventMonitors {
public:
    using GlobalHandler = std::function<void(const InputEvent &)>;
    /// Returns true to swallow the event.
    using LocalHandler = std::function<bool(const InputEvent &)>;

    virtual ~EventMonitors() = default;

    /// True where global monitors hear of whatever they ask for.
    [[nodiscard]] virtual bool tellsOfOthers() const { return true; }

    [[nodiscard]] virtual std::unique_ptr<EventMonitor> addGlobalMonitor(quint32 mask, GlobalHandler handler) = 0;
    [[nodiscard]] virtual std::unique_ptr<EventMonitor> addLocalMonitor(quint32 mask, LocalHandler handler) = 0;
};

} // namespace tavrine
