// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Text.h>

#include "platform/values/UTF8.h"

namespace vorlan {

namespace {

// White_Space of the Unicode character database, less what is only a control character.
bool isBlank(char32_t character) noexcept {
    return (character >= 0x09 && character <= 0x0D) || character == 0x20 || character == 0x85 ||
           character == 0xA0 || character == 0x1680 || (character >= 0x2000 && character <= 0x200A) ||
           character == 0x2028 || character == 0x2029 || character == 0x202F || character == 0x205F ||
           character == 0x3000;
}

} // namespace

bool isBlankText(std::string_view text) noexcept {
    while (!text.empty()) {
        const auto first = utf8::firstCharacter(text);
        if (!isBlank(first.character)) return false;
        text.remove_prefix(first.length);
    }
    return true;
}

} // namespace vorlan
