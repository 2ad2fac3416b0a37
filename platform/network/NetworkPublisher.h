// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/network/NetworkCenter.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace vorlan::network {

/// Tells subscribers a value that is worked out from the network, whenever it has changed: what the path and
/// the flags toward a destination have in common.
///
/// Subscribers are called on the center's queue, and therefore in the order of what was found. Reading the value
/// evaluates at once when a change is pending, and tells it to the subscribers too, so that nobody is ever told of an
/// older state than somebody has read.
///
/// Threads:     `subscribe` from any thread; the rest on the center's queue.
/// Owns:        the center; a subscriber, until its subscription is dropped. A subscription keeps the publisher.
/// Re-entrancy: a subscriber never calls back.
template <class Value>
class NetworkPublisher : public NetworkDependent,
                         public std::enable_shared_from_this<NetworkPublisher<Value>> {
protected:
    /// Called with a value.
    using Listener = std::function<void(const Value&)>;

    explicit NetworkPublisher(std::shared_ptr<NetworkCenter> center) : center_(std::move(center)) {}

    /// Has the listener told the present value, once there is one, and each new one, until the result is dropped.
    std::shared_ptr<void> listen(Listener listener) {
        const auto subscription = std::make_shared<Subscription>(std::move(listener));
        const auto self = this->shared_from_this();
        center_->queue().async([self, subscription] { self->add(subscription); });
        // The token may be dropped anywhere, on the queue too, so its removal is not waited for.
        auto drop = [self, subscription](void*) {
            subscription->dropped.store(true, std::memory_order_release);
            self->center_->queue().async([self, subscription] { self->remove(subscription); });
        };
        return {subscription.get(), std::move(drop)};
    }

    /// Brings the value up to date. What was found while nobody listened is no value to fall back on.
    void refresh() {
        if (!isWatched()) value_.reset();
        center_->update(*this);
    }

    /// Sets the value, and tells it if it differs from the one before.
    void publish(const Value& value) {
        const bool isNews = value_ != value;
        value_ = value; // also when it differs in what does not count
        if (!isNews) return;
        for (const auto& subscription : subscriptions_) subscription->tell(value);
    }

    /// Called before the first subscriber is added, and after the last was removed.
    virtual void beginWatching() {}
    virtual void endWatching() {}

    bool isWatched() const noexcept { return !subscriptions_.empty(); }
    const std::optional<Value>& value() const noexcept { return value_; }
    NetworkCenter& center() const noexcept { return *center_; }

private:
    struct Subscription {
        explicit Subscription(Listener function) : listener(std::move(function)) {}

        void tell(const Value& value) const {
            if (!dropped.load(std::memory_order_acquire)) listener(value);
        }

        const Listener listener;
        std::atomic<bool> dropped = false;
    };

    void add(const std::shared_ptr<Subscription>& subscription) {
        if (isWatched()) {
            center_->update();
        } else {
            value_.reset();
            beginWatching();
            center_->attach(*this);
        }
        subscriptions_.push_back(subscription);
        if (value_) subscription->tell(*value_);
    }

    void remove(const std::shared_ptr<Subscription>& subscription) {
        std::erase(subscriptions_, subscription);
        if (isWatched()) return;
        center_->detach(*this);
        endWatching();
        value_.reset();
    }

    const std::shared_ptr<NetworkCenter> center_;
    std::vector<std::shared_ptr<Subscription>> subscriptions_;
    std::optional<Value> value_;
};

} // namespace vorlan::network
