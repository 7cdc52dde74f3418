#include "adapters/fake/FakeKeychain.h"
#include "adapters/linux/PluginKeychain.h"
#include "contracts/KeychainContract.h"

namespace tavrine::test {
namespace {

struct FakeKeyRing {
    Keychain &keychain() { return fake; }
    void endService() { fake.setRunning(false); }
    void hold() { fake.hold(); }
    FakeKeychain fake;
};

/// The key ring that comes late, with a key ring in memory as what comes.
struct LateKeyRing {
    Keychain &keychain() { return late; }
    void endService() { fake.setRunning(false); }
    void hold() { fake.hold(); }
    FakeKeychain fake;
    int loads = 0;
    PluginKeychain late{[this] {
        ++loads;
        return &fake;
    }};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Late, KeychainContract, LateKeyRing);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, KeychainContract, FakeKeyRing);

TEST(PluginKeychain, isLoadedOnceWithTheFirstQuestion) {
    LateKeyRing ring;
    EXPECT_EQ(ring.loads, 0);
    static_cast<void>(ring.late.copyMatching({}));
    static_cast<void>(ring.late.copyMatching({}));
    EXPECT_EQ(ring.loads, 1);
}

TEST(PluginKeychain, failsWithoutThePlugin) {
    PluginKeychain missing([] { return nullptr; });
    EXPECT_EQ(missing.copyMatching({}), Keychain::Data(KeychainStatus::failure));
    EXPECT_EQ(missing.update({}, "data"), KeychainStatus::failure);
    EXPECT_EQ(missing.add({}, "data"), KeychainStatus::failure);
    EXPECT_EQ(missing.remove({}), KeychainStatus::failure);
    missing.cancel();
}

TEST(PluginKeychain, isNotLoadedAnyMoreOnceItIsCancelled) {
    LateKeyRing ring;
    ring.late.cancel();
    EXPECT_EQ(ring.late.copyMatching({}), Keychain::Data(KeychainStatus::failure));
    EXPECT_EQ(ring.loads, 0);
}

} // namespace
} // namespace tavrine::test
