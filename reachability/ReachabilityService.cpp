// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Reachability/ReachabilityService.h>

#include <utility>

namespace vorlan {

ReachabilityService::ReachabilityService() = default;

ReachabilityService::ReachabilityService(std::shared_ptr<NWPathSource> source)
    : networkMonitor_(std::move(source)) {}

ReachabilityService::~ReachabilityService() = default;

void ReachabilityService::start() {
    networkMonitor_.setPathUpdateHandler([weak = weak(this)](const NWPath& path) {
        const auto self = weak.lock();
        if (!self) return;
        const bool isReachable = path.status() == NWPath::Status::satisfied;
        self->notifyObservers(
            [&](ReachabilityServiceObserver& observer) { observer.reachabilityService(*self, isReachable); });
    });
    networkMonitor_.start(monitoringQueue_);
}

void ReachabilityService::cancel() {
    networkMonitor_.cancel();
}

bool ReachabilityService::isReachable() const {
    return currentPath().status() == NWPath::Status::satisfied;
}

bool ReachabilityService::usesWiFi() const {
    return currentPath().usesInterfaceType(InterfaceType::wifi);
}

bool ReachabilityService::usesCellular() const {
    return currentPath().usesInterfaceType(InterfaceType::cellular);
}

bool ReachabilityService::usesWiredEthernet() const {
    return currentPath().usesInterfaceType(InterfaceType::wiredEthernet);
}

NWPath ReachabilityService::currentPath() const {
    return networkMonitor_.currentPath();
}

} // namespace vorlan
