// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/ZoneRules.h"

#include "platform/text/UTF16.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <map>
#include <mutex>
#include <unicode/simpletz.h>
#include <unicode/tztrans.h>
#include <utility>

namespace vorlan::detail {

namespace {

constexpr double millisecondsOfSecond = 1000;
constexpr std::int64_t tableEnd = 7'258'118'400; // 2200-01-01
// No zone's clocks are further from UTC than 18 hours.
constexpr std::int64_t farthest = 20 * 3600;

// Every zone that was asked for.
class Zones {
public:
    using Make = std::unique_ptr<icu::BasicTimeZone> (*)(const std::string& identifier);

    // Null where `make` gives none. What is no zone is not remembered: there are endlessly many such names.
    const ZoneRules* zone(const std::string& identifier, auto make) {
        const std::lock_guard lock(mutex_);
        if (const auto found = zones_.find(identifier); found != zones_.end()) return found->second.get();
        auto icuZone = make();
        if (icuZone == nullptr) return nullptr;
        return zones_.emplace(identifier, std::make_unique<ZoneRules>(identifier, std::move(icuZone)))
            .first->second.get();
    }

private:
    std::mutex mutex_;
    std::map<std::string, std::unique_ptr<const ZoneRules>> zones_;
};

Zones& zones() {
    static auto& instance = *new Zones; // stays until the process ends, as its zones do
    return instance;
}

// All that ICU makes are of this class, as it says where it makes them.
std::unique_ptr<icu::BasicTimeZone> basic(icu::TimeZone* zone) {
    std::unique_ptr<icu::TimeZone> owner(zone);
    auto* result = dynamic_cast<icu::BasicTimeZone*>(zone);
    if (result != nullptr) owner.release();
    return std::unique_ptr<icu::BasicTimeZone>(result);
}

std::unique_ptr<icu::BasicTimeZone> knownZone(const icu::UnicodeString& name) {
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString canonical;
    UBool isInDatabase = false;
    icu::TimeZone::getCanonicalID(name, canonical, isInDatabase, status);
    // ICU takes "GMT+5" and the like for zones as well.
    if (U_FAILURE(status) || !isInDatabase) return nullptr;
    return basic(icu::TimeZone::createTimeZone(name));
}

std::string fixedIdentifier(int seconds) {
    if (seconds == 0) return "GMT";
    const auto digits = [](int number) {
        return std::string{static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
    };
    const int size = std::abs(seconds);
    std::string text = (seconds < 0 ? "GMT-" : "GMT+") + digits(size / 3600) + digits(size / 60 % 60);
    if (size % 60 != 0) text += digits(size % 60);
    return text;
}

} // namespace

const ZoneRules* ZoneRules::named(std::string_view identifier) {
    // ICU cannot take longer ones, and takes a zero for the name's end.
    if (identifier.size() > 100 || identifier.find('\0') != std::string_view::npos) return nullptr;
    const std::string name(identifier);
    return zones().zone(name, [&] { return knownZone(utf16FromUTF8(name)); });
}

const ZoneRules* ZoneRules::fixed(int secondsFromGMT) {
    constexpr int limit = 18 * 3600;
    if (secondsFromGMT < -limit || secondsFromGMT > limit) return nullptr;
    const auto name = fixedIdentifier(secondsFromGMT);
    return zones().zone(name, [&]() -> std::unique_ptr<icu::BasicTimeZone> {
        return std::make_unique<icu::SimpleTimeZone>(secondsFromGMT * 1000, utf16FromUTF8(name));
    });
}

const ZoneRules& ZoneRules::gmt() {
    static const ZoneRules& rules = *fixed(0);
    return rules;
}

const ZoneRules& ZoneRules::ofSystem() {
    const std::unique_ptr<icu::TimeZone> detected(icu::TimeZone::detectHostTimeZone());
    if (detected == nullptr) return gmt();
    icu::UnicodeString name;
    detected->getID(name);
    if (const auto* rules = named(utf8FromUTF16(name))) return *rules;
    // A zone that TZ describes by itself ("CET-1") has the name of no place.
    const auto* rules = fixed(detected->getRawOffset() / 1000);
    return rules != nullptr ? *rules : gmt();
}

ZoneRules::ZoneRules(std::string identifier, std::unique_ptr<icu::BasicTimeZone> icuZone)
    : identifier_(std::move(identifier)), icuZone_(std::move(icuZone)) {
    readTransitions();
}

ZoneRules::~ZoneRules() = default;

void ZoneRules::readTransitions() {
    constexpr double beforeAll = -1e16; // no clocks were set then
    transitions_.push_back({std::numeric_limits<std::int64_t>::min(), offsetByICU(-1'000'000'000'000)});
    icu::TimeZoneTransition next;
    for (double time = beforeAll; icuZone_->getNextTransition(time, false, next); time = next.getTime()) {
        const auto second = static_cast<std::int64_t>(next.getTime() / millisecondsOfSecond);
        if (second >= tableEnd) break;
        const int offset = (next.getTo()->getRawOffset() + next.getTo()->getDSTSavings()) / 1000;
        // Some change only which part of the offset is the summer's.
        if (offset != transitions_.back().offset) transitions_.push_back({second, offset});
    }
}

int ZoneRules::offsetByICU(std::int64_t time) const {
    std::int32_t raw = 0;
    std::int32_t summer = 0;
    UErrorCode status = U_ZERO_ERROR;
    icuZone_->getOffset(static_cast<double>(time) * millisecondsOfSecond, false, raw, summer, status);
    return (raw + summer) / 1000;
}

int ZoneRules::offsetAt(std::int64_t time) const {
    if (time >= tableEnd) return offsetByICU(time);
    const auto after = std::ranges::upper_bound(transitions_, time, {}, &Transition::time);
    return std::prev(after)->offset;
}

bool ZoneRules::isDaylightSavingTime(std::int64_t time) const {
    std::int32_t raw = 0;
    std::int32_t summer = 0;
    UErrorCode status = U_ZERO_ERROR;
    icuZone_->getOffset(static_cast<double>(time) * millisecondsOfSecond, false, raw, summer, status);
    return summer != 0;
}

std::optional<std::int64_t> ZoneRules::nextTransition(std::int64_t time) const {
    const auto after = std::ranges::upper_bound(transitions_, time, {}, &Transition::time);
    if (after != transitions_.end()) return after->time;
    return nextTransitionByICU(std::max(time, tableEnd - 1));
}

std::optional<std::int64_t> ZoneRules::nextTransitionByICU(std::int64_t time) const {
    icu::TimeZoneTransition next;
    const int offset = offsetByICU(time);
    double from = static_cast<double>(time) * millisecondsOfSecond;
    // Some change only which part of the offset is the summer's; there are never many of them in a row.
    for (int tries = 0; tries < 8 && icuZone_->getNextTransition(from, false, next); ++tries) {
        const auto second = static_cast<std::int64_t>(next.getTime() / millisecondsOfSecond);
        if (offsetByICU(second) != offset) return second;
        from = next.getTime();
    }
    return std::nullopt;
}

// Goes through the changes near that time in order: before each the offset was the former one, so that is what
// clocks that show less than they were put at go by.
ZoneRules::Times ZoneRules::timesFromLocal(std::int64_t local) const {
    if (local >= tableEnd - 2 * farthest) return timesFromLocalByICU(local);
    auto change = std::ranges::upper_bound(transitions_, local - farthest, {}, &Transition::time);
    int offset = std::prev(change)->offset;
    for (; change != transitions_.end() && local >= change->time + offset; ++change) {
        if (local < change->time + change->offset) return {local - offset, change->time};
        offset = change->offset;
    }
    return {local - offset, local - offset};
}

ZoneRules::Times ZoneRules::timesFromLocalByICU(std::int64_t local) const {
    std::int32_t raw = 0;
    std::int32_t summer = 0;
    UErrorCode status = U_ZERO_ERROR;
    icuZone_->getOffsetFromLocal(static_cast<double>(local) * millisecondsOfSecond, UCAL_TZ_LOCAL_FORMER,
                                 UCAL_TZ_LOCAL_FORMER, raw, summer, status);
    const auto time = local - (raw + summer) / 1000;
    icu::TimeZoneTransition change;
    const bool isSkipped = time + offsetByICU(time) != local;
    if (!isSkipped ||
        !icuZone_->getPreviousTransition(static_cast<double>(time) * millisecondsOfSecond, true, change))
        return {time, time};
    return {time, static_cast<std::int64_t>(change.getTime() / millisecondsOfSecond)};
}

} // namespace vorlan::detail
