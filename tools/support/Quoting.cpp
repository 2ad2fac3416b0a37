// SPDX-License-Identifier: Apache-2.0
#include "tools/support/Quoting.h"

#include <VorlanFoundation/Platform/Describe.h>

namespace tool {

namespace {

void appendEscaped(std::string& out, char character) {
    constexpr std::string_view hexDigits = "0123456789abcdef";
    switch (character) {
    case '"': out += "\\\""; return;
    case '\\': out += "\\\\"; return;
    case '\n': out += "\\n"; return;
    case '\r': out += "\\r"; return;
    case '\t': out += "\\t"; return;
    default: break;
    }
    const auto code = static_cast<unsigned char>(character);
    if (code >= 0x20 && code != 0x7F) {
        out += character;
    } else {
        out += "\\u00";
        out += hexDigits[code >> 4];
        out += hexDigits[code & 0xF];
    }
}

} // namespace

std::string inQuotes(std::string_view word) {
    return "'" + vorlan::describe(word) + "'";
}

std::string quotedText(std::string_view text) {
    std::string out = "\"";
    for (const char character : vorlan::describe(text)) appendEscaped(out, character);
    return out + '"';
}

} // namespace tool
