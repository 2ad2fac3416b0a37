// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tells observers of every change of the way to the network.
//
//     class Status : public ReachabilityServiceObserver {
//         void reachabilityService(ReachabilityServiceReportable&, bool didUpdateReachability) override {
//             ensureMainThread([=] { setOnline(didUpdateReachability); });
//         }
//     };
//     auto service = std::make_shared<ReachabilityService>();
//     auto token = service->addObserver(status);
//     service->start();

#include <VorlanFoundation/Observation/Observable.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/NWPathMonitor.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Reachability/ReachabilityStatusReporter.h>

#include <memory>

namespace vorlan {

class ReachabilityServiceReportable;

/// What is told of changes of the network.
///
/// Threads: called on the service's monitoring queue, never on the main queue.
class ReachabilityServiceObserver {
public:
    virtual ~ReachabilityServiceObserver() = default;

    /// The path to the network was updated.
    ///
    /// @param service               The service that reports it.
    /// @param didUpdateReachability Whether the network is reachable now; the same as before when something
    ///                              else of the path changed, for example only the interface.
    virtual void reachabilityService(ReachabilityServiceReportable& service, bool didUpdateReachability) = 0;
};

/// What a reachability service is to those who use it: it can be observed and asked.
///
/// Threads: as `Observable` and `ReachabilityStatusReporter` say: safe from any thread.
class ReachabilityServiceReportable : public Observable<ReachabilityServiceObserver>,
                                      public ReachabilityStatusReporter {};

/// Watches the machine's network and tells its observers of every update of the path.
///
/// Threads:     safe from any thread. Observers are called on a serial queue of the service's own.
/// Owns:        its monitor and its queue; observers weakly. The monitor does not keep the service alive: a
///              service that was dropped stops notifying.
/// Re-entrancy: an observer may add and remove observers, cancel the service and drop it.
/// Time:        observers first hear of the path at the moment of `start()`, then of each change (gathered
///              for 20 ms), also when reachability stayed the same; nothing is filtered and no former value
///              kept.
/// Errors:      none. Only a path that is satisfied counts as reachable. It is a hint: see `NWPath`.
class VORLAN_EXPORT ReachabilityService : public ReachabilityServiceReportable {
public:
    /// A service over this machine's network; it does not watch yet.
    ReachabilityService();

    /// A service over another source of paths, for tests; the source must not be null.
    explicit ReachabilityService(std::shared_ptr<NWPathSource> source);

    ~ReachabilityService() override;

    /// Begins to watch. The service has to live in a `std::shared_ptr`.
    ///
    /// While it watches, and after `cancel()`, starting again changes nothing.
    void start();

    /// Ends the watching for good. An update that is being delivered on another thread still is.
    void cancel();

    /// Whether the network is reachable: whether the current path is satisfied.
    bool isReachable() const override;

    /// Whether the current path goes over Wi-Fi.
    bool usesWiFi() const;

    /// Whether the current path goes over a mobile network.
    bool usesCellular() const;

    /// Whether the current path goes over a wire.
    bool usesWiredEthernet() const;

    /// The current path, with its interfaces, gateways and the reason for its status.
    NWPath currentPath() const;

private:
    NWPathMonitor networkMonitor_;
    Queue monitoringQueue_{"com.vorlan.reachability-service.network-path-monitoring"};
};

} // namespace vorlan
