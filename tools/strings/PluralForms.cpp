// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/PluralForms.h"

#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/TextFormat.h>

#include <algorithm>
#include <cstdint>

namespace tool {

using vorlan::Locale;
using vorlan::PluralCategory;

namespace {

void note(ChoosingNumbers& numbers, PluralCategory category, const std::string& number) {
    auto& first = numbers[static_cast<std::size_t>(category)];
    if (!first) first = number;
}

void noteInteger(PluralForms& forms, std::int64_t number, const Locale& locale) {
    const auto category = pluralCategory(number, locale);
    note(forms.byIntegers, category, std::to_string(number));
    note(forms.byNumbers, category, std::to_string(number));
}

void noteNumber(PluralForms& forms, double number, int digits, const Locale& locale) {
    const auto text = vorlan::formatText("%.*f", {digits, number});
    note(forms.byNumbers, pluralCategory(number, digits, locale), text);
}

} // namespace

PluralForms pluralForms(const std::string& language) {
    auto identifier = language;
    std::ranges::replace(identifier, '-', '_');
    const Locale locale(identifier);
    PluralForms forms;
    for (std::int64_t number = 0; number <= 200; ++number) noteInteger(forms, number, locale);
    noteInteger(forms, 1'000, locale);
    for (const std::int64_t number : {1'000'000, 1'000'001, 2'000'000})
        note(forms.byLargeNumbers, pluralCategory(number, locale), std::to_string(number));
    for (int tenths = 0; tenths <= 250; ++tenths) noteNumber(forms, tenths / 10.0, 1, locale);
    for (int hundredths = 0; hundredths <= 250; ++hundredths)
        noteNumber(forms, hundredths / 100.0, 2, locale);
    return forms;
}

std::string_view categoryName(std::size_t category) {
    return vorlan::rawValue(static_cast<PluralCategory>(category));
}

} // namespace tool
