// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONWriter.h>

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <utility>

using namespace vorlan;

namespace {

std::string written(double number) {
    JSONWriter writer;
    writer.writeNumber(number);
    return std::move(writer).takeText();
}

std::string written(float number) {
    JSONWriter writer;
    writer.writeFloat(number);
    return std::move(writer).takeText();
}

std::size_t digits(const std::string& text) {
    std::string significant;
    for (const char character : text.substr(0, text.find('e')))
        if (character >= '0' && character <= '9') significant += character;
    significant.erase(0, significant.find_first_not_of('0'));
    return significant.find_last_not_of('0') + 1;
}

bool looksLikeNoInteger(const std::string& text) {
    return text.find_first_of(".e") != std::string::npos;
}

template <class Number>
void expectToComeBack(Number number) {
    const auto text = written(number);
    Number read = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    ASSERT_EQ(error, std::errc()) << text;
    ASSERT_EQ(end, text.data() + text.size()) << text;
    ASSERT_EQ(read, number) << text;
    ASSERT_EQ(std::signbit(read), std::signbit(number)) << text;
    ASSERT_TRUE(looksLikeNoInteger(text)) << text;
    ASSERT_LE(digits(text), static_cast<std::size_t>(std::numeric_limits<Number>::max_digits10)) << text;
}

template <class Number, class Bits>
void expectRandomOnesToComeBack() {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    for (int count = 0; count < 100'000;) {
        const auto number = std::bit_cast<Number>(static_cast<Bits>(random()));
        if (!std::isfinite(number)) continue;
        ASSERT_NO_FATAL_FAILURE(expectToComeBack(number));
        ++count;
    }
}

} // namespace

TEST(JSONWriterNumbers, AreWrittenInTheFewestDigitsAndNotAsIntegers) {
    EXPECT_EQ(written(0.1), "0.1");
    EXPECT_EQ(written(3.0), "3.0");
    EXPECT_EQ(written(-0.0), "-0.0");
    EXPECT_EQ(written(0.0), "0.0");
    EXPECT_EQ(written(1e300), "1e+300");
    EXPECT_EQ(written(5e-324), "5e-324");
    EXPECT_EQ(written(1.7976931348623157e308), "1.7976931348623157e+308");
    EXPECT_EQ(written(123456789012.0), "123456789012.0");
    EXPECT_EQ(written(-2.5e-7), "-2.5e-07");
    EXPECT_EQ(written(9007199254740991.0), "9007199254740991.0");
    EXPECT_EQ(written(-738208310103417290752.0), "-7.382083101034173e+20");
}

TEST(JSONWriterNumbers, HaveAnExponentOnlyWhenTheyAreVeryLargeOrSmall) {
    EXPECT_EQ(written(100000.0), "100000.0");
    EXPECT_EQ(written(0.00001), "0.00001");
    EXPECT_EQ(written(-0.000012345678901234567), "-0.000012345678901234568");
    EXPECT_EQ(written(0.0000099), "9.9e-06");
    EXPECT_EQ(written(9007199254740992.0), "9007199254740992.0");
    EXPECT_EQ(written(9007199254740994.0), "9.007199254740994e+15");
    EXPECT_EQ(written(0.00001F), "0.00001");
    EXPECT_EQ(written(20000000.0F), "2e+07");
}

TEST(JSONWriterNumbers, FloatsHaveTheDigitsOfAFloat) {
    EXPECT_EQ(written(0.1F), "0.1");
    EXPECT_EQ(written(16777216.0F), "16777216.0");
    EXPECT_EQ(written(-0.0F), "-0.0");
    EXPECT_EQ(written(1935006592.0F), "1.9350066e+09");
    EXPECT_EQ(written(3.4028235e38F), "3.4028235e+38");
    EXPECT_EQ(written(static_cast<double>(0.1F)), "0.10000000149011612");
}

TEST(JSONWriterNumbers, RandomDoublesComeBackToTheLastBit) {
    expectRandomOnesToComeBack<double, std::uint64_t>();
}

TEST(JSONWriterNumbers, RandomFloatsComeBackToTheLastBit) {
    expectRandomOnesToComeBack<float, std::uint32_t>();
}

TEST(JSONWriterNumbers, WholeNumbersAndThoseOfFewDecimalsComeBackToTheLastBit) {
    for (int exponent = -30; exponent <= 30; ++exponent)
        for (int number = -999; number <= 999; number += 2) {
            const auto scaled = number * std::pow(10.0, exponent);
            ASSERT_NO_FATAL_FAILURE(expectToComeBack(scaled));
            ASSERT_NO_FATAL_FAILURE(expectToComeBack(static_cast<float>(scaled)));
        }
}

TEST(JSONWriterNumbers, PowersOfTwoComeBackToTheLastBit) {
    for (double number = std::numeric_limits<double>::denorm_min(); std::isfinite(number); number *= 2) {
        ASSERT_NO_FATAL_FAILURE(expectToComeBack(number));
        ASSERT_NO_FATAL_FAILURE(expectToComeBack(-number));
    }
}
