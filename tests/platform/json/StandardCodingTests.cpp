// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONErrorOf.h"

#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>
#include <VorlanFoundation/Platform/RawValues.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <deque>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {
enum class Theme { light, dark, system };
enum class Level : unsigned char { low, high };
} // namespace

template <>
struct vorlan::RawValues<Theme> {
    static constexpr std::array cases{std::pair(Theme::light, std::string_view("light")),
                                      std::pair(Theme::dark, std::string_view("quite \"dark\""))};
};

template <>
struct vorlan::RawValues<Level> {
    static constexpr std::array cases{std::pair(Level::low, -10), std::pair(Level::high, 10)};
};

using namespace vorlan;
using tests::decodingErrorOf;
using Kind = JSONError::Kind;

namespace {

// To the text that is given, and back.
template <class T>
void expectBothWays(const T& value, std::string_view text) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JSONEncoder().encodeText(value), text);
    EXPECT_EQ(JSONDecoder().decode<T>(text), value);
}

template <class T>
class StandardCodingOfIntegers : public ::testing::Test {};
using Integers = ::testing::Types<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t,
                                  std::uint32_t, std::int64_t, std::uint64_t, long long, unsigned long long>;
TYPED_TEST_SUITE(StandardCodingOfIntegers, Integers);

// The text of a whole number that is one further from zero.
std::string oneFurther(std::string digits) {
    for (auto at = digits.size(); at-- > 0 && digits[at] != '-';) {
        if (digits[at] != '9') {
            ++digits[at];
            return digits;
        }
        digits[at] = '0';
    }
    return digits;
}

} // namespace

TYPED_TEST(StandardCodingOfIntegers, AreNumbersFromTheLeastToTheGreatest) {
    using Limits = std::numeric_limits<TypeParam>;
    for (const TypeParam value : {Limits::min(), TypeParam{0}, TypeParam{1}, TypeParam{100}, Limits::max()})
        expectBothWays(value, std::to_string(value));
}

TYPED_TEST(StandardCodingOfIntegers, AreRefusedWhereTheyDoNotFit) {
    using Limits = std::numeric_limits<TypeParam>;
    const std::string tooGreat = oneFurther(std::to_string(Limits::max()));
    const std::string tooLittle = Limits::min() == 0 ? "-1" : oneFurther(std::to_string(Limits::min()));
    for (const std::string& text :
         {tooGreat, tooLittle, std::string("100000000000000000000"), std::string("1e30"),
          std::string("-1e30"), std::string("1.5"), std::string("1e-1")}) {
        const auto error = decodingErrorOf<std::vector<TypeParam>>("[0," + text + "]");
        EXPECT_EQ(error.kind(), Kind::outOfRange) << text;
        EXPECT_EQ(error.path(), "$[1]");
        EXPECT_EQ(error.byteOffset(), 3U);
    }
}

TYPED_TEST(StandardCodingOfIntegers, MayBeWrittenWithAFractionOrAnExponent) {
    for (const char* text : {"120", "120.0", "1.2e2", "12e1", "120E0", "1200e-1", "120.000"})
        EXPECT_EQ(JSONDecoder().decode<TypeParam>(text), TypeParam{120}) << text;
    for (const char* text : {"0", "-0", "0.0", "-0.0", "0e5"})
        EXPECT_EQ(JSONDecoder().decode<TypeParam>(text), TypeParam{0}) << text;
}

TEST(StandardCoding, IntegersThatDoNotFitSayWhatTheyWereAskedFor) {
    EXPECT_EQ(decodingErrorOf<std::uint8_t>("300").message(),
              "the number 300 does not fit into 8 bits without a sign");
    EXPECT_EQ(decodingErrorOf<std::int16_t>("-32769").message(),
              "the number -32769 does not fit into 16 bits with a sign");
}

TEST(StandardCoding, Booleans) {
    expectBothWays(true, "true");
    expectBothWays(false, "false");
    EXPECT_EQ(decodingErrorOf<bool>("0").kind(), Kind::typeMismatch);
}

TEST(StandardCoding, FloatingNumbers) {
    expectBothWays(0.1, "0.1");
    expectBothWays(0.1F, "0.1");
    EXPECT_EQ(JSONDecoder().decode<double>("3"), 3.0);
    EXPECT_EQ(JSONDecoder().decode<float>("3"), 3.0F);
    EXPECT_EQ(JSONDecoder().decode<double>("18446744073709551616"), 18446744073709551616.0);
    EXPECT_EQ(decodingErrorOf<double>("1e400").kind(), Kind::outOfRange);
    EXPECT_EQ(decodingErrorOf<double>("-1e400").kind(), Kind::outOfRange);
}

TEST(StandardCoding, FloatsAreRoundedOnce) {
    // Just above the middle between 1 and the next float: by way of a double it would be rounded to 1.
    EXPECT_EQ(JSONDecoder().decode<float>("1.000000059604644775390625000000001"), std::nextafter(1.0F, 2.0F));
    EXPECT_EQ(JSONDecoder().decode<float>("1.000000059604644775390625"), 1.0F);
    EXPECT_EQ(JSONDecoder().decode<float>("0.1"), 0.1F);
}

TEST(StandardCoding, FloatsAreRefusedWhereTheyDoNotFit) {
    EXPECT_EQ(decodingErrorOf<float>("1e39").kind(), Kind::outOfRange);
    EXPECT_EQ(decodingErrorOf<float>("-3.5e38").kind(), Kind::outOfRange);
    EXPECT_EQ(JSONDecoder().decode<float>("3.4028234663852886e38"), std::numeric_limits<float>::max());
    EXPECT_EQ(JSONDecoder().decode<float>("1e-60"), 0.0F);
}

TEST(StandardCoding, Texts) {
    expectBothWays(std::string(), "\"\"");
    expectBothWays(std::string("a\nb\0c\"é😀", 12), "\"a\\nb\\u0000c\\\"é😀\"");
}

TEST(StandardCoding, EnumerationsAreTheirTexts) {
    expectBothWays(Theme::light, "\"light\"");
    expectBothWays(std::vector{Theme::dark, Theme::light}, R"(["quite \"dark\"","light"])");
    const auto error = decodingErrorOf<std::vector<Theme>>(R"(["light", "grey"])");
    EXPECT_EQ(error.kind(), Kind::invalidValue);
    EXPECT_EQ(error.message(), "no case stands for \"grey\"");
    EXPECT_EQ(error.path(), "$[1]");
    EXPECT_EQ(error.byteOffset(), 10U);
    EXPECT_EQ(decodingErrorOf<Theme>("\"Light\"").kind(), Kind::invalidValue);
    EXPECT_EQ(decodingErrorOf<Theme>("0").kind(), Kind::typeMismatch);
}

TEST(StandardCoding, EnumerationsAreTheirNumbers) {
    expectBothWays(Level::high, "10");
    expectBothWays(std::vector{Level::low}, "[-10]");
    EXPECT_EQ(JSONDecoder().decode<Level>("1e1"), Level::high);
    const auto error = decodingErrorOf<Level>("5");
    EXPECT_EQ(error.kind(), Kind::invalidValue);
    EXPECT_EQ(error.message(), "no case stands for 5");
    EXPECT_EQ(decodingErrorOf<Level>("5000000000").kind(), Kind::outOfRange);
    EXPECT_EQ(decodingErrorOf<Level>("\"high\"").kind(), Kind::typeMismatch);
}

TEST(StandardCoding, Optionals) {
    expectBothWays(std::optional<int>(1), "1");
    expectBothWays(std::optional<int>(), "null");
    expectBothWays(std::vector<std::optional<std::string>>{"a", {}, ""}, R"(["a",null,""])");
    expectBothWays(std::map<std::string, std::optional<int>>{{"a", {}}, {"b", 2}}, R"({"a":null,"b":2})");
}

TEST(StandardCoding, SmartPointers) {
    const auto unique = JSONDecoder().decode<std::vector<std::unique_ptr<int>>>("[1,null]");
    EXPECT_EQ(*unique.at(0), 1);
    EXPECT_EQ(unique.at(1), nullptr);
    EXPECT_EQ(JSONEncoder().encodeText(unique), "[1,null]");
    const auto shared =
        JSONDecoder().decode<std::map<std::string, std::shared_ptr<const std::string>>>(R"({"a":"b"})");
    EXPECT_EQ(*shared.at("a"), "b");
    EXPECT_EQ(JSONEncoder().encodeText(shared), R"({"a":"b"})");
    EXPECT_EQ(JSONDecoder().decode<std::shared_ptr<int>>("null"), nullptr);
}

TEST(StandardCoding, ContainersOfElementsAreArrays) {
    expectBothWays(std::vector<int>{1, 2, 3}, "[1,2,3]");
    expectBothWays(std::vector<int>(), "[]");
    expectBothWays(std::vector<bool>{true, false, true}, "[true,false,true]");
    expectBothWays(std::deque<std::string>{"b", "a"}, R"(["b","a"])");
    expectBothWays(std::list<double>{1.5}, "[1.5]");
    expectBothWays(std::vector<std::list<std::deque<int>>>{{{1}, {}}, {}}, "[[[1],[]],[]]");
    expectBothWays(std::array<int, 3>{1, 2, 3}, "[1,2,3]");
    expectBothWays(std::array<std::array<int, 2>, 2>{{{1, 2}, {3, 4}}}, "[[1,2],[3,4]]");
    expectBothWays(std::array<std::string, 1>{"a"}, R"(["a"])");
    expectBothWays(std::array<int, 0>{}, "[]");
}

TEST(StandardCoding, SetsAreArrays) {
    expectBothWays(std::set<int>{3, 1, 2}, "[1,2,3]");
    EXPECT_EQ(JSONDecoder().decode<std::set<int>>("[2,1,2]"), (std::set<int>{1, 2}));
    expectBothWays(std::multiset<int>{1, 1}, "[1,1]");
    expectBothWays(std::unordered_set<std::string>{"one"}, R"(["one"])");
    const std::unordered_set<int> many{1, 2, 3, 4, 5};
    EXPECT_EQ(JSONDecoder().decode<std::unordered_set<int>>(JSONEncoder().encode(many)), many);
}

TEST(StandardCoding, MapsByTextsAreObjects) {
    expectBothWays(std::map<std::string, int>{{"b", 2}, {"a", 1}, {"", 0}}, R"({"":0,"a":1,"b":2})");
    expectBothWays(std::unordered_map<std::string, bool>{{"a\"", true}}, R"({"a\"":true})");
    expectBothWays(std::map<std::string, std::map<std::string, std::vector<int>>>{{"a", {{"b", {1}}}}},
                   R"({"a":{"b":[1]}})");
    EXPECT_EQ((JSONDecoder().decode<std::map<std::string, int>>(R"({"a":1,"b":2,"a":3})")),
              (std::map<std::string, int>{{"a", 3}, {"b", 2}}));
}

TEST(StandardCoding, MapsByEnumerationsAreObjects) {
    using Colours = std::map<Theme, std::string>;
    expectBothWays(Colours{{Theme::light, "white"}, {Theme::dark, "black"}},
                   R"({"light":"white","quite \"dark\"":"black"})");
    expectBothWays(std::unordered_map<Theme, int>{{Theme::light, 1}}, R"({"light":1})");
    const auto error = decodingErrorOf<Colours>(R"({"light":"white","grey":"grey"})");
    EXPECT_EQ(error.kind(), Kind::invalidValue);
    EXPECT_EQ(error.message(), "no case stands for \"grey\"");
    EXPECT_EQ(error.path(), "$.grey");
}

TEST(StandardCoding, TuplesAndPairsAreArraysOfTheirLengths) {
    using Row = std::tuple<int, std::string, std::optional<bool>>;
    expectBothWays(Row{1, "a", true}, R"([1,"a",true])");
    expectBothWays(Row{1, "a", {}}, R"([1,"a",null])");
    expectBothWays(std::pair<std::string, std::vector<int>>{"a", {1}}, R"(["a",[1]])");
    expectBothWays(std::tuple<>(), "[]");
    expectBothWays(std::tuple<int>(1), "[1]");
    EXPECT_EQ(decodingErrorOf<Row>(R"([1,2,true])").path(), "$[1]");
}

TEST(StandardCoding, ArraysOfAnotherLengthAreRefused) {
    for (const char* text : {"[]", "[1]", "[1,2,3]", "[1,2,[]]"}) {
        for (const auto& error :
             {decodingErrorOf<std::pair<int, int>>(text), decodingErrorOf<std::tuple<int, int>>(text),
              decodingErrorOf<std::array<int, 2>>(text)}) {
            EXPECT_EQ(error.kind(), Kind::typeMismatch) << text;
            EXPECT_EQ(error.message(), "expected an array of 2 elements") << text;
        }
    }
    EXPECT_EQ((decodingErrorOf<std::map<std::string, std::array<int, 1>>>(R"({"a":[1,2]})").path()),
              "$.a[1]");
    EXPECT_EQ(decodingErrorOf<std::tuple<>>("[1]").kind(), Kind::typeMismatch);
}

TEST(StandardCoding, ValuesAreWhatTheyAre) {
    const std::string_view text = R"({"a":[1,-2.5,"b",true,null,18446744073709551615],"c":{}})";
    const auto value = JSONDecoder().decode<Value>(text);
    EXPECT_EQ(value, Value(Value::Dictionary{{"a", Value::Array{1, -2.5, "b", true, nullptr,
                                                                std::numeric_limits<std::uint64_t>::max()}},
                                             {"c", Value::Dictionary()}}));
    EXPECT_EQ(JSONEncoder().encodeText(value), text);
    expectBothWays(std::vector<Value>{1, "a", nullptr}, R"([1,"a",null])");
    expectBothWays(std::array<Value, 1>{Value(Value::Array{1})}, "[[1]]");
}

TEST(StandardCoding, ValuesKeepIntegersAndNumbersApart) {
    expectBothWays(Value(1), "1");
    expectBothWays(Value(1.0), "1.0");
    EXPECT_EQ(JSONDecoder().decode<Value>("1e0").kind(), Value::Kind::number);
    EXPECT_EQ(JSONDecoder().decode<Value>("-7").kind(), Value::Kind::integer);
}
