#pragma once

#include <QColor>

#include <functional>
#include <optional>

namespace tavrine {

enum class ColorScheme { noPreference = 0, dark = 1, light = 2 };

/// What the desktop says about looks. Everything starts out unsaid.
struct DesktopAppearance {
    ColorScheme colorScheme = ColorScheme::noPreference;
    /// Opaque; empty when the desktop names none, or one that is no colour.
    std::optional<QColor> accent = std::nullopt;
    bool reducesMotion = false;

    bool operator==(const DesktopAppearance &) const = default;
};

/// The desktop's wishes for the looks of programs. Lives on the main thread.
///
///  1. Asking never blocks and never starts a program: until an answer is there, `settings` says what is known.
///  2. `onChange` is called after `settings` changed, and only then.
///  3. A desktop without such wishes, and one whose service goes away, leave or return everything unsaid.
class Appearance {
public:
    virtual ~Appearance() = default;
    [[nodiscard]] virtual DesktopAppearance settings() const = 0;
    virtual void setOnChange(std::function<void()> onChange) = 0;
};

} // namespace tavrine
