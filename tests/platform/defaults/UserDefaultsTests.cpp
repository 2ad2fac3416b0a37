// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/platform/defaults/ReportedProblems.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

using namespace vorlan;
using tests::forgetEverything;

namespace {

constexpr auto name = "com.example.editor";

// All that a property list can hold, with what is easily lost on the way to a file and back.
Value::Dictionary everyKind() {
    return {{"false", false},
            {"true", true},
            {"zero", 0},
            {"one", 1},
            {"smallest integer", std::numeric_limits<std::int64_t>::min()},
            {"negative", -129},
            {"largest integer", std::numeric_limits<std::uint64_t>::max()},
            {"whole number", 1.0},
            {"number", 0.1},
            {"smallest number", std::numeric_limits<double>::denorm_min()},
            {"infinite", -std::numeric_limits<double>::infinity()},
            {"text", "Grüße 👋"},
            {"empty text", ""},
            {"text with NUL", std::string("a\0b", 3)},
            {"long text", std::string(100'000, 'x')},
            {"data", Data{std::byte{0}, std::byte{255}}},
            {"empty data", Data{}},
            {"date", Date(-0.25)},
            {"array", Value::Array{1, "two", 3.0, Value::Dictionary{{"four", true}}}},
            {"empty array", Value::Array()},
            {"dictionary", Value::Dictionary{{"a", Value::Dictionary{{"b", "c"}}}, {"Ä", Date(1)}}},
            {"empty dictionary", Value::Dictionary()},
            {"Schlüssel 🔑", "as a key"},
            {std::string("NUL\0key", 7), "too"}};
}

void setAll(UserDefaults& store, const Value::Dictionary& entries) {
    for (const auto& [key, value] : entries) store.setObject(value, key);
}

} // namespace

TEST(UserDefaults, ValueThatWasSetIsThereAtOnce) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    setAll(store, everyKind());
    for (const auto& [key, value] : everyKind()) EXPECT_EQ(store.objectForKey(key), value) << key;
    EXPECT_EQ(store.storedEntries(), everyKind());
}

TEST(UserDefaults, ValuesOfEveryKindComeBackFromTheFileAsTheyWere) {
    const vorlan::testing::TemporaryHome home;
    {
        UserDefaults store(name);
        setAll(store, everyKind());
    }
    forgetEverything();
    const UserDefaults store(name);
    for (const auto& [key, value] : everyKind()) {
        const auto found = store.objectForKey(key);
        ASSERT_TRUE(found) << key;
        EXPECT_EQ(found->kind(), value.kind()) << key;
        EXPECT_EQ(*found, value) << key;
    }
    EXPECT_EQ(store.storedEntries(), everyKind());
}

TEST(UserDefaults, NumberThatIsNoneComesBackFromTheFile) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults(name).setObject(std::numeric_limits<double>::quiet_NaN(), "ratio");
    forgetEverything();
    const auto found = UserDefaults(name).valueForKey<double>("ratio");
    ASSERT_TRUE(found);
    EXPECT_NE(*found, *found);
}

TEST(UserDefaults, MissingEntryIsAbsent) {
    const vorlan::testing::TemporaryHome home;
    const UserDefaults store(name);
    EXPECT_EQ(store.objectForKey("missing"), std::nullopt);
    EXPECT_EQ(store.valueForKey<int>("missing"), std::nullopt);
    EXPECT_TRUE(store.storedEntries().empty());
    EXPECT_TRUE(store.dictionaryRepresentation().empty());
}

TEST(UserDefaults, LaterValueReplacesTheFormer) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.setObject(1, "volume");
    store.setObject("loud", "volume");
    EXPECT_EQ(store.objectForKey("volume"), Value("loud"));
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).objectForKey("volume"), Value("loud"));
}

TEST(UserDefaults, RemovedEntryIsAbsent) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    setAll(store, {{"a", 1}, {"b", 2}, {"c", 3}});
    store.removeObjectForKey("a");
    store.setObject(nullptr, "b");
    store.removeObjectForKey("was never there");
    EXPECT_EQ(store.storedEntries(), (Value::Dictionary{{"c", 3}}));
}

TEST(UserDefaults, RemovedEntryStaysAwayWhenTheFileIsReadAnew) {
    const vorlan::testing::TemporaryHome home;
    setAll(*std::make_unique<UserDefaults>(name), {{"a", 1}, {"b", 2}, {"c", 3}});
    forgetEverything();
    UserDefaults(name).removeObjectForKey("a");
    UserDefaults(name).setObject(nullptr, "b");
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).storedEntries(), (Value::Dictionary{{"c", 3}}));
}

TEST(UserDefaults, RegisteredValueCountsWhereTheStoreHasNone) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.registerDefaults({{"volume", 0.5}, {"name", "Ann"}});
    EXPECT_EQ(store.doubleForKey("volume"), 0.5);
    store.setObject(0.8, "volume");
    EXPECT_EQ(store.doubleForKey("volume"), 0.8);
    store.removeObjectForKey("volume");
    EXPECT_EQ(store.doubleForKey("volume"), 0.5);
    EXPECT_EQ(store.stringForKey("name"), "Ann");
}

TEST(UserDefaults, RegisteringAgainReplacesOnlyTheKeysThatItNames) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.registerDefaults({{"a", 1}, {"b", 2}});
    store.registerDefaults({{"b", 3}, {"c", 4}});
    EXPECT_EQ(store.dictionaryRepresentation(), (Value::Dictionary{{"a", 1}, {"b", 3}, {"c", 4}}));
}

TEST(UserDefaults, RegisteredValuesAreNotStored) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.registerDefaults({{"volume", 0.5}, {"name", "Ann"}});
    store.setObject("Bob", "name");
    EXPECT_EQ(store.storedEntries(), (Value::Dictionary{{"name", "Bob"}}));
    EXPECT_EQ(store.dictionaryRepresentation(), (Value::Dictionary{{"name", "Bob"}, {"volume", 0.5}}));
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).storedEntries(), (Value::Dictionary{{"name", "Bob"}}));
}

TEST(UserDefaults, HandlesOfOneNameShareOneStore) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults one(name);
    const UserDefaults other(name);
    const UserDefaults copy(one);
    one.setObject(7, "shared");
    one.registerDefaults({{"registered", 8}});
    for (const auto* handle : {&other, &copy}) {
        EXPECT_EQ(handle->integerForKey("shared"), 7);
        EXPECT_EQ(handle->integerForKey("registered"), 8);
    }
}

TEST(UserDefaults, StoresOfDifferentNamesShareNothing) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults one("com.example.one");
    UserDefaults two("com.example.two");
    one.registerDefaults({{"key", 0}});
    one.setObject(1, "key");
    EXPECT_EQ(two.objectForKey("key"), std::nullopt);
    two.setObject(2, "key");
    EXPECT_EQ(one.integerForKey("key"), 1);
}

TEST(UserDefaults, FileIsInTheConfigurationFolder) {
    const vorlan::testing::TemporaryHome home;
    const UserDefaults store(name);
    EXPECT_EQ(store.name(), name);
    EXPECT_EQ(store.fileURL().path(), home.path() / ".config" / name / "defaults.plist");
}

TEST(UserDefaults, StandardStoreIsNamedByTheExecutable) {
    const vorlan::testing::TemporaryHome home;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe").filename();
    EXPECT_EQ(UserDefaults::standard().name(), executable);
    UserDefaults::standard().setObject(true, "isOpen");
    EXPECT_TRUE(UserDefaults(executable.string()).boolForKey("isOpen"));
}

TEST(UserDefaults, AnotherHomeIsAnotherStandardStore) {
    {
        const vorlan::testing::TemporaryHome home;
        UserDefaults::standard().setObject(1, "only here");
    }
    const vorlan::testing::TemporaryHome home;
    EXPECT_EQ(UserDefaults::standard().objectForKey("only here"), std::nullopt);
}

TEST(UserDefaults, SuitesAreListedInAlphabeticalOrder) {
    const vorlan::testing::TemporaryHome home;
    EXPECT_TRUE(UserDefaults::suiteNames().empty());
    for (const auto* suite : {"b", "c", "a", "Zürich"}) {
        UserDefaults store(suite);
        store.setObject(1, "key");
        EXPECT_TRUE(store.synchronize());
    }
    std::filesystem::create_directories(home.path() / ".config/without a file");
    EXPECT_EQ(UserDefaults::suiteNames(), (std::vector<std::string>{"Zürich", "a", "b", "c"}));
}

TEST(UserDefaults, NameThatIsNoFolderIsRefused) {
    const vorlan::testing::TemporaryHome home;
    for (const auto& bad : {std::string(), std::string("."), std::string(".."), std::string(".hidden"),
                            std::string("/"), std::string("a/b"), std::string("/etc"), std::string("a/"),
                            std::string("a\0b", 3), std::string(256, 'x')})
        EXPECT_THROW(UserDefaults{bad}, std::invalid_argument) << bad;
}

TEST(UserDefaults, LongestNameIsAFolder) {
    const vorlan::testing::TemporaryHome home;
    const std::string longest(255, 'x');
    UserDefaults(longest).setObject(1, "key");
    EXPECT_TRUE(UserDefaults(longest).synchronize());
    forgetEverything();
    EXPECT_EQ(UserDefaults(longest).integerForKey("key"), 1);
}

TEST(UserDefaults, ValueThatNoPropertyListCanHoldIsRefusedAndChangesNothing) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.setObject("before", "key");
    Value deep = 1;
    for (int level = 0; level < 600; ++level) deep = Value(Value::Dictionary{{"deeper", deep}});
    const std::vector<Value> refused{Value::Array{1, nullptr},
                                     Value::Dictionary{{"a", nullptr}},
                                     Value::Array{1, Value::Dictionary{{"a", Value::Array{1, nullptr}}}},
                                     "\xFF",
                                     "cut off \xC3",
                                     "half of a pair \xED\xA0\x80",
                                     Value::Array{1, "\xC0\xAF"},
                                     Value::Dictionary{{"\xFE", 1}},
                                     deep};
    for (const auto& value : refused) {
        EXPECT_THROW(store.setObject(value, "key"), std::invalid_argument) << value.description();
        EXPECT_THROW(store.setObject(value, "new"), std::invalid_argument) << value.description();
    }
    EXPECT_EQ(store.storedEntries(), (Value::Dictionary{{"key", "before"}}));
    EXPECT_TRUE(store.synchronize());
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).storedEntries(), (Value::Dictionary{{"key", "before"}}));
}

TEST(UserDefaults, KeyThatIsNoTextIsRefusedAndChangesNothing) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    EXPECT_THROW(store.setObject(1, "\xFF"), std::invalid_argument);
    EXPECT_TRUE(store.storedEntries().empty());
    EXPECT_EQ(store.objectForKey("\xFF"), std::nullopt);
    store.setObject(1, "key");
    EXPECT_TRUE(store.synchronize());
}

TEST(UserDefaults, SynchronizingPutsEverythingIntoTheFile) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    EXPECT_FALSE(std::filesystem::exists(store.fileURL().path()));
    EXPECT_TRUE(store.synchronize());
    store.setObject(1, "key");
    EXPECT_TRUE(store.synchronize());
    EXPECT_TRUE(std::filesystem::is_regular_file(store.fileURL().path()));
    EXPECT_TRUE(store.synchronize());
}
