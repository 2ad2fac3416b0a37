// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a running block knows of its queue, and the chain of blocks that a thread is in.
//
// The state lives as long as the engine's queue, which outlives its last handle while blocks are pending.

#include "platform/dispatch/Dispatch.h"
#include "platform/dispatch/ThreadSanitizer.h"

#include <VorlanFoundation/Platform/QueueProvider.h>

#include <string>

namespace vorlan {

struct QueueState {
    enum class Kind { serial, concurrent, global };

    Kind kind;
    std::string label;
    dispatch_queue_t handle = nullptr; ///< The engine's queue, whose state this is.
    QueueState* target = nullptr;      ///< Kept alive by the engine, which keeps the target queue.

    // Addresses that stand for the order between blocks, for ThreadSanitizer: exclusive blocks and readers.
    char exclusiveTag = 0;
    char readersTag = 0;

    /// Whether a block of that kind runs alone on this very queue.
    bool isExclusive(BlockKind block) const {
        return kind == Kind::serial || (kind == Kind::concurrent && block == BlockKind::barrier);
    }

    /// States that what earlier blocks did is visible to the block that starts now.
    void enter(BlockKind block) {
#if defined(VORLAN_THREAD_SANITIZER)
        for (auto* queue = this; queue != nullptr; queue = queue->target, block = BlockKind::ordinary) {
            if (queue->kind == Kind::global) continue;
            sanitizer::acquire(&queue->exclusiveTag);
            if (queue->isExclusive(block)) sanitizer::acquire(&queue->readersTag);
        }
#else
        static_cast<void>(block);
#endif
    }

    /// States that what the ending block did is visible to later ones, and to the end of the queue. The last
    /// look at the state: the engine keeps its queue, and with it the state, no longer than until the block
    /// has ended.
    void leave(BlockKind block) {
#if defined(VORLAN_THREAD_SANITIZER)
        for (auto *queue = this, *next = target; queue != nullptr;
             queue = next, block = BlockKind::ordinary) {
            next = queue->target;
            if (queue->kind != Kind::global)
                sanitizer::release(queue->isExclusive(block) ? &queue->exclusiveTag : &queue->readersTag);
            sanitizer::release(queue);
        }
#else
        static_cast<void>(block);
#endif
    }
};

/// A block that the current thread is in; blocks nest by synchronous submission.
///
/// A synchronous block that the engine runs on another thread (the main queue's) continues the chain of the
/// thread that waits for it.
class BlockFrame {
public:
    BlockFrame(QueueState& queue, BlockKind kind, const BlockFrame* parent = current())
        : queue_(queue), kind_(kind), parent_(parent), previous_(current_) {
        current_ = this;
    }
    BlockFrame(const BlockFrame&) = delete;
    BlockFrame& operator=(const BlockFrame&) = delete;
    ~BlockFrame() { current_ = previous_; }

    /// The innermost block of the calling thread; null outside of blocks.
    static const BlockFrame* current() { return current_; }

    /// Whether the calling thread is in a block of the queue, or of one that targets it.
    static bool isIn(const QueueState& queue);

    /// Whether a block of that kind on `queue` could not start before the calling thread's blocks have ended.
    static bool blocks(const QueueState& queue, BlockKind kind);

private:
    bool holds(const QueueState& queue, bool wantsExclusive) const;

    QueueState& queue_;
    BlockKind kind_;
    const BlockFrame* parent_;
    const BlockFrame* previous_;
    // Read at every block: the model that needs no call is worth its few bytes of static thread storage.
    __attribute__((tls_model("initial-exec"))) static thread_local constinit const BlockFrame* current_;
};

} // namespace vorlan
