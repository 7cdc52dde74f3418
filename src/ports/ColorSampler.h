#pragma once

#include <QColor>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

/// One pick of a colour from the screen, with a magnifier at the pointer. Dropping it before its answer leaves the
/// screen as it is; the answer may still come.
class ColorSampler {
public:
    virtual ~ColorSampler() = default;

    /// Shows the magnifier. `selection` is called once, on the main thread and in a later turn: with the colour of the
    /// pixel that the person took, or with none when the person cancelled or the screen could not be read.
    virtual void showSampler(std::function<void(std::optional<QColor>)> selection) = 0;
};

/// Makes samplers. Lives on the main thread, as long as the process.
class ColorSamplers {
public:
    virtual ~ColorSamplers() = default;
    [[nodiscard]] virtual std::shared_ptr<ColorSampler> makeSampler() = 0;
};

} // namespace tavrine
