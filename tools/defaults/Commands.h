// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the program does.

#include "tools/defaults/Arguments.h"
#include "tools/support/Program.h"

namespace tool {

/// How the program ends.
enum ExitStatus : int { done = 0, notFound = 1, wrongUsage = wrongUsageStatus, failed = 3 };

/// Does what a call asks for. Throws std::invalid_argument when a domain or value cannot be.
ExitStatus run(const Arguments& arguments);

} // namespace tool
