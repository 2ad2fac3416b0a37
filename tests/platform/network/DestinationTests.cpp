// SPDX-License-Identifier: Apache-2.0
#include "platform/network/Destination.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <random>
#include <string>

namespace vorlan::network {
namespace {

using namespace std::string_literals;

IPAddress ip(const std::string& text) {
    return IPAddress::fromText(text).value();
}

SocketAddress recordOf(const std::string& text, LinkIndex link = 0) {
    auto record = SocketAddress::fromText(text, 443).value();
    if (link != 0) std::memcpy(record.data.data() + 22, &link, sizeof(link));
    return record;
}

TEST(Destination, TextIsAnAddress) {
    EXPECT_EQ(Destination::fromText("10.0.0.1"), Destination{ip("10.0.0.1")});
    EXPECT_EQ(Destination::fromText("2001:DB8::0:1"), Destination{ip("2001:db8::1")});
    EXPECT_EQ(Destination::fromText("0.0.0.0"), Destination{ip("0.0.0.0")});
    EXPECT_EQ(Destination::fromText("::"), Destination{ip("::")});
}

TEST(Destination, NamesAreNoAddresses) {
    for (const char* text :
         {"", "example.org", "localhost", "10.0.0", "10.0.0.256", "010.0.0.1.", "1", "0x7f000001",
          "::1::", "[::1]", "fe80::1 ", " fe80::1", "10.0.0.1:80", "10.0.0.1/8"})
        EXPECT_EQ(Destination::fromText(text), std::nullopt) << text;
}

TEST(Destination, NulEndsNothing) {
    for (const auto& text : {"10.0.0.1\0"s, "10.0.0.1\0.example"s, "fe80::1\0%eth0"s, "\0"s})
        EXPECT_EQ(Destination::fromText(text), std::nullopt);
}

TEST(Destination, LinkIsNumberedOrNamed) {
    EXPECT_EQ(Destination::fromText("fe80::1%2"), (Destination{ip("fe80::1"), 2}));
    EXPECT_EQ(Destination::fromText("fe80::1%4294967295"), (Destination{ip("fe80::1"), 4294967295U}));
    EXPECT_EQ(Destination::fromText("fe80::1%eth0"), (Destination{ip("fe80::1"), 0, "eth0"}));
    EXPECT_EQ(Destination::fromText("ff02::fb%eth0.7"), (Destination{ip("ff02::fb"), 0, "eth0.7"}));
}

TEST(Destination, NumberThatIsNoneMustBeAName) {
    for (const char* name :
         {"0", "4294967296", "99999999999999999999", "-1", "+2", "2 ", " 2", "0x2", "2eth"})
        EXPECT_EQ(Destination::fromText("fe80::1%"s + name), (Destination{ip("fe80::1"), 0, name})) << name;
}

TEST(Destination, EmptyLinkIsNone) {
    EXPECT_EQ(Destination::fromText("fe80::1%"), std::nullopt);
    EXPECT_EQ(Destination::fromText("%eth0"), std::nullopt);
    EXPECT_EQ(Destination::fromText("%"), std::nullopt);
}

TEST(Destination, IPv4HasNoLinks) {
    EXPECT_EQ(Destination::fromText("169.254.7.7%eth0"), std::nullopt);
    EXPECT_EQ(Destination::fromText("10.0.0.1%2"), std::nullopt);
}

TEST(Destination, IPv4InIPv6sClothesIsIPv4) {
    EXPECT_EQ(Destination::fromText("::ffff:10.0.0.1"), Destination{ip("10.0.0.1")});
    EXPECT_EQ(Destination::fromText("::FFFF:a00:1"), Destination{ip("10.0.0.1")});
    EXPECT_EQ(Destination::fromText("::ffff:0:0"), Destination{ip("0.0.0.0")});
    EXPECT_EQ(Destination::fromSocketAddress(recordOf("::ffff:10.0.0.1")), Destination{ip("10.0.0.1")});
    // Not quite.
    EXPECT_EQ(Destination::fromText("::10.0.0.1"), Destination{ip("::a00:1")});
    EXPECT_EQ(Destination::fromText("1::ffff:10.0.0.1"), Destination{ip("1::ffff:a00:1")});
}

TEST(Destination, RecordIsAnAddressWhateverItsPort) {
    EXPECT_EQ(Destination::fromSocketAddress(recordOf("10.0.0.1")), Destination{ip("10.0.0.1")});
    EXPECT_EQ(Destination::fromSocketAddress(recordOf("2001:db8::1")), Destination{ip("2001:db8::1")});
    EXPECT_EQ(Destination::fromSocketAddress(recordOf("fe80::1", 7)), (Destination{ip("fe80::1"), 7}));
    EXPECT_EQ(Destination::fromSocketAddress(SocketAddress::zero()), Destination{ip("0.0.0.0")});
}

TEST(Destination, PaddingMeansNothing) {
    auto record = recordOf("10.0.0.1");
    std::fill(record.data.begin() + 6, record.data.end(), std::byte{0xff});
    EXPECT_EQ(Destination::fromSocketAddress(record), Destination{ip("10.0.0.1")});
}

TEST(Destination, RecordOfEveryOtherLengthAndFamilyIsNone) {
    for (unsigned length = 0; length < 256; ++length) {
        for (unsigned family = 0; family < 256; ++family) {
            const SocketAddress record{.length = static_cast<std::uint8_t>(length),
                                       .family = static_cast<std::uint8_t>(family)};
            const bool fits = (length == 16 && family == 2) || (length == 28 && family == 30);
            ASSERT_EQ(Destination::fromSocketAddress(record).has_value(), fits) << length << ", " << family;
        }
    }
}

TEST(Destination, TextIsReadBackAsTheSame) {
    for (const char* text : {"10.0.0.1", "0.0.0.0", "::", "2001:db8::1", "fe80::1%2", "fe80::1%eth0"}) {
        const auto destination = Destination::fromText(text);
        ASSERT_TRUE(destination) << text;
        EXPECT_EQ(destination->text(), text);
        EXPECT_EQ(Destination::fromText(destination->text()), destination);
    }
}

TEST(Destination, AnyBytesOfARecordAreReadAndAnyTextOfThemIsReadBack) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 2000; ++round) {
        const bool isV4 = random() % 2 == 0;
        SocketAddress record{.length = static_cast<std::uint8_t>(isV4 ? 16 : 28),
                             .family = isV4 ? SocketAddress::ipv4 : SocketAddress::ipv6};
        for (auto& byte : record.data) byte = static_cast<std::byte>(random());
        const auto destination = Destination::fromSocketAddress(record);
        ASSERT_TRUE(destination);
        ASSERT_EQ(Destination::fromText(destination->text()), destination) << destination->text();
    }
}

} // namespace
} // namespace vorlan::network
