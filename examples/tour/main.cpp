// SPDX-License-Identifier: Apache-2.0

// A terminal host that shows on the real machine what the library can do.

#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/Platform/RunLoop.h>

#include <csignal>
#include <iostream>
#include <string_view>
#include <thread>

namespace {

constexpr std::string_view usage =
    "Usage: vorlan-tour [--watch]\n"
    "\n"
    "Shows what VorlanFoundation can do, on this machine.\n"
    "\n"
    "  --watch   then follow the network and print each change, until interrupted\n"
    "  --help    this text\n";

// SIGINT and SIGTERM end the main loop, so that the host leaves by the front door. Called before there are
// other threads, which then have the signals blocked too.
void stopMainLoopOnSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals] {
        int received = 0;
        sigwait(&signals, &received);
        vorlan::RunLoop::main().stop(0);
    }).detach();
}

} // namespace

int main(int argc, char** argv) {
    bool watches = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--help") {
            std::cout << usage;
            return 0;
        }
        if (argument != "--watch") {
            std::cerr << "vorlan-tour: unknown argument '" << argument << "'\n\n" << usage;
            return 2;
        }
        watches = true;
    }

    if (watches) stopMainLoopOnSignals();
    bool isComplete = true;
    for (const auto show :
         {tour::showExecution, tour::showPacing, tour::showOperations, tour::showObservation,
          tour::showLogging, tour::showSettings, tour::showKeychain, tour::showNetwork})
        isComplete &= show();
    if (watches) return tour::watchNetwork();
    return isComplete ? 0 : 1;
}
