#pragma once

#include <QRect>

#include <optional>
#include <vector>

class QByteArray;

namespace tavrine {

/// What sway tells of its windows on its own socket, which it names to the programs of its session: the topmost first,
/// decorations included, in points. Empty where nobody answers at once.
[[nodiscard]] std::vector<QRect> readSwayWindows();

/// The same out of the answer.
[[nodiscard]] std::vector<QRect> swayWindowsIn(const QByteArray &tree);

} // namespace tavrine
