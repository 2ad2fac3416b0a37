// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/DateComponentsFormatter.h>

#include "platform/dates/SpanFormat.h"
#include "platform/dates/SpanUnits.h"
#include "platform/text/CurrentRegion.h"
#include "platform/text/FormatterState.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace vorlan {

namespace {

using UnitsStyle = DateComponentsFormatter::UnitsStyle;
using ZeroFormattingBehavior = DateComponentsFormatter::ZeroFormattingBehavior;

constexpr CalendarComponents allUnits{CalendarComponent::year,        CalendarComponent::month,
                                      CalendarComponent::weekOfMonth, CalendarComponent::day,
                                      CalendarComponent::hour,        CalendarComponent::minute,
                                      CalendarComponent::second};

} // namespace

namespace detail {

/// The settings of one moment, with the calendar that was the user's then where none is set.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct SpanSnapshot {
    CalendarComponents allowedUnits;
    UnitsStyle unitsStyle;
    ZeroFormattingBehavior zeros;
    int maximumUnitCount;
    Calendar calendar;
    std::shared_ptr<const SpanFormat> format;
};

/// What can be set of a formatter.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct DateComponentsFormatterSettings {
    CalendarComponents allowedUnits = allUnits;
    UnitsStyle unitsStyle = UnitsStyle::positional;
    ZeroFormattingBehavior zeros = ZeroFormattingBehavior::default_;
    int maximumUnitCount = 0;
    std::optional<Calendar> calendar; // the user's where it is absent

    std::shared_ptr<const SpanSnapshot> make(const CurrentRegion& user) const {
        const auto& used = calendar ? *calendar : user.calendar;
        return std::make_shared<const SpanSnapshot>(
            SpanSnapshot{.allowedUnits = allowedUnits,
                         .unitsStyle = unitsStyle,
                         .zeros = zeros,
                         .maximumUnitCount = maximumUnitCount,
                         .calendar = used,
                         .format = SpanFormat::of(used.locale(), unitsStyle)});
    }
};

/// What a formatter and its copies share.
///
/// Threads: safe from any thread.
class DateComponentsFormatterState : public FormatterState<DateComponentsFormatterSettings, SpanSnapshot> {
public:
    using FormatterState::FormatterState;
};

} // namespace detail

namespace {

using Settings = detail::DateComponentsFormatterSettings;
using Snapshot = detail::SpanSnapshot;

constexpr double longestSpan = 0x1p53; // from there on not every second can be told from its neighbours

std::optional<std::string> text(const Snapshot& settings, const DateComponents& components) {
    auto counts = unitCounts(components, settings.allowedUnits);
    if (!counts) return std::nullopt;
    dropZeros(*counts, settings.zeros, settings.unitsStyle);
    const auto most = static_cast<std::size_t>(settings.maximumUnitCount);
    if (most != 0 && counts->size() > most) counts->resize(most, counts->back());
    return settings.format->string(*counts, settings.allowedUnits);
}

bool hasAny(const DateComponents& components) {
    return std::ranges::any_of(spanUnits, [&](auto unit) { return components.value(unit).has_value(); });
}

std::optional<std::string> textOfSpan(const Snapshot& settings, const Calendar& calendar,
                                      DateComponentsFormatter::Span span) {
    const auto components =
        calendar.dateComponents(settings.allowedUnits, {.from = span.from, .to = span.to});
    if (!hasAny(components)) return std::nullopt;
    return text(settings, components);
}

// Where days have 24 hours, so that it does not matter where the user is.
Calendar calendarOfGMT(Calendar calendar) {
    calendar.setTimeZone(TimeZone::gmt());
    return calendar;
}

void requireUnits(CalendarComponents units) {
    const auto isOther = [&](CalendarComponent unit) {
        return units.contains(unit) && std::ranges::find(spanUnits, unit) == spanUnits.end();
    };
    bool isWrong = units.isEmpty();
    for (auto unit = CalendarComponent::era; unit <= CalendarComponent::nanosecond;
         unit = static_cast<CalendarComponent>(static_cast<int>(unit) + 1))
        isWrong = isWrong || isOther(unit);
    if (isWrong)
        fatalError(
            "the allowed units have to be some of year, month, weekOfMonth, day, hour, minute and second",
            "VorlanFoundation/DateComponentsFormatter");
}

} // namespace

DateComponentsFormatter::DateComponentsFormatter()
    : state_(std::make_shared<detail::DateComponentsFormatterState>()) {}

DateComponentsFormatter::DateComponentsFormatter(std::shared_ptr<detail::DateComponentsFormatterState> state)
    : state_(std::move(state)) {}

DateComponentsFormatter DateComponentsFormatter::copy() const {
    return DateComponentsFormatter(
        std::make_shared<detail::DateComponentsFormatterState>(state_->settings()));
}

std::optional<std::string> DateComponentsFormatter::string(double seconds) const {
    if (!(std::fabs(seconds) <= longestSpan)) return std::nullopt;
    const auto settings = state_->made();
    const auto whole = static_cast<std::int64_t>(seconds);
    const auto& units = settings->allowedUnits;
    if (!units.contains(CalendarComponent::year) && !units.contains(CalendarComponent::month))
        return text(*settings, componentsOfSeconds(whole, units));
    return textOfSpan(*settings, calendarOfGMT(settings->calendar),
                      {.from = Date(0), .to = Date(static_cast<double>(whole))});
}

std::optional<std::string> DateComponentsFormatter::string(Span span) const {
    const auto settings = state_->made();
    return textOfSpan(*settings, settings->calendar, span);
}

std::optional<std::string> DateComponentsFormatter::string(const DateComponents& components) const {
    return text(*state_->made(), components);
}

CalendarComponents DateComponentsFormatter::allowedUnits() const {
    return state_->settings().allowedUnits;
}

void DateComponentsFormatter::setAllowedUnits(CalendarComponents units) {
    requireUnits(units);
    state_->change([=](Settings& settings) { settings.allowedUnits = units; });
}

UnitsStyle DateComponentsFormatter::unitsStyle() const {
    return state_->settings().unitsStyle;
}

void DateComponentsFormatter::setUnitsStyle(UnitsStyle style) {
    state_->change([=](Settings& settings) { settings.unitsStyle = style; });
}

ZeroFormattingBehavior DateComponentsFormatter::zeroFormattingBehavior() const {
    return state_->settings().zeros;
}

void DateComponentsFormatter::setZeroFormattingBehavior(ZeroFormattingBehavior behavior) {
    state_->change([=](Settings& settings) { settings.zeros = behavior; });
}

int DateComponentsFormatter::maximumUnitCount() const {
    return state_->settings().maximumUnitCount;
}

void DateComponentsFormatter::setMaximumUnitCount(int count) {
    state_->change([count = std::max(count, 0)](Settings& settings) { settings.maximumUnitCount = count; });
}

Calendar DateComponentsFormatter::calendar() const {
    const auto chosen = state_->settings().calendar;
    return chosen ? *chosen : currentRegion().calendar;
}

void DateComponentsFormatter::setCalendar(std::optional<Calendar> calendar) {
    state_->change([&](Settings& settings) { settings.calendar = std::move(calendar); });
}

} // namespace vorlan
