// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Observation.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

struct Observer {
    virtual ~Observer() = default;
    virtual void changed(int value) = 0;
};

struct Counter : Observer {
    void changed(int value) override { sum += value; }
    int sum = 0;
};

struct Loud {
    virtual ~Loud() = default;
    virtual void beep() = 0;
};

struct LoudCounter : Counter, Loud {
    void beep() override { ++beeps; }
    int beeps = 0;
};

struct Acting : Observer {
    void changed(int) override {
        ++calls;
        if (act) act();
    }
    std::function<void()> act;
    int calls = 0;
};

class Subject : public Observable<Observer> {
public:
    void tell(int value = 1) {
        notifyObservers([&](Observer& observer) { observer.changed(value); });
    }
};

struct OtherObserver {};

} // namespace

TEST(Observable, NotifyingAnObjectThatNeverHadAnObserverCreatesAnEmptyRegistryAndCallsNothing) {
    const auto subject = std::make_shared<Subject>();
    EXPECT_EQ(identityOf(*subject), subject.get());
    subject->tell();
    EXPECT_EQ(subject->observerSet()->count(), 0U);
}

TEST(Observable, ObserverSetIsTheSameAtEveryCallAndLivesAsLongAsTheObject) {
    auto subject = std::make_shared<Subject>();
    const std::weak_ptr<WeakSet<Observer>> set = subject->observerSet();
    EXPECT_EQ(subject->observerSet(), set.lock());
    subject.reset();
    EXPECT_TRUE(set.expired());
}

TEST(Observable, CallsEveryObserverOnTheCallingThreadBeforeItReturns) {
    const auto subject = std::make_shared<Subject>();
    const auto counter = std::make_shared<Counter>();
    const auto acting = std::make_shared<Acting>();
    std::thread::id thread;
    acting->act = [&] { thread = std::this_thread::get_id(); };
    const auto tokens = subject->addObservers({counter, acting});
    subject->tell(5);
    EXPECT_EQ(counter->sum, 5);
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(Observable, DestroyedObserverIsNotCalledAndNoLongerCountedAfterTheNextNotification) {
    const auto subject = std::make_shared<Subject>();
    const auto survivor = std::make_shared<Counter>();
    auto mortal = std::make_shared<Counter>();
    subject->addObserver(survivor);
    subject->addObserver(mortal);
    mortal.reset();
    EXPECT_EQ(subject->observerSet()->count(), 2U);
    subject->tell();
    EXPECT_EQ(subject->observerSet()->count(), 1U);
    EXPECT_EQ(survivor->sum, 1);
}

TEST(Observable, AddingTheSameObserverTwiceYieldsTwoTokensButOneMembership) {
    const auto subject = std::make_shared<Subject>();
    const auto counter = std::make_shared<Counter>();
    const auto first = subject->addObserver(counter);
    const auto second = subject->addObserver(counter);
    EXPECT_NE(first, second);
    EXPECT_EQ(subject->observerSet()->count(), 1U);
    subject->tell();
    EXPECT_EQ(counter->sum, 1);
    subject->removeObserver(counter);
    subject->tell();
    EXPECT_EQ(counter->sum, 1);
}

TEST(Observable, TypedNotificationCallsOnlyObserversThatConvert) {
    const auto subject = std::make_shared<Subject>();
    const auto quiet = std::make_shared<Counter>();
    const auto loud = std::make_shared<LoudCounter>();
    const auto tokens = subject->addObservers({quiet, loud});
    subject->notifyObservers<Loud>([](Loud& observer) { observer.beep(); });
    EXPECT_EQ(loud->beeps, 1);
    subject->notifyObservers<Counter>([](Counter& observer) { observer.sum += 10; });
    EXPECT_EQ(quiet->sum, 10);
    EXPECT_EQ(loud->sum, 10);
}

TEST(Observable, TokensAreInTheOrderOfTheObserversAndEachEndsItsOwn) {
    const auto subject = std::make_shared<Subject>();
    std::vector<std::shared_ptr<Observer>> counters;
    for (int i = 0; i < 20; ++i) counters.push_back(std::make_shared<Counter>());
    const auto tokens = subject->addObservers(counters);
    ASSERT_EQ(tokens.size(), 20U);
    for (std::size_t i = 0; i < 20; i += 2) tokens[i]->cancel();
    for (std::size_t i = 0; i < 20; ++i) EXPECT_EQ(subject->observerSet()->contains(counters[i]), i % 2 == 1);
}

TEST(Observable, RemoveAllObserversEndsAllRegistrations) {
    const auto subject = std::make_shared<Subject>();
    const auto first = std::make_shared<Counter>();
    const auto second = std::make_shared<Counter>();
    subject->addObservers({first, second});
    subject->removeAllObservers();
    subject->tell();
    EXPECT_EQ(first->sum + second->sum, 0);
}

TEST(Observable, RegistryHoldsObserversWeaklyAndTheTokenStrongly) {
    const auto subject = std::make_shared<Subject>();
    auto counter = std::make_shared<Counter>();
    const std::weak_ptr<Counter> watched = counter;
    auto token = subject->addObserver(counter);
    counter.reset();
    EXPECT_FALSE(watched.expired());
    subject->tell(3);
    EXPECT_EQ(watched.lock()->sum, 3);
    token->cancel();
    EXPECT_FALSE(watched.expired());
    token.reset();
    EXPECT_TRUE(watched.expired());
}

TEST(Observable, TokenHoldsTheObservableWeakly) {
    auto subject = std::make_shared<Subject>();
    const std::weak_ptr<Subject> watched = subject;
    const auto token = subject->addObserver(std::make_shared<Counter>());
    subject.reset();
    EXPECT_TRUE(watched.expired());
}

TEST(Observable, DestroyingATokenEndsNothing) {
    const auto subject = std::make_shared<Subject>();
    const auto counter = std::make_shared<Counter>();
    subject->addObserver(counter).reset();
    subject->tell();
    EXPECT_EQ(counter->sum, 1);
}

TEST(Observable, ObserversAddedOrRemovedByACallbackDoNotChangeThePassUnderWay) {
    const auto subject = std::make_shared<Subject>();
    std::vector<std::shared_ptr<Observer>> actors;
    const auto newcomer = std::make_shared<Counter>();
    int calls = 0;
    for (int i = 0; i < 5; ++i) {
        const auto acting = std::make_shared<Acting>();
        acting->act = [&] {
            ++calls;
            subject->removeAllObservers();
            subject->addObserver(newcomer);
        };
        actors.push_back(acting);
    }
    subject->addObservers(actors);
    subject->tell();
    EXPECT_EQ(calls, 5);
    EXPECT_EQ(newcomer->sum, 0);
    subject->tell();
    EXPECT_EQ(newcomer->sum, 1);
}

TEST(Observable, ObserversThatWereAliveAtTheStartAreHeldDuringThePass) {
    const auto subject = std::make_shared<Subject>();
    std::vector<std::shared_ptr<Acting>> actors(5);
    int calls = 0;
    for (auto& actor : actors) {
        actor = std::make_shared<Acting>();
        actor->act = [&] {
            ++calls;
            actors.clear();
        };
        subject->addObserver(actor);
    }
    subject->tell();
    EXPECT_EQ(calls, 5);
    EXPECT_EQ(subject->observerSet()->allObjects().size(), 0U);
}

TEST(Observable, CallbackMayDropTheObject) {
    auto subject = std::make_shared<Subject>();
    const std::weak_ptr<Subject> watched = subject;
    const auto first = std::make_shared<Acting>();
    const auto second = std::make_shared<Acting>();
    first->act = second->act = [&] {
        subject.reset();
        EXPECT_FALSE(watched.expired());
    };
    subject->addObservers({first, second});
    subject->tell();
    EXPECT_EQ(first->calls + second->calls, 2);
    EXPECT_TRUE(watched.expired());
}

TEST(Observable, ThatDoesNotLiveInASharedPointerNotifiesAllTheSame) {
    Subject subject;
    const auto counter = std::make_shared<Counter>();
    subject.observerSet()->insert(counter);
    subject.tell();
    EXPECT_EQ(counter->sum, 1);
}

TEST(Observable, MayNotifyWhileItIsBeingDestroyed) {
    class Parting : public Subject {
    public:
        ~Parting() override { tell(); }
    };
    const auto counter = std::make_shared<Counter>();
    {
        const auto subject = std::make_shared<Parting>();
        subject->addObserver(counter);
    }
    EXPECT_EQ(counter->sum, 1);
}

TEST(Observable, NotificationsNest) {
    const auto subject = std::make_shared<Subject>();
    const auto acting = std::make_shared<Acting>();
    acting->act = [&] {
        if (acting->calls < 10) subject->tell();
    };
    subject->addObserver(acting);
    subject->tell();
    EXPECT_EQ(acting->calls, 10);
}

TEST(Observable, ExceptionOfACallbackEndsThePassAndReachesTheCaller) {
    const auto subject = std::make_shared<Subject>();
    const auto acting = std::make_shared<Acting>();
    acting->act = [] { throw std::runtime_error("no"); };
    const auto token = subject->addObserver(acting);
    EXPECT_THROW(subject->tell(), std::runtime_error);
    token->cancelAndWait(); // would wait for ever if the pass were still under way
    subject->tell();
    EXPECT_EQ(acting->calls, 1);
}

TEST(Observable, TypeMayReplaceTheOperationsAndTokensUseItsOwn) {
    class Careful : public Subject {
    public:
        void removeObserver(const std::shared_ptr<Observer>& observer) override {
            ++removals;
            Subject::removeObserver(observer);
        }
        int removals = 0;
    };
    const auto subject = std::make_shared<Careful>();
    const auto counter = std::make_shared<Counter>();
    const auto token = subject->addObserver(counter);
    token->cancel();
    EXPECT_EQ(subject->removals, 1);
    EXPECT_FALSE(subject->observerSet()->contains(counter));
}

TEST(ObservableDeathTest, ObjectThatDoesNotLiveInASharedPointerStopsTheProcess) {
    support::useWorkerThreads();
    Subject subject;
    EXPECT_DEATH(
        subject.addObserver(std::make_shared<Counter>()),
        "VorlanFoundation/Observable: Fatal error: an observable object has to live in a std::shared_ptr");
}

TEST(ObservableDeathTest, NullObserverStopsTheProcess) {
    support::useWorkerThreads();
    const auto subject = std::make_shared<Subject>();
    EXPECT_DEATH(subject->addObserver(nullptr), "a weak set holds objects, and was given none");
    EXPECT_DEATH(subject->removeObserver(nullptr), "a weak set holds objects, and was given none");
}

TEST(ObservableDeathTest, SecondKindOfObserversStopsTheProcess) {
    support::useWorkerThreads();
    struct Twofold : Observable<Observer>, Observable<OtherObserver> {};
    const auto twofold = std::make_shared<Twofold>();
    static_cast<Observable<Observer>&>(*twofold).observerSet();
    EXPECT_DEATH(
        static_cast<Observable<OtherObserver>&>(*twofold).observerSet(),
        "Unexpected: different kind of value already exists for key '0x[0-9a-f]{16}': <.*WeakSet<.*>: 0x");
}
