#pragma once

#include <QString>

namespace tavrine {

/// What keys do to the text of a script, without an editor.
namespace scriptEditing {

/// One step of indentation.
inline constexpr auto indent = "  ";

/// The white space that a line break gets behind `before`, the part of its line up to the cursor: that of the line, and
/// a step more after an open bracket.
[[nodiscard]] QString indentAfter(const QString &before);

/// How many characters of white space go from the start of a line that moves one step to the left.
[[nodiscard]] int outdentOf(const QString &line);

/// Where the bracket stands that belongs to the one at `place`; -1 when there is none, or none within `farthest`
/// characters. Brackets in texts and comments count as any.
[[nodiscard]] int matchingBracket(const QString &text, int place, int farthest = 100'000);

} // namespace scriptEditing
} // namespace tavrine
