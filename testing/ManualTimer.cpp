// SPDX-License-Identifier: Apache-2.0
#include "testing/ManualTimer.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

namespace vorlan::testing {

// Events on the agenda hold the state weakly, and carry the number of the schedule they belong to: an event
// that finds another number was overtaken and does nothing.
struct ManualTimer::State : std::enable_shared_from_this<State> {
    explicit State(std::shared_ptr<ManualAgenda> queueAgenda) : agenda(std::move(queueAgenda)) {}

    void arm() {
        if (isSuspended || !next) return;
        agenda->add(
            *next,
            [weak = weak_from_this(), number = ++scheduleNumber] {
                if (const auto self = weak.lock()) self->fire(number);
            },
            ManualAgenda::Kind::timerEvent);
    }

    void fire(std::uint64_t number) {
        std::shared_ptr<const std::function<void()>> called;
        {
            const std::lock_guard lock(mutex);
            if (number != scheduleNumber) return;
            moveToNextDeadline();
            arm();
            called = handler;
        }
        if (called && *called) (*called)();
    }

    // Keeps to the grid of the first deadline; what was missed is not made up for.
    void moveToNextDeadline() {
        const auto now = agenda->now();
        do {
            *next = *next + repeating;
        } while (*next <= now);
        if (*next == DispatchTime::distantFuture()) next.reset();
    }

    std::shared_ptr<ManualAgenda> agenda;
    std::mutex mutex;
    std::shared_ptr<const std::function<void()>> handler;
    std::optional<DispatchTime> next;
    DispatchTimeInterval repeating = DispatchTimeInterval::never();
    std::uint64_t scheduleNumber = 0;
    bool isSuspended = true;
};

ManualTimer::ManualTimer(std::shared_ptr<ManualAgenda> agenda)
    : state_(std::make_shared<State>(std::move(agenda))) {}

void ManualTimer::setEventHandler(std::function<void()> handler) {
    auto replacement = std::make_shared<const std::function<void()>>(std::move(handler));
    const std::lock_guard lock(state_->mutex);
    state_->handler.swap(replacement);
}

void ManualTimer::schedule(const TimerSchedule& schedule) {
    const std::lock_guard lock(state_->mutex);
    ++state_->scheduleNumber;
    state_->next = schedule.deadline;
    state_->repeating = schedule.repeating;
    if (schedule.deadline == DispatchTime::distantFuture()) state_->next.reset();
    state_->arm();
}

void ManualTimer::resume() {
    const std::lock_guard lock(state_->mutex);
    state_->isSuspended = false;
    state_->arm();
}

void ManualTimer::suspend() {
    const std::lock_guard lock(state_->mutex);
    state_->isSuspended = true;
    ++state_->scheduleNumber;
}

void ManualTimer::cancel() {
    const std::lock_guard lock(state_->mutex);
    ++state_->scheduleNumber;
    state_->next.reset();
}

void ManualTimer::release() {
    setEventHandler(nullptr);
    cancel();
    delete this;
}

} // namespace vorlan::testing
