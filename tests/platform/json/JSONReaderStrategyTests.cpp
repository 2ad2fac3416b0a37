// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONReaderSupport.h"

#include <VorlanFoundation/Platform/JSONFieldNames.h>
#include <VorlanFoundation/Platform/JSONReader.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

using namespace vorlan;
using namespace jsontests;
using Kind = JSONError::Kind;

namespace {

JSONReading datesAs(JSONDates dates) {
    return {.strategies = {.dates = dates}};
}

double secondsOf(JSONReader& reader) {
    return reader.readDate().timeIntervalSinceReferenceDate();
}

Data dataOf(JSONReader& reader) {
    return reader.readData();
}

const JSONReading numbersForData{.strategies = {.data = JSONBytes::numbers}};

const JSONReading words{
    .strategies = {.nonFinite =
                       JSONNonFinite{.positiveInfinity = "+inf", .negativeInfinity = "-inf", .nan = "none"}}};

constexpr std::array<std::string_view, 4> names{"id", "displayName", "score", "displayNameLength"};

// The members of an object, as their places among the names, each with its value.
std::vector<std::pair<std::size_t, std::int64_t>> fieldsOf(std::string_view text,
                                                           const JSONReading& reading = {}) {
    const detail::JSONFieldNames fields{names};
    JSONReader reader(text, reading);
    std::vector<std::pair<std::size_t, std::int64_t>> found;
    reader.enterObject();
    for (auto index = reader.nextField(fields, 0); index < names.size();
         index = reader.nextField(fields, index + 1))
        found.emplace_back(index, reader.readInteger());
    reader.finish();
    return found;
}

using Fields = std::vector<std::pair<std::size_t, std::int64_t>>;

} // namespace

TEST(JSONReader, ReadsDatesByTheStrategy) {
    EXPECT_EQ(readWhole("-1.5", secondsOf), -1.5);
    EXPECT_EQ(readWhole("978307201", secondsOf, datesAs(JSONDates::secondsSince1970)), 1.0);
    EXPECT_EQ(readWhole("978307200250", secondsOf, datesAs(JSONDates::millisecondsSince1970)), 0.25);
    EXPECT_EQ(readWhole("\"2001-01-01T01:00:00.5+01:00\"", secondsOf, datesAs(JSONDates::iso8601)), 0.5);
    EXPECT_EQ(readWhole(R"("2001\u002d01-01T00:00:00Z")", secondsOf, datesAs(JSONDates::iso8601)), 0.0);
}

TEST(JSONReader, RefusesWhatIsNoDate) {
    expectError(errorOf("\"2001-02-29T00:00:00Z\"", secondsOf, datesAs(JSONDates::iso8601)),
                Kind::invalidValue, "\"2001-02-29T00:00:00Z\" is no date as in RFC 3339", "$", 0);
    expectError(errorOf(" 5", secondsOf, datesAs(JSONDates::iso8601)), Kind::typeMismatch,
                "expected a string, found a number", "$", 1);
    expectError(errorOf("\"x\"", secondsOf), Kind::typeMismatch, "expected a number, found a string", "$", 0);
    EXPECT_EQ(errorOf("1e400", secondsOf).kind(), Kind::outOfRange);
}

TEST(JSONReader, ReadsDataByTheStrategy) {
    EXPECT_EQ(readWhole("\"\"", dataOf), Data());
    EXPECT_EQ(readWhole(R"("YQBi\/w==")", dataOf).size(), 4U);
    EXPECT_EQ(readWhole("\"aGk=\"", dataOf), dataFromText("hi"));
    EXPECT_EQ(readWhole("[]", dataOf, numbersForData), Data());
    EXPECT_EQ(readWhole("[104, 1.05e2]", dataOf, numbersForData), dataFromText("hi"));
    EXPECT_EQ(readWhole("[0, 255]", dataOf, numbersForData), (Data{std::byte{0}, std::byte{255}}));
}

TEST(JSONReader, RefusesWhatIsNoData) {
    expectError(errorOf("[\"aGk\"]",
                        [](JSONReader& reader) {
                            reader.enterArray();
                            if (reader.nextElement()) static_cast<void>(reader.readData());
                        }),
                Kind::invalidValue, "the string is not in base64", "$[0]", 1);
    EXPECT_EQ(errorOf("[104]", dataOf).kind(), Kind::typeMismatch);
    for (const char* byte : {"256", "-1", "1.5", "1e400"}) {
        SCOPED_TRACE(byte);
        expectError(errorOf("[1, " + std::string(byte) + "]", dataOf, numbersForData), Kind::outOfRange,
                    "a byte is a number from 0 to 255", "$[1]", 4);
    }
    expectError(errorOf("[1, null]", dataOf, numbersForData), Kind::typeMismatch,
                "expected a number, found null", "$[1]", 4);
}

TEST(JSONReader, ReadsTextsThatStandForNumbers) {
    const auto number = [](JSONReader& reader) { return reader.readNumber(); };
    const auto narrow = [](JSONReader& reader) { return reader.readFloat(); };
    EXPECT_EQ(readWhole("\"+inf\"", number, words), std::numeric_limits<double>::infinity());
    EXPECT_EQ(readWhole("\"-inf\"", number, words), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(readWhole(R"("n\u006fne")", number, words)));
    EXPECT_EQ(readWhole("\"+inf\"", narrow, words), std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(readWhole("\"none\"", narrow, words)));
    EXPECT_EQ(readWhole("1.5", number, words), 1.5);
    EXPECT_TRUE(std::isnan(readWhole("\"none\"", secondsOf, words)));
    expectError(errorOf("\"Infinity\"", number, words), Kind::typeMismatch,
                "expected a number, found a string", "$", 0);
    expectError(errorOf("\"+inf\"", number), Kind::typeMismatch, "expected a number, found a string", "$", 0);
    EXPECT_EQ(
        readWhole("\"+inf\"", [](JSONReader& reader) { return reader.readValue(); }, words), Value("+inf"));
    EXPECT_EQ(errorOf(
                  "\"+inf\"", [](JSONReader& reader) { static_cast<void>(reader.readInteger()); }, words)
                  .kind(),
              Kind::typeMismatch);
}

TEST(JSONReader, FindsFieldsInAnyOrder) {
    EXPECT_EQ(fieldsOf(R"({"id":1,"displayName":2,"score":3,"displayNameLength":4})"),
              (Fields{{0, 1}, {1, 2}, {2, 3}, {3, 4}}));
    EXPECT_EQ(fieldsOf(R"({ "displayNameLength" : 4 , "score" : 3 , "id" : 1 })"),
              (Fields{{3, 4}, {2, 3}, {0, 1}}));
    EXPECT_EQ(fieldsOf(R"({"score":1,"score":2})"), (Fields{{2, 1}, {2, 2}}));
    EXPECT_EQ(fieldsOf("{}"), Fields());
}

TEST(JSONReader, FindsFieldsWhoseNamesHaveEscapes) {
    EXPECT_EQ(fieldsOf(R"({"\u0069d":1,"display\u004eame":2})"), (Fields{{0, 1}, {1, 2}}));
}

TEST(JSONReader, FindsFieldsByTheStyleOfKeys) {
    const JSONReading snakes{.strategies = {.keys = JSONKeys::snakeCase}};
    EXPECT_EQ(fieldsOf(R"({"id":1,"display_name":2,"displayName":5,"display_name_length":3})", snakes),
              (Fields{{0, 1}, {1, 2}, {3, 3}}));
}

TEST(JSONReader, SkipsMembersThatAreNoFields) {
    EXPECT_EQ(fieldsOf(R"({"i":[1],"id":1,"idd":{"id":7},"displayNam":null,"":"x","\n":1,"score":3,"z":0})"),
              (Fields{{0, 1}, {2, 3}}));
    EXPECT_EQ(errorOf(R"({"unknown": [1,]})",
                      [](JSONReader& reader) {
                          reader.enterObject();
                          static_cast<void>(reader.nextField(detail::JSONFieldNames{names}, 0));
                      })
                  .kind(),
              Kind::malformed);
}

TEST(JSONReader, RefusesMembersThatAreNoFieldsWhenAsked) {
    const auto read = [](JSONReader& reader) {
        const detail::JSONFieldNames fields{names};
        reader.enterArray();
        static_cast<void>(reader.nextElement());
        reader.enterObject();
        while (reader.nextField(fields, 0) < names.size()) reader.skip();
    };
    const JSONReading strict{.unknownMembers = JSONUnknownMembers::refuse};
    expectError(errorOf(R"([{"id": 1, "other name": 2}])", read, strict), Kind::unknownMember,
                "is not a member of the type", "$[0][\"other name\"]", 25);
    // Names within values are the host's affair.
    const auto value =
        readWhole(R"({"any": 1})", [](JSONReader& reader) { return reader.readValue(); }, strict);
    EXPECT_EQ(value, Value(Value::Dictionary{{"any", 1}}));
}

TEST(JSONReader, NamesTheMissingMember) {
    const auto read = [](JSONReader& reader) {
        const detail::JSONFieldNames fields{names};
        reader.enterObject();
        static_cast<void>(reader.nextKey());
        reader.enterArray();
        while (reader.nextElement()) {
            reader.enterObject();
            while (reader.nextField(fields, 0) < names.size()) reader.skip();
        }
        reader.failForMissing(fields, 1);
    };
    expectError(errorOf(R"({"all": []})", read), Kind::missingMember, "is missing", "$.all.displayName", 8);
    const auto readOne = [](JSONReader& reader) {
        const detail::JSONFieldNames fields{names};
        reader.enterArray();
        static_cast<void>(reader.nextElement());
        reader.enterObject();
        while (reader.nextField(fields, 0) < names.size()) reader.skip();
        reader.failForMissing(fields, 1);
    };
    expectError(errorOf(R"([ {"id": {}} ])", readOne), Kind::missingMember, "is missing", "$[0].displayName",
                2);
    expectError(errorOf("[{}]", readOne, {.strategies = {.keys = JSONKeys::snakeCase}}), Kind::missingMember,
                "is missing", "$[0].display_name", 1);
}
