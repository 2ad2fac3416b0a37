// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <VorlanFoundation/Reachability/Reachability.h>

#include <memory>
#include <string>

namespace vorlan {

/// What the system is given to keep with its callback, so that it keeps no monitor alive.
///
/// The system holds each of its references as a `std::shared_ptr` of its own on the heap.
///
/// Threads: safe from any thread.
/// Owns:    the monitor weakly.
class ReachabilityWeakifier {
public:
    explicit ReachabilityWeakifier(std::weak_ptr<Reachability> monitor) : reachability(std::move(monitor)) {}

    /// The context of a callback, good for as long as `weakifier` is.
    static SCNetworkReachabilityContext context(const std::shared_ptr<ReachabilityWeakifier>& weakifier) {
        SCNetworkReachabilityContext context;
        context.info =
            const_cast<void*>(static_cast<const void*>(&weakifier)); // the record's type has no const
        context.retain = [](const void* info) -> const void* { return new Reference(*referenceIn(info)); };
        context.release = [](const void* info) { delete referenceIn(info); };
        context.copyDescription = [](const void* info) {
            const auto monitor = (*referenceIn(info))->reachability.lock();
            return monitor ? monitor->description() : std::string("nil");
        };
        return context;
    }

    /// The monitor that a callback's `info` leads to; null when there is no info, or the monitor is gone.
    static std::shared_ptr<Reachability> monitorOf(const void* info) {
        return info == nullptr ? nullptr : (*referenceIn(info))->reachability.lock();
    }

    const std::weak_ptr<Reachability> reachability;

private:
    using Reference = std::shared_ptr<ReachabilityWeakifier>;

    static const Reference* referenceIn(const void* info) { return static_cast<const Reference*>(info); }
};

} // namespace vorlan
