// SPDX-License-Identifier: Apache-2.0
#pragma once

// Lets a thread sleep until another wakes it, with the system's plainest means, so that no row waits more
// cheaply than another.

#include <semaphore.h>

#include <atomic>
#include <cstddef>

namespace vorlan::benchmarks {

/// A counting semaphore that goes to sleep at once.
///
/// Threads: safe from any thread.
class Signal {
public:
    Signal() { sem_init(&semaphore_, 0, 0); }
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;
    ~Signal() { sem_destroy(&semaphore_); }

    void post() { sem_post(&semaphore_); }
    void wait() {
        while (sem_wait(&semaphore_) != 0) {}
    }

private:
    sem_t semaphore_{};
};

/// Waits for many pieces of work.
///
/// Threads: `finish` from any thread, the others from one.
class Batch {
public:
    static constexpr std::size_t size = 1000;

    void begin() { left_.store(size, std::memory_order_relaxed); }
    void finish(std::size_t pieces) {
        if (left_.fetch_sub(pieces, std::memory_order_acq_rel) == pieces) done_.post();
    }
    void wait() { done_.wait(); }

private:
    std::atomic<std::size_t> left_ = 0;
    Signal done_;
};

} // namespace vorlan::benchmarks
