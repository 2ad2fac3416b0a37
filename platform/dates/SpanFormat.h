// SPDX-License-Identifier: Apache-2.0
#pragma once

// Spans of time, counted in units, to text.

#include "platform/dates/ClockPatterns.h"
#include "platform/dates/SpanUnits.h"

#include <VorlanFoundation/Platform/DateComponentsFormatter.h>
#include <VorlanFoundation/Platform/Locale.h>

#include <array>
#include <memory>
#include <span>
#include <string>
#include <unicode/listformatter.h>
#include <unicode/numberformatter.h>
#include <unicode/unistr.h>
#include <vector>

namespace vorlan {

/// Writes spans in one style of one locale.
///
/// Threads: safe from any thread: it never changes.
class SpanFormat {
public:
    using UnitsStyle = DateComponentsFormatter::UnitsStyle;

    /// The one of a locale and a style, from those that were made before where there is one.
    static std::shared_ptr<const SpanFormat> of(const Locale& locale, UnitsStyle style);

    /// Stops the process where ICU has lost its data.
    SpanFormat(const Locale& locale, UnitsStyle style);

    /// The text of one unit or more, of those that are allowed. Where all are of one sign, it is written once, in front.
    std::string string(const UnitCounts& counts, CalendarComponents allowed) const;

private:
    using Numbers = icu::number::LocalizedNumberFormatter;
    using Text = icu::UnicodeString;
    /// A count with the sign that is to be written with it: that of -0 is.
    struct Part {
        CalendarComponent unit;
        double count;
    };
    using Parts = std::span<const Part>;

    SpanFormat(const icu::Locale& locale, UnitsStyle style);

    static std::vector<Part> parts(const UnitCounts& counts);
    static bool isClock(Parts parts, CalendarComponents allowed);

    Text positional(Parts parts, CalendarComponents allowed) const;
    Text alone(Part part, CalendarComponents allowed) const;
    Text clock(Parts parts) const;
    Text number(double number, int atLeast) const;
    Text named(Part part) const;
    std::vector<Text> allNamed(Parts parts) const;
    Text joined(const std::vector<Text>& texts) const;

    UnitsStyle style_;
    Numbers numbers_;
    std::array<Text, 10> digits_;
    ClockPatterns clock_;
    std::unique_ptr<const icu::ListFormatter> list_;
    std::array<Numbers, spanUnits.size()> named_;
    Text minus_;
};

} // namespace vorlan
