// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a formatter of dates is set to.

#include "platform/dates/DateWriter.h"
#include "platform/text/CurrentRegion.h"
#include "platform/text/FormatterState.h"

#include <VorlanFoundation/Platform/DateFormatter.h>

#include <memory>
#include <optional>
#include <string>

namespace vorlan {

/// The settings of one moment.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct DateSnapshot {
    std::shared_ptr<const DateWriter> writer;
    bool isLenient;
};

/// What can be set of a formatter. What is absent is the user's.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct DateFormatterSettings {
    std::optional<std::string> pattern; ///< the styles count where it is absent
    DateFormatter::Style dateStyle = DateFormatter::Style::none;
    DateFormatter::Style timeStyle = DateFormatter::Style::none;
    bool isRelative = false;
    bool isLenient = false;
    std::optional<Locale> locale;
    std::optional<TimeZone> timeZone;
    std::optional<Calendar> calendar;

    Locale localeIn(const CurrentRegion& user) const;
    TimeZone timeZoneIn(const CurrentRegion& user) const;
    Calendar calendarIn(const CurrentRegion& user) const;

    /// The layout of its texts.
    DateLayout layoutIn(const CurrentRegion& user) const;

    std::shared_ptr<const DateSnapshot> make(const CurrentRegion& user) const;
};

namespace detail {

/// What a formatter and its copies share.
///
/// Threads: safe from any thread.
class DateFormatterState : public FormatterState<DateFormatterSettings, DateSnapshot> {
public:
    using FormatterState::FormatterState;
};

} // namespace detail

} // namespace vorlan
