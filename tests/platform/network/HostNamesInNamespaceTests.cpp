// SPDX-License-Identifier: Apache-2.0
// Hosts by name, with the system's look-up, a name server of the test's own and the running kernel.

#include "tests/platform/network/HostNames.h"
#include "tests/platform/network/Namespace.h"
#include "tests/platform/network/PrivateDNS.h"
#include "tests/platform/network/PrivateEtc.h"
#include "tests/platform/network/WatchedReachability.h"

#include <gtest/gtest.h>

#include <optional>

namespace vorlan {
namespace {

using namespace tests;

class HostNamesInNamespace : public ::testing::TestWithParam<Privilege> {};

INSTANTIATE_TEST_SUITE_P(, HostNamesInNamespace, ::testing::Values(Privilege::root, Privilege::unprivileged),
                         ::testing::PrintToStringParamName());

TEST_P(HostNamesInNamespace, NamesThatAreAddressesAreThoseAddresses) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        etc.rewrite("nsswitch.conf", "hosts:\n"); // nothing needs to be looked up
        connectBothFamilies();
        ip("addr add fe80::9/64 dev veth0 nodad");
        EXPECT_TRUE(WatchedReachability("10.9.0.77").becomes(direct));
        EXPECT_EQ(flagsOfName("10.9.0.77"), direct);
        EXPECT_EQ(flagsOfName("10.9.0.1"), local);
        EXPECT_EQ(flagsOfName("8.8.8.8"), routed);
        EXPECT_EQ(flagsOfName("127.0.0.1"), local);
        EXPECT_EQ(flagsOfName("::1"), local);
        EXPECT_EQ(flagsOfName("fd00:9::77"), direct);
        EXPECT_TRUE(WatchedReachability("fe80::9%veth0").becomes(local)); // a little after it was added
        EXPECT_EQ(flagsOfName("fe80::9%veth0"), local);
        EXPECT_EQ(flagsOfName("fe80::77%veth0"), direct);
        EXPECT_EQ(flagsOfName("fe80::77%lo"), nothing);
        EXPECT_EQ(flagsOfName("0.0.0.0"), routed); // the network in general
    });
}

TEST_P(HostNamesInNamespace, AddressAsNameFollowsTheNetwork) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        WatchedReachability watched("10.9.0.77");
        EXPECT_TRUE(watched.becomes(nothing));
        connectBothFamilies();
        EXPECT_TRUE(watched.becomes(direct)) << stateOf(watched);
        ip("link set vpeer down");
        EXPECT_TRUE(watched.becomes(nothing)) << stateOf(watched);
    });
}

TEST_P(HostNamesInNamespace, NameIsReachableWhenOneOfItsAddressesIs) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        const PrivateDNS dns(HostRecords{{"near.test", {"10.9.0.77"}},
                                         {"far.test", {"192.0.2.1"}},
                                         {"six.test", {"fd00:9::77"}},
                                         {"both.test", {"192.0.2.1", "2001:db8::1"}},
                                         {"here.test", {"10.9.0.1"}}});
        EXPECT_EQ(flagsOfName("near.test"), direct);
        EXPECT_EQ(flagsOfName("far.test"), routed);
        EXPECT_EQ(flagsOfName("far.test."), routed);
        EXPECT_EQ(flagsOfName("six.test"), direct);
        EXPECT_EQ(flagsOfName("both.test"), routed);
        EXPECT_EQ(flagsOfName("here.test"), local);
        ip("route del default"); // the other family still leads out
        EXPECT_EQ(flagsOfName("far.test"), nothing);
        EXPECT_EQ(flagsOfName("both.test"), routed);
        ip("-6 route del default");
        EXPECT_EQ(flagsOfName("both.test"), nothing);
        EXPECT_EQ(flagsOfName("near.test"), direct);
    });
}

TEST_P(HostNamesInNamespace, NameThatDoesNotExistHasNoFlags) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        const PrivateDNS dns(HostRecords{{"near.test", {"10.9.0.77"}}});
        EXPECT_EQ(flagsOfName("absent.test"), nothing);
        EXPECT_EQ(SCError(), kSCStatusOK);
        WatchedReachability watched("absent.test");
        EXPECT_TRUE(watched.becomes(nothing)) << stateOf(watched);
    });
}

TEST_P(HostNamesInNamespace, RoutesToTheHostAreFollowed) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        const PrivateDNS dns(HostRecords{{"far.test", {"192.0.2.1"}}});
        WatchedReachability watched("far.test");
        EXPECT_TRUE(watched.becomes(routed)) << stateOf(watched);
        ip("route add blackhole 192.0.2.0/24"); // the network in general stays
        EXPECT_TRUE(watched.becomes(nothing)) << stateOf(watched);
        ip("route del blackhole 192.0.2.0/24");
        EXPECT_TRUE(watched.becomes(routed)) << stateOf(watched);
        ip("route del default");
        EXPECT_TRUE(watched.becomes(nothing)) << stateOf(watched);
        ip("route add default via 10.9.0.2");
        EXPECT_TRUE(watched.becomes(routed)) << stateOf(watched);
    });
}

TEST_P(HostNamesInNamespace, NamesOfTheHostsFileNeedNoServer) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        etc.useHosts("10.9.0.79 box.test\n");
        EXPECT_EQ(flagsOfName("localhost"), local);
        EXPECT_EQ(flagsOfName("box.test"), direct);
        EXPECT_EQ(flagsOfName("other.test"), nothing); // nobody listens on the server's port
    });
}

TEST_P(HostNamesInNamespace, LocalhostIsThisMachine) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        ip("link set lo up");
        WatchedReachability watched("localhost");
        EXPECT_TRUE(watched.becomes(local)) << stateOf(watched);
    });
}

TEST_P(HostNamesInNamespace, NewAnswerCountsOnceTheWayOutIsAnother) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        std::optional<PrivateDNS> dns(std::in_place, HostRecords{{"host.test", {"10.9.0.77"}}});
        WatchedReachability watched("host.test");
        EXPECT_TRUE(watched.becomes(direct)) << stateOf(watched);
        dns.reset();
        dns.emplace(HostRecords{{"host.test", {"10.9.0.1"}}});
        ip("route replace default via 10.9.0.3"); // flags that tell of nothing, but another network
        EXPECT_TRUE(watched.becomes(local)) << stateOf(watched);
        dns.reset();
        dns.emplace(HostRecords{{"other.test", {"10.9.0.1"}}});
        ip("route replace default via 10.9.0.2");
        EXPECT_TRUE(watched.becomes(nothing)) << stateOf(watched);
    });
}

} // namespace
} // namespace vorlan
