// SPDX-License-Identifier: Apache-2.0
#include "platform/cache/MemoryPressure.h"

#include "platform/cache/CacheContents.h"
#include "platform/cache/PressureFile.h"

#include <VorlanFoundation/Platform/NSCache.h>
#include <VorlanFoundation/Testing/ManualQueue.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <latch>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace vorlan {
namespace {

using namespace std::chrono_literals;
using detail::CacheContents;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class MemoryPressureTest : public ::testing::Test {
protected:
    MemoryPressureTest() { say("0.00"); }

    /// Writes what the kernel would say.
    void say(const std::string& percent) const {
        std::ofstream(file) << "some avg10=" << percent << " avg60=0.00 avg300=0.00 total=0\n";
    }

    std::shared_ptr<CacheContents> makeCache(std::initializer_list<const char*> keys) {
        auto cache = std::make_shared<CacheContents>(pressure.get());
        cache->setCountLimit(1'000); // with a limit, each look-up counts by itself
        cache->setEvictionHandler([this](const std::string& key, const auto&) { evicted.push_back(key); });
        for (const char* key : keys) cache->setObject(key, std::make_shared<int>(0), 0);
        return cache;
    }

    const testing::TemporaryHome home;
    const std::filesystem::path file = home.path() / "memory.pressure";
    testing::ManualQueue queue;
    const std::shared_ptr<MemoryPressure> pressure = std::make_shared<MemoryPressure>(file, queue);
    std::vector<std::string> evicted;
};

TEST_F(MemoryPressureTest, CacheGivesBackHalfOfItsEntriesAtATimeTheLeastUsedFirst) {
    const auto cache = makeCache({"a", "b", "c", "d", "e", "f"});
    cache->object("a");
    say("55.00");
    queue.advance(5s);
    EXPECT_THAT(evicted, ElementsAre("b", "c", "d"));
    queue.advance(5s);
    EXPECT_THAT(evicted, ElementsAre("b", "c", "d", "e", "f"));
    queue.advance(5s);
    EXPECT_THAT(evicted, ElementsAre("b", "c", "d", "e", "f", "a"));
    EXPECT_EQ(cache->count(), 0U);
}

TEST_F(MemoryPressureTest, LargeCacheGivesBackHalfAsWell) {
    const auto cache = makeCache({});
    cache->setCountLimit(0);
    for (int i = 0; i < 3'001; ++i) cache->setObject(std::to_string(i), std::make_shared<int>(i), 0);
    pressure->relieve();
    EXPECT_EQ(cache->count(), 1'500U);
    EXPECT_EQ(evicted.size(), 1'501U);
    EXPECT_EQ(evicted.front(), "0");
    EXPECT_EQ(evicted.back(), "1500");
}

TEST_F(MemoryPressureTest, EveryCacheOfTheProcessGivesBack) {
    const auto first = makeCache({"a", "b"});
    const auto second = makeCache({"c", "d", "e"});
    pressure->relieve();
    EXPECT_THAT(evicted, ElementsAre("a", "c", "d"));
}

TEST_F(MemoryPressureTest, LittlePressureTakesNothing) {
    const auto cache = makeCache({"a", "b"});
    say("10.00");
    queue.advance(60s);
    EXPECT_THAT(evicted, IsEmpty());
    say("10.01");
    queue.advance(5s);
    EXPECT_THAT(evicted, ElementsAre("a"));
}

TEST_F(MemoryPressureTest, CachesGiveBackAtMostOnceASecond) {
    const auto cache = makeCache({"a", "b", "c", "d"});
    pressure->relieve();
    pressure->relieve();
    queue.advance(999ms);
    pressure->relieve();
    EXPECT_THAT(evicted, ElementsAre("a", "b"));
    queue.advance(1ms);
    pressure->relieve();
    EXPECT_THAT(evicted, ElementsAre("a", "b", "c"));
}

TEST_F(MemoryPressureTest, NothingIsWatchedBeforeTheFirstEntry) {
    const auto cache = makeCache({});
    cache->object("a");
    cache->removeAllObjects();
    cache->setTotalCostLimit(10);
    cache->setObject("too dear", std::make_shared<int>(1), 11);
    EXPECT_EQ(pressure->way(), MemoryPressure::Way::notYet);
    EXPECT_EQ(pressure->cacheCount(), 0U);
    cache->setObject("a", std::make_shared<int>(1), 1);
    EXPECT_EQ(pressure->way(), MemoryPressure::Way::looking);
    EXPECT_EQ(pressure->cacheCount(), 1U);
    cache->setObject("b", std::make_shared<int>(1), 1);
    EXPECT_EQ(pressure->cacheCount(), 1U);
}

TEST_F(MemoryPressureTest, CachesThatAreGoneAreForgotten) {
    auto gone = makeCache({"a", "b"});
    const auto cache = makeCache({"c", "d"});
    gone.reset();
    pressure->relieve();
    EXPECT_THAT(evicted, ElementsAre("c"));
    EXPECT_EQ(pressure->cacheCount(), 1U);
}

TEST_F(MemoryPressureTest, CachesThatAreGoneDoNotPileUpWithoutPressure) {
    const auto cache = makeCache({"kept"});
    for (int i = 0; i < 1'000; ++i) makeCache({"a"});
    EXPECT_LE(pressure->cacheCount(), 17U);
    pressure->relieve();
    EXPECT_THAT(evicted, ElementsAre("kept"));
}

TEST_F(MemoryPressureTest, LookingEndsWithTheLastEntryAndBeginsAnewWithTheNext) {
    const auto cache = makeCache({"a"});
    cache->removeAllObjects();
    queue.advance(12s); // at 5 s there was no entry
    EXPECT_EQ(pressure->cacheCount(), 0U);
    say("90.00");
    cache->setObject("b", std::make_shared<int>(1), 0);
    EXPECT_EQ(pressure->cacheCount(), 1U);
    queue.advance(4'999ms);
    EXPECT_THAT(evicted, IsEmpty());
    queue.advance(1ms);
    EXPECT_THAT(evicted, ElementsAre("b"));
}

TEST_F(MemoryPressureTest, WithoutAFileNothingHappens) {
    std::filesystem::remove(file);
    const auto cache = makeCache({"a", "b"});
    EXPECT_EQ(pressure->way(), MemoryPressure::Way::none);
    say("90.00"); // too late
    cache->setObject("c", std::make_shared<int>(1), 0);
    queue.advance(60s);
    EXPECT_THAT(evicted, IsEmpty());
}

TEST_F(MemoryPressureTest, FileThatVanishesEndsTheWatching) {
    const auto cache = makeCache({"a", "b"});
    std::filesystem::remove(file);
    queue.advance(5s);
    EXPECT_EQ(pressure->way(), MemoryPressure::Way::none);
    say("90.00");
    cache->setObject("c", std::make_shared<int>(1), 0);
    queue.advance(60s);
    EXPECT_THAT(evicted, IsEmpty());
}

TEST_F(MemoryPressureTest, FileThatIsNotTheKernelsIsOnlyRead) {
    const auto cache = makeCache({"a"});
    queue.advance(5s);
    std::ostringstream content;
    content << std::ifstream(file).rdbuf();
    EXPECT_EQ(content.str(), "some avg10=0.00 avg60=0.00 avg300=0.00 total=0\n");
}

TEST_F(MemoryPressureTest, ObjectsThatGoAndHandlersMayFillOtherCaches) {
    const auto other = std::make_shared<CacheContents>(pressure.get());
    const auto cache = makeCache({});
    const auto farewell = [&](int*) { other->setObject("from an object", std::make_shared<int>(1), 0); };
    cache->setObject("a",
                     std::shared_ptr<int>(new int(1),
                                          [&](int* object) {
                                              farewell(object);
                                              delete object;
                                          }),
                     0);
    cache->setEvictionHandler([&](const std::string&, const auto& object) {
        EXPECT_NE(object, nullptr);
        other->setObject("from a handler", std::make_shared<int>(1), 0);
    });
    pressure->relieve();
    EXPECT_EQ(other->count(), 2U);
    EXPECT_EQ(pressure->cacheCount(), 2U);
}

TEST_F(MemoryPressureTest, CacheWhoseLastOwnerGivesBackMayGo) {
    auto doomed = makeCache({"x", "y"});
    const auto cache = makeCache({"a"});
    const std::weak_ptr<CacheContents> observed = doomed;
    doomed->setEvictionHandler([&](const std::string&, const auto&) { doomed.reset(); });
    pressure->relieve();
    EXPECT_TRUE(observed.expired());
    EXPECT_THAT(evicted, ElementsAre("a"));
}

TEST(MemoryPressureOfTheMachine, KernelIsAskedToTell) {
    const std::filesystem::path file = "/proc/pressure/memory";
    if (!memoryPressure(file)) GTEST_SKIP() << "this kernel does not say how short of memory it is";
    const Queue queue("MemoryPressureTests");
    auto pressure = std::make_shared<MemoryPressure>(file, queue);
    const auto cache = std::make_shared<CacheContents>(pressure.get());
    for (const char* key : {"a", "b"}) cache->setObject(key, std::make_shared<int>(0), 0);
    if (pressure->way() == MemoryPressure::Way::looking)
        GTEST_SKIP() << "this kernel does not let ordinary users ask to be told";
    EXPECT_EQ(pressure->way(), MemoryPressure::Way::told);
    queue.sync([&] { pressure->relieve(); });
    EXPECT_LE(cache->count(), 1U); // fewer if the machine is short of memory just now
    queue.sync([&] { pressure.reset(); });
}

TEST(MemoryPressureInAFork, CachesWorkAndNothingIsWatched) {
    std::latch hasRun(1);
    Queue::global().async(
        [&] { hasRun.count_down(); }); // the engine has threads, of which the child gets none
    hasRun.wait();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        NSCache<int> cache;
        cache.setObject("a", std::make_shared<int>(1));
        const auto own = std::make_shared<MemoryPressure>("/proc/pressure/memory", Queue::global());
        const auto contents = std::make_shared<CacheContents>(own.get());
        contents->setObject("a", std::make_shared<int>(1), 0);
        const bool isIdle = own->way() == MemoryPressure::Way::notYet;
        _exit(cache.object("a") != nullptr && isIdle ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

} // namespace
} // namespace vorlan
