// SPDX-License-Identifier: Apache-2.0
#include "platform/dispatch/DispatchTimer.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

namespace vorlan {

struct DispatchTimer::Context {
    explicit Context(QueueState& state) : queue(state) {}

    // The handler is copied under the lock and called outside it, so that it may replace itself.
    static void onEvent(void* context) {
        sanitizer::acquire(context);
        runBlock(
            static_cast<Context*>(context)->queue, BlockKind::ordinary,
            [](void* timer) { static_cast<Context*>(timer)->callHandler(); }, context);
        sanitizer::release(context);
    }

    static void onCancel(void* context) {
        sanitizer::acquire(context);
        delete static_cast<Context*>(context);
    }

    void callHandler() {
        std::shared_ptr<const std::function<void()>> called;
        {
            const std::lock_guard lock(mutex);
            called = handler;
        }
        if (called && *called) (*called)();
    }

    QueueState& queue;
    std::mutex mutex;
    std::shared_ptr<const std::function<void()>> handler;
};

DispatchTimer::DispatchTimer(const DispatchQueue& queue)
    : source_(dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue.handle())),
      context_(new Context(queue.state())) {
    if (source_ == nullptr) fatalError("the engine could not make a timer", "VorlanFoundation/TimerSource");
    dispatch_set_context(source_, context_);
    dispatch_source_set_event_handler_f(source_, Context::onEvent);
    dispatch_source_set_cancel_handler_f(source_, Context::onCancel);
}

DispatchTimer::~DispatchTimer() {
    // The engine frees no source that is inactive or suspended: it has to be let go to its end.
    cancel();
    resume();
    dispatch_release(source_);
}

void DispatchTimer::setEventHandler(std::function<void()> handler) {
    auto replacement = std::make_shared<const std::function<void()>>(std::move(handler));
    const std::lock_guard lock(context_->mutex);
    context_->handler.swap(replacement);
}

void DispatchTimer::schedule(const TimerSchedule& schedule) {
    const auto repeating = static_cast<std::uint64_t>(schedule.repeating.nanoseconds());
    const auto leeway = std::max<std::int64_t>(schedule.leeway.nanoseconds(), 0);
    sanitizer::release(context_);
    dispatch_source_set_timer(source_, DispatchQueue::engineTime(schedule.deadline),
                              schedule.repeating.isNever() ? DISPATCH_TIME_FOREVER : repeating,
                              static_cast<std::uint64_t>(leeway));
}

void DispatchTimer::resume() {
    if (!std::exchange(isSuspended_, false)) return;
    sanitizer::release(context_);
    dispatch_resume(source_);
}

void DispatchTimer::suspend() {
    if (!std::exchange(isSuspended_, true)) dispatch_suspend(source_);
}

void DispatchTimer::cancel() {
    sanitizer::release(context_);
    dispatch_source_cancel(source_);
}

} // namespace vorlan
