// SPDX-License-Identifier: Apache-2.0
#include "platform/network/PathCenter.h"

#include "platform/network/RtnetlinkFeed.h"
#include "platform/network/RtnetlinkKernel.h"
#include "platform/network/SysfsDirectory.h"

#include <algorithm>
#include <atomic>

namespace vorlan::network {

namespace {

constexpr std::chrono::milliseconds unsettledPause(50);
constexpr std::chrono::seconds deafPause(5);

} // namespace

PathProviders PathProviders::ofThisMachine() {
    PathProviders providers;
    providers.openKernel = RtnetlinkKernel::open;
    providers.openFeed = [](const Queue& queue, std::function<void()> readable) {
        return RtnetlinkFeed::open(queue, std::move(readable));
    };
    providers.sysfs = std::make_shared<SysfsDirectory>();
    providers.connectProbe = connectSocket;
    return providers;
}

/// One subscriber, until its token is dropped.
///
/// Threads: `subscriber` on the center's queue; `dropped` from any thread.
struct PathCenter::Subscription {
    explicit Subscription(Subscriber function) : subscriber(std::move(function)) {}

    void tell(const NWPath& path) const {
        if (!dropped.load(std::memory_order_acquire)) subscriber(path);
    }

    const Subscriber subscriber;
    std::atomic<bool> dropped = false;
};

NWPath PathCenter::currentPath() {
    return queue_.sync([this] {
        update();
        return *path_;
    });
}

std::shared_ptr<void> PathCenter::subscribe(Subscriber subscriber) {
    const auto subscription = std::make_shared<Subscription>(std::move(subscriber));
    const auto self = shared_from_this();
    queue_.async([self, subscription] { self->add(subscription); });
    // The token may be dropped anywhere, on the queue too, so its removal is not waited for.
    auto drop = [self, subscription](void*) {
        subscription->dropped.store(true, std::memory_order_release);
        self->queue_.async([self, subscription] { self->remove(subscription); });
    };
    return {subscription.get(), std::move(drop)};
}

void PathCenter::add(const std::shared_ptr<Subscription>& subscription) {
    // First the feed, then the path: a change in between is heard, not missed.
    openFeed();
    update();
    subscriptions_.push_back(subscription);
    subscription->tell(*path_);
    retryLater();
}

void PathCenter::remove(const std::shared_ptr<Subscription>& subscription) {
    std::erase(subscriptions_, subscription);
    if (!subscriptions_.empty()) return;
    feed_.reset();
    due_.reset();
    dirty_ = true;
}

void PathCenter::openFeed() {
    if (feed_) return;
    auto opened = providers_.openFeed(queue_, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->hear();
    });
    if (opened) feed_ = std::move(*opened);
    dirty_ = true; // nothing was heard until now
}

void PathCenter::drainFeed() {
    if (!feed_) return;
    const auto news = feed_->drain();
    if (news == ChangeFeed::News::none) return;
    if (news == ChangeFeed::News::broken) feed_.reset();
    dirty_ = true;
}

void PathCenter::hear() {
    drainFeed();
    if (dirty_) evaluateAfter(providers_.window);
}

void PathCenter::evaluateAfter(DispatchTimeInterval interval) {
    const DispatchTime deadline = queue_.now() + interval;
    if (due_ && *due_ <= deadline) return;
    due_ = deadline;
    queue_.asyncAfter(deadline, [weak = weak_from_this(), deadline] {
        if (const auto self = weak.lock()) self->evaluateDue(deadline);
    });
}

void PathCenter::evaluateDue(DispatchTime deadline) {
    if (due_ != deadline) return; // an earlier one took its place, or nobody listens any more
    due_.reset();
    openFeed();
    update();
}

void PathCenter::update() {
    drainFeed();
    if (dirty_ || !feed_) evaluate();
    retryLater();
}

void PathCenter::evaluate() {
    const Evaluation evaluation = askKernel();
    dirty_ = evaluation.outcome != Evaluation::Outcome::settled;
    retry_.reset();
    if (!feed_ || evaluation.outcome == Evaluation::Outcome::failed) retry_ = deafPause;
    if (evaluation.outcome == Evaluation::Outcome::unsettled) retry_ = unsettledPause;

    if (evaluation.outcome == Evaluation::Outcome::settled) return publish(evaluation.path);
    // Better a path that is a moment old than a guess.
    if (evaluation.outcome == Evaluation::Outcome::unsettled && path_) return;
    publish(pathByConnecting(providers_.connectProbe, evaluation.error));
}

Evaluation PathCenter::askKernel() {
    if (!kernel_) {
        auto opened = providers_.openKernel();
        if (!opened) return {.error = opened.error()};
        kernel_ = std::move(*opened);
    }
    Evaluation evaluation = evaluatePath(*kernel_, *providers_.sysfs);
    if (evaluation.outcome == Evaluation::Outcome::failed) kernel_.reset();
    return evaluation;
}

void PathCenter::publish(const NWPath& path) {
    const bool isNews = path_ != path;
    path_ = path; // also when it only has another reason
    if (!isNews) return;
    for (const auto& subscription : subscriptions_) subscription->tell(path);
}

void PathCenter::retryLater() {
    if (retry_ && !subscriptions_.empty()) evaluateAfter(*retry_);
}

} // namespace vorlan::network
