#pragma once

#include "ports/ColorSampler.h"

#include <memory>

namespace tavrine {

/// Samplers over the screen frozen in device pixels. One stands on the screen at a time: who shows another one ends the
/// one before with no colour. Nothing of a pick is left in the process after its answer.
///
/// Lives on the main thread, as long as the process. A sampler that is dropped stays on the screen until the person
/// answers, for which this object keeps it.
class X11ColorSamplers final : public ColorSamplers {
public:
    X11ColorSamplers();
    ~X11ColorSamplers() override;

    [[nodiscard]] std::shared_ptr<ColorSampler> makeSampler() override;

    /// As `ColorSampler::showSampler`, over a picture from a file (see `PictureFile`); with an empty path over the
    /// server's.
    void show(const QString &picture, const std::function<void(std::optional<QColor>)> &selection);
    /// Ends what is on the screen without a colour.
    void cancel();

    /// True while a magnifier is on the screen.
    [[nodiscard]] bool isShown() const;

private:
    using Selection = std::function<void(std::optional<QColor>)>;
    class Sampler;
    struct Shown;

    std::shared_ptr<Shown> m_shown;
};

} // namespace tavrine
