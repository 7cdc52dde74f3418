#include "base/Catalogue.h"

#include <QFile>

#include <algorithm>

namespace tavrine {
namespace {

constexpr qint64 longestFile = 1 << 20;
constexpr QLatin1String mark("= "); // of the other language's line

/// Of digits, with what stands between them in any language, or in a time.
bool isNumber(const QString &text) {
    constexpr QStringView between = u".,:' \u00A0\u2019\u202F";
    const auto isPart = [between](QChar c) { return c.isDigit() || between.contains(c); };
    return std::ranges::all_of(text, isPart) && std::ranges::any_of(text, [](QChar c) { return c.isDigit(); });
}

} // namespace

/// The first place of the text at or after `from`.
std::optional<Catalogue::Place> Catalogue::placeIn(const QString &text, qsizetype from) {
    for (qsizetype at = text.indexOf(u'%', from); at >= 0; at = text.indexOf(u'%', at + 1)) {
        const QString letter = text.mid(at + 1, 1);
        const Kind kind = letter == QLatin1String("L")   ? Kind::text
                          : letter == QLatin1String("N") ? Kind::number
                                                         : Kind::any;
        const qsizetype digit = at + (kind == Kind::any ? 1 : 2);
        if (digit < text.size() && text[digit] >= u'1' && text[digit] <= u'9')
            return Place{at, digit + 1 - at, text[digit].unicode() - u'0', kind};
    }
    return std::nullopt;
}

QStringList Catalogue::placesOf(const QString &text) {
    QStringList places;
    for (auto place = placeIn(text, 0); place; place = placeIn(text, place->start + place->length))
        places.append(text.mid(place->start, place->length));
    places.sort();
    return places;
}

/// None for a text without a place.
std::optional<Catalogue::Pattern> Catalogue::patternOf(const QString &text, const QString &shown) {
    Pattern pattern;
    qsizetype from = 0;
    for (auto place = placeIn(text, 0); place; place = placeIn(text, from)) {
        pattern.parts.append(text.mid(from, place->start - from));
        pattern.places.push_back(*place);
        from = place->start + place->length;
    }
    if (pattern.places.empty())
        return std::nullopt;
    pattern.parts.append(text.mid(from));
    pattern.shown = shown;
    return pattern;
}

Catalogue Catalogue::parse(const QByteArray &file, QStringList *faults) {
    Catalogue catalogue;
    QStringList seen;
    QString text;
    int number = 0;
    const auto complain = [&](const char *fault) {
        if (faults)
            faults->append(QStringLiteral("line %1: %2: %3").arg(number).arg(QLatin1String(fault), text));
    };
    const auto lines = QString::fromUtf8(file).split(u'\n');
    for (const QString &line : lines) {
        ++number;
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        QString words = line.startsWith(mark) ? line.mid(mark.size()) : line;
        words.replace(QLatin1String("\\n"), QLatin1String("\n"));
        if (!line.startsWith(mark)) {
            if (!text.isEmpty())
                complain("nothing stands under it");
            text = words;
            continue;
        }
        if (text.isEmpty())
            complain("no text stands over it");
        else if (placesOf(text) != placesOf(words))
            complain("its places are others");
        else if (catalogue.m_whole.contains(text) || seen.contains(text))
            complain("it stands there twice");
        else if (auto pattern = patternOf(text, words)) {
            catalogue.m_patterns.push_back(std::move(*pattern));
            seen.append(text);
        } else {
            catalogue.m_whole.insert(text, words);
        }
        catalogue.m_longest = std::max(catalogue.m_longest, text.size());
        text.clear();
    }
    if (!text.isEmpty())
        complain("nothing stands under it");
    // What says more about a text knows it better: "%1 of %2 items" before "%1 items".
    std::ranges::stable_sort(catalogue.m_patterns, std::ranges::greater(),
                             [](const Pattern &pattern) { return pattern.parts.join(QString()).size(); });
    return catalogue;
}

std::optional<Catalogue> Catalogue::find(const QString &folder, const QStringList &languages) {
    for (const QString &name : languages) { // "de-AT", "de"
        const QString language = QString(name).replace(u'_', u'-').section(u'-', 0, 0).toLower();
        if (language == QLatin1String("en") || language == QLatin1String("c"))
            return std::nullopt;
        const bool isPlain = std::ranges::all_of(language, [](QChar c) { return c >= u'a' && c <= u'z'; });
        QFile file(folder + u'/' + language + QStringLiteral(".txt"));
        if (!isPlain || language.isEmpty() || !file.open(QIODevice::ReadOnly))
            continue;
        Catalogue catalogue = parse(file.read(longestFile));
        catalogue.m_language = language;
        return catalogue;
    }
    return std::nullopt;
}

/// What stands at the places, in their order in the text; none where the text is not of that form.
std::optional<QStringList> Catalogue::innersOf(const QString &text, const Pattern &pattern) {
    const QString &first = pattern.parts.front();
    const QString &last = pattern.parts.back();
    if (!text.startsWith(first) || !text.endsWith(last))
        return std::nullopt;
    QStringList inners;
    qsizetype from = first.size();
    const qsizetype end = text.size() - last.size();
    for (qsizetype i = 1; i < pattern.parts.size(); ++i) {
        const bool isLast = i == pattern.parts.size() - 1;
        const qsizetype next = isLast ? end : text.indexOf(pattern.parts[i], from + 1);
        if (next <= from || next > end)
            return std::nullopt;
        inners.append(text.mid(from, next - from));
        if (pattern.places[static_cast<std::size_t>(i - 1)].kind == Kind::number && !isNumber(inners.last()))
            return std::nullopt;
        from = next + pattern.parts[i].size();
    }
    return inners;
}

std::optional<QString> Catalogue::find(const QString &text) const {
    if (text.isEmpty() || text.size() > 2 * m_longest)
        return std::nullopt;
    if (const auto found = m_whole.constFind(text); found != m_whole.cend())
        return *found;
    for (const Pattern &pattern : m_patterns) {
        const auto inners = innersOf(text, pattern);
        if (!inners)
            continue;
        QString result;
        qsizetype from = 0;
        for (auto place = placeIn(pattern.shown, 0); place; place = placeIn(pattern.shown, from)) {
            const auto number = std::ranges::find(pattern.places, place->number, &Place::number);
            const QString &inner = inners->at(number - pattern.places.begin());
            result += pattern.shown.mid(from, place->start - from) + (place->kind == Kind::text ? shown(inner) : inner);
            from = place->start + place->length;
        }
        return result + pattern.shown.mid(from);
    }
    return std::nullopt;
}

QString Catalogue::shown(const QString &text) const {
    return find(text).value_or(text);
}

bool Catalogue::has(const QString &text) const {
    return find(text).has_value();
}

} // namespace tavrine
