#pragma once

#include <QImage>
#include <QString>

#include <optional>

namespace tavrine {

/// Looks into movie files. Lives on the main thread.
class MovieAsset {
public:
    virtual ~MovieAsset() = default;

    /// The frame at time 0 of the movie at `path`, upright, at full size. None when there is none, or when no decoder
    /// is installed.
    [[nodiscard]] virtual std::optional<QImage> firstFrame(const QString &path) = 0;
};

} // namespace tavrine
