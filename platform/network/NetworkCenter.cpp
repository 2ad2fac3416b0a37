// SPDX-License-Identifier: Apache-2.0
#include "platform/network/NetworkCenter.h"

#include "platform/network/HostResolver.h"
#include "platform/network/ResolverFiles.h"
#include "platform/network/RtnetlinkFeed.h"
#include "platform/network/RtnetlinkKernel.h"
#include "platform/network/SysfsDirectory.h"

#include <algorithm>
#include <mutex>

namespace vorlan::network {

namespace {

constexpr std::chrono::milliseconds unsettledPause(50);
constexpr std::chrono::seconds deafPause(5);

/// The one center of the process.
///
/// Threads: safe from any thread.
/// Owns:    the center weakly, so that it goes with its last user; and the queue for good, so that centers
///          that are made one after the other do not each take a thread.
class SharedCenter {
public:
    std::shared_ptr<NetworkCenter> get() {
        const std::lock_guard lock(mutex_);
        if (auto center = center_.lock()) return center;
        const auto center = std::make_shared<NetworkCenter>(queue_, NetworkProviders::ofThisMachine());
        center_ = center;
        return center;
    }

private:
    std::mutex mutex_;
    std::weak_ptr<NetworkCenter> center_;
    const Queue queue_{"com.vorlan.network"};
};

} // namespace

NetworkProviders NetworkProviders::ofThisMachine() {
    NetworkProviders providers;
    providers.openKernel = RtnetlinkKernel::open;
    providers.openFeed = [](const Queue& queue, std::function<void()> readable) {
        return RtnetlinkFeed::open(queue, std::move(readable));
    };
    providers.sysfs = std::make_shared<SysfsDirectory>();
    providers.connectProbe = connectSocket;
    providers.resolve = [](const std::string& name, HostResolver::Completion completion) {
        // Never destroyed: its threads may be busy at the end of the process.
        static auto& resolver = *new HostResolver(HostResolver::lookUp);
        resolver.resolve(name, std::move(completion));
    };
    providers.watchResolver = [](std::function<void()> changed) -> std::shared_ptr<void> {
        return std::make_shared<ResolverFiles>("/etc", std::move(changed));
    };
    return providers;
}

std::shared_ptr<NetworkCenter> NetworkCenter::shared() {
    // Never destroyed: monitors that are static objects may be used, and end, after any static object of
    // ours.
    static auto& center = *new SharedCenter;
    return center.get();
}

void NetworkCenter::attach(NetworkDependent& dependent) {
    // First the feed, then the evaluation: a change in between is heard, not missed.
    openFeed();
    dependents_.push_back(&dependent);
    drainFeed();
    if (dirty_ || !feed_)
        evaluateAll();
    else
        evaluate(dependent);
    retryLater();
}

void NetworkCenter::detach(NetworkDependent& dependent) {
    std::erase(dependents_, &dependent);
    if (!dependents_.empty()) return;
    feed_.reset();
    due_.reset();
    noteChange(); // whatever happens from now on is not heard
}

bool NetworkCenter::isAttached(const NetworkDependent& dependent) const {
    return std::ranges::find(dependents_, &dependent) != dependents_.end();
}

void NetworkCenter::openFeed() {
    if (feed_) return;
    auto opened = providers_.openFeed(queue_, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->hear();
    });
    if (opened) feed_ = std::move(*opened);
    noteChange(); // nothing was heard until now
}

void NetworkCenter::drainFeed() {
    if (!feed_) return;
    const auto news = feed_->drain();
    if (news == ChangeFeed::News::none) return;
    noteChange();
    if (news != ChangeFeed::News::broken) return;
    feed_.reset();
    evaluateAfter(providers_.window); // over another one
}

void NetworkCenter::noteChange() {
    ++changes_;
    dirty_ = true;
    survey_.reset();
}

void NetworkCenter::hear() {
    drainFeed();
    if (dirty_) evaluateAfter(providers_.window);
}

void NetworkCenter::evaluateAfter(DispatchTimeInterval interval) {
    const DispatchTime deadline = queue_.now() + interval;
    if (due_ && *due_ <= deadline) return;
    due_ = deadline;
    queue_.asyncAfter(deadline, [weak = weak_from_this(), deadline] {
        if (const auto self = weak.lock()) self->evaluateDue(deadline);
    });
}

void NetworkCenter::evaluateDue(DispatchTime deadline) {
    if (due_ != deadline) return; // an earlier one took its place, or nothing is attached any more
    due_.reset();
    openFeed();
    update();
}

void NetworkCenter::update() {
    drainFeed();
    if (dirty_ || !feed_) evaluateAll();
    retryLater();
}

void NetworkCenter::update(NetworkDependent& dependent) {
    if (!dependents_.empty()) update();
    if (!isAttached(dependent)) evaluate(dependent);
}

void NetworkCenter::evaluateAll() {
    const Progress progress = ask([this](const Survey& survey) {
        for (NetworkDependent* dependent : dependents_)
            if (const Progress step = dependent->evaluate(survey); !step.isSettled()) return step;
        return Progress();
    });
    dirty_ = !progress.isSettled();
    planRetry(progress);
    if (dirty_)
        for (NetworkDependent* dependent : dependents_) dependent->giveUp(progress);
}

void NetworkCenter::planRetry(const Progress& progress) {
    retry_.reset();
    if (!feed_ || progress.outcome == Outcome::failed) retry_ = deafPause;
    if (progress.outcome == Outcome::unsettled) retry_ = unsettledPause;
}

void NetworkCenter::evaluate(NetworkDependent& dependent) {
    const Progress progress = ask([&](const Survey& survey) { return dependent.evaluate(survey); });
    if (progress.isSettled()) return;
    dirty_ = true;
    planRetry(progress);
    retryLater();
    dependent.giveUp(progress);
}

Progress NetworkCenter::ask(FunctionRef<Progress(const Survey&)> question) {
    if (!feed_) survey_.reset();
    if (!kernel_) {
        auto opened = providers_.openKernel();
        if (!opened) return {Outcome::failed, opened.error()};
        kernel_ = std::move(*opened);
    }
    const Progress progress = examine(*kernel_, *providers_.sysfs, survey_, question);
    if (progress.outcome == Outcome::failed)
        kernel_.reset(); // the survey, which refers to it, is gone already
    return progress;
}

void NetworkCenter::retryLater() {
    if (retry_ && !dependents_.empty()) evaluateAfter(*retry_);
}

std::shared_ptr<void> NetworkCenter::watchResolver() {
    if (auto watch = resolverWatch_.lock()) return watch;
    auto watch = providers_.watchResolver([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self) return;
        self->queue_.async([self] {
            ++self->resolverChanges_;
            self->noteChange();
            if (!self->dependents_.empty()) self->evaluateAfter(self->providers_.window);
        });
    });
    resolverWatch_ = watch;
    return watch;
}

} // namespace vorlan::network
