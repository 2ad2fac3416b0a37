// SPDX-License-Identifier: Apache-2.0

// A real kernel that is really short of memory, for one process: in control groups with a limit.

#include "platform/cache/PressureFile.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

namespace vorlan {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t limit = 64; // MiB

std::string contentOf(const fs::path& path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

bool write(const fs::path& path, const std::string& text) {
    std::ofstream file(path);
    file << text << std::flush;
    return file.good();
}

/// A control group of our own; no path where it could not be made.
class Group {
public:
    explicit Group(const fs::path& parent)
        : path_(parent / ("vorlan-memory-test-" + std::to_string(getpid()))) {
        if (mkdir(path_.c_str(), 0755) != 0) path_.clear();
    }
    Group(const Group&) = delete;
    Group& operator=(const Group&) = delete;
    // The kernel may take a moment to notice that a process is gone.
    ~Group() {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!path_.empty() && rmdir(path_.c_str()) != 0 && errno == EBUSY &&
               std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
    }

    explicit operator bool() const { return !path_.empty(); }
    const fs::path& path() const { return path_; }
    bool add(pid_t process) const { return write(path_ / "cgroup.procs", std::to_string(process)); }

    /// Limits the memory of its processes, in the words of either version.
    bool limitMemory() const {
        const auto bytes = std::to_string(limit * 1024 * 1024);
        for (const char* name : {"memory.max", "memory.limit_in_bytes"})
            if (fs::exists(path_ / name)) return write(path_ / name, bytes);
        return false;
    }

private:
    fs::path path_;
};

TEST(MemoryPressureInGroup, CacheOfMoreThanThereIsRoomForGivesBackAndTheProcessLives) {
    const auto file = pressureFileOfGroup(contentOf("/proc/self/cgroup"), contentOf("/proc/self/mountinfo"));
    if (!file || !memoryPressure(*file)) GTEST_SKIP() << "no pressure is measured for control groups here";
    const Group group(file->parent_path());
    if (!group) GTEST_SKIP() << "may not make control groups here";
    // Pressure is told for groups of the second version; their limits may still be in the hands of the first.
    const Group elder(fs::exists("/sys/fs/cgroup/memory/memory.limit_in_bytes") ? "/sys/fs/cgroup/memory"
                                                                                : "/nowhere");
    if (!group.limitMemory() && !(elder && elder.limitMemory()))
        GTEST_SKIP() << "control groups do not limit memory here";

    constexpr std::size_t blocks = 16; // in a MiB
    support::ChildProcess host({VORLAN_MEMORY_HOST, "70", "40"});
    ASSERT_EQ(host.nextLine(), "ready");
    ASSERT_TRUE(group.add(host.id()));
    if (elder) {
        ASSERT_TRUE(elder.add(host.id()));
    }
    host.send("go\n");

    std::istringstream answer(host.nextLine());
    std::string word;
    std::size_t inserted = 0;
    std::size_t givenBack = 0;
    answer >> word >> inserted >> word >> word >> givenBack;
    EXPECT_GE(inserted, 70 * blocks) << answer.str(); // more than the limit
    EXPECT_GE(givenBack, 30 * blocks) << answer.str();
    EXPECT_EQ(host.wait(), 0); // not killed
}

} // namespace
} // namespace vorlan
