// SPDX-License-Identifier: Apache-2.0
#pragma once

// Threads for work that may block: never more than were asked for, and no fewer when they are needed.

#include <VorlanFoundation/Platform/Work.h>

#include <memory>
#include <string>

namespace vorlan {

/// Runs work in the order of submission on a limited number of threads, which are made when they are needed
/// and leave when they have been idle for some seconds.
///
/// The engine's queues are no substitute: their shared pool gains a thread a second at most while its threads
/// block, and a queue of its own for each thread makes more threads than there are queues under load.
///
/// Threads: safe from any thread.
/// Owns:    the work, until it ran; also after the pool is gone, whose threads leave when there is no more.
/// Errors:  work must not throw. When there is no thread, and the system has none to give, the process stops
///          with a message.
class ThreadPool {
public:
    /// Makes a pool without threads. The system's tools show the first 15 bytes of the name.
    ThreadPool(const std::string& name, int width);
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;
    ~ThreadPool();

    /// Runs work on one of the threads.
    void submit(Work work);

    /// Changes how many threads there may be; those that are too many leave when they become idle.
    void setWidth(int width);

private:
    class State;

    std::shared_ptr<State> state_;
};

} // namespace vorlan
