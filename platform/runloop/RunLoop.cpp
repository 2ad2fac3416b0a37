// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/RunLoop.h>

#include "platform/dispatch/Dispatch.h"
#include "platform/runloop/PerformedWork.h"

#include <VorlanFoundation/Platform/FatalError.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/Thread.h>

#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
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

[[noreturn]] void refuse(const char* operation, const char* thread) {
    fatalError(std::string(operation) + " is for " + thread + " only", "VorlanFoundation/RunLoop");
}

struct ContextRelease {
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
};

// The run loop of a thread that `Thread` made; those of other threads are made when they are asked for.
thread_local constinit RunLoop* currentLoop = nullptr;

// Wakes the context once a deadline has come, so that waiting in it can be bounded.
class WakeUpTimer {
public:
    WakeUpTimer(GMainContext* context, DispatchTime deadline)
        : source_(g_timeout_source_new(milliseconds(deadline))) {
        g_source_set_priority(source_, G_PRIORITY_HIGH);
        g_source_set_callback(source_, expire, &hasExpired_, nullptr);
        g_source_attach(source_, context);
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

struct RunLoop::State {
    explicit State(GMainContext* owned) : context(owned), performed(owned) {}

    std::unique_ptr<GMainContext, ContextRelease> context;
    PerformedWork performed;
    PendingStop pendingStop;
};

RunLoop::RunLoop(GMainContext* context) : state_(std::make_unique<State>(context)) {}
RunLoop::~RunLoop() = default;

RunLoop& RunLoop::main() {
    // Never destroyed: another thread may stop the loop while the process ends.
    static auto& loop = *new RunLoop(g_main_context_ref(g_main_context_default()));
    return loop;
}

RunLoop& RunLoop::current() {
    if (Thread::isMainThread()) return main();
    if (currentLoop != nullptr) return *currentLoop;
    static thread_local const auto own = make();
    return *own;
}

std::unique_ptr<RunLoop> RunLoop::make() {
    return std::unique_ptr<RunLoop>(new RunLoop(g_main_context_new()));
}

// What the thread starts through GIO, which looks for the thread-default context, is served by its loop.
void RunLoop::beginThread() {
    currentLoop = this;
    g_main_context_push_thread_default(context());
}

void RunLoop::endThread() {
    state_->performed.close();
    g_main_context_pop_thread_default(context());
    currentLoop = nullptr;
}

// Asked of any loop, so it must not make the main one on the way.
bool RunLoop::isMain() const {
    return context() == g_main_context_default();
}

void RunLoop::requireOwnThread(const char* operation) const {
    if (this == &current()) return;
    refuse(operation, isMain() ? "the main thread" : "the thread of the run loop");
}

int RunLoop::run() {
    requireOwnThread("RunLoop::run");
    for (;;) {
        if (const auto exitStatus = state_->pendingStop.take()) return *exitStatus;
        runOnce(DispatchTime::distantFuture());
    }
}

void RunLoop::stop(int exitStatus) {
    state_->pendingStop.set(exitStatus);
    wakeUp();
}

bool RunLoop::runOnce(DispatchTime deadline) {
    requireOwnThread("RunLoop::runOnce");
    if (isMain()) Queue::main(); // Attaches itself, if it was not used before.
    // One turn in any case: a second one would wait although the first had already taken a wake-up.
    if (deadline <= DispatchTime::now()) return g_main_context_iteration(context(), FALSE) == TRUE;
    if (deadline == DispatchTime::distantFuture()) return g_main_context_iteration(context(), TRUE) == TRUE;
    const WakeUpTimer timer(context(), deadline);
    return g_main_context_iteration(context(), TRUE) == TRUE && !timer.hasExpired();
}

void RunLoop::wakeUp() {
    g_main_context_wakeup(context());
}

void RunLoop::perform(Work work) {
    state_->performed.add(std::move(work));
}

GMainContext* RunLoop::context() const noexcept {
    return state_->context.get();
}

int RunLoop::mainQueueDescriptor() {
    return _dispatch_get_main_queue_handle_4CF();
}

void RunLoop::drainMainQueue() {
    if (!Thread::isMainThread()) refuse("RunLoop::drainMainQueue", "the main thread");
    // The descriptor is an eventfd: one read takes the whole count back. Left unread it would keep the loop
    // awake.
    std::uint64_t count = 0;
    while (read(mainQueueDescriptor(), &count, sizeof count) < 0 && errno == EINTR) {}
    _dispatch_main_queue_callback_4CF(nullptr);
}

} // namespace vorlan
