// SPDX-License-Identifier: Apache-2.0
#include "platform/cache/ReaderSlots.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace vorlan {
namespace {

TEST(ReaderSlot, NobodyIsWaitedForWhenNobodyReads) {
    int object = 0;
    int other = 0;
    const ReaderSlot slot(&other);
    ReaderSlot::awaitReadersOf(&object);
    SUCCEED();
}

TEST(ReaderSlot, ReaderIsWaitedForUntilItLeaves) {
    int object = 0;
    std::optional<ReaderSlot> slot(std::in_place, &object);
    ASSERT_TRUE(*slot);
    std::atomic<bool> hasLeft = false;
    std::thread waiter([&] {
        ReaderSlot::awaitReadersOf(&object);
        EXPECT_TRUE(hasLeft);
    });
    hasLeft = true;
    slot.reset();
    waiter.join();
}

TEST(ReaderSlot, ThreadMayReadSeveralThingsAtOnceAndThenHasNoSlotLeft) {
    std::vector<std::unique_ptr<ReaderSlot>> slots;
    int object = 0;
    do slots.push_back(std::make_unique<ReaderSlot>(&object));
    while (*slots.back() && slots.size() < 100);
    EXPECT_GT(slots.size(), 1U);
    EXPECT_LT(slots.size(), 100U);
    slots.clear();
    ReaderSlot::awaitReadersOf(&object);
    EXPECT_TRUE(ReaderSlot(&object));
}

TEST(ReadMostlyMutex, WriterWaitsForWhoAnnouncedWhatIsGuarded) {
    const int guarded = 0;
    ReadMostlyMutex mutex(&guarded);
    std::optional<ReaderSlot> slot(std::in_place, &guarded);
    ASSERT_TRUE(*slot);
    ASSERT_TRUE(mutex.mayRead());
    std::atomic<bool> hasLeft = false;
    std::thread writer([&] {
        const std::lock_guard lock(mutex);
        EXPECT_TRUE(hasLeft);
    });
    while (mutex.mayRead()) std::this_thread::yield();
    hasLeft = true;
    slot.reset();
    writer.join();
}

TEST(ReadMostlyMutex, ReadersOverlapAlsoWithoutASlot) {
    ReadMostlyMutex mutex;
    std::vector<std::unique_ptr<ReadMostlyMutex::Reader>> readers;
    for (int i = 0; i < 20; ++i) readers.push_back(std::make_unique<ReadMostlyMutex::Reader>(mutex));
    readers.clear();
    const std::lock_guard lock(mutex);
    EXPECT_FALSE(mutex.mayRead());
}

TEST(ReadMostlyMutex, ReadersSeeWholeChanges) {
    ReadMostlyMutex mutex;
    long first = 0;
    long second = 0;
    std::atomic<bool> stop = false;
    std::atomic<int> torn = 0;
    std::vector<std::jthread> readers;
    for (int i = 0; i < 3; ++i)
        readers.emplace_back([&] {
            while (!stop) {
                const ReadMostlyMutex::Reader reader(mutex);
                if (first != second) ++torn;
            }
        });
    std::vector<std::jthread> writers;
    for (int i = 0; i < 2; ++i)
        writers.emplace_back([&] {
            for (int step = 0; step < 300; ++step) {
                const std::lock_guard lock(mutex);
                ++first;
                ++second;
            }
        });
    writers.clear();
    stop = true;
    readers.clear();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(first, 600);
}

} // namespace
} // namespace vorlan
