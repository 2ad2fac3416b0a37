// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NumberFormatter.h>

#include "platform/text/CurrentRegion.h"
#include "platform/text/FormatterState.h"
#include "platform/text/NumberFormat.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <memory>
#include <utility>

namespace vorlan {

namespace detail {

/// What can be set of a formatter. What is absent is the style's, or the user's.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct NumberFormatterSettings {
    NumberFormatter::Style style = NumberFormatter::Style::none;
    NumberFormatter::RoundingMode roundingMode = NumberFormatter::RoundingMode::halfEven;
    std::optional<int> minimumFractionDigits;
    std::optional<int> maximumFractionDigits;
    std::optional<bool> usesGroupingSeparator;
    std::optional<Locale> locale;

    std::shared_ptr<const NumberFormat> make(const CurrentRegion& user) const {
        return NumberFormat::forLayout({.locale = locale.value_or(user.locale),
                                        .style = style,
                                        .roundingMode = roundingMode,
                                        .minimumFractionDigits = minimumFractionDigits,
                                        .maximumFractionDigits = maximumFractionDigits,
                                        .usesGroupingSeparator = usesGroupingSeparator});
    }
};

/// What a formatter and its copies share.
///
/// Threads: safe from any thread.
class NumberFormatterState : public FormatterState<NumberFormatterSettings, NumberFormat> {
public:
    using FormatterState::FormatterState;
};

} // namespace detail

namespace {

using Settings = detail::NumberFormatterSettings;

int digitCount(int digits) {
    return std::clamp(digits, 0, NumberDigits::limit);
}

// The number that has the digits by which a float is known.
double byShortestDigits(float number) {
    if (!std::isfinite(number)) return static_cast<double>(number);
    std::array<char, 32> digits;
    const auto written = std::to_chars(digits.begin(), digits.end(), number);
    double result = 0;
    std::from_chars(digits.begin(), written.ptr, result);
    return result;
}

} // namespace

NumberFormatter::NumberFormatter() : state_(std::make_shared<detail::NumberFormatterState>()) {}

NumberFormatter::NumberFormatter(std::shared_ptr<detail::NumberFormatterState> state)
    : state_(std::move(state)) {}

NumberFormatter NumberFormatter::copy() const {
    return NumberFormatter(std::make_shared<detail::NumberFormatterState>(state_->settings()));
}

std::string NumberFormatter::string(double number) const {
    return state_->made()->string(number);
}

std::string NumberFormatter::string(std::int64_t number) const {
    return state_->made()->string(number);
}

std::string NumberFormatter::string(float number) const {
    return string(byShortestDigits(number));
}

std::optional<double> NumberFormatter::number(std::string_view text) const {
    return state_->made()->number(text);
}

NumberFormatter::Style NumberFormatter::numberStyle() const {
    return state_->settings().style;
}

void NumberFormatter::setNumberStyle(Style style) {
    state_->change([=](Settings& settings) { settings.style = style; });
}

int NumberFormatter::minimumFractionDigits() const {
    return state_->made()->digits().minimumFractionDigits;
}

void NumberFormatter::setMinimumFractionDigits(int digits) {
    state_->change([least = digitCount(digits)](Settings& settings) {
        settings.minimumFractionDigits = least;
        if (auto& most = settings.maximumFractionDigits) most = std::max(*most, least);
    });
}

int NumberFormatter::maximumFractionDigits() const {
    return state_->made()->digits().maximumFractionDigits;
}

void NumberFormatter::setMaximumFractionDigits(int digits) {
    state_->change([most = digitCount(digits)](Settings& settings) {
        settings.maximumFractionDigits = most;
        if (auto& least = settings.minimumFractionDigits) least = std::min(*least, most);
    });
}

NumberFormatter::RoundingMode NumberFormatter::roundingMode() const {
    return state_->settings().roundingMode;
}

void NumberFormatter::setRoundingMode(RoundingMode mode) {
    state_->change([=](Settings& settings) { settings.roundingMode = mode; });
}

bool NumberFormatter::usesGroupingSeparator() const {
    return state_->made()->digits().usesGroupingSeparator;
}

void NumberFormatter::setUsesGroupingSeparator(bool grouping) {
    state_->change([=](Settings& settings) { settings.usesGroupingSeparator = grouping; });
}

Locale NumberFormatter::locale() const {
    const auto chosen = state_->settings().locale;
    return chosen ? *chosen : currentRegion().locale;
}

void NumberFormatter::setLocale(std::optional<Locale> locale) {
    state_->change([&](Settings& settings) { settings.locale = std::move(locale); });
}

} // namespace vorlan
