// SPDX-License-Identifier: Apache-2.0
#pragma once

// Works out the reachability flags from what the kernel answers.

#include "platform/network/Destination.h"
#include "platform/network/Survey.h"

#include <VorlanFoundation/Platform/SCNetworkReachabilitySource.h>

#include <span>

namespace vorlan::network {

/// What came of an evaluation.
struct FlagsEvaluation {
    Progress progress{};
    SCNetworkReachabilityFlags flags{}; ///< The flags, if they are settled.
};

/// The flags toward an address. The zero address of either family stands for the network in general: it is reachable
/// when one of the probes is, and never local or direct.
FlagsEvaluation evaluateFlags(const Survey& survey, const Destination& destination);

/// The flags toward a host with these addresses: those of the first that is reachable; none when no address is. The
/// zero address is no address of a host.
FlagsEvaluation evaluateFlags(const Survey& survey, std::span<const Destination> addresses);

} // namespace vorlan::network
