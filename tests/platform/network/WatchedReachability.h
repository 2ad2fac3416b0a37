// SPDX-License-Identifier: Apache-2.0
#pragma once

// A reachability object whose flags are delivered, and a way to wait until they are as expected.

#include <VorlanFoundation/Platform/SystemConfiguration.h>

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

namespace vorlan {

/// Says flags as people who read failures do.
inline void PrintTo(SCNetworkReachabilityFlags flags, std::ostream* stream) {
    using enum SCNetworkReachabilityFlags;
    *stream << "{" << (contains(flags, reachable) ? " reachable" : "")
            << (contains(flags, transientConnection) ? " transient" : "")
            << (contains(flags, isLocalAddress) ? " local" : "")
            << (contains(flags, isDirect) ? " direct" : "") << " } " << static_cast<std::uint32_t>(flags);
}

} // namespace vorlan

namespace vorlan::tests {

using ReachabilityFlags = SCNetworkReachabilityFlags;

inline constexpr ReachabilityFlags nothing{};
inline constexpr ReachabilityFlags routed = ReachabilityFlags::reachable;
inline constexpr ReachabilityFlags direct = routed | ReachabilityFlags::isDirect;
inline constexpr ReachabilityFlags local = routed | ReachabilityFlags::isLocalAddress;

/// An object for the network in general.
inline SCNetworkReachabilityRef generalTarget() {
    return SCNetworkReachabilityCreateWithAddress(SocketAddress::zero());
}

/// An object for the address of a text.
inline SCNetworkReachabilityRef addressTarget(const std::string& text) {
    return SCNetworkReachabilityCreateWithAddress(SocketAddress::fromText(text).value());
}

/// The flags at this moment; absent when there are none, and SCError() says why.
inline std::optional<ReachabilityFlags> flagsOf(const SCNetworkReachabilityRef& target) {
    ReachabilityFlags flags{};
    if (!SCNetworkReachabilityGetFlags(target, flags)) return std::nullopt;
    return flags;
}

/// Keeps the flags that were delivered last.
///
/// Threads: safe from any thread.
class WatchedReachability {
public:
    explicit WatchedReachability(SCNetworkReachabilityRef target) : target_(std::move(target)) {
        SCNetworkReachabilityContext context;
        context.info = this;
        EXPECT_TRUE(SCNetworkReachabilitySetCallback(target_, take, &context)) << SCErrorString(SCError());
        EXPECT_TRUE(SCNetworkReachabilitySetDispatchQueue(target_, queue_)) << SCErrorString(SCError());
    }
    /// Watches a host by name.
    explicit WatchedReachability(const std::string& name)
        : WatchedReachability(SCNetworkReachabilityCreateWithName(name)) {}
    WatchedReachability(const WatchedReachability&) = delete;
    WatchedReachability& operator=(const WatchedReachability&) = delete;
    ~WatchedReachability() {
        SCNetworkReachabilitySetDispatchQueue(target_, std::nullopt);
        SCNetworkReachabilitySetCallback(target_, nullptr, nullptr);
        queue_.sync([] {}); // a callout that runs may still use the members
    }

    /// Waits until the flags that were delivered last and the present ones are as expected; false after `limit`.
    bool becomes(ReachabilityFlags expected, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        std::unique_lock lock(mutex_);
        for (;;) {
            const bool delivered = changed_.wait_until(lock, deadline, [&] { return last_ == expected; });
            lock.unlock();
            if (delivered && flagsOf(target_) == expected) return true;
            if (std::chrono::steady_clock::now() >= deadline) return false;
            lock.lock();
        }
    }

    /// What was delivered last.
    std::optional<ReachabilityFlags> last() const {
        const std::lock_guard lock(mutex_);
        return last_;
    }

    int deliveries() const {
        const std::lock_guard lock(mutex_);
        return deliveries_;
    }

    const SCNetworkReachabilityRef& target() const { return target_; }

private:
    static void take(const SCNetworkReachabilityRef&, ReachabilityFlags flags, void* info) {
        auto* self = static_cast<WatchedReachability*>(info);
        const std::lock_guard lock(self->mutex_);
        self->last_ = flags;
        ++self->deliveries_;
        self->changed_.notify_all();
    }

    const SCNetworkReachabilityRef target_;
    const Queue queue_{"WatchedReachability"};
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<ReachabilityFlags> last_;
    int deliveries_ = 0;
};

} // namespace vorlan::tests
