#include "utilities/lofi/LofiTracks.h"

#include <QFile>
#include <QFileInfo>

namespace tavrine::lofiTracks {
namespace {

constexpr qsizetype longestName = 255; // bytes, of all common file systems
constexpr qsizetype longestSuffix = 16;

} // namespace

QString folder(const QString &applicationSupport) {
    return applicationSupport + QStringLiteral("/Tavrine/LofiTracks");
}

QList<QString> builtInNames() {
    return {QStringLiteral("track_1.mp3"), QStringLiteral("track_2.mp3")};
}

QList<QUrl> urls(const QString &resources) {
    static const QString elsewhere = QStringLiteral(TAVRINE_LOFI_TRACKS);
    QList<QUrl> result;
    const QList<QString> names = builtInNames();
    for (const QString &name : names)
        result.append(elsewhere.isEmpty() ? QUrl::fromLocalFile(resources + QStringLiteral("/lofi/") + name)
                                          : QUrl(elsewhere + QLatin1Char('/') + name));
    return result;
}

QString customFileName(const QString &fileName) {
    QString stem = QStringLiteral("custom_") + fileName;
    QString suffix = QFileInfo(fileName).suffix();
    if (!suffix.isEmpty() && suffix.size() <= longestSuffix) {
        suffix.prepend(QLatin1Char('.'));
        stem.chop(suffix.size());
    } else {
        suffix.clear();
    }
    while (QFile::encodeName(stem + suffix).size() > longestName)
        stem.chop(stem.back().isLowSurrogate() ? 2 : 1);
    return stem + suffix;
}

QString displayName(const QString &fileName) {
    const QString name = QFileInfo(fileName).completeBaseName();
    return name.isEmpty() ? fileName : name;
}

QUrl browsingPage() {
    return QUrl(QStringLiteral("https://pixabay.com/music/search/lofi/"));
}

} // namespace tavrine::lofiTracks
