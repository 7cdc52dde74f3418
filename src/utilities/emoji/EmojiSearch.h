#pragma once

#include "utilities/emoji/EmojiCategory.h"
#include "utilities/emoji/EmojiItem.h"

#include <QHash>
#include <QSet>

#include <optional>
#include <vector>

namespace tavrine {

/// What a row is searched in, all lower-case, so that a key press costs only comparisons: its name, its category and
/// its keywords, with a line break between each two. A token holds no white space, so it never goes over one.
struct EmojiSearchText {
    QString text;
    int nameLength = 0;
    int keywordsBegin = 0; ///< where the break before the first keyword stands, or the end
    int nameRank = 0;      ///< among all rows of the table; equal for equal names
    bool operator==(const EmojiSearchText &) const = default;
};

/// The texts of all rows, in their order.
[[nodiscard]] std::vector<EmojiSearchText> emojiSearchTexts(const std::vector<EmojiItem> &table);

/// Ranks the rows of an emoji table for what was typed. Made once for a table, which must outlive it and stay as it is.
/// Belongs to the store.
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

    explicit EmojiSearch(const std::vector<EmojiItem> &table) : EmojiSearch(table, emojiSearchTexts(table)) {}
    EmojiSearch(const std::vector<EmojiItem> &table, std::vector<EmojiSearchText> texts);

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
    [[nodiscard]] static std::vector<Token> tokens(const QString &query);
    [[nodiscard]] static int tokenPoints(const EmojiSearchText &row, const QString &token);
    [[nodiscard]] qint64 rowScore(size_t row, const std::vector<Token> &tokens) const;
    [[nodiscard]] size_t rowOf(const EmojiItem &item) const { return static_cast<size_t>(&item - m_table.data()); }

    const std::vector<EmojiItem> &m_table;
    const std::vector<EmojiSearchText> m_texts;
    std::vector<bool> m_isRecent;
    QHash<size_t, QString> m_boosts; ///< the word for which a row is boosted
    std::vector<std::vector<const EmojiItem *>> m_categoryLists;
    QHash<QString, const EmojiItem *> m_firstByEmoji;
};

} // namespace tavrine
