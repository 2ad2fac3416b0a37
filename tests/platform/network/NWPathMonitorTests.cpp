// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NWPathMonitor.h>

#include <VorlanFoundation/Testing/ManualQueue.h>
#include <VorlanFoundation/Testing/ScriptedNetwork.h>

#include "tests/platform/network/Namespace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <optional>
#include <thread>
#include <vector>

namespace vorlan {
namespace {

using ::testing::ElementsAre;
using enum NWPath::Status;

const NWPath online({.status = satisfied, .interfaceTypes = {InterfaceType::wifi}});

/// A monitor of a scripted network, with a queue that runs when it is told to.
class NWPathMonitorOfAScript : public ::testing::Test {
protected:
    NWPathMonitorOfAScript() {
        monitor->setPathUpdateHandler([this](const NWPath& path) { told.push_back(path.status()); });
    }

    testing::ScriptedNetwork network;
    testing::ManualQueue queue;
    std::optional<NWPathMonitor> monitor{network.source()};
    std::vector<NWPath::Status> told;
};

TEST_F(NWPathMonitorOfAScript, FirstDeliveryIsTheStateAtTheStart) {
    network.setPath(online);
    monitor->start(queue);
    EXPECT_THAT(told, ElementsAre()); // never from within start itself
    queue.runPending();
    EXPECT_THAT(told, ElementsAre(satisfied));
}

TEST_F(NWPathMonitorOfAScript, ChangesAreDeliveredInOrder) {
    monitor->start(queue);
    network.setPath(online);
    network.setPath({.status = requiresConnection});
    network.setPath(NWPath());
    queue.runPending();
    EXPECT_THAT(told, ElementsAre(unsatisfied, satisfied, requiresConnection, unsatisfied));
}

TEST_F(NWPathMonitorOfAScript, PathOfEqualStatusOverAnotherInterfaceIsDelivered) {
    monitor->start(queue);
    network.setPath({.status = satisfied, .interfaceTypes = {InterfaceType::wifi}});
    network.setPath({.status = satisfied, .interfaceTypes = {InterfaceType::cellular}});
    queue.runPending();
    EXPECT_THAT(told, ElementsAre(unsatisfied, satisfied, satisfied));
}

TEST_F(NWPathMonitorOfAScript, NothingIsDeliveredBeforeTheStart) {
    network.setPath(online);
    queue.runPending();
    EXPECT_THAT(told, ElementsAre());
    EXPECT_EQ(network.subscriberCount(), 0U);
}

TEST_F(NWPathMonitorOfAScript, HandlerIsReadAtTheDelivery) {
    monitor->start(queue);
    monitor->setPathUpdateHandler([this](const NWPath&) { told.push_back(requiresConnection); });
    queue.runPending();
    EXPECT_THAT(told, ElementsAre(requiresConnection));
}

TEST_F(NWPathMonitorOfAScript, HandlerCanBeReadAndTakenAway) {
    EXPECT_TRUE(monitor->pathUpdateHandler());
    monitor->pathUpdateHandler()(online);
    EXPECT_THAT(told, ElementsAre(satisfied));
    monitor->setPathUpdateHandler(nullptr);
    EXPECT_FALSE(monitor->pathUpdateHandler());
    monitor->start(queue);
    queue.runPending();
    EXPECT_THAT(told, ElementsAre(satisfied));
}

TEST_F(NWPathMonitorOfAScript, SecondStartKeepsTheQueue) {
    testing::ManualQueue second;
    monitor->start(queue);
    monitor->start(second);
    EXPECT_EQ(network.subscriberCount(), 1U);
    EXPECT_EQ(second.pendingCount(), 0U);
    queue.runPending();
    EXPECT_THAT(told, ElementsAre(unsatisfied));
}

TEST_F(NWPathMonitorOfAScript, CancelKeepsBackWhatIsOnItsWay) {
    monitor->start(queue);
    network.setPath(online);
    monitor->cancel();
    queue.runPending();
    EXPECT_THAT(told, ElementsAre());
    EXPECT_EQ(network.subscriberCount(), 0U);
}

TEST_F(NWPathMonitorOfAScript, CancelledMonitorStaysCancelled) {
    monitor->start(queue);
    monitor->cancel();
    monitor->start(queue);
    network.setPath(online);
    queue.runPending();
    EXPECT_THAT(told, ElementsAre());
    EXPECT_EQ(network.subscriberCount(), 0U);
}

TEST_F(NWPathMonitorOfAScript, MonitorCancelledBeforeItsStartNeverRuns) {
    monitor->cancel();
    monitor->start(queue);
    queue.runPending();
    EXPECT_THAT(told, ElementsAre());
}

TEST_F(NWPathMonitorOfAScript, CancelFromTheHandlerIsTheLastDelivery) {
    monitor->setPathUpdateHandler([this](const NWPath& path) {
        told.push_back(path.status());
        monitor->cancel();
    });
    monitor->start(queue);
    network.setPath(online);
    queue.runPending();
    EXPECT_THAT(told, ElementsAre(unsatisfied));
}

TEST_F(NWPathMonitorOfAScript, HandlerMayDestroyTheMonitor) {
    monitor->setPathUpdateHandler([this](const NWPath& path) {
        auto& list = told; // the handler itself may be gone after the next line
        monitor.reset();
        list.push_back(path.status());
    });
    monitor->start(queue);
    network.setPath(online);
    queue.runPending();
    EXPECT_THAT(told, ElementsAre(unsatisfied));
    EXPECT_EQ(network.subscriberCount(), 0U);
}

TEST_F(NWPathMonitorOfAScript, DestroyedMonitorDeliversNothing) {
    monitor->start(queue);
    monitor.reset();
    network.setPath(online);
    queue.runPending();
    EXPECT_THAT(told, ElementsAre());
}

TEST_F(NWPathMonitorOfAScript, CurrentPathIsValidBeforeTheStartAndAfterTheCancel) {
    EXPECT_EQ(monitor->currentPath().status(), unsatisfied);
    network.setPath(online);
    EXPECT_EQ(monitor->currentPath(), online);
    monitor->start(queue);
    monitor->cancel();
    network.setPath(NWPath());
    EXPECT_EQ(monitor->currentPath(), NWPath());
}

TEST_F(NWPathMonitorOfAScript, HandlerIsReleasedWithTheMonitor) {
    auto kept = std::make_shared<int>(1);
    const std::weak_ptr<int> gone = kept;
    monitor->setPathUpdateHandler([kept = std::move(kept)](const NWPath&) {});
    EXPECT_FALSE(gone.expired());
    monitor.reset();
    EXPECT_TRUE(gone.expired());
}

TEST_F(NWPathMonitorOfAScript, SourceOutlivesTheNetworkThatMadeIt) {
    std::optional<testing::ScriptedNetwork> passing(online);
    const NWPathMonitor other(passing->source());
    passing.reset();
    EXPECT_EQ(other.currentPath(), online);
}

TEST(NWPathMonitorDeathTest, NoSourceStopsTheProcess) {
    EXPECT_DEATH(NWPathMonitor(std::shared_ptr<NWPathSource>()),
                 "NWPathMonitor: Fatal error: a path monitor needs a source");
}

// A cancel from another thread waits for nothing, so one delivery may be running; none begins after it.
TEST(NWPathMonitor, CancelFromAnotherThreadLeavesAtMostTheRunningDelivery) {
    testing::ScriptedNetwork network;
    const Queue queue("client");
    std::promise<void> begun;
    std::promise<void> mayEnd;
    auto end = mayEnd.get_future();
    int count = 0; // used on the queue
    NWPathMonitor monitor(network.source());
    monitor.setPathUpdateHandler([&](const NWPath&) {
        if (++count > 1) return;
        begun.set_value();
        end.wait();
    });
    monitor.start(queue);
    begun.get_future().wait();
    network.setPath(online);
    monitor.cancel();
    network.setPath(NWPath());
    mayEnd.set_value();
    EXPECT_EQ(queue.sync([&] { return count; }), 1);
}

TEST(NWPathMonitor, MonitorsOfManyThreadsCanComeAndGo) {
    testing::ScriptedNetwork network;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([&] {
            const Queue queue("client");
            for (int round = 0; round < 200; ++round) {
                NWPathMonitor monitor(network.source());
                monitor.setPathUpdateHandler([&](const NWPath& path) { network.setPath(path); });
                monitor.start(queue);
                network.setPath(round % 2 == 0 ? online : NWPath());
            }
            queue.sync([] {});
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(network.subscriberCount(), 0U);
}

TEST(NWPathMonitor, ManyCyclesLeaveNoSocketsOpen) {
    const Queue queue("client");
    const auto cycle = [&] {
        NWPathMonitor monitor;
        monitor.setPathUpdateHandler([](const NWPath&) {});
        monitor.start(queue);
        monitor.cancel();
    };
    cycle(); // opens what the process keeps
    NWPathMonitor().currentPath();
    const int before = tests::openSockets();
    for (int count = 0; count < 2000; ++count) cycle();
    // The last ones are closed behind the monitors' backs.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (tests::openSockets() > before && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_LE(tests::openSockets(), before);
}

TEST(NWPathMonitor, DefaultMonitorsShareOneSource) {
    const auto source = NWPathSource::system();
    EXPECT_EQ(source, NWPathSource::system());
    const NWPathMonitor one;
    const NWPathMonitor two;
    const NWPath path = one.currentPath();
    EXPECT_NE(path.reason(), "");
    EXPECT_EQ(path.status(), two.currentPath().status());
}

} // namespace
} // namespace vorlan
