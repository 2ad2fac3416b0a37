// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONFieldNames.h>

#include <VorlanFoundation/Platform/FatalError.h>

#include <algorithm>

namespace vorlan::detail {
namespace {

bool isUpper(char character) {
    return character >= 'A' && character <= 'Z';
}

char lowered(char character) {
    return isUpper(character) ? static_cast<char>(character - 'A' + 'a') : character;
}

// A word begins at an upper letter that follows a lower one, and at the last of several upper letters when a lower one
// comes after it: "userID" has two words, and so has "HTMLText".
bool beginsWord(std::string_view name, std::size_t at) {
    if (at == 0 || !isUpper(name[at]) || name[at - 1] == '_') return false;
    if (!isUpper(name[at - 1])) return true;
    return at + 1 < name.size() && name[at + 1] >= 'a' && name[at + 1] <= 'z';
}

std::string snakeCase(std::string_view name) {
    std::string text;
    for (std::size_t at = 0; at < name.size(); ++at) {
        if (beginsWord(name, at)) text += '_';
        text += lowered(name[at]);
    }
    return text;
}

std::string repeatedOf(std::vector<std::string_view> names) {
    std::ranges::sort(names);
    const auto same = std::ranges::adjacent_find(names);
    return same == names.end() ? std::string() : std::string(*same);
}

} // namespace

JSONFieldNames::JSONFieldNames(std::span<const std::string_view> names) : declared_(names) {
    snakeCaseTexts_.reserve(names.size());
    for (const std::string_view name : names) snakeCaseTexts_.push_back(snakeCase(name));
    snakeCase_.assign(snakeCaseTexts_.begin(), snakeCaseTexts_.end());
    repeated_ = repeatedOf(snakeCase_);
}

std::span<const std::string_view> JSONFieldNames::snakeCased() const {
    if (!repeated_.empty())
        fatalError("two members are called \"" + repeated_ + "\" in JSON", "VorlanFoundation/Codable");
    return snakeCase_;
}

} // namespace vorlan::detail
