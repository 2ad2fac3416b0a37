// SPDX-License-Identifier: Apache-2.0
#pragma once

// What stands behind a `Queue`: the engine that runs its work and the clock that its deadlines are measured
// on.
//
// Applications use `Queue`. A provider is written to run queues on something else than the system's engine,
// as the test kit does with a clock that is turned by hand.

#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/DispatchTime.h>
#include <VorlanFoundation/Platform/Work.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace vorlan {

/// How urgent the work of a queue is.
///
/// On Linux each class has its own pool of threads, so that work of one class does not wait behind blocked
/// work of another; it has no other effect (no scheduling priority, no energy saving).
enum class QualityOfService { userInteractive, userInitiated, default_, utility, background, unspecified };

/// When a queue drains autoreleased objects. Kept as given; without effect on Linux, where nothing is
/// autoreleased.
enum class AutoreleaseFrequency { inherit, workItem, never };

/// How a block stands to the others of its queue.
enum class BlockKind {
    ordinary, ///< On a concurrent queue it may overlap with other ordinary blocks.
    barrier,  ///< Runs alone: after all blocks submitted earlier, before all submitted later.
};

/// When a timer fires: first at `deadline`, then every `repeating`.
struct TimerSchedule {
    /// The first event; in the past means at once.
    DispatchTime deadline;
    /// The span from event to event, above zero; `never()` for a single event.
    DispatchTimeInterval repeating = DispatchTimeInterval::never();
    /// How late an event may be to be joined with others. The engine may be later when the machine is busy.
    DispatchTimeInterval leeway = std::chrono::nanoseconds(0);
};

/// The engine's side of a `TimerSource`; made suspended.
///
/// Threads: one thread at a time, which its owner sees to; setting the handler from any thread. Events may
///          come meanwhile.
/// Owns:    the handler, until it is replaced and a running event has ended; itself, from `release()` on; and
///          what it needs of its queue.
class TimerProvider {
public:
    TimerProvider() = default;
    TimerProvider(const TimerProvider&) = delete;
    TimerProvider& operator=(const TimerProvider&) = delete;

    /// Sets what events call; empty for nothing.
    virtual void setEventHandler(std::function<void()> handler) = 0;
    /// Replaces the schedule.
    virtual void schedule(const TimerSchedule& schedule) = 0;
    /// Lets events through; the timer is suspended.
    virtual void resume() = 0;
    /// Holds events back; the timer is not suspended.
    virtual void suspend() = 0;
    /// Ends the timer for good.
    virtual void cancel() = 0;
    /// Cancels; an event that is running ends in its own time, none begins later, and then the timer is freed.
    virtual void release() = 0;

protected:
    virtual ~TimerProvider() = default;

private:
    friend class TimerSource;

    // What a `TimerSource` keeps of its timer; here, as that makes one allocation of a timer.
    std::mutex mutex_;
    int suspensions_ = 1;
    std::atomic<bool> isCancelled_ = false; ///< Changed with the mutex held.
};

/// Lets go of a timer as it has to be.
///
/// Threads: one thread at a time.
struct TimerRelease {
    void operator()(TimerProvider* timer) const { timer->release(); }
};

/// The one reference to a timer.
using TimerReference = std::unique_ptr<TimerProvider, TimerRelease>;

/// The engine's side of a `Queue`.
///
/// Threads: safe from any thread.
/// Owns:    the work submitted to it, until it ran; also after the last `Queue` on it is gone.
/// Errors:  an exception that leaves asynchronous work stops the process; `sync` is given work that never
///          throws.
class QueueProvider : public std::enable_shared_from_this<QueueProvider> {
public:
    QueueProvider() = default;
    QueueProvider(const QueueProvider&) = delete;
    QueueProvider& operator=(const QueueProvider&) = delete;
    virtual ~QueueProvider() = default;

    /// The queue's name.
    virtual std::string label() const = 0;
    /// The quality of service that the queue was made with.
    virtual QualityOfService qualityOfService() const { return QualityOfService::unspecified; }
    /// The autorelease behaviour that the queue was made with.
    virtual AutoreleaseFrequency autoreleaseFrequency() const { return AutoreleaseFrequency::inherit; }
    /// The present, by the clock of this queue.
    virtual DispatchTime now() const = 0;
    /// The present on the calendar; the machine's own, unless the provider has another.
    virtual Date date() const { return Date(); }
    /// Whether the calling code runs in a block of this queue, or of one that targets it.
    virtual bool isCurrent() const = 0;
    /// Runs the work later, in the order of submission.
    virtual void async(Work work, BlockKind kind) = 0;
    /// Submits the work at `deadline`; drops it at once when that is never reached.
    virtual void asyncAfter(DispatchTime deadline, Work work, BlockKind kind) = 0;
    /// Calls `function(context)` in turn and returns when it has returned.
    virtual void sync(void (*function)(void*), void* context, BlockKind kind) = 0;
    /// Makes a suspended timer whose events run on this queue.
    virtual TimerReference makeTimer() = 0;
};

} // namespace vorlan
