// SPDX-License-Identifier: Apache-2.0
#pragma once

// How the program is called, and what it says of a call that is wrong.

#include <stdexcept>
#include <string_view>

namespace tool {

/// The text of `--help`.
extern const std::string_view usage;

/// A call that is wrong. The message is one sentence without a full stop.
struct UsageError : std::invalid_argument {
    using std::invalid_argument::invalid_argument;
};

} // namespace tool
