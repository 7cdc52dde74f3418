#pragma once

#include <QColor>

namespace tavrine::look {

/// The colours of one appearance. A value: made for light or dark and an accent, and compared as a whole.
///
///  1. `text` and `secondaryText` stand at 4.5:1 or better on every ground of the theme: `surface`, `elevated`,
///  `field`,
///     and `surface` under `hover`, `pressed` and `selection`. `tertiaryText` stands at 3:1 on `surface`,
///     `placeholder` at 4.5:1 on `surface` and `field`.
///  2. `accentText`, `dangerText` and `successText` stand at 4.5:1 on `surface` and `elevated` whatever accent the
///     person chose; `onAccent` and `onDanger` stand at 4.5:1 on `accent` and `danger`.
///  3. Colours with alpha (`hover`, `pressed`, `selection`, `separator`, `control`) are laid over a ground.
struct Theme {
    bool isDark = false;
    QColor surface;
    QColor elevated;
    QColor field;
    QColor control; ///< the fill of a control at rest
    QColor hover;
    QColor pressed;
    QColor selection;
    QColor separator;
    QColor outline; ///< the hairline round panels and cards
    QColor text;
    QColor secondaryText;
    QColor tertiaryText;
    QColor placeholder; ///< what a field says while it is empty
    QColor accent;      ///< as a fill
    QColor onAccent;
    QColor accentText;
    QColor danger;
    QColor onDanger;
    QColor dangerText;
    QColor success;
    QColor successText;
    QColor warning;
    QColor focusRing;
    QColor shadow;
    QColor toolTip;
    QColor onToolTip;

    bool operator==(const Theme &) const = default;
};

/// The accent of a desktop that names none.
inline constexpr QColor defaultAccent{0x0A, 0x6C, 0xF0};

[[nodiscard]] Theme lightTheme(const QColor &accent = defaultAccent);
[[nodiscard]] Theme darkTheme(const QColor &accent = defaultAccent);

/// The contrast of two opaque colours after the Web Content Accessibility Guidelines: 1 for equal, 21 for black on
/// white.
[[nodiscard]] double contrast(const QColor &a, const QColor &b);

/// `top` laid over an opaque `ground`.
[[nodiscard]] QColor over(const QColor &ground, const QColor &top);

/// A colour part of the way from `from` to `to`, alpha included.
[[nodiscard]] QColor mixed(const QColor &from, const QColor &to, double part);

/// `colour`, made lighter or darker (away from `ground`) no more than it takes to reach `ratio` on `ground`.
[[nodiscard]] QColor readable(const QColor &colour, const QColor &ground, double ratio);

} // namespace tavrine::look
