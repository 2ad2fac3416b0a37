// SPDX-License-Identifier: Apache-2.0

// What a cache promises of the order of reads and changes, by whatever way it takes them.

#include <VorlanFoundation/Persistence/Cacher.h>

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;

namespace {

using Number = std::shared_ptr<int>;

Number number(int value) {
    return std::make_shared<int>(value);
}

/// Has threads set keys of their own and look at once for what they have set; calls `meanwhile` at their half.
template <class Meanwhile>
void expectThreadsToSeeTheirOwn(Cacher<int>& cacher, Meanwhile meanwhile) {
    constexpr int rounds = 2'000;
    std::atomic<int> wrong = 0;
    const auto evicted =
        std::make_shared<std::atomic<int>>(0); // for want of memory, which the machine may have at any time
    cacher.cache()->setEvictionHandler([evicted](const std::string&, const Number&) { ++*evicted; });
    std::latch half(4);
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&, thread] {
            const auto key = std::to_string(thread);
            for (int round = 0; round < rounds; ++round) {
                if (round == rounds / 2) half.count_down();
                const auto object = round % 7 == 0 ? nullptr : number(round);
                cacher.insert(object, key);
                if (cacher.object(key) != object) ++wrong;
            }
        });
    half.wait();
    meanwhile();
    threads.clear();
    cacher.cache()->setEvictionHandler(nullptr);
    EXPECT_LE(wrong, *evicted);
}

} // namespace

TEST(CacherOrder, ChangesInARowAreMadeInTheirOrder) {
    Cacher<int> cacher;
    for (int value = 0; value < 500; ++value) {
        cacher.insert(number(-1), "gone");
        cacher.clear();
        cacher.insert(number(-1), "removed");
        cacher.insert(number(value), "a");
        cacher.insert(number(value + 1), "a");
        cacher.remove("removed");
        ASSERT_EQ(*cacher.object("a"), value + 1);
        ASSERT_EQ(cacher.object("gone"), nullptr);
        ASSERT_EQ(cacher.object("removed"), nullptr);
        ASSERT_EQ(cacher.cache()->count(), 1U);
    }
}

TEST(CacherOrder, ThreadsSeeWhatTheyHaveChanged) {
    Cacher<int> cacher;
    expectThreadsToSeeTheirOwn(cacher, [] {});
}

TEST(CacherOrder, ThreadsSeeWhatTheyHaveChangedWhileAHostTakesTheQueue) {
    Cacher<int> cacher;
    expectThreadsToSeeTheirOwn(cacher, [&] { cacher.synchronizationQueue().barrierSync([] {}); });
}

TEST(CacherOrder, ReadWaitsForTheEndOfAHostsBlock) {
    Cacher<int> cacher;
    EXPECT_EQ(cacher.object("b"), nullptr);
    const auto cache = cacher.cache();
    std::latch hasBegun(1);
    std::latch mayEnd(1);
    cacher.synchronizationQueue().barrierAsync([&] {
        hasBegun.count_down();
        mayEnd.wait();
        for (int i = 0; i < 1'000; ++i) std::this_thread::yield(); // time for a read that does not wait
        cache->setObject("b", number(1));
    });
    hasBegun.wait();
    mayEnd.count_down();
    EXPECT_NE(cacher.object("b"), nullptr);
}

TEST(CacherOrder, ChangesAfterAHostsBlockAreNotMadeBeforeIt) {
    Cacher<int> cacher;
    std::latch mayBegin(1);
    const Queue queue = cacher.synchronizationQueue();
    queue.barrierAsync([&] { mayBegin.wait(); });
    Number found;
    cacher.insert(number(1), "a");
    queue.barrierAsync([&, cache = cacher.cache()] { found = cache->object("a"); });
    cacher.insert(number(2), "a");
    mayBegin.count_down();
    EXPECT_EQ(*cacher.object("a"), 2);
    EXPECT_EQ(*found, 1);
}

TEST(CacherOrder, ReadMayOverlapWithWhatElseReads) {
    Cacher<int> cacher;
    cacher.insert(number(1), "a");
    std::latch hasBegun(1);
    std::latch mayEnd(1);
    const Queue queue = cacher.synchronizationQueue();
    queue.async([&] {
        hasBegun.count_down();
        mayEnd.wait();
    });
    hasBegun.wait();
    EXPECT_NE(cacher.object("a"), nullptr);
    mayEnd.count_down();
    queue.barrierSync([] {});
}

TEST(CacherOrder, DestructorOfAnObjectMayChangeTheCacheAndReadWhatIsBehindIt) {
    Cacher<int> cacher;
    const auto cache = cacher.cache();
    Number seen;
    const auto farewell = [&](int* object) {
        seen = cache->object("other");
        cacher.insert(number(1), "second life");
        delete object;
    };
    cacher.insert(number(2), "other");
    cacher.insert(Number(new int(1), farewell), "a");
    cacher.remove("a");
    EXPECT_NE(cacher.object("other"), nullptr);       // the changes so far are made,
    EXPECT_NE(cacher.object("second life"), nullptr); // and with them this was asked for
    EXPECT_NE(seen, nullptr);
}

TEST(CacherOrder, HandlerMayChangeTheCache) {
    Cacher<int> cacher;
    cacher.cache()->setCountLimit(2);
    cacher.cache()->setEvictionHandler([&](const std::string& key, const Number& object) {
        if (key == "a") cacher.insert(object, "second life");
    });
    for (const char* key : {"a", "b", "c"}) cacher.insert(number(1), key);
    EXPECT_NE(cacher.object("c"), nullptr);           // the changes so far are made,
    EXPECT_NE(cacher.object("second life"), nullptr); // and with them this was asked for
    cacher.cache()->setEvictionHandler(nullptr);
}

TEST(CacherOrder, CacheThatAHandlerPutsInItsPlaceGetsTheChangesThatFollow) {
    Cacher<int> cacher;
    const auto former = cacher.cache();
    const auto replacement = std::make_shared<NSCache<int>>();
    former->setCountLimit(1);
    former->setEvictionHandler([&](const std::string&, const Number&) { cacher.setCache(replacement); });
    for (const char* key : {"a", "b", "c"}) cacher.insert(number(1), key);
    EXPECT_NE(cacher.object("c"), nullptr);
    EXPECT_EQ(cacher.object("b"), nullptr);
    EXPECT_NE(former->object("b"), nullptr);
    EXPECT_EQ(replacement->count(), 1U);
}

TEST(CacherOrder, CacheMayGoWhileItsChangesAreUnderWay) {
    const auto object = number(1);
    const auto cache = std::make_shared<NSCache<int>>();
    {
        Cacher<int> cacher;
        cacher.setCache(cache);
        for (const char* key : {"a", "b", "c"}) cacher.insert(object, key);
        cacher.remove("a");
    }
    while (cache.use_count() > 1) std::this_thread::yield(); // what is under way keeps it
    EXPECT_EQ(cache->object("a"), nullptr);
    EXPECT_EQ(cache->object("c"), object);
}
