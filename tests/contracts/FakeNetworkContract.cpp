// The fakes of the network's ports under their contracts.

#include "adapters/fake/FakeInterfaceCounters.h"
#include "adapters/fake/FakePathMonitor.h"
#include "adapters/fake/VirtualTime.h"
#include "contracts/InterfaceCountersContract.h"
#include "contracts/PathMonitorContract.h"

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

struct FakeMachine {
    FakeMachine() { fake.add("lo", interfaceFlag::loopback); }
    InterfaceCounters &counters() { return fake; }
    void addPair(const char *a, const char *b) {
        fake.add(a, 0);
        fake.add(b, 0);
        ends = {{a, b}, {b, a}};
    }
    void setUp(const char *name, bool isUp) { fake.setFlags(name, isUp ? interfaceFlag::up : 0); }
    void remove(const char *a) {
        fake.remove(ends.at(a));
        fake.remove(a);
    }
    void send(const char *from, int bytes) {
        fake.send(from, static_cast<quint32>(bytes));
        fake.receive(ends.at(from), static_cast<quint32>(bytes));
    }
    FakeInterfaceCounters fake;
    std::map<std::string, std::string> ends;
};

struct FakeWayOut {
    FakeWayOut() { fake.setStatus(PathStatus::unsatisfied); }
    PathMonitor &monitor() { return fake; }
    void open() { fake.setStatus(PathStatus::satisfied); }
    void close() { fake.setStatus(PathStatus::unsatisfied); }
    template <class Condition>
    bool comes(Condition condition) {
        time.advance(1s);
        return condition();
    }
    void rest() { time.advance(1s); }
    VirtualTime time;
    FakePathMonitor fake{time};
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, InterfaceCountersContract, FakeMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, PathMonitorContract, FakeWayOut);

} // namespace tavrine::test
