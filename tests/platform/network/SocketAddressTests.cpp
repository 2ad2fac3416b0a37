// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/SocketAddress.h>

#include <VorlanFoundation/Platform/Describe.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vorlan {
namespace {

std::optional<std::string> rewritten(std::string_view text) {
    const auto address = SocketAddress::fromText(text);
    return address ? std::optional(address->description()) : std::nullopt;
}

TEST(SocketAddress, ZeroAddressIsSixteenBytesOfTheIPv4Family) {
    constexpr SocketAddress zero = SocketAddress::zero();
    EXPECT_EQ(zero.length, 16);
    EXPECT_EQ(zero.family, 2);
    for (const auto byte : zero.data) EXPECT_EQ(byte, std::byte{0});
    EXPECT_EQ(zero, SocketAddress::fromText("0.0.0.0"));
    EXPECT_EQ(zero.description(), "0.0.0.0");
}

TEST(SocketAddress, RecordIsLaidOutWithoutGaps) {
    static_assert(sizeof(SocketAddress) == 28);
    static_assert(offsetof(SocketAddress, length) == 0);
    static_assert(offsetof(SocketAddress, family) == 1);
    static_assert(offsetof(SocketAddress, data) == 2);
    EXPECT_EQ(SocketAddress().length, 0);
    EXPECT_EQ(SocketAddress().family, 0);
}

TEST(SocketAddress, IPv4TextBecomesPortAndAddressInNetworkOrder) {
    const auto address = SocketAddress::fromText("192.168.1.200", 8080);
    ASSERT_TRUE(address);
    EXPECT_EQ(address->length, 16);
    EXPECT_EQ(address->family, SocketAddress::ipv4);
    std::array<std::byte, 26> expected{std::byte{0x1f}, std::byte{0x90}, std::byte{192},
                                       std::byte{168},  std::byte{1},    std::byte{200}};
    EXPECT_EQ(address->data, expected);
}

TEST(SocketAddress, IPv6TextBecomesPortFlowAddressAndInterface) {
    const auto address = SocketAddress::fromText("fd00:9::1", 443);
    ASSERT_TRUE(address);
    EXPECT_EQ(address->length, 28);
    EXPECT_EQ(address->family, SocketAddress::ipv6);
    std::array<std::byte, 26> expected{};
    expected[0] = std::byte{0x01};
    expected[1] = std::byte{0xbb};
    expected[6] = std::byte{0xfd};
    expected[9] = std::byte{0x09};
    expected[21] = std::byte{0x01};
    EXPECT_EQ(address->data, expected);
}

TEST(SocketAddress, PortIsZeroUnlessGiven) {
    EXPECT_EQ(SocketAddress::fromText("10.0.0.1"), SocketAddress::fromText("10.0.0.1", 0));
    EXPECT_NE(SocketAddress::fromText("10.0.0.1"), SocketAddress::fromText("10.0.0.1", 1));
    EXPECT_NE(SocketAddress::fromText("::1"), SocketAddress::fromText("::1", 0x100));
}

TEST(SocketAddress, DescriptionIsTheUsualFormWithoutThePort) {
    EXPECT_EQ(rewritten("10.0.0.1"), "10.0.0.1");
    EXPECT_EQ(rewritten("255.255.255.255"), "255.255.255.255");
    EXPECT_EQ(rewritten("::"), "::");
    EXPECT_EQ(rewritten("FD00:0009:0:0::0001"), "fd00:9::1");
    EXPECT_EQ(rewritten("2001:db8:0:1:0:0:0:1"), "2001:db8:0:1::1");
    EXPECT_EQ(rewritten("::ffff:10.0.0.1"), "::ffff:10.0.0.1");
    EXPECT_EQ(SocketAddress::fromText("10.0.0.1", 8080)->description(), "10.0.0.1");
    EXPECT_EQ(describe(*SocketAddress::fromText("::1")), "::1");
}

TEST(SocketAddress, DescriptionNamesTheInterfaceByItsNumber) {
    auto address = SocketAddress::fromText("fe80::1").value();
    EXPECT_EQ(address.description(), "fe80::1");
    const std::uint32_t interface = 2;
    const auto* bytes = reinterpret_cast<const std::byte*>(&interface);
    for (std::size_t i = 0; i < 4; ++i) address.data[22 + i] = bytes[i];
    EXPECT_EQ(address.description(), "fe80::1%2");
}

TEST(SocketAddress, TextThatIsNoAddressIsAbsent) {
    for (const auto* text :
         {"",          " ",          "example.org", "10.0.0",     "10.0.0.256",   "10.0.0.1 ",
          " 10.0.0.1", "10.0.0.1.2", "1",           "0x7f000001", "10.0.0.1:80",  ":",
          ":::",       "1::2::3",    "fd00::12345", "[::1]",      "fe80::1%eth0", "fe80::1%1",
          "::1/64",    "١٠.0.0.1"})
        EXPECT_EQ(SocketAddress::fromText(text), std::nullopt) << text;
}

TEST(SocketAddress, TextIsReadToItsEndWhateverItHolds) {
    EXPECT_EQ(SocketAddress::fromText(std::string_view("10.0.0.1\0", 9)), std::nullopt);
    EXPECT_EQ(SocketAddress::fromText(std::string_view("::1\0.example", 12)), std::nullopt);
    EXPECT_EQ(SocketAddress::fromText(std::string(100000, '1')), std::nullopt);
    EXPECT_EQ(rewritten(std::string_view("10.0.0.12345", 9)), "10.0.0.12") << "not beyond the view";
}

TEST(SocketAddress, RecordOfAnotherLengthOrFamilySaysSo) {
    const SocketAddress odd[] = {{},
                                 {.length = 16, .family = SocketAddress::ipv6},
                                 {.length = 28, .family = SocketAddress::ipv4},
                                 {.length = 255, .family = SocketAddress::ipv4},
                                 {.length = 28, .family = 10},
                                 {.length = 16, .family = 1}};
    for (const auto& address : odd) {
        const std::string text = address.description();
        EXPECT_NE(text.find(' '), std::string::npos) << "a sentence: " << text;
        EXPECT_EQ(SocketAddress::fromText(text), std::nullopt);
        EXPECT_EQ(text, describe(text));
    }
}

TEST(SocketAddress, IsEqualWhenEveryByteIs) {
    const auto address = SocketAddress::fromText("10.0.0.1");
    auto other = address;
    EXPECT_EQ(address, other);
    other->data[5] = std::byte{2};
    EXPECT_NE(address, other);
    EXPECT_EQ(other, SocketAddress::fromText("10.0.0.2"));
    other = address;
    other->length = 28;
    EXPECT_NE(address, other);
}

} // namespace
} // namespace vorlan
