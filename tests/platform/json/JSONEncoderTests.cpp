// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONErrorOf.h"

#include <VorlanFoundation/Platform/JSONEncoder.h>

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

using namespace vorlan;
using tests::encodingErrorOf;

namespace {

struct Point {
    double y = 0;
    double x = 0;
};
VORLAN_CODABLE(Point, y, x)

struct Shape {
    std::string title;
    std::vector<Point> points;
    std::map<std::string, int> counts;
    std::optional<Point> centre;
};
VORLAN_CODABLE(Shape, title, points, counts, centre)

struct HandCoded {
    void encode(JSONWriter& writer) const {
        writer.beginObject();
        writer.key("b");
        writer.writeInteger(1);
        writer.key("a");
        writer.beginObject();
        writer.key("d");
        writer.writeNull();
        writer.key("c");
        writer.writeText("}");
        writer.endObject();
        writer.endObject();
    }
};

struct Texts {
    std::vector<std::map<std::string, std::string>> all;
};
VORLAN_CODABLE(Texts, all)

// In one style the first of these comes first, in the other the second.
struct Styled {
    int aZ = 1;
    int a_a = 2;
};
VORLAN_CODABLE(Styled, aZ, a_a)

const Shape shape{"A", {{1, 2}, {3, 4.5}}, {{"z", 1}, {"a", 2}}, std::nullopt};

template <class T>
std::string sorted(const T& value) {
    return JSONEncoder{.sortedKeys = true}.encodeText(value);
}

template <class T>
std::string pretty(const T& value) {
    return JSONEncoder{.prettyPrinted = true}.encodeText(value);
}

Value nested(std::size_t depth) {
    Value value = Value::Array();
    for (std::size_t i = 1; i < depth; ++i) {
        Value::Array outer;
        outer.push_back(std::move(value));
        value = std::move(outer);
    }
    return value;
}

} // namespace

TEST(JSONEncoder, WritesWithoutBlanks) {
    EXPECT_EQ(JSONEncoder().encodeText(shape),
              R"({"title":"A","points":[{"y":1.0,"x":2.0},{"y":3.0,"x":4.5}],"counts":{"a":2,"z":1}})");
}

TEST(JSONEncoder, GivesTheSameAsDataAndAsText) {
    for (const bool lines : {false, true})
        for (const bool sortedKeys : {false, true}) {
            const JSONEncoder encoder{.prettyPrinted = lines, .sortedKeys = sortedKeys};
            EXPECT_EQ(textFromData(encoder.encode(shape)), encoder.encodeText(shape));
        }
}

TEST(JSONEncoder, WritesSingleValues) {
    EXPECT_EQ(JSONEncoder().encodeText(true), "true");
    EXPECT_EQ(JSONEncoder().encodeText(-5), "-5");
    EXPECT_EQ(JSONEncoder().encodeText(0.5), "0.5");
    EXPECT_EQ(JSONEncoder().encodeText(std::string("a")), "\"a\"");
    EXPECT_EQ(JSONEncoder().encodeText(std::optional<int>()), "null");
    EXPECT_EQ(JSONEncoder().encodeText(Value()), "null");
}

TEST(JSONEncoder, WritesNumbersInAFormThatIsNoIntegers) {
    EXPECT_EQ(JSONEncoder().encodeText(std::vector<double>{3, -0.0, 0.0, 0.1, 1e300, 1.5e-7, -2.25}),
              "[3.0,-0.0,0.0,0.1,1e+300,1.5e-07,-2.25]");
    EXPECT_EQ(JSONEncoder().encodeText(std::vector<float>{3, 0.1F, -0.0F}), "[3.0,0.1,-0.0]");
}

TEST(JSONEncoder, EscapesOnlyWhatMustBe) {
    EXPECT_EQ(JSONEncoder().encodeText(std::string("\"\\/\b\f\n\r\t\x01\x1f\x7F é€😀'<>&")),
              "\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\x7F é€😀'<>&\"");
    EXPECT_EQ(JSONEncoder().encodeText(std::map<std::string, int>{{"a\"\n", 1}}), R"({"a\"\n":1})");
    EXPECT_EQ(JSONEncoder().encodeText(std::string("a\0b", 3)), R"("a\u0000b")");
}

TEST(JSONEncoder, WritesOverSeveralLinesWithTwoBlanksForEachLevel) {
    EXPECT_EQ(pretty(shape), R"({
  "title": "A",
  "points": [
    {
      "y": 1.0,
      "x": 2.0
    },
    {
      "y": 3.0,
      "x": 4.5
    }
  ],
  "counts": {
    "a": 2,
    "z": 1
  }
})");
}

TEST(JSONEncoder, WritesWhatIsEmptyInOnePiece) {
    EXPECT_EQ(pretty(std::vector<int>()), "[]");
    EXPECT_EQ(pretty(std::map<std::string, int>()), "{}");
    EXPECT_EQ(pretty(Value(Value::Dictionary{{"a", Value::Array()}, {"d", Value::Dictionary()}})),
              "{\n  \"a\": [],\n  \"d\": {}\n}");
    EXPECT_EQ(pretty(5), "5");
}

TEST(JSONEncoder, SortsTheMembersOfDescribedTypes) {
    EXPECT_EQ(sorted(shape),
              R"({"counts":{"a":2,"z":1},"points":[{"x":2.0,"y":1.0},{"x":4.5,"y":3.0}],"title":"A"})");
}

TEST(JSONEncoder, SortsTheMembersOfWhatIsCodedByHand) {
    EXPECT_EQ(sorted(HandCoded()), R"({"a":{"c":"}","d":null},"b":1})");
    EXPECT_EQ(sorted(std::vector<HandCoded>(2)),
              R"([{"a":{"c":"}","d":null},"b":1},{"a":{"c":"}","d":null},"b":1}])");
    EXPECT_EQ(JSONEncoder().encodeText(HandCoded()), R"({"b":1,"a":{"d":null,"c":"}"}})");
}

TEST(JSONEncoder, SortsTheKeysOfUnorderedMaps) {
    std::unordered_map<std::string, int> map;
    for (int i = 100; i < 200; ++i) map.emplace(std::to_string(i), i);
    std::string expected = "{";
    for (int i = 100; i < 200; ++i) {
        const auto number = std::to_string(i);
        expected += "\"" + number + "\":" + number + (i < 199 ? "," : "}");
    }
    EXPECT_EQ(sorted(map), expected);
}

TEST(JSONEncoder, SortsByTheBytesOfTheNamesNotOfTheirEscapes) {
    const std::unordered_map<std::string, int> map{{"b", 1},  {"B", 2},   {"é", 3},  {"\"", 4},
                                                   {"", 5},   {"ab", 6},  {"a", 7},  {"~", 8},
                                                   {"\n", 9}, {"\\", 10}, {"0", 11}, {"😀", 12}};
    EXPECT_EQ(sorted(map),
              R"({"":5,"\n":9,"\"":4,"0":11,"B":2,"\\":10,"a":7,"ab":6,"b":1,"~":8,"é":3,"😀":12})");
}

TEST(JSONEncoder, SortsTheNamesAsTheyAreWritten) {
    EXPECT_EQ(sorted(Styled()), R"({"aZ":1,"a_a":2})");
    const JSONEncoder snake{.sortedKeys = true, .strategies = {.keys = JSONKeys::snakeCase}};
    EXPECT_EQ(snake.encodeText(Styled()), R"({"a_a":2,"a_z":1})");
}

TEST(JSONEncoder, SortsOverSeveralLines) {
    EXPECT_EQ((JSONEncoder{.prettyPrinted = true, .sortedKeys = true}.encodeText(HandCoded())), R"({
  "a": {
    "c": "}",
    "d": null
  },
  "b": 1
})");
}

TEST(JSONEncoder, RefusesTextsThatAreIllFormed) {
    for (const char* text :
         {"\xFF", "a\x80", "\xC3", "\xED\xA0\x80", "\xC0\xAF", "\xF4\x90\x80\x80", "abcdefghi\xE2\x82"}) {
        const auto error = encodingErrorOf(Texts{{{}, {{"unit price", "fine"}, {"x", text}}}});
        EXPECT_EQ(error.kind(), JSONError::Kind::illFormedText);
        EXPECT_EQ(error.path(), "$.all[1].x");
        EXPECT_EQ(error.byteOffset(), std::nullopt);
    }
    EXPECT_EQ(encodingErrorOf(std::map<std::string, int>{{"\xFF", 1}}).kind(),
              JSONError::Kind::illFormedText);
}

TEST(JSONEncoder, RefusesNumbersThatAreNotFinite) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double number : {infinity, -infinity, nan}) {
        const auto error = encodingErrorOf(Shape{"A", {{1, 2}, {3, number}}, {}, {}});
        EXPECT_EQ(error.kind(), JSONError::Kind::nonFinite);
        EXPECT_EQ(error.path(), "$.points[1].x");
        EXPECT_EQ(error.byteOffset(), std::nullopt);
        EXPECT_EQ(encodingErrorOf(static_cast<float>(number)).kind(), JSONError::Kind::nonFinite);
        EXPECT_EQ(encodingErrorOf(Value(Value::Array{1, number})).path(), "$[1]");
    }
}

TEST(JSONEncoder, NamesMembersOfMapsInPaths) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(encodingErrorOf(std::map<std::string, double>{{"price", nan}}).path(), "$.price");
    EXPECT_EQ(encodingErrorOf(std::map<std::string, double>{{"unit price", nan}}).path(),
              R"($["unit price"])");
    EXPECT_EQ(encodingErrorOf(std::map<std::string, std::vector<double>>{{"a-b", {0, nan}}}).path(),
              R"($["a-b"][1])");
    EXPECT_EQ(encodingErrorOf(nan).path(), "$");
}

TEST(JSONEncoder, FindsTheSamePathsWhenItSortsAndOverSeveralLines) {
    const Shape wrong{"A", {{1, 2}, {3, std::numeric_limits<double>::infinity()}}, {}, {}};
    for (const bool lines : {false, true})
        for (const bool sortedKeys : {false, true})
            EXPECT_EQ(encodingErrorOf(wrong, {.prettyPrinted = lines, .sortedKeys = sortedKeys}).path(),
                      "$.points[1].x");
}

TEST(JSONEncoder, WritesToTheDepthThatIsAllowedAndNotBeyond) {
    for (const std::size_t depth : {1U, 2U, 100U, 512U, 2'000U}) {
        const JSONEncoder encoder{.maximumDepth = depth};
        EXPECT_EQ(encoder.encodeText(nested(depth)), std::string(depth, '[') + std::string(depth, ']'));
        const auto error = encodingErrorOf(nested(depth + 1), encoder);
        EXPECT_EQ(error.kind(), JSONError::Kind::tooDeep);
        EXPECT_EQ(error.byteOffset(), std::nullopt);
    }
    EXPECT_EQ(encodingErrorOf(nested(4), {.maximumDepth = 2}).path(), "$[0][0]");
    EXPECT_EQ(encodingErrorOf(shape, {.maximumDepth = 2}).path(), "$.points[0]");
    EXPECT_EQ(encodingErrorOf(nested(513)).kind(), JSONError::Kind::tooDeep);
}

TEST(JSONEncoder, GoesOnAfterAnError) {
    const JSONEncoder encoder;
    EXPECT_EQ(encodingErrorOf(std::string("\xFF"), encoder).kind(), JSONError::Kind::illFormedText);
    EXPECT_EQ(encoder.encodeText(std::string("fine")), "\"fine\"");
}
