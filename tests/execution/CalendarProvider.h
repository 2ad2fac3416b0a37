// SPDX-License-Identifier: Apache-2.0
#pragma once

// A queue turned by hand whose calendar shows whatever it is told to.

#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Testing/ManualQueue.h>

#include <string>
#include <utility>

/// The calendar does not move with the queue's clock, as a wall clock that somebody keeps setting.
class CalendarProvider final : public vorlan::QueueProvider {
public:
    explicit CalendarProvider(vorlan::Date date) : date_(date) {}

    void setDate(vorlan::Date date) { date_ = date; }
    void advance(vorlan::DispatchTimeInterval interval) { queue_.advance(interval); }

    std::string label() const override { return "calendar"; }
    vorlan::DispatchTime now() const override { return queue_.now(); }
    vorlan::Date date() const override { return date_; }
    bool isCurrent() const override { return queue_.isCurrent(); }
    void async(vorlan::Work work, vorlan::BlockKind) override { queue_.async(std::move(work)); }
    void asyncAfter(vorlan::DispatchTime deadline, vorlan::Work work, vorlan::BlockKind) override {
        queue_.asyncAfter(deadline, std::move(work));
    }
    void sync(void (*function)(void*), void* context, vorlan::BlockKind) override {
        queue_.sync([&] { function(context); });
    }
    vorlan::TimerReference makeTimer() override { return queue_.provider()->makeTimer(); }

private:
    vorlan::testing::ManualQueue queue_;
    vorlan::Date date_;
};
