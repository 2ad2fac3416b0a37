// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/Testing.h>
#include <VorlanFoundation/VorlanFoundation.h>

#include <chrono>
#include <string>

using namespace vorlan;
using namespace std::chrono_literals;

namespace {

bool showShared() {
    const Date now;
    const auto text = dateFormatter::short_().string(now);
    tour::line("now", text + "; as SQL takes it " + dateFormatter::sqlSuitable().string(now));
    tour::line("in a mail", dateFormatter::iso8601Full().string(now));
    return !text.empty() && calendar::isToday(now);
}

// What the same formatter shows to users of other places.
bool showPlaces() {
    constexpr int places = 5;
    int shown = 0;
    for (const auto* locale : {"en_US", "de_DE", "ja_JP", "ar_EG", "th_TH"}) {
        const vorlan::testing::UserRegion user({.locale = locale});
        const auto formatter = dateFormatter::relativeShortFormatter();
        tour::line(locale, formatter.string(Date()) + "  -  " + dateFormatter::shortDate().string(Date()));
        if (formatter.locale() == Locale(locale)) ++shown;
    }
    return shown == places;
}

bool showSpans() {
    const auto countdown = dateComponentsFormatter::countdownFormatter().string(65s).value_or("");
    const auto time = dateComponentsFormatter::abbreviatedTimeFormatter().string(26h + 5min).value_or("");
    tour::line("spans", countdown + " to go; " + time + " gone by");
    return !countdown.empty() && !time.empty();
}

bool showDays() {
    const auto calendar = Calendar::current();
    const auto days = calendar::daysElapsedSinceDate(calendar, Date(0));
    tour::line("Calendar", std::to_string(days) + " days since 1 January 2001");
    return days > 9000;
}

bool showDayWithoutMidnight() {
    const vorlan::testing::UserRegion user({.timeZone = "America/Sao_Paulo"});
    const auto noon = Date::fromTimeIntervalSince1970(1'541'340'000);
    const auto start = date::normalizedDate(noon);
    const auto hour = Calendar::current().component(CalendarComponent::hour, start);
    tour::line("no midnight",
               "4 November 2018 began in São Paulo at " + dateFormatter::timeFull().string(start));
    return hour == 1;
}

} // namespace

bool tour::showDates() {
    title("Dates");
    bool isComplete = true;
    for (const auto show : {showShared, showPlaces, showSpans, showDays, showDayWithoutMidnight})
        isComplete &= show();
    return isComplete;
}
