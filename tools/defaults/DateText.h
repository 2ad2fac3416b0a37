// SPDX-License-Identifier: Apache-2.0
#pragma once

// Dates as ISO 8601 texts.

#include <VorlanFoundation/Platform/Date.h>

#include <optional>
#include <string>
#include <string_view>

namespace tool {

/// Reads "2026-03-05", which is midnight in UTC, or "2026-03-05T14:07:09", perhaps with a fraction, and then "Z"
/// or an offset like "+01:00". Absent when the text is anything else, or there is no such day or time.
std::optional<vorlan::Date> parseDate(std::string_view text);

/// The date in UTC, "2026-03-05T14:07:09.25Z", with as many digits behind the point as it takes, up to six. A date
/// whose year does not have four digits is described instead.
std::string dateText(vorlan::Date date);

} // namespace tool
