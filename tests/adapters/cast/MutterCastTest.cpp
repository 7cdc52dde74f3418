// What GNOME's compositor is asked for when a cast begins, played on the session bus.
#include "adapters/gnome/cast/MutterCast.h"

#include "support/Eventually.h"
#include "support/OpeningCast.h"

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

/// It never answers.
class PlayedMutter : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.Mutter.DisplayConfig")

public:
    PlayedMutter() {
        m_bus.registerObject(QStringLiteral("/org/gnome/Mutter/DisplayConfig"), this, QDBusConnection::ExportAllSlots);
        m_bus.registerService(QStringLiteral("org.gnome.Mutter.ScreenCast"));
    }
    ~PlayedMutter() override { QDBusConnection::disconnectFromBus(QStringLiteral("played-mutter")); }
    int asked = 0;

public Q_SLOTS:
    void GetCurrentState(const QDBusMessage &call) {
        ++asked;
        call.setDelayedReply(true);
    }

private:
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("played-mutter"));
};

std::unique_ptr<MutterCast> castOf(StreamBus::Wait longestAnswer) {
    return std::make_unique<MutterCast>(QRect(0, 0, 200, 100), 1, longestAnswer);
}

TEST(MutterCast, hearsAStopWhileTheCompositorDoesNotAnswer) {
    PlayedMutter mutter;
    OpeningCast opening([] { return castOf(1h); });
    ASSERT_TRUE(eventually([&] { return mutter.asked == 1; }));
    EXPECT_FALSE(opening.hasReturned());
    opening.stop();
    EXPECT_TRUE(eventually([&] { return opening.hasReturned(); }));
    EXPECT_TRUE(opening.isRefused());
}

TEST(MutterCast, givesUpOnACompositorThatNeverAnswers) {
    PlayedMutter mutter;
    const OpeningCast opening([] { return castOf(50ms); });
    EXPECT_TRUE(eventually([&] { return opening.hasReturned(); }));
    EXPECT_TRUE(opening.isRefused());
}

} // namespace
} // namespace tavrine::test

#include "MutterCastTest.moc"
