// SPDX-License-Identifier: Apache-2.0
#include "platform/dispatch/ReadSource.h"

#include "platform/dispatch/DispatchQueue.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <unistd.h>

#include <utility>

namespace vorlan {

namespace {

struct Context {
    static void onEvent(void* context) {
        sanitizer::acquire(context);
        runBlock(
            static_cast<Context*>(context)->queue, BlockKind::ordinary,
            [](void* source) { static_cast<Context*>(source)->handler(); }, context);
        sanitizer::release(context);
    }

    static void onCancel(void* context) {
        auto* self = static_cast<Context*>(context);
        sanitizer::acquire(self);
        auto& queue = self->queue;
        queue.enter(BlockKind::ordinary);
        close(self->descriptor);
        delete self;
        queue.leave(BlockKind::ordinary);
    }

    int descriptor;
    QueueState& queue;
    std::function<void()> handler;
};

} // namespace

ReadSource::ReadSource(int descriptor, const Queue& queue, std::function<void()> handler)
    : source_(dispatch_source_create(DISPATCH_SOURCE_TYPE_READ, static_cast<uintptr_t>(descriptor), 0,
                                     DispatchQueue::of(queue).handle())) {
    if (source_ == nullptr)
        fatalError("the engine could not watch a descriptor", "VorlanFoundation/ReadSource");
    auto* context = new Context{descriptor, DispatchQueue::of(queue).state(), std::move(handler)};
    dispatch_set_context(source_, context);
    dispatch_source_set_event_handler_f(source_, Context::onEvent);
    dispatch_source_set_cancel_handler_f(source_, Context::onCancel);
    sanitizer::release(context);
    dispatch_resume(source_);
}

ReadSource::~ReadSource() {
    cancel();
    dispatch_release(source_);
}

void ReadSource::cancel() {
    sanitizer::release(dispatch_get_context(source_));
    dispatch_source_cancel(source_);
}

} // namespace vorlan
