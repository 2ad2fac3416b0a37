// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/FiringBenchmark.h"

#include "benchmarks/support/BareTimer.h"
#include "benchmarks/support/DispatchHandle.h"
#include "benchmarks/support/GLibLoop.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/Signal.h"
#include "benchmarks/support/Wakefulness.h"

#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/TimerSource.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <vector>

namespace vorlan::benchmarks {

namespace {

using namespace std::chrono_literals;

constexpr auto group = "lateness of a single event, 10 ms ahead";
constexpr std::chrono::milliseconds delay = 10ms;

std::int64_t now() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000 + now.tv_nsec;
}

/// One event after the other. Its time is taken where it happens, before anybody is told of it.
///
/// Threads: `fire` by where the event happens, while the thread of the others waits for it.
class Shots {
public:
    /// Begins a shot; returns the point in time at which its event is due.
    std::int64_t aim() { return due_ = now() + std::chrono::nanoseconds(delay).count(); }

    /// The event.
    void fire() {
        lateness_.push_back(now() - due_);
        fired_.post();
    }

    /// Waits for the event where that happens on another thread.
    void wait() { fired_.wait(); }

    std::size_t count() const { return lateness_.size(); }

    void report(benchmark::State& state) {
        std::ranges::sort(lateness_);
        if (lateness_.front() < 0) state.SkipWithError("fired early");
        state.SetIterationTime(static_cast<double>(lateness_[lateness_.size() / 2]) * 1e-9);
        state.counters["worst"] = static_cast<double>(lateness_.back());
    }

private:
    std::int64_t due_ = 0;
    std::vector<std::int64_t> lateness_;
    Signal fired_;
};

/// The median lateness of some shots, as the time of one iteration.
template <class Shoot>
void measure(benchmark::State& state, const Shoot& shoot) {
    constexpr std::size_t shotsOfARun = 50;
    const Wakefulness wakefulness;
    for ([[maybe_unused]] auto _ : state) {
        Shots warmUp; // brings up the engine's threads
        shoot(warmUp);
        Shots shots;
        while (shots.count() < shotsOfARun) shoot(shots);
        shots.report(state);
    }
}

// What the system itself does at best: it wakes a thread that has nothing to look after.
void measureSystem(benchmark::State& state) {
    const int timer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    measure(state, [&](Shots& shots) {
        const auto due = shots.aim();
        const itimerspec schedule{
            .it_interval = {}, .it_value = {.tv_sec = due / 1'000'000'000, .tv_nsec = due % 1'000'000'000}};
        timerfd_settime(timer, TFD_TIMER_ABSTIME, &schedule, nullptr);
        std::uint64_t expirations = 0;
        while (read(timer, &expirations, sizeof expirations) < 0) {}
        shots.fire();
    });
    close(timer);
}

void addEngine() {
    addLatenessRow(group, "floor: dispatch source", [](benchmark::State& state) {
        const DispatchHandle queue(DISPATCH_QUEUE_SERIAL);
        Shots* target = nullptr;
        const BareTimer timer(queue.get(), static_cast<void*>(&target),
                              [](void* shots) { (*static_cast<Shots**>(shots))->fire(); });
        timer.resume();
        measure(state, [&](Shots& shots) {
            target = &shots;
            timer.set(shots.aim() - now());
            shots.wait();
        });
    });
    addLatenessRow(group, "note: timerfd, read", measureSystem);
}

void addOurs() {
    addLatenessRow(group, "ours: TimerSource", [](benchmark::State& state) {
        Shots* target = nullptr;
        const Queue queue("benchmark");
        TimerSource timer(queue);
        timer.setEventHandler([&target] { target->fire(); });
        timer.resume();
        measure(state, [&](Shots& shots) {
            target = &shots;
            timer.schedule({.deadline = DispatchTime(static_cast<std::uint64_t>(shots.aim()))});
            shots.wait();
        });
    });
    addLatenessRow(group, "ours: Queue::asyncAfter", [](benchmark::State& state) {
        const Queue queue("benchmark");
        measure(state, [&](Shots& shots) {
            queue.asyncAfter(DispatchTime(static_cast<std::uint64_t>(shots.aim())),
                             [&shots] { shots.fire(); });
            shots.wait();
        });
    });
}

void measureAsio(benchmark::State& state) {
    boost::asio::io_context loop;
    boost::asio::steady_timer timer(loop);
    measure(state, [&](Shots& shots) {
        shots.aim();
        timer.expires_after(delay);
        timer.async_wait([&shots](const boost::system::error_code&) { shots.fire(); });
        loop.restart();
        loop.run();
    });
}

void measureQt(benchmark::State& state) {
    Shots* target = nullptr;
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, [&target] { target->fire(); });
    measure(state, [&](Shots& shots) {
        target = &shots;
        shots.aim();
        timer.start(delay);
        while (timer.isActive()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    });
}

void measureGLib(benchmark::State& state) {
    const GLibLoop loop;
    const auto onTimeout = [](gpointer shots) -> gboolean {
        static_cast<Shots*>(shots)->fire();
        return G_SOURCE_REMOVE;
    };
    measure(state, [&](Shots& shots) {
        shots.aim();
        const GLibTimeout timer(loop, delay.count(), onTimeout, &shots);
        while (g_source_is_destroyed(timer.get()) == FALSE) loop.turn();
    });
}

} // namespace

void addFiringRows() {
    addEngine();
    addOurs();
    addLatenessRow(group, "peer: asio::steady_timer", measureAsio);
    addLatenessRow(group, "peer: QTimer, precise", measureQt);
    addLatenessRow(group, "peer: GLib timeout source", measureGLib);
}

} // namespace vorlan::benchmarks
