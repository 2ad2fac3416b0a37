// SPDX-License-Identifier: Apache-2.0
#pragma once

// Works out the path to the network from what the kernel answers.

#include "platform/network/IPAddress.h"
#include "platform/network/Kernel.h"
#include "platform/network/Sysfs.h"

#include <VorlanFoundation/Platform/NWPath.h>

#include <vector>

namespace vorlan::network {

/// One global address in each half of the IPv4 and of the global IPv6 space; nothing is ever sent to them.
///
/// Halves, because VPN software covers the default route with two routes that are half as long each. The
/// all-zero address would not do: the kernel takes it for this machine.
const std::vector<IPAddress>& probeDestinations();

/// What came of an evaluation.
struct Evaluation {
    /// How far it came.
    enum class Outcome {
        settled,   ///< `path` is the path.
        unsettled, ///< The kernel's tables keep changing: evaluate again soon.
        failed,    ///< The kernel could not be asked; `error` is the errno number.
    };

    Outcome outcome = Outcome::failed;
    NWPath path{};
    int error = 0;
};

/// Judges the way to each probe, and makes a path of them: satisfied when one of them is reachable.
Evaluation evaluatePath(Kernel& kernel, const Sysfs& sysfs);

} // namespace vorlan::network
