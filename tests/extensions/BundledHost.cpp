// SPDX-License-Identifier: Apache-2.0
#include "tests/extensions/BundledHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <string_view>

extern char** environ; // NOLINT: the C library's

namespace vorlan::tests {

namespace {

namespace fs = std::filesystem;

constexpr int oneMinute = 60'000;

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> list;
    for (auto& text : texts) list.push_back(text.data());
    list.push_back(nullptr);
    return list;
}

// The test's environment, but for some variables.
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
    EXPECT_EQ(posix_spawn(&id, arguments[0], &actions, nullptr, arguments.data(), variables.data()), 0)
        << command[0];
    posix_spawn_file_actions_destroy(&actions);
    return id;
}

} // namespace

std::string Outcome::only() const {
    if (status != 0) return "ended with " + std::to_string(status);
    if (answers.size() != 1) return "wrote " + std::to_string(answers.size()) + " lines";
    return answers.front();
}

std::string textElement(const std::string& text) {
    return "<string>" + text + "</string>";
}

void writeInfo(const fs::path& file, const InfoEntries& entries) {
    fs::create_directories(file.parent_path());
    std::ofstream stream(file);
    stream << R"(<?xml version="1.0" encoding="UTF-8"?>)" << "\n" << R"(<plist version="1.0"><dict>)" << "\n";
    for (const auto& [key, element] : entries) stream << "<key>" << key << "</key>" << element << "\n";
    stream << "</dict></plist>\n";
}

RunningHost::RunningHost(const fs::path& program, const std::vector<std::string>& arguments,
                         const Variables& variables) {
    std::array<int, 2> input{-1, -1};
    std::array<int, 2> output{-1, -1};
    EXPECT_EQ(pipe2(input.data(), O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(output.data(), O_CLOEXEC), 0);
    std::vector<std::string> command{program.native()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    id_ = spawn(std::move(command), environmentWith(variables), input[0], output[1]);
    close(input[0]);
    close(output[1]);
    input_ = input[1];
    output_ = output[0];
}

RunningHost::~RunningHost() {
    closeInput();
    if (id_ > 0) {
        kill(id_, SIGKILL);
        waitpid(id_, nullptr, 0);
    }
    if (output_ >= 0) close(output_);
}

std::string RunningHost::nextLine() {
    while (received_.find('\n') == std::string::npos)
        if (!receive(oneMinute)) return "gone";
    auto line = received_.substr(0, received_.find('\n'));
    received_.erase(0, line.size() + 1);
    return line;
}

void RunningHost::closeInput() {
    if (input_ >= 0) close(std::exchange(input_, -1));
}

bool RunningHost::hasEnded() {
    while (receive(0)) {}
    return isAtEnd_;
}

Outcome RunningHost::finish() {
    closeInput();
    while (receive(oneMinute)) {}
    if (!isAtEnd_) {
        ADD_FAILURE() << "the host did not end";
        kill(id_, SIGKILL);
    }
    int status = 0;
    EXPECT_GT(waitpid(std::exchange(id_, 0), &status, 0), 0);
    Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), {}};
    while (received_.find('\n') != std::string::npos) outcome.answers.push_back(nextLine());
    return outcome;
}

bool RunningHost::receive(int milliseconds) {
    pollfd wanted{.fd = output_, .events = POLLIN, .revents = 0};
    if (isAtEnd_ || poll(&wanted, 1, milliseconds) <= 0) return false;
    std::array<char, 4096> buffer{};
    const auto count = read(output_, buffer.data(), buffer.size());
    isAtEnd_ = count <= 0;
    if (!isAtEnd_) received_.append(buffer.data(), static_cast<std::size_t>(count));
    return !isAtEnd_;
}

BundledHost::BundledHost(const fs::path& folder, Layout layout, const std::string& name) {
    fs::create_directories(folder);
    const auto root = fs::canonical(folder);
    switch (layout) {
    case Layout::application:
        bundle_ = root / (name + ".app");
        contents_ = bundle_ / "Contents";
        program_ = contents_ / "bin" / name;
        break;
    case Layout::beside:
        bundle_ = contents_ = root / (name + ".resources");
        program_ = root / name;
        break;
    case Layout::prefix:
        bundle_ = contents_ = root / "share" / name;
        program_ = root / "bin" / name;
        break;
    }
    fs::create_directories(program_.parent_path());
    fs::copy_file(VORLAN_BUNDLE_HOST, program_);
}

} // namespace vorlan::tests
