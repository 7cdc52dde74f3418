#include "clipboard/RecordingThumbnails.h"

#include "clipboard/MediaStore.h"
#include "ports/MovieAsset.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

/// A row shows a square out of the middle, of 56 points, on screens of up to three pixels a point.
constexpr int leastShortEdge = 3 * 56;
constexpr int mostLongEdge = 4096; ///< of a strip, however thin it is

/// The longest edge that a frame of this size should have been asked for: a strip that was made smaller to
/// `longestEdge` shows less in a row than it has.
int edgeForARow(QSize size, int longestEdge) {
    const int shortEdge = std::max(1, std::min(size.width(), size.height()));
    if (std::max(size.width(), size.height()) < longestEdge || shortEdge >= leastShortEdge)
        return longestEdge;
    return std::clamp((longestEdge * leastShortEdge + shortEdge - 1) / shortEdge, longestEdge, mostLongEdge);
}

} // namespace

RecordingThumbnails::RecordingThumbnails(MediaStore &media, MovieAsset &movies,
                                         std::function<void(const QString &fileName)> onMade)
    : m_media(media), m_movies(movies), m_onMade(std::move(onMade)) {}

RecordingThumbnails::Stamp RecordingThumbnails::stampOf(const QString &path) {
    const QFileInfo file(path);
    return file.isFile() ? Stamp{file.size(), file.lastModified()} : Stamp{};
}

void RecordingThumbnails::want(const QString &fileName) {
    if (m_making && *m_making == fileName)
        return;
    const auto path = m_media.filePath(fileName);
    const auto failed = m_failed.constFind(fileName);
    if (!path || (failed != m_failed.constEnd() && *failed == stampOf(*path)))
        return;
    std::erase(m_wanted, fileName);
    m_wanted.push_front(fileName);
    if (m_wanted.size() > mostWanted)
        m_wanted.pop_back();
    if (!m_making)
        makeNext();
}

void RecordingThumbnails::forgetAll() {
    m_wanted.clear();
    m_making.reset();
}

void RecordingThumbnails::makeNext() {
    if (m_wanted.empty())
        return;
    m_making = std::make_shared<QString>(std::move(m_wanted.front()));
    m_wanted.pop_front();
    const QString path = m_media.filePath(*m_making).value_or(QString());
    make(path, stampOf(path), MediaStore::thumbnailMaxPixelSize);
}

void RecordingThumbnails::make(const QString &path, const Stamp &stamp, int longestEdge) {
    const auto answer = [this, path, stamp, longestEdge, wanted = std::weak_ptr(m_making)](const auto &frame) {
        const auto making = wanted.lock(); // we are there as long as it is
        if (!making || making != m_making)
            return;
        const bool isFirst = longestEdge == MediaStore::thumbnailMaxPixelSize;
        const int edge = frame && isFirst ? edgeForARow(frame->size(), longestEdge) : longestEdge;
        if (edge > longestEdge)
            make(path, stamp, edge);
        else
            made(path, stamp, frame);
    };
    m_movies.firstFrame(path, longestEdge, answer);
}

void RecordingThumbnails::made(const QString &path, const Stamp &stamp, const std::optional<QImage> &frame) {
    const QString fileName = *m_making;
    m_making.reset();
    if (!frame && m_failed.size() >= mostFailed)
        m_failed.clear();
    if (!frame)
        m_failed.insert(fileName, stamp);
    const bool isMade = frame && stampOf(path) == stamp; // it may have been removed meanwhile
    if (isMade)
        m_media.cacheThumbnail(*frame, fileName);
    makeNext();
    if (isMade)
        m_onMade(fileName);
}

} // namespace tavrine
