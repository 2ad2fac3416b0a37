// SPDX-License-Identifier: Apache-2.0
#include "tools/support/Program.h"

#include <VorlanFoundation/Platform/Problems.h>

#include <atomic>
#include <exception>
#include <iostream>

namespace tool {

namespace {

std::atomic<bool> wasProblem = false;

} // namespace

int runProgram(int argc, char** argv, int failureStatus,
               int (*run)(const std::vector<std::string_view>& words)) try {
    return run({argv + (argc > 0 ? 1 : 0), argv + argc});
} catch (const std::invalid_argument& error) {
    complain(error.what());
    std::cerr << "\n" << usage;
    return wrongUsageStatus;
} catch (const std::exception& error) {
    complain(error.what());
    return failureStatus;
}

void complain(std::string_view message) {
    std::cerr << std::string(programName).append(": ").append(message) + "\n";
}

bool print(std::string_view text) {
    std::cout << text << std::flush;
    if (!std::cout) complain("cannot write the output");
    return bool(std::cout);
}

void listenToProblems() {
    vorlan::setProblemHandler([](std::string_view message, std::string_view) {
        wasProblem = true;
        complain(message);
    });
}

bool hasProblem() {
    return wasProblem;
}

} // namespace tool
