#pragma once

#include "base/Time.h"
#include "ports/ColorSampler.h"

#include <utility>
#include <vector>

namespace tavrine {

/// A person with a magnifier, played by the test. As over there, one magnifier stands on the screen at a time, and
/// every answer comes in a later turn of the main queue.
class FakeColorSamplers final : public ColorSamplers {
public:
    explicit FakeColorSamplers(Time &time) : m_time(time) {}

    [[nodiscard]] std::shared_ptr<ColorSampler> makeSampler() override {
        auto sampler = std::make_shared<Sampler>(*this);
        m_made.push_back(sampler);
        return sampler;
    }

    [[nodiscard]] bool isShown() const { return m_selection != nullptr; }
    [[nodiscard]] int shownCount() const { return m_shownCount; }
    /// Samplers that somebody still holds.
    [[nodiscard]] int heldCount() const {
        int held = 0;
        for (const auto &each : m_made)
            held += each.expired() ? 0 : 1;
        return held;
    }

    /// The person clicks a pixel of this colour, or presses Escape. Nothing when no magnifier is there.
    void take(const QColor &colour) { answer(colour); }
    void cancel() { answer(std::nullopt); }
    /// From now on the screen cannot be read.
    void setUnreadable(bool isUnreadable) { m_isUnreadable = isUnreadable; }

private:
    using Selection = std::function<void(std::optional<QColor>)>;

    class Sampler final : public ColorSampler {
    public:
        explicit Sampler(FakeColorSamplers &owner) : m_owner(owner) {}
        void showSampler(Selection selection) override { m_owner.show(std::move(selection)); }

    private:
        FakeColorSamplers &m_owner;
    };

    void show(Selection selection) {
        cancel();
        ++m_shownCount;
        m_selection = std::move(selection);
        if (m_isUnreadable)
            cancel();
    }

    void answer(std::optional<QColor> colour) {
        if (auto selection = std::exchange(m_selection, nullptr))
            m_time.async([selection = std::move(selection), colour] { selection(colour); });
    }

    Time &m_time;
    std::vector<std::weak_ptr<ColorSampler>> m_made;
    Selection m_selection;
    int m_shownCount = 0;
    bool m_isUnreadable = false;
};

} // namespace tavrine
