// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/Thread.h>
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

namespace {

struct Account : Object {
    int balance = 0;
};

struct Plain {
    int value = 0;
};

struct Left {
    virtual ~Left() = default;
};
struct Right {
    virtual ~Right() = default;
};
struct Both : Left, Right {};

char firstKey;
char secondKey;

// Runs `work` on another thread while the main loop is served, and waits for its end.
void onAnotherThread(Work work) {
    std::atomic<bool> isDone = false;
    Queue::global().async([&isDone, work = std::move(work)]() mutable {
        work();
        isDone = true;
    });
    ASSERT_TRUE(MainLoop::pumpUntil([&] { return isDone.load(); }, 10s));
}

// Whether the work ran later on the main thread, and not inside the call.
void expectThatItRunsSoonAfter(double seconds) {
    bool hasRun = false;
    delay(seconds, [&] { hasRun = Thread::isMainThread(); });
    EXPECT_FALSE(hasRun);
    EXPECT_TRUE(MainLoop::pumpUntil([&] { return hasRun; }, 10s));
}

} // namespace

TEST(EnsureMainThread, RunsTheWorkBeforeItReturnsOnTheMainThread) {
    bool hasRun = false;
    ensureMainThread([&] { hasRun = true; });
    EXPECT_TRUE(hasRun);
    hasRun = false;
    inForeground([&] { hasRun = true; });
    EXPECT_TRUE(hasRun);
}

TEST(EnsureMainThread, ReturnsFirstElsewhereAndTheWorkRunsLaterOnTheMainThread) {
    for (const auto run : {ensureMainThread, inForeground}) {
        Inbox<bool> done;
        std::atomic<bool> hasReturned = false;
        bool ranAfterReturn = false;
        bool ranOnMainThread = false;
        std::jthread([&] {
            run([&] {
                ranAfterReturn = hasReturned;
                ranOnMainThread = Thread::isMainThread();
                done.put(true);
            });
            hasReturned = true;
        }).join();
        EXPECT_EQ(done.count(), 0U);
        EXPECT_TRUE(MainLoop::pumpUntil([&] { return done.count() == 1; }, 10s));
        EXPECT_TRUE(ranAfterReturn);
        EXPECT_TRUE(ranOnMainThread);
    }
}

TEST(EnsureMainThread, PassesOnAnExceptionOfWorkThatRunsAtOnce) {
    EXPECT_THROW(ensureMainThread([] { throw std::runtime_error("no"); }), std::runtime_error);
}

TEST(EnsureMainThread, KeepsTheOrderOfSubmissionWithOtherWorkOfTheMainQueue) {
    std::vector<int> order;
    onAnotherThread([&] {
        for (int i = 0; i < 100; i += 2) {
            ensureMainThread([&order, i] { order.push_back(i); });
            Queue::main().async([&order, i] { order.push_back(i + 1); });
        }
    });
    EXPECT_TRUE(MainLoop::pumpUntil([&] { return order.size() == 100; }, 10s));
    for (int i = 0; i < 100; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(InBackground, RunsTheWorkOnABackgroundThread) {
    Inbox<bool> onMain;
    inBackground([&] { onMain.put(Thread::isMainThread()); });
    EXPECT_EQ(onMain.take(), false);
}

TEST(InBackground, GoesThroughTheQueueAlsoFromABackgroundThread) {
    Inbox<bool> ranInside;
    inBackground([&] {
        auto isInside = std::make_shared<std::atomic<bool>>(true);
        const auto thread = std::this_thread::get_id();
        inBackground([&ranInside, isInside, thread] {
            ranInside.put(*isInside && std::this_thread::get_id() == thread);
        });
        *isInside = false;
    });
    EXPECT_EQ(ranInside.take(), false);
}

TEST(Delay, OfZeroSecondsRunsTheWorkLaterOnTheMainQueueNeverInsideTheCall) {
    expectThatItRunsSoonAfter(0.0);
    expectThatItRunsSoonAfter(-0.0);
}

TEST(Delay, OfLessThanANanosecondIsCutToNothing) {
    expectThatItRunsSoonAfter(1.5e-10);
    expectThatItRunsSoonAfter(-1.5e-10);
}

TEST(Delay, ThatIsNegativeRunsTheWorkAsSoonAsTheMainQueueReachesIt) {
    expectThatItRunsSoonAfter(-1.0);
    expectThatItRunsSoonAfter(-9.2e9);
}

TEST(Delay, IsNeverEarly) {
    const auto start = DispatchTime::now();
    DispatchTime ran(0);
    delay(0.05, [&] { ran = DispatchTime::now(); });
    EXPECT_TRUE(MainLoop::pumpUntil([&] { return ran != DispatchTime(0); }, 10s));
    EXPECT_GE(ran, start + 50ms);
}

TEST(DelayOnMainThread, RunsTheWorkOnTheMainQueueAfterAnyOfTheFourUnitsNeverEarly) {
    const auto start = DispatchTime::now();
    int ran = 0;
    int early = 0;
    const auto delayBy = [&](DispatchTimeInterval interval) {
        delayOnMainThread(interval, [&, earliest = start + interval] {
            early += DispatchTime::now() < earliest || !Thread::isMainThread() ? 1 : 0;
            ++ran;
        });
    };
    delayBy(1s);
    delayBy(60ms);
    delayBy(30'000us);
    delayBy(100ns);
    EXPECT_EQ(ran, 0);
    EXPECT_TRUE(MainLoop::pumpUntil([&] { return ran == 4; }, 10s));
    EXPECT_EQ(early, 0);
}

TEST(DelayOnMainThread, DropsWorkThatIsNeverDue) {
    auto token = std::make_shared<int>();
    delayOnMainThread(DispatchTimeInterval::never(), [token] {});
    EXPECT_EQ(token.use_count(), 1);
}

TEST(Synchronized, ReturnsWhatTheBlockReturned) {
    const auto account = std::make_shared<Account>();
    EXPECT_EQ(synchronized(*account, [] { return 5; }), 5);
    int& balance = synchronized(*account, [&]() -> int& { return account->balance; });
    EXPECT_EQ(&balance, &account->balance);
    Plain plain;
    EXPECT_EQ(*synchronized(plain, [] { return std::make_unique<int>(6); }), 6);
}

TEST(Synchronized, KeepsThreadsApartPerObject) {
    const auto account = std::make_shared<Account>();
    Plain plain;
    std::vector<std::jthread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 2000; ++i) {
                synchronized(*account, [&] { ++account->balance; });
                synchronized(plain, [&] { ++plain.value; });
            }
        });
    threads.clear();
    EXPECT_EQ(account->balance, 16'000);
    EXPECT_EQ(plain.value, 16'000);
}

TEST(Synchronized, DifferentObjectsDoNotWaitForEachOther) {
    const auto first = std::make_shared<Account>();
    const auto second = std::make_shared<Account>();
    Plain third;
    synchronized(*first, [&] {
        std::jthread([&] { synchronized(*second, [&] { synchronized(third, [] {}); }); }).join();
    });
}

TEST(Synchronized, CallsNestOnOneThread) {
    const auto account = std::make_shared<Account>();
    Plain plain;
    EXPECT_EQ(synchronized(*account, [&] { return synchronized(*account, [] { return 1; }); }), 1);
    EXPECT_EQ(synchronized(plain, [&] { return synchronized(plain, [] { return 2; }); }), 2);
}

TEST(Synchronized, BlockThatFailsLeavesTheMonitorFree) {
    const auto account = std::make_shared<Account>();
    Plain plain;
    const auto fail = [] { throw std::runtime_error("unchanged"); };
    for (int round = 0; round < 2; ++round) {
        try {
            round == 0 ? synchronized(*account, fail) : synchronized(plain, fail);
            FAIL() << "the error was not passed on";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "unchanged");
        }
    }
    std::jthread([&] {
        synchronized(*account, [] {});
        synchronized(plain, [] {});
    }).join();
}

TEST(Synchronized, ObjectIsOneThroughWhicheverOfItsBasesItIsGiven) {
    Both both;
    std::atomic<bool> entered = false;
    std::jthread other;
    synchronized(static_cast<Left&>(both), [&] {
        std::latch started(1);
        other = std::jthread([&] {
            started.count_down();
            synchronized(static_cast<Right&>(both), [&] { entered = true; });
        });
        started.wait();
        // The same lock: this thread may enter it again, while the other one waits.
        synchronized(both, [&] { EXPECT_FALSE(entered); });
    });
    other.join();
    EXPECT_TRUE(entered);
}

TEST(AssociatedValue, SecondCallReturnsTheStoredValueAndDoesNotEvaluateItsDefault) {
    const auto host = std::make_shared<Account>();
    const auto first = associatedValue(*host, &firstKey, [] { return std::make_shared<std::string>("one"); });
    const auto second = associatedValue(*host, &firstKey, []() -> std::shared_ptr<std::string> {
        ADD_FAILURE() << "evaluated again";
        return nullptr;
    });
    EXPECT_EQ(first, second);
    EXPECT_EQ(*second, "one");
}

TEST(AssociatedValue, KeysAndObjectsAreToldApart) {
    const auto host = std::make_shared<Account>();
    const auto other = std::make_shared<Account>();
    EXPECT_EQ(associatedValue(*host, &firstKey, [] { return 1; }), 1);
    EXPECT_EQ(associatedValue(*host, &secondKey, [] { return 2; }), 2);
    EXPECT_EQ(associatedValue(*other, &firstKey, [] { return 3; }), 3);
    EXPECT_EQ(associatedValue<long>(*other, &secondKey, [] { return 4; }), 4L);
    EXPECT_EQ(associatedValue(*host, &firstKey, [] { return 5; }), 1);
}

TEST(AssociatedValue, IsMadeOnceHoweverManyThreadsAsk) {
    for (int round = 0; round < 50; ++round) {
        const auto host = std::make_shared<Account>();
        std::atomic<int> made = 0;
        std::atomic<int> different = 0;
        std::atomic<int*> seen = nullptr;
        std::latch start(8);
        std::vector<std::jthread> threads;
        for (int t = 0; t < 8; ++t)
            threads.emplace_back([&] {
                start.arrive_and_wait();
                const auto value = associatedValue(*host, &firstKey, [&] {
                    ++made;
                    return std::make_shared<int>(1);
                });
                int* expected = nullptr;
                if (!seen.compare_exchange_strong(expected, value.get()) && expected != value.get())
                    ++different;
            });
        threads.clear();
        EXPECT_EQ(made, 1);
        EXPECT_EQ(different, 0);
    }
}

TEST(AssociatedValue, LivesAsLongAsItsObject) {
    auto host = std::make_shared<Account>();
    const std::weak_ptr<int> value =
        associatedValue(*host, &firstKey, [] { return std::make_shared<int>(1); });
    EXPECT_FALSE(value.expired());
    host.reset();
    EXPECT_TRUE(value.expired());
}

TEST(AssociatedValue, NothingIsAttachedWhenTheDefaultFails) {
    const auto host = std::make_shared<Account>();
    EXPECT_THROW(associatedValue(*host, &firstKey, []() -> int { throw std::runtime_error("no"); }),
                 std::runtime_error);
    EXPECT_EQ(associatedValue(*host, &firstKey, [] { return 2; }), 2);
}
