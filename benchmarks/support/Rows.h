// SPDX-License-Identifier: Apache-2.0
#pragma once

// Names the rows of the report's tables.
//
// A benchmark is called "group/kind: what", and the report makes a table of each group. The kind is one of
//     floor   what cannot be had for less; the first of a group is what the others are divided by
//     ours    this library
//     peer    what a user would pick instead
//     note    worth knowing, without being comparable

#include <benchmark/benchmark.h>

#include <string>
#include <utility>

namespace vorlan::benchmarks {

/// Adds a row of a single thread, measured in its processor time, which other load disturbs least.
template <class Measure>
void addRow(const std::string& group, const std::string& name, Measure measure) {
    benchmark::RegisterBenchmark((group + "/" + name).c_str(), std::move(measure));
}

/// Adds a row of several threads, measured in the processor time of all of them and by the clock on the wall.
/// When they share a processor both are the same, but for what other programs take away.
template <class Measure>
void addThreadedRow(const std::string& group, const std::string& name, Measure measure) {
    benchmark::RegisterBenchmark((group + "/" + name).c_str(), std::move(measure))
        ->MeasureProcessCPUTime()
        ->UseRealTime();
}

/// Adds a row whose measuring function sets the time itself: once per repetition, by the clock on the wall. The counter
/// "worst", in ns, gets a column of its own.
template <class Measure>
void addLatenessRow(const std::string& group, const std::string& name, Measure measure) {
    benchmark::RegisterBenchmark((group + "/" + name).c_str(), std::move(measure))
        ->UseManualTime()
        ->Iterations(1);
}

/// Runs what was added, as the command line says.
inline int runRows(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace vorlan::benchmarks
