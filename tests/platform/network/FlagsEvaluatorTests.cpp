// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/network/FlagsOnPaper.h"

#include <gtest/gtest.h>

#include <vector>

namespace vorlan::network {
namespace {

using namespace fake;

constexpr std::uint16_t rawIP = 519; // ARPHRD_RAWIP

class FlagsEvaluator : public FlagsOnPaper {};

TEST_F(FlagsEvaluator, WayThroughAGatewayIsReachable) {
    EXPECT_EQ(flagsTo("8.8.8.8"), "R");
}

TEST_F(FlagsEvaluator, GatewayOfTheOtherFamilyIsAGatewayToo) {
    kernel.routes.push_back({"10.50.0.0", 16, 2, "fe80::1"});
    EXPECT_EQ(flagsTo("10.50.0.1"), "R");
}

TEST_F(FlagsEvaluator, DestinationWithoutAGatewayIsDirect) {
    EXPECT_EQ(flagsTo("10.0.0.77"), "Rd");
}

TEST_F(FlagsEvaluator, KernelsVerdictsAreNoFlagsRatherThanFailures) {
    for (const int error : {ENETUNREACH, EHOSTUNREACH, EINVAL, EACCES}) {
        kernel.routeError = error;
        EXPECT_EQ(flagsTo("8.8.8.8"), "-") << error;
        EXPECT_EQ(flagsTo("0.0.0.0"), "-") << error;
    }
}

// As it does when the machine was started with ipv6.disable=1.
TEST_F(FlagsEvaluator, KernelWithoutIPv6LeavesIPv4AsItIs) {
    kernel.routes.push_back({.network = "::", .error = EOPNOTSUPP});
    EXPECT_EQ(flagsTo("2001:db8::1"), "-");
    EXPECT_EQ(flagsTo("8.8.8.8"), "R");
    EXPECT_EQ(flagsTo("0.0.0.0"), "R");
    EXPECT_EQ(flagsToAnyOf({"2001:db8::1", "10.0.0.77"}), "Rd");
    kernel.routes = {{.network = "0.0.0.0", .error = EOPNOTSUPP}};
    EXPECT_EQ(evaluate(to("8.8.8.8")).progress.error, EOPNOTSUPP) << "a sandbox that takes no questions";
}

TEST_F(FlagsEvaluator, VerdictOnOneDestinationLeavesTheOthersAlone) {
    kernel.routes.push_back({.network = "10.51.0.0", .prefixLength = 16, .error = EINVAL});
    EXPECT_EQ(flagsTo("10.51.0.1"), "-");
    EXPECT_EQ(flagsTo("8.8.8.8"), "R");
    EXPECT_EQ(flagsTo("0.0.0.0"), "R");
}

TEST_F(FlagsEvaluator, RouteThatDropsIsNoWay) {
    for (const int type : {RTN_BLACKHOLE, RTN_UNREACHABLE, RTN_PROHIBIT, RTN_THROW}) {
        kernel.routes = {{.network = "0.0.0.0", .link = 2, .type = static_cast<std::uint8_t>(type)}};
        EXPECT_EQ(flagsTo("8.8.8.8"), "-") << type;
    }
}

TEST_F(FlagsEvaluator, ManyReceiversOnTheMediumAreDirect) {
    for (const int type : {RTN_BROADCAST, RTN_MULTICAST, RTN_ANYCAST}) {
        kernel.routes = {{.network = "0.0.0.0", .link = 2, .type = static_cast<std::uint8_t>(type)}};
        EXPECT_EQ(flagsTo("224.0.0.251"), "Rd") << type;
    }
}

TEST_F(FlagsEvaluator, KernelThatCannotBeAskedIsNoAnswer) {
    for (const char* text : {"8.8.8.8", "0.0.0.0", "::"}) {
        kernel.routeError = EPERM;
        EXPECT_EQ(evaluate(to(text)).progress.outcome, Outcome::failed) << text;
        EXPECT_EQ(evaluate(to(text)).progress.error, EPERM) << text;
        kernel.routeError = 0;
        kernel.snapshotError = ETIMEDOUT;
        EXPECT_EQ(evaluate(to(text)).progress.outcome, Outcome::failed) << text;
        kernel.snapshotError = 0;
    }
}

TEST_F(FlagsEvaluator, AddressOfThisMachineIsLocalButNotDirect) {
    kernel.routes.push_back({.network = "10.0.0.5", .prefixLength = 32, .link = 1, .type = RTN_LOCAL});
    EXPECT_EQ(flagsTo("10.0.0.5"), "Rl");
    eth0().flags = 0; // packets do not leave, so the cable does not matter
    EXPECT_EQ(flagsTo("10.0.0.5"), "Rl");
}

TEST_F(FlagsEvaluator, WayOverTheLoopbackDeviceIsLocal) {
    kernel.routes.push_back({.network = "127.0.0.0", .prefixLength = 8, .link = 1});
    EXPECT_EQ(flagsTo("127.0.0.1"), "Rl");
}

TEST_F(FlagsEvaluator, LinkThatCannotPassDataIsNoWay) {
    const std::uint32_t lowerUp = IFF_LOWER_UP;
    const std::uint32_t dormant = IFF_DORMANT;
    for (const std::uint32_t flags :
         {std::uint32_t{0}, std::uint32_t{IFF_UP}, std::uint32_t{IFF_RUNNING}, IFF_UP | lowerUp | dormant}) {
        eth0().flags = flags;
        EXPECT_EQ(flagsTo("10.0.0.77"), "-") << flags;
        EXPECT_EQ(flagsTo("8.8.8.8"), "-") << flags;
        EXPECT_EQ(flagsTo("0.0.0.0"), "-") << flags;
    }
}

TEST_F(FlagsEvaluator, PeerOfAPointToPointLinkIsDirectAndWhatIsBehindItIsNot) {
    addTunnel("ppp");
    EXPECT_EQ(flagsTo("10.8.0.1"), "Rtd");
    EXPECT_EQ(flagsTo("10.9.3.4"), "Rt");
}

TEST_F(FlagsEvaluator, NetworkOfAPointToPointLinkIsDirect) {
    addTunnel("tun");
    kernel.world.addresses.back() = {7, ip("10.9.0.2"), ip("10.9.0.2"), 24};
    EXPECT_EQ(flagsTo("10.9.0.200"), "Rtd");
    EXPECT_EQ(flagsTo("10.9.1.1"), "Rt");
}

TEST_F(FlagsEvaluator, NetworkOfAnotherLinkIsNotThePeers) {
    addTunnel("tun");
    kernel.world.addresses.push_back({2, ip("10.9.0.5"), ip("10.9.0.0"), 16});
    EXPECT_EQ(flagsTo("10.9.3.4"), "Rt");
}

TEST_F(FlagsEvaluator, PeersPrefixOfTheOtherFamilyIsNotThePeers) {
    addTunnel("tun");
    kernel.world.addresses.push_back({7, ip("fd00::2"), ip("::"), 0});
    EXPECT_EQ(flagsTo("10.9.3.4"), "Rt");
}

TEST_F(FlagsEvaluator, TunnelsOfEveryKindAreTransient) {
    for (const auto* kind : {"tun", "wireguard", "ppp", "gre", "ipip", "sit", "vti", "xfrm", "ovpn"}) {
        kernel.add(7, "tunnel0", kind);
        kernel.address(7, "10.8.0.2", 24);
        kernel.routes = {{"0.0.0.0", 0, 7, "10.8.0.1"}, {"10.8.0.0", 24, 7}};
        EXPECT_EQ(flagsTo("8.8.8.8"), "Rt") << kind;
        EXPECT_EQ(flagsTo("10.8.0.9"), "Rtd") << kind; // a shared medium, as seen from here
        kernel.world.addresses.pop_back();
    }
}

TEST_F(FlagsEvaluator, ModemsAreTransient) {
    sysfs.devices["wwan0"] = {.wireless = false, .devtype = "wwan"};
    eth0().name = "wwan0";
    EXPECT_EQ(flagsTo("8.8.8.8"), "Rt");
    eth0() = {.index = 2, .name = "rmnet0", .flags = running, .hardware = rawIP};
    EXPECT_EQ(flagsTo("8.8.8.8"), "Rt");
    eth0() = {.index = 2, .name = "ppp0", .flags = running, .hardware = ARPHRD_PPP};
    EXPECT_EQ(flagsTo("8.8.8.8"), "Rt");
}

TEST_F(FlagsEvaluator, VLANIsTransientWhenWhatIsBeneathIsAModem) {
    sysfs.devices["wwan0"] = {.wireless = false, .devtype = "wwan"};
    kernel.add(3, "wwan0");
    eth0() = {
        .index = 2, .name = "v0", .flags = running, .hardware = ARPHRD_ETHER, .lower = 3, .kind = "vlan"};
    EXPECT_EQ(flagsTo("8.8.8.8"), "Rt");
    eth0().lowerIsElsewhere = true; // number 3 is another link there
    EXPECT_EQ(flagsTo("8.8.8.8"), "R");
    eth0().lowerIsElsewhere = false;
    sysfs.devices.clear();
    EXPECT_EQ(flagsTo("8.8.8.8"), "R");
}

TEST_F(FlagsEvaluator, RadioAndBridgeAreNotTransient) {
    sysfs.devices["eth0"] = {.wireless = true, .devtype = "wlan"};
    EXPECT_EQ(flagsTo("8.8.8.8"), "R");
    sysfs.devices.clear();
    eth0().kind = "bridge";
    EXPECT_EQ(flagsTo("8.8.8.8"), "R");
}

// A default route over a link without an address: the kernel borrows one from the container bridge.
TEST_F(FlagsEvaluator, SourceBorrowedFromAContainerBridgeIsNoWay) {
    kernel.world.addresses.pop_back();
    kernel.add(5, "docker0", "bridge");
    kernel.address(5, "172.17.0.1", 16);
    kernel.routes = {{.network = "0.0.0.0", .link = 2, .gateway = "10.0.0.1", .source = "172.17.0.1"}};
    EXPECT_EQ(flagsTo("8.8.8.8"), "-");
    EXPECT_EQ(flagsTo("0.0.0.0"), "-");
}

// While the link's own address is checked for duplicates, the kernel takes the loopback device's.
TEST_F(FlagsEvaluator, SourceOfTheLoopbackDeviceIsNoWay) {
    kernel.address(1, "::1", 128);
    kernel.routes = {{.network = "::", .link = 2, .gateway = "fe80::1", .source = "::1"}};
    EXPECT_EQ(flagsTo("2001:db8::1"), "-");
    EXPECT_EQ(flagsTo("::"), "-");
}

// A router was heard, but no address assigned: the kernel takes another link's link-local one.
TEST_F(FlagsEvaluator, LinkLocalSourceOfAnotherLinkIsNoWay) {
    kernel.add(3, "eth1");
    kernel.address(3, "fe80::3", 64);
    kernel.routes = {{.network = "::", .link = 2, .gateway = "fe80::1", .source = "fe80::3"}};
    EXPECT_EQ(flagsTo("2001:db8::1"), "-");
    EXPECT_EQ(flagsTo("::"), "-");
    EXPECT_EQ(flagsTo("fe80::9%2"), "-"); // not even to a neighbour
}

// Without a DHCP server there is a link-local address with a default route.
TEST_F(FlagsEvaluator, LinkLocalSourceLeadsToNeighboursOnly) {
    kernel.world.addresses.pop_back();
    kernel.address(2, "169.254.7.7", 16);
    kernel.routes = {{"0.0.0.0", 0, 2}};
    EXPECT_EQ(flagsTo("8.8.8.8"), "-");
    EXPECT_EQ(flagsTo("0.0.0.0"), "-");
    EXPECT_EQ(flagsTo("169.254.9.9"), "Rd");
    EXPECT_EQ(flagsTo("224.0.0.251"), "Rd");
}

TEST_F(FlagsEvaluator, NoSourceAtAllIsNoWay) {
    kernel.world.addresses.clear();
    EXPECT_EQ(flagsTo("8.8.8.8"), "-");
}

/// Two links with the same link-local network: only the second one has a carrier.
class FlagsEvaluatorWithScopes : public FlagsEvaluator {
protected:
    FlagsEvaluatorWithScopes() {
        eth0().flags = IFF_UP;
        kernel.add(3, "eth1");
        kernel.address(2, "fe80::2", 64);
        kernel.address(3, "fe80::3", 64);
        kernel.routes = {{.network = "fe80::", .prefixLength = 64, .link = 2, .metric = 1},
                         {.network = "fe80::", .prefixLength = 64, .link = 3, .metric = 2}};
    }
};

TEST_F(FlagsEvaluatorWithScopes, LinkIsChosenByNumber) {
    EXPECT_EQ(flagsTo("fe80::9%2"), "-");
    EXPECT_EQ(flagsTo("fe80::9%3"), "Rd");
}

TEST_F(FlagsEvaluatorWithScopes, LinkIsChosenByName) {
    EXPECT_EQ(flagsTo("fe80::9%eth0"), "-");
    EXPECT_EQ(flagsTo("fe80::9%eth1"), "Rd");
}

TEST_F(FlagsEvaluatorWithScopes, WithoutALinkTheKernelChooses) {
    EXPECT_EQ(flagsTo("fe80::9"), "-");
    kernel.routes.front().metric = 3;
    EXPECT_EQ(flagsTo("fe80::9"), "Rd");
}

TEST_F(FlagsEvaluatorWithScopes, LinkThatIsNotThereLeadsNowhere) {
    EXPECT_EQ(flagsTo("fe80::9%4"), "-");
    EXPECT_EQ(flagsTo("fe80::9%usb0"), "-");
}

TEST_F(FlagsEvaluatorWithScopes, NameIsLookedUpAnewEachTime) {
    const auto destination = to("fe80::9%usb0");
    EXPECT_EQ(lettersOf(evaluate(destination)), "-");
    kernel.add(9, "usb0");
    kernel.address(9, "fe80::9:5", 64);
    kernel.routes.push_back({.network = "fe80::", .prefixLength = 64, .link = 9});
    EXPECT_EQ(lettersOf(evaluate(destination)), "Rd");
    EXPECT_EQ(flagsTo("fe80::9%usb"), "-"); // half a name is none
    kernel.world.links.at(9).name = "usb1";
    EXPECT_EQ(lettersOf(evaluate(destination)), "-");
}

TEST_F(FlagsEvaluator, IPv4InIPv6sClothesIsIPv4) {
    EXPECT_EQ(flagsTo("::ffff:10.0.0.77"), "Rd");
    EXPECT_EQ(flagsTo("::ffff:0.0.0.0"), "R");
}

TEST_F(FlagsEvaluator, LinkThatAppearsAfterTheSnapshotIsFoundInTheNext) {
    const Link appearing = eth0();
    kernel.world.links.erase(2);
    kernel.onSnapshot = [&] { kernel.world.links[2] = appearing; };
    EXPECT_EQ(flagsTo("10.0.0.77"), "Rd");
    EXPECT_EQ(kernel.snapshots, 2);
}

TEST_F(FlagsEvaluator, LinkThatNeverAppearsIsUnsettled) {
    kernel.world.links.erase(2);
    const auto evaluation = evaluate(to("10.0.0.77"));
    EXPECT_EQ(evaluation.progress.outcome, Outcome::unsettled);
    EXPECT_EQ(letters(evaluation.flags), "-");
}

TEST_F(FlagsEvaluator, TablesThatKeepChangingAreUnsettled) {
    kernel.snapshotError = EAGAIN;
    EXPECT_EQ(evaluate(to("10.0.0.77")).progress.outcome, Outcome::unsettled);
    EXPECT_EQ(evaluate(to("0.0.0.0")).progress.outcome, Outcome::unsettled);
}

TEST_F(FlagsEvaluator, FirstReachableOfSeveralAddressesCounts) {
    EXPECT_EQ(flagsToAnyOf({"8.8.8.8", "10.0.0.77"}), "R");
    EXPECT_EQ(flagsToAnyOf({"10.0.0.77", "8.8.8.8"}), "Rd");
    EXPECT_EQ(flagsToAnyOf({"2001:db8::1", "fd00::1", "10.0.0.77", "8.8.8.8"}), "Rd");
}

TEST_F(FlagsEvaluator, NoReachableAddressIsNoFlags) {
    EXPECT_EQ(flagsToAnyOf({"2001:db8::1", "fd00::1"}), "-");
    EXPECT_EQ(flagsToAnyOf({}), "-");
}

TEST_F(FlagsEvaluator, AddressThatIsNotKnownYetIsNotPassedOver) {
    kernel.routes.push_back({.network = "2001:db8::", .prefixLength = 32, .link = 99});
    const std::vector addresses{to("2001:db8::1"), to("10.0.0.77")};
    EXPECT_EQ(evaluate(addresses).progress.outcome, Outcome::unsettled);
    kernel.routes.back() = {.network = "2001:db8::", .prefixLength = 32, .error = EIO};
    EXPECT_EQ(evaluate(addresses).progress.outcome, Outcome::failed);
    EXPECT_EQ(lettersOf(evaluate(std::vector{addresses[1], addresses[0]})), "Rd");
}

} // namespace
} // namespace vorlan::network
