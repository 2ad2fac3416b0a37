// SPDX-License-Identifier: Apache-2.0
#pragma once

// Queues on the system's engine, libdispatch.

#include "platform/dispatch/QueueState.h"

#include <VorlanFoundation/Platform/Queue.h>

#include <memory>
#include <string>
#include <string_view>

namespace vorlan {

class DispatchQueue final : public QueueProvider {
public:
    struct Attributes {
        Queue::Attribute attribute;
        QualityOfService qualityOfService;
        AutoreleaseFrequency autoreleaseFrequency;
    };

    /// Makes a queue of its own; with a target, its blocks run as blocks of that.
    DispatchQueue(std::string_view label, const Attributes& attributes, DispatchQueue* target);
    /// One of the engine's own queues, which are never released.
    DispatchQueue(dispatch_queue_t queue, QueueState::Kind kind, QualityOfService qualityOfService);
    ~DispatchQueue() override;

    std::string label() const override { return state_->label; }
    QualityOfService qualityOfService() const override { return qualityOfService_; }
    AutoreleaseFrequency autoreleaseFrequency() const override { return autoreleaseFrequency_; }
    DispatchTime now() const override { return DispatchTime::now(); }
    bool isCurrent() const override { return BlockFrame::isIn(*state_); }
    void async(Work work, BlockKind kind) override;
    void asyncAfter(DispatchTime deadline, Work work, BlockKind kind) override;
    void sync(void (*function)(void*), void* context, BlockKind kind) override;
    TimerReference makeTimer() override;

    /// The engine's side of a queue; one that runs on another provider stops the process.
    static DispatchQueue& of(const Queue& queue);

    /// The engine's queue.
    dispatch_queue_t handle() const { return queue_; }
    QueueState& state() const { return *state_; }

    /// The engine's form of a deadline.
    static dispatch_time_t engineTime(DispatchTime time);

private:
    void refuseDeadlock(BlockKind kind) const;

    dispatch_queue_t queue_;
    QueueState* state_;
    QualityOfService qualityOfService_;
    AutoreleaseFrequency autoreleaseFrequency_ = AutoreleaseFrequency::inherit;
    bool isOwned_;
};

/// Calls `function`; an exception that leaves it stops the process with its text and the queue's name.
void runOrStop(const QueueState& queue, void (*function)(void*), void* context) noexcept;

/// Runs a block of a queue on the calling thread, from what comes before it to what comes after it. The
/// caller does not touch the queue's state afterwards.
///
/// @param waiting The blocks that the block is nested in: those of the thread that waits for it.
inline void runBlock(QueueState& queue, BlockKind kind, void (*function)(void*), void* context,
                     const BlockFrame* waiting = BlockFrame::current()) noexcept {
    queue.enter(kind);
    {
        const BlockFrame frame(queue, kind, waiting);
        runOrStop(queue, function, context);
    }
    queue.leave(kind);
}

} // namespace vorlan
