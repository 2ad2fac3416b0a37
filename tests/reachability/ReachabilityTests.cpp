// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Reachability.h>

#include "tests/reachability/ScriptedMonitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using namespace vorlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tests::Flags;
using enum Reachability::Connection;

namespace {

class ReachabilityTest : public tests::ScriptedMonitor {};

} // namespace

TEST_F(ReachabilityTest, FirstDeliveryIsTheStateAtTheStart) {
    network.setFlags(Flags::reachable);
    monitor->startNotifier();
    EXPECT_THAT(heard, IsEmpty()) << "never from within startNotifier itself";
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
}

TEST_F(ReachabilityTest, FirstDeliveryAlsoTellsThatThereIsNoConnection) {
    monitor->startNotifier();
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
}

TEST_F(ReachabilityTest, NothingIsDeliveredBeforeTheStart) {
    network.setFlags(Flags::reachable);
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
    EXPECT_THAT(news(), IsEmpty());
    monitor->startNotifier();
    EXPECT_EQ(network.flagsSubscriberCount(), 1U);
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
}

TEST_F(ReachabilityTest, EachChangeIsDeliveredInOrder) {
    startQuietly();
    network.setFlags(Flags::reachable);
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
    network.setFlags(Flags{});
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
    network.setFlags(Flags::reachable | Flags::connectionOnDemand);
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
}

TEST_F(ReachabilityTest, TwoCalloutsWithEqualFlagsAreOneDelivery) {
    startQuietly();
    network.deliverFlags(Flags::reachable);
    network.deliverFlags(Flags::reachable);
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
    network.deliverFlags(Flags::reachable);
    EXPECT_THAT(news(), IsEmpty());
    network.deliverFlags(Flags{});
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
}

TEST_F(ReachabilityTest, CalloutThatRepeatsTheStateAtTheStartDeliversNothing) {
    network.setFlags(Flags::reachable);
    startQuietly();
    network.deliverFlags(Flags::reachable);
    EXPECT_THAT(news(), IsEmpty());
    network.deliverFlags(Flags::reachable | Flags::isDirect);
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
}

TEST_F(ReachabilityTest, OtherFlagsAreDeliveredAlsoWhenTheConnectionStays) {
    startQuietly();
    for (const auto flags : {Flags::isDirect, Flags::interventionRequired, Flags::isLocalAddress}) {
        network.setFlags(Flags::reachable | flags);
        EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
    }
    for (const auto flags : {Flags::connectionRequired, Flags::transientConnection}) {
        network.setFlags(flags);
        EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
    }
}

// Two quick changes are two deliveries that show the latter.
TEST_F(ReachabilityTest, DeliveryTellsTheStateWhenTheQueueGetsToIt) {
    startQuietly();
    network.setFlags(Flags::reachable);
    waitForCallouts();
    network.setFlags(Flags::isDirect);
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed", "unreachable", "changed"));
}

TEST_F(ReachabilityTest, WithoutANotificationQueueNobodyIsToldYetTheConnectionIsTheLatest) {
    auto withoutQueue = queues();
    withoutQueue.notificationQueue = std::nullopt;
    const auto silent = std::make_shared<Reachability>(network.reachability(), withoutQueue);
    tests::setCallbacks(*silent, [this](Reachability&) { heard.emplace_back("spoken"); });
    silent->notificationCenter = center;
    silent->startNotifier();
    startQuietly();
    EXPECT_EQ(silent->connection(), unavailable);
    network.setFlags(Flags::reachable);
    EXPECT_THAT(news(), ElementsAre("reachable", "changed")) << "those of the other monitor";
    EXPECT_EQ(silent->connection(), wifi);
    EXPECT_EQ(silent->description(), "-R -------");
    network.setFlags(Flags::connectionRequired);
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
    EXPECT_FALSE(silent->isReachable());
}

TEST_F(ReachabilityTest, StartingTwiceDoesNothing) {
    network.setFlags(Flags::reachable);
    monitor->startNotifier();
    monitor->startNotifier();
    EXPECT_EQ(network.flagsSubscriberCount(), 1U);
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
    network.setFlags(Flags{});
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
}

TEST_F(ReachabilityTest, RunningMonitorIsNotStartedOver) {
    startQuietly();
    network.failFlags(kSCStatusFailed);
    EXPECT_NO_THROW(monitor->startNotifier()) << "the flags are not read once more";
    EXPECT_EQ(network.flagsSubscriberCount(), 1U);
}

TEST_F(ReachabilityTest, StopEndsTheDeliveries) {
    startQuietly();
    monitor->stopNotifier();
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
    network.deliverFlags(Flags::reachable);
    EXPECT_THAT(news(), IsEmpty());
    // The change was there to be told: a monitor that starts now hears of it.
    monitor->startNotifier();
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
}

TEST_F(ReachabilityTest, StoppedMonitorAnswersByTheFlagsThatWereFoundLast) {
    network.setFlags(Flags::reachable);
    startQuietly();
    monitor->stopNotifier();
    network.setFlags(Flags{});
    EXPECT_EQ(monitor->connection(), wifi);
    EXPECT_TRUE(monitor->isReachable());
    EXPECT_EQ(monitor->description(), "-R -------");
}

TEST_F(ReachabilityTest, DeliveryThatIsDueAtTheStopStillComes) {
    startQuietly();
    network.setFlags(Flags::reachable);
    waitForCallouts();
    monitor->stopNotifier();
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
}

TEST_F(ReachabilityTest, MonitorCanBeStartedAgain) {
    startQuietly();
    for (int round = 0; round < 3; ++round) {
        monitor->stopNotifier();
        network.setFlags(Flags::reachable);
        monitor->startNotifier();
        EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
        network.setFlags(Flags{});
        EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
    }
    EXPECT_EQ(network.flagsSubscriberCount(), 1U);
}

TEST_F(ReachabilityTest, StartingAgainInTheSameStateDeliversNothing) {
    network.setFlags(Flags::reachable);
    startQuietly();
    monitor->stopNotifier();
    monitor->startNotifier();
    EXPECT_THAT(news(), IsEmpty());
    network.setFlags(Flags{});
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
}

TEST_F(ReachabilityTest, StopWithoutStartDoesNothing) {
    monitor->stopNotifier();
    monitor->stopNotifier();
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
    monitor->startNotifier();
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
}

TEST_F(ReachabilityTest, GetterBeforeTheStartFindsTheFlagsAndTellsOfThem) {
    network.setFlags(Flags::reachable);
    EXPECT_EQ(monitor->description(), "unavailable flags") << "describing finds nothing by itself";
    EXPECT_TRUE(monitor->isReachable());
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
    monitor->startNotifier();
    EXPECT_THAT(news(), IsEmpty()) << "known already";
}

TEST_F(ReachabilityTest, GetterAsksOnlyWhileTheFlagsAreUnknown) {
    EXPECT_EQ(monitor->connection(), unavailable);
    network.setFlags(Flags::reachable);
    EXPECT_EQ(monitor->connection(), unavailable);
    monitor->startNotifier();
    EXPECT_EQ(monitor->connection(), wifi);
}

TEST_F(ReachabilityTest, CellularConnectionsAreAllowedAndNobodyAsksWhetherTheyAre) {
    EXPECT_TRUE(monitor->allowsCellularConnection);
    monitor->allowsCellularConnection = false;
    EXPECT_FALSE(monitor->allowsCellularConnection);
    network.setFlags(Flags::reachable | Flags::transientConnection);
    EXPECT_EQ(monitor->connection(), wifi);
}

TEST_F(ReachabilityTest, MonitorsOfOneNetworkAreIndependent) {
    const auto other = std::make_shared<Reachability>(network.reachability(), queues());
    other->whenReachable = [this](Reachability&) { heard.emplace_back("other"); };
    other->startNotifier();
    startQuietly();
    EXPECT_EQ(network.flagsSubscriberCount(), 2U);
    monitor->stopNotifier();
    EXPECT_EQ(network.flagsSubscriberCount(), 1U);
    network.setFlags(Flags::reachable);
    EXPECT_THAT(news(), ElementsAre("other"));
}

TEST_F(ReachabilityTest, ChangesOfThePathAreDeliveredAsFlags) {
    startQuietly();
    network.setPath({.status = NWPath::Status::satisfied, .interfaceTypes = {InterfaceType::wiredEthernet}});
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
    EXPECT_EQ(monitor->connection(), wifi);
    network.setPath(NWPath());
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
}
