// SPDX-License-Identifier: Apache-2.0
#include "platform/defaults/OrphanedJournal.h"

#include "platform/defaults/Change.h"
#include "platform/defaults/DefaultsJournal.h"
#include "tests/support/DescriptorCount.h"

#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace vorlan::defaults;

namespace {

Data changeBytes(const std::string& key, std::optional<Value> value) {
    return encodeChange(key, value);
}

Data bytesOf(const auto& record) {
    const auto bytes = std::as_bytes(std::span(&record, 1));
    return {bytes.begin(), bytes.end()};
}

void appendTo(Data& bytes, const Data& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

// A journal's bytes, and where its changes begin.
struct Journal {
    Data bytes = bytesOf(JournalHeader());
    std::vector<std::size_t> places{};

    void add(const std::string& key, std::optional<Value> value) {
        const auto change = changeBytes(key, std::move(value));
        places.push_back(bytes.size());
        appendTo(bytes, bytesOf(static_cast<ChangeLength>(change.size())));
        appendTo(bytes, change);
    }
};

Journal journalOfThree() {
    Journal journal;
    journal.add("a", 1);
    journal.add("b", std::nullopt);
    journal.add("a", "two");
    return journal;
}

// What became of a journal that was taken over.
struct Outcome {
    std::vector<std::string> changes;
    std::size_t problems = 0;
    std::vector<std::string> files; ///< That are in the folder afterwards.

    bool operator==(const Outcome&) const = default;
};

const std::vector<std::string> allThree{"a = 1", "b removed", "a = two"};

class OrphanedJournals : public ::testing::Test {
protected:
    OrphanedJournals() { std::filesystem::create_directories(folder_); }

    std::filesystem::path write(const Data& bytes, const std::string& name = "defaults.1-a.journal") const {
        std::ofstream(folder_ / name, std::ios::binary) << textFromData(bytes);
        return folder_ / name;
    }

    Outcome takeOver() const {
        Outcome outcome;
        Problems problems;
        for (auto& orphan : OrphanedJournal::allIn(folder_, "defaults.own.journal")) {
            for (const auto& [key, value] : orphan.changes())
                outcome.changes.push_back(value ? key + " = " + value->description() : key + " removed");
            orphan.discard(problems);
        }
        outcome.problems = problems.size();
        for (const auto& entry : std::filesystem::directory_iterator(folder_))
            outcome.files.push_back(entry.path().filename());
        return outcome;
    }

    Outcome takeOver(const Data& bytes) const {
        write(bytes);
        auto outcome = takeOver();
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) std::filesystem::remove(entry);
        return outcome;
    }

    // The outcome where damage was found: the file is kept aside.
    static Outcome aside(std::vector<std::string> changes) {
        return {std::move(changes), 1, {"defaults.1-a.journal.damaged-1"}};
    }

    // A journal's name by a process that has ended.
    static std::string nameOfADeadMaker(int number) {
        const auto maker = fork();
        if (maker == 0) _exit(0);
        EXPECT_EQ(waitpid(maker, nullptr, 0), maker);
        return "defaults." + std::to_string(maker) + "-" + std::to_string(number) + ".journal";
    }

    static Descriptor locked(const std::filesystem::path& path) {
        Descriptor file(open(path.c_str(), O_RDWR | O_CLOEXEC));
        EXPECT_EQ(flock(file.number(), LOCK_EX | LOCK_NB), 0);
        return file;
    }

    const vorlan::testing::TemporaryHome home_;
    const std::filesystem::path folder_ = home_.path() / "store";
};

} // namespace

TEST_F(OrphanedJournals, ChangesAreTakenOverInTheirOrderAndTheFileGoes) {
    EXPECT_EQ(takeOver(journalOfThree().bytes), (Outcome{allThree}));
}

TEST_F(OrphanedJournals, JournalThatAProcessLeavesIsTakenOver) {
    // A copy stands for what is there after a kill: nobody holds its lock.
    {
        DefaultsJournal journal;
        ASSERT_TRUE(journal.append(folder_, changeBytes("a", 1)));
        const auto place = journal.end();
        ASSERT_TRUE(journal.append(folder_, changeBytes("b", std::nullopt)));
        journal.forgetBefore(place);
        ASSERT_TRUE(journal.append(folder_, changeBytes("c", 3)));
        EXPECT_TRUE(OrphanedJournal::allIn(folder_, "").empty()) << "it is in use";
        std::filesystem::copy_file(folder_ / journal.name(), folder_ / "defaults.copy.journal");
        journal.forgetBefore(journal.end());
    }
    EXPECT_EQ(takeOver(), (Outcome{{"b removed", "c = 3"}}));
}

TEST_F(OrphanedJournals, JournalWhoseChangesWereAllSavedHasNothingToTakeOver) {
    DefaultsJournal journal;
    ASSERT_TRUE(journal.append(folder_, changeBytes("a", 1)));
    journal.forgetBefore(journal.end());
    std::filesystem::rename(folder_ / journal.name(), home_.path() / "kept");
    std::filesystem::copy_file(home_.path() / "kept", folder_ / "defaults.copy.journal");
    EXPECT_EQ(takeOver(), Outcome());
}

TEST_F(OrphanedJournals, JournalWhoseChangesWereAllSavedIsRemovedByItsProcess) {
    for (const bool isSaved : {true, false}) {
        std::filesystem::path path;
        {
            DefaultsJournal journal;
            ASSERT_TRUE(journal.append(folder_, changeBytes("a", 1)));
            path = folder_ / journal.name();
            EXPECT_TRUE(std::filesystem::exists(path));
            if (isSaved) journal.forgetBefore(journal.end());
        }
        EXPECT_EQ(std::filesystem::exists(path), !isSaved);
    }
}

TEST_F(OrphanedJournals, LastChangeCutShortAnywhereIsPassedOverSilently) {
    const auto journal = journalOfThree();
    for (std::size_t size = journal.places[2]; size < journal.bytes.size(); ++size) {
        const Data cut(journal.bytes.begin(), journal.bytes.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(takeOver(cut), (Outcome{{"a = 1", "b removed"}})) << size;
    }
}

TEST_F(OrphanedJournals, EmptyFileAndZeroesAtTheEndArePassedOverSilently) {
    EXPECT_EQ(takeOver(Data()), Outcome());
    EXPECT_EQ(takeOver(bytesOf(JournalHeader())), Outcome());
    auto journal = journalOfThree();
    journal.bytes.resize(journal.bytes.size() + 100);
    EXPECT_EQ(takeOver(journal.bytes), (Outcome{allThree}));
}

TEST_F(OrphanedJournals, ChangesAroundADamagedOneAreTakenOverAndTheFileIsKept) {
    const auto journal = journalOfThree();
    // Any bit of the second change, beyond its length.
    for (auto place = journal.places[1] + sizeof(ChangeLength); place < journal.places[2]; ++place) {
        auto bytes = journal.bytes;
        bytes[place] ^= std::byte{0x10};
        EXPECT_EQ(takeOver(bytes), aside({"a = 1", "a = two"})) << place;
    }
}

TEST_F(OrphanedJournals, ChangesAfterADamagedLengthAreTakenOverAndTheFileIsKept) {
    const auto journal = journalOfThree();
    for (std::size_t i = 0; i < sizeof(ChangeLength); ++i) {
        auto bytes = journal.bytes;
        bytes[journal.places[1] + i] ^= std::byte{0xFF};
        const auto outcome = takeOver(bytes);
        EXPECT_EQ(outcome.problems, 1U);
        EXPECT_EQ(outcome.files, (std::vector<std::string>{"defaults.1-a.journal.damaged-1"}));
        ASSERT_GE(outcome.changes.size(), 2U);
        EXPECT_EQ(outcome.changes.front(), "a = 1");
        EXPECT_EQ(outcome.changes.back(), "a = two");
    }
}

TEST_F(OrphanedJournals, DamagedLastChangeIsLeftOutAndTheFileIsKept) {
    auto journal = journalOfThree();
    journal.bytes.back() ^= std::byte{1};
    EXPECT_EQ(takeOver(journal.bytes), aside({"a = 1", "b removed"}));
}

TEST_F(OrphanedJournals, HoleInTheMiddleLosesOnlyWhatWasThere) {
    auto journal = journalOfThree();
    std::fill(journal.bytes.begin() + static_cast<std::ptrdiff_t>(journal.places[1]),
              journal.bytes.begin() + static_cast<std::ptrdiff_t>(journal.places[2]), std::byte{0});
    EXPECT_EQ(takeOver(journal.bytes), aside({"a = 1", "a = two"}));
}

TEST_F(OrphanedJournals, DamagedMarkKeepsTheFile) {
    auto journal = journalOfThree();
    for (std::size_t i = 0; i < sizeof(JournalHeader::mark); ++i) {
        auto bytes = journal.bytes;
        bytes[i] ^= std::byte{1};
        EXPECT_EQ(takeOver(bytes), aside({})) << i;
    }
}

TEST_F(OrphanedJournals, ForeignFileOfThatNameIsKept) {
    EXPECT_EQ(takeOver(dataFromText("x")), aside({}));
    EXPECT_EQ(takeOver(dataFromText("a diary of somebody else, which is none of ours")), aside({}));
}

TEST_F(OrphanedJournals, StartBeyondTheEndMeansThatAllWasSaved) {
    auto journal = journalOfThree();
    const JournalHeader header(journal.bytes.size() + 1000);
    std::memcpy(journal.bytes.data(), &header, sizeof header);
    EXPECT_EQ(takeOver(journal.bytes), Outcome());
}

TEST_F(OrphanedJournals, StartWithinTheHeaderIsDamageAndLosesNothing) {
    auto journal = journalOfThree();
    const JournalHeader header(0);
    std::memcpy(journal.bytes.data(), &header, sizeof header);
    EXPECT_EQ(takeOver(journal.bytes), aside(allThree));
}

TEST_F(OrphanedJournals, StartAmongTheChangesLeavesOutWhatWasSaved) {
    auto journal = journalOfThree();
    const JournalHeader header(journal.places[2]);
    std::memcpy(journal.bytes.data(), &header, sizeof header);
    EXPECT_EQ(takeOver(journal.bytes), (Outcome{{"a = two"}}));
}

TEST_F(OrphanedJournals, DamagedStartLosesNothing) {
    const auto journal = journalOfThree();
    for (std::size_t bit = 0; bit < 64; ++bit) {
        auto bytes = journal.bytes;
        bytes[offsetof(JournalHeader, start) + bit / 8] ^= static_cast<std::byte>(1U << (bit % 8));
        EXPECT_EQ(takeOver(bytes), aside(allThree)) << bit;
    }
}

TEST_F(OrphanedJournals, LengthOfTheLastThatBecameTooLargeLosesNothing) {
    auto journal = journalOfThree();
    journal.bytes[journal.places[2] + sizeof(ChangeLength) - 1] ^= std::byte{0x40};
    EXPECT_EQ(takeOver(journal.bytes), aside(allThree));
}

TEST_F(OrphanedJournals, FolderInPlaceOfAJournalIsLeftAlone) {
    std::filesystem::create_directory(folder_ / "defaults.1-a.journal");
    EXPECT_EQ(takeOver(), (Outcome{{}, 0, {"defaults.1-a.journal"}}));
}

TEST_F(OrphanedJournals, LinksAndOtherFilesAreLeftAlone) {
    const auto elsewhere = home_.path() / "elsewhere";
    std::ofstream(elsewhere, std::ios::binary) << textFromData(journalOfThree().bytes);
    std::filesystem::create_symlink(elsewhere, folder_ / "defaults.2-b.journal");
    write(journalOfThree().bytes, "defaults.plist");
    write(journalOfThree().bytes, "defaults.own.journal");
    const auto outcome = takeOver();
    EXPECT_TRUE(outcome.changes.empty());
    EXPECT_EQ(outcome.problems, 0U);
    EXPECT_EQ(outcome.files.size(), 3U);
    EXPECT_TRUE(std::filesystem::exists(elsewhere));
}

TEST_F(OrphanedJournals, OldestComesFirst) {
    const auto now = std::filesystem::file_time_type::clock::now();
    const char* const names[] = {"defaults.3-c.journal", "defaults.1-a.journal", "defaults.2-b.journal"};
    for (int i = 0; i < 3; ++i) {
        Journal journal;
        journal.add("key", i);
        std::filesystem::last_write_time(write(journal.bytes, names[i]), now + std::chrono::seconds(i));
    }
    EXPECT_EQ(takeOver(), (Outcome{{"key = 0", "key = 1", "key = 2"}}));
}

// The other thread stands for the kernel, and may be late on a busy machine.
TEST_F(OrphanedJournals, LockThatOutlivesItsProcessForAMomentIsWaitedFor) {
    std::vector<std::string> changes;
    for (int round = 0; round < 10 && changes.empty(); ++round) {
        const auto path = write(journalOfThree().bytes, nameOfADeadMaker(round));
        Descriptor holder = locked(path);
        std::atomic<bool> isOver = false;
        std::thread kernel([&] {
            while (support::openCount(path) < 2 && !isOver) std::this_thread::yield();
            holder = Descriptor();
        });
        changes = takeOver().changes;
        isOver = true;
        kernel.join();
    }
    EXPECT_EQ(changes, allThree);
}

TEST_F(OrphanedJournals, JournalThatStaysLockedIsLeftAlone) {
    const auto path = write(journalOfThree().bytes, nameOfADeadMaker(0));
    const auto holder = locked(path);
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto outcome = takeOver();
        EXPECT_TRUE(outcome.changes.empty());
        EXPECT_EQ(outcome.files, std::vector<std::string>{path.filename()});
    }
}

TEST_F(OrphanedJournals, MayBeInAFolderOnlyWhenAnotherJournalIs) {
    EXPECT_FALSE(OrphanedJournal::mayBeIn(folder_, ""));
    EXPECT_FALSE(OrphanedJournal::mayBeIn(folder_ / "missing", ""));
    write(Data(), "defaults.own.journal");
    write(Data(), "defaults.plist");
    EXPECT_FALSE(OrphanedJournal::mayBeIn(folder_, "defaults.own.journal"));
    EXPECT_TRUE(OrphanedJournal::mayBeIn(folder_, "defaults.other.journal"));
}

TEST(Change, ComesBackAsItIsAndTheValueIsOnlyLent) {
    std::optional<Value> value(Value::Array{1, "two"});
    const auto bytes = encodeChange("key", value);
    EXPECT_EQ(value, Value(Value::Array{1, "two"}));
    const auto change = decodeChange(bytes);
    ASSERT_TRUE(change);
    EXPECT_EQ(change->key, "key");
    EXPECT_EQ(change->value, value);
    const auto removal = decodeChange(changeBytes("", std::nullopt));
    ASSERT_TRUE(removal);
    EXPECT_EQ(removal->key, "");
    EXPECT_EQ(removal->value, std::nullopt);
}

TEST(Change, ValueThatCannotBeWrittenIsGivenBack) {
    std::optional<Value> value(Value::Array{"\xFF"});
    EXPECT_THROW(encodeChange("key", value), std::invalid_argument);
    EXPECT_EQ(value, Value(Value::Array{"\xFF"}));
    EXPECT_THROW(changeBytes("\xFF", std::nullopt), std::invalid_argument);
}
