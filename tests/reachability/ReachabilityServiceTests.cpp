// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Reachability.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Execution.h>
#include <VorlanFoundation/Platform/Thread.h>
#include <VorlanFoundation/Testing.h>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;

namespace {

class Recorder : public ReachabilityServiceObserver {
public:
    void reachabilityService(ReachabilityServiceReportable& service, bool didUpdateReachability) override {
        if (then) then(service);
        updates.put(didUpdateReachability);
    }

    std::function<void(ReachabilityServiceReportable&)> then;
    support::Inbox<bool> updates;
};

const NWPath::Description online{.status = NWPath::Status::satisfied,
                                 .interfaceTypes = {InterfaceType::wiredEthernet},
                                 .availableInterfaces = {"eth0"}};
const NWPath::Description wireless{.status = NWPath::Status::satisfied,
                                   .interfaceTypes = {InterfaceType::wifi},
                                   .availableInterfaces = {"wlan0"}};
const NWPath::Description offline{};

class ReachabilityServiceTest : public ::testing::Test {
protected:
    void start() {
        token = service->addObserver(recorder);
        service->start();
    }

    vorlan::testing::ScriptedNetwork network;
    std::shared_ptr<ReachabilityService> service = std::make_shared<ReachabilityService>(network.source());
    std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
    ReachabilityService::Token token;
};

} // namespace

TEST_F(ReachabilityServiceTest, ObserversFirstHearOfThePathAtTheMomentOfStart) {
    network.setPath(online);
    start();
    EXPECT_EQ(recorder->updates.take(), true);
    network.setPath(offline);
    EXPECT_EQ(recorder->updates.take(), false);
}

TEST_F(ReachabilityServiceTest, ConstructionDoesNotStartMonitoring) {
    token = service->addObserver(recorder);
    network.deliver(online);
    EXPECT_EQ(network.subscriberCount(), 0U);
    service->start();
    EXPECT_EQ(recorder->updates.take(), true);
    network.setPath(offline);
    EXPECT_EQ(recorder->updates.take(), false);
}

TEST_F(ReachabilityServiceTest, EveryChangeIsForwardedInOrder) {
    start();
    network.setPath(online);
    network.setPath(offline);
    network.setPath(wireless);
    for (const bool expected : {false, true, false, true}) EXPECT_EQ(recorder->updates.take(), expected);
}

TEST_F(ReachabilityServiceTest, TwoSuccessiveUpdatesWithTheSameStatusNotifyObserversTwice) {
    start();
    EXPECT_EQ(recorder->updates.take(), false);
    network.setPath(online);
    network.setPath(wireless);
    network.deliver(wireless);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(recorder->updates.take(), true);
}

TEST_F(ReachabilityServiceTest, UpdateWhoseStatusIsAnythingButSatisfiedReportsFalse) {
    network.setPath(online);
    start();
    EXPECT_EQ(recorder->updates.take(), true);
    network.setPath(
        {.status = NWPath::Status::requiresConnection, .interfaceTypes = {InterfaceType::cellular}});
    EXPECT_EQ(recorder->updates.take(), false);
    EXPECT_FALSE(service->isReachable());
    network.setPath(offline);
    EXPECT_EQ(recorder->updates.take(), false);
}

TEST_F(ReachabilityServiceTest,
       ServiceWhoseHostDroppedItsLastReferenceStopsNotifyingEvenIfTheSourceStillRuns) {
    start();
    EXPECT_EQ(recorder->updates.take(), false);
    const std::weak_ptr<ReachabilityService> weak = service;
    service.reset();
    // The notification that was just heard of holds the service until it is over.
    EXPECT_TRUE(vorlan::testing::MainLoop::pumpUntil([&] { return weak.expired(); }, 10s));
    network.setPath(online);
    // A second service hears of the same change after the first one would have.
    const auto other = std::make_shared<ReachabilityService>(network.source());
    const auto otherRecorder = std::make_shared<Recorder>();
    const auto otherToken = other->addObserver(otherRecorder);
    other->start();
    EXPECT_EQ(otherRecorder->updates.take(), true);
    EXPECT_EQ(recorder->updates.count(), 0U);
}

TEST_F(ReachabilityServiceTest, ObserverThatHasDiedIsSkippedAndPurged) {
    start();
    EXPECT_EQ(recorder->updates.take(), false);
    auto mortal = std::make_shared<Recorder>();
    service->addObserver(mortal);
    EXPECT_EQ(service->observerSet()->count(), 2U);
    mortal.reset();
    EXPECT_EQ(service->observerSet()->count(), 2U);
    network.setPath(online);
    EXPECT_EQ(recorder->updates.take(), true);
    EXPECT_EQ(service->observerSet()->count(), 1U);
}

TEST_F(ReachabilityServiceTest, ObserversAreCalledOnTheMonitoringQueueAndMoveToTheMainQueueThemselves) {
    bool wasOnMainThread = true;
    bool isShownOnMainThread = false;
    recorder->then = [&](ReachabilityServiceReportable&) {
        wasOnMainThread = Thread::isMainThread();
        ensureMainThread([&] { isShownOnMainThread = Thread::isMainThread(); });
    };
    start();
    EXPECT_EQ(recorder->updates.take(), false);
    EXPECT_TRUE(vorlan::testing::MainLoop::pumpUntil([&] { return isShownOnMainThread; }, 10s));
    EXPECT_FALSE(wasOnMainThread);
}

TEST_F(ReachabilityServiceTest, ObserverIsGivenTheServiceThatReports) {
    ReachabilityServiceReportable* reported = nullptr;
    recorder->then = [&](ReachabilityServiceReportable& reporting) { reported = &reporting; };
    start();
    EXPECT_EQ(recorder->updates.take(), false);
    EXPECT_EQ(reported, service.get());
}

TEST_F(ReachabilityServiceTest, OnDemandPropertiesAreReadAfreshWithoutStarting) {
    EXPECT_FALSE(service->isReachable());
    network.setPath(wireless);
    EXPECT_TRUE(service->isReachable());
    EXPECT_TRUE(service->usesWiFi());
    EXPECT_FALSE(service->usesCellular());
    EXPECT_FALSE(service->usesWiredEthernet());
    network.setPath({.status = NWPath::Status::satisfied, .interfaceTypes = {InterfaceType::cellular}});
    EXPECT_FALSE(service->usesWiFi());
    EXPECT_TRUE(service->usesCellular());
    network.setPath(online);
    EXPECT_TRUE(service->usesWiredEthernet());
    EXPECT_EQ(service->currentPath().availableInterfaces(), std::vector<std::string>{"eth0"});
}

TEST_F(ReachabilityServiceTest, StartingTwiceDeliversEachUpdateOnce) {
    start();
    service->start();
    EXPECT_EQ(recorder->updates.take(), false);
    network.setPath(online);
    EXPECT_EQ(recorder->updates.take(), true);
    network.setPath(offline);
    EXPECT_EQ(recorder->updates.take(), false);
    EXPECT_EQ(network.subscriberCount(), 1U);
}

TEST_F(ReachabilityServiceTest, CancelEndsTheWatchingForGood) {
    start();
    EXPECT_EQ(recorder->updates.take(), false);
    service->cancel();
    service->start();
    network.setPath(online);
    EXPECT_EQ(network.subscriberCount(), 0U);
    EXPECT_TRUE(service->isReachable());
    EXPECT_EQ(recorder->updates.count(), 0U);
}

TEST_F(ReachabilityServiceTest, NothingIsDeliveredAfterCancelFromAnObserver) {
    recorder->then = [&](ReachabilityServiceReportable&) {
        service->cancel();
        network.deliver(online);
    };
    start();
    EXPECT_EQ(recorder->updates.take(), false);
    EXPECT_EQ(network.subscriberCount(), 0U);
    // The queue has nothing more for the observer: the service goes, and with it what was pending.
    service.reset();
    EXPECT_EQ(recorder->updates.count(), 0U);
}

TEST_F(ReachabilityServiceTest, ObserverMayDropTheService) {
    const std::weak_ptr<ReachabilityService> weak = service;
    recorder->then = [&](ReachabilityServiceReportable&) { service.reset(); };
    start();
    EXPECT_EQ(recorder->updates.take(), false);
    EXPECT_TRUE(vorlan::testing::MainLoop::pumpUntil([&] { return weak.expired(); }, 10s));
}

TEST_F(ReachabilityServiceTest, ServiceReportsThroughItsInterfaces) {
    network.setPath(online);
    const std::shared_ptr<ReachabilityStatusReporter> reporter = service;
    EXPECT_TRUE(reporter->isReachable());
    const std::shared_ptr<ReachabilityServiceReportable> reportable = service;
    token = reportable->addObserver(recorder);
    EXPECT_TRUE(service->observerSet()->contains(recorder));
}
