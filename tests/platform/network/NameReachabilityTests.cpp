// SPDX-License-Identifier: Apache-2.0

// The flags toward a name, on a clock turned by hand; the case answers the look-ups. How they are repeated is in
// NameRetryTests.cpp, and how readers are kept waiting in NameReadingTests.cpp.

#include "tests/platform/network/NameOnPaper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <utility>

namespace vorlan::network {
namespace {

using namespace fake;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NameReachabilityOnPaper : public NameOnPaper {};

TEST_F(NameReachabilityOnPaper, NameIsLookedUpWhenTheFirstSubscriberComes) {
    EXPECT_EQ(lookUps.size(), 0U);
    const auto token = listen(*name, told);
    ASSERT_EQ(lookUps.size(), 1U);
    EXPECT_EQ(lookUps[0].name, "host.test");
    EXPECT_THAT(told, IsEmpty());
    answer(0, {"10.0.0.77"});
    EXPECT_THAT(told, ElementsAre("Rd"));
    EXPECT_EQ(lookUps.size(), 1U);
}

TEST_F(NameReachabilityOnPaper, SecondSubscriberIsToldWhatIsKnown) {
    const auto token = listen(*name, told);
    const auto early = listen(*name, others);
    EXPECT_THAT(others, IsEmpty());
    answer(0, {"10.0.0.77"});
    EXPECT_THAT(others, ElementsAre("Rd"));
    Told latest;
    const auto late = listen(*name, latest);
    EXPECT_THAT(latest, ElementsAre("Rd"));
    EXPECT_EQ(lookUps.size(), 1U);
}

TEST_F(NameReachabilityOnPaper, NameThatDoesNotExistIsUnreachable) {
    const auto token = listen(*name, told);
    answer(0, {});
    EXPECT_THAT(told, ElementsAre("-"));
}

TEST_F(NameReachabilityOnPaper, FirstReachableAddressCounts) {
    const auto token = listen(*name, told);
    answer(0, {"2001:db8::1", "8.8.8.8", "10.0.0.77"});
    EXPECT_THAT(told, ElementsAre("R"));
}

TEST_F(NameReachabilityOnPaper, AddressesWithoutAWayAreUnreachable) {
    const auto token = listen(*name, told);
    answer(0, {"2001:db8::1"});
    EXPECT_THAT(told, ElementsAre("-"));
    kernel.address(2, "fd00::5", 64);
    kernel.routes.push_back({"::", 0, 2, "fe80::1"});
    settle();
    EXPECT_THAT(told, ElementsAre("-", "R")); // before the name is looked up again
    EXPECT_EQ(lookUps.size(), 2U);
}

TEST_F(NameReachabilityOnPaper, FlagsFollowTheNetworkWithoutWaitingForALookUp) {
    const auto token = listen(*name, told);
    answer(0, {"8.8.8.8"});
    goOffline();
    settle();
    EXPECT_THAT(told, ElementsAre("R", "-"));
    goOnline();
    settle();
    EXPECT_THAT(told, ElementsAre("R", "-", "R"));
}

TEST_F(NameReachabilityOnPaper, NameIsLookedUpAgainWhenTheWayChanged) {
    const auto token = listen(*name, told);
    answer(0, {"8.8.8.8"});
    kernel.routes[0].gateway = "10.0.0.2";
    settle();
    ASSERT_EQ(lookUps.size(), 2U);
    answer(1, {"10.0.0.77"});
    EXPECT_THAT(told, ElementsAre("R", "Rd"));
    kernel.routes[0].source = "10.0.0.5"; // as it was, but now the route says so
    settle();
    EXPECT_EQ(lookUps.size(), 2U);
    kernel.address(2, "10.0.0.6", 24);
    kernel.routes[0].source = "10.0.0.6";
    settle();
    ASSERT_EQ(lookUps.size(), 3U);
    answer(2, {"10.0.0.77"});
    kernel.add(3, "eth1");
    kernel.address(3, "10.0.0.6", 24);
    kernel.routes[0] = {"0.0.0.0", 0, 3, "10.0.0.2", "10.0.0.6"};
    settle();
    EXPECT_EQ(lookUps.size(), 4U);
    EXPECT_THAT(told, ElementsAre("R", "Rd"));
}

TEST_F(NameReachabilityOnPaper, WhileReachableOtherNewsIsNoReasonToLookUp) {
    const auto token = listen(*name, told);
    answer(0, {"10.0.0.77"});
    kernel.add(3, "veth1");
    kernel.address(3, "172.17.0.1", 16);
    for (int change = 0; change < 3; ++change) settle();
    EXPECT_EQ(answerOf(*name), "Rd");
    EXPECT_EQ(lookUps.size(), 1U);
}

TEST_F(NameReachabilityOnPaper, NameIsLookedUpAgainWhenTheResolversFilesChanged) {
    const auto token = listen(*name, told);
    answer(0, {"10.0.0.77"});
    resolverChanged();
    queue.advance(19ms);
    EXPECT_EQ(lookUps.size(), 1U);
    queue.advance(1ms);
    ASSERT_EQ(lookUps.size(), 2U);
    answer(1, {"8.8.8.8"});
    EXPECT_THAT(told, ElementsAre("Rd", "R"));
    queue.advance(1000s);
    EXPECT_EQ(lookUps.size(), 2U);
}

TEST_F(NameReachabilityOnPaper, WhileUnreachableAnyNewsIsAReasonToLookUp) {
    const auto token = listen(*name, told);
    answer(0, {});
    settle();
    ASSERT_EQ(lookUps.size(), 2U);
    answer(1, {});
    settle();
    ASSERT_EQ(lookUps.size(), 3U);
    answer(2, {"10.0.0.77"});
    EXPECT_THAT(told, ElementsAre("-", "Rd"));
    settle();
    EXPECT_EQ(lookUps.size(), 3U);
}

TEST_F(NameReachabilityOnPaper, AnswerOfAFormerSubscriptionIsVoid) {
    auto token = listen(*name, told);
    token.reset();
    queue.runPending();
    answer(0, {"10.0.0.77"});
    EXPECT_THAT(told, IsEmpty());
    const auto other = listen(*name, others);
    ASSERT_EQ(lookUps.size(), 2U);
    EXPECT_THAT(others, IsEmpty());
    answer(1, {"8.8.8.8"});
    EXPECT_THAT(others, ElementsAre("R"));
}

TEST_F(NameReachabilityOnPaper, LateAnswerOfAFormerSubscriptionIsVoidToo) {
    listen(*name, told).reset();
    const auto other = listen(*name, others);
    ASSERT_EQ(lookUps.size(), 2U);
    answer(0, {"10.0.0.77"});
    EXPECT_THAT(others, IsEmpty());
    answer(1, {});
    EXPECT_THAT(others, ElementsAre("-"));
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(NameReachabilityOnPaper, FlagsOfAFormerSubscriptionAreNotTold) {
    auto token = listen(*name, told);
    answer(0, {"10.0.0.77"});
    token.reset();
    queue.runPending();
    const auto other = listen(*name, others);
    EXPECT_THAT(others, IsEmpty());
    answer(1, {});
    EXPECT_THAT(others, ElementsAre("-"));
    EXPECT_THAT(told, ElementsAre("Rd"));
}

TEST_F(NameReachabilityOnPaper, KernelThatCannotBeAskedIsAFailureAndMakesNothingUnreachable) {
    kernelError = EMFILE;
    const auto token = listen(*name, told);
    EXPECT_EQ(answerOf(*name), "1001");
    EXPECT_EQ(lookUps.size(), 0U);
    kernelError = 0;
    queue.advance(5s);
    ASSERT_EQ(lookUps.size(), 1U);
    answer(0, {"10.0.0.77"});
    EXPECT_THAT(told, ElementsAre("Rd"));
    kernel.routeError = EIO;
    settle();
    EXPECT_EQ(answerOf(*name), "1001");
    kernel.routeError = 0;
    queue.advance(5s);
    EXPECT_EQ(answerOf(*name), "Rd");
    EXPECT_THAT(told, ElementsAre("Rd"));
}

TEST_F(NameReachabilityOnPaper, AnswerThatComesWhileTheKernelCannotBeAskedIsKept) {
    const auto token = listen(*name, told);
    kernel.routeError = EIO;
    settle();
    answer(0, {"10.0.0.77"});
    EXPECT_THAT(told, IsEmpty());
    kernel.routeError = 0;
    queue.advance(5s);
    EXPECT_THAT(told, ElementsAre("Rd"));
}

TEST_F(NameReachabilityOnPaper, ResolversFilesAreWatchedWhileThereIsASubscriber) {
    auto first = listen(*name, told);
    auto second = listen(*name, others);
    EXPECT_EQ(resolverWatches, 1);
    first.reset();
    queue.runPending();
    EXPECT_EQ(resolverWatches, 1);
    second.reset();
    queue.runPending();
    EXPECT_EQ(resolverWatches, 0);
}

TEST_F(NameReachabilityOnPaper, DescriptionNamesTheHost) {
    EXPECT_EQ(name->description(), "of host host.test");
}

TEST_F(NameReachabilityOnPaper, NothingIsKeptOnceEverybodyLeft) {
    auto token = listen(*name, told);
    answer(0, {});
    queue.advance(1s);
    ASSERT_EQ(lookUps.size(), 2U); // under way
    token.reset();
    const std::weak_ptr<NameReachability> gone = std::exchange(name, nullptr);
    const std::weak_ptr<NetworkCenter> networkGone = std::exchange(network, nullptr);
    queue.runPending();
    EXPECT_TRUE(gone.expired());
    EXPECT_TRUE(networkGone.expired());
    EXPECT_EQ(openFeeds, 0);
    EXPECT_EQ(openKernels, 0);
    EXPECT_EQ(resolverWatches, 0);
    answer(1, {"10.0.0.77"}); // to nobody
    queue.advance(1000s);
    EXPECT_EQ(lookUps.size(), 2U);
    EXPECT_EQ(queue.pendingCount(), 0U);
    EXPECT_THAT(told, ElementsAre("-"));
}

} // namespace
} // namespace vorlan::network
