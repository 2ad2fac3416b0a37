// SPDX-License-Identifier: Apache-2.0
#include "platform/network/Snapshot.h"

#include "tests/platform/network/NetlinkBytes.h"

#include <gtest/gtest.h>
#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <sys/socket.h>

#include <random>

namespace vorlan::network {
namespace {

using namespace fake;

constexpr std::uint32_t addressV4 = 0x0100000a; // 10.0.0.1 as it lies in memory

Bytes linkHeader(unsigned char family, int index, unsigned flags) {
    ifinfomsg header{};
    header.ifi_family = family;
    header.ifi_index = index;
    header.ifi_flags = flags;
    header.ifi_type = 1;
    return bytesOf(header);
}

Bytes addressHeader(unsigned char family, unsigned char prefixLength, unsigned index = 3) {
    ifaddrmsg header{};
    header.ifa_family = family;
    header.ifa_prefixlen = prefixLength;
    header.ifa_index = index;
    return bytesOf(header);
}

Bytes routeHeader(unsigned char family, unsigned char type = RTN_UNICAST) {
    rtmsg header{};
    header.rtm_family = family;
    header.rtm_dst_len = 24;
    header.rtm_type = type;
    return bytesOf(header);
}

Bytes wholeLink() {
    const Bytes info = attribute(IFLA_INFO_KIND, bytesOf(std::string("vlan\0", 5)));
    return linkHeader(AF_UNSPEC, 5, IFF_UP | IFF_RUNNING) +
           attribute(IFLA_IFNAME, bytesOf(std::string("eth0.1\0", 7))) +
           attribute(IFLA_MASTER, bytesOf(std::uint32_t{8})) +
           attribute(IFLA_LINK, bytesOf(std::uint32_t{2})) + attribute(IFLA_LINKINFO | NLA_F_NESTED, info);
}

TEST(Snapshot, LinkIsDecoded) {
    const auto link = decodeLink(wholeLink()).value();
    EXPECT_EQ(link.index, 5U);
    EXPECT_EQ(link.name, "eth0.1");
    EXPECT_EQ(link.kind, "vlan");
    EXPECT_EQ(link.master, 8U);
    EXPECT_EQ(link.lower, 2U);
    EXPECT_FALSE(link.lowerIsElsewhere);
    EXPECT_TRUE(link.isRunning());
}

TEST(Snapshot, LowerLinkOfAnotherNamespaceIsMarked) {
    const Bytes payload = wholeLink() + attribute(IFLA_LINK_NETNSID, bytesOf(std::int32_t{0}));
    EXPECT_TRUE(decodeLink(payload).value().lowerIsElsewhere);
}

TEST(Snapshot, RunningNeedsBothFlags) {
    EXPECT_FALSE(decodeLink(linkHeader(AF_UNSPEC, 5, IFF_UP)).value().isRunning());
    EXPECT_FALSE(decodeLink(linkHeader(AF_UNSPEC, 5, IFF_RUNNING)).value().isRunning());
    EXPECT_FALSE(decodeLink(linkHeader(AF_UNSPEC, 5, IFF_UP | IFF_LOWER_UP)).value().isRunning());
}

TEST(Snapshot, BridgePortMessagesAreNoLinks) {
    EXPECT_FALSE(decodeLink(linkHeader(AF_BRIDGE, 5, IFF_UP)));
}

TEST(Snapshot, LinkWithoutIndexOrHeaderIsNone) {
    EXPECT_FALSE(decodeLink(linkHeader(AF_UNSPEC, 0, IFF_UP)));
    EXPECT_FALSE(decodeLink(linkHeader(AF_UNSPEC, -1, IFF_UP)));
    Bytes cut = linkHeader(AF_UNSPEC, 5, IFF_UP);
    cut.resize(cut.size() - 1);
    EXPECT_FALSE(decodeLink(cut));
    EXPECT_FALSE(decodeLink({}));
}

TEST(Snapshot, TruncatedNestHasNoKind) {
    const Bytes nest = attributeWithLength(200, IFLA_INFO_KIND, bytesOf(std::string("vlan")));
    const Bytes payload = linkHeader(AF_UNSPEC, 5, IFF_UP) + attribute(IFLA_LINKINFO, nest);
    EXPECT_EQ(decodeLink(payload).value().kind, "");
    Bytes headless = linkHeader(AF_UNSPEC, 5, IFF_UP) + attribute(IFLA_LINKINFO, bytesOf(std::uint16_t{4}));
    EXPECT_EQ(decodeLink(headless).value().kind, "");
}

TEST(Snapshot, AddressIsDecodedWithItsPeer) {
    const Bytes peer = bytesOf(std::uint32_t{0x0200000a});
    const Bytes payload =
        addressHeader(AF_INET, 32) + attribute(IFA_ADDRESS, peer) + attribute(IFA_LOCAL, bytesOf(addressV4));
    const auto address = decodeAddress(payload).value();
    EXPECT_EQ(address.local.text(), "10.0.0.1");
    EXPECT_EQ(address.network.text(), "10.0.0.2");
    EXPECT_EQ(address.prefixLength, 32U);
    EXPECT_EQ(address.link, 3U);
}

TEST(Snapshot, AddressWithoutLocalPartIsItsOwn) {
    const Bytes payload = addressHeader(AF_INET, 24) + attribute(IFA_ADDRESS, bytesOf(addressV4));
    EXPECT_EQ(decodeAddress(payload).value().local.text(), "10.0.0.1");
}

TEST(Snapshot, AddressOfWrongSizeOrFamilyIsNone) {
    const Bytes four = attribute(IFA_ADDRESS, bytesOf(addressV4));
    EXPECT_FALSE(decodeAddress(addressHeader(AF_INET6, 24) + four));
    EXPECT_FALSE(decodeAddress(addressHeader(AF_BRIDGE, 24) + four));
    EXPECT_FALSE(decodeAddress(addressHeader(AF_INET, 33) + four));
    EXPECT_FALSE(decodeAddress(addressHeader(AF_INET, 24, 0) + four));
    EXPECT_FALSE(decodeAddress(addressHeader(AF_INET, 24)));
    EXPECT_FALSE(
        decodeAddress(addressHeader(AF_INET, 24) + attribute(IFA_ADDRESS, bytesOf(std::uint64_t{1}))));
    EXPECT_FALSE(decodeAddress({}));
}

TEST(Snapshot, RouteIsDecoded) {
    const Bytes payload = routeHeader(AF_INET) + attribute(RTA_OIF, bytesOf(std::uint32_t{4})) +
                          attribute(RTA_PREFSRC, bytesOf(addressV4)) +
                          attribute(RTA_GATEWAY, bytesOf(addressV4)) +
                          attribute(RTA_PRIORITY, bytesOf(std::uint32_t{600}));
    const auto route = decodeRoute(payload).value();
    EXPECT_EQ(route.type, RTN_UNICAST);
    EXPECT_EQ(route.outLink, 4U);
    EXPECT_EQ(route.source.value().text(), "10.0.0.1");
    EXPECT_EQ(route.gateway.value().text(), "10.0.0.1");
    EXPECT_EQ(route.metric, 600U);
    EXPECT_EQ(route.prefixLength, 24U);
}

TEST(Snapshot, GatewayOfTheOtherFamilyIsDecoded) {
    const auto sixteen = IPAddress::fromText("fe80::1").value();
    const Bytes via =
        bytesOf(std::uint16_t{AF_INET6}) + Bytes(sixteen.bytes().begin(), sixteen.bytes().end());
    const auto route = decodeRoute(routeHeader(AF_INET) + attribute(RTA_VIA, via)).value();
    EXPECT_EQ(route.gateway.value().text(), "fe80::1");
}

TEST(Snapshot, RoutePartsOfWrongSizeAreLeftOut) {
    const Bytes payload = routeHeader(AF_INET) + attribute(RTA_PREFSRC, bytesOf(std::uint64_t{1})) +
                          attribute(RTA_OIF, bytesOf(std::uint16_t{4})) +
                          attribute(RTA_VIA, bytesOf(std::uint8_t{2}));
    const auto route = decodeRoute(payload).value();
    EXPECT_FALSE(route.source);
    EXPECT_FALSE(route.gateway);
    EXPECT_EQ(route.outLink, 0U);
    EXPECT_FALSE(decodeRoute(routeHeader(AF_BRIDGE)));
    EXPECT_FALSE(decodeRoute({}));
}

// Meant for the address sanitizer.
TEST(Snapshot, NoiseIsDecodedWithoutLeavingIt) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    int decoded = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes bytes = wholeLink();
        bytes.resize(random() % (bytes.size() + 1));
        for (unsigned change = random() % 4; change > 0 && !bytes.empty(); --change)
            bytes[random() % bytes.size()] = static_cast<std::byte>(random());
        const Bytes exact(bytes.begin(), bytes.end());
        decoded += decodeLink(exact) ? 1 : 0;
        decoded += decodeAddress(exact) ? 1 : 0;
        decoded += decodeRoute(exact) ? 1 : 0;
    }
    EXPECT_GT(decoded, 0);
}

TEST(IPAddress, TextIsReadAndWritten) {
    for (const auto* text :
         {"0.0.0.0", "10.9.0.77", "255.255.255.255", "::", "::1", "fe80::1", "2001:db8::7"})
        EXPECT_EQ(IPAddress::fromText(text).value().text(), text);
    for (const auto* text : {"", "10.9.0", "10.9.0.256", "fe80::1%eth0", "example.org"})
        EXPECT_FALSE(IPAddress::fromText(text)) << text;
}

TEST(IPAddress, KindsAreKnown) {
    const auto at = [](const char* text) { return IPAddress::fromText(text).value(); };
    EXPECT_TRUE(at("0.0.0.0").isUnspecified() && at("::").isUnspecified());
    EXPECT_TRUE(at("127.1.2.3").isLoopback() && at("::1").isLoopback());
    EXPECT_FALSE(at("::").isLoopback() || at("1::1").isLoopback());
    EXPECT_TRUE(at("169.254.9.9").isLinkLocal() && at("fe80::1").isLinkLocal() &&
                at("febf::1").isLinkLocal());
    EXPECT_FALSE(at("169.253.9.9").isLinkLocal() || at("fec0::1").isLinkLocal());
    EXPECT_TRUE(at("224.0.0.251").isMulticast() && at("ff02::fb").isMulticast());
    EXPECT_FALSE(at("223.0.0.1").isMulticast() || at("fe80::1").isMulticast());
}

TEST(IPAddress, PrefixesAreComparedBitByBit) {
    const auto at = [](const char* text) { return IPAddress::fromText(text).value(); };
    EXPECT_TRUE(at("10.9.0.77").isInside(at("10.9.0.1"), 24));
    EXPECT_TRUE(at("10.9.1.77").isInside(at("10.9.0.1"), 23));
    EXPECT_FALSE(at("10.9.2.77").isInside(at("10.9.0.1"), 23));
    EXPECT_TRUE(at("8.8.8.8").isInside(at("0.0.0.0"), 0));
    EXPECT_TRUE(at("10.9.0.1").isInside(at("10.9.0.1"), 32));
    EXPECT_FALSE(at("10.9.0.1").isInside(at("10.9.0.1"), 33));
    EXPECT_FALSE(at("10.9.0.1").isInside(at("::"), 0));
}

} // namespace
} // namespace vorlan::network
