// SPDX-License-Identifier: Apache-2.0
#include "reachability/ReachabilityWeakifier.h"

#include <VorlanFoundation/Testing/ScriptedNetwork.h>

#include <gtest/gtest.h>

#include <memory>

namespace vorlan {
namespace {

std::shared_ptr<Reachability> stoppedMonitor() {
    vorlan::testing::ScriptedNetwork network;
    return std::make_shared<Reachability>(network.reachability());
}

TEST(ReachabilityWeakifier, DescribesItsMonitorAsTheMonitorDoes) {
    const auto monitor = stoppedMonitor();
    const auto weakifier = std::make_shared<ReachabilityWeakifier>(weak(monitor.get()));
    const auto context = ReachabilityWeakifier::context(weakifier);
    EXPECT_EQ(context.copyDescription(context.info), "unavailable flags");
    EXPECT_FALSE(monitor->isReachable()); // finds the flags
    EXPECT_EQ(context.copyDescription(context.info), "-- -------");
}

TEST(ReachabilityWeakifier, DescribesAMonitorThatIsGoneAsNil) {
    auto monitor = stoppedMonitor();
    const auto weakifier = std::make_shared<ReachabilityWeakifier>(weak(monitor.get()));
    const auto context = ReachabilityWeakifier::context(weakifier);
    monitor.reset();
    EXPECT_EQ(context.copyDescription(context.info), "nil");
    EXPECT_EQ(ReachabilityWeakifier::monitorOf(context.info), nullptr);
}

TEST(ReachabilityWeakifier, LivesAsLongAsTheSystemHoldsItAndNeverHoldsTheMonitor) {
    auto monitor = stoppedMonitor();
    auto weakifier = std::make_shared<ReachabilityWeakifier>(weak(monitor.get()));
    const std::weak_ptr<ReachabilityWeakifier> observed = weakifier;
    const auto context = ReachabilityWeakifier::context(weakifier);
    const void* held = context.retain(context.info);
    weakifier.reset();
    EXPECT_FALSE(observed.expired());
    EXPECT_EQ(ReachabilityWeakifier::monitorOf(held), monitor);
    monitor.reset();
    EXPECT_EQ(ReachabilityWeakifier::monitorOf(held), nullptr);
    context.release(held);
    EXPECT_TRUE(observed.expired());
}

TEST(ReachabilityWeakifier, NoContextLeadsToNoMonitor) {
    EXPECT_EQ(ReachabilityWeakifier::monitorOf(nullptr), nullptr);
}

} // namespace
} // namespace vorlan
