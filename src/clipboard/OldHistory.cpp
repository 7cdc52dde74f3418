#include "clipboard/OldHistory.h"

#include "clipboard/JsonList.h"

#include <QJsonObject>

#include <cmath>

namespace tavrine {
namespace {

bool isAbsent(const QJsonValue &value) {
    return value.isUndefined() || value.isNull();
}

/// The optional flag under `key`: false when absent, none when it is something else than a Bool.
std::optional<bool> flag(const QJsonObject &object, const QString &key) {
    const QJsonValue value = object.value(key);
    if (isAbsent(value))
        return false;
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<ClipboardItem> decodeItem(const QJsonObject &object) {
    const std::optional<QUuid> id = jsonUuid(object, QStringLiteral("id"));
    const std::optional<QString> content = jsonText(object, QStringLiteral("content"));
    const QJsonValue date = object.value(QStringLiteral("date"));
    const std::optional<bool> isPinned = flag(object, QStringLiteral("isPinned"));
    const std::optional<bool> isSaved = flag(object, QStringLiteral("isSaved"));
    const QString fileNameKey = QStringLiteral("imageFileName");
    const std::optional<QString> fileName = jsonText(object, fileNameKey);
    if (!id || !content || !date.isDouble() || !std::isfinite(date.toDouble()) || !isPinned || !isSaved)
        return std::nullopt;
    if (!fileName && !isAbsent(object.value(fileNameKey)))
        return std::nullopt;

    ClipboardItem item;
    item.id = *id;
    item.content = contentOrImage(*content, fileName);
    item.date = {date.toDouble() + Date::referenceDate};
    item.isPinned = *isPinned;
    item.isSaved = *isSaved;
    item.imageFileName = fileName;
    return item;
}

} // namespace

std::optional<std::vector<ClipboardItem>> decodeOldHistory(const QByteArray &json) {
    std::vector<ClipboardItem> items;
    const bool isReadable = forEachJsonObject(json, [&](const QJsonObject &object) {
        std::optional<ClipboardItem> item = decodeItem(object);
        if (item)
            items.push_back(std::move(*item));
        return item.has_value();
    });
    return isReadable ? std::optional(std::move(items)) : std::nullopt;
}

} // namespace tavrine
