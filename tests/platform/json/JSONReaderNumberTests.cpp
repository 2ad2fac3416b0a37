// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONReaderSupport.h"

#include <VorlanFoundation/Platform/JSONReader.h>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace jsontests;

namespace {

std::int64_t integerOf(JSONReader& reader) {
    return reader.readInteger();
}
std::uint64_t unsignedOf(JSONReader& reader) {
    return reader.readUnsigned();
}
double numberOf(JSONReader& reader) {
    return reader.readNumber();
}
float floatOf(JSONReader& reader) {
    return reader.readFloat();
}
Value valueOf(JSONReader& reader) {
    return reader.readValue();
}

bool isSameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

template <class T>
std::string shortest(T value) {
    std::array<char, 64> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

} // namespace

TEST(JSONReader, ReadsIntegersOf64Bits) {
    EXPECT_EQ(readWhole("0", integerOf), 0);
    EXPECT_EQ(readWhole("-0", integerOf), 0);
    EXPECT_EQ(readWhole("-7", integerOf), -7);
    EXPECT_EQ(readWhole("12345678901234567", integerOf), 12345678901234567);
    EXPECT_EQ(readWhole("9223372036854775807", integerOf), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(readWhole("-9223372036854775808", integerOf), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(readWhole("9223372036854775808", unsignedOf), std::uint64_t{1} << 63);
    EXPECT_EQ(readWhole("18446744073709551615", unsignedOf), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(readWhole("-0", unsignedOf), 0U);
}

TEST(JSONReader, WholeNumbersAreIntegersHoweverTheyAreWritten) {
    EXPECT_EQ(readWhole("3.0", integerOf), 3);
    EXPECT_EQ(readWhole("2e2", integerOf), 200);
    EXPECT_EQ(readWhole("-1.50E+1", integerOf), -15);
    EXPECT_EQ(readWhole("1200e-2", integerOf), 12);
    EXPECT_EQ(readWhole("0.00000000000000000001e20", integerOf), 1);
    EXPECT_EQ(readWhole("0e999999999999999999999", integerOf), 0);
    EXPECT_EQ(readWhole("-0.0", unsignedOf), 0U);
    EXPECT_EQ(readWhole("1e18", integerOf), 1'000'000'000'000'000'000);
    EXPECT_EQ(readWhole("9007199254740993.0", integerOf), 9'007'199'254'740'993);
    EXPECT_EQ(readWhole("922337203685477580.7e1", integerOf), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(readWhole("1844674407370955161.50e1", unsignedOf), std::numeric_limits<std::uint64_t>::max());
}

TEST(JSONReader, RefusesNumbersThatAreNoSuchIntegers) {
    using Kind = JSONError::Kind;
    for (const char* text : {"9223372036854775808", "-9223372036854775809", "99999999999999999999", "1e19",
                             "1e400", "123456789012345678901234567890", "-1e999999999999999999999"}) {
        SCOPED_TRACE(text);
        expectError(errorOf(text, integerOf), Kind::outOfRange,
                    "the number " + std::string(text) + " does not fit into 64 bits with a sign", "$", 0);
    }
    for (const char* text : {"-1", "18446744073709551616", "1.8446744073709551616e19", "1e20"}) {
        SCOPED_TRACE(text);
        expectError(errorOf(text, unsignedOf), Kind::outOfRange,
                    "the number " + std::string(text) + " does not fit into 64 bits without a sign", "$", 0);
    }
    for (const char* text : {"1.5", "-0.1", "1e-1", "1e-400", "4503599627370496.00000000000000000000001"}) {
        SCOPED_TRACE(text);
        const auto message = "the number " + std::string(text).substr(0, 40) + " is not whole";
        expectError(errorOf(text, integerOf), Kind::outOfRange, message, "$", 0);
    }
    const auto shortened = errorOf("1" + std::string(100, '0'), integerOf).message();
    EXPECT_EQ(shortened, "the number 1" + std::string(39, '0') + "… does not fit into 64 bits with a sign");
}

TEST(JSONReader, ReadsTheNearestDouble) {
    EXPECT_EQ(readWhole("0.1", numberOf), 0.1);
    EXPECT_EQ(readWhole("-2.5e-3", numberOf), -2.5e-3);
    EXPECT_EQ(readWhole("3", numberOf), 3.0);
    EXPECT_EQ(readWhole("9007199254740993", numberOf), 9007199254740992.0);
    EXPECT_EQ(readWhole("9007199254740993.0000000000000000001", numberOf), 9007199254740994.0);
    EXPECT_EQ(readWhole("123456789012345678901234567890", numberOf), 123456789012345678901234567890.0);
    EXPECT_EQ(readWhole("1.7976931348623157e308", numberOf), std::numeric_limits<double>::max());
    EXPECT_EQ(readWhole("4.9e-324", numberOf), std::numeric_limits<double>::denorm_min());
    // Halfway between two doubles, and a little less.
    EXPECT_EQ(readWhole("0.3000000000000000166533453693773481063544750213623046875", numberOf),
              0.30000000000000004);
    EXPECT_EQ(readWhole("0.3000000000000000166533453693773481063544750213623046874", numberOf), 0.3);
    EXPECT_TRUE(isSameBits(readWhole("-0", numberOf), -0.0));
    EXPECT_TRUE(isSameBits(readWhole("-0.0e0", numberOf), -0.0));
    EXPECT_TRUE(isSameBits(readWhole("0", numberOf), 0.0));
}

TEST(JSONReader, NumbersTooSmallForADoubleAreZero) {
    EXPECT_TRUE(isSameBits(readWhole("1e-400", numberOf), 0.0));
    EXPECT_TRUE(isSameBits(readWhole("-1e-400", numberOf), -0.0));
    EXPECT_TRUE(isSameBits(readWhole("0.000001e-99999999999999999999", numberOf), 0.0));
    EXPECT_TRUE(isSameBits(readWhole("0e99999999999999999999", numberOf), 0.0));
    EXPECT_EQ(readWhole("0." + std::string(400, '0') + "1e401", numberOf), 1.0);
    EXPECT_EQ(readWhole("1e-60", floatOf), 0.0F);
}

TEST(JSONReader, RefusesNumbersBeyondADouble) {
    for (const std::string text : {"1e400", "-1e400", "1.8e308", "1e99999999999999999999"}) {
        SCOPED_TRACE(text);
        const auto message = "the number " + text + " is too large for 64 bits";
        expectError(errorOf(text, numberOf), JSONError::Kind::outOfRange, message, "$", 0);
        expectError(errorOf(text, valueOf), JSONError::Kind::outOfRange, message, "$", 0);
        JSONReader reader(text);
        reader.skip();
        reader.finish();
    }
}

TEST(JSONReader, ReadsTheNearestFloatAtOnce) {
    // By way of a double, it would be rounded to an even one in the middle.
    EXPECT_EQ(readWhole("1.00000017881393432617187499", floatOf), 0x1.000002p0F);
    EXPECT_EQ(readWhole("0.1", floatOf), 0.1F);
    EXPECT_EQ(readWhole("16777217", floatOf), 16777216.0F);
    EXPECT_EQ(readWhole("3.4028235e38", floatOf), std::numeric_limits<float>::max());
    EXPECT_TRUE(std::signbit(readWhole("-0", floatOf)));
    expectError(errorOf("[1e39]",
                        [](JSONReader& reader) {
                            reader.enterArray();
                            if (reader.nextElement()) static_cast<void>(reader.readFloat());
                        }),
                JSONError::Kind::outOfRange, "the number 1e39 is too large for 32 bits", "$[0]", 1);
}

TEST(JSONReader, ValuesOfNumbersKeepWhatIsWritten) {
    EXPECT_EQ(readWhole("3", valueOf), Value(3));
    EXPECT_EQ(readWhole("3.0", valueOf), Value(3.0));
    EXPECT_EQ(readWhole("3e0", valueOf), Value(3.0));
    EXPECT_EQ(readWhole("-9223372036854775808", valueOf), Value(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(readWhole("18446744073709551615", valueOf), Value(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ(readWhole("18446744073709551616", valueOf), Value(18446744073709551616.0));
    EXPECT_EQ(readWhole("-9223372036854775809", valueOf), Value(-9223372036854775808.0));
    const auto zero = readWhole("-0", valueOf);
    ASSERT_EQ(zero.kind(), Value::Kind::number);
    EXPECT_TRUE(std::signbit(*zero.as<double>()));
    EXPECT_EQ(readWhole("0", valueOf), Value(0));
}

TEST(JSONReader, RefusesWhatIsNoNumber) {
    const std::vector<std::pair<std::string, std::size_t>> texts{
        {"01", 1},   {"-01", 2},       {"-", 1},     {"-a", 1},  {"+1", 0},
        {".5", 0},   {"1.", 2},        {"1.e5", 2},  {"1e", 2},  {"1e+", 3},
        {"1E-x", 3}, {"0x10", 1},      {"1_000", 1}, {"- 1", 1}, {"Infinity", 0},
        {"NaN", 0},  {"-Infinity", 1}, {"1e5.5", 3}, {"00", 1},  {"1234567890123456789012.", 23}};
    for (const auto& [text, offset] : texts) {
        SCOPED_TRACE(text);
        for (const auto& error : {errorOf(text, skipIt), errorOf(text, numberOf), errorOf(text, integerOf),
                                  errorOf(text, floatOf), errorOf(text, valueOf)}) {
            EXPECT_EQ(error.kind(), JSONError::Kind::malformed) << error.what();
            EXPECT_EQ(error.byteOffset(), offset) << error.what();
        }
    }
}

TEST(JSONReader, ReadsEveryDoubleToTheLastBit) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    for (int round = 0; round < 50'000; ++round) {
        const auto value = std::bit_cast<double>(random());
        if (!std::isfinite(value)) continue;
        ASSERT_TRUE(isSameBits(readWhole(shortest(value), numberOf), value)) << shortest(value);
        const auto narrow = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (!std::isfinite(narrow)) continue;
        ASSERT_EQ(readWhole(shortest(narrow), floatOf), narrow) << shortest(narrow);
    }
}

TEST(JSONReader, ReadsDecimalsAsTheStandardLibraryDoes) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    const auto below = [&](std::uint64_t limit) { return static_cast<std::size_t>(random() % limit); };
    const auto digits = [&](std::size_t count) {
        std::string text;
        while (text.size() < count) text += static_cast<char>('0' + below(10));
        return text;
    };
    for (int round = 0; round < 50'000; ++round) {
        std::string text = below(2) == 0 ? "-" : "";
        text += below(3) == 0 ? "0" : std::to_string(1 + below(9)) + digits(below(20));
        if (below(3) != 0) text += "." + digits(1 + below(20));
        if (below(4) == 0) text += "e" + std::to_string(static_cast<int>(below(60)) - 30);
        double expected = 0;
        std::from_chars(text.data(), text.data() + text.size(), expected);
        ASSERT_TRUE(isSameBits(readWhole(text, numberOf), expected)) << text;
    }
}

TEST(JSONReader, ReadsEveryIntegerOf64Bits) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    for (int round = 0; round < 20'000; ++round) {
        const auto bits = random() >> (random() % 64);
        ASSERT_EQ(readWhole(std::to_string(bits), unsignedOf), bits);
        const auto value = std::bit_cast<std::int64_t>(random()) >> (random() % 64);
        ASSERT_EQ(readWhole(std::to_string(value), integerOf), value);
        ASSERT_EQ(readWhole(std::to_string(value), valueOf), Value(value));
    }
}
