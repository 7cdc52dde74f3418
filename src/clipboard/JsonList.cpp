#include "clipboard/JsonList.h"

#include "base/Uuid.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace tavrine {

bool forEachJsonObject(const QByteArray &json, const std::function<bool(const QJsonObject &)> &take) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray())
        return false;
    const QJsonArray array = document.array();
    for (const QJsonValue &value : array) {
        if (!value.isObject() || !take(value.toObject()))
            return false;
    }
    return true;
}

std::optional<QString> jsonText(const QJsonObject &object, const QString &key) {
    const QJsonValue value = object.value(key);
    if (!value.isString())
        return std::nullopt;
    const QString text = value.toString();
    return text.isValidUtf16() ? text : QString::fromUtf8(text.toUtf8());
}

std::optional<QUuid> jsonUuid(const QJsonObject &object, const QString &key) {
    const std::optional<QString> text = jsonText(object, key);
    return text ? uuidFromString(*text) : std::nullopt;
}

} // namespace tavrine
