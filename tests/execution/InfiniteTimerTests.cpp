// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/InfiniteTimer.h>

#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

using namespace vorlan;
using namespace std::chrono_literals;
using vorlan::testing::ManualQueue;

namespace {

// Counts the ticks of a timer on a clock that is turned by hand.
struct InfiniteTimerByHand : ::testing::Test {
    std::function<void()> count() {
        return [this] { ++ticks; };
    }

    ManualQueue queue;
    int ticks = 0;
};

} // namespace

TEST_F(InfiniteTimerByHand, WithDeadlineZeroTicksAtOnceAndThenAtEveryInterval) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 0.5}, queue);
    timer.start(count());
    EXPECT_EQ(ticks, 0);
    queue.runPending();
    EXPECT_EQ(ticks, 1);
    queue.advance(499ms);
    EXPECT_EQ(ticks, 1);
    queue.advance(1ms);
    EXPECT_EQ(ticks, 2);
    queue.advance(5s);
    EXPECT_EQ(ticks, 12);
}

TEST_F(InfiniteTimerByHand, DeadlineIsTheTimeOfTheFirstTickInWholeSecondsFromItsMaking) {
    InfiniteTimer timer({.deadline = 2, .pollInterval = 10}, queue);
    queue.advance(500ms);
    timer.start(count());
    queue.advance(1499ms);
    EXPECT_EQ(ticks, 0);
    queue.advance(1ms);
    EXPECT_EQ(ticks, 1);
    queue.advance(10s);
    EXPECT_EQ(ticks, 2);
}

TEST_F(InfiniteTimerByHand, IntervalOfZeroOrLessMakesOneTickAtTheDeadline) {
    for (const double interval : {0.0, -0.0, -1.0, -1e300}) {
        ticks = 0;
        InfiniteTimer timer({.deadline = 1, .pollInterval = interval}, queue);
        timer.start(count());
        queue.advance(999ms);
        EXPECT_EQ(ticks, 0);
        queue.advance(1ms);
        EXPECT_EQ(ticks, 1);
        queue.advance(3600s);
        EXPECT_EQ(ticks, 1) << interval;
    }
}

TEST_F(InfiniteTimerByHand, DeadlineInThePastMeansAtOnce) {
    InfiniteTimer timer({.deadline = -5, .pollInterval = 0}, queue);
    timer.start(count());
    queue.runPending();
    EXPECT_EQ(ticks, 1);
}

TEST_F(InfiniteTimerByHand, DeadlineBeyondTheEndsOfTheClockIsCutToThem) {
    constexpr std::numeric_limits<std::int64_t> seconds;
    InfiniteTimer never({.deadline = seconds.max(), .pollInterval = 1}, queue);
    InfiniteTimer atOnce({.deadline = seconds.min(), .pollInterval = 0}, queue);
    never.start([] { FAIL() << "ticked before its deadline"; });
    atOnce.start(count());
    queue.advance(std::chrono::seconds(3'000'000'000));
    EXPECT_EQ(ticks, 1);
}

TEST_F(InfiniteTimerByHand, LongestIntervalThatTheClockCanTellDoesNotTrap) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 9.2e9}, queue);
    timer.start(count());
    queue.advance(3600s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(InfiniteTimerByHand, StartedAfterItsDeadlineTicksAtOnceAndKeepsToItsSchedule) {
    InfiniteTimer timer({.deadline = 1, .pollInterval = 1}, queue);
    queue.advance(3500ms);
    timer.start(count());
    queue.runPending();
    EXPECT_EQ(ticks, 1);
    queue.advance(499ms);
    EXPECT_EQ(ticks, 1);
    queue.advance(1ms);
    EXPECT_EQ(ticks, 2);
}

TEST_F(InfiniteTimerByHand, SecondStartReplacesTheTickAndDoesNotSpeedUp) {
    int later = 0;
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.start(count());
    queue.runPending();
    timer.start([&] { ++later; });
    queue.advance(10s);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(later, 10);
}

TEST_F(InfiniteTimerByHand, ReplacedTickIsLetGoAtOnce) {
    const auto value = std::make_shared<int>(1);
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.start([value] {});
    EXPECT_EQ(value.use_count(), 2);
    timer.start(count());
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(InfiniteTimerByHand, StartAndStopMoveNoTick) {
    InfiniteTimer timer({.deadline = 1, .pollInterval = 1}, queue);
    for (int i = 0; i < 9; ++i) {
        queue.advance(300ms);
        timer.start(count());
        timer.stop();
        timer.start(count());
    }
    EXPECT_EQ(ticks, 2) << "at one second and at two, by 2.7 seconds";
    queue.advance(299ms);
    EXPECT_EQ(ticks, 2);
    queue.advance(1ms);
    EXPECT_EQ(ticks, 3);
}

TEST_F(InfiniteTimerByHand, ManyTicksMissedWhileStoppedAreJoinedIntoOne) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 0.001}, queue);
    queue.advance(60s);
    timer.start(count());
    queue.runPending();
    EXPECT_EQ(ticks, 1);
}

TEST_F(InfiniteTimerByHand, OneTickMissedWhileStoppedComesAndNoSecond) {
    InfiniteTimer timer({.deadline = 1, .pollInterval = 0}, queue);
    timer.start(count());
    timer.stop();
    queue.advance(10s);
    EXPECT_EQ(ticks, 0);
    timer.start(count());
    queue.advance(10s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(InfiniteTimerByHand, StoppedTimerDoesNotTickAndKeepsItsSchedule) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.start(count());
    queue.runPending();
    timer.stop();
    queue.advance(2500ms);
    EXPECT_EQ(ticks, 1);
    timer.start(count());
    queue.runPending();
    EXPECT_EQ(ticks, 2) << "what fell due meanwhile is joined into one tick";
    queue.advance(500ms);
    EXPECT_EQ(ticks, 3);
}

TEST_F(InfiniteTimerByHand, StopOfANeverStartedTimerDoesNothing) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.stop();
    timer.start(count());
    queue.runPending();
    EXPECT_EQ(ticks, 1);
}

TEST_F(InfiniteTimerByHand, StopTwiceInARowSuspendsOnlyOnce) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.start(count());
    timer.stop();
    timer.stop();
    timer.start(count());
    queue.runPending();
    EXPECT_EQ(ticks, 1);
}

TEST_F(InfiniteTimerByHand, NoTickComesAfterTheTimerWasDropped) {
    {
        InfiniteTimer stopped({.deadline = 0, .pollInterval = 1}, queue);
        InfiniteTimer running({.deadline = 0, .pollInterval = 1}, queue);
        const InfiniteTimer never({.deadline = 0, .pollInterval = 1}, queue);
        stopped.start(count());
        stopped.stop();
        running.start(count());
    }
    queue.advance(10s);
    EXPECT_EQ(ticks, 0);
}

TEST_F(InfiniteTimerByHand, DroppingLetsGoOfTheTick) {
    const auto value = std::make_shared<int>(1);
    std::optional<InfiniteTimer> timer(std::in_place, InfiniteTimer::Schedule{0, 1.0}, queue);
    timer->start([value] {});
    timer.reset();
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(InfiniteTimerByHand, TickMayDropItsTimer) {
    std::optional<InfiniteTimer> timer(std::in_place, InfiniteTimer::Schedule{0, 1.0}, queue);
    const auto value = std::make_shared<int>(1);
    timer->start([&, value] {
        timer.reset();
        ticks += *value; // What the running tick holds is still there.
    });
    queue.advance(10s);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(InfiniteTimerByHand, TickMayStopAndReplaceItself) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.start([&] {
        timer.stop();
        timer.start(count());
    });
    queue.advance(3s);
    EXPECT_EQ(ticks, 3);
}

TEST_F(InfiniteTimerByHand, TickThatReplacesItselfKeepsWhatItHoldsUntilItEnds) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    const auto value = std::make_shared<int>(1);
    timer.start([&, value] {
        timer.start(count());
        ticks += *value;
    });
    queue.runPending();
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(value.use_count(), 1);
    queue.advance(1s);
    EXPECT_EQ(ticks, 2);
}

TEST_F(InfiniteTimerByHand, TickMayAssignToItsTimer) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    int later = 0;
    timer.start([&] {
        ++ticks;
        timer = InfiniteTimer({.deadline = 1, .pollInterval = 1}, queue);
        timer.start([&] { ++later; });
    });
    queue.advance(3s);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(later, 3);
}

TEST_F(InfiniteTimerByHand, MovedTimerGoesOnAndAssigningDropsTheOneThatWasThere) {
    int dropped = 0;
    InfiniteTimer first({.deadline = 0, .pollInterval = 1}, queue);
    first.start(count());
    InfiniteTimer second(std::move(first));
    queue.advance(1s);
    EXPECT_EQ(ticks, 2);
    InfiniteTimer third({.deadline = 1, .pollInterval = 1}, queue);
    third.start([&] { ++dropped; });
    third = std::move(second);
    queue.advance(5s);
    EXPECT_EQ(ticks, 7);
    EXPECT_EQ(dropped, 0);
}

TEST_F(InfiniteTimerByHand, AssignedToItselfGoesOn) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    auto& same = timer;
    timer.start(count());
    timer = std::move(same);
    queue.advance(1s);
    EXPECT_EQ(ticks, 2);
}

TEST_F(InfiniteTimerByHand, IsDrivenThroughTickTockableAlone) {
    const std::unique_ptr<TickTockable> timer =
        std::make_unique<InfiniteTimer>(InfiniteTimer::Schedule{.deadline = 0, .pollInterval = 1}, queue);
    timer->start(count());
    queue.advance(1s);
    timer->stop();
    queue.advance(10s);
    EXPECT_EQ(ticks, 2);
}

TEST_F(InfiniteTimerByHand, EmptyTickIsNotCalled) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.start({});
    queue.advance(2s);
    timer.start(count());
    queue.advance(1s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(InfiniteTimerByHand, IntervalShorterThanTheClockCanTellDoesNotTrap) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1e-12}, queue);
    timer.start(count());
    queue.advance(5ns);
    EXPECT_EQ(ticks, 6);
}
