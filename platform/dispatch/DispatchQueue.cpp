// SPDX-License-Identifier: Apache-2.0
#include "platform/dispatch/DispatchQueue.h"

#include "platform/dispatch/DispatchTimer.h"
#include "platform/values/ExceptionStop.h"

#include <VorlanFoundation/Platform/FatalError.h>
#include <VorlanFoundation/Platform/Thread.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan {

namespace {

constexpr std::string_view where = "VorlanFoundation/Queue";

dispatch_qos_class_t engineClass(QualityOfService qualityOfService) {
    // The engine's own numbers; the functions that take them check them.
    switch (qualityOfService) {
    case QualityOfService::userInteractive: return 0x21;
    case QualityOfService::userInitiated: return 0x19;
    case QualityOfService::default_: return 0x15;
    case QualityOfService::utility: return 0x11;
    case QualityOfService::background: return 0x09;
    case QualityOfService::unspecified: return 0x00;
    }
    fatalError("unknown quality of service", where);
}

dispatch_autorelease_frequency_t engineFrequency(AutoreleaseFrequency frequency) {
    switch (frequency) {
    case AutoreleaseFrequency::inherit: return DISPATCH_AUTORELEASE_FREQUENCY_INHERIT;
    case AutoreleaseFrequency::workItem: return DISPATCH_AUTORELEASE_FREQUENCY_WORK_ITEM;
    case AutoreleaseFrequency::never: return DISPATCH_AUTORELEASE_FREQUENCY_NEVER;
    }
    fatalError("unknown autorelease frequency", where);
}

dispatch_queue_attr_t engineAttributes(const DispatchQueue::Attributes& attributes) {
    auto attr = attributes.attribute == Queue::concurrent ? DISPATCH_QUEUE_CONCURRENT : DISPATCH_QUEUE_SERIAL;
    attr = dispatch_queue_attr_make_with_autorelease_frequency(
        attr, engineFrequency(attributes.autoreleaseFrequency));
    if (attributes.qualityOfService != QualityOfService::unspecified)
        attr = dispatch_queue_attr_make_with_qos_class(attr, engineClass(attributes.qualityOfService), 0);
    return attr;
}

void deleteState(void* context) {
    sanitizer::acquire(context);
    delete static_cast<QueueState*>(context);
}

template <BlockKind kind>
void runAsynchronous(void* context) {
    sanitizer::acquire(context);
    auto* node = static_cast<detail::WorkNode*>(context);
    runBlock(
        *static_cast<QueueState*>(node->queue), kind,
        [](void* work) { Work(static_cast<detail::WorkNode*>(work))(); }, node);
}

// Whether the engine's times on its standard clock are plain nanoseconds of our clock. They are on Linux, but that
// is not documented; where they are not, two looks at the clock make up for it.
bool engineCountsUptime() {
    const auto before = DispatchTime::now();
    const DispatchTime between(dispatch_time(DISPATCH_TIME_NOW, 0));
    return before <= between && between <= DispatchTime::now();
}

// The engine delays ordinary blocks only: one that is due submits itself as a barrier.
void submitBarrier(void* context) {
    sanitizer::acquire(context);
    auto* const state = static_cast<QueueState*>(static_cast<detail::WorkNode*>(context)->queue);
    auto* const queue = state->handle;
    sanitizer::release(state);
    sanitizer::release(context);
    dispatch_barrier_async_f(queue, context, runAsynchronous<BlockKind::barrier>);
}

void* prepare(Work& work, QueueState& queue) {
    auto* node = work.release();
    node->queue = &queue;
    sanitizer::release(node);
    return node;
}

struct SynchronousBlock {
    QueueState& queue;
    BlockKind kind;
    const BlockFrame* waiting; ///< The blocks that the waiting thread is in.
    void (*function)(void*);
    void* context;
};

void runSynchronous(void* context) {
    sanitizer::acquire(context);
    const auto& block = *static_cast<SynchronousBlock*>(context);
    runBlock(block.queue, block.kind, block.function, block.context, block.waiting);
    sanitizer::release(context);
}

} // namespace

void runOrStop(const QueueState& queue, void (*function)(void*), void* context) noexcept {
    try {
        function(context);
    } catch (...) {
        stopForException("a block on queue '" + queue.label + "'", where);
    }
}

DispatchQueue::DispatchQueue(std::string_view label, const Attributes& attributes, DispatchQueue* target)
    : state_(new QueueState{.kind = attributes.attribute == Queue::concurrent ? QueueState::Kind::concurrent
                                                                              : QueueState::Kind::serial,
                            .label = std::string(label),
                            .target = target != nullptr ? &target->state() : nullptr}),
      qualityOfService_(attributes.qualityOfService),
      autoreleaseFrequency_(attributes.autoreleaseFrequency),
      isOwned_(true) {
    queue_ = dispatch_queue_create_with_target(state_->label.c_str(), engineAttributes(attributes),
                                               target != nullptr ? target->handle() : nullptr);
    if (queue_ == nullptr) fatalError("the engine could not make queue '" + state_->label + "'", where);
    state_->handle = queue_;
    dispatch_set_context(queue_, state_);
    dispatch_set_finalizer_f(queue_, deleteState);
}

DispatchQueue::DispatchQueue(dispatch_queue_t queue, QueueState::Kind kind, QualityOfService qualityOfService)
    : queue_(queue),
      state_(new QueueState{.kind = kind, .label = dispatch_queue_get_label(queue), .handle = queue}),
      qualityOfService_(qualityOfService),
      isOwned_(false) {}

DispatchQueue::~DispatchQueue() {
    if (!isOwned_) return;
    sanitizer::release(state_);
    dispatch_release(queue_);
}

void DispatchQueue::async(Work work, BlockKind kind) {
    void* context = prepare(work, *state_);
    if (kind == BlockKind::barrier) {
        dispatch_barrier_async_f(queue_, context, runAsynchronous<BlockKind::barrier>);
    } else {
        dispatch_async_f(queue_, context, runAsynchronous<BlockKind::ordinary>);
    }
}

void DispatchQueue::asyncAfter(DispatchTime deadline, Work work, BlockKind kind) {
    // The engine forgets work that is never due without releasing it; here it goes with the argument.
    if (deadline == DispatchTime::distantFuture()) return;
    dispatch_after_f(engineTime(deadline), queue_, prepare(work, *state_),
                     kind == BlockKind::barrier ? submitBarrier : runAsynchronous<BlockKind::ordinary>);
}

void DispatchQueue::sync(void (*function)(void*), void* context, BlockKind kind) {
    refuseDeadlock(kind);
    SynchronousBlock block{*state_, kind, BlockFrame::current(), function, context};
    sanitizer::release(&block);
    if (kind == BlockKind::barrier) {
        dispatch_barrier_sync_f(queue_, &block, runSynchronous);
    } else {
        dispatch_sync_f(queue_, &block, runSynchronous);
    }
    sanitizer::acquire(&block);
}

void DispatchQueue::refuseDeadlock(BlockKind kind) const {
    const bool isMainOnMain = queue_ == dispatch_get_main_queue() && Thread::isMainThread();
    if (!isMainOnMain && (BlockFrame::current() == nullptr || !BlockFrame::blocks(*state_, kind))) return;
    fatalError("waiting for queue '" + state_->label + "' from a block that it waits for would last for ever",
               where);
}

DispatchQueue& DispatchQueue::of(const Queue& queue) {
    auto* provider = dynamic_cast<DispatchQueue*>(queue.provider().get());
    if (provider == nullptr)
        fatalError("queue '" + queue.label() + "' does not run on the system's engine", where);
    return *provider;
}

TimerReference DispatchQueue::makeTimer() {
    return TimerReference(new DispatchTimer(*this));
}

dispatch_time_t DispatchQueue::engineTime(DispatchTime time) {
    if (time == DispatchTime::distantFuture()) return DISPATCH_TIME_FOREVER;
    // Beyond these bits, the engine's times tell the clock that they are on.
    constexpr auto limit = std::uint64_t{1} << 62;
    static const bool isUptime = engineCountsUptime();
    if (isUptime && time.uptimeNanoseconds() < limit) return time.uptimeNanoseconds();
    return dispatch_time(DISPATCH_TIME_NOW, (time - DispatchTime::now()).nanoseconds());
}

Queue::Queue(std::string_view label, Attribute attribute, QualityOfService qualityOfService,
             AutoreleaseFrequency autoreleaseFrequency)
    : provider_(std::make_shared<DispatchQueue>(
          label, DispatchQueue::Attributes{attribute, qualityOfService, autoreleaseFrequency}, nullptr)) {}

Queue::Queue(std::string_view label, Attribute attribute, QualityOfService qualityOfService,
             AutoreleaseFrequency autoreleaseFrequency, const Queue& target)
    : provider_(std::make_shared<DispatchQueue>(
          label, DispatchQueue::Attributes{attribute, qualityOfService, autoreleaseFrequency},
          &DispatchQueue::of(target))) {}

const Queue& Queue::global(QualityOfService qualityOfService) {
    // Never destroyed: blocks may still be running when the process ends.
    static const auto& queues = *[] {
        constexpr std::array classes{QualityOfService::userInteractive, QualityOfService::userInitiated,
                                     QualityOfService::default_,        QualityOfService::utility,
                                     QualityOfService::background,      QualityOfService::unspecified};
        auto* made = new std::vector<Queue>;
        for (const auto one : classes)
            made->push_back(Queue(std::make_shared<DispatchQueue>(
                dispatch_get_global_queue(static_cast<intptr_t>(engineClass(one)), 0),
                QueueState::Kind::global, one)));
        return made;
    }();
    return queues.at(static_cast<std::size_t>(qualityOfService));
}

} // namespace vorlan
