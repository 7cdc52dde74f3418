#pragma once

#include "base/Date.h"

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace tavrine::qrResult {

inline constexpr Seconds copiedShown{1.5};       ///< of a row
inline constexpr Seconds bubbleCopiedShown{1.8}; ///< of a bubble

/// "1 QR Code Found", "3 QR Codes Found".
[[nodiscard]] QString title(qsizetype count);

/// "Code 2" over the row at `index`; none where there is but one row.
[[nodiscard]] std::optional<QString> header(std::optional<int> index);

/// The address that a row's "Open" opens; none for anything that is not of the web.
[[nodiscard]] std::optional<QUrl> webAddress(const QString &code);

} // namespace tavrine::qrResult
