// The key ring of the desktop while the bus on which it lives comes and goes: a process of its own, for the library
// and its connection to the bus are the process's.

#include "adapters/linux/QtKeychainStore.h"
#include "contracts/KeyRingDaemon.h"
#include "support/Eventually.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

EmptyBus &bus() {
    static EmptyBus bus;
    return bus;
}

TEST(KeychainBus, aBusThatComesAfterTheFirstQuestionIsUsedAndOutlived) {
    KeyRingDaemon daemon;
    QtKeychainStore store(5s);
    const KeychainItem item{QStringLiteral("com.veltrane.Tavrine"), QStringLiteral("cloudUploadScript")};
    EXPECT_EQ(store.copyMatching(item), Keychain::Data(KeychainStatus::failure)) << "there is no bus yet";
    ASSERT_TRUE(bus().start());
    daemon.start(true);
    ASSERT_TRUE(eventually([&] { return store.add(item, "script") == KeychainStatus::success; }))
        << daemon.output().toStdString();
    EXPECT_EQ(store.copyMatching(item), Keychain::Data(QByteArray("script")));
    bus().end();
    letPass(300ms); // GLib would end this process now
    EXPECT_EQ(store.copyMatching(item), Keychain::Data(KeychainStatus::failure));
    EXPECT_EQ(store.remove(item), KeychainStatus::failure);
    letPass(300ms);
}

TEST(KeychainBus, aBusThatEndsAndComesBackIsUsedAgainAsOftenAsItDoes) {
    KeyRingDaemon daemon;
    QtKeychainStore store(5s);
    const KeychainItem item{QStringLiteral("com.veltrane.Tavrine"), QStringLiteral("cloudUploadScript")};
    for (const QByteArray script : {"first", "second", "third"}) {
        ASSERT_TRUE(bus().start());
        daemon.start(true);
        ASSERT_TRUE(eventually([&] { return store.add(item, script) == KeychainStatus::success; }))
            << script.constData() << daemon.output().toStdString();
        EXPECT_EQ(store.copyMatching(item), Keychain::Data(script));
        EXPECT_EQ(store.remove(item), KeychainStatus::success);
        EXPECT_EQ(store.copyMatching(item), Keychain::Data(KeychainStatus::itemNotFound));
        bus().end();
        daemon.end();
        EXPECT_EQ(store.copyMatching(item), Keychain::Data(KeychainStatus::failure)) << "nobody is there to be asked";
    }
}

} // namespace
} // namespace tavrine::test

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("DBUS_SESSION_BUS_ADDRESS", tavrine::test::bus().address().toUtf8());
    qunsetenv("XDG_CURRENT_DESKTOP");
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
