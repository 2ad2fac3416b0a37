// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/RawValues.h>
#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/platform/defaults/ReportedProblems.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

enum class Theme { light, dark };
enum class Level { low, high };
enum class Setting { theme, level, volume };

} // namespace

template <>
struct vorlan::RawValues<Theme> {
    static constexpr std::array cases{std::pair(Theme::light, std::string_view("light")),
                                      std::pair(Theme::dark, std::string_view("dark"))};
};

template <>
struct vorlan::RawValues<Level> {
    static constexpr std::array cases{std::pair(Level::low, 1), std::pair(Level::high, 10)};
};

template <>
struct vorlan::RawValues<Setting> {
    static constexpr std::array cases{std::pair(Setting::theme, std::string_view("com.example.theme")),
                                      std::pair(Setting::level, std::string_view("com.example.level")),
                                      std::pair(Setting::volume, std::string_view("com.example.volume"))};
};

using namespace vorlan;

namespace {

constexpr auto name = "com.example.editor";

struct Opaque {};
using Entry = decltype(std::declval<UserDefaults&>()[""]);

// What the store cannot hold, and another entry whose type would be a guess, do not compile.
static_assert(std::is_assignable_v<Entry, int>);
static_assert(!std::is_assignable_v<Entry, Opaque>);
static_assert(!std::is_assignable_v<Entry, Entry>);

} // namespace

TEST(UserDefaultsSubscript, NativeValueIsStoredAsItself) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    defaults["volume"] = 0.8;
    defaults["count"] = 3;
    defaults["name"] = "Ann";
    defaults["isOpen"] = true;
    defaults["when"] = Date(5);
    defaults["bytes"] = Data{std::byte{1}};
    defaults["recent"] = std::vector<std::string>{"a", "b"};
    defaults["sizes"] = std::map<std::string, int>{{"a", 1}};
    EXPECT_EQ(defaults.storedEntries(), (Value::Dictionary{{"volume", 0.8},
                                                           {"count", 3},
                                                           {"name", "Ann"},
                                                           {"isOpen", true},
                                                           {"when", Date(5)},
                                                           {"bytes", Data{std::byte{1}}},
                                                           {"recent", Value::Array{"a", "b"}},
                                                           {"sizes", Value::Dictionary{{"a", 1}}}}));
}

TEST(UserDefaultsSubscript, NativeValueIsReadAsTheTypeThatIsAskedFor) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    defaults["count"] = 3;
    defaults["recent"] = std::vector<std::string>{"a", "b"};
    defaults["sizes"] = std::map<std::string, int>{{"a", 1}};
    const std::optional<int> count = defaults["count"];
    const std::optional<double> number = defaults["count"];
    const std::optional<std::vector<std::string>> recent = defaults["recent"];
    const std::optional<std::map<std::string, int>> sizes = defaults["sizes"];
    EXPECT_EQ(count, 3);
    EXPECT_EQ(number, 3.0);
    EXPECT_EQ(recent, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(sizes, (std::map<std::string, int>{{"a", 1}}));
    EXPECT_EQ(defaults["count"].as<Value>(), Value(3));
}

TEST(UserDefaultsSubscript, NumberAskedAsTextIsAbsent) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    defaults["count"] = 3;
    const std::optional<std::string> text = defaults["count"];
    EXPECT_EQ(text, std::nullopt);
    defaults["name"] = "3";
    const std::optional<int> number = defaults["name"];
    EXPECT_EQ(number, std::nullopt);
}

TEST(UserDefaultsSubscript, MissingEntryIsAbsent) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    EXPECT_EQ(defaults["missing"].as<int>(), std::nullopt);
    EXPECT_EQ(defaults["missing"].as<Theme>(), std::nullopt);
    EXPECT_EQ(defaults[Setting::theme].as<Theme>(), std::nullopt);
}

TEST(UserDefaultsSubscript, AbsentRemovesTheEntry) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    for (const auto* key : {"a", "b", "c", "d", "e"}) defaults[key] = 1;
    defaults["a"] = std::nullopt;
    defaults["b"] = std::optional<int>();
    defaults["c"] = std::optional<Theme>();
    defaults["d"] = nullptr;
    EXPECT_EQ(defaults.storedEntries(), (Value::Dictionary{{"e", 1}}));
}

TEST(UserDefaultsSubscript, RegisteredValueCountsOnceTheEntryIsRemoved) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    defaults.registerDefaults({{"volume", 0.5}, {"theme", "dark"}});
    defaults["volume"] = 0.8;
    EXPECT_EQ(defaults["volume"].as<double>(), 0.8);
    defaults["volume"] = std::nullopt;
    EXPECT_EQ(defaults["volume"].as<double>(), 0.5);
    EXPECT_EQ(defaults["theme"].as<Theme>(), Theme::dark);
}

TEST(UserDefaultsSubscript, RawValueIsWhatIsStored) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    defaults["theme"] = Theme::dark;
    defaults["level"] = Level::high;
    EXPECT_EQ(defaults.storedEntries(), (Value::Dictionary{{"theme", "dark"}, {"level", 10}}));
    const std::optional<Theme> theme = defaults["theme"];
    const std::optional<Level> level = defaults["level"];
    EXPECT_EQ(theme, Theme::dark);
    EXPECT_EQ(level, Level::high);
}

TEST(UserDefaultsSubscript, OptionalCaseIsStoredAsItsRawValue) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    defaults["theme"] = std::optional(Theme::light);
    defaults["level"] = std::optional(Level::low);
    EXPECT_EQ(defaults.storedEntries(), (Value::Dictionary{{"theme", "light"}, {"level", 1}}));
}

TEST(UserDefaultsSubscript, RawValueThatNoCaseMatchesIsAbsent) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    for (const Value& stored :
         {Value("grey"), Value("Dark"), Value(""), Value(1), Value(true), Value(Data{})}) {
        defaults["theme"] = stored;
        EXPECT_EQ(defaults["theme"].as<Theme>(), std::nullopt) << stored.description();
    }
    for (const Value& stored : {Value(2), Value(1.5), Value("1"), Value("low"), Value(1e300), Value(-1)}) {
        defaults["level"] = stored;
        EXPECT_EQ(defaults["level"].as<Level>(), std::nullopt) << stored.description();
    }
}

TEST(UserDefaultsSubscript, NumericRawValueIsFoundWhereTheNumberSurvives) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    for (const Value& stored : {Value(10), Value(10.0), Value(std::uint8_t{10})}) {
        defaults["level"] = stored;
        EXPECT_EQ(defaults["level"].as<Level>(), Level::high) << stored.description();
    }
}

TEST(UserDefaultsSubscript, RawValuedKeyIsItsText) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    defaults[Setting::theme] = Theme::dark;
    defaults[Setting::level] = Level::low;
    defaults[Setting::volume] = 0.8;
    EXPECT_EQ(defaults.storedEntries(),
              (Value::Dictionary{
                  {"com.example.theme", "dark"}, {"com.example.level", 1}, {"com.example.volume", 0.8}}));
    const std::optional<double> volume = defaults[Setting::volume];
    const std::optional<std::string> text = defaults[Setting::volume];
    EXPECT_EQ(volume, 0.8);
    EXPECT_EQ(text, std::nullopt);
    EXPECT_EQ(defaults[Setting::theme].as<Theme>(), Theme::dark);
    defaults[Setting::volume] = std::nullopt;
    EXPECT_EQ(defaults.objectForKey("com.example.volume"), std::nullopt);
}

TEST(UserDefaultsSubscript, FallbackStandsForWhatIsMissingOrOfAnotherType) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    EXPECT_EQ(defaults["volume"].valueOr(0.5), 0.5);
    defaults["volume"] = 0.8;
    EXPECT_EQ(defaults["volume"].valueOr(0.5), 0.8);
    EXPECT_EQ(defaults["volume"].valueOr(std::string("loud")), "loud");
    defaults["theme"] = "grey";
    EXPECT_EQ(defaults["theme"].valueOr(Theme::light), Theme::light);
}

TEST(UserDefaultsSubscript, EntryIsCopiedToAnotherAsAnOptional) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    defaults["from"] = 3;
    defaults["to"] = defaults["from"].as<int>();
    EXPECT_EQ(defaults["to"].as<int>(), 3);
    const std::optional<Value> anything = defaults["from"];
    defaults["also"] = anything;
    EXPECT_EQ(defaults["also"].as<int>(), 3);
    defaults["to"] = defaults["missing"].as<int>();
    EXPECT_EQ(defaults.storedEntries(), (Value::Dictionary{{"also", 3}, {"from", 3}}));
}

TEST(UserDefaultsSubscript, WhatIsRefusedLeavesTheEntry) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults(name);
    defaults["name"] = "Ann";
    EXPECT_THROW(defaults["name"] = "\xFF", std::invalid_argument);
    EXPECT_THROW(defaults["name"] = (Value::Array{1, nullptr}), std::invalid_argument);
    EXPECT_EQ(defaults["name"].as<std::string>(), "Ann");
}

TEST(UserDefaultsSubscript, AssignedEntriesComeBackFromTheFile) {
    const vorlan::testing::TemporaryHome home;
    {
        auto& defaults = UserDefaults::standard();
        defaults[Setting::theme] = Theme::dark;
        defaults["level"] = Level::high;
        defaults["volume"] = 0.8;
    }
    tests::forgetEverything();
    auto& defaults = UserDefaults::standard();
    EXPECT_EQ(defaults[Setting::theme].as<Theme>(), Theme::dark);
    EXPECT_EQ(defaults["level"].as<Level>(), Level::high);
    EXPECT_EQ(defaults["volume"].as<double>(), 0.8);
}
