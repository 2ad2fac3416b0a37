// SPDX-License-Identifier: Apache-2.0

// What cannot be made, started or found out.

#include <VorlanFoundation/Reachability.h>

#include "tests/reachability/ScriptedMonitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

using namespace vorlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tests::failureOf;
using tests::Flags;
using enum Reachability::Connection;

namespace {

class ReachabilityFailureTest : public tests::ScriptedMonitor {
protected:
    std::optional<ReachabilityError> failureOfName(std::string_view hostname) const {
        return failureOf([&] { std::make_shared<Reachability>(hostname, queues()); });
    }

    std::optional<ReachabilityError> failureOfStart() const {
        return failureOf([this] { monitor->startNotifier(); });
    }
};

/// A name of 253 bytes: labels of 63, 63, 63 and 61.
std::string longestName() {
    const std::string label(63, 'a');
    return label + '.' + label + '.' + label + '.' + std::string(61, 'a');
}

} // namespace

TEST_F(ReachabilityFailureTest, TextThatCanBeNoHostnameIsRefusedWithTheNameAndTheStatus) {
    const std::string names[] = {"",
                                 std::string("example\0.org", 12),
                                 std::string(1, '\0'),
                                 "example.org\xff",
                                 "\xc3(.org",
                                 "\xed\xa0\x80",
                                 longestName() + 'a',
                                 longestName() + "a.",
                                 std::string(100000, 'a')};
    for (const auto& name : names)
        EXPECT_EQ(failureOfName(name),
                  ReachabilityError::failedToCreateWithHostname(name, kSCStatusInvalidArgument))
            << name.substr(0, 300);
}

TEST_F(ReachabilityFailureTest, HostnameMayHave253BytesAndAFinalDot) {
    EXPECT_EQ(failureOfName(longestName()), std::nullopt);
    EXPECT_EQ(failureOfName(longestName() + '.'), std::nullopt);
    EXPECT_EQ(failureOfName("a"), std::nullopt);
    EXPECT_EQ(failureOfName("b\xc3\xbc"
                            "cher.example"),
              std::nullopt);
}

TEST_F(ReachabilityFailureTest, MonitorOfTheNetworkInGeneralCanBeMade) {
    EXPECT_EQ(failureOf([this] { std::make_shared<Reachability>(queues()); }), std::nullopt);
    EXPECT_EQ(failureOf([] { std::make_shared<Reachability>(); }), std::nullopt);
}

TEST_F(ReachabilityFailureTest, MonitorWithoutASystemObjectCannotBeStarted) {
    const auto without = std::make_shared<Reachability>(SCNetworkReachabilityRef(), queues());
    EXPECT_EQ(failureOf([&] { without->startNotifier(); }), ReachabilityError::unableToSetCallback(1002));
    EXPECT_EQ(failureOf([&] { without->startNotifier(); }), ReachabilityError::unableToSetCallback(1002));
    EXPECT_EQ(without->connection(), unavailable);
    EXPECT_FALSE(without->isReachable());
    EXPECT_EQ(without->description(), "unavailable flags");
    without->stopNotifier();
}

TEST_F(ReachabilityFailureTest, SystemObjectThatHasAQueueCannotBeStarted) {
    const auto reference = network.reachability();
    ASSERT_TRUE(
        SCNetworkReachabilitySetDispatchQueue(reference, deliveries)); // a queue that calls nothing out yet
    const auto second = std::make_shared<Reachability>(reference, queues());
    EXPECT_EQ(failureOf([&] { second->startNotifier(); }), ReachabilityError::unableToSetDispatchQueue(1002));
    EXPECT_EQ(network.flagsSubscriberCount(), 0U) << "the callback is cleared again, and the queue with it";
    EXPECT_EQ(second->description(), "unavailable flags") << "it did not get as far as the flags";
    network.deliverFlags(Flags::reachable);
    EXPECT_THAT(news(), IsEmpty());
    EXPECT_EQ(failureOf([&] { second->startNotifier(); }), std::nullopt);
    EXPECT_EQ(network.flagsSubscriberCount(), 1U);
}

TEST_F(ReachabilityFailureTest, StartWithoutFlagsLeavesNothingRegistered) {
    network.failFlags(kSCStatusFailed);
    EXPECT_EQ(failureOfStart(), ReachabilityError::unableToGetFlags(1001));
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
    EXPECT_EQ(monitor->description(), "unavailable flags");
    EXPECT_THAT(news(), IsEmpty());
}

TEST_F(ReachabilityFailureTest, StatusIsWhatTheSystemSaid) {
    for (const std::int32_t status : {kSCStatusReachabilityUnknown, 7, -1}) {
        network.failFlags(status);
        EXPECT_EQ(failureOfStart(), ReachabilityError::unableToGetFlags(status));
    }
}

TEST_F(ReachabilityFailureTest, StartThatFailedCanBeTriedAgain) {
    network.failFlags(kSCStatusFailed);
    EXPECT_EQ(failureOfStart(), ReachabilityError::unableToGetFlags(1001));
    EXPECT_EQ(failureOfStart(), ReachabilityError::unableToGetFlags(1001));
    network.failFlags(kSCStatusOK);
    EXPECT_EQ(failureOfStart(), std::nullopt);
    EXPECT_EQ(network.flagsSubscriberCount(), 1U);
    EXPECT_THAT(news(), ElementsAre("unreachable", "changed"));
    network.setFlags(Flags::reachable);
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
}

TEST_F(ReachabilityFailureTest, StartAgainThatFailsKeepsTheFlagsThatWereFoundLast) {
    network.setFlags(Flags::reachable);
    startQuietly();
    monitor->stopNotifier();
    network.failFlags(kSCStatusFailed);
    EXPECT_EQ(failureOfStart(), ReachabilityError::unableToGetFlags(1001));
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
    EXPECT_EQ(monitor->connection(), wifi);
    EXPECT_EQ(monitor->description(), "-R -------");
    EXPECT_THAT(news(), IsEmpty());
}

TEST_F(ReachabilityFailureTest, GettersNeverFail) {
    network.failFlags(kSCStatusFailed);
    EXPECT_EQ(monitor->connection(), unavailable);
    EXPECT_FALSE(monitor->isReachable());
    EXPECT_EQ(monitor->description(), "unavailable flags");
    EXPECT_THAT(news(), IsEmpty()) << "nothing was found";
    network.setFlags(Flags::reachable);
    EXPECT_EQ(monitor->connection(), wifi) << "asked again as long as there is no answer";
    EXPECT_THAT(news(), ElementsAre("reachable", "changed"));
}

namespace {

/// A source that a test has answer what it likes, and that tells nobody of changes.
class AnsweringSource : public SCNetworkReachabilitySource {
public:
    explicit AnsweringSource(std::function<Answer()> answer) : answer_(std::move(answer)) {}

    Answer currentFlags() override {
        ++questions;
        return answer_();
    }
    std::shared_ptr<void> subscribe(Subscriber) override { return canWatch ? subscriptions : nullptr; }
    std::string description() const override { return "answering"; }

    bool canWatch = true;

    const std::shared_ptr<int> subscriptions =
        std::make_shared<int>(); ///< its use count is one more than theirs
    std::atomic<int> questions = 0;

private:
    std::function<Answer()> answer_;
};

} // namespace

TEST_F(ReachabilityFailureTest, FlagsAreReadOnTheSerialQueueWhichRunsOnItsTarget) {
    bool onTarget = false;
    const auto source = std::make_shared<AnsweringSource>([&] {
        onTarget = systemSide.isCurrent();
        return SCNetworkReachabilitySource::Answer{.flags = Flags::reachable};
    });
    const auto asked =
        std::make_shared<Reachability>(SCNetworkReachabilityCreateWithSource(source), queues());
    EXPECT_EQ(source->questions, 0);
    EXPECT_EQ(asked->connection(), wifi);
    EXPECT_TRUE(onTarget);
    EXPECT_TRUE(asked->isReachable());
    EXPECT_EQ(source->questions, 1) << "known flags are not asked for again";
    asked->startNotifier();
    EXPECT_EQ(source->questions, 2);
}

TEST_F(ReachabilityFailureTest, FailureToReadEndsWhatTheStartHadBegun) {
    int answers = 0;
    std::weak_ptr<Reachability> weak;
    const auto source = std::make_shared<AnsweringSource>([&]() -> SCNetworkReachabilitySource::Answer {
        // The start has registered by now, and is not over.
        EXPECT_EQ(weak.lock()->description(), "unavailable flags");
        return {.status = ++answers == 1 ? kSCStatusFailed : kSCStatusOK, .flags = Flags::reachable};
    });
    const auto failing =
        std::make_shared<Reachability>(SCNetworkReachabilityCreateWithSource(source), queues());
    weak = failing;
    EXPECT_EQ(failureOf([&] { failing->startNotifier(); }), ReachabilityError::unableToGetFlags(1001));
    EXPECT_EQ(source->subscriptions.use_count(), 1);
    EXPECT_EQ(failureOf([&] { failing->startNotifier(); }), std::nullopt);
    EXPECT_EQ(source->subscriptions.use_count(), 2);
    failing->stopNotifier();
    EXPECT_EQ(source->subscriptions.use_count(), 1);
}

TEST_F(ReachabilityFailureTest, MonitorOfASourceThatCannotWatchCannotBeStartedButAsked) {
    const auto source = std::make_shared<AnsweringSource>(
        [] { return SCNetworkReachabilitySource::Answer{.flags = Flags::reachable}; });
    source->canWatch = false;
    const auto asked =
        std::make_shared<Reachability>(SCNetworkReachabilityCreateWithSource(source), queues());
    EXPECT_EQ(failureOf([&] { asked->startNotifier(); }),
              ReachabilityError::unableToSetDispatchQueue(kSCStatusFailed));
    EXPECT_TRUE(asked->isReachable());
    source->canWatch = true;
    EXPECT_EQ(failureOf([&] { asked->startNotifier(); }), std::nullopt);
}

TEST_F(ReachabilityFailureTest, StopWhileTheMonitorStartsIsAnEnd) {
    std::weak_ptr<Reachability> weak;
    bool isStopped = false;
    const auto source = std::make_shared<AnsweringSource>([&] {
        if (!std::exchange(isStopped, true)) weak.lock()->stopNotifier();
        return SCNetworkReachabilitySource::Answer{.flags = Flags::reachable};
    });
    const auto stopped =
        std::make_shared<Reachability>(SCNetworkReachabilityCreateWithSource(source), queues());
    weak = stopped;
    stopped->startNotifier();
    EXPECT_EQ(source->subscriptions.use_count(), 1);
    stopped->startNotifier();
    EXPECT_EQ(source->subscriptions.use_count(), 2);
}

TEST_F(ReachabilityFailureTest, StatusIsThatOfTheCallThatFailedAlsoAfterOthersSucceeded) {
    network.failFlags(kSCStatusFailed);
    const auto error = failureOfStart();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->status(), kSCStatusFailed) << "clearing the registration has succeeded since";
}
