#pragma once

#include "utilities/emoji/EmojiCategory.h"
#include "utilities/emoji/EmojiItem.h"

#include <QHash>
#include <QSet>

#include <optional>
#include <vector>

namespace tavrine {

/// Ranks the rows of an emoji table for what was typed. Made once for a table, which must outlive it and stay as it is;
/// all lower-case texts are made then, so that a key press costs only comparisons. Belongs to the store.
class EmojiSearch {
public:
    // Points. For each token the first rule that applies adds its own; a token without one puts the row out.
    static constexpr int nameEquals = 120;
    static constexpr int nameBegins = 90;
    static constexpr int keywordEquals = 80;
    static constexpr int keywordBegins = 65;
    static constexpr int textContains = 35;
    static constexpr int boost = 35;      ///< for each token that a row is boosted for
    static constexpr int recentBonus = 8; ///< once, for an emoji among the recents

    explicit EmojiSearch(const std::vector<EmojiItem> &table);

    /// All rows for `all`, else those of the category, in the order of the table.
    [[nodiscard]] const std::vector<const EmojiItem *> &categoryList(EmojiCategory category) const;

    /// The rows of the category that have points, those with most first, by name where the points are equal. A query
    /// of white space alone gives the whole category list.
    [[nodiscard]] std::vector<const EmojiItem *> search(const QString &query, EmojiCategory category) const;

    /// The points of one row, 0 when it is out. The query must hold more than white space.
    [[nodiscard]] qint64 score(const EmojiItem &item, const QString &query) const;

    void setRecents(const QStringList &emojis);

    /// The first row with that emoji, or null.
    [[nodiscard]] const EmojiItem *item(const QString &emoji) const { return m_firstByEmoji.value(emoji, nullptr); }

private:
    struct Token {
        QString text;
        int count = 0; ///< how often it was typed
    };
    /// A part of a row's search text.
    struct Slice {
        qsizetype begin = 0;
        qsizetype length = 0;
    };
    /// All lower-case. The search text begins with the name; the keywords stand in it as well.
    struct Row {
        QString searchText;
        qsizetype nameLength = 0;
        size_t firstKeyword = 0; ///< in `m_keywords`
        size_t keywordCount = 0;
        QString boostWord;
        int nameRank = 0; ///< equal for equal names
        bool isRecent = false;
    };

    void addRow(const EmojiItem &item);
    [[nodiscard]] static std::vector<Token> tokens(const QString &query);
    [[nodiscard]] int tokenPoints(const Row &row, const QString &token) const;
    [[nodiscard]] qint64 rowScore(const Row &row, const std::vector<Token> &tokens) const;
    void rankNames();

    const std::vector<EmojiItem> &m_table;
    std::vector<Row> m_rows;
    std::vector<Slice> m_keywords; ///< of all rows, one behind the other
    std::vector<std::vector<const EmojiItem *>> m_categoryLists;
    QHash<QString, const EmojiItem *> m_firstByEmoji;
};

} // namespace tavrine
