// SPDX-License-Identifier: Apache-2.0
#pragma once

// The names of days near the present.

#include <VorlanFoundation/Platform/Locale.h>

#include <array>
#include <cstddef>
#include <string>

namespace vorlan {

/// What a language calls the days around today: "yesterday", "today", "tomorrow", and those beyond where it has words
/// for them.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct RelativeDayNames {
    static constexpr int furthest = 2; // as far as ICU's names go

    /// From the day before yesterday on; empty where there is no word.
    std::array<std::string, 2 * std::size_t{furthest} + 1> names;

    static RelativeDayNames ofLocale(const Locale& locale);
};

} // namespace vorlan
