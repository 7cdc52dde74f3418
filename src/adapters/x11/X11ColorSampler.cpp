#include "adapters/x11/X11ColorSampler.h"

#include "adapters/x11/X11SamplerOverlay.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tavrine {

/// The overlays that have not answered yet. Only the last of them is on the screen.
struct X11ColorSamplers::Shown {
    std::vector<std::unique_ptr<X11SamplerOverlay>> overlays;

    void remove(const X11SamplerOverlay *overlay) {
        const auto found = std::find_if(overlays.begin(), overlays.end(),
                                        [overlay](const auto &each) { return each.get() == overlay; });
        if (found == overlays.end())
            return;
        found->release()->deleteLater(); // it is calling us
        overlays.erase(found);
    }
};

class X11ColorSamplers::Sampler final : public ColorSampler {
public:
    explicit Sampler(std::weak_ptr<Shown> shown) : m_shown(std::move(shown)) {}

    void showSampler(Selection selection) override {
        const auto shown = m_shown.lock();
        if (!shown)
            return;
        for (const auto &other : shown->overlays)
            other->leaveScreen(); // before the picture is taken
        const auto self = std::make_shared<const X11SamplerOverlay *>(nullptr);
        shown->overlays.push_back(std::make_unique<X11SamplerOverlay>(
            [weak = m_shown, self, selection = std::move(selection)](std::optional<QColor> colour) {
                if (const auto samplers = weak.lock())
                    samplers->remove(*self);
                selection(colour);
            }));
        *self = shown->overlays.back().get();
    }

private:
    std::weak_ptr<Shown> m_shown;
};

X11ColorSamplers::X11ColorSamplers() : m_shown(std::make_shared<Shown>()) {}

X11ColorSamplers::~X11ColorSamplers() = default;

std::shared_ptr<ColorSampler> X11ColorSamplers::makeSampler() {
    return std::make_shared<Sampler>(m_shown);
}

bool X11ColorSamplers::isShown() const {
    return !m_shown->overlays.empty() && m_shown->overlays.back()->isOnScreen();
}

} // namespace tavrine
