// SPDX-License-Identifier: Apache-2.0
// How registrations with a notification center end.
#include <VorlanFoundation/Platform/NotificationCenter.h>

#include "tests/platform/objects/SlowCall.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <cstddef>
#include <functional>
#include <latch>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using support::SlowCall;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const NotificationName saved("com.example.saved");
const NotificationName closed("com.example.closed");

using Log = std::vector<std::string>;

struct Document : Object {};

struct Reader {
    virtual ~Reader() = default;
    virtual void read(const Notification& notification) = 0;
};

struct Window : Object, Reader {
    explicit Window(Log& theLog) : log(theLog) {}
    void read(const Notification&) override { log.push_back("read"); }
    void didSave(const Notification&) { log.push_back("saved"); }
    Log& log;
};

// Has its members call what a test gives it.
struct Observer {
    void hear(const Notification& notification) { whenHeard(notification); }
    std::function<void(const Notification&)> whenHeard;
};

NotificationCenter::Handler writeInto(Log& log, std::string text) {
    return [&log, text = std::move(text)](const Notification&) { log.push_back(text); };
}

// Counts the blocks that are allocated through it.
template <class T>
struct Counting {
    using value_type = T;
    explicit Counting(std::atomic<int>& theBlocks) : blocks(&theBlocks) {}
    template <class Other>
    Counting(const Counting<Other>& other)
        : blocks(other.blocks) {} // NOLINT(*-explicit-*): allocators convert
    T* allocate(std::size_t count) {
        ++*blocks;
        return std::allocator<T>().allocate(count);
    }
    void deallocate(T* memory, std::size_t count) {
        --*blocks;
        std::allocator<T>().deallocate(memory, count);
    }
    friend bool operator==(const Counting&, const Counting&) = default;
    std::atomic<int>* blocks;
};

} // namespace

TEST(NotificationCenter, WhatIsRegisteredTwiceIsCalledTwiceAndRemovedAtOnce) {
    const NotificationCenter center;
    Log log;
    const auto window = std::make_shared<Window>(log);
    const auto other = std::make_shared<Window>(log);
    center.addObserver(window, &Window::didSave, {.name = saved});
    center.addObserver(window, &Window::didSave, {.name = saved});
    center.addObserver(other, &Window::read);
    const auto observation = center.addObserver({}, writeInto(log, "handler"));
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("saved", "saved", "read", "handler"));
    log.clear();
    center.removeObserver(window);
    center.removeObserver(window);
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("read", "handler"));
}

TEST(NotificationCenter, RemovingWithAFilterEndsThoseThatWereMadeWithAnEqualFilter) {
    const NotificationCenter center;
    Log log;
    const auto window = std::make_shared<Window>(log);
    const auto document = std::make_shared<Document>();
    const auto callsFor = [&](const Notification& notification) {
        log.clear();
        center.post(notification);
        return log.size();
    };
    const NotificationCenter::Filter ofName{.name = saved};
    const NotificationCenter::Filter ofObject{.object = document};
    const NotificationCenter::Filter ofBoth{.name = saved, .object = document};
    for (const auto& filter : {{}, ofName, ofObject, ofBoth})
        center.addObserver(window, &Window::didSave, filter);
    center.removeObserver(window, {.name = closed});
    center.removeObserver(window, {.object = std::make_shared<Document>()});
    EXPECT_EQ(callsFor({.name = saved, .object = document}), 4U);
    center.removeObserver(window, {});
    EXPECT_EQ(callsFor({.name = saved, .object = document}), 3U);
    EXPECT_EQ(callsFor({.name = closed}), 0U);
    center.removeObserver(window, ofName);
    EXPECT_EQ(callsFor({.name = saved, .object = document}), 2U);
    EXPECT_EQ(callsFor({.name = saved}), 0U);
    center.removeObserver(window, ofObject);
    EXPECT_EQ(callsFor({.name = saved, .object = document}), 1U);
    EXPECT_EQ(callsFor({.name = closed, .object = document}), 0U);
    center.removeObserver(window, ofBoth);
    EXPECT_EQ(callsFor({.name = saved, .object = document}), 0U);
}

TEST(NotificationCenter, AllPointersThatShareInOneOwnershipAreOneObserver) {
    const NotificationCenter center;
    Log log;
    const auto window = std::make_shared<Window>(log);
    const std::shared_ptr<Reader> reader = window;
    ASSERT_NE(static_cast<const void*>(reader.get()), static_cast<const void*>(window.get()));
    center.addObserver(reader, &Reader::read);
    center.addObserver(window, &Window::didSave);
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("read", "saved"));
    center.removeObserver(reader);
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("read", "saved"));
    center.addObserver(reader, &Reader::read);
    center.removeObserverAndWait(window);
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("read", "saved"));
}

TEST(NotificationCenter, NewObserverAtTheAddressOfADeadOneIsNotTakenForIt) {
    alignas(Window) std::byte place[sizeof(Window)];
    Log log;
    const auto make = [&] {
        return std::shared_ptr<Window>(new (place) Window(log), [](Window* window) { window->~Window(); });
    };
    const NotificationCenter center;
    auto window = make();
    center.addObserver(window, &Window::didSave);
    window.reset();
    window = make();
    center.post({.name = saved});
    EXPECT_THAT(log, IsEmpty());
    center.addObserver(window, &Window::read);
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("read"));
}

TEST(NotificationCenter, RegistrationsOfObserversThatAreGoneDoNotPileUp) {
    struct Small {
        void hear(const Notification&) {}
    };
    std::atomic<int> blocks = 0; // Outlives the center, which may hold the last blocks.
    const NotificationCenter center;
    for (int i = 0; i < 10'000; ++i) {
        const auto observer = std::allocate_shared<Small>(Counting<Small>(blocks));
        center.addObserver(observer, &Small::hear);
    }
    EXPECT_LT(blocks, 100) << "a registration keeps a block, though not the observer";
}

TEST(NotificationCenter, RegistrationsForObjectsThatAreGoneDoNotPileUp) {
    std::atomic<int> blocks = 0; // Outlives the center, which may hold the last blocks.
    const NotificationCenter center;
    Log log;
    const auto window = std::make_shared<Window>(log);
    center.addObserver(window, &Window::read);
    for (int i = 0; i < 10'000; ++i) {
        const auto document = std::allocate_shared<Document>(Counting<Document>(blocks));
        center.addObserver(window, &Window::didSave, {.object = document});
    }
    EXPECT_LT(blocks, 100);
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("read"));
}

TEST(NotificationCenter, RemovingThousandsOfObserversOneByOneLeavesTheOthersInOrder) {
    const NotificationCenter center;
    std::vector<int> told;
    std::vector<NotificationObservation> observations;
    std::vector<std::shared_ptr<Observer>> observers;
    for (int i = 0; i < 10'000; ++i) {
        const auto tell = [&, i](const Notification&) { told.push_back(i); };
        observations.push_back(center.addObserver({}, tell));
        center.addObserver(observers.emplace_back(std::make_shared<Observer>(tell)), &Observer::hear);
    }
    for (std::size_t i = 0; i < 10'000; ++i) {
        if (i % 1'000 == 7) continue;
        observations[i].invalidate();
        center.removeObserver(observers[i]);
    }
    center.post({.name = saved});
    EXPECT_THAT(told, ElementsAre(7, 7, 1007, 1007, 2007, 2007, 3007, 3007, 4007, 4007, 5007, 5007, 6007,
                                  6007, 7007, 7007, 8007, 8007, 9007, 9007));
}

TEST(NotificationCenter, RemovingAndWaitingReturnsOnlyWhenNoCallOfTheObserverRuns) {
    const NotificationCenter center;
    SlowCall call(center);
    const auto observer = std::make_shared<Observer>(call.handler());
    center.addObserver(observer, &Observer::hear);
    for (int i = 0; i < 3; ++i) call.post();
    call.waitUntilUnderWay(3);
    center.removeObserverAndWait(observer);
    EXPECT_TRUE(call.isOver());
    EXPECT_EQ(observer.use_count(), 1) << "nobody holds the observer any more";
}

TEST(NotificationCenter, RemovingAndWaitingWaitsForCallsOfWhatWasRemovedBefore) {
    const NotificationCenter center;
    SlowCall call(center);
    const auto observer = std::make_shared<Observer>(call.handler());
    center.addObserver(observer, &Observer::hear);
    call.post();
    call.waitUntilUnderWay();
    center.removeObserver(observer);
    center.removeObserverAndWait(observer);
    EXPECT_TRUE(call.isOver());
}

TEST(NotificationCenter, RemovingAndWaitingDoesNotWaitForCallsOfOthers) {
    const NotificationCenter center;
    Log log;
    const auto window = std::make_shared<Window>(log);
    center.addObserver(window, &Window::didSave);
    std::latch isUnderWay(1);
    std::latch mayEnd(1);
    const auto observation = center.addObserver({}, [&](const Notification&) {
        isUnderWay.count_down();
        mayEnd.wait();
    });
    std::jthread poster([&] { center.post({.name = saved}); });
    isUnderWay.wait();
    center.removeObserverAndWait(window);
    EXPECT_THAT(log, ElementsAre("saved"));
    mayEnd.count_down();
}

TEST(NotificationCenter, RemovingAndWaitingFromInsideCallsOfTheObserverDoesNotWait) {
    const NotificationCenter center;
    const auto observer = std::make_shared<Observer>();
    std::barrier both(2);
    std::atomic<int> calls = 0;
    observer->whenHeard = [&](const Notification&) {
        both.arrive_and_wait();
        center.removeObserverAndWait(observer);
        ++calls;
    };
    center.addObserver(observer, &Observer::hear);
    std::jthread other([&] { center.post({.name = saved}); });
    center.post({.name = saved});
    other.join();
    center.post({.name = saved});
    EXPECT_EQ(calls, 2);
}
