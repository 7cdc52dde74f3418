#pragma once

#include <QRegularExpression>
#include <QString>

namespace tavrine {

/// True when a text has words or signs of a platform that this one is not.
inline bool namesAnotherPlatform(const QString &text) {
    static const QRegularExpression words(
        QStringLiteral("\\bMacs?\\b|macOS|OS X|\\bApple\\b|System (Settings|Preferences)|\\bFinder\\b|\\bCmd\\b|"
                       "\\bOption\\b|[\u2318\u2325\u21E7\u2303]"));
    return words.match(text).hasMatch();
}

} // namespace tavrine
