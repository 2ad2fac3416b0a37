// SPDX-License-Identifier: Apache-2.0
#include "platform/dispatch/ReadSource.h"

#include "tests/support/Inbox.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <memory>
#include <optional>
#include <utility>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;

namespace {

class ReadSourceTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0); }
    void TearDown() override { close(ends[1]); }

    void send(char byte) const { ASSERT_EQ(write(ends[1], &byte, 1), 1); }

    std::optional<char> receive() const {
        char byte = 0;
        return read(ends[0], &byte, 1) == 1 ? std::optional(byte) : std::nullopt;
    }

    // Whether nobody reads from the other end any more: the source has closed it.
    bool isClosed() const {
        const char byte = 0;
        return write(ends[1], &byte, 1) < 0 && errno == EPIPE;
    }

    void waitUntilClosed() const {
        const auto deadline = DispatchTime::now() + 10s;
        while (!isClosed() && DispatchTime::now() < deadline) queue.sync([] {});
        EXPECT_TRUE(isClosed());
    }

    std::array<int, 2> ends{};
    Queue queue{"readers"};
};

} // namespace

TEST_F(ReadSourceTest, CallsItsHandlerOnTheQueueWheneverTheDescriptorIsReadable) {
    Inbox<char> received;
    const ReadSource source(ends[0], queue, [&] {
        EXPECT_TRUE(queue.isCurrent());
        if (const auto byte = receive()) received.put(*byte);
    });
    send('a');
    EXPECT_EQ(received.take(), 'a');
    send('b');
    send('c');
    EXPECT_EQ(received.take(), 'b');
    EXPECT_EQ(received.take(), 'c');
}

TEST_F(ReadSourceTest, EventComesAgainWhileThereIsSomethingToRead) {
    send('a');
    int looks = 0;
    Inbox<char> received;
    const ReadSource source(ends[0], queue, [&] {
        if (++looks < 3) return;
        if (const auto byte = receive()) received.put(*byte);
    });
    EXPECT_EQ(received.take(), 'a');
}

TEST_F(ReadSourceTest, ClosesTheDescriptorAndDropsTheHandlerOnceItIsDestroyed) {
    std::signal(SIGPIPE, SIG_IGN);
    auto captured = std::make_shared<int>();
    const std::weak_ptr<int> watched = captured;
    {
        const ReadSource source(ends[0], queue, [captured = std::move(captured)] {});
        EXPECT_FALSE(watched.expired());
    }
    waitUntilClosed();
    const auto deadline = DispatchTime::now() + 10s;
    while (!watched.expired() && DispatchTime::now() < deadline) queue.sync([] {});
    EXPECT_TRUE(watched.expired());
}

TEST_F(ReadSourceTest, NoEventComesAfterCancellingOnTheSourcesSerialQueue) {
    std::signal(SIGPIPE, SIG_IGN);
    bool isCancelled = false;
    int late = 0;
    send('a');
    ReadSource source(ends[0], queue, [&] { late += isCancelled ? 1 : 0; });
    queue.sync([&] {
        source.cancel();
        isCancelled = true;
    });
    waitUntilClosed();
    EXPECT_EQ(queue.sync([&] { return late; }), 0);
}

TEST_F(ReadSourceTest, HandlerMayDestroyItsSource) {
    std::signal(SIGPIPE, SIG_IGN);
    std::unique_ptr<ReadSource> source;
    queue.sync([&] { source = std::make_unique<ReadSource>(ends[0], queue, [&] { source.reset(); }); });
    send('a');
    waitUntilClosed();
}
