// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/TimerSource.h>

#include <VorlanFoundation/Platform/FatalError.h>

#include <mutex>
#include <string_view>
#include <utility>

namespace vorlan {

namespace {
constexpr std::string_view where = "VorlanFoundation/TimerSource";
}

TimerSource::TimerSource(const Queue& queue) : timer_(queue.provider()->makeTimer()) {}
TimerSource::TimerSource(TimerSource&&) noexcept = default;
TimerSource& TimerSource::operator=(TimerSource&&) noexcept = default;
TimerSource::~TimerSource() = default;

TimerProvider& TimerSource::timer() const {
    if (!timer_) fatalError("used after it was moved from", where);
    return *timer_;
}

template <class Action>
auto TimerSource::change(Action&& action) {
    const std::lock_guard lock(timer().mutex_);
    return action(*timer_);
}

void TimerSource::setEventHandler(std::function<void()> handler) {
    // Without the lock, as are all places where a handler may be destroyed.
    if (!isCancelled()) timer_->setEventHandler(std::move(handler));
}

void TimerSource::schedule(const TimerSchedule& schedule) {
    if (schedule.repeating.nanoseconds() <= 0) fatalError("the repeat interval is not above zero", where);
    change([&](TimerProvider& timer) {
        if (!timer.isCancelled_) timer.schedule(schedule);
    });
}

void TimerSource::resume() {
    change([](TimerProvider& timer) {
        if (timer.isCancelled_) return;
        if (timer.suspensions_ == 0) fatalError("resumed more often than suspended", where);
        if (--timer.suspensions_ == 0) timer.resume();
    });
}

void TimerSource::suspend() {
    change([](TimerProvider& timer) {
        if (!timer.isCancelled_ && ++timer.suspensions_ == 1) timer.suspend();
    });
}

void TimerSource::cancel() {
    const bool isFirst = change([](TimerProvider& timer) {
        const bool wasCancelled = timer.isCancelled_.exchange(true);
        if (!wasCancelled) timer.cancel();
        return !wasCancelled;
    });
    if (isFirst) timer_->setEventHandler(nullptr);
}

bool TimerSource::isCancelled() const {
    return timer().isCancelled_;
}

} // namespace vorlan
