// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NSCache.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Number = std::shared_ptr<int>;

Number number(int value) {
    return std::make_shared<int>(value);
}

class NSCacheTest : public ::testing::Test {
protected:
    NSCacheTest() {
        cache.setEvictionHandler([this](const std::string& key, const Number&) { evicted.push_back(key); });
    }

    void set(std::initializer_list<const char*> keys, std::size_t cost = 0) {
        for (const char* key : keys) cache.setObject(key, number(0), cost);
    }

    NSCache<int> cache;
    std::vector<std::string> evicted;
};

} // namespace

TEST_F(NSCacheTest, KeyThatWasNeverSetHasNoObject) {
    EXPECT_EQ(cache.object("a"), nullptr);
    EXPECT_EQ(cache.count(), 0U);
}

TEST_F(NSCacheTest, ObjectIsTheOneThatWasSetLast) {
    const Number first = number(1);
    const Number second = number(2);
    cache.setObject("a", first);
    EXPECT_EQ(cache.object("a"), first);
    cache.setObject("a", second);
    EXPECT_EQ(cache.object("a"), second);
    EXPECT_EQ(cache.count(), 1U);
    EXPECT_EQ(first.use_count(), 1);
    EXPECT_THAT(evicted, IsEmpty()); // replaced, which is no eviction
}

TEST_F(NSCacheTest, HasANameForLogs) {
    EXPECT_EQ(cache.name.value(), "");
    cache.name = "covers";
    EXPECT_EQ(cache.name.value(), "covers");
}

TEST_F(NSCacheTest, GivesBackWhatWasNotUsedForLongest) {
    set({"a", "b", "c"});
    set({"a"});
    cache.store()->giveBack(2);
    EXPECT_THAT(evicted, ElementsAre("b", "c"));
    cache.store()->giveBack(2);
    EXPECT_EQ(cache.count(), 0U);
}

TEST_F(NSCacheTest, KeysAreAnyText) {
    const std::string withNul("a\0b", 3);
    cache.setObject(withNul, number(1));
    cache.setObject("a", number(2));
    cache.setObject("", number(3));
    EXPECT_EQ(*cache.object(withNul), 1);
    EXPECT_EQ(*cache.object("a"), 2);
    EXPECT_EQ(*cache.object(""), 3);
}

TEST_F(NSCacheTest, RemovedObjectsAreReleasedAndTheirKeysEmpty) {
    const Number object = number(1);
    cache.setObject("a", object);
    cache.setObject("b", object);
    cache.setObject("c", object);
    cache.removeObject("a");
    cache.removeObject("never there");
    cache.setObject("b", nullptr);
    EXPECT_EQ(cache.object("a"), nullptr);
    EXPECT_EQ(cache.object("b"), nullptr);
    EXPECT_EQ(object.use_count(), 2);
    cache.removeAllObjects();
    EXPECT_EQ(cache.object("c"), nullptr);
    EXPECT_EQ(object.use_count(), 1);
    EXPECT_THAT(evicted, IsEmpty());
}

TEST_F(NSCacheTest, CountLimitEvictsWhatWasNotUsedForLongest) {
    cache.setCountLimit(3);
    set({"a", "b", "c"});
    cache.object("a");
    set({"d"});
    EXPECT_THAT(evicted, ElementsAre("b"));
    set({"a"}); // to set is to use
    set({"e"});
    EXPECT_THAT(evicted, ElementsAre("b", "c"));
    cache.object("d");
    cache.object("never there");
    set({"f"});
    EXPECT_THAT(evicted, ElementsAre("b", "c", "a"));
    EXPECT_EQ(cache.count(), 3U);
}

TEST_F(NSCacheTest, OrderOfReadsCountsWhereThereAreLimits) {
    cache.setCountLimit(3);
    set({"a", "b", "c"});
    for (const char* key : {"c", "a", "b"}) cache.object(key);
    set({"x", "y"});
    EXPECT_THAT(evicted, ElementsAre("c", "a"));
}

TEST_F(NSCacheTest, CostLimitEvictsUntilTheRestFits) {
    cache.setTotalCostLimit(100);
    set({"a", "b", "c"}, 30);
    EXPECT_EQ(cache.totalCost(), 90U);
    set({"d"}, 60);
    EXPECT_THAT(evicted, ElementsAre("a", "b"));
    EXPECT_EQ(cache.totalCost(), 90U);
    set({"c"}, 40); // replaces its own cost
    EXPECT_EQ(cache.totalCost(), 100U);
    cache.removeObject("c");
    EXPECT_EQ(cache.totalCost(), 60U);
    cache.removeAllObjects();
    EXPECT_EQ(cache.totalCost(), 0U);
}

TEST_F(NSCacheTest, ObjectThatCostsMoreThanTheLimitIsNotKept) {
    cache.setTotalCostLimit(100);
    set({"a", "b"}, 30);
    set({"a"}, 101);
    EXPECT_EQ(cache.object("a"), nullptr); // nor is the one that it was to replace
    EXPECT_NE(cache.object("b"), nullptr);
    EXPECT_THAT(evicted, ElementsAre("a"));
    EXPECT_EQ(cache.totalCost(), 30U);
}

TEST_F(NSCacheTest, LimitsHoldAtOnceAndZeroTakesThemAway) {
    set({"a", "b", "c", "d"}, 10);
    cache.setCountLimit(3);
    EXPECT_THAT(evicted, ElementsAre("a"));
    cache.setTotalCostLimit(15);
    EXPECT_THAT(evicted, ElementsAre("a", "b", "c"));
    EXPECT_EQ(cache.countLimit(), 3U);
    EXPECT_EQ(cache.totalCostLimit(), 15U);
    cache.setCountLimit(0);
    cache.setTotalCostLimit(0);
    set({"e", "f", "g", "h"}, 1000);
    EXPECT_EQ(cache.count(), 5U);
}

TEST_F(NSCacheTest, HandlerGetsTheObjectAndMayUseTheCache) {
    cache.setCountLimit(2);
    std::vector<int> values;
    cache.setEvictionHandler([&](const std::string& key, const Number& object) {
        values.push_back(*object);
        EXPECT_EQ(cache.object(key), nullptr);
        if (*object < 3) cache.setObject("again", number(*object + 10));
    });
    for (int value = 1; value <= 3; ++value) cache.setObject(std::to_string(value), number(value));
    EXPECT_EQ(values.front(), 1);
    EXPECT_EQ(cache.count(), 2U);
    EXPECT_NE(cache.object("again"), nullptr);
    cache.setEvictionHandler(nullptr);
    cache.setCountLimit(1);
    EXPECT_EQ(cache.count(), 1U);
}

TEST_F(NSCacheTest, DestructorOfAnObjectMayUseTheCache) {
    struct Curious {
        explicit Curious(NSCache<Curious>& owner) : cache(owner) {}
        ~Curious() { cache.object("b"); }
        NSCache<Curious>& cache;
    };
    NSCache<Curious> curious;
    for (const char* key : {"a", "b", "a", "c"}) curious.setObject(key, std::make_shared<Curious>(curious));
    curious.removeObject("b");
    curious.setCountLimit(1);
    curious.removeAllObjects();
    EXPECT_EQ(curious.count(), 0U);
}

// Against the plainest list of keys by recency of use that there is.
TEST_F(NSCacheTest, EvictsAsASimpleModelDoes) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::list<std::string> model; // the one that was not used for longest is first
    std::vector<std::string> expected;
    cache.setCountLimit(8);
    for (int step = 0; step < 20'000; ++step) {
        const std::string key = std::to_string(random() % 16);
        const auto place = std::ranges::find(model, key);
        const auto what = random() % 8;
        if (what == 0) {
            cache.removeObject(key);
            if (place != model.end()) model.erase(place);
            continue;
        }
        const bool isThere = place != model.end();
        if (isThere) model.splice(model.end(), model, place);
        if (what < 5) {
            ASSERT_EQ(cache.object(key) != nullptr, isThere);
            continue;
        }
        cache.setObject(key, number(step));
        if (!isThere) model.push_back(key);
        if (model.size() <= 8) continue;
        expected.push_back(model.front());
        model.pop_front();
    }
    EXPECT_EQ(evicted, expected);
    EXPECT_EQ(cache.count(), model.size());
}
