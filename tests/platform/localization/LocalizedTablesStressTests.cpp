// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/LocalizedTables.h"

#include "tests/platform/defaults/ReportedProblems.h"
#include "tests/platform/localization/TableTree.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;

namespace {

constexpr int readerCount = 4;
constexpr int rounds = 100;

// A table whose texts all name the version.
std::string tableOf(int version) {
    std::string text;
    for (int i = 0; i < 40; ++i)
        text += "k" + std::to_string(i) + " = \"v" + std::to_string(version) + "\";\n";
    return text;
}

// What a reader sees in one lookup: both texts are of one version.
std::string versionIn(const std::string& resources, const std::string& table) {
    std::string version;
    useFolderTexts({resources, "de", table}, [&](const FolderTexts& texts) {
        const auto* const first = texts.find("k0");
        const auto* const last = texts.find("k39");
        if (first == nullptr || last == nullptr) {
            version = texts.isTableThere ? "torn" : "absent";
        } else {
            version = first->text == last->text ? first->text : "mixed";
        }
    });
    return version;
}

// Readers that look up until `change` has been called for every round.
template <class Look, class Change>
void readWhile(Look look, Change change) {
    std::latch start(readerCount + 1);
    std::atomic<bool> isOver = false;
    std::vector<std::jthread> readers;
    for (int i = 0; i < readerCount; ++i)
        readers.emplace_back([&, i] {
            start.arrive_and_wait();
            while (!isOver.load(std::memory_order_relaxed)) look(i);
            look(i);
        });
    start.arrive_and_wait();
    for (int round = 1; round <= rounds; ++round) {
        change(round);
        recheckLocalizedTables();
        std::this_thread::yield();
    }
    isOver = true;
}

class LocalizedTablesStressTest : public ::testing::Test {
protected:
    void put(int version) const { tree_.put("de", "Localizable.strings", tableOf(version)); }
    std::string version() const { return versionIn(tree_.resources().native(), ""); }

    tests::TableTree tree_;
    tests::ReportedProblems problems_;
};

} // namespace

TEST_F(LocalizedTablesStressTest, EveryTextIsOfOneWholeVersionAndNoneGoesBack) {
    put(0);
    std::vector<int> seen(readerCount);
    readWhile(
        [&](int reader) {
            const auto text = version();
            ASSERT_EQ(text.front(), 'v') << text;
            const auto number = std::stoi(text.substr(1));
            ASSERT_GE(number, seen[static_cast<std::size_t>(reader)]);
            seen[static_cast<std::size_t>(reader)] = number;
        },
        [&](int round) { put(round); });
    recheckLocalizedTables();
    EXPECT_EQ(version(), "v" + std::to_string(rounds));
    EXPECT_EQ(problems_.count(), 0U);
}

TEST_F(LocalizedTablesStressTest, FileMayComeAndGoWhileItIsUsed) {
    put(0);
    readWhile(
        [&](int) {
            const auto text = version();
            ASSERT_TRUE(text == "absent" || text.front() == 'v') << text;
        },
        [&](int round) {
            if (round % 2 == 0) {
                put(round);
            } else {
                std::filesystem::remove(tree_.folder("de") / "Localizable.strings");
            }
        });
    recheckLocalizedTables();
    EXPECT_EQ(version(), "v" + std::to_string(rounds));
    EXPECT_EQ(problems_.count(), 0U);
}

TEST_F(LocalizedTablesStressTest, ManyTablesMayBeUsedByManyThreads) {
    put(0);
    const auto resources = tree_.resources().native();
    readWhile(
        [&](int reader) {
            for (int i = 0; i < 300; ++i) {
                const auto table = "t" + std::to_string(reader) + "-" + std::to_string(i);
                ASSERT_EQ(versionIn(resources, table), "absent");
            }
            ASSERT_EQ(version().front(), 'v');
        },
        [&](int round) { put(round); });
    EXPECT_EQ(problems_.count(), 0U);
}
