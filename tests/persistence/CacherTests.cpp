// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Persistence/Cacher.h>

#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace {

using Number = std::shared_ptr<int>;

Number number(int value) {
    return std::make_shared<int>(value);
}

} // namespace

TEST(Cacher, KeyThatWasNeverInsertedHasNoObject) {
    const Cacher<int> cacher;
    EXPECT_EQ(cacher.object("a"), nullptr);
    EXPECT_EQ(cacher["a"], nullptr);
}

TEST(Cacher, InsertedObjectIsThereAtOnceForTheSameThread) {
    Cacher<int> cacher;
    for (int value = 0; value < 1'000; ++value) {
        const Number object = number(value);
        cacher.insert(object, "a");
        ASSERT_EQ(cacher.object("a"), object);
    }
}

TEST(Cacher, InsertingNothingRemovesTheEntry) {
    Cacher<int> cacher;
    cacher.insert(number(1), "a");
    cacher.insert(nullptr, "a");
    EXPECT_EQ(cacher.object("a"), nullptr);
    EXPECT_EQ(cacher.cache()->count(), 0U);
}

TEST(Cacher, RemovedEntryIsGoneAndOthersStay) {
    Cacher<int> cacher;
    cacher.insert(number(1), "a");
    cacher.insert(number(2), "b");
    cacher.remove("a");
    EXPECT_EQ(cacher.object("a"), nullptr);
    EXPECT_EQ(*cacher.object("b"), 2);
}

TEST(Cacher, ClearRemovesEveryEntry) {
    Cacher<int> cacher;
    for (const char* key : {"a", "b", "c"}) cacher.insert(number(1), key);
    cacher.clear();
    for (const char* key : {"a", "b", "c"}) EXPECT_EQ(cacher.object(key), nullptr);
}

TEST(Cacher, SubscriptReadsInsertsAndRemoves) {
    Cacher<int> cacher;
    const Number object = number(1);
    cacher["a"] = object;
    const Number read = cacher["a"];
    EXPECT_EQ(read, object);
    cacher["a"] = nullptr;
    EXPECT_EQ(cacher.object("a"), nullptr);
}

TEST(Cacher, EachHasAQueueOfItsOwnName) {
    const Cacher<int> first;
    const Cacher<int> second;
    EXPECT_THAT(first.synchronizationQueue().label(), StartsWith("Cacher-0x"));
    EXPECT_THAT(second.synchronizationQueue().label(), StartsWith("Cacher-0x"));
    EXPECT_NE(first.synchronizationQueue().label(), second.synchronizationQueue().label());
    EXPECT_EQ(first.synchronizationQueue(), first.synchronizationQueue());
    EXPECT_EQ(first.synchronizationQueue().qualityOfService(), QualityOfService::unspecified);
    EXPECT_EQ(first.synchronizationQueue().autoreleaseFrequency(), AutoreleaseFrequency::inherit);
}

TEST(Cacher, ChangesPassTheQueueThatWasSet) {
    Cacher<int> cacher;
    vorlan::testing::ManualQueue queue;
    cacher.setSynchronizationQueue(queue);
    EXPECT_EQ(cacher.synchronizationQueue(), queue);
    cacher.insert(number(1), "a");
    cacher.remove("b");
    EXPECT_EQ(queue.pendingCount(), 2U);
    EXPECT_EQ(cacher.cache()->object("a"), nullptr);
    queue.runPending();
    EXPECT_NE(cacher.cache()->object("a"), nullptr);
}

TEST(Cacher, ChangeIsMadeInTheCacheThatIsThereWhenItRuns) {
    Cacher<int> cacher;
    vorlan::testing::ManualQueue queue;
    cacher.setSynchronizationQueue(queue);
    const auto former = cacher.cache();
    cacher.insert(number(1), "a");
    const auto replacement = std::make_shared<NSCache<int>>();
    cacher.setCache(replacement);
    queue.runPending();
    EXPECT_EQ(former->count(), 0U);
    EXPECT_EQ(replacement->count(), 1U);
    EXPECT_EQ(cacher.cache(), replacement);
}

TEST(Cacher, ReplacedCacheIsLetGo) {
    Cacher<int> cacher;
    const Number object = number(1);
    cacher.insert(object, "a");
    const std::weak_ptr<NSCache<int>> former = cacher.cache();
    EXPECT_EQ(cacher.object("a"), object);
    cacher.setCache(std::make_shared<NSCache<int>>());
    EXPECT_TRUE(former.expired());
    EXPECT_EQ(object.use_count(), 1);
    EXPECT_EQ(cacher.object("a"), nullptr);
}

TEST(Cacher, LimitsOfItsCacheHold) {
    Cacher<int> cacher;
    cacher.cache()->setCountLimit(2);
    for (const char* key : {"a", "b", "c"}) cacher.insert(number(1), key);
    EXPECT_EQ(cacher.object("a"), nullptr);
    EXPECT_NE(cacher.object("c"), nullptr);
}

TEST(Cacher, ChangesUnderWayKeepWhatTheyNeed) {
    const auto cache = std::make_shared<NSCache<int>>();
    vorlan::testing::ManualQueue queue;
    {
        Cacher<int> cacher;
        cacher.setCache(cache);
        cacher.setSynchronizationQueue(queue);
        cacher.insert(number(1), "a");
    }
    queue.runPending();
    EXPECT_EQ(*cache->object("a"), 1);
}

TEST(Cacher, MovedCacherIsTheSameCache) {
    Cacher<int> cacher;
    cacher.insert(number(1), "a");
    const auto label = cacher.synchronizationQueue().label();
    Cacher<int> moved = std::move(cacher);
    EXPECT_EQ(*moved.object("a"), 1);
    EXPECT_EQ(moved.synchronizationQueue().label(), label);
}

TEST(Cacher, SubclassMayReplaceEveryOperation) {
    class Listing : public Cacher<int> {
    public:
        void insert(const Number& object, std::string_view key) override {
            operations.emplace_back("insert");
            Cacher::insert(object, key);
        }
        void remove(std::string_view key) override {
            operations.emplace_back("remove");
            Cacher::remove(key);
        }
        void clear() override {
            operations.emplace_back("clear");
            Cacher::clear();
        }
        Number object(std::string_view key) const override {
            operations.emplace_back("object");
            return Cacher::object(key);
        }
        mutable std::vector<std::string> operations;
    };
    Listing listing;
    Cacher<int>& cacher = listing;
    cacher["a"] = number(1);
    const Number read = cacher["a"];
    EXPECT_EQ(*read, 1);
    cacher["a"] = nullptr;
    cacher.clear();
    EXPECT_THAT(listing.operations, ElementsAre("insert", "object", "remove", "clear"));
    listing.operations.clear();
    cacher.insert(nullptr, "a"); // is to do what `remove` does
    EXPECT_THAT(listing.operations, ElementsAre("insert", "remove"));
    listing.operations.clear();
    EXPECT_EQ(*cacher.object("b", [] { return number(2); }), 2); // looks up and inserts by itself
    EXPECT_THAT(listing.operations, IsEmpty());
}

TEST(CacherProduction, MissingObjectIsMadeAndInserted) {
    Cacher<int> cacher;
    int made = 0;
    const auto produce = [&] { return number(++made); };
    EXPECT_EQ(*cacher.object("a", produce), 1);
    EXPECT_EQ(*cacher.object("a", produce), 1);
    EXPECT_EQ(*cacher.object("a"), 1);
    EXPECT_EQ(made, 1);
}

TEST(CacherProduction, NullResultIsNotInserted) {
    Cacher<int> cacher;
    int made = 0;
    const auto produce = [&]() -> Number { return ++made, nullptr; };
    EXPECT_EQ(cacher.object("a", produce), nullptr);
    EXPECT_EQ(cacher.object("a", produce), nullptr);
    EXPECT_EQ(made, 2);
    EXPECT_EQ(cacher.cache()->count(), 0U);
}

TEST(CacherProduction, ExceptionReachesTheAskerAndTheNextOneTriesAgain) {
    Cacher<int> cacher;
    EXPECT_THROW(cacher.object("a", []() -> Number { throw std::runtime_error("no file"); }),
                 std::runtime_error);
    EXPECT_EQ(*cacher.object("a", [] { return number(2); }), 2);
}

TEST(CacherProduction, ProducerMayAskForOtherKeys) {
    Cacher<int> cacher;
    const auto object =
        cacher.object("a", [&] { return number(*cacher.object("b", [] { return number(20); }) + 1); });
    EXPECT_EQ(*object, 21);
    EXPECT_EQ(*cacher.object("b"), 20);
}
