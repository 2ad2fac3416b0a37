// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Locale.h>

#include "platform/text/CurrentRegion.h"

#include <algorithm>
#include <string_view>

namespace vorlan {

namespace {

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

char raised(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isLetter(char c) {
    return lowered(c) >= 'a' && lowered(c) <= 'z';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isRegion(std::string_view part) {
    return (part.size() == 2 && std::ranges::all_of(part, isLetter)) ||
           (part.size() == 3 && std::ranges::all_of(part, isDigit));
}

// The parts of the identifier's name, before character set and modifier: "zh", "Hant", "TW".
std::string_view nextPart(std::string_view& rest) {
    const auto part = rest.substr(0, rest.find_first_of("_-"));
    rest.remove_prefix(std::min(part.size() + 1, rest.size()));
    return part;
}

} // namespace

Locale Locale::current() {
    return currentRegion().locale;
}

std::vector<Locale> Locale::preferredLanguages() {
    return currentRegion().preferredLanguages;
}

std::optional<std::string> Locale::languageCode() const {
    const auto end = identifier_.find_first_of("_-.@");
    std::string code = identifier_.substr(0, end);
    std::ranges::transform(code, code.begin(), lowered);
    const bool isCode = code.size() >= 2 && code.size() <= 8 &&
                        std::ranges::all_of(code, [](char c) { return c >= 'a' && c <= 'z'; });
    if (!isCode || code == "posix") return std::nullopt;
    return code;
}

std::optional<std::string> Locale::regionCode() const {
    auto rest = std::string_view(identifier_).substr(0, identifier_.find_first_of(".@"));
    nextPart(rest); // the language
    auto part = nextPart(rest);
    if (part.size() == 4 && std::ranges::all_of(part, isLetter)) part = nextPart(rest); // behind the script
    if (!isRegion(part)) return std::nullopt;
    std::string code(part);
    std::ranges::transform(code, code.begin(), raised);
    return code;
}

} // namespace vorlan
