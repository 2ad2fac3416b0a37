// SPDX-License-Identifier: Apache-2.0
#pragma once

// What is said of a network in each of its states, beside what is true.

#include <string_view>

namespace vorlan::benchmarks {

/// Builds each state whose name contains `part` in networks of its own, asks there, and prints a table; returns the exit
/// status of the process.
///
/// What is true is found by connecting to the host, or to a server far away.
///
/// Threads: called while the process has one thread.
int printReachabilityStates(std::string_view part);

} // namespace vorlan::benchmarks
