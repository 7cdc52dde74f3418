#include "capture/SnipFiles.h"

#include "base/PrivateFiles.h"
#include "base/SerialQueue.h"
#include "base/Time.h"
#include "capture/PngData.h"

#include <QDateTime>
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

bool write(const QString &path, const SnipFiles::Png &png) {
    return png.data && writePrivateFile(path, *png.data);
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

SnipFiles::Prepared SnipFiles::prepare(const QImage &image, const QString &folder) {
    auto png = std::make_shared<Png>(Png{image, std::nullopt});
    m_queue.async([png, folder] {
        makePrivateFolder(folder); // when it cannot be made, the write tells
        png->data = pngData(png->image);
    });
    return png;
}

void SnipFiles::saveIn(const QString &folder, const QString &fileName, const Prepared &png,
                       std::function<void(std::optional<QString>)> done) {
    m_queue.async([&time = m_time, folder, fileName, png, done = std::move(done)] {
        const QString path = freePath(folder, fileName);
        const auto written = write(path, *png) ? std::optional(path) : std::nullopt;
        time.async([done, written] { done(written); });
    });
}

void SnipFiles::saveAs(const QString &path, const Prepared &png, std::function<void(bool)> done) {
    m_queue.async([&time = m_time, path, png, done = std::move(done)] {
        const bool isWritten = write(path, *png);
        time.async([done, isWritten] { done(isWritten); });
    });
}

void SnipFiles::finish() {
    m_queue.sync([] {});
}

} // namespace tavrine
