// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/DateComponents.h>

#include <array>
#include <cstddef>

namespace vorlan {

namespace {

using Member = std::optional<std::int64_t> DateComponents::*;

// In the order of the components.
constexpr std::array<Member, 15> members{&DateComponents::era,
                                         &DateComponents::year,
                                         &DateComponents::quarter,
                                         &DateComponents::month,
                                         &DateComponents::weekOfMonth,
                                         &DateComponents::weekOfYear,
                                         &DateComponents::yearForWeekOfYear,
                                         &DateComponents::day,
                                         &DateComponents::dayOfYear,
                                         &DateComponents::weekday,
                                         &DateComponents::weekdayOrdinal,
                                         &DateComponents::hour,
                                         &DateComponents::minute,
                                         &DateComponents::second,
                                         &DateComponents::nanosecond};

static_assert(members.size() == static_cast<std::size_t>(CalendarComponent::nanosecond) + 1);

constexpr Member member(CalendarComponent component) {
    return members[static_cast<std::size_t>(component)];
}

} // namespace

std::optional<std::int64_t> DateComponents::value(CalendarComponent component) const {
    return this->*member(component);
}

void DateComponents::setValue(std::optional<std::int64_t> value, CalendarComponent component) {
    this->*member(component) = value;
}

} // namespace vorlan
