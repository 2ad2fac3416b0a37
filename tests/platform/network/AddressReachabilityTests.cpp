// SPDX-License-Identifier: Apache-2.0
#include "platform/network/AddressReachability.h"

#include "platform/network/PathCenter.h"
#include "tests/platform/network/NetworkOnPaper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vorlan::network {
namespace {

using namespace fake;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Told = std::vector<std::string>;

/// A neighbour, somebody behind the gateway, and the network in general.
class AddressOnPaper : public NetworkOnPaper {
protected:
    std::shared_ptr<AddressReachability> reachabilityOf(const std::string& text) {
        return std::make_shared<AddressReachability>(network, to(text));
    }

    std::shared_ptr<AddressReachability> near = reachabilityOf("10.0.0.77");
    std::shared_ptr<AddressReachability> far = reachabilityOf("8.8.8.8");
    std::shared_ptr<AddressReachability> general = reachabilityOf("0.0.0.0");
    Told told;
    Told others;
};

TEST_F(AddressOnPaper, SubscriberIsToldThePresentFlagsFirst) {
    const auto token = listen(*near, told);
    EXPECT_THAT(told, ElementsAre("Rd"));
    const auto other = listen(*near, others);
    EXPECT_THAT(others, ElementsAre("Rd"));
    EXPECT_THAT(told, ElementsAre("Rd"));
}

TEST_F(AddressOnPaper, FlagsAreToldWhenTheyChangeAndOnlyThen) {
    const auto token = listen(*far, told);
    settle();
    EXPECT_THAT(told, ElementsAre("R"));
    kernel.routes[0].gateway.clear();
    settle();
    EXPECT_THAT(told, ElementsAre("R", "Rd"));
    kernel.address(2, "10.0.0.6", 24); // nothing to do with it
    settle();
    EXPECT_THAT(told, ElementsAre("R", "Rd"));
    goOffline();
    settle();
    EXPECT_THAT(told, ElementsAre("R", "Rd", "-"));
}

TEST_F(AddressOnPaper, EachDestinationHasItsOwnFlags) {
    Told neighbours;
    const std::vector tokens{listen(*near, neighbours), listen(*far, told), listen(*general, others)};
    kernel.routes = {{"10.0.0.0", 24, 2}};
    settle();
    EXPECT_THAT(neighbours, ElementsAre("Rd"));
    EXPECT_THAT(told, ElementsAre("R", "-"));
    EXPECT_THAT(others, ElementsAre("R", "-"));
}

TEST_F(AddressOnPaper, ChangeThatIsUndoneWithinTheWindowIsNotTold) {
    const auto token = listen(*far, told);
    goOffline();
    speak();
    queue.advance(10ms);
    goOnline();
    speak();
    queue.advance(10ms);
    EXPECT_THAT(told, ElementsAre("R"));
}

TEST_F(AddressOnPaper, ReadingIsAheadOfTheWindowAndIsToldBeforeItReturns) {
    const auto token = listen(*far, told);
    goOffline();
    speak();
    EXPECT_EQ(answerOf(*far), "-");
    EXPECT_THAT(told, ElementsAre("R", "-"));
    queue.advance(1s);
    EXPECT_THAT(told, ElementsAre("R", "-"));
}

TEST_F(AddressOnPaper, ReadingTellsEverybodyElseTheNewsToo) {
    const auto token = listen(*far, told);
    goOffline();
    news = ChangeFeed::News::changed; // not even heard yet
    EXPECT_EQ(answerOf(*general), "-");
    EXPECT_THAT(told, ElementsAre("R", "-"));
}

TEST_F(AddressOnPaper, NewcomerIsAheadOfTheWindowToo) {
    const auto token = listen(*far, told);
    goOffline();
    speak();
    const auto other = listen(*far, others);
    EXPECT_THAT(others, ElementsAre("-"));
    EXPECT_THAT(told, ElementsAre("R", "-"));
}

TEST_F(AddressOnPaper, ReadingAsksTheKernelOnlyAfterAChange) {
    const auto token = listen(*far, told);
    const int before = kernel.snapshots;
    for (int read = 0; read < 10; ++read) EXPECT_EQ(answerOf(*far), "R");
    EXPECT_EQ(kernel.snapshots, before);
}

TEST_F(AddressOnPaper, WithoutASubscriberFlagsAreReadAfresh) {
    EXPECT_EQ(answerOf(*far), "R");
    goOffline();
    EXPECT_EQ(answerOf(*far), "-");
    goOnline();
    EXPECT_EQ(answerOf(*far), "R");
    EXPECT_EQ(openFeeds, 0);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(AddressOnPaper, KernelThatCannotBeAskedIsAFailureAndMakesNothingUnreachable) {
    kernelError = EMFILE;
    EXPECT_EQ(answerOf(*far), "1001");
    const auto token = listen(*far, told);
    EXPECT_EQ(answerOf(*far), "1001");
    EXPECT_THAT(told, IsEmpty());
    kernelError = 0;
    queue.advance(5s);
    EXPECT_THAT(told, ElementsAre("R"));
    EXPECT_EQ(answerOf(*far), "R");
}

TEST_F(AddressOnPaper, KernelThatFailsForAWhileIsNoNews) {
    const auto token = listen(*far, told);
    kernel.routeError = EIO;
    settle();
    EXPECT_EQ(answerOf(*far), "1001");
    EXPECT_EQ(answerOf(*near), "1001");
    kernel.routeError = 0;
    queue.advance(5s);
    EXPECT_EQ(answerOf(*far), "R");
    EXPECT_THAT(told, ElementsAre("R"));
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(AddressOnPaper, FailedReadingSucceedsAsSoonAsTheKernelAnswers) {
    kernelError = EMFILE;
    const auto token = listen(*far, told);
    kernelError = 0;
    EXPECT_EQ(answerOf(*far), "R");
    EXPECT_THAT(told, ElementsAre("R"));
}

TEST_F(AddressOnPaper, WhileTablesKeepChangingTheLastFlagsAreGoodEnough) {
    const auto token = listen(*far, told);
    goOffline();
    kernel.snapshotError = EAGAIN;
    settle();
    EXPECT_EQ(answerOf(*far), "R");
    kernel.snapshotError = 0;
    queue.advance(50ms);
    EXPECT_THAT(told, ElementsAre("R", "-"));
}

// What was true when somebody last asked may be long over.
TEST_F(AddressOnPaper, FlagsOfAFormerReadingAreNotTold) {
    EXPECT_EQ(answerOf(*far), "R");
    goOffline();
    kernel.routeError = EIO;
    const auto token = listen(*far, told);
    EXPECT_THAT(told, IsEmpty());
    kernel.routeError = 0;
    queue.advance(5s);
    EXPECT_THAT(told, ElementsAre("-"));
}

TEST_F(AddressOnPaper, FlagsOfAFormerSubscriptionAreNotTold) {
    listen(*far, others).reset();
    queue.runPending();
    goOffline();
    kernel.snapshotError = EAGAIN;
    const auto token = listen(*far, told);
    EXPECT_THAT(told, IsEmpty());
    kernel.snapshotError = 0;
    queue.advance(50ms);
    EXPECT_THAT(told, ElementsAre("-"));
}

TEST_F(AddressOnPaper, DroppedSubscriberIsToldNothing) {
    auto token = listen(*far, told);
    const auto other = listen(*far, others);
    goOffline();
    speak();
    token.reset(); // before the queue removes it
    queue.advance(1s);
    EXPECT_THAT(told, ElementsAre("R"));
    EXPECT_THAT(others, ElementsAre("R", "-"));
}

TEST_F(AddressOnPaper, SubscriberThatIsDroppedAtOnceIsToldNothing) {
    far->subscribe([this](SCNetworkReachabilityFlags) { told.emplace_back("something"); }).reset();
    queue.advance(1s);
    EXPECT_THAT(told, IsEmpty());
    EXPECT_EQ(openFeeds, 0);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(AddressOnPaper, SubscriptionKeepsItAlive) {
    auto token = listen(*far, told);
    const std::weak_ptr<AddressReachability> gone = std::exchange(far, nullptr);
    goOffline();
    settle();
    EXPECT_THAT(told, ElementsAre("R", "-"));
    EXPECT_FALSE(gone.expired());
    token.reset();
    queue.runPending();
    EXPECT_TRUE(gone.expired());
}

TEST_F(AddressOnPaper, DescriptionNamesTheAddress) {
    EXPECT_EQ(near->description(), "of address 10.0.0.77");
    EXPECT_EQ(reachabilityOf("fe80::1%eth0")->description(), "of address fe80::1%eth0");
    EXPECT_EQ(reachabilityOf("fe80::1%2")->description(), "of address fe80::1%2");
}

TEST_F(AddressOnPaper, NothingIsKeptOnceEverybodyLeft) {
    std::vector tokens{listen(*near, told), listen(*far, told), listen(*general, told)};
    goOffline();
    speak();
    tokens.clear();
    for (auto* member : {&near, &far, &general}) {
        const std::weak_ptr<AddressReachability> gone = std::exchange(*member, nullptr);
        queue.runPending();
        EXPECT_TRUE(gone.expired());
    }
    const std::weak_ptr<NetworkCenter> gone = std::exchange(network, nullptr);
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(openFeeds, 0);
    EXPECT_EQ(openKernels, 0);
    queue.advance(10s);
    EXPECT_EQ(queue.pendingCount(), 0U);
    EXPECT_THAT(told, ElementsAre("Rd", "R", "R"));
}

} // namespace
} // namespace vorlan::network
