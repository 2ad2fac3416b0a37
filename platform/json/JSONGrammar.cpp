// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONGrammar.h"

#include "platform/values/UTF8.h"

namespace vorlan::json {
namespace {

// What a hexadecimal digit stands for; 16 for any other byte.
unsigned hexadecimal(char character) {
    if (isDigit(character)) return static_cast<unsigned>(character - '0');
    if (character >= 'a' && character <= 'f') return static_cast<unsigned>(character - 'a' + 10);
    if (character >= 'A' && character <= 'F') return static_cast<unsigned>(character - 'A' + 10);
    return 16;
}

bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// The four digits of an escape.
char32_t unitAt(const char* at) {
    char32_t unit = 0;
    for (const char character : std::string_view(at, 4)) unit = unit * 16 + hexadecimal(character);
    return unit;
}

bool hasFourDigits(const char* at, Fault& fault) {
    for (int count = 0; count < 4; ++count, ++at) {
        if (hexadecimal(*at) < 16) continue;
        fault = {at, "expected four hexadecimal digits"};
        return false;
    }
    return true;
}

// `at` is at the backslash of an escape by number, which stands for half of a pair of them, or for a character.
const char* numericEscapeEnd(const char* at, Fault& fault) {
    if (!hasFourDigits(at + 2, fault)) return nullptr;
    const char32_t unit = unitAt(at + 2);
    if (!isHighSurrogate(unit) && !isLowSurrogate(unit)) return at + 6;
    if (isHighSurrogate(unit) && at[6] == '\\' && at[7] == 'u') {
        if (!hasFourDigits(at + 8, fault)) return nullptr;
        if (isLowSurrogate(unitAt(at + 8))) return at + 12;
    }
    fault = {at, "half of a surrogate pair is no character"};
    return nullptr;
}

const char* escapeEnd(const char* at, Fault& fault) {
    switch (at[1]) {
    case '"':
    case '\\':
    case '/':
    case 'b':
    case 'f':
    case 'n':
    case 'r':
    case 't': return at + 2;
    case 'u': return numericEscapeEnd(at, fault);
    default: fault = {at + 1, "there is no such escape"}; return nullptr;
    }
}

// The end of the characters that are not ASCII from here on; one is what `plainEnd` stopped at, or it is a control
// character. Zeros follow the text, so that a character that is cut off is none.
const char* nonASCIIEnd(const char* at, Fault& fault) {
    if (static_cast<unsigned char>(*at) < 0x80) {
        fault = {at, "a control character within a string has to be escaped"};
        return nullptr;
    }
    while (static_cast<unsigned char>(*at) >= 0x80) {
        const auto length = utf8::characterLength(at, padding);
        if (length == 0) {
            fault = {at, {}}; // What it is, is seen there.
            return nullptr;
        }
        at += length;
    }
    return at;
}

char shortEscape(char character) {
    switch (character) {
    case 'b': return '\b';
    case 'f': return '\f';
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    default: return character;
    }
}

const char* appendEscape(std::string& out, const char* at) {
    if (at[1] != 'u') {
        out += shortEscape(at[1]);
        return at + 2;
    }
    const char32_t unit = unitAt(at + 2);
    if (!isHighSurrogate(unit)) {
        utf8::append(out, unit);
        return at + 6;
    }
    utf8::append(out, 0x10000 + ((unit - 0xD800) << 10) + (unitAt(at + 8) - 0xDC00));
    return at + 12;
}

} // namespace

ScannedText scanOtherText(const char* at, Fault& fault) {
    bool hasEscapes = false;
    for (; *at != '"'; at = plainEnd(at)) {
        if (*at == '\\') {
            hasEscapes = true;
            at = escapeEnd(at, fault);
        } else {
            at = nonASCIIEnd(at, fault);
        }
        if (at == nullptr) return {};
    }
    return {at, hasEscapes};
}

void appendUnescaped(std::string& out, const char* at, const char* end) {
    while (at != end) {
        const auto* const backslash =
            static_cast<const char*>(std::memchr(at, '\\', static_cast<std::size_t>(end - at)));
        out.append(at, backslash != nullptr ? backslash : end);
        at = backslash != nullptr ? appendEscape(out, backslash) : end;
    }
}

const char* scanLiteral(const char* at, std::string_view literal, Fault& fault) {
    for (const char character : literal) {
        if (*at++ == character) continue;
        fault = {at - 1, "expected a value"};
        return nullptr;
    }
    return at;
}

} // namespace vorlan::json
