// SPDX-License-Identifier: Apache-2.0
#pragma once

// How deep arrays and objects may be in one another.

#include <VorlanFoundation/Platform/FatalError.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace vorlan::json {

/// The deepest that may be asked for: a value that is as deep takes 2 MB of a thread's stack when it is dropped.
inline constexpr std::size_t deepest = 2'000;

/// Stops the process with a message when a limit for the depth is none.
inline void requireDepthLimit(std::size_t limit, std::string_view where) {
    if (limit < 1 || limit > deepest)
        fatalError("the maximum depth has to be from 1 to 2,000, and is " + std::to_string(limit), where);
}

} // namespace vorlan::json
