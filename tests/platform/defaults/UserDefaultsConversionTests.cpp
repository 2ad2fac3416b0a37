// SPDX-License-Identifier: Apache-2.0

// Entries read as a type that they may not be of.

#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

constexpr auto name = "com.example.editor";
constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
constexpr auto largest = std::numeric_limits<std::int64_t>::max();
constexpr auto infinity = std::numeric_limits<double>::infinity();
constexpr auto notANumber = std::numeric_limits<double>::quiet_NaN();

// What has neither a number nor a Boolean in it.
std::vector<Value> othersThanNumbers() {
    return {Data{std::byte{1}}, Date(1), Value::Array{1, 2}, Value::Dictionary{{"a", 1}}};
}

} // namespace

TEST(UserDefaults, BooleanIsReadFromNumbersAndTexts) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    const std::vector<Value> isTrue{
        true,    1,     -1,     2,        smallest, std::numeric_limits<std::uint64_t>::max(),
        0.5,     -0.1,  1e300,  infinity, "YES",    "yes",
        "Y",     "y",   "true", "True",   "TRUE",   "T",
        "t",     "1",   "9",    "007",    "+1",     "-1",
        "  YES", "\t1", "-007", "  +2",   "Yonder", "10 green bottles"};
    for (const auto& value : isTrue) {
        store.setObject(value, "flag");
        EXPECT_TRUE(store.boolForKey("flag")) << value.description();
    }
    const std::vector<Value> isFalse{false,   0,     0.0,  -0.0,  "",      "0",   "00", "NO",  "no",   "N",
                                     "false", "off", "on", "0x1", "maybe", "  0", "-0", "ÿes", "_yes", " "};
    for (const auto& value : isFalse) {
        store.setObject(value, "flag");
        EXPECT_FALSE(store.boolForKey("flag")) << value.description();
    }
}

TEST(UserDefaults, BooleanOfAllElseIsFalse) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    EXPECT_FALSE(store.boolForKey("missing"));
    for (const auto& value : othersThanNumbers()) {
        store.setObject(value, "flag");
        EXPECT_FALSE(store.boolForKey("flag")) << value.description();
    }
}

TEST(UserDefaults, IntegerIsTheNearestThatNumbersAndTextsHave) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    const std::vector<std::pair<Value, std::int64_t>> table{
        {0, 0},
        {42, 42},
        {smallest, smallest},
        {largest, largest},
        {static_cast<std::uint64_t>(largest) + 1, largest},
        {std::numeric_limits<std::uint64_t>::max(), largest},
        {1.9, 1},
        {-1.9, -1},
        {0.999, 0},
        {9.2e18, 9'200'000'000'000'000'000},
        {9.3e18, largest},
        {-9.3e18, smallest},
        {9223372036854775808.0, largest},
        {-9223372036854775808.0, smallest},
        {infinity, largest},
        {-infinity, smallest},
        {notANumber, 0},
        {true, 1},
        {false, 0},
        {"42", 42},
        {"-7", -7},
        {"+7", 7},
        {"007", 7},
        {"42 apples", 42},
        {"1.9", 1},
        {"0x10", 0},
        {"apples", 0},
        {"", 0},
        {"-", 0},
        {"9223372036854775807", largest},
        {"-9223372036854775808", smallest},
        {"9223372036854775808", largest},
        {"99999999999999999999999999", largest},
        {"-99999999999999999999999999", smallest},
    };
    for (const auto& [value, integer] : table) {
        store.setObject(value, "count");
        EXPECT_EQ(store.integerForKey("count"), integer) << value.description();
    }
}

TEST(UserDefaults, IntegerOfAllElseIsZero) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    EXPECT_EQ(store.integerForKey("missing"), 0);
    for (const auto& value : othersThanNumbers()) {
        store.setObject(value, "count");
        EXPECT_EQ(store.integerForKey("count"), 0) << value.description();
    }
}

TEST(UserDefaults, NumberIsReadFromIntegersAndTexts) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    const std::vector<std::pair<Value, double>> table{
        {0.1, 0.1},
        {-1e30, -1e30},
        {infinity, infinity},
        {3, 3},
        {largest, 9223372036854775808.0},
        {std::numeric_limits<std::uint64_t>::max(), 18446744073709551616.0},
        {true, 1},
        {false, 0},
        {"0.1", 0.1},
        {"-2.5e3", -2500},
        {"2.5e3 m", 2500},
        {"42", 42},
        {"1,5", 1},
        {"1e", 1},
        {"0x10", 0},
        {"inf", 0},
        {"nan", 0},
        {"apples", 0},
        {"", 0},
    };
    for (const auto& [value, number] : table) {
        store.setObject(value, "ratio");
        EXPECT_EQ(store.doubleForKey("ratio"), number) << value.description();
        EXPECT_EQ(store.floatForKey("ratio"), static_cast<float>(number)) << value.description();
    }
    store.setObject(notANumber, "ratio");
    const auto read = store.doubleForKey("ratio");
    EXPECT_NE(read, read);
}

TEST(UserDefaults, NumberOfAllElseIsZero) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    EXPECT_EQ(store.doubleForKey("missing"), 0);
    for (const auto& value : othersThanNumbers()) {
        store.setObject(value, "ratio");
        EXPECT_EQ(store.doubleForKey("ratio"), 0) << value.description();
    }
}

TEST(UserDefaults, TextIsReadFromNumbersAndBooleans) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    const std::vector<std::pair<Value, std::string>> table{
        {"Ann", "Ann"},
        {"", ""},
        {42, "42"},
        {-7, "-7"},
        {smallest, "-9223372036854775808"},
        {std::numeric_limits<std::uint64_t>::max(), "18446744073709551615"},
        {0.5, "0.5"},
        {-0.1, "-0.1"},
        {true, "1"},
        {false, "0"},
    };
    for (const auto& [value, text] : table) {
        store.setObject(value, "name");
        EXPECT_EQ(store.stringForKey("name"), text) << value.description();
    }
}

TEST(UserDefaults, TextOfAllElseIsAbsent) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    EXPECT_EQ(store.stringForKey("missing"), std::nullopt);
    for (const auto& value : othersThanNumbers()) {
        store.setObject(value, "name");
        EXPECT_EQ(store.stringForKey("name"), std::nullopt) << value.description();
    }
}

TEST(UserDefaults, CollectionsDataAndDatesAreReadAsWhatTheyAreOnly) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    const Data bytes{std::byte{1}};
    store.setObject(bytes, "data");
    store.setObject(Date(5), "date");
    store.setObject(Value::Array{1, "two"}, "array");
    store.setObject(std::vector<std::string>{"a", "b"}, "texts");
    store.setObject(Value::Dictionary{{"a", 1}}, "dictionary");
    EXPECT_EQ(store.dataForKey("data"), bytes);
    EXPECT_EQ(store.dateForKey("date"), Date(5));
    EXPECT_EQ(store.arrayForKey("array"), (Value::Array{1, "two"}));
    EXPECT_EQ(store.stringArrayForKey("texts"), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(store.dictionaryForKey("dictionary"), (Value::Dictionary{{"a", 1}}));

    EXPECT_EQ(store.stringArrayForKey("array"), std::nullopt);
    for (const auto* other : {"array", "date", "dictionary", "missing"})
        EXPECT_EQ(store.dataForKey(other), std::nullopt) << other;
    for (const auto* other : {"data", "array", "missing"}) {
        EXPECT_EQ(store.dateForKey(other), std::nullopt) << other;
        EXPECT_EQ(store.dictionaryForKey(other), std::nullopt) << other;
    }
    for (const auto* other : {"data", "date", "dictionary", "missing"})
        EXPECT_EQ(store.arrayForKey(other), std::nullopt) << other;
}

TEST(UserDefaults, ReadersTakeRegisteredValuesAsTheyTakeStoredOnes) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.registerDefaults({{"flag", "YES"}, {"count", 1e300}, {"ratio", "0.5"}, {"name", 42}});
    EXPECT_TRUE(store.boolForKey("flag"));
    EXPECT_EQ(store.integerForKey("count"), largest);
    EXPECT_EQ(store.doubleForKey("ratio"), 0.5);
    EXPECT_EQ(store.stringForKey("name"), "42");
}

TEST(UserDefaults, ValueIsReadAsATypeOnlyWhereItSurvives) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.setObject(300, "integer");
    EXPECT_EQ(store.valueForKey<int>("integer"), 300);
    EXPECT_EQ(store.valueForKey<double>("integer"), 300.0);
    EXPECT_EQ(store.valueForKey<std::uint8_t>("integer"), std::nullopt);
    EXPECT_EQ(store.valueForKey<bool>("integer"), std::nullopt);
    EXPECT_EQ(store.valueForKey<std::string>("integer"), std::nullopt);
    store.setObject(1.5, "number");
    EXPECT_EQ(store.valueForKey<int>("number"), std::nullopt);
    EXPECT_EQ(store.valueForKey<float>("number"), 1.5F);
}
