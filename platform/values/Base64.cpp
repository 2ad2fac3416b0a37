// SPDX-License-Identifier: Apache-2.0
#include "platform/values/Base64.h"

#include <array>
#include <cstdint>

namespace vorlan {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char padding = '=';

constexpr std::uint32_t notInAlphabet = 0x80;

constexpr auto valuesOfCharacters = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(notInAlphabet);
    for (std::size_t value = 0; value < alphabet.size(); ++value)
        values[static_cast<unsigned char>(alphabet[value])] = static_cast<std::uint8_t>(value);
    return values;
}();

std::uint32_t valueOf(char character) noexcept {
    return valuesOfCharacters[static_cast<unsigned char>(character)];
}

// Four characters for the three lower bytes of `bits`.
void writeGroup(std::uint32_t bits, char* text) noexcept {
    for (int index = 0; index < 4; ++index) text[index] = alphabet[(bits >> (18 - 6 * index)) & 0x3F];
}

// Decodes what is left but a last group with padding; `text` is that many times four characters. False when one of
// them is none of the alphabet's.
bool readGroups(std::string_view text, std::byte* bytes) noexcept {
    std::uint32_t seen = 0;
    for (std::size_t at = 0; at < text.size(); at += 4) {
        const std::array values{valueOf(text[at]), valueOf(text[at + 1]), valueOf(text[at + 2]),
                                valueOf(text[at + 3])};
        seen |= values[0] | values[1] | values[2] | values[3];
        const auto bits = values[0] << 18 | values[1] << 12 | values[2] << 6 | values[3];
        *bytes++ = static_cast<std::byte>(bits >> 16);
        *bytes++ = static_cast<std::byte>(bits >> 8);
        *bytes++ = static_cast<std::byte>(bits);
    }
    return (seen & notInAlphabet) == 0;
}

// The bytes of a last group, two or three characters without their padding.
bool readLastGroup(std::string_view text, std::byte* bytes) noexcept {
    std::uint32_t bits = 0;
    for (const char character : text) {
        if (valueOf(character) == notInAlphabet) return false;
        bits = bits << 6 | valueOf(character);
    }
    const auto unused = text.size() == 2 ? 4 : 2;
    if ((bits & ((1U << unused) - 1)) != 0) return false;
    bits >>= unused;
    if (text.size() == 3) *bytes++ = static_cast<std::byte>(bits >> 8);
    *bytes = static_cast<std::byte>(bits);
    return true;
}

} // namespace

void writeBase64(std::span<const std::byte> data, char* text) noexcept {
    const auto byte = [&](std::size_t index) { return std::to_integer<std::uint32_t>(data[index]); };
    std::size_t at = 0;
    for (; data.size() - at >= 3; at += 3, text += 4)
        writeGroup(byte(at) << 16 | byte(at + 1) << 8 | byte(at + 2), text);
    const auto left = data.size() - at;
    if (left == 0) return;
    writeGroup(byte(at) << 16 | (left == 2 ? byte(at + 1) << 8 : 0), text);
    text[3] = padding;
    if (left == 1) text[2] = padding;
}

std::string base64FromData(std::span<const std::byte> data) {
    std::string text(base64Length(data.size()), padding);
    writeBase64(data, text.data());
    return text;
}

std::optional<Data> dataFromBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    if (text.empty()) return Data();
    const std::size_t padded = !text.ends_with(padding) ? 0 : text.ends_with("==") ? 2 : 1;
    const auto whole = padded == 0 ? text.size() : text.size() - 4;
    Data data(text.size() / 4 * 3 - padded);
    if (!readGroups(text.substr(0, whole), data.data())) return std::nullopt;
    if (padded != 0 && !readLastGroup(text.substr(whole, 4 - padded), data.data() + whole / 4 * 3))
        return std::nullopt;
    return data;
}

} // namespace vorlan
