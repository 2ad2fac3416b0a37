// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/DebounceBenchmark.h"

#include "benchmarks/support/BareTimer.h"
#include "benchmarks/support/DispatchHandle.h"
#include "benchmarks/support/GLibLoop.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/Signal.h"

#include <VorlanFoundation/Execution.h>

#include <QtCore/QTimer>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <string>

namespace vorlan::benchmarks {

namespace {

using namespace std::chrono_literals;

constexpr auto group = "call while one is pending";

// Longer than any run, so that the same work stays pending throughout.
//
// The engine cannot be told to forget what was put off on it. So there is one of each tool in the process, for
// all repetitions: what is pending when the process ends is one check of each, which has touched nothing.
constexpr std::chrono::milliseconds delay = 24h;
constexpr auto delayInNanoseconds = std::chrono::nanoseconds(delay).count();

/// Where ours runs what was put off. Nothing must run here during a run.
const Queue& queue() {
    static const Queue queue("benchmark");
    return queue;
}

template <class Call>
void measure(benchmark::State& state, const Call& call) {
    call(); // from now on one is pending
    for ([[maybe_unused]] auto _ : state) call();
}

/// The number of actions that ran, of all of ours: none should.
std::atomic<int> actions = 0;

template <class Call>
void measureOurs(benchmark::State& state, const Call& call) {
    measure(state, call);
    if (actions > 0) state.SkipWithError("what was pending ran");
}

void addFloors() {
    addRow(group, "floor: clock_gettime", [](benchmark::State& state) {
        measure(state, [] {
            timespec now{};
            clock_gettime(CLOCK_MONOTONIC, &now);
            benchmark::DoNotOptimize(now);
        });
    });
    // The engine's own way takes part of its time on the engine's thread.
    addThreadedRow(group, "note: dispatch_source_set_timer", [](benchmark::State& state) {
        const DispatchHandle engineQueue(DISPATCH_QUEUE_SERIAL);
        const BareTimer timer(engineQueue.get(), nullptr, [](void*) { ++actions; });
        timer.set(delayInNanoseconds);
        timer.resume();
        measureOurs(state, [&] { timer.set(delayInNanoseconds); });
    });
}

void addDebounce() {
    addRow(group, "ours: debounce", [](benchmark::State& state) {
        static const auto debounced = debounce(delay.count(), queue(), [] { ++actions; });
        measureOurs(state, [] { debounced(); });
    });
    addRow(group, "ours: debounce, of an int", [](benchmark::State& state) {
        static const auto debounced = debounce<int>(delay.count(), queue(), [](int) { ++actions; });
        int number = 0;
        measureOurs(state, [&] { debounced(++number); });
    });
    // Of a length that needs memory of its own.
    addRow(group, "ours: debounce, of a string", [](benchmark::State& state) {
        static const auto debounced =
            debounce<std::string>(delay.count(), queue(), [](const std::string&) { ++actions; });
        const std::string text = "the text of a search field";
        measureOurs(state, [&] { debounced(text); });
    });
}

/// Has the first block run, which is not put off; true, to be remembered.
template <class Submit>
bool runFirst(const Submit& submit) {
    Signal ran;
    submit([&ran] { ran.post(); });
    ran.wait();
    return true;
}

void addLimiters() {
    addRow(group, "ours: Throttler::throttle", [](benchmark::State& state) {
        static Throttler throttler(delay.count(), queue());
        [[maybe_unused]] static const bool hasBegun = runFirst([](auto block) { throttler.throttle(block); });
        measureOurs(state, [] { throttler.throttle([] { ++actions; }); });
    });
    addRow(group, "ours: Sampler::sample", [](benchmark::State& state) {
        static Sampler sampler(delay, queue());
        [[maybe_unused]] static const bool hasBegun = runFirst([](auto block) { sampler.sample(block); });
        measureOurs(state, [] { sampler.sample([] { ++actions; }); });
    });
}

// Each wait that is replaced ends with an error, which its handler is told when the loop turns: now and then here,
// so that they do not pile up.
void measureAsio(benchmark::State& state) {
    boost::asio::io_context loop;
    boost::asio::steady_timer timer(loop);
    const auto call = [&] {
        timer.expires_after(delay);
        timer.async_wait([&state](const boost::system::error_code& error) {
            if (!error) state.SkipWithError("what was pending ran");
        });
    };
    call();
    constexpr std::size_t batch = 1000;
    while (state.KeepRunningBatch(batch)) {
        for (std::size_t i = 0; i < batch; ++i) call();
        loop.restart();
        loop.poll();
    }
}

void addPeers() {
    addRow(group, "peer: asio, expires_after and async_wait", measureAsio);
    addRow(group, "peer: QTimer::start", [](benchmark::State& state) {
        QTimer timer;
        timer.setSingleShot(true);
        QObject::connect(&timer, &QTimer::timeout, [&state] { state.SkipWithError("what was pending ran"); });
        timer.setInterval(delay);
        measure(state, [&] { timer.start(); });
    });
    addRow(group, "peer: g_source_set_ready_time", [](benchmark::State& state) {
        const GLibLoop loop;
        const auto onTimeout = [](gpointer) -> gboolean { return G_SOURCE_REMOVE; };
        const GLibTimeout timer(loop, static_cast<guint>(delay.count()), onTimeout, nullptr);
        measure(state, [&] {
            g_source_set_ready_time(timer.get(),
                                    g_get_monotonic_time() + std::chrono::microseconds(delay).count());
        });
    });
}

} // namespace

void addDebounceRows() {
    addFloors();
    addDebounce();
    addLimiters();
    addPeers();
}

} // namespace vorlan::benchmarks
