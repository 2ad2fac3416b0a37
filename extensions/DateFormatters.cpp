// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/Dates.h>

#include "extensions/SharedFormatter.h"

#include <utility>

namespace vorlan {

namespace {

using Shared = SharedFormatter<DateFormatter>;
using Style = DateFormatter::Style;

DateFormatter withStyles(Style date, Style time) {
    DateFormatter formatter;
    formatter.setDateStyle(date);
    formatter.setTimeStyle(time);
    return formatter;
}

DateFormatter withPattern(const char* pattern) {
    DateFormatter formatter;
    formatter.setDateFormat(pattern);
    return formatter;
}

// None of them is ever destroyed: other threads may format until the process ends.

Shared& relativeShort() {
    static auto& shared = *new Shared([] {
        auto formatter = withStyles(Style::short_, Style::short_);
        formatter.setDoesRelativeDateFormatting(true);
        return formatter;
    });
    return shared;
}

Shared& relativeShortTime() {
    // No formatter of its own, on purpose: that of the other place loses its date.
    static auto& shared = *new Shared([] {
        auto formatter = relativeShort().get();
        formatter.setDateStyle(Style::none);
        return formatter;
    });
    return shared;
}

Shared& dateAndTime() {
    static auto& shared = *new Shared([] { return withStyles(Style::short_, Style::short_); });
    return shared;
}

Shared& dateAlone() {
    static auto& shared = *new Shared([] { return withStyles(Style::short_, Style::none); });
    return shared;
}

Shared& sql() {
    static auto& shared = *new Shared([] {
        auto formatter = withPattern("yyyy-MM-dd");
        formatter.setLocale(Locale::current());
        return formatter;
    });
    return shared;
}

Shared& fullTime() {
    static auto& shared = *new Shared([] { return withPattern("yyyy-MM-dd HH:mm:ss"); });
    return shared;
}

} // namespace

DateFormatter dateFormatter::iso8601Full() {
    auto formatter = withPattern("eee, dd MMM yyyy HH:mm:ss Z");
    formatter.setLocale(Locale("en_US_POSIX"));
    formatter.setTimeZone(TimeZone::fromSecondsFromGMT(0));
    formatter.setCalendar(Calendar(Calendar::Identifier::iso8601));
    return formatter;
}

DateFormatter dateFormatter::relativeShortFormatter() {
    return relativeShort().get();
}

void dateFormatter::setRelativeShortFormatter(DateFormatter formatter) {
    relativeShort().set(std::move(formatter));
}

DateFormatter dateFormatter::short_() {
    return dateAndTime().get();
}

void dateFormatter::setShort(DateFormatter formatter) {
    dateAndTime().set(std::move(formatter));
}

DateFormatter dateFormatter::shortDate() {
    return dateAlone().get();
}

void dateFormatter::setShortDate(DateFormatter formatter) {
    dateAlone().set(std::move(formatter));
}

DateFormatter dateFormatter::relativeShortTimeFormatter() {
    return relativeShortTime().get();
}

void dateFormatter::setRelativeShortTimeFormatter(DateFormatter formatter) {
    relativeShortTime().set(std::move(formatter));
}

DateFormatter dateFormatter::sqlSuitable() {
    return sql().get();
}

void dateFormatter::setSqlSuitable(DateFormatter formatter) {
    sql().set(std::move(formatter));
}

DateFormatter dateFormatter::timeFull() {
    return fullTime().get();
}

void dateFormatter::setTimeFull(DateFormatter formatter) {
    fullTime().set(std::move(formatter));
}

} // namespace vorlan
