// SPDX-License-Identifier: Apache-2.0
#pragma once

// A timer of the bare engine, for the floors.

#include "platform/dispatch/Dispatch.h"

#include <cstdint>

namespace vorlan::benchmarks {

/// Owns a timer of the engine, which calls one function with a pointer at a single event.
class BareTimer {
public:
    /// Makes a timer that is not armed.
    BareTimer(dispatch_queue_t queue, void* context, dispatch_function_t onEvent)
        : source_(dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue)) {
        dispatch_set_context(source_, context);
        dispatch_source_set_event_handler_f(source_, onEvent);
    }
    BareTimer(const BareTimer&) = delete;
    BareTimer& operator=(const BareTimer&) = delete;
    ~BareTimer() {
        dispatch_source_cancel(source_);
        dispatch_release(source_);
    }

    dispatch_source_t get() const { return source_; }

    /// Sets the event, so many nanoseconds from now; replaces what was set before.
    void set(std::int64_t nanoseconds) const {
        const auto time = dispatch_time(DISPATCH_TIME_NOW, nanoseconds);
        dispatch_source_set_timer(source_, time, DISPATCH_TIME_FOREVER, 0);
    }

    /// Lets the event through; to be called once.
    void resume() const { dispatch_resume(source_); }

private:
    dispatch_source_t source_;
};

} // namespace vorlan::benchmarks
