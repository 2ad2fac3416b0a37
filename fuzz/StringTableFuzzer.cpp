// SPDX-License-Identifier: Apache-2.0
// Any bytes are either refused, or a table whose entries are found by their keys.

#include "fuzz/Fuzzing.h"

#include <VorlanFoundation/Platform/StringTable.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

using namespace vorlan;

namespace {

using Bytes = std::span<const std::byte>;

std::size_t lineEnds(Bytes bytes) {
    return static_cast<std::size_t>(std::ranges::count_if(
        bytes, [](std::byte byte) { return byte == std::byte{'\n'} || byte == std::byte{'\r'}; }));
}

// Absent when the bytes are refused.
std::optional<StringTable> read(Bytes bytes, StringTable (*reader)(Bytes)) try {
    return reader(bytes);
} catch (const StringTableError& error) {
    const auto [line, column] = error.position();
    fuzzing::require((line == 0) == (column == 0), "a place has both a line and a column, or neither");
    fuzzing::require(line <= lineEnds(bytes) + 1, "the place of an error is in the file");
    fuzzing::require(*error.what() != '\0', "an error says why");
    return std::nullopt;
}

bool isNotBefore(TextPosition a, TextPosition b) {
    return a.line > b.line || (a.line == b.line && a.column >= b.column);
}

void requireKeysToBeFound(const StringTable& table) {
    const auto keys = table.keys();
    fuzzing::require(keys.size() == table.size(), "a table has as many keys as entries");
    for (const auto& key : keys) fuzzing::require(table.find(key) != nullptr, "every key is found");
    for (const auto& repetition : table.repetitions())
        fuzzing::require(isNotBefore(table.find(repetition.key)->position, repetition.position),
                         "the last repetition counts");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes = std::as_bytes(std::span(data, size));
    if (const auto table = read(bytes, &StringTable::read)) requireKeysToBeFound(*table);
    if (const auto plurals = read(bytes, &StringTable::readPlurals)) {
        requireKeysToBeFound(*plurals);
        for (const auto& key : plurals->keys())
            for (const auto& [name, variable] : plurals->find(key)->variables)
                fuzzing::require(variable.forms.back().has_value(), "every variable has its last form");
    }
    return 0;
}
