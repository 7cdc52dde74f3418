// The emoji table, what it was prepared to, and the texts in the preferences that name emojis, tiles and keys.

#include "FuzzFiles.h"
#include "look/DrawnGlyphs.h"
#include "shell/Triggers.h"
#include "shell/menu/QuickActionsLayout.h"
#include "utilities/emoji/EmojiTable.h"
#include "utilities/emoji/PreparedEmojiTable.h"

namespace tavrine::fuzz {
namespace {

QByteArray bytesOf(Bytes text) {
    return {text.data(), static_cast<qsizetype>(text.size())};
}

void readTable(Bytes input) {
    const QByteArray json = bytesOf(input);
    for (const EmojiItem &item : emojiTableFromJson(json))
        require(!item.keywordText.startsWith(u',') && !item.keywordText.endsWith(u',') &&
                !item.keywordText.contains(QLatin1String(",,"))); // an empty one is dropped
    static_cast<void>(prepareEmojiTable(json));
}

constexpr auto smallTable = R"([{"emoji":"a","name":"letter a","category":"Symbols","keywords":"x,y"},
{"emoji":"\ud83d\ude0e","name":"cool","category":"Smileys","keywords":""}])";

/// A prepared table beside the file that it was made of.
void readPreparedTable(Bytes input) {
    const QString json = fileWith(QStringLiteral("emoji_data.json"), smallTable);
    fileWith(QStringLiteral("emoji_data.table"), input);
    const EmojiRows rows = loadEmojiRows(json);
    require(rows.items.size() == rows.searchTexts.size());
    qsizetype units = 0;
    for (const EmojiItem &item : rows.items)
        units += item.emoji.size() + item.name.toUpper().size() + item.category.toUpper().size();
    require(units >= 0);
}

void readGlyphs(Bytes input) {
    const look::GlyphSources sources{.family = QStringLiteral("F"), .textFont = {}, .table = {}, .side = 4};
    const auto glyphs = look::DrawnGlyphs::open(fileWith(QStringLiteral("glyphs"), input), sources);
    if (!glyphs)
        return;
    for (const char16_t *emoji : {u"a", u"b", u"\U0001F60E"}) {
        const auto glyph = glyphs->glyph(QString::fromUtf16(emoji));
        require(!glyph || glyph->picture.size() == QSize(sources.side, sources.side));
    }
}

void readLayout(Bytes input) {
    const QString text = QString::fromUtf8(bytesOf(input));
    const QStringList ids = orderedIds(text);
    require(ids.contains(QStringLiteral("editor")) && ids.contains(QStringLiteral("screenRecord")));
    for (const LayoutRow &row : layoutRows(ids, [](QuickAction) { return true; }))
        require(!row.items.empty() && row.items.size() <= (row.isCard ? 1U : 2U));
    const QString character = firstUppercase(text);
    require(character.isEmpty() == text.isEmpty());
    require(keyCode(character) >= 0 && keyCode(text) >= 0);
}

const Target tableTarget("emoji-table", &readTable, [] {
    return std::vector<std::string>{smallTable, "[]", R"([{"emoji":"a","name":"b","category":3}])"};
});
const Target preparedTarget("prepared-emojis", &readPreparedTable, [] {
    const std::string table = prepareEmojiTable(smallTable).toStdString();
    readPreparedTable(table);
    require(loadEmojiRows(folder() + QStringLiteral("/emoji_data.json")).file !=
            nullptr); // it is read, and not passed over
    return std::vector<std::string>{table};
});
const Target glyphTarget("drawn-glyphs", &readGlyphs, [] {
    QImage picture(4, 4, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::red);
    const look::GlyphSources sources{.family = QStringLiteral("F"), .textFont = {}, .table = {}, .side = 4};
    return std::vector<std::string>{
        look::drawnGlyphsData(sources, {}, {{QStringLiteral("a"), picture}, {QStringLiteral("b"), picture, true}})
            .toStdString()};
});
const Target layoutTarget("layout", &readLayout, [] {
    return std::vector<std::string>{"loFi,keepAwake,screenshot,screenRecord,qrScan,cleanMode,settings,editor",
                                    "qrScan,,loFi,nothing",
                                    "E",
                                    "\xC3\x9F",
                                    "\xEF\xAC\x83",
                                    "\xF0\x9F\x98\x8E,x"};
});

} // namespace
} // namespace tavrine::fuzz
