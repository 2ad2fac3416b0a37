// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONErrorOf.h"
#include "tests/platform/json/JSONRandomValues.h"

#include <VorlanFoundation/Platform/JSONSerialization.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using Array = Value::Array;
using Dictionary = Value::Dictionary;
using Kind = JSONError::Kind;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

std::string textOf(const Value& value, JSONWritingOptions options = {}) {
    return textFromData(JSONSerialization::data(value, options));
}

Value valueOf(std::string_view text, JSONReadingOptions options = {}) {
    return JSONSerialization::jsonObject(dataFromText(text), options);
}

JSONError errorOfWriting(const Value& value, JSONWritingOptions options = {}) {
    return tests::errorOf([&] { static_cast<void>(JSONSerialization::data(value, options)); });
}

JSONError errorOfReading(std::string_view text, JSONReadingOptions options = {}) {
    return tests::errorOf([&] { static_cast<void>(valueOf(text, options)); });
}

Value within(Value value, std::size_t arrays) {
    for (std::size_t i = 0; i < arrays; ++i) {
        Array outer;
        outer.push_back(std::move(value));
        value = std::move(outer);
    }
    return value;
}

// What JSON cannot express as it is.
std::vector<Value> wrongValues() {
    return {Date(0),         dataFromText("a"),      infinity, -infinity, std::nan(""), "\xFF",
            "a\xED\xA0\x80", Dictionary{{"\xC3", 1}}};
}

Value damaged(const Value& whole, tests::JSONRandomValues& random) {
    const auto all = wrongValues();
    const Value wrong = all[random.below(all.size())];
    if (random.below(2) == 0) return Array{whole, wrong};
    return Dictionary{{"whole", whole}, {"wrong", Array{0, wrong}}};
}

} // namespace

TEST(JSONSerialization, ArraysAndDictionariesAreValid) {
    EXPECT_TRUE(JSONSerialization::isValidJSONObject(Value(Array())));
    EXPECT_TRUE(JSONSerialization::isValidJSONObject(Value(Dictionary())));
    EXPECT_TRUE(JSONSerialization::isValidJSONObject(Dictionary()));
    EXPECT_TRUE(JSONSerialization::isValidJSONObject(Dictionary{
        {"a", Array{1, -2.5, "é", true, nullptr, Dictionary{{"", Array()}}}}, {"b", std::string(1, '\0')}}));
}

TEST(JSONSerialization, SingleValuesAreNotValid) {
    for (const Value& value :
         {Value(), Value(1), Value(1.5), Value("a"), Value(true), Value(Date(0)), Value(Data())})
        EXPECT_FALSE(JSONSerialization::isValidJSONObject(value)) << value.description();
}

TEST(JSONSerialization, WhatJSONCannotExpressIsNotValid) {
    for (const Value& wrong : wrongValues()) {
        EXPECT_FALSE(JSONSerialization::isValidJSONObject(Value(Array{1, wrong}))) << wrong.description();
        EXPECT_FALSE(JSONSerialization::isValidJSONObject(Dictionary{{"a", Dictionary{{"b", wrong}}}}));
        EXPECT_THROW(static_cast<void>(JSONSerialization::data(Value(Array{1, wrong}))), JSONError);
        EXPECT_THROW(static_cast<void>(JSONSerialization::data(Dictionary{{"a", Array{wrong}}})), JSONError);
        EXPECT_THROW(static_cast<void>(textOf(wrong, {.fragmentsAllowed = true})), JSONError);
    }
}

TEST(JSONSerialization, WritesArraysAndDictionariesInTheOrderOfTheirKeys) {
    EXPECT_EQ(textOf(Dictionary{{"width", 800}}), R"({"width":800})");
    EXPECT_EQ(textFromData(JSONSerialization::data(Dictionary{{"b", 1}, {"a", Array{1.0, "x/\n", nullptr}}})),
              R"({"a":[1.0,"x/\n",null],"b":1})");
    EXPECT_EQ(textOf(Array()), "[]");
}

TEST(JSONSerialization, WritesOverSeveralLines) {
    const Dictionary dictionary{{"a", Array{1, 2}}, {"b", Dictionary()}};
    const std::string expected = "{\n  \"a\": [\n    1,\n    2\n  ],\n  \"b\": {}\n}";
    EXPECT_EQ(textFromData(JSONSerialization::data(dictionary, {.prettyPrinted = true})), expected);
    EXPECT_EQ(textOf(dictionary, {.prettyPrinted = true}), expected);
}

TEST(JSONSerialization, WritesSingleValuesOnlyWhenTheyAreAllowed) {
    for (const auto& [value, text] : {std::pair<Value, std::string>(nullptr, "null"),
                                      {true, "true"},
                                      {-1, "-1"},
                                      {0.5, "0.5"},
                                      {"a", "\"a\""}}) {
        EXPECT_EQ(textOf(value, {.fragmentsAllowed = true}), text);
        EXPECT_EQ(errorOfWriting(value).path(), "$");
    }
}

TEST(JSONSerialization, NamesThePathOfWhatItCannotWrite) {
    EXPECT_EQ(errorOfWriting(Dictionary{{"a", Array{0, Dictionary{{"unit price", infinity}}}}}).path(),
              R"($.a[1]["unit price"])");
    EXPECT_EQ(errorOfWriting(Dictionary{{"a", Array{0, infinity}}}).kind(), Kind::nonFinite);
    EXPECT_EQ(errorOfWriting(Array{"\xFF"}).kind(), Kind::illFormedText);
    EXPECT_EQ(errorOfWriting(Dictionary{{"when", Date(0)}}).path(), "$.when");
    EXPECT_EQ(errorOfWriting(Array{1, dataFromText("a")}).path(), "$[1]");
    EXPECT_EQ(errorOfWriting(Array{1, dataFromText("a")}).byteOffset(), std::nullopt);
}

TEST(JSONSerialization, AllowsADepthOf512) {
    const Value deepest = within(Array(), 511);
    EXPECT_TRUE(JSONSerialization::isValidJSONObject(deepest));
    EXPECT_EQ(textOf(deepest), std::string(512, '[') + std::string(512, ']'));
    EXPECT_EQ(valueOf(textOf(deepest)), deepest);
    const Value tooDeep = within(Array(), 512);
    EXPECT_FALSE(JSONSerialization::isValidJSONObject(tooDeep));
    EXPECT_EQ(errorOfWriting(tooDeep).kind(), Kind::tooDeep);
    EXPECT_EQ(errorOfReading(std::string(513, '[') + std::string(513, ']')).kind(), Kind::tooDeep);
    EXPECT_TRUE(JSONSerialization::isValidJSONObject(within(1, 512)));
    EXPECT_FALSE(JSONSerialization::isValidJSONObject(within(1, 513)));
    EXPECT_FALSE(JSONSerialization::isValidJSONObject(within(Dictionary(), 5000)));
}

TEST(JSONSerialization, ReadsArraysAndObjects) {
    EXPECT_EQ(valueOf(R"( {"a":[1,2.0,"b",null],"a2":{}} )"),
              Value(Dictionary{{"a", Array{1, 2.0, "b", nullptr}}, {"a2", Dictionary()}}));
    EXPECT_EQ(valueOf("[]"), Value(Array()));
    EXPECT_EQ(valueOf(R"({"a":1,"a":2})"), Value(Dictionary{{"a", 2}}));
}

TEST(JSONSerialization, ReadsSingleValuesOnlyWhenTheyAreAllowed) {
    for (const char* text : {"null", "true", "1", "-0.5", "\"a\""}) {
        EXPECT_NO_THROW(static_cast<void>(valueOf(text, {.fragmentsAllowed = true}))) << text;
        EXPECT_EQ(errorOfReading(text).path(), "$") << text;
    }
    EXPECT_EQ(valueOf("null", {.fragmentsAllowed = true}), Value());
    EXPECT_EQ(valueOf("-0.5", {.fragmentsAllowed = true}), Value(-0.5));
}

TEST(JSONSerialization, RefusesWhatIsNoJSON) {
    for (const char* text : {"", " ", "[1", "[1,]", "{\"a\"}", "[1]2", "[\"\xFF\"]", "\xEF\xBB\xBF[]"}) {
        EXPECT_EQ(errorOfReading(text).kind(), Kind::malformed) << text;
        EXPECT_EQ(errorOfReading(text, {.fragmentsAllowed = true}).kind(), Kind::malformed) << text;
    }
    EXPECT_EQ(errorOfReading(R"({"a":[0,1e999]})").path(), "$.a[1]");
    EXPECT_EQ(errorOfReading(R"({"a":[0,1e999]})").byteOffset(), 8U);
}

TEST(JSONSerialization, WhatIsValidIsWrittenAndWhatIsNotThrows) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    tests::JSONRandomValues random(seed);
    for (int i = 0; i < 3000; ++i) {
        const Value whole = random.document(5);
        ASSERT_TRUE(JSONSerialization::isValidJSONObject(whole));
        ASSERT_EQ(JSONSerialization::jsonObject(JSONSerialization::data(whole)), whole);
        const Value broken = damaged(whole, random);
        ASSERT_FALSE(JSONSerialization::isValidJSONObject(broken)) << broken.description();
        ASSERT_THROW(static_cast<void>(JSONSerialization::data(broken)), JSONError) << broken.description();
    }
}
