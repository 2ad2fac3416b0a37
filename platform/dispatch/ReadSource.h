// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tells when a descriptor can be read.

#include "platform/dispatch/Dispatch.h"

#include <VorlanFoundation/Platform/Queue.h>

#include <functional>

namespace vorlan {

/// Calls a handler on a queue whenever a descriptor is readable, and closes the descriptor at the end.
///
/// Watching begins at once. The event is level-triggered: it comes again while there is something to read.
///
/// Threads: made, cancelled and destroyed by one thread at a time; the handler runs on the queue.
/// Owns:    the descriptor and the handler, until the source was cancelled (or destroyed) and a running event
///          has ended: then the handler is destroyed and the descriptor closed, on the queue's threads.
///          Nothing else may close it: its number could be another file's by the time the engine looks at it.
class ReadSource {
public:
    /// `queue` must run on the system's engine.
    ReadSource(int descriptor, const Queue& queue, std::function<void()> handler);
    ReadSource(const ReadSource&) = delete;
    ReadSource& operator=(const ReadSource&) = delete;
    ~ReadSource();

    /// Ends the watching. On the source's serial queue, no event comes afterwards.
    void cancel();

private:
    dispatch_source_t source_;
};

} // namespace vorlan
