#include "capture/SnipFiles.h"

#include "base/ErrorText.h"
#include "base/PrivateFiles.h"
#include "base/SerialQueue.h"
#include "base/Time.h"
#include "capture/PngData.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <cmath>

namespace tavrine {
namespace {

constexpr QLatin1String suffix(".png");

/// A link that leads nowhere is a name that is taken, too.
bool isTaken(const QString &path) {
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

SnipFiles::Outcome write(const QString &path, const SnipFiles::Png &png, FileRights rights) {
    if (!png.data)
        return {path, QStringLiteral("the picture could not be encoded")};
    const std::string_view bytes(png.data->constData(), static_cast<size_t>(png.data->size()));
    const int error = writeWholeFile(QFile::encodeName(path).toStdString(), {bytes},
                                     {.rights = rights, .isDurable = true, .isStopped = {}});
    return {path, error == 0 ? QString() : QString::fromLocal8Bit(errorText(error))};
}

} // namespace

QString snipFileName(Date now) {
    const auto moment = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(now.secondsSince1970)));
    return QStringLiteral("snip_") + QLocale::c().toString(moment, QStringLiteral("yyyy-MM-dd_HH.mm.ss")) + suffix;
}

QString freePath(const QString &folder, const QString &fileName) {
    const QString first = folder + QLatin1Char('/') + fileName;
    if (!isTaken(first))
        return first;
    const QString stem = first.endsWith(suffix) ? first.chopped(suffix.size()) : first;
    for (int counter = 2;; ++counter) {
        QString candidate = stem + QLatin1Char('-') + QString::number(counter) + suffix;
        if (!isTaken(candidate))
            return candidate;
    }
}

SnipFiles::Prepared SnipFiles::prepare(const QImage &image, const QString &folder) const {
    auto png = std::make_shared<Png>(Png{image, std::nullopt});
    m_queue->async([png, folder] {
        if (!folder.isEmpty())
            makePrivateFolder(folder); // when it cannot be made, the write tells
        png->data = pngData(png->image);
        png->image = {};
    });
    return png;
}

void SnipFiles::saveIn(const QString &folder, const QString &fileName, const Prepared &png, Answer done) const {
    m_queue->async([time = m_time, folder, fileName, png, done = std::move(done)] {
        const Outcome outcome = write(freePath(folder, fileName), *png, FileRights::ownerOnly);
        time->async([done, outcome] { done(outcome); });
    });
}

void SnipFiles::saveAs(const QString &path, const Prepared &png, FileRights rights, Answer done) const {
    m_queue->async([time = m_time, path, png, rights, done = std::move(done)] {
        const Outcome outcome = write(path, *png, rights);
        time->async([done, outcome] { done(outcome); });
    });
}

void SnipFiles::finish() const {
    m_queue->sync([] {});
}

QString saveFailureMessage(const SnipFiles::Outcome &outcome) {
    return QStringLiteral("Couldn't save \"%1\": %2").arg(QFileInfo(outcome.path).fileName(), outcome.failure);
}

} // namespace tavrine
