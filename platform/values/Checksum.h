// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tells bytes that were damaged from those that were written.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace vorlan {

/// A checksum against accidents, not against forgers: a change within any eight bytes in a row, counted from the
/// start, is always noticed, others but for one in 2^64.
///
/// Each step is one-to-one in what it had before and in what it takes in, so that a difference never gets lost
/// again. The factor is 2^64 divided by the golden ratio, the usual one of multiplicative hashing.
class Checksum {
public:
    /// Takes in bytes; a run of them and the same run in pieces differ.
    void add(std::span<const std::byte> bytes) noexcept {
        while (bytes.size() >= sizeof(std::uint64_t)) {
            std::uint64_t word = 0;
            std::memcpy(&word, bytes.data(), sizeof word);
            mix(word);
            bytes = bytes.subspan(sizeof word);
        }
        std::uint64_t rest = bytes.size();
        for (const auto byte : bytes) rest = (rest << 8) | std::to_integer<std::uint64_t>(byte);
        mix(rest);
    }

    /// The checksum of all that was taken in.
    std::uint64_t value() const noexcept { return sum_; }

private:
    void mix(std::uint64_t word) noexcept {
        sum_ = (sum_ ^ word) * 0x9E3779B97F4A7C15ULL;
        sum_ ^= sum_ >> 32;
    }

    std::uint64_t sum_ = 1; ///< Not zero, which zeros would not change.
};

} // namespace vorlan
