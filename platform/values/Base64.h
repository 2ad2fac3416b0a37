// SPDX-License-Identifier: Apache-2.0
#pragma once

// Bytes as text: base64 with padding (RFC 4648, section 4).

#include <VorlanFoundation/Platform/Data.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vorlan {

/// How many characters stand for so many bytes.
constexpr std::size_t base64Length(std::size_t bytes) noexcept {
    return (bytes / 3 + (bytes % 3 != 0 ? 1 : 0)) * 4;
}

/// Writes just so many characters.
void writeBase64(std::span<const std::byte> data, char* text) noexcept;

/// The same as a text.
std::string base64FromData(std::span<const std::byte> data);

/// The bytes that a text stands for; absent when it is not just what `base64FromData` makes of them: without its
/// padding, with a line end, or with bits that no byte has.
std::optional<Data> dataFromBase64(std::string_view text);

} // namespace vorlan
