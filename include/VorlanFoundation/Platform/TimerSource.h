// SPDX-License-Identifier: Apache-2.0
#pragma once

// A repeating timer whose events run on a queue.
//
//     TimerSource timer(queue);
//     timer.setEventHandler([] { poll(); });
//     timer.schedule({.deadline = queue.now() + 1s, .repeating = 30s, .leeway = 100ms});
//     timer.resume();

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Queue.h>

#include <functional>

namespace vorlan {

/// A timer that calls its handler on a queue, first at a deadline and then at an interval.
///
/// It is made suspended: `resume()` lets events through. Events that fall due while a handler runs, or while
/// the timer is suspended, are joined into one. Dropping the timer cancels it, in whatever state it is.
///
/// Threads:     safe from any thread; destroying it is for one thread, once no other uses it.
/// Owns:        the handler, until it is replaced, or until the timer was cancelled and a running event has
///              ended.
/// Re-entrancy: the handler may change, suspend, cancel or destroy the timer.
/// Time:        the queue's clock; events keep to the grid of the first deadline (they do not drift), are
///              never early, and late by the leeway at least when the machine is busy. After `cancel()` on
///              the timer's serial queue no event begins; from another thread one that has begun may still be
///              running.
/// Errors:      resuming or suspending out of balance, a repeat interval that is not above zero, or use after
///              the timer was moved from, stops the process with a message.
class VORLAN_EXPORT TimerSource {
public:
    /// Makes a suspended timer for a queue, which lives as long as the timer.
    explicit TimerSource(const Queue& queue);
    TimerSource(TimerSource&&) noexcept;
    TimerSource& operator=(TimerSource&&) noexcept;
    /// Cancels.
    ~TimerSource();

    /// Sets what is called at each event, on the queue.
    void setEventHandler(std::function<void()> handler);

    /// Sets when events are due; replaces what was set before.
    void schedule(const TimerSchedule& schedule);

    /// Lets events through; takes back one `suspend()`, or the suspension that the timer was made with.
    void resume();

    /// Holds events back until as many calls of `resume()` were made.
    void suspend();

    /// Ends the timer for good; later calls of it do nothing.
    void cancel();

    /// Whether `cancel()` was called.
    bool isCancelled() const;

private:
    TimerProvider& timer() const;
    template <class Action>
    auto change(Action&& action);

    TimerReference timer_;
};

} // namespace vorlan
