// SPDX-License-Identifier: Apache-2.0
#pragma once

// Dates in no order that a processor could guess, and what rows do with them.

#include "benchmarks/support/InTurn.h"

#include <VorlanFoundation/Platform/Date.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <random>

namespace vorlan::benchmarks {

/// The zone and the locales that all rows have.
inline constexpr auto sampleZone = "Europe/Berlin";
inline constexpr auto sampleEnglish = "en_US";
inline constexpr auto sampleGerman = "de_DE";

/// One instant, in the terms of each library.
struct SampleDate {
    Date date = Date(0);
    double milliseconds = 0; ///< since 1970, whole
    std::time_t seconds = 0; ///< since 1970, rounded down
};

inline constexpr std::size_t sampleDateCount = 4096;
using SampleDates = std::array<SampleDate, sampleDateCount>;

/// The date so many milliseconds after 1970.
inline SampleDate sampleDate(std::int64_t milliseconds) {
    SampleDate made;
    made.milliseconds = static_cast<double>(milliseconds);
    made.seconds = milliseconds / 1000;
    made.date = Date::fromTimeIntervalSince1970(made.milliseconds / 1000);
    return made;
}

/// Dates from `first` to `last`, in milliseconds since 1970.
inline SampleDates datesBetween(std::int64_t first, std::int64_t last) {
    std::mt19937_64 random(1970); // NOLINT: the same in every run is meant
    std::uniform_int_distribution<std::int64_t> milliseconds(first, last);
    SampleDates made;
    for (auto& one : made) one = sampleDate(milliseconds(random));
    return made;
}

/// Of 1970 to 2036; the same in every run.
inline const SampleDates& sampleDates() {
    static const auto dates = datesBetween(0, 2'114'380'799'999);
    return dates;
}

/// Of the days around the present.
inline const SampleDates& recentDates() {
    static const auto dates = [] {
        constexpr std::int64_t twoDays = 172'800'000;
        const auto now = std::llround(Date().timeIntervalSince1970() * 1000);
        return datesBetween(now - twoDays, now + twoDays);
    }();
    return dates;
}

/// Times a call, which gets one of the dates after the other.
template <class Call>
void measureDates(benchmark::State& state, const Call& call, const SampleDates& dates = sampleDates()) {
    measureInTurn(state, sampleDateCount, [&](std::size_t place) { return call(dates[place]); });
}

/// What a row gives, as all give it; of a date, the milliseconds since 1970.
template <class Result>
const Result& comparable(const Result& result) {
    return result;
}
inline std::int64_t comparable(const Date& date) {
    return std::llround(date.timeIntervalSince1970() * 1000);
}
inline std::int64_t comparable(const std::optional<Date>& date) {
    return date ? comparable(*date) : -1;
}

/// Fails the row where a call gives something else than `expected`. As many are compared as hardly delay the slowest
/// row.
template <class Call, class Expected>
void compareDates(benchmark::State& state, const Call& call, const Expected& expected,
                  const SampleDates& dates = sampleDates()) {
    for (std::size_t i = 0; i < sampleDateCount / 8; ++i) {
        if (comparable(call(dates[i])) == comparable(expected(dates[i]))) continue;
        state.SkipWithError("gives something else than the first of its group");
        return;
    }
}

/// Adds a row of the call that `make` makes, which gives the same as the one that `expected` makes.
template <class Expected, class Make>
void addDatesRow(const char* group, const char* name, const Expected& expected, const Make& make,
                 const SampleDates& (*dates)() = sampleDates) {
    addRow(group, name, [=](benchmark::State& state) {
        const auto call = make();
        compareDates(state, call, expected(), dates());
        measureDates(state, call, dates());
    });
}

} // namespace vorlan::benchmarks
