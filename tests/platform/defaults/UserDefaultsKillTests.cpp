// SPDX-License-Identifier: Apache-2.0

// Processes that are killed while they write, and what they leave behind.

#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/platform/defaults/ForeignPropertyList.h"
#include "tests/platform/defaults/HostProcess.h"
#include "tests/platform/defaults/ReportedProblems.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <random>
#include <string>

using namespace vorlan;
using tests::contentOf;
using tests::forgetEverything;
using tests::HostProcess;

namespace {

constexpr auto name = "com.example.editor";
#ifdef VORLAN_SANITIZED
constexpr int rounds = 40;
#else
constexpr int rounds = 200;
#endif

// What a flooding host does with its n-th write.
void applyWrite(Value::Dictionary& entries, int base, std::size_t n) {
    const auto key = "k" + std::to_string(n % 50);
    if (n % 7 == 0) {
        entries.erase(key);
    } else {
        entries[key] = base + static_cast<int>(n);
    }
}

// A process that writes until it is killed; returns how many writes it had acknowledged.
std::size_t writeUntilKilled(int base, bool saves, std::mt19937& random) {
    HostProcess host(name);
    host.tell((saves ? "flood-and-save " : "flood ") + std::to_string(base));
    // Now and then long enough for a save that comes by itself.
    const bool isLong = std::uniform_int_distribution(1, 20)(random) == 1;
    const auto wanted = std::uniform_int_distribution<std::size_t>(0, isLong ? 4000 : 200)(random);
    const auto read = host.readAcknowledgements(wanted);
    EXPECT_GE(read, wanted);
    return read + host.kill();
}

// Nothing that was acknowledged is missing in `found`; the one write that was under way may be there or not.
void expectAcknowledged(Value::Dictionary& expected, int base, std::size_t count, const std::string& found) {
    for (std::size_t n = 1; n <= count; ++n) applyWrite(expected, base, n);
    auto withTheNext = expected;
    applyWrite(withTheNext, base, count + 1);
    if (found == Value(withTheNext).description()) expected = withTheNext;
    EXPECT_EQ(found, Value(expected).description()) << count << " were acknowledged";
}

std::filesystem::path folderIn(const vorlan::testing::TemporaryHome& home) {
    return home.path() / ".config" / name;
}

std::optional<std::filesystem::path> journalWithContent(const std::filesystem::path& folder) {
    if (!std::filesystem::exists(folder)) return std::nullopt;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".journal" && entry.file_size() > 0) return entry.path();
    return std::nullopt;
}

// What a killed process left: twenty entries that no file has yet, "key0" to "key19", each its number.
struct Remains {
    std::filesystem::path path;
    std::string journal;
};

// A process that is slow to be killed saves before; then another one tries.
std::optional<Remains> leaveJournal(const vorlan::testing::TemporaryHome& home) {
    const auto folder = folderIn(home);
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::filesystem::remove_all(folder);
        HostProcess host(name);
        EXPECT_EQ(host.ask("open"), name);
        for (int i = 0; i < 20; ++i) host.tell("set key" + std::to_string(i) + " " + std::to_string(i));
        for (int i = 0; i < 20; ++i) EXPECT_EQ(host.answer(), "ok");
        host.kill();
        const auto path = journalWithContent(folder);
        if (path && !std::filesystem::exists(folder / "defaults.plist"))
            return Remains{*path, contentOf(*path)};
    }
    return std::nullopt;
}

// Has a journal taken over by a process that starts anew; returns what that finds.
Value::Dictionary takeOver(const Remains& remains, const std::string& journal) {
    forgetEverything();
    std::filesystem::remove_all(remains.path.parent_path());
    tests::replaceFile(remains.path, journal);
    auto found = UserDefaults(name).storedEntries();
    UserDefaults(name).setObject(1, "later");
    EXPECT_TRUE(UserDefaults(name).synchronize());
    EXPECT_EQ(UserDefaults(name).integerForKey("later"), 1);
    found.erase("later");
    return found;
}

// Every entry that was found is one that was written; returns how many there are.
int expectOnlyTrueEntries(const Value::Dictionary& found) {
    for (const auto& [key, value] : found) {
        const auto number = value.as<int>();
        EXPECT_TRUE(number && *number >= 0 && *number < 20) << key;
        EXPECT_EQ(key, "key" + std::to_string(number.value_or(-1)));
    }
    return static_cast<int>(found.size());
}

} // namespace

TEST(UserDefaultsKill, EveryAcknowledgedWriteSurvivesAKillAtAnyInstant) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const vorlan::testing::TemporaryHome home;
    Value::Dictionary expected;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        const int base = round * 1'000'000;
        const auto count = writeUntilKilled(base, round % 2 == 0, random);
        const auto file = contentOf(folderIn(home) / "defaults.plist");
        EXPECT_TRUE(file.empty() || tests::foreignXML(file))
            << "round " << round << ": the file is not whole";
        HostProcess fresh(name);
        const auto found = fresh.ask("all");
        SCOPED_TRACE("round " + std::to_string(round));
        expectAcknowledged(expected, base, count, found);
        EXPECT_EQ(fresh.ask("problems"), "0 ");
    }
}

TEST(UserDefaultsKill, JournalOfADeadProcessIsTakenOver) {
    const vorlan::testing::TemporaryHome home;
    const tests::ReportedProblems problems;
    const auto remains = leaveJournal(home);
    ASSERT_TRUE(remains);
    const auto found = takeOver(*remains, remains->journal);
    EXPECT_EQ(expectOnlyTrueEntries(found), 20);
    EXPECT_EQ(problems.count(), 0U);
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).storedEntries().size(), 21U);
    EXPECT_FALSE(std::filesystem::exists(remains->path)) << "it would be taken over again and again";
}

// The journal went with its folder; what is set from then on must not go into the file that nobody will find.
TEST(UserDefaultsKill, WriteAfterTheFolderWasRemovedSurvives) {
    const vorlan::testing::TemporaryHome home;
    HostProcess host(name);
    EXPECT_EQ(host.ask("set before 1"), "ok");
    EXPECT_EQ(host.ask("synchronize"), "true");
    std::filesystem::remove_all(folderIn(home));
    EXPECT_EQ(host.ask("synchronize"), "true");
    EXPECT_EQ(host.ask("set after 2"), "ok");
    host.kill();
    EXPECT_EQ(UserDefaults(name).storedEntries(), (Value::Dictionary{{"after", 2}}));
}

// A process that is killed amid a write leaves half a record.
TEST(UserDefaultsKill, JournalThatEndsTooEarlyGivesAllThatIsWhole) {
    const vorlan::testing::TemporaryHome home;
    const auto remains = leaveJournal(home);
    ASSERT_TRUE(remains);
    const tests::ReportedProblems problems;
    int last = 0;
    for (std::size_t length = 0; length <= remains->journal.size() && !HasFailure(); length += 7) {
        SCOPED_TRACE(std::to_string(length) + " of " + std::to_string(remains->journal.size()) + " bytes");
        const auto found = takeOver(*remains, remains->journal.substr(0, length));
        const int count = expectOnlyTrueEntries(found);
        EXPECT_GE(count, last);
        for (int i = 0; i < count; ++i) EXPECT_TRUE(found.contains("key" + std::to_string(i))) << i;
        last = count;
    }
    EXPECT_GE(last, 19);
}

TEST(UserDefaultsKill, DamagedJournalGivesNoWrongValue) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const vorlan::testing::TemporaryHome home;
    const auto remains = leaveJournal(home);
    ASSERT_TRUE(remains);
    const tests::ReportedProblems problems;
    std::uniform_int_distribution<std::size_t> bits(0, 8 * remains->journal.size() - 1);
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        const auto bit = bits(random);
        SCOPED_TRACE("bit " + std::to_string(bit));
        auto journal = remains->journal;
        journal[bit / 8] = static_cast<char>(journal[bit / 8] ^ (1 << bit % 8));
        expectOnlyTrueEntries(takeOver(*remains, journal));
    }
}

TEST(UserDefaultsKill, FilesThatAreNoJournalsDoNoHarm) {
    const vorlan::testing::TemporaryHome home;
    const tests::ReportedProblems problems;
    const auto folder = folderIn(home);
    std::filesystem::create_directories(folder / "defaults.1-0123456789abcdef.journal");
    tests::replaceFile(folder / "defaults.2-0123456789abcdef.journal", std::string(10'000, '\xFF'));
    tests::replaceFile(folder / "defaults.3-0123456789abcdef.journal", "");
    tests::replaceFile(folder / "notes.journal", "somebody's");
    UserDefaults store(name);
    EXPECT_TRUE(store.storedEntries().empty());
    store.setObject(1, "key");
    EXPECT_TRUE(store.synchronize());
    EXPECT_EQ(contentOf(folder / "notes.journal"), "somebody's");
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).storedEntries(), (Value::Dictionary{{"key", 1}}));
}
