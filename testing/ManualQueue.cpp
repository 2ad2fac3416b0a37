// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/ManualQueue.h>

#include "testing/ManualTimer.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace vorlan::testing {

class ManualQueueProvider final : public QueueProvider {
public:
    std::string label() const override { return "ManualQueue"; }
    DispatchTime now() const override { return agenda_->now(); }
    Date date() const override { return agenda_->date(); }
    bool isCurrent() const override { return runner_.load() == std::this_thread::get_id(); }
    void async(Work work, BlockKind) override { agenda_->add(now(), std::move(work)); }
    void asyncAfter(DispatchTime deadline, Work work, BlockKind) override {
        if (deadline != DispatchTime::distantFuture()) agenda_->add(deadline, std::move(work));
    }
    TimerReference makeTimer() override { return TimerReference(new ManualTimer(agenda_)); }

    void sync(void (*function)(void*), void* context, BlockKind) override {
        const Turn turn(*this);
        runUntil(now());
        function(context);
    }

    void advance(DispatchTimeInterval interval) {
        if (interval.nanoseconds() < 0) stop("advanced by less than nothing");
        const Turn turn(*this);
        runUntil(now() + interval);
    }

    void close() { agenda_->close(); }

    std::size_t pendingCount() const { return agenda_->workCount(); }

private:
    [[noreturn]] static void stop(std::string_view message) {
        fatalError(message, "VorlanFoundation/ManualQueue");
    }

    // The exclusive right to run blocks, as a serial queue has it.
    class Turn {
    public:
        explicit Turn(ManualQueueProvider& queue) : queue_(queue) {
            if (queue.isCurrent()) stop("turned from one of its own blocks");
            lock_ = std::unique_lock(queue.running_);
            queue.runner_ = std::this_thread::get_id();
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        ~Turn() { queue_.runner_ = std::thread::id(); }

    private:
        ManualQueueProvider& queue_;
        std::unique_lock<std::mutex> lock_;
    };

    void runUntil(DispatchTime limit) {
        while (auto work = agenda_->takeNext(limit)) (*work)();
    }

    std::shared_ptr<ManualAgenda> agenda_ = std::make_shared<ManualAgenda>();
    std::mutex running_;
    std::atomic<std::thread::id> runner_{};
};

ManualQueue::ManualQueue() : ManualQueue(std::make_shared<ManualQueueProvider>()) {}

ManualQueue::ManualQueue(std::shared_ptr<ManualQueueProvider> provider)
    : Queue(provider), manual_(provider.get(), [provider](ManualQueueProvider* queue) { queue->close(); }) {}

void ManualQueue::advance(DispatchTimeInterval interval) {
    manual_->advance(interval);
}

void ManualQueue::runPending() {
    manual_->advance(std::chrono::nanoseconds(0));
}

std::size_t ManualQueue::pendingCount() const {
    return manual_->pendingCount();
}

} // namespace vorlan::testing
