#include "adapters/fake/FakeEventTap.h"
#include "contracts/EventTapContract.h"

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

struct FakeMachine {
    static constexpr bool answersAtOnce = true;
    EventTaps &taps() { return fake; }
    bool keyArrives() { return fake.keyArrives(); }
    void hold() { fake.hold(); }
    void letGo() { fake.letGo(); }
    template <class Condition>
    bool comes(Condition condition) {
        time.advance(2s);
        return condition();
    }
    VirtualTime time;
    FakeEventTaps fake{time};
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, EventTapContract, FakeMachine);

} // namespace tavrine::test
