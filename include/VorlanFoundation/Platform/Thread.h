// SPDX-License-Identifier: Apache-2.0
#pragma once

// A thread of its own, with a run loop.
//
//     auto thread = std::make_shared<Thread>([] {
//         while (!Thread::current()->isCancelled()) RunLoop::current().runOnce(DispatchTime::distantFuture());
//     });
//     thread->setName("Listener");
//     thread->start();
//     thread->runLoop().perform([] { listen(); });
//     thread->cancel();

#include <VorlanFoundation/Platform/DispatchTimeInterval.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Object.h>
#include <VorlanFoundation/Platform/RunLoop.h>
#include <VorlanFoundation/Platform/Work.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace vorlan {

/// A thread, from before it is started until after it has ended.
///
/// Threads: safe from any thread.
/// Owns:    what it runs, until that has returned. A thread that was started is kept alive until it has ended,
///          whoever lets go of it.
/// Time:    cancelling sets a flag and wakes the thread's run loop; what the thread runs looks at the flag and
///          ends when it sees fit.
/// Errors:  an exception that leaves what the thread runs stops the process with its text.
class VORLAN_EXPORT Thread : public virtual Object {
public:
    /// A thread that will run `entry`.
    explicit Thread(Work entry);

    /// A thread that will run an operation of an object, which is held until it has returned.
    template <class Target>
    Thread(std::shared_ptr<Target> target, void (Target::*entry)())
        : Thread(Work([target = std::move(target), entry] { std::invoke(entry, *target); })) {}

    ~Thread() override;

    /// Whether the calling thread is the one that the process began with.
    static bool isMainThread() noexcept;

    /// The calling thread; null when it was not made by this class.
    static std::shared_ptr<Thread> current();

    /// The thread's name, in full.
    std::string name() const;

    /// Names the thread, in UTF-8 and of any length. The system's tools show its first 15 bytes, or as many of
    /// them as are whole characters, if the name is set before the start or by the thread itself.
    void setName(std::string name);

    /// Starts the thread; a thread can be started once, a second time stops the process with a message.
    /// Throws std::system_error when the system has no more threads to give; the thread can then be started
    /// again.
    void start();

    /// Asks the thread to end: sets the flag and wakes the thread's run loop.
    void cancel();

    /// Whether `cancel()` was called.
    bool isCancelled() const;

    /// Whether the thread was started and has not ended.
    bool isExecuting() const;

    /// Whether what the thread runs has returned, and was let go.
    bool isFinished() const;

    /// Blocks the calling thread until this one has finished; false when `limit` went by before.
    bool waitUntilFinished(DispatchTimeInterval limit = DispatchTimeInterval::never()) const;

    /// The run loop of this thread, which the thread itself turns, or nobody does. It lives as long as the
    /// thread object; work that is performed on it after the thread has ended is dropped.
    RunLoop& runLoop() const;

private:
    struct State;

    void run();

    std::unique_ptr<State> state_;
};

} // namespace vorlan
