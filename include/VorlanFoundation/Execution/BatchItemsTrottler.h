// SPDX-License-Identifier: Apache-2.0
#pragma once

// Collects items and hands them over together.
//
//     BatchItemsTrottler<Event> upload(2s, Queue::global(QualityOfService::utility),
//                                      [](std::vector<Event> events) { send(events); });
//     upload(event);

#include <VorlanFoundation/Platform/DispatchTimeInterval.h>
#include <VorlanFoundation/Platform/Handle.h>
#include <VorlanFoundation/Platform/Queue.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vorlan {

namespace detail {

/// What a batcher shares with the work that it has scheduled. Items are touched by barriers of one queue only.
template <class T>
class Batch : public std::enable_shared_from_this<Batch<T>> {
public:
    using Action = std::function<void(std::vector<T>)>;

    Batch(DispatchTimeInterval delay, Queue callQueue, Action action, Queue synchronizationQueue)
        : delay_(delay),
          callQueue_(std::move(callQueue)),
          synchronizationQueue_(std::move(synchronizationQueue)),
          action_(std::move(action)) {}

    DispatchTimeInterval delay() const { return delay_; }

    void add(T item) {
        synchronizationQueue_.barrierAsync([weak = this->weak_from_this(), item = std::move(item)]() mutable {
            if (const auto self = weak.lock()) self->append(std::move(item));
        });
    }

private:
    void append(T item) {
        items_.push_back(std::move(item));
        if (std::exchange(isDelaying_, true)) return;
        synchronizationQueue_.barrierAsyncAfter(delay_,
                                                [self = this->shared_from_this()] { self->deliver(); });
    }

    void deliver() {
        callQueue_.async([self = this->shared_from_this(), items = std::exchange(items_, {})]() mutable {
            self->action_(std::move(items));
        });
        isDelaying_ = false;
    }

    const DispatchTimeInterval delay_;
    const Queue callQueue_;
    const Queue synchronizationQueue_;
    const Action action_;
    bool isDelaying_ = false;
    std::vector<T> items_;
};

} // namespace detail

/// Collects single items and passes them on as one array, at most once per delay.
///
/// The first item after a quiet period starts a delay; what comes before it ends goes into the same array, in
/// the order of the calls of any one thread.
///
/// Threads:     safe from any thread, but for moving and dropping the handle.
/// Owns:        the action and the items. A delivery that is pending is made also when the batcher was
///              dropped; an item that was not yet taken in by then (its delay had not begun) is dropped too.
/// Re-entrancy: the action may batch items, and drop the batcher.
/// Time:        the clock of the synchronisation queue; never early.
/// Errors:      an exception of the action leaves a block of the call queue, and so stops the process.
template <class T>
class BatchItemsTrottler {
public:
    /// Makes a batcher with no items.
    ///
    /// @param delay                From the first item of an array to its delivery.
    /// @param queue                Where `action` is called.
    /// @param action               Takes the items, in order.
    /// @param synchronizationQueue Where items are collected and the delay is measured; one of its own, unless
    ///                             a test wants to drive it by hand.
    BatchItemsTrottler(DispatchTimeInterval delay, Queue queue, std::function<void(std::vector<T>)> action,
                       Queue synchronizationQueue = Queue("BatchItemsTrottlerSynchronizationQueue",
                                                          Queue::concurrent))
        : batch_(std::make_shared<detail::Batch<T>>(delay, std::move(queue), std::move(action),
                                                    std::move(synchronizationQueue))) {}
    BatchItemsTrottler(BatchItemsTrottler&&) noexcept = default;
    BatchItemsTrottler& operator=(BatchItemsTrottler&&) noexcept = default;
    ~BatchItemsTrottler() = default;

    /// From the first item of an array to its delivery.
    DispatchTimeInterval delay() const { return batch_->delay(); }

    /// Adds an item to the array that is delivered next. Returns at once.
    void batch(T item) { batch_->add(std::move(item)); }

    /// The same as `batch`.
    void callAsFunction(T item) { batch(std::move(item)); }

    /// The same as `batch`.
    void operator()(T item) { batch(std::move(item)); }

private:
    detail::Handle<detail::Batch<T>> batch_;
};

} // namespace vorlan
