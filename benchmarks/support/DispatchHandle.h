// SPDX-License-Identifier: Apache-2.0
#pragma once

// A queue of the bare engine, for the floors.

#include "platform/dispatch/Dispatch.h"

namespace vorlan::benchmarks {

/// Owns a queue of the engine.
class DispatchHandle {
public:
    /// A queue of its own: `DISPATCH_QUEUE_SERIAL` or `DISPATCH_QUEUE_CONCURRENT`.
    explicit DispatchHandle(dispatch_queue_attr_t attribute)
        : queue_(dispatch_queue_create("benchmark", attribute)) {}
    DispatchHandle(const DispatchHandle&) = delete;
    DispatchHandle& operator=(const DispatchHandle&) = delete;
    ~DispatchHandle() { dispatch_release(queue_); }

    dispatch_queue_t get() const { return queue_; }

private:
    dispatch_queue_t queue_;
};

} // namespace vorlan::benchmarks
