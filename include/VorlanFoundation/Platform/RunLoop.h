// SPDX-License-Identifier: Apache-2.0
#pragma once

// Run loops: the one that serves the main queue, and that of each thread.
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
#include <VorlanFoundation/Platform/Work.h>

#include <memory>

struct _GMainContext; // NOLINT(*-reserved-identifier): GLib's name for its GMainContext

namespace vorlan {

/// A run loop over a GLib main context, in its one mode, the default mode.
///
/// It serves the work that is performed on it, and any GLib source that is attached to its context; the main
/// one serves the main queue as well.
///
/// Threads:     `run` and `runOnce` on the loop's own thread only, `drainMainQueue` on the main thread only
///              (another thread stops the process with a message); everything else is safe from any thread.
/// Owns:        the work performed on it, until it ran, or until the loop's thread ends, which drops it.
/// Re-entrancy: loops nest; blocks of the main queue are not run from within a block of the main queue, nor
///              performed work from within performed work.
/// Time:        sleeps until something happens; an idle loop uses no processor time.
/// Errors:      an exception that leaves performed work stops the process with its text.
class VORLAN_EXPORT RunLoop {
public:
    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;
    ~RunLoop();

    /// The main thread's run loop, over the default GLib main context.
    static RunLoop& main();

    /// The calling thread's run loop; made on first use where the thread was not made by `Thread`, and then
    /// gone with the thread.
    static RunLoop& current();

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

    /// Has the loop's thread run `work` when it turns the loop, in the order of the calls. Returns at once.
    void perform(Work work);

    /// The GLib main context behind the loop, a `GMainContext*`, to attach sources to; the loop's, not the
    /// caller's. Within the loop's own thread it is the thread-default context while a `Thread` runs.
    _GMainContext* context() const noexcept;

    /// A descriptor that becomes readable when blocks wait on the main queue. The library's: do not read or
    /// close.
    static int mainQueueDescriptor();

    /// Runs the blocks that wait on the main queue and makes the descriptor unreadable. Returns when there
    /// are none, or after those that were waiting at the start; the descriptor tells which.
    static void drainMainQueue();

private:
    friend class Thread;
    struct State;

    explicit RunLoop(_GMainContext* context);
    static std::unique_ptr<RunLoop> make();
    void beginThread();
    void endThread();
    bool isMain() const;
    void requireOwnThread(const char* operation) const;

    std::unique_ptr<State> state_;
};

} // namespace vorlan
