// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Thread.h>

#include "tests/support/Inbox.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <array>
#include <chrono>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;

namespace {

std::string nameShownByTheSystem() {
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

// The name that the system shows for a thread that was named so before it was started.
std::string shownNameOf(const std::string& name) {
    Inbox<std::string> shown;
    const auto thread = std::make_shared<Thread>([&] { shown.put(nameShownByTheSystem()); });
    thread->setName(name);
    thread->start();
    EXPECT_TRUE(thread->waitUntilFinished(10s));
    return shown.take().value_or("none");
}

struct Listener {
    void listen() { heard.put(Thread::current()); }
    Inbox<std::shared_ptr<Thread>> heard;
};

} // namespace

TEST(Thread, RunsItsEntryOnAThreadOfItsOwn) {
    Inbox<std::thread::id> ran;
    const auto thread = std::make_shared<Thread>([&] { ran.put(std::this_thread::get_id()); });
    EXPECT_EQ(ran.count(), 0U);
    thread->start();
    EXPECT_NE(ran.take(), std::this_thread::get_id());
    EXPECT_TRUE(thread->waitUntilFinished(10s));
}

TEST(Thread, RunsAnOperationOfATargetWhichItHoldsUntilThatHasReturned) {
    auto listener = std::make_shared<Listener>();
    const std::weak_ptr<Listener> weak = listener;
    const auto thread = std::make_shared<Thread>(listener, &Listener::listen);
    listener.reset();
    ASSERT_FALSE(weak.expired());
    thread->start();
    EXPECT_TRUE(thread->waitUntilFinished(10s));
    EXPECT_TRUE(weak.expired());
}

TEST(Thread, IsExecutingFromTheStartUntilItsEntryHasReturned) {
    std::latch mayReturn(1);
    const auto thread = std::make_shared<Thread>([&] { mayReturn.wait(); });
    EXPECT_FALSE(thread->isExecuting());
    EXPECT_FALSE(thread->isFinished());
    thread->start();
    EXPECT_TRUE(thread->isExecuting());
    EXPECT_FALSE(thread->isFinished());
    EXPECT_FALSE(thread->waitUntilFinished(1ms));
    mayReturn.count_down();
    EXPECT_TRUE(thread->waitUntilFinished(std::chrono::nanoseconds::max()));
    EXPECT_TRUE(thread->waitUntilFinished());
    EXPECT_FALSE(thread->isExecuting());
    EXPECT_TRUE(thread->isFinished());
}

TEST(Thread, CurrentIsTheCallingThreadAndNullWhereThisClassDidNotMakeIt) {
    auto listener = std::make_shared<Listener>();
    const auto thread = std::make_shared<Thread>(listener, &Listener::listen);
    thread->start();
    EXPECT_EQ(listener->heard.take(), thread);
    EXPECT_EQ(Thread::current(), nullptr);
    EXPECT_TRUE(thread->waitUntilFinished(10s));
}

TEST(Thread, KeepsItsNameInFullWhereTheSystemShowsFifteenBytes) {
    EXPECT_EQ(shownNameOf("exactly fifteen"), "exactly fifteen");
    EXPECT_EQ(shownNameOf("more than fifteen"), "more than fifte");
    const auto thread = std::make_shared<Thread>([] {});
    thread->setName("more than fifteen");
    EXPECT_EQ(thread->name(), "more than fifteen");
}

TEST(Thread, NameIsCutBetweenCharacters) {
    EXPECT_EQ(shownNameOf("fourteen bytes\xC3\xA4"), "fourteen bytes");
    EXPECT_EQ(shownNameOf("thirteen byte\xC3\xA4..."), "thirteen byte\xC3\xA4");
    EXPECT_EQ(shownNameOf("twelve bytes\xF0\x9F\x98\x80"), "twelve bytes");
}

TEST(Thread, CanRenameItself) {
    Inbox<std::string> shown;
    const auto thread = std::make_shared<Thread>([&] {
        Thread::current()->setName("renamed");
        shown.put(nameShownByTheSystem());
    });
    thread->setName("first");
    thread->start();
    EXPECT_EQ(shown.take(), "renamed");
    EXPECT_TRUE(thread->waitUntilFinished(10s));
    EXPECT_EQ(thread->name(), "renamed");
}

TEST(Thread, CancellingSetsItsFlagOnly) {
    std::latch mayReturn(1);
    const auto thread = std::make_shared<Thread>([&] { mayReturn.wait(); });
    EXPECT_FALSE(thread->isCancelled());
    thread->start();
    thread->cancel();
    EXPECT_TRUE(thread->isCancelled());
    EXPECT_TRUE(thread->isExecuting());
    mayReturn.count_down();
    EXPECT_TRUE(thread->waitUntilFinished(10s));
}

TEST(Thread, LivesUntilItHasEndedWhoeverLetsGoOfIt) {
    Inbox<bool> ran;
    std::latch mayReturn(1);
    auto thread = std::make_shared<Thread>([&] {
        mayReturn.wait();
        ran.put(Thread::current() != nullptr);
    });
    thread->start();
    thread.reset();
    mayReturn.count_down();
    EXPECT_EQ(ran.take(), true);
}

TEST(Thread, NeverStartedIsDroppedWithItsEntry) {
    const auto value = std::make_shared<int>(1);
    std::make_shared<Thread>([value] {}).reset();
    EXPECT_EQ(value.use_count(), 1);
}

TEST(Thread, PerformedWorkRunsOnItInOrderWhenItTurnsItsLoop) {
    Inbox<int> ran;
    Inbox<std::shared_ptr<Thread>> where;
    const auto thread = std::make_shared<Thread>([] {
        while (!Thread::current()->isCancelled()) RunLoop::current().runOnce(DispatchTime::distantFuture());
    });
    thread->runLoop().perform([&] { where.put(Thread::current()); }); // Before there is a thread.
    thread->start();
    EXPECT_EQ(where.take(), thread);
    for (int i = 0; i < 100; ++i) thread->runLoop().perform([&ran, i] { ran.put(i); });
    for (int i = 0; i < 100; ++i) EXPECT_EQ(ran.take(), i);
    thread->cancel();
    EXPECT_TRUE(thread->waitUntilFinished(10s));
}

TEST(Thread, WorkPerformedAfterItsEndIsDropped) {
    const auto thread = std::make_shared<Thread>([] {});
    const auto value = std::make_shared<int>(1);
    thread->runLoop().perform([value] {}); // Its loop is never turned.
    thread->start();
    EXPECT_TRUE(thread->waitUntilFinished(10s));
    EXPECT_EQ(value.use_count(), 1);
    thread->runLoop().perform([value] {});
    EXPECT_EQ(value.use_count(), 1);
}

TEST(Thread, TellsTheMainThreadFromOthers) {
    Inbox<bool> isMain;
    const auto thread = std::make_shared<Thread>([&] { isMain.put(Thread::isMainThread()); });
    thread->start();
    EXPECT_EQ(isMain.take(), false);
    EXPECT_TRUE(thread->waitUntilFinished(10s));
    EXPECT_TRUE(Thread::isMainThread());
}

TEST(ThreadDeathTest, StartingTwiceStopsTheProcess) {
    const auto startTwice = [] {
        const auto thread = std::make_shared<Thread>([] {});
        thread->setName("Listener");
        thread->start();
        thread->start();
    };
    EXPECT_DEATH(startTwice(), "VorlanFoundation/Thread: Fatal error: thread 'Listener' was started twice");
}

TEST(ThreadDeathTest, ExceptionOfItsEntryStopsTheProcessWithItsText) {
    const auto fail = [] {
        const auto thread = std::make_shared<Thread>([] { throw std::runtime_error("no connection"); });
        thread->setName("Listener");
        thread->start();
        thread->waitUntilFinished();
    };
    EXPECT_DEATH(fail(), "VorlanFoundation/Thread: Fatal error: an exception left thread 'Listener': "
                         "no connection");
}
