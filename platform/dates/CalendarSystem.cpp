// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/CalendarSystem.h"

#include "platform/dates/GregorianSystem.h"
#include "platform/dates/ICUCalendarSystem.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <cmath>
#include <vector>

namespace vorlan {

namespace {

using Identifier = Calendar::Identifier;
using Eras = std::vector<GregorianSystem::Era>;

// Where only era and year are set, ICU gives the day on which the era begins.
Eras japaneseEras() {
    const auto calendar = icuCalendar(Identifier::japanese);
    UErrorCode status = U_ZERO_ERROR;
    Eras eras;
    for (int era = 0; era <= calendar->getMaximum(UCAL_ERA); ++era) {
        calendar->clear();
        calendar->set(UCAL_ERA, era);
        calendar->set(UCAL_YEAR, 1);
        const double days = std::floor(calendar->getTime(status) / 86'400'000);
        eras.push_back({static_cast<std::int64_t>(days), calendar->get(UCAL_EXTENDED_YEAR, status)});
    }
    if (U_FAILURE(status)) fatalError("ICU has no data of its calendars", "VorlanFoundation/Calendar");
    return eras;
}

GregorianSystem::Years yearsOf(Identifier identifier) {
    switch (identifier) {
    case Identifier::iso8601: return {.followsJulian = false, .eras = {}};
    case Identifier::buddhist: return {.before = -543, .hasEraBefore = false, .eras = {}};
    case Identifier::republicOfChina: return {.before = 1911, .eras = {}};
    case Identifier::japanese: return {.eras = japaneseEras()};
    default: return {.eras = {}};
    }
}

ICUCalendarSystem::Lengths lengthsOf(Identifier identifier) {
    switch (identifier) {
    case Identifier::chinese: return {29.530589, 365.2422, true};
    case Identifier::coptic:
    case Identifier::ethiopicAmeteAlem:
    case Identifier::ethiopicAmeteMihret: return {28.096154, 365.25};
    case Identifier::hebrew: return {29.530594, 365.246822};
    case Identifier::indian:
    case Identifier::persian: return {30.436850, 365.2422};
    default: return {29.530556, 354.366667};
    }
}

// Never destroyed: other threads may still ask while the process ends.
template <Identifier identifier>
const CalendarSystem& gregorianSystem() {
    static const auto& system = *new GregorianSystem(yearsOf(identifier));
    return system;
}

template <Identifier identifier>
const CalendarSystem& icuSystem() {
    static const auto& system = *new ICUCalendarSystem(identifier, lengthsOf(identifier));
    return system;
}

} // namespace

const CalendarSystem& CalendarSystem::named(Identifier identifier) {
    switch (identifier) {
    case Identifier::gregorian: return gregorianSystem<Identifier::gregorian>();
    case Identifier::iso8601: return gregorianSystem<Identifier::iso8601>();
    case Identifier::buddhist: return gregorianSystem<Identifier::buddhist>();
    case Identifier::japanese: return gregorianSystem<Identifier::japanese>();
    case Identifier::republicOfChina: return gregorianSystem<Identifier::republicOfChina>();
    case Identifier::chinese: return icuSystem<Identifier::chinese>();
    case Identifier::coptic: return icuSystem<Identifier::coptic>();
    case Identifier::ethiopicAmeteAlem: return icuSystem<Identifier::ethiopicAmeteAlem>();
    case Identifier::ethiopicAmeteMihret: return icuSystem<Identifier::ethiopicAmeteMihret>();
    case Identifier::hebrew: return icuSystem<Identifier::hebrew>();
    case Identifier::indian: return icuSystem<Identifier::indian>();
    case Identifier::islamic: return icuSystem<Identifier::islamic>();
    case Identifier::islamicCivil: return icuSystem<Identifier::islamicCivil>();
    case Identifier::islamicTabular: return icuSystem<Identifier::islamicTabular>();
    case Identifier::islamicUmmAlQura: return icuSystem<Identifier::islamicUmmAlQura>();
    case Identifier::persian: return icuSystem<Identifier::persian>();
    }
    return gregorianSystem<Identifier::gregorian>();
}

} // namespace vorlan
