// SPDX-License-Identifier: Apache-2.0
// Lists that are cut short, changed, or made to do harm.

#include "platform/files/PropertyList.h"

#include "tests/platform/files/propertylist/PropertyListBytes.h"
#include "tests/platform/files/propertylist/RandomValues.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <random>
#include <span>
#include <string>
#include <vector>

using namespace vorlan;
using namespace vorlan::tests;

namespace {

constexpr std::size_t trailerSize = 32;
constexpr std::size_t checksumSize = 5; // the first bytes of the trailer
constexpr auto most = std::numeric_limits<std::uint64_t>::max();

// One of each kind, on several levels.
Value sample() {
    return Value::Dictionary{
        {"flags", Value::Array{true, false}},
        {"numbers", Value::Array{1, 300, 70'000, -1, std::numeric_limits<std::uint64_t>::max(), 2.5}},
        {"when", Date(123.456)},
        {"texts",
         Value::Dictionary{{"ascii", "some text"}, {"other", "gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80"}}},
        {"bytes", dataFromText("a somewhat longer run of bytes")},
    };
}

// Whether bytes are read, as a value of any kind; any other exception than the one that is promised fails the case.
bool isRead(std::span<const std::byte> bytes) {
    try {
        (void)readBinaryPropertyList(bytes);
        return true;
    } catch (const PropertyListError&) {
        return false;
    }
}

// Whether the bytes that hold the checksum have one bit left: without it there is none, and then none is missed.
bool hasSingleBit(std::span<const std::byte> checksum) {
    int count = 0;
    for (const auto byte : checksum) count += std::popcount(std::to_integer<unsigned>(byte));
    return count == 1;
}

// Arrays in one another, each of which holds the next as often as said, down to an empty one.
std::vector<Data> tower(unsigned levels, unsigned width) {
    std::vector<Data> objects;
    for (unsigned i = 0; i < levels; ++i)
        objects.push_back(raw({0xA0 | width}) + Data(width, static_cast<std::byte>(i + 1)));
    objects.push_back(raw({0xA0}));
    return objects;
}

} // namespace

TEST(BinaryPropertyListDamage, EveryBitCounts) {
    auto list = writeBinaryPropertyList(sample());
    const auto checksum = std::span(list).last(trailerSize).first(checksumSize);
    ASSERT_FALSE(hasSingleBit(checksum));
    for (std::size_t bit = 0; bit < 8 * list.size(); ++bit) {
        const auto mask = static_cast<std::byte>(1U << (bit % 8));
        list[bit / 8] ^= mask;
        EXPECT_FALSE(isRead(list)) << "bit " << bit;
        list[bit / 8] ^= mask;
    }
    EXPECT_EQ(readBinaryPropertyList(list), sample());
}

TEST(BinaryPropertyListDamage, EveryByteCounts) {
    auto list = writeBinaryPropertyList(sample());
    for (std::size_t place = 0; place < list.size(); ++place) {
        const auto former = list[place];
        for (unsigned value = 0; value < 256; ++value) {
            list[place] = static_cast<std::byte>(value);
            EXPECT_EQ(isRead(list), list[place] == former) << value << " at " << place;
        }
        list[place] = former;
    }
}

TEST(BinaryPropertyListDamage, EveryLengthButTheWholeIsRefused) {
    const auto list = writeBinaryPropertyList(sample());
    const std::span<const std::byte> bytes(list);
    for (std::size_t size = 0; size < list.size(); ++size) {
        // A copy of its own size, so that reading beyond it is noticed.
        EXPECT_FALSE(isRead(Data(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)))) << size;
    }
    EXPECT_FALSE(isRead(list + raw({0})));
}

TEST(BinaryPropertyListDamage, MissingStartIsRefused) {
    const auto list = writeBinaryPropertyList(sample());
    for (std::ptrdiff_t start = 1; start < std::ssize(list); ++start)
        EXPECT_FALSE(isRead(Data(list.begin() + start, list.end()))) << start;
}

// Without a checksum, damage cannot always be noticed; it must do no harm.
TEST(BinaryPropertyListDamage, AnyChangeOfAForeignListIsHarmless) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomValues random(seed);
    for (int i = 0; i < 20'000; ++i) {
        auto list = writeBinaryPropertyList(i % 4 == 0 ? sample() : random.next());
        const auto trailer = std::span(list).last(trailerSize);
        std::ranges::fill(trailer.first(checksumSize), std::byte{0});
        for (auto left = 1 + random.below(4); left > 0; --left)
            list[random.below(list.size())] = static_cast<std::byte>(random.below(256));
        (void)isRead(list);
        if (i % 2 == 0) std::ranges::fill(trailer.first(checksumSize), std::byte{0});
        (void)isRead(list);
    }
    EXPECT_EQ(readBinaryPropertyList(writeBinaryPropertyList(sample())), sample());
}

TEST(BinaryPropertyListDamage, CyclesAreRefused) {
    EXPECT_EQ(refusalOf({raw({0xA1, 0})}), "it has too many levels");
    EXPECT_EQ(refusalOf({raw({0xA1, 1}), raw({0xA1, 0})}), "it has too many levels");
    EXPECT_EQ(refusalOf({raw({0xD1, 1, 0}), ascii("a")}), "it has too many levels");
    EXPECT_EQ(refusalOf({raw({0xC1, 0})}), "it has too many levels");
    // With two ways round, there would be 2^512 ways to the limit.
    EXPECT_NE(refusalOf({raw({0xA2, 0, 0})}), "it was read");
    EXPECT_NE(refusalOf({raw({0xA3, 1, 0, 0}), raw({0x10, 1})}), "it was read");
}

TEST(BinaryPropertyListDamage, FewBytesThatStandForVeryManyAreRefused) {
    EXPECT_EQ(refusalOf(tower(10, 10)), "it would become far larger than it is");
    EXPECT_EQ(refusalOf(tower(64, 2)), "it would become far larger than it is");
    // A text of a thousand bytes, ten thousand times.
    const auto text = raw({0x5F, 0x11, 0x03, 0xE8}) + Data(1000, std::byte{'a'});
    const auto tenThousand = raw({0xAF, 0x11, 0x27, 0x10}) + Data(10'000, std::byte{1});
    EXPECT_EQ(refusalOf({tenThousand, text}, {.offsetSize = 2}), "it would become far larger than it is");
    // The same as a key.
    EXPECT_EQ(refusalOf({tenThousand, raw({0xD1, 2, 3}), text, raw({0x09})}, {.offsetSize = 2}),
              "it would become far larger than it is");
}

TEST(BinaryPropertyListDamage, AsManyLevelsAsTheLimitAreReadAndNoMore) {
    const auto chain = [](unsigned levels) {
        std::vector<Data> objects;
        for (unsigned i = 0; i + 1 < levels; ++i) objects.push_back(raw({0xA1}) + bigEndian(i + 1, 2));
        objects.push_back(raw({0xA0}));
        return foreignList(objects, {.offsetSize = 2, .referenceSize = 2});
    };
    EXPECT_EQ(refusalOfList(chain(propertyListDepthLimit)), "it was read");
    EXPECT_EQ(refusalOfList(chain(propertyListDepthLimit + 1)), "it has too many levels");
}

TEST(BinaryPropertyListDamage, TrailerThatDoesNotFitIsRefused) {
    const std::vector<Data> one{raw({0x10, 7})};
    const std::string refusal = "its trailer is damaged";
    ASSERT_EQ(readForeign(one), Value(7));
    EXPECT_EQ(refusalOf(one, {.offsetSize = 0}), refusal);
    EXPECT_EQ(refusalOf(one, {.offsetSize = 9}), refusal);
    EXPECT_EQ(refusalOf(one, {.offsetSize = 255}), refusal);
    EXPECT_EQ(refusalOf(one, {.referenceSize = 0}), refusal);
    EXPECT_EQ(refusalOf(one, {.referenceSize = 9}), refusal);
    for (const std::uint64_t count : {std::uint64_t{2}, std::uint64_t{1} << 63, most, most / 8 + 1})
        EXPECT_EQ(refusalOf(one, {.count = count}), refusal) << count;
    for (const std::uint64_t count : {most, most / 8 + 2})
        EXPECT_EQ(refusalOf(one, {.offsetSize = 8, .count = count}), refusal) << count;
    for (const std::uint64_t place : {std::uint64_t{0}, std::uint64_t{7}, std::uint64_t{12}, most, most - 31})
        EXPECT_EQ(refusalOf(one, {.tableOffset = place}), refusal) << place;
}

TEST(BinaryPropertyListDamage, ReferencesToNothingAreRefused) {
    const std::vector<Data> one{raw({0x10, 7})};
    for (const std::uint64_t root : {std::uint64_t{1}, std::uint64_t{255}, most})
        EXPECT_EQ(refusalOf(one, {.root = root}), "an object is missing") << root;
    EXPECT_EQ(refusalOf(one, {.count = 0}), "an object is missing");
    EXPECT_EQ(refusalOf({raw({0xA1, 1})}), "an object is missing");
    EXPECT_EQ(refusalOf({raw({0xD1, 9, 0})}), "an object is missing");
    EXPECT_EQ(refusalOf({raw({0xA1}) + bigEndian(most, 8)}, {.referenceSize = 8}), "an object is missing");
}

TEST(BinaryPropertyListDamage, OffsetsOutOfTheObjectsAreRefused) {
    const std::vector<Data> one{raw({0x10, 7})};
    using Offsets = std::vector<std::uint64_t>;
    for (const std::uint64_t offset : {std::uint64_t{10}, std::uint64_t{42}, most, most - 8, most / 2})
        EXPECT_EQ(refusalOf(one, {.offsetSize = 8, .offsets = Offsets{offset}}), "an object is outside of it")
            << offset;
}

TEST(BinaryPropertyListDamage, ObjectsThatEndTooEarlyAreRefused) {
    const std::string refusal = "an object ends too early";
    for (const unsigned marker :
         {0x10U, 0x11U, 0x12U, 0x13U, 0x14U, 0x22U, 0x23U, 0x33U, 0x41U, 0x4FU, 0x51U,
          0x5FU, 0x61U, 0x6FU, 0x80U, 0x87U, 0xA1U, 0xAFU, 0xB1U, 0xC1U, 0xD1U, 0xDFU})
        EXPECT_EQ(refusalOf({raw({marker})}), refusal) << std::hex << marker;
    EXPECT_EQ(refusalOf({raw({0x13, 1, 2, 3, 4, 5, 6, 7})}), refusal);
    EXPECT_EQ(refusalOf({raw({0x14}) + Data(15)}), refusal);
    EXPECT_EQ(refusalOf({raw({0x62, 0, 'a', 0})}), refusal);
    EXPECT_EQ(refusalOf({raw({0xD1, 0})}), refusal);
    EXPECT_EQ(refusalOf({raw({0x4F, 0x10})}), refusal);
    EXPECT_EQ(refusalOf({raw({0x4F, 0x13, 0, 0, 0})}), refusal);
}

TEST(BinaryPropertyListDamage, LengthsBeyondTheEndAreRefused) {
    const std::string refusal = "an object ends too early";
    for (const unsigned kind : {0x4FU, 0x5FU, 0x6FU, 0xAFU, 0xBFU, 0xCFU, 0xDFU}) {
        // Some overflow when they are multiplied with the size of a piece.
        for (const std::uint64_t length :
             {std::uint64_t{16}, std::uint64_t{1} << 63, most, most / 2 + 1, most / 16})
            EXPECT_EQ(refusalOf({raw({kind, 0x13}) + bigEndian(length, 8)}), refusal)
                << kind << ' ' << length;
    }
    EXPECT_EQ(refusalOf({raw({0xDF, 0x13}) + bigEndian(most / 16 + 1, 8)}, {.referenceSize = 8}), refusal);
}

TEST(BinaryPropertyListDamage, UnknownObjectsAreRefused) {
    for (const unsigned marker : {0x01U, 0x07U, 0x0AU, 0x0FU, 0x70U, 0x90U, 0xE0U, 0xF0U})
        EXPECT_EQ(refusalOf({raw({marker}) + Data(16)}), "an object is of unknown kind")
            << std::hex << marker;
    EXPECT_EQ(refusalOf({raw({0x15}) + Data(32)}), "an integer has too many bits");
    EXPECT_EQ(refusalOf({raw({0x21}) + Data(16)}), "a number is of unknown form");
    EXPECT_EQ(refusalOf({raw({0x32}) + Data(16)}), "a date is of unknown form");
    EXPECT_EQ(refusalOf({raw({0x88}) + Data(16)}), "a reference of an archiver is of unknown form");
    EXPECT_EQ(refusalOf({raw({0x4F, 0x23}) + Data(16)}), "a length is damaged");
    EXPECT_EQ(refusalOf({raw({0x4F, 0x14}) + Data(32)}), "a length is damaged");
    EXPECT_EQ(refusalOf({raw({0xD1, 1, 1}), raw({0x10, 1})}), "a key is no text");
    EXPECT_EQ(refusalOf({raw({0xD1, 0, 1}), raw({0x10, 1})}), "a key is no text");
}
