// SPDX-License-Identifier: Apache-2.0
#pragma once

// How the process ends when an exception reaches a place from which it has nowhere to go.

#include <string_view>

namespace vorlan {

/// Stops the process because of the exception that is being handled: "where: Fatal error: an exception left
/// source: its text". To be called in a handler.
[[noreturn]] void stopForException(std::string_view source, std::string_view where);

} // namespace vorlan
