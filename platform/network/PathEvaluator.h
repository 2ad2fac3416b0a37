// SPDX-License-Identifier: Apache-2.0
#pragma once

// Works out the path to the network from what the kernel answers.

#include "platform/network/Survey.h"

#include <VorlanFoundation/Platform/NWPath.h>

namespace vorlan::network {

/// What came of an evaluation.
struct Evaluation {
    Progress progress{};
    NWPath path{}; ///< The path, if it is settled.
};

/// Makes a path of the verdicts on the probes: satisfied when one of them is reachable.
Evaluation evaluatePath(const Survey& survey);

} // namespace vorlan::network
