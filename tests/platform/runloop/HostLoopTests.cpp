// SPDX-License-Identifier: Apache-2.0

// The main queue in hosts with three kinds of loops: GLib's, one over poll(2), and ours.

#include <VorlanFoundation/Platform/RunLoop.h>

#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/Thread.h>

#include <gtest/gtest.h>

#include <glib.h>
#include <poll.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <ostream>
#include <thread>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;

namespace {

struct Host {
    const char* name;
    /// Serves the main queue for about that long, or until `isDone`, which is looked at after each event.
    void (*serve)(std::chrono::milliseconds limit, const std::function<bool()>& isDone);
};

void PrintTo(const Host& host, std::ostream* stream) {
    *stream << host.name;
}

void serveWithGLib(std::chrono::milliseconds limit, const std::function<bool()>& isDone) {
    bool isOver = false;
    const auto expire = [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_CONTINUE;
    };
    const guint timer = g_timeout_add(static_cast<guint>(limit.count()), expire, &isOver);
    while (!isOver && !isDone()) g_main_context_iteration(nullptr, TRUE);
    g_source_remove(timer);
}

void serveWithPoll(std::chrono::milliseconds limit, const std::function<bool()>& isDone) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    pollfd descriptor{.fd = RunLoop::mainQueueDescriptor(), .events = POLLIN, .revents = 0};
    while (!isDone()) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left <= 0ms) return;
        if (poll(&descriptor, 1, static_cast<int>(left.count())) > 0) RunLoop::drainMainQueue();
    }
}

void serveWithRunLoop(std::chrono::milliseconds limit, const std::function<bool()>& isDone) {
    const auto deadline = DispatchTime::now() + limit;
    while (!isDone() && DispatchTime::now() < deadline) RunLoop::main().runOnce(deadline);
}

std::chrono::nanoseconds processorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

class MainQueueInHost : public ::testing::TestWithParam<Host> {};

} // namespace

INSTANTIATE_TEST_SUITE_P(Loop, MainQueueInHost,
                         ::testing::Values(Host{"GLib", serveWithGLib}, Host{"Poll", serveWithPoll},
                                           Host{"RunLoop", serveWithRunLoop}),
                         [](const auto& host) { return host.param.name; });

TEST_P(MainQueueInHost, RunsOnTheMainThread) {
    bool isDone = false;
    bool wasOnMainThread = false;
    const std::jthread other([&] {
        Queue::main().async([&] {
            wasOnMainThread = Thread::isMainThread();
            isDone = true;
        });
    });
    GetParam().serve(10s, [&] { return isDone; });
    EXPECT_TRUE(wasOnMainThread);
}

TEST_P(MainQueueInHost, KeepsTheOrderOfEachThreadOverAHundredThousandSubmissions) {
    constexpr int threadCount = 4;
    constexpr int perThread = 25'000;
    std::array<int, threadCount> next{};
    int outOfOrder = 0;
    int total = 0;
    std::vector<std::jthread> threads;
    for (std::size_t t = 0; t < threadCount; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < perThread; ++i)
                Queue::main().async([&, t, i] {
                    outOfOrder += next[t] == i ? 0 : 1;
                    next[t] = i + 1;
                    ++total;
                });
        });
    GetParam().serve(100s, [&] { return total == threadCount * perThread; });
    EXPECT_EQ(total, threadCount * perThread);
    EXPECT_EQ(outOfOrder, 0);
}

TEST_P(MainQueueInHost, IdleProcessUsesNoProcessorTimeAfterTheFirstBlock) {
    bool isDone = false;
    Queue::main().async([&] { isDone = true; });
    GetParam().serve(10s, [&] { return isDone; });
    ASSERT_TRUE(isDone);
    const auto before = processorTime();
    GetParam().serve(2s, [] { return false; });
    EXPECT_LT(processorTime() - before, 10ms);
}
