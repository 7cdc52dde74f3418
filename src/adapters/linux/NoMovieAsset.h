#pragma once

#include "ports/MovieAsset.h"

namespace tavrine {

/// Stands where no decoder is installed: movies have no frames to show, and their rows show the symbol for a video.
/// Decoding comes as a plugin, which brings the adapter that replaces this one.
class NoMovieAsset final : public MovieAsset {
public:
    [[nodiscard]] std::optional<QImage> firstFrame(const QString &path) override {
        static_cast<void>(path);
        return std::nullopt;
    }
};

} // namespace tavrine
