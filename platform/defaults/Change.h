// SPDX-License-Identifier: Apache-2.0
#pragma once

// Changes of a store's entries, and how a journal holds them.

#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/Value.h>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vorlan::defaults {

/// A change of an entry: its value, or that it was removed.
struct Change {
    std::string key;
    std::optional<Value> value;
};

/// The bytes of a change: a binary property list of the key, and the value if there is one. `value` is lent, and as
/// before afterwards. Throws std::invalid_argument for a key or value that no property list can hold.
Data encodeChange(std::string_view key, std::optional<Value>& value);

/// Reads what `encodeChange` made; absent for anything else.
std::optional<Change> decodeChange(std::span<const std::byte> bytes);

/// The start of a journal: a mark, and the place before which all was saved, twice, so that damage to it shows. Then
/// come changes, each behind its length. Numbers are as the machine has them: a journal is read where it was written.
struct JournalHeader {
    explicit JournalHeader(std::uint64_t place = sizeof(JournalHeader)) noexcept
        : start(place), inverse(~place) {}

    std::array<char, 8> mark{'v', 'd', 'e', 'f', 'j', 'n', 'l', '1'};
    std::uint64_t start;
    std::uint64_t inverse; ///< Of each bit of `start`.
};

/// What stands before each change: how many bytes it has.
using ChangeLength = std::uint32_t;

} // namespace vorlan::defaults
