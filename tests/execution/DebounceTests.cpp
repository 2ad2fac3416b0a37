// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/Debounce.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;
using vorlan::testing::ManualQueue;

namespace {

// Writes down what was searched for.
struct DebounceByHand : ::testing::Test {
    auto searching(std::int64_t by) {
        return debounce<std::string>(by, queue, [this](const std::string& text) { found += text + ";"; });
    }

    ManualQueue queue;
    std::string found;
};

} // namespace

TEST_F(DebounceByHand, FiveCallsWithinTheDelayActOnceWithTheFifthArgument) {
    const auto search = searching(100);
    for (const char* text : {"v", "vo", "vor", "vorl", "vorla"}) {
        search(text);
        queue.advance(10ms);
    }
    queue.advance(89ms);
    EXPECT_EQ(found, "");
    queue.advance(1ms);
    EXPECT_EQ(found, "vorla;");
    queue.advance(10s);
    EXPECT_EQ(found, "vorla;");
}

TEST_F(DebounceByHand, OneCallActsOnceAfterTheDelay) {
    const auto search = searching(100);
    search("v");
    queue.advance(99ms);
    EXPECT_EQ(found, "");
    queue.advance(1ms);
    EXPECT_EQ(found, "v;");
}

TEST_F(DebounceByHand, MakingAFunctionActsNever) {
    const auto search = searching(100);
    queue.advance(10s);
    EXPECT_EQ(found, "");
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(DebounceByHand, CallAtTheVeryEndOfTheDelayFindsTheActionDone) {
    const auto search = searching(100);
    search("a");
    queue.advance(100ms);
    search("b");
    queue.advance(100ms);
    EXPECT_EQ(found, "a;b;");
}

TEST_F(DebounceByHand, OfCallsAtOneInstantOnlyTheLastActs) {
    const auto search = searching(100);
    search("a");
    search("b");
    queue.advance(100ms);
    EXPECT_EQ(found, "b;");
}

TEST_F(DebounceByHand, WithoutADelayEveryCallActs) {
    for (const std::int64_t by : {0, -5}) {
        found.clear();
        const auto search = searching(by);
        search("a");
        search("b");
        EXPECT_EQ(found, "");
        queue.runPending();
        EXPECT_EQ(found, "a;b;");
    }
}

TEST_F(DebounceByHand, FunctionOfNothing) {
    int saved = 0;
    const auto save = debounce(100, queue, [&] { ++saved; });
    save();
    queue.advance(50ms);
    save();
    queue.advance(99ms);
    EXPECT_EQ(saved, 0);
    queue.advance(1ms);
    EXPECT_EQ(saved, 1);
}

TEST_F(DebounceByHand, CopiesAreTheSameFunction) {
    const auto search = searching(100);
    const std::function<void(std::string)> copy = search;
    search("a");
    queue.advance(50ms);
    copy("b");
    queue.advance(10s);
    EXPECT_EQ(found, "b;");
}

TEST_F(DebounceByHand, FunctionsAreIndependentOfEachOther) {
    const auto first = searching(100);
    const auto second = searching(100);
    first("a");
    second("b");
    queue.advance(100ms);
    EXPECT_EQ(found, "a;b;");
}

TEST_F(DebounceByHand, PendingCallActsAlsoWhenTheFunctionIsGone) {
    searching(100)("a");
    queue.advance(100ms);
    EXPECT_EQ(found, "a;");
}

TEST_F(DebounceByHand, ArgumentIsLetGoWhenItIsReplacedAndAfterTheAction) {
    const auto value = std::make_shared<int>(1);
    const auto keep = debounce<std::shared_ptr<int>>(100, queue, [](const std::shared_ptr<int>&) {});
    keep(value);
    EXPECT_EQ(value.use_count(), 2);
    keep(nullptr);
    EXPECT_EQ(value.use_count(), 1);
    keep(value);
    queue.advance(100ms);
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(DebounceByHand, TakesAnArgumentThatCanOnlyBeMoved) {
    std::optional<int> seen;
    const auto take = debounce<std::unique_ptr<int>>(
        100, queue, [&](const std::unique_ptr<int>& number) { seen = *number; });
    take(std::make_unique<int>(7));
    queue.advance(100ms);
    EXPECT_EQ(seen, 7);
}

TEST_F(DebounceByHand, ActionMayCallTheFunction) {
    std::function<void(std::string)> again;
    again = debounce<std::string>(100, queue, [&](const std::string& text) {
        found += text;
        if (found.size() < 3) again(text);
    });
    again("x");
    queue.advance(100ms);
    EXPECT_EQ(found, "x");
    queue.advance(10s);
    EXPECT_EQ(found, "xxx");
    again = nullptr;
}

TEST_F(DebounceByHand, DelayBeyondTheEndsOfTheClockIsCutToThem) {
    constexpr std::numeric_limits<std::int64_t> milliseconds;
    searching(milliseconds.max())("in 292 years");
    searching(milliseconds.min())("now");
    queue.advance(std::chrono::seconds(9'223'372'036));
    EXPECT_EQ(found, "now;");
    queue.advance(1s);
    EXPECT_EQ(found, "now;in 292 years;");
}

TEST_F(DebounceByHand, CallBeforeACheckThatIsLatePutsTheActionOff) {
    const auto search = searching(100);
    queue.asyncAfter(100ms, [&] { search("b"); }); // Goes before the check: both are due, and it came first.
    search("a");
    queue.advance(199ms);
    EXPECT_EQ(found, "");
    queue.advance(1ms);
    EXPECT_EQ(found, "b;");
}

TEST_F(DebounceByHand, ActionIsLetGoWithTheFunctionAndItsPendingCall) {
    const auto value = std::make_shared<int>(1);
    {
        const auto act = debounce(100, queue, [value] {});
        act();
    }
    EXPECT_EQ(value.use_count(), 2);
    queue.advance(100ms);
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(DebounceByHand, ManyCallsKeepOneCheckOnTheQueue) {
    const auto search = searching(100);
    for (int i = 0; i < 1000; ++i) {
        search("a");
        queue.advance(1us);
    }
    EXPECT_EQ(queue.pendingCount(), 1U);
    queue.advance(100ms);
    EXPECT_EQ(found, "a;");
}

// A try in which the machine let the delay go by between the two calls says nothing.
TEST(DebounceSmoke, ActsTheDelayAfterTheLastCallNotEarlier) {
    constexpr auto delay = 40ms;
    const Queue queue("debounce");
    const auto deadline = DispatchTime::now() + 10s;
    while (DispatchTime::now() < deadline) {
        const auto actions = std::make_shared<Inbox<DispatchTime>>();
        const auto act = debounce(delay.count(), queue, [actions] { actions->put(DispatchTime::now()); });
        const auto firstCall = DispatchTime::now();
        act();
        const auto lastCall = DispatchTime::now();
        act();
        const bool isInTime = DispatchTime::now() < firstCall + delay;
        const auto action = actions->take();
        ASSERT_TRUE(action);
        if (!isInTime) continue;
        EXPECT_GE(*action, lastCall + delay);
        return;
    }
    FAIL() << "no two calls came within the delay in ten seconds";
}

TEST(DebounceSmoke, CallsOfManyThreadsEndInTheActionOfTheVeryLast) {
    Inbox<int> actions;
    const Queue queue("debounce");
    {
        const auto act = debounce<int>(5, queue, [&](int number) { actions.put(number); });
        {
            std::vector<std::jthread> threads;
            for (int t = 0; t < 8; ++t)
                threads.emplace_back([&] {
                    for (int i = 0; i < 2'000; ++i) act(i);
                });
        }
        act(-1);
    }
    std::optional<int> last;
    do {
        last =
            actions.take(); // Others before it where the machine let more than the delay pass between calls.
        ASSERT_TRUE(last);
    } while (last != -1);
}
