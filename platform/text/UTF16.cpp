// SPDX-License-Identifier: Apache-2.0
#include "platform/text/UTF16.h"

#include <algorithm>
#include <unicode/bytestream.h>
#include <unicode/stringpiece.h>

namespace vorlan {

icu::UnicodeString utf16FromUTF8(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

std::string utf8FromUTF16(const icu::UnicodeString& text) {
    const std::u16string_view units(text.getBuffer(), static_cast<std::size_t>(text.length()));
    // As nearly all are. ICU's conversion would take a tenth of the time that it takes to write a number.
    if (std::ranges::all_of(units, [](char16_t unit) { return unit < 0x80; }))
        return std::string(units.begin(), units.end());
    std::string result;
    result.reserve(static_cast<std::size_t>(text.length()));
    icu::StringByteSink<std::string> sink(&result);
    text.toUTF8(sink);
    return result;
}

} // namespace vorlan
