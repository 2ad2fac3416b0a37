// SPDX-License-Identifier: Apache-2.0
#pragma once

// Bytes as digits.

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vorlan::security {

/// Two digits a byte, small letters.
inline std::string hexadecimal(std::span<const std::byte> bytes) {
    static constexpr auto pairs = [] {
        constexpr std::string_view digits = "0123456789abcdef";
        std::array<std::array<char, 2>, 256> all{};
        for (std::size_t byte = 0; byte < all.size(); ++byte)
            all[byte] = {digits[byte / 16], digits[byte % 16]};
        return all;
    }();
    std::string text(2 * bytes.size(), '0');
    char* place = text.data();
    for (const auto byte : bytes)
        place = std::ranges::copy(pairs[std::to_integer<std::size_t>(byte)], place).out;
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
