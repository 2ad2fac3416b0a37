// SPDX-License-Identifier: Apache-2.0
#pragma once

// Bytes, as they are kept and sent.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan {

/// A buffer of bytes.
using Data = std::vector<std::byte>;

/// The bytes of a text, for example its UTF-8 form.
inline Data dataFromText(std::string_view text) {
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

/// Bytes as a text, as they stand; whether they are well-formed UTF-8 is for the caller to know.
inline std::string textFromData(std::span<const std::byte> data) {
    return {reinterpret_cast<const char*>(data.data()), data.size()};
}

} // namespace vorlan
