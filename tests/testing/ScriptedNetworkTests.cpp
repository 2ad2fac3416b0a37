// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/ScriptedNetwork.h>

#include <VorlanFoundation/Platform/NWPathMonitor.h>
#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <utility>
#include <vector>

namespace vorlan {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using enum NWPath::Status;

using Flags = SCNetworkReachabilityFlags;

const NWPath online({.status = satisfied, .interfaceTypes = {InterfaceType::wifi}});

std::optional<Flags> flagsOf(const SCNetworkReachabilityRef& target) {
    Flags flags{};
    return SCNetworkReachabilityGetFlags(target, flags) ? std::optional(flags) : std::nullopt;
}

/// A reachability object of a network, and what it called out.
class Listener {
public:
    explicit Listener(const testing::ScriptedNetwork& network) : target_(network.reachability()) {
        const SCNetworkReachabilityContext context{.info = &told_};
        SCNetworkReachabilitySetCallback(target_, hear, &context);
        SCNetworkReachabilitySetDispatchQueue(target_, queue_);
        news(); // the present flags
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() { SCNetworkReachabilitySetCallback(target_, nullptr, nullptr); }

    std::vector<Flags> news() {
        queue_.runPending();
        return std::exchange(told_, {});
    }

private:
    static void hear(const SCNetworkReachabilityRef&, Flags flags, void* info) {
        static_cast<std::vector<Flags>*>(info)->push_back(flags);
    }

    SCNetworkReachabilityRef target_;
    std::vector<Flags> told_;
    testing::ManualQueue queue_;
};

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

TEST(ScriptedNetwork, FlagsFollowThePathUntilTheyAreSet) {
    testing::ScriptedNetwork network;
    const auto target = network.reachability();
    EXPECT_EQ(flagsOf(target), Flags{});
    network.setPath(online);
    EXPECT_EQ(flagsOf(target), Flags::reachable);
    network.setPath({.status = satisfied, .interfaceTypes = {InterfaceType::cellular}});
    EXPECT_EQ(flagsOf(target), Flags::reachable | Flags::transientConnection);
    network.setPath(NWPath());
    EXPECT_EQ(flagsOf(target), Flags{});
    network.setFlags(Flags::reachable | Flags::connectionOnDemand);
    EXPECT_EQ(flagsOf(target), Flags::reachable | Flags::connectionOnDemand);
}

TEST(ScriptedNetwork, FlagsOfAPathThatRequiresAConnectionSaySo) {
    const testing::ScriptedNetwork network({.status = requiresConnection});
    const auto flags = flagsOf(network.reachability());
    ASSERT_TRUE(flags);
    EXPECT_TRUE(contains(*flags, Flags::connectionRequired));
}

TEST(ScriptedNetwork, NextChangeOfThePathTakesTheFlagsAlong) {
    testing::ScriptedNetwork network;
    network.setFlags(Flags::interventionRequired);
    network.setPath(NWPath()); // no change
    EXPECT_EQ(flagsOf(network.reachability()), Flags::interventionRequired);
    network.setPath(online);
    EXPECT_EQ(flagsOf(network.reachability()), Flags::reachable);
}

TEST(ScriptedNetwork, SettingTheFlagsLeavesThePathAlone) {
    testing::ScriptedNetwork network;
    network.setFlags(Flags::reachable);
    EXPECT_EQ(network.source()->currentPath().status(), unsatisfied);
}

TEST(ScriptedNetwork, EqualFlagsAreDeliveredOnlyByDeliverFlags) {
    testing::ScriptedNetwork network;
    Listener listener(network);
    network.setFlags(Flags::reachable);
    network.setFlags(Flags::reachable);
    EXPECT_THAT(listener.news(), ElementsAre(Flags::reachable));
    network.deliverFlags(Flags::reachable);
    network.deliverFlags(Flags::reachable);
    EXPECT_THAT(listener.news(), ElementsAre(Flags::reachable, Flags::reachable));
    network.setFlags(Flags::reachable);
    EXPECT_THAT(listener.news(), IsEmpty());
}

TEST(ScriptedNetwork, ChangeOfThePathIsDeliveredAsFlags) {
    testing::ScriptedNetwork network;
    Listener listener(network);
    network.setPath(online);
    EXPECT_THAT(listener.news(), ElementsAre(Flags::reachable));
    network.setPath(NWPath());
    EXPECT_THAT(listener.news(), ElementsAre(Flags{}));
}

TEST(ScriptedNetwork, ReadingTheFlagsFailsUntilTheyAreSetAgain) {
    testing::ScriptedNetwork network;
    const auto target = network.reachability();
    network.failFlags(kSCStatusFailed);
    EXPECT_EQ(flagsOf(target), std::nullopt);
    EXPECT_EQ(SCError(), kSCStatusFailed);
    network.failFlags(kSCStatusReachabilityUnknown);
    EXPECT_EQ(flagsOf(target), std::nullopt);
    EXPECT_EQ(SCError(), kSCStatusReachabilityUnknown);
    network.setFlags(Flags::isDirect);
    EXPECT_EQ(flagsOf(target), Flags::isDirect);
    network.failFlags(kSCStatusFailed);
    network.deliverFlags(Flags::isDirect);
    EXPECT_EQ(flagsOf(target), Flags::isDirect);
    network.failFlags(kSCStatusFailed);
    network.failFlags(kSCStatusOK);
    EXPECT_EQ(flagsOf(target), Flags::isDirect);
}

TEST(ScriptedNetwork, CountsTheReachabilityObjectsThatAreListenedTo) {
    const testing::ScriptedNetwork network;
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
    {
        const Listener one(network);
        const Listener other(network);
        EXPECT_EQ(network.flagsSubscriberCount(), 2U);
        EXPECT_EQ(network.subscriberCount(), 0U) << "that is for paths";
    }
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
}

TEST(ScriptedNetwork, ReachabilityObjectsAreNewAtEachCallAndOutliveTheNetwork) {
    std::optional<testing::ScriptedNetwork> passing(online);
    const auto one = passing->reachability();
    const auto other = passing->reachability();
    EXPECT_NE(one, other);
    passing.reset();
    EXPECT_EQ(flagsOf(one), Flags::reachable);
    EXPECT_EQ(flagsOf(other), Flags::reachable);
}

} // namespace
} // namespace vorlan
