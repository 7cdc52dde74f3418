#pragma once

#include "ports/MovieAsset.h"

#include <QTimer>

namespace tavrine {

/// Stands where no decoder is installed: movies have no frames to show, and their rows show the symbol for a video.
/// Decoding comes as a plugin, which brings the adapter that replaces this one.
class NoMovieAsset final : public MovieAsset {
public:
    [[nodiscard]] std::optional<QImage> firstFrame(const QString &path) override {
        static_cast<void>(path);
        return std::nullopt;
    }

    void facts(const QString &path, FactsAnswer answer) override {
        static_cast<void>(path);
        QTimer::singleShot(0, [answer = std::move(answer)] { answer(std::nullopt); });
    }

    void copyVideoTrack(const QString &source, const QString &target, CopyAnswer answer) override {
        static_cast<void>(source);
        static_cast<void>(target);
        QTimer::singleShot(0, [answer = std::move(answer)] { answer(false); });
    }
};

} // namespace tavrine
