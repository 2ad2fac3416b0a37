// SPDX-License-Identifier: Apache-2.0
#pragma once

// Runs the first call of a burst at once, and then the latest one from time to time.
//
//     Sampler preview(100ms, Queue::main());
//     preview.sample([] { redraw(); });

#include <VorlanFoundation/Platform/DispatchTimeInterval.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Handle.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/Work.h>

namespace vorlan {

/// Lets a block through at most once per delay: the first at once, then the latest given meanwhile.
///
/// Threads:     safe from any thread, but for moving and dropping the handle.
/// Owns:        the block that waits, until it was submitted, was replaced, or the sampler is dropped.
/// Re-entrancy: a block may call `sample`, and drop the sampler.
/// Time:        the queue's clock; each delay begins when a block is submitted. Once the sampler is dropped
///              no waiting block runs; one that was submitted does. With `never()` as its delay a sampler
///              runs its first block and no other.
class VORLAN_EXPORT Sampler {
public:
    /// Makes a sampler whose first block runs at once.
    ///
    /// @param delay The least time from block to block.
    /// @param queue Where blocks run; a serial one keeps them apart.
    Sampler(DispatchTimeInterval delay, Queue queue);
    Sampler(Sampler&&) noexcept;
    Sampler& operator=(Sampler&&) noexcept;
    ~Sampler();

    /// The least time from block to block.
    DispatchTimeInterval delay() const;

    /// Submits `block`, or keeps it for the end of the delay that is under way, in place of one kept before.
    void sample(Work block);

private:
    class State;

    detail::Handle<State> state_;
};

} // namespace vorlan
