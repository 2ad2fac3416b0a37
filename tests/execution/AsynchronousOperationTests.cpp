// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/AsynchronousOperation.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Platform/OperationQueue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <any>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using support::Inbox;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using State = AsynchronousOperation::State;

namespace {

// Counts how often its work was begun.
class Download : public AsynchronousOperation {
public:
    int begun = 0;

private:
    void main() override {
        ++begun;
        AsynchronousOperation::main();
    }
};

// Hears of everything that an operation announces and reports.
class Listener {
public:
    explicit Listener(AsynchronousOperation& operation) {
        for (const char* key : {"isReady", "isExecuting", "isFinished"})
            observations_.push_back(operation.observe(
                key, [this](const KeyValueChange& change) { note(change); }, {.prior = true}));
    }

    std::vector<std::string> take() { return std::exchange(heard_, {}); }

private:
    void note(const KeyValueChange& change) {
        auto text =
            (change.isPrior ? "will " : "did ") + std::string(change.key) + " " + text_(change.oldValue);
        if (!change.isPrior) text += ">" + text_(change.newValue);
        heard_.push_back(std::move(text));
    }
    static std::string text_(const std::any& value) { return std::any_cast<bool>(value) ? "1" : "0"; }

    std::vector<KeyValueObservation> observations_;
    std::vector<std::string> heard_;
};

} // namespace

TEST(AsynchronousOperation, StatesStandForTheKeysOfTheirProperties) {
    EXPECT_EQ(rawValue(State::ready), "isReady");
    EXPECT_EQ(rawValue(State::executing), "isExecuting");
    EXPECT_EQ(rawValue(State::finished), "isFinished");
    EXPECT_EQ(fromRawValue<State>("isReady"), State::ready);
    EXPECT_EQ(fromRawValue<State>("isExecuting"), State::executing);
    EXPECT_EQ(fromRawValue<State>("isFinished"), State::finished);
    for (const char* text : {"executing", "isCancelled", "", "IsReady"})
        EXPECT_EQ(fromRawValue<State>(text), std::nullopt) << text;
}

TEST(AsynchronousOperation, StartSendsReadyTwiceAndThenMainSendsReadyAndExecuting) {
    const auto operation = std::make_shared<Download>();
    Listener listener(*operation);
    operation->start();
    EXPECT_EQ(operation->state(), State::executing);
    EXPECT_EQ(operation->begun, 1);
    EXPECT_THAT(listener.take(), ElementsAre("will isReady 1", "will isReady 1", "did isReady 1>1",
                                             "did isReady 1>1", "will isReady 1", "will isExecuting 0",
                                             "did isExecuting 0>1", "did isReady 1>1"));
}

TEST(AsynchronousOperation, FinishOfAnExecutingOneSendsExecutingAndFinished) {
    const auto operation = std::make_shared<Download>();
    operation->start();
    Listener listener(*operation);
    operation->finish();
    EXPECT_EQ(operation->state(), State::finished);
    EXPECT_THAT(listener.take(), ElementsAre("will isExecuting 1", "will isFinished 0", "did isFinished 0>1",
                                             "did isExecuting 1>0"));
}

TEST(AsynchronousOperation, FinishOfAReadyOneSendsReadyAndFinished) {
    const auto operation = std::make_shared<Download>();
    Listener listener(*operation);
    operation->finish();
    EXPECT_EQ(operation->state(), State::finished);
    EXPECT_THAT(listener.take(),
                ElementsAre("will isReady 1", "will isFinished 0", "did isFinished 0>1", "did isReady 1>1"));
}

TEST(AsynchronousOperation, SecondFinishSendsNothing) {
    const auto operation = std::make_shared<Download>();
    operation->start();
    operation->finish();
    Listener listener(*operation);
    operation->finish();
    EXPECT_THAT(listener.take(), IsEmpty());
}

TEST(AsynchronousOperation, CancelledBeforeTheStartIsFinishedAndMainIsNeverCalled) {
    const auto operation = std::make_shared<Download>();
    operation->cancel();
    Listener listener(*operation);
    operation->start();
    EXPECT_TRUE(operation->isFinished());
    EXPECT_FALSE(operation->isExecuting());
    EXPECT_EQ(operation->begun, 0);
    EXPECT_THAT(listener.take(),
                ElementsAre("will isReady 1", "will isFinished 0", "did isFinished 0>1", "did isReady 1>1"));
}

TEST(AsynchronousOperation, CancelledBeforeItsMainIsFinishedThere) {
    const auto operation = std::make_shared<AsynchronousOperation>();
    operation->cancel();
    Listener listener(*operation);
    operation->main();
    EXPECT_TRUE(operation->isFinished());
    EXPECT_THAT(listener.take(),
                ElementsAre("will isReady 1", "will isFinished 0", "did isFinished 0>1", "did isReady 1>1"));
}

TEST(AsynchronousOperation, EqualStatesAreAnnouncedTwiceAndReportedTwice) {
    for (const auto state : {State::ready, State::executing, State::finished}) {
        const auto operation = std::make_shared<AsynchronousOperation>();
        operation->setState(state);
        Listener listener(*operation);
        operation->setState(state);
        const auto key = std::string(rawValue(state));
        EXPECT_THAT(listener.take(), ElementsAre("will " + key + " 1", "will " + key + " 1",
                                                 "did " + key + " 1>1", "did " + key + " 1>1"));
    }
}

TEST(AsynchronousOperation, EveryChangeOfStateAnnouncesTheOldThenTheNewAndReportsTheNewThenTheOld) {
    constexpr std::array states{State::ready, State::executing, State::finished};
    // Readiness is that of the dependencies, whatever the state.
    const auto valueIn = [](State key, State state) {
        return std::string(key == State::ready || key == state ? "1" : "0");
    };
    for (const auto from : states)
        for (const auto to : states) {
            const auto operation = std::make_shared<AsynchronousOperation>();
            operation->setState(from);
            Listener listener(*operation);
            operation->setState(to);
            const auto will = [&](State key) {
                return "will " + std::string(rawValue(key)) + " " + valueIn(key, from);
            };
            const auto did = [&](State key) {
                return "did " + std::string(rawValue(key)) + " " + valueIn(key, from) + ">" +
                       valueIn(key, to);
            };
            EXPECT_EQ(operation->state(), to);
            EXPECT_THAT(listener.take(), ElementsAre(will(from), will(to), did(to), did(from)));
        }
}

TEST(AsynchronousOperation, ObserversAreToldOnTheThreadThatSetsTheState) {
    const auto operation = std::make_shared<Download>();
    operation->start();
    std::thread::id told;
    const auto observation =
        operation->observe("isFinished", [&](const KeyValueChange&) { told = std::this_thread::get_id(); });
    std::thread other([&] { operation->finish(); });
    const auto expected = other.get_id();
    other.join();
    EXPECT_EQ(told, expected);
    EXPECT_TRUE(operation->waitUntilFinished());
}

TEST(AsynchronousOperation, CancelledBetweenItsStartAndItsMainIsFinishedByItsMain) {
    const auto operation = std::make_shared<Download>();
    const auto cancelling =
        operation->observe("isReady", [&](const KeyValueChange&) { operation->cancel(); });
    Listener listener(*operation);
    operation->start();
    EXPECT_EQ(operation->begun, 1);
    EXPECT_EQ(operation->state(), State::finished);
    EXPECT_THAT(listener.take(),
                ElementsAre("will isReady 1", "will isReady 1", "did isReady 1>1", "did isReady 1>1",
                            "will isReady 1", "will isFinished 0", "did isFinished 0>1", "did isReady 1>1"));
}

TEST(AsynchronousOperation, CancelledWhileItIsExecutingGoesOnUntilItIsFinished) {
    const auto operation = std::make_shared<Download>();
    operation->start();
    Listener listener(*operation);
    operation->cancel();
    EXPECT_TRUE(operation->isCancelled());
    EXPECT_TRUE(operation->isExecuting());
    EXPECT_THAT(listener.take(), IsEmpty());
    operation->finish();
    EXPECT_TRUE(operation->isFinished());
    EXPECT_TRUE(operation->isCancelled());
}

TEST(AsynchronousOperation, MayBeFinishedWithinItsMain) {
    class Instant : public AsynchronousOperation {
        void main() override {
            AsynchronousOperation::main();
            finish();
        }
    };
    const auto operation = std::make_shared<Instant>();
    Listener listener(*operation);
    operation->start();
    EXPECT_EQ(operation->state(), State::finished);
    EXPECT_THAT(listener.take(),
                ElementsAre("will isReady 1", "will isReady 1", "did isReady 1>1", "did isReady 1>1",
                            "will isReady 1", "will isExecuting 0", "did isExecuting 0>1", "did isReady 1>1",
                            "will isExecuting 1", "will isFinished 0", "did isFinished 0>1",
                            "did isExecuting 1>0"));
}

TEST(AsynchronousOperation, CompletionBlockRunsOnceHoweverOftenItIsFinished) {
    Inbox<bool> ran;
    const auto held = std::make_shared<int>(0);
    const auto operation = std::make_shared<AsynchronousOperation>();
    operation->setCompletionBlock([&ran, held] { ran.put(true); });
    for (int i = 0; i < 3; ++i) {
        operation->setState(State::ready);
        operation->finish();
    }
    EXPECT_TRUE(ran.take());
    operation->setCompletionBlock([&ran] { ran.put(false); });
    EXPECT_EQ(ran.take(), false) << "nothing came between the first block and one that was set later";
}

TEST(AsynchronousOperation, IsAsynchronousAtEveryState) {
    const auto operation = std::make_shared<AsynchronousOperation>();
    for (const auto state : {State::ready, State::executing, State::finished}) {
        operation->setState(state);
        EXPECT_TRUE(operation->isAsynchronous());
        EXPECT_EQ(operation->isExecuting(), state == State::executing);
        EXPECT_EQ(operation->isFinished(), state == State::finished);
    }
}

TEST(AsynchronousOperation, ReadinessStaysThatOfItsDependencies) {
    const auto first = std::make_shared<AsynchronousOperation>();
    const auto second = std::make_shared<AsynchronousOperation>();
    second->addDependency(first);
    EXPECT_EQ(second->state(), State::ready);
    EXPECT_FALSE(second->isReady());
    first->start();
    EXPECT_FALSE(second->isReady());
    first->finish();
    EXPECT_TRUE(second->isReady());
}

TEST(AsynchronousOperation, StartDoesNotAskWhetherItIsReady) {
    const auto operation = std::make_shared<Download>();
    operation->addDependency(std::make_shared<AsynchronousOperation>());
    Listener listener(*operation);
    operation->start();
    EXPECT_EQ(operation->state(), State::executing);
    EXPECT_THAT(listener.take(), ElementsAre("will isReady 0", "will isReady 0", "did isReady 0>0",
                                             "did isReady 0>0", "will isReady 0", "will isExecuting 0",
                                             "did isExecuting 0>1", "did isReady 0>0"));
}

TEST(AsynchronousOperation, StartOfAFinishedOneBeginsItsWorkAgain) {
    const auto operation = std::make_shared<Download>();
    operation->finish();
    Listener listener(*operation);
    operation->start();
    EXPECT_EQ(operation->begun, 1);
    EXPECT_EQ(operation->state(), State::executing);
    EXPECT_THAT(listener.take(), ElementsAre("will isFinished 1", "will isReady 1", "did isReady 1>1",
                                             "did isFinished 1>0", "will isReady 1", "will isExecuting 0",
                                             "did isExecuting 0>1", "did isReady 1>1"));
}

TEST(AsynchronousOperation, QueueHearsThatItIsFinishedFromAnotherThread) {
    // A host's own: it begins on the queue's thread and is finished on another.
    class Fetch : public AsynchronousOperation {
        void main() override {
            AsynchronousOperation::main();
            std::thread([self = shared(this)] { self->finish(); }).detach();
        }
    };
    OperationQueue queue({.maxConcurrentOperationCount = 2});
    std::vector<std::shared_ptr<Fetch>> fetches;
    for (int i = 0; i < 100; ++i) {
        fetches.push_back(std::make_shared<Fetch>());
        queue.addOperation(fetches.back());
    }
    queue.waitUntilAllOperationsAreFinished();
    for (const auto& fetch : fetches) EXPECT_TRUE(fetch->isFinished());
}

TEST(AsynchronousOperation, FinishedOnItsWayToTheStartIsNotStartedByTheQueue) {
    OperationQueue queue({.maxConcurrentOperationCount = 1});
    queue.setSuspended(true);
    const auto operation = std::make_shared<Download>();
    queue.addOperation(operation);
    operation->finish();
    EXPECT_EQ(queue.operationCount(), 0U);
    queue.setSuspended(false);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(operation->begun, 0);
}
