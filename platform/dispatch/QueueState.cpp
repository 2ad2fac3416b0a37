// SPDX-License-Identifier: Apache-2.0
#include "platform/dispatch/QueueState.h"

namespace vorlan {

thread_local constinit const BlockFrame* BlockFrame::current_ = nullptr;

bool BlockFrame::isIn(const QueueState& queue) {
    for (const auto* frame = current_; frame != nullptr; frame = frame->parent_)
        for (const auto* state = &frame->queue_; state != nullptr; state = state->target)
            if (state == &queue) return true;
    return false;
}

bool BlockFrame::blocks(const QueueState& queue, BlockKind kind) {
    for (const auto* frame = current_; frame != nullptr; frame = frame->parent_) {
        if (frame->holds(queue, queue.isExclusive(kind))) return true;
        for (const auto* target = queue.target; target != nullptr; target = target->target)
            if (frame->holds(*target, target->isExclusive(BlockKind::ordinary))) return true;
    }
    return false;
}

bool BlockFrame::holds(const QueueState& queue, bool wantsExclusive) const {
    if (queue.kind == QueueState::Kind::global) return false;
    auto kind = kind_;
    for (const auto* state = &queue_; state != nullptr; state = state->target, kind = BlockKind::ordinary)
        if (state == &queue) return wantsExclusive || state->isExclusive(kind);
    return false;
}

} // namespace vorlan
