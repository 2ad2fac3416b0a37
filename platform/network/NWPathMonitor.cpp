// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NWPathMonitor.h>

#include <VorlanFoundation/Platform/FatalError.h>

#include <mutex>
#include <optional>
#include <utility>

namespace vorlan {

/// What outlives the monitor's handle while a delivery is on its way.
///
/// Threads: safe from any thread.
struct NWPathMonitor::State : std::enable_shared_from_this<State> {
    explicit State(std::shared_ptr<NWPathSource> paths) : source(std::move(paths)) {}

    // On the source's thread: only passes the path on, so that no client can hold the source up. The queue is
    // read without the lock: it was set before the subscription was made, and is never changed again.
    void submit(const NWPath& path) {
        if (isCancelled()) return;
        queue->async([weak = weak_from_this(), path] {
            if (const auto self = weak.lock()) self->deliver(path);
        });
    }

    // On the client's queue.
    void deliver(const NWPath& path) const {
        if (isCancelled()) return;
        const auto current = currentHandler();
        if (current && *current) (*current)(path);
    }

    bool isCancelled() const {
        const std::lock_guard lock(mutex);
        return cancelled;
    }

    std::shared_ptr<const PathUpdateHandler> currentHandler() const {
        const std::lock_guard lock(mutex);
        return handler;
    }

    /// Takes the queue; false when the monitor runs already or was cancelled.
    bool begin(Queue&& target) {
        const std::lock_guard lock(mutex);
        if (cancelled || queue) return false;
        queue = std::move(target);
        return true;
    }

    /// Keeps the subscription, unless the monitor was cancelled while it was made.
    void keep(std::shared_ptr<void> made) {
        const std::lock_guard lock(mutex);
        if (!cancelled) subscription.swap(made);
    }

    const std::shared_ptr<NWPathSource> source;
    mutable std::mutex mutex;
    std::shared_ptr<const PathUpdateHandler> handler;
    std::optional<Queue> queue;
    std::shared_ptr<void> subscription;
    bool cancelled = false;
};

NWPathMonitor::NWPathMonitor() : NWPathMonitor(NWPathSource::system()) {}

NWPathMonitor::NWPathMonitor(std::shared_ptr<NWPathSource> source) {
    if (!source) fatalError("a path monitor needs a source", "VorlanFoundation/NWPathMonitor");
    state_ = std::make_shared<State>(std::move(source));
}

NWPathMonitor::~NWPathMonitor() {
    cancel();
}

NWPathMonitor::PathUpdateHandler NWPathMonitor::pathUpdateHandler() const {
    const auto handler = state_->currentHandler();
    return handler ? *handler : PathUpdateHandler();
}

void NWPathMonitor::setPathUpdateHandler(PathUpdateHandler handler) {
    auto replacement = std::make_shared<const PathUpdateHandler>(std::move(handler));
    const std::lock_guard lock(state_->mutex);
    state_->handler.swap(replacement);
}

void NWPathMonitor::start(Queue queue) {
    if (!state_->begin(std::move(queue))) return;
    state_->keep(state_->source->subscribe([weak = std::weak_ptr(state_)](const NWPath& path) {
        if (const auto state = weak.lock()) state->submit(path);
    }));
}

void NWPathMonitor::cancel() {
    std::shared_ptr<void> ended;
    const std::lock_guard lock(state_->mutex);
    state_->cancelled = true;
    state_->subscription.swap(ended);
}

NWPath NWPathMonitor::currentPath() const {
    return state_->source->currentPath();
}

} // namespace vorlan
