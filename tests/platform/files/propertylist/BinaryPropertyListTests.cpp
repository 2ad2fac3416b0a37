// SPDX-License-Identifier: Apache-2.0
#include "platform/files/PropertyList.h"

#include "tests/platform/files/propertylist/RandomValues.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using vorlan::tests::RandomValues;

namespace {

Value readBack(const Value& value) {
    return readBinaryPropertyList(writeBinaryPropertyList(value));
}

Value nested(int levels, bool isDictionary) {
    Value value(1);
    for (int i = 0; i < levels; ++i) {
        // Moved into its place: an initialiser would be copied, level by level.
        Value outer = isDictionary ? Value(Value::Dictionary{{"a", nullptr}}) : Value(Value::Array{nullptr});
        (isDictionary ? outer.dictionary()->begin()->second : outer.array()->front()) = std::move(value);
        value = std::move(outer);
    }
    return value;
}

std::string refusalToWrite(const Value& value) {
    try {
        (void)writeBinaryPropertyList(value);
        return "it was written";
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

// Of all classes: zeros, subnormal, normal, infinite, and NaNs that are quiet, signalling and with a payload.
const std::vector<std::uint64_t> patternsOfDoubles{
    0x0000000000000000, 0x8000000000000000, 0x0000000000000001, 0x800FFFFFFFFFFFFF, 0x0010000000000000,
    0x3FF0000000000000, 0x3FB999999999999A, 0xBFF8000000000000, 0x4340000000000001, 0x7FEFFFFFFFFFFFFF,
    0xFFEFFFFFFFFFFFFF, 0x7FF0000000000000, 0xFFF0000000000000, 0x7FF8000000000000, 0xFFF8000000000000,
    0x7FF0000000000001, 0x7FFFFFFFFFFFFFFF, 0xFFF8DEADBEEF0001};

} // namespace

TEST(BinaryPropertyList, RandomValuesComeBackAsTheyAre) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomValues values(seed);
    for (int i = 0; i < 10'000; ++i) {
        const auto value = values.next();
        const auto bytes = writeBinaryPropertyList(value);
        const auto again = readBinaryPropertyList(bytes);
        ASSERT_EQ(again, value) << "value " << i;
        ASSERT_EQ(writeBinaryPropertyList(again), bytes) << "value " << i;
    }
}

TEST(BinaryPropertyList, IntegersOfEverySizeComeBack) {
    for (int bits = 0; bits < 64; ++bits) {
        const std::uint64_t power = std::uint64_t{1} << bits;
        for (const std::uint64_t integer : {power - 1, power, power + 1, ~power, 0 - power}) {
            EXPECT_EQ(readBack(integer), Value(integer));
            EXPECT_EQ(readBack(static_cast<std::int64_t>(integer)),
                      Value(static_cast<std::int64_t>(integer)));
        }
    }
}

TEST(BinaryPropertyList, IntegersTakeAsFewBytesAsTheFormAllows) {
    const auto sizeOf = [](const Value& value) { return writeBinaryPropertyList(value).size(); };
    const auto smallest = sizeOf(0);
    EXPECT_EQ(sizeOf(255), smallest);
    EXPECT_EQ(sizeOf(256), smallest + 1);
    EXPECT_EQ(sizeOf(65'535), smallest + 1);
    EXPECT_EQ(sizeOf(65'536), smallest + 3);
    EXPECT_EQ(sizeOf(4'294'967'295), smallest + 3);
    EXPECT_EQ(sizeOf(4'294'967'296), smallest + 7);
    EXPECT_EQ(sizeOf(-1), smallest + 7);
    EXPECT_EQ(sizeOf(std::numeric_limits<std::int64_t>::max()), smallest + 7);
    EXPECT_EQ(sizeOf(std::numeric_limits<std::uint64_t>::max()), smallest + 15);
}

TEST(BinaryPropertyList, DoublesComeBackToTheLastBit) {
    for (const auto pattern : patternsOfDoubles) {
        const auto again = readBack(std::bit_cast<double>(pattern));
        ASSERT_EQ(again.kind(), Value::Kind::number);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(*again.as<double>()), pattern) << std::hex << pattern;
    }
}

TEST(BinaryPropertyList, DatesComeBackToTheLastBit) {
    auto patterns = patternsOfDoubles;
    for (const double seconds : {0.1, -978'307'200.0, 2'147'483'648.5, 700'000'000.123456789})
        patterns.push_back(std::bit_cast<std::uint64_t>(seconds));
    for (const auto pattern : patterns) {
        const auto again = readBack(Date(std::bit_cast<double>(pattern)));
        ASSERT_EQ(again.kind(), Value::Kind::date);
        const double seconds = again.as<Date>()->timeIntervalSinceReferenceDate();
        EXPECT_EQ(std::bit_cast<std::uint64_t>(seconds), pattern) << std::hex << pattern;
    }
}

TEST(BinaryPropertyList, KindsStayApart) {
    for (const Value& value :
         {Value(true), Value(1), Value(1.0), Value("1"), Value(dataFromText("1")), Value(Date(1))})
        EXPECT_EQ(readBack(value).kind(), value.kind());
    EXPECT_EQ(readBack(Value(0.5F)), Value(0.5));
}

TEST(BinaryPropertyList, TextsOfAllLengthsAndScriptsComeBack) {
    for (const std::size_t length : {0, 1, 14, 15, 16, 255, 256, 65'535, 65'536, 70'000}) {
        const std::string ascii(length, 'a');
        EXPECT_EQ(readBack(ascii), Value(ascii)) << length;
        const std::string other = ascii + "\xC3\xA9\xF0\x9F\x98\x80";
        EXPECT_EQ(readBack(other), Value(other)) << length;
        const Data data(length, std::byte{7});
        EXPECT_EQ(readBack(data), Value(data)) << length;
    }
    const std::string edges("\0\x7F\xC2\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", 15);
    EXPECT_EQ(readBack(edges), Value(edges));
}

TEST(BinaryPropertyList, LongArraysAndDictionariesComeBack) {
    // Beyond 255 and 65535 objects, references are longer.
    for (const int count : {0, 1, 14, 15, 253, 254, 255, 256, 65'534, 65'535, 65'536}) {
        Value::Array array;
        for (int i = 0; i < count; ++i) array.push_back(i);
        EXPECT_TRUE(readBack(array) == Value(array)) << count;
    }
    for (const int count : {0, 1, 14, 15, 127, 128, 32'767, 32'768}) {
        Value::Dictionary dictionary;
        for (int i = 0; i < count; ++i) dictionary.emplace("key " + std::to_string(i), i);
        EXPECT_TRUE(readBack(dictionary) == Value(dictionary)) << count;
    }
}

TEST(BinaryPropertyList, LargeListsComeBack) {
    // Beyond 2^16 and 2^24 bytes, offsets are longer.
    for (const std::size_t size : {100, 60'000, 70'000, 17'000'000}) {
        const Value value(Value::Array{Data(size, std::byte{1}), "behind"});
        EXPECT_TRUE(readBack(value) == value) << size;
    }
}

TEST(BinaryPropertyList, EqualValuesAreWrittenAlike) {
    Value::Dictionary one;
    Value::Dictionary other;
    for (const char* key : {"a", "b", "c"}) one.emplace(key, key);
    for (const char* key : {"c", "b", "a"}) other.emplace(key, key);
    EXPECT_EQ(writeBinaryPropertyList(one), writeBinaryPropertyList(other));
}

TEST(BinaryPropertyList, AsManyLevelsAsTheLimitComeBack) {
    for (const bool isDictionary : {false, true}) {
        const auto value = nested(propertyListDepthLimit, isDictionary);
        EXPECT_TRUE(readBack(value) == value);
    }
}

TEST(BinaryPropertyList, MoreLevelsThanTheLimitAreNotWritten) {
    for (const bool isDictionary : {false, true})
        EXPECT_EQ(refusalToWrite(nested(propertyListDepthLimit + 1, isDictionary)),
                  "the value has too many levels for a property list");
}

TEST(BinaryPropertyList, NullIsNotWritten) {
    const std::string refusal = "a null is no part of a property list";
    EXPECT_EQ(refusalToWrite(Value()), refusal);
    EXPECT_EQ(refusalToWrite(Value::Array{1, nullptr}), refusal);
    EXPECT_EQ(refusalToWrite(Value::Dictionary{{"a", nullptr}}), refusal);
}

TEST(BinaryPropertyList, IllFormedTextIsNotWritten) {
    const std::string refusal = "a text is not well-formed UTF-8";
    for (const char* text : {"\xFF", "abc\x80", "\xED\xA0\x80", "\xC3", "\xC0\x80"}) {
        EXPECT_EQ(refusalToWrite(text), refusal);
        EXPECT_EQ(refusalToWrite(Value::Array{text}), refusal);
        EXPECT_EQ(refusalToWrite(Value::Dictionary{{text, 1}}), refusal);
    }
}
