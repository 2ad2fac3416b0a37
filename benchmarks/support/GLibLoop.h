// SPDX-License-Identifier: Apache-2.0
#pragma once

// GLib's loop and its timers, as a C++ user wraps them.

#include <glib.h>

namespace vorlan::benchmarks {

/// Owns a main context, which the calling thread turns.
class GLibLoop {
public:
    GLibLoop() : context_(g_main_context_new()) {}
    GLibLoop(const GLibLoop&) = delete;
    GLibLoop& operator=(const GLibLoop&) = delete;
    ~GLibLoop() { g_main_context_unref(context_); }

    GMainContext* context() const { return context_; }

    /// Sleeps until something is due, and calls it.
    void turn() const { g_main_context_iteration(context_, TRUE); }

private:
    GMainContext* context_;
};

/// Owns a source that calls one function with a pointer after a while.
class GLibTimeout {
public:
    GLibTimeout(const GLibLoop& loop, guint milliseconds, GSourceFunc function, gpointer data)
        : source_(g_timeout_source_new(milliseconds)) {
        g_source_set_callback(source_, function, data, nullptr);
        g_source_attach(source_, loop.context());
    }
    GLibTimeout(const GLibTimeout&) = delete;
    GLibTimeout& operator=(const GLibTimeout&) = delete;
    ~GLibTimeout() {
        g_source_destroy(source_);
        g_source_unref(source_);
    }

    GSource* get() const { return source_; }

private:
    GSource* source_;
};

} // namespace vorlan::benchmarks
