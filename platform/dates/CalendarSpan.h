// SPDX-License-Identifier: Apache-2.0
#pragma once

// How many units of a calendar lie between two dates.

#include "platform/dates/CalendarMath.h"

#include <cstdint>

namespace vorlan {

/// A second counted from 1970, and a nanosecond of it.
struct FineSecond {
    std::int64_t second;
    std::int64_t nanosecond;
    friend auto operator<=>(const FineSecond&, const FineSecond&) = default;
};

/// How many whole units, of a day or longer, there are from one time to another; negative when that is earlier.
std::int64_t wholeUnits(const CalendarMath& math, CalendarComponent unit, FineSecond from, FineSecond to);

/// The span in units: as many of the largest as fit, then of the next.
DateComponents spanComponents(const CalendarMath& math, CalendarComponents units, FineSecond from,
                              FineSecond to);

} // namespace vorlan
