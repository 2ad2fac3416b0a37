// SPDX-License-Identifier: Apache-2.0
#pragma once

// Timers on the system's engine.

#include "platform/dispatch/DispatchQueue.h"

#include <VorlanFoundation/Platform/QueueProvider.h>

#include <functional>
#include <mutex>

namespace vorlan {

/// Freed by the engine's source: when it has been released, is cancelled, and no event runs.
class DispatchTimer final : public TimerProvider {
public:
    explicit DispatchTimer(const DispatchQueue& queue);

    void setEventHandler(std::function<void()> handler) override;
    void schedule(const TimerSchedule& schedule) override;
    void resume() override;
    void suspend() override;
    void cancel() override;
    void release() override;

private:
    ~DispatchTimer() override = default;

    static void onEvent(void* timer);
    static void onEnd(void* timer);
    void callHandler();

    dispatch_source_t source_;
    QueueState& queue_;
    bool isSuspended_ = true;
    std::mutex mutex_; ///< Guards what follows.
    std::function<void()> handler_;
    bool isReplaced_ = false; ///< Whether another handler was set since the one that is running began.
};

} // namespace vorlan
