// SPDX-License-Identifier: Apache-2.0
#pragma once

// Bytes as a line of text.

#include <VorlanFoundation/Platform/Data.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vorlan::security::secretservice {

/// How long the text of so many bytes is.
constexpr std::size_t base64Length(std::size_t byteCount) noexcept {
    return (byteCount + 2) / 3 * 4;
}

/// Appends bytes in base64; without another allocation where `text` has room for them and one byte more.
void appendBase64(std::string& text, std::span<const std::byte> bytes);

/// The bytes of a text, or nothing when it is no base64 through and through.
std::optional<Data> fromBase64(std::string_view text);

} // namespace vorlan::security::secretservice
