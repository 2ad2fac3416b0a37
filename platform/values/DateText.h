// SPDX-License-Identifier: Apache-2.0
#pragma once

// Dates as text for machines: RFC 3339.

#include <VorlanFoundation/Platform/Date.h>

#include <optional>
#include <string>
#include <string_view>

namespace vorlan {

/// "2024-03-05T14:07:09Z", with as many digits of a second's fraction as it takes to read the same date back. Absent
/// for a date that is not in the years from 1 to 9999.
std::optional<std::string> rfc3339FromDate(Date date);

/// The date nearest to what a text says: with any offset from UTC and a fraction of any length. Absent when it is not
/// of RFC 3339's form, no day of the calendar, or not in the years from 1 to 9999, in its own zone and in UTC. A leap
/// second is taken for the second after it, but only where there can be one: at the end of a month in UTC.
std::optional<Date> dateFromRFC3339(std::string_view text);

} // namespace vorlan
