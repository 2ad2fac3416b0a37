// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/Throttler.h>

#include <VorlanFoundation/Platform/CheckedArithmetic.h>
#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/Postponed.h>

#include <chrono>
#include <cmath>
#include <memory>
#include <mutex>
#include <utility>

namespace vorlan {

class Throttler::State final : public detail::Postponed<Work> {
public:
    State(std::int64_t milliseconds, Queue queue)
        : Postponed(std::move(queue), detail::Lifetime::untilDropped), maxInterval_(milliseconds) {}

    void throttle(Work block) {
        const auto wait = isFarFromPreviousRun() ? 0 : maxInterval_;
        put(queue().now() + std::chrono::milliseconds(wait), std::move(block));
    }

private:
    bool isFarFromPreviousRun() {
        const std::lock_guard lock(mutex_);
        const double elapsed = queue().date().timeIntervalSince(previousRun_) * 1000;
        return maxInterval_ < checked::truncate<std::int64_t>(std::round(elapsed));
    }

    void run(Work block) override {
        {
            const std::lock_guard lock(mutex_);
            previousRun_ = queue().date();
        }
        block();
    }

    const std::int64_t maxInterval_;
    std::mutex mutex_;
    Date previousRun_ = Date::distantPast();
};

Throttler::Throttler(std::int64_t milliseconds, Queue queue)
    : state_(std::make_shared<State>(milliseconds, std::move(queue))) {}

Throttler::Throttler(Throttler&&) noexcept = default;
Throttler& Throttler::operator=(Throttler&&) noexcept = default;
Throttler::~Throttler() = default;

void Throttler::throttle(Work block) {
    state_->throttle(std::move(block));
}

} // namespace vorlan
