#include "clipboard/SavedRecording.h"

#include "base/FileResult.h"
#include "base/Print.h"
#include "base/Uuid.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>

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

} // namespace

QString recordingBaseName(const std::optional<QString> &name) {
    const QString trimmed = name ? name->trimmed() : QString();
    if (trimmed.isEmpty())
        return freshUuidString();
    QString base;
    base.reserve(trimmed.size());
    for (const char32_t character : trimmed.toStdU32String()) {
        if (isAlphanumeric(character))
            base += QChar::fromUcs4(character);
        else
            base += u'_';
    }
    return base;
}

std::optional<QString> moveRecording(const QString &source, const QString &folder, const std::optional<QString> &name) {
    const QString base = folder + u'/' + recordingBaseName(name);
    const QString suffix = QFileInfo(source).suffix();
    const QString extension = u'.' + (suffix.isEmpty() ? QStringLiteral("mp4") : suffix);
    QString target = base + extension;
    if (QFileInfo::exists(target))
        target = base + u'_' + freshUuidString().first(6) + extension;
    QFile::remove(target);

    const auto moved =
        FileResult::ofCall(std::rename(QFile::encodeName(source).constData(), QFile::encodeName(target).constData()));
    if (moved)
        return target;
    printLine(QStringLiteral("moveItem failed (") + moved.reason() + QStringLiteral("), falling back to copyItem..."));

    QFile file(source);
    if (!file.copy(target)) {
        printLine(QStringLiteral("Failed to save screen recording file: ") + file.errorString());
        return std::nullopt;
    }
    file.remove();
    return target;
}

QString recordingCaption(const std::optional<QString> &name) {
    const bool hasName = name && !name->isEmpty();
    return QStringLiteral("[Screen Recording] ") + (hasName ? *name : QStringLiteral("Screen Recording"));
}

} // namespace tavrine
