// SPDX-License-Identifier: Apache-2.0
#pragma once

// How the commands are called. The text for all of them is `usage` of tools/support/Program.h.

#include "tools/strings/Arguments.h"

#include <string_view>

namespace tool {

/// The text of `COMMAND --help`.
std::string_view usageOf(Command command);

} // namespace tool
