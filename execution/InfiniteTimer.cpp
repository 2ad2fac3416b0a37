// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/InfiniteTimer.h>

#include <VorlanFoundation/Platform/CheckedArithmetic.h>
#include <VorlanFoundation/Platform/TimerSource.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace vorlan {

namespace {

DispatchTimeInterval intervalOf(double seconds) {
    if (seconds <= 0) return DispatchTimeInterval::never();
    const auto nanoseconds = checked::truncate<std::int64_t>(seconds * 1'000'000'000.0);
    // Less than the clock can tell apart is as often as it can tell.
    return std::chrono::nanoseconds(std::max<std::int64_t>(nanoseconds, 1));
}

} // namespace

// What the timer shares with its events, which hold it weakly.
class InfiniteTimer::Ticking final : public std::enable_shared_from_this<Ticking> {
public:
    // Copied for each event, which calls it without the lock.
    using Tick = std::shared_ptr<const std::function<void()>>;

    Ticking(Schedule schedule, Queue queue)
        : schedule_{.deadline = queue.now() + std::chrono::seconds(schedule.deadline),
                    .repeating = intervalOf(schedule.pollInterval),
                    .leeway = std::chrono::milliseconds(600)},
          queue_(std::move(queue)) {}

    void start(Tick tick) {
        const std::lock_guard lock(mutex_);
        tick_.swap(tick); // The old one is let go by the caller, without the lock.
        if (!std::exchange(isResumed_, true)) source().resume();
    }

    void stop() {
        const std::lock_guard lock(mutex_);
        if (std::exchange(isResumed_, false)) source().suspend();
    }

    /// Returns when no tick is running, save one that is on the calling thread.
    void end() {
        Tick dropped;
        std::unique_lock lock(mutex_);
        hasEnded_ = true;
        tick_.swap(dropped);
        if (source_) source_->cancel();
        tickEnded_.wait(lock, [this] {
            return tickingThread_ == std::thread::id() || tickingThread_ == std::this_thread::get_id();
        });
    }

private:
    TimerSource& source() {
        if (source_) return *source_;
        source_.emplace(queue_);
        source_->setEventHandler([weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->onEvent();
        });
        source_->schedule(schedule_);
        return *source_;
    }

    void onEvent() {
        auto begun = beginTick();
        if (!begun) return;
        const TickEnd end(*this);
        const auto tick = std::move(begun); // Let go before the end is told.
        (*tick)();
    }

    Tick beginTick() {
        const std::lock_guard lock(mutex_);
        if (hasEnded_ || !tick_ || !*tick_) return nullptr;
        tickingThread_ = std::this_thread::get_id();
        return tick_;
    }

    // Tells who waits that the tick is over, also when it threw.
    class TickEnd {
    public:
        explicit TickEnd(Ticking& ticking) : ticking_(ticking) {}
        TickEnd(const TickEnd&) = delete;
        TickEnd& operator=(const TickEnd&) = delete;
        ~TickEnd() {
            const std::lock_guard lock(ticking_.mutex_);
            ticking_.tickingThread_ = std::thread::id();
            ticking_.tickEnded_.notify_all();
        }

    private:
        Ticking& ticking_;
    };

    const TimerSchedule schedule_;
    const Queue queue_;
    std::mutex mutex_;
    std::condition_variable tickEnded_;
    Tick tick_;
    std::optional<TimerSource> source_; ///< Made when it is first needed.
    std::thread::id tickingThread_;     ///< Where a tick is running.
    bool isResumed_ = false;
    bool hasEnded_ = false;
};

InfiniteTimer::InfiniteTimer(Schedule schedule, const Queue& queue)
    : ticking_(std::make_shared<Ticking>(schedule, queue)) {}

InfiniteTimer::InfiniteTimer(InfiniteTimer&&) noexcept = default;

InfiniteTimer& InfiniteTimer::operator=(InfiniteTimer&& other) noexcept {
    if (this == &other) return *this;
    drop();
    ticking_ = std::move(other.ticking_);
    return *this;
}

InfiniteTimer::~InfiniteTimer() {
    drop();
}

void InfiniteTimer::start(std::function<void()> tick) {
    ticking_->start(std::make_shared<const std::function<void()>>(std::move(tick)));
}

void InfiniteTimer::stop() {
    ticking_->stop();
}

void InfiniteTimer::drop() noexcept {
    if (ticking_) ticking_->end();
}

} // namespace vorlan
