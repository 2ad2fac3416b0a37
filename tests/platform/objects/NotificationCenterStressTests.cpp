// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NotificationCenter.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

const NotificationName ticked("com.example.ticked");

// Two threads that post as long as it lives; each leaves the lock to others most of the time.
class Posters {
public:
    explicit Posters(const NotificationCenter& center) {
        for (auto& thread : threads_)
            thread = std::jthread([this, center](const std::stop_token& stop) {
                for (; !stop.stop_requested(); ++posts_) {
                    center.post({.name = ticked});
                    std::this_thread::yield();
                }
            });
    }

    std::size_t posts() const { return posts_; }

private:
    std::atomic<std::size_t> posts_ = 0;
    std::array<std::jthread, 2> threads_;
};

// What a handler refers to. A call after its end is a use of freed memory, which the sanitizers see; without them the
// mark tells, more often than not.
struct Target {
    ~Target() { isThere = false; }
    void touch() {
        if (!isThere) ADD_FAILURE() << "called after the end";
        ++calls;
    }
    std::atomic<bool> isThere = true;
    std::atomic<int> calls = 0;
};

void waitForACallOf(const Target& target) {
    while (target.calls == 0) std::this_thread::yield();
}

struct Listener {
    void hear(const Notification&) { target->touch(); }
    Target* target = nullptr;
};

} // namespace

TEST(NotificationCenterStress, WhatAHandlerRefersToMayBeDestroyedRightAfterInvalidatingAndWaiting) {
    const NotificationCenter center;
    const Posters posters(center);
    for (int i = 0; i < 10'000; ++i) {
        auto target = std::make_unique<Target>();
        auto observation =
            center.addObserver({.name = ticked}, [at = target.get()](const Notification&) { at->touch(); });
        if (i % 4 == 0) waitForACallOf(*target);
        observation.invalidateAndWait();
        target.reset();
    }
    EXPECT_GT(posters.posts(), 0U);
}

TEST(NotificationCenterStress, WhatAnObserverRefersToMayBeDestroyedRightAfterRemovingAndWaiting) {
    const NotificationCenter center;
    const Posters posters(center);
    for (int i = 0; i < 10'000; ++i) {
        auto target = std::make_unique<Target>();
        const auto listener = std::make_shared<Listener>(target.get());
        center.addObserver(listener, &Listener::hear, {.name = ticked});
        center.addObserver(listener, &Listener::hear);
        if (i % 4 == 0) waitForACallOf(*target);
        center.removeObserverAndWait(listener);
        target.reset();
        ASSERT_EQ(listener.use_count(), 1);
    }
    EXPECT_GT(posters.posts(), 0U);
}

TEST(NotificationCenterStress, ObserversMayDieWhileTheyAreTold) {
    const NotificationCenter center;
    const Posters posters(center);
    for (int i = 0; i < 10'000; ++i) {
        auto target = std::make_shared<Target>();
        struct Holding {
            void hear(const Notification&) { target->touch(); }
            std::shared_ptr<Target> target;
        };
        center.addObserver(std::make_shared<Holding>(target), &Holding::hear);
        const auto holding = std::make_shared<Holding>(target);
        center.addObserver(holding, &Holding::hear);
        if (i % 4 == 0) waitForACallOf(*target);
    }
    EXPECT_GT(posters.posts(), 0U);
}

TEST(NotificationCenterStress, FourThreadsAddRemoveAndPostWhileHandlersEndRegistrationsOfOthers) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    const NotificationCenter center;
    struct Member {
        void hear(const Notification&) { ++calls; }
        std::atomic<int> calls = 0;
    };
    struct Place {
        std::mutex mutex;
        NotificationObservation observation;
        std::shared_ptr<Member> member = std::make_shared<Member>();
    };
    std::array<Place, 8> places;
    std::atomic<int> calls = 0;
    const auto exchange = [&](Place& place, NotificationObservation observation) {
        const std::lock_guard lock(place.mutex);
        return std::exchange(place.observation, std::move(observation));
    };
    const auto step = [&](std::mt19937& random) {
        auto& place = places[random() % places.size()];
        switch (random() % 8) {
        case 0:
        case 1:
            exchange(place, center.addObserver({.name = ticked}, [&](const Notification&) { ++calls; }));
            break;
        case 2: exchange(place, {}).invalidateAndWait(); break;
        case 3: // One that ends some other registration when it is called.
            exchange(place, center.addObserver({}, [&, to = random() % places.size()](const Notification&) {
                exchange(places[to], {}).invalidate();
            }));
            break;
        case 4: center.addObserver(place.member, &Member::hear, {.name = ticked}); break;
        case 5: center.removeObserver(place.member); break;
        case 6: center.removeObserverAndWait(place.member); break;
        default: center.post({.name = ticked});
        }
    };
    {
        std::vector<std::jthread> threads;
        for (unsigned t = 0; t < 4; ++t)
            threads.emplace_back([&step, random = std::mt19937(seed + t)]() mutable {
                for (int i = 0; i < 5'000; ++i) step(random);
            });
    }
    for (auto& place : places) {
        exchange(place, {});
        center.removeObserver(place.member);
        EXPECT_EQ(place.member.use_count(), 1);
    }
    const int before = calls;
    center.post({.name = ticked});
    EXPECT_EQ(calls, before);
}
