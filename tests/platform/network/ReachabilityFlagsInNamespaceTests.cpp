// SPDX-License-Identifier: Apache-2.0
// The flags of addresses as the running kernel has them, in networks that each case builds for itself.

#include "tests/platform/network/ForbiddenSockets.h"
#include "tests/platform/network/Namespace.h"
#include "tests/platform/network/WatchedReachability.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/if.h>
#include <linux/if_tun.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <map>
#include <optional>
#include <string>

namespace vorlan {
namespace {

using namespace tests;

constexpr ReachabilityFlags transient = ReachabilityFlags::transientConnection;

/// What stands for the network in general, beside the addresses that cases name.
const std::string general = "0.0.0.0";

/// Destinations and their flags.
using Expectations = std::map<std::string, ReachabilityFlags>;

/// The network in general and some addresses, each watched by an object of its own.
///
/// Threads: one thread at a time.
class Destinations {
public:
    Destinations() { watch(general); }

    /// Runs ip(8), then waits until each destination is as expected, by its callouts and by asking, also by asking an
    /// object that was not there before.
    void expect(const std::string& lines, const Expectations& expected) {
        ip(lines);
        for (const auto& [address, flags] : expected) {
            auto& watched = watch(address);
            EXPECT_TRUE(watched.becomes(flags))
                << address << " should be " << ::testing::PrintToString(flags) << " after:\n"
                << lines << "\nit was last " << ::testing::PrintToString(watched.last()) << " and is now "
                << ::testing::PrintToString(flagsOf(watched.target()));
            EXPECT_EQ(flagsOf(addressTarget(address)), flags) << address << " after:\n" << lines;
        }
    }

private:
    WatchedReachability& watch(const std::string& address) {
        const auto found = watched_.find(address);
        if (found != watched_.end()) return found->second;
        return watched_.try_emplace(address, addressTarget(address)).first->second;
    }

    std::map<std::string, WatchedReachability> watched_;
};

/// A cable with both ends in this namespace. The far one is down, so that nothing can be sent yet.
const std::string cable = "link add veth0 type veth peer name vpeer\n"
                          "addr add 10.9.0.1/24 dev veth0\n"
                          "link set veth0 up\n"
                          "route add default via 10.9.0.2";

/// Every case runs as root and as an ordinary user.
class ReachabilityFlagsInNamespace : public ::testing::TestWithParam<Privilege> {};

INSTANTIATE_TEST_SUITE_P(, ReachabilityFlagsInNamespace,
                         ::testing::Values(Privilege::root, Privilege::unprivileged),
                         ::testing::PrintToStringParamName());

TEST_P(ReachabilityFlagsInNamespace, LoopbackIsThisMachineAndNotTheNetwork) {
    inOwnNamespace(GetParam(), [] {
        Destinations destinations;
        destinations.expect("", {{general, nothing}, {"::", nothing}, {"8.8.8.8", nothing}});
        destinations.expect("link set lo up", {{general, nothing},
                                               {"::", nothing},
                                               {"127.0.0.1", local},
                                               {"127.0.0.53", local},
                                               {"::1", local},
                                               {"8.8.8.8", nothing},
                                               {"2001:4860:4860::8888", nothing}});
    });
}

TEST_P(ReachabilityFlagsInNamespace, CarrierAndRoutesAreFollowed) {
    inOwnNamespace(GetParam(), [] {
        Destinations destinations;
        destinations.expect(
            "link set lo up\n" + cable,
            {{general, nothing}, {"8.8.8.8", nothing}, {"10.9.0.77", nothing}, {"10.9.0.1", local}});
        const Expectations online{
            {general, routed}, {"8.8.8.8", routed}, {"10.9.0.77", direct}, {"10.9.0.1", local}};
        const Expectations attached{
            {general, nothing}, {"8.8.8.8", nothing}, {"10.9.0.77", direct}, {"10.9.0.1", local}};
        const Expectations unplugged{{general, nothing}, {"8.8.8.8", nothing}, {"10.9.0.77", nothing}};
        destinations.expect("link set vpeer up", online);
        destinations.expect("route del default", attached);
        destinations.expect("route add unreachable default", attached);
        destinations.expect("route del unreachable default\nroute add default via 10.9.0.2", online);
        destinations.expect("link set vpeer down", unplugged);
        destinations.expect("link set vpeer up", online);
        destinations.expect("link set veth0 down", unplugged);
        destinations.expect("link set veth0 up",
                            attached); // the kernel does not bring the default route back
        destinations.expect("route add default via 10.9.0.2", online);
        destinations.expect("link del veth0",
                            {{general, nothing}, {"10.9.0.77", nothing}, {"10.9.0.1", nothing}});
    });
}

TEST_P(ReachabilityFlagsInNamespace, NetworksThatRoutesRefuseAreNotReachable) {
    inOwnNamespace(GetParam(), [] {
        Destinations destinations;
        destinations.expect("link set lo up\n" + cable + "\nlink set vpeer up",
                            {{general, routed}, {"10.51.0.1", routed}});
        destinations.expect("route add blackhole 10.51.0.0/16\nroute add prohibit 10.52.0.0/16\n"
                            "route add throw 10.53.0.0/16\nroute add unreachable 10.54.0.0/16",
                            {{general, routed},
                             {"10.51.0.1", nothing},
                             {"10.52.0.1", nothing},
                             {"10.53.0.1", nothing},
                             {"10.54.0.1", nothing},
                             {"10.55.0.1", routed}});
        destinations.expect("rule add pref 100 prohibit", {{general, nothing}, {"10.55.0.1", nothing}});
        destinations.expect("rule del pref 100", {{general, routed}, {"10.55.0.1", routed}});
    });
}

TEST_P(ReachabilityFlagsInNamespace, NextHopThatIsDeletedTakesItsRoutesAlong) {
    inOwnNamespace(GetParam(), [] {
        Destinations destinations;
        // Without link-local addresses the kernel is silent but for what the case does: each message is needed.
        ip("link add veth0 type veth peer name vpeer\nlink set veth0 addrgenmode none\n"
           "link set vpeer addrgenmode none");
        destinations.expect("link set lo up\naddr add 10.9.0.1/24 dev veth0\nlink set veth0 up\n"
                            "link set vpeer up\nroute add default via 10.9.0.2",
                            {{general, routed}});
        destinations.expect("nexthop add id 1 via 10.9.0.2 dev veth0\nroute replace default nhid 1",
                            {{general, routed}, {"8.8.8.8", routed}});
        destinations.expect("nexthop del id 1",
                            {{general, nothing}, {"8.8.8.8", nothing}, {"10.9.0.77", direct}});
    });
}

TEST_P(ReachabilityFlagsInNamespace, SourcesThatNobodyCanAnswerDoNotCount) {
    inOwnNamespace(GetParam(), [] {
        Destinations destinations;
        destinations.expect("link set lo up\n" + cable + "\nlink set vpeer up", {{general, routed}});
        destinations.expect("addr flush dev veth0\nroute add default dev veth0",
                            {{general, nothing}, {"8.8.8.8", nothing}});
        // An address of another link is no source either.
        destinations.expect(
            "link add docker0 type bridge\naddr add 172.17.0.1/16 dev docker0\nlink set docker0 up",
            {{general, nothing}, {"8.8.8.8", nothing}, {"172.17.0.1", local}});
        destinations.expect("addr add 169.254.7.7/16 dev veth0 scope link",
                            {{general, nothing}, {"169.254.9.9", direct}, {"169.254.7.7", local}});
    });
}

TEST_P(ReachabilityFlagsInNamespace, NetworkOfIPv6IsTheNetwork) {
    inOwnNamespace(GetParam(), [] {
        Destinations destinations;
        const std::string link =
            "link add veth0 type veth peer name vpeer\nlink set veth0 up\nlink set vpeer up\n";
        destinations.expect(
            "link set lo up\n" + link + "-6 route add default via fe80::2 dev veth0",
            {{general, nothing}, {"::", nothing}, {"2001:db8::1", nothing}}); // link-local only
        destinations.expect("addr add fd00:9::1/64 dev veth0",
                            {{general, routed}, // once nobody else turned out to have the address
                             {"::", routed},
                             {"2001:db8::1", routed},
                             {"fd00:9::77", direct},
                             {"fd00:9::1", local},
                             {"8.8.8.8", nothing}});
        destinations.expect("addr del fd00:9::1/64 dev veth0",
                            {{general, nothing}, {"::", nothing}, {"fd00:9::77", nothing}});
    });
}

TEST_P(ReachabilityFlagsInNamespace, BridgeOfContainersIsNotTheNetwork) {
    inOwnNamespace(GetParam(), [] {
        Destinations destinations;
        destinations.expect(
            "link set lo up\nlink add docker0 type bridge\naddr add 172.17.0.1/16 dev docker0\n"
            "link set docker0 up\nlink add veth0 type veth peer name vpeer\n"
            "link set vpeer master docker0\nlink set vpeer up\nlink set veth0 up",
            {{general, nothing}, {"8.8.8.8", nothing}, {"172.17.0.5", direct}, {"172.17.0.1", local}});
    });
}

TEST_P(ReachabilityFlagsInNamespace, BridgeIsTheWayOut) {
    inOwnNamespace(GetParam(), [] {
        Destinations destinations;
        destinations.expect("link set lo up\n" + cable + "\nlink set vpeer up", {{general, routed}});
        destinations.expect("addr flush dev veth0\nlink add br0 type bridge\nlink set veth0 master br0\n"
                            "link set br0 up\naddr add 10.9.0.1/24 dev br0\nroute add default via 10.9.0.2",
                            {{general, routed}, {"10.9.0.77", direct}});
        destinations.expect("link del br0", {{general, nothing}, {"10.9.0.77", nothing}});
    });
}

TEST_P(ReachabilityFlagsInNamespace, DormantLinkIsNotReachable) {
    inOwnNamespace(GetParam(), [] {
        Destinations destinations;
        destinations.expect("link set lo up\n" + cable + "\nlink set vpeer up", {{general, routed}});
        destinations.expect("link set veth0 mode dormant\nlink set veth0 down\nlink set veth0 state dormant\n"
                            "link set veth0 up\nroute add default via 10.9.0.2",
                            {{general, nothing}, {"10.9.0.77", nothing}});
        destinations.expect("link set veth0 state up", {{general, routed}, {"10.9.0.77", direct}});
    });
}

TEST_P(ReachabilityFlagsInNamespace, FlapsEndInTheRightFlags) {
    inOwnNamespace(GetParam(), [] {
        Destinations destinations;
        destinations.expect("link set lo up\n" + cable + "\nlink set vpeer up", {{general, routed}});
        std::string flaps;
        for (int flap = 0; flap < 300; ++flap)
            flaps += "link set veth0 down\nlink set veth0 up\nroute add default via 10.9.0.2\n";
        ipBatch(flaps);
        destinations.expect("", {{general, routed}, {"10.9.0.77", direct}});
        ipBatch(flaps + "link set veth0 down\n");
        destinations.expect("", {{general, nothing}, {"10.9.0.77", nothing}});
    });
}

TEST_P(ReachabilityFlagsInNamespace, FlagsThatCannotBeFoundAreAFailureAndNotOffline) {
    inOwnNamespace(GetParam(), [] {
        ip("link set lo up");
        EXPECT_EQ(flagsOf(addressTarget("127.0.0.1")), local);
        if (!forbidSockets(AF_NETLINK)) GTEST_SKIP() << "this machine has no system call filters";
        for (const auto& target : {addressTarget("127.0.0.1"), generalTarget()}) {
            EXPECT_EQ(flagsOf(target), std::nullopt);
            EXPECT_EQ(SCError(), kSCStatusFailed);
        }
    });
}

// Only root may make a tunnel device.
TEST(ReachabilityFlagsInRootsNamespace, TunnelIsTransient) {
    if (access("/dev/net/tun", R_OK | W_OK) != 0) GTEST_SKIP() << "/dev/net/tun cannot be opened here";
    inOwnNamespace(Privilege::root, [] {
        Destinations destinations;
        destinations.expect("link set lo up\n" + cable + "\nlink set vpeer up",
                            {{general, routed}, {"10.8.0.1", routed}});
        const int device = open("/dev/net/tun", O_RDWR | O_CLOEXEC);
        ifreq request{};
        request.ifr_flags = IFF_TUN | IFF_NO_PI;
        std::strncpy(request.ifr_name, "tun0", sizeof(request.ifr_name) - 1);
        ASSERT_EQ(ioctl(device, TUNSETIFF, &request), 0);
        destinations.expect("addr add 10.8.0.2 peer 10.8.0.1 dev tun0\nlink set tun0 up",
                            {{general, routed}, {"10.8.0.1", direct | transient}});
        destinations.expect(
            "route add 0.0.0.0/1 dev tun0\nroute add 128.0.0.0/1 dev tun0",
            {{general, routed | transient}, {"8.8.8.8", routed | transient}, {"10.9.0.77", direct}});
        close(device);
        destinations.expect("", {{general, routed}, {"8.8.8.8", routed}, {"10.8.0.1", routed}});
    });
}

} // namespace
} // namespace vorlan
