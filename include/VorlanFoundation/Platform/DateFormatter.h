// SPDX-License-Identifier: Apache-2.0
#pragma once

// Dates as the user reads them, and back.
//
//     DateFormatter formatter;
//     formatter.setDateStyle(DateFormatter::Style::long_);
//     formatter.string(Date());               // "November 22, 2026"

#include <VorlanFoundation/Platform/Calendar.h>
#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/TimeZone.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vorlan {

namespace detail {
class DateFormatterState;
}

/// Turns dates into text and text into dates, by a pattern or by the locale's own styles.
///
/// A formatter is a handle: copies are the same formatter, and equal. `copy()` makes one of its own. What is set
/// last counts: a pattern puts the styles out of force, and a style the pattern. Where no locale, zone or calendar is
/// set, those of the user are taken at each use, so that a formatter that is kept follows
/// `Locale::resetCurrent()` and `TimeZone::resetSystemTimeZone()`. What formatters need of ICU is kept and shared by
/// those with the same settings: making one costs next to nothing.
///
/// Threads: safe from any thread. Each text is by the settings of one moment; settings that several threads change at
///          once are all kept.
/// Owns:    its settings, shared by its copies.
/// Errors:  a pattern that is none gives the empty text and parses nothing.
/// Example: see the top of the file.
class VORLAN_EXPORT DateFormatter {
public:
    /// How much of a date or a time is shown, by the locale's custom.
    enum class Style : std::uint8_t {
        none,   ///< nothing
        short_, ///< "11/22/26", "3:30 PM"
        medium, ///< "Nov 22, 2026", "3:30:32 PM"
        long_,  ///< "November 22, 2026", "3:30:32 PM GMT+1"
        full,   ///< "Sunday, November 22, 2026", "3:30:32 PM Central European Standard Time"
    };

    /// With both styles none: gives the empty text until something is set.
    DateFormatter();

    /// A formatter of its own with the same settings.
    DateFormatter copy() const;

    /// The text of a date; empty for one that is in no calendar (see `Calendar`).
    std::string string(Date date) const;

    /// The date that a text says, the whole of it, in the formatter's pattern, locale, calendar and zone. What the text
    /// leaves out is as on the first of January 2000; a year of two digits is one of the hundred from 1950 on. Of times
    /// that clocks show twice the first is meant. Absent when the text says none.
    std::optional<Date> date(std::string_view text) const;

    /// The pattern (Unicode Technical Standard 35) in force: the one that was set, or that of the styles in the
    /// locale, without regard to relative formatting.
    std::string dateFormat() const;
    void setDateFormat(std::string pattern);

    Style dateStyle() const;
    void setDateStyle(Style style);
    Style timeStyle() const;
    void setTimeStyle(Style style);

    /// Whether days near the present are named by their distance ("tomorrow"), where the locale has a word for it and a
    /// date style is in force.
    bool doesRelativeDateFormatting() const;
    void setDoesRelativeDateFormatting(bool relative);

    /// Whether a text may say dates that are none, as 32 January or a time that clocks skip, and be loose in spaces and
    /// dots; at first it may not.
    bool isLenient() const;
    void setLenient(bool lenient);

    /// The locale, that of the user where none is set.
    Locale locale() const;
    void setLocale(std::optional<Locale> locale);

    /// The time zone, that of the user where none is set, whatever zone the calendar has.
    TimeZone timeZone() const;
    void setTimeZone(std::optional<TimeZone> timeZone);

    /// The calendar, the one in use where the formatter's locale is where none is set. Its locale and zone do not
    /// matter.
    Calendar calendar() const;
    void setCalendar(std::optional<Calendar> calendar);

    /// Whether they are the same formatter.
    friend bool operator==(const DateFormatter&, const DateFormatter&) = default;

private:
    explicit DateFormatter(std::shared_ptr<detail::DateFormatterState> state);

    std::shared_ptr<detail::DateFormatterState> state_;
};

} // namespace vorlan
