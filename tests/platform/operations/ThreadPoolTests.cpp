// SPDX-License-Identifier: Apache-2.0
#include "platform/operations/ThreadPool.h"

#include "tests/support/Inbox.h"
#include "tests/support/ThreadCount.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <latch>
#include <memory>
#include <string>
#include <thread>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;
using support::threadCount;

namespace {

bool threadsComeDownTo(std::size_t count, std::chrono::seconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (threadCount() > count) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::yield();
    }
    return true;
}

} // namespace

TEST(ThreadPool, RunsWorkInOrderOnOneThread) {
    Inbox<int> ran;
    ThreadPool pool("pool", 1);
    for (int i = 0; i < 1'000; ++i) pool.submit([&ran, i] { ran.put(i); });
    for (int i = 0; i < 1'000; ++i) EXPECT_EQ(ran.take(), i);
}

TEST(ThreadPool, ProvidesAThreadForEachWorkThatBlocksUpToItsWidth) {
    const auto before = threadCount();
    std::latch five(5);
    std::latch mayEnd(1);
    std::atomic<int> begun = 0;
    Inbox<bool> ended;
    ThreadPool pool("pool", 5);
    for (int i = 0; i < 20; ++i)
        pool.submit([&] {
            if (++begun <= 5) five.count_down();
            mayEnd.wait();
            ended.put(true);
        });
    five.wait();
    EXPECT_EQ(begun, 5);
    EXPECT_LE(threadCount(), before + 5);
    mayEnd.count_down();
    for (int i = 0; i < 20; ++i) EXPECT_TRUE(ended.take());
}

TEST(ThreadPool, ThreadsCarryItsName) {
    Inbox<std::string> names;
    ThreadPool pool("downloads of mail", 1);
    pool.submit([&] {
        std::array<char, 16> name{};
        pthread_getname_np(pthread_self(), name.data(), name.size());
        names.put(name.data());
    });
    EXPECT_EQ(names.take(), "downloads of ma");
}

TEST(ThreadPool, RunsWhatWasSubmittedAlsoWhenItIsGoneAndThenItsThreadsLeave) {
    const auto before = threadCount();
    Inbox<int> ran;
    {
        ThreadPool pool("pool", 2);
        for (int i = 0; i < 100; ++i) pool.submit([&ran, i] { ran.put(i); });
    }
    for (int i = 0; i < 100; ++i) EXPECT_TRUE(ran.take());
    EXPECT_TRUE(threadsComeDownTo(before, 4s)); // At once, not only after the time that an idle one stays.
}

TEST(ThreadPool, IdleThreadsLeaveAfterAWhile) {
    const auto before = threadCount();
    Inbox<bool> ran;
    ThreadPool pool("pool", 1);
    pool.submit([&] { ran.put(true); });
    EXPECT_TRUE(ran.take());
    EXPECT_TRUE(threadsComeDownTo(before, 20s));
    pool.submit([&] { ran.put(true); });
    EXPECT_TRUE(ran.take());
}

TEST(ThreadPool, ThreadsThatAreTooManyLeave) {
    const auto before = threadCount();
    ThreadPool pool("pool", 4);
    // Shared: nobody joins the works, and one that waits may look at it once more when the case is over.
    const auto all = std::make_shared<std::latch>(4);
    for (int i = 0; i < 4; ++i) pool.submit([all] { all->arrive_and_wait(); });
    all->wait();
    pool.setWidth(1);
    EXPECT_TRUE(threadsComeDownTo(before + 1, 4s));
    Inbox<bool> ran;
    pool.submit([&] { ran.put(true); });
    EXPECT_TRUE(ran.take());
}

TEST(ThreadPool, WidthThatGrowsProvidesThreadsForWhatWaits) {
    ThreadPool pool("pool", 1);
    // Shared: nobody joins the works, and one that waits may look at it once more when the case is over.
    const auto both = std::make_shared<std::latch>(2);
    for (int i = 0; i < 2; ++i) pool.submit([both] { both->arrive_and_wait(); });
    pool.setWidth(2);
    both->wait();
}
