// SPDX-License-Identifier: Apache-2.0

// Waiting for the flags where they are read stops the process, rather than having it wait for ever.

#include <VorlanFoundation/Reachability.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace vorlan;

namespace {

/// A source that asks its monitor for what it is being asked for itself.
class CircularSource : public SCNetworkReachabilitySource {
public:
    Answer currentFlags() override {
        if (const auto asked = monitor.lock()) asked->isReachable();
        return {};
    }
    std::shared_ptr<void> subscribe(Subscriber) override { return nullptr; }
    std::string description() const override { return "circular"; }

    std::weak_ptr<Reachability> monitor;
};

} // namespace

TEST(ReachabilityDeathTest, AskingOnTheSerialQueueWhileTheFlagsAreUnknownStopsTheProcess) {
    const auto source = std::make_shared<CircularSource>();
    const auto monitor = std::make_shared<Reachability>(
        SCNetworkReachabilityCreateWithSource(source), ReachabilityQueues{.notificationQueue = std::nullopt});
    source->monitor = monitor;
    EXPECT_DEATH(monitor->connection(),
                 "VorlanFoundation/Queue: Fatal error: waiting for queue '.+' from a block "
                 "that it waits for would last for ever");
}

TEST(ReachabilityDeathTest, AskingOnTheTargetQueueWhileTheFlagsAreUnknownStopsTheProcess) {
    const Queue target("tests.target");
    const auto source = std::make_shared<CircularSource>();
    const auto monitor = std::make_shared<Reachability>(
        SCNetworkReachabilityCreateWithSource(source),
        ReachabilityQueues{.targetQueue = target, .notificationQueue = std::nullopt});
    EXPECT_DEATH(
        target.sync([&] { monitor->connection(); }),
        "VorlanFoundation/Queue: Fatal error: waiting for queue '.+' from a block that it waits for would "
        "last for ever");
}
