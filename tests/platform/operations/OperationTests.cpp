// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Operation.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Platform/Thread.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <any>
#include <chrono>
#include <functional>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

// Does what it is given.
class Errand : public Operation {
public:
    explicit Errand(std::function<void()> work = [] {}) : work_(std::move(work)) {}

private:
    void main() override { work_(); }

    std::function<void()> work_;
};

// Hears of each change that has happened, as in "isFinished 1".
class Listener {
public:
    explicit Listener(Operation& operation) {
        for (const char* key : {"isReady", "isExecuting", "isFinished", "isCancelled"})
            observations_.push_back(operation.observe(key, [this](const KeyValueChange& change) {
                heard.push_back(std::string(change.key) +
                                (std::any_cast<bool>(change.newValue) ? " 1" : " 0"));
            }));
    }

    std::vector<std::string> heard;

private:
    std::vector<KeyValueObservation> observations_;
};

} // namespace

TEST(Operation, IsReadyAndNothingElseAtFirst) {
    const auto operation = std::make_shared<Operation>();
    EXPECT_TRUE(operation->isReady());
    EXPECT_FALSE(operation->isExecuting());
    EXPECT_FALSE(operation->isFinished());
    EXPECT_FALSE(operation->isCancelled());
    EXPECT_FALSE(operation->isAsynchronous());
}

TEST(Operation, StartDoesTheWorkOnTheCallingThread) {
    std::thread::id thread;
    bool wasExecuting = false;
    std::shared_ptr<Operation> operation;
    operation = std::make_shared<Errand>([&] {
        thread = std::this_thread::get_id();
        wasExecuting = operation->isExecuting() && !operation->isFinished();
    });
    operation->start();
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_TRUE(wasExecuting);
    EXPECT_TRUE(operation->isFinished());
    EXPECT_FALSE(operation->isExecuting());
}

TEST(Operation, PublishesExecutingThenFinished) {
    const auto operation = std::make_shared<Errand>();
    const Listener listener(*operation);
    operation->start();
    EXPECT_THAT(listener.heard, ElementsAre("isExecuting 1", "isExecuting 0", "isFinished 1"));
}

TEST(Operation, EachPropertyHasChangedWhenItIsReportedAndNotYetWhenItIsAnnounced) {
    const auto operation = std::make_shared<Errand>();
    std::vector<std::string> heard;
    std::vector<KeyValueObservation> observations;
    for (const char* key : {"isExecuting", "isFinished"})
        observations.push_back(operation->observe(
            key,
            [&](const KeyValueChange& change) {
                heard.push_back((change.isPrior ? "will " : "did ") + std::string(change.key) + " " +
                                std::to_string(operation->isExecuting()) +
                                std::to_string(operation->isFinished()));
            },
            {.prior = true}));
    operation->start();
    EXPECT_THAT(heard, ElementsAre("will isExecuting 00", "did isExecuting 10", "will isExecuting 10",
                                   "will isFinished 10", "did isExecuting 01", "did isFinished 01"));
}

TEST(Operation, ReportsCarryTheOldAndTheNewValue) {
    const auto operation = std::make_shared<Errand>();
    int reports = 0;
    std::vector<KeyValueObservation> observations;
    for (const char* key : {"isExecuting", "isFinished", "isCancelled"})
        observations.push_back(operation->observe(key, [&](const KeyValueChange& change) {
            ++reports;
            EXPECT_NE(std::any_cast<bool>(change.oldValue), std::any_cast<bool>(change.newValue))
                << change.key;
        }));
    operation->start();
    const auto cancelled = std::make_shared<Errand>();
    observations.push_back(cancelled->observe("isCancelled", [&](const KeyValueChange& change) {
        ++reports;
        EXPECT_FALSE(std::any_cast<bool>(change.oldValue));
        EXPECT_TRUE(std::any_cast<bool>(change.newValue));
    }));
    cancelled->cancel();
    EXPECT_EQ(reports, 4);
}

TEST(Operation, FinishedOneDoesNothingWhenItIsStarted) {
    int runs = 0;
    const auto operation = std::make_shared<Errand>([&] { ++runs; });
    operation->start();
    const Listener listener(*operation);
    operation->start();
    EXPECT_EQ(runs, 1);
    EXPECT_THAT(listener.heard, IsEmpty());
}

TEST(Operation, CancelledBeforeTheStartIsFinishedWithoutItsWork) {
    int runs = 0;
    const auto operation = std::make_shared<Errand>([&] { ++runs; });
    operation->cancel();
    EXPECT_TRUE(operation->isCancelled());
    EXPECT_FALSE(operation->isFinished());
    const Listener listener(*operation);
    operation->start();
    EXPECT_EQ(runs, 0);
    EXPECT_TRUE(operation->isFinished());
    EXPECT_THAT(listener.heard, ElementsAre("isFinished 1"));
}

TEST(Operation, CancelledDuringItsWorkGoesOnUntilThatEnds) {
    std::shared_ptr<Operation> operation;
    bool sawIt = false;
    operation = std::make_shared<Errand>([&] {
        operation->cancel();
        sawIt = operation->isCancelled();
    });
    operation->start();
    EXPECT_TRUE(sawIt);
    EXPECT_TRUE(operation->isFinished());
}

TEST(Operation, CancellingAFinishedOneDoesNothing) {
    const auto operation = std::make_shared<Errand>();
    operation->start();
    operation->cancel();
    EXPECT_FALSE(operation->isCancelled());
}

TEST(Operation, CancellingTwicePublishesItOnce) {
    const auto operation = std::make_shared<Errand>();
    const Listener listener(*operation);
    operation->cancel();
    operation->cancel();
    EXPECT_THAT(listener.heard, ElementsAre("isCancelled 1"));
}

TEST(Operation, ValuesOfItsKeysAreItsProperties) {
    const auto operation = std::make_shared<Errand>();
    EXPECT_TRUE(std::any_cast<bool>(operation->valueForKey("isReady")));
    EXPECT_FALSE(std::any_cast<bool>(operation->valueForKey("isExecuting")));
    EXPECT_FALSE(std::any_cast<bool>(operation->valueForKey("isFinished")));
    EXPECT_FALSE(std::any_cast<bool>(operation->valueForKey("isCancelled")));
    EXPECT_FALSE(operation->valueForKey("isAsynchronous").has_value());
}

TEST(Operation, ExceptionOfItsWorkReachesTheCallerAndFinishesIt) {
    const auto operation = std::make_shared<Errand>([] { throw std::runtime_error("no connection"); });
    EXPECT_THROW(operation->start(), std::runtime_error);
    EXPECT_TRUE(operation->isFinished());
    EXPECT_FALSE(operation->isExecuting());
    EXPECT_TRUE(operation->waitUntilFinished());
}

TEST(Operation, CompletionBlockRunsOnceInTheBackgroundWhenItIsFinished) {
    Inbox<bool> isMain;
    const auto held = std::make_shared<int>(0);
    const auto operation = std::make_shared<Errand>();
    operation->setCompletionBlock([&isMain, held] { isMain.put(Thread::isMainThread()); });
    EXPECT_EQ(held.use_count(), 2) << "it waits for the end";
    operation->start();
    operation->start();
    EXPECT_EQ(isMain.take(), false);
    operation->setCompletionBlock([&isMain] { isMain.put(true); });
    EXPECT_EQ(isMain.take(), true) << "nothing came between the first block and one that was set later";
}

TEST(Operation, CompletionBlockRunsAlsoWhenItIsCancelledOrFails) {
    Inbox<std::string> ran;
    const auto cancelled = std::make_shared<Errand>();
    cancelled->setCompletionBlock([&] { ran.put("cancelled"); });
    cancelled->cancel();
    cancelled->start();
    EXPECT_EQ(ran.take(), "cancelled");
    const auto failing = std::make_shared<Errand>([] { throw std::runtime_error("no connection"); });
    failing->setCompletionBlock([&] { ran.put("failed"); });
    EXPECT_THROW(failing->start(), std::runtime_error);
    EXPECT_EQ(ran.take(), "failed");
}

TEST(Operation, CompletionBlockOfAFinishedOneRunsAtOnce) {
    Inbox<bool> ran;
    const auto operation = std::make_shared<Errand>();
    operation->start();
    operation->setCompletionBlock([&] { ran.put(true); });
    EXPECT_TRUE(ran.take());
}

TEST(Operation, ReplacedCompletionBlockIsLetGo) {
    const auto value = std::make_shared<int>(1);
    Inbox<bool> ran;
    const auto operation = std::make_shared<Errand>();
    operation->setCompletionBlock([value] {});
    operation->setCompletionBlock([&] { ran.put(true); });
    EXPECT_EQ(value.use_count(), 1);
    operation->start();
    EXPECT_TRUE(ran.take());
}

TEST(Operation, WaitingLastsUntilItIsFinishedOrTheLimitIsOver) {
    std::latch mayEnd(1);
    const auto operation = std::make_shared<Errand>([&] { mayEnd.wait(); });
    EXPECT_FALSE(operation->waitUntilFinished(1ms));
    const std::jthread starter([&] { operation->start(); });
    EXPECT_FALSE(operation->waitUntilFinished(1ms));
    mayEnd.count_down();
    EXPECT_TRUE(operation->waitUntilFinished(10s));
    EXPECT_TRUE(operation->waitUntilFinished());
}

TEST(Operation, WaitingWithTheLongestLimitLastsUntilItIsFinished) {
    const auto operation = std::make_shared<Errand>();
    const std::jthread starter([&] { operation->start(); });
    EXPECT_TRUE(operation->waitUntilFinished(std::chrono::nanoseconds::max()));
}

TEST(Operation, WaitingWithALimitThatIsOverOnlyAsks) {
    const auto operation = std::make_shared<Errand>();
    EXPECT_FALSE(operation->waitUntilFinished(0s));
    EXPECT_FALSE(operation->waitUntilFinished(-1s));
    EXPECT_FALSE(operation->waitUntilFinished(std::chrono::nanoseconds::min()));
    operation->start();
    EXPECT_TRUE(operation->waitUntilFinished(0s));
    EXPECT_TRUE(operation->waitUntilFinished(-1s));
}

TEST(Operation, ManyThreadsMayWaitForIt) {
    Inbox<bool> ended;
    const auto operation = std::make_shared<Errand>();
    std::vector<std::jthread> waiting;
    for (int i = 0; i < 4; ++i) waiting.emplace_back([&] { ended.put(operation->waitUntilFinished()); });
    operation->start();
    for (int i = 0; i < 4; ++i) EXPECT_EQ(ended.take(), true);
}

TEST(Operation, ObserversWereToldWhenWaitingEnds) {
    bool wasTold = false;
    const auto operation = std::make_shared<Errand>();
    const auto observation = operation->observe("isFinished", [&](const KeyValueChange&) { wasTold = true; });
    const std::jthread starter([&] { operation->start(); });
    operation->waitUntilFinished();
    EXPECT_TRUE(wasTold);
}

TEST(Operation, KeepsItsName) {
    const auto operation = std::make_shared<Errand>();
    EXPECT_EQ(operation->name(), "");
    operation->setName("mix");
    EXPECT_EQ(operation->name(), "mix");
}
