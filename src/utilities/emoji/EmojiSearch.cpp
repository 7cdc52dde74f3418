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

std::vector<EmojiSearchText> emojiSearchTexts(const std::vector<EmojiItem> &table) {
    std::vector<EmojiSearchText> texts;
    texts.reserve(table.size());
    for (const EmojiItem &item : table) {
        EmojiSearchText row;
        row.text = item.name.toLower();
        row.nameLength = static_cast<int>(row.text.size());
        row.text += u'\n' + item.category.toLower();
        row.keywordsBegin = static_cast<int>(row.text.size());
        if (!item.keywordText.isEmpty())
            row.text += u'\n' + item.keywordText.toLower().replace(u',', u'\n');
        texts.push_back(std::move(row));
    }
    std::vector<size_t> order(table.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::ranges::sort(order, [&](size_t a, size_t b) { return table[a].name < table[b].name; });
    int rank = 0;
    for (size_t i = 0; i < order.size(); ++i) {
        if (i > 0 && table[order[i]].name != table[order[i - 1]].name)
            ++rank;
        texts[order[i]].nameRank = rank;
    }
    return texts;
}

EmojiSearch::EmojiSearch(const std::vector<EmojiItem> &table, std::vector<EmojiSearchText> texts)
    : m_table(table), m_texts(std::move(texts)), m_isRecent(table.size()), m_categoryLists(emojiCategories.size()) {
    m_firstByEmoji.reserve(static_cast<qsizetype>(table.size()));
    QString name; // rows of a category stand together
    std::optional<EmojiCategory> category;
    for (const EmojiItem &item : table) {
        m_categoryLists[static_cast<size_t>(EmojiCategory::all)].push_back(&item);
        if (item.category != name || name.isEmpty()) {
            name = item.category;
            category = emojiCategoryFromLongName(name);
        }
        if (category)
            m_categoryLists[static_cast<size_t>(*category)].push_back(&item);
        if (!m_firstByEmoji.contains(item.emoji))
            m_firstByEmoji.insert(item.emoji, &item);
    }
    for (size_t row = 0; row < table.size(); ++row) {
        if (const QString word = boostWord(table[row].emoji); !word.isEmpty())
            m_boosts.insert(row, word);
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

int EmojiSearch::tokenPoints(const EmojiSearchText &row, const QString &token) {
    const QStringView all = row.text;
    // The search text holds the name and the keywords, so nothing else can match where it does not.
    const qsizetype first = all.indexOf(token);
    if (first < 0)
        return 0;
    if (first == 0)
        return row.nameLength == token.size() ? nameEquals : nameBegins;
    int points = textContains;
    for (qsizetype at = all.indexOf(token, row.keywordsBegin); at >= 0; at = all.indexOf(token, at + 1)) {
        if (at == 0 || all.at(at - 1) != u'\n')
            continue;
        const qsizetype end = at + token.size();
        if (end == all.size() || all.at(end) == u'\n')
            return keywordEquals;
        points = keywordBegins;
    }
    return points;
}

qint64 EmojiSearch::rowScore(size_t row, const std::vector<Token> &tokens) const {
    qint64 score = 0;
    for (const Token &token : tokens) {
        const int points = tokenPoints(m_texts[row], token.text);
        if (points == 0)
            return 0;
        score += qint64{points} * token.count;
        if (const auto word = m_boosts.constFind(row); word != m_boosts.constEnd() && *word == token.text)
            score += qint64{boost} * token.count;
    }
    return score + (m_isRecent[row] ? recentBonus : 0);
}

qint64 EmojiSearch::score(const EmojiItem &item, const QString &query) const {
    return rowScore(rowOf(item), tokens(query));
}

std::vector<const EmojiItem *> EmojiSearch::search(const QString &query, EmojiCategory category) const {
    const std::vector<const EmojiItem *> &list = categoryList(category);
    const std::vector<Token> words = tokens(query);
    if (words.empty())
        return list;
    std::vector<Ranked> ranked;
    for (const EmojiItem *item : list) {
        const size_t row = rowOf(*item);
        if (const qint64 points = rowScore(row, words))
            ranked.push_back({points, m_texts[row].nameRank, item});
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
        m_isRecent[i] = recents.contains(m_table[i].emoji);
}

} // namespace tavrine
