// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/EntryChecking.h"

#include "tools/strings/FormatShape.h"
#include "tools/support/Quoting.h"

#include <VorlanFoundation/Platform/TextFormat.h>

#include <algorithm>
#include <cstddef>
#include <optional>

namespace tool {

using vorlan::FormatDirective;
using vorlan::PluralCategory;
using vorlan::PluralVariable;
using vorlan::StringTableEntry;

namespace {

std::string describedVariables(const StringTableEntry& entry) {
    std::string list;
    for (const auto& [name, variable] : entry.variables) list.append(list.empty() ? "" : ", ").append(name);
    return "(" + list + ")";
}

bool haveSameVariables(const StringTableEntry& a, const StringTableEntry& b) {
    return std::ranges::equal(
        a.variables, b.variables, {}, [](const auto& named) { return named.first; },
        [](const auto& named) { return named.first; });
}

const ChoosingNumbers& numbersFor(const PluralVariable& variable, const PluralForms& forms) {
    return kindOf(variable) == FormatDirective::Kind::integer ? forms.byIntegers : forms.byNumbers;
}

bool isChosen(std::size_t category, const PluralForms& forms) {
    return forms.byNumbers[category] || forms.byLargeNumbers[category];
}

// "zero" is chosen by 0 in all languages, "other" in place of all that are missing.
bool mayBeUnused(std::size_t category) {
    return category != static_cast<std::size_t>(PluralCategory::zero) &&
           category != static_cast<std::size_t>(PluralCategory::other);
}

// A number of the variables that chooses another form than "other", absent where none does.
std::optional<std::string> numberInNeed(const StringTableEntry& entry, const PluralForms& forms) {
    for (const auto& [name, variable] : entry.variables) {
        const auto& numbers = numbersFor(variable, forms);
        for (std::size_t category = 0; category < static_cast<std::size_t>(PluralCategory::other); ++category)
            if (numbers[category]) return numbers[category];
    }
    return std::nullopt;
}

} // namespace

std::vector<Remark> remarksOnGaps(const StringTableEntry& entry, const StringTableEntry* original) {
    std::vector<Remark> remarks;
    const bool mayBeNoFormat = original == nullptr || formatShape(*original).mayBeNoFormat;
    for (auto& misfit : formatShape(entry).misfits) {
        const bool isBearable = misfit.kind == unknownDirective && mayBeNoFormat;
        remarks.push_back(
            {isBearable ? Severity::warning : Severity::error, misfit.kind, std::move(misfit.message)});
    }
    return remarks;
}

std::vector<Remark> remarksOnTranslation(const StringTableEntry& entry, const StringTableEntry& original,
                                         const std::string& originalLanguage) {
    const auto shape = formatShape(entry);
    const auto wanted = formatShape(original);
    if (!shape.misfits.empty() || !wanted.misfits.empty()) return {};
    const auto behind = ", in " + quotedText(originalLanguage) + " ";
    if (shape.arguments != wanted.arguments)
        return {
            {wanted.mayBeNoFormat ? Severity::warning : Severity::error, "format",
             "takes " + describedArguments(shape.arguments) + behind + describedArguments(wanted.arguments)}};
    const bool haveBoth = !entry.variables.empty() && !original.variables.empty();
    if (haveBoth && !haveSameVariables(entry, original))
        return {{Severity::warning, "variables",
                 "has the variables " + describedVariables(entry) + behind + describedVariables(original)}};
    return {};
}

std::vector<Remark> remarksOnForms(const StringTableEntry& entry, const StringTableEntry* original,
                                   const PluralForms& forms, const std::string& language) {
    std::vector<Remark> remarks;
    const auto add = [&](std::string_view kind, const std::string& message) {
        remarks.push_back({Severity::warning, kind, message});
    };
    if (entry.variables.empty() && original != nullptr)
        if (const auto number = numberInNeed(*original, forms))
            add("missing-form",
                "has no plural forms, which " + quotedText(language) + " needs for " + *number);
    for (const auto& [name, variable] : entry.variables) {
        const auto& needed = numbersFor(variable, forms);
        for (std::size_t category = 0; category < needed.size(); ++category) {
            const auto form = quotedText(categoryName(category)) + " of " + quotedText(name) + ", which " +
                              quotedText(language) + " has for ";
            const bool isThere = variable.forms[category].has_value();
            if (!isThere && needed[category])
                add("missing-form", "lacks the form " + form + *needed[category]);
            if (isThere && mayBeUnused(category) && !isChosen(category, forms))
                add("unused-form", "has the form " + form + "no number");
        }
    }
    return remarks;
}

} // namespace tool
