// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/ArmingBenchmark.h"

#include "benchmarks/support/BareTimer.h"
#include "benchmarks/support/DispatchHandle.h"
#include "benchmarks/support/GLibLoop.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/Signal.h"

#include <VorlanFoundation/Execution.h>
#include <VorlanFoundation/Platform/TimerSource.h>

#include <QtCore/QTimer>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <cstdint>
#include <memory>

namespace vorlan::benchmarks {

namespace {

using namespace std::chrono_literals;

constexpr auto group = "make, arm and drop a timer";

// So far ahead that nothing fires.
constexpr std::chrono::seconds delay = 1h;
constexpr auto delayInNanoseconds = std::chrono::nanoseconds(delay).count();

/// The time of one timer. What is dropped goes in its own time, on other threads or when a loop turns; so `drain`
/// returns once all are gone: none is left behind, and their end is counted.
template <class Timer, class Drain>
void measure(benchmark::State& state, const Timer& makeArmAndDrop, const Drain& drain) {
    constexpr std::size_t batch = 1000;
    while (state.KeepRunningBatch(batch)) {
        for (std::size_t i = 0; i < batch; ++i) makeArmAndDrop();
        drain();
    }
}

// The engine lets timers go in the order in which they were dropped: when the last one is gone, all are.
void measureBare(benchmark::State& state) {
    const DispatchHandle queue(DISPATCH_QUEUE_SERIAL);
    Signal gone;
    const auto makeArmAndDrop = [&](auto&& prepare) {
        BareTimer timer(queue.get(), &gone, [](void*) {});
        timer.set(delayInNanoseconds);
        prepare(timer.get());
        timer.resume();
    };
    measure(
        state, [&] { makeArmAndDrop([](dispatch_source_t) {}); },
        [&] {
            makeArmAndDrop([](dispatch_source_t source) {
                dispatch_set_finalizer_f(source, [](void* signal) { static_cast<Signal*>(signal)->post(); });
            });
            gone.wait();
        });
}

/// What an event of the engine needs to call a closure: owned by the timer.
struct Box {
    explicit Box(Signal* signal) : gone(signal) {}
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;
    ~Box() {
        if (gone != nullptr) gone->post();
    }

    Signal* gone; ///< Told of the end, unless null.
};

// The least code that keeps the same promise.
void measureBoxed(benchmark::State& state) {
    const DispatchHandle queue(DISPATCH_QUEUE_SERIAL);
    Signal gone;
    const auto makeArmAndDrop = [&](Signal* signal) {
        BareTimer timer(queue.get(), new Box(signal), [](void*) {});
        dispatch_source_set_cancel_handler_f(timer.get(), [](void* box) { delete static_cast<Box*>(box); });
        timer.set(delayInNanoseconds);
        timer.resume();
    };
    measure(
        state, [&] { makeArmAndDrop(nullptr); },
        [&] {
            makeArmAndDrop(&gone);
            gone.wait();
        });
}

template <class Handler>
void makeArmAndDropSource(const Queue& queue, Handler handler) {
    TimerSource timer(queue);
    timer.setEventHandler(std::move(handler));
    timer.schedule({.deadline = queue.now() + delay});
    timer.resume();
}

/// Returns once the timers that were dropped on the queue are gone.
void drain(const Queue& queue, Signal& gone) {
    makeArmAndDropSource(queue, [box = std::make_shared<Box>(&gone)] {});
    gone.wait();
}

void addOurs() {
    addThreadedRow(group, "ours: TimerSource", [](benchmark::State& state) {
        const Queue queue("benchmark");
        Signal gone;
        measure(
            state, [&] { makeArmAndDropSource(queue, [&state] { state.SkipWithError("fired"); }); },
            [&] { drain(queue, gone); });
    });
    addThreadedRow(group, "ours: InfiniteTimer", [](benchmark::State& state) {
        const Queue queue("benchmark");
        Signal gone;
        const auto makeArmAndDrop = [&] {
            InfiniteTimer timer({.deadline = delay.count(), .pollInterval = 30.0}, queue);
            timer.start([&state] { state.SkipWithError("fired"); });
        };
        measure(state, makeArmAndDrop, [&] { drain(queue, gone); });
    });
}

void measureAsio(benchmark::State& state) {
    boost::asio::io_context loop;
    const auto makeArmAndDrop = [&] {
        boost::asio::steady_timer timer(loop);
        timer.expires_after(delay);
        timer.async_wait([&state](const boost::system::error_code& error) {
            if (!error) state.SkipWithError("fired");
        });
        timer.cancel();
    };
    measure(state, makeArmAndDrop, [&] {
        loop.restart();
        loop.poll();
    });
}

void measureQt(benchmark::State& state) {
    const auto makeArmAndDrop = [&] {
        QTimer timer;
        timer.setSingleShot(true);
        QObject::connect(&timer, &QTimer::timeout, [&state] { state.SkipWithError("fired"); });
        timer.start(delay);
        timer.stop();
    };
    measure(state, makeArmAndDrop, [] {});
}

void measureGLib(benchmark::State& state) {
    const GLibLoop loop;
    constexpr auto milliseconds = static_cast<guint>(std::chrono::milliseconds(delay).count());
    const auto makeArmAndDrop = [&] {
        const GLibTimeout timer(loop, milliseconds, [](gpointer) { return G_SOURCE_REMOVE; }, nullptr);
    };
    measure(state, makeArmAndDrop, [] {});
}

} // namespace

void addArmingRows() {
    addThreadedRow(group, "floor: dispatch source", measureBare);
    addThreadedRow(group, "floor: dispatch source with a boxed closure", measureBoxed);
    addOurs();
    addThreadedRow(group, "peer: asio::steady_timer", measureAsio);
    addThreadedRow(group, "peer: QTimer", measureQt);
    addThreadedRow(group, "peer: GLib timeout source", measureGLib);
}

} // namespace vorlan::benchmarks
