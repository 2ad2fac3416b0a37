// SPDX-License-Identifier: Apache-2.0
#pragma once

// Eight bytes of a text at a time.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vorlan::json {

/// Eight bytes, of which the first are the lowest.
inline std::uint64_t eightBytes(const char* at) noexcept {
    std::uint64_t eight = 0;
    std::memcpy(&eight, at, sizeof eight);
    if constexpr (std::endian::native == std::endian::big) eight = __builtin_bswap64(eight);
    return eight;
}

/// The highest bit of each byte that does not stand for itself between quotes without a closer look: quotes,
/// backslashes, control characters, and all that is not ASCII. Exact up to the lowest bit that is set: a byte above that
/// one may borrow.
constexpr std::uint64_t specialBytes(std::uint64_t eight) noexcept {
    constexpr std::uint64_t ones = 0x0101'0101'0101'0101;
    const auto quotes = (eight ^ (ones * '"')) - ones;
    const auto backslashes = (eight ^ (ones * '\\')) - ones;
    const auto controls = eight - ones * 0x20;
    return (quotes | backslashes | controls | eight) & (ones * 0x80);
}

/// How many bytes come before the first of these.
constexpr std::size_t plainBytes(std::uint64_t special) noexcept {
    return static_cast<std::size_t>(std::countr_zero(special)) / 8;
}

} // namespace vorlan::json
