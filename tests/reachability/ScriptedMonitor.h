// SPDX-License-Identifier: Apache-2.0
#pragma once

// A reachability monitor whose network a test writes, and whose deliveries wait until the test runs them.

#include <VorlanFoundation/Reachability/Reachability.h>
#include <VorlanFoundation/Testing/ManualQueue.h>
#include <VorlanFoundation/Testing/ScriptedNetwork.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tests {

using Flags = vorlan::SCNetworkReachabilityFlags;

/// What `body` throws; absent when it throws nothing.
template <class Body>
std::optional<vorlan::ReachabilityError> failureOf(Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (const vorlan::ReachabilityError& error) {
        return error;
    }
    return std::nullopt;
}

/// Has a monitor call `callback` whether there is a connection or not.
inline void setCallbacks(vorlan::Reachability& monitor, const vorlan::Reachability::Callback& callback) {
    monitor.whenReachable = callback;
    monitor.whenUnreachable = callback;
}

/// The monitor, and in `heard` what it told: "reachable", "unreachable" and "changed" for the notification.
class ScriptedMonitor : public ::testing::Test {
protected:
    ScriptedMonitor() {
        monitor->whenReachable = [this](vorlan::Reachability&) { heard.emplace_back("reachable"); };
        monitor->whenUnreachable = [this](vorlan::Reachability&) { heard.emplace_back("unreachable"); };
        monitor->notificationCenter = center;
    }

    vorlan::ReachabilityQueues queues() const {
        return {.targetQueue = systemSide, .notificationQueue = deliveries};
    }

    /// Returns once the monitor's serial queue has worked off what it was given.
    void waitForCallouts() const {
        systemSide.sync([] {});
    }

    /// Has the system's callouts come, and then runs the deliveries that follow from them.
    void settle() {
        waitForCallouts();
        deliveries.runPending();
    }

    /// Starts, and forgets what is told of the state at the start.
    void startQuietly() {
        monitor->startNotifier();
        settle();
        heard.clear();
    }

    /// What was heard since the last call.
    std::vector<std::string> news() {
        settle();
        return std::exchange(heard, {});
    }

    vorlan::testing::ScriptedNetwork network;
    const vorlan::Queue systemSide{"tests.systemSide"};
    vorlan::testing::ManualQueue deliveries;
    const vorlan::NotificationCenter center;
    std::vector<std::string> heard; // used while the deliveries are run
    const vorlan::NotificationObservation observation =
        center.addObserver({.name = vorlan::notificationName::reachabilityChanged()},
                           [this](const vorlan::Notification&) { heard.emplace_back("changed"); });
    std::shared_ptr<vorlan::Reachability> monitor =
        std::make_shared<vorlan::Reachability>(network.reachability(), queues());
};

} // namespace tests
