// SPDX-License-Identifier: Apache-2.0
#include "platform/network/SystemReachability.h"

#include "platform/network/AddressReachability.h"
#include "platform/network/NameReachability.h"

#include <utility>

namespace vorlan::network {

std::shared_ptr<SCNetworkReachabilitySource> reachabilityOf(Destination destination) {
    return std::make_shared<AddressReachability>(NetworkCenter::shared(), std::move(destination));
}

std::shared_ptr<SCNetworkReachabilitySource> reachabilityOf(std::string hostName) {
    return std::make_shared<NameReachability>(NetworkCenter::shared(), std::move(hostName));
}

} // namespace vorlan::network
