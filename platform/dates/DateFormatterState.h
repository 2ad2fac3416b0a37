// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a formatter of dates is set to.

#include "platform/dates/DateWriter.h"
#include "platform/text/CurrentRegion.h"

#include <VorlanFoundation/Platform/DateFormatter.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vorlan {

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
};

namespace detail {

/// The settings of a formatter and of its copies, with what was found for them last.
///
/// Threads: safe from any thread.
class DateFormatterState {
public:
    DateFormatterState() = default;
    explicit DateFormatterState(DateFormatterSettings settings) : settings_(std::move(settings)) {}

    DateFormatterSettings settings() const {
        const std::lock_guard lock(mutex_);
        return settings_;
    }

    template <class Change>
    void change(Change&& change) {
        const std::lock_guard lock(mutex_);
        change(settings_);
        writer_ = nullptr;
    }

    /// The text of a date by the settings of this moment.
    std::string string(Date date) const { return current().writer->string(date); }

    /// The date that a text says by the settings of this moment.
    std::optional<Date> date(std::string_view text) const {
        const auto now = current();
        return now.writer->date(text, now.isLenient);
    }

private:
    struct Current {
        std::shared_ptr<const DateWriter> writer;
        bool isLenient;
    };
    Current current() const;

    mutable std::mutex mutex_;
    DateFormatterSettings settings_;
    mutable std::shared_ptr<const DateWriter> writer_; // for settings_ and user_; null when not known
    mutable const CurrentRegion* user_ = nullptr;
};

} // namespace detail

} // namespace vorlan
