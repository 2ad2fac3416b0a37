// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONWriter.h>

#include <VorlanFoundation/Platform/FunctionRef.h>
#include <VorlanFoundation/Platform/JSONFieldNames.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

std::string written(FunctionRef<void(JSONWriter&)> write, const JSONWriting& writing = {}) {
    JSONWriter writer(writing);
    write(writer);
    return std::move(writer).takeText();
}

const auto writeShape = [](JSONWriter& writer) {
    writer.beginObject();
    writer.key("name");
    writer.writeText("Ada");
    writer.key("corners");
    writer.beginArray();
    writer.writeInteger(1);
    writer.beginObject();
    writer.key("x");
    writer.writeNull();
    writer.key("empty");
    writer.beginObject();
    writer.endObject();
    writer.endObject();
    writer.beginArray();
    writer.endArray();
    writer.endArray();
    writer.key("closed");
    writer.writeBoolean(true);
    writer.endObject();
};

void writeMember(JSONWriter& writer, std::string_view name, std::int64_t value) {
    writer.key(name);
    writer.writeInteger(value);
}

} // namespace

TEST(JSONWriter, WritesWhatTheHeaderShows) {
    JSONWriter writer;
    writer.beginObject();
    writer.key("name");
    writer.writeText("Ada");
    writer.endObject();
    EXPECT_EQ(textFromData(std::move(writer).takeData()), R"({"name":"Ada"})");
}

TEST(JSONWriter, SingleValuesAreTexts) {
    EXPECT_EQ(written([](JSONWriter& writer) { writer.writeNull(); }), "null");
    EXPECT_EQ(written([](JSONWriter& writer) { writer.writeBoolean(true); }), "true");
    EXPECT_EQ(written([](JSONWriter& writer) { writer.writeBoolean(false); }), "false");
    EXPECT_EQ(written([](JSONWriter& writer) { writer.writeInteger(-7); }), "-7");
    EXPECT_EQ(written([](JSONWriter& writer) { writer.writeText(""); }), R"("")");
    EXPECT_EQ(written([](JSONWriter& writer) { writer.beginArray(), writer.endArray(); }), "[]");
    EXPECT_EQ(written([](JSONWriter& writer) { writer.beginObject(), writer.endObject(); }), "{}");
}

TEST(JSONWriter, IntegersAreWrittenUpToTheirLimits) {
    const auto text = written([](JSONWriter& writer) {
        writer.beginArray();
        writer.writeInteger(0);
        writer.writeInteger(std::numeric_limits<std::int64_t>::min());
        writer.writeInteger(std::numeric_limits<std::int64_t>::max());
        writer.writeUnsigned(std::numeric_limits<std::uint64_t>::max());
        writer.endArray();
    });
    EXPECT_EQ(text, "[0,-9223372036854775808,9223372036854775807,18446744073709551615]");
}

TEST(JSONWriter, NestsArraysAndObjects) {
    EXPECT_EQ(written(writeShape), R"({"name":"Ada","corners":[1,{"x":null,"empty":{}},[]],"closed":true})");
}

TEST(JSONWriter, PrettyPrintedTextHasALineForEachAndTwoBlanksForEachLevel) {
    EXPECT_EQ(written(writeShape, {.prettyPrinted = true}), R"({
  "name": "Ada",
  "corners": [
    1,
    {
      "x": null,
      "empty": {}
    },
    []
  ],
  "closed": true
})");
}

TEST(JSONWriter, SortsMembersOfEachObjectByTheBytesOfTheirNames) {
    const auto write = [](JSONWriter& writer) {
        writer.beginObject();
        writeMember(writer, "\xC3\xA9", 1);
        writeMember(writer, "b", 2);
        writer.key("Z");
        writer.beginObject();
        writeMember(writer, "y", 3);
        writeMember(writer, "x", 4);
        writer.endObject();
        writeMember(writer, "ba", 5);
        writeMember(writer, "", 6);
        writer.endObject();
    };
    EXPECT_EQ(written(write, {.sortedKeys = true}),
              "{\"\":6,\"Z\":{\"x\":4,\"y\":3},\"b\":2,\"ba\":5,\"\xC3\xA9\":1}");
    EXPECT_EQ(written(write, {.prettyPrinted = true, .sortedKeys = true}),
              "{\n  \"\": 6,\n  \"Z\": {\n    \"x\": 4,\n    \"y\": 3\n  },\n  \"b\": 2,\n  \"ba\": 5,\n"
              "  \"\xC3\xA9\": 1\n}");
}

// Not of what is written for them: a line feed comes before a blank, though its backslash comes after "Z".
TEST(JSONWriter, SortsByNamesAsTheyAreWithoutEscapes) {
    const auto text = written(
        [](JSONWriter& writer) {
            writer.beginObject();
            for (const std::string_view name : {"a]", "a\\", "aZ", "a ", "a\n", "a\x1F", "a\"", "a\b"})
                writeMember(writer, name, 0);
            writer.endObject();
        },
        {.sortedKeys = true});
    EXPECT_EQ(text, R"({"a\b":0,"a\n":0,"a\u001f":0,"a ":0,"a\"":0,"aZ":0,"a\\":0,"a]":0})");
}

TEST(JSONWriter, MembersOfTheSameNameStayInTheirOrder) {
    const auto text = written(
        [](JSONWriter& writer) {
            writer.beginObject();
            for (int number = 0; number < 40; ++number)
                writeMember(writer, number % 2 == 0 ? "b" : "a", number);
            writer.endObject();
        },
        {.sortedKeys = true});
    std::string expected = "{";
    for (const int parity : {1, 0})
        for (int number = parity; number < 40; number += 2)
            expected +=
                (parity == 1 ? "\"a\":" : "\"b\":") + std::to_string(number) + (number == 38 ? "}" : ",");
    EXPECT_EQ(text, expected);
}

// Against the same members, put in order before they are written.
TEST(JSONWriter, RandomMembersAreSortedAsTheirNamesAre) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::string_view characters[] = {"a", "b", "\n", "\"", "\\", "\x7F", "\x1B", "é", " ", "]", "["};
    for (int round = 0; round < 2000; ++round) {
        std::vector<std::string> names(random() % 12);
        for (auto& name : names)
            for (auto length = random() % 4; length-- > 0;)
                name += characters[random() % std::size(characters)];
        const auto write = [&](JSONWriter& writer) {
            writer.beginObject();
            for (const auto& name : names) writer.key(name), writer.writeUnsigned(name.size());
            writer.endObject();
        };
        const bool isPretty = random() % 2 == 0;
        const auto sorted = written(write, {.prettyPrinted = isPretty, .sortedKeys = true});
        std::ranges::sort(names); // Equal names have equal values.
        ASSERT_EQ(sorted, written(write, {.prettyPrinted = isPretty}));
    }
}

TEST(JSONWriter, SortedObjectsAmongSiblingsAreIndependent) {
    const auto text = written(
        [](JSONWriter& writer) {
            writer.beginArray();
            for (int count = 0; count < 4; ++count) {
                writer.beginObject();
                for (int number = count; number-- > 0;) writeMember(writer, std::to_string(number), number);
                writer.endObject();
            }
            writer.endArray();
        },
        {.sortedKeys = true});
    EXPECT_EQ(text, R"([{},{"0":0},{"0":0,"1":1},{"0":0,"1":1,"2":2}])");
}

TEST(JSONWriter, FieldsHaveTheNamesOfTheirStyle) {
    static constexpr std::array<std::string_view, 4> declared{"id", "userID", "aRatherLongNameOfAMember",
                                                              "HTMLText"};
    const detail::JSONFieldNames names(declared);
    const auto write = [&](JSONWriter& writer) {
        writer.beginObject();
        for (std::size_t index = names.size(); index-- > 0;) {
            writer.field(names, index);
            writer.writeUnsigned(index);
        }
        writer.endObject();
    };
    EXPECT_EQ(written(write), R"({"HTMLText":3,"aRatherLongNameOfAMember":2,"userID":1,"id":0})");
    EXPECT_EQ(written(write, {.strategies = {.keys = JSONKeys::snakeCase}}),
              R"({"html_text":3,"a_rather_long_name_of_a_member":2,"user_id":1,"id":0})");
    EXPECT_EQ(written(write, {.prettyPrinted = true, .sortedKeys = true}),
              "{\n  \"HTMLText\": 3,\n  \"aRatherLongNameOfAMember\": 2,\n  \"id\": 0,\n  \"userID\": 1\n}");
}

TEST(JSONWriter, FieldNamesOfEachLengthAreWhole) {
    for (std::size_t length = 1; length <= 40; ++length) {
        const std::string name(length, 'n');
        const std::array<std::string_view, 1> declared{name};
        const detail::JSONFieldNames names(declared);
        const auto text = written([&](JSONWriter& writer) {
            writer.beginObject();
            writer.field(names, 0);
            writer.writeNull();
            writer.endObject();
        });
        EXPECT_EQ(text, "{\"" + name + "\":null}");
    }
}

TEST(JSONWriter, ValuesAreWrittenWithAllThatIsInThem) {
    const Value::Dictionary dictionary{
        {"array", Value::Array{1, -2.5, "three", nullptr, true, Value(Value::Array{})}},
        {"data", dataFromText("foob")},
        {"date", Date(0.5)},
        {"dictionary", Value::Dictionary{{"largest", std::numeric_limits<std::uint64_t>::max()}}},
    };
    const std::string expected = R"({"array":[1,-2.5,"three",null,true,[]],"data":"Zm9vYg==","date":0.5,)"
                                 R"("dictionary":{"largest":18446744073709551615}})";
    EXPECT_EQ(written([&](JSONWriter& writer) { writer.writeValue(dictionary); }), expected);
    EXPECT_EQ(written([&](JSONWriter& writer) { writer.writeValue(Value(dictionary)); }), expected);
}

TEST(JSONWriter, LongTextsAreWhole) {
    std::string expected = "[";
    const auto text = written([&](JSONWriter& writer) {
        writer.beginArray();
        for (int number = 0; number < 300'000; ++number) {
            writer.writeInteger(number);
            expected += (number == 0 ? "" : ",") + std::to_string(number);
        }
        const std::string large(3'000'000, 'x');
        writer.writeText(large);
        expected += ",\"" + large + "\"]";
        writer.endArray();
    });
    EXPECT_EQ(text, expected);
}

// A type's own coding may encode another as it goes.
TEST(JSONWriter, WritersWithinOneAnotherDoNotDisturbEachOther) {
    const auto text = written([](JSONWriter& writer) {
        writer.beginArray();
        writer.writeText(written(writeShape));
        writer.writeText(
            written([](JSONWriter& inner) { inner.writeText(written(writeShape)); }).substr(0, 9));
        writer.endArray();
    });
    EXPECT_EQ(text, R"(["{\"name\":\"Ada\",\"corners\":[1,{\"x\":null,\"empty\":{}},[]],\"closed\":true}",)"
                    R"("\"{\\\"name\\"])");
}

TEST(JSONWriter, TellsHowItWrites) {
    const JSONWriter writer(
        {.strategies = {.dates = JSONDates::iso8601}, .prettyPrinted = true, .maximumDepth = 7});
    EXPECT_EQ(writer.writing().strategies.dates, JSONDates::iso8601);
    EXPECT_TRUE(writer.writing().prettyPrinted);
    EXPECT_FALSE(writer.writing().sortedKeys);
    EXPECT_EQ(writer.writing().maximumDepth, 7U);
    EXPECT_EQ(JSONWriter().writing().maximumDepth, 512U);
}
