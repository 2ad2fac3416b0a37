// SPDX-License-Identifier: Apache-2.0
#pragma once

// Reading what nobody is to see.

#include <optional>
#include <string>
#include <string_view>

namespace secrets {

/// A line of standard input, without its end; from a terminal, after `prompt` and without an echo. Absent when there is
/// none. A signal that interrupts it ends the process as ever, once the terminal shows again what is typed.
std::optional<std::string> readHiddenLine(std::string_view prompt);

} // namespace secrets
