// SPDX-License-Identifier: Apache-2.0
// Calendars of other years and months: against dates that are known, against ICU's own fields, and against themselves.

#include "platform/dates/ZoneRules.h"
#include "platform/text/ICULocale.h"
#include "tests/platform/dates/CalendarTesting.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <latch>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <unicode/calendar.h>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace vorlan::tests;

namespace {

using Unit = CalendarComponent;
using Identifier = Calendar::Identifier;

constexpr std::array zones{"Europe/Berlin",
                           "America/New_York",
                           "America/Sao_Paulo",
                           "Asia/Kathmandu",
                           "Pacific/Apia",
                           "Australia/Lord_Howe",
                           "UTC"};
constexpr std::array locales{"en_US", "en_GB", "de_DE", "fr_FR", "ja_JP",
                             "ar_EG", "hi_IN", "he_IL", "fa_IR", "th_TH"};
constexpr int identifiers = static_cast<int>(Identifier::republicOfChina) + 1;

// Sanitizers and the moon take their time.
#ifdef NDEBUG
constexpr int datesOfEach = 25;
#else
constexpr int datesOfEach = 6;
#endif

// Of the years 1600 to 2300; half of them near a clock change of the zone, if there is any.
class RandomDates {
public:
    explicit RandomDates(unsigned seed) : random_(seed) {}

    Date next(const TimeZone& zone) {
        const Date date(std::uniform_real_distribution<double>(-12'600'000'000.0, 9'400'000'000.0)(random_));
        if (random_() % 2 == 0) return date;
        const auto change = zone.nextTransition(date).value_or(date);
        return Date(change.timeIntervalSinceReferenceDate() +
                    std::uniform_real_distribution<double>(-100'000, 100'000)(random_));
    }

    std::mt19937& random() { return random_; }

private:
    std::mt19937 random_;
};

std::string traceOf(const Calendar& calendar, Date date) {
    return "calendar " + std::to_string(static_cast<int>(calendar.identifier())) + " in " +
           calendar.timeZone().identifier() + " and " + calendar.locale().identifier() + " at " +
           std::to_string(date.timeIntervalSinceReferenceDate());
}

// Calls with every calendar in every zone.
template <class Check>
void forRandomDates(Check check) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomDates dates(seed);
    for (int identifier = 0; identifier < identifiers; ++identifier)
        for (const char* zone : zones) {
            const char* const locale = locales[dates.random()() % locales.size()];
            const auto calendar = calendarIn(zone, locale, static_cast<Identifier>(identifier));
            for (int i = 0; i < datesOfEach && !::testing::Test::HasFailure(); ++i) {
                const auto date = dates.next(calendar.timeZone());
                SCOPED_TRACE(traceOf(calendar, date));
                check(calendar, date);
            }
        }
}

// To the nanosecond, of which a double has not all for dates in these centuries.
Date floored(Date date) {
    const double interval = date.timeIntervalSinceReferenceDate(), second = std::floor(interval);
    return Date(second + std::floor((interval - second) * 1e9) / 1e9);
}

std::unique_ptr<icu::Calendar> icuCalendarLike(const Calendar& calendar) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> result(
        icu::Calendar::createInstance(detail::ZoneRules::of(calendar.timeZone()).icuZone().clone(),
                                      icuLocale(calendar.locale(), calendar.identifier()), status));
    EXPECT_TRUE(U_SUCCESS(status));
    result->setFirstDayOfWeek(static_cast<UCalendarDaysOfWeek>(calendar.firstWeekday()));
    result->setMinimalDaysInFirstWeek(static_cast<std::uint8_t>(calendar.minimumDaysInFirstWeek()));
    return result;
}

void expectFieldsOfICU(const Calendar& calendar, Date date) {
    constexpr std::array<std::pair<UCalendarDateFields, Unit>, 12> fields{
        {{UCAL_ERA, Unit::era},
         {UCAL_YEAR, Unit::year},
         {UCAL_DATE, Unit::day},
         {UCAL_DAY_OF_YEAR, Unit::dayOfYear},
         {UCAL_WEEK_OF_YEAR, Unit::weekOfYear},
         {UCAL_YEAR_WOY, Unit::yearForWeekOfYear},
         {UCAL_WEEK_OF_MONTH, Unit::weekOfMonth},
         {UCAL_DAY_OF_WEEK, Unit::weekday},
         {UCAL_DAY_OF_WEEK_IN_MONTH, Unit::weekdayOrdinal},
         {UCAL_HOUR_OF_DAY, Unit::hour},
         {UCAL_MINUTE, Unit::minute},
         {UCAL_SECOND, Unit::second}}};
    UErrorCode status = U_ZERO_ERROR;
    const auto reference = icuCalendarLike(calendar);
    reference->setTime(std::floor(date.timeIntervalSince1970()) * 1000, status);
    const auto components = calendar.dateComponents(allComponents(), {.from = date});
    for (const auto& [field, unit] : fields)
        EXPECT_EQ(components.value(unit), reference->get(field, status)) << static_cast<int>(unit);
    EXPECT_EQ(components.month, reference->get(UCAL_MONTH, status) + 1);
    EXPECT_EQ(components.isLeapMonth.value_or(false), reference->get(UCAL_IS_LEAP_MONTH, status) != 0);
    EXPECT_TRUE(U_SUCCESS(status));
}

} // namespace

TEST(OtherCalendars, NameDaysAsTheirPeopleDo) {
    struct Fact {
        Identifier identifier;
        Date date;
        const char* name;
    };
    const Fact facts[]{
        {Identifier::buddhist, utc(2024, 2, 29), "era 0, year 2567, month 2, day 29"},
        {Identifier::republicOfChina, utc(2024, 2, 29), "era 1, year 113, month 2, day 29"},
        {Identifier::republicOfChina, utc(1911, 12, 31), "era 0, year 1, month 12, day 31"},
        {Identifier::japanese, utc(2019, 4, 30), "era 235, year 31, month 4, day 30"},
        {Identifier::japanese, utc(2019, 5, 1), "era 236, year 1, month 5, day 1"},
        {Identifier::japanese, utc(1989, 1, 7), "era 234, year 64, month 1, day 7"},
        {Identifier::chinese, utc(2024, 2, 10), "era 78, year 41, month 1, day 1"},
        {Identifier::chinese, utc(2023, 3, 21), "era 78, year 40, month 2, day 30"},
        {Identifier::chinese, utc(2023, 3, 22), "era 78, year 40, month 2, day 1, leap month"},
        {Identifier::hebrew, utc(2024, 10, 3), "era 0, year 5785, month 1, day 1"},
        {Identifier::hebrew, utc(2024, 2, 10), "era 0, year 5784, month 6, day 1"}, // Adar I
        {Identifier::hebrew, utc(2025, 3, 1), "era 0, year 5785, month 7, day 1"},  // Adar, without another
        {Identifier::persian, utc(2024, 3, 20), "era 0, year 1403, month 1, day 1"},
        {Identifier::indian, utc(2024, 3, 21), "era 0, year 1946, month 1, day 1"},
        {Identifier::coptic, utc(2024, 9, 11), "era 1, year 1741, month 1, day 1"},
        {Identifier::ethiopicAmeteMihret, utc(2024, 9, 11), "era 1, year 2017, month 1, day 1"},
        {Identifier::ethiopicAmeteAlem, utc(2024, 9, 11), "era 0, year 7517, month 1, day 1"},
        {Identifier::islamicUmmAlQura, utc(2024, 7, 7), "era 0, year 1446, month 1, day 1"},
        {Identifier::islamicCivil, utc(2024, 7, 8), "era 0, year 1446, month 1, day 1"},
        {Identifier::islamicTabular, utc(2024, 7, 7), "era 0, year 1446, month 1, day 1"},
    };
    for (const auto& [identifier, date, name] : facts) {
        const auto calendar = calendarIn("UTC", "en_US", identifier);
        const auto components =
            calendar.dateComponents({Unit::era, Unit::year, Unit::month, Unit::day}, {.from = date});
        EXPECT_EQ(textOf(components), name) << static_cast<int>(identifier) << " " << textOf(date);
        EXPECT_EQ(textOf(calendar.date(components)), textOf(date)) << name;
    }
}

TEST(OtherCalendars, AbsentErasAreThePresentAndFirstYearsBeginWithTheirEra) {
    const auto japanese = calendarIn("UTC", "ja_JP", Identifier::japanese);
    EXPECT_EQ(textOf(japanese.date({.era = 236, .year = 1})), "2019-05-01 00:00:00");
    EXPECT_EQ(textOf(japanese.date({.era = 234})), "1926-12-25 00:00:00");
    EXPECT_EQ(textOf(japanese.date({.era = 234, .year = 1, .month = 12})), "1926-12-25 00:00:00");
    EXPECT_EQ(textOf(japanese.date({.era = 235, .year = 2})), "1990-01-01 00:00:00");
    EXPECT_EQ(textOf(calendarIn("UTC", "zh_TW", Identifier::republicOfChina).date({.year = 113})),
              "2024-01-01 00:00:00");
    EXPECT_EQ(textOf(calendarIn("UTC", "am_ET", Identifier::ethiopicAmeteMihret).date({.year = 2017})),
              "2024-09-11 00:00:00");
}

TEST(OtherCalendars, YearsHaveTheMonthsThatTheyHave) {
    const auto hebrew = calendarIn("UTC", "he_IL", Identifier::hebrew);
    EXPECT_EQ(hebrew.ordinality({.of = Unit::month, .in = Unit::year, .for_ = utc(2025, 3, 1)}),
              6); // month 7
    EXPECT_EQ(hebrew.ordinality({.of = Unit::month, .in = Unit::year, .for_ = utc(2024, 3, 11)}), 7);
    EXPECT_EQ(textOf(hebrew.date({.byAdding = Unit::month, .value = 1, .to = utc(2025, 1, 30)})),
              "2025-03-01 00:00:00"); // from Shevat to Adar
    EXPECT_EQ(textOf(hebrew.date({.byAdding = Unit::year, .value = 1, .to = utc(2023, 9, 16)})),
              "2024-10-03 00:00:00");
    EXPECT_EQ(hebrew.dateInterval({.of = Unit::year, .for_ = utc(2024, 3, 11)})->duration, 383 * 86'400.0);
    const auto coptic = calendarIn("UTC", "ar_EG", Identifier::coptic);
    EXPECT_EQ(coptic.dateInterval({.of = Unit::month, .for_ = utc(2024, 9, 7)})->duration, 5 * 86'400.0);
    EXPECT_EQ(coptic.component(Unit::month, utc(2024, 9, 7)), 13);
    EXPECT_EQ(coptic.component(Unit::quarter, utc(2024, 9, 7)), 4);
    EXPECT_EQ(textOf(coptic.dateComponents({Unit::year, Unit::month, Unit::day},
                                           {.from = utc(2023, 9, 12), .to = utc(2024, 9, 13)})),
              "year 1, month 0, day 2");
    const auto chinese = calendarIn("UTC", "zh_CN", Identifier::chinese);
    EXPECT_EQ(textOf(chinese.date({.era = 78, .year = 40, .month = 2, .isLeapMonth = true, .day = 5})),
              "2023-03-26 00:00:00");
    EXPECT_EQ(textOf(chinese.dateComponents({Unit::month, Unit::day},
                                            {.from = utc(2023, 2, 20), .to = utc(2023, 4, 21)})),
              "month 2, day 1"); // the second month comes twice
}

TEST(OtherCalendars, HaveTheFieldsOfICU) {
    forRandomDates([](const Calendar& calendar, Date date) {
        // ICU looks at the moon at the very second, so that the day on which it is new has two names.
        if (calendar.identifier() != Identifier::islamic) expectFieldsOfICU(calendar, date);
    });
}

TEST(OtherCalendars, JapaneseErasAreThoseOfICU) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto calendar = calendarIn("UTC", "ja_JP", Identifier::japanese);
    const auto reference = icuCalendarLike(calendar);
    UErrorCode status = U_ZERO_ERROR;
    for (int i = 0; i < 5000; ++i) {
        const double day = std::uniform_int_distribution<int>(-520'000, 20'000)(random); // from the year 577
        const auto date = Date(day * 86'400);
        SCOPED_TRACE(date.description());
        reference->setTime(date.timeIntervalSince1970() * 1000, status);
        ASSERT_EQ(calendar.component(Unit::era, date), reference->get(UCAL_ERA, status));
        ASSERT_EQ(calendar.component(Unit::year, date), reference->get(UCAL_YEAR, status));
        ASSERT_EQ(calendar.component(Unit::day, date), reference->get(UCAL_DATE, status));
    }
}

TEST(OtherCalendars, ComponentsNameTheDateThatTheyAreOf) {
    forRandomDates([](const Calendar& calendar, Date date) {
        const auto components = calendar.dateComponents(allComponents(), {.from = date});
        const auto again = calendar.date(components);
        ASSERT_TRUE(again.has_value());
        if (*again == floored(date)) return;
        // The second of two times that clocks show alike.
        EXPECT_LT(*again, date);
        EXPECT_GT(*again, Date(date.timeIntervalSinceReferenceDate() - 86'401));
        EXPECT_EQ(calendar.dateComponents(allComponents(), {.from = *again}), components);
    });
}

TEST(OtherCalendars, UnitsAgreeWithTheirOrderAndTheirOrdinals) {
    forRandomDates([](const Calendar& calendar, Date date) {
        const Date other(date.timeIntervalSinceReferenceDate() + 3e6);
        for (const auto unit :
             {Unit::year, Unit::quarter, Unit::month, Unit::weekOfYear, Unit::day, Unit::hour}) {
            const auto one = calendar.dateInterval({.of = unit, .for_ = date}).value();
            const auto two = calendar.dateInterval({.of = unit, .for_ = other}).value();
            EXPECT_LE(one.start, date) << static_cast<int>(unit);
            EXPECT_GT(one.end(), date) << static_cast<int>(unit);
            EXPECT_EQ(calendar.compare(date, {.to = other, .toGranularity = unit}), one.start <=> two.start);
            EXPECT_EQ(calendar.dateInterval({.of = unit, .for_ = one.end()}).value().start, one.end());
        }
        EXPECT_EQ(calendar.ordinality({.of = Unit::day, .in = Unit::year, .for_ = date}),
                  calendar.component(Unit::dayOfYear, date));
        EXPECT_EQ(calendar.startOfDay(date), calendar.dateInterval({.of = Unit::day, .for_ = date})->start);
    });
}

TEST(OtherCalendars, SpansLeadFromOneDateToTheOther) {
    forRandomDates([](const Calendar& calendar, Date date) {
        const CalendarComponents units{Unit::year, Unit::month, Unit::day, Unit::second};
        const Date other(date.timeIntervalSinceReferenceDate() + 1e8);
        for (const auto& [from, to] : {std::pair(date, other), std::pair(other, date)}) {
            const auto span = calendar.dateComponents(units, {.from = from, .to = to});
            Date reached = from;
            for (const auto unit : {Unit::year, Unit::month, Unit::day, Unit::second})
                reached = calendar.date({.byAdding = unit, .value = span.value(unit).value(), .to = reached})
                              .value();
            EXPECT_LT(std::abs(reached.timeIntervalSince(to)), 1.001); // less than a second is left
            EXPECT_LT(std::abs(*span.month), 14);
            EXPECT_LT(std::abs(*span.day), 32);
            EXPECT_LT(std::abs(*span.second), 180'000); // Apia once had a day twice, over the date line
        }
    });
}

TEST(OtherCalendars, AreSafeFromAnyThread) {
    const auto tell = [] {
        std::string names;
        for (int identifier = 0; identifier < identifiers; ++identifier) {
            const auto calendar = calendarIn("Europe/Berlin", "en_US", static_cast<Identifier>(identifier));
            for (int day = 0; day < 5; ++day)
                names += textOf(calendar.dateComponents(allComponents(), {.from = Date(1e8 + day * 86'400)}));
        }
        return names;
    };
    constexpr std::size_t threads = 6; // more than there are calendars of ICU's at hand
    std::latch start(threads);
    std::array<std::string, threads> told;
    {
        std::vector<std::jthread> all;
        for (auto& names : told)
            all.emplace_back([&] {
                start.arrive_and_wait();
                names = tell();
            });
    }
    for (const auto& names : told) EXPECT_EQ(names, tell());
}
