// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/PrivateNetwork.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <system_error>

namespace vorlan::benchmarks {

namespace {

void check(bool isDone, const std::string& step) {
    if (!isDone) throw std::system_error(errno, std::generic_category(), step);
}

void writeWhole(const std::string& path, const std::string& text, int flags) {
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC | flags, S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH);
    check(file >= 0, path);
    const auto written = write(file, text.data(), text.size());
    close(file);
    check(written == static_cast<ssize_t>(text.size()), path);
}

void mapUser(uid_t user, gid_t group) {
    writeSetting("/proc/self/setgroups", "deny");
    writeSetting("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
    writeSetting("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
}

void runIp(const std::string& command, const std::string& lines) {
    FILE* tool = popen((command + "ip -batch -").c_str(), "we");
    check(tool != nullptr, "ip");
    const bool isWritten = std::fwrite(lines.data(), 1, lines.size(), tool) == lines.size();
    if (pclose(tool) != 0 || !isWritten) throw std::runtime_error("a network cannot be made as wanted");
}

} // namespace

void enterPrivateNetwork() {
    const bool isRoot = geteuid() == 0;
    const uid_t user = getuid();
    const gid_t group = getgid();
    check(unshare((isRoot ? 0 : CLONE_NEWUSER) | CLONE_NEWNET | CLONE_NEWNS) == 0, "a private network");
    if (!isRoot) mapUser(user, group);
    // Nothing that is mounted from here on may show elsewhere. In a change-root tree the root is no mount; what
    // replaces files is then refused below.
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        check(mount("none", "/sys", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "making /sys private");
    check(mount("sysfs", "/sys", "sysfs", 0, nullptr) == 0, "mounting sysfs");
}

void replaceFile(const std::string& path, const std::string& text) {
    check(mount("none", "/", nullptr, MS_PRIVATE, nullptr) == 0, "making mounts private");
    std::string other = "/tmp/vorlan-benchmark-XXXXXX";
    const int file = mkostemp(other.data(), O_CLOEXEC);
    check(file >= 0, other);
    close(file);
    writeWhole(other, text, 0);
    check(chmod(other.c_str(), S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH) == 0, other);
    const bool isMounted = mount(other.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) == 0;
    const int error = errno;
    unlink(other.c_str()); // what is mounted stays
    errno = error;
    check(isMounted, path);
}

void writeSetting(const std::string& path, const std::string& text) {
    writeWhole(path, text, 0);
}

void ip(const std::string& lines) {
    runIp("", lines);
}

Machine::Machine(const std::function<void()>& prepare) {
    std::array<int, 2> ready{};
    check(pipe2(ready.data(), O_CLOEXEC) == 0, "a pipe");
    process_ = fork();
    check(process_ >= 0, "fork");
    if (process_ == 0) {
        try {
            check(prctl(PR_SET_PDEATHSIG, SIGKILL) == 0, "prctl");
            check(unshare(CLONE_NEWNET) == 0, "a private network");
            prepare();
            check(write(ready[1], "", 1) == 1, "telling that all is ready");
            for (;;) pause();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "another machine: %s\n", error.what());
        }
        _exit(1);
    }
    close(ready[1]);
    char byte = 0;
    const bool isReady = read(ready[0], &byte, 1) == 1;
    close(ready[0]);
    if (!isReady) throw std::runtime_error("no other machine can be made");
}

Machine::~Machine() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

void Machine::ip(const std::string& lines) const {
    runIp("nsenter --target " + name() + " --net ", lines);
}

} // namespace vorlan::benchmarks
