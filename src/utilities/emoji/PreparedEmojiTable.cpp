#include "utilities/emoji/PreparedEmojiTable.h"

#include "utilities/emoji/EmojiTable.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <cstring>
#include <limits>
#include <span>

namespace tavrine {
namespace {

constexpr quint32 magic = 0x454D4F32; // another form has another number
constexpr qint64 fileLimit = 64LL * 1024 * 1024;

struct Header {
    quint32 magic;
    quint32 rowCount;
    quint32 textUnits; ///< of all texts, which stand behind the rows
    quint32 jsonSize;
};

/// The texts of a row stand one behind the other from `begin` on, in this order; the category where another row of it
/// has put it.
struct Row {
    quint32 begin;
    quint32 category;
    quint32 nameRank;
    quint16 categoryLength;
    quint16 emoji, name, keywords, search; ///< lengths
    quint16 keywordsInSearch;
};

/// Collects rows and their texts; `isFine` goes when a text is too long.
struct Writer {
    QString text;
    std::vector<Row> rows;
    QHash<QString, quint32> categories;
    bool isFine = true;

    quint16 put(const QString &part) {
        isFine = isFine && part.size() <= std::numeric_limits<quint16>::max();
        text += part;
        return static_cast<quint16>(part.size());
    }
    void add(const EmojiItem &item, const EmojiSearchText &search) {
        if (!categories.contains(item.category)) {
            categories.insert(item.category, static_cast<quint32>(text.size()));
            put(item.category);
        }
        Row row{};
        row.category = categories.value(item.category);
        row.categoryLength = static_cast<quint16>(item.category.size());
        row.begin = static_cast<quint32>(text.size());
        row.nameRank = static_cast<quint32>(search.nameRank);
        row.emoji = put(item.emoji);
        row.name = put(item.name);
        row.keywords = put(item.keywordText);
        row.search = put(search.text);
        row.keywordsInSearch = static_cast<quint16>(search.keywordsBegin);
        rows.push_back(row);
    }
};

/// A part of the file as a text, without a copy of it.
QString raw(std::span<const QChar> text, size_t begin, size_t length) {
    return QString::fromRawData(text.data() + begin, static_cast<qsizetype>(length));
}

/// False when the row points beyond the texts, or its lengths deny each other.
bool isWithin(const Row &row, size_t units, size_t rowCount) {
    const size_t length = size_t{row.emoji} + row.name + row.keywords + row.search;
    return row.begin <= units && length <= units - row.begin && row.category <= units &&
           row.categoryLength <= units - row.category && row.nameRank < rowCount && row.name <= row.keywordsInSearch &&
           row.keywordsInSearch <= row.search;
}

EmojiRows rowsIn(const std::shared_ptr<QFile> &file, const Header &header, const uchar *bytes) {
    const std::span stored(reinterpret_cast<const Row *>(bytes + sizeof(Header)), header.rowCount);
    const std::span text(reinterpret_cast<const QChar *>(bytes + sizeof(Header) + stored.size_bytes()),
                         header.textUnits);
    EmojiRows rows;
    rows.items.reserve(stored.size());
    rows.searchTexts.reserve(stored.size());
    for (const Row &row : stored) {
        if (!isWithin(row, text.size(), stored.size()))
            return {};
        const size_t name = row.begin + row.emoji;
        const size_t keywords = name + row.name;
        // An emoji outlives the table, among the recents and in other programs.
        rows.items.push_back({QString(text.data() + row.begin, row.emoji), raw(text, name, row.name),
                              raw(text, keywords, row.keywords), raw(text, row.category, row.categoryLength)});
        rows.searchTexts.push_back({raw(text, keywords + row.keywords, row.search), row.name, row.keywordsInSearch,
                                    static_cast<int>(row.nameRank)});
    }
    rows.file = file;
    return rows;
}

EmojiRows loadPrepared(const QString &path, const QFileInfo &json) {
    const QFileInfo info(path);
    auto file = std::make_shared<QFile>(path);
    if (!info.exists() || info.lastModified() < json.lastModified() || info.size() > fileLimit ||
        info.size() < qint64{sizeof(Header)} || !file->open(QIODevice::ReadOnly))
        return {};
    const qint64 size = file->size();
    const uchar *bytes = file->map(0, size);
    if (!bytes || size < qint64{sizeof(Header)})
        return {};
    Header header{};
    std::memcpy(&header, bytes, sizeof(header));
    const qint64 expected = qint64{sizeof(Header)} + qint64{header.rowCount} * qint64{sizeof(Row)} +
                            qint64{header.textUnits} * qint64{sizeof(QChar)};
    if (header.magic != magic || header.jsonSize != json.size() || expected != size)
        return {};
    return rowsIn(file, header, bytes);
}

} // namespace

QByteArray prepareEmojiTable(const QByteArray &json) {
    const std::vector<EmojiItem> items = emojiTableFromJson(json);
    const std::vector<EmojiSearchText> searchTexts = emojiSearchTexts(items);
    Writer writer;
    for (size_t i = 0; i < items.size(); ++i)
        writer.add(items[i], searchTexts[i]);
    if (!writer.isFine || json.size() > emojiTableLimit)
        return {};
    const Header header{magic, static_cast<quint32>(writer.rows.size()), static_cast<quint32>(writer.text.size()),
                        static_cast<quint32>(json.size())};
    QByteArray bytes(reinterpret_cast<const char *>(&header), sizeof(header));
    bytes.append(reinterpret_cast<const char *>(writer.rows.data()),
                 static_cast<qsizetype>(writer.rows.size() * sizeof(Row)));
    bytes.append(reinterpret_cast<const char *>(writer.text.constData()),
                 writer.text.size() * qsizetype{sizeof(QChar)});
    return bytes;
}

QString preparedTablePath(const QString &jsonPath) {
    const qsizetype dot = jsonPath.lastIndexOf(u'.');
    return (dot < 0 ? jsonPath : jsonPath.left(dot)) + QStringLiteral(".table");
}

EmojiRows loadEmojiRows(const QString &jsonPath) {
    const QFileInfo json(jsonPath);
    if (json.exists()) {
        if (EmojiRows rows = loadPrepared(preparedTablePath(jsonPath), json); !rows.items.empty())
            return rows;
    }
    EmojiRows rows;
    rows.items = loadEmojiTable(jsonPath);
    rows.searchTexts = emojiSearchTexts(rows.items);
    return rows;
}

} // namespace tavrine
