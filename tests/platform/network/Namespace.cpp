// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/network/Namespace.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <system_error>
#include <vector>

extern char** environ; // NOLINT: the C library's

namespace vorlan::tests {

namespace {

constexpr const char* marker = "VORLAN_TEST_IN_NAMESPACE";
constexpr uid_t nobody = 65534;
constexpr int skippedInside = 77;
constexpr int notStarted = 127; // as the loader exits when it may not read a library

/// What kept a child from becoming the test in its namespaces.
struct Refusal {
    std::array<char, 48> step{};
    int error = 0;
};

/// The child between fork and exec. Other threads may have held any lock when it was forked, so it makes
/// system calls and nothing else.
///
/// Threads: one thread at a time.
class Entrance {
public:
    Entrance(Privilege privilege, int report) : privilege_(privilege), report_(report) {}

    [[noreturn]] void run(char** arguments, char** environment) const {
        if (privilege_ == Privilege::unprivileged) becomeUnprivileged();
        const int user = privilege_ == Privilege::unprivileged ? CLONE_NEWUSER : 0;
        check(unshare(user | CLONE_NEWNET | CLONE_NEWNS), "unshare");
        if (user != 0) mapUser();
        // Only this one: in a change-root tree, the root is no mount whose propagation could be changed.
        check(mount("none", "/sys", nullptr, MS_REC | MS_PRIVATE, nullptr), "making /sys private");
        check(mount("sysfs", "/sys", "sysfs", 0, nullptr), "mounting sysfs");
        check(prctl(PR_SET_PDEATHSIG, SIGKILL), "prctl");
        execve("/proc/self/exe", arguments, environment);
        check(-1, "starting the test again");
        _exit(notStarted);
    }

private:
    void becomeUnprivileged() const {
        if (!isRoot_) return;
        // The C library's own functions would look for the parent's other threads, to change them as well.
        check(syscall(SYS_setgroups, 0, nullptr), "setgroups");
        check(syscall(SYS_setresgid, nobody, nobody, nobody), "setresgid");
        check(syscall(SYS_setresuid, nobody, nobody, nobody), "setresuid");
        // Changing the user made the files under /proc/self root's.
        check(prctl(PR_SET_DUMPABLE, 1), "prctl");
    }

    void mapUser() const {
        write("/proc/self/setgroups", "deny");
        write("/proc/self/uid_map", uidMap_.c_str());
        write("/proc/self/gid_map", gidMap_.c_str());
    }

    void write(const char* path, const char* text) const {
        const int file = open(path, O_WRONLY | O_CLOEXEC);
        check(file, path);
        check(::write(file, text, std::strlen(text)), path);
        close(file);
    }

    void check(long result, const char* step) const {
        if (result >= 0) return;
        Refusal refusal{.error = errno};
        std::strncpy(refusal.step.data(), step, refusal.step.size() - 1);
        static_cast<void>(!::write(report_, &refusal, sizeof(refusal)));
        _exit(notStarted);
    }

    Privilege privilege_;
    int report_;
    const bool isRoot_ = geteuid() == 0;
    // Made before the fork, as they take memory. The user is root inside.
    const std::string uidMap_ = "0 " + std::to_string(isRoot_ ? nobody : getuid()) + " 1";
    const std::string gidMap_ = "0 " + std::to_string(isRoot_ ? nobody : getgid()) + " 1";
};

std::string nameOfRunningCase() {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return std::string(info->test_suite_name()) + "." + info->name();
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> list;
    for (auto& text : texts) list.push_back(text.data());
    list.push_back(nullptr);
    return list;
}

/// How the case went in its namespaces.
struct Outcome {
    int status = 0;
    Refusal refusal{};
};

Outcome runAgain(Privilege privilege) {
    std::vector<std::string> arguments{"VorlanTests", "--gtest_brief=1",
                                       "--gtest_filter=" + nameOfRunningCase()};
    std::vector<std::string> environment{std::string(marker) + "=1"};
    for (char** variable = environ; *variable != nullptr; ++variable) environment.emplace_back(*variable);
    auto argumentList = pointers(arguments);
    auto environmentList = pointers(environment);
    std::array<int, 2> report{};
    EXPECT_EQ(pipe2(report.data(), O_CLOEXEC), 0);
    const Entrance entrance(privilege, report[1]);

    // Not fork(): the thread sanitizer's begins a thread in the child, and a user namespace may then not be entered.
    const auto child = static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0));
    if (child == 0) entrance.run(argumentList.data(), environmentList.data());
    close(report[1]);
    Outcome outcome;
    if (read(report[0], &outcome.refusal, sizeof(outcome.refusal)) <= 0) outcome.refusal = {};
    close(report[0]);
    waitpid(child, &outcome.status, 0);
    return outcome;
}

void runInside(const std::function<void()>& body) {
    body();
    if (!::testing::Test::IsSkipped()) return;
    std::fflush(nullptr);
    std::_Exit(skippedInside);
}

} // namespace

void inOwnNamespace(Privilege privilege, const std::function<void()>& body) {
    if (std::getenv(marker) != nullptr) return runInside(body);
    if (privilege == Privilege::root && geteuid() != 0) GTEST_SKIP() << "needs root";
    const Outcome outcome = runAgain(privilege);
    if (outcome.refusal.error != 0)
        GTEST_SKIP() << "this machine allows no namespaces here: " << outcome.refusal.step.data() << ": "
                     << std::strerror(outcome.refusal.error);
    if (WIFEXITED(outcome.status) && WEXITSTATUS(outcome.status) == notStarted)
        GTEST_SKIP() << "an unprivileged user may not read this program or its libraries";
    if (WIFEXITED(outcome.status) && WEXITSTATUS(outcome.status) == skippedInside)
        GTEST_SKIP() << "skipped in its namespaces, for the reason above";
    EXPECT_EQ(outcome.status, 0) << "the case failed in its namespaces";
}

void ip(const std::string& lines) {
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        const std::string command = "ip " + line;
        EXPECT_EQ(std::system(command.c_str()), 0) << command; // NOLINT(concurrency-mt-unsafe)
    }
}

void ipBatch(const std::string& lines) {
    FILE* tool = popen("ip -batch -", "w");
    ASSERT_NE(tool, nullptr);
    EXPECT_EQ(std::fwrite(lines.data(), 1, lines.size(), tool), lines.size());
    EXPECT_EQ(pclose(tool), 0);
}

int openSockets() {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code closedMeanwhile;
        const auto target = std::filesystem::read_symlink(entry.path(), closedMeanwhile).string();
        count += target.starts_with("socket:") ? 1 : 0;
    }
    return count;
}

} // namespace vorlan::tests
