// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/Dates.h>

#include "extensions/SharedFormatter.h"

#include <utility>

namespace vorlan {

namespace {

using Shared = SharedFormatter<DateComponentsFormatter>;
using Style = DateComponentsFormatter::UnitsStyle;
using enum CalendarComponent;

DateComponentsFormatter withUnits(CalendarComponents units, Style style) {
    DateComponentsFormatter formatter;
    formatter.setAllowedUnits(units);
    formatter.setUnitsStyle(style);
    return formatter;
}

DateComponentsFormatter countdownOf(CalendarComponents units) {
    auto formatter = withUnits(units, Style::positional);
    formatter.setZeroFormattingBehavior(DateComponentsFormatter::ZeroFormattingBehavior::pad);
    return formatter;
}

// None of them is ever destroyed: other threads may format until the process ends.

Shared& fullHours() {
    static auto& shared = *new Shared([] { return withUnits(hour, Style::full); });
    return shared;
}

Shared& abbreviatedHours() {
    static auto& shared = *new Shared([] { return withUnits(hour, Style::abbreviated); });
    return shared;
}

Shared& abbreviatedTime() {
    static auto& shared = *new Shared([] { return withUnits({day, hour, minute}, Style::abbreviated); });
    return shared;
}

Shared& abbreviatedHoursMinutes() {
    static auto& shared = *new Shared([] { return withUnits({hour, minute}, Style::abbreviated); });
    return shared;
}

Shared& countdown() {
    static auto& shared = *new Shared([] { return countdownOf({hour, minute, second}); });
    return shared;
}

Shared& minutesCountdown() {
    static auto& shared = *new Shared([] { return countdownOf({minute, second}); });
    return shared;
}

} // namespace

DateComponentsFormatter dateComponentsFormatter::fullHoursFormatter() {
    return fullHours().get();
}

void dateComponentsFormatter::setFullHoursFormatter(DateComponentsFormatter formatter) {
    fullHours().set(std::move(formatter));
}

DateComponentsFormatter dateComponentsFormatter::abbreviatedHoursFormatter() {
    return abbreviatedHours().get();
}

void dateComponentsFormatter::setAbbreviatedHoursFormatter(DateComponentsFormatter formatter) {
    abbreviatedHours().set(std::move(formatter));
}

DateComponentsFormatter dateComponentsFormatter::abbreviatedTimeFormatter() {
    return abbreviatedTime().get();
}

void dateComponentsFormatter::setAbbreviatedTimeFormatter(DateComponentsFormatter formatter) {
    abbreviatedTime().set(std::move(formatter));
}

DateComponentsFormatter dateComponentsFormatter::abbreviatedHoursMinutesFormatter() {
    return abbreviatedHoursMinutes().get();
}

void dateComponentsFormatter::setAbbreviatedHoursMinutesFormatter(DateComponentsFormatter formatter) {
    abbreviatedHoursMinutes().set(std::move(formatter));
}

DateComponentsFormatter dateComponentsFormatter::countdownFormatter() {
    return countdown().get();
}

void dateComponentsFormatter::setCountdownFormatter(DateComponentsFormatter formatter) {
    countdown().set(std::move(formatter));
}

DateComponentsFormatter dateComponentsFormatter::minutesCountdownFormatter() {
    return minutesCountdown().get();
}

void dateComponentsFormatter::setMinutesCountdownFormatter(DateComponentsFormatter formatter) {
    minutesCountdown().set(std::move(formatter));
}

} // namespace vorlan
