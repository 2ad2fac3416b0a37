// SPDX-License-Identifier: Apache-2.0
#include "platform/dispatch/DispatchTimer.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace vorlan {

DispatchTimer::DispatchTimer(const DispatchQueue& queue)
    : source_(dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue.handle())),
      queue_(queue.state()) {
    if (source_ == nullptr) fatalError("the engine could not make a timer", "VorlanFoundation/TimerSource");
    dispatch_set_context(source_, this);
    dispatch_set_finalizer_f(source_, onEnd);
    dispatch_source_set_event_handler_f(source_, onEvent);
}

void DispatchTimer::onEvent(void* timer) {
    sanitizer::acquire(timer);
    runBlock(
        static_cast<DispatchTimer*>(timer)->queue_, BlockKind::ordinary,
        [](void* self) { static_cast<DispatchTimer*>(self)->callHandler(); }, timer);
    sanitizer::release(timer);
}

void DispatchTimer::onEnd(void* timer) {
    sanitizer::acquire(timer);
    delete static_cast<DispatchTimer*>(timer);
}

// Events come one at a time. The handler is called without the lock, and out of the place where it stands, so that
// it may replace itself.
void DispatchTimer::callHandler() {
    std::function<void()> handler;
    {
        const std::lock_guard lock(mutex_);
        handler.swap(handler_);
        isReplaced_ = false;
    }
    if (handler) handler();
    const std::lock_guard lock(mutex_);
    if (!isReplaced_) handler_.swap(handler);
}

void DispatchTimer::setEventHandler(std::function<void()> handler) {
    const std::lock_guard lock(mutex_);
    handler_.swap(handler); // The old one goes with the argument, without the lock.
    isReplaced_ = true;
}

void DispatchTimer::schedule(const TimerSchedule& schedule) {
    const auto repeating = static_cast<std::uint64_t>(schedule.repeating.nanoseconds());
    const auto leeway = std::max<std::int64_t>(schedule.leeway.nanoseconds(), 0);
    sanitizer::release(this);
    dispatch_source_set_timer(source_, DispatchQueue::engineTime(schedule.deadline),
                              schedule.repeating.isNever() ? DISPATCH_TIME_FOREVER : repeating,
                              static_cast<std::uint64_t>(leeway));
}

void DispatchTimer::resume() {
    isSuspended_ = false;
    sanitizer::release(this);
    dispatch_resume(source_);
}

void DispatchTimer::suspend() {
    isSuspended_ = true;
    dispatch_suspend(source_);
}

void DispatchTimer::cancel() {
    sanitizer::release(this);
    dispatch_source_cancel(source_);
}

// The engine frees no source that is inactive or suspended: it has to be let go to its end. With the last call the
// timer may be gone.
void DispatchTimer::release() {
    setEventHandler(nullptr);
    cancel();
    if (isSuspended_) resume();
    auto* const source = source_;
    sanitizer::release(this);
    dispatch_release(source);
}

} // namespace vorlan
