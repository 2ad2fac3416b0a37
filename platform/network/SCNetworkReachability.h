// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <VorlanFoundation/Platform/SystemConfiguration.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace vorlan {

/// A reachability object: passes the flags of its source on to a callback, on a queue.
///
/// Threads: safe from any thread.
/// Owns:    its source; its queue, while one is set; what was retained for the callback. Callouts on their way to the
///          queue hold it weakly.
/// Errors:  as statuses.
class SCNetworkReachability : public std::enable_shared_from_this<SCNetworkReachability> {
public:
    explicit SCNetworkReachability(std::shared_ptr<SCNetworkReachabilitySource> source)
        : source_(std::move(source)) {}

    /// The flags now.
    SCNetworkReachabilitySource::Answer flags();

    /// Sets or clears what is called.
    std::int32_t setCallback(SCNetworkReachabilityCallBack callout,
                             const SCNetworkReachabilityContext* context);

    /// Begins or ends the deliveries.
    std::int32_t setDispatchQueue(const std::optional<Queue>& queue);

    /// A line for logs.
    std::string description();

private:
    class Callback;
    class Delivery;

    std::int32_t begin(const Queue& queue);
    void end();
    void call(SCNetworkReachabilityFlags flags);
    std::shared_ptr<const Callback> callback();

    const std::shared_ptr<SCNetworkReachabilitySource> source_;
    std::mutex
        mutex_; // guards what follows; never held while anything is called, retained, released or dropped
    std::shared_ptr<const Callback> callback_;
    std::shared_ptr<Delivery> delivery_; // null while no queue is set
    std::shared_ptr<void> subscription_;
};

} // namespace vorlan
