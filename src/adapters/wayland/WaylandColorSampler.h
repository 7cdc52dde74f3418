#pragma once

#include "ports/ColorSampler.h"

#include <memory>

namespace tavrine {

/// Samplers over the frozen screen of `screencapture -p`: a program of its own has the keyboard and the two pictures
/// of the screen, and gives all of it back by ending. Who shows a sampler ends the one before with no colour.
///
/// Lives on the main thread, as long as the process. A sampler that is dropped stays on the screen until the person
/// answers.
class WaylandColorSamplers final : public ColorSamplers {
public:
    WaylandColorSamplers();
    ~WaylandColorSamplers() override;

    [[nodiscard]] std::shared_ptr<ColorSampler> makeSampler() override;

    /// How many have not answered yet.
    [[nodiscard]] int running() const;

private:
    class Sampler;
    struct Shown;

    std::shared_ptr<Shown> m_shown;
};

} // namespace tavrine
