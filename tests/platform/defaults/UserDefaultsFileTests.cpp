// SPDX-License-Identifier: Apache-2.0

// The file of a store, as other programs write and read it.

#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/MainLoop.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/platform/defaults/ForeignPropertyList.h"
#include "tests/platform/defaults/ReportedProblems.h"
#include "tests/support/Inbox.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <limits>
#include <string>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;
using tests::contentOf;
using tests::foreignBinary;
using tests::forgetEverything;
using tests::replaceFile;
using tests::ReportedProblems;
using tests::xmlList;

namespace {

constexpr auto name = "com.example.editor";

const char* const foreignEntries = "<key>array</key><array><integer>1</integer><string>two</string></array>"
                                   "<key>count</key><integer>42</integer>"
                                   "<key>data</key><data>AP8=</data>"
                                   "<key>date</key><date>2001-01-01T00:01:00Z</date>"
                                   "<key>dictionary</key><dict><key>a</key><true/></dict>"
                                   "<key>flag</key><false/>"
                                   "<key>name</key><string>Grüße 👋</string>"
                                   "<key>ratio</key><real>0.5</real>";

Value::Dictionary ownEntries() {
    return {{"array", Value::Array{1, "two"}},
            {"count", 42},
            {"data", Data{std::byte{0}, std::byte{255}}},
            {"date", Date(60)},
            {"dictionary", Value::Dictionary{{"a", true}}},
            {"flag", false},
            {"name", "Grüße 👋"},
            {"ratio", 0.5}};
}

std::filesystem::path pathOf(const UserDefaults& store) {
    return store.fileURL().path();
}

// The same before any store is opened.
std::filesystem::path pathIn(const vorlan::testing::TemporaryHome& home) {
    return home.path() / ".config" / name / "defaults.plist";
}

} // namespace

TEST(UserDefaultsFile, IsABinaryPropertyListThatOthersRead) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    for (const auto& [key, value] : ownEntries()) store.setObject(value, key);
    ASSERT_TRUE(store.synchronize());
    const auto content = contentOf(pathOf(store));
    EXPECT_TRUE(content.starts_with("bplist00"));
    const auto xml = tests::foreignXML(content);
    ASSERT_TRUE(xml);
    EXPECT_EQ(*xml, tests::foreignXML(foreignBinary(xmlList(foreignEntries))));
}

TEST(UserDefaultsFile, BinaryListOfAnotherProgramIsRead) {
    const vorlan::testing::TemporaryHome home;
    replaceFile(pathIn(home), foreignBinary(xmlList(foreignEntries)));
    const UserDefaults store(name);
    EXPECT_EQ(store.storedEntries(), ownEntries());
}

TEST(UserDefaultsFile, XMLOfAnotherProgramIsRead) {
    const vorlan::testing::TemporaryHome home;
    const ReportedProblems problems;
    replaceFile(pathIn(home), *tests::foreignXML(foreignBinary(xmlList(foreignEntries))));
    const UserDefaults store(name);
    EXPECT_EQ(store.storedEntries(), ownEntries());
    EXPECT_EQ(problems.count(), 0U);
}

TEST(UserDefaultsFile, XMLWrittenByHandIsReadAndBecomesBinaryWithTheNextSave) {
    const vorlan::testing::TemporaryHome home;
    replaceFile(pathIn(home), xmlList("\n  <key>name</key>\n  <string>Ann &amp; Bob</string>\n"));
    UserDefaults store(name);
    EXPECT_EQ(store.stringForKey("name"), "Ann & Bob");
    store.setObject(-7, "count");
    ASSERT_TRUE(store.synchronize());
    EXPECT_TRUE(contentOf(pathOf(store)).starts_with("bplist00"));
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).storedEntries(), (Value::Dictionary{{"count", -7}, {"name", "Ann & Bob"}}));
}

TEST(UserDefaultsFile, IntegersOfOtherProgramsKeepTheirSigns) {
    const vorlan::testing::TemporaryHome home;
    const auto xml = xmlList("<key>a</key><integer>-1</integer>"
                             "<key>b</key><integer>-9223372036854775808</integer>"
                             "<key>c</key><integer>9223372036854775807</integer>");
    const Value::Dictionary expected{{"a", -1},
                                     {"b", std::numeric_limits<std::int64_t>::min()},
                                     {"c", std::numeric_limits<std::int64_t>::max()}};
    replaceFile(pathIn(home), xml);
    EXPECT_EQ(UserDefaults(name).storedEntries(), expected);
    forgetEverything();
    replaceFile(pathIn(home), foreignBinary(xml));
    EXPECT_EQ(UserDefaults(name).storedEntries(), expected);
}

TEST(UserDefaultsFile, StoreWithoutEntriesLeavesNoDamagedFile) {
    const vorlan::testing::TemporaryHome home;
    const ReportedProblems problems;
    UserDefaults(name).setObject(1, "key");
    forgetEverything();
    UserDefaults(name).removeObjectForKey("key");
    forgetEverything();
    EXPECT_TRUE(UserDefaults(name).storedEntries().empty());
    UserDefaults(name).setObject(2, "key");
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).integerForKey("key"), 2);
    EXPECT_EQ(problems.count(), 0U);
}

TEST(UserDefaultsFile, ChangeByAnotherProgramIsMergedWithUnsavedOnes) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.setObject("before", "ours");
    store.setObject("before", "theirs");
    store.setObject("before", "removed by them");
    ASSERT_TRUE(store.synchronize());
    replaceFile(pathOf(store), xmlList("<key>ours</key><string>before</string>"
                                       "<key>theirs</key><string>after</string>"
                                       "<key>new</key><string>after</string>"));
    store.setObject("after", "ours");
    ASSERT_TRUE(store.synchronize());
    const Value::Dictionary expected{{"ours", "after"}, {"theirs", "after"}, {"new", "after"}};
    EXPECT_EQ(store.storedEntries(), expected);
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).storedEntries(), expected);
}

TEST(UserDefaultsFile, ChangeByAnotherProgramIsToldToObservers) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.setObject("before", "name");
    ASSERT_TRUE(store.synchronize());
    Inbox<std::string> seen;
    const Queue queue("com.example.settings");
    auto observation =
        store.observe("name", queue, [&] { seen.put(store.stringForKey("name").value_or("absent")); });
    replaceFile(pathOf(store), foreignBinary(xmlList("<key>name</key><string>after</string>")));
    EXPECT_EQ(seen.take(), "after");
    replaceFile(pathOf(store), xmlList("<key>other</key><string>after</string>"));
    EXPECT_EQ(seen.take(), "absent");
    replaceFile(pathOf(store), foreignBinary(xmlList("<key>name</key><string>again</string>")));
    EXPECT_EQ(seen.take(), "again");
    observation.invalidate();
    queue.sync([] {});
}

TEST(UserDefaultsFile, UnchangedKeysAreNotTold) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.setObject(1, "same");
    store.setObject(1, "counter");
    ASSERT_TRUE(store.synchronize());
    Inbox<std::string> told;
    const Queue queue("com.example.settings");
    auto same = store.observe("same", queue, [&] { told.put("same"); });
    auto counter = store.observe("counter", queue, [&] { told.put("counter"); });
    // What was told by the first edit is on the queue before what is told by the second.
    for (const std::string number : {"2", "3"}) {
        replaceFile(pathOf(store), xmlList("<key>same</key><integer>1</integer>"
                                           "<key>counter</key><integer>" +
                                           number + "</integer>"));
        EXPECT_EQ(told.take(), "counter");
    }
    same.invalidate();
    counter.invalidate();
    queue.sync([] {});
    EXPECT_EQ(told.count(), 0U);
}

TEST(UserDefaultsFile, RegisteredValueCountsOnceTheFileIsDeleted) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.registerDefaults({{"name", "nobody"}});
    store.setObject("Ann", "name");
    ASSERT_TRUE(store.synchronize());
    std::filesystem::remove(pathOf(store));
    EXPECT_TRUE(
        vorlan::testing::MainLoop::pumpUntil([&] { return store.stringForKey("name") == "nobody"; }, 10s));
    store.setObject("Bob", "name");
    ASSERT_TRUE(store.synchronize());
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).stringForKey("name"), "Bob");
}

TEST(UserDefaultsFile, ChangeIsSavedWithoutBeingAskedTo) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.setObject(7, "count");
    const auto isSaved = [&] {
        const auto list = tests::foreignInteger(contentOf(pathOf(store)), "count");
        return list && *list == 7U;
    };
    EXPECT_TRUE(vorlan::testing::MainLoop::pumpUntil(isSaved, 10s));
}

TEST(UserDefaultsFile, SavedStoreLeavesNoFileOfAnInterruptedSave) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    for (int i = 0; i < 20; ++i) {
        store.setObject(i, "count");
        ASSERT_TRUE(store.synchronize());
    }
    for (const auto& entry : std::filesystem::directory_iterator(pathOf(store).parent_path())) {
        const auto file = entry.path().filename().string();
        const bool isKnown =
            file == "defaults.plist" || file == "defaults.lock" || file.ends_with(".journal");
        EXPECT_TRUE(isKnown) << file;
    }
}
