// The kernel's interfaces and routes under the contracts of the network's ports, in a network of this program's own.

#include "adapters/linux/NetlinkCounters.h"
#include "adapters/linux/NetlinkPathMonitor.h"
#include "adapters/linux/QtTime.h"
#include "contracts/InterfaceCountersContract.h"
#include "contracts/PathMonitorContract.h"
#include "support/Eventually.h"
#include "support/Program.h"
#include "utilities/meter/NetworkMonitor.h"

#include <QFile>
#include <QTextStream>

#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

QString words(const char *text) {
    return QString::fromLatin1(text);
}

/// One line of ip(8) after the other, each of which works.
void ip(const QStringList &lines) {
    QProcess process;
    process.start(words("ip"), {words("-batch"), words("-")});
    process.write(lines.join(u'\n').toUtf8() + '\n');
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished());
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
}
void ip(const char *line) {
    ip(QStringList{words(line)});
}

/// Interfaces are silent: none speaks of itself to others by the newer protocol.
class Network {
public:
    Network() {
        QFile setting(words("/proc/sys/net/ipv6/conf/default/disable_ipv6"));
        EXPECT_TRUE(setting.open(QIODevice::WriteOnly) && setting.write("1") == 1);
    }
    ~Network() {
        for (const auto &index : interfaceNames())
            if (index != words("lo"))
                ip(QStringList{words("link delete ") + index});
    }
    Network(const Network &) = delete;
    Network &operator=(const Network &) = delete;

    void addPair(const char *a, const char *b) {
        ip(QStringList{words("link add %1 type veth peer name %2").arg(words(a), words(b))});
    }
    void setUp(const char *name, bool isUp) {
        ip(QStringList{words("link set %1 %2").arg(words(name), isUp ? words("up") : words("down"))});
    }
    void remove(const char *a) { ip(QStringList{words("link delete ") + words(a)}); }
    /// A frame that nobody understands, as long as it is told.
    void send(const char *from, int bytes) {
        const int descriptor = ::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0);
        ASSERT_GE(descriptor, 0);
        // A link that has just been switched on drops what is sent before the kernel has seen its carrier.
        ifreq link{};
        std::strncpy(link.ifr_name, from, sizeof link.ifr_name - 1);
        static_cast<void>(eventually(
            [&] { return ::ioctl(descriptor, SIOCGIFFLAGS, &link) == 0 && (link.ifr_flags & IFF_RUNNING) != 0; }, 3s));
        QByteArray frame(bytes, '\0');
        frame.replace(0, 6, QByteArray(6, '\xff')); // to all
        frame[12] = '\x88';                         // a protocol for experiments
        frame[13] = '\xb5';
        sockaddr_ll to{};
        to.sll_family = AF_PACKET;
        to.sll_ifindex = static_cast<int>(::if_nametoindex(from));
        EXPECT_EQ(::sendto(descriptor, frame.constData(), static_cast<size_t>(bytes), 0,
                           reinterpret_cast<const sockaddr *>(&to), sizeof to),
                  bytes);
        ::close(descriptor);
    }

private:
    static QStringList interfaceNames() {
        QStringList names;
        auto *const list = ::if_nameindex();
        for (auto *each = list; each && each->if_name; ++each)
            names.append(QString::fromLatin1(each->if_name));
        ::if_freenameindex(list);
        // The second end of a pair goes with the first.
        QStringList firsts;
        for (const QString &name : names)
            if (!name.startsWith(words("two")))
                firsts.append(name);
        return firsts;
    }
};

struct Machine : Network {
    InterfaceCounters &counters() { return real; }
    NetlinkCounters real;
};

/// The way out leads over one end of a pair.
struct WayOut : Network {
    WayOut() {
        addPair("one", "two");
        ip({words("link set one up"), words("link set two up"), words("address add 192.0.2.1/24 dev one")});
    }
    PathMonitor &monitor() { return real; }
    void open() { ip("route replace default via 192.0.2.2 dev one"); }
    void close() { ip("route delete default"); }
    template <class Condition>
    bool comes(Condition condition) {
        return eventually(condition, 3s);
    }
    void rest() { letPass(300ms); }
    NetlinkPathMonitor real;
};

class NetlinkPath : public testing::Test {
public:
    NetlinkPath() {
        way.monitor().start([this](PathStatus status) { told = status; });
        EXPECT_TRUE(becomes(PathStatus::unsatisfied));
    }
    bool becomes(PathStatus status) {
        return eventually([&] { return told == status; }, 3s);
    }
    bool stays(PathStatus status) {
        letPass(300ms);
        return told == status;
    }
    WayOut way;
    std::optional<PathStatus> told;
};

TEST_F(NetlinkPath, endsWithTheInterfaceAndComesBackWithTheRoute) {
    way.open();
    ASSERT_TRUE(becomes(PathStatus::satisfied));
    ip("link set one down"); // the kernel says nothing of the route that goes with it
    EXPECT_TRUE(becomes(PathStatus::unsatisfied));
    ip("link set one up");
    way.open();
    EXPECT_TRUE(becomes(PathStatus::satisfied));
}

TEST_F(NetlinkPath, endsWithTheCarrierThoughTheRouteStaysAndComesBackWithIt) {
    way.open();
    ASSERT_TRUE(becomes(PathStatus::satisfied));
    ip("link set two down"); // the cable
    EXPECT_TRUE(becomes(PathStatus::unsatisfied));
    ip("link set two up");
    EXPECT_TRUE(becomes(PathStatus::satisfied));
}

TEST_F(NetlinkPath, endsWithTheAddress) {
    way.open();
    ASSERT_TRUE(becomes(PathStatus::satisfied));
    ip("address delete 192.0.2.1/24 dev one");
    EXPECT_TRUE(becomes(PathStatus::unsatisfied));
}

TEST_F(NetlinkPath, leadsOverTheNewerProtocolAsWell) {
    QFile setting(words("/proc/sys/net/ipv6/conf/one/disable_ipv6"));
    ASSERT_TRUE(setting.open(QIODevice::WriteOnly) && setting.write("0") == 1);
    setting.close();
    ip({words("address add 2001:db8::1/64 dev one nodad"), words("route add default via 2001:db8::2 dev one")});
    EXPECT_TRUE(becomes(PathStatus::satisfied));
    ip("route delete default via 2001:db8::2 dev one");
    EXPECT_TRUE(becomes(PathStatus::unsatisfied));
}

TEST_F(NetlinkPath, isNoRouteToAPartOfTheWorldAndNoneThatRefuses) {
    ip({words("route add 198.51.100.0/24 via 192.0.2.2 dev one"), words("route add unreachable default metric 9")});
    EXPECT_TRUE(stays(PathStatus::unsatisfied));
    ip("route delete unreachable default");
}

TEST_F(NetlinkPath, isThereWhenOneOfSeveralHopsCanBeUsed) {
    ip({words("link add three type veth peer name twofold"), words("link set three up"), words("link set twofold up"),
        words("address add 203.0.113.1/24 dev three"),
        words("route add default nexthop via 192.0.2.2 dev one nexthop via 203.0.113.2 dev three")});
    ASSERT_TRUE(becomes(PathStatus::satisfied));
    ip("link set two down");
    EXPECT_TRUE(stays(PathStatus::satisfied));
}

QStringList manyPairs(int number) {
    QStringList lines;
    for (int i = 0; i < number; ++i)
        lines.append(words("link add many%1 group 7 type veth peer name twomany%1").arg(i));
    return lines;
}

/// Notices that the kernel could not hand to this process.
int lostNotices() {
    QFile file(words("/proc/net/netlink"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    int lost = 0;
    for (const QString &line : QString::fromLatin1(file.readAll()).split(u'\n').mid(1)) {
        const QStringList columns = line.simplified().split(u' ');
        if (columns.size() > 8 && columns[1] == u'0')
            lost += columns[8].toInt();
    }
    return lost;
}

TEST_F(NetlinkPath, aBurstOfHundredsOfInterfacesIsAFewLooks) {
    way.open();
    ASSERT_TRUE(becomes(PathStatus::satisfied));
    const int before = way.real.looks();
    QElapsedTimer timer;
    timer.start();
    QProcess process;
    process.start(words("ip"), {words("-batch"), words("-")});
    process.write((manyPairs(150) + QStringList{words("link delete group 7")}).join(u'\n').toUtf8() + '\n');
    process.closeWriteChannel();
    ASSERT_TRUE(eventually([&] { return process.state() == QProcess::NotRunning; }));
    letPass(300ms);
    EXPECT_LE(way.real.looks() - before, 2 + timer.elapsed() / 100);
    EXPECT_EQ(told, PathStatus::satisfied);
}

TEST_F(NetlinkPath, aChangeIsSeenThoughSoManyNoticesCameThatTheKernelLostSome) {
    way.open();
    ASSERT_TRUE(becomes(PathStatus::satisfied));
    ip(manyPairs(150)); // nobody reads meanwhile
    way.close();
    ip("link delete group 7");
    EXPECT_GT(lostNotices(), 0);
    EXPECT_TRUE(becomes(PathStatus::unsatisfied));
    way.open();
    EXPECT_TRUE(becomes(PathStatus::satisfied));
}

TEST_F(NetlinkPath, sleepsWhileNothingHappens) {
    const int before = way.real.looks();
    letPass(500ms);
    EXPECT_EQ(way.real.looks(), before);
}

class NetlinkCountersTest : public testing::Test {
public:
    Machine machine;
};

TEST_F(NetlinkCountersTest, hundredsOfInterfacesAreAllInTheListWhileOthersComeAndGo) {
    ip(manyPairs(100));
    const auto list = machine.counters().interfaces();
    ASSERT_TRUE(list);
    EXPECT_EQ(list->size(), 201U);
    QProcess process;
    process.start(words("ip"), {words("-batch"), words("-")});
    process.write(manyPairs(200).mid(100).join(u'\n').toUtf8() + "\nlink delete group 7\n");
    process.closeWriteChannel();
    int lists = 0;
    while (process.state() != QProcess::NotRunning) {
        if (const auto each = machine.counters().interfaces()) {
            ++lists;
            EXPECT_GE(each->size(), 1U);
            EXPECT_LE(each->size(), 401U);
        }
        QCoreApplication::processEvents();
    }
    EXPECT_GT(lists, 0);
    const auto after = machine.counters().interfaces();
    ASSERT_TRUE(after);
    EXPECT_EQ(after->size(), 1U);
}

TEST_F(NetlinkCountersTest, anInterfaceWithoutAnAddressOfItsLayerIsInTheList) {
    ip("tuntap add dev one mode tun");
    const auto list = machine.counters().interfaces();
    ASSERT_TRUE(list);
    EXPECT_EQ(list->size(), 2U);
    EXPECT_TRUE(list->back().isLinkLayer);
    EXPECT_TRUE(list->back().data);
}

// The whole meter, over a pair of interfaces and in real time.
TEST_F(NetlinkCountersTest, theMeterShowsWhatGoesThroughInASecond) {
    machine.addPair("one", "two");
    machine.setUp("one", true);
    machine.setUp("two", true);
    machine.setUp("lo", true);
    QtTime time;
    NetlinkPathMonitor path;
    NetworkMonitor monitor({time, machine.counters(), path});
    bool wasSent = false;
    QObject::connect(&monitor, &NetworkMonitor::published, &monitor, [&] {
        if (monitor.downloadSpeed() == words("   0 B") && !std::exchange(wasSent, true))
            for (int i = 0; i < 3; ++i)
                machine.send("one", 1024); // what one sends and what two receives count, each in its direction
    });
    EXPECT_TRUE(eventually([&] { return monitor.downloadSpeed() == words("   3KB"); }, 5s));
    EXPECT_EQ(monitor.uploadSpeed(), words("   3KB"));
    EXPECT_FALSE(monitor.isConnected());
    machine.setUp("lo", false);
}

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Netlink, InterfaceCountersContract, Machine);
INSTANTIATE_TYPED_TEST_SUITE_P(Netlink, PathMonitorContract, WayOut);

} // namespace tavrine::test
