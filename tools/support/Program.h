// SPDX-License-Identifier: Apache-2.0
#pragma once

// What all programs do alike: how they start and end, and how they speak to their caller.

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// The name of the program, and what it says of how it is called. Each program defines its own.
extern const std::string_view programName;
extern const std::string_view usage;

/// A call that is wrong. The message is one sentence without a full stop.
struct UsageError : std::invalid_argument {
    using std::invalid_argument::invalid_argument;
};

/// How a program ends whose call was wrong.
inline constexpr int wrongUsageStatus = 2;

/// Runs a program with the words behind its name, and returns how it ends. A std::invalid_argument stands for a call
/// that is wrong and is told with the usage, any other exception for a failure.
int runProgram(int argc, char** argv, int failureStatus,
               int (*run)(const std::vector<std::string_view>& words));

/// Writes a message to standard error, behind the program's name.
void complain(std::string_view message);

/// Writes to standard output. Complains and returns false when it cannot.
bool print(std::string_view text);

/// Complains of every problem that the library reports from here on.
void listenToProblems();

/// Whether there was one. They may come on any thread, and at the very end.
bool hasProblem();

} // namespace tool
