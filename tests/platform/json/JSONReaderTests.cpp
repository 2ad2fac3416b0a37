// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONReaderSupport.h"

#include <VorlanFoundation/Platform/JSONReader.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace jsontests;

TEST(JSONReader, ReadsMembersInTheirOrderByName) {
    JSONReader reader(R"( {"name": "Ada", "marks": [1, 2], "born": null} )");
    std::vector<std::string> names;
    reader.enterObject();
    while (const auto key = reader.nextKey()) {
        names.emplace_back(*key);
        reader.skip();
    }
    reader.finish();
    EXPECT_EQ(names, (std::vector<std::string>{"name", "marks", "born"}));
}

TEST(JSONReader, ReadsElementsInTheirOrder) {
    JSONReader reader("[ 3 ,\t1\n,\r2 ]");
    std::vector<std::int64_t> elements;
    reader.enterArray();
    while (reader.nextElement()) elements.push_back(reader.readInteger());
    reader.finish();
    EXPECT_EQ(elements, (std::vector<std::int64_t>{3, 1, 2}));
}

TEST(JSONReader, GoesIntoWhatIsWithinOthers) {
    JSONReader reader(R"({"a":[{"b":[7]},[]]})");
    reader.enterObject();
    EXPECT_EQ(reader.nextKey(), "a");
    reader.enterArray();
    ASSERT_TRUE(reader.nextElement());
    reader.enterObject();
    EXPECT_EQ(reader.nextKey(), "b");
    reader.enterArray();
    ASSERT_TRUE(reader.nextElement());
    EXPECT_EQ(reader.readInteger(), 7);
    EXPECT_FALSE(reader.nextElement());
    EXPECT_EQ(reader.nextKey(), std::nullopt);
    ASSERT_TRUE(reader.nextElement());
    reader.enterArray();
    EXPECT_FALSE(reader.nextElement());
    EXPECT_FALSE(reader.nextElement());
    EXPECT_EQ(reader.nextKey(), std::nullopt);
    reader.finish();
}

TEST(JSONReader, ReadsEmptyObjectsAndArrays) {
    JSONReader object("{ }");
    object.enterObject();
    EXPECT_EQ(object.nextKey(), std::nullopt);
    object.finish();
    JSONReader array("[\n]");
    array.enterArray();
    EXPECT_FALSE(array.nextElement());
    array.finish();
}

TEST(JSONReader, HandsOutAllMembersOfOneName) {
    JSONReader reader(R"({"a":1,"a":2})");
    std::vector<std::int64_t> values;
    reader.enterObject();
    while (const auto key = reader.nextKey()) {
        EXPECT_EQ(*key, "a");
        values.push_back(reader.readInteger());
    }
    EXPECT_EQ(values, (std::vector<std::int64_t>{1, 2}));
}

TEST(JSONReader, TellsWhatIsNextAsOftenAsAsked) {
    using Kind = JSONReader::Kind;
    JSONReader reader(R"([{}, [], "", -1, 0, true, false, null])");
    EXPECT_EQ(reader.nextKind(), Kind::array);
    reader.enterArray();
    for (const auto kind : {Kind::object, Kind::array, Kind::text, Kind::number, Kind::number, Kind::boolean,
                            Kind::boolean, Kind::null}) {
        ASSERT_TRUE(reader.nextElement());
        EXPECT_EQ(reader.nextKind(), kind);
        EXPECT_EQ(reader.nextKind(), kind);
    }
    EXPECT_FALSE(reader.nextElement());
    reader.finish();
}

TEST(JSONReader, ReadsNullOnlyWhereItIs) {
    JSONReader reader("[null, 5, null]");
    reader.enterArray();
    ASSERT_TRUE(reader.nextElement());
    EXPECT_TRUE(reader.readNull());
    ASSERT_TRUE(reader.nextElement());
    EXPECT_FALSE(reader.readNull());
    EXPECT_EQ(reader.readInteger(), 5);
    ASSERT_TRUE(reader.nextElement());
    EXPECT_TRUE(reader.readNull());
    EXPECT_FALSE(reader.nextElement());
    reader.finish();
}

TEST(JSONReader, ReadsBooleans) {
    const auto read = [](JSONReader& reader) { return reader.readBoolean(); };
    EXPECT_TRUE(readWhole("true", read));
    EXPECT_FALSE(readWhole(" false\n", read));
}

TEST(JSONReader, SkipsWhatWasAnnouncedAndNotRead) {
    JSONReader reader(R"({"a": {"b": [1, "]}", {"c": null}]}, "d": [1, [2], {}], "e": 3})");
    reader.enterObject();
    EXPECT_EQ(reader.nextKey(), "a");
    EXPECT_EQ(reader.nextKey(), "d");
    reader.enterArray();
    for (int count = 0; count < 3; ++count) EXPECT_TRUE(reader.nextElement());
    EXPECT_FALSE(reader.nextElement());
    EXPECT_EQ(reader.nextKey(), "e");
    EXPECT_EQ(reader.nextKey(), std::nullopt);
    reader.finish();
}

TEST(JSONReader, CopiesTheText) {
    std::string text = R"(["kept"])";
    JSONReader reader(text);
    text.assign(text.size(), 'x');
    reader.enterArray();
    ASSERT_TRUE(reader.nextElement());
    EXPECT_EQ(reader.readText(), "kept");
    EXPECT_FALSE(reader.nextElement());
    reader.finish();
}

TEST(JSONReader, ReadsAllKindsOfValues) {
    const auto value = readWhole(R"({"b": [null, true, -3, 0.5, "é"], "a": {"x": {}}})",
                                 [](JSONReader& reader) { return reader.readValue(); });
    const Value expected = Value::Dictionary{{"a", Value::Dictionary{{"x", Value::Dictionary()}}},
                                             {"b", Value::Array{nullptr, true, -3, 0.5, "é"}}};
    EXPECT_EQ(value, expected);
}

TEST(JSONReader, LastOfEqualKeysCounts) {
    const auto value = readWhole(R"({"a": [1, 2], "b": 1, "a": {"c": 3}, "\u0062": null})",
                                 [](JSONReader& reader) { return reader.readValue(); });
    const Value expected = Value::Dictionary{{"a", Value::Dictionary{{"c", 3}}}, {"b", nullptr}};
    EXPECT_EQ(value, expected);
}

TEST(JSONReader, ReadsAValueWithinWhatWasEntered) {
    JSONReader reader(R"([[1, {"a": []}], 2])");
    reader.enterArray();
    ASSERT_TRUE(reader.nextElement());
    EXPECT_EQ(reader.readValue(), Value(Value::Array{1, Value::Dictionary{{"a", Value::Array()}}}));
    ASSERT_TRUE(reader.nextElement());
    EXPECT_EQ(reader.readValue(), Value(2));
    EXPECT_FALSE(reader.nextElement());
    reader.finish();
}

TEST(JSONReader, FinishesOnlyBehindAllOfTheText) {
    for (const char* text : {"1 2", "1,", "[] ]", "{} null", "\"a\"\"b\"", "true x"}) {
        SCOPED_TRACE(text);
        const auto error = errorOf(text, skipIt);
        EXPECT_EQ(error.kind(), JSONError::Kind::malformed);
        EXPECT_EQ(error.message(), "expected the end of the text");
        EXPECT_EQ(error.path(), "$");
    }
    EXPECT_EQ(errorOf("[] ]", skipIt).byteOffset(), 3U);
    EXPECT_EQ(errorOf(std::string_view("1\0", 2), skipIt).byteOffset(), 1U);
}

TEST(JSONReader, DoesNotFinishBeforeAllWasRead) {
    expectError(errorOf("[1, 2]", [](JSONReader&) {}), JSONError::Kind::host,
                "the text was not read to its end", "$", 0);
    const auto leaveEarly = [](JSONReader& reader) {
        reader.enterArray();
        ASSERT_TRUE(reader.nextElement());
        EXPECT_EQ(reader.readInteger(), 1);
    };
    expectError(errorOf("[1, 2]", leaveEarly), JSONError::Kind::host, "the text was not read to its end",
                "$[0]", 1);
}

TEST(JSONReader, KnowsHowItReads) {
    const JSONReading reading{.strategies = {.dates = JSONDates::iso8601, .nonFinite = JSONNonFinite()},
                              .unknownMembers = JSONUnknownMembers::refuse,
                              .maximumDepth = 3,
                              .maximumSize = 100};
    const JSONReader reader("1", reading);
    EXPECT_EQ(reader.reading().strategies.dates, JSONDates::iso8601);
    EXPECT_EQ(reader.reading().strategies.nonFinite->nan, "NaN");
    EXPECT_EQ(reader.reading().unknownMembers, JSONUnknownMembers::refuse);
    EXPECT_EQ(reader.reading().maximumDepth, 3U);
    EXPECT_EQ(reader.reading().maximumSize, 100U);
}

TEST(JSONReader, TwoReadTurnAboutInOneThread) {
    JSONReader outer(R"(["[10, \"x\"]", "[20]"])");
    std::int64_t sum = 0;
    outer.enterArray();
    while (outer.nextElement()) {
        JSONReader inner(outer.readText());
        inner.enterArray();
        EXPECT_TRUE(inner.nextElement());
        sum += inner.readInteger();
    }
    outer.finish();
    EXPECT_EQ(sum, 30);
}

TEST(JSONReader, StartsAfreshAfterAnother) {
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(errorOf(R"({"a": [1, {"b": x}]})", readAnything).path(), "$.a[1].b");
        EXPECT_EQ(errorOf("[", readAnything).path(), "$[0]");
        EXPECT_EQ(readWhole(R"("\u00e9")", [](JSONReader& reader) { return std::string(reader.readText()); }),
                  "é");
        // Far larger than what is kept for the next.
        const std::string large = "\"" + std::string(3'000'000, 'x') + "\"";
        EXPECT_EQ(readWhole(large, [](JSONReader& reader) { return reader.readText().size(); }), 3'000'000U);
    }
}

TEST(JSONReader, ReadsOnManyThreads) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([number] {
            for (int round = 0; round < 200; ++round) {
                const auto text = "[" + std::to_string(number) + ",\"\\n" + std::to_string(round) + "\"]";
                const auto value = readWhole(text, [](JSONReader& reader) { return reader.readValue(); });
                EXPECT_EQ(value, Value(Value::Array{number, "\n" + std::to_string(round)}));
            }
        });
    for (auto& thread : threads) thread.join();
}

TEST(JSONReader, MayEndOnAnotherThread) {
    std::optional<JSONReader> reader(std::in_place, "[1]");
    std::thread([&] { reader.reset(); }).join();
    EXPECT_EQ(readWhole("[2]", [](JSONReader& next) { return next.readValue(); }), Value(Value::Array{2}));
}
