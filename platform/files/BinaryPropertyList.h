// SPDX-License-Identifier: Apache-2.0
#pragma once

// The binary form of property lists ("bplist00"): objects, a table of their offsets, and a trailer that says where
// the table is. Everything is big-endian.

#include "platform/values/Checksum.h"

#include <VorlanFoundation/Platform/Value.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vorlan::bplist {

inline constexpr std::string_view magic = "bplist00";

/// The first half of an object's first byte.
enum class Marker : std::uint8_t {
    simple = 0x0,
    integer = 0x1,
    real = 0x2,
    date = 0x3,
    data = 0x4,
    ascii = 0x5,
    utf16 = 0x6,
    uid = 0x8,
    array = 0xA,
    orderedSet = 0xB,
    set = 0xC,
    dictionary = 0xD,
};

/// Objects that are one byte.
inline constexpr std::byte falseObject{0x08};
inline constexpr std::byte trueObject{0x09};

/// The second half of the first byte, where the length follows as an integer.
inline constexpr unsigned lengthFollows = 0xF;

/// Where the fields of the trailer are.
namespace trailer {
inline constexpr std::size_t size = 32;
/// Bytes that the form leaves free and readers pass over: here our own writer puts a checksum.
inline constexpr std::size_t checksumLength = 5;
inline constexpr std::size_t offsetSize = 6;
inline constexpr std::size_t referenceSize = 7;
inline constexpr std::size_t objectCount = 8;
inline constexpr std::size_t rootObject = 16;
inline constexpr std::size_t tableOffset = 24;
} // namespace trailer

/// The checksum of a whole list, without the bytes that hold it. All zeros never occur: they are what other
/// writers leave there.
inline std::array<std::byte, trailer::checksumLength> checksum(std::span<const std::byte> list) noexcept {
    const std::size_t place = list.size() - trailer::size;
    Checksum sum;
    sum.add(list.first(place));
    sum.add(list.subspan(place + trailer::checksumLength));
    const auto folded = sum.value() ^ (sum.value() >> (8 * trailer::checksumLength));
    std::array<std::byte, trailer::checksumLength> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::byte>(folded >> (8 * i));
    if (bytes == decltype(bytes){}) bytes[0] = std::byte{1};
    return bytes;
}

/// Reads a list that was made from a text of a size, which is what its own size is measured by: equal objects are one.
/// Throws PropertyListError.
Value read(std::span<const std::byte> bytes, std::size_t sourceSize);

} // namespace vorlan::bplist
