// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/Sampler.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
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
struct SamplerByHand : ::testing::Test {
    void call(char name) {
        sampler.sample([this, name] { runs += name; });
    }

    ManualQueue queue;
    Sampler sampler{100ms, queue};
    std::string runs;
};

} // namespace

TEST_F(SamplerByHand, OfThreeBlocksWithinADelayTheFirstRunsAtOnceAndTheThirdAtItsEnd) {
    call('a');
    EXPECT_EQ(runs, "");
    queue.runPending();
    EXPECT_EQ(runs, "a");
    queue.advance(10ms);
    call('b');
    queue.advance(10ms);
    call('c');
    queue.advance(79ms);
    EXPECT_EQ(runs, "a");
    queue.advance(1ms);
    EXPECT_EQ(runs, "ac");
    queue.advance(10s);
    EXPECT_EQ(runs, "ac");
}

TEST_F(SamplerByHand, BlockAtTheEndOfADelayStartsTheNextDelay) {
    call('a');
    call('b');
    queue.advance(100ms);
    EXPECT_EQ(runs, "ab");
    call('c');
    queue.advance(99ms);
    EXPECT_EQ(runs, "ab");
    queue.advance(1ms);
    EXPECT_EQ(runs, "abc");
}

TEST_F(SamplerByHand, AfterAQuietDelayTheNextBlockRunsAtOnce) {
    call('a');
    queue.advance(100ms);
    call('b');
    queue.runPending();
    EXPECT_EQ(runs, "ab");
}

TEST_F(SamplerByHand, DroppedDuringADelayRunsNoStoredBlock) {
    const auto value = std::make_shared<int>(1);
    std::optional<Sampler> dropped(std::in_place, 100ms, queue);
    dropped->sample([this] { runs += 'a'; });
    dropped->sample([this, value] { runs += 'b'; });
    dropped.reset();
    EXPECT_EQ(value.use_count(), 1);
    queue.advance(10s);
    EXPECT_EQ(runs, "a") << "what was submitted runs, what was stored does not";
}

TEST_F(SamplerByHand, AssigningDropsTheStoredBlock) {
    call('a');
    call('x');
    sampler = Sampler(100ms, queue);
    call('b');
    queue.advance(10s);
    EXPECT_EQ(runs, "ab");
}

TEST_F(SamplerByHand, BlockMayFillTheDelayThatItStarted) {
    sampler.sample([this] {
        runs += 'a';
        call('x');
        call('b');
    });
    queue.advance(99ms);
    EXPECT_EQ(runs, "a");
    queue.advance(1ms);
    EXPECT_EQ(runs, "ab");
}

TEST_F(SamplerByHand, ReplacedBlockIsLetGoAtOnce) {
    const auto value = std::make_shared<int>(1);
    call('a');
    sampler.sample([value] {});
    call('c');
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(SamplerByHand, BlockMaySampleAgain) {
    sampler.sample([this] { call('b'); });
    queue.advance(100ms);
    EXPECT_EQ(runs, "b");
}

TEST_F(SamplerByHand, BlockMayDropTheSampler) {
    std::optional<Sampler> dropped(std::in_place, 100ms, queue);
    dropped->sample([&] {
        dropped.reset();
        runs += 'x';
    });
    queue.advance(10s);
    EXPECT_EQ(runs, "x");
}

TEST_F(SamplerByHand, TellsItsDelay) {
    EXPECT_EQ(sampler.delay(), 100ms);
}

TEST_F(SamplerByHand, WithADelayThatNeverEndsOnlyTheFirstBlockRuns) {
    Sampler once(DispatchTimeInterval::never(), queue);
    once.sample([this] { runs += 'a'; });
    once.sample([this] { runs += 'b'; });
    queue.advance(std::chrono::seconds(1'000'000));
    EXPECT_EQ(runs, "a");
}

TEST_F(SamplerByHand, TakesABlockThatCanOnlyBeMoved) {
    call('a');
    sampler.sample([this, name = std::make_unique<char>('m')] { runs += *name; });
    queue.advance(100ms);
    EXPECT_EQ(runs, "am");
}

TEST_F(SamplerByHand, MovedSamplerGoesOn) {
    call('a');
    Sampler moved(std::move(sampler));
    moved.sample([this] { runs += 'b'; });
    queue.advance(100ms);
    EXPECT_EQ(runs, "ab");
}

TEST(SamplerSmoke, OfManyThreadsTheLatestBlockRunsInTheEnd) {
    const Queue queue("sampler");
    std::atomic<int> runs = 0;
    Inbox<int> last;
    Sampler sampler(1ms, queue);
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 8; ++t)
            threads.emplace_back([&] {
                for (int i = 0; i < 2'000; ++i) sampler.sample([&] { ++runs; });
            });
    }
    sampler.sample([&] { last.put(++runs); });
    ASSERT_TRUE(last.take());
    const int atLast = runs;
    Inbox<int> later;
    queue.asyncAfter(10ms, [&] { later.put(runs); });
    EXPECT_EQ(later.take(), atLast);
}
