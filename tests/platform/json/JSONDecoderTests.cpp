// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONErrorOf.h"

#include <VorlanFoundation/Platform/JSONDecoder.h>

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using namespace vorlan;
using tests::decodingErrorOf;
using Kind = JSONError::Kind;

namespace {

struct Item {
    std::string name;
    double price = 0;
};
VORLAN_CODABLE(Item, name, price)

struct Order {
    int id = 0;
    std::vector<Item> items;
    std::optional<Item> gift;
    std::map<std::string, Item> extras;
};
VORLAN_CODABLE(Order, id, items, gift, extras)

constexpr std::string_view order = R"({"id":1,"items":[{"name":"a","price":1}],"extras":{}})";

const JSONDecoder strict{.unknownMembers = JSONUnknownMembers::refuse};

template <class T>
void expectMismatch(std::string_view text, std::string_view message) {
    SCOPED_TRACE(text);
    const auto error = decodingErrorOf<T>(text);
    EXPECT_EQ(error.kind(), Kind::typeMismatch);
    EXPECT_EQ(error.message(), message);
    EXPECT_EQ(error.path(), "$");
    EXPECT_EQ(error.byteOffset(), 0U);
}

std::string arrays(std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

} // namespace

TEST(JSONDecoder, ReadsTextsAndData) {
    EXPECT_EQ(JSONDecoder().decode<Order>(order).items.at(0).name, "a");
    EXPECT_EQ(JSONDecoder().decode<Order>(dataFromText(order)).items.at(0).name, "a");
    EXPECT_EQ(JSONDecoder().decode<Order>(std::string(order)).id, 1);
    EXPECT_EQ(JSONDecoder().decode<int>(" 7 "), 7);
}

TEST(JSONDecoder, ReadsAnEndlessTextNoFurtherThanItsLength) {
    const std::string text = "12345";
    EXPECT_EQ(JSONDecoder().decode<int>(std::string_view(text).substr(0, 2)), 12);
    EXPECT_EQ(JSONDecoder().decode<std::vector<int>>(std::string_view("[1,2]]]]").substr(0, 5)).size(), 2U);
}

TEST(JSONDecoder, SaysWhatItExpectedAndWhatItFound) {
    expectMismatch<bool>("1", "expected a boolean, found a number");
    expectMismatch<bool>("null", "expected a boolean, found null");
    expectMismatch<int>("\"1\"", "expected a number, found a string");
    expectMismatch<unsigned>("true", "expected a number, found a boolean");
    expectMismatch<double>("[1]", "expected a number, found an array");
    expectMismatch<float>("{}", "expected a number, found an object");
    expectMismatch<double>("null", "expected a number, found null");
    expectMismatch<std::string>("1.5", "expected a string, found a number");
    expectMismatch<std::string>("false", "expected a string, found a boolean");
    expectMismatch<std::string>("null", "expected a string, found null");
    expectMismatch<std::string>("[]", "expected a string, found an array");
    expectMismatch<std::vector<int>>("{}", "expected an array, found an object");
    expectMismatch<std::vector<int>>("\"\"", "expected an array, found a string");
    expectMismatch<std::vector<int>>("null", "expected an array, found null");
    expectMismatch<Item>("[]", "expected an object, found an array");
    expectMismatch<Item>("-1", "expected an object, found a number");
    expectMismatch<std::map<std::string, int>>("true", "expected an object, found a boolean");
    expectMismatch<std::optional<bool>>("\"true\"", "expected a boolean, found a string");
}

TEST(JSONDecoder, NamesThePathAndTheByte) {
    const std::string_view text =
        R"({"id":1,"items":[{"name":"a","price":1},{"name":"b","price":2},{"name":"c","price":3},)"
        R"({"name":"d","price": "free"}],"extras":{}})";
    const auto error = decodingErrorOf<Order>(text);
    EXPECT_EQ(error.kind(), Kind::typeMismatch);
    EXPECT_EQ(error.path(), "$.items[3].price");
    EXPECT_EQ(error.message(), "expected a number, found a string");
    ASSERT_EQ(error.byteOffset(), text.find("\"free\""));
    EXPECT_EQ(std::string(error.what()), "$.items[3].price: expected a number, found a string (at byte " +
                                             std::to_string(text.find("\"free\"")) + ")");
}

TEST(JSONDecoder, NamesMembersThatAreNoIdentifiersInQuotes) {
    const std::string_view text = "{\"unit price\" : [0,\n\n true]}";
    const auto error = decodingErrorOf<std::map<std::string, std::vector<int>>>(text);
    EXPECT_EQ(error.path(), R"($["unit price"][1])");
    EXPECT_EQ(error.byteOffset(), text.find("true"));
    EXPECT_EQ((decodingErrorOf<std::map<std::string, int>>(R"({"a-b":""})").path()), R"($["a-b"])");
    EXPECT_EQ((decodingErrorOf<std::map<std::string, int>>(R"({"a_1":""})").path()), "$.a_1");
    EXPECT_EQ((decodingErrorOf<std::map<std::string, int>>(R"({"\u0061\u0062":""})").path()), "$.ab");
}

TEST(JSONDecoder, CountsBytesNotLetters) {
    const std::string_view text = "[\"é€😀\" , \"\\u00e9\", 1]";
    EXPECT_EQ(decodingErrorOf<std::vector<std::string>>(text).byteOffset(), text.find("1]"));
    EXPECT_EQ(decodingErrorOf<std::vector<std::string>>(text).path(), "$[2]");
}

TEST(JSONDecoder, NamesThePathOfTheRightOneAmongMany) {
    std::string text = "[";
    for (int i = 0; i < 1000; ++i) text += "[[],[1,2]],";
    text += "[[],[1,2,null]]]";
    using Lists = std::vector<std::vector<std::vector<int>>>;
    EXPECT_EQ(decodingErrorOf<Lists>(text).path(), "$[1000][1][2]");
    EXPECT_EQ(decodingErrorOf<Lists>(text).byteOffset(), text.find("null"));
}

TEST(JSONDecoder, FindsWhereATextCeasesToBeJSON) {
    const auto offsetOf = [](std::string_view text) {
        const auto error = decodingErrorOf<Value>(text);
        EXPECT_EQ(error.kind(), Kind::malformed);
        return error.byteOffset();
    };
    EXPECT_EQ(offsetOf("[1 2]"), 3U);
    EXPECT_EQ(offsetOf("[1,]"), 3U);
    EXPECT_EQ(offsetOf("[,1]"), 1U);
    EXPECT_EQ(offsetOf("{\"a\" 1}"), 5U);
    EXPECT_EQ(offsetOf("{\"a\":1,}"), 7U);
    EXPECT_EQ(offsetOf("{\"a\":1;\"b\":2}"), 6U);
    EXPECT_EQ(offsetOf("{1:2}"), 1U);
    EXPECT_EQ(offsetOf("[1] x"), 4U);
    EXPECT_EQ(offsetOf("{}{}"), 2U);
    EXPECT_EQ(offsetOf("]"), 0U);
}

TEST(JSONDecoder, NamesThePathWhereATextCeasesToBeJSON) {
    EXPECT_EQ(decodingErrorOf<Value>(R"({"a":[0,{"b":tru}]})").path(), "$.a[1].b");
    EXPECT_EQ(decodingErrorOf<Value>(R"({"a":[0,01]})").path(), "$.a[1]");
}

TEST(JSONDecoder, IgnoresMembersThatItDoesNotKnow) {
    const auto value = JSONDecoder().decode<Order>(
        R"({"x":1,"id":1,"more":{"id":2},"items":[{"name":"a","colour":[{}],"price":1}],"extras":{}, "y":"\""})");
    EXPECT_EQ(value.id, 1);
    EXPECT_EQ(value.items.at(0).price, 1);
}

TEST(JSONDecoder, RefusesMembersThatItDoesNotKnowWhenToldTo) {
    EXPECT_EQ(strict.decode<Order>(order).id, 1);
    const std::string_view outer = R"({"id":1,"colour":"red","items":[],"extras":{}})";
    const auto error = decodingErrorOf<Order>(outer, strict);
    EXPECT_EQ(error.kind(), Kind::unknownMember);
    EXPECT_EQ(error.path(), "$.colour");
    EXPECT_TRUE(error.byteOffset().has_value());
    const std::string_view inner =
        R"({"id":1,"items":[{"name":"a","price":1},{"name":"a","full price":1}],"extras":{}})";
    EXPECT_EQ(decodingErrorOf<Order>(inner, strict).path(), R"($.items[1]["full price"])");
    const std::string_view within = R"({"id":1,"items":[],"extras":{"a":{"name":"a","price":1,"x":{}}}})";
    EXPECT_EQ(decodingErrorOf<Order>(within, strict).path(), "$.extras.a.x");
}

TEST(JSONDecoder, KeysOfMapsAreNeverUnknown) {
    EXPECT_EQ((strict.decode<std::map<std::string, int>>(R"({"a":1,"b":2})").size()), 2U);
    EXPECT_EQ(strict.decode<Value>(R"({"a":1})")["a"], Value(1));
}

TEST(JSONDecoder, HoldsWhatItIgnoresToTheGrammar) {
    for (const char* wrong :
         {"01", "tru", "\"\\x\"", "\"\xFF\"", "[1,]", "{\"a\"}", "\"\\uD800\"", "-", "1.", "'a'"}) {
        const auto error =
            decodingErrorOf<Order>(R"({"id":1,"items":[],"extras":{},"x":)" + std::string(wrong) + "}");
        EXPECT_EQ(error.kind(), Kind::malformed) << wrong;
    }
    EXPECT_EQ(JSONDecoder().decode<Order>(R"({"id":1,"items":[],"extras":{},"x":1e999})").id, 1);
}

TEST(JSONDecoder, ReadsToTheDepthThatIsAllowedAndNotBeyond) {
    for (const std::size_t depth : {1U, 2U, 511U, 512U, 2'000U}) {
        const JSONDecoder decoder{.maximumDepth = depth};
        EXPECT_NO_THROW(static_cast<void>(decoder.decode<Value>(arrays(depth)))) << depth;
        const auto error = decodingErrorOf<Value>(arrays(depth + 1), decoder);
        EXPECT_EQ(error.kind(), Kind::tooDeep) << depth;
        EXPECT_EQ(error.byteOffset(), depth);
    }
    EXPECT_NO_THROW(static_cast<void>(JSONDecoder().decode<Value>(arrays(512))));
    EXPECT_EQ(decodingErrorOf<Value>(arrays(513)).kind(), Kind::tooDeep);
}

TEST(JSONDecoder, NamesThePathOfWhatIsTooDeep) {
    EXPECT_EQ(decodingErrorOf<Value>("[0,[0,0,[]]]", {.maximumDepth = 2}).path(), "$[1][2]");
    EXPECT_EQ(decodingErrorOf<Order>(order, {.maximumDepth = 2}).path(), "$.items[0]");
}

TEST(JSONDecoder, CountsTheDepthOfWhatItIgnores) {
    const std::string text = R"({"id":1,"items":[],"extras":{},"x":)";
    EXPECT_EQ(JSONDecoder{.maximumDepth = 5}.decode<Order>(text + arrays(4) + "}").id, 1);
    EXPECT_EQ(decodingErrorOf<Order>(text + arrays(5) + "}", {.maximumDepth = 5}).kind(), Kind::tooDeep);
}

TEST(JSONDecoder, BesideOneAnotherIsNotWithin) {
    const JSONDecoder decoder{.maximumDepth = 2};
    EXPECT_NO_THROW(static_cast<void>(decoder.decode<Value>("[[],{},[0],{\"a\":1},[]]")));
}

TEST(JSONDecoder, ReadsToTheSizeThatIsAllowedAndNotBeyond) {
    const JSONDecoder decoder{.maximumSize = 5};
    EXPECT_EQ(decoder.decode<int>("12345"), 12345);
    const auto error = decodingErrorOf<int>("123456", decoder);
    EXPECT_EQ(error.kind(), Kind::tooLarge);
    EXPECT_EQ(error.path(), "$");
    EXPECT_EQ(decodingErrorOf<int>("1     ", decoder).kind(), Kind::tooLarge);
    EXPECT_EQ(decodingErrorOf<int>("1", {.maximumSize = 0}).kind(), Kind::tooLarge);
}

TEST(JSONDecoder, GoesOnAfterAnError) {
    const JSONDecoder decoder;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(decodingErrorOf<Value>("[1,", decoder).kind(), Kind::malformed);
        EXPECT_EQ(decodingErrorOf<Order>("[]", decoder).kind(), Kind::typeMismatch);
        EXPECT_EQ(decoder.decode<Order>(order).id, 1);
    }
}

TEST(JSONDecoder, ReadsLargeTexts) {
    std::string text = "[";
    for (int i = 0; i < 200'000; ++i) text += std::to_string(i) + ", ";
    text += "0]";
    const auto all = JSONDecoder().decode<std::vector<int>>(text);
    ASSERT_EQ(all.size(), 200'001U);
    EXPECT_EQ(all[123'456], 123'456);
    const std::string letters(3'000'000, 'x');
    EXPECT_EQ(JSONDecoder().decode<std::string>("\"" + letters + "\""), letters);
    EXPECT_EQ(JSONDecoder().decode<int>("1"), 1);
}
