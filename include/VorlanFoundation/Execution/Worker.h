// SPDX-License-Identifier: Apache-2.0
#pragma once

// A dedicated thread with a run loop, for work that does not fit a queue.
//
//     auto worker = std::make_shared<Worker>();
//     worker->start([] { listen(); });        // on its own thread, whose run loop then keeps turning
//     worker->stop();

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Object.h>
#include <VorlanFoundation/Platform/Thread.h>

#include <functional>
#include <memory>
#include <mutex>

namespace vorlan {

/// Runs a block on a thread of its own and keeps that thread's run loop turning until it is stopped.
///
/// The block may attach GLib sources to `RunLoop::current().context()`, or have more work performed on that
/// loop. The thread is named for the worker's class and a random identifier, as in
/// "Worker-0D1C2B3A-4F5E-4A6B-8C7D-9E8F7A6B5C4D".
///
/// Threads: safe from any thread; one controlling thread is meant to start it.
/// Owns:    the block, also after it ran, until the next start. The thread holds the worker: one that was
///          started stays alive until its thread has ended, so dropping it does not stop it.
/// Time:    an idle worker sleeps. Stopping wakes it; its thread ends when what it is doing has returned.
/// Errors:  an exception of the block stops the process with its text.
class VORLAN_EXPORT Worker : public virtual Object {
public:
    Worker();
    ~Worker() override;

    /// Runs `block` on a new thread. Does nothing, and drops the block, while the thread of an earlier start
    /// has not ended. Throws std::system_error when the system has no more threads to give.
    void start(std::function<void()> block);

    /// The same with a block for demonstrations, which writes the line "Doing Work" to standard output.
    void start();

    /// Has the thread end; neither waits for that nor lets go of the block. Does nothing before the start.
    void stop();

    /// What the thread runs; not meant to be called by others.
    void runloop();

    /// What is performed on the thread; not meant to be called by others.
    void runBlock();

private:
    std::shared_ptr<Thread> thread() const;

    mutable std::mutex mutex_;
    std::shared_ptr<Thread> thread_;
    std::function<void()> block_;
};

} // namespace vorlan
