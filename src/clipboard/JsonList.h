#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QUuid>

#include <functional>
#include <optional>

namespace tavrine {

/// Hands the members of a stored JSON array of objects to `take`, one by one. False when the text is no such array, or
/// as soon as `take` refuses one: a stored list is read whole or not at all. Of a key that stands twice the last
/// counts.
[[nodiscard]] bool forEachJsonObject(const QByteArray &json, const std::function<bool(const QJsonObject &)> &take);

/// The value under `key` when it has that type. Half a surrogate pair in a text reads as U+FFFD, for no file and no
/// column could hold it.
[[nodiscard]] std::optional<QString> jsonText(const QJsonObject &object, const QString &key);
[[nodiscard]] std::optional<QUuid> jsonUuid(const QJsonObject &object, const QString &key);

} // namespace tavrine
