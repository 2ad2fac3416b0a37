// SPDX-License-Identifier: Apache-2.0

// Files that are no settings, or no longer: nothing stops, and nothing is thrown away.

#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/platform/defaults/ForeignPropertyList.h"
#include "tests/platform/defaults/ReportedProblems.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

using namespace vorlan;
using tests::contentOf;
using tests::forgetEverything;
using tests::replaceFile;
using tests::ReportedProblems;

namespace {

constexpr auto name = "com.example.editor";

// Where the store is, without opening it.
std::filesystem::path storePath() {
    return std::filesystem::path(std::getenv("XDG_CONFIG_HOME")) / name /
           "defaults.plist"; // NOLINT: one thread
}

// What was kept of damaged files.
std::vector<std::filesystem::path> keptAside() {
    std::vector<std::filesystem::path> found;
    for (const auto& entry : std::filesystem::directory_iterator(storePath().parent_path()))
        if (entry.path().filename().string().starts_with("defaults.plist.damaged-"))
            found.push_back(entry.path());
    return found;
}

// The bytes of a small store.
std::string healthyFile() {
    UserDefaults store(name);
    store.setObject("Ann", "name");
    store.setObject(42, "count");
    store.setObject(Value::Array{true, 0.5, Date(1), Data{std::byte{7}}}, "list");
    EXPECT_TRUE(store.synchronize());
    return contentOf(storePath());
}

// Opens a damaged file as a process that starts anew.
void expectKeptAside(const std::string& damaged, ReportedProblems& problems) {
    forgetEverything();
    replaceFile(storePath(), damaged);
    UserDefaults store(name);
    store.registerDefaults({{"name", "nobody"}});
    EXPECT_EQ(store.stringForKey("name"), "nobody");
    EXPECT_TRUE(store.storedEntries().empty());
    EXPECT_NE(problems.take().find("VorlanFoundation/UserDefaults"), std::string::npos);
    const auto kept = keptAside();
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_EQ(contentOf(kept[0]), damaged);
}

void expectWritesToWork() {
    UserDefaults(name).setObject("Bob", "name");
    EXPECT_TRUE(UserDefaults(name).synchronize());
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).storedEntries(), (Value::Dictionary{{"name", "Bob"}}));
}

void removeKept() {
    for (const auto& path : keptAside()) std::filesystem::remove(path);
}

} // namespace

TEST(UserDefaultsDamage, FileThatEndsTooEarlyIsKeptAsideAndReported) {
    const vorlan::testing::TemporaryHome home;
    ReportedProblems problems;
    const auto file = healthyFile();
    for (std::size_t length = 0; length < file.size(); ++length) {
        SCOPED_TRACE("of " + std::to_string(file.size()) + " bytes, " + std::to_string(length));
        expectKeptAside(file.substr(0, length), problems);
        if (length % 32 == 0) expectWritesToWork();
        removeKept();
        if (HasFailure()) break;
    }
    expectWritesToWork();
    EXPECT_EQ(problems.count(), 0U);
}

TEST(UserDefaultsDamage, FileWithOneWrongBitIsKeptAsideAndReported) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const vorlan::testing::TemporaryHome home;
    ReportedProblems problems;
    const auto file = healthyFile();
    std::uniform_int_distribution<std::size_t> bits(0, 8 * file.size() - 1);
    for (int round = 0; round < 2000 && !HasFailure(); ++round) {
        const auto bit = bits(random);
        SCOPED_TRACE("bit " + std::to_string(bit));
        auto damaged = file;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
        expectKeptAside(damaged, problems);
        if (round % 100 == 0) expectWritesToWork();
        removeKept();
    }
    EXPECT_EQ(problems.count(), 0U);
}

TEST(UserDefaultsDamage, FileThatIsNoListOfEntriesIsKeptAsideAndReported) {
    const vorlan::testing::TemporaryHome home;
    ReportedProblems problems;
    const std::string array =
        R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><array/></plist>)";
    for (const auto& content :
         {std::string("volume = 11\n"), std::string(100'000, '\0'), std::string("<"), array,
          tests::foreignBinary(array), std::string("<?xml version=\"1.0\"?><plist>"),
          std::string("bplist00") + std::string(32, '\xFF')}) {
        SCOPED_TRACE(content.substr(0, 40));
        expectKeptAside(content, problems);
        expectWritesToWork();
        removeKept();
    }
    EXPECT_EQ(problems.count(), 0U);
}

TEST(UserDefaultsDamage, EveryDamagedFileIsKept) {
    const vorlan::testing::TemporaryHome home;
    ReportedProblems problems;
    std::size_t count = 0;
    for (const auto* content : {"first", "second", "third"}) {
        forgetEverything();
        replaceFile(storePath(), content);
        EXPECT_EQ(UserDefaults(name).objectForKey("key"), std::nullopt);
        EXPECT_NE(problems.take(), "no problem was reported");
        EXPECT_EQ(keptAside().size(), ++count);
    }
}

TEST(UserDefaultsDamage, FileThatIsDamagedMeanwhileIsKeptAsideAndLosesNoUnsavedWrite) {
    const vorlan::testing::TemporaryHome home;
    ReportedProblems problems;
    UserDefaults store(name);
    store.setObject(1, "saved");
    ASSERT_TRUE(store.synchronize());
    replaceFile(storePath(), "damaged");
    store.setObject(2, "unsaved");
    EXPECT_TRUE(store.synchronize());
    EXPECT_NE(problems.take(), "no problem was reported");
    ASSERT_EQ(keptAside().size(), 1U);
    EXPECT_EQ(contentOf(keptAside()[0]), "damaged");
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).integerForKey("unsaved"), 2);
}

TEST(UserDefaultsDamage, FolderInPlaceOfTheFileIsReportedAndLosesNothing) {
    const vorlan::testing::TemporaryHome home;
    ReportedProblems problems;
    const auto inside = storePath() / "somebody's file";
    replaceFile(inside, "valuable");
    UserDefaults store(name);
    store.registerDefaults({{"name", "nobody"}});
    EXPECT_EQ(store.stringForKey("name"), "nobody");
    store.setObject("Ann", "name");
    static_cast<void>(store.synchronize());
    EXPECT_NE(problems.take(), "no problem was reported");
    EXPECT_EQ(store.stringForKey("name"), "Ann");
    // It may have been moved aside, but is there with all in it.
    const auto kept = keptAside();
    EXPECT_EQ(contentOf(kept.empty() ? inside : kept[0] / "somebody's file"), "valuable");

    std::filesystem::remove_all(kept.empty() ? storePath() : kept[0]);
    store.setObject(1, "count");
    EXPECT_TRUE(store.synchronize());
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).storedEntries(), (Value::Dictionary{{"name", "Ann"}, {"count", 1}}));
}

TEST(UserDefaultsDamage, FileInPlaceOfTheStoresFolderIsReportedAndStaysAsItIs) {
    const vorlan::testing::TemporaryHome home;
    ReportedProblems problems;
    const auto folder = storePath().parent_path();
    replaceFile(folder, "somebody's file");
    UserDefaults store(name);
    EXPECT_EQ(store.objectForKey("name"), std::nullopt);
    store.setObject("Ann", "name");
    EXPECT_FALSE(store.synchronize());
    EXPECT_NE(problems.take(), "no problem was reported");
    EXPECT_EQ(store.stringForKey("name"), "Ann");
    EXPECT_EQ(contentOf(folder), "somebody's file");

    std::filesystem::remove(folder);
    store.setObject(1, "count");
    EXPECT_TRUE(store.synchronize());
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).storedEntries(), (Value::Dictionary{{"name", "Ann"}, {"count", 1}}));
}
