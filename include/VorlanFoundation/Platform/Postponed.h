// SPDX-License-Identifier: Apache-2.0
#pragma once

// Something that waits for its time, and can be replaced meanwhile by something else with another time.
//
// Replacing is what happens most, many thousand times a second, so it costs a lock and no timer: the check
// that was scheduled first finds out, when its time comes, that there is a later one, and is scheduled again
// for that.

#include <VorlanFoundation/Platform/DispatchTime.h>
#include <VorlanFoundation/Platform/Queue.h>

#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace vorlan::detail {

/// What a check that is scheduled does to the object that it checks.
enum class Lifetime {
    untilDropped, ///< Nothing: once the last other reference is gone, what waits is dropped with the object.
    untilChecked, ///< Keeps it alive: what waits is run.
};

/// Holds at most one payload, and runs it on a queue when it is due.
///
/// Threads:     safe from any thread.
/// Owns:        the payload, until it is run or replaced.
/// Re-entrancy: `run` may put the next payload.
/// Time:        the queue's clock; a payload is run once it is due, never earlier.
template <class Payload>
class Postponed : public std::enable_shared_from_this<Postponed<Payload>> {
public:
    Postponed(Queue queue, Lifetime lifetime) : queue_(std::move(queue)), lifetime_(lifetime) {}
    Postponed(const Postponed&) = delete;
    Postponed& operator=(const Postponed&) = delete;
    virtual ~Postponed() = default;

protected:
    /// Has `payload` run at `due`, in place of the one that waits.
    void put(DispatchTime due, Payload payload) {
        std::optional<Payload> replaced(std::move(payload)); // Destroyed when the lock is released again.
        {
            const std::lock_guard lock(mutex_);
            due_ = due;
            waiting_.swap(replaced);
            if (nextCheck_ <= due) return;
            nextCheck_ = due;
        }
        scheduleCheck(due);
    }

    /// Runs a payload that was due; on the queue, without a lock.
    virtual void run(Payload payload) = 0;

    const Queue& queue() const { return queue_; }

private:
    void scheduleCheck(DispatchTime time) {
        auto self = lifetime_ == Lifetime::untilChecked ? this->shared_from_this() : nullptr;
        queue_.asyncAfter(time, [self = std::move(self), weak = this->weak_from_this(), time] {
            if (const auto strong = self ? self : weak.lock()) strong->check(time);
        });
    }

    void check(DispatchTime scheduled) {
        std::optional<Payload> payload;
        {
            const std::lock_guard lock(mutex_);
            if (nextCheck_ == scheduled) nextCheck_ = DispatchTime::distantFuture();
            if (!waiting_) return;
            if (queue_.now() >= due_) {
                payload.swap(waiting_);
            } else if (due_ >= nextCheck_) {
                return; // Another check comes in time.
            } else {
                nextCheck_ = scheduled = due_;
            }
        }
        if (payload) {
            run(std::move(*payload));
        } else {
            scheduleCheck(scheduled);
        }
    }

    const Queue queue_;
    const Lifetime lifetime_;
    std::mutex mutex_;
    std::optional<Payload> waiting_;
    DispatchTime due_ = DispatchTime(0);
    DispatchTime nextCheck_ = DispatchTime::distantFuture(); ///< The earliest check that is scheduled.
};

} // namespace vorlan::detail
