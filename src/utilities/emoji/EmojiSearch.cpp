#include "utilities/emoji/EmojiSearch.h"

#include <algorithm>
#include <array>

namespace tavrine {
namespace {

struct Boost {
    QStringView emoji;
    QLatin1String word;
};

// Rows that their plain word should find first.
constexpr std::array boosts{
    Boost{u"\u2705", QLatin1String("check")},
    Boost{u"\U0001F60A", QLatin1String("happy")},
    Boost{u"\U0001F44D", QLatin1String("thumb")},
};

QString boostWord(const QString &emoji) {
    const auto *const found = std::ranges::find(boosts, QStringView(emoji), &Boost::emoji);
    return found == boosts.end() ? QString() : QString(found->word);
}

struct Ranked {
    qint64 score;
    int nameRank;
    const EmojiItem *item;

    // Rows alike in both keep the order of the table.
    bool operator<(const Ranked &other) const {
        if (score != other.score)
            return score > other.score;
        return nameRank != other.nameRank ? nameRank < other.nameRank : item < other.item;
    }
};

} // namespace

EmojiSearch::EmojiSearch(const std::vector<EmojiItem> &table)
    : m_table(table), m_categoryLists(emojiCategories.size()) {
    m_rows.reserve(table.size());
    m_firstByEmoji.reserve(static_cast<qsizetype>(table.size()));
    for (const EmojiItem &item : table) {
        addRow(item);
        m_categoryLists[static_cast<size_t>(EmojiCategory::all)].push_back(&item);
        if (const auto category = emojiCategoryFromLongName(item.category))
            m_categoryLists[static_cast<size_t>(*category)].push_back(&item);
        if (!m_firstByEmoji.contains(item.emoji))
            m_firstByEmoji.insert(item.emoji, &item);
    }
    rankNames();
}

// This is done for some thousand rows at the first opening of the picker, so each row has one text of its own and its
// keywords are parts of that.
void EmojiSearch::addRow(const EmojiItem &item) {
    Row row;
    const QString name = item.name.toLower();
    const QString category = item.category.toLower();
    qsizetype length = name.size() + 1 + category.size();
    for (const QString &keyword : item.keywords)
        length += 1 + keyword.size();
    row.searchText.reserve(length);
    row.searchText += name;
    row.searchText += u' ';
    row.searchText += category;
    row.nameLength = name.size();
    row.firstKeyword = m_keywords.size();
    row.keywordCount = static_cast<size_t>(item.keywords.size());
    for (const QString &keyword : item.keywords) {
        const QString lower = keyword.toLower();
        row.searchText += u' ';
        m_keywords.push_back({row.searchText.size(), lower.size()});
        row.searchText += lower;
    }
    row.boostWord = boostWord(item.emoji);
    m_rows.push_back(std::move(row));
}

void EmojiSearch::rankNames() {
    std::vector<size_t> order(m_table.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::ranges::sort(order, [&](size_t a, size_t b) { return m_table[a].name < m_table[b].name; });
    int rank = 0;
    for (size_t i = 0; i < order.size(); ++i) {
        if (i > 0 && m_table[order[i]].name != m_table[order[i - 1]].name)
            ++rank;
        m_rows[order[i]].nameRank = rank;
    }
}

const std::vector<const EmojiItem *> &EmojiSearch::categoryList(EmojiCategory category) const {
    return m_categoryLists[static_cast<size_t>(category)];
}

std::vector<EmojiSearch::Token> EmojiSearch::tokens(const QString &query) {
    std::vector<Token> tokens;
    QHash<QString, size_t> places; // a word typed many times is compared once
    const QString lower = query.toLower();
    for (qsizetype begin = 0; begin < lower.size();) {
        qsizetype end = begin;
        while (end < lower.size() && !lower.at(end).isSpace())
            ++end;
        if (end > begin) {
            const QString text = lower.mid(begin, end - begin);
            const auto place = places.constFind(text);
            if (place != places.constEnd()) {
                ++tokens[*place].count;
            } else {
                places.insert(text, tokens.size());
                tokens.push_back({text, 1});
            }
        }
        begin = end + 1;
    }
    return tokens;
}

int EmojiSearch::tokenPoints(const Row &row, const QString &token) const {
    // The search text holds the name and the keywords, so nothing else can match where it does not.
    if (!row.searchText.contains(token))
        return 0;
    const QStringView all = row.searchText;
    if (all.first(row.nameLength).startsWith(token))
        return row.nameLength == token.size() ? nameEquals : nameBegins;
    int points = textContains;
    for (size_t i = row.firstKeyword; i < row.firstKeyword + row.keywordCount; ++i) {
        const Slice &keyword = m_keywords[i];
        if (!all.sliced(keyword.begin, keyword.length).startsWith(token))
            continue;
        if (keyword.length == token.size())
            return keywordEquals;
        points = keywordBegins;
    }
    return points;
}

qint64 EmojiSearch::rowScore(const Row &row, const std::vector<Token> &tokens) const {
    qint64 score = 0;
    for (const Token &token : tokens) {
        const int points = tokenPoints(row, token.text);
        if (points == 0)
            return 0;
        score += qint64{points} * token.count;
        if (row.boostWord == token.text)
            score += qint64{boost} * token.count;
    }
    return score + (row.isRecent ? recentBonus : 0);
}

qint64 EmojiSearch::score(const EmojiItem &item, const QString &query) const {
    return rowScore(m_rows[static_cast<size_t>(&item - m_table.data())], tokens(query));
}

std::vector<const EmojiItem *> EmojiSearch::search(const QString &query, EmojiCategory category) const {
    const std::vector<const EmojiItem *> &list = categoryList(category);
    const std::vector<Token> words = tokens(query);
    if (words.empty())
        return list;
    std::vector<Ranked> ranked;
    for (const EmojiItem *item : list) {
        const Row &row = m_rows[static_cast<size_t>(item - m_table.data())];
        if (const qint64 points = rowScore(row, words))
            ranked.push_back({points, row.nameRank, item});
    }
    std::ranges::sort(ranked, std::less<>());
    std::vector<const EmojiItem *> result;
    result.reserve(ranked.size());
    for (const Ranked &entry : ranked)
        result.push_back(entry.item);
    return result;
}

void EmojiSearch::setRecents(const QStringList &emojis) {
    const QSet<QString> recents(emojis.begin(), emojis.end());
    for (size_t i = 0; i < m_table.size(); ++i)
        m_rows[i].isRecent = recents.contains(m_table[i].emoji);
}

} // namespace tavrine
