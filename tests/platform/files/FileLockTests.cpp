// SPDX-License-Identifier: Apache-2.0
#include "platform/files/FileLock.h"

#include "tests/support/DescriptorCount.h"

#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <thread>

using namespace vorlan;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

class FileLocking : public ::testing::Test {
protected:
    // Whether the lock can be had at once.
    bool isFree(FileLock::Mode mode = FileLock::Mode::alone) const {
        return static_cast<bool>(FileLock(path_, mode, 0ms));
    }

    const vorlan::testing::TemporaryHome home_;
    const fs::path path_ = fs::canonical(home_.path()) / "lock";
};

} // namespace

TEST_F(FileLocking, LockKeepsOthersOutUntilItIsDropped) {
    {
        const FileLock lock(path_);
        EXPECT_TRUE(lock);
        EXPECT_FALSE(isFree());
        EXPECT_FALSE(isFree(FileLock::Mode::shared));
    }
    EXPECT_TRUE(isFree());
}

TEST_F(FileLocking, LockMayBeShared) {
    std::optional<FileLock> first(std::in_place, path_, FileLock::Mode::shared);
    FileLock second(path_, FileLock::Mode::shared, 0ms);
    EXPECT_TRUE(second);
    first.reset();
    EXPECT_FALSE(isFree());
    second = FileLock();
    EXPECT_TRUE(isFree());
}

TEST_F(FileLocking, LockThatIsNotHadInTimeIsToldByItsReason) {
    const FileLock lock(path_);
    EXPECT_FALSE(isFree());
    EXPECT_EQ(errno, EWOULDBLOCK);
    EXPECT_FALSE(FileLock(home_.path() / "missing" / "lock"));
    EXPECT_EQ(errno, ENOENT);
}

// Who waited for a file that is gone would hold its lock beside whoever locks the next one.
TEST_F(FileLocking, FileThatIsRemovedWhileOneWaitsIsNotTheOneThatIsLocked) {
    std::optional<FileLock> former(std::in_place, path_);
    std::optional<FileLock> waiting;
    std::thread waiter([&] { waiting.emplace(path_); });
    while (support::openCount(path_) < 2) std::this_thread::yield();
    fs::remove(path_);
    former.reset();
    waiter.join();
    EXPECT_TRUE(*waiting);
    EXPECT_TRUE(fs::exists(path_));
    EXPECT_FALSE(isFree());
    waiting.reset();
    EXPECT_TRUE(isFree());
}

TEST_F(FileLocking, ChildThatWasForkedMeanwhileDoesNotKeepTheLock) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    std::optional<FileLock> lock(std::in_place, path_);
    const auto child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        close(pipe[1]);
        char byte = 0;
        while (read(pipe[0], &byte, 1) > 0) {}
        _exit(0);
    }
    close(pipe[0]);
    lock.reset();
    EXPECT_TRUE(isFree());
    close(pipe[1]);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
}
