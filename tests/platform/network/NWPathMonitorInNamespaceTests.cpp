// SPDX-License-Identifier: Apache-2.0
// The monitor against the running kernel, in networks that each case builds for itself.

#include <VorlanFoundation/Platform/NWPathMonitor.h>

#include "tests/platform/network/ForbiddenSockets.h"
#include "tests/platform/network/Namespace.h"
#include "tests/platform/network/WatchedNetwork.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/if.h>
#include <linux/if_tun.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <thread>

namespace vorlan {
namespace {

using namespace tests;

/// Builds networks.
class NamespaceTest : public ::testing::Test {
protected:
    static void expect(WatchedNetwork& network, const ExpectedPath& expected, const std::string& lines) {
        ip(lines);
        EXPECT_TRUE(network.becomes(expected))
            << "after:\n"
            << lines << "\nit is: " << network.monitor().currentPath().reason();
    }

    /// A cable with both ends in this namespace, and a default route over it.
    static void plugIn() {
        ip("link add veth0 type veth peer name vpeer");
        connect();
    }

    static void connect() {
        ip("link set lo up\n"
           "addr add 10.9.0.1/24 dev veth0\n"
           "link set veth0 up\n"
           "link set vpeer up\n"
           "route add default via 10.9.0.2");
    }
};

/// Every case runs as root and as an ordinary user.
class NWPathMonitorInNamespace : public NamespaceTest, public ::testing::WithParamInterface<Privilege> {};

INSTANTIATE_TEST_SUITE_P(, NWPathMonitorInNamespace,
                         ::testing::Values(Privilege::root, Privilege::unprivileged),
                         ::testing::PrintToStringParamName());

TEST_P(NWPathMonitorInNamespace, RoutesAndCarrierAreFollowed) {
    inOwnNamespace(GetParam(), [] {
        WatchedNetwork network;
        expect(network, offline, "link set lo up");
        expect(network, offline,
               "link add veth0 type veth peer name vpeer\n"
               "addr add 10.9.0.1/24 dev veth0\n"
               "link set veth0 up\n"
               "route add default via 10.9.0.2");
        expect(network, wiredV4, "link set vpeer up");
        expect(network, offline, "route del default");
        expect(network, offline, "route add unreachable default");
        expect(network, wiredV4, "route del unreachable default\nroute add default via 10.9.0.2");
        expect(network, offline, "link set vpeer down");
        expect(network, wiredV4, "link set vpeer up");
        expect(network, offline, "link set veth0 down");
        expect(network, offline, "link set veth0 up"); // the kernel does not bring the default route back
        expect(network, wiredV4, "route add default via 10.9.0.2");
    });
}

TEST_P(NWPathMonitorInNamespace, PolicyAndNextHopsAreFollowed) {
    inOwnNamespace(GetParam(), [] {
        // Without link-local addresses the kernel is silent but for what the case does: each message is needed.
        ip("link add veth0 type veth peer name vpeer\nlink set veth0 addrgenmode none\nlink set vpeer "
           "addrgenmode none");
        WatchedNetwork network;
        connect();
        expect(network, wiredV4,
               "route add blackhole 10.51.0.0/16\nroute add prohibit 10.52.0.0/16\nroute add throw "
               "10.53.0.0/16");
        expect(network, offline, "rule add pref 100 prohibit");
        expect(network, wiredV4, "rule del pref 100");
        expect(network, wiredV4, "nexthop add id 1 via 10.9.0.2 dev veth0\nroute replace default nhid 1");
        expect(network, offline, "nexthop del id 1"); // takes the route along without a message about it
        expect(network, wiredV4, "route add default via 10.9.0.2");
        expect(network, offline, "route replace blackhole default");
    });
}

TEST_P(NWPathMonitorInNamespace, SourcesThatNobodyCanAnswerAreOffline) {
    inOwnNamespace(GetParam(), [] {
        WatchedNetwork network;
        plugIn();
        expect(network, wiredV4, "");
        expect(network, offline, "addr flush dev veth0\nroute add default dev veth0");
        expect(network, offline,
               "link add docker0 type bridge\naddr add 172.17.0.1/16 dev docker0\nlink set docker0 up");
        expect(network, offline, "addr add 169.254.7.7/16 dev veth0 scope link");
        expect(network, offline, "addr flush dev veth0\nroute flush dev veth0");
        expect(network, wiredV4, "addr add 10.9.0.1/24 dev veth0\nroute add default via 10.9.0.2");
        expect(network, offline, "route del default"); // the container bridge alone
    });
}

TEST_P(NWPathMonitorInNamespace, IPv6AloneIsEnough) {
    inOwnNamespace(GetParam(), [] {
        WatchedNetwork network;
        plugIn();
        expect(network, wiredV4, "");
        // Until the kernel has made sure that nobody else has the address, it must not be used.
        expect(network, wiredV6,
               "addr flush dev veth0\naddr add fd00:9::1/64 dev veth0\n-6 route add default via fd00:9::2");
        expect(network, offline, "-6 addr del fd00:9::1/64 dev veth0");
        expect(network, wiredV4, "addr add 10.9.0.1/24 dev veth0\nroute add default via 10.9.0.2");
    });
}

TEST_P(NWPathMonitorInNamespace, LinkThatWaitsToBeLetInIsOffline) {
    inOwnNamespace(GetParam(), [] {
        WatchedNetwork network;
        plugIn();
        expect(network, wiredV4, "");
        expect(network, offline,
               "link set veth0 mode dormant\nlink set veth0 down\nlink set veth0 state dormant\nlink set "
               "veth0 up\n"
               "route add default via 10.9.0.2");
        expect(network, wiredV4, "link set veth0 state up");
    });
}

TEST_P(NWPathMonitorInNamespace, BridgeIsTheWayOut) {
    inOwnNamespace(GetParam(), [] {
        WatchedNetwork network;
        plugIn();
        expect(network, wiredV4, "");
        expect(network, wiredV4,
               "addr flush dev veth0\nlink add br0 type bridge\nlink set veth0 master br0\nlink set br0 up\n"
               "addr add 10.9.0.1/24 dev br0\nroute add default via 10.9.0.2");
        EXPECT_THAT(network.monitor().currentPath().availableInterfaces(), ::testing::ElementsAre("br0"));
        expect(network, offline, "link del br0");
    });
}

TEST_P(NWPathMonitorInNamespace, ThousandFlapsEndInTheRightState) {
    inOwnNamespace(GetParam(), [] {
        WatchedNetwork network;
        plugIn();
        ASSERT_TRUE(network.becomes(wiredV4));
        std::string flaps;
        for (int flap = 0; flap < 1000; ++flap)
            flaps += "link set veth0 down\nlink set veth0 up\nroute add default via 10.9.0.2\n";
        ipBatch(flaps);
        EXPECT_TRUE(network.becomes(wiredV4));
        ipBatch(flaps + "link set veth0 down\n");
        EXPECT_TRUE(network.becomes(offline));
    });
}

TEST_P(NWPathMonitorInNamespace, NothingComesAfterACancelOnTheQueue) {
    inOwnNamespace(GetParam(), [] {
        plugIn();
        std::string flaps;
        for (int flap = 0; flap < 300; ++flap) flaps += "route del default\nroute add default via 10.9.0.2\n";
        std::atomic<bool> flapping = true;
        std::thread flapper([&] {
            ipBatch(flaps);
            flapping = false;
        });
        std::atomic<int> late = 0;
        int rounds = 0;
        for (; flapping; ++rounds) {
            const Queue queue("client");
            NWPathMonitor monitor;
            bool cancelled = false; // used on the queue only
            monitor.setPathUpdateHandler([&](const NWPath&) { late += cancelled ? 1 : 0; });
            monitor.start(queue);
            monitor.currentPath();
            queue.sync([&] {
                monitor.cancel();
                cancelled = true;
            });
            queue.sync([] {});
        }
        flapper.join();
        EXPECT_GT(rounds, 0);
        EXPECT_EQ(late, 0);
    });
}

TEST_P(NWPathMonitorInNamespace, WithoutNetlinkThePathIsFoundByConnecting) {
    inOwnNamespace(GetParam(), [] {
        plugIn();
        if (!forbidSockets(AF_NETLINK)) GTEST_SKIP() << "this machine has no system call filters";
        WatchedNetwork network;
        EXPECT_TRUE(network.becomes({NWPath::Status::satisfied, true, false, {InterfaceType::other}}));
        const NWPath path = network.monitor().currentPath();
        EXPECT_THAT(path.reason(),
                    ::testing::HasSubstr("netlink is not available (Operation not permitted)"));
        EXPECT_THAT(path.localAddresses(), ::testing::ElementsAre("10.9.0.1"));
    });
}

TEST_P(NWPathMonitorInNamespace, WithoutNetlinkAndWithoutRoutesThePathIsOffline) {
    inOwnNamespace(GetParam(), [] {
        if (!forbidSockets(AF_NETLINK)) GTEST_SKIP() << "this machine has no system call filters";
        WatchedNetwork network;
        EXPECT_TRUE(network.becomes(offline));
    });
}

TEST_P(NWPathMonitorInNamespace, WithoutAnySocketsThePathIsNotOffline) {
    inOwnNamespace(GetParam(), [] {
        const bool forbidden = forbidSockets(AF_NETLINK) && forbidSockets(AF_INET) && forbidSockets(AF_INET6);
        if (!forbidden) GTEST_SKIP() << "this machine has no system call filters";
        WatchedNetwork network;
        EXPECT_TRUE(network.becomes({NWPath::Status::satisfied, true, true, {InterfaceType::other}}));
    });
}

/// A tunnel device that exists as long as this does.
///
/// Threads: one thread at a time.
class Tunnel {
public:
    Tunnel() : device_(open("/dev/net/tun", O_RDWR | O_CLOEXEC)) {
        ifreq request{};
        request.ifr_flags = IFF_TUN | IFF_NO_PI;
        std::strncpy(request.ifr_name, "tun0", sizeof(request.ifr_name) - 1);
        attached_ = device_ >= 0 && ioctl(device_, TUNSETIFF, &request) == 0;
    }
    Tunnel(const Tunnel&) = delete;
    Tunnel& operator=(const Tunnel&) = delete;
    ~Tunnel() {
        if (device_ >= 0) close(device_);
    }

    bool isAttached() const { return attached_; }

private:
    int device_;
    bool attached_ = false;
};

// Only root may make a tunnel device.
class NWPathMonitorInRootsNamespace : public NamespaceTest {};

TEST_F(NWPathMonitorInRootsNamespace, TunnelOverACableReportsBoth) {
    if (access("/dev/net/tun", R_OK | W_OK) != 0) GTEST_SKIP() << "/dev/net/tun cannot be opened here";
    inOwnNamespace(Privilege::root, [] {
        WatchedNetwork network;
        plugIn();
        const ExpectedPath both{
            NWPath::Status::satisfied, true, false, {InterfaceType::wiredEthernet, InterfaceType::other}};
        {
            const Tunnel tunnel;
            ASSERT_TRUE(tunnel.isAttached());
            expect(network, both,
                   "addr add 10.8.0.2 peer 10.8.0.1 dev tun0\nlink set tun0 up\n"
                   "route add 0.0.0.0/1 dev tun0\nroute add 128.0.0.0/1 dev tun0");
            EXPECT_THAT(network.monitor().currentPath().availableInterfaces(),
                        ::testing::ElementsAre("tun0", "veth0"));
        }
        EXPECT_TRUE(network.becomes(wiredV4));
    });
}

} // namespace
} // namespace vorlan
