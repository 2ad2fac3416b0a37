// SPDX-License-Identifier: Apache-2.0

// How changes of the flags are called out, and how what the callout is given is kept.

#include <VorlanFoundation/Platform/SystemConfiguration.h>

#include <VorlanFoundation/Testing/ManualQueue.h>
#include <VorlanFoundation/Testing/ScriptedNetwork.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vorlan {
namespace {

using Flags = SCNetworkReachabilityFlags;
using enum SCNetworkReachabilityFlags;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// Is called out to; counts the references on it.
struct Client {
    static Client* from(const void* info) { return static_cast<Client*>(const_cast<void*>(info)); }
    static const void* retain(const void* info) {
        ++from(info)->retained;
        ++from(info)->references;
        return info;
    }
    static void release(const void* info) { --from(info)->references; }
    static std::string copyDescription(const void*) { return "a client of the tests"; }
    static void callout(const SCNetworkReachabilityRef& target, Flags flags, void* info) {
        auto* const client = from(info);
        client->wasReferenced = client->references > 0;
        client->told.push_back(flags);
        if (client->then) client->then(target);
    }

    SCNetworkReachabilityContext context() {
        return {.info = this, .retain = retain, .release = release, .copyDescription = copyDescription};
    }
    bool listen(const SCNetworkReachabilityRef& target) {
        const auto copied = context();
        return SCNetworkReachabilitySetCallback(target, callout, &copied);
    }

    std::atomic<int> references = 0;
    std::atomic<int> retained = 0;
    std::vector<Flags> told; // on the dispatch queue, as all below
    bool wasReferenced = false;
    std::function<void(const SCNetworkReachabilityRef&)> then;
};

class SCNetworkReachabilityCalloutTest : public ::testing::Test {
protected:
    ~SCNetworkReachabilityCalloutTest() override {
        target.reset();
        queue.runPending();
        EXPECT_EQ(client.references, 0);
    }

    /// Begins to deliver, and forgets the present flags, which come first.
    void startQuietly() {
        ASSERT_TRUE(client.listen(target));
        ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, queue));
        queue.runPending();
        client.told.clear();
    }

    std::vector<Flags> news() {
        queue.runPending();
        return std::exchange(client.told, {});
    }

    testing::ScriptedNetwork network;
    testing::ManualQueue queue;
    Client client;
    SCNetworkReachabilityRef target = network.reachability();
};

TEST_F(SCNetworkReachabilityCalloutTest, PresentFlagsComeFirstAndThenEachChangeInOrder) {
    network.setFlags(isDirect);
    ASSERT_TRUE(client.listen(target));
    ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, queue));
    EXPECT_THAT(client.told, IsEmpty()) << "never from within a call";
    EXPECT_THAT(news(), ElementsAre(isDirect));
    network.setFlags(reachable);
    network.setFlags(connectionRequired);
    network.setFlags(Flags{});
    EXPECT_THAT(news(), ElementsAre(reachable, connectionRequired, Flags{}));
    EXPECT_TRUE(client.wasReferenced);
}

TEST_F(SCNetworkReachabilityCalloutTest, TargetIsWatchedFromWhenItHasAQueueUntilItIsTakenAway) {
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
    ASSERT_TRUE(client.listen(target));
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
    ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, queue));
    EXPECT_EQ(network.flagsSubscriberCount(), 1U);
    ASSERT_TRUE(client.listen(target));
    EXPECT_EQ(network.flagsSubscriberCount(), 1U);
    ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, std::nullopt));
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
}

TEST_F(SCNetworkReachabilityCalloutTest, NobodyIsToldOnceTheCallbackIsCleared) {
    startQuietly();
    network.setFlags(reachable); // on its way
    ASSERT_TRUE(SCNetworkReachabilitySetCallback(target, nullptr, nullptr));
    network.setFlags(isDirect);
    EXPECT_THAT(news(), IsEmpty());
    ASSERT_TRUE(client.listen(target));
    network.setFlags(connectionRequired);
    EXPECT_THAT(news(), ElementsAre(connectionRequired));
}

TEST_F(SCNetworkReachabilityCalloutTest, QueueMayBeSetBeforeTheCallback) {
    ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, queue));
    queue.runPending();
    network.setFlags(reachable);
    ASSERT_TRUE(client.listen(target));
    EXPECT_THAT(news(), ElementsAre(reachable));
    network.setFlags(isDirect);
    EXPECT_THAT(news(), ElementsAre(isDirect));
}

TEST_F(SCNetworkReachabilityCalloutTest, CalloutNamesItsTarget) {
    SCNetworkReachabilityRef named;
    client.then = [&](const SCNetworkReachabilityRef& reference) { named = reference; };
    startQuietly();
    EXPECT_EQ(named, target);
}

// The state before the one that the caller knows is history.
TEST_F(SCNetworkReachabilityCalloutTest, CalloutNeverTellsOfAnOlderStateThanWasAnsweredBefore) {
    startQuietly();
    network.deliverFlags(isDirect);
    network.deliverFlags(reachable);
    Flags flags{};
    ASSERT_TRUE(SCNetworkReachabilityGetFlags(target, flags));
    EXPECT_EQ(flags, reachable);
    network.deliverFlags(connectionRequired);
    const auto told = news();
    EXPECT_THAT(told, Not(::testing::Contains(isDirect)));
    ASSERT_THAT(told, Not(IsEmpty()));
    EXPECT_EQ(told.back(), connectionRequired);
}

TEST_F(SCNetworkReachabilityCalloutTest, NoCalloutComesAfterTheQueueWasTakenAwayOnIt) {
    startQuietly();
    network.deliverFlags(reachable); // on its way
    ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, std::nullopt));
    network.deliverFlags(isDirect);
    EXPECT_THAT(news(), IsEmpty());
    ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, queue));
    EXPECT_THAT(news(), ElementsAre(isDirect)) << "what waited for the former schedule is not made up for";
}

TEST_F(SCNetworkReachabilityCalloutTest, CalloutMayEndTheDeliveries) {
    startQuietly();
    client.then = [](const auto& reference) {
        SCNetworkReachabilitySetDispatchQueue(reference, std::nullopt);
    };
    network.deliverFlags(reachable);
    network.deliverFlags(isDirect);
    EXPECT_THAT(news(), ElementsAre(reachable));
}

TEST_F(SCNetworkReachabilityCalloutTest, CalloutMayAskForTheFlags) {
    startQuietly();
    std::optional<Flags> asked;
    client.then = [&](const auto& reference) {
        Flags flags{};
        if (SCNetworkReachabilityGetFlags(reference, flags)) asked = flags;
    };
    network.setFlags(reachable);
    queue.runPending();
    EXPECT_EQ(asked, reachable);
}

TEST_F(SCNetworkReachabilityCalloutTest, CalloutMayClearItsOwnCallbackAndDropItsTarget) {
    startQuietly();
    const std::weak_ptr<SCNetworkReachability> gone = target;
    client.then = [&](const auto& reference) {
        EXPECT_TRUE(SCNetworkReachabilitySetCallback(reference, nullptr, nullptr));
        EXPECT_GT(client.references, 0) << "the callout has a reference of its own";
        target.reset();
    };
    network.deliverFlags(reachable);
    network.deliverFlags(isDirect);
    EXPECT_THAT(news(), ElementsAre(reachable));
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(client.references, 0);
}

TEST_F(SCNetworkReachabilityCalloutTest, InfoIsRetainedOnceWhenItIsSetAndReleasedWhenItIsCleared) {
    ASSERT_TRUE(client.listen(target));
    EXPECT_EQ(client.references, 1);
    EXPECT_EQ(client.retained, 1);
    ASSERT_TRUE(SCNetworkReachabilitySetCallback(target, nullptr, nullptr));
    EXPECT_EQ(client.references, 0);
}

TEST_F(SCNetworkReachabilityCalloutTest, InfoIsReleasedWhenItIsReplaced) {
    Client other;
    ASSERT_TRUE(client.listen(target));
    ASSERT_TRUE(other.listen(target));
    EXPECT_EQ(client.references, 0);
    EXPECT_EQ(other.references, 1);
    ASSERT_TRUE(other.listen(target));
    EXPECT_EQ(other.references, 1) << "by itself, too";
    target.reset();
    EXPECT_EQ(other.references, 0);
}

TEST_F(SCNetworkReachabilityCalloutTest, ReplacedClientIsForgottenWithItsCalloutsUnderWay) {
    Client other;
    startQuietly();
    network.deliverFlags(reachable); // on its way to the first
    ASSERT_TRUE(other.listen(target));
    network.deliverFlags(isDirect);
    queue.runPending();
    EXPECT_EQ(client.references, 0);
    ASSERT_THAT(other.told, Not(IsEmpty()));
    EXPECT_EQ(other.told.back(), isDirect);
    target.reset();
    queue.runPending();
    EXPECT_EQ(other.references, 0);
}

TEST_F(SCNetworkReachabilityCalloutTest, InfoIsReleasedWithTheTarget) {
    startQuietly();
    target.reset();
    EXPECT_EQ(client.references, 0);
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
}

TEST_F(SCNetworkReachabilityCalloutTest, InfoIsReleasedWithTheTargetAlsoWithACalloutOnItsWay) {
    startQuietly();
    const std::weak_ptr<SCNetworkReachability> gone = target;
    network.deliverFlags(reachable);
    network.deliverFlags(isDirect);
    target.reset();
    queue.runPending();
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(client.references, 0);
}

TEST_F(SCNetworkReachabilityCalloutTest, CalloutsThatNeverRunAreReleasedWithTheirQueue) {
    {
        const testing::ManualQueue passing;
        ASSERT_TRUE(client.listen(target));
        ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, passing));
        network.deliverFlags(reachable);
        ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, std::nullopt));
        ASSERT_TRUE(SCNetworkReachabilitySetCallback(target, nullptr, nullptr));
    }
    EXPECT_EQ(client.references, 0);
    EXPECT_THAT(client.told, IsEmpty());
}

/// What a context's info stands for once it is retained.
struct Actual {
    int references = 0;
    void* given = nullptr;
};

TEST_F(SCNetworkReachabilityCalloutTest, CalloutCarriesWhatRetainReturned) {
    static Actual actual;
    static int given; // stands for `actual` until it is retained
    actual = {};
    const SCNetworkReachabilityContext context{.info = &given,
                                               .retain = [](const void* info) -> const void* {
                                                   EXPECT_TRUE(info == &given || info == &actual);
                                                   ++actual.references;
                                                   return &actual;
                                               },
                                               .release =
                                                   [](const void* info) {
                                                       EXPECT_EQ(info, &actual);
                                                       --actual.references;
                                                   },
                                               .copyDescription =
                                                   [](const void* info) {
                                                       EXPECT_EQ(info, &actual);
                                                       return std::string("actual");
                                                   }};
    const auto callout = [](const SCNetworkReachabilityRef&, Flags, void* info) { actual.given = info; };
    ASSERT_TRUE(SCNetworkReachabilitySetCallback(target, callout, &context));
    ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, queue));
    queue.runPending();
    EXPECT_EQ(actual.given, &actual);
    EXPECT_THAT(SCNetworkReachabilityCopyDescription(target), HasSubstr("actual"));
    target.reset();
    queue.runPending();
    EXPECT_EQ(actual.references, 0);
}

TEST_F(SCNetworkReachabilityCalloutTest, InfoMayBeKeptByItsOwner) {
    const SCNetworkReachabilityContext context{.info = &client};
    ASSERT_TRUE(SCNetworkReachabilitySetCallback(target, Client::callout, &context));
    ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, queue));
    network.setFlags(reachable);
    EXPECT_THAT(news(), ElementsAre(Flags{}, reachable));
    EXPECT_NE(SCNetworkReachabilityCopyDescription(target), "");
}

TEST_F(SCNetworkReachabilityCalloutTest, NoContextIsAnInfoOfNull) {
    static void* given;
    given = &client;
    const auto callout = [](const SCNetworkReachabilityRef&, Flags, void* info) { given = info; };
    ASSERT_TRUE(SCNetworkReachabilitySetCallback(target, callout, nullptr));
    ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, queue));
    queue.runPending();
    EXPECT_EQ(given, nullptr);
}

TEST_F(SCNetworkReachabilityCalloutTest, ContextOfAnotherVersionIsRefusedAndTheFormerStays) {
    startQuietly();
    Client other;
    for (const std::intptr_t version : {1, -1}) {
        auto context = other.context();
        context.version = version;
        EXPECT_FALSE(SCNetworkReachabilitySetCallback(target, Client::callout, &context));
        EXPECT_EQ(SCError(), kSCStatusInvalidArgument);
    }
    EXPECT_EQ(other.retained, 0);
    network.setFlags(reachable);
    EXPECT_THAT(news(), ElementsAre(reachable));
}

TEST_F(SCNetworkReachabilityCalloutTest, DescriptionTellsOfTheClient) {
    EXPECT_THAT(SCNetworkReachabilityCopyDescription(target), Not(HasSubstr("a client of the tests")));
    ASSERT_TRUE(client.listen(target));
    EXPECT_THAT(SCNetworkReachabilityCopyDescription(target), HasSubstr("a client of the tests"));
    ASSERT_TRUE(SCNetworkReachabilitySetCallback(target, nullptr, nullptr));
    EXPECT_THAT(SCNetworkReachabilityCopyDescription(target), Not(HasSubstr("a client of the tests")));
}

// One thread changes the flags, another what is told of them; the queue's is the third.
TEST(SCNetworkReachability, ReferencesBalanceWhateverComesTogether) {
    testing::ScriptedNetwork network;
    const Queue queue("tests.callouts");
    Client client;
    std::atomic<bool> over = false;
    std::thread changing([&] {
        for (int i = 0; !over; ++i) network.deliverFlags(i % 2 == 0 ? reachable : isDirect);
    });
    for (int round = 0; round < 2000; ++round) {
        auto target = network.reachability();
        EXPECT_TRUE(client.listen(target));
        EXPECT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, queue));
        if (round % 3 == 0) client.listen(target);
        if (round % 3 == 1) SCNetworkReachabilitySetDispatchQueue(target, std::nullopt);
        if (round % 16 == 0) queue.sync([] {});
    }
    over = true;
    changing.join();
    queue.sync([] {});
    EXPECT_EQ(client.references, 0);
    EXPECT_FALSE(client.told.empty());
    EXPECT_EQ(network.flagsSubscriberCount(), 0U);
}

TEST(SCNetworkReachability, NoCalloutBeginsAfterABlockOfItsQueueTookTheQueueAway) {
    testing::ScriptedNetwork network;
    const Queue queue("tests.callouts");
    for (int round = 0; round < 500; ++round) {
        Client client;
        const auto target = network.reachability();
        ASSERT_TRUE(client.listen(target));
        ASSERT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, queue));
        std::thread changing([&] {
            for (int i = 0; i < 4; ++i) network.deliverFlags(i % 2 == 0 ? reachable : isDirect);
        });
        const auto told = queue.sync([&] {
            EXPECT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, std::nullopt));
            return client.told.size();
        });
        changing.join();
        EXPECT_EQ(queue.sync([&] { return client.told.size(); }), told) << "round " << round;
        ASSERT_TRUE(SCNetworkReachabilitySetCallback(target, nullptr, nullptr));
        queue.sync([] {});
        EXPECT_EQ(client.references, 0);
    }
}

} // namespace
} // namespace vorlan
