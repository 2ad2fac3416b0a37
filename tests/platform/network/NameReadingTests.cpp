// SPDX-License-Identifier: Apache-2.0

// Reading the flags toward a name: without a subscriber it is looked up each time, with one the first answer is waited
// for a little.

#include "tests/platform/network/NameOnPaper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vorlan::network {
namespace {

using namespace fake;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Clock = std::chrono::steady_clock;

/// Look-ups are answered at once, on a thread of their own, unless the case says otherwise.
class NameReading : public NameOnPaper {
protected:
    NameReading() {
        auto made = providers();
        made.resolve = [this](const std::string& host, std::function<void(std::vector<Destination>)> answer) {
            hosts.push_back(host);
            std::thread([addresses = addresses, answer = std::move(answer)] { answer(addresses); }).join();
        };
        name = std::make_shared<NameReachability>(std::make_shared<NetworkCenter>(queue, made), "host.test");
    }

    std::vector<Destination> addresses{to("10.0.0.77")};
    std::vector<std::string> hosts; ///< What was looked up.
};

TEST_F(NameReading, WithoutASubscriberTheNameIsLookedUpEachTime) {
    EXPECT_EQ(answerOf(*name), "Rd");
    addresses = {to("8.8.8.8")};
    EXPECT_EQ(answerOf(*name), "R");
    addresses.clear();
    EXPECT_EQ(answerOf(*name), "-");
    EXPECT_THAT(hosts, ElementsAre("host.test", "host.test", "host.test"));
}

TEST_F(NameReading, WithoutASubscriberNothingIsKept) {
    EXPECT_EQ(answerOf(*name), "Rd");
    EXPECT_EQ(openFeeds, 0);
    EXPECT_EQ(resolverWatches, 0);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(NameReading, WithoutASubscriberTheNetworkIsAskedAfreshEachTime) {
    EXPECT_EQ(answerOf(*name), "Rd");
    goOffline();
    EXPECT_EQ(answerOf(*name), "-");
}

TEST_F(NameReading, KernelThatCannotBeAskedIsAFailure) {
    kernelError = EMFILE;
    EXPECT_EQ(answerOf(*name), "1001");
    kernelError = 0;
    EXPECT_EQ(answerOf(*name), "Rd");
}

TEST_F(NameReading, ReadingTellsTheNewsToThoseWhoListenToOtherThings) {
    auto made = providers();
    made.resolve = [](const std::string&, const std::function<void(std::vector<Destination>)>& answer) {
        answer({to("8.8.8.8")});
    };
    const auto center = std::make_shared<NetworkCenter>(queue, made);
    NameReachability other(center, "other.test");
    name = std::make_shared<NameReachability>(center, "host.test");
    const auto token = listen(*name, told);
    queue.runPending();
    EXPECT_THAT(told, ElementsAre("R"));
    goOffline();
    news = ChangeFeed::News::changed;
    EXPECT_EQ(answerOf(other), "-");
    EXPECT_THAT(told, ElementsAre("R", "-"));
}

TEST_F(NameReading, WithASubscriberWhatIsKnownIsReadWithoutALookUp) {
    const auto token = listen(*name, told);
    for (int read = 0; read < 5; ++read) EXPECT_EQ(answerOf(*name), "Rd");
    EXPECT_EQ(hosts.size(), 1U);
}

TEST_F(NameReading, ReadingIsAheadOfTheWindowAndIsToldBeforeItReturns) {
    const auto token = listen(*name, told);
    goOffline();
    speak();
    EXPECT_EQ(answerOf(*name), "-");
    EXPECT_THAT(told, ElementsAre("Rd", "-"));
}

/// Look-ups are answered by the case, while readers wait on threads of their own.
class WaitingReader : public NameOnPaper {
protected:
    struct Read {
        std::string answer;
        Clock::duration time;
    };

    std::future<Read> read() {
        return std::async(std::launch::async, [this] {
            const auto begin = Clock::now();
            auto answer = answerOf(*name);
            return Read{std::move(answer), Clock::now() - begin};
        });
    }
};

TEST_F(WaitingReader, FirstAnswerIsNotWaitedForForEver) {
    const auto token = listen(*name, told);
    const auto found = read().get();
    EXPECT_EQ(found.answer, "-"); // who listens will be told
    EXPECT_GE(found.time, 300ms);
    EXPECT_LT(found.time, 5s); // which would be the wait without a subscriber
    EXPECT_THAT(told, IsEmpty());
    answer(0, {"10.0.0.77"});
    EXPECT_THAT(told, ElementsAre("Rd"));
    EXPECT_EQ(answerOf(*name), "Rd");
}

// The machine may be too busy to answer within the time, but hardly always.
TEST_F(WaitingReader, FirstAnswerEndsTheWait) {
    bool isWoken = false;
    for (int round = 0; round < 20 && !isWoken; ++round) {
        lookUps.clear();
        auto token = listen(*name, told);
        auto waiting = read();
        answer(0, {"10.0.0.77"});
        const auto found = waiting.get();
        isWoken = found.answer == "Rd" && found.time < 300ms;
        token.reset();
        queue.runPending();
    }
    EXPECT_TRUE(isWoken);
}

TEST_F(WaitingReader, AllReadersGetTheFirstAnswer) {
    const auto token = listen(*name, told);
    std::vector<std::future<Read>> waiting;
    for (int i = 0; i < 4; ++i) waiting.push_back(read());
    answer(0, {"10.0.0.77"});
    for (auto& one : waiting) {
        const auto found = one.get();
        EXPECT_TRUE(found.answer == "Rd" || found.time >= 300ms) << found.answer;
    }
    EXPECT_EQ(answerOf(*name), "Rd");
}

TEST_F(WaitingReader, SubscriptionMayEndWhileItIsRead) {
    std::atomic<bool> isFirst = true;
    auto made = providers();
    made.resolve = [&](const std::string&, const std::function<void(std::vector<Destination>)>& answer) {
        if (!isFirst.exchange(false))
            answer({}); // for the reader, if the subscription had ended before it came
    };
    name = std::make_shared<NameReachability>(std::make_shared<NetworkCenter>(queue, made), "host.test");
    auto token = listen(*name, told);
    auto waiting = read();
    token.reset();
    queue.runPending();
    // The reader waited for what the subscription would have found, or came later and had the name looked up.
    EXPECT_THAT(waiting.get().answer, ::testing::AnyOf("4001", "-"));
    EXPECT_EQ(openFeeds, 0);
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(WaitingReader, WithoutASubscriberALookUpThatTakesTooLongIsUnknown) {
    const auto found = read().get();
    EXPECT_EQ(found.answer, "4001");
    EXPECT_GE(found.time, 5s);
    ASSERT_EQ(lookUps.size(), 1U);
    answer(0, {"10.0.0.77"}); // to nobody
    EXPECT_EQ(queue.pendingCount(), 0U);
}

} // namespace
} // namespace vorlan::network
