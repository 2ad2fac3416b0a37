// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Locale.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace vorlan {

namespace {

std::string_view environment(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr ? value : std::string_view();
}

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

Locale Locale::current() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (const auto identifier = environment(variable); !identifier.empty())
            return Locale(std::string(identifier));
    return Locale("C");
}

std::vector<Locale> Locale::preferredLanguages() {
    std::vector<Locale> languages;
    const auto current = Locale::current();
    if (!current.languageCode()) return languages; // as gettext: "C" is a wish for no translation at all
    for (auto rest = environment("LANGUAGE"); !rest.empty();) {
        const auto identifier = rest.substr(0, rest.find(':'));
        if (!identifier.empty()) languages.emplace_back(std::string(identifier));
        rest.remove_prefix(std::min(identifier.size() + 1, rest.size()));
    }
    languages.push_back(current);
    return languages;
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

} // namespace vorlan
