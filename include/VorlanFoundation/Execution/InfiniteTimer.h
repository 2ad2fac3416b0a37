// SPDX-License-Identifier: Apache-2.0
#pragma once

// A timer that ticks until it is stopped or dropped.
//
//     InfiniteTimer poll({.deadline = 0, .pollInterval = 30.0});
//     poll.start([] { refresh(); });

#include <VorlanFoundation/Execution/TickTockable.h>
#include <VorlanFoundation/Platform/Handle.h>
#include <VorlanFoundation/Platform/Queue.h>

#include <cstdint>
#include <functional>

namespace vorlan {

/// Calls back in the background: first when its deadline has come, then at every poll interval.
///
/// The schedule is fixed when the timer is made: starting and stopping lets ticks through or holds them back,
/// and moves none. Ticks that fall due while it is stopped, or while an earlier one runs, are joined into one.
///
/// Threads:     safe from any thread, but for moving and dropping the handle, which are for one thread once
///              no other uses it. Ticks come on the timer's queue, one at a time, never on the main thread
///              unless that is the queue's.
/// Owns:        the tick, until it is replaced, or until the timer was dropped and a running tick has ended.
///              The timer does not keep itself alive: ticks come for as long as the handle is held.
/// Re-entrancy: a tick may start, stop, and drop its timer.
/// Time:        the queue's clock. Ticks are never early; they may be up to 600 milliseconds late, as that
///              lets the system join wake-ups. After `stop()` a tick that was on its way may still come. Once
///              the timer is dropped none begins, and none is running: dropping it waits for one that is,
///              unless it is that very tick that drops it. So a tick must not wait for the thread that drops
///              the timer.
/// Errors:      a poll interval that is not finite, or longer than some 292 years, stops the process (SIGILL).
class VORLAN_EXPORT InfiniteTimer final : public TickTockable {
public:
    /// When a timer ticks.
    struct Schedule {
        std::int64_t deadline; ///< The first tick: so many seconds from now; zero or less means at once.
        double pollInterval;   ///< Seconds from tick to tick; zero or less means that there is one tick only.
    };

    /// Makes a timer that is stopped.
    ///
    /// @param schedule When it ticks; seconds are those of the queue's clock, counted from this call.
    /// @param queue    Where it ticks.
    explicit InfiniteTimer(Schedule schedule,
                           const Queue& queue = Queue::global(QualityOfService::userInitiated));
    InfiniteTimer(InfiniteTimer&&) noexcept;
    /// Drops the timer that was here.
    InfiniteTimer& operator=(InfiniteTimer&&) noexcept;
    /// Ends the ticking; see `Time` above for what may still run.
    ~InfiniteTimer() override;

    /// Lets ticks through and makes `tick` what they call, in place of what was called before.
    void start(std::function<void()> tick) override;

    /// Holds ticks back until the next start; does nothing when the timer is stopped.
    void stop() override;

private:
    class Ticking;

    void drop() noexcept;

    detail::Handle<Ticking> ticking_;
};

} // namespace vorlan
