// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/DateFormatter.h>

#include "platform/dates/DateFormatterState.h"
#include "platform/text/ICULocale.h"

#include <utility>

namespace vorlan {

using detail::DateFormatterState;

Locale DateFormatterSettings::localeIn(const CurrentRegion& user) const {
    return locale.value_or(user.locale);
}

TimeZone DateFormatterSettings::timeZoneIn(const CurrentRegion& user) const {
    return timeZone.value_or(user.timeZone);
}

Calendar DateFormatterSettings::calendarIn(const CurrentRegion& user) const {
    if (calendar) return *calendar;
    auto usual = locale ? Calendar(usualCalendar(*locale), *locale, user.timeZone) : user.calendar;
    usual.setTimeZone(timeZoneIn(user));
    return usual;
}

DateLayout DateFormatterSettings::layoutIn(const CurrentRegion& user) const {
    const auto used = calendarIn(user);
    DateLayout layout{.locale = localeIn(user),
                      .zone = &detail::ZoneRules::of(timeZoneIn(user)),
                      .calendar = used.identifier(),
                      .week = WeekCustom{.firstWeekday = used.firstWeekday(),
                                         .minimumDaysInFirstWeek = used.minimumDaysInFirstWeek()},
                      .pattern = pattern,
                      .dateStyle = dateStyle,
                      .timeStyle = timeStyle,
                      .isRelative = false,
                      .dayName = {}};
    layout.isRelative = isRelative && !pattern && dateStyle != DateFormatter::Style::none;
    return layout;
}

std::shared_ptr<const DateSnapshot> DateFormatterSettings::make(const CurrentRegion& user) const {
    return std::make_shared<const DateSnapshot>(
        DateSnapshot{.writer = DateWriter::of(layoutIn(user)), .isLenient = isLenient});
}

DateFormatter::DateFormatter() : state_(std::make_shared<DateFormatterState>()) {}

DateFormatter::DateFormatter(std::shared_ptr<DateFormatterState> state) : state_(std::move(state)) {}

DateFormatter DateFormatter::copy() const {
    return DateFormatter(std::make_shared<DateFormatterState>(state_->settings()));
}

std::string DateFormatter::string(Date date) const {
    return state_->made()->writer->string(date);
}

std::optional<Date> DateFormatter::date(std::string_view text) const {
    const auto settings = state_->made();
    return settings->writer->date(text, settings->isLenient);
}

std::string DateFormatter::dateFormat() const {
    auto settings = state_->settings();
    if (settings.pattern) return *std::move(settings.pattern);
    settings.isRelative = false;
    return DateWriter::of(settings.layoutIn(currentRegion()))->pattern();
}

void DateFormatter::setDateFormat(std::string pattern) {
    state_->change([&](auto& settings) { settings.pattern = std::move(pattern); });
}

DateFormatter::Style DateFormatter::dateStyle() const {
    return state_->settings().dateStyle;
}

void DateFormatter::setDateStyle(Style style) {
    state_->change([&](auto& settings) {
        settings.dateStyle = style;
        settings.pattern.reset();
    });
}

DateFormatter::Style DateFormatter::timeStyle() const {
    return state_->settings().timeStyle;
}

void DateFormatter::setTimeStyle(Style style) {
    state_->change([&](auto& settings) {
        settings.timeStyle = style;
        settings.pattern.reset();
    });
}

bool DateFormatter::doesRelativeDateFormatting() const {
    return state_->settings().isRelative;
}

void DateFormatter::setDoesRelativeDateFormatting(bool relative) {
    state_->change([&](auto& settings) { settings.isRelative = relative; });
}

bool DateFormatter::isLenient() const {
    return state_->settings().isLenient;
}

void DateFormatter::setLenient(bool lenient) {
    state_->change([&](auto& settings) { settings.isLenient = lenient; });
}

Locale DateFormatter::locale() const {
    return state_->settings().localeIn(currentRegion());
}

void DateFormatter::setLocale(std::optional<Locale> locale) {
    state_->change([&](auto& settings) { settings.locale = std::move(locale); });
}

TimeZone DateFormatter::timeZone() const {
    return state_->settings().timeZoneIn(currentRegion());
}

void DateFormatter::setTimeZone(std::optional<TimeZone> timeZone) {
    state_->change([&](auto& settings) { settings.timeZone = timeZone; });
}

Calendar DateFormatter::calendar() const {
    return state_->settings().calendarIn(currentRegion());
}

void DateFormatter::setCalendar(std::optional<Calendar> calendar) {
    state_->change([&](auto& settings) { settings.calendar = std::move(calendar); });
}

} // namespace vorlan
