#pragma once

#include <QDateTime>
#include <QHash>
#include <QImage>
#include <QString>

#include <deque>
#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class MediaStore;
class MovieAsset;

/// Makes the thumbnails of recordings and puts them into the cache. A decoder takes longer than a row may be painted
/// for: whoever wants a thumbnail asks, and is told when there is one.
///
/// Lives on the main thread, owned by ClipboardManager. One movie is looked into at a time, the one that was asked for
/// last first, for that is what somebody looks at.
class RecordingThumbnails {
public:
    /// More than a list shows; what was asked for longest ago is forgotten then, and asked for again when it shows.
    static constexpr std::size_t mostWanted = 60;

    /// `onMade` is called with the file's name when its thumbnail is in the cache.
    RecordingThumbnails(MediaStore &media, MovieAsset &movies, std::function<void(const QString &fileName)> onMade);

    /// A movie that gave none is not looked into again until its file is another one.
    void want(const QString &fileName);
    /// Nothing that was wanted so far is cached any more.
    void forgetAll();

private:
    /// What tells a file from another one of its name.
    struct Stamp {
        qint64 size = -1;
        QDateTime modified;
        bool operator==(const Stamp &) const = default;
    };
    [[nodiscard]] static Stamp stampOf(const QString &path);

    void makeNext();
    void make(const QString &path, const Stamp &stamp, int longestEdge);
    void made(const QString &path, const Stamp &stamp, const std::optional<QImage> &frame);

    static constexpr qsizetype mostFailed = 1000;

    MediaStore &m_media;
    MovieAsset &m_movies;
    std::function<void(const QString &fileName)> m_onMade;
    std::deque<QString> m_wanted;      ///< the last one first
    std::shared_ptr<QString> m_making; ///< what is looked into; with another one, or none, its answer is nobody's
    QHash<QString, Stamp> m_failed;
};

} // namespace tavrine
