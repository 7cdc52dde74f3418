#include "upload/UploadScriptError.h"

#include <cmath>

namespace tavrine {
namespace {

/// An engine's "Error: " would stand behind words that say the same.
QString withoutErrorPrefix(const QString &text) {
    const QLatin1String prefix("error:");
    if (!text.startsWith(prefix, Qt::CaseInsensitive))
        return text;
    const auto isSpace = [](QChar c) { return c == QLatin1Char('\t') || c.category() == QChar::Separator_Space; };
    QStringView rest = QStringView(text).mid(prefix.size());
    while (!rest.isEmpty() && isSpace(rest.front()))
        rest = rest.mid(1);
    while (!rest.isEmpty() && isSpace(rest.back()))
        rest.chop(1);
    return rest.toString();
}

} // namespace

QString userMessage(const UploadScriptError &error) {
    using Kind = UploadScriptError::Kind;
    switch (error.kind) {
    case Kind::syntaxError:
        return QStringLiteral("Your script has a syntax error.");
    case Kind::timeout:
        return QStringLiteral("Script execution timed out after ") +
               QString::number(std::isfinite(error.seconds) ? std::trunc(error.seconds) : 0.0, 'f', 0) +
               QStringLiteral(" seconds.");
    case Kind::missingFunction:
        return QStringLiteral("Your script must define a function named uploadImage(imageBase64, fileName).");
    case Kind::invalidReturnValue:
        return QStringLiteral("uploadImage() must return a URL string, or a Promise that resolves to one.");
    case Kind::runtimeError:
        break;
    }
    return QStringLiteral("Your script threw an error: ") + withoutErrorPrefix(error.text);
}

} // namespace tavrine
