// SPDX-License-Identifier: Apache-2.0

// Dates, calendars and formatters in a host: what docs/dates.md shows.

#include <VorlanFoundation/Testing.h>
#include <VorlanFoundation/VorlanFoundation.h>

#include <chrono>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

using namespace vorlan;
using namespace std::chrono_literals;

namespace app {

void say(std::string_view what) {
    std::cout << what << "\n";
}

// What a list of messages shows beside each.
std::string labelOf(Date sent) {
    const auto days = calendar::daysElapsedSinceDate(Calendar::current(), sent);
    if (days == 0) return "today";
    if (days == 1) return "yesterday";
    return dateFormatter::shortDate().string(sent);
}

void askEverydayQuestions() {
    const Date now;
    const Date sent(now.timeIntervalSinceReferenceDate() - 12 * timeInterval::hour);
    say(labelOf(sent));
    say(calendar::isToday(sent) ? "sent today" : "not sent today");
    say(std::to_string(date::second({.from = sent})));
    say(std::to_string(date::millisecondsSince1970(date::normalizedDate(now))));
    say(std::to_string(calendar::index({.ofDay = now, .inPeriod = 7}))); // which of seven tips to show
}

void useSharedFormatters() {
    const Date now;
    say(dateFormatter::timeFull().string(now));
    say(dateFormatter::iso8601Full().string(now));
    say(dateComponentsFormatter::countdownFormatter().string(65s).value_or(""));
    say(dateComponentsFormatter::abbreviatedTimeFormatter().string(26h + 5min).value_or(""));
}

void makeFormatters() {
    DateFormatter month;
    month.setDateFormat("LLLL yyyy");
    say(month.string(Date()));

    auto french = dateFormatter::shortDate().copy();
    french.setLocale(Locale("fr_FR"));
    say(french.string(Date()));

    const std::optional<Date> read = dateFormatter::timeFull().date("2024-03-05 14:07:09");
    say(read ? read->description() : "no date");
}

void useCalendars() {
    const Calendar berlin(Calendar::Identifier::gregorian, Locale("de_DE"),
                          TimeZone::fromIdentifier("Europe/Berlin").value());
    const auto leapDay = berlin.date({.year = 2024, .month = 2, .day = 29}).value();
    const auto later = berlin.date({.byAdding = CalendarComponent::day, .value = 45, .to = leapDay});
    const auto components = berlin.dateComponents({CalendarComponent::month, CalendarComponent::day},
                                                  {.from = leapDay, .to = later});
    say(std::to_string(components.month.value_or(0)) + " month and " +
        std::to_string(components.day.value_or(0)) + " days");
}

void startADayWithoutAMidnight() {
    const Calendar saoPaulo(Calendar::Identifier::gregorian, Locale("pt_BR"),
                            TimeZone::fromIdentifier("America/Sao_Paulo").value());
    const auto noon = saoPaulo.date({.year = 2018, .month = 11, .day = 4, .hour = 12}).value();
    const auto start = saoPaulo.startOfDay(noon).value();
    say(std::to_string(saoPaulo.component(CalendarComponent::hour, start).value_or(0))); // 1
}

bool showsYesterdayAcrossMidnight() {
    const vorlan::testing::UserRegion user({.locale = "de_DE", .timeZone = "Europe/Berlin"});
    const Date midnight = Date::fromTimeIntervalSince1970(1'709'593'200); // of 5 March 2024
    vorlan::testing::WallClock clock(midnight);
    clock.advance(-1min);
    const Date sent;
    if (labelOf(sent) != "today") return false;
    clock.advance(2min);
    return labelOf(sent) == "yesterday";
}

} // namespace app

int main() {
    // A user at a time, so that all that is shown is always the same.
    const vorlan::testing::UserRegion user({.locale = "en_US", .timeZone = "Europe/Berlin"});
    const vorlan::testing::WallClock clock(Date::fromTimeIntervalSince1970(1'709'622'429));
    app::askEverydayQuestions();
    app::useSharedFormatters();
    app::makeFormatters();
    app::useCalendars();
    app::startADayWithoutAMidnight();
    app::say(app::showsYesterdayAcrossMidnight() ? "the test passed" : "the test failed");
}
