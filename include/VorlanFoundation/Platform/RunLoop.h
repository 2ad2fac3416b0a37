// SPDX-License-Identifier: Apache-2.0
#pragma once

// The loop that serves the main queue.
//
// A GTK or Qt host, or any other that turns the default GLib main context, needs nothing of this header.
// A host without a loop ends its main function with
//
//     return RunLoop::main().run();
//
// and a host with a loop of its own polls a descriptor and drains:
//
//     pollfd fd{RunLoop::mainQueueDescriptor(), POLLIN, 0};
//     while (poll(&fd, 1, -1) >= 0) RunLoop::drainMainQueue();

#include <VorlanFoundation/Platform/DispatchTime.h>
#include <VorlanFoundation/Platform/Export.h>

namespace vorlan {

/// A run loop over a GLib main context; any GLib source attached to that context is served too.
///
/// Threads:     `run`, `runOnce` and `drainMainQueue` on the main thread only (another thread stops the process
///              with a message); everything else is safe from any thread.
/// Owns:        nothing of the host's.
/// Re-entrancy: loops nest; blocks of the main queue are not run from within a block of the main queue.
/// Time:        sleeps until something happens; an idle loop uses no processor time.
class VORLAN_EXPORT RunLoop {
public:
    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;

    /// The main thread's run loop, over the default GLib main context.
    static RunLoop& main();

    /// Turns until `stop()` is called, and returns the number given there: the process's exit status.
    ///
    /// A `stop()` that came before is taken as the answer at once, so that none is lost.
    int run();

    /// Ends the innermost `run()`, which then returns `exitStatus`.
    void stop(int exitStatus = 0);

    /// Waits until something happened and was handled, or until `deadline`; returns whether something was
    /// handled.
    bool runOnce(DispatchTime deadline);

    /// Makes a waiting `runOnce()` return.
    void wakeUp();

    /// A descriptor that becomes readable when blocks wait on the main queue. The library's: do not read or
    /// close.
    static int mainQueueDescriptor();

    /// Runs the blocks that wait on the main queue and makes the descriptor unreadable. Returns when there
    /// are none, or after those that were waiting at the start; the descriptor tells which.
    static void drainMainQueue();

private:
    RunLoop() = default;
};

} // namespace vorlan
