// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/network/ChangeFeed.h"
#include "platform/network/ConnectProbe.h"
#include "platform/network/Destination.h"
#include "platform/network/Kernel.h"
#include "platform/network/Survey.h"
#include "platform/network/Sysfs.h"

#include <VorlanFoundation/Platform/FunctionRef.h>
#include <VorlanFoundation/Platform/Queue.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vorlan::network {

/// The parts of the system that everything here is made from; a test puts others in their place.
struct NetworkProviders {
    /// Opens what is asked for routes.
    std::function<Answer<std::unique_ptr<Kernel>>()> openKernel;
    /// Opens what tells of changes; it calls `readable` on the queue when there is something to drain.
    std::function<Answer<std::unique_ptr<ChangeFeed>>(const Queue& queue, std::function<void()> readable)>
        openFeed;
    /// What is known about devices.
    std::shared_ptr<const Sysfs> sysfs;
    /// What is asked when the kernel cannot be.
    ConnectProbe connectProbe;
    /// Looks a host's addresses up; calls `completion` once, on any thread, without any if there are none.
    std::function<void(const std::string& name, std::function<void(std::vector<Destination>)> completion)>
        resolve;
    /// Calls `changed`, on any thread, when names may have other addresses than before, until the result is dropped.
    std::function<std::shared_ptr<void>(std::function<void()> changed)> watchResolver;
    /// Changes are gathered for this long after the first one.
    DispatchTimeInterval window = std::chrono::milliseconds(20);

    /// The running kernel, /sys and the files in /etc.
    static NetworkProviders ofThisMachine();
};

/// Something that is worked out from the network.
///
/// Threads: called on the center's queue, one call at a time.
class NetworkDependent {
public:
    NetworkDependent() = default;
    NetworkDependent(const NetworkDependent&) = delete;
    NetworkDependent& operator=(const NetworkDependent&) = delete;
    virtual ~NetworkDependent() = default;

    /// Works it out, and publishes it if it is settled; called again when something else is not.
    virtual Progress evaluate(const Survey& survey) = 0;

    /// Makes do without, as it could not be worked out; it will be tried again.
    virtual void giveUp(const Progress& progress) = 0;
};

/// Has everything that depends on the network worked out anew when something changed.
///
/// Everything happens on one serial queue. The path monitor and all reachability objects share a center, and with it
/// its descriptors and each survey that it takes.
///
/// Threads:     one thread at a time: that of its queue.
/// Owns:        one descriptor to ask with once it was asked, another one to hear with while something is attached.
///              What is attached must be detached before it goes.
/// Re-entrancy: what is attached never attaches, detaches or asks while it is evaluated.
/// Time:        the first change begins a window at whose end everything is evaluated; later ones do not put
///              that off. Without a feed, that happens every five seconds while something is attached.
/// Errors:      a kernel that cannot be asked is tried again the next time.
class NetworkCenter final : public std::enable_shared_from_this<NetworkCenter> {
public:
    /// Works on `queue`, which must be serial and may be shared with other centers.
    NetworkCenter(Queue queue, NetworkProviders providers)
        : queue_(std::move(queue)), providers_(std::move(providers)) {}

    /// The center of this machine, shared by the whole process and gone with its last user. From any thread.
    static std::shared_ptr<NetworkCenter> shared();

    /// The queue that everything happens on. From any thread.
    const Queue& queue() const noexcept { return queue_; }

    /// What the center was made with. From any thread.
    const NetworkProviders& providers() const noexcept { return providers_; }

    /// Evaluates a dependent now, and from then on at each change.
    void attach(NetworkDependent& dependent);

    /// Ends that.
    void detach(NetworkDependent& dependent);

    /// Evaluates all that is attached if something changed since they were.
    void update();

    /// Evaluates one that may be attached or not, so that it knows the present; the others too if something changed.
    void update(NetworkDependent& dependent);

    /// Evaluates one with what is known, without looking for changes.
    void evaluate(NetworkDependent& dependent);

    /// Watches the files that tell how names are looked up, until the result is dropped; then a change of them is a
    /// change of the network.
    std::shared_ptr<void> watchResolver();

    /// Counts the changes of these files.
    std::uint64_t resolverChanges() const noexcept { return resolverChanges_; }

    /// Counts what was heard, these included.
    std::uint64_t changes() const noexcept { return changes_; }

private:
    bool isAttached(const NetworkDependent& dependent) const;
    void openFeed();
    void drainFeed();
    void hear();
    void noteChange();
    void evaluateAfter(DispatchTimeInterval interval);
    void evaluateDue(DispatchTime deadline);
    void evaluateAll();
    Progress ask(FunctionRef<Progress(const Survey&)> question);
    void planRetry(const Progress& progress);
    void retryLater();

    const Queue queue_;
    const NetworkProviders providers_;
    std::unique_ptr<Kernel> kernel_;
    std::unique_ptr<ChangeFeed> feed_;
    std::optional<Survey> survey_; // good as long as nothing is heard
    std::vector<NetworkDependent*> dependents_;
    bool dirty_ = true;                         // something may have changed since they were evaluated
    std::optional<DispatchTime> due_;           // when the next evaluation will be
    std::optional<DispatchTimeInterval> retry_; // how soon to evaluate again though nothing was heard
    std::weak_ptr<void> resolverWatch_;
    std::uint64_t resolverChanges_ = 0;
    std::uint64_t changes_ = 0;
};

} // namespace vorlan::network
