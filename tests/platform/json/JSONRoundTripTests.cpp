// SPDX-License-Identifier: Apache-2.0
// What was encoded is decoded to the same, to the last bit.

#include "tests/platform/json/JSONRandomValues.h"
#include "tests/platform/json/JSONRecogniser.h"

#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace vorlan;
using tests::JSONRandomValues;

namespace {

// The long runs are for builds that are made for speed.
#ifdef NDEBUG
constexpr std::size_t documents = 1'000'000;
constexpr std::size_t numbers = 10'000'000;
#else
constexpr std::size_t documents = 20'000;
constexpr std::size_t numbers = 200'000;
#endif

std::uint64_t newSeed() {
    std::random_device device;
    return (std::uint64_t{device()} << 32) | device();
}

// Of doubles as of floats: the bits, since 0.0 equals -0.0.
template <class Bits, class Number>
std::vector<Bits> bitsOf(const std::vector<Number>& all) {
    std::vector<Bits> bits(all.size());
    std::ranges::transform(all, bits.begin(), [](Number number) { return std::bit_cast<Bits>(number); });
    return bits;
}

template <class Bits, class Number>
void expectBitsAreKept(const std::vector<Number>& all) {
    const auto data = JSONEncoder().encode(all);
    const auto again = JSONDecoder().decode<std::vector<Number>>(data);
    ASSERT_EQ(bitsOf<Bits>(again), bitsOf<Bits>(all));
}

// Every letter that UTF-8 can express, once.
std::string allLetters() {
    std::string letters;
    for (char32_t letter = 0; letter < 0x110000; ++letter)
        if (letter < 0xD800 || letter > 0xDFFF) tests::appendLetter(letters, letter);
    return letters;
}

std::string numberedEscape(char32_t unit, const char* digits) {
    std::string escape = "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) escape += digits[(unit >> shift) & 0xF];
    return escape;
}

// A text in which each letter is written by its number.
std::string escapedLetters(char32_t first, char32_t end, const char* digits) {
    std::string text = "\"";
    for (char32_t letter = first; letter < end; ++letter) {
        if (letter >= 0xD800 && letter <= 0xDFFF) continue;
        if (letter >= 0x10000) {
            text += numberedEscape(0xD800 + ((letter - 0x10000) >> 10), digits);
            text += numberedEscape(0xDC00 + ((letter - 0x10000) & 0x3FF), digits);
        } else {
            text += numberedEscape(letter, digits);
        }
    }
    return text + "\"";
}

} // namespace

TEST(JSONRoundTrip, KeepsAnyDocument) {
    const auto seed = newSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    JSONRandomValues random(seed);
    const JSONEncoder encoder;
    const JSONDecoder decoder;
    for (std::size_t i = 0; i < documents; ++i) {
        const Value value = random.document(static_cast<int>(i % 7));
        const std::string text = encoder.encodeText(value);
        const auto again = decoder.decode<Value>(text);
        ASSERT_EQ(again, value) << text;
        ASSERT_EQ(encoder.encodeText(again), text);
    }
}

TEST(JSONRoundTrip, IsTheSameOverOneLineAsOverMany) {
    const auto seed = newSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    JSONRandomValues random(seed);
    for (int i = 0; i < 3000; ++i) {
        const Value value = random.document(6);
        const std::string pretty = JSONEncoder{.prettyPrinted = true}.encodeText(value);
        ASSERT_EQ(tests::judgementOf(pretty), tests::Judgement::json) << pretty;
        const auto again = JSONDecoder().decode<Value>(pretty);
        ASSERT_EQ(again, value) << pretty;
        ASSERT_EQ(JSONEncoder{.prettyPrinted = true}.encodeText(again), pretty);
        ASSERT_EQ(JSONEncoder().encodeText(again), JSONEncoder().encodeText(value));
    }
}

TEST(JSONRoundTrip, SortedTextsStayAsTheyAre) {
    const auto seed = newSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    JSONRandomValues random(seed);
    for (int i = 0; i < 3000; ++i) {
        const Value value = random.document(6);
        for (const bool pretty : {false, true}) {
            const JSONEncoder encoder{.prettyPrinted = pretty, .sortedKeys = true};
            const std::string sorted = encoder.encodeText(value);
            const auto again = JSONDecoder().decode<Value>(sorted);
            ASSERT_EQ(again, value) << sorted;
            ASSERT_EQ(encoder.encodeText(again), sorted);
        }
    }
}

TEST(JSONRoundTrip, KeepsAnyFiniteDoubleToTheLastBit) {
    const auto seed = newSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    JSONRandomValues random(seed);
    std::vector<double> all(1000);
    for (std::size_t done = 0; done < numbers; done += all.size()) {
        std::ranges::generate(all, [&] { return random.number(); });
        ASSERT_NO_FATAL_FAILURE(expectBitsAreKept<std::uint64_t>(all));
    }
}

TEST(JSONRoundTrip, KeepsAnyFiniteFloatToTheLastBit) {
    const auto seed = newSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    JSONRandomValues random(seed);
    std::vector<float> all(1000);
    for (std::size_t done = 0; done < numbers / 10; done += all.size()) {
        std::ranges::generate(all, [&] { return random.smallNumber(); });
        ASSERT_NO_FATAL_FAILURE(expectBitsAreKept<std::uint32_t>(all));
    }
}

TEST(JSONRoundTrip, KeepsTheNumbersAtTheEdges) {
    using Double = std::numeric_limits<double>;
    std::vector<double> all{0.0,
                            -0.0,
                            Double::min(),
                            Double::max(),
                            Double::lowest(),
                            Double::denorm_min(),
                            Double::epsilon(),
                            0.1,
                            1.0 / 3.0,
                            5e-324,
                            1e23,
                            9007199254740993.0};
    for (int exponent = -1074; exponent < 1024; ++exponent) {
        const double power = std::ldexp(1.0, exponent);
        all.insert(all.end(),
                   {power, -power, std::nextafter(power, 0.0), std::nextafter(power, Double::max())});
    }
    for (int exponent = -323; exponent <= 308; ++exponent)
        all.push_back(std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr));
    expectBitsAreKept<std::uint64_t>(all);
}

TEST(JSONRoundTrip, KeepsTheFloatsAtTheEdges) {
    using Float = std::numeric_limits<float>;
    std::vector<float> all{0.0F, -0.0F, Float::min(), Float::max(), Float::lowest(), Float::denorm_min(),
                           0.1F};
    for (int exponent = -149; exponent < 128; ++exponent) {
        const float power = std::ldexp(1.0F, exponent);
        all.insert(all.end(),
                   {power, -power, std::nextafter(power, 0.0F), std::nextafter(power, Float::max())});
    }
    expectBitsAreKept<std::uint32_t>(all);
}

TEST(JSONRoundTrip, KeepsAnyIntegerOf64Bits) {
    const auto seed = newSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    std::vector<std::uint64_t> unsignedOnes{0, std::numeric_limits<std::uint64_t>::max()};
    for (int bit = 0; bit < 64; ++bit) {
        const std::uint64_t power = std::uint64_t{1} << bit;
        unsignedOnes.insert(unsignedOnes.end(), {power, power - 1, power + 1, ~power});
    }
    for (int i = 0; i < 50'000; ++i) unsignedOnes.push_back(random() >> (i % 64));
    std::vector<std::int64_t> signedOnes(unsignedOnes.begin(), unsignedOnes.end());
    EXPECT_EQ(JSONDecoder().decode<decltype(unsignedOnes)>(JSONEncoder().encode(unsignedOnes)), unsignedOnes);
    EXPECT_EQ(JSONDecoder().decode<decltype(signedOnes)>(JSONEncoder().encode(signedOnes)), signedOnes);
    const Value values(signedOnes);
    EXPECT_EQ(JSONDecoder().decode<Value>(JSONEncoder().encode(values)), values);
}

TEST(JSONRoundTrip, KeepsEveryLetterInTextsAndNames) {
    const std::string letters = allLetters();
    EXPECT_TRUE(JSONDecoder().decode<std::string>(JSONEncoder().encode(letters)) == letters);
    const Value named(Value::Dictionary{{letters, 1}});
    EXPECT_TRUE(JSONDecoder().decode<Value>(JSONEncoder().encode(named)) == named);
}

TEST(JSONRoundTrip, ReadsEveryLetterByItsNumber) {
    for (const char* digits : {"0123456789abcdef", "0123456789ABCDEF"}) {
        std::string read;
        for (char32_t first = 0; first < 0x110000; first += 0x1000)
            read += JSONDecoder().decode<std::string>(escapedLetters(first, first + 0x1000, digits));
        EXPECT_TRUE(read == allLetters());
    }
}

// At every place relative to the blocks of bytes in which texts are gone through.
TEST(JSONRoundTrip, KeepsWhatIsEscapedAtAnyPlaceOfAText) {
    for (std::size_t before = 0; before < 80; ++before)
        for (const char* special : {"\"", "\\", "\n", "\x01", "\x1F", "\x7F", "é", "€", "😀"})
            for (const std::size_t after : {0, 1, 40}) {
                const std::string text = std::string(before, 'x') + special + std::string(after, 'y');
                const std::string written = JSONEncoder().encodeText(text);
                ASSERT_EQ(JSONDecoder().decode<std::string>(written), text) << written;
                ASSERT_EQ(tests::judgementOf(written), tests::Judgement::json) << written;
            }
}
