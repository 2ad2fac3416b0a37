// SPDX-License-Identifier: Apache-2.0
#include "platform/network/NetworkCenter.h"

#include "platform/network/AddressReachability.h"
#include "platform/network/NameReachability.h"
#include "platform/network/PathCenter.h"
#include "tests/platform/network/NetworkOnPaper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <list>
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

/// Counts how often it was evaluated, and by which snapshots.
class Counter final : public NetworkDependent {
public:
    Progress evaluate(const Survey& survey) override {
        ++evaluations;
        links = survey.snapshot().links.size();
        return progress;
    }
    void giveUp(const Progress& why) override { givenUp.push_back(why.error); }

    Progress progress; ///< What it says when it is evaluated.
    int evaluations = 0;
    std::size_t links = 0;
    std::vector<int> givenUp;
};

class NetworkCenterOnPaper : public NetworkOnPaper {
protected:
    void TearDown() override {
        queue.sync([this] {
            for (Counter* counter : attached) network->detach(*counter);
        });
        NetworkOnPaper::TearDown();
    }

    void attach(Counter& counter) {
        queue.sync([&] { network->attach(counter); });
        attached.push_back(&counter);
    }
    void detach(Counter& counter) {
        queue.sync([&] { network->detach(counter); });
        attached.remove(&counter);
    }
    void update() {
        queue.sync([this] { network->update(); });
    }
    void update(Counter& counter) {
        queue.sync([&] { network->update(counter); });
    }

    Counter first;
    Counter second;
    std::list<Counter*> attached;
};

TEST_F(NetworkCenterOnPaper, NothingIsOpenedBeforeItIsNeeded) {
    EXPECT_EQ(kernelOpenings, 0);
    EXPECT_EQ(feedOpenings, 0);
    EXPECT_EQ(resolverWatches, 0);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(NetworkCenterOnPaper, OneKernelAndOneFeedServeEverybody) {
    std::vector<std::string> told;
    const auto path = std::make_shared<PathCenter>(network);
    const auto address = std::make_shared<AddressReachability>(network, to("10.0.0.77"));
    const auto general = std::make_shared<AddressReachability>(network, to("0.0.0.0"));
    const auto name = std::make_shared<NameReachability>(network, "host.test");
    const std::vector tokens{path->subscribe([](const NWPath&) {}), listen(*address, told),
                             listen(*general, told), listen(*name, told)};
    EXPECT_EQ(kernelOpenings, 1);
    EXPECT_EQ(feedOpenings, 1);
    EXPECT_EQ(kernel.snapshots, 1);
    for (int change = 0; change < 3; ++change) settle();
    EXPECT_EQ(kernelOpenings, 1);
    EXPECT_EQ(feedOpenings, 1);
    EXPECT_EQ(kernel.snapshots, 4); // one more for each change, however many there are to tell
}

TEST_F(NetworkCenterOnPaper, WhatIsAttachedIsEvaluatedAtOnceWithWhatIsKnown) {
    attach(first);
    EXPECT_EQ(first.evaluations, 1);
    attach(second);
    EXPECT_EQ(second.evaluations, 1);
    EXPECT_EQ(first.evaluations, 1); // there was no news for it
    EXPECT_EQ(kernel.snapshots, 1);
}

TEST_F(NetworkCenterOnPaper, AttachingTakesInWhatWasSaidBefore) {
    attach(first);
    kernel.add(3, "eth1");
    news = ChangeFeed::News::changed;
    attach(second);
    EXPECT_EQ(second.links, 2U);
    EXPECT_EQ(first.links, 2U);
}

TEST_F(NetworkCenterOnPaper, EverybodyIsEvaluatedOnceAtTheEndOfTheWindow) {
    attach(first);
    attach(second);
    speak();
    queue.advance(10ms);
    speak();
    queue.advance(9ms);
    EXPECT_EQ(first.evaluations + second.evaluations, 2);
    queue.advance(1ms);
    EXPECT_EQ(first.evaluations, 2);
    EXPECT_EQ(second.evaluations, 2);
    queue.advance(1000s);
    EXPECT_EQ(first.evaluations + second.evaluations, 4);
    EXPECT_EQ(kernel.snapshots, 2);
}

TEST_F(NetworkCenterOnPaper, NextWindowBeginsWithTheNextChange) {
    attach(first);
    settle();
    EXPECT_EQ(first.evaluations, 2);
    settle();
    EXPECT_EQ(first.evaluations, 3);
}

TEST_F(NetworkCenterOnPaper, SilentFeedBeginsNoWindow) {
    attach(first);
    speak(ChangeFeed::News::none);
    EXPECT_EQ(queue.pendingCount(), 0U);
    EXPECT_EQ(first.evaluations, 1);
}

TEST_F(NetworkCenterOnPaper, UpdateDoesNotWaitForTheWindow) {
    attach(first);
    update();
    EXPECT_EQ(first.evaluations, 1); // nothing happened
    speak();
    update();
    EXPECT_EQ(first.evaluations, 2);
    queue.advance(1000s); // the window has nothing left
    EXPECT_EQ(first.evaluations, 2);
}

TEST_F(NetworkCenterOnPaper, UpdateOfOneThatIsNotAttachedEvaluatesItEachTime) {
    update(first);
    update(first);
    EXPECT_EQ(first.evaluations, 2);
    EXPECT_EQ(kernel.snapshots, 2); // nobody listens, so what was found holds for the moment only
    EXPECT_EQ(openFeeds, 0);
    attach(second);
    update(first);
    EXPECT_EQ(kernel.snapshots, 3); // now somebody does
    EXPECT_EQ(second.evaluations, 1);
    news = ChangeFeed::News::changed;
    update(first);
    EXPECT_EQ(second.evaluations, 2);
    EXPECT_EQ(first.evaluations, 4);
}

TEST_F(NetworkCenterOnPaper, UpdateOfOneThatIsAttachedEvaluatesItOnce) {
    attach(first);
    update(first);
    EXPECT_EQ(first.evaluations, 1);
    news = ChangeFeed::News::changed;
    update(first);
    EXPECT_EQ(first.evaluations, 2);
}

TEST_F(NetworkCenterOnPaper, EvaluatingOneLeavesTheNewsToTheOthers) {
    attach(first);
    attach(second);
    speak();
    queue.sync([this] { network->evaluate(first); });
    EXPECT_EQ(first.evaluations, 2);
    EXPECT_EQ(second.evaluations, 1);
    queue.advance(20ms);
    EXPECT_EQ(second.evaluations, 2);
}

TEST_F(NetworkCenterOnPaper, OneThatIsUnsettledMakesEverybodyTryAgainSoon) {
    attach(first);
    attach(second);
    second.progress = Progress::ofError(EAGAIN);
    settle();
    EXPECT_THAT(first.givenUp, ElementsAre(EAGAIN));
    EXPECT_THAT(second.givenUp, ElementsAre(EAGAIN));
    EXPECT_EQ(kernel.snapshots, 3); // a second one was tried at once
    EXPECT_EQ(openKernels, 1);
    second.progress = {};
    const int before = first.evaluations;
    queue.advance(49ms);
    EXPECT_EQ(first.evaluations, before);
    queue.advance(1ms);
    EXPECT_EQ(first.evaluations, before + 1);
    EXPECT_EQ(first.givenUp.size(), 1U);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(NetworkCenterOnPaper, OneThatFailsHasTheKernelOpenedAnew) {
    attach(first);
    first.progress = Progress::ofError(EIO);
    settle();
    EXPECT_THAT(first.givenUp, ElementsAre(EIO));
    EXPECT_EQ(openKernels, 0);
    first.progress = {};
    queue.advance(5s);
    EXPECT_EQ(kernelOpenings, 2);
    EXPECT_EQ(first.evaluations, 3);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(NetworkCenterOnPaper, KernelThatCannotBeOpenedIsTriedAgain) {
    kernelError = EMFILE;
    attach(first);
    EXPECT_EQ(first.evaluations, 0);
    EXPECT_THAT(first.givenUp, ElementsAre(EMFILE));
    queue.advance(5s);
    EXPECT_THAT(first.givenUp, ElementsAre(EMFILE, EMFILE));
    kernelError = 0;
    queue.advance(4999ms);
    EXPECT_EQ(first.evaluations, 0);
    queue.advance(1ms);
    EXPECT_EQ(first.evaluations, 1);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(NetworkCenterOnPaper, FailureOfOneThatIsNotAttachedLeavesTheOthersAlone) {
    attach(first);
    second.progress = Progress::ofError(EIO);
    update(second);
    EXPECT_THAT(second.givenUp, ElementsAre(EIO));
    EXPECT_THAT(first.givenUp, IsEmpty());
    queue.advance(5s);
    EXPECT_THAT(first.givenUp, IsEmpty());
    EXPECT_EQ(openKernels, 1);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(NetworkCenterOnPaper, WithoutAFeedEverybodyIsEvaluatedEveryFewSeconds) {
    feedError = EPERM;
    attach(first);
    queue.advance(4999ms);
    EXPECT_EQ(first.evaluations, 1);
    queue.advance(1ms);
    EXPECT_EQ(first.evaluations, 2);
    feedError = 0; // it is tried again each time
    queue.advance(5s);
    EXPECT_EQ(first.evaluations, 3);
    EXPECT_EQ(openFeeds, 1);
    queue.advance(1000s);
    EXPECT_EQ(first.evaluations, 3);
}

TEST_F(NetworkCenterOnPaper, FeedThatBreaksIsOpenedAgain) {
    attach(first);
    speak(ChangeFeed::News::broken);
    EXPECT_EQ(openFeeds, 0);
    queue.advance(20ms);
    EXPECT_EQ(openFeeds, 1);
    EXPECT_EQ(first.evaluations, 2);
    settle();
    EXPECT_EQ(first.evaluations, 3);
}

TEST_F(NetworkCenterOnPaper, FeedThatIsFoundBrokenIsOpenedAgain) {
    attach(first);
    news = ChangeFeed::News::broken;
    update();
    EXPECT_EQ(first.evaluations, 2);
    queue.advance(5s);
    EXPECT_EQ(openFeeds, 1);
    settle();
    EXPECT_EQ(first.evaluations, 4);
}

TEST_F(NetworkCenterOnPaper, WhatWasDetachedIsLeftAlone) {
    attach(first);
    attach(second);
    speak();
    detach(first);
    EXPECT_EQ(openFeeds, 1);
    queue.advance(20ms);
    EXPECT_EQ(first.evaluations, 1);
    EXPECT_EQ(second.evaluations, 2);
}

TEST_F(NetworkCenterOnPaper, NothingIsEvaluatedOnceAllAreDetached) {
    attach(first);
    speak();
    detach(first);
    EXPECT_EQ(openFeeds, 0);
    queue.advance(1000s);
    EXPECT_EQ(first.evaluations, 1);
    EXPECT_EQ(kernel.snapshots, 1);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(NetworkCenterOnPaper, WhatHappensWhileNobodyListensIsNotMissed) {
    attach(first);
    detach(first);
    kernel.add(3, "eth1");
    attach(first);
    EXPECT_EQ(first.links, 2U);
    speak();
    detach(first);
    attach(first); // within the former window
    EXPECT_EQ(first.evaluations, 3);
    queue.advance(1000s);
    EXPECT_EQ(first.evaluations, 3);
}

TEST_F(NetworkCenterOnPaper, ResolverIsWatchedOnceForEverybody) {
    auto one = network->watchResolver();
    auto other = network->watchResolver();
    EXPECT_EQ(resolverWatches, 1);
    one.reset();
    EXPECT_EQ(resolverWatches, 1);
    other.reset();
    EXPECT_EQ(resolverWatches, 0);
    const auto again = network->watchResolver();
    EXPECT_EQ(resolverWatches, 1);
}

TEST_F(NetworkCenterOnPaper, ChangeOfTheResolverIsAChangeOfTheNetwork) {
    attach(first);
    const auto watch = network->watchResolver();
    const auto before = network->resolverChanges();
    resolverChanged();
    queue.advance(19ms);
    EXPECT_EQ(first.evaluations, 1);
    EXPECT_EQ(network->resolverChanges(), before + 1);
    queue.advance(1ms);
    EXPECT_EQ(first.evaluations, 2);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(NetworkCenterOnPaper, ChangeOfTheResolverIsNoReasonToEvaluateNobody) {
    const auto watch = network->watchResolver();
    resolverChanged();
    queue.runPending();
    EXPECT_EQ(network->resolverChanges(), 1U);
    EXPECT_EQ(queue.pendingCount(), 0U);
    EXPECT_EQ(kernelOpenings, 0);
}

TEST_F(NetworkCenterOnPaper, CallsThatComeTooLateReachNobody) {
    attach(first);
    auto watch = network->watchResolver();
    speak();
    detach(first);
    watch.reset();
    const std::weak_ptr<NetworkCenter> gone = std::exchange(network, nullptr);
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(openKernels, 0);
    resolverChanged();
    readable();
    queue.advance(1000s);
    EXPECT_EQ(first.evaluations, 1);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST(NetworkCenter, ProcessSharesOneAsLongAsItIsUsed) {
    auto center = NetworkCenter::shared();
    EXPECT_EQ(NetworkCenter::shared(), center);
    const Queue queue = center->queue();
    const std::weak_ptr<NetworkCenter> gone = center;
    center.reset();
    EXPECT_TRUE(gone.expired());
    center = NetworkCenter::shared();
    EXPECT_EQ(center->queue(), queue); // no thread more
}

} // namespace
} // namespace vorlan::network
