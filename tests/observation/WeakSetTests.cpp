// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Observation/WeakSet.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <memory>
#include <new>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

struct Member {
    int value = 0;
};

struct Left {
    virtual ~Left() = default;
};
struct Right {
    virtual ~Right() = default;
};
struct Both : Left, Right {};

std::vector<std::shared_ptr<Member>> makeMembers(std::size_t count) {
    std::vector<std::shared_ptr<Member>> members(count);
    std::ranges::generate(members, [] { return std::make_shared<Member>(); });
    return members;
}

} // namespace

TEST(WeakSet, InsertingTheSameObjectTwiceLeavesOneMember) {
    const auto member = std::make_shared<Member>();
    WeakSet<Member> set;
    set.insert(member);
    set.insert(member);
    EXPECT_EQ(set.count(), 1U);
    EXPECT_EQ(set.allObjects(), std::vector{member});
}

TEST(WeakSet, DeadMemberIsCountedUntilAllObjectsPurgesIt) {
    const auto survivor = std::make_shared<Member>();
    auto mortal = std::make_shared<Member>();
    WeakSet<Member> set{survivor, mortal};
    mortal.reset();
    EXPECT_EQ(set.count(), 2U);
    EXPECT_EQ(set.allObjects(), std::vector{survivor});
    EXPECT_EQ(set.count(), 1U);
}

TEST(WeakSet, OnlyCleanupAndAllObjectsPurge) {
    const auto survivor = std::make_shared<Member>();
    auto mortal = std::make_shared<Member>();
    WeakSet<Member> set{mortal};
    mortal.reset();
    set.insert(survivor);
    EXPECT_TRUE(set.contains(survivor));
    set.remove(std::make_shared<Member>());
    for (const auto& member : set) EXPECT_EQ(member, survivor);
    EXPECT_EQ(set.count(), 2U);
    set.cleanup();
    EXPECT_EQ(set.count(), 1U);
}

TEST(WeakSet, ContainsRightAfterInsertOnTheSameThreadIsTrue) {
    WeakSet<Member> set;
    for (const auto& member : makeMembers(100)) {
        EXPECT_FALSE(set.contains(member));
        set.insert(member);
        EXPECT_TRUE(set.contains(member));
        set.remove(member);
        EXPECT_FALSE(set.contains(member));
    }
}

TEST(WeakSet, RemoveOfAnObjectThatIsNotAMemberChangesNothing) {
    const auto member = std::make_shared<Member>();
    WeakSet<Member> set{member};
    set.remove(std::make_shared<Member>());
    EXPECT_EQ(set.allObjects(), std::vector{member});
    WeakSet<Member> empty;
    empty.remove(member);
    EXPECT_EQ(empty.count(), 0U);
}

TEST(WeakSet, MadeFromAnEmptyListIsEmpty) {
    WeakSet<Member> set({});
    EXPECT_EQ(set.count(), 0U);
    EXPECT_TRUE(set.allObjects().empty());
    EXPECT_EQ(set.begin(), set.end());
}

TEST(WeakSet, MadeFromASequenceWithRepeatsHoldsEachObjectOnce) {
    const auto members = makeMembers(3);
    WeakSet<Member> fromList{members[0], members[1], members[0]};
    EXPECT_EQ(fromList.count(), 2U);
    std::vector<std::shared_ptr<Member>> sequence = members;
    sequence.insert(sequence.end(), members.begin(), members.end());
    WeakSet<Member> fromSequence(sequence);
    EXPECT_EQ(fromSequence.count(), 3U);
    WeakSet<Member> fromSet(fromSequence);
    EXPECT_EQ(fromSet.count(), 3U);
}

TEST(WeakSet, IterationYieldsTheSnapshotTakenWhenTheIteratorWasMade) {
    const auto members = makeMembers(64);
    WeakSet<Member> set(std::vector(members.begin(), members.begin() + 32));
    auto walk = set.makeIterator();
    std::jthread([&] {
        for (std::size_t i = 32; i < 64; ++i) set.insert(members[i]);
    }).join();
    std::set<std::shared_ptr<Member>> seen;
    while (auto member = walk.next()) EXPECT_TRUE(seen.insert(member).second);
    EXPECT_EQ(seen, std::set(members.begin(), members.begin() + 32));
    EXPECT_EQ(set.count(), 64U);
}

TEST(WeakSet, IterationSkipsMembersThatDiedSinceItBegan) {
    auto members = makeMembers(3);
    WeakSet<Member> set(members);
    auto walk = set.makeIterator();
    auto first = walk.next();
    members.clear();
    EXPECT_EQ(walk.next(), nullptr);
    EXPECT_EQ(walk.next(), nullptr);
    EXPECT_EQ(first.use_count(), 1);
    EXPECT_EQ(set.count(), 3U);
}

TEST(WeakSet, LoopOverTheSetMayChangeIt) {
    const auto members = makeMembers(10);
    WeakSet<Member> set(members);
    std::size_t steps = 0;
    for (const auto& member : set) {
        set.remove(member);
        ++steps;
    }
    EXPECT_EQ(steps, 10U);
    EXPECT_EQ(set.count(), 0U);
}

TEST(WeakSet, RemoveAllObjectsEmptiesIt) {
    const auto members = makeMembers(10);
    WeakSet<Member> set(members);
    set.insert(std::make_shared<Member>());
    EXPECT_EQ(set.count(), 11U);
    set.removeAllObjects();
    EXPECT_EQ(set.count(), 0U);
}

TEST(WeakSet, ObjectSeenThroughTwoInterfacesIsOneMember) {
    const auto object = std::make_shared<Both>();
    WeakSet<Left> set{object};
    const std::shared_ptr<Left> again(object, static_cast<Left*>(object.get()));
    set.insert(again);
    EXPECT_EQ(set.count(), 1U);
}

TEST(WeakSet, NewObjectAtTheAddressOfADeadMemberCountsAsContainedUntilThePurge) {
    alignas(Member) std::byte storage[sizeof(Member)];
    const auto makeInPlace = [&] {
        return std::shared_ptr<Member>(::new (storage) Member,
                                       [](Member* member) { std::destroy_at(member); });
    };
    auto former = makeInPlace();
    WeakSet<Member> set{former};
    former.reset();
    const auto latter = makeInPlace();
    EXPECT_TRUE(set.contains(latter));
    set.insert(latter);
    EXPECT_TRUE(set.allObjects().empty());
    set.insert(latter);
    EXPECT_EQ(set.allObjects(), std::vector{latter});
}

TEST(WeakSet, ObjectMadeByMakeSharedKeepsItsAddressWhileTheSetRemembersIt) {
    WeakSet<Member> set;
    for (int i = 0; i < 1000; ++i) {
        const auto member = std::make_shared<Member>();
        EXPECT_FALSE(set.contains(member));
        set.insert(member);
    }
    EXPECT_EQ(set.count(), 1000U);
}

TEST(WeakSet, KeepsItsIndexInOrderOverRandomChanges) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto members = makeMembers(300);
    WeakSet<Member> set;
    std::set<std::shared_ptr<Member>> model;
    for (int i = 0; i < 20'000; ++i) {
        const auto& member = members[random() % members.size()];
        if (random() % 2 == 0) {
            set.insert(member);
            model.insert(member);
        } else {
            set.remove(member);
            model.erase(member);
        }
        ASSERT_EQ(set.contains(member), model.contains(member));
        ASSERT_EQ(set.count(), model.size());
    }
    const auto all = set.allObjects();
    EXPECT_EQ(std::set(all.begin(), all.end()), model);
}

TEST(WeakSet, WritesWithinOneThreadTakeEffectInOrderHoweverBusyTheSetIs) {
    WeakSet<Member> set;
    std::atomic<bool> isOver = false;
    std::vector<std::jthread> others;
    for (int t = 0; t < 3; ++t)
        others.emplace_back([&] {
            const auto crowd = makeMembers(200);
            while (!isOver) {
                for (const auto& member : crowd) set.insert(member);
                set.allObjects();
                for (const auto& member : crowd) set.remove(member);
            }
        });
    const auto member = std::make_shared<Member>();
    for (int i = 0; i < 3000; ++i) {
        set.insert(member);
        ASSERT_TRUE(set.contains(member));
        set.remove(member);
        ASSERT_FALSE(set.contains(member));
    }
    isOver = true;
}

TEST(WeakSetDeathTest, NullPointerStopsTheProcess) {
    support::useWorkerThreads();
    WeakSet<Member> set;
    const auto message =
        "VorlanFoundation/WeakSet: Fatal error: a weak set holds objects, and was given none";
    EXPECT_DEATH(set.insert(nullptr), message);
    EXPECT_DEATH(set.remove(nullptr), message);
    EXPECT_DEATH(set.contains(nullptr), message);
}
