#include "utilities/EmojiTable.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace tavrine {
namespace {

constexpr QLatin1String emojiKey("emoji");
constexpr QLatin1String nameKey("name");
constexpr QLatin1String categoryKey("category");
constexpr QLatin1String keywordsKey("keywords");

bool holdsOnlyTexts(const QJsonObject &object) {
    return std::all_of(object.begin(), object.end(), [](const QJsonValue &value) { return value.isString(); });
}

} // namespace

std::vector<EmojiItem> emojiTableFromJson(const QByteArray &json) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray())
        return {};
    const QJsonArray rows = document.array();
    std::vector<EmojiItem> items;
    items.reserve(static_cast<size_t>(rows.size()));
    for (const QJsonValue &value : rows) {
        const QJsonObject object = value.toObject();
        if (!value.isObject() || !holdsOnlyTexts(object))
            return {};
        if (!object.contains(emojiKey) || !object.contains(nameKey) || !object.contains(categoryKey))
            continue;
        items.push_back({object.value(emojiKey).toString(), object.value(nameKey).toString(),
                         object.value(keywordsKey).toString().split(QLatin1Char(','), Qt::SkipEmptyParts),
                         object.value(categoryKey).toString()});
    }
    return items;
}

std::vector<EmojiItem> loadEmojiTable(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    // One byte more than the limit tells a file that is too large, also one that does not know its size.
    const QByteArray json = file.read(emojiTableLimit + 1);
    return json.size() > emojiTableLimit ? std::vector<EmojiItem>() : emojiTableFromJson(json);
}

} // namespace tavrine
