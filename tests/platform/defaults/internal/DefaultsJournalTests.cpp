// SPDX-License-Identifier: Apache-2.0
#include "platform/defaults/DefaultsJournal.h"

#include "platform/defaults/Change.h"
#include "platform/defaults/OrphanedJournal.h"

#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <list>
#include <optional>
#include <thread>

using namespace vorlan;
using namespace vorlan::defaults;

namespace {

class DefaultsJournals : public ::testing::Test {
protected:
    DefaultsJournals() { std::filesystem::create_directories(folder_); }

    bool append(DefaultsJournal& journal) const {
        std::optional<Value> value = 1;
        return journal.append(folder_, encodeChange("key", value));
    }

    std::size_t filesInFolder() const {
        const std::filesystem::directory_iterator entries(folder_);
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    const vorlan::testing::TemporaryHome home_;
    const std::filesystem::path folder_ = home_.path() / "store";
};

TEST_F(DefaultsJournals, NewJournalIsNeverTakenForAnOrphan) {
    std::atomic<bool> isOver = false;
    std::size_t taken = 0;
    std::thread taker([&] {
        while (!isOver) taken += OrphanedJournal::allIn(folder_, "").size();
    });
    std::list<DefaultsJournal> journals;
    for (int i = 0; i < 300; ++i) EXPECT_TRUE(append(journals.emplace_back()));
    isOver = true;
    taker.join();
    EXPECT_EQ(taken, 0U);
}

TEST_F(DefaultsJournals, JournalIsItsOnlyFile) {
    DefaultsJournal journal;
    EXPECT_TRUE(append(journal));
    EXPECT_EQ(filesInFolder(), 1U);
    EXPECT_TRUE(std::filesystem::exists(folder_ / journal.name()));
}

TEST_F(DefaultsJournals, JournalOfWhichAllWasSavedIsRemovedAtTheEnd) {
    {
        DefaultsJournal journal;
        EXPECT_TRUE(append(journal));
        journal.forgetBefore(journal.end());
    }
    EXPECT_EQ(filesInFolder(), 0U);
}

TEST_F(DefaultsJournals, JournalOfWhichSomethingWasNotSavedStays) {
    {
        DefaultsJournal journal;
        EXPECT_TRUE(append(journal));
        const auto place = journal.end();
        EXPECT_TRUE(append(journal));
        journal.forgetBefore(place);
    }
    auto orphans = OrphanedJournal::allIn(folder_, "");
    ASSERT_EQ(orphans.size(), 1U);
    EXPECT_EQ(orphans.front().changes().size(), 1U);
}

TEST_F(DefaultsJournals, RemovedJournalIsFollowedByAnother) {
    DefaultsJournal journal;
    EXPECT_TRUE(append(journal));
    std::filesystem::remove_all(folder_);
    journal.leaveIfRemoved();
    EXPECT_TRUE(append(journal)) << "what it has is not saved yet";
    EXPECT_FALSE(std::filesystem::exists(folder_));
    journal.forgetBefore(journal.end());
    journal.leaveIfRemoved();
    EXPECT_EQ(journal.name(), "");
    EXPECT_TRUE(append(journal));
    EXPECT_TRUE(std::filesystem::exists(folder_ / journal.name()));
    EXPECT_EQ(filesInFolder(), 1U);
}

TEST_F(DefaultsJournals, JournalThatIsThereIsKept) {
    DefaultsJournal journal;
    EXPECT_TRUE(append(journal));
    journal.forgetBefore(journal.end());
    journal.leaveIfRemoved();
    EXPECT_TRUE(std::filesystem::exists(folder_ / journal.name()));
    EXPECT_TRUE(append(journal));
    EXPECT_EQ(filesInFolder(), 1U);
}

} // namespace
