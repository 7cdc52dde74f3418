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

/// Looks into movie files, which others may have made: what reads them runs elsewhere, and nobody waits for it. Each
/// answer comes once, in a later turn, within seconds whatever the file is; a copy takes as long as its disks do. Lives
/// on the main thread.
class MovieAsset {
public:
    using FrameAnswer = std::function<void(std::optional<QImage> frame)>;
    using FactsAnswer = std::function<void(std::optional<MovieFacts> facts)>;
    using CopyAnswer = std::function<void(bool completed)>;

    virtual ~MovieAsset() = default;

    /// The frame at time 0 of the movie at `path`, upright, made smaller where one of its edges has more than
    /// `longestEdge` pixels. None when there is none.
    virtual void firstFrame(const QString &path, int longestEdge, FrameAnswer answer) = 0;

    /// None when there is no movie at `path`.
    virtual void facts(const QString &path, FactsAnswer answer) = 0;

    /// Copies the first video track of the movie at `source` to a new movie at `target`, without coding it anew.
    /// The copy has its name only when it is whole, with its index in front; after false there is nothing new at
    /// `target`.
    virtual void copyVideoTrack(const QString &source, const QString &target, CopyAnswer answer) = 0;
};

} // namespace tavrine
