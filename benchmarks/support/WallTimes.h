// SPDX-License-Identifier: Apache-2.0
#pragma once

// Times by the clock on the wall, for what disks and other processes take part in.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <numeric>
#include <vector>

namespace vorlan::benchmarks {

/// Times `count` calls of a Boolean function, which gets their number, one by one; for a row added by `addLatenessRow`.
///
/// A time is the mean of the middle half: where a disk or a busy machine makes times cluster, a median jumps between
/// clusters. What `undo` does after each call is not counted.
template <class Call, class Undo>
void measureEach(benchmark::State& state, std::size_t count, const Call& call, const Undo& undo) {
    for ([[maybe_unused]] auto _ : state) {
        std::vector<double> times(count);
        for (std::size_t i = 0; i < count; ++i) {
            const auto start = std::chrono::steady_clock::now();
            const bool isDone = call(i);
            times[i] = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
            if (!isDone) state.SkipWithError("a call failed");
            undo(i);
        }
        std::ranges::sort(times);
        const auto first = times.begin() + static_cast<std::ptrdiff_t>(count / 4);
        const auto half = count / 2;
        const auto sum = std::accumulate(first, first + static_cast<std::ptrdiff_t>(half), 0.0);
        state.SetIterationTime(sum / static_cast<double>(half));
        constexpr double nanosecondsPerSecond = 1e9;
        state.counters["worst"] = times.back() * nanosecondsPerSecond;
    }
}

/// The same with nothing to undo.
template <class Call>
void measureEach(benchmark::State& state, std::size_t count, const Call& call) {
    measureEach(state, count, call, [](std::size_t) {});
}

} // namespace vorlan::benchmarks
