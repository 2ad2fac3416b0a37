// SPDX-License-Identifier: Apache-2.0
#include "platform/values/UTF8.h"

#include <cstdint>
#include <cstring>

namespace vorlan::utf8 {

namespace {

// What may follow a lead byte: how many bytes the sequence has, and the bounds of the second, which rule out
// over-long forms, surrogates and what is beyond U+10FFFF (table 3-7 of the Unicode standard).
struct SequenceForm {
    std::size_t length;
    unsigned char secondLow = 0x80;
    unsigned char secondHigh = 0xBF;
};

SequenceForm formOf(unsigned char lead) noexcept {
    if (lead < 0x80) return {1};
    if (lead < 0xC2) return {0};
    if (lead < 0xE0) return {2};
    if (lead < 0xF0)
        return {3, static_cast<unsigned char>(lead == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(lead == 0xED ? 0x9F : 0xBF)};
    if (lead < 0xF5)
        return {4, static_cast<unsigned char>(lead == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(lead == 0xF4 ? 0x8F : 0xBF)};
    return {0};
}

std::uint64_t load(const char* bytes) noexcept {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// How many bytes come before the first that is not ASCII. In words, and four of these at a time, for texts are mostly
// long runs of it.
std::size_t asciiLength(std::string_view text) noexcept {
    constexpr std::uint64_t highBits = 0x8080'8080'8080'8080;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (end - at >= 32 && ((load(at) | load(at + 8) | load(at + 16) | load(at + 24)) & highBits) == 0)
        at += 32;
    while (end - at >= 8 && (load(at) & highBits) == 0) at += 8;
    while (at != end && static_cast<unsigned char>(*at) < 0x80) ++at;
    return static_cast<std::size_t>(at - text.data());
}

} // namespace

Prefix firstCharacter(std::string_view text) noexcept {
    const auto lead = static_cast<unsigned char>(text[0]);
    const auto form = formOf(lead);
    if (form.length == 0) return {1, replacementCharacter, false};
    if (form.length == 1) return {1, lead};
    char32_t character = lead & (0x7F >> form.length);
    for (std::size_t i = 1; i < form.length; ++i) {
        const auto low = i == 1 ? form.secondLow : 0x80;
        const auto high = i == 1 ? form.secondHigh : 0xBF;
        if (i >= text.size()) return {i, replacementCharacter, false};
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < low || byte > high) return {i, replacementCharacter, false};
        character = (character << 6) | (byte & 0x3F);
    }
    return {form.length, character};
}

bool isASCII(std::string_view text) noexcept {
    return asciiLength(text) == text.size();
}

std::size_t wellFormedLength(std::string_view text) noexcept {
    const auto size = text.size();
    while (true) {
        text.remove_prefix(asciiLength(text));
        if (text.empty()) return size;
        // One script's characters come in runs.
        do {
            const auto length = characterLength(text.data(), text.size());
            if (length == 0) return size - text.size();
            text.remove_prefix(length);
        } while (!text.empty() && static_cast<unsigned char>(text[0]) >= 0x80);
    }
}

bool isWellFormed(std::string_view text) noexcept {
    return wellFormedLength(text) == text.size();
}

void append(std::string& text, char32_t character) {
    const auto put = [&](char32_t bits) { text += static_cast<char>(static_cast<unsigned char>(bits)); };
    if (character < 0x80) {
        put(character);
        return;
    }
    if (character < 0x800) {
        put(0xC0 | (character >> 6));
    } else {
        if (character < 0x10000) {
            put(0xE0 | (character >> 12));
        } else {
            put(0xF0 | (character >> 18));
            put(0x80 | ((character >> 12) & 0x3F));
        }
        put(0x80 | ((character >> 6) & 0x3F));
    }
    put(0x80 | (character & 0x3F));
}

} // namespace vorlan::utf8
