// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/PluralChoice.h"

#include "platform/localization/FormatReader.h"
#include "platform/localization/GapText.h"
#include "platform/localization/PluralRules.h"
#include "platform/localization/PrintedNumber.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <variant>

namespace vorlan {

namespace {

using Content = FormatArgument::Content;
using Kind = FormatDirective::Kind;

const std::optional<std::string>& formOf(const PluralVariable& variable, PluralCategory category) {
    return variable.forms[static_cast<std::size_t>(category)];
}

template <class Number>
bool readNumber(std::string_view text, Content& content) {
    Number number{};
    const auto end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end) return false;
    if constexpr (std::is_floating_point_v<Number>)
        if (!std::isfinite(number)) return false;
    content = number;
    return true;
}

// Turns the text of a number into that; says whether it is a number in the end.
bool makeNumber(Content& content) {
    const auto* text = std::get_if<std::string>(&content);
    if (text == nullptr) return true;
    const auto number = *text; // which is overwritten
    return readNumber<std::int64_t>(number, content) || readNumber<std::uint64_t>(number, content) ||
           readNumber<double>(number, content);
}

// The first gap that is for the number.
std::optional<FormatGap> gapForNumber(std::string_view format) {
    FormatReader reader(format);
    while (auto gap = reader.next()) {
        const bool isForArgument =
            gap->kind != Kind::percent && gap->kind != Kind::unknown && gap->kind != Kind::variable;
        if (isForArgument && gap->argument == 0) return gap;
    }
    return std::nullopt;
}

std::optional<FormatGap> gapFor(const PluralVariable& variable) {
    if (const auto& other = formOf(variable, PluralCategory::other))
        if (auto gap = gapForNumber(*other); gap && !gap->precisionBy) return gap;
    return gapForNumber("%" + variable.valueType);
}

int shownFractionDigits(const PluralVariable& variable, const Content& number) {
    auto form = GapForm{};
    auto gap = gapFor(variable);
    if (gap) form = gap->form;
    const bool isShownWhole = !gap || gap->kind != Kind::number;
    if (isShownWhole && !std::holds_alternative<double>(number)) return 0;
    form.width = 0;
    return fractionDigitsOf(gapText(form, number, nullptr));
}

PluralCategory categoryOf(const PluralVariable& variable, const Content& number, const Locale& rules) {
    const int digits = shownFractionDigits(variable, number);
    if (const auto* value = std::get_if<double>(&number)) return pluralCategory(*value, digits, rules);
    if (const auto* value = std::get_if<std::int64_t>(&number))
        return digits == 0 ? pluralCategory(*value, rules)
                           : pluralCategory(static_cast<double>(*value), digits, rules);
    const auto value = std::get<std::uint64_t>(number);
    return digits == 0 ? pluralCategoryOfUnsigned(value, rules)
                       : pluralCategory(static_cast<double>(value), digits, rules);
}

bool isZero(const Content& number) {
    return number == Content(std::int64_t{0}) || number == Content(0.0);
}

} // namespace

PluralChoice choosePluralForm(const PluralVariable& variable, const Content& argument, const Locale& rules) {
    PluralChoice choice{.number = argument};
    choice.isNumber = makeNumber(choice.number);
    const auto choose = [&](PluralCategory category) {
        if (const auto& form = formOf(variable, category); form && choice.form == nullptr)
            choice.form = &*form;
    };
    if (choice.isNumber && isZero(choice.number)) choose(PluralCategory::zero);
    if (choice.isNumber) choose(categoryOf(variable, choice.number, rules));
    choose(PluralCategory::other);
    return choice;
}

} // namespace vorlan
