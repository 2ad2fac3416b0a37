// SPDX-License-Identifier: Apache-2.0
#pragma once

// Spans of time as the user reads them.
//
//     DateComponentsFormatter formatter;
//     formatter.setAllowedUnits({CalendarComponent::hour, CalendarComponent::minute});
//     formatter.setUnitsStyle(DateComponentsFormatter::UnitsStyle::full);
//     formatter.string(90min);                // "1 hour, 30 minutes"

#include <VorlanFoundation/Platform/Calendar.h>
#include <VorlanFoundation/Platform/DateComponents.h>
#include <VorlanFoundation/Platform/Export.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace vorlan {

namespace detail {
class DateComponentsFormatterState;
}

/// Turns spans of time into text, in the units that are allowed: year, month, week of month, day, hour, minute and
/// second.
///
/// A formatter is a handle: copies are the same formatter, and equal. `copy()` makes one of its own. Without a calendar
/// it follows the user's locale.
///
/// Threads: safe from any thread. Each text is by the settings of one moment.
/// Owns:    its settings, shared by its copies.
/// Errors:  a span that is no number, or too long to be counted, gives no text.
/// Example: see the top of the file.
class VORLAN_EXPORT DateComponentsFormatter {
public:
    /// How units are named.
    enum class UnitsStyle : std::uint8_t {
        /// Not at all: "1:05:30", and "65" for seconds alone. Units larger than hours are named: "2d 1:05:30". So are
        /// all units where their places would not tell them: "2d 5h", or hours and seconds where minutes are not
        /// allowed. Only a unit that is the only one allowed is never named.
        positional = 0,
        abbreviated = 1, ///< "1h 5m"
        short_ = 2,      ///< "1 hr, 5 min"
        full = 3,        ///< "1 hour, 5 minutes"
    };

    /// What becomes of units of which there are none. Where nothing is left, the smallest allowed unit is shown as 0.
    /// With `pad` none is dropped, whatever else is set.
    class ZeroFormattingBehavior {
    public:
        /// The style's own: positional drops the largest ones, the others drop all.
        static const ZeroFormattingBehavior default_;
        static const ZeroFormattingBehavior dropLeading;  ///< those larger than the first that counts
        static const ZeroFormattingBehavior dropMiddle;   ///< those between two that count
        static const ZeroFormattingBehavior dropTrailing; ///< those smaller than the last that counts
        static const ZeroFormattingBehavior dropAll;      ///< all of them
        static const ZeroFormattingBehavior pad;          ///< none is dropped

        /// Both together.
        friend constexpr ZeroFormattingBehavior operator|(ZeroFormattingBehavior a,
                                                          ZeroFormattingBehavior b) {
            return ZeroFormattingBehavior(a.bits_ | b.bits_);
        }
        /// Whether it has all of the other.
        constexpr bool contains(ZeroFormattingBehavior other) const {
            return (bits_ & other.bits_) == other.bits_;
        }
        friend constexpr bool operator==(ZeroFormattingBehavior, ZeroFormattingBehavior) = default;

    private:
        constexpr explicit ZeroFormattingBehavior(std::uint32_t bits) : bits_(bits) {}

        std::uint32_t bits_;
    };

    /// A span between two dates; until now, where its end is left out.
    struct Span {
        Date from; ///< its first instant
        Date to;   ///< its end; before `from` for a negative span
    };

    /// Positional, with all units allowed.
    DateComponentsFormatter();

    // Without a move: there is no formatter that has nothing.
    DateComponentsFormatter(const DateComponentsFormatter&) = default;
    DateComponentsFormatter& operator=(const DateComponentsFormatter&) = default;

    /// A formatter of its own with the same settings.
    DateComponentsFormatter copy() const;

    /// The text of so many seconds; a negative span has its minus sign in front. Weeks have seven days and days 24
    /// hours; years and months, where they are allowed, are counted from 2001-01-01 in the formatter's calendar. What is
    /// less than the smallest allowed unit is left out. Absent beyond 2^53 seconds, and where years or months are
    /// allowed, beyond what is in the calendar.
    std::optional<std::string> string(double seconds) const;

    /// The text of a duration, to the second.
    template <class Rep, class Period>
    std::optional<std::string> string(std::chrono::duration<Rep, Period> duration) const {
        return string(std::chrono::duration<double>(duration).count());
    }

    /// The text of the span between two dates, counted by the calendar.
    std::optional<std::string> string(Span span) const;

    /// The text of the components that are allowed, as they are; absent ones count as 0. Each has a sign of its own where
    /// some are negative and some are not. Absent where one is beyond 2^53.
    std::optional<std::string> string(const DateComponents& components) const;

    CalendarComponents allowedUnits() const;
    /// Stops the process when there is none, or one that is not in the class's list.
    void setAllowedUnits(CalendarComponents units);

    UnitsStyle unitsStyle() const;
    void setUnitsStyle(UnitsStyle style);

    ZeroFormattingBehavior zeroFormattingBehavior() const;
    void setZeroFormattingBehavior(ZeroFormattingBehavior behavior);

    /// How many of the units that are not dropped are shown at most, the largest ones; 0, as at first, for all. What the
    /// others count is left out, not rounded. A negative count is taken for 0.
    int maximumUnitCount() const;
    void setMaximumUnitCount(int count);

    /// The calendar that counts, in whose locale it is written; that of the user where none is set.
    Calendar calendar() const;
    void setCalendar(std::optional<Calendar> calendar);

    /// Whether they are the same formatter.
    friend bool operator==(const DateComponentsFormatter&, const DateComponentsFormatter&) = default;

private:
    explicit DateComponentsFormatter(std::shared_ptr<detail::DateComponentsFormatterState> state);

    std::shared_ptr<detail::DateComponentsFormatterState> state_;
};

// The bits are those by which the desktop platform's archives know them.
inline constexpr DateComponentsFormatter::ZeroFormattingBehavior
    DateComponentsFormatter::ZeroFormattingBehavior::default_{1};
inline constexpr DateComponentsFormatter::ZeroFormattingBehavior
    DateComponentsFormatter::ZeroFormattingBehavior::dropLeading{2};
inline constexpr DateComponentsFormatter::ZeroFormattingBehavior
    DateComponentsFormatter::ZeroFormattingBehavior::dropMiddle{4};
inline constexpr DateComponentsFormatter::ZeroFormattingBehavior
    DateComponentsFormatter::ZeroFormattingBehavior::dropTrailing{8};
inline constexpr DateComponentsFormatter::ZeroFormattingBehavior
    DateComponentsFormatter::ZeroFormattingBehavior::dropAll{14};
inline constexpr DateComponentsFormatter::ZeroFormattingBehavior
    DateComponentsFormatter::ZeroFormattingBehavior::pad{65'536};

} // namespace vorlan
