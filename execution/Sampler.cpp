// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/Sampler.h>

#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace vorlan {

class Sampler::State final : public std::enable_shared_from_this<State> {
public:
    State(DispatchTimeInterval delay, Queue queue) : delay_(delay), queue_(std::move(queue)) {}

    DispatchTimeInterval delay() const { return delay_; }

    void sample(Work block) {
        std::optional<Work> replaced(std::move(block)); // Destroyed when the lock is released again.
        {
            const std::lock_guard lock(mutex_);
            if (isDelaying_) {
                waiting_.swap(replaced);
                return;
            }
            isDelaying_ = true;
        }
        submit(std::move(*replaced));
    }

private:
    void submit(Work block) {
        queue_.async(std::move(block));
        queue_.asyncAfter(delay_, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->endDelay();
        });
    }

    // What waits starts the next delay in the same breath, so that no other caller's block comes in between.
    void endDelay() {
        std::optional<Work> next;
        {
            const std::lock_guard lock(mutex_);
            next.swap(waiting_);
            isDelaying_ = next.has_value();
        }
        if (next) submit(std::move(*next));
    }

    const DispatchTimeInterval delay_;
    const Queue queue_;
    std::mutex mutex_;
    std::optional<Work> waiting_;
    bool isDelaying_ = false;
};

Sampler::Sampler(DispatchTimeInterval delay, Queue queue)
    : state_(std::make_shared<State>(delay, std::move(queue))) {}

Sampler::Sampler(Sampler&&) noexcept = default;
Sampler& Sampler::operator=(Sampler&&) noexcept = default;
Sampler::~Sampler() = default;

DispatchTimeInterval Sampler::delay() const {
    return state_->delay();
}

void Sampler::sample(Work block) {
    state_->sample(std::move(block));
}

} // namespace vorlan
