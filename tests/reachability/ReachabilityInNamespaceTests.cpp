// SPDX-License-Identifier: Apache-2.0
// The monitor against the running kernel, in networks that each case builds for itself.

#include <VorlanFoundation/Reachability/Reachability.h>
#include <VorlanFoundation/Reachability/ReachabilityService.h>

#include "tests/platform/network/Namespace.h"
#include "tests/platform/network/PrivateDNS.h"
#include "tests/platform/network/PrivateEtc.h"
#include "tests/platform/network/WatchedReachability.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vorlan {
namespace {

using namespace tests;

/// How often monitors told what, on a queue for that; waits for it.
///
/// Threads: safe from any thread, but destroy it after the monitors.
class Deliveries {
public:
    Deliveries() = default;
    Deliveries(const Deliveries&) = delete;
    Deliveries& operator=(const Deliveries&) = delete;
    ~Deliveries() { settle(); } // what a monitor tells at this moment still uses the members

    struct Counts {
        int reachable = 0;
        int unreachable = 0;
        int posted = 0;
    };

    /// Counts what a monitor tells from now on.
    void follow(const std::shared_ptr<Reachability>& monitor) {
        monitor->notificationCenter = center_;
        monitor->whenReachable = [this](Reachability& told) {
            EXPECT_TRUE(told.isReachable());
            count(&Counts::reachable);
        };
        monitor->whenUnreachable = [this](Reachability& told) {
            EXPECT_FALSE(told.isReachable());
            count(&Counts::unreachable);
        };
        observations_.push_back(
            center_.addObserver({.name = notificationName::reachabilityChanged(), .object = monitor},
                                [this](const Notification& notification) {
                                    EXPECT_TRUE(notification.userInfo.empty());
                                    count(&Counts::posted);
                                }));
    }

    /// Returns when all that was due has been told.
    void settle() const {
        queue_.sync([] {});
    }

    /// What a monitor is made with, to tell of its changes here.
    ReachabilityQueues queues() const { return {.notificationQueue = queue_}; }

    /// Waits until so many were told, and as many posted; false after a while.
    bool become(int reachable, int unreachable) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(30), [&] {
            return counts_.reachable >= reachable && counts_.unreachable >= unreachable &&
                   counts_.posted >= reachable + unreachable;
        });
    }

    Counts counts() const {
        const std::lock_guard lock(mutex_);
        return counts_;
    }

private:
    void count(int Counts::* kind) {
        const std::lock_guard lock(mutex_);
        ++(counts_.*kind);
        changed_.notify_all();
    }

    const Queue queue_{"notifications"};
    const NotificationCenter center_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    Counts counts_;
    std::vector<NotificationObservation> observations_;
};

/// Waits until it holds; false after a while.
template <class Condition>
bool comesTrue(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::yield();
    }
    return true;
}

/// Makes a cable with both ends in this namespace, and a default route over it; returns when it carries and
/// all sockets are closed that were needed to see that.
void plugIn() {
    const int sockets = openSockets();
    ip("link set lo up\nlink add veth0 type veth peer name vpeer\naddr add 10.9.0.1/24 dev veth0\n"
       "link set veth0 up\nlink set vpeer up\nroute add default via 10.9.0.2");
    // The kernel sees the carrier a little later.
    EXPECT_TRUE(WatchedReachability(generalTarget()).becomes(routed));
    EXPECT_TRUE(comesTrue([&] { return openSockets() == sockets; }));
}

class ReachabilityInNamespace : public ::testing::TestWithParam<Privilege> {};

INSTANTIATE_TEST_SUITE_P(, ReachabilityInNamespace,
                         ::testing::Values(Privilege::root, Privilege::unprivileged),
                         ::testing::PrintToStringParamName());

TEST_P(ReachabilityInNamespace, RouteThatGoesAndReturnsIsTold) {
    inOwnNamespace(GetParam(), [] {
        plugIn();
        Deliveries deliveries;
        const auto monitor = std::make_shared<Reachability>(deliveries.queues());
        deliveries.follow(monitor);
        monitor->startNotifier();
        EXPECT_TRUE(deliveries.become(1, 0));
        EXPECT_EQ(monitor->connection(), Reachability::Connection::wifi);
        EXPECT_EQ(monitor->description(), "-R -------");
        ip("route del default");
        EXPECT_TRUE(deliveries.become(1, 1));
        EXPECT_EQ(monitor->connection(), Reachability::Connection::unavailable);
        EXPECT_EQ(monitor->description(), "-- -------");
        ip("route add default via 10.9.0.2");
        EXPECT_TRUE(deliveries.become(2, 1));
        EXPECT_TRUE(monitor->isReachable());
        monitor->stopNotifier();
        deliveries.settle();
        EXPECT_EQ(deliveries.counts().posted, 3);
    });
}

TEST_P(ReachabilityInNamespace, StoppedMonitorTellsNothing) {
    inOwnNamespace(GetParam(), [] {
        plugIn();
        Deliveries ofStopped;
        Deliveries ofRunning;
        const auto stopped = std::make_shared<Reachability>(ofStopped.queues());
        const auto running = std::make_shared<Reachability>(ofRunning.queues());
        ofStopped.follow(stopped);
        ofRunning.follow(running);
        stopped->startNotifier();
        running->startNotifier();
        EXPECT_TRUE(ofStopped.become(1, 0));
        stopped->stopNotifier();
        EXPECT_TRUE(ofRunning.become(1, 0));
        ip("route del default");
        EXPECT_TRUE(ofRunning.become(1, 1));
        ip("route add default via 10.9.0.2");
        EXPECT_TRUE(ofRunning.become(2, 1)); // whatever came of the first change has come by now
        ofStopped.settle();
        EXPECT_EQ(ofStopped.counts().posted, 1);
        EXPECT_EQ(ofStopped.counts().unreachable, 0);
        ip("route del default");
        EXPECT_TRUE(ofRunning.become(2, 2));
        stopped->startNotifier(); // hears first of what changed meanwhile
        EXPECT_TRUE(ofStopped.become(1, 1));
    });
}

TEST_P(ReachabilityInNamespace, HostIsFollowedByNameAndByAddress) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        plugIn();
        const PrivateDNS dns(HostRecords{{"host.test", {"192.0.2.1"}}});
        Deliveries byName;
        Deliveries byAddress;
        const auto named = std::make_shared<Reachability>("host.test", byName.queues());
        const auto addressed = std::make_shared<Reachability>("192.0.2.1", byAddress.queues());
        byName.follow(named);
        byAddress.follow(addressed);
        EXPECT_TRUE(named->isReachable()); // also before it watches
        named->startNotifier();
        addressed->startNotifier();
        EXPECT_TRUE(byName.become(1, 0));
        EXPECT_TRUE(byAddress.become(1, 0));
        ip("route add blackhole 192.0.2.0/24");
        EXPECT_TRUE(byName.become(1, 1));
        EXPECT_TRUE(byAddress.become(1, 1));
        ip("route del blackhole 192.0.2.0/24");
        EXPECT_TRUE(byName.become(2, 1));
        EXPECT_TRUE(byAddress.become(2, 1));
    });
}

int threads() {
    return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}));
}

TEST_P(ReachabilityInNamespace, ThousandsShareTheSocketsAndNeedNoThreads) {
    inOwnNamespace(GetParam(), [] {
        constexpr int count = 2000;
        const int socketsBefore = openSockets();
        plugIn();
        const int threadsBefore = threads();
        {
            Deliveries deliveries;
            std::vector<std::shared_ptr<Reachability>> monitors;
            for (int i = 0; i < count; ++i) {
                monitors.push_back(i % 2 == 0
                                       ? std::make_shared<Reachability>(deliveries.queues())
                                       : std::make_shared<Reachability>("192.0.2.1", deliveries.queues()));
                deliveries.follow(monitors.back());
                monitors.back()->startNotifier();
            }
            EXPECT_TRUE(deliveries.become(count, 0));
            EXPECT_EQ(openSockets(), socketsBefore + 2);
            EXPECT_LT(threads(), threadsBefore + 40);
            ip("route del default");
            EXPECT_TRUE(deliveries.become(count, count));
            EXPECT_LT(threads(), threadsBefore + 40);
            EXPECT_EQ(deliveries.counts().reachable, count);
            for (const auto& monitor : monitors) monitor->stopNotifier();
            deliveries.settle();
            EXPECT_EQ(deliveries.counts().posted, 2 * count);
        }
        EXPECT_TRUE(comesTrue([&] { return openSockets() == socketsBefore; })) << openSockets();
    });
}

TEST_P(ReachabilityInNamespace, MonitorsShareTheSocketsWithTheService) {
    inOwnNamespace(GetParam(), [] {
        const int before = openSockets();
        plugIn();
        Deliveries deliveries;
        auto monitor = std::make_shared<Reachability>(deliveries.queues());
        deliveries.follow(monitor);
        monitor->startNotifier();
        EXPECT_TRUE(deliveries.become(1, 0));
        auto service = std::make_shared<ReachabilityService>();
        service->start();
        EXPECT_TRUE(service->isReachable());
        EXPECT_EQ(openSockets(), before + 2);
        monitor->stopNotifier();
        monitor.reset();
        EXPECT_TRUE(service->isReachable());
        EXPECT_EQ(openSockets(), before + 2);
        service->cancel();
        service.reset();
        EXPECT_TRUE(comesTrue([&] { return openSockets() == before; })) << openSockets();
    });
}

} // namespace
} // namespace vorlan
