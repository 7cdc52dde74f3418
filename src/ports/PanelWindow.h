#pragma once

#include <QMargins>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <functional>
#include <memory>

class QPainter;
class QWidget;

namespace tavrine {

/// How high a window floats.
namespace windowLevel {
inline constexpr int normal = 0;
inline constexpr int floating = 3;
inline constexpr int mainMenu = 24;
inline constexpr int status = 25;
inline constexpr int popUpMenu = 101;
inline constexpr int screenSaver = 1000;
} // namespace windowLevel

/// Where a window is, among desktops and full-screen windows, as bits.
namespace collectionBehavior {
inline constexpr quint32 canJoinAllSpaces = 1;
inline constexpr quint32 transient = 8; ///< floats, and is left out of overviews of the windows
inline constexpr quint32 stationary = 16;
inline constexpr quint32 ignoresCycle = 64;
inline constexpr quint32 fullScreenAuxiliary = 256;
} // namespace collectionBehavior

/// Whether other programs may see the window's pixels.
enum class WindowSharing { none = 0, readOnly = 1 };

/// The shadow of a panel, for desktops that can show one: the room that it needs round the panel, and how it is painted
/// round the rectangle of the panel.
struct PanelShadow {
    QMargins room;
    std::function<void(QPainter &painter, const QRectF &panel)> paint;
};

/// What a panel is, for the desktop.
struct PanelDescription {
    QString title;
    QSizeF contentSize;
    int level = windowLevel::floating;
    quint32 collectionBehavior = collectionBehavior::canJoinAllSpaces | collectionBehavior::fullScreenAuxiliary;
    bool canBecomeKey = true; ///< takes the keyboard when it is made key
    bool isClear = true;      ///< shows what is behind wherever its content draws nothing
    bool hasShadow = true;
    PanelShadow shadow = {}; ///< of a panel that has one
    bool isMovableByBackground = false;
    bool isInTaskBar = false;        ///< and in the pager, with its title and the icon of its content
    bool ignoresMouseEvents = false; ///< clicks go to what is behind
    WindowSharing sharing = WindowSharing::readOnly;
};

/// A panel over whatever the person works in. Lives on the main thread; its owner is who made it.
///
///  1. It has no frame, appears on every desktop and above full-screen windows; and in no task bar and no pager, unless
///     it is described so and the desktop knows such panels.
///  2. Being made key gives it the keyboard; being ordered out gives the keyboard back to where it was.
///  3. Frames are in points with the origin at the bottom left, as `Screens` tells them, and without the shadow. The
///     frame is the one that was set last or that the person moved the panel to, also on the screen.
///  4. It never goes by itself: where the desktop asks for its end, as by Alt+F4, `onClosed` hears of it.
class PanelWindow {
public:
    virtual ~PanelWindow() = default;

    /// By which others know the window as long as it is there.
    [[nodiscard]] virtual qint64 windowNumber() const = 0;
    [[nodiscard]] virtual bool isVisible() const = 0;
    [[nodiscard]] virtual QRectF frame() const = 0;
    virtual void setFrame(const QRectF &frame) = 0;
    /// 0 is invisible, 1 opaque. Without a compositor only 1 can be seen.
    [[nodiscard]] virtual double alpha() const = 0;
    virtual void setAlpha(double alpha) = 0;

    /// Shows it and gives it the keyboard, unless it cannot become key.
    virtual void makeKeyAndOrderFront() = 0;
    /// Shows it above the others and leaves the keyboard where it is.
    virtual void orderFrontRegardless() = 0;
    /// A question that its content asked goes with it, unanswered.
    virtual void orderOut() = 0;

    /// The panel takes the content over and destroys it with itself or with the next. Null for none.
    virtual void setContentView(QWidget *content) = 0;
    virtual void setIgnoresMouseEvents(bool ignores) = 0;

    /// Called after the person, and not the program, moved it.
    virtual void setOnMoved(std::function<void()> onMoved) = 0;
    virtual void setOnClosed(std::function<void()> onClosed) = 0;
    /// Called when the desktop has begun or ceased to show windows through others.
    virtual void compositingChanged() = 0;
};

/// Makes panels.
class PanelWindows {
public:
    virtual ~PanelWindows() = default;
    /// A panel that is ordered out, without content.
    [[nodiscard]] virtual std::unique_ptr<PanelWindow> makePanel(const PanelDescription &description) = 0;
    /// True while the desktop can draw windows that let others show through: without it fades have no meaning.
    [[nodiscard]] virtual bool isComposited() const = 0;
    /// True while a modal question of this program waits for its answer: no panel takes keys or clicks until then.
    [[nodiscard]] virtual bool isAsking() const = 0;
};

} // namespace tavrine
