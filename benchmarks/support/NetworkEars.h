// SPDX-License-Identifier: Apache-2.0
#pragma once

// Whoever hears whether the network is there: the kernel's bare messages, this library, GLib.

#include "benchmarks/support/KernelNetwork.h"

#include <chrono>
#include <memory>
#include <optional>

namespace vorlan::benchmarks {

/// Hears of changes on the main thread, and remembers when it heard of the last one.
///
/// Threads: the main thread only.
class NetworkEar {
public:
    NetworkEar() = default;
    NetworkEar(const NetworkEar&) = delete;
    NetworkEar& operator=(const NetworkEar&) = delete;
    virtual ~NetworkEar() = default;

    /// Waits until the network is there, or not; returns when that was heard, or nothing when it was not.
    virtual std::optional<Clock::time_point> waitFor(bool isOnline, Clock::time_point deadline) = 0;
};

/// How long Reachability gathers changes.
inline constexpr std::chrono::milliseconds usualWindow(20);

/// The messages themselves, gathered for that long.
std::unique_ptr<NetworkEar> bareEar(const Cable& cable, std::chrono::milliseconds window);

/// Reachability of the network in general, told on the main queue.
std::unique_ptr<NetworkEar> ourEar();

/// What is below Reachability, which gathers nothing, told on the main queue.
std::unique_ptr<NetworkEar> ourImpatientEar();

/// GNetworkMonitor, told on the main loop.
std::unique_ptr<NetworkEar> glibEar();

} // namespace vorlan::benchmarks
