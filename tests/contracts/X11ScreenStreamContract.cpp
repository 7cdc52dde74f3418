// The streams of an X server's screen, under their contract.
#include "adapters/linux/PluginLoader.h"
#include "contracts/ScreenStreamContract.h"
#include "support/Eventually.h"
#include "support/ScreenClient.h"

#include <QGuiApplication>
#include <QScreen>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

struct X11Screen {
    ScreenStreams &streams() { return *plugin.port(); }
    [[nodiscard]] quint32 display() const {
        return static_cast<quint32>(qHash(QGuiApplication::primaryScreen()->name()));
    }
    void paint(const QRect &area, quint32 colour) { client.paint(board, area, colour); }
    WindowNumber addWindow() { return client.add({300, 300, 50, 50}, 0x00ff00); }
    void removeWindow(WindowNumber window) { client.destroy(static_cast<quint32>(window)); }
    template <class Condition>
    bool eventually(Condition condition) {
        return test::eventually(condition, 5s);
    }
    bool passTime(std::chrono::milliseconds length) {
        letPass(length);
        return true;
    }
    void settle() { letPass(80ms); }

    testing::ScreenClient client;
    const quint32 board = client.addBare(client.wholeScreen());
    PluginLoader<ScreenStreams> plugin{QStringLiteral("screen_stream")};
};

INSTANTIATE_TYPED_TEST_SUITE_P(X11, ScreenStreamContract, X11Screen);

} // namespace
} // namespace tavrine::test
