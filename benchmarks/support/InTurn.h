// SPDX-License-Identifier: Apache-2.0
#pragma once

// Rows that get one input after the other, in an order that no processor guesses.

#include "benchmarks/support/Rows.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vorlan::benchmarks {

/// Times a call, which gets one number below `count` after the other; threads begin at different ones.
template <class Call>
void measureInTurn(benchmark::State& state, std::size_t count, const Call& call) {
    std::size_t place =
        static_cast<std::size_t>(state.thread_index()) * count / static_cast<std::size_t>(state.threads());
    for ([[maybe_unused]] auto _ : state) {
        auto result = call(place);
        benchmark::DoNotOptimize(result);
        place = place + 1 == count ? 0 : place + 1;
    }
}

/// A group of rows that get the same inputs, by number, and give the same: a row that gives something else than the
/// first is no row of it.
///
/// Threads: one thread at a time; the calls of rows of several threads run on those.
template <class Result>
class GroupInTurn {
public:
    GroupInTurn(std::string name, std::size_t count) : name_(std::move(name)), count_(count) {}

    /// Adds a row. The first one's results are what the others have to give.
    template <class Call>
    void add(const std::string& name, const Call& call) {
        addRow(name_, name, measured(call));
    }

    /// Adds a row of several threads that call at once.
    template <class Call>
    void addThreads(const std::string& name, int threads, const Call& call) {
        benchmark::RegisterBenchmark((name_ + "/" + name).c_str(), measured(call))
            ->Threads(threads)
            ->UseRealTime();
    }

private:
    template <class Call>
    auto measured(const Call& call) {
        std::vector<Result> results;
        for (std::size_t i = 0; i < count_; ++i) results.push_back(call(i));
        if (!expected_) expected_ = std::make_unique<std::vector<Result>>(results);
        return [=, count = count_, isRight = results == *expected_](benchmark::State& state) {
            if (!isRight) state.SkipWithError("gives something else than the first of its group");
            measureInTurn(state, count, call);
        };
    }

    std::string name_;
    std::size_t count_;
    std::unique_ptr<std::vector<Result>> expected_;
};

} // namespace vorlan::benchmarks
