// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/RunLoop.h>

#include "platform/dispatch/Dispatch.h"

#include <VorlanFoundation/Platform/FatalError.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/Thread.h>

#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace vorlan {

namespace {

// The stop that was asked for and not yet taken by a run().
struct PendingStop {
    std::mutex mutex;
    std::optional<int> exitStatus;

    void set(int status) {
        const std::lock_guard lock(mutex);
        exitStatus = status;
    }
    std::optional<int> take() {
        const std::lock_guard lock(mutex);
        return std::exchange(exitStatus, std::nullopt);
    }
};

PendingStop& pendingStop() {
    // Never destroyed: another thread may stop the loop while the process ends.
    static auto& stop = *new PendingStop;
    return stop;
}

void requireMainThread(const char* operation) {
    if (Thread::isMainThread()) return;
    fatalError(std::string(operation) + " is for the main thread only", "VorlanFoundation/RunLoop");
}

// Wakes the context once a deadline has come, so that waiting in it can be bounded.
class WakeUpTimer {
public:
    explicit WakeUpTimer(DispatchTime deadline) : source_(g_timeout_source_new(milliseconds(deadline))) {
        g_source_set_priority(source_, G_PRIORITY_HIGH);
        g_source_set_callback(source_, expire, &hasExpired_, nullptr);
        g_source_attach(source_, nullptr);
    }
    WakeUpTimer(const WakeUpTimer&) = delete;
    WakeUpTimer& operator=(const WakeUpTimer&) = delete;
    ~WakeUpTimer() {
        g_source_destroy(source_);
        g_source_unref(source_);
    }

    bool hasExpired() const { return hasExpired_; }

private:
    // Rounded up, so that it is never early.
    static guint milliseconds(DispatchTime deadline) {
        const auto left = std::max<std::int64_t>((deadline - DispatchTime::now()).nanoseconds(), 0);
        return static_cast<guint>(std::min<std::int64_t>(left / 1'000'000 + 1, G_MAXINT));
    }
    static gboolean expire(gpointer flag) {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_REMOVE;
    }

    GSource* source_;
    bool hasExpired_ = false;
};

} // namespace

RunLoop& RunLoop::main() {
    static RunLoop loop;
    return loop;
}

int RunLoop::run() {
    requireMainThread("RunLoop::run");
    Queue::main();
    for (;;) {
        if (const auto exitStatus = pendingStop().take()) return *exitStatus;
        g_main_context_iteration(nullptr, TRUE);
    }
}

void RunLoop::stop(int exitStatus) {
    pendingStop().set(exitStatus);
    wakeUp();
}

bool RunLoop::runOnce(DispatchTime deadline) {
    requireMainThread("RunLoop::runOnce");
    Queue::main();
    // One turn in any case: a second one would wait although the first had already taken a wake-up.
    if (deadline <= DispatchTime::now()) return g_main_context_iteration(nullptr, FALSE) == TRUE;
    if (deadline == DispatchTime::distantFuture()) return g_main_context_iteration(nullptr, TRUE) == TRUE;
    const WakeUpTimer timer(deadline);
    return g_main_context_iteration(nullptr, TRUE) == TRUE && !timer.hasExpired();
}

void RunLoop::wakeUp() {
    g_main_context_wakeup(nullptr);
}

int RunLoop::mainQueueDescriptor() {
    return _dispatch_get_main_queue_handle_4CF();
}

void RunLoop::drainMainQueue() {
    requireMainThread("RunLoop::drainMainQueue");
    // The descriptor is an eventfd: one read takes the whole count back. Left unread it would keep the loop
    // awake.
    std::uint64_t count = 0;
    while (read(mainQueueDescriptor(), &count, sizeof count) < 0 && errno == EINTR) {}
    _dispatch_main_queue_callback_4CF(nullptr);
}

} // namespace vorlan
