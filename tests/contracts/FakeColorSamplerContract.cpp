#include "adapters/fake/FakeColorSampler.h"
#include "adapters/fake/VirtualTime.h"
#include "contracts/ColorSamplerContract.h"

namespace tavrine::test {
namespace {

class FakeScreen {
public:
    [[nodiscard]] ColorSamplers &samplers() { return m_samplers; }
    [[nodiscard]] QColor colour() const { return {1, 2, 3}; }
    [[nodiscard]] bool isShown() const { return m_samplers.isShown(); }
    void take() { m_samplers.take(colour()); }
    void cancel() { m_samplers.cancel(); }
    void settle() { m_time.runPending(); }

private:
    VirtualTime m_time;
    FakeColorSamplers m_samplers{m_time};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ColorSamplerContract, FakeScreen);

} // namespace
} // namespace tavrine::test
