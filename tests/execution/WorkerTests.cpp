// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/Worker.h>

#include "tests/support/Inbox.h"
#include "tests/support/ThreadCount.h"

#include <VorlanFoundation/Platform/RunLoop.h>

#include <gtest/gtest.h>

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <latch>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;
using support::threadCount;

namespace {

class Importer : public Worker {};

using ThreadInbox = Inbox<std::shared_ptr<Thread>>;

// Starts a worker whose block tells its thread, and returns that thread.
std::shared_ptr<Thread> startAndAwait(Worker& worker) {
    const auto started = std::make_shared<ThreadInbox>();
    worker.start([started] { started->put(Thread::current()); });
    return started->take().value_or(nullptr);
}

void stopAndAwait(Worker& worker, const Thread& thread) {
    worker.stop();
    EXPECT_TRUE(thread.waitUntilFinished(10s));
}

// The name of the thread of a worker, which is stopped again.
std::string threadNameOf(const std::shared_ptr<Worker>& worker) {
    const auto thread = startAndAwait(*worker);
    stopAndAwait(*worker, *thread);
    return thread->name();
}

// What the process writes to its standard output, from its making to its end.
class StandardOutput {
public:
    StandardOutput() : former_(dup(STDOUT_FILENO)) {
        EXPECT_EQ(pipe(ends_.data()), 0);
        dup2(ends_[1], STDOUT_FILENO);
    }
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;
    ~StandardOutput() {
        dup2(former_, STDOUT_FILENO);
        for (const int descriptor : {former_, ends_[0], ends_[1]}) close(descriptor);
    }

    std::string readLine() const {
        std::string line;
        for (char next = 0; next != '\n' && read(ends_[0], &next, 1) == 1;) line += next;
        return line;
    }

private:
    int former_;
    std::array<int, 2> ends_{};
};

std::size_t count(const char* folder) {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

std::chrono::nanoseconds processorTimeOf(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

TEST(Worker, RunsItsBlockOnItsOwnThread) {
    const auto worker = std::make_shared<Worker>();
    const auto thread = startAndAwait(*worker);
    ASSERT_NE(thread, nullptr);
    EXPECT_TRUE(thread->isExecuting());
    stopAndAwait(*worker, *thread);
}

TEST(Worker, ThreadIsNamedForTheWorkersTypeAndAnIdentifier) {
    const std::string identifier = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";
    const auto name = threadNameOf(std::make_shared<Worker>());
    EXPECT_TRUE(std::regex_match(name, std::regex("Worker-" + identifier))) << name;
    const auto otherName = threadNameOf(std::make_shared<Importer>());
    EXPECT_TRUE(std::regex_match(otherName, std::regex("Importer-" + identifier))) << otherName;
}

TEST(Worker, NoTwoWorkersShareAName) {
    std::set<std::string> names;
    for (int i = 0; i < 100; ++i) names.insert(threadNameOf(std::make_shared<Worker>()));
    EXPECT_EQ(names.size(), 100U);
}

TEST(Worker, StartedTwiceInARowRunsOnlyTheFirstBlock) {
    ThreadInbox first;
    const auto second = std::make_shared<ThreadInbox>();
    const auto worker = std::make_shared<Worker>();
    worker->start([&] { first.put(Thread::current()); });
    worker->start([second] { second->put(Thread::current()); });
    EXPECT_EQ(second.use_count(), 1); // Dropped, not stored.
    const auto thread = first.take().value_or(nullptr);
    ASSERT_NE(thread, nullptr);
    stopAndAwait(*worker, *thread);
    EXPECT_EQ(second->count(), 0U);
}

TEST(Worker, StartAfterTheThreadHasExitedRunsTheNewBlockOnANewThreadWithANewName) {
    const auto worker = std::make_shared<Worker>();
    const auto first = startAndAwait(*worker);
    stopAndAwait(*worker, *first);
    const auto second = startAndAwait(*worker);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, first);
    EXPECT_NE(second->name(), first->name());
    stopAndAwait(*worker, *second);
}

TEST(Worker, StartIsIgnoredWhileAStoppedThreadStillExecutes) {
    std::latch mayReturn(1);
    ThreadInbox first;
    const auto second = std::make_shared<ThreadInbox>();
    const auto worker = std::make_shared<Worker>();
    worker->start([&] {
        first.put(Thread::current());
        mayReturn.wait();
    });
    const auto thread = first.take().value_or(nullptr);
    ASSERT_NE(thread, nullptr);
    worker->stop();
    worker->start([second] { second->put(Thread::current()); });
    EXPECT_EQ(second.use_count(), 1);
    mayReturn.count_down();
    EXPECT_TRUE(thread->waitUntilFinished(10s));
}

TEST(Worker, StopBeforeTheStartDoesNothing) {
    const auto worker = std::make_shared<Worker>();
    worker->stop();
    const auto thread = startAndAwait(*worker);
    ASSERT_NE(thread, nullptr);
    EXPECT_FALSE(thread->isCancelled());
    stopAndAwait(*worker, *thread);
}

TEST(Worker, StopWakesAnIdleWorkerWhoseThreadThenExits) {
    const auto worker = std::make_shared<Worker>();
    const auto thread = startAndAwait(*worker);
    ASSERT_NE(thread, nullptr);
    worker->stop();
    worker->stop();
    EXPECT_TRUE(thread->waitUntilFinished(10s));
    EXPECT_FALSE(thread->isExecuting());
}

TEST(Worker, StopFromWithinItsBlockEndsItsThread) {
    ThreadInbox started;
    const auto worker = std::make_shared<Worker>();
    worker->start([&] {
        worker->stop();
        started.put(Thread::current());
    });
    const auto thread = started.take().value_or(nullptr);
    ASSERT_NE(thread, nullptr);
    EXPECT_TRUE(thread->waitUntilFinished(10s));
}

TEST(Worker, RunLoopKeepsTurningAfterTheBlock) {
    ThreadInbox performed;
    const auto worker = std::make_shared<Worker>();
    const auto thread = startAndAwait(*worker);
    ASSERT_NE(thread, nullptr);
    for (int i = 0; i < 10; ++i) {
        thread->runLoop().perform([&] { performed.put(Thread::current()); });
        EXPECT_EQ(performed.take(), thread);
    }
    stopAndAwait(*worker, *thread);
}

TEST(Worker, StaysAliveUntilItsThreadHasExited) {
    auto worker = std::make_shared<Worker>();
    const std::weak_ptr<Worker> weak = worker;
    const auto thread = startAndAwait(*worker);
    ASSERT_NE(thread, nullptr);
    worker.reset();
    EXPECT_TRUE(thread->isExecuting());
    const auto again = weak.lock();
    ASSERT_NE(again, nullptr);
    stopAndAwait(*again, *thread);
    EXPECT_EQ(again.use_count(), 1);
}

TEST(Worker, BlockStaysStoredAfterItRan) {
    const auto value = std::make_shared<int>(1);
    ThreadInbox started;
    auto worker = std::make_shared<Worker>();
    worker->start([&started, value] { started.put(Thread::current()); });
    const auto thread = started.take().value_or(nullptr);
    ASSERT_NE(thread, nullptr);
    stopAndAwait(*worker, *thread);
    EXPECT_EQ(value.use_count(), 2);
    worker.reset();
    EXPECT_EQ(value.use_count(), 1);
}

TEST(Worker, StartedWithoutABlockSaysThatItWorks) {
    const StandardOutput output;
    const auto worker = std::make_shared<Worker>();
    worker->start();
    EXPECT_EQ(output.readLine(), "Doing Work\n");
    worker->stop();
}

TEST(Worker, IdleForTwoSecondsUsesUnderFiveMillisecondsOfProcessorTime) {
    Inbox<clockid_t> clock;
    const auto worker = std::make_shared<Worker>();
    ThreadInbox started;
    worker->start([&] {
        clockid_t own{};
        pthread_getcpuclockid(pthread_self(), &own);
        clock.put(own);
        started.put(Thread::current());
    });
    const auto own = clock.take();
    const auto thread = started.take().value_or(nullptr);
    ASSERT_TRUE(own && thread);
    const auto before = processorTimeOf(*own);
    EXPECT_FALSE(thread->waitUntilFinished(2s));
    EXPECT_LT(processorTimeOf(*own) - before, 5ms);
    stopAndAwait(*worker, *thread);
}

TEST(Worker, StartedAndStoppedAThousandTimesLeavesNeitherThreadsNorDescriptors) {
    const auto worker = std::make_shared<Worker>();
    stopAndAwait(*worker, *startAndAwait(*worker)); // What is made once for the process.
    const auto descriptors = count("/proc/self/fd");
    const auto threads = threadCount();
    for (int i = 0; i < 1000; ++i) stopAndAwait(*worker, *startAndAwait(*worker));
    // The last thread may still be on its way out, and with it what it polled.
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while ((threadCount() > threads || count("/proc/self/fd") > descriptors) &&
           std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_LE(threadCount(), threads);
    EXPECT_LE(count("/proc/self/fd"), descriptors);
}

TEST(Worker, StartedAndStoppedByManyThreadsEndsInOrder) {
    const auto worker = std::make_shared<Worker>();
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&] {
                for (int i = 0; i < 200; ++i) {
                    worker->start([] {});
                    worker->stop();
                }
            });
    }
    worker->stop();
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (worker.use_count() > 1 && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
    EXPECT_EQ(worker.use_count(), 1);
}
