// SPDX-License-Identifier: Apache-2.0
#pragma once

// A network whose state a test writes.
//
//     testing::ScriptedNetwork network;                       // offline
//     NWPathMonitor monitor(network.source());
//     monitor.start(queue);
//     network.setPath({.status = NWPath::Status::satisfied, .interfaceTypes = {InterfaceType::wifi}});
//
//     auto host = std::make_shared<Reachability>(network.reachability());
//     network.setFlags(SCNetworkReachabilityFlags::reachable | SCNetworkReachabilityFlags::connectionOnDemand);

#include <VorlanFoundation/Platform/NWPath.h>
#include <VorlanFoundation/Platform/NWPathSource.h>
#include <VorlanFoundation/Platform/SystemConfiguration.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

namespace vorlan::testing {

/// Stands in for the system's source of paths and of reachability flags, and says what it is told to say.
///
/// Threads:     safe from any thread.
/// Owns:        its source, which lives on while a monitor uses it.
/// Re-entrancy: handlers of monitors may use the network.
/// Time:        monitors hand a path to their queue before `setPath` or `deliver` returns, in the order of
///              the calls.
/// Errors:      none.
class ScriptedNetwork {
public:
    /// A network that is offline: its path is unsatisfied.
    ScriptedNetwork();

    /// A network that begins with that path.
    explicit ScriptedNetwork(NWPath path);

    /// A network that begins with the path of that description.
    explicit ScriptedNetwork(NWPath::Description description)
        : ScriptedNetwork(NWPath(std::move(description))) {}

    /// What monitors are made with.
    std::shared_ptr<NWPathSource> source() const;

    /// Changes the path; as with the system's source, one that equals the present path is not delivered.
    void setPath(NWPath path);

    /// Changes the path to that of a description.
    void setPath(NWPath::Description description) { setPath(NWPath(std::move(description))); }

    /// Changes the path and delivers it, also when it equals the present one.
    void deliver(NWPath path);

    /// Delivers the path of a description.
    void deliver(NWPath::Description description) { deliver(NWPath(std::move(description))); }

    /// The number of subscriptions, one for each path monitor that was started and not cancelled.
    std::size_t subscriberCount() const;

    /// A reachability object whose flags are those of this network, for `Reachability`; a new one at each call.
    SCNetworkReachabilityRef reachability() const;

    /// Changes the flags; ones that equal the present flags are not delivered. Until they are first set, and from the
    /// next change of the path on, the flags follow the path: none when it is unsatisfied, else reachable, with transientConnection
    /// over a mobile network, and connectionRequired when it requires a connection.
    void setFlags(SCNetworkReachabilityFlags flags);

    /// Changes the flags and delivers them, also when they equal the present ones.
    void deliverFlags(SCNetworkReachabilityFlags flags);

    /// Has reading the flags fail with that status until flags are set again; kSCStatusOK ends it at once.
    void failFlags(std::int32_t status);

    /// The number of reachability objects that flags are delivered to: those with a dispatch queue.
    std::size_t flagsSubscriberCount() const;

private:
    class Source;
    std::shared_ptr<Source> source_;
};

} // namespace vorlan::testing
