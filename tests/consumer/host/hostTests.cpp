// SPDX-License-Identifier: Apache-2.0

// A host's own test, with the test kit.

#include <VorlanFoundation/Execution.h>
#include <VorlanFoundation/Testing/MainLoop.h>

#include <chrono>
#include <cstdio>

int main() {
    using namespace std::chrono_literals;
    bool reached = false;
    vorlan::inBackground([&reached] { vorlan::inForeground([&reached] { reached = true; }); });
    const bool inTime = vorlan::testing::MainLoop::pumpUntil([&reached] { return reached; }, 10s);
    std::printf("%s\n", inTime ? "reached the main thread" : "never reached the main thread");
    return inTime ? 0 : 1;
}
