// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/DateFormat.h"

#include "platform/dates/DatePattern.h"
#include "platform/text/ICULocale.h"
#include "platform/text/UTF16.h"
#include "platform/values/UTF8.h"

#include <array>
#include <limits>
#include <unicode/fieldpos.h>
#include <unicode/gregocal.h>
#include <unicode/parsepos.h>
#include <unicode/uchar.h>
#include <utility>

namespace vorlan {

namespace {

using CalendarIdentifier = Calendar::Identifier;

constexpr double earliestTime = -184'303'902'528'000'000.0; // of ICU's calendars
constexpr std::int64_t startOf2000 = 946'684'800;
constexpr std::int64_t endOf1949 = -631'238'400; // 1949-12-31

double firstMilliseconds(const DateLayout& layout, std::int64_t localSeconds) {
    return static_cast<double>(layout.zone->firstTimeFromLocal(localSeconds)) * 1000;
}

void applyWeek(icu::Calendar& calendar, const WeekCustom& week) {
    calendar.setFirstDayOfWeek(static_cast<UCalendarDaysOfWeek>(week.firstWeekday));
    calendar.setMinimalDaysInFirstWeek(static_cast<std::uint8_t>(week.minimumDaysInFirstWeek));
}

std::unique_ptr<icu::Calendar> calendarFor(const DateLayout& layout, const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(
        icu::Calendar::createInstance(layout.zone->icuZone().clone(), locale, status));
    if (U_FAILURE(status)) return nullptr;
    auto* const gregorian = dynamic_cast<icu::GregorianCalendar*>(calendar.get());
    if (layout.calendar == CalendarIdentifier::iso8601 && gregorian != nullptr) {
        gregorian->setGregorianChange(earliestTime, status);
        applyWeek(*calendar, {.firstWeekday = UCAL_MONDAY, .minimumDaysInFirstWeek = 4});
    }
    if (layout.week) applyWeek(*calendar, *layout.week);
    calendar->setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
    return U_SUCCESS(status) ? std::move(calendar) : nullptr;
}

std::unique_ptr<icu::SimpleDateFormat> ofPattern(const std::string& pattern, const icu::Locale& locale) {
    if (!isDatePattern(pattern)) return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>(utf16FromUTF8(pattern), locale, status);
    return U_SUCCESS(status) ? std::move(format) : nullptr;
}

std::unique_ptr<icu::SimpleDateFormat> formatFor(const DateLayout& layout, const icu::Locale& locale) {
    if (layout.pattern) return ofPattern(*layout.pattern, locale);
    if (!layout.isRelative) return formatOfStyles(layout.dateStyle, layout.timeStyle, locale);
    return relativeFormat(layout.dateStyle, layout.timeStyle, locale, utf16FromUTF8(layout.dayName));
}

// A year of two digits is the one from 1950 on, whenever it is read. Calendars that count their years by reigns or
// cycles have no centuries.
void setCentury(icu::SimpleDateFormat& format, const DateLayout& layout, UErrorCode& status) {
    if (layout.calendar == CalendarIdentifier::japanese || layout.calendar == CalendarIdentifier::chinese)
        return;
    format.set2DigitYearStart(firstMilliseconds(layout, endOf1949), status);
}

// A calendar in which only the day is said, by year, month and day of the month: what a text says is later, and counts
// instead. Were all fields of it set, a weekday in the text would count before the day of the month in front of it.
std::unique_ptr<icu::Calendar> saidDay(const icu::Calendar& model, double milliseconds, UErrorCode& status) {
    constexpr std::array fields{UCAL_ERA, UCAL_YEAR, UCAL_MONTH, UCAL_DAY_OF_MONTH};
    std::unique_ptr<icu::Calendar> calendar(model.clone());
    calendar->setTime(milliseconds, status);
    std::array<std::int32_t, fields.size()> values{};
    for (std::size_t i = 0; i < fields.size(); ++i) values[i] = calendar->get(fields[i], status);
    calendar->clear();
    for (std::size_t i = 0; i < fields.size(); ++i) calendar->set(fields[i], values[i]);
    return calendar;
}

int countOfSpaces(const icu::UnicodeString& text) {
    int count = 0;
    for (std::int32_t i = 0; i < text.length(); ++i) count += u_isUWhiteSpace(text.charAt(i)) ? 1 : 0;
    return count;
}

int countOfSpacesInPattern(const icu::SimpleDateFormat& format) {
    icu::UnicodeString pattern;
    return countOfSpaces(format.toPattern(pattern));
}

} // namespace

std::unique_ptr<const DateFormat> DateFormat::forLayout(const DateLayout& layout) {
    const bool isISO = layout.calendar == CalendarIdentifier::iso8601;
    const auto locale = icuLocale(layout.locale, isISO ? CalendarIdentifier::gregorian : layout.calendar);
    if (locale.isBogus()) return nullptr;
    auto format = formatFor(layout, locale);
    auto calendar = calendarFor(layout, locale);
    if (!format || !calendar) return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    format->setCalendar(*calendar);
    setCentury(*format, layout, status);
    auto start = saidDay(*calendar, firstMilliseconds(layout, startOf2000), status);
    if (U_FAILURE(status)) return nullptr;
    return std::unique_ptr<const DateFormat>(
        new DateFormat(std::move(format), std::move(calendar), std::move(start)));
}

DateFormat::DateFormat(std::unique_ptr<icu::SimpleDateFormat> format, std::unique_ptr<icu::Calendar> calendar,
                       std::unique_ptr<const icu::Calendar> start)
    : format_(std::move(format)),
      calendar_(std::move(calendar)),
      start_(std::move(start)),
      spacesOfPattern_(countOfSpacesInPattern(*format_)) {}

std::unique_ptr<DateFormat> DateFormat::clone() const {
    return std::unique_ptr<DateFormat>(
        new DateFormat(std::unique_ptr<icu::SimpleDateFormat>(format_->clone()),
                       std::unique_ptr<icu::Calendar>(calendar_->clone()),
                       std::unique_ptr<const icu::Calendar>(start_->clone())));
}

std::string DateFormat::string(double milliseconds) {
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(milliseconds, status);
    icu::UnicodeString text;
    format_->format(*calendar_, text, static_cast<icu::FieldPositionIterator*>(nullptr), status);
    return U_SUCCESS(status) ? utf8FromUTF16(text) : std::string();
}

std::optional<double> DateFormat::time(std::string_view text, bool isLenient) {
    if (text.empty() || text.size() > std::numeric_limits<std::int32_t>::max() || !utf8::isWellFormed(text))
        return std::nullopt;
    format_->setLenient(isLenient);
    UErrorCode status = U_ZERO_ERROR;
    format_->setBooleanAttribute(UDAT_PARSE_PARTIAL_LITERAL_MATCH, isLenient, status);
    // A new calendar, as a text may say its own zone, which would stay.
    const std::unique_ptr<icu::Calendar> calendar(start_->clone());
    calendar->setLenient(isLenient);
    const auto letters = utf16FromUTF8(text);
    icu::ParsePosition position(0);
    format_->parse(letters, *calendar, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() != letters.length()) return std::nullopt;
    const double time = calendar->getTime(status);
    if (!isLenient && saysMoreSpaces(letters, *calendar)) return std::nullopt;
    return U_SUCCESS(status) ? std::optional(time) : std::nullopt;
}

// ICU skips spaces in front of numbers, however strict it is told to be. Those of the pattern it has found in the text;
// any more must be part of a name.
bool DateFormat::saysMoreSpaces(const icu::UnicodeString& letters, icu::Calendar& calendar) const {
    const auto said = countOfSpaces(letters);
    if (said <= spacesOfPattern_) return false;
    icu::UnicodeString usual;
    icu::FieldPosition anywhere(icu::FieldPosition::DONT_CARE);
    format_->format(calendar, usual, anywhere);
    return said > countOfSpaces(usual);
}

void DateFormat::setPattern(const std::string& pattern) {
    format_->applyPattern(utf16FromUTF8(pattern));
}

std::string DateFormat::pattern() const {
    icu::UnicodeString pattern;
    return utf8FromUTF16(format_->toPattern(pattern));
}

} // namespace vorlan
