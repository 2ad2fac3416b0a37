// SPDX-License-Identifier: Apache-2.0
#pragma once

// Writes and reads dates in a layout, for every formatter that has it.

#include "platform/dates/DateFormat.h"
#include "platform/dates/DateLayout.h"
#include "platform/dates/DatePatternProgram.h"
#include "platform/dates/RelativeDay.h"
#include "platform/text/FormatPool.h"

#include <VorlanFoundation/Platform/Date.h>

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace vorlan {

/// What formatters with the same layout share: made once, as that takes far longer than to write a date.
///
/// Threads: safe from any thread: it never changes.
/// Owns:    what ICU needs for the layout.
class DateWriter {
public:
    /// The one for a layout. Some hundred are kept at most, of those that were asked for.
    static std::shared_ptr<const DateWriter> of(const DateLayout& layout);

    explicit DateWriter(const DateLayout& layout);

    /// The text of a date; empty where it has none.
    std::string string(Date date) const;

    /// The date that the whole of a text says.
    std::optional<Date> date(std::string_view text, bool isLenient) const;

    /// The pattern in force; empty where there is none.
    std::string pattern() const;

private:
    // Made when it is needed first; null where the day has no name.
    struct NamedDay {
        std::once_flag once;
        std::unique_ptr<const DateWriter> writer;
    };
    static constexpr std::size_t namedDays = std::tuple_size_v<decltype(RelativeDayNames::names)>;

    const DateWriter* withNameOfDay(double seconds) const;
    const DateWriter* withName(std::size_t place) const;

    DateLayout layout_;
    bool namesDays_;
    std::optional<FormatPool<DateFormat>> formats_; // absent when the layout says nothing
    std::optional<DatePatternProgram> program_;     // in place of them, for the dates that it knows
    mutable std::array<NamedDay, namedDays> named_; // from the day before yesterday on
};

} // namespace vorlan
