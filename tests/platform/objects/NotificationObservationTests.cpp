// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NotificationCenter.h>

#include "tests/platform/objects/SlowCall.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using support::SlowCall;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const NotificationName saved("com.example.saved");

using Log = std::vector<std::string>;

// Writes the text at each notification.
NotificationCenter::Handler writeInto(Log& log, std::string text) {
    return [&log, text = std::move(text)](const Notification&) { log.push_back(text); };
}

} // namespace

TEST(NotificationObservation, EndsTheRegistrationWhenItIsDropped) {
    const NotificationCenter center;
    Log log;
    {
        const auto observation = center.addObserver({}, writeInto(log, "told"));
        center.post({.name = saved});
    }
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("told"));
}

TEST(NotificationObservation, MovesWithItsRegistrationAndEndsTheOneThatItHad) {
    const NotificationCenter center;
    Log log;
    auto first = center.addObserver({}, writeInto(log, "first"));
    auto second = center.addObserver({}, writeInto(log, "second"));
    first = std::move(second);
    second.invalidateAndWait(); // NOLINT(bugprone-use-after-move): it has no registration now
    auto third = std::move(first);
    auto& same = third;
    third = std::move(same);
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("second"));
}

TEST(NotificationObservation, InvalidatedASecondTimeDoesNothing) {
    const NotificationCenter center;
    Log log;
    auto observation = center.addObserver({}, writeInto(log, "told"));
    observation.invalidate();
    observation.invalidate();
    observation.invalidateAndWait();
    NotificationObservation none;
    none.invalidate();
    none.invalidateAndWait();
    center.post({.name = saved});
    EXPECT_THAT(log, IsEmpty());
}

TEST(NotificationObservation, OwnsTheHandlerUntilTheRegistrationEnds) {
    const NotificationCenter center;
    const auto value = std::make_shared<int>(0);
    auto observation = center.addObserver({}, [value](const Notification&) {});
    EXPECT_GT(value.use_count(), 1);
    observation.invalidate();
    EXPECT_EQ(value.use_count(), 1);
}

TEST(NotificationObservation, DoesNotOwnTheCenterAndMayEndAfterIt) {
    const auto value = std::make_shared<int>(0);
    auto center = std::make_unique<NotificationCenter>();
    auto waiting = center->addObserver({}, [value](const Notification&) {});
    auto dropped = center->addObserver({}, [value](const Notification&) {});
    center.reset();
    waiting.invalidateAndWait();
    dropped.invalidate();
    EXPECT_EQ(value.use_count(), 1);
}

TEST(NotificationObservation, MayBeDroppedFromWithinItsOwnHandler) {
    const NotificationCenter center;
    auto observation = std::make_unique<NotificationObservation>();
    int calls = 0;
    *observation = center.addObserver({}, [&, value = std::make_shared<int>(1)](const Notification&) {
        observation.reset();
        calls += *value; // The handler is there until it returns.
    });
    center.post({.name = saved});
    center.post({.name = saved});
    EXPECT_EQ(calls, 1);
}

TEST(NotificationObservation, EndedByAnotherThreadLetsACallThatRunsEndInItsOwnTime) {
    const NotificationCenter center;
    const auto value = std::make_shared<int>(0);
    std::latch isUnderWay(1);
    std::latch mayEnd(1);
    auto observation = center.addObserver({}, [value, &isUnderWay, &mayEnd](const Notification&) {
        isUnderWay.count_down();
        mayEnd.wait();
        ++*value;
    });
    std::jthread poster([&] { center.post({.name = saved}); });
    isUnderWay.wait();
    observation.invalidate();
    EXPECT_GT(value.use_count(), 1) << "the handler is held by the call";
    mayEnd.count_down();
    poster.join();
    EXPECT_EQ(*value, 1);
    EXPECT_EQ(value.use_count(), 1);
}

TEST(NotificationObservation, InvalidatingAndWaitingReturnsOnlyWhenNoCallRunsAndTheHandlerIsDestroyed) {
    const NotificationCenter center;
    SlowCall call(center);
    const auto value = std::make_shared<int>(0);
    auto observation =
        center.addObserver({}, [value, hear = call.handler()](const Notification& n) { hear(n); });
    for (int i = 0; i < 3; ++i) call.post();
    call.waitUntilUnderWay(3);
    observation.invalidateAndWait();
    EXPECT_TRUE(call.isOver());
    EXPECT_EQ(value.use_count(), 1);
}

TEST(NotificationObservation, InvalidatingAndWaitingWaitsAfterInvalidatingToo) {
    const NotificationCenter center;
    SlowCall call(center);
    auto observation = center.addObserver({}, call.handler());
    call.post();
    call.waitUntilUnderWay();
    observation.invalidate();
    observation.invalidateAndWait();
    EXPECT_TRUE(call.isOver());
}

TEST(NotificationObservation, InvalidatingAndWaitingDestroysTheHandlerThoughThePostGoesOn) {
    const NotificationCenter center;
    const auto value = std::make_shared<int>(0);
    auto observation = center.addObserver({}, [value](const Notification&) { ++*value; });
    std::latch isUnderWay(1);
    std::latch mayEnd(1);
    const auto later = center.addObserver({}, [&](const Notification&) {
        isUnderWay.count_down();
        mayEnd.wait();
    });
    std::jthread poster([&] { center.post({.name = saved}); });
    isUnderWay.wait();
    observation.invalidateAndWait();
    EXPECT_EQ(*value, 1);
    EXPECT_EQ(value.use_count(), 1);
    mayEnd.count_down();
}

TEST(NotificationObservation, InvalidatingAndWaitingFromInsideTheHandlerDoesNotWait) {
    const NotificationCenter center;
    NotificationObservation observation;
    std::latch bothRun(2);
    std::latch isEnded(1);
    std::atomic<int> calls = 0;
    std::atomic<int> numberInTurn = 0;
    observation = center.addObserver({}, [&](const Notification&) {
        const bool isFirst = numberInTurn++ == 0;
        bothRun.arrive_and_wait();
        if (isFirst) {
            observation.invalidateAndWait(); // The other call waits for this.
            center.post({.name = saved});
            isEnded.count_down();
        }
        isEnded.wait();
        ++calls;
    });
    std::jthread other([&] { center.post({.name = saved}); });
    center.post({.name = saved});
    other.join();
    EXPECT_EQ(calls, 2);
}

TEST(NotificationObservation, InvalidatingAndWaitingOutlastsACallThatEndsInAnException) {
    const NotificationCenter center;
    std::latch isUnderWay(1);
    auto observation = center.addObserver({.name = saved}, [&](const Notification&) {
        isUnderWay.count_down();
        throw std::runtime_error("no");
    });
    std::jthread poster([&] { EXPECT_THROW(center.post({.name = saved}), std::runtime_error); });
    isUnderWay.wait();
    observation.invalidateAndWait();
    poster.join();
    center.post({.name = saved});
}
