// SPDX-License-Identifier: Apache-2.0

// Who is told, where and in which order.

#include <VorlanFoundation/Reachability.h>

#include "tests/reachability/ScriptedMonitor.h"
#include "tests/support/Inbox.h"

#include <VorlanFoundation/Platform/Thread.h>
#include <VorlanFoundation/Testing/MainLoop.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

using namespace vorlan;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tests::Flags;

namespace {

class ReachabilityNotificationTest : public tests::ScriptedMonitor {};

} // namespace

TEST_F(ReachabilityNotificationTest, OnlyTheCallbackThatFitsIsCalled) {
    monitor->whenUnreachable = nullptr;
    startQuietly();
    network.setFlags(Flags::reachable);
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
    network.setFlags(Flags{});
    EXPECT_THAT(news(), ElementsAre("changed"));
}

TEST_F(ReachabilityNotificationTest, MonitorMayOnlyTellWhenThereIsNoConnection) {
    monitor->whenReachable = nullptr;
    startQuietly();
    network.setFlags(Flags::reachable);
    EXPECT_THAT(news(), ElementsAre("changed"));
    network.setFlags(Flags{});
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
}

TEST_F(ReachabilityNotificationTest, NotificationIsPostedWithoutCallbacksToo) {
    monitor->whenReachable = nullptr;
    monitor->whenUnreachable = nullptr;
    monitor->startNotifier();
    EXPECT_THAT(news(), ElementsAre("changed"));
    network.setFlags(Flags::reachable);
    EXPECT_THAT(news(), ElementsAre("changed"));
}

TEST_F(ReachabilityNotificationTest, CallbackIsReadAtTheDelivery) {
    startQuietly();
    network.setFlags(Flags::reachable);
    waitForCallouts();
    monitor->whenReachable = [this](Reachability&) { heard.emplace_back("replaced"); };
    EXPECT_THAT(news(), ElementsAre("replaced", "changed"));
}

TEST_F(ReachabilityNotificationTest, CallbackIsGivenTheMonitor) {
    const Reachability* given = nullptr;
    monitor->whenReachable = [&](Reachability& reachability) { given = &reachability; };
    network.setFlags(Flags::reachable);
    monitor->startNotifier();
    settle();
    EXPECT_EQ(given, monitor.get());
}

TEST_F(ReachabilityNotificationTest, NotificationHasTheMonitorAsItsObjectAndCarriesNothing) {
    std::optional<Notification> posted;
    const auto all = center.addObserver({}, [&](const Notification& notification) { posted = notification; });
    monitor->startNotifier();
    settle();
    ASSERT_TRUE(posted);
    EXPECT_EQ(posted->name, notificationName::reachabilityChanged());
    EXPECT_EQ(posted->object, monitor);
    EXPECT_TRUE(posted->userInfo.empty());
}

TEST_F(ReachabilityNotificationTest, ObserverOfOneMonitorHearsOfThatOneOnly) {
    const auto other = std::make_shared<Reachability>(network.reachability(), queues());
    other->notificationCenter = center;
    const auto filtered =
        center.addObserver({.name = notificationName::reachabilityChanged(), .object = other},
                           [&](const Notification&) { heard.emplace_back("of the other"); });
    startQuietly();
    network.setFlags(Flags::reachable);
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
    other->startNotifier();
    EXPECT_THAT(news(), ElementsAre("changed", "of the other"));
}

TEST_F(ReachabilityNotificationTest, NotificationIsPostedOnTheReplacedCenterOnly) {
    startQuietly();
    const NotificationCenter second;
    const auto here = second.addObserver({}, [&](const Notification&) { heard.emplace_back("second"); });
    monitor->notificationCenter = second;
    EXPECT_EQ(monitor->notificationCenter.value(), second);
    network.setFlags(Flags::reachable);
    EXPECT_THAT(news(), ElementsAre("reachable", "second"));
}

TEST_F(ReachabilityNotificationTest, CenterIsTheProcessesUnlessReplaced) {
    const auto other = std::make_shared<Reachability>(network.reachability(), queues());
    EXPECT_EQ(other->notificationCenter.value(), NotificationCenter::default_());
    const auto here = NotificationCenter::default_().addObserver(
        {.name = notificationName::reachabilityChanged(), .object = other},
        [&](const Notification&) { heard.emplace_back("default"); });
    other->startNotifier();
    EXPECT_THAT(news(), ElementsAre("default"));
}

TEST_F(ReachabilityNotificationTest, CallbackAndNotificationComeOnTheNotificationQueue) {
    const Queue queue("tests.notifications");
    support::Inbox<std::pair<std::string, bool>> inbox;
    const NotificationCenter own;
    const auto here =
        own.addObserver({}, [&](const Notification&) { inbox.put({"changed", queue.isCurrent()}); });
    {
        const auto other = std::make_shared<Reachability>(network.reachability(),
                                                          ReachabilityQueues{.notificationQueue = queue});
        other->notificationCenter = own;
        other->whenUnreachable = [&](Reachability&) { inbox.put({"unreachable", queue.isCurrent()}); };
        other->startNotifier();
        EXPECT_EQ(inbox.take(), std::pair(std::string("unreachable"), true));
        EXPECT_EQ(inbox.take(), std::pair(std::string("changed"), true));
    }
    queue.sync([] {});
}

TEST_F(ReachabilityNotificationTest, NotificationQueueIsTheMainQueueUnlessAnotherIsGiven) {
    std::string told;
    bool onMainThread = false;
    const auto other = std::make_shared<Reachability>(network.reachability());
    other->whenUnreachable = [&](Reachability&) {
        told = "unreachable";
        onMainThread = Thread::isMainThread() && Queue::main().isCurrent();
    };
    other->startNotifier();
    EXPECT_EQ(told, "") << "the main thread has not turned its loop";
    EXPECT_TRUE(vorlan::testing::MainLoop::pumpUntil([&] { return told == "unreachable"; }, 10s));
    EXPECT_TRUE(onMainThread);
}

TEST_F(ReachabilityNotificationTest, CallbackMayReplaceItself) {
    monitor->whenUnreachable = [this](Reachability& reachability) {
        heard.emplace_back("first");
        reachability.whenUnreachable = [this](Reachability&) { heard.emplace_back("second"); };
    };
    monitor->startNotifier();
    EXPECT_THAT(news(), ElementsAre("first", "changed"));
    network.setFlags(Flags::isDirect);
    EXPECT_THAT(news(), ElementsAre("second", "changed"));
}

TEST_F(ReachabilityNotificationTest, CallbackMayStopAndStartTheMonitor) {
    monitor->whenReachable = [this](Reachability& reachability) {
        heard.emplace_back("reachable");
        reachability.stopNotifier();
        EXPECT_EQ(network.flagsSubscriberCount(), 0U);
        reachability.startNotifier();
        EXPECT_TRUE(reachability.isReachable());
    };
    startQuietly();
    network.setFlags(Flags::reachable);
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
    EXPECT_EQ(network.flagsSubscriberCount(), 1U);
    network.setFlags(Flags{});
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
}

TEST_F(ReachabilityNotificationTest, StopInACallbackIsTheEndOfTheDeliveries) {
    monitor->whenUnreachable = [this](Reachability& reachability) {
        heard.emplace_back("last");
        reachability.stopNotifier();
        network.deliverFlags(Flags::reachable);
    };
    monitor->startNotifier();
    EXPECT_THAT(news(), ElementsAre("last", "changed"));
    EXPECT_THAT(news(), IsEmpty());
}

TEST_F(ReachabilityNotificationTest, CallbackMayDropTheMonitor) {
    const std::weak_ptr<Reachability> gone = monitor;
    monitor->whenUnreachable = [this](Reachability& reachability) {
        monitor.reset();
        heard.push_back(reachability.description()); // held as long as it is being delivered
    };
    monitor->startNotifier();
    EXPECT_THAT(news(), ElementsAre("-- -------", "changed"));
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
}

TEST_F(ReachabilityNotificationTest, ObserverMayDropTheMonitor) {
    const std::weak_ptr<Reachability> gone = monitor;
    const auto dropping = center.addObserver({}, [this](const Notification& notification) {
        monitor.reset();
        EXPECT_TRUE(notification.object);
    });
    monitor->startNotifier();
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
}

TEST_F(ReachabilityNotificationTest, DroppedMonitorIsSilentAboutADeliveryThatIsDue) {
    const std::weak_ptr<Reachability> gone = monitor;
    startQuietly();
    network.setFlags(Flags::reachable);
    waitForCallouts();
    EXPECT_EQ(deliveries.pendingCount(), 1U);
    monitor.reset();
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
    EXPECT_THAT(news(), IsEmpty());
}

TEST_F(ReachabilityNotificationTest, DroppedMonitorIsNotToldOfACalloutThatIsDue) {
    const std::weak_ptr<Reachability> gone = monitor;
    startQuietly();
    systemSide.sync([&] { // what the system tells waits behind this block
        network.setFlags(Flags::reachable);
        monitor.reset();
        EXPECT_TRUE(gone.expired());
    });
    EXPECT_THAT(news(), IsEmpty());
}

TEST_F(ReachabilityNotificationTest, SystemsObjectDoesNotKeepTheMonitorAlive) {
    const auto reference = network.reachability();
    auto other = std::make_shared<Reachability>(reference, queues());
    const std::weak_ptr<Reachability> gone = other;
    other->startNotifier();
    EXPECT_EQ(network.flagsSubscriberCount(), 1U);
    settle();
    other.reset();
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
    // The object is free for the next.
    const auto next = std::make_shared<Reachability>(reference, queues());
    EXPECT_NO_THROW(next->startNotifier());
}

TEST_F(ReachabilityNotificationTest, MonitorKeepsTheSystemsObjectAndReleasesItWithItself) {
    auto reference = network.reachability();
    const std::weak_ptr<SCNetworkReachability> released = reference;
    auto other = std::make_shared<Reachability>(std::move(reference), queues());
    other->startNotifier();
    EXPECT_FALSE(released.expired());
    settle();
    other.reset();
    settle();
    EXPECT_TRUE(released.expired());
}

TEST_F(ReachabilityNotificationTest, CallbacksAreReleasedWithTheMonitor) {
    auto kept = std::make_shared<int>(1);
    const std::weak_ptr<int> released = kept;
    monitor->whenReachable = [kept](Reachability&) {};
    monitor->whenUnreachable = [kept = std::move(kept)](Reachability&) {};
    startQuietly();
    EXPECT_FALSE(released.expired());
    monitor.reset();
    EXPECT_TRUE(released.expired());
}

TEST(ReachabilityChanged, IsOneNameForTheWholeProcess) {
    EXPECT_EQ(&notificationName::reachabilityChanged(), &notificationName::reachabilityChanged());
    EXPECT_EQ(notificationName::reachabilityChanged().rawValue(), "reachabilityChanged");
}
