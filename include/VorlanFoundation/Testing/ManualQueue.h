// SPDX-License-Identifier: Apache-2.0
#pragma once

// A queue whose clock is turned by hand, so that tests of delays are instant and exact.
//
//     testing::ManualQueue queue;
//     auto search = debounce<std::string>(300, queue, find);
//     search("v");
//     queue.advance(299ms);  EXPECT_EQ(found, 0);
//     queue.advance(1ms);    EXPECT_EQ(found, 1);

#include <VorlanFoundation/Platform/Queue.h>

#include <cstddef>
#include <memory>

namespace vorlan::testing {

class ManualQueueProvider;

/// A serial queue that runs its work only when it is told to, on the thread that tells it.
///
/// Work runs in the order of its deadlines, and in the order of submission where those are equal; work
/// submitted without a delay is due at once. While a block runs, the clock stands at the block's deadline (or
/// where it was, if that was later).
///
/// Threads:     submitting is safe from any thread; `advance` and `runPending` are for one thread at a time.
/// Owns:        the work that was submitted and has not run, until the last copy is gone: then nobody can turn
///              the queue any more, and the work is dropped, also where it holds a handle of the queue.
/// Re-entrancy: a block may submit work and make timers; what falls due within the span being advanced runs
///              too. A block must not advance its own queue; that stops the process with a message.
/// Time:        a clock of its own that begins at one hour and moves only by `advance`, and a calendar that
///              begins at 2001-01-01T00:00:00Z and moves with it.
/// Errors:      an exception of a block leaves `advance` or `runPending`; the work behind it stays.
class ManualQueue : public Queue {
public:
    /// A queue with nothing on it.
    ManualQueue();

    /// Moves the clock on by `interval`, not below zero, and runs all that falls due on the way, in order.
    void advance(DispatchTimeInterval interval);

    /// Runs what is due by now; the same as advancing by nothing.
    void runPending();

    /// How many blocks wait, those not yet due included; timers are not counted.
    std::size_t pendingCount() const;

private:
    explicit ManualQueue(std::shared_ptr<ManualQueueProvider> provider);

    std::shared_ptr<ManualQueueProvider> manual_;
};

} // namespace vorlan::testing
