#include "adapters/x11/X11ColorSampler.h"

#include "adapters/x11/X11SamplerOverlay.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tavrine {

/// The overlays that have not answered yet. Only the last of them is on the screen.
struct X11ColorSamplers::Shown : std::enable_shared_from_this<Shown> {
    std::vector<std::unique_ptr<X11SamplerOverlay>> overlays;

    void show(const QString &picture, const Selection &selection) {
        for (const auto &other : overlays)
            other->leaveScreen(); // before the picture is taken
        const auto self = std::make_shared<const X11SamplerOverlay *>(nullptr);
        overlays.push_back(std::make_unique<X11SamplerOverlay>(
            picture, [weak = weak_from_this(), self, selection](std::optional<QColor> colour) {
                if (const auto samplers = weak.lock())
                    samplers->remove(*self);
                selection(colour);
            }));
        *self = overlays.back().get();
    }

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
        shown->show({}, selection);
    }

private:
    std::weak_ptr<Shown> m_shown;
};

X11ColorSamplers::X11ColorSamplers() : m_shown(std::make_shared<Shown>()) {}

X11ColorSamplers::~X11ColorSamplers() = default;

std::shared_ptr<ColorSampler> X11ColorSamplers::makeSampler() {
    return std::make_shared<Sampler>(m_shown);
}

void X11ColorSamplers::show(const QString &picture, const Selection &selection) {
    m_shown->show(picture, selection);
}

void X11ColorSamplers::cancel() {
    for (const auto &overlay : m_shown->overlays)
        overlay->leaveScreen();
}

bool X11ColorSamplers::isShown() const {
    return !m_shown->overlays.empty() && m_shown->overlays.back()->isOnScreen();
}

} // namespace tavrine
