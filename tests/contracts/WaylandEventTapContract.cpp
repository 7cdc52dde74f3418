// A compositor's keyboard, typed on by the hand, and a program that has it.
#include "adapters/wayland/KeyboardOwner.h"
#include "adapters/wayland/LayerStack.h"
#include "adapters/wayland/WaylandEventTap.h"
#include "adapters/x11/ForeignWindow.h"
#include "contracts/EventTapContract.h"

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

struct WaylandMachine {
    static constexpr bool answersAtOnce = false;
    WaylandMachine() {
        EXPECT_TRUE(field.waitForFocus());
        // Compositors lose the first key of a new keyboard, and give the last window's back when that is gone.
        EXPECT_TRUE(testing::waitUntil([this] { return keyArrives(); }));
        settle();
    }
    EventTaps &taps() { return real; }
    /// Some compositors give the keyboard back a moment after a tap has let go of it.
    bool keyArrives() {
        const QString before = field.text();
        for (int tries = 0; tries < 3; ++tries) {
            hand.tap(KEY_V);
            if (testing::waitUntil([&] { return field.text() != before; }, 300ms)) {
                settle();
                return true;
            }
        }
        return false;
    }
    /// A busy program tells late what was typed before.
    static void settle() {
        (void)testing::waitUntil([] { return false; }, 500ms);
    }
    void hold() { owner.take(); }
    void letGo() { owner.letGo(); }
    template <class Condition>
    bool comes(Condition condition) {
        const bool came = testing::waitUntil(condition);
        settle(); // KWin gives the keyboard to the last window once more, and it is taken back
        return came && condition();
    }
    testing::WaylandHand hand;
    testing::ForeignWindow field{QString::fromUtf8(TAVRINE_QT_LINE_EDIT)};
    testing::KeyboardOwner owner{hand};
    LayerStack stack;
    WaylandEventTaps real{std::make_shared<WaylandReader>(), stack};
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Wayland, EventTapContract, WaylandMachine);

} // namespace tavrine::test
