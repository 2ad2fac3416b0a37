// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONRandomValues.h"

#include <bit>
#include <cmath>
#include <utility>

namespace vorlan::tests {

namespace {

void appendByte(std::string& text, char32_t byte) {
    text += static_cast<char>(static_cast<unsigned char>(byte));
}

void appendContinuation(std::string& text, char32_t bits) {
    appendByte(text, 0x80 | (bits & 0x3F));
}

} // namespace

void appendLetter(std::string& text, char32_t letter) {
    if (letter < 0x80) return appendByte(text, letter);
    if (letter < 0x800) {
        appendByte(text, 0xC0 | letter >> 6);
    } else if (letter < 0x10000) {
        appendByte(text, 0xE0 | letter >> 12);
        appendContinuation(text, letter >> 6);
    } else {
        appendByte(text, 0xF0 | letter >> 18);
        appendContinuation(text, letter >> 12);
        appendContinuation(text, letter >> 6);
    }
    appendContinuation(text, letter);
}

Value JSONRandomValues::document(int depth) {
    if (depth == 0) return value(0);
    return below(2) == 0 ? array(depth) : dictionary(depth);
}

Value JSONRandomValues::value(int depth) {
    switch (below(depth > 0 ? 11 : 7)) {
    case 0: return nullptr;
    case 1: return below(2) == 1;
    case 2:
    case 3: return integer();
    case 4: return number();
    case 5:
    case 6: return text(12);
    case 7:
    case 8: return array(depth);
    default: return dictionary(depth);
    }
}

Value JSONRandomValues::array(int depth) {
    Value::Array array;
    for (auto count = below(5); count > 0; --count) array.push_back(value(depth - 1));
    return array;
}

Value JSONRandomValues::dictionary(int depth) {
    Value::Dictionary dictionary;
    for (auto count = below(5); count > 0; --count) {
        std::string name = text(6);
        dictionary.insert_or_assign(std::move(name), value(depth - 1));
    }
    return dictionary;
}

Value JSONRandomValues::integer() {
    const std::uint64_t bits = random_() >> below(64);
    if (below(2) == 0) return bits;
    return static_cast<std::int64_t>(~bits);
}

double JSONRandomValues::number() {
    while (true) {
        const auto number = std::bit_cast<double>(random_());
        if (std::isfinite(number)) return number;
    }
}

float JSONRandomValues::smallNumber() {
    while (true) {
        const auto number = std::bit_cast<float>(static_cast<std::uint32_t>(random_()));
        if (std::isfinite(number)) return number;
    }
}

std::string JSONRandomValues::text(std::size_t maximum) {
    std::string text;
    for (auto count = below(maximum + 1); count > 0; --count) {
        const bool plain = below(2) == 0;
        const auto letter = static_cast<char32_t>(plain ? below(0x80) : below(0x110000 - 0x800));
        appendLetter(text, letter < 0xD800 ? letter : letter + 0x800);
    }
    return text;
}

} // namespace vorlan::tests
