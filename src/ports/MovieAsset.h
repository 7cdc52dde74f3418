#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

namespace tavrine {

/// What a movie says of itself.
struct MovieFacts {
    QSize naturalSize; ///< pixels, upright; empty without a picture
    bool hasAudioTrack = false;
    std::chrono::milliseconds duration{0};
    bool operator==(const MovieFacts &) const = default;
};

/// Looks into movie files, which others may have made: what reads them runs elsewhere. Lives on the main thread.
class MovieAsset {
public:
    using FactsAnswer = std::function<void(std::optional<MovieFacts> facts)>;
    using CopyAnswer = std::function<void(bool completed)>;

    virtual ~MovieAsset() = default;

    /// The first frame of the movie at `path` that is not black, or the frame at time 0 where all of its beginning is;
    /// upright, at full size. None when there is none, or when no decoder is installed.
    [[nodiscard]] virtual std::optional<QImage> firstFrame(const QString &path) = 0;

    /// `answer` comes once, later: none when there is no movie at `path`.
    virtual void facts(const QString &path, FactsAnswer answer) = 0;

    /// Copies the first video track of the movie at `source` to a new movie at `target`, without coding it anew.
    /// `answer` comes once, later; after false there is no file at `target`.
    virtual void copyVideoTrack(const QString &source, const QString &target, CopyAnswer answer) = 0;
};

} // namespace tavrine
