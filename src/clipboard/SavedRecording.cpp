#include "clipboard/SavedRecording.h"

#include "base/Uuid.h"

#include <QFileInfo>

namespace tavrine {
namespace {

/// Letters, marks and numbers of every script.
bool isAlphanumeric(char32_t character) {
    switch (QChar::category(character)) {
    case QChar::Letter_Uppercase:
    case QChar::Letter_Lowercase:
    case QChar::Letter_Titlecase:
    case QChar::Letter_Modifier:
    case QChar::Letter_Other:
    case QChar::Mark_NonSpacing:
    case QChar::Mark_SpacingCombining:
    case QChar::Mark_Enclosing:
    case QChar::Number_DecimalDigit:
    case QChar::Number_Letter:
    case QChar::Number_Other:
        return true;
    default:
        return false;
    }
}

/// A file's name has 255 bytes at most, of which the extension and what tells two of a name apart need some.
constexpr qsizetype mostBytesOfAName = 240;

} // namespace

QString recordingBaseName(const std::optional<QString> &name) {
    const QString trimmed = name ? name->trimmed() : QString();
    if (trimmed.isEmpty())
        return freshUuidString();
    QString base;
    base.reserve(trimmed.size());
    qsizetype bytes = 0;
    for (const char32_t character : trimmed.toStdU32String()) {
        const QString next = isAlphanumeric(character) ? QString::fromUcs4(&character, 1) : QStringLiteral("_");
        bytes += next.toUtf8().size();
        if (bytes > mostBytesOfAName)
            break;
        base += next;
    }
    return base;
}

QString recordingTarget(const QString &source, const QString &folder, const std::optional<QString> &name,
                        const std::function<bool(const QString &path)> &isTaken) {
    const QString base = folder + u'/' + recordingBaseName(name);
    const QString suffix = QFileInfo(source).suffix();
    const QString extension = u'.' + (suffix.isEmpty() ? QStringLiteral("mp4") : suffix);
    const QString target = base + extension;
    return isTaken(target) ? base + u'_' + freshUuidString().first(6) + extension : target;
}

QString recordingCaption(const std::optional<QString> &name) {
    const bool hasName = name && !name->isEmpty();
    return QStringLiteral("[Screen Recording] ") + (hasName ? *name : QStringLiteral("Screen Recording"));
}

} // namespace tavrine
