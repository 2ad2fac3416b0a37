// SPDX-License-Identifier: Apache-2.0
#pragma once

// Keeps processors from falling asleep, so that what is measured does not contain how long they take to wake up:
// that is the machine's, differs from moment to moment, and is the same for all rows.

#include <pthread.h>
#include <sched.h>

#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace vorlan::benchmarks {

/// A thread on each processor of the process that is busy whenever no other thread wants to run.
class Wakefulness {
public:
    Wakefulness() {
        cpu_set_t processors;
        check(pthread_getaffinity_np(pthread_self(), sizeof processors, &processors));
        for (int one = 0; one < CPU_SETSIZE; ++one) {
            if (CPU_ISSET(one, &processors)) keepBusy(one);
        }
    }
    Wakefulness(const Wakefulness&) = delete;
    Wakefulness& operator=(const Wakefulness&) = delete;
    ~Wakefulness() {
        isOver_ = true;
        for (auto& thread : threads_) thread.join();
    }

private:
    void keepBusy(int processor) {
        auto& thread = threads_.emplace_back([this] {
            while (!isOver_.load(std::memory_order_relaxed)) {}
        });
        const sched_param priority{};
        check(pthread_setschedparam(thread.native_handle(), SCHED_IDLE, &priority));
        cpu_set_t own;
        CPU_ZERO(&own);
        CPU_SET(processor, &own);
        check(pthread_setaffinity_np(thread.native_handle(), sizeof own, &own));
    }

    static void check(int error) {
        if (error != 0) throw std::system_error(error, std::generic_category(), "a thread of idle priority");
    }

    std::atomic<bool> isOver_ = false;
    std::vector<std::thread> threads_;
};

} // namespace vorlan::benchmarks
