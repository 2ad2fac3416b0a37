// SPDX-License-Identifier: Apache-2.0

// How changes are told within one process.

#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/ManualQueue.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/platform/defaults/ReportedProblems.h"
#include "tests/support/Inbox.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using support::Inbox;

namespace {

constexpr auto name = "com.example.editor";

} // namespace

TEST(UserDefaultsObserve, OwnChangeIsToldBeforeTheCallReturns) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    std::vector<std::optional<Value>> seen;
    const auto observation = store.observe("volume", [&] { seen.push_back(store.objectForKey("volume")); });
    store.setObject(1, "volume");
    EXPECT_EQ(seen.size(), 1U);
    store.setObject(2, "volume");
    EXPECT_EQ(seen.size(), 2U);
    store.removeObjectForKey("volume");
    ASSERT_EQ(seen.size(), 3U);
    EXPECT_EQ(seen, (std::vector<std::optional<Value>>{Value(1), Value(2), std::nullopt}));
}

TEST(UserDefaultsObserve, OwnChangeIsToldOnTheThreadThatMadeIt) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    std::thread::id told;
    const auto observation = store.observe("volume", [&] { told = std::this_thread::get_id(); });
    store.setObject(1, "volume");
    EXPECT_EQ(told, std::this_thread::get_id());
    std::thread::id other;
    std::thread([&] {
        other = std::this_thread::get_id();
        store.setObject(2, "volume");
    }).join();
    EXPECT_EQ(told, other);
}

TEST(UserDefaultsObserve, ChangeOfAnotherKeyIsNotTold) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    int calls = 0;
    const auto observation = store.observe("volume", [&] { ++calls; });
    store.setObject(1, "volumes");
    store.setObject(1, "volum");
    store.removeObjectForKey("volumes");
    EXPECT_EQ(calls, 0);
    store.setObject(1, "volume");
    EXPECT_EQ(calls, 1);
}

TEST(UserDefaultsObserve, ChangeOfAnotherStoreIsNotTold) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    UserDefaults other("com.example.other");
    int calls = 0;
    const auto observation = store.observe("volume", [&] { ++calls; });
    other.setObject(1, "volume");
    EXPECT_EQ(calls, 0);
    store.setObject(1, "volume");
    EXPECT_EQ(calls, 1);
}

TEST(UserDefaultsObserve, ChangeThroughAnotherHandleIsTold) {
    const vorlan::testing::TemporaryHome home;
    int calls = 0;
    KeyValueObservation observation;
    {
        const UserDefaults store(name);
        observation = store.observe("volume", [&] { ++calls; });
    }
    UserDefaults(name).setObject(1, "volume");
    EXPECT_EQ(calls, 1);
}

TEST(UserDefaultsObserve, RefusedValueIsNotTold) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    int calls = 0;
    const auto observation = store.observe("volume", [&] { ++calls; });
    EXPECT_THROW(store.setObject("\xFF", "volume"), std::invalid_argument);
    EXPECT_EQ(calls, 0);
    store.setObject(1, "volume");
    EXPECT_EQ(calls, 1);
}

TEST(UserDefaultsObserve, EveryRegistrationIsTold) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    int first = 0;
    int second = 0;
    const auto one = store.observe("volume", [&] { ++first; });
    const auto two = store.observe("volume", [&] { ++second; });
    store.setObject(1, "volume");
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST(UserDefaultsObserve, DroppedRegistrationIsNotTold) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    int dropped = 0;
    int kept = 0;
    std::optional observation(store.observe("volume", [&] { ++dropped; }));
    auto invalidated = store.observe("volume", [&] { ++dropped; });
    const auto other = store.observe("volume", [&] { ++kept; });
    store.setObject(1, "volume");
    EXPECT_EQ(dropped, 2);
    observation.reset();
    invalidated.invalidate();
    store.setObject(2, "volume");
    EXPECT_EQ(dropped, 2);
    EXPECT_EQ(kept, 2);
}

TEST(UserDefaultsObserve, DroppingTheRegistrationLetsGoOfTheHandler) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    const auto captured = std::make_shared<int>(0);
    std::optional observation(store.observe("volume", [captured] { ++*captured; }));
    store.setObject(1, "volume");
    EXPECT_EQ(*captured, 1);
    observation.reset();
    EXPECT_EQ(captured.use_count(), 1);
}

TEST(UserDefaultsObserve, HandlerMayDropItsOwnRegistration) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    int calls = 0;
    std::optional<KeyValueObservation> observation;
    observation = store.observe("volume", [&] {
        ++calls;
        observation.reset();
    });
    store.setObject(1, "volume");
    store.setObject(2, "volume");
    EXPECT_EQ(calls, 1);
}

TEST(UserDefaultsObserve, HandlerMaySetTheSameKeyAgain) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    std::vector<std::int64_t> seen;
    const auto observation = store.observe("volume", [&] {
        const auto volume = store.integerForKey("volume");
        seen.push_back(volume);
        if (volume < 3) store.setObject(volume + 1, "volume");
    });
    store.setObject(1, "volume");
    EXPECT_EQ(seen, (std::vector<std::int64_t>{1, 2, 3}));
    EXPECT_EQ(store.integerForKey("volume"), 3);
}

TEST(UserDefaultsObserve, HandlerMaySetAnotherKeyThatIsObservedToo) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    std::vector<std::string> told;
    const auto first = store.observe("first", [&] {
        told.emplace_back("first");
        store.setObject(true, "second");
    });
    const auto second = store.observe("second", [&] { told.emplace_back("second"); });
    store.setObject(true, "first");
    EXPECT_EQ(told, (std::vector<std::string>{"first", "second"}));
}

TEST(UserDefaultsObserve, HandlerMayCallAnything) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    KeyValueObservation added;
    int addedCalls = 0;
    bool saved = false;
    const auto observation = store.observe("volume", [&] {
        saved = store.synchronize();
        store.registerDefaults({{"registered", store.dictionaryRepresentation().size()}});
        added = store.observe("other", [&] { ++addedCalls; });
        UserDefaults("com.example.other").setObject(1, "key");
    });
    store.setObject(1, "volume");
    EXPECT_TRUE(saved);
    EXPECT_EQ(store.integerForKey("registered"), 1);
    store.setObject(1, "other");
    EXPECT_EQ(addedCalls, 1);
}

TEST(UserDefaultsObserve, ChangeIsSubmittedToTheQueueOfTheRegistration) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    const Queue queue("com.example.settings");
    Inbox<bool> onQueue;
    auto observation = store.observe("volume", queue, [&] { onQueue.put(queue.isCurrent()); });
    store.setObject(1, "volume");
    store.setObject(2, "volume");
    EXPECT_EQ(onQueue.take(), true);
    EXPECT_EQ(onQueue.take(), true);
    observation.invalidate();
    queue.sync([] {}); // a call that is under way ends before what it captured
}

TEST(UserDefaultsObserve, EachChangeIsOneCallOnTheQueue) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    vorlan::testing::ManualQueue queue;
    std::vector<std::int64_t> seen;
    const auto observation =
        store.observe("volume", queue, [&] { seen.push_back(store.integerForKey("volume")); });
    store.setObject(1, "volume");
    store.setObject(2, "volume");
    EXPECT_TRUE(seen.empty());
    queue.runPending();
    EXPECT_EQ(seen, (std::vector<std::int64_t>{2, 2}));
}

TEST(UserDefaultsObserve, CallThatWaitsOnTheQueueIsNotMadeOnceTheRegistrationIsDropped) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    vorlan::testing::ManualQueue queue;
    int dropped = 0;
    int kept = 0;
    auto observation = store.observe("volume", queue, [&] { ++dropped; });
    const auto other = store.observe("volume", queue, [&] { ++kept; });
    store.setObject(1, "volume");
    observation.invalidate();
    queue.runPending();
    EXPECT_EQ(dropped, 0);
    EXPECT_EQ(kept, 1);
}

TEST(UserDefaultsObserve, SavingAndForgettingTellsNobodyOfUnchangedValues) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.setObject(1, "volume");
    std::atomic<int> calls = 0;
    const auto observation = store.observe("volume", [&] { ++calls; });
    EXPECT_TRUE(store.synchronize());
    store.setObject(2, "other");
    EXPECT_TRUE(store.synchronize());
    EXPECT_EQ(calls, 0);
    store.setObject(2, "volume");
    EXPECT_EQ(calls, 1);
}

// For the sanitizers: any thread may do anything at any time.
TEST(UserDefaultsObserve, ThreadsWriteReadObserveAndSaveAtOnce) {
    const vorlan::testing::TemporaryHome home;
    static constexpr int threadCount = 6;
    static constexpr int perThread = 200;
    UserDefaults store(name);
    std::atomic<int> calls = 0;
    const auto observation = store.observe("shared", [&] { ++calls; });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread)
        threads.emplace_back([&store, thread] {
            UserDefaults own(name);
            std::atomic<int> seen = 0;
            bool saved = true;
            const auto mine = own.observe("shared", [&] { ++seen; });
            for (int i = 0; i < perThread; ++i) {
                own.setObject(i, std::to_string(thread) + "." + std::to_string(i));
                own.setObject(thread * perThread + i, "shared");
                static_cast<void>(store.integerForKey("shared"));
                if (i % 50 == thread) static_cast<void>(own.dictionaryRepresentation());
                if (i % 100 == thread) saved = saved && own.synchronize();
            }
            EXPECT_TRUE(saved);
            EXPECT_GE(seen, perThread);
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(calls, threadCount * perThread);
    tests::forgetEverything();
    EXPECT_EQ(UserDefaults(name).storedEntries().size(), threadCount * perThread + 1U);
}
