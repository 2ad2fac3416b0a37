// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Value.h>

#include <gtest/gtest.h>

#include <cmath>
#include <concepts>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

enum class Bare { one };
struct Stranger {};

// Takes what becomes a value without being told to.
Value::Kind kindOf(const Value& value) {
    return value.kind();
}

const Data bytes = dataFromText("\x01\xFFz");

} // namespace

// Nothing becomes a Boolean or a number by accident.
static_assert(!std::constructible_from<Value, void*>);
static_assert(!std::constructible_from<Value, const int*>);
static_assert(!std::constructible_from<Value, char>);
static_assert(!std::constructible_from<Value, char16_t>);
static_assert(!std::constructible_from<Value, wchar_t>);
static_assert(!std::constructible_from<Value, Bare>);
static_assert(!std::constructible_from<Value, Stranger>);
static_assert(!std::constructible_from<Value, std::vector<Stranger>>);
static_assert(!std::constructible_from<Value, std::map<std::string, Stranger>>);
static_assert(!std::constructible_from<Value, std::map<int, int>>);
static_assert(std::is_nothrow_move_constructible_v<Value>);
static_assert(std::is_nothrow_move_assignable_v<Value>);

TEST(Value, IsNullFromTheStart) {
    EXPECT_TRUE(Value().isNull());
    EXPECT_EQ(Value().kind(), Value::Kind::null);
    EXPECT_EQ(Value(), Value(nullptr));
    EXPECT_FALSE(Value(0).isNull());
}

TEST(Value, IsMadeOfAllThatItCanBe) {
    using enum Value::Kind;
    EXPECT_EQ(kindOf(nullptr), null);
    EXPECT_EQ(kindOf(true), boolean);
    EXPECT_EQ(kindOf(0), integer);
    EXPECT_EQ(kindOf(std::int8_t{-1}), integer);
    EXPECT_EQ(kindOf(std::uint8_t{1}), integer);
    EXPECT_EQ(kindOf(short{1}), integer);
    EXPECT_EQ(kindOf(1U), integer);
    EXPECT_EQ(kindOf(1L), integer);
    EXPECT_EQ(kindOf(1LL), integer);
    EXPECT_EQ(kindOf(std::numeric_limits<std::uint64_t>::max()), integer);
    EXPECT_EQ(kindOf(1.0F), number);
    EXPECT_EQ(kindOf(1.0), number);
    EXPECT_EQ(kindOf("text"), text);
    EXPECT_EQ(kindOf(std::string_view("text")), text);
    EXPECT_EQ(kindOf(std::string("text")), text);
    EXPECT_EQ(kindOf(bytes), data);
    EXPECT_EQ(kindOf(Data()), data);
    EXPECT_EQ(kindOf(Date(0)), date);
    EXPECT_EQ(kindOf(Value::Array()), array);
    EXPECT_EQ(kindOf(Value::Dictionary()), dictionary);
}

TEST(Value, IsMadeOfVectorsAndMapsOfWhatItCanBe) {
    EXPECT_EQ(Value(std::vector<int>{1, 2}), Value(Value::Array{1, 2}));
    EXPECT_EQ(Value(std::vector<bool>{true, false}), Value(Value::Array{true, false}));
    EXPECT_EQ(Value(std::vector<std::string>{"a"}), Value(Value::Array{"a"}));
    EXPECT_EQ(Value(std::vector<const char*>{"a"}), Value(Value::Array{"a"}));
    EXPECT_EQ(Value(std::vector<Data>{bytes}), Value(Value::Array{bytes}));
    EXPECT_EQ(Value(std::vector<double>()), Value(Value::Array()));
    const Value::Dictionary expected{{"a", 1}, {"b", 2}};
    EXPECT_EQ(Value(std::map<std::string, int>{{"a", 1}, {"b", 2}}), Value(expected));
    EXPECT_EQ(Value(std::map<std::string, int, std::greater<>>{{"a", 1}, {"b", 2}}), Value(expected));
    EXPECT_EQ(Value(std::map<std::string, Value>{{"a", 1}, {"b", 2}}), Value(expected));
    EXPECT_EQ(Value(std::map<std::string, std::vector<int>>{{"a", {1}}}),
              Value(Value::Dictionary{{"a", Value::Array{1}}}));
}

TEST(Value, GivesItsContentWithoutACopy) {
    const Value text("abc");
    ASSERT_NE(text.text(), nullptr);
    EXPECT_EQ(*text.text(), "abc");
    EXPECT_EQ(text.text(), text.text());
    EXPECT_EQ(text.data(), nullptr);
    EXPECT_EQ(text.array(), nullptr);
    EXPECT_EQ(text.dictionary(), nullptr);
    const Value data(bytes);
    ASSERT_NE(data.data(), nullptr);
    EXPECT_EQ(*data.data(), bytes);
    EXPECT_EQ(data.text(), nullptr);
}

TEST(Value, ArrayAndDictionaryAreChangedInPlace) {
    Value array(Value::Array{1});
    array.array()->push_back("two");
    EXPECT_EQ(array, Value(Value::Array{1, "two"}));
    Value dictionary(Value::Dictionary{{"a", 1}});
    (*dictionary.dictionary())["b"] = array;
    EXPECT_EQ(dictionary["b"][1].as<std::string>(), "two");
    EXPECT_EQ(array.dictionary(), nullptr);
    EXPECT_EQ(dictionary.array(), nullptr);
}

TEST(Value, CopiesAreIndependent) {
    Value original(Value::Array{Value(Value::Array{1})});
    const Value copy = original;
    original.array()->front().array()->push_back(2);
    EXPECT_EQ(copy, Value(Value::Array{Value(Value::Array{1})}));
    EXPECT_NE(original, copy);
}

TEST(Value, ElementsAreReachedThroughAllLevels) {
    const Value value(Value::Dictionary{
        {"items", Value::Array{Value::Dictionary{{"price", 3}}, Value::Dictionary{{"price", 4}}}}});
    EXPECT_EQ(value["items"][0]["price"].as<int>(), 3);
    EXPECT_EQ(value["items"][1]["price"].as<int>(), 4);
    const std::string key = "items";
    EXPECT_EQ(value[key].array()->size(), 2U);
}

TEST(Value, ElementThatIsNotThereIsNull) {
    const Value value(Value::Dictionary{{"a", Value::Array{1}}, {"n", nullptr}});
    EXPECT_TRUE(value["b"].isNull());
    EXPECT_TRUE(value["n"].isNull());
    EXPECT_TRUE(value["a"][1].isNull());
    EXPECT_TRUE(value["a"][std::numeric_limits<std::size_t>::max()].isNull());
    EXPECT_TRUE(value["a"]["a"].isNull());
    EXPECT_TRUE(value[0].isNull());
    EXPECT_TRUE(value["b"]["c"][7]["d"].isNull());
    EXPECT_TRUE(Value("text")["a"].isNull());
    EXPECT_TRUE(Value("text")[0].isNull());
    EXPECT_TRUE(Value()["a"].isNull());
}

TEST(Value, EqualityIsWithinAKind) {
    const std::vector<Value> different{nullptr,
                                       false,
                                       true,
                                       0,
                                       1,
                                       -1,
                                       std::numeric_limits<std::uint64_t>::max(),
                                       0.0,
                                       1.0,
                                       "",
                                       "1",
                                       "a",
                                       Data(),
                                       bytes,
                                       Date(0),
                                       Date(1),
                                       Value::Array(),
                                       Value::Array{1},
                                       Value::Array{1, 1},
                                       Value::Array{1.0},
                                       Value::Dictionary(),
                                       Value::Dictionary{{"a", 1}},
                                       Value::Dictionary{{"a", 1.0}},
                                       Value::Dictionary{{"b", 1}}};
    for (std::size_t i = 0; i < different.size(); ++i) {
        for (std::size_t j = 0; j < different.size(); ++j)
            EXPECT_EQ(different[i] == different[j], i == j)
                << different[i].description() << " and " << different[j].description();
    }
}

TEST(Value, IntegersAreEqualWhateverTheyWereMadeOf) {
    EXPECT_EQ(Value(std::uint8_t{7}), Value(std::int64_t{7}));
    EXPECT_EQ(Value(std::uint64_t{7}), Value(7));
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(Value(static_cast<std::uint64_t>(most)), Value(most));
    EXPECT_NE(Value(static_cast<std::uint64_t>(-1)), Value(-1));
    EXPECT_EQ(Value(0.5F), Value(0.5));
    EXPECT_EQ(Value(0.0), Value(-0.0));
}

TEST(Value, NaNEqualsNothing) {
    const Value value(std::nan(""));
    EXPECT_NE(value, Value(value));
    EXPECT_NE(Value(Value::Array{value}), Value(Value::Array{value}));
    EXPECT_NE(Value(Date(std::nan(""))), Value(Date(std::nan(""))));
}

TEST(Value, IsDescribedForPeople) {
    EXPECT_EQ(Value().description(), "null");
    EXPECT_EQ(Value(true).description(), "true");
    EXPECT_EQ(Value(false).description(), "false");
    EXPECT_EQ(Value(-42).description(), "-42");
    EXPECT_EQ(Value(std::numeric_limits<std::int64_t>::min()).description(), "-9223372036854775808");
    EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).description(), "18446744073709551615");
    EXPECT_EQ(Value(0.1).description(), "0.1");
    EXPECT_EQ(Value(3.0).description(), "3.0");
    EXPECT_EQ(Value(bytes).description(), "<01ff7a>");
    EXPECT_EQ(Value(Data()).description(), "<>");
    EXPECT_EQ(Value(Date(0)).description(), "2001-01-01 00:00:00 +0000");
    EXPECT_EQ(Value(Value::Array()).description(), "[]");
    EXPECT_EQ(Value(Value::Dictionary()).description(), "{}");
}

TEST(Value, DescriptionOfTextIsTheTextAndIsQuotedWithinOthers) {
    EXPECT_EQ(Value("say \"hi\"\n").description(), "say \"hi\"\n");
    EXPECT_EQ(Value(Value::Array{"say \"hi\"\n", "\\", ""}).description(),
              R"(["say \"hi\"\u000a", "\\", ""])");
    const Value nested(Value::Dictionary{{"b", Value::Array{1, nullptr}}, {"a\t", 2.5}});
    EXPECT_EQ(nested.description(), R"({"a\u0009": 2.5, "b": [1, null]})");
}

TEST(Value, DescriptionIsWellFormedWhateverTheTextsAre) {
    EXPECT_EQ(Value("a\xFF").description(), "a\xEF\xBF\xBD");
    EXPECT_EQ(Value(Value::Dictionary{{"\xC3", "\x80\xE2\x82\xAC"}}).description(),
              "{\"\xEF\xBF\xBD\": \"\xEF\xBF\xBD\xE2\x82\xAC\"}");
}

TEST(Data, TextBecomesItsBytesAndBack) {
    const std::string text("a\0\xFF", 3);
    const auto data = dataFromText(text);
    EXPECT_EQ(data, (Data{std::byte{'a'}, std::byte{0}, std::byte{0xFF}}));
    EXPECT_EQ(textFromData(data), text);
    EXPECT_TRUE(dataFromText("").empty());
    EXPECT_EQ(textFromData({}), "");
}
