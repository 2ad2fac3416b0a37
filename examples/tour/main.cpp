// SPDX-License-Identifier: Apache-2.0

// A terminal host that shows on the real machine what the library can do.

#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/Platform/RunLoop.h>

#include <csignal>
#include <iostream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr std::string_view usage =
    "Usage: vorlan-tour [--watch]\n"
    "       vorlan-tour --reach HOST\n"
    "\n"
    "Shows what VorlanFoundation can do, on this machine.\n"
    "\n"
    "  --watch        then follow the network and print each change, until interrupted\n"
    "  --reach HOST   only follow whether a host can be reached, by name or address, until interrupted\n"
    "  --help         this text\n";

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

int refuse(const std::string& reason) {
    std::cerr << "vorlan-tour: " << reason << "\n\n" << usage;
    return 2;
}

int showAll(bool watches) {
    if (watches) stopMainLoopOnSignals();
    bool isComplete = true;
    for (const auto show :
         {tour::showExecution, tour::showPacing, tour::showOperations, tour::showObservation,
          tour::showLogging, tour::showSettings, tour::showPersistence, tour::showDates, tour::showTexts,
          tour::showGeometry, tour::showKeychain, tour::showNetwork, tour::showReachability})
        isComplete &= show();
    if (watches) return tour::watchNetwork();
    return isComplete ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.empty()) return showAll(false);
    const auto& first = arguments.front();
    const std::size_t taken = first == "--reach" ? 2 : 1;
    if (first != "--help" && first != "--watch" && first != "--reach")
        return refuse("unknown argument '" + first + "'");
    if (arguments.size() < taken) return refuse("--reach needs the name of a host");
    if (arguments.size() > taken) return refuse("too many arguments: '" + arguments[taken] + "'");

    if (first == "--watch") return showAll(true);
    if (first == "--help") {
        std::cout << usage;
        return 0;
    }
    stopMainLoopOnSignals();
    return tour::watchHost(arguments[1]);
}
