// SPDX-License-Identifier: Apache-2.0
#include "platform/network/NetlinkReader.h"

#include "tests/platform/network/NetlinkBytes.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace vorlan::network {
namespace {

using namespace fake;

TEST(NetlinkReader, MessagesComeInTheirOrder) {
    const Bytes datagram = message(RTM_NEWLINK, bytesOf(std::string("abc"))) + message(RTM_DELLINK, {});
    MessageReader reader(datagram);
    const auto first = reader.next().value();
    EXPECT_EQ(first.type, RTM_NEWLINK);
    EXPECT_EQ(readText(first.payload), "abc");
    EXPECT_EQ(first.sequence, 7U);
    EXPECT_EQ(first.port, 9U);
    EXPECT_EQ(reader.next().value().type, RTM_DELLINK);
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.isDamaged());
}

TEST(NetlinkReader, LastMessageMayLackItsPadding) {
    Bytes datagram = message(RTM_NEWLINK, bytesOf(std::string("abc")));
    datagram.resize(sizeof(nlmsghdr) + 3);
    MessageReader reader(datagram);
    EXPECT_EQ(readText(reader.next().value().payload), "abc");
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.isDamaged());
}

TEST(NetlinkReader, ShortHeaderIsDamage) {
    Bytes datagram = message(RTM_NEWLINK, {});
    datagram.resize(sizeof(nlmsghdr) - 1);
    MessageReader reader(datagram);
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.isDamaged());
}

TEST(NetlinkReader, LengthsThatDoNotFitAreDamage) {
    for (const std::uint32_t length :
         {0U, 1U, 15U, 21U, 0x7fffffffU, 0x80000000U, 0x80000014U, 0xfffffffcU, 0xffffffffU}) {
        const Bytes datagram = messageWithLength(length, RTM_NEWLINK, bytesOf(std::uint32_t{1}));
        MessageReader reader(datagram);
        EXPECT_FALSE(reader.next()) << length;
        EXPECT_TRUE(reader.isDamaged()) << length;
        EXPECT_FALSE(reader.next()) << length;
    }
}

TEST(NetlinkReader, AttributesComeInTheirOrderWithoutFlagBits) {
    const Bytes bytes = attribute(1 | NLA_F_NESTED, bytesOf(std::string("a"))) + attribute(2, {});
    AttributeReader reader(bytes);
    const auto first = reader.next().value();
    EXPECT_EQ(first.type, 1);
    EXPECT_EQ(readText(first.value), "a");
    EXPECT_EQ(reader.next().value().type, 2);
    EXPECT_FALSE(reader.next());
}

TEST(NetlinkReader, AttributeThatDoesNotFitEndsTheWalk) {
    for (const auto length : std::array<std::uint16_t, 7>{0, 1, 3, 9, 0x7fff, 0x8000, 0xffff}) {
        const Bytes bytes = attributeWithLength(length, 1, bytesOf(std::uint32_t{1})) + attribute(2, {});
        Bytes cut = bytes;
        cut.resize(8);
        AttributeReader reader(cut);
        EXPECT_FALSE(reader.next()) << length;
        EXPECT_FALSE(reader.next()) << length;
    }
}

TEST(NetlinkReader, NumbersMustFillTheirAttribute) {
    EXPECT_EQ(readNumber<std::uint32_t>(bytesOf(std::uint32_t{42})), 42U);
    EXPECT_FALSE(readNumber<std::uint32_t>(bytesOf(std::uint16_t{42})));
    EXPECT_FALSE(readNumber<std::uint32_t>(bytesOf(std::uint64_t{42})));
    EXPECT_FALSE(readNumber<std::uint32_t>({}));
}

TEST(NetlinkReader, TextEndsAtItsNulOrWithTheBytes) {
    EXPECT_EQ(readText(bytesOf(std::string("eth0\0x", 6))), "eth0");
    EXPECT_EQ(readText(bytesOf(std::string("eth0"))), "eth0");
    EXPECT_EQ(readText({}), "");
}

// Meant for the address sanitizer: no walk over any bytes leaves them, and each comes to an end.
TEST(NetlinkReader, NoiseIsReadWithoutLeavingIt) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const Bytes whole =
        message(RTM_NEWLINK, attribute(1, attribute(2, bytesOf(std::uint64_t{3}))) + attribute(4, {}));
    for (int round = 0; round < 20000; ++round) {
        Bytes bytes = whole + whole;
        bytes.resize(random() % (bytes.size() + 1));
        for (unsigned change = random() % 4; change > 0 && !bytes.empty(); --change)
            bytes[random() % bytes.size()] = static_cast<std::byte>(random());
        const Bytes exact(bytes.begin(), bytes.end());
        std::size_t seen = 0;
        MessageReader messages(exact);
        while (const auto message = messages.next()) {
            AttributeReader attributes(message->payload);
            while (const auto attribute = attributes.next()) seen += attribute->value.size() + 4;
        }
        EXPECT_LE(seen, exact.size() + 3);
    }
}

} // namespace
} // namespace vorlan::network
