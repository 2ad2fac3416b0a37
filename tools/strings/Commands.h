// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the program does.

#include "tools/strings/Arguments.h"
#include "tools/support/Program.h"

namespace tool {

/// How the program ends.
enum ExitStatus : int { done = 0, foundErrors = 1, failed = wrongUsageStatus };

/// Does what a call asks for. Throws BundleError, or what else kept a bundle or file from being read.
ExitStatus run(const Arguments& arguments);

} // namespace tool
