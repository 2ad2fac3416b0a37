// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/DateWriter.h"

#include "platform/dates/CalendarSystem.h"
#include "platform/text/FormatCache.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <utility>

namespace vorlan {

namespace {

using Style = DateFormatter::Style;

bool isInCalendar(double secondsSince1970) {
    const auto date = Date::fromTimeIntervalSince1970(secondsSince1970);
    return std::abs(date.timeIntervalSinceReferenceDate()) <= farthestSecond; // not for what is no number
}

// The millisecond that a date is in. One that is due to a whole millisecond, but for what a double cannot hold, is that.
double wholeMilliseconds(double seconds) {
    const double milliseconds = seconds * 1000;
    const double nearest = std::round(milliseconds);
    const double doubt = std::max(5e-4, std::abs(milliseconds) * 0x1p-51);
    return std::abs(milliseconds - nearest) < doubt ? nearest : std::floor(milliseconds);
}

bool saysNothing(const DateLayout& layout) {
    if (layout.pattern) return layout.pattern->empty();
    return layout.dateStyle == Style::none && layout.timeStyle == Style::none;
}

} // namespace

std::shared_ptr<const DateWriter> DateWriter::of(const DateLayout& layout) {
    static auto& cache = *new FormatCache<DateWriter>; // threads may write dates while the process ends
    return cache.value(layout.key(), [&] { return std::make_shared<const DateWriter>(layout); });
}

DateWriter::DateWriter(const DateLayout& layout)
    : layout_(layout), namesDays_(layout.isRelative && layout.dayName.empty()) {
    if (saysNothing(layout)) return;
    auto model = DateFormat::forLayout(layout);
    if (!model) return;
    program_ = DatePatternProgram::of(*model, layout);
    formats_.emplace(std::move(model));
}

// The writer for a day with a name, as the zone's clocks show the day and the present one; null where it has none.
const DateWriter* DateWriter::withNameOfDay(double seconds) const {
    constexpr double secondsOfDay = 86'400;
    constexpr double reach = (RelativeDayNames::furthest + 2) * secondsOfDay;
    const auto dayOf = [&](double time) {
        const auto second = std::floor(time);
        return std::floor((second + layout_.zone->offsetAt(static_cast<std::int64_t>(second))) /
                          secondsOfDay);
    };
    const double now = Date().timeIntervalSince1970();
    if (!(std::abs(now - seconds) <= reach)) return nullptr; // nor where the present is no number
    const double place = dayOf(seconds) - dayOf(now) + RelativeDayNames::furthest;
    return place >= 0 && place < namedDays ? withName(static_cast<std::size_t>(place)) : nullptr;
}

const DateWriter* DateWriter::withName(std::size_t place) const {
    auto& day = named_[place];
    std::call_once(day.once, [&] {
        auto layout = layout_;
        layout.dayName = RelativeDayNames::ofLocale(layout_.locale).names[place];
        if (!layout.dayName.empty()) day.writer = std::make_unique<const DateWriter>(layout);
    });
    return day.writer.get();
}

std::string DateWriter::string(Date date) const {
    const double seconds = date.timeIntervalSince1970();
    if (!formats_ || !isInCalendar(seconds)) return {};
    if (namesDays_)
        if (const auto* const named = withNameOfDay(seconds)) return named->string(date);
    const double milliseconds = wholeMilliseconds(seconds);
    if (program_)
        if (auto text = program_->string(milliseconds)) return *std::move(text);
    return formats_->borrow()->string(milliseconds);
}

std::optional<Date> DateWriter::date(std::string_view text, bool isLenient) const {
    if (!formats_) return std::nullopt;
    const auto time = formats_->borrow()->time(text, isLenient);
    if (!time || !isInCalendar(*time / 1000)) return std::nullopt;
    return Date::fromTimeIntervalSince1970(*time / 1000);
}

std::string DateWriter::pattern() const {
    return formats_ ? formats_->borrow()->pattern() : std::string();
}

} // namespace vorlan
