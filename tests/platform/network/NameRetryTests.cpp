// SPDX-License-Identifier: Apache-2.0

// When a name is looked up again, and what becomes of answers that come out of order.

#include "tests/platform/network/NameOnPaper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <memory>

namespace vorlan::network {
namespace {

using namespace fake;
using namespace std::chrono_literals;
using ::testing::ElementsAre;

class NameRetry : public NameOnPaper {};

TEST_F(NameRetry, WhileUnreachableItIsLookedUpAfterOneTwoFourToSixtySeconds) {
    const auto token = listen(*name, told);
    answer(0, {});
    std::size_t count = 1;
    for (const auto pause : {1s, 2s, 4s, 8s, 16s, 32s, 60s, 60s, 60s}) {
        queue.advance(pause - 1ms);
        EXPECT_EQ(lookUps.size(), count) << pause.count();
        queue.advance(1ms);
        ASSERT_EQ(lookUps.size(), ++count) << pause.count();
        answerLast({});
    }
    EXPECT_THAT(told, ElementsAre("-"));
}

TEST_F(NameRetry, PauseIsCountedFromTheAnswer) {
    const auto token = listen(*name, told);
    queue.advance(1000s); // a look-up is under way all the time
    EXPECT_EQ(lookUps.size(), 1U);
    answer(0, {});
    queue.advance(999ms);
    EXPECT_EQ(lookUps.size(), 1U);
    queue.advance(1ms);
    ASSERT_EQ(lookUps.size(), 2U);
    queue.advance(1000s);
    EXPECT_EQ(lookUps.size(), 2U);
}

TEST_F(NameRetry, AddressesThatCannotBeReachedAreLookedUpAgainLikeNone) {
    const auto token = listen(*name, told);
    answer(0, {"2001:db8::1"});
    queue.advance(1s);
    ASSERT_EQ(lookUps.size(), 2U);
    answer(1, {"2001:db8::1"});
    queue.advance(1999ms);
    EXPECT_EQ(lookUps.size(), 2U);
    queue.advance(1ms);
    EXPECT_EQ(lookUps.size(), 3U);
}

TEST_F(NameRetry, ReachableNameIsLeftAloneAndLaterPausesBeginAnew) {
    const auto token = listen(*name, told);
    answer(0, {});
    for (const auto pause : {1s, 2s, 4s}) {
        queue.advance(pause);
        answerLast({});
    }
    queue.advance(8s);
    answerLast({"10.0.0.77"});
    const auto count = lookUps.size();
    queue.advance(1000s);
    EXPECT_EQ(lookUps.size(), count);
    resolverChanged();
    queue.advance(20ms);
    answerLast({});
    queue.advance(1s);
    EXPECT_EQ(lookUps.size(), count + 2);
}

TEST_F(NameRetry, NewsBeginsThePausesAnew) {
    const auto token = listen(*name, told);
    answer(0, {});
    for (const auto pause : {1s, 2s, 4s, 8s}) {
        queue.advance(pause);
        answerLast({});
    }
    settle();
    answerLast({});
    const auto count = lookUps.size();
    queue.advance(999ms);
    EXPECT_EQ(lookUps.size(), count);
    queue.advance(1ms);
    EXPECT_EQ(lookUps.size(), count + 1);
}

TEST_F(NameRetry, NameThatCameWithinReachIsNotLookedUpAnyMore) {
    const auto token = listen(*name, told);
    answer(0, {"2001:db8::1"});
    kernel.address(2, "fd00::5", 64);
    kernel.routes.push_back({"::", 0, 2, "fe80::1"});
    settle();
    answerLast({"2001:db8::1"});
    const auto count = lookUps.size();
    queue.advance(1000s);
    EXPECT_EQ(lookUps.size(), count);
    EXPECT_THAT(told, ElementsAre("-", "R"));
}

TEST_F(NameRetry, SecondLookUpBeginsThoughTheFirstIsUnderWay) {
    const auto token = listen(*name, told);
    kernel.routes[0].gateway = "10.0.0.2";
    settle();
    ASSERT_EQ(lookUps.size(), 2U);
    answer(1, {"10.0.0.77"});
    EXPECT_THAT(told, ElementsAre("Rd"));
    answer(0, {"8.8.8.8"}); // what the former network said is void
    EXPECT_THAT(told, ElementsAre("Rd"));
    EXPECT_EQ(answerOf(*name), "Rd");
    EXPECT_EQ(lookUps.size(), 2U);
}

TEST_F(NameRetry, NewsWhileUnreachableWaitsForTheLookUpThatIsUnderWay) {
    const auto token = listen(*name, told);
    for (int change = 0; change < 5; ++change) settle();
    EXPECT_EQ(lookUps.size(), 1U);
    answer(0, {});
    ASSERT_EQ(lookUps.size(), 2U); // what it found may be older than the news
    answer(1, {"10.0.0.77"});
    EXPECT_EQ(told.back(), "Rd");
    queue.advance(1000s);
    EXPECT_EQ(lookUps.size(), 2U);
}

TEST_F(NameRetry, LookUpThatBeginsLaterServesTheNewsToo) {
    const auto token = listen(*name, told);
    settle(); // put off
    resolverChanged();
    queue.advance(20ms);
    ASSERT_EQ(lookUps.size(), 2U);
    answer(0, {"8.8.8.8"});
    answer(1, {"10.0.0.77"});
    EXPECT_EQ(lookUps.size(), 2U);
    EXPECT_EQ(told.back(), "Rd");
}

/// Two look-ups under way, the second since the resolver's files changed; then they change once more.
class BusyNameRetry : public NameRetry {
protected:
    BusyNameRetry() {
        token = listen(*name, told);
        change();
        change();
    }

    void change() {
        resolverChanged();
        queue.advance(20ms);
    }

    std::shared_ptr<void> token;
};

TEST_F(BusyNameRetry, ThirdLookUpIsPutOff) {
    EXPECT_EQ(lookUps.size(), 2U);
    change();
    EXPECT_EQ(lookUps.size(), 2U);
}

TEST_F(BusyNameRetry, ThirdLookUpBeginsWhenTheFirstEnds) {
    answer(0, {"8.8.8.8"});
    ASSERT_EQ(lookUps.size(), 3U);
    answer(2, {"10.0.0.77"});
    EXPECT_EQ(told.back(), "Rd");
    answer(1, {"8.8.8.8"});
    EXPECT_EQ(told.back(), "Rd");
    EXPECT_EQ(lookUps.size(), 3U);
}

// The first may wait for a silent server for a minute.
TEST_F(BusyNameRetry, ThirdLookUpBeginsWhenTheSecondEnds) {
    answer(1, {"8.8.8.8"});
    ASSERT_EQ(lookUps.size(), 3U);
    answer(2, {"10.0.0.77"});
    EXPECT_EQ(told.back(), "Rd");
    answer(0, {"8.8.8.8"});
    EXPECT_EQ(told.back(), "Rd");
    EXPECT_EQ(lookUps.size(), 3U);
}

TEST_F(NameRetry, RetriesGoOnThoughAFormerLookUpHangs) {
    const auto token = listen(*name, told);
    resolverChanged();
    queue.advance(20ms);
    ASSERT_EQ(lookUps.size(), 2U);
    answer(1, {});
    queue.advance(1s);
    ASSERT_EQ(lookUps.size(), 3U);
    answer(2, {});
    queue.advance(2s);
    ASSERT_EQ(lookUps.size(), 4U);
    answer(0, {"8.8.8.8"}); // void at last
    answer(3, {"10.0.0.77"});
    EXPECT_THAT(told, ElementsAre("-", "Rd"));
}

TEST_F(NameRetry, RetriesGoOnThoughTheKernelCouldNotBeAskedAboutTheAnswer) {
    const auto token = listen(*name, told);
    answer(0, {"10.0.0.77"});
    resolverChanged();
    queue.advance(20ms);
    kernel.routeError = EIO;
    answerLast({"2001:db8::1"});
    kernel.routeError = 0;
    queue.advance(5s);
    EXPECT_THAT(told, ElementsAre("Rd", "-"));
    queue.advance(60s);
    ASSERT_EQ(lookUps.size(), 3U);
    answerLast({"10.0.0.77"});
    EXPECT_THAT(told, ElementsAre("Rd", "-", "Rd"));
}

TEST_F(NameRetry, NobodyLooksUpForSomebodyWhoLeft) {
    auto token = listen(*name, told);
    answer(0, {});
    token.reset();
    queue.advance(1000s);
    EXPECT_EQ(lookUps.size(), 1U);
    token = listen(*name, others);
    ASSERT_EQ(lookUps.size(), 2U);
    answer(1, {});
    queue.advance(1s); // from the beginning
    EXPECT_EQ(lookUps.size(), 3U);
}

TEST_F(NameRetry, LookUpThatWasPutOffIsForgottenWithTheSubscription) {
    auto token = listen(*name, told);
    settle();
    token.reset();
    queue.runPending();
    token = listen(*name, others);
    ASSERT_EQ(lookUps.size(), 2U);
    answer(0, {});
    EXPECT_THAT(others, ::testing::IsEmpty());
    answer(1, {"10.0.0.77"});
    EXPECT_EQ(lookUps.size(), 2U);
    EXPECT_THAT(others, ElementsAre("Rd"));
}

} // namespace
} // namespace vorlan::network
