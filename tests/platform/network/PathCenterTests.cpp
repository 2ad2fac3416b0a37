// SPDX-License-Identifier: Apache-2.0
#include "platform/network/PathCenter.h"

#include "tests/platform/network/NetworkOnPaper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace vorlan::network {
namespace {

using namespace fake;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr auto satisfied = NWPath::Status::satisfied;
constexpr auto unsatisfied = NWPath::Status::unsatisfied;

/// The path of a machine on paper.
class PathCenterOnPaper : public NetworkOnPaper {
protected:
    std::shared_ptr<void> listen() {
        auto token = center->subscribe([this](const NWPath& path) { told.push_back(path.status()); });
        queue.runPending();
        return token;
    }

    std::vector<NWPath::Status> told;
    std::shared_ptr<PathCenter> center = std::make_shared<PathCenter>(network);
};

TEST_F(PathCenterOnPaper, SubscriberIsToldThePresentPathFirst) {
    const auto token = listen();
    EXPECT_THAT(told, ElementsAre(satisfied));
    const auto other = listen();
    EXPECT_THAT(told, ElementsAre(satisfied, satisfied));
}

TEST_F(PathCenterOnPaper, ChangesAreGatheredForTheWindowOfTheFirst) {
    const auto token = listen();
    const int before = kernel.snapshots;
    goOffline();
    speak();
    queue.advance(15ms);
    speak(); // does not put the evaluation off
    EXPECT_THAT(told, ElementsAre(satisfied));
    queue.advance(5ms);
    EXPECT_THAT(told, ElementsAre(satisfied, unsatisfied));
    queue.advance(1s);
    EXPECT_EQ(kernel.snapshots, before + 1);
}

TEST_F(PathCenterOnPaper, EqualPathIsNotTold) {
    const auto token = listen();
    speak();
    queue.advance(20ms);
    EXPECT_THAT(told, ElementsAre(satisfied));
}

TEST_F(PathCenterOnPaper, ReadingThePathDoesNotWaitForTheWindow) {
    const auto token = listen();
    goOffline();
    news = ChangeFeed::News::changed; // not even heard yet
    EXPECT_EQ(center->currentPath().status(), unsatisfied);
    EXPECT_THAT(told, ElementsAre(satisfied, unsatisfied));
}

TEST_F(PathCenterOnPaper, ReadingThePathEvaluatesOnlyAfterAChange) {
    const auto token = listen();
    const int before = kernel.snapshots;
    for (int read = 0; read < 10; ++read) EXPECT_EQ(center->currentPath().status(), satisfied);
    EXPECT_EQ(kernel.snapshots, before);
}

TEST_F(PathCenterOnPaper, PathIsReadAfreshWithoutSubscribers) {
    EXPECT_EQ(center->currentPath().status(), satisfied);
    goOffline();
    EXPECT_EQ(center->currentPath().status(), unsatisfied);
    EXPECT_EQ(openFeeds, 0);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(PathCenterOnPaper, FeedIsOpenWhileThereIsASubscriber) {
    auto first = listen();
    auto second = listen();
    EXPECT_EQ(openFeeds, 1);
    first.reset();
    queue.runPending();
    EXPECT_EQ(openFeeds, 1);
    second.reset();
    queue.runPending();
    EXPECT_EQ(openFeeds, 0);
}

TEST_F(PathCenterOnPaper, DroppedSubscriberIsToldNothing) {
    auto token = listen();
    goOffline();
    speak();
    token.reset();
    queue.advance(1s);
    EXPECT_THAT(told, ElementsAre(satisfied));
}

TEST_F(PathCenterOnPaper, SubscriberDroppedBeforeItWasToldIsToldNothing) {
    center->subscribe([this](const NWPath& path) { told.push_back(path.status()); }).reset();
    queue.advance(1s);
    EXPECT_THAT(told, ElementsAre());
    EXPECT_EQ(openFeeds, 0);
}

TEST_F(PathCenterOnPaper, UnsettledTablesKeepTheLastPathAndAreAskedAgainSoon) {
    const auto token = listen();
    kernel.snapshotError = EAGAIN;
    goOffline();
    speak();
    queue.advance(20ms);
    EXPECT_THAT(told, ElementsAre(satisfied));
    kernel.snapshotError = 0;
    queue.advance(49ms);
    EXPECT_THAT(told, ElementsAre(satisfied));
    queue.advance(1ms);
    EXPECT_THAT(told, ElementsAre(satisfied, unsatisfied));
}

TEST_F(PathCenterOnPaper, KernelThatCannotBeAskedIsReplacedByConnecting) {
    kernelError = EPERM;
    connectError = EACCES;
    EXPECT_EQ(center->currentPath().status(), satisfied);
    EXPECT_THAT(center->currentPath().reason(), HasSubstr("netlink is not available"));
    connectError = ENETUNREACH;
    EXPECT_EQ(center->currentPath().status(), unsatisfied);
}

TEST_F(PathCenterOnPaper, KernelThatCannotBeAskedIsTriedAgain) {
    kernelError = EMFILE;
    const auto token = listen();
    EXPECT_THAT(told, ElementsAre(unsatisfied));
    kernelError = 0;
    queue.advance(4999ms);
    EXPECT_THAT(told, ElementsAre(unsatisfied));
    queue.advance(1ms);
    EXPECT_THAT(told, ElementsAre(unsatisfied, satisfied));
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(PathCenterOnPaper, ChangeIsNotHeldUpByALateRetry) {
    kernelError = EMFILE;
    const auto token = listen();
    kernelError = 0;
    speak();
    queue.advance(20ms);
    EXPECT_THAT(told, ElementsAre(unsatisfied, satisfied));
}

TEST_F(PathCenterOnPaper, WithoutAFeedThePathIsEvaluatedEveryFewSeconds) {
    feedError = EPERM;
    auto token = listen();
    goOffline();
    queue.advance(5s);
    EXPECT_THAT(told, ElementsAre(satisfied, unsatisfied));
    goOnline();
    queue.advance(5s);
    EXPECT_THAT(told, ElementsAre(satisfied, unsatisfied, satisfied));
    token.reset();
    queue.advance(10s);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(PathCenterOnPaper, BrokenFeedIsOpenedAgain) {
    const auto token = listen();
    goOffline();
    speak(ChangeFeed::News::broken);
    EXPECT_EQ(openFeeds, 0);
    queue.advance(20ms);
    EXPECT_EQ(openFeeds, 1);
    EXPECT_THAT(told, ElementsAre(satisfied, unsatisfied));
    goOnline();
    speak();
    queue.advance(20ms);
    EXPECT_THAT(told, ElementsAre(satisfied, unsatisfied, satisfied));
}

TEST_F(PathCenterOnPaper, NothingIsKeptOnceEverybodyLeft) {
    auto token = listen();
    speak();
    token.reset();
    const std::weak_ptr<PathCenter> gone = std::exchange(center, nullptr);
    const std::weak_ptr<NetworkCenter> networkGone = std::exchange(network, nullptr);
    queue.advance(10s);
    EXPECT_TRUE(gone.expired());
    EXPECT_TRUE(networkGone.expired());
    EXPECT_EQ(openFeeds, 0);
    EXPECT_EQ(openKernels, 0);
}

} // namespace
} // namespace vorlan::network
