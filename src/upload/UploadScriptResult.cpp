#include "upload/UploadScriptResult.h"

#include <algorithm>

namespace tavrine {

namespace {

/// Spaces and tabulators at both ends go; line breaks are part of what the script said.
QString trimmedOfSpaces(const QString &text) {
    const auto isSpace = [](QChar c) { return c == QLatin1Char('\t') || c.category() == QChar::Separator_Space; };
    const auto *begin = std::find_if_not(text.cbegin(), text.cend(), isSpace);
    auto end = text.cend();
    while (end != begin && isSpace(*(end - 1)))
        --end;
    return QString(begin, end - begin);
}

/// A thrown Error turned into a text begins with "Error:", which our own sentence has said already.
QString withoutErrorPrefix(const QString &message) {
    const QString prefix = QStringLiteral("error:");
    if (!message.startsWith(prefix, Qt::CaseInsensitive))
        return message;
    return trimmedOfSpaces(message.mid(prefix.size()));
}

} // namespace

QString userMessage(const UploadScriptError &error) {
    switch (error.kind) {
    case UploadScriptError::Kind::syntaxError:
        return QStringLiteral("Your script has a syntax error.");
    case UploadScriptError::Kind::runtimeError:
        return QStringLiteral("Your script threw an error: ") + withoutErrorPrefix(error.message);
    case UploadScriptError::Kind::timeout:
        return QStringLiteral("Script execution timed out after %1 seconds.").arg(error.seconds, 0, 'f', 0);
    case UploadScriptError::Kind::missingFunction:
        return QStringLiteral("Your script must define a function named uploadImage(imageBase64, fileName).");
    case UploadScriptError::Kind::invalidReturnValue:
        return QStringLiteral("uploadImage() must return a URL string, or a Promise that resolves to one.");
    }
    Q_UNREACHABLE();
}

} // namespace tavrine
