// SPDX-License-Identifier: Apache-2.0
// Binary lists as other writers make them.

#include "platform/files/PropertyList.h"

#include "tests/platform/files/propertylist/PropertyListBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace vorlan::tests;

namespace {

const std::string replacement = "\xEF\xBF\xBD";

// Texts of UTF-16 units, fewer than 15.
Data wide(const std::vector<unsigned>& units) {
    auto object = raw({0x60U | static_cast<unsigned>(units.size())});
    for (const auto unit : units) object = std::move(object) + bigEndian(unit, 2);
    return object;
}

Value readOne(const Data& object) {
    return readForeign({object});
}

} // namespace

TEST(PropertyListForeign, IntegersOfFewBytesHaveNoSign) {
    EXPECT_EQ(readOne(raw({0x10, 0x00})), Value(0));
    EXPECT_EQ(readOne(raw({0x10, 0xFF})), Value(255));
    EXPECT_EQ(readOne(raw({0x11, 0x01, 0x00})), Value(256));
    EXPECT_EQ(readOne(raw({0x11, 0xFF, 0xFF})), Value(65'535));
    EXPECT_EQ(readOne(raw({0x12, 0x80, 0x00, 0x00, 0x00})), Value(std::int64_t{1} << 31));
    EXPECT_EQ(readOne(raw({0x12, 0xFF, 0xFF, 0xFF, 0xFF})), Value(4'294'967'295));
    // Also where fewer would do.
    EXPECT_EQ(readOne(raw({0x12, 0, 0, 0, 7})), Value(7));
}

TEST(PropertyListForeign, IntegersOfEightBytesHaveASign) {
    EXPECT_EQ(readOne(raw({0x13}) + bigEndian(7, 8)), Value(7));
    EXPECT_EQ(readOne(raw({0x13}) + bigEndian(static_cast<std::uint64_t>(-7), 8)), Value(-7));
    EXPECT_EQ(readOne(raw({0x13}) + bigEndian(std::uint64_t{1} << 63, 8)),
              Value(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(readOne(raw({0x13}) + bigEndian(~std::uint64_t{0} >> 1, 8)),
              Value(std::numeric_limits<std::int64_t>::max()));
}

TEST(PropertyListForeign, IntegersOfSixteenBytesAreReadWhereTheyFit) {
    const auto sixteen = [](std::uint64_t high, std::uint64_t low) {
        return raw({0x14}) + bigEndian(high, 8) + bigEndian(low, 8);
    };
    constexpr std::uint64_t half = std::uint64_t{1} << 63;
    constexpr std::uint64_t ones = ~std::uint64_t{0};
    EXPECT_EQ(readOne(sixteen(0, 7)), Value(7));
    EXPECT_EQ(readOne(sixteen(0, half)), Value(half));
    EXPECT_EQ(readOne(sixteen(0, ones)), Value(ones));
    EXPECT_EQ(readOne(sixteen(ones, ones)), Value(-1));
    EXPECT_EQ(readOne(sixteen(ones, half)), Value(std::numeric_limits<std::int64_t>::min()));
    const std::string refusal = "an integer has too many bits";
    EXPECT_EQ(refusalOf({sixteen(1, 0)}), refusal);
    EXPECT_EQ(refusalOf({sixteen(ones, half - 1)}), refusal);
    EXPECT_EQ(refusalOf({sixteen(half, 0)}), refusal);
}

TEST(PropertyListForeign, NumbersOfFourBytesAreRead) {
    EXPECT_EQ(readOne(raw({0x22, 0x3F, 0xC0, 0, 0})), Value(1.5));
    EXPECT_EQ(readOne(raw({0x22, 0xBF, 0x80, 0, 0})), Value(-1.0));
    EXPECT_EQ(readOne(raw({0x22, 0x3D, 0xCC, 0xCC, 0xCD})), Value(0.1F));
    EXPECT_EQ(readOne(raw({0x22, 0x7F, 0x80, 0, 0})), Value(std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(std::isnan(readOne(raw({0x22, 0x7F, 0xC0, 0, 0})).as<double>().value()));
}

TEST(PropertyListForeign, BooleansAndNull) {
    EXPECT_EQ(readOne(raw({0x08})), Value(false));
    EXPECT_EQ(readOne(raw({0x09})), Value(true));
    // What is written as null is nothing that a value in a store or a dictionary of information could be.
    EXPECT_EQ(refusalOf({raw({0x00})}), "an object is of unknown kind");
    EXPECT_EQ(refusalOf({raw({0xA1, 1}), raw({0x00})}), "an object is of unknown kind");
}

TEST(PropertyListForeign, SetsBecomeArrays) {
    const std::vector<Data> elements{ascii("a"), ascii("b")};
    for (const unsigned marker : {0xA2U, 0xB2U, 0xC2U})
        EXPECT_EQ(readForeign({raw({marker, 1, 2}), elements[0], elements[1]}),
                  Value(Value::Array{"a", "b"}));
}

TEST(PropertyListForeign, ReferencesOfAnArchiverBecomeDictionaries) {
    const auto reference = [](std::uint64_t number) { return Value(Value::Dictionary{{"CF$UID", number}}); };
    EXPECT_EQ(readOne(raw({0x80, 5})), reference(5));
    EXPECT_EQ(readOne(raw({0x81, 1, 0})), reference(256));
    EXPECT_EQ(readOne(raw({0x82, 1, 0, 0})), reference(65'536));
    EXPECT_EQ(readOne(raw({0x87}) + bigEndian(~std::uint64_t{0}, 8)), reference(~std::uint64_t{0}));
}

TEST(PropertyListForeign, SharedObjectsAreThereWhereverTheyAreReferredTo) {
    const auto list = readForeign({raw({0xA3, 1, 1, 2}), ascii("x"), raw({0xD1, 1, 3}), raw({0xA1, 1})});
    EXPECT_EQ(list, Value(Value::Array{"x", "x", Value::Dictionary{{"x", Value::Array{"x"}}}}));
}

TEST(PropertyListForeign, ThousandsOfReferencesToOneShortTextAreRead) {
    const auto list =
        readForeign({raw({0xAF, 0x12}) + bigEndian(50'000, 4) + Data(50'000, std::byte{1}), ascii("x")},
                    {.offsetSize = 4});
    ASSERT_NE(list.array(), nullptr);
    EXPECT_EQ(list.array()->size(), 50'000U);
    EXPECT_EQ(list[49'999], Value("x"));
}

TEST(PropertyListForeign, RootMayBeAnyObject) {
    EXPECT_EQ(readForeign({ascii("a"), ascii("b"), raw({0xA2, 0, 1})}, {.root = 2}),
              Value(Value::Array{"a", "b"}));
    EXPECT_EQ(readForeign({ascii("a"), ascii("b")}, {.root = 1}), Value("b"));
}

TEST(PropertyListForeign, OffsetsAndReferencesMayHaveAnySize) {
    for (unsigned size = 1; size <= 8; ++size) {
        const std::vector<Data> objects{raw({0xA1}) + bigEndian(1, size), ascii("a")};
        EXPECT_EQ(readForeign(objects, {.offsetSize = size, .referenceSize = size}), Value(Value::Array{"a"}))
            << size;
    }
}

TEST(PropertyListForeign, BytesBetweenTheObjectsArePassedOver) {
    using Offsets = std::vector<std::uint64_t>;
    const std::vector<Data> objects{raw({0xFF, 0xFF, 0xA1, 1}), raw({0xFF}) + ascii("a")};
    EXPECT_EQ(readForeign(objects, {.offsets = Offsets{10, 13}}), Value(Value::Array{"a"}));
}

TEST(PropertyListForeign, LengthsMayHaveMoreBytesThanTheyNeed) {
    EXPECT_EQ(readOne(raw({0x5F, 0x10, 1, 'a'})), Value("a"));
    EXPECT_EQ(readOne(raw({0x5F, 0x11, 0, 1, 'a'})), Value("a"));
    EXPECT_EQ(readOne(raw({0x5F, 0x13}) + bigEndian(1, 8) + raw({'a'})), Value("a"));
    EXPECT_EQ(readOne(raw({0xAF, 0x10, 0})), Value(Value::Array()));
}

TEST(PropertyListForeign, WideTextsAreRead) {
    EXPECT_EQ(readOne(wide({})), Value(""));
    EXPECT_EQ(readOne(wide({'a', 0xE9, 0x20AC})), Value("a\xC3\xA9\xE2\x82\xAC"));
    EXPECT_EQ(readOne(wide({0xD83D, 0xDE00})), Value("\xF0\x9F\x98\x80"));
    EXPECT_EQ(readOne(wide({0xD800, 0xDC00, 0xDBFF, 0xDFFF})), Value("\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"));
    EXPECT_EQ(readOne(wide({0})), Value(std::string(1, '\0')));
}

TEST(PropertyListForeign, HalvesOfPairsThatStandAloneAreReplaced) {
    EXPECT_EQ(readOne(wide({0xD83D})), Value(replacement));
    EXPECT_EQ(readOne(wide({0xDE00})), Value(replacement));
    EXPECT_EQ(readOne(wide({0xD83D, 'a'})), Value(replacement + "a"));
    EXPECT_EQ(readOne(wide({0xDE00, 0xD83D})), Value(replacement + replacement));
    EXPECT_EQ(readOne(wide({0xD83D, 0xD83D, 0xDE00})), Value(replacement + "\xF0\x9F\x98\x80"));
}

TEST(PropertyListForeign, NarrowTextsThatAreNotASCIIAreReadAsUTF8) {
    EXPECT_EQ(readOne(ascii("gr\xC3\xBC\xC3\x9F")), Value("gr\xC3\xBC\xC3\x9F"));
    EXPECT_EQ(readOne(ascii("a\xFFz")), Value("a" + replacement + "z"));
}

TEST(PropertyListForeign, KeysMayBeWideAndNeedNoOrder) {
    const auto list =
        readForeign({raw({0xD2, 1, 2, 3, 4}), wide({0xE9}), ascii("a"), raw({0x10, 1}), raw({0x10, 2})});
    EXPECT_EQ(list, Value(Value::Dictionary{{"\xC3\xA9", 1}, {"a", 2}}));
}

TEST(PropertyListForeign, OfAKeyThatComesTwiceOneValueIsRead) {
    const auto list = readForeign({raw({0xD2, 1, 1, 2, 3}), ascii("a"), raw({0x10, 1}), raw({0x10, 2})});
    ASSERT_NE(list.dictionary(), nullptr);
    EXPECT_EQ(list.dictionary()->size(), 1U);
    EXPECT_EQ(list["a"], Value(1));
}

TEST(PropertyListForeign, WhatWeWriteIsInTheSameForm) {
    EXPECT_EQ(refusalOfList(foreignList({raw({0xA1, 1}), ascii("a")})), "it was read");
    auto list = writeBinaryPropertyList(Value::Array{"a"});
    const auto checksum = std::span(list).last(32).first(5);
    std::ranges::fill(checksum, std::byte{0});
    EXPECT_EQ(list, foreignList({raw({0xA1, 1}), ascii("a")}));
}
