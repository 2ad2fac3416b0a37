// SPDX-License-Identifier: Apache-2.0

// Monitors that come and go while the network changes under them.

#include <VorlanFoundation/Reachability.h>

#include "tests/reachability/ScriptedMonitor.h"

#include <VorlanFoundation/Testing/MainLoop.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using tests::Flags;
using tests::setCallbacks;

namespace {

constexpr int rounds = 10000;

/// Changes the flags of a network from a thread of its own until it is destroyed.
class Weather {
public:
    explicit Weather(vorlan::testing::ScriptedNetwork& network)
        : thread_([this, &network] {
              for (int i = 0; !over_; ++i) {
                  network.deliverFlags(i % 2 == 0 ? Flags::reachable : Flags::isDirect);
                  std::this_thread::yield();
              }
          }) {}
    Weather(const Weather&) = delete;
    Weather& operator=(const Weather&) = delete;
    ~Weather() {
        over_ = true;
        thread_.join();
    }

private:
    std::atomic<bool> over_ = false;
    std::thread thread_;
};

/// Whether `gone` is gone soon; a callout on another thread may hold it for a moment.
bool isGoneSoon(const std::weak_ptr<Reachability>& gone) {
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!gone.expired() && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
    return gone.expired();
}

class ReachabilityStressTest : public ::testing::Test {
protected:
    void TearDown() override {
        EXPECT_TRUE(
            vorlan::testing::MainLoop::pumpUntil([&] { return network.flagsSubscriberCount() == 0; }, 10s));
    }

    vorlan::testing::ScriptedNetwork network;
};

} // namespace

TEST_F(ReachabilityStressTest, MonitorDroppedWhileACalloutIsUnderWayIsNeitherCalledNorLeaked) {
    const Weather weather(network);
    vorlan::testing::ManualQueue deliveries;
    const Queue systemSide("tests.systemSide");
    int calls = 0;
    for (int round = 0; round < rounds; ++round) {
        auto monitor = std::make_shared<Reachability>(
            network.reachability(),
            ReachabilityQueues{.targetQueue = systemSide, .notificationQueue = deliveries});
        setCallbacks(*monitor, [&](Reachability&) { ++calls; });
        monitor->startNotifier();
        const std::weak_ptr<Reachability> gone = monitor;
        monitor.reset();
        ASSERT_TRUE(isGoneSoon(gone)) << "round " << round;
        deliveries.runPending();
        ASSERT_EQ(calls, 0) << "round " << round;
    }
}

TEST_F(ReachabilityStressTest, MonitorDroppedWhileItIsDeliveringIsNotLeaked) {
    const Weather weather(network);
    const Queue deliveries("tests.deliveries");
    std::atomic<int> calls = 0;
    std::atomic<int> dead = 0; // calls of a monitor that was gone
    for (int round = 0; round < rounds; ++round) {
        auto monitor = std::make_shared<Reachability>(network.reachability(),
                                                      ReachabilityQueues{.notificationQueue = deliveries});
        const std::weak_ptr<Reachability> gone = monitor;
        setCallbacks(*monitor, [&calls, &dead, gone](Reachability&) {
            ++calls;
            if (gone.expired()) ++dead;
        });
        monitor->startNotifier();
        if (round % 8 == 0) deliveries.sync([] {});
        monitor.reset();
        ASSERT_TRUE(isGoneSoon(gone)) << "round " << round;
    }
    deliveries.sync([] {});
    EXPECT_GT(calls, 0);
    EXPECT_EQ(dead, 0);
}

TEST_F(ReachabilityStressTest, MonitorDropsItselfFromItsOwnCallback) {
    const Weather weather(network);
    const Queue deliveries("tests.deliveries");
    for (int round = 0; round < rounds / 10; ++round) {
        // The callback is the last to hold the monitor, until it lets go of it.
        const auto holder = std::make_shared<std::shared_ptr<Reachability>>(std::make_shared<Reachability>(
            network.reachability(), ReachabilityQueues{.notificationQueue = deliveries}));
        const std::weak_ptr<Reachability> gone = *holder;
        deliveries.sync([&] {
            setCallbacks(**holder, [holder](Reachability&) { holder->reset(); });
            (*holder)->startNotifier();
        });
        ASSERT_TRUE(isGoneSoon(gone)) << "round " << round;
    }
    deliveries.sync([] {});
}

// Both get at the last reference at the same time: who is the later destroys the monitor.
TEST_F(ReachabilityStressTest, LastReferenceMayBeDroppedByAnyThread) {
    for (int round = 0; round < rounds / 10; ++round) {
        auto monitor = std::make_shared<Reachability>(network.reachability(),
                                                      ReachabilityQueues{.notificationQueue = std::nullopt});
        monitor->startNotifier();
        const std::weak_ptr<Reachability> gone = monitor;
        std::thread other([copy = monitor, this]() mutable {
            network.deliverFlags(Flags::reachable);
            copy.reset();
        });
        network.deliverFlags(Flags::isDirect);
        monitor.reset();
        other.join();
        ASSERT_TRUE(isGoneSoon(gone)) << "round " << round;
    }
}

TEST_F(ReachabilityStressTest, OneMonitorIsUsedByManyThreads) {
    const Weather weather(network);
    const Queue deliveries("tests.deliveries");
    const auto monitor = std::make_shared<Reachability>(network.reachability(),
                                                        ReachabilityQueues{.notificationQueue = deliveries});
    std::atomic<int> calls = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 3; ++number)
        threads.emplace_back([&] {
            for (int round = 0; round < rounds / 10; ++round) {
                monitor->startNotifier();
                setCallbacks(*monitor, [&](Reachability&) { ++calls; });
                monitor->notificationCenter = NotificationCenter();
                monitor->isReachable(); // finds the flags if another thread's start has not yet
                EXPECT_EQ(monitor->description().size(), 10U);
                monitor->stopNotifier();
            }
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
    monitor->startNotifier(); // still works
    EXPECT_EQ(network.flagsSubscriberCount(), 1U);
    monitor->stopNotifier();
    deliveries.sync([] {});
}
