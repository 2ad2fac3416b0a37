// SPDX-License-Identifier: Apache-2.0
#include "tests/support/ChildProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>

extern char** environ; // NOLINT: the C library's

namespace support {

namespace {

constexpr int oneMinute = 60'000;

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> list;
    for (auto& text : texts) list.push_back(text.data());
    list.push_back(nullptr);
    return list;
}

std::vector<std::string> environmentWith(const Variables& variables) {
    std::vector<std::string> list;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (!variables.contains(text.substr(0, text.find('=')))) list.push_back(text);
    }
    for (const auto& [name, value] : variables) list.push_back(name + "=" + value);
    return list;
}

pid_t spawn(std::vector<std::string> command, std::vector<std::string> environment, int input, int output) {
    const auto arguments = pointers(command);
    const auto variables = pointers(environment);
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t id = 0;
    EXPECT_EQ(posix_spawnp(&id, arguments[0], &actions, nullptr, arguments.data(), variables.data()), 0)
        << command[0];
    posix_spawn_file_actions_destroy(&actions);
    return id;
}

} // namespace

ChildProcess::ChildProcess(std::vector<std::string> command, const Variables& variables) {
    // Its input is a socket, since writing to a pipe that nobody reads any more would end the test.
    std::array<int, 2> input{-1, -1};
    std::array<int, 2> output{-1, -1};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, input.data()), 0);
    EXPECT_EQ(pipe2(output.data(), O_CLOEXEC), 0);
    id_ = spawn(std::move(command), environmentWith(variables), input[1], output[1]);
    close(input[1]);
    close(output[1]);
    input_ = input[0];
    output_ = output[0];
}

ChildProcess::~ChildProcess() {
    if (id_ > 0) {
        kill();
        wait();
    }
    closeInput();
    if (output_ >= 0) close(output_);
}

void ChildProcess::send(std::string_view text) const {
    static_cast<void>(!::send(input_, text.data(), text.size(), MSG_NOSIGNAL));
}

void ChildProcess::closeInput() {
    if (input_ >= 0) close(std::exchange(input_, -1));
}

std::string ChildProcess::nextLine() {
    while (received_.find('\n') == std::string::npos)
        if (!receive()) return "gone";
    auto line = received_.substr(0, received_.find('\n'));
    received_.erase(0, line.size() + 1);
    return line;
}

bool ChildProcess::receive(int milliseconds) {
    pollfd wanted{.fd = output_, .events = POLLIN, .revents = 0};
    if (isAtEnd_ || poll(&wanted, 1, milliseconds) <= 0) return false;
    std::array<char, 4096> buffer{};
    const auto count = read(output_, buffer.data(), buffer.size());
    isAtEnd_ = count <= 0;
    if (!isAtEnd_) received_.append(buffer.data(), static_cast<std::size_t>(count));
    return !isAtEnd_;
}

bool ChildProcess::receive() {
    return receive(oneMinute);
}

void ChildProcess::kill() const {
    ::kill(id_, SIGKILL);
}

int ChildProcess::wait() {
    closeInput();
    int status = 0;
    EXPECT_GT(waitpid(std::exchange(id_, 0), &status, 0), 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace support
