// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Persistence/Cacher.h>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

using namespace vorlan;

namespace {

void produceByItself(Cacher<int>& cacher) {
    cacher.object("a", [&] { return cacher.object("a", [] { return std::make_shared<int>(1); }); });
}

void readOnItsQueue(Cacher<int>& cacher) {
    const Queue queue = cacher.synchronizationQueue();
    queue.barrierSync([&] { cacher.object("a"); });
}

} // namespace

TEST(CacherDeathTest, ProducerThatAsksForItsOwnKeyStopsTheProcess) {
    Cacher<int> cacher;
    EXPECT_DEATH(produceByItself(cacher),
                 "VorlanFoundation/Cacher: Fatal error: a producer asks for the key that it");
}

TEST(CacherDeathTest, NoCacheStopsTheProcess) {
    Cacher<int> cacher;
    EXPECT_DEATH(cacher.setCache(nullptr),
                 "VorlanFoundation/Cacher: Fatal error: the cache must not be null");
}

TEST(CacherDeathTest, ReadingFromABlockOfTheQueueStopsTheProcess) {
    Cacher<int> cacher;
    EXPECT_DEATH(readOnItsQueue(cacher), "waiting for queue 'Cacher-0x");
}

TEST(CacherDeathTest, UseAfterMovingStopsTheProcess) {
    Cacher<int> cacher;
    const Cacher<int> moved = std::move(cacher);
    EXPECT_DEATH(cacher.object("a"), "used after it was moved from"); // NOLINT(bugprone-use-after-move)
}
