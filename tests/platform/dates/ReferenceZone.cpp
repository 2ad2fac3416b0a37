// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/dates/ReferenceZone.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <stdexcept>
#include <utility>

namespace vorlan::tests {

namespace {

constexpr std::int64_t secondsPerDay = 86'400;

void check(UErrorCode status) {
    if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
}

std::int64_t floored(std::int64_t value, std::int64_t divisor) {
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

DayNumber dateOf(const ReferenceZone::Span& span, std::int64_t time) {
    return floored(time + span.offset, secondsPerDay);
}

// The first time of another offset, where one of the second half is known to have it.
std::int64_t firstOther(ReferenceCalendar& calendar, std::int64_t same, std::int64_t other) {
    const auto offset = calendar.offsetAt(same);
    while (other - same > 1) {
        const auto middle = same + (other - same) / 2;
        (calendar.offsetAt(middle) == offset ? same : other) = middle;
    }
    return other;
}

} // namespace

DayNumber dayNumber(int year, unsigned month, unsigned day) {
    using namespace std::chrono;
    return sys_days(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day))
        .time_since_epoch()
        .count();
}

std::string dayText(DayNumber day) {
    using namespace std::chrono;
    const year_month_day date(sys_days(days(static_cast<int>(day))));
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return text;
}

ReferenceCalendar::ReferenceCalendar(const std::string& zone, const std::string& locale) {
    const std::u16string name(zone.begin(), zone.end());
    UErrorCode status = U_ZERO_ERROR;
    calendar_.reset(
        ucal_open(name.data(), static_cast<int>(name.size()), locale.c_str(), UCAL_GREGORIAN, &status),
        ucal_close);
    check(status);
}

void ReferenceCalendar::go(double time) {
    UErrorCode status = U_ZERO_ERROR;
    ucal_setMillis(calendar_.get(), time * 1000, &status);
    check(status);
}

int ReferenceCalendar::field(int field) const {
    UErrorCode status = U_ZERO_ERROR;
    const auto value = ucal_get(calendar_.get(), static_cast<UCalendarDateFields>(field), &status);
    check(status);
    return value;
}

int ReferenceCalendar::offset() const {
    return field(UCAL_ZONE_OFFSET) + field(UCAL_DST_OFFSET);
}

int ReferenceCalendar::offsetAt(std::int64_t time) {
    go(static_cast<double>(time));
    return offset() / 1000;
}

std::optional<std::int64_t> ReferenceCalendar::nextChange(std::int64_t time) {
    const auto former = offsetAt(time);
    for (auto at = time;;) { // at some, only the name of the offset changes
        go(static_cast<double>(at));
        UDate next = 0;
        UErrorCode status = U_ZERO_ERROR;
        if (!ucal_getTimeZoneTransitionDate(calendar_.get(), UCAL_TZ_TRANSITION_NEXT, &next, &status))
            return {};
        check(status);
        at = std::llround(next / 1000);
        if (offsetAt(at) != former) return at;
    }
}

ReferenceZone ReferenceZone::sampled(const std::string& zone, DayNumber first, DayNumber last) {
    constexpr std::int64_t step = secondsPerDay / 4;
    const auto end = (last + 3) * secondsPerDay;
    ReferenceCalendar calendar(zone);
    std::vector<Span> spans = {
        {(first - 3) * secondsPerDay, end, calendar.offsetAt((first - 3) * secondsPerDay)}};
    for (auto time = spans.front().from; time < end; time += step) {
        const auto next = time + step;
        if (calendar.offsetAt(next) == spans.back().offset) continue;
        spans.back().until = firstOther(calendar, time, next);
        spans.push_back({spans.back().until, end, calendar.offsetAt(next)});
    }
    return ReferenceZone(std::move(spans));
}

ReferenceZone ReferenceZone::listed(const std::string& zone, DayNumber first, DayNumber last) {
    const auto end = (last + 3) * secondsPerDay;
    ReferenceCalendar calendar(zone);
    std::vector<Span> spans = {
        {(first - 3) * secondsPerDay, end, calendar.offsetAt((first - 3) * secondsPerDay)}};
    for (auto next = calendar.nextChange(spans.back().from); next && *next < end;
         next = calendar.nextChange(*next)) {
        spans.back().until = *next;
        spans.push_back({*next, end, calendar.offsetAt(*next)});
    }
    return ReferenceZone(std::move(spans));
}

const ReferenceZone::Span& ReferenceZone::at(std::int64_t time) const {
    const auto after = std::ranges::upper_bound(spans_, time, {}, &Span::from);
    if (after == spans_.begin() || time >= spans_.back().until) throw std::out_of_range("not sampled");
    return *(after - 1);
}

// The first span in which a date can be: no zone is two days from UTC.
std::size_t ReferenceZone::around(DayNumber day) const {
    return static_cast<std::size_t>(
        std::ranges::upper_bound(spans_, (day - 2) * secondsPerDay, {}, &Span::until) - spans_.begin());
}

std::optional<ReferenceZone::Day> ReferenceZone::day(DayNumber day) const {
    std::optional<Day> found;
    for (auto i = around(day); i < spans_.size() && spans_[i].from < (day + 3) * secondsPerDay; ++i) {
        const auto& span = spans_[i];
        const auto midnight = day * secondsPerDay - span.offset;
        const auto first = std::max(span.from, midnight);
        const auto last = std::min(span.until, midnight + secondsPerDay) - 1;
        if (first > last) continue;
        const bool isWhole = first == midnight && last == midnight + secondsPerDay - 1;
        found = {found ? found->first : first, last, !found && isWhole};
    }
    return found;
}

DayNumber ReferenceZone::dateAt(std::int64_t time) const {
    return dateOf(at(time), time);
}

std::int64_t ReferenceZone::secondOfDayAt(std::int64_t time) const {
    return time + at(time).offset - dateAt(time) * secondsPerDay;
}

std::optional<std::int64_t> ReferenceZone::timeAt(DayNumber day, std::int64_t secondOfDay) const {
    for (auto i = around(day); i < spans_.size(); ++i) {
        const auto& span = spans_[i];
        const auto time = day * secondsPerDay + secondOfDay - span.offset;
        if (time >= span.from && time < span.until) return time;
        if (span.from > (day + 3) * secondsPerDay) break;
    }
    return std::nullopt;
}

int ReferenceZone::midnights(DayNumber day) const {
    int count = 0;
    for (auto i = around(day); i < spans_.size() && spans_[i].from < (day + 3) * secondsPerDay; ++i) {
        const auto midnight = day * secondsPerDay - spans_[i].offset;
        if (midnight >= spans_[i].from && midnight < spans_[i].until) ++count;
    }
    return count;
}

std::vector<DayNumber> ReferenceZone::missingDays() const {
    std::vector<DayNumber> missing;
    for (std::size_t i = 1; i < spans_.size(); ++i) {
        const auto next = dateOf(spans_[i], spans_[i].from);
        for (auto day = dateOf(spans_[i - 1], spans_[i].from - 1) + 1; day < next; ++day)
            missing.push_back(day);
    }
    return missing;
}

} // namespace vorlan::tests
