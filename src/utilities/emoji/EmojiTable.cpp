#include "utilities/emoji/EmojiTable.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tavrine {
namespace {

constexpr QLatin1String emojiKey("emoji");
constexpr QLatin1String nameKey("name");
constexpr QLatin1String categoryKey("category");
constexpr QLatin1String keywordsKey("keywords");

/// One object of the table; false when a value in it is no text.
struct Fields {
    QString emoji, name, category, keywords;
    bool hasEmoji = false, hasName = false, hasCategory = false;

    bool read(const QJsonObject &object) {
        for (auto field = object.begin(); field != object.end(); ++field) {
            if (!field->isString())
                return false;
            const QString key = field.key();
            if (key == emojiKey) {
                emoji = field->toString();
                hasEmoji = true;
            } else if (key == nameKey) {
                name = field->toString();
                hasName = true;
            } else if (key == categoryKey) {
                category = field->toString();
                hasCategory = true;
            } else if (key == keywordsKey) {
                keywords = field->toString();
            }
        }
        return true;
    }
};

} // namespace

std::vector<EmojiItem> emojiTableFromJson(const QByteArray &json) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray())
        return {};
    const QJsonArray rows = document.array();
    std::vector<EmojiItem> items;
    items.reserve(static_cast<size_t>(rows.size()));
    for (const QJsonValue &value : rows) {
        Fields fields;
        if (!value.isObject() || !fields.read(value.toObject()))
            return {};
        if (!fields.hasEmoji || !fields.hasName || !fields.hasCategory)
            continue;
        // Rows of one category share its text.
        if (!items.empty() && items.back().category == fields.category)
            fields.category = items.back().category;
        items.push_back(
            {fields.emoji, fields.name, fields.keywords.split(u',', Qt::SkipEmptyParts).join(u','), fields.category});
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
