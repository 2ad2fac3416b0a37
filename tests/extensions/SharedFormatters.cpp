// SPDX-License-Identifier: Apache-2.0
#include "tests/extensions/SharedFormatters.h"

#include <string>

namespace vorlan {

namespace {

using Style = DateFormatter::Style;
using UnitsStyle = DateComponentsFormatter::UnitsStyle;
using Zeros = DateComponentsFormatter::ZeroFormattingBehavior;
using Unit = CalendarComponent;

template <Style Date, Style Time, bool IsRelative = false>
DateFormatter withStyles() {
    DateFormatter formatter;
    formatter.setDateStyle(Date);
    formatter.setTimeStyle(Time);
    formatter.setDoesRelativeDateFormatting(IsRelative);
    return formatter;
}

DateFormatter sql() {
    DateFormatter formatter;
    formatter.setDateFormat("yyyy-MM-dd");
    return formatter;
}

DateFormatter fullTime() {
    DateFormatter formatter;
    formatter.setDateFormat("yyyy-MM-dd HH:mm:ss");
    return formatter;
}

template <UnitsStyle Names, Unit... Units>
DateComponentsFormatter withUnits() {
    DateComponentsFormatter formatter;
    formatter.setAllowedUnits({Units...});
    formatter.setUnitsStyle(Names);
    if (Names == UnitsStyle::positional) formatter.setZeroFormattingBehavior(Zeros::pad);
    return formatter;
}

} // namespace

const std::array<tests::SharedPlace<DateFormatter>, 5> tests::sharedDateFormatters{{
    {"relativeShortFormatter", dateFormatter::relativeShortFormatter,
     dateFormatter::setRelativeShortFormatter, withStyles<Style::short_, Style::short_, true>},
    {"short_", dateFormatter::short_, dateFormatter::setShort, withStyles<Style::short_, Style::short_>},
    {"shortDate", dateFormatter::shortDate, dateFormatter::setShortDate,
     withStyles<Style::short_, Style::none>},
    {"sqlSuitable", dateFormatter::sqlSuitable, dateFormatter::setSqlSuitable, sql},
    {"timeFull", dateFormatter::timeFull, dateFormatter::setTimeFull, fullTime},
}};

const std::array<tests::SharedPlace<DateComponentsFormatter>, 6> tests::sharedDateComponentsFormatters{{
    {"fullHoursFormatter", dateComponentsFormatter::fullHoursFormatter,
     dateComponentsFormatter::setFullHoursFormatter, withUnits<UnitsStyle::full, Unit::hour>},
    {"abbreviatedHoursFormatter", dateComponentsFormatter::abbreviatedHoursFormatter,
     dateComponentsFormatter::setAbbreviatedHoursFormatter, withUnits<UnitsStyle::abbreviated, Unit::hour>},
    {"abbreviatedTimeFormatter", dateComponentsFormatter::abbreviatedTimeFormatter,
     dateComponentsFormatter::setAbbreviatedTimeFormatter,
     withUnits<UnitsStyle::abbreviated, Unit::day, Unit::hour, Unit::minute>},
    {"abbreviatedHoursMinutesFormatter", dateComponentsFormatter::abbreviatedHoursMinutesFormatter,
     dateComponentsFormatter::setAbbreviatedHoursMinutesFormatter,
     withUnits<UnitsStyle::abbreviated, Unit::hour, Unit::minute>},
    {"countdownFormatter", dateComponentsFormatter::countdownFormatter,
     dateComponentsFormatter::setCountdownFormatter,
     withUnits<UnitsStyle::positional, Unit::hour, Unit::minute, Unit::second>},
    {"minutesCountdownFormatter", dateComponentsFormatter::minutesCountdownFormatter,
     dateComponentsFormatter::setMinutesCountdownFormatter,
     withUnits<UnitsStyle::positional, Unit::minute, Unit::second>},
}};

DateFormatter tests::makeRelativeShortTime() {
    return withStyles<Style::none, Style::short_, true>();
}

} // namespace vorlan
