// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/defaults/HostProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <utility>

extern char** environ; // NOLINT: the C library's

namespace vorlan::tests {

namespace {

constexpr int oneMinute = 60'000;

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> list;
    for (auto& text : texts) list.push_back(text.data());
    list.push_back(nullptr);
    return list;
}

pid_t start(std::vector<std::string> command, int input, int output) {
    const auto arguments = pointers(command);
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t id = 0;
    EXPECT_EQ(posix_spawnp(&id, arguments[0], &actions, nullptr, arguments.data(), environ), 0) << command[0];
    posix_spawn_file_actions_destroy(&actions);
    return id;
}

} // namespace

HostProcess::HostProcess(std::string_view store, std::vector<std::string> wrapper) {
    // Commands go through a socket, since writing to a pipe that nobody reads any more would end the test.
    std::array<int, 2> commands{-1, -1};
    std::array<int, 2> answers{-1, -1};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, commands.data()), 0);
    EXPECT_EQ(pipe2(answers.data(), O_CLOEXEC), 0);
    wrapper.emplace_back(VORLAN_DEFAULTS_HOST);
    wrapper.emplace_back(store);
    id_ = start(std::move(wrapper), commands[1], answers[1]);
    close(commands[1]);
    close(answers[1]);
    input_ = commands[0];
    output_ = answers[0];
}

HostProcess::~HostProcess() {
    if (id_ > 0) kill();
    if (input_ >= 0) close(input_);
    close(output_);
}

void HostProcess::tell(std::string_view command) {
    const auto line = std::string(command) + "\n";
    // To one that is gone nothing can be sent; that shows when its answer is read.
    static_cast<void>(!send(input_, line.data(), line.size(), MSG_NOSIGNAL));
}

std::string HostProcess::answer() {
    while (received_.find('\n') == std::string::npos)
        if (!receive(oneMinute)) return "gone";
    const auto end = received_.find('\n');
    auto line = received_.substr(0, end);
    received_.erase(0, end + 1);
    return line;
}

std::string HostProcess::ask(std::string_view command) {
    tell(command);
    return answer();
}

bool HostProcess::hasAnswered() {
    return received_.find('\n') != std::string::npos || (receive(1) && received_.ends_with('\n'));
}

std::size_t HostProcess::readAcknowledgements(std::size_t atLeast) {
    while (received_.size() < atLeast)
        if (!receive(oneMinute)) break;
    return std::exchange(received_, {}).size();
}

std::size_t HostProcess::kill() {
    ::kill(id_, SIGKILL);
    finish();
    while (receive(oneMinute)) {}
    return std::exchange(received_, {}).size();
}

int HostProcess::finish() {
    close(std::exchange(input_, -1));
    int status = 0;
    EXPECT_EQ(waitpid(std::exchange(id_, 0), &status, 0) > 0, true);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool HostProcess::receive(int milliseconds) {
    pollfd wanted{.fd = output_, .events = POLLIN, .revents = 0};
    if (poll(&wanted, 1, milliseconds) <= 0) return false;
    std::array<char, 4096> buffer{};
    const auto count = read(output_, buffer.data(), buffer.size());
    if (count <= 0) return false;
    received_.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
}

} // namespace vorlan::tests
