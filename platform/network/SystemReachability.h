// SPDX-License-Identifier: Apache-2.0
#pragma once

// Where the flags of this machine's reachability objects come from.

#include "platform/network/Destination.h"

#include <VorlanFoundation/Platform/SCNetworkReachabilitySource.h>

#include <memory>
#include <string>

namespace vorlan::network {

/// The flags toward an address; toward the network in general for the zero address of either family.
std::shared_ptr<SCNetworkReachabilitySource> reachabilityOf(Destination destination);

/// The flags toward a host, whose name is as resolvers take it.
std::shared_ptr<SCNetworkReachabilitySource> reachabilityOf(std::string hostName);

} // namespace vorlan::network
