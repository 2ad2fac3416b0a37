// SPDX-License-Identifier: Apache-2.0
#include "platform/network/PathEvaluator.h"

#include "tests/platform/network/FakeSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vorlan::network {
namespace {

using namespace fake;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr auto satisfied = NWPath::Status::satisfied;
constexpr auto unsatisfied = NWPath::Status::unsatisfied;

/// A machine with one cable, eth0, that leads to the network over IPv4; cases change it.
class PathEvaluator : public ::testing::Test {
protected:
    PathEvaluator() { kernel.addCable(); }

    NWPath path() {
        const Evaluation evaluation = evaluatePath(kernel, sysfs);
        EXPECT_EQ(evaluation.progress.outcome, Outcome::settled);
        return evaluation.path;
    }

    Link& eth0() { return kernel.world.links.at(2); }

    FakeKernel kernel;
    FakeSysfs sysfs;
};

TEST_F(PathEvaluator, CableIsSatisfiedAndTellsAllItKnows) {
    const NWPath found = path();
    EXPECT_EQ(found.status(), satisfied);
    EXPECT_TRUE(found.usesInterfaceType(InterfaceType::wiredEthernet));
    EXPECT_FALSE(found.usesInterfaceType(InterfaceType::wifi));
    EXPECT_TRUE(found.supportsIPv4());
    EXPECT_FALSE(found.supportsIPv6());
    EXPECT_THAT(found.availableInterfaces(), ElementsAre("eth0"));
    EXPECT_THAT(found.gateways(), ElementsAre("10.0.0.1"));
    EXPECT_THAT(found.localAddresses(), ElementsAre("10.0.0.5"));
    EXPECT_THAT(found.reason(), HasSubstr("leaves by eth0 from 10.0.0.5 via 10.0.0.1"));
}

TEST_F(PathEvaluator, NoRouteIsUnsatisfied) {
    kernel.routes.clear();
    const NWPath found = path();
    EXPECT_EQ(found.status(), unsatisfied);
    EXPECT_FALSE(found.usesInterfaceType(InterfaceType::wiredEthernet));
    EXPECT_THAT(found.availableInterfaces(), ElementsAre());
    EXPECT_THAT(found.reason(), HasSubstr("no route"));
    EXPECT_EQ(found.reason().find('\n'), std::string::npos);
}

TEST_F(PathEvaluator, LinkWithoutCarrierIsUnsatisfied) {
    eth0().flags = IFF_UP;
    EXPECT_EQ(path().status(), unsatisfied);
    EXPECT_THAT(path().reason(), HasSubstr("no carrier"));
}

TEST_F(PathEvaluator, DormantLinkIsUnsatisfied) {
    eth0().flags = IFF_UP | IFF_LOWER_UP | IFF_DORMANT;
    EXPECT_EQ(path().status(), unsatisfied);
}

TEST_F(PathEvaluator, BetterRouteWithoutCarrierIsUnsatisfiedAsTheKernelKeepsUsingIt) {
    kernel.add(3, "wlan0");
    kernel.address(3, "10.1.0.5", 24);
    kernel.routes.push_back({.network = "0.0.0.0", .link = 3, .gateway = "10.1.0.1", .metric = 600});
    eth0().flags = IFF_UP;
    EXPECT_EQ(path().status(), unsatisfied);
}

TEST_F(PathEvaluator, KernelsVerdictsAreUnsatisfiedAndNamed) {
    for (const int error : {ENETUNREACH, EHOSTUNREACH, EINVAL, EACCES}) {
        kernel.routeError = error;
        EXPECT_EQ(path().status(), unsatisfied) << error;
    }
    EXPECT_THAT(path().reason(), HasSubstr("prohibits"));
}

TEST_F(PathEvaluator, KernelWithoutIPv6IsAskedAboutIPv4AllTheSame) {
    kernel.routes.push_back({.network = "::", .error = EOPNOTSUPP});
    EXPECT_EQ(path().status(), satisfied);
    EXPECT_FALSE(path().supportsIPv6());
    EXPECT_THAT(path().reason(), HasSubstr("no IPv6"));
}

TEST_F(PathEvaluator, RouteThatDropsIsUnsatisfied) {
    kernel.routes = {{.network = "0.0.0.0", .link = 2, .type = RTN_BLACKHOLE}};
    EXPECT_EQ(path().status(), unsatisfied);
}

TEST_F(PathEvaluator, AnswerThatThisIsTheMachineItselfIsNoWayOut) {
    kernel.routes = {{.network = "0.0.0.0", .link = 2, .type = RTN_LOCAL}};
    EXPECT_EQ(path().status(), unsatisfied);
}

TEST_F(PathEvaluator, KernelThatCannotBeAskedIsNoAnswer) {
    kernel.routeError = EPERM;
    EXPECT_EQ(evaluatePath(kernel, sysfs).progress.outcome, Outcome::failed);
    EXPECT_EQ(evaluatePath(kernel, sysfs).progress.error, EPERM);
    kernel.routeError = 0;
    kernel.snapshotError = ETIMEDOUT;
    EXPECT_EQ(evaluatePath(kernel, sysfs).progress.outcome, Outcome::failed);
}

TEST_F(PathEvaluator, TablesThatKeepChangingAreUnsettled) {
    kernel.snapshotError = EAGAIN;
    EXPECT_EQ(evaluatePath(kernel, sysfs).progress.outcome, Outcome::unsettled);
}

TEST_F(PathEvaluator, LinkThatAppearsAfterTheSnapshotIsFoundInTheNext) {
    const Link appearing = eth0();
    kernel.world.links.erase(2);
    kernel.onSnapshot = [&] { kernel.world.links[2] = appearing; };
    EXPECT_EQ(path().status(), satisfied);
    EXPECT_EQ(kernel.snapshots, 2);
}

TEST_F(PathEvaluator, LinkThatNeverAppearsIsUnsettled) {
    kernel.world.links.erase(2);
    EXPECT_EQ(evaluatePath(kernel, sysfs).progress.outcome, Outcome::unsettled);
}

// A default route over a link without an address: the kernel borrows one from the container bridge.
TEST_F(PathEvaluator, BorrowedSourceIsUnsatisfied) {
    kernel.world.addresses.pop_back();
    kernel.add(5, "docker0", "bridge");
    kernel.address(5, "172.17.0.1", 16);
    kernel.routes = {{.network = "0.0.0.0", .link = 2, .gateway = "10.0.0.1", .source = "172.17.0.1"}};
    EXPECT_EQ(path().status(), unsatisfied);
    EXPECT_THAT(path().reason(), HasSubstr("172.17.0.1"));
}

TEST_F(PathEvaluator, UnusableSourcesAreUnsatisfied) {
    for (const auto* source : {"0.0.0.0", "127.0.0.1", "169.254.7.7"}) {
        kernel.address(2, source, 16);
        kernel.routes = {{.network = "0.0.0.0", .link = 2, .source = source}};
        EXPECT_EQ(path().status(), unsatisfied) << source;
    }
    for (const auto* source : {"::", "::1", "fe80::7"}) {
        kernel.address(2, source, 64);
        kernel.routes = {{.network = "::", .link = 2, .source = source}};
        EXPECT_EQ(path().status(), unsatisfied) << source;
    }
}

TEST_F(PathEvaluator, NoSourceIsUnsatisfied) {
    kernel.world.addresses.clear();
    EXPECT_EQ(path().status(), unsatisfied);
}

TEST_F(PathEvaluator, SourceOfLoopbackServesEveryLink) {
    kernel.address(1, "203.0.113.9", 32);
    kernel.routes = {{.network = "0.0.0.0", .link = 2, .gateway = "10.0.0.1", .source = "203.0.113.9"}};
    EXPECT_EQ(path().status(), satisfied);
}

TEST_F(PathEvaluator, SourceOfTheMasterServesItsPorts) {
    kernel.add(6, "vrf0", "vrf");
    eth0().master = 6;
    kernel.address(6, "203.0.113.9", 32);
    kernel.routes = {{.network = "0.0.0.0", .link = 2, .gateway = "10.0.0.1", .source = "203.0.113.9"}};
    EXPECT_EQ(path().status(), satisfied);
}

TEST_F(PathEvaluator, PointToPointLinkMayBorrowItsSource) {
    eth0().flags |= IFF_POINTOPOINT;
    kernel.routes = {{.network = "0.0.0.0", .link = 2, .source = "198.51.100.4"}};
    EXPECT_EQ(path().status(), satisfied);
}

TEST_F(PathEvaluator, IPv6AloneIsSatisfied) {
    kernel.address(2, "2001:db8::5", 64);
    kernel.routes = {{.network = "::", .link = 2, .gateway = "fe80::1"}};
    const NWPath found = path();
    EXPECT_EQ(found.status(), satisfied);
    EXPECT_TRUE(found.supportsIPv6());
    EXPECT_FALSE(found.supportsIPv4());
    EXPECT_THAT(found.gateways(), ElementsAre("fe80::1%eth0"));
}

TEST_F(PathEvaluator, DockerBridgeAloneIsUnsatisfied) {
    kernel.routes.clear();
    kernel.add(5, "docker0", "bridge");
    kernel.address(5, "172.17.0.1", 16);
    kernel.routes = {{.network = "172.17.0.0", .prefixLength = 16, .link = 5}};
    const NWPath found = path();
    EXPECT_EQ(found.status(), unsatisfied);
    EXPECT_THAT(found.availableInterfaces(), ElementsAre());
}

TEST_F(PathEvaluator, EqualStateGivesEqualPathsAndAChangedSourceDoesNot) {
    const NWPath before = path();
    EXPECT_EQ(before, path());
    kernel.world.addresses.back().local = ip("10.0.0.6");
    EXPECT_NE(before, path());
}

TEST_F(PathEvaluator, EveryHalfOfTheAddressSpacesIsAsked) {
    const auto probes = probeDestinations();
    ASSERT_EQ(probes.size(), 4U);
    EXPECT_TRUE(probes[0].isInside(ip("0.0.0.0"), 1));
    EXPECT_TRUE(probes[1].isInside(ip("128.0.0.0"), 1));
    EXPECT_TRUE(probes[2].isInside(ip("2000::"), 4));
    EXPECT_TRUE(probes[3].isInside(ip("3000::"), 4));
}

} // namespace
} // namespace vorlan::network
