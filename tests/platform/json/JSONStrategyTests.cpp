// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONErrorOf.h"

#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using tests::decodingErrorOf;
using tests::encodingErrorOf;

namespace {

// Of 2024-03-05T14:07:09Z.
constexpr double secondsSince2001 = 731'340'429;
constexpr double secondsSince1970 = 1'709'647'629;

constexpr double infinity = std::numeric_limits<double>::infinity();

struct Event {
    Date at{0};
    Data payload;
    std::vector<Date> more;
};
VORLAN_CODABLE(Event, at, payload, more)

struct Account {
    int birthDate = 1;
    int userID = 2;
    int HTMLText = 3;
    int plain = 4;
    int already_snake = 5;
    std::map<std::string, int> byName{{"firstName", 6}};
};
VORLAN_CODABLE(Account, birthDate, userID, HTMLText, plain, already_snake, byName)

struct Bank {
    std::vector<Account> allAccounts;
};
VORLAN_CODABLE(Bank, allAccounts)

// Two names that are the same in the other style; used only in the style in which they are not.
struct Alike {
    int userID = 1;
    int userId = 2;
};
VORLAN_CODABLE(Alike, userID, userId)

const JSONStrategies snakeCase{.keys = JSONKeys::snakeCase};

std::string written(Date date, JSONDates dates) {
    return JSONEncoder{.strategies = {.dates = dates}}.encodeText(date);
}

Date read(std::string_view text, JSONDates dates) {
    return JSONDecoder{.strategies = {.dates = dates}}.decode<Date>(text);
}

std::string written(const Data& data, JSONBytes bytes) {
    return JSONEncoder{.strategies = {.data = bytes}}.encodeText(data);
}

Data readData(std::string_view text, JSONBytes bytes) {
    return JSONDecoder{.strategies = {.data = bytes}}.decode<Data>(text);
}

JSONError::Kind kindOfWrongDate(std::string_view text, JSONDates dates) {
    return decodingErrorOf<Date>(text, {.strategies = {.dates = dates}}).kind();
}

JSONError::Kind kindOfWrongData(std::string_view text, JSONBytes bytes) {
    return decodingErrorOf<Data>(text, {.strategies = {.data = bytes}}).kind();
}

} // namespace

TEST(JSONStrategies, DatesAreSecondsSince2001WhereNothingIsSaid) {
    EXPECT_EQ(JSONEncoder().encodeText(Date(secondsSince2001)), "731340429.0");
    EXPECT_EQ(JSONEncoder().encodeText(Date(0.25)), "0.25");
    EXPECT_EQ(JSONDecoder().decode<Date>("731340429"), Date(secondsSince2001));
    EXPECT_EQ(JSONDecoder().decode<Date>("-1.5e1"), Date(-15));
}

TEST(JSONStrategies, DatesAreSecondsSince1970) {
    EXPECT_EQ(written(Date(secondsSince2001), JSONDates::secondsSince1970), "1709647629.0");
    EXPECT_EQ(read("1709647629", JSONDates::secondsSince1970), Date(secondsSince2001));
    EXPECT_EQ(read("1709647629.5", JSONDates::secondsSince1970), Date(secondsSince2001 + 0.5));
    EXPECT_EQ(read("0", JSONDates::secondsSince1970), Date(secondsSince2001 - secondsSince1970));
}

TEST(JSONStrategies, DatesAreMillisecondsSince1970) {
    EXPECT_EQ(written(Date(secondsSince2001), JSONDates::millisecondsSince1970), "1709647629000.0");
    EXPECT_EQ(read("1709647629000", JSONDates::millisecondsSince1970), Date(secondsSince2001));
    EXPECT_EQ(read("1709647629500", JSONDates::millisecondsSince1970), Date(secondsSince2001 + 0.5));
}

TEST(JSONStrategies, DatesAreTexts) {
    EXPECT_EQ(written(Date(secondsSince2001), JSONDates::iso8601), "\"2024-03-05T14:07:09Z\"");
    EXPECT_EQ(written(Date(secondsSince2001 + 0.5), JSONDates::iso8601), "\"2024-03-05T14:07:09.5Z\"");
    EXPECT_EQ(written(Date(-0.25), JSONDates::iso8601), "\"2000-12-31T23:59:59.75Z\"");
    EXPECT_EQ(read("\"2024-03-05T14:07:09Z\"", JSONDates::iso8601), Date(secondsSince2001));
    EXPECT_EQ(read("\"2024-03-05T14:07:09.500Z\"", JSONDates::iso8601), Date(secondsSince2001 + 0.5));
    EXPECT_EQ(read("\"2024-03-05T15:37:09+01:30\"", JSONDates::iso8601), Date(secondsSince2001));
    EXPECT_EQ(read("\"2024-03-04T23:07:09-15:00\"", JSONDates::iso8601), Date(secondsSince2001));
}

TEST(JSONStrategies, DatesAreTextsFromTheYear1ToTheYear9999) {
    EXPECT_EQ(read("\"0001-01-01T00:00:00Z\"", JSONDates::iso8601), Date(-63'113'904'000.0));
    EXPECT_EQ(written(Date(-63'113'904'000.0), JSONDates::iso8601), "\"0001-01-01T00:00:00Z\"");
    const Date last = read("\"9999-12-31T23:59:59Z\"", JSONDates::iso8601);
    EXPECT_EQ(written(last, JSONDates::iso8601), "\"9999-12-31T23:59:59Z\"");
    for (const double seconds : {last.timeIntervalSinceReferenceDate() + 1, -63'113'904'001.0, 1e300,
                                 infinity, -infinity, std::nan("")}) {
        const auto error = encodingErrorOf(Date(seconds), {.strategies = {.dates = JSONDates::iso8601}});
        EXPECT_EQ(error.kind(), JSONError::Kind::invalidValue) << seconds;
    }
}

TEST(JSONStrategies, TextsThatAreNoDatesAreRefused) {
    for (const char* text :
         {"\"\"", "\"yesterday\"", "\"2024-03-05\"", "\"2024-03-05T14:07:09\"", "\"2024-02-30T00:00:00Z\"",
          "\"2023-02-29T00:00:00Z\"", "\"2024-13-01T00:00:00Z\"", "\"2024-03-05T24:00:00Z\"",
          "\"2024-03-05T14:60:00Z\"", "\"2024-03-05T14:07:09.Z\"", "\"0000-01-01T00:00:00Z\"",
          "\"2024-03-05T14:07:09Z \"", "\"731340429\""})
        EXPECT_EQ(kindOfWrongDate(text, JSONDates::iso8601), JSONError::Kind::invalidValue) << text;
    EXPECT_EQ(kindOfWrongDate("731340429", JSONDates::iso8601), JSONError::Kind::typeMismatch);
    for (const auto dates :
         {JSONDates::deferredToDate, JSONDates::secondsSince1970, JSONDates::millisecondsSince1970})
        EXPECT_EQ(kindOfWrongDate("\"2024-03-05T14:07:09Z\"", dates), JSONError::Kind::typeMismatch);
}

TEST(JSONStrategies, DatesSurviveToTheLastBit) {
    for (const double seconds :
         {0.0, 0.1, 1e-7, 731'340'429.123'456'7, -731'340'429.1, -63'113'904'000.0, 1.0 / 3.0}) {
        const Date date(seconds);
        for (const auto dates : {JSONDates::deferredToDate, JSONDates::iso8601})
            EXPECT_EQ(read(written(date, dates), dates), date) << written(date, dates);
        for (const auto dates : {JSONDates::secondsSince1970, JSONDates::millisecondsSince1970})
            EXPECT_NEAR(read(written(date, dates), dates).timeIntervalSince(date), 0, 1e-5)
                << written(date, dates);
    }
}

TEST(JSONStrategies, DatesThatAreNotFiniteAreNumbersThatAreNotFinite) {
    for (const auto dates :
         {JSONDates::deferredToDate, JSONDates::secondsSince1970, JSONDates::millisecondsSince1970}) {
        EXPECT_EQ(encodingErrorOf(Date(infinity), {.strategies = {.dates = dates}}).kind(),
                  JSONError::Kind::nonFinite);
        const JSONStrategies named{.dates = dates, .nonFinite = JSONNonFinite()};
        EXPECT_EQ(JSONEncoder{.strategies = named}.encodeText(Date(-infinity)), "\"-Infinity\"");
        EXPECT_EQ(JSONDecoder{.strategies = named}.decode<Date>("\"-Infinity\""), Date(-infinity));
    }
}

TEST(JSONStrategies, DataIsABase64TextWhereNothingIsSaid) {
    EXPECT_EQ(JSONEncoder().encodeText(dataFromText("light wo")), "\"bGlnaHQgd28=\"");
    EXPECT_EQ(JSONDecoder().decode<Data>("\"bGlnaHQgd28=\""), dataFromText("light wo"));
    EXPECT_EQ(written(Data(), JSONBytes::base64), "\"\"");
    EXPECT_EQ(readData("\"\"", JSONBytes::base64), Data());
    EXPECT_EQ(readData("\"+\\/8=\"", JSONBytes::base64), (Data{std::byte{0xFB}, std::byte{0xFF}}));
}

TEST(JSONStrategies, DataIsAnArrayOfNumbers) {
    const Data data{std::byte{0}, std::byte{128}, std::byte{255}};
    EXPECT_EQ(written(data, JSONBytes::numbers), "[0,128,255]");
    EXPECT_EQ(readData("[ 0 , 128, 255 ]", JSONBytes::numbers), data);
    EXPECT_EQ(written(Data(), JSONBytes::numbers), "[]");
    EXPECT_EQ(readData("[]", JSONBytes::numbers), Data());
}

TEST(JSONStrategies, EveryByteSurvives) {
    Data data;
    for (int i = 0; i < 256; ++i) data.push_back(static_cast<std::byte>(i));
    for (const auto bytes : {JSONBytes::base64, JSONBytes::numbers})
        for (std::size_t size = 0; size <= 256; ++size) {
            const Data part(data.end() - static_cast<std::ptrdiff_t>(size), data.end());
            ASSERT_EQ(readData(written(part, bytes), bytes), part);
        }
}

TEST(JSONStrategies, WhatIsNoDataIsRefused) {
    for (const char* text : {"\"A\"", "\"AB\"", "\"ABC\"", "\"A===\"", "\"AB=C\"", "\"AAA=AAA=\"", "\"A*==\"",
                             "\"AAAA \"", "\"AA\\nAA\"", "\"-_8=\"", "\"AAAAA\"", "\"=\""})
        EXPECT_EQ(kindOfWrongData(text, JSONBytes::base64), JSONError::Kind::invalidValue) << text;
    EXPECT_EQ(kindOfWrongData("[1]", JSONBytes::base64), JSONError::Kind::typeMismatch);
    for (const char* text : {"[256]", "[-1]", "[0,1000]", "[99999999999999999999]"})
        EXPECT_EQ(kindOfWrongData(text, JSONBytes::numbers), JSONError::Kind::outOfRange) << text;
    EXPECT_EQ(kindOfWrongData("\"AAAA\"", JSONBytes::numbers), JSONError::Kind::typeMismatch);
    EXPECT_EQ(kindOfWrongData("[\"a\"]", JSONBytes::numbers), JSONError::Kind::typeMismatch);
}

TEST(JSONStrategies, WrongDatesAndDataAreFoundByTheirPaths) {
    const JSONDecoder decoder{.strategies = {.dates = JSONDates::iso8601}};
    const auto date =
        decodingErrorOf<Event>(R"({"at":"2024-03-05T14:07:09Z","payload":"","more":["x"]})", decoder);
    EXPECT_EQ(date.path(), "$.more[0]");
    EXPECT_EQ(date.byteOffset(), 50U);
    EXPECT_EQ(decodingErrorOf<Event>(R"({"at":0,"payload":"x","more":[]})").path(), "$.payload");
    EXPECT_EQ(encodingErrorOf(Event{Date(infinity), {}, {}}).path(), "$.at");
    EXPECT_EQ(encodingErrorOf(Event{Date(0), {}, {Date(0), Date(1e300)}},
                              {.strategies = {.dates = JSONDates::iso8601}})
                  .path(),
              "$.more[1]");
}

TEST(JSONStrategies, ValuesOfUnknownKindAreWrittenByThemToo) {
    const Value value(Value::Array{Date(secondsSince2001), dataFromText("a"), infinity});
    const JSONStrategies strategies{
        .dates = JSONDates::iso8601, .data = JSONBytes::numbers, .nonFinite = JSONNonFinite()};
    EXPECT_EQ(JSONEncoder{.strategies = strategies}.encodeText(value),
              R"(["2024-03-05T14:07:09Z",[97],"Infinity"])");
    EXPECT_EQ(JSONEncoder().encodeText(Value(Value::Array{Date(1), dataFromText("a")})), R"([1.0,"YQ=="])");
}

TEST(JSONStrategies, NumbersThatAreNotFiniteStandAsTexts) {
    const JSONStrategies named{.nonFinite = JSONNonFinite()};
    const std::vector<double> numbers{infinity, -infinity, std::nan(""), 1};
    const std::string text = JSONEncoder{.strategies = named}.encodeText(numbers);
    EXPECT_EQ(text, R"(["Infinity","-Infinity","NaN",1.0])");
    const auto again = JSONDecoder{.strategies = named}.decode<std::vector<double>>(text);
    EXPECT_EQ(again[0], infinity);
    EXPECT_EQ(again[1], -infinity);
    EXPECT_TRUE(std::isnan(again[2]));
    EXPECT_EQ(again[3], 1);
    const auto floats = JSONDecoder{.strategies = named}.decode<std::vector<float>>(text);
    EXPECT_EQ(floats[0], std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(floats[2]));
    EXPECT_EQ(JSONEncoder{.strategies = named}.encodeText(floats), text);
}

TEST(JSONStrategies, NumbersThatAreNotFiniteMayHaveOtherTexts) {
    const JSONStrategies named{.nonFinite = JSONNonFinite{"+∞", "-∞", "no \"number\""}};
    const std::vector<double> numbers{infinity, -infinity, std::nan("")};
    const std::string text = JSONEncoder{.strategies = named}.encodeText(numbers);
    EXPECT_EQ(text, R"(["+∞","-∞","no \"number\""])");
    EXPECT_TRUE(std::isnan(JSONDecoder{.strategies = named}.decode<std::vector<double>>(text)[2]));
    EXPECT_THROW(JSONDecoder{.strategies = named}.decode<double>("\"NaN\""), JSONError);
}

TEST(JSONStrategies, TextsStandForNoNumbersWhereThatIsNotSaid) {
    const auto error = decodingErrorOf<double>("\"NaN\"");
    EXPECT_EQ(error.kind(), JSONError::Kind::typeMismatch);
    EXPECT_EQ(error.message(), "expected a number, found a string");
    EXPECT_EQ(decodingErrorOf<float>("\"Infinity\"").kind(), JSONError::Kind::typeMismatch);
    EXPECT_THROW(JSONDecoder{.strategies = {.nonFinite = JSONNonFinite()}}.decode<int>("\"NaN\""), JSONError);
}

TEST(JSONStrategies, NamesOfMembersAreAsDeclaredWhereNothingIsSaid) {
    const std::string text = JSONEncoder().encodeText(Account());
    EXPECT_EQ(
        text,
        R"({"birthDate":1,"userID":2,"HTMLText":3,"plain":4,"already_snake":5,"byName":{"firstName":6}})");
}

TEST(JSONStrategies, NamesOfMembersAreInSnakeCaseAndKeysOfMapsAsTheyAre) {
    const std::string text = JSONEncoder{.strategies = snakeCase}.encodeText(Account());
    EXPECT_EQ(
        text,
        R"({"birth_date":1,"user_id":2,"html_text":3,"plain":4,"already_snake":5,"by_name":{"firstName":6}})");
}

TEST(JSONStrategies, NamesInSnakeCaseAreReadAsWritten) {
    const std::string text = R"({"all_accounts":[{"by_name":{"firstName":60,"last_name":61},"html_text":30,)"
                             R"("birth_date":10,"user_id":20,"already_snake":50,"plain":40}]})";
    const auto account = JSONDecoder{.strategies = snakeCase}.decode<Bank>(text).allAccounts.at(0);
    EXPECT_EQ(account.birthDate, 10);
    EXPECT_EQ(account.userID, 20);
    EXPECT_EQ(account.HTMLText, 30);
    EXPECT_EQ(account.plain, 40);
    EXPECT_EQ(account.already_snake, 50);
    EXPECT_EQ(account.byName, (std::map<std::string, int>{{"firstName", 60}, {"last_name", 61}}));
}

TEST(JSONStrategies, PathsNameMembersAsTheText) {
    const JSONDecoder decoder{.strategies = snakeCase};
    EXPECT_EQ(decodingErrorOf<Bank>(R"({"all_accounts":[{"birth_date":""}]})", decoder).path(),
              "$.all_accounts[0].birth_date");
    EXPECT_EQ(decodingErrorOf<Bank>(R"({"allAccounts":[]})", decoder).path(), "$.all_accounts");
    const JSONDecoder strict{.strategies = snakeCase, .unknownMembers = JSONUnknownMembers::refuse};
    EXPECT_EQ(decodingErrorOf<Bank>(R"({"allAccounts":[]})", strict).path(), "$.allAccounts");
}

TEST(JSONStrategies, NamesThatAreTheSameInAnotherStyleDoNotMatterInThisOne) {
    EXPECT_EQ(JSONEncoder().encodeText(Alike()), R"({"userID":1,"userId":2})");
    EXPECT_EQ(JSONDecoder().decode<Alike>(R"({"userID":3,"userId":4})").userId, 4);
}

namespace {
// Coded in no other case: its names are made by the threads of that one.
struct Fresh {
    int firstOfAll = 1;
    int secondOfAll = 2;
};
VORLAN_CODABLE(Fresh, firstOfAll, secondOfAll)
} // namespace

TEST(JSONStrategies, OneEncoderAndDecoderServeManyThreads) {
    const JSONEncoder encoder{.strategies = snakeCase};
    const JSONDecoder decoder{.strategies = snakeCase};
    std::vector<int> sums(8);
    std::vector<std::thread> threads;
    for (int& sum : sums)
        threads.emplace_back([&encoder, &decoder, &sum] {
            for (int i = 0; i < 200; ++i) {
                const auto again = decoder.decode<Fresh>(encoder.encode(Fresh{i, 1}));
                sum += again.firstOfAll + again.secondOfAll;
            }
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(sums, std::vector<int>(8, 199 * 100 + 200));
}
