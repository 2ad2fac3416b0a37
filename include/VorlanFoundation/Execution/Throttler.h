// SPDX-License-Identifier: Apache-2.0
#pragma once

// Runs only the last of a burst of calls.
//
//     Throttler save(500);                                    // milliseconds
//     save.throttle([document] { document->save(); });

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Handle.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/Work.h>

#include <cstdint>

namespace vorlan {

/// Lets one block run where many were asked for: each call takes the place of the one that still waits.
///
/// A block runs at once when the run before it lies more than the interval back, and otherwise a whole
/// interval after its call. Only a run counts, not a call; the very first call runs at once.
///
/// Threads:     safe from any thread, but for moving and dropping the handle.
/// Owns:        the block that waits, until it ran, was replaced, or the throttler is dropped.
/// Re-entrancy: a block may call `throttle`, and drop the throttler.
/// Time:        waits are on the queue's clock; whether the last run lies far enough back is told by the
///              calendar, to a whole millisecond. Once the throttler is dropped no block begins, save one
///              that the queue is just about to run.
class VORLAN_EXPORT Throttler {
public:
    /// Makes a throttler that has run nothing.
    ///
    /// @param milliseconds The interval.
    /// @param queue        Where blocks run.
    explicit Throttler(std::int64_t milliseconds, Queue queue = Queue::global(QualityOfService::background));
    Throttler(Throttler&&) noexcept;
    Throttler& operator=(Throttler&&) noexcept;
    ~Throttler();

    /// Has `block` run, in place of the one that waits, if any. Returns at once.
    void throttle(Work block);

private:
    class State;

    detail::Handle<State> state_;
};

} // namespace vorlan
