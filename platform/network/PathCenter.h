// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/network/ChangeFeed.h"
#include "platform/network/ConnectProbe.h"
#include "platform/network/Kernel.h"
#include "platform/network/PathEvaluator.h"
#include "platform/network/Sysfs.h"

#include <VorlanFoundation/Platform/NWPathSource.h>
#include <VorlanFoundation/Platform/Queue.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace vorlan::network {

/// The parts of the system that paths are made from; a test puts others in their place.
struct PathProviders {
    /// Opens what is asked for routes.
    std::function<Answer<std::unique_ptr<Kernel>>()> openKernel;
    /// Opens what tells of changes; it calls `readable` on the queue when there is something to drain.
    std::function<Answer<std::unique_ptr<ChangeFeed>>(const Queue& queue, std::function<void()> readable)>
        openFeed;
    /// What is known about devices.
    std::shared_ptr<const Sysfs> sysfs;
    /// What is asked when the kernel cannot be.
    ConnectProbe connectProbe;
    /// Changes are gathered for this long after the first one.
    DispatchTimeInterval window = std::chrono::milliseconds(20);

    /// The running kernel and /sys.
    static PathProviders ofThisMachine();
};

/// Evaluates the path when something changed, and tells all subscribers of each new one.
///
/// Everything happens on one serial queue: evaluations, and the calls of subscribers, which are therefore in
/// the order of what was found. Reading the path evaluates at once when a change is pending, and tells it to
/// the subscribers too, so that nobody is ever told of an older state than somebody has read.
///
/// Threads:     safe from any thread, except from the queue itself.
/// Owns:        one descriptor to ask with once it was asked, another one to hear with while it has a
///              subscriber.
/// Re-entrancy: a subscriber never calls back.
/// Time:        the first change begins a window at whose end the path is evaluated; later ones do not put
///              that off. Without a feed, the path is evaluated every five seconds while there is a
///              subscriber.
/// Errors:      a kernel that cannot be asked is replaced by the connect probe, and tried again the next
///              time.
class PathCenter final : public NWPathSource, public std::enable_shared_from_this<PathCenter> {
public:
    /// Works on `queue`, which must be serial and may be shared with other centers.
    PathCenter(Queue queue, PathProviders providers)
        : queue_(std::move(queue)), providers_(std::move(providers)) {}

    NWPath currentPath() override;
    std::shared_ptr<void> subscribe(Subscriber subscriber) override;

private:
    struct Subscription;

    void add(const std::shared_ptr<Subscription>& subscription);
    void remove(const std::shared_ptr<Subscription>& subscription);
    void openFeed();
    void drainFeed();
    void hear();
    void evaluateAfter(DispatchTimeInterval interval);
    void evaluateDue(DispatchTime deadline);
    void update();
    void evaluate();
    Evaluation askKernel();
    void publish(const NWPath& path);
    void retryLater();

    const Queue queue_;
    const PathProviders providers_;
    // The rest is used on the queue only.
    std::unique_ptr<Kernel> kernel_;
    std::unique_ptr<ChangeFeed> feed_;
    std::vector<std::shared_ptr<Subscription>> subscriptions_;
    std::optional<NWPath> path_;
    bool dirty_ = true;                         // something may have changed since the path was found
    std::optional<DispatchTime> due_;           // when the next evaluation will be
    std::optional<DispatchTimeInterval> retry_; // how soon to evaluate again though nothing was heard
};

} // namespace vorlan::network
