// Windows at the edge under their contract, on a compositor with the layer shell.
#include "adapters/wayland/LayerEdgeWindow.h"
#include "adapters/wayland/LayerPanelWindow.h"
#include "adapters/wayland/LayerParts.h"
#include "adapters/wayland/WaylandScreens.h"
#include "adapters/x11/ForeignWindow.h"
#include "contracts/EdgeWindowContract.h"
#include "support/Eventually.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

namespace tavrine::test {
namespace {

/// For what was pressed to arrive. A compositor that gets thousands of keys a second is busy with nothing else, and
/// ends the connection of who does not read them all.
constexpr std::chrono::milliseconds aTurn{100};

/// Nobody tells where a click goes but who hears it: it is made until that one has.
class WaylandEdgeDesk final : public EdgeDesk {
public:
    WaylandEdgeDesk() {
        m_ground->setContentView(m_under);
        m_ground->setFrame({400, 320, 480, 400});
        m_ground->orderFrontRegardless();
    }
    EdgeWindows &windows() override { return m_windows; }
    QRectF screen() override { return m_screens.screens().first().frame; }
    bool clickIsFor(const ShownAtEdge *shown, QPointF place) override {
        const QPoint at(qRound(place.x()), qRound(screen().height() - place.y()));
        EdgeContent &wanted = shown ? *shown->content : *m_under;
        const int before = wanted.clicks;
        return eventually([&] {
            m_hand.click(at);
            return testing::waitUntil([&] { return wanted.clicks > before; }, aTurn);
        });
    }
    bool keyboardIsWith(const ShownAtEdge *shown) override {
        if (!m_program) {
            m_program = std::make_unique<testing::ForeignWindow>(QStringLiteral(TAVRINE_QT_LINE_EDIT));
            if (!m_program->waitForFocus())
                return false;
        }
        const auto typed = [&] { return (shown ? shown->content->typed : m_program->text()).size(); };
        const auto before = typed();
        if (shown)
            shown->content->setFocus();
        const bool has = eventually([&] {
            m_hand.tap(KEY_P);
            return testing::waitUntil([&] { return typed() > before; }, aTurn);
        });
        // Its toolkit asks KWin for the keyboard once more when it has got it, and would take it from who comes next.
        if (has && !shown)
            letPass(std::chrono::milliseconds(300));
        return has;
    }
    bool comes(const std::function<bool()> &condition) override { return eventually(condition); }

private:
    testing::WaylandHand m_hand;
    LayerParts m_parts;
    LayerPanelWindows m_panels{m_parts};
    LayerEdgeWindows m_windows{m_parts};
    WaylandScreens m_screens;
    std::unique_ptr<PanelWindow> m_ground =
        m_panels.makePanel({.title = {}, .contentSize = {480, 400}, .canBecomeKey = false});
    EdgeContent *m_under = new EdgeContent;
    std::unique_ptr<testing::ForeignWindow> m_program;
};

std::unique_ptr<EdgeDesk> makeWaylandEdgeDesk() {
    return std::make_unique<WaylandEdgeDesk>();
}

INSTANTIATE_TEST_SUITE_P(Wayland, EdgeWindowContract, ::testing::Values(&makeWaylandEdgeDesk));

} // namespace
} // namespace tavrine::test
