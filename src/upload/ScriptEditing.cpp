#include "upload/ScriptEditing.h"

#include <algorithm>

namespace tavrine::scriptEditing {

QString indentAfter(const QString &before) {
    qsizetype spaces = 0;
    while (spaces < before.size() && (before[spaces] == QLatin1Char(' ') || before[spaces] == QLatin1Char('\t')))
        ++spaces;
    QString result = before.left(spaces);
    const QString code = before.trimmed();
    if (!code.isEmpty() && QStringLiteral("([{").contains(code.back()))
        result += QLatin1String(indent);
    return result;
}

int outdentOf(const QString &line) {
    if (line.startsWith(QLatin1Char('\t')))
        return 1;
    const int step = int(qstrlen(indent));
    int spaces = 0;
    while (spaces < step && spaces < line.size() && line[spaces] == QLatin1Char(' '))
        ++spaces;
    return spaces;
}

int matchingBracket(const QString &text, int place, int farthest) {
    static const QString pairs = QStringLiteral("()[]{}");
    if (place < 0 || place >= text.size())
        return -1;
    const int kind = int(pairs.indexOf(text[place]));
    if (kind < 0)
        return -1;
    const int step = kind % 2 == 0 ? 1 : -1;
    const QChar own = text[place];
    const QChar other = pairs[kind + step];
    int depth = 0;
    for (int at = place; at >= 0 && at < text.size() && std::abs(at - place) <= farthest; at += step) {
        if (text[at] == own)
            ++depth;
        else if (text[at] == other && --depth == 0)
            return at;
    }
    return -1;
}

} // namespace tavrine::scriptEditing
