// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/ScriptedNetwork.h>

#include <VorlanFoundation/Platform/NWPathMonitor.h>
#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gtest/gtest.h>

namespace vorlan {
namespace {

using enum NWPath::Status;

const NWPath online({.status = satisfied, .interfaceTypes = {InterfaceType::wifi}});

TEST(ScriptedNetwork, EqualPathIsDeliveredOnlyByDeliver) {
    testing::ScriptedNetwork network(online);
    testing::ManualQueue queue;
    int count = 0;
    NWPathMonitor monitor(network.source());
    monitor.setPathUpdateHandler([&](const NWPath&) { ++count; });
    monitor.start(queue);
    network.setPath(online);
    queue.runPending();
    EXPECT_EQ(count, 1);
    network.deliver(online);
    network.deliver({.status = satisfied, .interfaceTypes = {InterfaceType::wifi}});
    queue.runPending();
    EXPECT_EQ(count, 3);
}

TEST(ScriptedNetwork, BeginsOfflineOrAsItIsTold) {
    EXPECT_EQ(testing::ScriptedNetwork().source()->currentPath().status(), unsatisfied);
    const testing::ScriptedNetwork network({.status = requiresConnection});
    EXPECT_EQ(network.source()->currentPath().status(), requiresConnection);
}

TEST(ScriptedNetwork, CountsTheMonitorsThatRun) {
    const testing::ScriptedNetwork network;
    const testing::ManualQueue queue;
    NWPathMonitor monitor(network.source());
    EXPECT_EQ(network.subscriberCount(), 0U);
    monitor.start(queue);
    EXPECT_EQ(network.subscriberCount(), 1U);
    monitor.cancel();
    EXPECT_EQ(network.subscriberCount(), 0U);
}

} // namespace
} // namespace vorlan
