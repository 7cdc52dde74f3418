// The contract of a desktop's panels on a Wayland desktop, used with the hand.
#include "adapters/wayland/LayerPanelWindow.h"
#include "adapters/wayland/LayerParts.h"
#include "adapters/wayland/WaylandAccess.h"
#include "adapters/wayland/WaylandApplicationActivator.h"
#include "adapters/wayland/WaylandEventMonitors.h"
#include "adapters/wayland/WaylandScreens.h"
#include "adapters/wayland/WaylandWindows.h"
#include "adapters/wayland/WaylandWorkspace.h"
#include "adapters/x11/ForeignWindow.h"
#include "contracts/PanelDesktopContract.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::ForeignWindow;
using testing::waitUntil;

/// On sway, where a window of another program lies below everything: a press on nothing is nobody's there, and its
/// release goes to whom it is over.
class WaylandPanelDesktop final : public PanelDesktop {
public:
    WaylandPanelDesktop() { EXPECT_TRUE(m_ground.waitForFocus()); }
    PanelWindows &windows() override { return m_windows; }
    EventMonitors &monitors() override { return m_monitors; }
    Screens &screens() override { return m_screens; }
    Workspace &workspace() override { return m_workspace; }
    ApplicationActivator &activator() override { return m_activator; }
    Access &access() override { return m_access; }
    void tapOption() override {
        m_hand.tap(KEY_LEFTALT);
        settle();
    }
    void tapKey(int keyCode) override {
        m_hand.tap(keyCode == virtualKey::escape ? KEY_ESC : KEY_P);
        settle();
    }
    void click(QPointF place) override {
        m_hand.click(fromTop(place));
        settle();
    }
    void drag(int button, QPointF from, QPointF to) override {
        if (button != 0) {
            m_hand.move(fromTop(from));
            settle(); // of the way there nothing is told any more
            m_hand.press(numberOf(button));
            m_hand.move(fromTop((from + to) / 2));
        } else
            m_hand.move(fromTop(to) + QPoint(1, 0)); // entering a window is no move within it
        m_hand.move(fromTop(to));
        if (button != 0)
            m_hand.release(numberOf(button));
        settle();
    }
    /// Each other of two, as programs are the same that are called the same.
    RunningApplication startProgram() override {
        const auto before = m_workspace.frontmostApplication();
        const bool isFirst = m_programs.empty();
        m_programs.push_back(std::make_unique<ForeignWindow>(isFirst ? QStringLiteral(TAVRINE_GTK_ENTRY)
                                                                     : QStringLiteral(TAVRINE_QT_LINE_EDIT)));
        EXPECT_TRUE(m_programs.back()->waitForFocus());
        EXPECT_TRUE(waitUntil([&] {
            const auto front = m_workspace.frontmostApplication();
            return front && front != before;
        }));
        return m_workspace.frontmostApplication().value_or(RunningApplication{});
    }
    void endProgram(const RunningApplication &application) override {
        m_programs.clear();
        EXPECT_TRUE(waitUntil([&] { return !m_activator.isRunning(application); }));
    }
    bool comesTrue(const std::function<bool()> &condition) override { return waitUntil(condition); }

private:
    [[nodiscard]] QPoint fromTop(QPointF place) { return {int(place.x()), m_hand.layout().height() - int(place.y())}; }
    static int numberOf(int button) { return button == 1 ? BTN_LEFT : button == 3 ? BTN_RIGHT : BTN_MIDDLE; }
    /// What was done has arrived: by turns, as a busy machine gives us few of them in a time.
    void settle() {
        for (int turn = 0; turn < 16; ++turn)
            (void)waitUntil([] { return false; }, 5ms);
    }

    testing::WaylandHand m_hand;
    ForeignWindow m_ground{QStringLiteral(TAVRINE_QT_LINE_EDIT)};
    std::shared_ptr<WaylandWindows> m_all = WaylandWindows::make();
    LayerParts m_parts;
    LayerPanelWindows m_windows{m_parts};
    WaylandEventMonitors m_monitors{[this]() -> LayerParts & { return m_parts; }};
    WaylandScreens m_screens;
    WaylandWorkspace m_workspace{m_all};
    WaylandApplicationActivator m_activator{m_all};
    WaylandAccess m_access;
    std::vector<std::unique_ptr<ForeignWindow>> m_programs;
};

std::vector<std::unique_ptr<PanelDesktop> (*)()> desktops() {
    if (qgetenv("XDG_CURRENT_DESKTOP") != "sway")
        return {};
    return {&make<WaylandPanelDesktop>};
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(PanelDesktopContract);
INSTANTIATE_TEST_SUITE_P(Wayland, PanelDesktopContract, ::testing::ValuesIn(desktops()));

} // namespace
} // namespace tavrine
