// SPDX-License-Identifier: Apache-2.0
#pragma once

// Timers on a clock that is turned by hand.

#include "testing/ManualAgenda.h"

#include <VorlanFoundation/Platform/QueueProvider.h>

#include <memory>

namespace vorlan::testing {

class ManualTimer final : public TimerProvider {
public:
    explicit ManualTimer(std::shared_ptr<ManualAgenda> agenda);

    void setEventHandler(std::function<void()> handler) override;
    void schedule(const TimerSchedule& schedule) override;
    void resume() override;
    void suspend() override;
    void cancel() override;
    void release() override;

private:
    ~ManualTimer() override = default;

    struct State;
    std::shared_ptr<State> state_;
};

} // namespace vorlan::testing
