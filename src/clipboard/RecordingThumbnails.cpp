#include "clipboard/RecordingThumbnails.h"

#include "clipboard/MediaStore.h"
#include "ports/MovieAsset.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace tavrine {

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
    const Stamp stamp = stampOf(path);
    m_movies.firstFrame(path, MediaStore::thumbnailMaxPixelSize,
                        [this, path, stamp, wanted = std::weak_ptr(m_making)](const std::optional<QImage> &frame) {
                            const auto making = wanted.lock(); // we are there as long as it is
                            if (!making || making != m_making)
                                return;
                            const QString fileName = *making;
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
                        });
}

} // namespace tavrine
