// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/ICUCalendarSystem.h"

#include "platform/text/ICULocale.h"
#include "platform/values/Epoch.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <cmath>
#include <new>
#include <unicode/timezone.h>

namespace vorlan {

namespace {

constexpr double millisecondsOfDay = 86'400'000;

// What years, months and days may be, so that ICU's sums fit into its 32 bits.
constexpr std::int64_t farthestYear = 6'000'000;
constexpr std::int64_t farthestMonth = 13 * 2 * farthestYear; // from one end of time to the other

std::int32_t small(std::int64_t value) {
    return static_cast<std::int32_t>(value);
}

// Noon: as far from other days as can be, and the same for the whole day, as some of ICU's calendars look at the moon at
// the very second.
double noon(std::int64_t number) {
    return static_cast<double>(number) * millisecondsOfDay + millisecondsOfDay / 2;
}

} // namespace

// A calendar that nobody else uses meanwhile.
class ICUCalendarSystem::Borrowed {
public:
    explicit Borrowed(const ICUCalendarSystem& system) : system_(system) {
        for (auto& slot : system.idle_)
            if (calendar_.reset(slot.exchange(nullptr, std::memory_order_acquire)); calendar_) return;
        calendar_.reset(system.model_->clone());
        if (!calendar_) throw std::bad_alloc();
    }
    Borrowed(const Borrowed&) = delete;
    Borrowed& operator=(const Borrowed&) = delete;
    ~Borrowed() {
        for (auto& slot : system_.idle_) {
            icu::Calendar* none = nullptr;
            if (slot.compare_exchange_strong(none, calendar_.get(), std::memory_order_release,
                                             std::memory_order_relaxed)) {
                calendar_.release();
                return;
            }
        }
    }

    icu::Calendar& operator*() { return *calendar_; }
    icu::Calendar* operator->() { return calendar_.get(); }

    int get(UCalendarDateFields field) { return calendar_->get(field, status_); }
    void setDay(std::int64_t number) { calendar_->setTime(noon(number), status_); }
    void add(UCalendarDateFields field, std::int64_t value) { calendar_->add(field, small(value), status_); }

    // The day that it is set to; absent where ICU has none.
    std::optional<std::int64_t> number() {
        const double days = std::floor(calendar_->getTime(status_) / millisecondsOfDay);
        if (U_FAILURE(status_) || !(std::abs(days) <= static_cast<double>(farthestDay))) return std::nullopt;
        return static_cast<std::int64_t>(days);
    }

private:
    const ICUCalendarSystem& system_;
    std::unique_ptr<icu::Calendar> calendar_;
    UErrorCode status_ = U_ZERO_ERROR;
};

ICUCalendarSystem::ICUCalendarSystem(Calendar::Identifier identifier, Lengths lengths)
    : lengths_(lengths), model_(icuCalendar(identifier)) {}

ICUCalendarSystem::~ICUCalendarSystem() {
    for (auto& slot : idle_) delete slot.load(std::memory_order_acquire);
}

CalendarDay ICUCalendarSystem::day(std::int64_t number) const {
    Borrowed calendar(*this);
    calendar.setDay(number);
    const int ofMonth = calendar.get(UCAL_DAY_OF_MONTH);
    return {number,
            calendar.get(UCAL_ERA),
            calendar.get(UCAL_YEAR),
            calendar.get(UCAL_EXTENDED_YEAR),
            calendar.get(UCAL_MONTH) + 1,
            lengths_.hasLeapMonths && calendar.get(UCAL_IS_LEAP_MONTH) != 0,
            ofMonth,
            number - ofMonth + 1,
            number - calendar.get(UCAL_DAY_OF_YEAR) + 1};
}

std::int64_t ICUCalendarSystem::presentEra() const {
    const double days = std::floor(Date().timeIntervalSinceReferenceDate() / 86'400);
    if (!(std::abs(days) < static_cast<double>(farthestDay))) return 0;
    return day(static_cast<std::int64_t>(days) + referenceDate.time_since_epoch().count()).era;
}

std::optional<std::int64_t> ICUCalendarSystem::number(const CalendarDayName& name) const {
    const auto era = name.era.value_or(name.era ? 0 : presentEra());
    const auto year = name.year.value_or(1), month = name.month.value_or(1), day = name.day.value_or(1);
    if (!isNear(era, farthestYear) || !isNear(year, farthestYear) || !isNear(month, farthestMonth) ||
        !isNear(day, 2 * farthestDay) || (name.isLeapMonth && !lengths_.hasLeapMonths))
        return std::nullopt;
    Borrowed calendar(*this);
    calendar->clear();
    calendar->set(UCAL_ERA, small(era));
    calendar->set(UCAL_YEAR, small(year));
    calendar->set(UCAL_MONTH, small(month - 1));
    if (lengths_.hasLeapMonths) calendar->set(UCAL_IS_LEAP_MONTH, name.isLeapMonth ? 1 : 0);
    calendar->set(UCAL_DAY_OF_MONTH, 1);
    calendar->set(UCAL_HOUR_OF_DAY, 12);
    const auto first = calendar.number();
    return first ? ifNear(*first + day - 1) : std::nullopt;
}

std::optional<std::int64_t> ICUCalendarSystem::firstOfYear(std::int64_t extendedYear) const {
    if (!isNear(extendedYear, farthestYear)) return std::nullopt;
    Borrowed calendar(*this);
    calendar->clear();
    calendar->set(UCAL_EXTENDED_YEAR, small(extendedYear));
    calendar->set(UCAL_MONTH, 0);
    if (lengths_.hasLeapMonths) calendar->set(UCAL_IS_LEAP_MONTH, 0);
    calendar->set(UCAL_DAY_OF_MONTH, 1);
    calendar->set(UCAL_HOUR_OF_DAY, 12);
    return calendar.number();
}

std::optional<std::int64_t> ICUCalendarSystem::adding(UCalendarDateFields unit, std::int64_t value,
                                                      std::int64_t number) const {
    if (!isNear(value, farthestMonth)) return std::nullopt;
    Borrowed calendar(*this);
    calendar.setDay(number);
    calendar.add(unit, value);
    return calendar.number();
}

std::optional<std::int64_t> ICUCalendarSystem::addingMonths(std::int64_t months, std::int64_t number) const {
    return adding(UCAL_MONTH, months, number);
}

std::optional<std::int64_t> ICUCalendarSystem::addingYears(std::int64_t years, std::int64_t number) const {
    return adding(UCAL_EXTENDED_YEAR, years, number);
}

std::unique_ptr<icu::Calendar> icuCalendar(Calendar::Identifier identifier) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(
        icu::TimeZone::getGMT()->clone(), icuLocale(Locale("en"), identifier), status));
    if (U_FAILURE(status) || !calendar)
        fatalError("ICU has no data of its calendars", "VorlanFoundation/Calendar");
    calendar->clear();
    return calendar;
}

} // namespace vorlan
