// SPDX-License-Identifier: Apache-2.0
#pragma once

// GLib's thread pool, which calls one function with a pointer for each piece of work; a closure is boxed, as any
// C++ user of it does.

#include <glib.h>

#include <memory>

namespace vorlan::benchmarks {

/// Owns a pool that runs closures of one type.
template <class Closure>
class GThreadPoolHandle {
public:
    explicit GThreadPoolHandle(int threads)
        : pool_(g_thread_pool_new(run, nullptr, threads, TRUE, nullptr)) {}
    GThreadPoolHandle(const GThreadPoolHandle&) = delete;
    GThreadPoolHandle& operator=(const GThreadPoolHandle&) = delete;
    ~GThreadPoolHandle() { g_thread_pool_free(pool_, FALSE, TRUE); }

    void push(Closure closure) { g_thread_pool_push(pool_, new Closure(closure), nullptr); }

private:
    static void run(gpointer data, gpointer) {
        const std::unique_ptr<Closure> closure(static_cast<Closure*>(data));
        (*closure)();
    }

    GThreadPool* pool_;
};

} // namespace vorlan::benchmarks
