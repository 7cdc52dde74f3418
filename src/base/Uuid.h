#pragma once

#include <QString>
#include <QUuid>

#include <optional>

namespace tavrine {

/// The text form of a UUID that is stored and that names files: 36 characters, upper-case, with hyphens.
[[nodiscard]] QString uuidString(const QUuid &id);

/// A fresh random UUID in that form.
[[nodiscard]] QString freshUuidString();

/// Reads the 36-character form in either case. Nothing else is a UUID: no braces, no missing hyphens.
[[nodiscard]] std::optional<QUuid> uuidFromString(const QString &text);

} // namespace tavrine
