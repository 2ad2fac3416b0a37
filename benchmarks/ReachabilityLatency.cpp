// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/ReachabilityLatency.h"

#include "benchmarks/support/NetworkEars.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/Signal.h"
#include "benchmarks/support/Wakefulness.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace vorlan::benchmarks {

namespace {

using namespace std::chrono_literals;

using Change = Clock::time_point (Cable::*)();

/// A change to be heard of, and the one that takes it back.
struct Event {
    const char* name;
    Change change;
    Change undo;
    bool isOnlineAfter;
};

constexpr std::array<Event, 4> events{{
    {"default route deleted", &Cable::deleteRoute, &Cable::addRoute, false},
    {"default route added", &Cable::addRoute, &Cable::deleteRoute, true},
    {"carrier lost", &Cable::pullOut, &Cable::plugIn, false},
    {"carrier back", &Cable::plugIn, &Cable::pullOut, true},
}};

/// Who hears of them. Between two changes there is a pause, so that none falls into the window of another.
struct Listener {
    const char* name;
    const char* window;
    std::function<std::unique_ptr<NetworkEar>(const Cable&)> make;
    std::chrono::milliseconds pause;
};

constexpr auto gathered = "gathered for 20 ms";
constexpr auto atOnce = "at once";

const std::array<Listener, 5>& listeners() {
    static const std::array<Listener, 5> all{{
        {"floor: netlink socket", gathered, [](const Cable& cable) { return bareEar(cable, usualWindow); },
         30ms},
        {"ours: Reachability", gathered, [](const Cable&) { return ourEar(); }, 30ms},
        {"floor: netlink socket", atOnce, [](const Cable& cable) { return bareEar(cable, 0ms); }, 3ms},
        {"ours: NWPathMonitor, without its window", atOnce, [](const Cable&) { return ourImpatientEar(); },
         3ms},
        {"peer: GNetworkMonitor, netlink", atOnce, [](const Cable&) { return glibEar(); }, 3ms},
    }};
    return all;
}

/// Makes changes on a thread of its own, so that the main thread waits for them as that of an application does.
///
/// Threads: the main thread only.
class Changer {
public:
    explicit Changer(Cable& cable) : cable_(cable) {}
    Changer(const Changer&) = delete;
    Changer& operator=(const Changer&) = delete;
    ~Changer() {
        make(nullptr);
        thread_.join();
    }

    /// Begins a change.
    void make(Change change) {
        change_ = change;
        due_.post();
    }

    /// Waits until it is made; returns the time just before.
    Clock::time_point finish() {
        made_.wait();
        if (!error_.empty()) throw std::runtime_error(error_);
        return start_;
    }

private:
    void run() {
        for (;;) {
            due_.wait();
            if (change_ == nullptr) return;
            try {
                start_ = (cable_.*change_)();
            } catch (const std::exception& error) {
                error_ = error.what();
            }
            made_.post();
        }
    }

    Cable& cable_;
    Change change_ = nullptr;
    Clock::time_point start_;
    std::string error_;
    Signal due_;
    Signal made_;
    std::thread thread_{[this] { run(); }};
};

/// Times one event with one listener, again and again. Before and after that the network is there.
///
/// Threads: the main thread only.
class Experiment {
public:
    Experiment(Cable& cable, const Listener& listener, const Event& event)
        : listener_(listener), event_(event), changer_(cable), ear_(listener.make(cable)) {
        quiet_.listen();
        if (!ear_->waitFor(true, Clock::now() + 10s)) throw std::runtime_error("the network is not there");
    }

    /// The seconds of some events; fewer when it is not heard of them.
    std::vector<double> run(std::size_t count) {
        std::vector<double> times;
        times.reserve(count);
        if (event_.isOnlineAfter) step(event_.undo, false);
        for (std::size_t i = 0; i < count; ++i) {
            const auto time = step(event_.change, event_.isOnlineAfter);
            step(event_.undo, !event_.isOnlineAfter);
            if (!time) break;
            times.push_back(*time);
        }
        if (event_.isOnlineAfter) step(event_.change, true);
        return times;
    }

private:
    /// Makes a change and waits until it was heard of; returns how long that took.
    std::optional<double> step(Change change, bool isOnlineAfter) {
        quiet_.waitForQuiet(listener_.pause);
        changer_.make(change);
        const auto heard = ear_->waitFor(isOnlineAfter, Clock::now() + patience);
        const auto start = changer_.finish();
        if (!heard || *heard < start) return std::nullopt; // not heard, nor of what came before
        return std::chrono::duration<double>(*heard - start).count();
    }

    static constexpr auto patience = 2s;

    const Listener& listener_;
    const Event& event_;
    const Wakefulness wakefulness_;
    RoutingSocket quiet_;
    Changer changer_;
    std::unique_ptr<NetworkEar> ear_;
};

double percentile(const std::vector<double>& sorted, unsigned percent) {
    return sorted[std::min(sorted.size() - 1, sorted.size() * percent / 100)];
}

void measure(benchmark::State& state, Cable& cable, const Listener& listener, const Event& event) {
    constexpr std::size_t warmUp = 2; // brings up the engine's threads
    constexpr std::size_t count = 15;
    for ([[maybe_unused]] auto _ : state) {
        Experiment experiment(cable, listener, event);
        experiment.run(warmUp);
        auto times = experiment.run(count);
        if (times.size() < count) return state.SkipWithError("it was not heard of");
        std::ranges::sort(times);
        state.SetIterationTime(percentile(times, 50));
        state.counters["worst"] = times.back() * 1e9;
    }
}

void printRow(const Event& event, const Listener& listener, std::vector<double> times, std::size_t count) {
    std::printf("| %s, %s | %s | ", event.name, listener.window, listener.name);
    if (times.size() < count) {
        std::printf("not noticed | | |\n");
    } else {
        std::ranges::sort(times);
        constexpr double milliseconds = 1000;
        std::printf("%.2f | %.2f | %.2f |\n", percentile(times, 50) * milliseconds,
                    percentile(times, 99) * milliseconds, times.back() * milliseconds);
    }
    std::fflush(stdout);
}

/// Whether a listener hears of an event at all: GLib's monitor knows routes, not carriers.
bool isHeard(Cable& cable, const Listener& listener, const Event& event) {
    return Experiment(cable, listener, event).run(1).size() == 1;
}

} // namespace

void addReachabilityLatencyRows(Cable& cable) {
    for (const auto& event : events) {
        for (const auto& listener : listeners()) {
            if (!isHeard(cable, listener, event)) continue;
            addLatenessRow(std::string(event.name) + ", " + listener.window, listener.name,
                           [&](benchmark::State& state) { measure(state, cable, listener, event); });
        }
    }
}

void printReachabilityLatencies(Cable& cable, unsigned rounds) {
    std::printf("| Change | Who hears of it | p50, ms | p99, ms | worst, ms |\n|---|---|--:|--:|--:|\n");
    for (const auto& event : events) {
        for (const auto& listener : listeners()) {
            Experiment experiment(cable, listener, event);
            experiment.run(2);
            printRow(event, listener, experiment.run(rounds), rounds);
        }
    }
}

} // namespace vorlan::benchmarks
