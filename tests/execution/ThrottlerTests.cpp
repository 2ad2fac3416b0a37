// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/Throttler.h>

#include "tests/execution/CalendarProvider.h"
#include "tests/support/Inbox.h"

#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <limits>
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

TEST_F(ThrottlerByHand, HalfAMillisecondOfElapsedTimeIsRoundedUp) {
    Throttler quick(62, queue);
    const auto call = [&](char name) { quick.throttle([this, name] { runs += name; }); };
    call('a');
    queue.advance(62'500us); // A sixteenth of a second, which the calendar holds exactly.
    call('b');
    queue.runPending();
    EXPECT_EQ(runs, "ab") << "63 milliseconds: more than the interval";
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

TEST_F(ThrottlerByHand, DroppedDuringTheWaitRunsNothingAndLetsGoOfTheBlockAtOnce) {
    const auto value = std::make_shared<int>(1);
    std::optional<Throttler> dropped(std::in_place, 500, queue);
    dropped->throttle([this] { runs += 'a'; });
    queue.advance(100ms);
    dropped->throttle([this, value] { runs += 'b'; });
    queue.advance(100ms);
    dropped.reset();
    EXPECT_EQ(value.use_count(), 1);
    queue.advance(10s);
    EXPECT_EQ(runs, "a");
}

TEST_F(ThrottlerByHand, AssigningDropsTheBlockThatWaits) {
    call('x');
    throttler = Throttler(500, queue);
    call('a');
    queue.advance(10s);
    EXPECT_EQ(runs, "a");
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

TEST(Throttler, LongestIntervalNeverLetsABlockRun) {
    ManualQueue queue;
    Throttler throttler(std::numeric_limits<std::int64_t>::max(), queue);
    throttler.throttle([] { FAIL() << "ran before its wait was over"; });
    queue.advance(std::chrono::seconds(3'000'000'000));
}

TEST(Throttler, CalendarSetBackCostsTheFullWaitAndNoMore) {
    const auto calendar = std::make_shared<CalendarProvider>(Date(1e9));
    std::string runs;
    Throttler throttler(500, Queue(calendar));
    throttler.throttle([&] { runs += 'a'; });
    calendar->advance(0s);
    calendar->setDate(Date(1e9 - 3600));
    throttler.throttle([&] { runs += 'b'; });
    calendar->advance(499ms);
    EXPECT_EQ(runs, "a");
    calendar->advance(1ms);
    EXPECT_EQ(runs, "ab");
}

TEST(Throttler, CalendarSetForwardLetsABlockRunAtOnce) {
    const auto calendar = std::make_shared<CalendarProvider>(Date(1e9));
    std::string runs;
    Throttler throttler(500, Queue(calendar));
    throttler.throttle([&] { runs += 'a'; });
    calendar->advance(0s);
    calendar->setDate(Date(1e9 + 3600));
    throttler.throttle([&] { runs += 'b'; });
    calendar->advance(0s);
    EXPECT_EQ(runs, "ab");
}

TEST(Throttler, TimeOfThePreviousRunIsThatOfItsBeginning) {
    const auto calendar = std::make_shared<CalendarProvider>(Date(0));
    std::string runs;
    Throttler throttler(500, Queue(calendar));
    throttler.throttle([&] {
        runs += 'a';
        calendar->setDate(Date(0.75)); // The block takes that long.
    });
    calendar->advance(0s);
    throttler.throttle([&] { runs += 'b'; });
    calendar->advance(0s);
    EXPECT_EQ(runs, "ab");
}

TEST(ThrottlerSmoke, RunsTheLastBlockOfManyThreadsExactlyOnce) {
    const Queue queue("throttler");
    std::atomic<int> runs = 0;
    Inbox<int> last;
    Throttler throttler(1, queue);
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
    queue.asyncAfter(10ms, [&] { later.put(runs); });
    EXPECT_EQ(later.take(), atLast);
}

// A try in which the machine let the interval go by before the second call says nothing.
TEST(ThrottlerSmoke, WaitIsNeverShorterThanTheInterval) {
    constexpr auto interval = 40ms;
    const auto deadline = DispatchTime::now() + 10s;
    while (DispatchTime::now() < deadline) {
        Inbox<DispatchTime> runs;
        const auto run = [&] { runs.put(DispatchTime::now()); };
        Throttler throttler(interval.count());
        const auto start = DispatchTime::now();
        throttler.throttle(run);
        ASSERT_TRUE(runs.take());
        const auto call = DispatchTime::now();
        throttler.throttle(run);
        const bool isInTime = DispatchTime::now() < start + (interval - 1ms);
        const auto second = runs.take();
        ASSERT_TRUE(second);
        if (!isInTime) continue;
        EXPECT_GE(*second, call + interval);
        return;
    }
    FAIL() << "no call came within the interval in ten seconds";
}
