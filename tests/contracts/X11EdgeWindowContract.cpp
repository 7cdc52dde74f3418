// Windows at the edge under their contract: the fake, and those of an X server with and without a compositor.
#include "adapters/fake/FakeEdgeWindow.h"
#include "adapters/x11/X11ApplicationActivator.h"
#include "adapters/x11/X11EdgeWindow.h"
#include "adapters/x11/X11Screens.h"
#include "contracts/EdgeWindowContract.h"
#include "support/Eventually.h"
#include "support/ScreenClient.h"
#include "support/TestKeyboard.h"

namespace tavrine::test {
namespace {

class FakeEdgeDesk final : public EdgeDesk {
public:
    EdgeWindows &windows() override { return m_fake; }
    QRectF screen() override { return {0, 0, 1280, 800}; }
    bool clickIsFor(const ShownAtEdge *shown, QPointF place) override {
        return m_fake.windowAt(place) == (shown ? shown->window.get() : nullptr);
    }
    bool keyboardIsWith(const ShownAtEdge *shown) override {
        return m_fake.keyWindow() == (shown ? shown->window.get() : nullptr);
    }
    bool comes(const std::function<bool()> &condition) override { return condition(); }

private:
    FakeEdgeWindows m_fake;
};

class X11EdgeDesk final : public EdgeDesk {
public:
    EdgeWindows &windows() override { return m_windows; }
    QRectF screen() override { return m_screens.screens().first().frame; }
    bool clickIsFor(const ShownAtEdge *shown, QPointF place) override {
        const QPoint at(qRound(place.x()), qRound(screen().height() - place.y()));
        const auto wanted = shown ? static_cast<quint32>(shown->window->windowNumber()) : m_ground;
        if (!eventually([&] { return m_hand.windowAt(at.x(), at.y()) == wanted; }))
            return false;
        if (!shown)
            return true;
        const int before = shown->content->clicks;
        m_hand.click(1, at.x(), at.y());
        return eventually([&] { return shown->content->clicks == before + 1; });
    }
    bool keyboardIsWith(const ShownAtEdge *shown) override {
        const auto wanted = shown ? static_cast<quint32>(shown->window->windowNumber()) : m_focused;
        return eventually([&] { return m_hand.focusedWindow() == wanted; });
    }
    bool comes(const std::function<bool()> &condition) override { return eventually(condition); }

private:
    testing::ScreenClient m_client;
    const testing::ScreenClient::Window m_ground = m_client.add(m_client.wholeScreen(), 0x33aa33);
    testing::TestKeyboard m_hand;
    const quint32 m_focused = m_hand.focusedWindow();
    X11ApplicationActivator m_activator;
    X11EdgeWindows m_windows{[this]() -> X11ApplicationActivator & { return m_activator; }};
    X11Screens m_screens;
};

template <class T>
std::unique_ptr<EdgeDesk> make() {
    return std::make_unique<T>();
}

INSTANTIATE_TEST_SUITE_P(Fake, EdgeWindowContract, ::testing::Values(&make<FakeEdgeDesk>));
INSTANTIATE_TEST_SUITE_P(X11, EdgeWindowContract, ::testing::Values(&make<X11EdgeDesk>));
INSTANTIATE_TEST_SUITE_P(Fake, StackingContract, ::testing::Values(&make<FakeEdgeDesk>));
INSTANTIATE_TEST_SUITE_P(X11, StackingContract, ::testing::Values(&make<X11EdgeDesk>));

} // namespace
} // namespace tavrine::test
