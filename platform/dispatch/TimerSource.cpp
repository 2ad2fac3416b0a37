// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/TimerSource.h>

#include <VorlanFoundation/Platform/FatalError.h>

#include <mutex>
#include <utility>

namespace vorlan {

namespace {
constexpr std::string_view where = "VorlanFoundation/TimerSource";
}

struct TimerSource::State {
    explicit State(const Queue& timerQueue) : queue(timerQueue), provider(queue.provider()->makeTimer()) {}

    Queue queue;
    mutable std::mutex mutex;
    std::unique_ptr<TimerProvider> provider;
    int suspensions = 1;
    bool isCancelled = false;
};

TimerSource::TimerSource(const Queue& queue) : state_(std::make_unique<State>(queue)) {}
TimerSource::TimerSource(TimerSource&&) noexcept = default;
TimerSource& TimerSource::operator=(TimerSource&&) noexcept = default;
TimerSource::~TimerSource() = default;

void TimerSource::setEventHandler(std::function<void()> handler) {
    const std::lock_guard lock(state_->mutex);
    if (!state_->isCancelled) state_->provider->setEventHandler(std::move(handler));
}

void TimerSource::schedule(const TimerSchedule& schedule) {
    if (schedule.repeating.nanoseconds() <= 0) fatalError("the repeat interval is not above zero", where);
    const std::lock_guard lock(state_->mutex);
    if (!state_->isCancelled) state_->provider->schedule(schedule);
}

void TimerSource::resume() {
    const std::lock_guard lock(state_->mutex);
    if (state_->isCancelled) return;
    if (state_->suspensions == 0) fatalError("resumed more often than suspended", where);
    if (--state_->suspensions == 0) state_->provider->resume();
}

void TimerSource::suspend() {
    const std::lock_guard lock(state_->mutex);
    if (state_->isCancelled) return;
    if (++state_->suspensions == 1) state_->provider->suspend();
}

void TimerSource::cancel() {
    const std::lock_guard lock(state_->mutex);
    if (!std::exchange(state_->isCancelled, true)) state_->provider->cancel();
}

bool TimerSource::isCancelled() const {
    const std::lock_guard lock(state_->mutex);
    return state_->isCancelled;
}

} // namespace vorlan
