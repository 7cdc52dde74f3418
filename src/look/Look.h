#pragma once

#include "look/MotionClock.h"
#include "look/Theme.h"
#include "ports/Appearance.h"

#include <QHash>
#include <QObject>
#include <QPointer>

class QPalette;
class QWidget;

namespace tavrine::look {

/// The look of the process: its theme, its clock, and what the desktop allows. Made once by the program's entry, before
/// the first widget; main thread only.
///
/// The appearance decides between light and dark; where it says nothing, the lightness of the desktop's palette does.
/// Widgets work without a Look: in the colours of the palette, without motion.
class Look : public QObject {
    Q_OBJECT
public:
    /// Both outlive the Look. Without an appearance the palette decides.
    explicit Look(Time &time, Appearance *appearance = nullptr);
    ~Look() override;

    /// Null when there is none.
    [[nodiscard]] static Look *current();
    /// Whether things may move: there is a Look, and the desktop doesn't ask for reduced motion.
    [[nodiscard]] static bool moves();
    /// Whether windows may be translucent: shadows and fades.
    [[nodiscard]] static bool composites();

    [[nodiscard]] const Theme &theme() const { return m_theme; }
    [[nodiscard]] MotionClock &clock() { return m_clock; }

    /// Told by the program's entry, which knows the display: whether a compositor runs.
    void setCompositing(bool isCompositing);

    /// Gives a widget and all within it a theme of its own, whatever the desktop's.
    void setTheme(QWidget *widget, const Theme &theme);

Q_SIGNALS:
    /// The theme or what the desktop allows is another now. Every window is repainted without it.
    void changed();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    friend const Theme &themeOf(const QWidget *widget);
    void refresh();
    void repaintEverything();

    Appearance *m_appearance;
    MotionClock m_clock;
    Theme m_theme;
    QHash<const QWidget *, Theme> m_themes;
    bool m_isCompositing = false;
    bool m_reducesMotion = false;
    bool m_setsPalette = false;
    bool m_isRefreshing = false;
};

/// The theme that a widget is painted in. The reference holds until the next change.
[[nodiscard]] const Theme &themeOf(const QWidget *widget);

/// The theme as a palette, for the toolkit's own dialogs.
[[nodiscard]] QPalette paletteOf(const Theme &theme);

} // namespace tavrine::look
