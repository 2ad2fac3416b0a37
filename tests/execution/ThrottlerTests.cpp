// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/Throttler.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;
using vorlan::testing::ManualQueue;

namespace {

// Writes down which block ran.
struct ThrottlerByHand : ::testing::Test {
    void call(char name) {
        throttler.throttle([this, name] { runs += name; });
    }

    ManualQueue queue;
    Throttler throttler{500, queue};
    std::string runs;
};

} // namespace

TEST_F(ThrottlerByHand, RunsTheVeryFirstBlockAtOnceAndAsynchronously) {
    call('a');
    EXPECT_EQ(runs, "");
    queue.runPending();
    EXPECT_EQ(runs, "a");
}

TEST_F(ThrottlerByHand, SecondCallSoonAfterARunWaitsTheFullInterval) {
    call('a');
    queue.advance(10ms);
    call('b');
    queue.advance(499ms);
    EXPECT_EQ(runs, "a");
    queue.advance(1ms);
    EXPECT_EQ(runs, "ab");
}

TEST_F(ThrottlerByHand, SecondCallBeforeTheFirstBlockRanReplacesIt) {
    call('a');
    call('b');
    queue.advance(10s);
    EXPECT_EQ(runs, "b");
}

TEST_F(ThrottlerByHand, OfABurstOnlyTheLastBlockRuns) {
    call('a');
    queue.runPending();
    for (const char name : std::string("bcdef")) {
        call(name);
        queue.advance(100ms);
    }
    queue.advance(399ms);
    EXPECT_EQ(runs, "a");
    queue.advance(1ms);
    EXPECT_EQ(runs, "af");
}

TEST_F(ThrottlerByHand, ElapsedTimeEqualToTheIntervalGivesTheFullWait) {
    call('a');
    queue.advance(500ms);
    call('b');
    queue.advance(499ms);
    EXPECT_EQ(runs, "a");
    queue.advance(1ms);
    EXPECT_EQ(runs, "ab");
    queue.advance(501ms);
    call('c');
    queue.runPending();
    EXPECT_EQ(runs, "abc");
}

TEST_F(ThrottlerByHand, ElapsedTimeIsRoundedToWholeMilliseconds) {
    call('a');
    queue.advance(500'400us);
    call('b'); // 500 milliseconds: not more than the interval.
    queue.runPending();
    EXPECT_EQ(runs, "a");
    queue.advance(500ms);
    EXPECT_EQ(runs, "ab");
    queue.advance(500'600us);
    call('c'); // 501 milliseconds.
    queue.runPending();
    EXPECT_EQ(runs, "abc");
}

TEST_F(ThrottlerByHand, CallThatMayRunAtOnceOvertakesTheBlockThatWaits) {
    call('a');
    queue.advance(400ms);
    call('b'); // Due at 900.
    queue.advance(200ms);
    call('c'); // 600 after the run: at once.
    queue.runPending();
    EXPECT_EQ(runs, "ac");
    queue.advance(10s);
    EXPECT_EQ(runs, "ac");
}

TEST_F(ThrottlerByHand, OnlyARunMovesTheTimeOfThePreviousRun) {
    call('a');
    queue.advance(300ms);
    call('b');
    queue.advance(300ms);
    call('c'); // Had the call at 300 counted, this would wait.
    queue.runPending();
    EXPECT_EQ(runs, "ac");
}

TEST_F(ThrottlerByHand, BlockMayThrottleAgain) {
    throttler.throttle([this] { call('b'); });
    queue.advance(500ms);
    EXPECT_EQ(runs, "b");
}

TEST_F(ThrottlerByHand, DroppedThrottlerRunsNothingAndLetsGoOfTheBlockAtOnce) {
    const auto value = std::make_shared<int>(1);
    std::optional<Throttler> dropped(std::in_place, 500, queue);
    dropped->throttle([this, value] { runs += 'x'; });
    dropped.reset();
    EXPECT_EQ(value.use_count(), 1);
    queue.advance(10s);
    EXPECT_EQ(runs, "");
}

TEST_F(ThrottlerByHand, BlockMayDropTheThrottler) {
    std::optional<Throttler> dropped(std::in_place, 500, queue);
    dropped->throttle([&] {
        dropped.reset();
        runs += 'x';
    });
    queue.advance(10s);
    EXPECT_EQ(runs, "x");
}

TEST_F(ThrottlerByHand, ReplacedBlockIsLetGoAtOnce) {
    const auto value = std::make_shared<int>(1);
    throttler.throttle([value] {});
    call('b');
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(ThrottlerByHand, TakesABlockThatCanOnlyBeMoved) {
    throttler.throttle([this, name = std::make_unique<char>('m')] { runs += *name; });
    queue.runPending();
    EXPECT_EQ(runs, "m");
}

TEST_F(ThrottlerByHand, BurstOfManyCallsKeepsOneCheckOnTheQueue) {
    call('a');
    queue.runPending();
    for (int i = 0; i < 1000; ++i) call('b');
    EXPECT_EQ(queue.pendingCount(), 1U);
}

TEST_F(ThrottlerByHand, MovedThrottlerGoesOn) {
    call('a');
    Throttler moved(std::move(throttler));
    queue.runPending();
    EXPECT_EQ(runs, "a");
    moved.throttle([this] { runs += 'b'; });
    queue.advance(500ms);
    EXPECT_EQ(runs, "ab");
}

TEST(Throttler, IntervalOfZeroOrLessLetsABlockRunAsSoonAsTimeHasPassed) {
    ManualQueue queue;
    int runs = 0;
    Throttler throttler(-1, queue);
    for (int i = 0; i < 5; ++i) {
        throttler.throttle([&] { ++runs; });
        queue.runPending();
    }
    EXPECT_EQ(runs, 5);
}

TEST(ThrottlerSmoke, RunsTheLastBlockOfManyThreadsExactlyOnce) {
    std::atomic<int> runs = 0;
    Inbox<int> last;
    Throttler throttler(1);
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 8; ++t)
            threads.emplace_back([&] {
                for (int i = 0; i < 2'000; ++i) throttler.throttle([&] { ++runs; });
            });
    }
    throttler.throttle([&] { last.put(++runs); });
    ASSERT_TRUE(last.take());
    const int atLast = runs;
    Inbox<int> later;
    Queue::global(QualityOfService::background).asyncAfter(10ms, [&] { later.put(runs); });
    EXPECT_EQ(later.take(), atLast);
}

TEST(ThrottlerSmoke, WaitIsNeverShorterThanTheInterval) {
    Inbox<DispatchTime> runs;
    Throttler throttler(40);
    throttler.throttle([&] { runs.put(DispatchTime::now()); });
    ASSERT_TRUE(runs.take());
    const auto call = DispatchTime::now();
    throttler.throttle([&] { runs.put(DispatchTime::now()); });
    const auto run = runs.take();
    ASSERT_TRUE(run);
    EXPECT_GE(*run, call + 40ms);
}
