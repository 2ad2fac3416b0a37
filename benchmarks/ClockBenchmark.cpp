// SPDX-License-Identifier: Apache-2.0

// What it costs to read how long something took, and to start anew.

#include "benchmarks/support/Rows.h"

#include <VorlanFoundation/Logging/Stopwatch.h>

#include <QtCore/QElapsedTimer>
#include <glib.h>

#include <chrono>
#include <cstdint>
#include <ctime>

namespace vorlan::benchmarks {

namespace {

constexpr auto awake = "elapsed time";
constexpr auto asleepToo = "elapsed time, asleep too";
constexpr auto coarse = "elapsed time, coarse";
constexpr auto anew = "start anew";

template <class Read>
void measure(benchmark::State& state, const Read& read) {
    for ([[maybe_unused]] auto _ : state) {
        auto time = read();
        benchmark::DoNotOptimize(time);
    }
}

std::uint64_t nanoseconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(now.tv_nsec);
}

void addFloor(const char* group, const char* name, clockid_t clock) {
    addRow(group, name, [clock](benchmark::State& state) {
        const auto start = nanoseconds(clock);
        measure(state, [&] { return nanoseconds(clock) - start; });
    });
}

template <class Watch>
void addWatch(const char* group, const char* name) {
    addRow(group, name, [](benchmark::State& state) {
        const Watch watch;
        measure(state, [&] { return watch.nanoseconds(); });
    });
}

void addReadings() {
    addFloor(awake, "floor: clock_gettime, CLOCK_MONOTONIC", CLOCK_MONOTONIC);
    addWatch<AbsoluteStopwatch>(awake, "ours: AbsoluteStopwatch::nanoseconds");
    addRow(awake, "ours: AbsoluteStopwatch::milliseconds", [](benchmark::State& state) {
        const AbsoluteStopwatch watch;
        measure(state, [&] { return watch.milliseconds(); });
    });
    addRow(awake, "ours: AbsoluteStopwatch::seconds", [](benchmark::State& state) {
        const AbsoluteStopwatch watch;
        measure(state, [&] { return watch.seconds(); });
    });
    addRow(awake, "peer: QElapsedTimer::nsecsElapsed", [](benchmark::State& state) {
        QElapsedTimer timer;
        timer.start();
        measure(state, [&] { return timer.nsecsElapsed(); });
    });
    addRow(awake, "peer: g_get_monotonic_time, microseconds", [](benchmark::State& state) {
        const auto start = g_get_monotonic_time();
        measure(state, [&] { return g_get_monotonic_time() - start; });
    });
    addRow(awake, "peer: std::chrono::steady_clock", [](benchmark::State& state) {
        const auto start = std::chrono::steady_clock::now();
        measure(state, [&] { return (std::chrono::steady_clock::now() - start).count(); });
    });
    addFloor(asleepToo, "floor: clock_gettime, CLOCK_BOOTTIME", CLOCK_BOOTTIME);
    addWatch<ContinuousStopwatch>(asleepToo, "ours: ContinuousStopwatch::nanoseconds");
    addWatch<ContinuousApproximateStopwatch>(asleepToo, "ours: ContinuousApproximateStopwatch::nanoseconds");
    addFloor(coarse, "floor: clock_gettime, CLOCK_MONOTONIC_COARSE", CLOCK_MONOTONIC_COARSE);
    addWatch<ApproximateStopwatch>(coarse, "ours: ApproximateStopwatch::nanoseconds");
}

template <class Watch>
void addReset(const char* name) {
    addRow(anew, name, [](benchmark::State& state) {
        Watch watch;
        measure(state, [&] {
            watch.reset();
            return watch.startTime();
        });
    });
}

void addResets() {
    addRow(anew, "floor: clock_gettime, CLOCK_MONOTONIC",
           [](benchmark::State& state) { measure(state, [] { return nanoseconds(CLOCK_MONOTONIC); }); });
    addReset<AbsoluteStopwatch>("ours: AbsoluteStopwatch::reset");
    addReset<ContinuousStopwatch>("ours: ContinuousStopwatch::reset");
    addReset<ContinuousApproximateStopwatch>("ours: ContinuousApproximateStopwatch::reset");
    addReset<ApproximateStopwatch>("ours: ApproximateStopwatch::reset");
    addRow(anew, "peer: QElapsedTimer::start", [](benchmark::State& state) {
        QElapsedTimer timer;
        measure(state, [&] {
            timer.start();
            return timer.msecsSinceReference();
        });
    });
}

} // namespace

} // namespace vorlan::benchmarks

int main(int argc, char** argv) {
    using namespace vorlan::benchmarks;
    addReadings();
    addResets();
    return runRows(argc, argv);
}
