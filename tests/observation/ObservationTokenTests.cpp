// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Observation.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <latch>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

struct Observer {
    virtual ~Observer() = default;
    virtual void changed() = 0;
};

struct Acting : Observer {
    explicit Acting(std::function<void()> action = {}) : act(std::move(action)) {}
    void changed() override {
        ++calls;
        if (act) act();
    }
    std::function<void()> act;
    std::atomic<int> calls = 0;
};

class Subject : public Observable<Observer> {
public:
    void tell() {
        notifyObservers([](Observer& observer) { observer.changed(); });
    }
    void removeObserver(const std::shared_ptr<Observer>& observer) override {
        ++removals;
        Observable::removeObserver(observer);
    }
    std::atomic<int> removals = 0;
};

// What an observer refers to: something that it does not keep alive.
struct Owner {
    ~Owner() { value = -1; }
    std::atomic<int> value = 0;
};

struct OwnedObserver : Observer {
    explicit OwnedObserver(Owner& theOwner) : owner(&theOwner) {}
    void changed() override { ++owner->value; }
    Owner* owner;
};

} // namespace

TEST(ObservationToken, CancelRunsItsClosureOnce) {
    const auto subject = std::make_shared<Subject>();
    const auto observer = std::make_shared<Acting>();
    const auto token = subject->addObserver(observer);
    token->cancel();
    token->cancel();
    token->cancelAndWait();
    EXPECT_EQ(subject->removals, 1);
    subject->tell();
    EXPECT_EQ(observer->calls, 0);
}

TEST(ObservationToken, CancellingFromManyThreadsRunsTheClosureOnce) {
    for (int round = 0; round < 200; ++round) {
        const auto subject = std::make_shared<Subject>();
        const auto token = subject->addObserver(std::make_shared<Acting>());
        std::latch start(4);
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&, t] {
                start.arrive_and_wait();
                if (t % 2 == 0) token->cancel();
                token->cancelAndWait();
                EXPECT_EQ(subject->observerSet()->count(), 0U);
            });
        threads.clear();
        EXPECT_EQ(subject->removals, 1);
    }
}

TEST(ObservationToken, CancellingAfterTheObservableObjectHasDiedDoesNothing) {
    auto subject = std::make_shared<Subject>();
    const auto observer = std::make_shared<Acting>();
    const auto first = subject->addObserver(observer);
    const auto second = subject->addObserver(observer);
    subject.reset();
    first->cancel();
    second->cancelAndWait();
    EXPECT_EQ(observer->calls, 0);
}

TEST(ObservationToken, CancelAndWaitWaitsForACallbackToItsObserverOnAnotherThread) {
    const auto subject = std::make_shared<Subject>();
    std::latch isCalled(1);
    std::atomic<bool> mayReturn = false;
    std::atomic<bool> hasReturned = false;
    const auto observer = std::make_shared<Acting>([&] {
        isCalled.count_down();
        mayReturn.wait(false);
        hasReturned = true;
    });
    const auto token = subject->addObserver(observer);
    std::jthread notifier([&] { subject->tell(); });
    isCalled.wait();
    std::latch isWaiting(1);
    std::jthread releaser([&] {
        isWaiting.wait();
        mayReturn = true;
        mayReturn.notify_all();
    });
    token->cancel();
    isWaiting.count_down();
    token->cancelAndWait();
    EXPECT_TRUE(hasReturned);
}

TEST(ObservationToken, CancelAndWaitDoesNotWaitForACallbackToAnotherObserver) {
    const auto subject = std::make_shared<Subject>();
    std::latch isCalled(1);
    std::latch mayReturn(1);
    const auto slow = std::make_shared<Acting>([&] {
        isCalled.count_down();
        mayReturn.wait();
    });
    const auto other = std::make_shared<Acting>();
    const auto slowToken = subject->addObserver(slow);
    const auto token = subject->addObserver(other);
    std::jthread notifier([&] { subject->tell(); });
    isCalled.wait();
    token->cancelAndWait(); // the slow callback can only end after this line
    mayReturn.count_down();
}

TEST(ObservationToken, ObserverThatThePassUnderWayHasNotReachedIsNotCalledAfterCancelAndWait) {
    // The order of observers is not promised: whichever is called first cancels the other one.
    const auto subject = std::make_shared<Subject>();
    const auto first = std::make_shared<Acting>();
    const auto second = std::make_shared<Acting>();
    const auto firstToken = subject->addObserver(first);
    const auto secondToken = subject->addObserver(second);
    first->act = [&] { secondToken->cancelAndWait(); };
    second->act = [&] { firstToken->cancelAndWait(); };
    subject->tell();
    EXPECT_EQ(first->calls + second->calls, 1);
    subject->tell();
    EXPECT_EQ(first->calls + second->calls, 2);
}

TEST(ObservationToken, ObserverThatIsOnlyRemovedIsStillCalledByThePassUnderWay) {
    const auto subject = std::make_shared<Subject>();
    const auto first = std::make_shared<Acting>();
    const auto second = std::make_shared<Acting>();
    const auto firstToken = subject->addObserver(first);
    const auto secondToken = subject->addObserver(second);
    first->act = [&] { secondToken->cancel(); };
    second->act = [&] { firstToken->cancel(); };
    subject->tell();
    EXPECT_EQ(first->calls + second->calls, 2);
}

TEST(ObservationToken, CancelAndWaitDoesNotWaitWhenCalledFromInsideThatVeryCallback) {
    const auto subject = std::make_shared<Subject>();
    const auto observer = std::make_shared<Acting>();
    const auto token = subject->addObserver(observer);
    observer->act = [&] { token->cancelAndWait(); };
    subject->tell();
    subject->tell();
    EXPECT_EQ(observer->calls, 1);
}

TEST(ObservationToken, CallbacksOfOneObserverOnTwoThreadsMayBothCancelAndWait) {
    for (int round = 0; round < 100; ++round) {
        const auto subject = std::make_shared<Subject>();
        const auto observer = std::make_shared<Acting>();
        const auto token = subject->addObserver(observer);
        std::latch bothInside(2);
        observer->act = [&] {
            bothInside.arrive_and_wait();
            token->cancelAndWait();
        };
        std::jthread other([&] { subject->tell(); });
        subject->tell();
    }
}

TEST(ObservationToken, ObserverThatIsAddedAgainIsCalledAgain) {
    const auto subject = std::make_shared<Subject>();
    const auto observer = std::make_shared<Acting>();
    subject->addObserver(observer)->cancelAndWait();
    const auto token = subject->addObserver(observer);
    subject->tell();
    EXPECT_EQ(observer->calls, 1);
}

TEST(ObservationToken, OwnerOfACancelledObserverIsFreedOnTheLineAfterCancelAndWait) {
    const auto subject = std::make_shared<Subject>();
    std::atomic<bool> isOver = false;
    std::vector<std::jthread> notifiers;
    for (int t = 0; t < 2; ++t)
        notifiers.emplace_back([&] {
            while (!isOver) subject->tell();
        });
    const auto bystander = std::make_shared<Acting>();
    const auto bystanderToken = subject->addObserver(bystander);
    int value = 0;
    for (int round = 0; round < 10'000; ++round) {
        auto owner = std::make_unique<Owner>();
        const auto token = subject->addObserver(std::make_shared<OwnedObserver>(*owner));
        if (round % 16 == 0) std::this_thread::yield();
        token->cancelAndWait();
        value += owner->value;
        owner.reset();
    }
    isOver = true;
    notifiers.clear();
    EXPECT_GE(value, 0);
    EXPECT_GT(bystander->calls, 0);
}
