// SPDX-License-Identifier: Apache-2.0
#pragma once

// ICU's formatter of dates, set up for a layout.

#include "platform/dates/DateLayout.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unicode/calendar.h>
#include <unicode/smpdtfmt.h>

namespace vorlan {

/// Writes and reads dates in one layout.
///
/// Threads: one thread at a time; any number may clone one that none uses.
/// Time:    milliseconds since 1970-01-01T00:00Z.
class DateFormat {
public:
    /// Absent where ICU has none for the layout, and where the pattern is none.
    static std::unique_ptr<const DateFormat> forLayout(const DateLayout& layout);

    std::unique_ptr<DateFormat> clone() const;

    /// The text of a time; empty when it has none.
    std::string string(double milliseconds);

    /// The time that the whole of a text says. What it leaves out is as at 2000-01-01T00:00 in the zone.
    std::optional<double> time(std::string_view text, bool isLenient);

    /// The pattern in force.
    std::string pattern() const;
    /// For writing only.
    void setPattern(const std::string& pattern);

private:
    DateFormat(std::unique_ptr<icu::SimpleDateFormat> format, std::unique_ptr<icu::Calendar> calendar,
               std::unique_ptr<const icu::Calendar> start);

    bool saysMoreSpaces(const icu::UnicodeString& letters, icu::Calendar& calendar) const;

    std::unique_ptr<icu::SimpleDateFormat> format_;
    std::unique_ptr<icu::Calendar> calendar_;    // to write with, so that each text needs no new one
    std::unique_ptr<const icu::Calendar> start_; // of which only what a text leaves out is set
    int spacesOfPattern_;
};

} // namespace vorlan
