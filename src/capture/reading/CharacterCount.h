#pragma once

#include <QString>

namespace tavrine {

/// Characters as a person counts them: a letter with its marks, an emoji with its joiners, and a line end are one each.
[[nodiscard]] qsizetype characterCount(const QString &text);

/// "5 characters". The word does not follow the number.
[[nodiscard]] QString characterCountText(const QString &text);

} // namespace tavrine
