// SPDX-License-Identifier: Apache-2.0

// Values of a host's types in the defaults store, as JSON.

#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/persistence/CodableHosts.h"
#include "tests/platform/defaults/ForeignPropertyList.h"
#include "tests/platform/defaults/ReportedProblems.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <latch>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

using namespace vorlan;
using tests::ada;
using tests::Address;
using tests::Appointment;
using tests::contentOf;
using tests::Failing;
using tests::forgetEverything;
using tests::Measurement;
using tests::Profile;
using tests::Stubborn;
using tests::Unruly;

namespace {

constexpr auto name = "com.example.editor";

// Each case has a store of its own that is empty.
class CodedDefaults : public ::testing::Test {
protected:
    // As a process that starts anew finds it.
    UserDefaults reopened() {
        forgetEverything();
        return UserDefaults(name);
    }

    std::filesystem::path file() const { return defaults.fileURL().path(); }

    const vorlan::testing::TemporaryHome home;
    UserDefaults defaults{name};
};

// A way to set the entry "entry" to what cannot be encoded.
struct Refusal {
    const char* what;
    std::function<void(UserDefaults&)> write;

    friend void PrintTo(const Refusal& refusal, std::ostream* stream) { *stream << refusal.what; }
};

// The value is shared, as every process of a test makes and copies these, and a deep one is long in copying.
template <class T>
void addBothWays(std::vector<Refusal>& refusals, const char* what, T given) {
    const auto value = std::make_shared<const T>(std::move(given));
    refusals.push_back({what, [value](UserDefaults& store) { store.store(*value, "entry"); }});
    refusals.push_back({what, [value](UserDefaults& store) { store[{.codable = "entry"}] = *value; }});
    refusals.push_back(
        {what, [value](UserDefaults& store) { store[{.codable = "entry"}] = std::optional(*value); }});
}

std::vector<Refusal> refusals() {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    std::vector<Refusal> all;
    addBothWays(all, "a number that is none", none);
    addBothWays(all, "an infinite number in a record", Measurement{"m", infinity});
    addBothWays(all, "text without a form in UTF-8", std::string("half \xC3"));
    addBothWays(all, "text without a form in UTF-8 in a record", Profile{"Ada", Date(0), {{"\xFF", 1}}});
    addBothWays(all, "a key without a form in UTF-8", std::map<std::string, int>{{"\xFF", 1}});
    addBothWays(all, "a date that is none", Appointment{"Tea", Date(none)});
    addBothWays(all, "a date beyond all", Profile{"Ada", Date(-infinity), {}});
    addBothWays(all, "a type whose coding throws", Stubborn());
    addBothWays(all, "a type whose coding throws what is no exception", Unruly());
    addBothWays(all, "a type whose coding fails", Failing());
    addBothWays(all, "arrays too deep within one another", tests::tooDeepForADefaultCoder());
    addBothWays(all, "one element of many", std::vector<double>{1, 2, infinity});
    return all;
}

class CodedDefaultsRefusal : public CodedDefaults, public ::testing::WithParamInterface<Refusal> {};

// An entry of the store takes what can be encoded, and nothing else.
struct Opaque {};
using Entry = decltype(std::declval<UserDefaults&>()[CodableKey{""}]);
static_assert(std::is_assignable_v<Entry, Profile>);
static_assert(std::is_assignable_v<Entry, const Profile&>);
static_assert(std::is_assignable_v<Entry, std::optional<Profile>>);
static_assert(std::is_assignable_v<Entry, std::nullopt_t>);
static_assert(!std::is_assignable_v<Entry, Opaque>);
static_assert(!std::is_assignable_v<Entry, Entry>);

} // namespace

TEST_F(CodedDefaults, StoredValueIsObtainedAgain) {
    defaults.store(ada(), "profile");
    EXPECT_EQ(defaults.obtain<Profile>("profile"), ada());
    EXPECT_EQ(reopened().obtain<Profile>("profile"), ada());
}

TEST_F(CodedDefaults, StoredEntryIsDataThatHoldsJSON) {
    const Profile profile{"Ada", Date(60.5), {{"Main Street", 5}}};
    const Value expected =
        dataFromText(R"({"name":"Ada","born":60.5,"addresses":[{"street":"Main Street","number":5}]})");
    defaults.store(profile, "stored");
    defaults[{.codable = "assigned"}] = profile;
    EXPECT_EQ(defaults.storedEntries(), (Value::Dictionary{{"stored", expected}, {"assigned", expected}}));
}

TEST_F(CodedDefaults, EntryThatOthersWroteAsJSONIsObtained) {
    defaults["profile"] = dataFromText(R"( { "addresses" : [ ] , "other" : 1, "name" : "Ada" } )");
    EXPECT_EQ(defaults.obtain<Profile>("profile"), (Profile{"Ada", std::nullopt, {}}));
    const std::optional<Profile> profile = defaults[{.codable = "profile"}];
    EXPECT_EQ(profile, (Profile{"Ada", std::nullopt, {}}));
}

TEST_F(CodedDefaults, MissingEntryIsAbsent) {
    EXPECT_EQ(defaults.obtain<Profile>("profile"), std::nullopt);
    const std::optional<Profile> profile = defaults[{.codable = "profile"}];
    EXPECT_EQ(profile, std::nullopt);
}

TEST_F(CodedDefaults, EntryThatIsNoDataIsAbsentAlsoWhereItLooksLikeJSON) {
    for (const Value& entry : {Value("7"), Value("text"), Value(7), Value(7.0), Value(true), Value(Date(7)),
                               Value(Value::Array{7}), Value(Value::Dictionary{{"name", "Ada"}})}) {
        defaults.setObject(entry, "entry");
        EXPECT_EQ(defaults.obtain<int>("entry"), std::nullopt) << entry.description();
        EXPECT_EQ(defaults.obtain<Value>("entry"), std::nullopt) << entry.description();
        EXPECT_EQ(defaults[{.codable = "entry"}].as<int>(), std::nullopt) << entry.description();
        EXPECT_EQ(defaults[{.codable = "entry"}].as<Value>(), std::nullopt) << entry.description();
    }
}

TEST_F(CodedDefaults, DataThatDoesNotDecodeIsAbsentAndStays) {
    for (const char* text : {"", "nonsense", "\xFF\xFE", "null", "[]", R"({"name":"Ada"})", R"({"name":1})",
                             R"({"name":"Ada","addresses":[],"born":"2001-01-01T00:00:00Z"})"}) {
        defaults["profile"] = dataFromText(text);
        EXPECT_EQ(defaults.obtain<Profile>("profile"), std::nullopt) << text;
        EXPECT_EQ(defaults[{.codable = "profile"}].as<Profile>(), std::nullopt) << text;
        EXPECT_EQ(defaults.dataForKey("profile"), dataFromText(text));
    }
}

TEST_F(CodedDefaults, DataWhoseTypeThrowsWhenItIsDecodedIsAbsent) {
    defaults["entry"] = dataFromText("1");
    EXPECT_EQ(defaults.obtain<Stubborn>("entry"), std::nullopt);
    EXPECT_EQ(defaults.obtain<Unruly>("entry"), std::nullopt);
    EXPECT_EQ(defaults[{.codable = "entry"}].as<Stubborn>(), std::nullopt);
    EXPECT_EQ(defaults[{.codable = "entry"}].as<Unruly>(), std::nullopt);
}

TEST_F(CodedDefaults, SubscriptReadsWhatItWasAssigned) {
    defaults[{.codable = "profile"}] = ada();
    const std::optional<Profile> profile = defaults[{.codable = "profile"}];
    EXPECT_EQ(profile, ada());
    EXPECT_EQ(defaults.obtain<Profile>("profile"), ada());
    defaults[{.codable = "profile"}] = std::optional(Profile{"Bo", std::nullopt, {}});
    EXPECT_EQ(defaults[{.codable = "profile"}].as<Profile>(), (Profile{"Bo", std::nullopt, {}}));
    EXPECT_EQ(defaults[{.codable = "missing"}].valueOr(ada()), ada());
    EXPECT_EQ(defaults[{.codable = "profile"}].valueOr(ada()).name, "Bo");
}

TEST_F(CodedDefaults, AssigningAnAbsentValueRemovesTheEntry) {
    for (const bool isTyped : {false, true}) {
        defaults.store(ada(), "profile");
        defaults.store(1, "other");
        if (isTyped) {
            defaults[{.codable = "profile"}] = std::optional<Profile>();
        } else {
            defaults[{.codable = "profile"}] = std::nullopt;
        }
        EXPECT_EQ(defaults.obtain<Profile>("profile"), std::nullopt);
        EXPECT_EQ(defaults[{.codable = "profile"}].as<Profile>(), std::nullopt);
        EXPECT_EQ(defaults.objectForKey("profile"), std::nullopt);
        EXPECT_EQ(reopened().storedEntries(), (Value::Dictionary{{"other", dataFromText("1")}}));
    }
}

TEST_F(CodedDefaults, AssigningAnAbsentValueRemovesAlsoWhatIsNoJSON) {
    defaults["profile"] = "text";
    defaults[{.codable = "profile"}] = std::nullopt;
    EXPECT_EQ(defaults.objectForKey("profile"), std::nullopt);
    defaults[{.codable = "profile"}] = std::nullopt; // there is nothing any more
    EXPECT_TRUE(defaults.storedEntries().empty());
}

TEST_F(CodedDefaults, EntriesOfDifferentTypesStandSideBySide) {
    const Appointment tea{"Tea", Date(60)};
    const std::map<std::string, std::vector<int>> scores{{"Ada", {1, 2}}, {"Bo", {}}};
    defaults[{.codable = "profile"}] = ada();
    defaults[{.codable = "appointment"}] = tea;
    defaults.store(scores, "scores");
    defaults.store(true, "flag");
    EXPECT_EQ(defaults[{.codable = "profile"}].as<Profile>(), ada());
    EXPECT_EQ(defaults.obtain<Appointment>("appointment"), tea);
    EXPECT_EQ((defaults.obtain<std::map<std::string, std::vector<int>>>("scores")), scores);
    EXPECT_EQ(defaults.obtain<bool>("flag"), true);
    EXPECT_EQ(defaults.obtain<Appointment>("profile"), std::nullopt) << "it is of the other type";
    EXPECT_EQ(defaults[{.codable = "appointment"}].as<Profile>(), std::nullopt);
    EXPECT_EQ(defaults[{.codable = "profile"}].as<Profile>(), ada())
        << "reading as another type changes nothing";
}

TEST_F(CodedDefaults, NativeAndCodedEntryOfAKeyAreTheSameEntry) {
    defaults["entry"] = 5;
    defaults[{.codable = "entry"}] = 7;
    EXPECT_EQ(defaults["entry"].as<int>(), std::nullopt);
    EXPECT_EQ(defaults["entry"].as<Data>(), dataFromText("7"));
    defaults["entry"] = "seven";
    EXPECT_EQ(defaults[{.codable = "entry"}].as<int>(), std::nullopt);
    EXPECT_EQ(defaults.obtain<std::string>("entry"), std::nullopt);
}

TEST_F(CodedDefaults, RegisteredDataCountsWhereTheStoreHasNone) {
    defaults.registerDefaults({{"count", dataFromText("5")}});
    EXPECT_EQ(defaults.obtain<int>("count"), 5);
    EXPECT_EQ(defaults[{.codable = "count"}].as<int>(), 5);
    defaults.store(7, "count");
    EXPECT_EQ(defaults.obtain<int>("count"), 7);
    defaults[{.codable = "count"}] = std::nullopt;
    EXPECT_EQ(defaults.obtain<int>("count"), 5);
}

TEST_F(CodedDefaults, EntriesAreInTheStoreThatIsCalled) {
    UserDefaults other("com.example.other");
    defaults.store(1, "count");
    other.store(2, "count");
    EXPECT_EQ(defaults.obtain<int>("count"), 1);
    EXPECT_EQ(other.obtain<int>("count"), 2);
    EXPECT_EQ(UserDefaults(name).obtain<int>("count"), 1);
}

TEST_F(CodedDefaults, WritingTellsObserversOnceAndWhatCannotBeEncodedTellsNobody) {
    int told = 0;
    const auto observation = defaults.observe("entry", [&] { ++told; });
    defaults.store(1, "entry");
    EXPECT_EQ(told, 1);
    defaults[{.codable = "entry"}] = 2;
    EXPECT_EQ(told, 2);
    for (const auto& refusal : refusals()) refusal.write(defaults);
    EXPECT_EQ(told, 2);
    defaults[{.codable = "entry"}] = std::nullopt;
    EXPECT_EQ(told, 3);
}

TEST_F(CodedDefaults, ManyThreadsStoreAndObtainEntriesOfTheirOwn) {
    constexpr int count = 8;
    std::latch together(count);
    std::atomic<int> wrong = 0;
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < count; ++thread)
            threads.emplace_back([&, thread] {
                const auto key = "profile " + std::to_string(thread);
                auto own = ada();
                together.arrive_and_wait();
                for (int round = 0; round < 200; ++round) {
                    own.addresses.assign(static_cast<std::size_t>(round % 5), Address{key, round});
                    if (round % 2 == 0) {
                        defaults.store(own, key);
                    } else {
                        defaults[{.codable = key}] = own;
                    }
                    defaults.store(std::numeric_limits<double>::infinity(), key);
                    if (defaults.obtain<Profile>(key) != own) ++wrong;
                    if (defaults[{.codable = key}].as<Profile>() != own) ++wrong;
                }
            });
    }
    EXPECT_EQ(wrong, 0);
    const auto found = reopened();
    for (int thread = 0; thread < count; ++thread) {
        const auto profile = found.obtain<Profile>("profile " + std::to_string(thread));
        ASSERT_TRUE(profile);
        EXPECT_EQ(profile->addresses.size(), 4U);
    }
}

TEST_P(CodedDefaultsRefusal, LeavesTheEntryAsItWasToTheLastByteOnDisk) {
    defaults.store(ada(), "entry");
    defaults["other"] = 1;
    ASSERT_TRUE(defaults.synchronize());
    const auto entry = defaults.dataForKey("entry");
    const auto content = contentOf(file());
    ASSERT_TRUE(entry);
    ASSERT_FALSE(content.empty());

    EXPECT_NO_THROW(GetParam().write(defaults));
    EXPECT_EQ(defaults.dataForKey("entry"), entry);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(contentOf(file()), content);
    EXPECT_EQ(reopened().dataForKey("entry"), entry);
    EXPECT_EQ(UserDefaults(name).obtain<Profile>("entry"), ada());
    EXPECT_EQ(contentOf(file()), content);

    defaults.store(1, "entry"); // the store goes on
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_NE(contentOf(file()), content);
    EXPECT_EQ(reopened().obtain<int>("entry"), 1);
}

TEST_P(CodedDefaultsRefusal, LeavesAnEntryThatIsNoJSONToo) {
    defaults["entry"] = "text";
    GetParam().write(defaults);
    EXPECT_EQ(defaults.storedEntries(), (Value::Dictionary{{"entry", "text"}}));
}

TEST_P(CodedDefaultsRefusal, MakesNoEntryWhereThereIsNone) {
    GetParam().write(defaults);
    EXPECT_TRUE(defaults.storedEntries().empty());
    EXPECT_TRUE(reopened().storedEntries().empty());
}

INSTANTIATE_TEST_SUITE_P(, CodedDefaultsRefusal, ::testing::ValuesIn(refusals()));
