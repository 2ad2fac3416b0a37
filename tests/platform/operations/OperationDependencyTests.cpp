// SPDX-License-Identifier: Apache-2.0

// Operations that wait for others.

#include <VorlanFoundation/Platform/Operation.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <any>
#include <atomic>
#include <barrier>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

std::shared_ptr<Operation> named(const char* name) {
    auto operation = std::make_shared<Operation>();
    operation->setName(name);
    return operation;
}

// The text of the refusal of a dependency; empty when it was accepted.
std::string refusalOf(const std::shared_ptr<Operation>& operation, const std::shared_ptr<Operation>& other) {
    try {
        operation->addDependency(other);
        return "";
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

// Each depends on the one before.
std::vector<std::shared_ptr<Operation>> chain(std::size_t length) {
    std::vector<std::shared_ptr<Operation>> links;
    for (std::size_t i = 0; i < length; ++i) {
        links.push_back(std::make_shared<Operation>());
        if (i > 0) links[i]->addDependency(links[i - 1]);
    }
    return links;
}

} // namespace

TEST(OperationDependency, MakesAnOperationReadyWhenTheOtherIsFinished) {
    const auto mix = named("mix");
    const auto bake = named("bake");
    bake->addDependency(mix);
    EXPECT_FALSE(bake->isReady());
    EXPECT_THAT(bake->dependencies(), ElementsAre(mix));
    mix->start();
    EXPECT_TRUE(bake->isReady());
}

TEST(OperationDependency, ReadinessIsPublishedOnceForAllThatItWaitsFor) {
    const auto mix = named("mix");
    const auto heat = named("heat");
    const auto bake = named("bake");
    std::vector<bool> heard;
    const auto observation = bake->observe("isReady", [&](const KeyValueChange& change) {
        heard.push_back(std::any_cast<bool>(change.newValue));
    });
    bake->addDependency(mix);
    bake->addDependency(heat);
    EXPECT_THAT(heard, ElementsAre(false));
    mix->start();
    EXPECT_THAT(heard, ElementsAre(false));
    heat->start();
    EXPECT_THAT(heard, ElementsAre(false, true));
}

TEST(OperationDependency, OnAFinishedOperationDoesNotHinder) {
    const auto mix = named("mix");
    mix->start();
    const auto bake = named("bake");
    bake->addDependency(mix);
    EXPECT_TRUE(bake->isReady());
}

TEST(OperationDependency, CancelledOperationCountsWhenItIsFinished) {
    const auto mix = named("mix");
    const auto bake = named("bake");
    bake->addDependency(mix);
    mix->cancel();
    EXPECT_FALSE(bake->isReady());
    mix->start();
    EXPECT_TRUE(bake->isReady());
}

TEST(OperationDependency, CancellingMakesTheWaitingOneReady) {
    const auto mix = named("mix");
    const auto bake = named("bake");
    bake->addDependency(mix);
    bake->cancel();
    EXPECT_TRUE(bake->isReady());
    bake->start();
    EXPECT_TRUE(bake->isFinished());
    EXPECT_FALSE(mix->isFinished());
}

TEST(OperationDependency, CanBeTakenBack) {
    const auto mix = named("mix");
    const auto bake = named("bake");
    bake->addDependency(mix);
    bake->removeDependency(named("another"));
    EXPECT_FALSE(bake->isReady());
    bake->removeDependency(mix);
    EXPECT_TRUE(bake->isReady());
    EXPECT_THAT(bake->dependencies(), IsEmpty());
}

TEST(OperationDependency, AddedTwiceIsMetOnce) {
    const auto mix = named("mix");
    const auto bake = named("bake");
    bake->addDependency(mix);
    bake->addDependency(mix);
    mix->start();
    EXPECT_TRUE(bake->isReady());
}

TEST(OperationDependency, IsHeldUntilTheWaitingOneIsFinished) {
    auto mix = named("mix");
    const std::weak_ptr<Operation> weak = mix;
    const auto bake = named("bake");
    bake->addDependency(mix);
    mix->start();
    mix.reset();
    EXPECT_FALSE(weak.expired());
    bake->start();
    EXPECT_TRUE(weak.expired());
    EXPECT_THAT(bake->dependencies(), IsEmpty());
}

TEST(OperationDependency, ExceptionOfAnObserverOfReadinessDoesNotKeepItFromBecomingReady) {
    for (const bool prior : {false, true}) {
        const auto mix = named("mix");
        const auto bake = named("bake");
        auto angry = bake->observe(
            "isReady", [](const KeyValueChange&) { throw std::runtime_error("not now"); }, {.prior = prior});
        EXPECT_THROW(bake->addDependency(mix), std::runtime_error);
        EXPECT_EQ(bake->isReady(), bake->dependencies().empty());
        angry.invalidate();
        mix->start();
        EXPECT_TRUE(bake->isReady());
        const auto heat = named("heat");
        bake->addDependency(heat);
        EXPECT_FALSE(bake->isReady());
        heat->start();
        EXPECT_TRUE(bake->isReady());
    }
}

TEST(OperationDependency, MayBeAnyOperationThatPublishesItsEnd) {
    // A host's own, with a state of its own.
    class Signal : public Operation {
    public:
        bool isFinished() const override { return isFinished_; }
        void report(bool isFinished) {
            willChangeValueForKey("isFinished");
            isFinished_ = isFinished;
            didChangeValueForKey("isFinished");
        }

    private:
        std::atomic<bool> isFinished_ = false;
    };
    const auto signal = std::make_shared<Signal>();
    const auto bake = named("bake");
    bake->addDependency(signal);
    signal->report(false);
    EXPECT_FALSE(bake->isReady()) << "a report alone is no end";
    signal->report(true);
    EXPECT_TRUE(bake->isReady());
}

TEST(OperationDependency, DoesNotKeepTheWaitingOneAlive) {
    const auto mix = named("mix");
    auto bake = named("bake");
    const std::weak_ptr<Operation> weak = bake;
    bake->addDependency(mix);
    bake.reset();
    EXPECT_TRUE(weak.expired());
    mix->start();
}

TEST(OperationDependency, MayFormADiamond) {
    const auto top = named("top");
    const auto left = named("left");
    const auto right = named("right");
    const auto bottom = named("bottom");
    left->addDependency(top);
    right->addDependency(top);
    bottom->addDependency(left);
    bottom->addDependency(right);
    for (const auto& one : {top, left, right}) {
        EXPECT_FALSE(bottom->isReady());
        one->start();
    }
    EXPECT_TRUE(bottom->isReady());
}

TEST(OperationDependency, OnNullOrOnItselfIsRefused) {
    const auto mix = named("mix");
    EXPECT_EQ(refusalOf(mix, nullptr), "an operation cannot depend on null");
    EXPECT_EQ(refusalOf(mix, mix),
              "operation 'mix' cannot depend on operation 'mix': that waits for it already, "
              "and neither could ever start");
    EXPECT_TRUE(mix->isReady());
    EXPECT_THAT(mix->dependencies(), IsEmpty());
}

TEST(OperationDependency, CycleIsRefusedNamesBothAndChangesNothing) {
    const auto mix = named("mix");
    const auto bake = named("bake");
    bake->addDependency(mix);
    EXPECT_EQ(refusalOf(mix, bake),
              "operation 'mix' cannot depend on operation 'bake': that waits for it already, "
              "and neither could ever start");
    EXPECT_TRUE(mix->isReady());
    EXPECT_THAT(mix->dependencies(), IsEmpty());
    mix->start();
    EXPECT_TRUE(bake->isReady());
}

TEST(OperationDependency, CycleOfAnyLengthIsRefused) {
    for (const std::size_t length : {3U, 10U, 1000U}) {
        const auto links = chain(length);
        EXPECT_NE(refusalOf(links.front(), links.back()), "") << length;
        EXPECT_TRUE(links.front()->isReady());
    }
}

TEST(OperationDependency, WithoutANameTheRefusalTellsTheAddress) {
    const auto links = chain(2);
    EXPECT_THAT(refusalOf(links.front(), links.back()), ::testing::HasSubstr("operation '0x"));
}

TEST(OperationDependency, OfTwoThatAreMadeToWaitForEachOtherAtOnceExactlyOneIsRefused) {
    constexpr int rounds = 10'000;
    std::shared_ptr<Operation> mix;
    std::shared_ptr<Operation> bake;
    int wrong = 0;
    std::atomic<int> refused = 0;
    const auto makeTwo = [&] {
        mix = named("mix");
        bake = named("bake");
        refused = 0;
    };
    makeTwo();
    std::barrier both(2);
    std::jthread other([&] {
        for (int round = 0; round < rounds; ++round) {
            both.arrive_and_wait();
            refused += refusalOf(mix, bake).empty() ? 0 : 1;
            both.arrive_and_wait();
        }
    });
    for (int round = 0; round < rounds; ++round) {
        both.arrive_and_wait();
        refused += refusalOf(bake, mix).empty() ? 0 : 1;
        both.arrive_and_wait();
        wrong += refused == 1 && mix->isReady() != bake->isReady() ? 0 : 1;
        makeTwo();
    }
    other.join();
    EXPECT_EQ(wrong, 0);
}

TEST(OperationDependency, LongChainThatNeverRanIsDroppedWithoutDeepRecursion) {
    auto links = chain(100'000);
    const std::weak_ptr<Operation> first = links.front();
    auto last = links.back();
    links.clear();
    EXPECT_FALSE(first.expired());
    last.reset();
    EXPECT_TRUE(first.expired());
}

TEST(OperationDependency, LongChainThatNeverRanIsLetGoByItsEndWithoutDeepRecursion) {
    auto links = chain(100'000);
    const std::weak_ptr<Operation> first = links.front();
    const auto last = links.back();
    links.clear();
    last->cancel();
    last->start();
    EXPECT_TRUE(first.expired());
}

TEST(OperationDependency, LongChainIsBuiltAndRunInEitherDirection) {
    constexpr int length = 20'000;
    std::vector<std::shared_ptr<Operation>> links{std::make_shared<Operation>()};
    for (int i = 1; i < length; ++i) {
        links.push_back(std::make_shared<Operation>());
        links[links.size() - 2]->addDependency(links.back());
    }
    for (auto link = links.rbegin(); link != links.rend(); ++link) {
        ASSERT_TRUE((*link)->isReady());
        (*link)->start();
    }
}

TEST(OperationDependency, FinishedByManyThreadsAtOnceMakesTheWaitingOneReadyOnce) {
    for (int round = 0; round < 500; ++round) {
        const auto bake = named("bake");
        std::vector<std::shared_ptr<Operation>> others;
        for (int i = 0; i < 4; ++i) {
            others.push_back(std::make_shared<Operation>());
            bake->addDependency(others.back());
        }
        std::atomic<int> becameReady = 0;
        const auto observation = bake->observe("isReady", [&](const KeyValueChange& change) {
            if (std::any_cast<bool>(change.newValue)) ++becameReady;
        });
        {
            std::vector<std::jthread> threads;
            for (const auto& other : others) threads.emplace_back([&other] { other->start(); });
        }
        ASSERT_TRUE(bake->isReady());
        ASSERT_EQ(becameReady, 1);
    }
}

// With a look at each for each, either of these would take minutes.
TEST(OperationDependency, OnVeryManyOperationsIsMetInGoodTime) {
    const auto last = named("last");
    std::vector<std::shared_ptr<Operation>> others;
    for (int i = 0; i < 50'000; ++i) {
        others.push_back(std::make_shared<Operation>());
        last->addDependency(others.back());
    }
    for (const auto& other : others) {
        ASSERT_FALSE(last->isReady());
        other->start();
    }
    EXPECT_TRUE(last->isReady());
}

TEST(OperationDependency, OfVeryManyOperationsOnOneIsMetInGoodTime) {
    const auto first = named("first");
    std::vector<std::shared_ptr<Operation>> others;
    for (int i = 0; i < 50'000; ++i) {
        others.push_back(std::make_shared<Operation>());
        others.back()->addDependency(first);
    }
    first->start();
    for (const auto& other : others) {
        ASSERT_TRUE(other->isReady());
        other->start();
    }
}
