#include "adapters/fake/FakeKeychain.h"
#include "contracts/KeychainContract.h"

namespace tavrine::test {
namespace {

struct FakeKeyRing {
    Keychain &keychain() { return fake; }
    void endService() { fake.setRunning(false); }
    void hold() { fake.hold(); }
    FakeKeychain fake;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, KeychainContract, FakeKeyRing);

} // namespace
} // namespace tavrine::test
