// SPDX-License-Identifier: Apache-2.0
#pragma once

// A running monitor, and a way to wait until it says something.

#include <VorlanFoundation/Platform/NWPathMonitor.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <set>

namespace vorlan::tests {

/// What is expected of a path.
struct ExpectedPath {
    NWPath::Status status = NWPath::Status::unsatisfied;
    bool v4 = false;
    bool v6 = false;
    std::set<InterfaceType> types{};

    /// Whether the path is as expected, nothing more and nothing less.
    bool matches(const NWPath& path) const {
        if (path.status() != status || path.supportsIPv4() != v4 || path.supportsIPv6() != v6) return false;
        using enum InterfaceType;
        for (const auto type : {other, wifi, cellular, wiredEthernet, loopback})
            if (path.usesInterfaceType(type) != types.contains(type)) return false;
        return true;
    }
};

inline const ExpectedPath offline{};
inline const ExpectedPath wiredV4{NWPath::Status::satisfied, true, false, {InterfaceType::wiredEthernet}};
inline const ExpectedPath wiredV6{NWPath::Status::satisfied, false, true, {InterfaceType::wiredEthernet}};

/// Keeps the path that was delivered last.
///
/// Threads: safe from any thread.
class WatchedNetwork {
public:
    explicit WatchedNetwork(std::shared_ptr<NWPathSource> source = NWPathSource::system())
        : monitor_(std::move(source)) {
        monitor_.setPathUpdateHandler([this](const NWPath& path) {
            const std::lock_guard lock(mutex_);
            last_ = path;
            ++deliveries_;
            changed_.notify_all();
        });
        monitor_.start(queue_);
    }
    WatchedNetwork(const WatchedNetwork&) = delete;
    WatchedNetwork& operator=(const WatchedNetwork&) = delete;
    ~WatchedNetwork() {
        monitor_.cancel();
        queue_.sync([] {}); // a delivery that runs may still use the members
    }

    /// Waits until the last delivered path and the current one are as expected; false after `limit`.
    bool becomes(const ExpectedPath& expected, std::chrono::milliseconds limit = std::chrono::seconds(3)) {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait_until(lock, deadline, [&] { return last_ && expected.matches(*last_); });
            const bool delivered = last_ && expected.matches(*last_);
            lock.unlock();
            if (delivered && expected.matches(monitor_.currentPath())) return true;
            if (std::chrono::steady_clock::now() >= deadline) return false;
            lock.lock();
        }
    }

    int deliveries() const {
        const std::lock_guard lock(mutex_);
        return deliveries_;
    }

    NWPathMonitor& monitor() { return monitor_; }
    const Queue& queue() const { return queue_; }

private:
    const Queue queue_{"WatchedNetwork"};
    NWPathMonitor monitor_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<NWPath> last_;
    int deliveries_ = 0;
};

} // namespace vorlan::tests
