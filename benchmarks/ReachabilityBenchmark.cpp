// SPDX-License-Identifier: Apache-2.0

// How soon a change of the network is heard of, and whether what is said of the network is true.
//
//     ReachabilityBenchmark                       the rows of the report, with the benchmark library's own options
//     ReachabilityBenchmark --latencies [ROUNDS]  a table of percentiles
//     ReachabilityBenchmark --states [PART]       a table of states: what is true, what ours and GLib's monitor say;
//                                                 of those with that in their names
//
// All of it happens in networks of its own; the machine's is left alone.

#include "benchmarks/ReachabilityLatency.h"
#include "benchmarks/ReachabilityStateTable.h"
#include "benchmarks/support/PrivateNetwork.h"
#include "benchmarks/support/Rows.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string_view>

namespace {

constexpr int mostRounds = 1'000'000;

int run(int argc, char** argv) {
    using namespace vorlan::benchmarks;
    const std::string_view mode = argc > 1 ? argv[1] : "";
    if (mode == "--states") return printReachabilityStates(argc > 2 ? argv[2] : "");
    const bool isTable = mode == "--latencies";
    const long rounds = argc > 2 ? std::strtol(argv[2], nullptr, 10) : 300;
    if (isTable && (rounds < 1 || rounds > mostRounds)) throw std::runtime_error("no number of rounds");

    enterPrivateNetwork();
    Cable cable;
    if (isTable) {
        printReachabilityLatencies(cable, static_cast<unsigned>(rounds));
        return 0;
    }
    addReachabilityLatencyRows(cable);
    return runRows(argc, argv);
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "ReachabilityBenchmark: " << error.what() << "\n";
        return 1;
    }
}
