// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/TimerSource.h>

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <utility>

using namespace vorlan;
using namespace std::chrono_literals;

TEST(TimerSourceDeathTest, ResumingOutOfBalanceStopsTheProcess) {
    TimerSource timer(Queue("timers"));
    timer.resume();
    EXPECT_DEATH(timer.resume(),
                 "VorlanFoundation/TimerSource: Fatal error: resumed more often than suspended");
    timer.suspend();
    timer.resume();
    EXPECT_DEATH(timer.resume(), "resumed more often than suspended");
}

TEST(TimerSourceDeathTest, RepeatIntervalThatIsNotAboveZeroStopsTheProcess) {
    TimerSource timer(Queue("timers"));
    const auto message = "VorlanFoundation/TimerSource: Fatal error: the repeat interval is not above zero";
    EXPECT_DEATH(timer.schedule({.deadline = DispatchTime::now(), .repeating = 0s}), message);
    EXPECT_DEATH(timer.schedule({.deadline = DispatchTime::now(), .repeating = -1ms}), message);
}

TEST(TimerSourceDeathTest, ExceptionOfAHandlerStopsTheProcessWithItsText) {
    EXPECT_DEATH(
        {
            const Queue queue("com.example.ticking");
            TimerSource timer(queue);
            timer.setEventHandler([] { throw std::runtime_error("out of ticks"); });
            timer.schedule({.deadline = queue.now()});
            timer.resume();
            for (;;) queue.sync([] {});
        },
        "an exception left a block on queue 'com.example.ticking': out of ticks");
}

TEST(TimerSourceDeathTest, UseAfterMoveStopsTheProcessWithAMessage) {
    TimerSource timer(Queue("timers"));
    const TimerSource other(std::move(timer));
    EXPECT_DEATH(timer.resume(), // NOLINT(bugprone-use-after-move): that is what is tested
                 "VorlanFoundation/TimerSource: Fatal error: used after it was moved from");
}
