// SPDX-License-Identifier: Apache-2.0
#pragma once

// Bytes as digits.

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vorlan::security {

/// Two digits a byte, small letters.
inline std::string hexadecimal(std::span<const std::byte> bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const auto byte : bytes) {
        text += digits[std::to_integer<std::size_t>(byte >> 4)];
        text += digits[std::to_integer<std::size_t>(byte & std::byte{15})];
    }
    return text;
}

/// The bytes that are written so; absent when the text is anything else.
template <std::size_t size>
std::optional<std::array<std::byte, size>> bytesFromHexadecimal(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::array<std::byte, size> bytes{};
    if (text.size() != 2 * size) return std::nullopt;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto digit = digits.find(text[i]);
        if (digit == std::string_view::npos) return std::nullopt;
        bytes[i / 2] = bytes[i / 2] << 4 | static_cast<std::byte>(digit);
    }
    return bytes;
}

} // namespace vorlan::security
