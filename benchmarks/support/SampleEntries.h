// SPDX-License-Identifier: Apache-2.0
#pragma once

// What an application may keep as its settings: a hundred entries.

#include <VorlanFoundation/Platform/Value.h>

#include <array>
#include <cstddef>
#include <string>

namespace vorlan::benchmarks {

inline constexpr std::size_t sampleSize = 100;

/// The key of an entry: too long to be kept without memory of its own, as most are.
inline std::string sampleKey(std::size_t index) {
    return "editor.window.setting-" + std::to_string(index);
}

/// All keys.
inline std::array<std::string, sampleSize> sampleKeys() {
    std::array<std::string, sampleSize> keys;
    for (std::size_t i = 0; i < sampleSize; ++i) keys.at(i) = sampleKey(i);
    return keys;
}

/// The value of an entry: Booleans, integers, numbers and texts in turn, as every peer has.
inline Value sampleValue(std::size_t index) {
    switch (index % 4) {
    case 0: return index % 8 == 0;
    case 1: return index * 1000;
    case 2: return static_cast<double>(index) + 0.25;
    default: return "a value of some length, number " + std::to_string(index);
    }
}

/// All entries.
inline Value::Dictionary sampleEntries() {
    Value::Dictionary entries;
    for (std::size_t i = 0; i < sampleSize; ++i) entries.emplace(sampleKey(i), sampleValue(i));
    return entries;
}

} // namespace vorlan::benchmarks
