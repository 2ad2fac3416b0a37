// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Queue.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Platform/Thread.h>
#include <VorlanFoundation/Platform/WorkItem.h>
#include <VorlanFoundation/Testing.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;
using vorlan::testing::MainLoop;

TEST(Queue, SerialQueueRunsBlocksOneAfterTheOtherInTheOrderOfSubmission) {
    const Queue queue("serial");
    std::vector<int> order;
    for (int i = 0; i < 10'000; ++i) queue.async([&order, i] { order.push_back(i); });
    queue.sync([] {});
    ASSERT_EQ(order.size(), 10'000U);
    for (int i = 0; i < 10'000; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(Queue, BlocksOfAConcurrentQueueMayOverlap) {
    const Queue queue("concurrent", Queue::concurrent);
    std::latch bothRun(2);
    std::latch done(2);
    for (int i = 0; i < 2; ++i)
        queue.async([&] {
            bothRun.arrive_and_wait(); // passes only when both are in it
            done.count_down();
        });
    done.wait();
}

TEST(Queue, BarrierRunsAloneAfterEarlierAndBeforeLaterBlocks) {
    const Queue queue("concurrent", Queue::concurrent);
    std::atomic<int> running = 0;
    std::atomic<int> early = 0;
    int earlySeen = -1;
    int overlapped = 0;
    bool barrierRan = false;
    std::atomic<int> lateBeforeBarrier = 0;
    for (int round = 0; round < 100; ++round) {
        early = 0;
        barrierRan = false;
        for (int i = 0; i < 4; ++i)
            queue.async([&] {
                ++running;
                ++early;
                --running;
            });
        queue.barrierAsync([&] {
            overlapped += running.load();
            earlySeen = early.load();
            barrierRan = true;
        });
        for (int i = 0; i < 4; ++i)
            queue.async([&] {
                ++running;
                if (!barrierRan) ++lateBeforeBarrier;
                --running;
            });
        queue.barrierSync([] {});
        EXPECT_EQ(earlySeen, 4);
    }
    EXPECT_EQ(overlapped, 0);
    EXPECT_EQ(lateBeforeBarrier, 0);
}

TEST(Queue, DelayedBarrierIsNotEarlyAndRunsAlone) {
    constexpr int rounds = 200;
    const Queue queue("concurrent", Queue::concurrent);
    std::atomic<int> running = 0;
    int overlapped = 0;
    int early = 0;
    std::latch barriers(rounds);
    for (int round = 0; round < rounds; ++round) {
        queue.barrierAsyncAfter(1ms, [&, due = queue.now() + 1ms] {
            overlapped += running.load();
            early += queue.now() < due ? 1 : 0;
            barriers.count_down();
        });
        for (int i = 0; i < 20; ++i)
            queue.async([&] {
                ++running;
                std::this_thread::yield();
                --running;
            });
    }
    barriers.wait();
    queue.barrierSync([] {});
    EXPECT_EQ(overlapped, 0);
    EXPECT_EQ(early, 0);
}

TEST(Queue, SynchronousReadWaitsForEarlierBarriers) {
    const Queue queue("concurrent", Queue::concurrent);
    std::string text;
    queue.barrierAsync([&] { text = "written"; });
    EXPECT_EQ(queue.sync([&] { return text; }), "written");
}

TEST(Queue, QueueWithATargetRunsItsBlocksAsBlocksOfTheTarget) {
    const Queue target("target");
    const Queue first("first", Queue::serial, QualityOfService::unspecified, AutoreleaseFrequency::inherit,
                      target);
    const Queue second("second", Queue::concurrent, QualityOfService::unspecified,
                       AutoreleaseFrequency::inherit, target);
    int unguarded = 0; // only correct if the serial target keeps all blocks apart
    for (int i = 0; i < 1000; ++i) {
        first.async([&] { ++unguarded; });
        second.async([&] { ++unguarded; });
        target.async([&] { ++unguarded; });
    }
    first.sync([] {});
    second.barrierSync([] {});
    EXPECT_EQ(target.sync([&] { return unguarded; }), 3000);
}

TEST(Queue, IsCurrentInItsOwnBlocksAndInThoseOfQueuesThatTargetIt) {
    const Queue target("target");
    const Queue other("other");
    const Queue queue("queue", Queue::serial, QualityOfService::unspecified, AutoreleaseFrequency::inherit,
                      target);
    EXPECT_FALSE(queue.isCurrent());
    EXPECT_TRUE(queue.sync([&] { return queue.isCurrent() && target.isCurrent() && !other.isCurrent(); }));
    EXPECT_TRUE(
        queue.sync([&] { return other.sync([&] { return queue.isCurrent() && other.isCurrent(); }); }));
    Inbox<bool> answers;
    queue.async([&] { answers.put(queue.isCurrent() && target.isCurrent() && !other.isCurrent()); });
    EXPECT_EQ(answers.take(), true);
}

TEST(Queue, LabelQualityOfServiceAndAutoreleaseFrequencyAreKeptAsGiven) {
    for (const auto one :
         {QualityOfService::userInteractive, QualityOfService::userInitiated, QualityOfService::default_,
          QualityOfService::utility, QualityOfService::background, QualityOfService::unspecified}) {
        const Queue queue("com.example.kept", Queue::concurrent, one, AutoreleaseFrequency::workItem);
        EXPECT_EQ(queue.label(), "com.example.kept");
        EXPECT_EQ(queue.qualityOfService(), one);
        EXPECT_EQ(queue.autoreleaseFrequency(), AutoreleaseFrequency::workItem);
        EXPECT_EQ(Queue::global(one).qualityOfService(), one);
        EXPECT_EQ(queue.sync([] { return 1; }), 1);
    }
    EXPECT_EQ(Queue("plain").qualityOfService(), QualityOfService::unspecified);
    EXPECT_EQ(Queue("plain").autoreleaseFrequency(), AutoreleaseFrequency::inherit);
}

TEST(Queue, CopiesAreHandlesOfTheSameQueue) {
    const Queue queue("one");
    const Queue copy = queue;
    EXPECT_EQ(copy, queue);
    EXPECT_NE(queue, Queue("one"));
    EXPECT_EQ(Queue::main(), Queue::main());
    EXPECT_EQ(Queue::global(), Queue::global(QualityOfService::default_));
    EXPECT_NE(Queue::global(), Queue::global(QualityOfService::utility));
}

TEST(Queue, SubmittedWorkRunsAlsoAfterTheLastHandleIsGone) {
    Inbox<int> results;
    std::latch go(1);
    {
        const Queue queue("short-lived");
        queue.async([&] { go.wait(); });
        for (int i = 0; i < 3; ++i) queue.async([&results, i] { results.put(i); });
        queue.asyncAfter(1ms, [&results] { results.put(3); });
    }
    go.count_down();
    for (int i = 0; i < 4; ++i) EXPECT_EQ(results.take(), i);
}

TEST(Queue, BlockMaySubmitToItsOwnQueue) {
    const Queue queue("queue");
    Inbox<int> order;
    queue.async([&] {
        queue.async([&] { order.put(2); });
        order.put(1);
    });
    EXPECT_EQ(order.take(), 1);
    EXPECT_EQ(order.take(), 2);
}

TEST(Queue, SyncReturnsWhatTheBlockReturned) {
    const Queue queue("queue");
    int number = 5;
    EXPECT_EQ(queue.sync([] { return 7; }), 7);
    EXPECT_EQ(&queue.sync([&]() -> int& { return number; }), &number);
    auto moved = queue.barrierSync([] { return std::make_unique<int>(9); });
    EXPECT_EQ(*moved, 9);
    static_assert(std::is_void_v<decltype(queue.sync([] {}))>);
    const auto named = [calls = 0]() mutable { return ++calls; };
    auto counter = named;
    EXPECT_EQ(queue.sync(counter), 1);
    EXPECT_EQ(queue.sync(counter), 2);
}

TEST(Queue, ExceptionOfSynchronousWorkReachesTheCallerAndTheQueueGoesOn) {
    const Queue queue("queue");
    try {
        queue.sync([] { throw std::runtime_error("no luck"); });
        FAIL() << "the exception did not arrive";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "no luck");
    }
    EXPECT_EQ(queue.sync([] { return 1; }), 1);
    EXPECT_THROW(queue.barrierSync([]() -> int { throw 5; }), int);
}

TEST(Queue, WorkAfterAnIntervalIsNeverEarly) {
    const Queue queue("queue");
    Inbox<bool> wasEarly;
    const auto start = queue.now();
    queue.asyncAfter(60ms, [&] { wasEarly.put(queue.now() < start + 60ms); });
    queue.asyncAfter(20ms, [&] { wasEarly.put(queue.now() < start + 20ms); });
    queue.asyncAfter(start + 100ms, [&] { wasEarly.put(queue.now() < start + 100ms); });
    for (int i = 0; i < 3; ++i) EXPECT_EQ(wasEarly.take(), false);
}

TEST(Queue, WorkForThePastRunsAsynchronouslyAtOnce) {
    const Queue queue("queue");
    Inbox<int> results;
    queue.sync([&] {
        queue.asyncAfter(-5s, [&] { results.put(1); });
        EXPECT_EQ(results.count(), 0U);
    });
    queue.asyncAfter(DispatchTime(0), [&] { results.put(2); });
    EXPECT_EQ(results.take(), 1);
    EXPECT_EQ(results.take(), 2);
}

TEST(Queue, WorkThatIsNeverDueIsDroppedAtOnce) {
    const Queue queue("queue");
    auto token = std::make_shared<int>();
    queue.asyncAfter(DispatchTimeInterval::never(), [token] {});
    queue.asyncAfter(DispatchTime::distantFuture(), [token] {});
    queue.barrierAsyncAfter(DispatchTimeInterval::never(), [token] {});
    EXPECT_EQ(token.use_count(), 1);
}

TEST(Queue, WorkMayBeMoveOnlyAndIsDestroyedRightAfterItRan) {
    const Queue queue("queue");
    auto owned = std::make_shared<int>(4);
    const std::weak_ptr<int> watched = owned;
    Inbox<int> results;
    queue.async([&results, unique = std::make_unique<std::shared_ptr<int>>(std::move(owned))] {
        results.put(**unique);
    });
    EXPECT_EQ(results.take(), 4);
    EXPECT_TRUE(queue.sync([&] { return watched.expired(); }));
}

TEST(Queue, GlobalQueuesRunInTheBackground) {
    Inbox<bool> answers;
    Queue::global().async([&] { answers.put(Thread::isMainThread()); });
    Queue::global(QualityOfService::background).barrierAsync([&] { answers.put(Thread::isMainThread()); });
    EXPECT_EQ(answers.take(), false);
    EXPECT_EQ(answers.take(), false);
}

TEST(Queue, MainQueueRunsSynchronousWorkOfOtherThreadsOnTheMainThread) {
    std::atomic<int> answer = -1;
    Queue::global().async(
        [&] { answer = Queue::main().sync([] { return Thread::isMainThread() ? 1 : 0; }); });
    EXPECT_TRUE(MainLoop::pumpUntil([&] { return answer != -1; }, 10s));
    EXPECT_EQ(answer, 1);
}

TEST(Queue, SafePatternsLookSafeToThreadSanitizer) {
    const Queue target("target");
    const Queue writer("writer", Queue::serial, QualityOfService::unspecified, AutoreleaseFrequency::inherit,
                       target);
    const Queue shared("shared", Queue::concurrent);
    std::vector<int> viaTarget;
    std::vector<int> viaBarrier;
    std::atomic<std::size_t> read = 0;
    for (int i = 0; i < 200; ++i) {
        writer.async([&, i] { viaTarget.push_back(i); });
        target.async([&, i] { viaTarget.push_back(i); });
        shared.barrierAsync([&, i] { viaBarrier.push_back(i); });
        shared.async([&] { read += viaBarrier.size(); });
        read += shared.sync([&] { return viaBarrier.size(); });
    }
    EXPECT_EQ(writer.sync([&] { return viaTarget.size(); }), 400U);
    shared.barrierSync([&] { EXPECT_EQ(viaBarrier.size(), 200U); });
    EXPECT_GT(read, 0U);
}

TEST(Queue, QueuesMayBeMadeAndDroppedFromManyThreads) {
    std::atomic<int> ran = 0;
    std::vector<std::jthread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&ran] {
            for (int i = 0; i < 200; ++i) {
                const Queue queue("fleeting", i % 2 == 0 ? Queue::serial : Queue::concurrent);
                queue.async([&ran] { ++ran; });
                queue.barrierAsync([&ran] { ++ran; });
                if (i % 10 == 0) queue.sync([&ran] { ++ran; });
            }
        });
    threads.clear();
    EXPECT_TRUE(MainLoop::pumpUntil([&] { return ran == 8 * (400 + 20); }, 30s));
}
