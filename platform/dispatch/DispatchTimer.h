// SPDX-License-Identifier: Apache-2.0
#pragma once

// Timers on the system's engine.

#include "platform/dispatch/DispatchQueue.h"

#include <VorlanFoundation/Platform/QueueProvider.h>

#include <functional>

namespace vorlan {

class DispatchTimer final : public TimerProvider {
public:
    explicit DispatchTimer(const DispatchQueue& queue);
    ~DispatchTimer() override;

    void setEventHandler(std::function<void()> handler) override;
    void schedule(const TimerSchedule& schedule) override;
    void resume() override;
    void suspend() override;
    void cancel() override;

private:
    struct Context;

    dispatch_source_t source_;
    Context* context_; ///< Owned by the source, which frees it once it is cancelled and no event runs.
    bool isSuspended_ = true;
};

} // namespace vorlan
