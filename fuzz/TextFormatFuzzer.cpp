// SPDX-License-Identifier: Apache-2.0
// Any format with any arguments and variables gives a well-formed text, no longer than its gaps may be wide.

#include "fuzz/Fuzzing.h"
#include "platform/values/UTF8.h"

#include <VorlanFoundation/Platform/Problems.h>
#include <VorlanFoundation/Platform/TextFormat.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

using namespace vorlan;
using fuzzing::Input;

namespace {

constexpr std::array localeNames{"en_US", "de_DE", "fr_FR", "ar_EG", "ru_RU", "ja_JP", "hi_IN", "C", "xx"};
constexpr std::array variableNames{"a", "b", "c"};

FormatArgument argument(Input& input) {
    switch (input.byte() % 6) {
    case 0: return static_cast<std::int64_t>(input.number());
    case 1: return input.number();
    case 2: return std::bit_cast<double>(input.number());
    case 3: return input.byte();
    case 4: return static_cast<double>(input.byte()) / 8;
    default: return input.line();
    }
}

FormatCustom custom(Input& input) {
    FormatCustom result;
    const auto choice = input.byte();
    const auto locale = [&] { return Locale(localeNames.at(input.byte() % localeNames.size())); };
    if (choice & 1) result.locale = locale();
    if (choice & 2) result.pluralRules = locale();
    return result;
}

StringTableEntry entry(Input& input) {
    StringTableEntry result{.text = input.line()};
    for (std::size_t i = input.byte() % (variableNames.size() + 1); i > 0; --i) {
        auto& variable = result.variables[variableNames.at(i - 1)];
        variable.valueType = input.line();
        const auto forms = input.byte();
        for (std::size_t form = 0; form < variable.forms.size(); ++form)
            if (forms & (1U << form)) variable.forms.at(form) = input.line();
    }
    return result;
}

// What a format is at most long: a gap takes two bytes at least, and is as wide as it may be, with digits of four bytes
// and what separates them.
std::size_t mostLength(std::size_t formatLength, const std::vector<FormatArgument>& arguments) {
    std::size_t longest = 4096 * std::size_t{8};
    for (const auto& each : arguments)
        if (const auto* text = std::get_if<std::string>(&each.content()))
            longest = std::max(longest, text->size() + 4096);
    return 3 * formatLength + (formatLength / 2 + 1) * longest;
}

void requireOrder(const std::string& format) {
    std::size_t end = 0;
    for (const auto& each : formatDirectives(format)) {
        fuzzing::require(each.offset < format.size() && each.length > 0 &&
                             each.length <= format.size() - each.offset,
                         "a gap lies in its format");
        if (format[each.offset] == '*') continue; // which lies in the gap after it
        fuzzing::require(each.offset >= end && format[each.offset] == '%', "gaps come one after the other");
        end = each.offset + each.length;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    setProblemHandler([](std::string_view message, std::string_view) {
        fuzzing::require(utf8::isWellFormed(message), "what is reported is well-formed");
    });
    Input input(data, size);
    const auto settings = custom(input);
    std::vector<FormatArgument> arguments;
    for (int i = input.byte() % 5; i > 0; --i) arguments.push_back(argument(input));
    const auto text = entry(input);
    requireOrder(text.text);
    const auto plain = formatText(text.text, arguments, settings);
    fuzzing::require(utf8::isWellFormed(plain), "a text is well-formed");
    fuzzing::require(plain.size() <= mostLength(text.text.size(), arguments), "a text is not too long");
    const auto plural = formatText(text, arguments, settings);
    fuzzing::require(utf8::isWellFormed(plural), "a text with variables is well-formed");
    // 32 forms are taken at most, each of which is part of the input.
    fuzzing::require(plural.size() <= 33 * mostLength(size, arguments),
                     "a text with variables is not too long");
    return 0;
}
