// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/WeekCustoms.h"

#include "platform/text/ICULocale.h"

#include <memory>
#include <mutex>
#include <string>
#include <unicode/calendar.h>
#include <unordered_map>

namespace vorlan {

namespace {

WeekCustoms readWeekCustoms(const Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(
        icu::TimeZone::getGMT()->clone(), icuLocale(locale, Calendar::Identifier::gregorian), status));
    if (U_FAILURE(status) || !calendar) return {1, 1};
    const int first = calendar->getFirstDayOfWeek(status);
    return {first, calendar->getMinimalDaysInFirstWeek()};
}

struct Known {
    std::mutex mutex;
    std::unordered_map<std::string, WeekCustoms> customs;
};

Known& known() {
    static auto& known = *new Known;
    return known;
}

} // namespace

WeekCustoms weekCustoms(const Locale& locale) {
    constexpr std::size_t most = 256; // who asks for more locales than people speak does not fill the memory
    const std::lock_guard lock(known().mutex);
    auto& customs = known().customs;
    if (const auto found = customs.find(locale.identifier()); found != customs.end()) return found->second;
    if (customs.size() >= most) customs.clear();
    return customs.emplace(locale.identifier(), readWeekCustoms(locale)).first->second;
}

} // namespace vorlan
