// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Queue.h>

#include "tests/support/WorkerThreads.h"

#include <VorlanFoundation/Testing.h>

#include <gtest/gtest.h>

#include <stdexcept>

using namespace vorlan;

namespace {

const char* const deadlock =
    "VorlanFoundation/Queue: Fatal error: waiting for queue '.*' from a block that it "
    "waits for would last for ever";

Queue targeting(const char* label, const Queue& target, Queue::Attribute attribute = Queue::serial) {
    return Queue(label, attribute, QualityOfService::unspecified, AutoreleaseFrequency::inherit, target);
}

class QueueDeathTest : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        if (GetParam()) support::useWorkerThreads();
    }
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Process, QueueDeathTest, ::testing::Bool(), [](const auto& process) {
    return process.param ? "ThatHasUsedWorkerThreads" : "WithoutWorkerThreads";
});

TEST_P(QueueDeathTest, ExceptionOfAsynchronousWorkStopsTheProcessWithItsText) {
    EXPECT_DEATH(
        {
            Queue("com.example.thrower").async([] { throw std::runtime_error("disk on fire"); });
            support::waitForEver();
        },
        "VorlanFoundation/Queue: Fatal error: an exception left a block on queue 'com.example.thrower': disk "
        "on fire");
    EXPECT_DEATH(
        {
            Queue::global().async([] { throw 5; });
            support::waitForEver();
        },
        "an exception left a block on queue '.*': not a std::exception");
}

TEST_P(QueueDeathTest, WaitingForTheOwnSerialQueueStopsTheProcess) {
    const Queue queue("own");
    EXPECT_DEATH(queue.sync([&] { queue.sync([] {}); }), deadlock);
    EXPECT_DEATH(
        {
            queue.async([&] { queue.sync([] {}); });
            support::waitForEver();
        },
        deadlock);
}

TEST_P(QueueDeathTest, WaitingForABarrierFromABlockOfTheSameConcurrentQueueStopsTheProcess) {
    const Queue queue("own", Queue::concurrent);
    EXPECT_DEATH(queue.sync([&] { queue.barrierSync([] {}); }), deadlock);
    EXPECT_DEATH(queue.barrierSync([&] { queue.sync([] {}); }), deadlock);
    EXPECT_EQ(queue.sync([&] { return queue.sync([] { return 1; }); }), 1);
}

TEST_P(QueueDeathTest, WaitingForAQueueWhoseTargetIsBusyWithTheCallerStopsTheProcess) {
    const Queue target("target");
    const Queue queue = targeting("queue", target);
    EXPECT_DEATH(target.sync([&] { queue.sync([] {}); }), deadlock);
    EXPECT_DEATH(queue.sync([&] { target.sync([] {}); }), deadlock);
    const Queue other("other");
    EXPECT_DEATH(queue.sync([&] { other.sync([&] { target.sync([] {}); }); }), deadlock);
    EXPECT_EQ(queue.sync([&] { return other.sync([] { return 1; }); }), 1);
}

TEST_P(QueueDeathTest, WaitingForTheMainQueueOnTheMainThreadStopsTheProcess) {
    EXPECT_DEATH(Queue::main().sync([] {}), deadlock);
}

TEST_P(QueueDeathTest, TargetThatDoesNotRunOnTheSystemsEngineStopsTheProcess) {
    const vorlan::testing::ManualQueue manual;
    EXPECT_DEATH(
        targeting("queue", manual),
        "VorlanFoundation/Queue: Fatal error: queue 'ManualQueue' does not run on the system's engine");
}
