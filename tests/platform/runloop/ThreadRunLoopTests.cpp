// SPDX-License-Identifier: Apache-2.0

// The run loops of threads other than the main thread, and work that is performed on any.

#include <VorlanFoundation/Platform/RunLoop.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Platform/Thread.h>

#include <gtest/gtest.h>

#include <glib-unix.h>
#include <glib.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <ctime>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;

namespace {

// A thread that turns its run loop until it is cancelled.
class TurningThread {
public:
    TurningThread()
        : thread_(std::make_shared<Thread>([] {
              const auto self = Thread::current();
              while (!self->isCancelled()) RunLoop::current().runOnce(DispatchTime::distantFuture());
          })) {
        thread_->start();
    }
    TurningThread(const TurningThread&) = delete;
    TurningThread& operator=(const TurningThread&) = delete;
    ~TurningThread() {
        thread_->cancel();
        thread_->waitUntilFinished();
    }

    RunLoop& loop() const { return thread_->runLoop(); }

private:
    std::shared_ptr<Thread> thread_;
};

void onAThread(const std::function<void()>& work) {
    const auto thread = std::make_shared<Thread>([&] { work(); });
    thread->start();
    thread->waitUntilFinished();
}

} // namespace

TEST(RunLoopOfThread, IsTheThreadsOwn) {
    const auto thread = std::make_shared<Thread>([&] {
        EXPECT_EQ(&RunLoop::current(), &Thread::current()->runLoop());
        EXPECT_NE(&RunLoop::current(), &RunLoop::main());
    });
    thread->start();
    thread->waitUntilFinished();
    EXPECT_EQ(&RunLoop::current(), &RunLoop::main());
}

TEST(RunLoopOfThread, IsMadeForAThreadOfAnotherMakeWhenItIsAskedFor) {
    std::jthread([] {
        auto& loop = RunLoop::current();
        EXPECT_EQ(&loop, &RunLoop::current());
        EXPECT_NE(&loop, &RunLoop::main());
        bool hasRun = false;
        loop.perform([&] { hasRun = true; });
        EXPECT_TRUE(loop.runOnce(DispatchTime::now() + 10s));
        EXPECT_TRUE(hasRun);
    }).join();
}

TEST(RunLoopOfThread, RunReturnsWhatStopWasGiven) {
    onAThread([] {
        auto& loop = RunLoop::current();
        const std::jthread other([&] { loop.stop(4); });
        EXPECT_EQ(loop.run(), 4);
    });
}

TEST(RunLoopOfThread, RunOnceReturnsFalseAtItsDeadline) {
    onAThread([] {
        const auto deadline = DispatchTime::now() + 30ms;
        EXPECT_FALSE(RunLoop::current().runOnce(deadline));
        EXPECT_GE(DispatchTime::now(), deadline);
        EXPECT_FALSE(RunLoop::current().runOnce(DispatchTime(0)));
    });
}

TEST(RunLoopOfThread, WakeUpThatCameBeforeIsNotLost) {
    onAThread([] {
        RunLoop::current().wakeUp();
        EXPECT_FALSE(RunLoop::current().runOnce(DispatchTime::distantFuture()));
    });
}

TEST(RunLoopOfThread, ServesAGLibSourceThatIsAttachedToItsContext) {
    Inbox<std::thread::id> ran;
    Inbox<std::thread::id> own;
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const TurningThread thread;
    thread.loop().perform([&] { own.put(std::this_thread::get_id()); });
    auto* source = g_unix_fd_source_new(ends[0], G_IO_IN);
    const auto take = [](gint end, GIOCondition, gpointer inbox) -> gboolean {
        char byte = 0;
        EXPECT_EQ(read(end, &byte, 1), 1);
        static_cast<Inbox<std::thread::id>*>(inbox)->put(std::this_thread::get_id());
        return G_SOURCE_CONTINUE;
    };
    g_source_set_callback(source, G_SOURCE_FUNC(+take), &ran, nullptr);
    g_source_attach(source, thread.loop().context());
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    const auto ranOn = ran.take();
    EXPECT_EQ(ranOn, own.take());
    g_source_destroy(source);
    g_source_unref(source);
    close(ends[0]);
    close(ends[1]);
}

TEST(RunLoopOfThread, ContextIsTheThreadDefaultOneOfAThread) {
    onAThread([] { EXPECT_EQ(g_main_context_get_thread_default(), RunLoop::current().context()); });
    EXPECT_EQ(RunLoop::main().context(), g_main_context_default());
}

TEST(RunLoopOfThread, PerformedWorkOfManyThreadsKeepsTheOrderOfEach) {
    constexpr int each = 5'000;
    Inbox<int> outOfOrder;
    std::array<int, 4> next{};
    int wrong = 0;
    int total = 0;
    const TurningThread thread;
    {
        std::array<std::jthread, 4> submitters;
        for (std::size_t t = 0; t < submitters.size(); ++t)
            submitters[t] = std::jthread([&, t] {
                for (int i = 0; i < each; ++i)
                    thread.loop().perform([&, t, i] {
                        wrong += next[t]++ == i ? 0 : 1;
                        if (++total == 4 * each) outOfOrder.put(wrong);
                    });
            });
    }
    EXPECT_EQ(outOfOrder.take(), 0);
}

TEST(RunLoopOfThread, PerformedWorkIsNotRunFromWithinPerformedWork) {
    onAThread([] {
        auto& loop = RunLoop::current();
        bool isInside = false;
        bool ranInside = true;
        bool ran = false;
        loop.perform([&] {
            isInside = true;
            loop.perform([&] {
                ranInside = isInside;
                ran = true;
            });
            loop.runOnce(DispatchTime::now() + 5ms);
            isInside = false;
        });
        EXPECT_TRUE(loop.runOnce(DispatchTime::now() + 10s));
        EXPECT_FALSE(ran);
        EXPECT_TRUE(loop.runOnce(DispatchTime::now() + 10s));
        EXPECT_TRUE(ran);
        EXPECT_FALSE(ranInside);
    });
}

TEST(RunLoop, PerformsWorkOnTheMainThread) {
    bool wasMain = false;
    bool isDone = false;
    std::jthread([&] {
        RunLoop::main().perform([&] {
            wasMain = Thread::isMainThread();
            isDone = true;
        });
    }).join();
    const auto deadline = DispatchTime::now() + 10s;
    while (!isDone && DispatchTime::now() < deadline) RunLoop::main().runOnce(deadline);
    EXPECT_TRUE(wasMain);
}

TEST(RunLoopOfThreadDeathTest, TurningTheLoopOfAnotherThreadStopsTheProcess) {
    const auto turn = [] { std::make_shared<Thread>([] {})->runLoop().runOnce(DispatchTime(0)); };
    EXPECT_DEATH(
        turn(),
        "VorlanFoundation/RunLoop: Fatal error: RunLoop::runOnce is for the thread of the run loop only");
}

TEST(RunLoopOfThreadDeathTest, ExceptionOfPerformedWorkStopsTheProcessWithItsText) {
    const auto fail = [] {
        RunLoop::main().perform([] { throw std::runtime_error("no connection"); });
        RunLoop::main().runOnce(DispatchTime::now() + 10s);
    };
    EXPECT_DEATH(fail(),
                 "VorlanFoundation/RunLoop: Fatal error: an exception left work performed on a run loop: "
                 "no connection");
}
