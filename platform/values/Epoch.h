// SPDX-License-Identifier: Apache-2.0
#pragma once

// Where dates count from, on the system's clock and beside it.

#include <chrono>

namespace vorlan {

/// 2001-01-01T00:00:00Z on the system's clock, which counts from 1970.
inline constexpr std::chrono::sys_days referenceDate{std::chrono::year(2001) / std::chrono::January / 1};

/// The seconds between the two.
inline constexpr double secondsFrom1970To2001 =
    std::chrono::duration<double>(referenceDate.time_since_epoch()).count();

} // namespace vorlan
